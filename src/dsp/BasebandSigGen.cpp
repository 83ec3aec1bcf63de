// The order and the precision of the steps, and the order of the draws, are part of what the signals are.
#include "qorn/dsp/BasebandSigGen.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "Clone.h"
#include "FIRFilterTable.h"
#include "infra/Constants.h"
#include "math/Elementwise.h"
#include "qorn/dsp/ArbRateResampler.h"
#include "qorn/dsp/DSPUtils.h"
#include "qorn/dsp/FIRFilterFactory.h"
#include "qorn/infra/Complex.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/math/MathUtils.h"
#include "qorn/math/VecUtils.h"

namespace QORN {

namespace {

using Index = std::ptrdiff_t;

using constants::kPi;
using constants::kTwoPi;
constexpr float kSqrtTwo32 = 1.4142135F;
constexpr double kIntMax = 2147483647.0;

// x rounded to nearest, but from 0 to high; 0 for not-a-number.
int RoundedWithin(double x, int high) {
  const double rounded = MathUtils::Round(x);
  return rounded > 0.0 ? static_cast<int>(std::min(rounded, static_cast<double>(high))) : 0;
}

void Silence(VecCplx32 &dst, int n) {
  dst.Resize(n);
  dst.SetZero();
}

// p[i] times the edge of e samples at first + i, or times 1 less that.
void MultiplyByEdge(Cplx32 *p, int count, int first, int e, bool falls) {
  double cosine[kBlock];
  for (int start = 0; start < count; start += kBlock) {
    const int n = std::min(kBlock, count - start);
    for (int i = 0; i < n; ++i) cosine[i] = -kPi<double> + (first + start + i) * kPi<double> / e;
    TargetLib::Cos_64f(cosine, cosine, n);
    for (int i = 0; i < n; ++i, ++p) {
      const float rise = (static_cast<float>(cosine[i]) + 1.0F) * 0.5F;
      const float edge = falls ? rise * -1.0F + 1.0F : rise;
      *p = {p->re * edge, p->im * edge};
    }
  }
}

} // namespace

template <>
BasebandSigGen::Owner<FIRBaseFilter>::Owner(const Owner &other)
    : Owner(other ? CloneFilter(*other) : nullptr) {}

template <> BasebandSigGen::Owner<ArbRateResampler>::Owner(const Owner &other) : Owner(Clone(other)) {}

BasebandSigGen::BasebandSigGen() : BasebandSigGen(static_cast<SignalType>(-1)) {}
BasebandSigGen::BasebandSigGen(SignalType type) : m_signalType(type) {}

BasebandSigGen::BasebandSigGen(const BasebandSigGen &other) = default;
BasebandSigGen::BasebandSigGen(BasebandSigGen &&other) noexcept = default;
BasebandSigGen &BasebandSigGen::operator=(BasebandSigGen &&other) noexcept = default;

BasebandSigGen &BasebandSigGen::operator=(const BasebandSigGen &other) {
  // What can fail comes first.
  BasebandSigGen copy(other);
  return *this = std::move(copy);
}

BasebandSigGen::~BasebandSigGen() = default;

void BasebandSigGen::ReleaseAll() {
  m_filter.reset();
  m_resampler.reset();
  m_constellation.Release();
  m_noiseRe.Release();
  m_noiseIm.Release();
  m_noise.Release();
}

void BasebandSigGen::ChangeParam(const double &src, double &dst) {
  m_paramsChanged = m_paramsChanged || !(dst == src);
  dst = src;
}

void BasebandSigGen::SetSampleRate(double sampleRate) { ChangeParam(sampleRate, m_sampleRate); }

void BasebandSigGen::SetBasicParameters(double sampleRate, double signalAmplitude, double noiseAmplitude,
                                        double freqOffset, bool enableRandomPhase) {
  ChangeParam(sampleRate, m_sampleRate);
  UpdateParam(signalAmplitude, m_signalAmplitude);
  UpdateParam(noiseAmplitude, m_noiseAmplitude);
  UpdateParam(freqOffset, m_freqOffset);
  m_enableRandomPhase = enableRandomPhase;
}

void BasebandSigGen::SetParameters_AM_FM_PM(double modFrequency, double modIndex) {
  ChangeParam(modFrequency, m_modFrequency);
  ChangeParam(modIndex, m_modIndex);
}

void BasebandSigGen::SetParameters_PSK_QAM(double symbolRate, double rolloff) {
  ChangeParam(symbolRate, m_symbolRate);
  ChangeParam(rolloff, m_rolloff);
}

void BasebandSigGen::SetParameters_FSK(double symbolRate, double fskDeviation, bool /*phaseContinuous*/) {
  ChangeParam(symbolRate, m_symbolRate);
  ChangeParam(fskDeviation, m_fskDeviation);
}

void BasebandSigGen::SetParameters_Pulse(double pulseWidth, double pulsePeriod, double chirpBandwidth) {
  ChangeParam(pulseWidth, m_pulseWidth);
  ChangeParam(pulsePeriod, m_pulsePeriod);
  ChangeParam(chirpBandwidth, m_chirpBandwidth);
}

void BasebandSigGen::GenerateSignal(VecCplx32 &dst, int n, bool addNoise) {
  if (n < 0 && m_signalType > CW && m_signalType < Custom) return;
  switch (m_signalType) {
  case CW:
    Generate_CW(dst, n);
    break;
  case AM:
  case FM:
  case PM:
    Generate_AM_FM_PM(dst, n);
    break;
  case BPSK:
  case QPSK:
  case PSK8:
  case PSK16:
  case QAM16:
  case QAM64:
  case QAM256:
    Generate_PSK_QAM(dst, n);
    break;
  case FSK2:
  case FSK4:
  case FSK8:
  case FSK16:
    Generate_FSK(dst, n);
    break;
  case Pulse:
  case Chirp:
    Generate_Pulse(dst, n);
    break;
  case Custom:
    Generate_Custom(dst, n);
    break;
  default:
    break;
  }
  ScaleAndFreqAndPhaseOffset(dst);
  if (addNoise) AddNoise(dst);
  m_paramsChanged = false;
}

void BasebandSigGen::Generate_Custom(VecCplx32 &, int) {}

double BasebandSigGen::GetPhase() {
  if (!m_enableRandomPhase) return 0.0;
  float phase = 0.0F;
  TargetLib::RandUniform_Direct_32f(&phase, 1, 0.0F, kTwoPi<float>, &m_phaseSeed);
  return static_cast<double>(phase);
}

void BasebandSigGen::ScaleAndFreqAndPhaseOffset(VecCplx32 &v) {
  const auto scale = static_cast<float>(MathUtils::Pow10((m_signalAmplitude - 10.0) / 20.0));
  double phi = GetPhase();
  if (m_freqOffset == 0.0) {
    const Cplx32 phasor = Complex::ToCplx32(MathUtils::Expj(phi));
    v.Mul(Cplx32{phasor.re * scale, phasor.im * scale});
    return;
  }
  const double step = m_freqOffset / m_sampleRate;
  if (!std::isfinite(step)) return v.SetZero();
  DSPUtils::FreqShift(v, step, &phi);
  v.Mul(scale);
}

void BasebandSigGen::GenerateNoise(VecCplx32 &dst, int n) {
  const auto k = static_cast<float>(MathUtils::Pow10(m_noiseAmplitude / 20.0));
  for (VecReal32 *part : {&m_noiseRe, &m_noiseIm}) {
    part->Resize(std::max(n, 0));
    TargetLib::RandUniform_Direct_32f(part->GetPtr(), part->GetSize(), -k, k, &m_noiseSeed);
  }
  dst.Import(m_noiseRe, m_noiseIm);
}

void BasebandSigGen::AddNoise(VecCplx32 &dst) {
  GenerateNoise(m_noise, dst.GetSize());
  dst.Add(m_noise);
}

void BasebandSigGen::GenerateRandomData(VecInt32 &dst, int alphabet, int n) {
  m_wave.Resize(std::max(n, 0));
  TargetLib::RandUniform_Direct_32f(m_wave.GetPtr(), m_wave.GetSize(), 0.0F,
                                    static_cast<float>(alphabet) - 1e-5F, &m_dataSeed);
  VecUtils::Convert(dst, m_wave);
}

void BasebandSigGen::Generate_CW(VecCplx32 &dst, int n) {
  dst.Set({1.0F, 0.0F}, n);
  if (m_cwFrequency == 0.0) return;
  const double step = m_cwFrequency / m_sampleRate;
  if (!std::isfinite(step)) return dst.SetZero();
  double phi = GetPhase();
  DSPUtils::FreqShift(dst, step, &phi);
}

// m_wave = the modulating wave. False if its frequency makes no sense.
bool BasebandSigGen::MakeWave(int n) {
  const double step = m_modFrequency / m_sampleRate * kTwoPi<double>;
  if (!std::isfinite(static_cast<float>(step))) return false;
  if (m_modFrequency >= 0.0) {
    MathUtils::Cos(m_wave, n, step, GetPhase());
  } else {
    FillTriangle(n);
  }
  return true;
}

void BasebandSigGen::FillTriangle(int n) {
  // Not longer than the longest even int.
  int period = std::max(RoundedWithin(m_sampleRate / -m_modFrequency, 2147483646), 2);
  period += period % 2;
  const int half = period / 2;
  const float slope = 2.0F / static_cast<float>(half);
  const auto offset = static_cast<int>(std::floor(period * GetPhase() / 6.2831855));
  m_wave.Resize(n);
  float *wave = m_wave.GetPtr();
  bool falls = offset % period >= half;
  for (int i = 0, place = offset % half; i < n; place = 0, falls = !falls) {
    const float sign = falls ? -1.0F : 1.0F;
    const int count = std::min(half - place, n - i);
    for (int k = 0; k < count; ++k) wave[i + k] = sign * (static_cast<float>(place + k) * slope - 1.0F);
    i += count;
  }
}

void BasebandSigGen::Generate_AM_FM_PM(VecCplx32 &dst, int n) {
  if (n < 0) return;
  const auto deviation =
      static_cast<float>(m_modIndex / m_sampleRate * kTwoPi<double>); // FM, radians per sample
  if ((m_signalType == FM && !std::isfinite(deviation)) || !MakeWave(n)) return Silence(dst, n);
  switch (m_signalType) {
  case AM:
    m_wave.Mul(static_cast<float>(m_modIndex / 100.0));
    m_wave.Add(1.0F);
    dst.Import(m_wave);
    break;
  case FM:
    DSPUtils::CumSum(m_wave, m_wave);
    m_wave.Mul(deviation);
    MathUtils::Expj(dst, m_wave);
    break;
  case PM:
    m_wave.Mul(static_cast<float>(m_modIndex < 0.0 ? -m_modIndex
                                                   : m_modIndex * 0.002777777777777778 * kTwoPi<double>));
    MathUtils::Expj(dst, m_wave);
    break;
  default:
    break;
  }
}

void BasebandSigGen::Construct_PSK_QAM_Constellation(VecCplx32 &dst, SignalType type, bool normalise) {
  VecCplx32 base;
  Cplx32 rotator{0.0F, 1.0F};
  int copies = 4;
  switch (type) {
  case BPSK:
    base.Set({1.0F, 0.0F}, 1);
    rotator = {-1.0F, 0.0F};
    copies = 2;
    break;
  case QPSK:
    base.Set({1.0F / kSqrtTwo32, 1.0F / kSqrtTwo32}, 1);
    break;
  case PSK8:
  case PSK16:
    base.Set({1.0F, 0.0F}, 1);
    copies = type == PSK8 ? 8 : 16;
    rotator = Complex::Cplx(kTwoPi<float> / static_cast<float>(copies));
    break;
  case QAM16:
    Construct_PSK_QAM_Constellation(base, QPSK, true);
    base.Mul(kSqrtTwo32);
    base.Add(Cplx32{2.0F, 2.0F});
    break;
  case QAM64:
    Construct_PSK_QAM_Constellation(base, QAM16, false);
    base.Add(Cplx32{4.0F, 4.0F});
    break;
  case QAM256:
    Construct_PSK_QAM_Constellation(base, QAM64, false);
    base.Add(Cplx32{8.0F, 8.0F});
    break;
  default:
    break;
  }
  const int size = base.GetSize();
  dst.Resize(size * copies);
  for (int copy = 0; copy < copies; ++copy) {
    VecUtils::Insert(dst, copy * size, base, 0, size);
    base.Mul(rotator);
  }
  if (normalise && size > 0) dst.Mul(static_cast<float>(1.0 / DSPUtils::RootMeanSqr(dst)));
}

// The relation of the rates. False if they make no signal.
bool BasebandSigGen::MakeRates() {
  m_samplesPerSymbol = m_sampleRate / m_symbolRate;
  if (!(m_symbolRate > 0.0 && m_samplesPerSymbol > 0.0 && m_samplesPerSymbol < kIntMax)) return false;
  m_oversampling = std::max(static_cast<int>(std::ceil(m_samplesPerSymbol)), 2);
  return std::isfinite(m_oversampling * m_symbolRate);
}

// What is made goes into the object when nothing more can fail, here and for FSK: a filter or resampler that
// is there counts as a whole chain.
bool BasebandSigGen::MakeShapingChain() {
  ReleaseAll();
  m_shapingBuilt = 1;
  if (!MakeRates()) return false;
  std::unique_ptr<FIRBaseFilter> filter(FIRFilterFactory::MakeFilter(FIRFilterRootRaisedCosine));
  const double innerRate = m_oversampling * m_symbolRate;
  const auto rate = static_cast<float>(innerRate), symbolRate = static_cast<float>(m_symbolRate),
             rolloff = static_cast<float>(m_rolloff);
  const int taps = std::max(201, filter->GetRecommendedTapSize(rate, symbolRate, rolloff));
  filter->SetParameters(rate, symbolRate, rolloff, taps);
  m_lengthFactor = 1.0;
  m_marginSymbols = Length(std::int64_t{taps / m_oversampling} * 2 + 2);
  auto resampler = std::make_unique<ArbRateResampler>(m_sampleRate / innerRate);
  Construct_PSK_QAM_Constellation(m_constellation, m_signalType, true);
  m_constellation.Mul(static_cast<float>(m_oversampling));
  m_alphabetSize = m_constellation.GetSize();
  m_filter = std::move(filter);
  m_resampler = std::move(resampler);
  return true;
}

bool BasebandSigGen::MakeFskChain() {
  ReleaseAll();
  if (!MakeRates()) return false;
  m_marginSymbols = 0;
  m_lengthFactor = 1.0;
  m_alphabetSize = m_signalType >= FSK2 && m_signalType <= FSK16 ? 2 << (m_signalType - FSK2) : 0;
  m_resampler = std::make_unique<ArbRateResampler>(m_sampleRate / (m_oversampling * m_symbolRate));
  return true;
}

// m_modulated = the symbols, shaped.
void BasebandSigGen::ShapeSymbols() {
  VecUtils::CopyByIndex(m_points, m_constellation, m_symbols);
  VecUtils::Upsample(m_upsampled, m_points, m_oversampling, 0);
  m_filter->Apply(m_modulated, m_upsampled, false);
}

// m_modulated = the symbols as frequencies.
void BasebandSigGen::KeySymbols() {
  const int length = Length(std::int64_t{m_symbols.GetSize()} * m_oversampling);
  m_modulated.Resize(length);
  m_modulated.Set({1.0F, 0.0F});
  const double spacing = 2.0 / (m_alphabetSize - 1);
  double phi = GetPhase();
  for (int i = 0; i < m_symbols.GetSize(); ++i) {
    const int symbol = m_symbols[i];
    if (!m_phaseContinuous && i >= 1 && symbol != m_symbols[i - 1]) phi = GetPhase();
    const double frequency = m_fskDeviation * (symbol * spacing - 1.0);
    m_modulated.Truncate(i * m_oversampling, m_oversampling);
    DSPUtils::FreqShift(m_modulated, frequency / m_sampleRate, &phi);
    m_modulated.Resize(length);
  }
}

// dst = the last n samples of random symbols, as many as that takes.
void BasebandSigGen::RunChain(VecCplx32 &dst, int n, void (BasebandSigGen::*modulate)()) {
  for (;;) {
    const double count = std::ceil((n / m_samplesPerSymbol + m_marginSymbols) * m_lengthFactor);
    GenerateRandomData(m_symbols, m_alphabetSize, static_cast<int>(std::clamp(count, 0.0, kIntMax)));
    (this->*modulate)();
    m_resampler->Apply(dst, m_modulated);
    // With no more samples than its margins the resampler has no output, whatever length dst has.
    const std::int64_t margins = 2 * std::int64_t{m_resampler->GetHistory()} + 2;
    const int length = dst.GetSize();
    if (m_modulated.GetSize() > margins && length >= n) break;
    const double factor = length > 0 ? static_cast<double>(n) / length + 0.5 : 0.0;
    if (factor > m_lengthFactor) {
      m_lengthFactor = factor;
    } else {
      // A signal so short that no factor tells what the margins take.
      m_marginSymbols = Length(m_marginSymbols + margins / m_oversampling + 1);
    }
  }
  dst.Truncate(dst.GetSize() - n, n);
}

void BasebandSigGen::Generate_PSK_QAM(VecCplx32 &dst, int n) {
  if (n < 0) return;
  const bool kept = !m_paramsChanged && m_filter && m_resampler;
  if ((!kept && !MakeShapingChain()) || m_alphabetSize < 1) return Silence(dst, n);
  RunChain(dst, n, &BasebandSigGen::ShapeSymbols);
}

void BasebandSigGen::Generate_FSK(VecCplx32 &dst, int n) {
  if (n < 0) return;
  const bool kept = !m_paramsChanged && m_resampler && m_samplesPerSymbol > 0.0;
  if ((!kept && !MakeFskChain()) || m_alphabetSize < 2 || n == 0) return Silence(dst, n);
  RunChain(dst, n, &BasebandSigGen::KeySymbols);
}

// m_points = one pulse.
void BasebandSigGen::MakePulse(int length, double on, double edge) {
  const double bandwidth = m_signalType == Chirp ? m_chirpBandwidth : 0.0;
  m_points.Resize(length);
  if (bandwidth == 0.0) {
    m_points.Set({1.0F, 0.0F});
  } else {
    const auto slope = static_cast<float>(bandwidth / on * 0.5), start = static_cast<float>(-bandwidth * 0.5);
    DSPUtils::Ramp(m_wave, length, 0.0F, static_cast<float>(1.0 / m_sampleRate));
    float *x = m_wave.GetPtr();
    for (int k = 0; k < length; ++k) x[k] = (x[k] * slope + start) * x[k] * kTwoPi<float>;
    MathUtils::Expj(m_points, m_wave);
  }
  // Of edges that are longer than what the pulse was cut to there is the part that lies in it.
  const int e = RoundedWithin(m_sampleRate * edge, 2147483647);
  const int part = std::min(e, length);
  MultiplyByEdge(m_points.GetPtr(), part, 0, e, false);
  MultiplyByEdge(m_points.GetPtr(length - part), part, e - part, e, true);
}

void BasebandSigGen::Generate_Pulse(VecCplx32 &dst, int n) {
  if (n < 0) return;
  const double width = std::fabs(m_pulseWidth), edge = m_pulseWidth > 0.0 ? 0.05 * width : 0.0;
  const double on = width + edge, period = on > m_pulsePeriod ? on : m_pulsePeriod;
  const int periodSamples = RoundedWithin(m_sampleRate * period, n);
  const int onSamples = RoundedWithin(m_sampleRate * on, periodSamples);
  Silence(dst, n);
  if (periodSamples < 1 || !std::isfinite(m_sampleRate)) return;
  MakePulse(onSamples, on, edge);
  for (Index end = periodSamples; end - periodSamples < n; end += periodSamples) {
    if (m_enableRandomPhase) DSPUtils::RotatePhase(m_points, static_cast<float>(GetPhase()));
    const Index first = end - onSamples;
    const auto count = static_cast<int>(std::min<Index>(onSamples, n - first));
    TargetLib::Copy_32fc(m_points.GetPtr(), dst.GetPtr() + first, count);
  }
}

} // namespace QORN
