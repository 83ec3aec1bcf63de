using System;
using Morvenhal.RF.KST.Shared;

namespace Morvenhal.RF.KST.QORNWrapper
{
    /// <summary>
    /// Conversions between the units of radio-frequency measurement, in a 50 ohm system.
    /// </summary>
    /// <remarks>
    /// <para>The forms in float take logarithms and powers in double and round the result.</para>
    /// <para>The logarithm of zero reads about -40 and that of a negative number -999, scaled and offset by the formula:
    /// zero volts are -800 dBV.</para>
    /// <para>An array form gives the destination the count of the source and converts element by element; the two may be
    /// one array. An array of null is refused with <see cref="ArgumentNullException"/>. There is no state: any thread may
    /// call at any time.</para>
    /// </remarks>
    public static class UnitConversion
    {
        /// <summary>W to dBm: 10 log10(1000 W).</summary>
        public static double Watt2dBm(double watt) => Native.qorn_watt2dbm(watt);

        /// <inheritdoc cref="Watt2dBm(double)"/>
        public static float Watt2dBm(float watt) => Native.qorn_watt2dbmf(watt);

        /// <summary>W to dBm, element by element.</summary>
        public static void Watt2dBm(DoubleArray dst, DoubleArray src) => ForEach(dst, src, Watt2dBm);

        /// <inheritdoc cref="Watt2dBm(DoubleArray, DoubleArray)"/>
        public static void Watt2dBm(FloatArray dst, FloatArray src) => ForEach(dst, src, Watt2dBm);

        /// <summary>dBm to W: 10^(dBm / 10) / 1000.</summary>
        public static double dBm2Watt(double dBm) => Native.qorn_dbm2watt(dBm);

        /// <inheritdoc cref="dBm2Watt(double)"/>
        public static float dBm2Watt(float dBm) => Native.qorn_dbm2wattf(dBm);

        /// <summary>dBm to W, element by element.</summary>
        public static void dBm2Watt(DoubleArray dst, DoubleArray src) => ForEach(dst, src, dBm2Watt);

        /// <inheritdoc cref="dBm2Watt(DoubleArray, DoubleArray)"/>
        public static void dBm2Watt(FloatArray dst, FloatArray src) => ForEach(dst, src, dBm2Watt);

        /// <summary>V to dBm: 20 log10(V / sqrt(0.05)).</summary>
        public static double Volt2dBm(double volt) => Native.qorn_volt2dbm(volt);

        /// <inheritdoc cref="Volt2dBm(double)"/>
        public static float Volt2dBm(float volt) => Native.qorn_volt2dbmf(volt);

        /// <summary>V to dBm, element by element.</summary>
        public static void Volt2dBm(DoubleArray dst, DoubleArray src) => ForEach(dst, src, Volt2dBm);

        /// <inheritdoc cref="Volt2dBm(DoubleArray, DoubleArray)"/>
        public static void Volt2dBm(FloatArray dst, FloatArray src) => ForEach(dst, src, Volt2dBm);

        /// <summary>dBm to V: 10^(dBm / 20) sqrt(0.05).</summary>
        public static double dBm2Volt(double dBm) => Native.qorn_dbm2volt(dBm);

        /// <inheritdoc cref="dBm2Volt(double)"/>
        public static float dBm2Volt(float dBm) => Native.qorn_dbm2voltf(dBm);

        /// <summary>dBm to V, element by element.</summary>
        public static void dBm2Volt(DoubleArray dst, DoubleArray src) => ForEach(dst, src, dBm2Volt);

        /// <inheritdoc cref="dBm2Volt(DoubleArray, DoubleArray)"/>
        public static void dBm2Volt(FloatArray dst, FloatArray src) => ForEach(dst, src, dBm2Volt);

        /// <summary>peak V to dBm: 20 log10(V) + 10.</summary>
        public static double PeakVolt2dBm(double volt) => Native.qorn_peakvolt2dbm(volt);

        /// <inheritdoc cref="PeakVolt2dBm(double)"/>
        public static float PeakVolt2dBm(float volt) => Native.qorn_peakvolt2dbmf(volt);

