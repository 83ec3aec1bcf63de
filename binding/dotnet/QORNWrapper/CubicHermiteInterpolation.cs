using System;
using Morvenhal.RF.KST.Shared;

namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>
    /// Interpolates tables with a piecewise cubic that keeps the shape of the data: it rises where they rise, falls where
    /// they fall, and does not overshoot.
    /// </summary>
    /// <remarks>
    /// Interpolate fails with code 10002 if an element of xIn is not less than its successor or yIn is shorter than xIn, and
    /// with 12005 if there are fewer than two points; else it returns 0.
    /// </remarks>
    public sealed class CubicHermiteInterpolation : Interpolator
    {
        /// <summary>A new interpolator.</summary>
        public CubicHermiteInterpolation() : base(new CubicHermiteInterpolationHandle())
        {
        }

        /// <summary>
        /// The values at xOut, all of them or the inner ones alone: with <paramref name="inner"/> at most yIn.Count - 2 of
        /// the values, from the first on, stand in yOut from index 1 on, and its element 0 stays.
        /// </summary>
        /// <returns>0.</returns>
        public int Interpolate(FloatArray xIn, FloatArray yIn, FloatArray xOut, FloatArray yOut, bool inner) =>
            Interpolate(xIn, yIn, xOut, yOut, inner, m_vecReal32XIn, m_vecReal32YIn, m_vecReal32XOut, m_vecReal32YOut);

        /// <inheritdoc cref="Interpolate(FloatArray, FloatArray, FloatArray, FloatArray, bool)"/>
        public int Interpolate(DoubleArray xIn, DoubleArray yIn, DoubleArray xOut, DoubleArray yOut, bool inner) =>
            Interpolate(xIn, yIn, xOut, yOut, inner, m_vecReal64XIn, m_vecReal64YIn, m_vecReal64XOut, m_vecReal64YOut);

        /// <summary>
        /// Shifts a stretch of uniform data by a part of a step. Its table is point i = (k step + offset, yIn[k]) with
        /// k = first + i for 0 &lt;= i &lt; n, and v[i] is the curve at the x of point i plus shift. Then
        /// yOut[first + i] = v[i + 1] for s &lt;= i &lt; n - 2, with s = 0 for the first stretch, first = 0, and
        /// s = filterLength / 2 for all others.
        /// </summary>
        /// <param name="first">The index of the stretch in both arrays.</param>
        /// <param name="n">The number of its points, 2 at least.</param>
        /// <param name="step">The distance of the points, above 0.</param>
        /// <param name="offset">The x of element 0 of yIn.</param>
        /// <param name="shift">What is added to the x of each point.</param>
        /// <param name="filterLength">Twice the number of points that each stretch but the first leaves out.</param>
        /// <param name="yIn">The data, of first + n elements at least.</param>
        /// <param name="yOut">Keeps its count, first + n - 2 at least, and all other elements.</param>
        /// <returns>0.</returns>
        public unsafe int Interpolate(
            int first, int n, double step, double offset, double shift, int filterLength, FloatArray yIn, FloatArray yOut)
        {
            RequireUndisposed();
            try
            {
                if (yIn == null) throw new ArgumentNullException(nameof(yIn));
                if (yOut == null) throw new ArgumentNullException(nameof(yOut));
                if (filterLength < 0) throw new ArgumentOutOfRangeException(nameof(filterLength));
                m_vecReal64XIn.Resize(n);
                m_vecReal64YIn.Resize(n);
                m_vecReal64XOut.Resize(n);
                double* xs = m_vecReal64XIn.Data, ys = m_vecReal64YIn.Data, shifted = m_vecReal64XOut.Data;
                for (int i = 0; i < n; ++i)
                {
                    int k = first + i;
                    double x = k * step + offset;
                    xs[i] = x;
                    shifted[i] = x + shift;
                    ys[i] = yIn[k];
                }
                int result = m_pQorn.Interpolate(m_vecReal64YOut, m_vecReal64XIn, m_vecReal64YIn, m_vecReal64XOut);
                double* values = m_vecReal64YOut.Data;
                for (int i = first == 0 ? 0 : filterLength / 2; i < n - 2; ++i) yOut[i + first] = (float)values[i + 1];
                GC.KeepAlive(this);
                return result;
            }
            catch (Exception e) when (QORNExceptionCatcher.IsForeign(e))
            {
                throw QORNExceptionCatcher.NewException(e);
            }
        }
    }

    /// <summary>Owns a native CubicHermiteInterpolation.</summary>
    internal sealed class CubicHermiteInterpolationHandle : InterpolatorHandle
    {
        internal CubicHermiteInterpolationHandle()
        {
            SetHandle(Native.qorn_hermite_create(out NativeError error));
            error.ThrowIfFailed();
        }

        internal override int Interpolate<T>(
            NativeVector<T> yOut, NativeVector<T> x, NativeVector<T> y, NativeVector<T> xOut)
        {
            int result = Native.qorn_hermite_interpolate(this, yOut, x, y, xOut, out NativeError error);
            error.ThrowIfFailed();
            return result;
        }

        protected override bool ReleaseHandle()
        {
            Native.qorn_hermite_destroy(handle);
            return true;
        }
    }
}
