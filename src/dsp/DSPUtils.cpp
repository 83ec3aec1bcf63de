// Ramps, measures, order of a spectrum, fractional indices and averages. Phase stands in DSPUtilsPhase.cpp,
// correlation, convolution and filter taps in DSPUtilsProduct.cpp.
#include "qorn/dsp/DSPUtils.h"

#include <cmath>

#include "math/Elementwise.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/math/MathUtils.h"
#include "qorn/math/UnitConversion.h"

namespace QORN {

namespace {

template <class V> void RunningSum(V &dst, const V &src) {
  const int n = src.GetSize();
  ResizeLike(dst, src);
  if (n < 1) return;
  auto sum = dst[0] = src[0];
  for (int i = 1; i < n; ++i) dst[i] = sum += src[i];
}

// The result of a kernel over the whole vector; 0 for an empty one, of which kernels write nothing.
template <class R, class V, class Kernel> R Reduce(const V &vec, Kernel kernel) {
  R result = 0;
  kernel(vec.GetPtr(), vec.GetSize(), &result);
  return result;
}

// The squared norm, and its mean, in the precision of the norm.
template <class V> auto Square(const V &vec) {
  const auto norm = DSPUtils::Norm(vec);
  return norm * norm;
}
template <class V> auto MeanSquare(const V &vec) {
  const auto square = Square(vec);
  return square / static_cast<decltype(square)>(vec.GetSize());
}

template <class V> void Shift(V &vec);

template <class V> void Shift(V &dst, const V &src) {
  if (&dst == &src) {
    Shift(dst);
    return;
  }
  const int n = src.GetSize();
  const int first = n / 2 + (n & 1);
  dst.Resize(n);
  Kernels<ElementOf<V>>::Copy(src.GetPtr(first), dst.GetPtr(), n - first);
  Kernels<ElementOf<V>>::Copy(src.GetPtr(), dst.GetPtr(n - first), first);
}

template <class V> void Shift(V &vec) {
  const V copy(vec);
  Shift(vec, copy);
}

template <class V> void Average(V &dst, const V &src, int width) {
  const int n = src.GetSize();
  dst = src;
  if (width < 1) return;
  const int first = width / 2;
  const int last = n - (width - first);
  for (int i = first; i <= last; ++i) {
    Kernels<ElementOf<V>>::Mean(src.GetPtr(i - first), width, dst.GetPtr(i));
  }
}

} // namespace

void DSPUtils::Ramp(VecReal32 &dst, int n, float offset, float slope) { dst.Ramp(n, offset, slope); }
void DSPUtils::Ramp(VecReal64 &dst, int n, double offset, double slope) { dst.Ramp(n, offset, slope); }
void DSPUtils::Ramp(VecInt32 &dst, int n, int offset, int slope) { dst.Ramp(n, offset, slope); }

void DSPUtils::CumSum(VecReal32 &dst, const VecReal32 &src) { RunningSum(dst, src); }
void DSPUtils::CumSum(VecReal64 &dst, const VecReal64 &src) { RunningSum(dst, src); }

void DSPUtils::Mag(VecReal32 &dst, const VecCplx32 &src) { MathUtils::Abs(dst, src); }
void DSPUtils::Mag(VecReal64 &dst, const VecCplx64 &src) { MathUtils::Abs(dst, src); }
void DSPUtils::Mag(VecReal32 &dst, const VecReal32 &re, const VecReal32 &im) {
  ResizeLike(dst, re);
  TargetLib::Mag_32f(re.GetPtr(), im.GetPtr(), dst.GetPtr(), re.GetSize());
}
void DSPUtils::Mag(VecReal64 &dst, const VecReal64 &re, const VecReal64 &im) {
  ResizeLike(dst, re);
  TargetLib::Mag_64f(re.GetPtr(), im.GetPtr(), dst.GetPtr(), re.GetSize());
}

void DSPUtils::MagSqr(VecReal32 &dst, const VecCplx32 &src) { Map(dst, src, TargetLib::MagSqr_32fc); }
void DSPUtils::MagSqr(VecReal64 &dst, const VecCplx64 &src) { Map(dst, src, TargetLib::MagSqr_64fc); }

void DSPUtils::MagdB(VecReal32 &dst, const VecCplx32 &src) {
  MagSqr(dst, src);
  UnitConversion::PowerRatio2dB(dst, dst);
}
void DSPUtils::MagdB(VecReal64 &dst, const VecCplx64 &src) {
  MagSqr(dst, src);
  UnitConversion::PowerRatio2dB(dst, dst);
}

float DSPUtils::PeakToAve(const VecReal32 &vec) { return vec.Max() / vec.Mean(); }

float DSPUtils::Norm(const VecReal32 &vec) { return Reduce<float>(vec, TargetLib::Norm_L2_32f); }
double DSPUtils::Norm(const VecReal64 &vec) { return Reduce<double>(vec, TargetLib::Norm_L2_64f); }
double DSPUtils::Norm(const VecCplx32 &vec) { return Reduce<double>(vec, TargetLib::Norm_L2_32fc64f); }
double DSPUtils::Norm(const VecCplx64 &vec) { return Reduce<double>(vec, TargetLib::Norm_L2_64fc64f); }

float DSPUtils::SumSqrMag(const VecReal32 &vec) { return Square(vec); }
double DSPUtils::SumSqrMag(const VecCplx32 &vec) { return Square(vec); }
double DSPUtils::SumSqrMag(const VecCplx64 &vec) { return Square(vec); }

float DSPUtils::MeanSqrMag(const VecReal32 &vec) { return MeanSquare(vec); }
double DSPUtils::MeanSqrMag(const VecCplx32 &vec) { return MeanSquare(vec); }
double DSPUtils::MeanSqrMag(const VecCplx64 &vec) { return MeanSquare(vec); }

float DSPUtils::RootMeanSqr(const VecReal32 &vec) {
  return static_cast<float>(std::sqrt(static_cast<double>(MeanSquare(vec))));
}
double DSPUtils::RootMeanSqr(const VecReal64 &vec) {
  return Norm(vec) / std::sqrt(static_cast<double>(vec.GetSize()));
}
double DSPUtils::RootMeanSqr(const VecCplx32 &vec) { return std::sqrt(MeanSquare(vec)); }
double DSPUtils::RootMeanSqr(const VecCplx64 &vec) { return std::sqrt(MeanSquare(vec)); }

void DSPUtils::FFTShift(VecReal32 &dst, const VecReal32 &src) { Shift(dst, src); }
void DSPUtils::FFTShift(VecReal64 &dst, const VecReal64 &src) { Shift(dst, src); }
void DSPUtils::FFTShift(VecCplx32 &dst, const VecCplx32 &src) { Shift(dst, src); }
void DSPUtils::FFTShift(VecCplx64 &dst, const VecCplx64 &src) { Shift(dst, src); }
void DSPUtils::FFTShift(VecInt32 &dst, const VecInt32 &src) { Shift(dst, src); }
void DSPUtils::FFTShift(VecReal32 &vec) { Shift(vec); }
void DSPUtils::FFTShift(VecReal64 &vec) { Shift(vec); }
void DSPUtils::FFTShift(VecCplx32 &vec) { Shift(vec); }
void DSPUtils::FFTShift(VecCplx64 &vec) { Shift(vec); }

float DSPUtils::GetArbPointValue(const VecReal32 &vec, double x) {
  const double whole = std::floor(x);
  const int k = static_cast<int>(whole);
  const double t = x - whole;
  if (k < vec.GetSize() - 1) return vec[k] + static_cast<float>(t) * (vec[k + 1] - vec[k]);
  return vec[k - 1] + static_cast<float>(t + 1.0) * (vec[k] - vec[k - 1]);
}

double DSPUtils::Integrate(const VecReal32 &vec, double x1, double x2) {
  const int i1 = static_cast<int>(x1), i2 = static_cast<int>(x2);
  double sum = 0.0;
  if (i1 >= 1) {
    const float ends = vec[i1 + 1] + GetArbPointValue(vec, x1);
    sum += static_cast<double>(ends) * (i1 + 1 - x1) * 0.5;
  }
  sum += static_cast<double>(vec[i1 + 1]) * 0.5;
  for (int i = i1 + 2; i < i2; ++i) sum += static_cast<double>(vec[i]);
  sum += static_cast<double>(vec[i2] * 0.5F);
  if (i2 < vec.GetSize() - 1) {
    const double ends = static_cast<double>(vec[i2]) + static_cast<double>(GetArbPointValue(vec, x2));
    sum += ends * (x2 - i2) * 0.5;
  }
  return sum;
}

void DSPUtils::MovingAverage(VecReal32 &dst, const VecReal32 &src, int width) { Average(dst, src, width); }
void DSPUtils::MovingAverage(VecReal64 &dst, const VecReal64 &src, int width) { Average(dst, src, width); }

} // namespace QORN
