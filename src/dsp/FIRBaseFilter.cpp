#include "qorn/dsp/FIRBaseFilter.h"

#include "qorn/dsp/FIRFilter.h"

namespace QORN {

FIRBaseFilter::FIRBaseFilter() : FIRBaseFilter(FIRFilterTypeTag{}) {}

FIRBaseFilter::FIRBaseFilter(FIRFilterTypeTag type) : m_fir(std::make_unique<FIRFilter>()), m_type(type) {}

FIRBaseFilter::FIRBaseFilter(const FIRBaseFilter &other)
    : m_fir(std::make_unique<FIRFilter>(*other.m_fir)), m_type(other.m_type), m_tapSize(other.m_tapSize),
      m_taps(other.m_taps), m_cplxTaps(other.m_cplxTaps), m_delay(other.m_delay),
      m_timeShift(other.m_timeShift) {}

FIRBaseFilter &FIRBaseFilter::operator=(const FIRBaseFilter &other) {
  m_taps = other.m_taps;
  m_cplxTaps = other.m_cplxTaps;
  m_type = other.m_type;
  m_tapSize = other.m_tapSize;
  m_delay = other.m_delay;
  m_timeShift = other.m_timeShift;
  return *this;
}

FIRBaseFilter::~FIRBaseFilter() = default;

int FIRBaseFilter::GetRecommendedTapSize(float, float, float) { return 0; }

void FIRBaseFilter::SetParameters(float, float, float, int) {}

void FIRBaseFilter::Apply(VecCplx32 &out, VecReal32 const &in, bool centre) {
  m_fir->Apply(out, m_cplxTaps, in, centre);
}

void FIRBaseFilter::Apply(VecCplx32 &out, VecCplx32 const &in, bool centre) {
  if (IsComplexFilter()) {
    m_fir->Apply(out, m_cplxTaps, in, centre);
  } else {
    m_fir->Apply(out, m_taps, in, centre);
  }
}

void FIRBaseFilter::Apply(VecReal32 &out, VecReal32 const &in, bool centre) {
  m_fir->Apply(out, m_taps, in, centre);
}

bool FIRBaseFilter::IsIntegralFilter() { return false; }

bool FIRBaseFilter::IsComplexFilter() { return false; }

void FIRBaseFilter::SetTimeShift(float timeShift) { m_timeShift = timeShift; }

void FIRBaseFilter::SetSymmetric(int tapSize) {
  m_tapSize = tapSize;
  m_delay = static_cast<float>(static_cast<long long>(tapSize) - 1) * 0.5F;
}

void FIRRateFilter::StoreDesign(float samplingRate, float rate, int tapSize) {
  SetSymmetric(tapSize);
  m_samplingRate = samplingRate;
  m_rate = rate;
}

void FIRShapeFilter::StoreDesign(float samplingRate, float rate, float shape, int tapSize) {
  FIRRateFilter::StoreDesign(samplingRate, rate, tapSize);
  m_shape = shape;
}

} // namespace QORN
