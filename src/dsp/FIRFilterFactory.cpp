#include "qorn/dsp/FIRFilterFactory.h"

#include <typeinfo>

#include "FIRFilterTable.h"
#include "qorn/dsp/ClassicFilters.h"
#include "qorn/dsp/IntegralFilters.h"
#include "qorn/dsp/MeasurementFilters.h"
#include "qorn/dsp/PulseFilters.h"
#include "qorn/dsp/UserDefinedFilters.h"

namespace QORN {

namespace {

// What the factory knows of a kind. A new class of filters is a new row.
struct Row {
  FIRFilterTypeTag type;
  const std::type_info &filter;
  std::unique_ptr<FIRBaseFilter> (*make)();
  std::unique_ptr<FIRBaseFilter> (*clone)(const FIRBaseFilter &);
};

template <class F> constexpr Row RowOf(FIRFilterTypeTag type) {
  return {type, typeid(F), [] { return std::unique_ptr<FIRBaseFilter>(std::make_unique<F>()); },
          [](const FIRBaseFilter &filter) {
            return std::unique_ptr<FIRBaseFilter>(std::make_unique<F>(static_cast<const F &>(filter)));
          }};
}

constexpr Row kRows[] = {
    RowOf<RootRaisedCosineFilter>(FIRFilterRootRaisedCosine),
    RowOf<RaisedCosineFilter>(FIRFilterRaisedCosine),
    RowOf<GaussianFilter>(FIRFilterGaussian),
    RowOf<GaussRectFilter>(FIRFilterGaussRect),
    RowOf<RectangularFilter>(FIRFilterRectangular),
    RowOf<IS95TXMeasurementFilter>(FIRFilterIS95TXMeasurement),
    RowOf<IS95TXEQMeasurementFilter>(FIRFilterIS95TXEQMeasurement),
    RowOf<IS95ReferenceFilter>(FIRFilterIS95Reference),
    RowOf<C4FMReverseShapingFilter>(FIRFilterC4FMReverseShaping),
    RowOf<HDQPSKP25MeasurementFilter>(FIRFilterHDQPSKP25Measurement),
    RowOf<LowPassFilter>(FIRFilterLowPass),
    RowOf<HighPassFilter>(FIRFilterHighPass),
    RowOf<BandPassFilter>(FIRFilterBandPass),
    RowOf<IntegralGaussianFilter>(FIRFilterIntegralGaussian),
    RowOf<IntegralRectFilter>(FIRFilterIntegralRect),
    RowOf<UserDefinedFilter>(FIRFilterUserDefined),
    RowOf<IntegralUserDefinedFilter>(FIRFilterIntegralUserDefined),
};

} // namespace

std::unique_ptr<FIRBaseFilter> CloneFilter(const FIRBaseFilter &filter) {
  for (const Row &row : kRows) {
    if (row.filter == typeid(filter)) return row.clone(filter);
  }
  return nullptr;
}

FIRBaseFilter *FIRFilterFactory::MakeFilter(FIRFilterTypeTag type) {
  for (const Row &row : kRows) {
    if (row.type == type) return row.make().release();
  }
  return nullptr;
}

} // namespace QORN
