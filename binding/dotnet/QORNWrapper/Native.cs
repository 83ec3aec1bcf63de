using System;
using System.Runtime.InteropServices;

namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>The C interface of the native library, qorn_c.h.</summary>
    internal static class Native
    {
        private const string Library = "qorn_c";

        // A library with another interface would fail in ways that are hard to understand.
        private static readonly bool s_verified = Verify(expected: 1);

        /// <summary>Throws if the library that is loaded has another interface than this assembly expects.</summary>
        internal static void RequireInterface() => _ = s_verified;

        private static bool Verify(int expected)
        {
            int found = qorn_c_interface();
            if (found == expected) return true;
            throw new NotSupportedException($"The native library has interface {found} instead of {expected}.");
        }

        [DllImport(Library)]
        private static extern int qorn_c_interface();

        [DllImport(Library)]
        internal static extern IntPtr qorn_vector_create(int element, out NativeError error);

        [DllImport(Library)]
        internal static extern void qorn_vector_destroy(IntPtr vector);

        [DllImport(Library)]
        internal static extern int qorn_vector_size(SafeHandle vector);

        [DllImport(Library)]
        internal static extern int qorn_vector_capacity(SafeHandle vector);

        [DllImport(Library)]
        internal static extern unsafe void* qorn_vector_data(SafeHandle vector);

        [DllImport(Library)]
        internal static extern int qorn_vector_resize(SafeHandle vector, int n, out NativeError error);

        [DllImport(Library)]
        internal static extern unsafe int qorn_vector_import(SafeHandle vector, void* src, int n, out NativeError error);

        [DllImport(Library)]
        internal static extern unsafe int qorn_vector_export(SafeHandle vector, void* dst, int n, out NativeError error);

        [DllImport(Library)]
        internal static extern IntPtr qorn_spectrum_create(int size, int window, float parameter, out NativeError error);

        [DllImport(Library)]
        internal static extern void qorn_spectrum_destroy(IntPtr spectrum);

        [DllImport(Library)]
        internal static extern int qorn_spectrum_set_unit(SafeHandle spectrum, int unit, out NativeError error);

        [DllImport(Library)]
        internal static extern int qorn_spectrum_size(SafeHandle spectrum);

        [DllImport(Library)]
        internal static extern unsafe int qorn_spectrum_apply_block(
            SafeHandle spectrum, SafeHandle dst, SafeHandle src, void* data, int n, out NativeError error);

        [DllImport(Library)]
        internal static extern IntPtr qorn_spline_create(out NativeError error);

        [DllImport(Library)]
        internal static extern void qorn_spline_destroy(IntPtr spline);

        [DllImport(Library)]
        internal static extern int qorn_spline_set_boundary1(SafeHandle spline, double derivative, out NativeError error);

        [DllImport(Library)]
        internal static extern int qorn_spline_set_boundary2(SafeHandle spline, double derivative, out NativeError error);

        [DllImport(Library)]
        internal static extern int qorn_spline_set_natural(SafeHandle spline, out NativeError error);

        [DllImport(Library)]
        internal static extern int qorn_spline_interpolate(
            SafeHandle spline, SafeHandle yOut, SafeHandle x, SafeHandle y, SafeHandle xOut, out NativeError error);

        [DllImport(Library)]
        internal static extern IntPtr qorn_hermite_create(out NativeError error);

        [DllImport(Library)]
        internal static extern void qorn_hermite_destroy(IntPtr hermite);

        [DllImport(Library)]
        internal static extern int qorn_hermite_interpolate(
            SafeHandle hermite, SafeHandle yOut, SafeHandle x, SafeHandle y, SafeHandle xOut, out NativeError error);

        [DllImport(Library)]
        internal static extern double qorn_watt2dbm(double watt);

        [DllImport(Library)]
        internal static extern float qorn_watt2dbmf(float watt);

        [DllImport(Library)]
        internal static extern double qorn_dbm2watt(double dBm);

        [DllImport(Library)]
        internal static extern float qorn_dbm2wattf(float dBm);

        [DllImport(Library)]
        internal static extern double qorn_volt2dbm(double volt);

        [DllImport(Library)]
        internal static extern float qorn_volt2dbmf(float volt);

        [DllImport(Library)]
        internal static extern double qorn_dbm2volt(double dBm);

        [DllImport(Library)]
        internal static extern float qorn_dbm2voltf(float dBm);

        [DllImport(Library)]
        internal static extern double qorn_peakvolt2dbm(double volt);

        [DllImport(Library)]
        internal static extern float qorn_peakvolt2dbmf(float volt);

        [DllImport(Library)]
        internal static extern double qorn_dbm2peakvolt(double dBm);

        [DllImport(Library)]
        internal static extern float qorn_dbm2peakvoltf(float dBm);

        [DllImport(Library)]
        internal static extern double qorn_volt2watt(double volt);

        [DllImport(Library)]
        internal static extern float qorn_volt2wattf(float volt);

        [DllImport(Library)]
        internal static extern double qorn_watt2volt(double watt);

        [DllImport(Library)]
        internal static extern float qorn_watt2voltf(float watt);

        [DllImport(Library)]
        internal static extern double qorn_dbm2dbv(double dBm);

        [DllImport(Library)]
        internal static extern float qorn_dbm2dbvf(float dBm);

        [DllImport(Library)]
        internal static extern double qorn_dbv2dbm(double dBV);

        [DllImport(Library)]
        internal static extern float qorn_dbv2dbmf(float dBV);

        [DllImport(Library)]
        internal static extern double qorn_dbv2volt(double dBV);

        [DllImport(Library)]
        internal static extern float qorn_dbv2voltf(float dBV);

        [DllImport(Library)]
        internal static extern double qorn_volt2dbv(double volt);

        [DllImport(Library)]
        internal static extern float qorn_volt2dbvf(float volt);

        [DllImport(Library)]
        internal static extern double qorn_dbv2watt(double dBV);

        [DllImport(Library)]
        internal static extern float qorn_dbv2wattf(float dBV);

        [DllImport(Library)]
        internal static extern double qorn_watt2dbv(double watt);

        [DllImport(Library)]
        internal static extern float qorn_watt2dbvf(float watt);

        [DllImport(Library)]
        internal static extern double qorn_dbpt2dbuvm(double dBpT);

        [DllImport(Library)]
        internal static extern double qorn_dbuvm2dbpt(double dBuVm);
    }
}
