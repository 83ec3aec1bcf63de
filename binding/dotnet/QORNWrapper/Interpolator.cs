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
        // It may run as soon as the last field of an object that nobody knows has been read: operations end with KeepAlive.
        ~Interpolator() => Release();

        /// <summary>yOut[j] = the interpolated value at xOut[j]; yOut gets the count of xOut.</summary>
        /// <returns>0, or the interpolator's own code for a table that it cannot use; yOut is then of no use.</returns>
        public int Interpolate(FloatArray xIn, FloatArray yIn, FloatArray xOut, FloatArray yOut) =>
            Interpolate(xIn, yIn, xOut, yOut, false, m_vecReal32XIn, m_vecReal32YIn, m_vecReal32XOut, m_vecReal32YOut);

        /// <inheritdoc cref="Interpolate(FloatArray, FloatArray, FloatArray, FloatArray)"/>
        public int Interpolate(DoubleArray xIn, DoubleArray yIn, DoubleArray xOut, DoubleArray yOut) =>
            Interpolate(xIn, yIn, xOut, yOut, false, m_vecReal64XIn, m_vecReal64YIn, m_vecReal64XOut, m_vecReal64YOut);

        /// <summary>y = the interpolated value at x.</summary>
        /// <returns>0, or the interpolator's own code for a table that it cannot use; y is then of no use.</returns>
        public int Interpolate(FloatArray xIn, FloatArray yIn, float x, ref float y) =>
            Interpolate(xIn, yIn, x, ref y, m_vecReal32XIn, m_vecReal32YIn, m_vecReal32XOut, m_vecReal32YOut);

        /// <inheritdoc cref="Interpolate(FloatArray, FloatArray, float, ref float)"/>
        public int Interpolate(DoubleArray xIn, DoubleArray yIn, double x, ref double y) =>
            Interpolate(xIn, yIn, x, ref y, m_vecReal64XIn, m_vecReal64YIn, m_vecReal64XOut, m_vecReal64YOut);

        /// <summary>Releases the native objects. Further calls do nothing.</summary>
        public void Dispose()
        {
            Release();
            GC.SuppressFinalize(this);
        }

        /// <summary>
        /// The array forms in either precision, with the vectors of that precision. The inner values alone go to yOut from
        /// index 1 on, at most yIn.Count - 2 of them.
        /// </summary>
        private protected int Interpolate<T>(
            KSTArray<T> xIn, KSTArray<T> yIn, KSTArray<T> xOut, KSTArray<T> yOut, bool inner, NativeVector<T> x,
            NativeVector<T> y, NativeVector<T> at, NativeVector<T> values) where T : unmanaged
        {
            RequireUndisposed();
            try
            {
                Helper.ToNative(xIn, x);
                Helper.ToNative(yIn, y);
                Helper.ToNative(xOut, at);
                int result = m_pQorn.Interpolate(values, x, y, at);
                Helper.ToManaged(values, yOut, inner ? 1 : 0, inner ? yIn.Count - 2 : int.MaxValue);
                GC.KeepAlive(this);
                return result;
            }
            catch (Exception e) when (QORNExceptionCatcher.IsForeign(e))
            {
                throw QORNExceptionCatcher.NewException(e);
            }
        }

        private unsafe int Interpolate<T>(
            KSTArray<T> xIn, KSTArray<T> yIn, T xOut, ref T yOut, NativeVector<T> x, NativeVector<T> y,
            NativeVector<T> at, NativeVector<T> values) where T : unmanaged
        {
            RequireUndisposed();
            try
            {
                Helper.ToNative(xIn, x);
                Helper.ToNative(yIn, y);
                at.Import(&xOut, 1);
                int result = m_pQorn.Interpolate(values, x, y, at);
                fixed (T* first = &yOut) values.Export(first, Math.Min(values.GetSize(), 1));
                GC.KeepAlive(this);
                return result;
            }
            catch (Exception e) when (QORNExceptionCatcher.IsForeign(e))
            {
                throw QORNExceptionCatcher.NewException(e);
            }
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
