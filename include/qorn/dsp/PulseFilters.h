#ifndef QORN_DSP_PULSEFILTERS_H
#define QORN_DSP_PULSEFILTERS_H

#include "qorn/dsp/FIRBaseFilter.h"

namespace QORN {

/// The raised-cosine filter: taps[i] = (Ts / T) p(t[i]) with p the pulse of
/// WaveformGenerator::RaisedCosinePulse, of peak 1, at the times t[i] = (i - (n - 1) / 2) Ts, 0 <= i < n. T =
/// 1 / rate is the symbol period, Ts = 1 / samplingRate the sample period, both rounded to float.
///
/// The gain at frequency 0 is near 1, and at multiples of the symbol period from the centre the response is
/// 0: no interference between symbols. This and the other filters of this header are symmetric, their delay
/// GetDelay() is (n - 1) / 2, and all is computed in float by the steps of WaveformGenerator. A rate or
/// sampling rate that is zero or not finite gives the values that follow from the formulas, which may be
/// not-a-number.
class QORN_API RaisedCosineFilter : public FIRShapeFilter {
public:
  RaisedCosineFilter() : FIRShapeFilter(FIRFilterRaisedCosine) {}

  using FIRRateFilter::GetSymbolRate;
  using FIRShapeFilter::GetRoleoff;

  /// odd(4.375 samplingRate / (rate * r)), r the roll-off but at least 0.001. So roll-off 0 is recommended
  /// 4375 symbols.
  int GetRecommendedTapSize(float samplingRate, float rate, float rolloff) override;

  /// n taps for a symbol rate in hertz and a roll-off, 0 to 1. With roll-off 0 they are samples of a sinc.
  void SetParameters(float samplingRate, float rate, float rolloff, int n) override;

  /// The taps by themselves, for the symbol period T and the sample period Ts.
  static void RaisedCosineFilterTap(VecReal32 &taps, float rolloff, float T, float Ts, int n);
};

/// The root-raised-cosine filter: taps[i] = (Ts / sqrt(T)) p(t[i]) with p the pulse of
/// WaveformGenerator::RootRaisedCosinePulse, of unit energy. Two of them in a row make a raised cosine. At
/// the recommended length, which cuts the pulse, a pair leaves at each other symbol an interference below -60
/// dB for roll-offs from 0.15 to 0.35, below -57 dB at 0.5 and below -53 dB up to 1; more taps leave less.
/// See RaisedCosineFilter for t, T, Ts and what else holds.
class QORN_API RootRaisedCosineFilter : public FIRShapeFilter {
public:
  RootRaisedCosineFilter() : FIRShapeFilter(FIRFilterRootRaisedCosine) {}

  using FIRRateFilter::GetSymbolRate;
  using FIRShapeFilter::GetRoleoff;

  /// odd(8.75 samplingRate / (rate * r)), r the roll-off but at least 0.001. So roll-off 0 is recommended
  /// 8750 symbols.
  int GetRecommendedTapSize(float samplingRate, float rate, float rolloff) override;

  /// n taps for a symbol rate in hertz and a roll-off, 0 to 1.
  void SetParameters(float samplingRate, float rate, float rolloff, int n) override;

  /// The taps by themselves, for the symbol period T and the sample period Ts.
  static void RootRaisedCosineFilterTap(VecReal32 &taps, float rolloff, float T, float Ts, int n);
};

/// The Gaussian filter: taps[i] = Ts p(t[i]) with p the pulse of WaveformGenerator::GaussianPulse, of area 1
/// and 3 dB bandwidth BT / T. See RaisedCosineFilter for t, T, Ts and what else holds.
class QORN_API GaussianFilter : public FIRShapeFilter {
public:
  GaussianFilter() : FIRShapeFilter(FIRFilterGaussian) {}

  using FIRRateFilter::GetSymbolRate;
  using FIRShapeFilter::GetRoleoff;

  /// odd(10 samplingRate / (rate * r)), r the bandwidth-time product but at least 0.001.
  int GetRecommendedTapSize(float samplingRate, float rate, float BT) override;

  /// n taps for a symbol rate in hertz and a bandwidth-time product.
  void SetParameters(float samplingRate, float rate, float BT, int n) override;

  /// The taps by themselves, for the symbol period T and the sample period Ts.
  static void GaussianFilterTap(VecReal32 &taps, float BT, float T, float Ts, int n);
};

/// The frequency pulse of Gaussian minimum-shift keying: taps[i] = Ts p(t[i]) with p the pulse of
/// WaveformGenerator::ConvGauss, a rectangle of one symbol and area 1 convolved with the Gaussian of
/// GaussianFilter. See RaisedCosineFilter for t, T, Ts and what else holds.
///
/// IsIntegralFilter() is true, though Apply is the plain convolution, and GetType() is
/// FIRFilterIntegralGaussian.
class QORN_API GaussRectFilter : public FIRShapeFilter {
public:
  GaussRectFilter() : FIRShapeFilter(FIRFilterIntegralGaussian) {}

  using FIRRateFilter::GetSymbolRate;
  using FIRShapeFilter::GetRoleoff;

  /// As GaussianFilter.
  int GetRecommendedTapSize(float samplingRate, float rate, float BT) override;

  /// n taps for a symbol rate in hertz and a bandwidth-time product.
  void SetParameters(float samplingRate, float rate, float BT, int n) override;

  bool IsIntegralFilter() override { return true; }

  /// The taps by themselves, for the symbol period T and the sample period Ts.
  static void GaussRectFilterTap(VecReal32 &taps, float BT, float T, float Ts, int n);
};

/// The filter with a rectangular frequency response of two-sided bandwidth rate: taps[i] = Ts p(t[i]) with p
/// the pulse of WaveformGenerator::SincPulse for a cutoff of rate / 2. See RaisedCosineFilter for t, Ts and
/// what else holds.
class QORN_API RectangularFilter : public FIRRateFilter {
public:
  RectangularFilter() : FIRRateFilter(FIRFilterRectangular) {}

  /// odd(10 samplingRate / rate); the shape is not used.
  int GetRecommendedTapSize(float samplingRate, float rate, float shape) override;

  /// n taps for a two-sided bandwidth in hertz. The shape of the first form is not used.
  ///@{
  void SetParameters(float samplingRate, float rate, float shape, int n) override;
  void SetParameters(float samplingRate, float rate, int n);
  ///@}

  /// The taps by themselves, for the sample period Ts.
  static void RectangularFilterTap(VecReal32 &taps, float rate, float Ts, int n);
};

} // namespace QORN

#endif
