#ifndef QORN_DSP_CLASSICFILTERS_H
#define QORN_DSP_CLASSICFILTERS_H

#include "qorn/dsp/FIRBaseFilter.h"

namespace QORN {

/// A low-pass by a windowed sinc with the Hamming window and a gain of 1 at frequency 0: DSPUtils::LowPass at
/// cutoff / samplingRate, the quotient rounded to float. The gain at the cutoff is 1/2, the transition about
/// 3.3 / n of the sampling rate wide, the stop band below about -52 dB. n may be odd or even.
///
/// The taps are symmetric and GetDelay() is (n - 1) / 2. All of them are 0 for n below 5 and for a cutoff
/// that is not above 0 and below half the sampling rate. There is no recommended number of taps.
class QORN_API LowPassFilter : public FIRRateFilter {
public:
  LowPassFilter() : FIRRateFilter(FIRFilterLowPass) {}

  /// n taps for a cutoff in hertz. The shape of the first form is not used.
  ///@{
  void SetParameters(float samplingRate, float cutoff, float shape, int n) override;
  void SetParameters(float samplingRate, float cutoff, int n);
  ///@}
};

/// A high-pass by DSPUtils::HighPass, with a gain of 1 at half the sampling rate; of even length it has no
/// gain there and 1 midway between the cutoff and there. See LowPassFilter for what else holds.
class QORN_API HighPassFilter : public FIRRateFilter {
public:
  HighPassFilter() : FIRRateFilter(FIRFilterHighPass) {}

  /// n taps for a cutoff in hertz. The shape of the first form is not used.
  ///@{
  void SetParameters(float samplingRate, float cutoff, float shape, int n) override;
  void SetParameters(float samplingRate, float cutoff, int n);
  ///@}
};

/// A band-pass by DSPUtils::BandPass, with a gain of 1 midway between its two cutoffs, which are to ascend.
/// See LowPassFilter for what else holds.
class QORN_API BandPassFilter : public FIRShapeFilter {
public:
  BandPassFilter() : FIRShapeFilter(FIRFilterBandPass) {}

  /// n taps for the lower and the upper cutoff in hertz.
  void SetParameters(float samplingRate, float low, float high, int n) override;
};

} // namespace QORN

#endif
