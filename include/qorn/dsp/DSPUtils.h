#ifndef QORN_DSP_DSPUTILS_H
#define QORN_DSP_DSPUTILS_H

#include "qorn/Export.h"
#include "qorn/infra/Cplx.h"

namespace QORN {

class VecInt32;
class VecReal32;
class VecReal64;
class VecCplx32;
class VecCplx64;

/// Everyday signal work on vectors: ramps and sums, measures of magnitude and power, polar form and phase,
/// frequency shifting, correlation and convolution, filter taps, fractional indices, integrals and averages.
/// Static functions only.
///
/// The destination comes first and is given its length by Resize, so a kept destination allocates nothing,
/// unless told otherwise; an in-place form takes the vector alone and keeps its length. The destination must
/// be another vector than the sources, unless told otherwise. i runs over the whole source, n is its length.
/// Each step is rounded to the element's type, unless told otherwise. Arguments are not checked; nothing is
/// thrown except 11001 by a vector that cannot grow. All functions are reentrant.
class QORN_API DSPUtils {
public:
  // Ramps, sums and measures.

  /// dst[i] = i * slope + offset for 0 <= i < n, one rounding for each of the two steps; integers wrap.
  ///@{
  static void Ramp(VecReal32 &dst, int n, float offset, float slope);
  static void Ramp(VecReal64 &dst, int n, double offset, double slope);
  static void Ramp(VecInt32 &dst, int n, int offset, int slope);
  ///@}

