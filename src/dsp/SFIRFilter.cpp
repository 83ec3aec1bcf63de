#include "qorn/dsp/SFIRFilter.h"

#include <algorithm>
#include <utility>

#include "Clone.h"
#include "DelayLines.h"
#include "infra/Errors.h"
#include "infra/StreamingFir.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

namespace {

constexpr const char *kModule = "dsp\\SFIRFilter";

} // namespace

SFIRFilter::SFIRFilter() = default;
SFIRFilter::SFIRFilter(VecReal32 const &taps) { SetTaps(taps); }
SFIRFilter::SFIRFilter(VecCplx32 const &taps) { SetTaps(taps); }

SFIRFilter::SFIRFilter(const SFIRFilter &other)
    : m_tapCount(other.m_tapCount), m_isComplex(other.m_isComplex), m_held(other.m_held),
      m_taps(other.m_taps), m_cplxTaps(other.m_cplxTaps), m_delayLine(other.m_delayLine),
      m_imagDelayLine(other.m_imagDelayLine), m_cplxDelayLine(other.m_cplxDelayLine),
      m_engine(Clone(other.m_engine)), m_cplxEngine(Clone(other.m_cplxEngine)) {}

// A copy that finds no memory leaves the object as it is.
SFIRFilter &SFIRFilter::operator=(const SFIRFilter &other) { return *this = SFIRFilter(other); }

SFIRFilter::SFIRFilter(SFIRFilter &&other) noexcept { *this = std::move(other); }

SFIRFilter &SFIRFilter::operator=(SFIRFilter &&other) noexcept {
  m_tapCount = std::exchange(other.m_tapCount, 0);
  m_isComplex = std::exchange(other.m_isComplex, false);
  m_held = std::exchange(other.m_held, Held::kNothing);
  m_taps = std::move(other.m_taps);
  m_cplxTaps = std::move(other.m_cplxTaps);
  m_delayLine = std::move(other.m_delayLine);
  m_imagDelayLine = std::move(other.m_imagDelayLine);
  m_cplxDelayLine = std::move(other.m_cplxDelayLine);
  m_engine = std::move(other.m_engine);
  m_cplxEngine = std::move(other.m_cplxEngine);
  return *this;
}

SFIRFilter::~SFIRFilter() = default;

void SFIRFilter::ReleaseResources() {
  m_tapCount = 0;
  m_isComplex = false;
  m_held = Held::kNothing;
  m_taps.Release();
  m_cplxTaps.Release();
  m_delayLine.Release();
  m_imagDelayLine.Release();
  m_cplxDelayLine.Release();
  m_engine.reset();
  m_cplxEngine.reset();
}

void SFIRFilter::SetTaps(VecReal32 const &taps) {
  ReleaseResources();
  const int count = taps.GetSize();
  if (count < 1) return;
  m_taps = taps;
  m_delayLine.Resize(count - 1);
  m_imagDelayLine.Resize(count - 1);
  m_engine = std::make_unique<StreamingFir<float>>(taps.GetPtr(), count);
  m_tapCount = count;
}

void SFIRFilter::SetTaps(VecCplx32 const &taps) {
  ReleaseResources();
  const int count = taps.GetSize();
  m_isComplex = true;
  if (count < 1) return;
  m_cplxTaps = taps;
  m_cplxDelayLine.Resize(count - 1);
  m_cplxEngine = std::make_unique<StreamingFir<Cplx32>>(taps.GetPtr(), count);
  m_tapCount = count;
}

template <class V> void SFIRFilter::Trim(V &out, int tapCount, bool trim) {
  if (trim && tapCount > 1) out.Trim(std::min(tapCount - 1, out.GetSize()));
}

// As long as the form of the signal stays, the engine has the samples before a block already.
void SFIRFilter::Hold(Held form) {
  if (m_held == form) return;
  const int past = m_tapCount - 1;
  if (m_isComplex) {
    TargetLib::Copy_32fc(m_cplxDelayLine.GetPtr(), m_cplxEngine->Past<Cplx32>(), past);
  } else {
    ChangeForm(m_held, form, *m_engine, m_delayLine, m_imagDelayLine, past);
  }
  m_held = form;
}

void SFIRFilter::ApplyReal(VecReal32 &out, VecReal32 const &in, bool trim) {
  Hold(Held::kReal);
  m_engine->Run(in.GetPtr(), out.GetPtr(), in.GetSize());
  Trim(out, m_tapCount, trim);
}

void SFIRFilter::ApplyCplx(VecCplx32 &out, VecCplx32 const &in, bool trim) {
  Hold(Held::kCplx);
  if (m_isComplex) {
    m_cplxEngine->Run(in.GetPtr(), out.GetPtr(), in.GetSize());
  } else {
    m_engine->Run(in.GetPtr(), out.GetPtr(), in.GetSize());
  }
  Trim(out, m_tapCount, trim);
}

void SFIRFilter::Apply(VecReal32 &out, VecReal32 const &in, bool trim) {
  if (m_isComplex) Throw(errors::kInvalidParameter, kModule);
  if (&out != &in) out.Resize(std::max(in.GetSize(), 0));
  if (m_tapCount == 0) return out.SetZero();
  if (in.GetSize() > 0) ApplyReal(out, in, trim);
}

void SFIRFilter::Apply(VecReal32 &data, bool trim) { Apply(data, data, trim); }

void SFIRFilter::Apply(VecCplx32 &out, VecCplx32 const &in, bool trim) {
  if (&out != &in) out.Resize(std::max(in.GetSize(), 0));
  if (m_tapCount == 0) return out.SetZero();
  if (in.GetSize() > 0) ApplyCplx(out, in, trim);
}

void SFIRFilter::Apply(VecCplx32 &data, bool trim) { Apply(data, data, trim); }

void SFIRFilter::Flush() {
  m_held = Held::kNothing;
  m_delayLine.SetZero();
  m_imagDelayLine.SetZero();
  m_cplxDelayLine.SetZero();
}

} // namespace QORN
