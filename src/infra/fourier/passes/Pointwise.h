// The element-wise steps around the transforms: Bluestein's chirps, and the step between a real transform and
// the complex one of half its length.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_POINTWISE_H
#define QORN_SRC_INFRA_FOURIER_PASSES_POINTWISE_H

#include "Interleaved.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Runs body(place, Int<lanes>) over place <= i < len: full vectors first, then the same text on halves of
// them, at last one by one.
template <class T, int V, class F>
[[gnu::always_inline]] inline void ForEachFrom(Index i, Index len, const F &body) {
  for (; i + V <= len; i += V) body(i, Int<V>{});
  if constexpr (V > 1) ForEachFrom<T, (V * sizeof(T) > 16 ? V / 2 : 1)>(i, len, body);
}
template <class T, class F> [[gnu::always_inline]] inline void ForEach(Index len, const F &body) {
  ForEachFrom<T, kLanes<T, 16>>(0, len, body);
}

/// dst[i] = src[i] * factor[i], complex, all interleaved. swapIn and swapOut exchange real and imaginary
/// parts of src and of dst. dst may be src.
template <class T>
[[gnu::flatten]] void RunProduct(const T *src, const T *factor, T *dst, Index len, bool swapIn,
                                 bool swapOut) {
  ForEach<T>(len, [&]<int V>(Index i, Int<V>) {
    Vec<T, V> re, im, wre, wim;
    LoadComplex<T, V>(src + 2 * i, re, im);
    LoadComplex<T, V>(factor + 2 * i, wre, wim);
    if (swapIn) {
      const auto t = re;
      re = im;
      im = t;
    }
    Turn(re, im, wre, wim);
    if (swapOut) {
      StoreComplex<T, V>(dst + 2 * i, im, re);
    } else {
      StoreComplex<T, V>(dst + 2 * i, re, im);
    }
  });
}

template <int V> struct ComplexReversed {
  static constexpr int At(int i) { return 2 * (V - 1 - i / 2) + i % 2; }
};
// The complex values in the opposite order.
template <class E> [[gnu::always_inline]] inline E Backwards(E x) {
  return Shuffle<ComplexReversed<kScalars<E> / 2>, kScalars<E>>(x, x);
}

struct FirstPair {
  static constexpr int At(int i) { return i % 4 == 0 || i % 4 == 3 ? 0 : 1; }
};

// V values at x times V factors, which are taken backwards if they are mirrored; and if sign is not 0, their
// conjugates, times sign, -sign, sign ...
template <class T, int V, bool Mirrored>
[[gnu::always_inline]] inline void TurnPlaces(T *x, const T *factor, T sign) {
  if constexpr (2 * V * sizeof(T) < 16) {
    const T re = x[0], im = x[1], wre = sign == 0 ? factor[0] : sign * factor[0],
            wim = sign == 0 ? factor[1] : -sign * factor[1];
    x[0] = MulAdd(im, -wim, re * wre);
    x[1] = MulAdd(re, wim, im * wre);
  } else {
    using E = Complex<T, V>;
    auto w = Load<E>(factor);
    if constexpr (Mirrored) w = Backwards(w);
    if (sign != 0) {
      const E signs = Alternating<E>(sign, -sign);
      w *= Shuffle<FirstPair, 2 * V>(signs, signs);
    }
    const E wim = ImTwice(w) * Alternating<E>(T{-1}, T{1});
    Store(x, Turned(Load<E>(x), ReTwice(w), wim));
  }
}

/// x[k] = x[k] * factor[k], of `len` values, an even number. Of the factors, those to len / 2 are there:
/// factor len - k is factor k, or if `conjugate` its conjugate, negated for odd k.
template <class T>
[[gnu::flatten]] void RunMirroredProduct(T *x, const T *factor, Index len, bool conjugate) {
  const Index half = len / 2;
  const auto each = [half](const auto &body) { ForEachFrom<Complex<T, 1>, kComplexLanes<T>>(0, half, body); };
  each([&]<int V>(Index i, Int<V>) { TurnPlaces<T, V, false>(x + 2 * i, factor + 2 * i, T{0}); });
  const auto upper = [&]<int V>(Index i, T sign) {
    TurnPlaces<T, V, true>(x + 2 * (half + i), factor + 2 * (half - i - (V - 1)), sign);
  };
  if (conjugate) {
    each(
        [&]<int V>(Index i, Int<V>) { upper.template operator()<V>(i, (half + i) % 2 == 0 ? T{1} : T{-1}); });
  } else {
    each([&]<int V>(Index i, Int<V>) { upper.template operator()<V>(i, T{0}); });
  }
}

// Calls body(k, V) for the pairs (k, half - k), 1 <= k < half / 2, V neighbours at a time.
template <class T, class F> [[gnu::always_inline]] inline void ForEachPair(Index half, const F &body) {
  constexpr int kLanes = kComplexLanes<T>;
  const Index end = (half + 1) / 2;
  // The first ones up to a place at which half of the registers lie in one cache line each.
  ForEachFrom<Complex<T, 1>, (kLanes > 1 ? kLanes / 2 : 1)>(1, end < kLanes ? end : kLanes, body);
  ForEachFrom<Complex<T, 1>, kLanes>(kLanes, end, body);
}

