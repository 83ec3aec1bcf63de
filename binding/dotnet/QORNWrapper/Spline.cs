using System;

namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>
    /// Interpolates tables with a cubic spline, whose first and second derivatives are continuous. Each end has either a
    /// first derivative of its own or is natural: its second derivative is then 0.
    /// </summary>
    /// <remarks>
    /// Interpolate returns 0; 10003 if xIn and yIn differ in count; 10002 if there is no point. The order of xIn is not
    /// checked.
    /// </remarks>
    public sealed class Spline : Interpolator
    {
        /// <summary>A spline that is natural at both ends.</summary>
        public Spline() : base(new SplineHandle())
        {
        }

        /// <summary>The first derivative at the first point. Above 1e30 that end is natural.</summary>
        public void SetBoundaryCondition1(double derivative)
        {
            RequireUndisposed();
            Native.qorn_spline_set_boundary1(m_pQorn, derivative, out NativeError error);
            error.ThrowIfFailed();
            GC.KeepAlive(this);
        }

        /// <summary>The first derivative at the last point. Above 1e30 that end is natural.</summary>
        public void SetBoundaryCondition2(double derivative)
        {
            RequireUndisposed();
            Native.qorn_spline_set_boundary2(m_pQorn, derivative, out NativeError error);
            error.ThrowIfFailed();
            GC.KeepAlive(this);
        }

        /// <summary>Makes both ends natural.</summary>
        public void SetNaturalSpline()
        {
            RequireUndisposed();
            Native.qorn_spline_set_natural(m_pQorn, out NativeError error);
            error.ThrowIfFailed();
            GC.KeepAlive(this);
        }
    }

    /// <summary>Owns a native Spline.</summary>
    internal sealed class SplineHandle : InterpolatorHandle
    {
        internal SplineHandle()
        {
            SetHandle(Native.qorn_spline_create(out NativeError error));
            error.ThrowIfFailed();
        }

        internal override int Interpolate<T>(
            NativeVector<T> yOut, NativeVector<T> x, NativeVector<T> y, NativeVector<T> xOut)
        {
            int result = Native.qorn_spline_interpolate(this, yOut, x, y, xOut, out NativeError error);
            error.ThrowIfFailed();
            return result;
        }

        protected override bool ReleaseHandle()
        {
            Native.qorn_spline_destroy(handle);
            return true;
        }
    }
}
