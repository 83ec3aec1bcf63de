#include "qorn/math/MathUtils.h"

#include "Elementwise.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

constexpr auto kAbs = [](const auto *src, auto *dst, int n) { kernel::Abs(src, dst, n); };

template <class V> void VectorLog10(V &dst, const V &src, MathUtils::Log0CheckType check) {
  MapInSteps(dst, src, [check](auto *data, int n) {
    using T = std::remove_pointer_t<decltype(data)>;
    if (check == MathUtils::Log0Check) kernel::AddCI(static_cast<T>(MathUtils::kLogZeroOffset), data, n);
    kernel::Log10(data, data, n);
  });
}

template <class V> void VectorPow10(V &dst, const V &src) {
  MapInSteps(dst, src, [](auto *data, int n) { Pow10I(data, n); });
}

} // namespace

void MathUtils::Abs(VecInt32 &dst, const VecInt32 &src) { Map(dst, src, kAbs); }
void MathUtils::Abs(VecReal32 &dst, const VecReal32 &src) { Map(dst, src, kAbs); }
void MathUtils::Abs(VecReal64 &dst, const VecReal64 &src) { Map(dst, src, kAbs); }
void MathUtils::Abs(VecReal32 &vec) { Map(vec, vec, kAbs); }
void MathUtils::Abs(VecReal64 &vec) { Map(vec, vec, kAbs); }
float MathUtils::Abs(float x) { return MapScalar<float>(x, kAbs); }
double MathUtils::Abs(double x) { return MapScalar<double>(x, kAbs); }
void MathUtils::Abs(VecReal32 &dst, const VecCplx32 &src) { Map(dst, src, kAbs); }
void MathUtils::Abs(VecReal64 &dst, const VecCplx64 &src) { Map(dst, src, kAbs); }
float MathUtils::Abs(Cplx32 x) { return MapScalar<float>(x, kAbs); }
double MathUtils::Abs(Cplx64 x) { return MapScalar<double>(x, kAbs); }

void MathUtils::Pow10(VecReal32 &dst, const VecReal32 &src) { VectorPow10(dst, src); }
void MathUtils::Pow10(VecReal64 &dst, const VecReal64 &src) { VectorPow10(dst, src); }
void MathUtils::Pow10(VecReal32 &vec) { VectorPow10(vec, vec); }
void MathUtils::Pow10(VecReal64 &vec) { VectorPow10(vec, vec); }
double MathUtils::Pow10(double x) {
  return MapScalar<double>(x, [](const double *src, double *dst, int n) { kernel::Pow10(src, dst, n); });
}

void MathUtils::Log10(VecReal32 &dst, const VecReal32 &src, Log0CheckType check) {
  VectorLog10(dst, src, check);
}
void MathUtils::Log10(VecReal64 &dst, const VecReal64 &src, Log0CheckType check) {
  VectorLog10(dst, src, check);
}
void MathUtils::Log10(VecReal32 &vec, Log0CheckType check) { VectorLog10(vec, vec, check); }
void MathUtils::Log10(VecReal64 &vec, Log0CheckType check) { VectorLog10(vec, vec, check); }

double MathUtils::Log10(double x) {
  if (x < 0.0) return kLogNegativeResult;
  if (x == 0.0) x += kLogZeroOffset;
  return MapScalar<double>(x, [](const double *src, double *dst, int n) { kernel::Log10(src, dst, n); });
}

} // namespace QORN
