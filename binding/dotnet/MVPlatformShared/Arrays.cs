namespace Morvenhal.RF.KST.Shared
{
    /// <summary>An IQ sample in single precision.</summary>
    public struct IQ
    {
        /// <summary>The in-phase part.</summary>
        public float I;

        /// <summary>The quadrature part.</summary>
        public float Q;
    }

    /// <summary>An IQ sample in double precision.</summary>
    public struct IQDouble
    {
        /// <summary>The in-phase part.</summary>
        public double I;

        /// <summary>The quadrature part.</summary>
        public double Q;
    }

    /// <summary>An array of IQ samples in single precision.</summary>
    public class IQArray : KSTArray<IQ>
    {
        /// <inheritdoc/>
        public IQArray()
        {
        }

        /// <inheritdoc/>
        public IQArray(int count) : base(count)
        {
        }

        /// <inheritdoc/>
        public IQArray(IQ[] items) : base(items)
        {
        }
    }

    /// <summary>An array of IQ samples in double precision.</summary>
    public class IQDoubleArray : KSTArray<IQDouble>
    {
        /// <inheritdoc/>
        public IQDoubleArray()
        {
        }

        /// <inheritdoc/>
        public IQDoubleArray(int count) : base(count)
        {
        }

        /// <inheritdoc/>
        public IQDoubleArray(IQDouble[] items) : base(items)
        {
        }
    }

    /// <summary>An array of numbers in single precision.</summary>
    public class FloatArray : KSTArray<float>
    {
        /// <inheritdoc/>
        public FloatArray()
        {
        }

        /// <inheritdoc/>
        public FloatArray(int count) : base(count)
        {
        }

        /// <inheritdoc/>
        public FloatArray(float[] items) : base(items)
        {
        }
    }

    /// <summary>An array of numbers in double precision.</summary>
    public class DoubleArray : KSTArray<double>
    {
        /// <inheritdoc/>
        public DoubleArray()
        {
        }

        /// <inheritdoc/>
        public DoubleArray(int count) : base(count)
        {
        }

        /// <inheritdoc/>
        public DoubleArray(double[] items) : base(items)
        {
        }
    }

    /// <summary>An array of 16-bit integers.</summary>
    public class ShortArray : KSTArray<short>
    {
        /// <inheritdoc/>
        public ShortArray()
        {
        }

        /// <inheritdoc/>
        public ShortArray(int count) : base(count)
        {
        }

        /// <inheritdoc/>
        public ShortArray(short[] items) : base(items)
        {
        }
    }

    /// <summary>An array of 32-bit integers.</summary>
    public class IntArray : KSTArray<int>
    {
        /// <inheritdoc/>
        public IntArray()
        {
        }

        /// <inheritdoc/>
        public IntArray(int count) : base(count)
        {
        }

        /// <inheritdoc/>
        public IntArray(int[] items) : base(items)
        {
        }
    }

    /// <summary>An array of unsigned 32-bit integers.</summary>
    public class UIntArray : KSTArray<uint>
    {
        /// <inheritdoc/>
        public UIntArray()
        {
        }

        /// <inheritdoc/>
        public UIntArray(int count) : base(count)
        {
        }

        /// <inheritdoc/>
        public UIntArray(uint[] items) : base(items)
        {
        }
    }
}
