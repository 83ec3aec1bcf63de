#include "qorn/math/MathUtils.h"

#include "Elementwise.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

template <class V> void VectorAbs(V &dst, const V &src) { Map(dst, src, Kernels<ElementOf<V>>::Abs); }

template <class D, class V> void VectorMag(D &dst, const V &src) {
  Map(dst, src, Kernels<ElementOf<V>>::Mag);
}

template <class V> void VectorLog10(V &dst, const V &src, MathUtils::Log0CheckType check) {
  using T = ElementOf<V>;
  MapInSteps(dst, src, [check](T *x, int n) {
    if (check == MathUtils::Log0Check) Kernels<T>::AddC(static_cast<T>(MathUtils::kLogZeroOffset), x, n);
    Kernels<T>::Log10(x, x, n);
  });
}

template <class V> void VectorPow10(V &dst, const V &src) {
  MapInSteps(dst, src, Pow10InPlace<ElementOf<V>>);
}

} // namespace

void MathUtils::Abs(VecInt32 &dst, const VecInt32 &src) { VectorAbs(dst, src); }
void MathUtils::Abs(VecReal32 &dst, const VecReal32 &src) { VectorAbs(dst, src); }
void MathUtils::Abs(VecReal64 &dst, const VecReal64 &src) { VectorAbs(dst, src); }
void MathUtils::Abs(VecReal32 &vec) { VectorAbs(vec, vec); }
void MathUtils::Abs(VecReal64 &vec) { VectorAbs(vec, vec); }
float MathUtils::Abs(float x) { return MapScalar<float>(x, Kernels<float>::Abs); }
double MathUtils::Abs(double x) { return MapScalar<double>(x, Kernels<double>::Abs); }
void MathUtils::Abs(VecReal32 &dst, const VecCplx32 &src) { VectorMag(dst, src); }
void MathUtils::Abs(VecReal64 &dst, const VecCplx64 &src) { VectorMag(dst, src); }
float MathUtils::Abs(Cplx32 x) { return MapScalar<float>(x, Kernels<Cplx32>::Mag); }
double MathUtils::Abs(Cplx64 x) { return MapScalar<double>(x, Kernels<Cplx64>::Mag); }

void MathUtils::Pow10(VecReal32 &dst, const VecReal32 &src) { VectorPow10(dst, src); }
void MathUtils::Pow10(VecReal64 &dst, const VecReal64 &src) { VectorPow10(dst, src); }
void MathUtils::Pow10(VecReal32 &vec) { VectorPow10(vec, vec); }
void MathUtils::Pow10(VecReal64 &vec) { VectorPow10(vec, vec); }
double MathUtils::Pow10(double x) { return MapScalar<double>(x, Kernels<double>::Pow10); }

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
  return MapScalar<double>(x, Kernels<double>::Log10);
}

} // namespace QORN
