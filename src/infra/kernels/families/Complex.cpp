#include "Kernel.h"
#include "Unroll.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

template <class T, class C> void RealToCplx(const T *re, const T *im, C *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = {re[i], im[i]};
}
template <class C, class T> void Real(const C *src, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = src[i].re;
}
template <class C, class T> void Imag(const C *src, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = src[i].im;
}

template <class C> inline C Conjugate(C x) { return {x.re, -x.im}; }

template <class C> void Conj(const C *src, C *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = Conjugate(src[i]);
}
template <class C> void Conj(C *srcDst, int len) { Conj(srcDst, srcDst, len); }

// Where source and destination are one array, the elements change places in pairs; a middle one meets itself.
template <class T, class F> inline void Reverse(const T *src, T *dst, Index len, F element) {
  if (src == dst) {
    T *first = dst, *last = dst + len - 1;
    for (; first <= last; ++first, --last) {
      const T low = *first;
      *first = element(*last);
      *last = element(low);
    }
  } else {
    // Read upwards, as caches expect it. Rounds of several vectors would gain in the first-level cache and
    // lose in the others.
    for (Index i = 0; i < len; ++i) dst[len - 1 - i] = element(src[i]);
  }
}
template <class T> void Flip(const T *src, T *dst, int len) {
  Reverse(src, dst, len, [](T x) { return x; });
}
template <class T> void Flip(T *srcDst, int len) { Flip(srcDst, srcDst, len); }

void ConjFlip(const Cplx64 *src, Cplx64 *dst, int len) {
  Reverse(src, dst, len, [](Cplx64 x) { return Conjugate(x); });
}

// A complex float as one word, with the sign of the imaginary part on top: pairs of parts in reversed order
// would not vectorise.
struct [[gnu::packed, gnu::aligned(alignof(Cplx32)), gnu::may_alias]] Word {
  std::uint64_t bits;
};
inline const Word *Words(const Cplx32 *x) { return reinterpret_cast<const Word *>(x); }
inline Word *Words(Cplx32 *x) { return reinterpret_cast<Word *>(x); }
void Flip(const Cplx32 *src, Cplx32 *dst, int len) {
  Reverse(Words(src), Words(dst), len, [](Word x) { return x; });
}
void Flip(Cplx32 *srcDst, int len) { Flip(srcDst, srcDst, len); }
void ConjFlip(const Cplx32 *src, Cplx32 *dst, int len) {
  Reverse(Words(src), Words(dst), len, [](Word x) { return Word{x.bits ^ (std::uint64_t{1} << 63)}; });
}

} // namespace

#define QORN_FAMILY "Complex.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
