#include "qorn/dsp/MeasurementFilters.h"

#include <cmath>
#include <cstdint>
#include <span>

#include "FilterDesign.h"
#include "IS95Taps.h"
#include "infra/Constants.h"
#include "math/Elementwise.h"
#include "qorn/dsp/FFT.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

std::span<const float> IS95Taps(FIRFilterTypeTag type, int ratio) {
  switch (type) {
  case FIRFilterIS95TXMeasurement:
    return IS95TxTaps(ratio);
  case FIRFilterIS95TXEQMeasurement:
    return IS95TxEqTaps(ratio);
  default:
    return IS95ReferenceTaps(ratio);
  }
}

int SamplesPerChip(float samplingRate, float rate) {
  return IntegerPart(static_cast<double>(samplingRate / rate) + 0.5);
}

} // namespace

int IS95Filter::GetRecommendedTapSize(float samplingRate, float rate, float) {
  return static_cast<int>(IS95Taps(m_type, SamplesPerChip(samplingRate, rate)).size());
}

void IS95Filter::SetParameters(float samplingRate, float rate, float, int) {
  SetParameters(SamplesPerChip(samplingRate, rate));
}

void IS95Filter::SetParameters(int ratio) {
  const std::span<const float> taps = IS95Taps(m_type, ratio);
  if (taps.empty()) return;
  const int n = static_cast<int>(taps.size());
  m_taps.Import(taps.data(), n);
  SetSymmetric(n);
  m_oversamplingRatio = ratio;
}

namespace {

constexpr double kC4FMSymbolRate = 4800.0; // and the edge of the response, in hertz
using constants::kPi;

struct PowerOfTwo {
  int order;
  std::int64_t value;
};

// The smallest power of two from 2 on that is not below n.
PowerOfTwo PowerNotBelow(int n) {
  PowerOfTwo power{1, 2};
  for (; power.value < n; power.value *= 2) ++power.order;
  return power;
}

} // namespace

int C4FMReverseShapingFilter::GetRecommendedTapSize(float samplingRate, float rate, float) {
  const auto symbols = static_cast<double>(samplingRate * 20.0F / rate);
  if (!FitsInt(symbols)) return 0;
  const int p = IntegerPart(symbols);
  return p < 3 ? 1 : static_cast<int>(PowerNotBelow(p).value - 1);
}

void C4FMReverseShapingFilter::SetParameters(float samplingRate, float rate, float, int n) {
  StoreDesign(samplingRate, rate, n);
  C4FMFilterTap(m_taps, 1.0F / rate, 1.0F / samplingRate, n);
}

void C4FMReverseShapingFilter::C4FMFilterTap(VecReal32 &taps, float T, float Ts, int n) {
  taps.Resize(std::max(n, 0));
  taps.SetZero();
  if (n < 1) return;
  const float samplesPerSymbol = T / Ts;
  const auto wide = static_cast<double>(samplesPerSymbol);
  const PowerOfTwo transform = PowerNotBelow(n);
  const int bins = Length(transform.value);
  VecCplx32 response(bins);
  VecReal64 angle(bins / 2), sine(bins / 2);

  // Each frequency is the sum of the steps to it.
  const double step = wide * kC4FMSymbolRate / bins;
  int end = 1;
  for (double f = step; end < bins / 2 && !(f >= kC4FMSymbolRate); f += step) {
    angle[end++] = f * kPi<double> / kC4FMSymbolRate;
  }
  TargetLib::Sin_64f(angle.GetPtr(), sine.GetPtr(), end);
  response[0].re = samplesPerSymbol;
  for (int k = 1; k < end; ++k) {
    response[k].re = response[bins - k].re = static_cast<float>(sine[k] / angle[k] * wide);
  }
  FFT(transform.order, false).Inverse(response);

  const auto scale = static_cast<float>(std::round(wide));
  const int centre = (n - 1) / 2;
  taps[centre] = response[0].re / scale;
  for (int i = 1; i < centre; ++i) {
    taps[centre + i] = response[i].re / scale;
    taps[centre - i] = response[bins - i].re / scale;
  }
}

namespace {
constexpr float kP25SymbolRate = 7200.0F;
constexpr float kP25Rolloff = 0.8333F;
constexpr int kP25Taps = 32;
} // namespace

HDQPSKP25MeasurementFilter::HDQPSKP25MeasurementFilter() : FIRShapeFilter(FIRFilterHDQPSKP25Measurement) {
  m_rate = kP25SymbolRate;
  m_shape = kP25Rolloff;
}

int HDQPSKP25MeasurementFilter::GetRecommendedTapSize(float samplingRate, float, float) {
  return m_inner.GetRecommendedTapSize(samplingRate, kP25SymbolRate, m_shape);
}

void HDQPSKP25MeasurementFilter::SetParameters(float samplingRate, float, float, int n) {
  SetSymmetric(n);
  m_samplingRate = samplingRate;
  m_tapSize = kP25Taps;
  m_inner.SetParameters(samplingRate, kP25SymbolRate, kP25Rolloff, kP25Taps);
  m_inner.GetTaps(m_taps);
}

} // namespace QORN