// V complex values, a single one that does not fill 16 bytes being there twice.
template <class T, int V> inline constexpr bool kTwice = 2 * V * sizeof(T) < 16;
template <class T, int V> using Filled = Complex<T, kTwice<T, V> ? 2 * V : V>;
template <class T, int V> [[gnu::always_inline]] inline Filled<T, V> LoadFilled(const T *x) {
  if constexpr (kTwice<T, V>)
    return Filled<T, V>{x[0], x[1], x[0], x[1]};
  else
    return Load<Complex<T, V>>(x);
}
template <class T, int V> [[gnu::always_inline]] inline void StoreFilled(T *x, Filled<T, V> values) {
  if constexpr (kTwice<T, V>) {
    x[0] = values[0];
    x[1] = values[1];
  } else {
    Store(x, values);
  }
}

/// Turns the half-length transform Z of the samples' pairs x[2n] + j x[2n+1] into the 2 * half bins of the
/// real transform: with E = Z[k] + conj Z[half-k] and O = -j (Z[k] - conj Z[half-k]), X[k] = E + w^k O and
/// X[half-k] = conj(E - w^k O), w = exp(-j pi / half); the upper half is their exact mirror. The factor 1/2
/// is left to the transform. Z stands in the first half of x; `turns` holds w^k from k = 0 on.
template <class T> [[gnu::flatten]] void RunUntangle(T *x, const T *turns, Index half) {
  T *const upper = x + 2 * half;
  const T re0 = x[0], im0 = x[1];
  ForEachPair<T>(half, [&]<int V>(Index k, Int<V>) {
    using E = Filled<T, V>;
    const E conjugate = Alternating<E>(T{1}, T{-1}), minusRe = Alternating<E>(T{-1}, T{1});
    const Index back = half - k - (V - 1);
    const E z = LoadFilled<T, V>(x + 2 * k), mirror = Backwards(LoadFilled<T, V>(x + 2 * back)),
            w = LoadFilled<T, V>(turns + 2 * k);
    const E even = MulAdd(mirror, conjugate, z), swapped = NegMulAdd(z, conjugate, mirror); // E; O, im and re
    const E odd = MulSubAdd(ImTwice(swapped), w, ReTwice(swapped) * Swapped(w));
    const E low = even + odd, high = MulAdd(even, conjugate, odd * minusRe);
    StoreFilled<T, V>(x + 2 * k, low);
    StoreFilled<T, V>(x + 2 * back, Backwards(high));
    StoreFilled<T, V>(upper + 2 * back, Backwards(low * conjugate));
    StoreFilled<T, V>(upper + 2 * k, high * conjugate);
  });
  if (half % 2 == 0) {
    // w^(half/2) = -j, so that X = 2 conj Z here.
    const Index k = half / 2;
    x[2 * k] *= 2;
    x[2 * k + 1] *= -2;
    upper[2 * k] = x[2 * k];
    upper[2 * k + 1] = -x[2 * k + 1];
  }
  x[0] = 2 * (re0 + im0);
  x[1] = 0;
  upper[0] = 2 * (re0 - im0);
  upper[1] = 0;
}

/// The way back: Z[k] = E + j O with E = X[k] + conj X[half-k], O = conj(w^k) (X[k] - conj X[half-k]), from
/// bins 0 to half of x; the imaginary parts of bins 0 and half do not take part.
template <class T> [[gnu::flatten]] void RunTangle(const T *x, T *z, const T *turns, Index half) {
  ForEachPair<T>(half, [&]<int V>(Index k, Int<V>) {
    using E = Filled<T, V>;
    const E conjugate = Alternating<E>(T{1}, T{-1}), minusRe = Alternating<E>(T{-1}, T{1});
    const Index back = half - k - (V - 1);
    const E low = LoadFilled<T, V>(x + 2 * k), mirror = Backwards(LoadFilled<T, V>(x + 2 * back)),
            w = LoadFilled<T, V>(turns + 2 * k);
    const E even = MulAdd(mirror, conjugate, low), odd = NegMulAdd(mirror, conjugate, low);
    // O, im and re.
    const E swapped = MulAdd(ReTwice(odd) * minusRe, Swapped(w), ImTwice(odd) * w);
    StoreFilled<T, V>(z + 2 * k, MulAdd(swapped, minusRe, even));
    StoreFilled<T, V>(z + 2 * back, Backwards(MulAdd(even, conjugate, swapped)));
  });
  if (half % 2 == 0) {
    const Index k = half / 2;
    z[2 * k] = 2 * x[2 * k];
    z[2 * k + 1] = -2 * x[2 * k + 1];
  }
  const T first = x[0], last = x[2 * half];
  z[0] = first + last;
  z[1] = first - last;
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
