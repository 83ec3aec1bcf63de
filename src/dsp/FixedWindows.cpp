#include "qorn/dsp/FixedWindows.h"

#include <array>
#include <cstddef>

#include "infra/Constants.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

using constants::kTwoPi;

// The n elements a[0] - a[1] cos t + a[2] cos 2t - ... at t = 2 pi k / n, before normalisation. All in double
// but the last step, in the order written; the second half mirrors the first.
template <std::size_t terms> VecReal32 CosineSum(int n, const std::array<double, terms> &a) {
  VecReal32 shape(n);
  if (n < 1) return shape;
  const double step = kTwoPi<double> / n;
  const int count = n / 2 + 1;
  VecReal64 sum(count);
  VecReal64 cosine(count);
  TargetLib::Set_64f(a[0], sum.GetPtr(), count);
  for (std::size_t m = 1; m < terms; ++m) {
    for (int k = 0; k < count; ++k) cosine[k] = static_cast<double>(m) * (k * step);
    TargetLib::Cos_64f(cosine.GetPtr(), cosine.GetPtr(), count);
    TargetLib::MulC_64f_I(m % 2 == 1 ? -a[m] : a[m], cosine.GetPtr(), count);
    TargetLib::Add_64f_I(cosine.GetPtr(), sum.GetPtr(), count);
  }
  for (int k = 0; k < count; ++k) {
    const float value = static_cast<float>(sum[k]);
    shape[k] = value;
    if (k > 0) shape[n - k] = value;
  }
  return shape;
}

} // namespace

HannWindow::HannWindow() { m_rbwScaling = 1.44F; }
HannWindow::HannWindow(int n) : HannWindow() { HannWindow::SetParameters(n); }
void HannWindow::SetParameters(int n) {
  m_size = n;
  StoreNormalised(CosineSum<2>(n, {0.5, 0.5}));
}
void HannWindow::SetParameters(int n, float) {
  m_parameter = 0.0F;
  SetParameters(n);
}

HammingWindow::HammingWindow() { m_rbwScaling = 1.3F; }
HammingWindow::HammingWindow(int n) : HammingWindow() { HammingWindow::SetParameters(n); }
void HammingWindow::SetParameters(int n) {
  m_size = n;
  StoreNormalised(CosineSum<2>(n, {0.54, 0.46}));
}
void HammingWindow::SetParameters(int n, float) {
  m_parameter = 0.0F;
  SetParameters(n);
}

BlackmanHarrisWindow::BlackmanHarrisWindow() { m_rbwScaling = 1.9F; }
BlackmanHarrisWindow::BlackmanHarrisWindow(int n) : BlackmanHarrisWindow() {
  BlackmanHarrisWindow::SetParameters(n);
}
void BlackmanHarrisWindow::SetParameters(int n) {
  m_size = n;
  StoreNormalised(CosineSum<4>(n, {0.35875, 0.48829, 0.14128, 0.01168}));
}
void BlackmanHarrisWindow::SetParameters(int n, float) {
  m_parameter = 0.0F;
  SetParameters(n);
}

FlatTopWindow::FlatTopWindow() { m_rbwScaling = 3.72F; }
FlatTopWindow::FlatTopWindow(int n) : FlatTopWindow() { FlatTopWindow::SetParameters(n); }
void FlatTopWindow::SetParameters(int n) {
  m_size = n;
  StoreNormalised(CosineSum<5>(n, {0.21557895, 0.41663158, 0.277263158, 0.083578947, 0.006947368}));
}
void FlatTopWindow::SetParameters(int n, float) {
  m_parameter = 0.0F;
  SetParameters(n);
}

namespace {
constexpr float kDefaultAlpha = 3.5F;
}

GaussWindow::GaussWindow() {
  m_parameter = kDefaultAlpha;
  m_rbwScaling = 1.86F;
}
GaussWindow::GaussWindow(int n) : GaussWindow() { GaussWindow::SetParameters(n, kDefaultAlpha); }
void GaussWindow::SetParameters(int n) {
  m_parameter = kDefaultAlpha;
  SetParameters(n, kDefaultAlpha);
}
void GaussWindow::SetParameters(int n, float alpha) {
  m_size = n;
  m_parameter = alpha;
  VecReal32 shape(n);
  const int half = (n & 1) + n / 2;
  const auto c = static_cast<double>((-2.0F * alpha) * alpha);
  const double centre = (n - 1) * 0.5;
  for (int k = 0; k < half; ++k) {
    const double x = (k - centre) / n;
    const double exponent = c * x * x;
    double value = 0.0;
    // One element at a time: the kernel then gives the smallest normal double for an underflow.
    TargetLib::Exp_64f(&exponent, &value, 1);
    shape[k] = shape[n - 1 - k] = static_cast<float>(value);
  }
  StoreNormalised(shape);
}

} // namespace QORN
