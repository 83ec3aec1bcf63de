#ifndef QORN_DSP_MEASUREMENTFILTERS_H
#define QORN_DSP_MEASUREMENTFILTERS_H

#include "qorn/dsp/PulseFilters.h"

namespace QORN {

/// What the three IS-95 filters share: their taps are tables for 2, 4, 8 and 16 samples per chip, which are
/// one impulse response at four spacings.
class QORN_API IS95Filter : public FIRBaseFilter {
public:
  /// The number of taps of the table for samplingRate / rate, rounded to the nearest integer, halves upwards;
  /// 0 for a ratio without a table. The shape is not used.
  int GetRecommendedTapSize(float samplingRate, float rate, float shape) override;

  /// SetParameters(samplingRate / rate, rounded as above). The others are not used.
  void SetParameters(float samplingRate, float rate, float shape, int tapSize) override;

  /// Loads the table for that many samples per chip; GetDelay() becomes (n - 1) / 2 for its n taps. A ratio
  /// other than 2, 4, 8 and 16 leaves everything as it was.
  void SetParameters(int ratio);

  /// The samples per chip of the table that is loaded; 0 before one is.
  int GetOversamplingRatio() const { return m_oversamplingRatio; }

protected:
  explicit IS95Filter(FIRFilterTypeTag type) : FIRBaseFilter(type) {}

  int m_oversamplingRatio = 0; ///< see GetOversamplingRatio
};

/// The IS-95 transmitter filter: 81, 161, 321 or 643 taps at 2, 4, 8 or 16 samples per chip, of sum 0.9185 at
/// each of them and nearly symmetric.
class QORN_API IS95TXMeasurementFilter : public IS95Filter {
public:
  IS95TXMeasurementFilter() : IS95Filter(FIRFilterIS95TXMeasurement) {}
};

/// The IS-95 transmitter filter with the phase equaliser: the lengths and the sum of
/// IS95TXMeasurementFilter.
class QORN_API IS95TXEQMeasurementFilter : public IS95Filter {
public:
  IS95TXEQMeasurementFilter() : IS95Filter(FIRFilterIS95TXEQMeasurement) {}
};

/// The IS-95 reference filter: 103, 207, 415 or 829 taps at 2, 4, 8 or 16 samples per chip, exactly
/// symmetric.
class QORN_API IS95ReferenceFilter : public IS95Filter {
public:
  IS95ReferenceFilter() : IS95Filter(FIRFilterIS95Reference) {}
};

/// The receive filter of C4FM on a grid of 4800 symbols a second, sinc(f / 4800) for |f| < 4800 Hz and 0
/// beyond, with sinc(x) = sin(pi x) / (pi x), designed by an inverse Fourier transform. Other symbol rates
/// scale the grid.
///
/// The first and the last tap are 0, for even n the last two: the response is cut one tap before the end. The
/// taps are symmetric about tap (n - 1) / 2, rounded down; GetDelay() is (n - 1) / 2 without rounding. With a
/// whole number of samples per symbol the gain at frequency 0 is near 1; otherwise it is near the ratio of
/// that number to the nearest integer. Rates that are zero, negative or not finite give the values that
/// follow, which may be not-a-number.
class QORN_API C4FMReverseShapingFilter : public FIRRateFilter {
public:
  C4FMReverseShapingFilter() : FIRRateFilter(FIRFilterC4FMReverseShaping) {}

  using FIRRateFilter::GetSymbolRate;

  /// 0: the filter has no roll-off.
  float GetRoleoff() const { return 0.0F; }

  /// With p the integer part of 20 samplingRate / rate: the smallest power of two from 2 on that is not below
  /// p, less 1; 1 for p below 3, and 0 if p is not an int. The shape is not used.
  int GetRecommendedTapSize(float samplingRate, float rate, float shape) override;

  /// n taps for a symbol rate in hertz; the shape is not used.
  void SetParameters(float samplingRate, float rate, float shape, int n) override;

  /// The taps by themselves, for the symbol period T and the sample period Ts. With S = T / Ts samples per
  /// symbol and N the smallest power of two from 2 on that is not below n, they are those of the inverse
  /// transform of N bins S sinc(k S / N), |k S / N| < 1, over S rounded to the nearest integer; bin N / 2 is
  /// 0. Allocates vectors of N elements.
  static void C4FMFilterTap(VecReal32 &taps, float T, float Ts, int n);
};

/// The measurement filter of the H-DQPSK downlink of P25: the root-raised-cosine filter of 32 taps for 7200
/// symbols a second and roll-off 0.8333.
class QORN_API HDQPSKP25MeasurementFilter : public FIRShapeFilter {
public:
  HDQPSKP25MeasurementFilter();

  /// 0.8333.
  using FIRShapeFilter::GetRoleoff;

  /// What RootRaisedCosineFilter recommends for 7200 symbols a second and roll-off 0.8333. The rate and the
  /// shape are not used.
  int GetRecommendedTapSize(float samplingRate, float rate, float shape) override;

  /// 32 taps, whatever n is. But GetDelay() becomes (n - 1) / 2 for the n given: it fits the taps for n = 32
  /// only. The rate and the shape are not used.
  void SetParameters(float samplingRate, float rate, float shape, int n) override;

private:
  RootRaisedCosineFilter m_inner;
};

} // namespace QORN

#endif
