#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

template <class T, class C> void RealToCplx(const T *re, const T *im, C *dst, int len) {
  for (Index i = 0; i < len; ++i) dst[i] = {re[i], im[i]};
}
template <class C, class T> void Real(const C *src, T *dst, int len) {
  for (Index i = 0; i < len; ++i) dst[i] = src[i].re;
}
template <class C, class T> void Imag(const C *src, T *dst, int len) {
  for (Index i = 0; i < len; ++i) dst[i] = src[i].im;
}

template <class C> inline C Conjugate(C x) { return {x.re, -x.im}; }

template <class C> void Conj(const C *src, C *dst, int len) {
  for (Index i = 0; i < len; ++i) dst[i] = Conjugate(src[i]);
}
template <class C> void Conj(C *srcDst, int len) { Conj(srcDst, srcDst, len); }

// Where source and destination are one array, the elements change places in pairs; a middle one meets itself.
template <class T, class F> inline void Reverse(const T *src, T *dst, Index len, F element) {
  if (src == dst) {
    for (Index i = 0, j = len - 1; i <= j; ++i, --j) {
      const T low = element(dst[i]);
      const T high = element(dst[j]);
      dst[i] = high;
      dst[j] = low;
    }
  } else {
    for (Index i = 0; i < len; ++i) dst[i] = element(src[len - 1 - i]);
  }
}
template <class T> void Flip(const T *src, T *dst, int len) {
  Reverse(src, dst, len, [](T x) { return x; });
}
template <class T> void Flip(T *srcDst, int len) { Flip(srcDst, srcDst, len); }
template <class C> void ConjFlip(const C *src, C *dst, int len) {
  Reverse(src, dst, len, [](C x) { return Conjugate(x); });
}

} // namespace

#define QORN_FAMILY "Complex.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
