using System;
using Microsoft.Win32.SafeHandles;
using Morvenhal.RF.KST.Shared;

namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>
    /// A vector in native memory, which <see cref="Helper"/> fills and reads. It keeps its memory: a copy of the same or a
    /// smaller length allocates nothing.
    /// </summary>
    /// <remarks>
    /// A vector is the handle of its native object, which is destroyed once, by Dispose or, at the latest, some time after
    /// the last reference is gone. It serves one thread at a time.
    /// </remarks>
    /// <typeparam name="T">The type of an element.</typeparam>
    public abstract unsafe class NativeVector<T> : SafeHandleZeroOrMinusOneIsInvalid where T : unmanaged
    {
        private readonly NativeMemory m_memory = new NativeMemory();

        private protected NativeVector(int element) : base(true)
        {
            Native.RequireInterface();
            SetHandle(Native.qorn_vector_create(element, out NativeError error));
            error.ThrowIfFailed();
        }

        /// <summary>The number of elements.</summary>
        /// <exception cref="ObjectDisposedException">The vector is disposed of.</exception>
        public int GetSize() => Native.qorn_vector_size(this);

        /// <summary>The number of elements that the memory has room for.</summary>
        /// <exception cref="ObjectDisposedException">The vector is disposed of.</exception>
        public int GetCapacity() => Native.qorn_vector_capacity(this);

        /// <summary>The first element; valid until the vector grows or is disposed of.</summary>
        internal T* Data => (T*)Native.qorn_vector_data(this);

        /// <summary>
        /// Gives the vector n elements: up to the capacity only the length changes, above it the memory is made anew.
        /// </summary>
        internal void Resize(int n)
        {
            Native.qorn_vector_resize(this, n, out NativeError error);
            error.ThrowIfFailed();
            Hold(n);
        }

        /// <summary>Resizes to n and copies the block of n elements at src.</summary>
        internal void Import(T* src, int n)
        {
            Native.qorn_vector_import(this, src, n, out NativeError error);
            error.ThrowIfFailed();
            Hold(n);
        }

        /// <summary>Copies the first n elements to the block at dst.</summary>
        internal void Export(T* dst, int n)
        {
            Native.qorn_vector_export(this, dst, n, out NativeError error);
            error.ThrowIfFailed();
            Hold(n);
        }

        // Not after the handle's release, which gives up what is held.
        private void Hold(int n)
        {
            m_memory.HoldAtLeast(n, sizeof(T));
            GC.KeepAlive(this);
        }

        /// <inheritdoc/>
        protected override bool ReleaseHandle()
        {
            Native.qorn_vector_destroy(handle);
            m_memory.HoldNothing();
            return true;
        }
    }

    /// <summary>A native vector of 16-bit integers.</summary>
    public sealed class VecInt16 : NativeVector<short>
    {
        /// <summary>An empty vector.</summary>
        public VecInt16() : base(0)
        {
        }
    }

    /// <summary>A native vector of 32-bit integers.</summary>
    public sealed class VecInt32 : NativeVector<int>
    {
        /// <summary>An empty vector.</summary>
        public VecInt32() : base(1)
        {
        }
    }

    /// <summary>A native vector of unsigned 32-bit integers.</summary>
    public sealed class VecUInt32 : NativeVector<uint>
    {
        /// <summary>An empty vector.</summary>
        public VecUInt32() : base(2)
        {
        }
    }

    /// <summary>A native vector of numbers in single precision.</summary>
    public sealed class VecReal32 : NativeVector<float>
    {
        /// <summary>An empty vector.</summary>
        public VecReal32() : base(3)
        {
        }
    }

    /// <summary>A native vector of numbers in double precision.</summary>
    public sealed class VecReal64 : NativeVector<double>
    {
        /// <summary>An empty vector.</summary>
        public VecReal64() : base(4)
        {
        }
    }

    /// <summary>A native vector of IQ samples in single precision.</summary>
    public sealed class VecCplx32 : NativeVector<IQ>
    {
        /// <summary>An empty vector.</summary>
        public VecCplx32() : base(5)
        {
        }
    }

    /// <summary>A native vector of IQ samples in double precision.</summary>
    public sealed class VecCplx64 : NativeVector<IQDouble>
    {
        /// <summary>An empty vector.</summary>
        public VecCplx64() : base(6)
        {
        }
    }
}
