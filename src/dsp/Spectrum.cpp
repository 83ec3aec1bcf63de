#include "qorn/dsp/Spectrum.h"

#include <algorithm>
#include <utility>

#include "WindowTable.h"
#include "infra/Errors.h"
#include "math/Decibels.h"
#include "qorn/dsp/FT.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

namespace {
constexpr const char *kModule = "dsp\\Spectrum";
constexpr int kBlock = 1024;
} // namespace

Spectrum::Spectrum(int size) : Spectrum(size, WindowBlackmanHarris, 0.0F) {}

Spectrum::Spectrum(int size, WindowType type, float parameter)
    : m_size(size), m_window(WindowFactory::MakeWindow(type, size, parameter)), m_parameter(parameter),
      m_transform(std::make_unique<FT>()), m_unit(PowerUnitDBV), m_windowedCplx(size), m_windowedReal(size),
      m_transformed(size) {}

Spectrum::Spectrum(const Spectrum &other)
    : m_size(other.m_size), m_window(other.m_window ? CloneWindow(*other.m_window) : nullptr),
      m_parameter(other.m_parameter), m_transform(std::make_unique<FT>(*other.m_transform)),
      m_unit(other.m_unit), m_windowedCplx(other.m_windowedCplx), m_windowedReal(other.m_windowedReal),
      m_transformed(other.m_transformed) {}

Spectrum &Spectrum::operator=(const Spectrum &other) {
  // What can fail comes first: it changes nothing but scratch.
  auto window = other.m_window ? CloneWindow(*other.m_window) : nullptr;
  auto transform = std::make_unique<FT>(*other.m_transform);
  m_windowedCplx = other.m_windowedCplx;
  m_windowedReal = other.m_windowedReal;
  m_transformed = other.m_transformed;
  m_size = other.m_size;
  m_window = std::move(window);
  m_parameter = other.m_parameter;
  m_transform = std::move(transform);
  m_unit = other.m_unit;
  return *this;
}

Spectrum::~Spectrum() = default;

void Spectrum::Apply(VecReal32 &out, const VecCplx32 &in) {
  GetWindow().Apply(m_windowedCplx, in);
  m_transform->Forward(m_transformed, m_windowedCplx);
  Finish(out);
}

void Spectrum::Apply(VecReal32 &out, const VecReal32 &in) {
  GetWindow().Apply(m_windowedReal, in);
  m_transform->Forward(m_transformed, m_windowedReal);
  Finish(out);
}

void Spectrum::Apply(VecReal32 &out, const float *re, const float *im) {
  const Window &window = GetWindow();
  m_windowedCplx.Import(re, im, m_size);
  window.Apply(m_windowedCplx);
  m_transform->Forward(m_transformed, m_windowedCplx);
  Finish(out);
}

const Window &Spectrum::GetWindow() const {
  if (!m_window) Throw(errors::kInvalidParameter, kModule);
  return *m_window;
}

// Magnitude, shift and unit in one pass: a block of magnitudes goes to where the shift puts it and becomes
// decibels there, in the nearest cache. An element's result depends on that element alone, so blocks do not
// show.
void Spectrum::Finish(VecReal32 &out) const {
  const int n = m_transformed.GetSize();
  const int positive = n - n / 2; // bins, the zero frequency among them
  out.Resize(n);
  for (int from = 0; from < n;) {
    const int end = from < positive ? positive : n;
    const int count = std::min(kBlock, end - from);
    float *to = out.GetPtr(from < positive ? from + n / 2 : from - positive);
    TargetLib::Mag_32fc(m_transformed.GetPtr(from), to, count);
    if (m_unit == PowerUnitDBV) Volt2dBV(to, to, count);
    from += count;
  }
}

} // namespace QORN
