#include "qorn/dsp/Window.h"

#include <algorithm>
#include <cstdint>

#include "infra/Errors.h"
#include "infra/kernels/Levels.h"
#include "math/Elementwise.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/math/MathUtils.h"
#include "qorn/math/VecUtils.h"

namespace QORN {

namespace {

// A division by the sum of the coefficients is reported as the kernel layer reports divisions, under its
// name.
float *AsReals(Cplx32 *data) { return reinterpret_cast<float *>(data); }
const Cplx32 *AsComplex(const float *data) { return reinterpret_cast<const Cplx32 *>(data); }

// The sum by the accurate kernel: accumulated in double, rounded once. 0 for an empty vector.
float Sum(const VecReal32 &vec) {
  float sum = 0.0F;
  TargetLib::Sum_32f(vec.GetPtr(), vec.GetSize(), &sum);
  return sum;
}

} // namespace

Window::Window() = default;

Window::Window(int n) { Window::SetParameters(n); }

Window::Window(int n, float parameter) : m_parameter(parameter) { Window::SetParameters(n); }

Window::~Window() = default;

void Window::SetParameters(int n) {
  m_size = n;
  if (n < 1) return;
  m_coefficients.Resize(Length(std::int64_t{2} * n));
  TargetLib::Set_32f(1.0F / static_cast<float>(n), m_coefficients.GetPtr(), m_coefficients.GetSize());
}

void Window::SetParameters(int n, float) { Window::SetParameters(n); }

void Window::Set6dBBWParam(double) {}

void Window::Apply(VecCplx32 &out, const VecCplx32 &in) const {
  if (&out == &in) {
    Apply(out);
    return;
  }
  const int n = in.GetSize();
  const int weighted = CountFor(n);
  out.Resize(n);
  kernels::active->Mul_32f(AsReals(in.GetPtr()), m_coefficients.GetPtr(), AsReals(out.GetPtr()),
                           2 * weighted);
  TargetLib::Copy_32fc(in.GetPtr(weighted), out.GetPtr(weighted), n - weighted);
}

void Window::Apply(VecCplx32 &data) const {
  TargetLib::Mul_32f_I(m_coefficients.GetPtr(), AsReals(data.GetPtr()), 2 * CountFor(data.GetSize()));
}

void Window::Apply(VecReal32 &out, const VecReal32 &in) const {
  const int n = in.GetSize();
  const int weighted = CountFor(n);
  if (&out == &in) {
    VecReal32 coefficients;
    GetCoefficients(coefficients);
    TargetLib::Mul_32f_I(coefficients.GetPtr(), out.GetPtr(), weighted);
    return;
  }
  // Seen as complex, the stored pairs have the coefficients for their real parts. They go straight to where
  // the products will be.
  out.Resize(n);
  TargetLib::Real_32fc(AsComplex(m_coefficients.GetPtr()), out.GetPtr(), weighted);
  TargetLib::Mul_32f_I(in.GetPtr(), out.GetPtr(), weighted);
  TargetLib::Copy_32f(in.GetPtr(weighted), out.GetPtr(weighted), n - weighted);
}

void Window::Apply(VecReal64 &out, const VecReal64 &in) const {
  VecReal32 coefficients;
  GetCoefficients(coefficients);
  const VecReal64 wide(coefficients);
  if (&out != &in) out = in;
  TargetLib::Mul_64f_I(wide.GetPtr(), out.GetPtr(), CountFor(out.GetSize()));
}

void Window::GetCoefficients(VecReal32 &out) const { VecUtils::Downsample(out, m_coefficients, 2, 0); }

float Window::GetENBW() const {
  VecReal32 w;
  GetCoefficients(w);
  const float sum = Sum(w);
  // The kernel takes a division by a zero constant for nothing to do, which would leave w as it is.
  if (sum == 0.0F) Throw(errors::kDivideByZero, modules::kTargetLib);
  TargetLib::DivC_32f_I(sum, w.GetPtr(), w.GetSize());
  TargetLib::Sqr_32f_I(w.GetPtr(), w.GetSize());
  return static_cast<float>(m_size) * Sum(w);
}

float Window::GetPowerAdjustIndB() const {
  return static_cast<float>(10.0 * MathUtils::Log10(static_cast<double>(GetENBW())));
}

float Window::GetNBScaleFactor() const { return Sum(m_coefficients) * 0.5F; }

void Window::ReleaseCoefficients() { m_coefficients.Release(); }

int Window::CountFor(int samples) const { return std::min(samples, m_coefficients.GetSize() / 2); }

void Window::StoreNormalised(const VecReal32 &shape) {
  VecUtils::Duplicate(m_coefficients, shape, 2);
  TargetLib::MulC_32f_I(1.0F / GetNBScaleFactor(), m_coefficients.GetPtr(), m_coefficients.GetSize());
}

} // namespace QORN
