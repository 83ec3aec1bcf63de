#include "qorn/dsp/Spectrum.h"

#include <utility>

#include "WindowTable.h"
#include "infra/Errors.h"
#include "math/Decibels.h"
#include "qorn/dsp/FT.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

namespace {
constexpr const char *kModule = "dsp\\Spectrum";
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
  Transform(in);
  Finish(out);
}

void Spectrum::Apply(VecReal32 &out, const VecReal32 &in) {
  GetWindow().Apply(m_windowedReal, in);
  m_transform->Forward(m_transformed, m_windowedReal);
  Finish(out);
}

void Spectrum::Apply(VecReal32 &out, const float *re, const float *im) {
  GetWindow();
  m_windowedCplx.Import(re, im, m_size);
  Transform(m_windowedCplx);
  Finish(out);
}

const Window &Spectrum::GetWindow() const {
  if (!m_window) Throw(errors::kInvalidParameter, kModule);
  return *m_window;
}

// Where every sample has its coefficient and the transform can take the products as it reads, it does.
void Spectrum::Transform(const VecCplx32 &in) {
  const Window &window = GetWindow();
  const VecReal32 &weights = window.m_coefficients;
  if (in.GetSize() == weights.GetSize() / 2 &&
      m_transform->ForwardWeighted(m_transformed, in, weights.GetPtr())) {
    return;
  }
  window.Apply(m_windowedCplx, in);
  m_transform->Forward(m_transformed, m_windowedCplx);
}

// Magnitude and unit in one pass, each half straight to where the shift puts it.
void Spectrum::Finish(VecReal32 &out) const {
  const int n = m_transformed.GetSize();
  const int negative = n / 2; // bins, the upper half of the transform
  const auto finish = m_unit == PowerUnitDBV ? &MagTodBV : &TargetLib::Mag_32fc;
  out.Resize(n);
  finish(m_transformed.GetPtr(), out.GetPtr(negative), n - negative);
  finish(m_transformed.GetPtr(n - negative), out.GetPtr(), negative);
}

} // namespace QORN