        /// <summary>peak V to dBm, element by element.</summary>
        public static void PeakVolt2dBm(DoubleArray dst, DoubleArray src) => ForEach(dst, src, PeakVolt2dBm);

        /// <inheritdoc cref="PeakVolt2dBm(DoubleArray, DoubleArray)"/>
        public static void PeakVolt2dBm(FloatArray dst, FloatArray src) => ForEach(dst, src, PeakVolt2dBm);

        /// <summary>dBm to peak V: 10^((dBm - 10) / 20).</summary>
        public static double dBm2PeakVolt(double dBm) => Native.qorn_dbm2peakvolt(dBm);

        /// <inheritdoc cref="dBm2PeakVolt(double)"/>
        public static float dBm2PeakVolt(float dBm) => Native.qorn_dbm2peakvoltf(dBm);

        /// <summary>dBm to peak V, element by element.</summary>
        public static void dBm2PeakVolt(DoubleArray dst, DoubleArray src) => ForEach(dst, src, dBm2PeakVolt);

        /// <inheritdoc cref="dBm2PeakVolt(DoubleArray, DoubleArray)"/>
        public static void dBm2PeakVolt(FloatArray dst, FloatArray src) => ForEach(dst, src, dBm2PeakVolt);

        /// <summary>V to W: V^2 / 50.</summary>
        public static double Volt2Watt(double volt) => Native.qorn_volt2watt(volt);

        /// <inheritdoc cref="Volt2Watt(double)"/>
        public static float Volt2Watt(float volt) => Native.qorn_volt2wattf(volt);

        /// <summary>V to W, element by element.</summary>
        public static void Volt2Watt(DoubleArray dst, DoubleArray src) => ForEach(dst, src, Volt2Watt);

        /// <inheritdoc cref="Volt2Watt(DoubleArray, DoubleArray)"/>
        public static void Volt2Watt(FloatArray dst, FloatArray src) => ForEach(dst, src, Volt2Watt);

        /// <summary>W to V: sqrt(50 W).</summary>
        public static double Watt2Volt(double watt) => Native.qorn_watt2volt(watt);

        /// <inheritdoc cref="Watt2Volt(double)"/>
        public static float Watt2Volt(float watt) => Native.qorn_watt2voltf(watt);

        /// <summary>W to V, element by element.</summary>
        public static void Watt2Volt(DoubleArray dst, DoubleArray src) => ForEach(dst, src, Watt2Volt);

        /// <inheritdoc cref="Watt2Volt(DoubleArray, DoubleArray)"/>
        public static void Watt2Volt(FloatArray dst, FloatArray src) => ForEach(dst, src, Watt2Volt);

        /// <summary>dBm to dBV: dBm - 13.01029995663981.</summary>
        public static double dBm2dBV(double dBm) => Native.qorn_dbm2dbv(dBm);

        /// <inheritdoc cref="dBm2dBV(double)"/>
        public static float dBm2dBV(float dBm) => Native.qorn_dbm2dbvf(dBm);

        /// <summary>dBm to dBV, element by element.</summary>
        public static void dBm2dBV(DoubleArray dst, DoubleArray src) => ForEach(dst, src, dBm2dBV);

        /// <inheritdoc cref="dBm2dBV(DoubleArray, DoubleArray)"/>
        public static void dBm2dBV(FloatArray dst, FloatArray src) => ForEach(dst, src, dBm2dBV);

        /// <summary>dBV to dBm: dBV + 13.01029995663981.</summary>
        public static double dBV2dBm(double dBV) => Native.qorn_dbv2dbm(dBV);

        /// <inheritdoc cref="dBV2dBm(double)"/>
        public static float dBV2dBm(float dBV) => Native.qorn_dbv2dbmf(dBV);

        /// <summary>dBV to dBm, element by element.</summary>
        public static void dBV2dBm(DoubleArray dst, DoubleArray src) => ForEach(dst, src, dBV2dBm);

        /// <inheritdoc cref="dBV2dBm(DoubleArray, DoubleArray)"/>
        public static void dBV2dBm(FloatArray dst, FloatArray src) => ForEach(dst, src, dBV2dBm);

