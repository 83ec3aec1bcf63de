#ifndef QORN_DSP_USERDEFINEDFILTERS_H
#define QORN_DSP_USERDEFINEDFILTERS_H

#include "qorn/dsp/FIRBaseFilter.h"

namespace QORN {

/// What UserDefinedFilter and IntegralUserDefinedFilter share: taps that the user gives at a rate of their
/// own, tapRate taps per symbol, and that are resampled to the sampling rate of the filter. F is the filter,
/// whose ComputeResampledFilterTaps does that.
///
/// The resampled taps are the complex taps of the filter. They are computed anew only when the user's taps or
/// the rates change.
template <class F> class QORN_API UserTapsFilter : public FIRRateFilter {
public:
  /// The user's taps, copied; real ones with zero imaginary parts. From now on IsComplexFilter() is true. If
  /// SetParameters has been called since the last Clear, they are resampled at once for the stored rates, and
  /// GetDelay() becomes (n - 1) / 2, rounded down, for the n taps that come out.
  ///@{
  void SetUserTaps(VecCplx32 const &taps, float tapRate);
  void SetUserTaps(VecReal32 const &taps, float tapRate);
  ///@}

  /// 1023 without user taps. With them it calls SetParameters(samplingRate, rate, 0, 0), so it changes the
  /// filter, and returns the number of taps. The shape is not used.
  int GetRecommendedTapSize(float samplingRate, float rate, float shape) override;

  /// Stores the sampling rate and the symbol rate in hertz. With user taps it also resamples them for
  /// samplingRate / rate samples per symbol, unless both rates are those of the call before; then, if n is
  /// above 0 and not the number of taps, ResizeFilterTaps to n; and GetDelay() becomes (n - 1) / 2, rounded
  /// down, for the number n of taps. The shape is not used.
  void SetParameters(float samplingRate, float rate, float shape, int n) override;

  /// True once there have been user taps.
  bool IsComplexFilter() override { return m_complex; }

  /// The rate of the user's taps, in taps per symbol; 0 at first.
  float GetTapRate() const { return m_tapRate; }

  /// Forgets that there are user taps and that SetParameters was called. The resampled taps stay.
  void Clear();

  /// Gives oldSize taps the number newSize and keeps their middle in the middle: zeros are put before and
  /// behind them, or as many are taken away, the fewer ones in front where that number is odd.
  static void ResizeFilterTaps(VecCplx32 &taps, int newSize, int oldSize);

protected:
  explicit UserTapsFilter(FIRFilterTypeTag type) : FIRRateFilter(type) {}

  float m_tapRate = 0.0F;       ///< see GetTapRate
  VecCplx32 m_userTaps;         ///< the taps as the user gave them
  bool m_tapsPresent = false;   ///< SetUserTaps has been called since the last Clear
  bool m_parametersSet = false; ///< SetParameters has been called since the last Clear
  bool m_complex = false;       ///< see IsComplexFilter

private:
  void Resample();
};

/// The filter with any taps, interpolated band-limited to the sampling rate.
class QORN_API UserDefinedFilter : public UserTapsFilter<UserDefinedFilter> {
public:
  UserDefinedFilter() : UserTapsFilter(FIRFilterUserDefined) {}

  /// The user's L taps h at tapRate taps per symbol, resampled to `ratio` samples per symbol about their
  /// centroid of energy c = sum of i |h[i]|^2 / sum of |h[i]|^2, or (L - 1) / 2 where there is no energy.
  /// With step = tapRate / ratio, rounded to float, out gets
  ///
  ///   n = 2 trunc(max(c, L - 1 - c) / step) + 3 taps,   out[j] = h(c - (j - (n - 1) / 2) step) / ratio.
  ///
  /// So they are in reverse order: out[0] comes from the late end. h(p) is h[r], r the nearest integer to p,
  /// if p is less than 0.001 from it and r is a place of h; otherwise the sum of h[i] sin(a) / a, a = (i - p)
  /// 3.1415927f, over the places i of h from r - 200 to r + 200. a and its sine are formed in double, each
  /// product is rounded to float, and the sum is formed in float.
  ///
  /// out is empty if step is not positive and finite, and if n would be above 2^22. out must not be user.
  static void ComputeResampledFilterTaps(VecCplx32 &out, VecCplx32 const &user, float tapRate, float ratio);
};

/// The filter with the running integral of any pulse: its response ends at magnitude 1 and stays there.
class QORN_API IntegralUserDefinedFilter : public UserTapsFilter<IntegralUserDefinedFilter> {
public:
  IntegralUserDefinedFilter() : UserTapsFilter(FIRFilterIntegralUserDefined) {}

  using FIRBaseFilter::Apply;

  /// out[m] = sum over n of taps[m - n + s] * in[n], where what an input adds stays at its value after the
  /// last tap: after each input n has been added at the places up to e = min(n - s + T - 1, L - 1), out[e +
  /// 1] = out[e]. T is the number of taps, L that of samples, s = floor(samplingRate * timeShift + delay +
  /// 1/2), the first two sums in float. So the time shift moves the output by whole samples only. An input
  /// whose e is below 0 is passed over. The real form takes the real parts of the taps. centre has no effect;
  /// out may be in. Allocates a temporary vector of T floats in the real form.
  ///@{
  void Apply(VecCplx32 &out, VecCplx32 const &in, bool centre) override;
  void Apply(VecReal32 &out, VecReal32 const &in, bool centre) override;
  ///@}

  bool IsIntegralFilter() override { return true; }

  /// The step response of the user's L taps h at tapRate taps per symbol, at `ratio` samples per symbol.
  ///
  /// The interpolated taps, about their centroid c as in UserDefinedFilter but in the order of h, are
  /// convolved with a rectangle of one symbol, on a grid of R points per sample, the smallest power of two
  /// for which there are at least 32 points per symbol. out[g] is the sum of all points to the end of sample
  /// g, and all of out is scaled to |out| = 1 at its end, unless it ends at 0. The number of taps is odd.
  ///
  /// Point i of F stands at p = (i - 1/2 - b) step + c of h. One that is less than 0.001 from a tap of h is
  /// set to that tap. Any other whose nearest tap r exists adds h[k] sin(a) / a, a = (k - p) pi, for each k
  /// from r - 200 to r + 200, to all points from i - q to i + q, q = trunc(R ratio / 2). Sines are in double,
  /// the points in float, the sum of points in double.
  ///
  /// out is empty if tapRate, ratio and their quotient are not all positive and finite, if F would be above
  /// 2^22, or if the additions would be above 2^37, some ten seconds of work. out must not be user.
  static void ComputeResampledFilterTaps(VecCplx32 &out, VecCplx32 const &user, float tapRate, float ratio);
};

extern template class UserTapsFilter<UserDefinedFilter>;
extern template class UserTapsFilter<IntegralUserDefinedFilter>;

} // namespace QORN

#endif
