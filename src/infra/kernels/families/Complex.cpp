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

// A complex float as one word, with the sign of the imaginary part on top: a part with another sign than its
// neighbour would not vectorise well.
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

// Elements in reversed order, each of kLanesEach lanes of type E, by registers of V lanes and what is left by
// narrower ones; Element is what becomes of each on the way.
template <int kLanesEach, int V> struct GroupsReversed {
  static constexpr int At(int i) { return V - kLanesEach - i / kLanesEach * kLanesEach + i % kLanesEach; }
};
struct Same {
  template <int, int, class E> static E Of(E x) { return x; }
};
struct Conjugated {
  // The last lane of each element has the sign of its imaginary part on top.
  template <int kLanesEach, int V, class E> static E Of(E x) {
    constexpr std::uint64_t kTop = std::uint64_t{1} << 63;
    if constexpr (V == 1) {
      return x ^ kTop;
    } else {
      E signs;
      for (int j = 0; j < V; ++j) signs[j] = j % kLanesEach == kLanesEach - 1 ? kTop : 0;
      return x ^ signs;
    }
  }
};

template <class E, int kLanesEach, class Element> struct Reversal {
  static constexpr int kMost = kRegisterBytes / static_cast<int>(sizeof(E));

  template <int V> [[gnu::always_inline]] static Vec<E, V> Reversed(Vec<E, V> x) {
    if constexpr (V > kLanesEach) x = Shuffle<GroupsReversed<kLanesEach, V>, V>(x, x);
    return Element::template Of<kLanesEach, V>(x);
  }

  // Two registers a round: more would gain nothing in the first-level cache, and lose in the others.
  template <int V, class T> [[gnu::always_inline]] static void Apart(const T *src, T *dst, Index len) {
    constexpr Index kCount = V / kLanesEach;
    const auto move = [&](Index i) __attribute__((always_inline)) {
      Store(dst + i, Reversed<V>(Load<Vec<E, V>>(src + len - kCount - i)));
    };
    Index i = 0;
    for (; len - i >= 2 * kCount; i += 2 * kCount) {
      move(i);
      move(i + kCount);
    }
    if (len - i >= kCount) {
      move(i);
      i += kCount;
    }
    if constexpr (V > kLanesEach) Apart<V / 2>(src, dst + i, len - i);
  }

  // Where source and destination are one array, the elements change places in pairs; a middle one stays.
  template <int V, class T> [[gnu::always_inline]] static void InPlace(T *x, Index len) {
    constexpr Index kCount = V / kLanesEach;
    const auto exchange = [&](Index i) __attribute__((always_inline)) {
      T *const first = x + i, *const last = x + len - kCount - i;
      const auto low = Load<Vec<E, V>>(first), high = Load<Vec<E, V>>(last);
      Store(first, Reversed<V>(high));
      Store(last, Reversed<V>(low));
    };
    Index i = 0;
    // Registers of 64 bytes fill the ports by one pair a round, and cost a short array less.
    if constexpr (kRegisterBytes < 64) {
      for (; len - 2 * i >= 4 * kCount; i += 2 * kCount) {
        exchange(i);
        exchange(i + kCount);
      }
    }
    for (; len - 2 * i >= 2 * kCount; i += kCount) exchange(i);
    if constexpr (V > kLanesEach) {
      InPlace<V / 2>(x + i, len - 2 * i);
    } else if (2 * i < len) {
      Store(x + i, Reversed<V>(Load<Vec<E, V>>(x + i)));
    }
  }

  template <class T> static void Run(const T *src, T *dst, Index len) {
    if (src == dst) return InPlace<kMost>(dst, len);
    Apart<kMost>(src, dst, len);
  }
};

template <class Element> inline void Reverse(const float *src, float *dst, Index len) {
  Reversal<std::uint32_t, 1, Element>::Run(src, dst, len);
}
template <class Element> inline void Reverse(const double *src, double *dst, Index len) {
  Reversal<std::uint64_t, 1, Element>::Run(src, dst, len);
}
template <class Element> inline void Reverse(const Cplx32 *src, Cplx32 *dst, Index len) {
  Reversal<std::uint64_t, 1, Element>::Run(src, dst, len);
}
template <class Element> inline void Reverse(const Cplx64 *src, Cplx64 *dst, Index len) {
  Reversal<std::uint64_t, 2, Element>::Run(src, dst, len);
}
template <class T> void Flip(const T *src, T *dst, int len) { Reverse<Same>(src, dst, len); }
template <class T> void Flip(T *srcDst, int len) { Reverse<Same>(srcDst, srcDst, len); }
template <class C> void ConjFlip(const C *src, C *dst, int len) { Reverse<Conjugated>(src, dst, len); }

} // namespace

#define QORN_FAMILY "Complex.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
