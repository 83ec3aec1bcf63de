#include "qorn/dsp/ClassicFilters.h"

#include <algorithm>

#include "qorn/dsp/DSPUtils.h"

namespace QORN {

void LowPassFilter::SetParameters(float samplingRate, float cutoff, float, int n) {
  StoreDesign(samplingRate, cutoff, n);
  DSPUtils::LowPass(m_taps, cutoff / samplingRate, std::max(n, 0));
}
void LowPassFilter::SetParameters(float samplingRate, float cutoff, int n) {
  SetParameters(samplingRate, cutoff, 0.0F, n);
}

void HighPassFilter::SetParameters(float samplingRate, float cutoff, float, int n) {
  StoreDesign(samplingRate, cutoff, n);
  DSPUtils::HighPass(m_taps, cutoff / samplingRate, std::max(n, 0));
}
void HighPassFilter::SetParameters(float samplingRate, float cutoff, int n) {
  SetParameters(samplingRate, cutoff, 0.0F, n);
}

void BandPassFilter::SetParameters(float samplingRate, float low, float high, int n) {
  StoreDesign(samplingRate, low, high, n);
  DSPUtils::BandPass(m_taps, low / samplingRate, high / samplingRate, std::max(n, 0));
}

} // namespace QORN
