#include "SignalSource.h"

#include <algorithm>

namespace tool {

namespace {

constexpr int kGapBlock = 1 << 16;

} // namespace

SignalSource::Generator::Generator(const SignalParameters &p) {
  SetSignalType(p.kind->type);
  SetBasicParameters(p.rate, p.level, p.noise, p.offset, !p.fixedPhase);
  SetParameters_CW(p.frequency);
  // One of the three is not zero.
  const double index = p.depth + p.deviation + p.phaseDeviation;
  SetParameters_AM_FM_PM(p.triangle ? -p.modFrequency : p.modFrequency, index);
  SetParameters_PSK_QAM(p.symbolRate, p.rolloff);
  SetParameters_FSK(p.symbolRate, p.deviation, false);
  SetParameters_Pulse(p.sharp ? -p.width : p.width, p.period, p.sweep);
  if (p.kind->IsBurst()) SetParameters(p.frameRate, p.scheme->type, p.guard);
  // The seeds of neighbours are to have nothing in common.
  for (unsigned int *seed : {&m_dataSeed, &m_phaseSeed, &m_noiseSeed}) *seed += p.seed * 2654435761U;
}

SignalSource::SignalSource(const SignalParameters &parameters)
    : m_parameters(parameters), m_generator(parameters), m_signalsLeft(parameters.repeats) {}

bool SignalSource::Next(QORN::VecCplx32 &block) {
  if (m_gapLeft > 0) {
    const auto part = static_cast<int>(std::min<std::int64_t>(m_gapLeft, kGapBlock));
    m_gapLeft -= part;
    if (m_parameters.addNoise) {
      m_generator.GenerateNoise(block, part);
    } else {
      block.Resize(part);
      block.SetZero();
    }
    return true;
  }
  if (m_signalsLeft == 0) return false;
  --m_signalsLeft;
  m_gapLeft = m_parameters.gap;
  m_generator.GenerateSignal(block, m_parameters.samples, m_parameters.addNoise);
  return true;
}

} // namespace tool
