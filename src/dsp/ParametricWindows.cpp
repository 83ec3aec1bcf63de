#include "qorn/dsp/ParametricWindows.h"

#include <cmath>

#include "infra/Constants.h"
#include "infra/Errors.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/math/VecUtils.h"

namespace QORN {

namespace {

constexpr const char *kModule = "dsp\\WindowTaylor";

// Want of memory for a window's elements is reported as the vectors report it, under their name.

struct KaiserMode {
  float beta;
  float rbwScaling;
};
constexpr KaiserMode kDefaultMode = {16.71F, 2.2292F};
constexpr KaiserMode kCisprMode = {14.6F, 2.0859F};

constexpr const KaiserMode &Of(KaiserWindowModeTag mode) {
  return mode == KaiserWindowModeCISPR ? kCisprMode : kDefaultMode;
}

} // namespace

KaiserWindow::KaiserWindow() : KaiserWindow(KaiserWindowModeDefault) {}
KaiserWindow::KaiserWindow(KaiserWindowModeTag mode) : m_mode(mode) { m_rbwScaling = Of(mode).rbwScaling; }
KaiserWindow::KaiserWindow(int n) : KaiserWindow(n, KaiserWindowModeDefault) {}
KaiserWindow::KaiserWindow(int n, KaiserWindowModeTag mode) : KaiserWindow(mode) {
  KaiserWindow::SetParameters(n, Of(mode).beta);
}
KaiserWindow::KaiserWindow(int n, float beta) { KaiserWindow::SetParameters(n, beta); }

void KaiserWindow::SetParameters(int n) { SetParameters(n, KaiserWindowModeDefault); }

void KaiserWindow::SetParameters(int n, float beta) {
  m_parameter = beta;
  m_size = n;
  VecReal32 shape(n);
  // No element of the shape is negative: one that the kernel left unwritten for want of memory shows.
  shape.Set(-1.0F);
  TargetLib::GenKaiserWin_32f(shape.GetPtr(), n, beta);
  if (n > 0 && shape[0] < 0.0F) Throw(errors::kMemoryAllocation, modules::kVector);
  StoreNormalised(shape);
}

void KaiserWindow::SetParameters(int n, KaiserWindowModeTag mode) {
  m_mode = mode;
  m_rbwScaling = Of(mode).rbwScaling;
  m_parameter = Of(mode).beta;
  SetParameters(n, m_parameter);
}

namespace {
constexpr float kCispr3dBScaling = 2.2292F;
constexpr float kCispr6dBScaling = 2.9405F;
} // namespace

CISPR3dBWindow::CISPR3dBWindow() : KaiserWindow(KaiserWindowModeCISPR) { m_rbwScaling = kCispr3dBScaling; }
CISPR3dBWindow::CISPR3dBWindow(int n) : KaiserWindow(n, KaiserWindowModeCISPR) {
  m_rbwScaling = kCispr3dBScaling;
}
void CISPR3dBWindow::SetParameters(int n) {
  m_mode = KaiserWindowModeCISPR;
  m_rbwScaling = kCispr3dBScaling;
  KaiserWindow::SetParameters(n, kCisprMode.beta);
}

CISPR6dBWindow::CISPR6dBWindow() : KaiserWindow(KaiserWindowModeCISPR) { m_rbwScaling = kCispr6dBScaling; }
CISPR6dBWindow::CISPR6dBWindow(int n) : KaiserWindow(n, KaiserWindowModeCISPR) {}
void CISPR6dBWindow::SetParameters(int n) {
  m_mode = KaiserWindowModeCISPR;
  KaiserWindow::SetParameters(n, kCisprMode.beta);
}
void CISPR6dBWindow::Set6dBBWParam(double bandwidth) {
  if (bandwidth > 9e3 && bandwidth <= 150e3) {
    m_rbwScaling = kCispr6dBScaling;
  } else if (bandwidth > 150e3 && bandwidth <= 30e6) {
    m_rbwScaling = 2.8405F;
  } else {
    m_rbwScaling = 2.9605F;
  }
}

namespace {

constexpr float kDefaultLevel = -30.0F;
constexpr int kDefaultSidelobes = 4;
using constants::kPi;
using constants::kTwoPi;

// 10^x and ln x, the library's own: the C library's last bits differ from machine to machine.
double PowerOfTen(double x) {
  double power = 0.0;
  TargetLib::Pow10_64f(&x, &power, 1);
  return power;
}
double NaturalLogarithm(double x) {
  TargetLib::Ln_64f(&x, &x, 1);
  return x;
}

float Square(float x) { return x * x; }

// (i - 1/2)^2 + A^2
float Zero(float i, float a) { return Square(i - 0.5F) + Square(a); }

} // namespace

TaylorWindow::TaylorWindow(int n) : TaylorWindow(n, kDefaultLevel) { m_rbwScaling = 0.0F; }
TaylorWindow::TaylorWindow(int n, float level) : TaylorWindow(n, level, kDefaultSidelobes) {}
TaylorWindow::TaylorWindow(int n, float level, int nbar) { SetParameters(n, level, nbar); }

void TaylorWindow::SetParameters(int n) {
  m_rbwScaling = 0.0F;
  m_parameter = kDefaultLevel;
  SetParameters(n, kDefaultLevel);
}

void TaylorWindow::SetParameters(int n, float level) { SetParameters(n, level, kDefaultSidelobes); }

void TaylorWindow::SetParameters(int n, float level, int nbar) {
  m_size = n;
  m_parameter = level;
  m_nbar = nbar;
  VecReal32 shape(n);
  shape.Set(1.0F);
  VecUtils::Duplicate(m_coefficients, shape, 2);

  const auto ratio = static_cast<float>(PowerOfTen(static_cast<double>(level / -20.0F)));
  const float x = std::sqrt(ratio * ratio - 1.0F) + ratio;
  if (!(x > 0.0F)) Throw(errors::kInvalidParameter, kModule);
  const auto a = static_cast<float>(NaturalLogarithm(static_cast<double>(x)) / kPi<double>);
  const auto sidelobes = static_cast<float>(nbar);
  if (sidelobes < 2.0F * a * a + 0.5F) Throw(errors::kInvalidParameter, kModule);
  const float sigma2 = Square(sidelobes) / Zero(sidelobes, a);

  const auto points = static_cast<float>(n);
  VecReal32 ramp;
  ramp.Ramp(n, static_cast<float>(n - 1) / points * -0.5F, 1.0F / points);
  VecReal32 term(n);
  for (int m = 1; m < nbar; ++m) {
    const float factor = 2.0F * ComputeFm(nbar, sigma2, a, m);
    term = ramp;
    term *= kTwoPi<float> * static_cast<float>(m);
    TargetLib::Cos_32f(term.GetPtr(), term.GetPtr(), n);
    term *= factor;
    shape += term;
  }
  StoreNormalised(shape);
}

float TaylorWindow::ComputeFm(int nbar, float sigma2, float a, int m) {
  const float m2 = Square(static_cast<float>(m));
  float numerator = 1.0F;
  float denominator = 1.0F;
  for (int k = 1; k < nbar; ++k) {
    const auto i = static_cast<float>(k);
    numerator *= 1.0F - m2 / sigma2 / Zero(i, a);
    if (k != m) denominator *= 1.0F - m2 / Square(i);
  }
  return (m % 2 == 0 ? -0.5F : 0.5F) * numerator / denominator;
}

} // namespace QORN
