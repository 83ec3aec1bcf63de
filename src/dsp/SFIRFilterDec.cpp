#include "qorn/dsp/SFIRFilterDec.h"

#include <algorithm>
#include <utility>

#include "Clone.h"
#include "DelayLines.h"
#include "infra/Errors.h"
#include "infra/StreamingFir.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

namespace {
constexpr const char *kModule = "dsp\\SFIRFilterDec";
}

SFIRFilterDec::SFIRFilterDec() = default;

SFIRFilterDec::SFIRFilterDec(VecReal32 const &taps, int decimation, int phase) {
  SetParams(taps, decimation, phase);
}

SFIRFilterDec::SFIRFilterDec(const SFIRFilterDec &other)
    : m_tapCount(other.m_tapCount), m_taps(other.m_taps), m_decimation(other.m_decimation),
      m_phase(other.m_phase), m_held(other.m_held), m_delayLine(other.m_delayLine),
      m_imagDelayLine(other.m_imagDelayLine), m_engine(Clone(other.m_engine)) {}

// A copy that finds no memory leaves the object as it is.
SFIRFilterDec &SFIRFilterDec::operator=(const SFIRFilterDec &other) { return *this = SFIRFilterDec(other); }

SFIRFilterDec::SFIRFilterDec(SFIRFilterDec &&other) noexcept { *this = std::move(other); }

SFIRFilterDec &SFIRFilterDec::operator=(SFIRFilterDec &&other) noexcept {
  m_tapCount = std::exchange(other.m_tapCount, 0);
  m_taps = std::move(other.m_taps);
  m_decimation = std::exchange(other.m_decimation, 0);
  m_phase = std::exchange(other.m_phase, 0);
  m_held = std::exchange(other.m_held, Held::kNothing);
  m_delayLine = std::move(other.m_delayLine);
  m_imagDelayLine = std::move(other.m_imagDelayLine);
  m_engine = std::move(other.m_engine);
  return *this;
}

SFIRFilterDec::~SFIRFilterDec() = default;

void SFIRFilterDec::ReleaseResources() { *this = SFIRFilterDec(); }

void SFIRFilterDec::SetParams(VecReal32 const &taps, int decimation, int phase) {
  SFIRFilterDec made;
  ReleaseResources();
  if (phase < 0) phase = decimation - 1;
  if (decimation < 0 || (decimation > 0 && phase >= decimation)) Throw(errors::kInvalidParameter, kModule);
  const int count = std::max(taps.GetSize(), 0);
  if (decimation > 0 && count > 0) {
    made.m_taps = taps;
    made.m_delayLine.Resize(count);
    made.m_imagDelayLine.Resize(count);
    made.m_engine = std::make_unique<DecimatingFir>(taps.GetPtr(), count, decimation, phase);
  }
  made.m_tapCount = count;
  made.m_decimation = decimation;
  made.m_phase = phase;
  *this = std::move(made);
}

// The number of outputs, for which there is room afterwards.
template <class V> int SFIRFilterDec::BeginOutput(V &out, V const &in) const {
  if (m_decimation == 0) Throw(errors::kDivideByZero, kModule);
  const int count = std::max(in.GetSize(), 0) / m_decimation;
  if (&out != &in && out.GetSize() != count) out.Resize(count);
  return count;
}

// A result in place is shorter than what it came from.
template <class V> void SFIRFilterDec::EndOutput(V &out, int count) {
  if (out.GetSize() <= count) return;
  if (count > 0) {
    out.Trim(0, count - 1);
  } else {
    out.Resize(0);
  }
}

template <class V> void SFIRFilterDec::ApplyAny(V &out, V const &in, Held form) {
  const int count = BeginOutput(out, in);
  if (m_engine && count > 0) {
    // As long as the form of the signal stays, the engine has the samples before a block already.
    if (m_held != form) ChangeForm(m_held, form, *m_engine, m_delayLine, m_imagDelayLine, m_tapCount);
    m_held = form;
    m_engine->Run(in.GetPtr(), out.GetPtr(), count);
  } else {
    out.SetZero();
  }
  EndOutput(out, count);
}

void SFIRFilterDec::Apply(VecReal32 &out, VecReal32 const &in) { ApplyAny(out, in, Held::kReal); }
void SFIRFilterDec::Apply(VecCplx32 &out, VecCplx32 const &in) { ApplyAny(out, in, Held::kCplx); }

void SFIRFilterDec::Flush() {
  m_held = Held::kNothing;
  m_delayLine.SetZero();
  m_imagDelayLine.SetZero();
}

} // namespace QORN