        /// <summary>dBV to V: 10^(dBV / 20).</summary>
        public static double dBV2Volt(double dBV) => Native.qorn_dbv2volt(dBV);

        /// <inheritdoc cref="dBV2Volt(double)"/>
        public static float dBV2Volt(float dBV) => Native.qorn_dbv2voltf(dBV);

        /// <summary>dBV to V, element by element.</summary>
        public static void dBV2Volt(DoubleArray dst, DoubleArray src) => ForEach(dst, src, dBV2Volt);

        /// <inheritdoc cref="dBV2Volt(DoubleArray, DoubleArray)"/>
        public static void dBV2Volt(FloatArray dst, FloatArray src) => ForEach(dst, src, dBV2Volt);

        /// <summary>V to dBV: 20 log10(V).</summary>
        public static double Volt2dBV(double volt) => Native.qorn_volt2dbv(volt);

        /// <inheritdoc cref="Volt2dBV(double)"/>
        public static float Volt2dBV(float volt) => Native.qorn_volt2dbvf(volt);

        /// <summary>V to dBV, element by element.</summary>
        public static void Volt2dBV(DoubleArray dst, DoubleArray src) => ForEach(dst, src, Volt2dBV);

        /// <inheritdoc cref="Volt2dBV(DoubleArray, DoubleArray)"/>
        public static void Volt2dBV(FloatArray dst, FloatArray src) => ForEach(dst, src, Volt2dBV);

        /// <summary>dBV to W: 10^(dBV / 10) / 50.</summary>
        public static double dBV2Watt(double dBV) => Native.qorn_dbv2watt(dBV);

        /// <inheritdoc cref="dBV2Watt(double)"/>
        public static float dBV2Watt(float dBV) => Native.qorn_dbv2wattf(dBV);

        /// <summary>dBV to W, element by element.</summary>
        public static void dBV2Watt(DoubleArray dst, DoubleArray src) => ForEach(dst, src, dBV2Watt);

        /// <inheritdoc cref="dBV2Watt(DoubleArray, DoubleArray)"/>
        public static void dBV2Watt(FloatArray dst, FloatArray src) => ForEach(dst, src, dBV2Watt);

        /// <summary>W to dBV: 10 log10(50 W).</summary>
        public static double Watt2dBV(double watt) => Native.qorn_watt2dbv(watt);

        /// <inheritdoc cref="Watt2dBV(double)"/>
        public static float Watt2dBV(float watt) => Native.qorn_watt2dbvf(watt);

        /// <summary>W to dBV, element by element.</summary>
        public static void Watt2dBV(DoubleArray dst, DoubleArray src) => ForEach(dst, src, Watt2dBV);

        /// <inheritdoc cref="Watt2dBV(DoubleArray, DoubleArray)"/>
        public static void Watt2dBV(FloatArray dst, FloatArray src) => ForEach(dst, src, Watt2dBV);

        /// <summary>dBpT to dBuV/m: dBpT + 49.5.</summary>
        public static double dBpT2dBuVm(double dBpT) => Native.qorn_dbpt2dbuvm(dBpT);

        /// <summary>dBpT to dBuV/m, element by element.</summary>
        public static void dBpT2dBuVm(DoubleArray dst, DoubleArray src) => ForEach(dst, src, dBpT2dBuVm);

        /// <summary>dBuV/m to dBpT: dBuV/m - 49.5.</summary>
        public static double dBuVm2dBpT(double dBuVm) => Native.qorn_dbuvm2dbpt(dBuVm);

        /// <summary>dBuV/m to dBpT, element by element.</summary>
        public static void dBuVm2dBpT(DoubleArray dst, DoubleArray src) => ForEach(dst, src, dBuVm2dBpT);

        private static void ForEach<T>(KSTArray<T> dst, KSTArray<T> src, Func<T, T> convert) where T : struct
        {
            if (dst == null) throw new ArgumentNullException(nameof(dst));
            if (src == null) throw new ArgumentNullException(nameof(src));
            dst.Count = src.Count;
            for (int i = 0; i < dst.Count; ++i) dst[i] = convert(src[i]);
        }
    }
}