  /// dst[i] = src[0] + src[1] + ... + src[i], added in this order in the element's precision. dst may be src.
  ///@{
  static void CumSum(VecReal32 &dst, const VecReal32 &src);
  static void CumSum(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dst[i] = |src[i]|: MathUtils::Abs.
  ///@{
  static void Mag(VecReal32 &dst, const VecCplx32 &src);
  static void Mag(VecReal64 &dst, const VecCplx64 &src);
  ///@}

  /// dst[i] = sqrt(re[i]^2 + im[i]^2), with the steps of MathUtils::Abs. dst gets the length of re; im must
  /// be as long. dst may be re.
  ///@{
  static void Mag(VecReal32 &dst, const VecReal32 &re, const VecReal32 &im);
  static void Mag(VecReal64 &dst, const VecReal64 &re, const VecReal64 &im);
  ///@}

  /// dst[i] = re^2 + im^2 of src[i].
  ///@{
  static void MagSqr(VecReal32 &dst, const VecCplx32 &src);
  static void MagSqr(VecReal64 &dst, const VecCplx64 &src);
  ///@}

  /// dst[i] = 10 log10(re^2 + im^2) of src[i], by UnitConversion::PowerRatio2dB, which gives about -400 for a
  /// zero.
  ///@{
  static void MagdB(VecReal32 &dst, const VecCplx32 &src);
  static void MagdB(VecReal64 &dst, const VecCplx64 &src);
  ///@}

  /// The largest element divided by the mean. An empty vector gives not-a-number.
  static float PeakToAve(const VecReal32 &vec);

  /// The norm sqrt(sum of |vec[i]|^2), the squares and their sum in double; 0 for an empty vector.
  ///@{
  static float Norm(const VecReal32 &vec);
  static double Norm(const VecReal64 &vec);
  static double Norm(const VecCplx32 &vec);
  static double Norm(const VecCplx64 &vec);
  ///@}

  /// Norm(vec)^2, the square in the precision of the result.
  ///@{
  static float SumSqrMag(const VecReal32 &vec);
  static double SumSqrMag(const VecCplx32 &vec);
  static double SumSqrMag(const VecCplx64 &vec);
  ///@}

  /// Norm(vec)^2 / n, both steps in the precision of the result. An empty vector gives not-a-number.
  ///@{
  static float MeanSqrMag(const VecReal32 &vec);
  static double MeanSqrMag(const VecCplx32 &vec);
  static double MeanSqrMag(const VecCplx64 &vec);
  ///@}

  /// The root of MeanSqrMag, taken in double; for VecReal64 Norm(vec) / sqrt(n). An empty vector gives
  /// not-a-number.
  ///@{
  static float RootMeanSqr(const VecReal32 &vec);
  static double RootMeanSqr(const VecReal64 &vec);
  static double RootMeanSqr(const VecCplx32 &vec);
  static double RootMeanSqr(const VecCplx64 &vec);
  ///@}

  // Order of a spectrum.

  /// Puts the zero frequency of a transform in the middle: with n elements and first = n / 2 rounded up, dst
  /// = src[first] to src[n - 1], followed by src[0] to src[first - 1]; so src[0] lands at n / 2 rounded down.
  /// {0, 1, 2, 3} gives {2, 3, 0, 1}; {0, 1, 2, 3, 4} gives {3, 4, 0, 1, 2}. Shifting an odd length twice
  /// does not restore it. dst may be src. The in-place form costs a temporary copy.
  ///@{
  static void FFTShift(VecReal32 &dst, const VecReal32 &src);
  static void FFTShift(VecReal64 &dst, const VecReal64 &src);
  static void FFTShift(VecCplx32 &dst, const VecCplx32 &src);
  static void FFTShift(VecCplx64 &dst, const VecCplx64 &src);
  static void FFTShift(VecInt32 &dst, const VecInt32 &src);
  static void FFTShift(VecReal32 &vec);
  static void FFTShift(VecReal64 &vec);
  static void FFTShift(VecCplx32 &vec);
  static void FFTShift(VecCplx64 &vec);
  ///@}

  // Polar form and phase, in radians.

  /// mag[i] = |src[i]|, phase[i] = atan2(im, re) of src[i] in radians, -pi to pi. mag and phase must be two
  /// vectors.
  static void CartToPolar(VecReal32 &mag, VecReal32 &phase, const VecCplx32 &src);

  /// dst[i] = (mag[i] cos phase[i], mag[i] sin phase[i]), phase in radians. dst gets the length of mag; phase
  /// must be as long.
  static void PolarToCart(VecCplx32 &dst, const VecReal32 &mag, const VecReal32 &phase);

  /// dst[i] = atan2(im, re) of src[i], -pi to pi.
  ///@{
  static void Phase(VecReal32 &dst, const VecCplx32 &src);
  static void Phase(VecReal64 &dst, const VecCplx64 &src);
  ///@}

  /// Folds each element to -pi to pi: x less floor(|x| / 2 pi) turns towards zero, then one turn more if that
  /// lies beyond pi. 2.5 pi gives 0.5 pi, 1.5 pi gives -0.5 pi. The floor and its product with 2 pi are taken
  /// in double; in the float form the product is then rounded, and the second step takes 3.1415927f and
  /// 6.2831855f. Infinities give not-a-number; zeros and not-a-number stay.
  ///@{
  static void MapPhase(VecReal32 &vec);
  static void MapPhase(VecReal64 &vec);
  ///@}

  /// Removes jumps of one period: dst[0] = src[0], dst[i] = src[i] + offset, where the offset, 0 at first,
  /// loses a period at each i for which src[i] - src[i - 1] > period / 2, and gains one at each for which
  /// that is below -period / 2. One period per step, however large the jump. dst may be src.
  ///@{
  static void Unwrap(VecReal32 &dst, const VecReal32 &src, float period);
  static void Unwrap(VecReal64 &dst, const VecReal64 &src, double period);
  ///@}

  /// Removes jumps of any size, outward from the element at start, 0 <= start < n. Forward from start on,
  /// each element is compared with its predecessor, vec[start] with initial, all as they were: while the
  /// difference exceeds period / 2, a period is taken from it and from the offset, while it is below -period
  /// / 2, one is added to both; the element is then raised by the offset, 0 at first. Backward from start - 1
  /// the same against each successor, with an offset of its own, beginning at vec[start] as just corrected. A
  /// jump costs a step for each period in it; a difference so large that a period vanishes in its rounding,
  /// such as an infinite one, is left.
  ///@{
  static void Unwrap(VecReal32 &vec, int start, float initial, float period);
  static void Unwrap(VecReal64 &vec, int start, double initial, double period);
  ///@}

  /// dst = the phase of src, then unwrapped with the period 2 pi: 6.2831855f or 6.283185307179586.
  ///@{
  static void PhaseAndUnwrap(VecReal32 &dst, const VecCplx32 &src);
  static void PhaseAndUnwrap(VecReal64 &dst, const VecCplx64 &src);
  ///@}

  /// vec[i] = vec[i] * (cos angle + j sin angle). The sine and the cosine are taken in double, in the float
  /// form then rounded to float.
  ///@{
  static void RotatePhase(VecCplx32 &vec, float angle);
  static void RotatePhase(VecCplx64 &vec, double angle);
  ///@}

  /// Shifts the frequency: dst[i] = src[i] * exp(j (*phase + 2 pi freq i)), freq in cycles per sample, *phase
  /// in radians. *phase becomes that of the sample that would follow, -pi to pi, so a further call with the
  /// same variable continues without a step; with freq 0 it stays as it is. dst may be src; a real src is
  /// taken as (src[i], 0).
  ///
  /// freq acts through its remainder by 1, *phase through that by 2 pi. Phasors and products are formed in
  /// double, each part of a result is rounded to float once. The phasor is turned from sample to sample by
  /// products and made anew every R samples from a phase counted in double: R = 100 / |freq|, about a hundred
  /// cycles, but at least 100 and at most n. What the products stray in between, about 1e-12 rad in ten
  /// million samples, is dropped then, and the count rounds by less than 1e-13 rad each time: a long record
  /// stays on frequency and keeps its magnitude. With freq 0 the phasor is rounded to float and the product
  /// is that of floats.
  ///
  /// A freq or phase that is not finite gives not-a-number: the phase from the first sample on, freq from the
  /// second, and both in *phase.
  ///@{
  static void FreqShift(VecCplx32 &vec, double freq, double *phase);
  static void FreqShift(VecCplx32 &dst, const VecCplx32 &src, double freq, double *phase);
  static void FreqShift(VecCplx32 &dst, const VecReal32 &src, double freq, double *phase);
  ///@}

  /// The same, beginning with the given phase; the one that would follow is not returned.
  ///@{
  static void FreqShift(VecCplx32 &vec, double freq, double phase);
  static void FreqShift(VecCplx32 &dst, const VecCplx32 &src, double freq, double phase);
  static void FreqShift(VecCplx32 &dst, const VecReal32 &src, double freq, double phase);
  ///@}

  // Correlation, convolution and filter taps.

  /// The correlation over all lags at which the longer of a and b overlaps itself: with m the larger length,
  /// dst[k] = sum over i of conj(b[i]) * a[i + k + 1 - m], 0 <= k < 2 m - 1, elements outside being 0; so lag
  /// 0 stands at m - 1. Not normalised. Zero if one of them is empty.
  ///@{
  static void CrossCorr(VecReal32 &dst, const VecReal32 &a, const VecReal32 &b);
  static void CrossCorr(VecCplx32 &dst, const VecCplx32 &a, const VecCplx32 &b);
  ///@}

  /// The correlation over the lags from 0 on of n elements of a with the whole rest of b: dst[k] = sum over
  /// 0 <= i < n of conj(a[aStart + i]) * b[bStart + i + k], 0 <= k < dstLen, elements beyond the end of b
  /// being 0. Zero if either part is empty.
  ///@{
  static void CrossCorr(VecReal32 &dst, int dstLen, const VecReal32 &a, int aStart, const VecReal32 &b,
                        int bStart, int n);
  static void CrossCorr(VecCplx32 &dst, int dstLen, const VecCplx32 &a, int aStart, const VecCplx32 &b,
                        int bStart, int n);
  ///@}

  /// The correlation over as many lags from 0 on as dst has elements: dst[k] = sum over i of conj(b[i]) * a[i
  /// + k], elements beyond the end of a being 0. dst keeps its length; it is zero if a or b is empty.
  static void CrossCorr2(VecCplx32 &dst, const VecCplx32 &a, const VecCplx32 &b);

  /// The linear convolution dst[k] = sum over i of a[i] * b[k - i], of length na + nb - 1. The complex forms
  /// are made of four real convolutions, whose error bound holds for each, and allocate six temporary real
  /// vectors. Zero if a or b is empty.
  ///@{
  static void Conv(VecReal32 &dst, const VecReal32 &a, const VecReal32 &b);
  static void Conv(VecReal64 &dst, const VecReal64 &a, const VecReal64 &b);
  static void Conv(VecCplx32 &dst, const VecCplx32 &a, const VecCplx32 &b);
  static void Conv(VecCplx64 &dst, const VecCplx64 &a, const VecCplx64 &b);
  ///@}

  /// result = sum of a[aStart + i] * b[bStart + i], 0 <= i < n, without conjugation. An n below 1 leaves
  /// result as it is.
  ///@{
  static void DotProd(float &result, const VecReal32 &a, int aStart, const VecReal32 &b, int bStart, int n);
  static void DotProd(double &result, const VecReal64 &a, int aStart, const VecReal64 &b, int bStart, int n);
  static void DotProd(Cplx32 &result, const VecCplx32 &a, int aStart, const VecCplx32 &b, int bStart, int n);
  static void DotProd(Cplx64 &result, const VecCplx64 &a, int aStart, const VecCplx64 &b, int bStart, int n);
  ///@}

  /// dst = n taps of a windowed-sinc filter with the Hamming window, by
  /// TargetLib::FIRGenLowpassWinHamming_64f or its high-pass counterpart, cutoff relative to the sampling
  /// rate, 0 < cutoff < 0.5. The float form designs in double, in a temporary vector, and rounds. All 0 for a
  /// cutoff outside or n below 5.
  ///@{
  static void LowPass(VecReal32 &dst, float cutoff, int n);
  static void LowPass(VecReal64 &dst, double cutoff, int n);
  static void HighPass(VecReal32 &dst, float cutoff, int n);
  static void HighPass(VecReal64 &dst, double cutoff, int n);
  ///@}

  /// The same by TargetLib::FIRGenBandpassWinHamming_64f, 0 < lowCutoff < highCutoff < 0.5.
  ///@{
  static void BandPass(VecReal32 &dst, float lowCutoff, float highCutoff, int n);
  static void BandPass(VecReal64 &dst, double lowCutoff, double highCutoff, int n);
  ///@}

  // Fractional indices, integrals and averages.

  /// The value at the fractional index x, 0 <= x <= n - 1, by linear interpolation between vec[k] and vec[k +
  /// 1], k = floor(x). At the last index the last segment is extended. vec needs at least two elements.
  static float GetArbPointValue(const VecReal32 &vec, double x);

  /// The trapezoid integral over vec, taken as samples at unit distance, from x1 to x2, 0 <= x1, x2 <= n - 1,
  /// summed in double. An integral that begins in the first interval (x1 < 1) counts from sample 1 on, so
  /// what lies before is left out: the integral of {1, 1, 1, 1, 1} from 0 to 3 is 2. At least one whole
  /// interval must lie between the sample after x1 and the one before x2, floor(x2) >= floor(x1) + 2; between
  /// closer ends the sample after x1 counts too much.
  static double Integrate(const VecReal32 &vec, double x1, double x2);

  /// dst[i] = the mean of the width elements src[i - first] to src[i - first + width - 1], with first = width
  /// / 2 rounded down, wherever all of these exist; at the edges, and with a width below 1 or above n, dst[i]
  /// = src[i]. An even width reaches one element further back than forward.
  ///@{
  static void MovingAverage(VecReal32 &dst, const VecReal32 &src, int width);
  static void MovingAverage(VecReal64 &dst, const VecReal64 &src, int width);
  ///@}
};

} // namespace QORN

#endif
