using System;
using Microsoft.Win32.SafeHandles;
using Morvenhal.RF.KST.Shared;

namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>
    /// Interpolates tables: point i is (xIn[i], yIn[i]), xIn ascending. The base of all interpolators.
    /// </summary>
    /// <remarks>
    /// <para>Values outside the table go on along its first or last piece. Native memory is kept, so calls on arrays of
    /// the same or a smaller count allocate nothing managed, if the destination has had the count before.</para>
    /// <para>What fails leaves as <see cref="QORNExceptionCatcher"/>, a lack of memory as
    /// <see cref="OutOfMemoryException"/>, a use after <see cref="Dispose"/> as <see cref="ObjectDisposedException"/>. An
    /// object serves one thread at a time.</para>
    /// </remarks>
    public abstract class Interpolator : IDisposable
    {
        private protected readonly InterpolatorHandle m_pQorn;
        private protected readonly VecReal32 m_vecReal32XIn = new VecReal32();
        private protected readonly VecReal32 m_vecReal32YIn = new VecReal32();
        private protected readonly VecReal32 m_vecReal32XOut = new VecReal32();
        private protected readonly VecReal32 m_vecReal32YOut = new VecReal32();
        private protected readonly VecReal64 m_vecReal64XIn = new VecReal64();
        private protected readonly VecReal64 m_vecReal64YIn = new VecReal64();
        private protected readonly VecReal64 m_vecReal64XOut = new VecReal64();
        private protected readonly VecReal64 m_vecReal64YOut = new VecReal64();
        private protected bool m_disposed;

        private protected Interpolator(InterpolatorHandle native)
        {
            m_pQorn = native;
        }

        /// <summary>Releases the native objects if <see cref="Dispose"/> has not.</summary>
        ~Interpolator() => Release();

        /// <summary>yOut[j] = the interpolated value at xOut[j]; yOut gets the count of xOut.</summary>
        /// <returns>0, or the interpolator's own code for a table that it cannot use; yOut is then of no use.</returns>
        public int Interpolate(FloatArray xIn, FloatArray yIn, FloatArray xOut, FloatArray yOut)
        {
            RequireUndisposed();
            try
            {
                int result = Run(xIn, yIn, xOut);
                Helper.CopyFloat(m_vecReal32YOut, yOut);
                return result;
            }
            catch (Exception e) when (QORNExceptionCatcher.IsForeign(e))
            {
                throw QORNExceptionCatcher.NewException(e);
            }
        }

        /// <summary>y = the interpolated value at x.</summary>
        /// <returns>0, or the interpolator's own code for a table that it cannot use; y is then of no use.</returns>
        public unsafe int Interpolate(FloatArray xIn, FloatArray yIn, float x, ref float y)
        {
            RequireUndisposed();
            try
            {
                Helper.CopyFloat(xIn, m_vecReal32XIn);
                Helper.CopyFloat(yIn, m_vecReal32YIn);
                m_vecReal32XOut.Import(&x, 1);
                int result = m_pQorn.Interpolate(m_vecReal32YOut, m_vecReal32XIn, m_vecReal32YIn, m_vecReal32XOut);
                fixed (float* first = &y) m_vecReal32YOut.Export(first, Math.Min(m_vecReal32YOut.GetSize(), 1));
                return result;
            }
            catch (Exception e) when (QORNExceptionCatcher.IsForeign(e))
            {
                throw QORNExceptionCatcher.NewException(e);
            }
        }

        /// <inheritdoc cref="Interpolate(FloatArray, FloatArray, FloatArray, FloatArray)"/>
        public int Interpolate(DoubleArray xIn, DoubleArray yIn, DoubleArray xOut, DoubleArray yOut)
        {
            RequireUndisposed();
            try
            {
                int result = Run(xIn, yIn, xOut);
                Helper.CopyDouble(m_vecReal64YOut, yOut);
                return result;
            }
            catch (Exception e) when (QORNExceptionCatcher.IsForeign(e))
            {
                throw QORNExceptionCatcher.NewException(e);
            }
        }

        /// <inheritdoc cref="Interpolate(FloatArray, FloatArray, float, ref float)"/>
        public unsafe int Interpolate(DoubleArray xIn, DoubleArray yIn, double x, ref double y)
        {
            RequireUndisposed();
            try
            {
                Helper.CopyDouble(xIn, m_vecReal64XIn);
                Helper.CopyDouble(yIn, m_vecReal64YIn);
                m_vecReal64XOut.Import(&x, 1);
                int result = m_pQorn.Interpolate(m_vecReal64YOut, m_vecReal64XIn, m_vecReal64YIn, m_vecReal64XOut);
                fixed (double* first = &y) m_vecReal64YOut.Export(first, Math.Min(m_vecReal64YOut.GetSize(), 1));
                return result;
            }
            catch (Exception e) when (QORNExceptionCatcher.IsForeign(e))
            {
                throw QORNExceptionCatcher.NewException(e);
            }
        }

        /// <summary>Releases the native objects. Further calls do nothing.</summary>
        public void Dispose()
        {
            Release();
            GC.SuppressFinalize(this);
        }

        /// <summary>m_vecReal32YOut = the interpolated values at xOut.</summary>
        private protected int Run(FloatArray xIn, FloatArray yIn, FloatArray xOut)
        {
            Helper.CopyFloat(xIn, m_vecReal32XIn);
            Helper.CopyFloat(yIn, m_vecReal32YIn);
            Helper.CopyFloat(xOut, m_vecReal32XOut);
            return m_pQorn.Interpolate(m_vecReal32YOut, m_vecReal32XIn, m_vecReal32YIn, m_vecReal32XOut);
        }

        /// <summary>m_vecReal64YOut = the interpolated values at xOut.</summary>
        private protected int Run(DoubleArray xIn, DoubleArray yIn, DoubleArray xOut)
        {
            Helper.CopyDouble(xIn, m_vecReal64XIn);
            Helper.CopyDouble(yIn, m_vecReal64YIn);
            Helper.CopyDouble(xOut, m_vecReal64XOut);
            return m_pQorn.Interpolate(m_vecReal64YOut, m_vecReal64XIn, m_vecReal64YIn, m_vecReal64XOut);
        }

        private protected void RequireUndisposed()
        {
            if (m_disposed) throw new ObjectDisposedException(GetType().Name);
        }

        // The finaliser may come here after a constructor that failed, with some of the fields still null.
        private void Release()
        {
            if (m_disposed) return;
            m_disposed = true;
            m_pQorn?.Dispose();
            m_vecReal32XIn?.Dispose();
            m_vecReal32YIn?.Dispose();
            m_vecReal32XOut?.Dispose();
            m_vecReal32YOut?.Dispose();
            m_vecReal64XIn?.Dispose();
            m_vecReal64YIn?.Dispose();
            m_vecReal64XOut?.Dispose();
            m_vecReal64YOut?.Dispose();
        }
    }

    /// <summary>Owns a native interpolator.</summary>
    internal abstract class InterpolatorHandle : SafeHandleZeroOrMinusOneIsInvalid
    {
        protected InterpolatorHandle() : base(true)
        {
            Native.RequireInterface();
        }

        /// <summary>yOut = the values at xOut of the table of x and y. Returns the native result.</summary>
        internal abstract int Interpolate<T>(
            NativeVector<T> yOut, NativeVector<T> x, NativeVector<T> y, NativeVector<T> xOut) where T : unmanaged;
    }
}
