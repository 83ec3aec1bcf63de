#ifndef QORN_DSP_FIRBASEFILTER_H
#define QORN_DSP_FIRBASEFILTER_H

#include <memory>

#include "qorn/Export.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

class FIRFilter;

/// The kinds of filter that FIRFilterFactory makes; values that are not named are reserved.
enum FIRFilterTypeTag : int {
  FIRFilterRootRaisedCosine = 1,      ///< RootRaisedCosineFilter
  FIRFilterRaisedCosine = 2,          ///< RaisedCosineFilter
  FIRFilterGaussian = 3,              ///< GaussianFilter
  FIRFilterGaussRect = 4,             ///< GaussRectFilter, which reports FIRFilterIntegralGaussian
  FIRFilterRectangular = 6,           ///< RectangularFilter
  FIRFilterIS95TXMeasurement = 12,    ///< IS95TXMeasurementFilter
  FIRFilterIS95TXEQMeasurement = 13,  ///< IS95TXEQMeasurementFilter
  FIRFilterIS95Reference = 14,        ///< IS95ReferenceFilter
  FIRFilterC4FMReverseShaping = 15,   ///< C4FMReverseShapingFilter
  FIRFilterHDQPSKP25Measurement = 16, ///< HDQPSKP25MeasurementFilter
  FIRFilterLowPass = 17,              ///< LowPassFilter
  FIRFilterHighPass = 18,             ///< HighPassFilter
  FIRFilterBandPass = 19,             ///< BandPassFilter
  FIRFilterIntegralGaussian = 20,     ///< IntegralGaussianFilter
  FIRFilterIntegralRect = 21,         ///< IntegralRectFilter
  FIRFilterUserDefined = 23,          ///< UserDefinedFilter
  FIRFilterIntegralUserDefined = 24   ///< IntegralUserDefinedFilter
};

/// The common face of all designed filters: taps, a delay and Apply. The usual order of calls is
/// FIRFilterFactory::MakeFilter, GetRecommendedTapSize, SetParameters, then Apply block by block.
///
/// A new filter has no taps, and gives zeros. SetParameters designs them and may be repeated: each call
/// replaces all of the design before. What a design makes of frequencies and shapes that make no sense (zero,
/// negative, not-a-number) is told by each class; none of them crashes, loops without end or asks for more
/// memory than the tap count says, and a tap count below 1 leaves a filter without taps.
///
/// No state is carried from one Apply to the next. The object keeps scratch memory, so it is for one thread
/// at a time. A copy is an independent filter with scratch memory of its own.
class QORN_API FIRBaseFilter {
public:
  /// A filter without taps and without a kind: GetType() is 0.
  FIRBaseFilter();

  FIRBaseFilter(const FIRBaseFilter &other);
  FIRBaseFilter &operator=(const FIRBaseFilter &other);

  virtual ~FIRBaseFilter();

  /// The number of taps with which the design is as good as it should be, for the sampling rate and the
  /// symbol rate in hertz and the shape as in SetParameters; 0 if there is no recommendation, as in this
  /// class. Every class computes it in float as its comment says, "odd(x)" being the integer part of x with
  /// its lowest bit set, or 0 if x is not a number or beyond the range of int. Nothing is allocated but where
  /// a class says so.
  virtual int GetRecommendedTapSize(float samplingRate, float rate, float shape);

  /// Designs the taps: the sampling rate in hertz, the symbol rate, bandwidth or cutoff in hertz, the shape
  /// (roll-off, bandwidth-time product or upper cutoff) and the number of taps. Here it does nothing. Throws
  /// QORNException 11001 if there is no memory for the taps.
  virtual void SetParameters(float samplingRate, float rate, float shape, int tapSize);

  /// Filters a block of L samples: out[n] = sum over i of taps[i] * in[n + d - i], 0 <= n < L, in taken as
  /// zero outside of the block, with d = half the number of taps, rounded down, if centre is true, and d = 0
  /// if it is false; see FIRFilter::Apply, also for what is allocated. out may be in.
  ///
  /// Real samples into real ones take the real taps, real samples into complex ones the complex taps; complex
  /// samples take the complex taps if IsComplexFilter() is true and the real taps otherwise.
  ///@{
  virtual void Apply(VecCplx32 &out, VecReal32 const &in, bool centre);
  virtual void Apply(VecCplx32 &out, VecCplx32 const &in, bool centre);
  virtual void Apply(VecReal32 &out, VecReal32 const &in, bool centre);
  ///@}

  /// True for a filter whose response is the running integral of a pulse, false here.
  virtual bool IsIntegralFilter();

  /// True if complex samples are filtered with the complex taps, false here.
  virtual bool IsComplexFilter();

  /// Stores a time shift in seconds. Only the filters of IntegralFilters.h and IntegralUserDefinedFilter read
  /// it, at their next Apply.
  virtual void SetTimeShift(float timeShift);

  /// The group delay in samples of the causal output (centre false).
  float GetDelay() const { return m_delay; }

  /// taps = the real taps or the complex taps, at their number.
  ///@{
  void GetTaps(VecReal32 &taps) const { taps = m_taps; }
  void GetTaps(VecCplx32 &taps) const { taps = m_cplxTaps; }
  ///@}

  /// The kind that the class reports, see FIRFilterTypeTag.
  FIRFilterTypeTag GetType() const { return m_type; }

protected:
  explicit FIRBaseFilter(FIRFilterTypeTag type);

  /// Stores the number of taps and the delay (tapSize - 1) / 2, rounded to float.
  void SetSymmetric(int tapSize);

  std::unique_ptr<FIRFilter> m_fir; ///< the convolution engine; never null
  FIRFilterTypeTag m_type;          ///< see GetType
  int m_tapSize = 0;                ///< the number of taps asked for or fixed by the design
  VecReal32 m_taps;                 ///< the real taps
  VecCplx32 m_cplxTaps;             ///< the complex taps, of complex filters only
  float m_delay = 0.0F;             ///< see GetDelay
  float m_timeShift = 0.0F;         ///< see SetTimeShift
};

/// What the filters share that are designed from a sampling rate and a symbol rate or cutoff.
class QORN_API FIRRateFilter : public FIRBaseFilter {
public:
  /// The sampling rate in hertz of the latest design, 0 at first.
  float GetSamplingRate() const { return m_samplingRate; }

protected:
  explicit FIRRateFilter(FIRFilterTypeTag type) : FIRBaseFilter(type) {}

  /// The symbol rate in hertz of the latest design, 0 at first.
  float GetSymbolRate() const { return m_rate; }

  /// Stores what a symmetric design is made from.
  void StoreDesign(float samplingRate, float rate, int tapSize);

  float m_samplingRate = 0.0F; ///< in hertz
  float m_rate = 0.0F;         ///< the symbol rate, bandwidth or cutoff in hertz
};

/// What the filters share that have a shape beside the two rates.
class QORN_API FIRShapeFilter : public FIRRateFilter {
protected:
  explicit FIRShapeFilter(FIRFilterTypeTag type) : FIRRateFilter(type) {}

  /// The roll-off or the bandwidth-time product of the latest design, 0 at first.
  float GetRoleoff() const { return m_shape; }

  /// Stores what a symmetric design is made from.
  void StoreDesign(float samplingRate, float rate, float shape, int tapSize);

  float m_shape = 0.0F; ///< the roll-off, bandwidth-time product or upper cutoff
};

} // namespace QORN

#endif
