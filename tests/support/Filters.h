// The filters of the library as a table, and what tests read of them.
#ifndef QORN_TESTS_SUPPORT_FILTERS_H
#define QORN_TESTS_SUPPORT_FILTERS_H

#include <cmath>
#include <complex>
#include <cstddef>
#include <memory>
#include <typeinfo>
#include <vector>

#include "qorn/dsp/ClassicFilters.h"
#include "qorn/dsp/FIRFilterFactory.h"
#include "qorn/dsp/IntegralFilters.h"
#include "qorn/dsp/MeasurementFilters.h"
#include "qorn/dsp/PulseFilters.h"
#include "qorn/dsp/UserDefinedFilters.h"
#include "support/Vectors.h"

namespace QORN::test {

/// Reaches what subclasses reach.
struct FilterProbe : FIRBaseFilter {
  static int TapSize(const FIRBaseFilter &f) { return f.*(&FilterProbe::m_tapSize); }
  static float TimeShift(const FIRBaseFilter &f) { return f.*(&FilterProbe::m_timeShift); }
  static const FIRFilter *Engine(const FIRBaseFilter &f) { return (f.*(&FilterProbe::m_fir)).get(); }

  /// A filter of any taps.
  FilterProbe(const std::vector<float> &taps, const std::vector<Cplx32> &cplxTaps, bool isComplex)
      : complex(isComplex) {
    m_taps = Of<VecReal32>(taps);
    m_cplxTaps = Of<VecCplx32>(cplxTaps);
  }
  bool IsComplexFilter() override { return complex; }
  bool complex;
};

inline std::vector<float> Taps(const FIRBaseFilter &filter) {
  VecReal32 taps;
  filter.GetTaps(taps);
  return List(taps);
}

inline std::vector<Cplx32> CplxTaps(const FIRBaseFilter &filter) {
  VecCplx32 taps;
  filter.GetTaps(taps);
  return List(taps);
}

inline constexpr long double kPiLong = 3.14159265358979323846264338327950288L;

/// The gain of taps at a frequency relative to the sampling rate, with its phase about the middle.
inline std::complex<long double> Response(const std::vector<float> &taps, long double frequency) {
  const long double middle = (static_cast<long double>(taps.size()) - 1) / 2;
  std::complex<long double> sum = 0;
  for (std::size_t i = 0; i < taps.size(); ++i) {
    const long double angle = -2 * kPiLong * frequency * (static_cast<long double>(i) - middle);
    sum += static_cast<long double>(taps[i]) * std::polar(1.0L, angle);
  }
  return sum;
}

inline long double Decibels(long double gain) { return 20 * std::log10(std::fabs(gain)); }

/// sin(pi x) / (pi x).
inline long double LongSinc(long double x) { return x == 0 ? 1 : std::sin(kPiLong * x) / (kPiLong * x); }

struct FilterKind {
  int type;
  const std::type_info &filter;
  int reported; // GetType
  bool integral;
  std::unique_ptr<FIRBaseFilter> Make() const {
    return std::unique_ptr<FIRBaseFilter>(FIRFilterFactory::MakeFilter(static_cast<FIRFilterTypeTag>(type)));
  }
};

/// All that the factory makes.
inline const FilterKind kFilterKinds[] = {
    {1, typeid(RootRaisedCosineFilter), 1, false},
    {2, typeid(RaisedCosineFilter), 2, false},
    {3, typeid(GaussianFilter), 3, false},
    {4, typeid(GaussRectFilter), 20, true},
    {6, typeid(RectangularFilter), 6, false},
    {12, typeid(IS95TXMeasurementFilter), 12, false},
    {13, typeid(IS95TXEQMeasurementFilter), 13, false},
    {14, typeid(IS95ReferenceFilter), 14, false},
    {15, typeid(C4FMReverseShapingFilter), 15, false},
    {16, typeid(HDQPSKP25MeasurementFilter), 16, false},
    {17, typeid(LowPassFilter), 17, false},
    {18, typeid(HighPassFilter), 18, false},
    {19, typeid(BandPassFilter), 19, false},
    {20, typeid(IntegralGaussianFilter), 20, true},
    {21, typeid(IntegralRectFilter), 21, true},
    {23, typeid(UserDefinedFilter), 23, false},
    {24, typeid(IntegralUserDefinedFilter), 24, true},
};

} // namespace QORN::test

#endif
