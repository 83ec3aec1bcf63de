#include "Registers.h"
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

// A complex float as one word, with the sign of the imaginary part on top: neither a part with another sign
// than its neighbour nor pairs of parts in reversed order would vectorise well.
struct [[gnu::packed, gnu::aligned(alignof(Cplx32)), gnu::may_alias]] Word {
  std::uint64_t bits;
};
inline const Word *Words(const Cplx32 *x) { return reinterpret_cast<const Word *>(x); }
inline Word *Words(Cplx32 *x) { return reinterpret_cast<Word *>(x); }

inline Word Conjugate(Word x) { return {x.bits ^ (std::uint64_t{1} << 63)}; }
inline Cplx64 Conjugate(Cplx64 x) { return {x.re, -x.im}; }

void Conj(const Cplx32 *src, Cplx32 *dst, int len) {
  const Word *from = Words(src);
  Word *to = Words(dst);
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) to[i] = Conjugate(from[i]);
}
// A complex double has no word, so registers of them are taken: the bits of a few, and which of them are the
// signs of imaginary parts.
constexpr int kDoubles = kRegisterBytes / static_cast<int>(sizeof(double)), kComplexes = kDoubles / 2;
using Bits = Vec<std::uint64_t, kDoubles>;
inline Bits ImaginarySigns() {
  Bits signs;
  for (int j = 0; j < kDoubles; ++j) signs[j] = std::uint64_t{j % 2 == 1} << 63;
  return signs;
}
void Conj(const Cplx64 *src, Cplx64 *dst, int len) {
  const Bits signs = ImaginarySigns();
  const Index whole = len - len % kComplexes;
  QORN_UNROLLED
  for (Index i = 0; i < whole; i += kComplexes) Store(dst + i, Load<Bits>(src + i) ^ signs);
  for (Index i = whole; i < len; ++i) dst[i] = Conjugate(src[i]);
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

struct ComplexesReversed {
  static constexpr int At(int i) { return kDoubles - 2 - i / 2 * 2 + i % 2; }
};
template <class F> inline void ReverseWith(Bits signs, const Cplx64 *src, Cplx64 *dst, Index len, F element) {
  if (src == dst) return Reverse(src, dst, len, element);
  const Index whole = len - len % kComplexes;
  for (Index i = 0; i < whole; i += kComplexes) {
    const Bits x = Load<Bits>(src + i) ^ signs;
    Store(dst + len - i - kComplexes, Shuffle<ComplexesReversed, kDoubles>(x, x));
  }
  for (Index i = whole; i < len; ++i) dst[len - 1 - i] = element(src[i]);
}
void Flip(const Cplx64 *src, Cplx64 *dst, int len) {
  ReverseWith(Bits{}, src, dst, len, [](Cplx64 x) { return x; });
}
void ConjFlip(const Cplx64 *src, Cplx64 *dst, int len) {
  ReverseWith(ImaginarySigns(), src, dst, len, [](Cplx64 x) { return Conjugate(x); });
}

void Flip(const Cplx32 *src, Cplx32 *dst, int len) {
  Reverse(Words(src), Words(dst), len, [](Word x) { return x; });
}
void Flip(Cplx32 *srcDst, int len) { Flip(srcDst, srcDst, len); }
void ConjFlip(const Cplx32 *src, Cplx32 *dst, int len) {
  Reverse(Words(src), Words(dst), len, [](Word x) { return Conjugate(x); });
}

} // namespace

#define QORN_FAMILY "Complex.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
