#ifndef QORN_DSP_INTEGRALFILTERS_H
#define QORN_DSP_INTEGRALFILTERS_H

#include "qorn/dsp/FIRBaseFilter.h"

namespace QORN {

/// The running integral of a rectangle of one symbol and area 1: the phase of minimum-shift keying. It rises
/// from 0 to 1 over one symbol, centred on its impulse, and then stays.
///
/// Real samples are filtered without taps: the response is evaluated at the exact time of each output, for
/// each input that is not 0, so it may be shifted by fractions of a sample and never ends. Complex samples go
/// through the plain convolution with the stored taps, taps[i] = Ts p(t[i]), p the pulse of
/// WaveformGenerator::IntegralConvRect; t, T and Ts as for RaisedCosineFilter, whose remark on rates that
/// make no sense holds here too.
class QORN_API IntegralRectFilter : public FIRRateFilter {
public:
  IntegralRectFilter() : FIRRateFilter(FIRFilterIntegralRect) {}

  using FIRRateFilter::GetSymbolRate;

  /// odd(10 samplingRate / rate); the shape is not used.
  int GetRecommendedTapSize(float samplingRate, float rate, float shape) override;

  /// n taps for a symbol rate in hertz; the shape is not used. Apply on real samples takes the rates alone.
  void SetParameters(float samplingRate, float rate, float shape, int n) override;

  using FIRBaseFilter::Apply;

  /// out[j] = sum over the i with in[i] not 0 of in[i] * p((j - i) Ts + shift), 0 <= j < L, for L samples,
  /// with p as above and the shift of SetTimeShift: a positive one gives the output earlier. Times and sums
  /// are formed in float. centre has no effect. out may be in.
  ///
  /// Takes time in proportion to L times the number of nonzero samples: made for sparse inputs, such as one
  /// symbol followed by zeros. Allocates two temporary vectors of L floats.
  void Apply(VecReal32 &out, VecReal32 const &in, bool centre) override;

  bool IsIntegralFilter() override { return true; }

  /// The taps by themselves, for the symbol period T and the sample period Ts; the shape is not used.
  static void IntegralRectFilterTap(VecReal32 &taps, float shape, float T, float Ts, int n);
};

/// The running integral of the pulse of GaussRectFilter: the phase of Gaussian minimum-shift keying. As
/// IntegralRectFilter, with p the pulse of WaveformGenerator::IntegralConvGauss.
class QORN_API IntegralGaussianFilter : public FIRShapeFilter {
public:
  IntegralGaussianFilter() : FIRShapeFilter(FIRFilterIntegralGaussian) {}

  using FIRRateFilter::GetSymbolRate;
  using FIRShapeFilter::GetRoleoff;

  /// odd(10 samplingRate / (rate * r)), r the bandwidth-time product but at least 0.001.
  int GetRecommendedTapSize(float samplingRate, float rate, float BT) override;

  /// n taps for a symbol rate in hertz and a bandwidth-time product. Apply on real samples takes these alone.
  void SetParameters(float samplingRate, float rate, float BT, int n) override;

  using FIRBaseFilter::Apply;

  /// As IntegralRectFilter::Apply.
  void Apply(VecReal32 &out, VecReal32 const &in, bool centre) override;

  bool IsIntegralFilter() override { return true; }

  /// The taps by themselves, for the symbol period T and the sample period Ts.
  static void IntegralGaussianFilterTap(VecReal32 &taps, float BT, float T, float Ts, int n);
};

} // namespace QORN

#endif
