#include "qorn/dsp/DSPUtils.h"

#include "math/Elementwise.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

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

} // namespace

void DSPUtils::FFTShift(VecReal32 &dst, const VecReal32 &src) { Shift(dst, src); }
void DSPUtils::FFTShift(VecReal64 &dst, const VecReal64 &src) { Shift(dst, src); }
void DSPUtils::FFTShift(VecCplx32 &dst, const VecCplx32 &src) { Shift(dst, src); }
void DSPUtils::FFTShift(VecCplx64 &dst, const VecCplx64 &src) { Shift(dst, src); }
void DSPUtils::FFTShift(VecInt32 &dst, const VecInt32 &src) { Shift(dst, src); }
void DSPUtils::FFTShift(VecReal32 &vec) { Shift(vec); }
void DSPUtils::FFTShift(VecReal64 &vec) { Shift(vec); }
void DSPUtils::FFTShift(VecCplx32 &vec) { Shift(vec); }
void DSPUtils::FFTShift(VecCplx64 &vec) { Shift(vec); }

void DSPUtils::CartToPolar(VecReal32 &mag, VecReal32 &phase, const VecCplx32 &src) {
  const int n = src.GetSize();
  mag.Resize(n);
  phase.Resize(n);
  TargetLib::CartToPolar_32fc(src.GetPtr(), mag.GetPtr(), phase.GetPtr(), n);
}

void DSPUtils::PolarToCart(VecCplx32 &dst, const VecReal32 &mag, const VecReal32 &phase) {
  const int n = mag.GetSize();
  dst.Resize(n);
  TargetLib::PolarToCart_32fc(mag.GetPtr(), phase.GetPtr(), dst.GetPtr(), n);
}

} // namespace QORN
