// Transforms of few points between loads and stores alone: all values stay in registers, and all factors are
// constants of the text.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_DIRECT_H
#define QORN_SRC_INFRA_FOURIER_PASSES_DIRECT_H

#include "GridSteps.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// A vector whose lanes i are P::At(i), known to the compiler.
template <class T, class P, int I> struct ConstantLane {
  static constexpr T value = static_cast<T>(P::At(I));
};
template <class E, class T, class P, int... I> [[gnu::always_inline]] inline E ConstantAs(Seq<I...>) {
  return E{ConstantLane<T, P, I>::value...};
}
template <class E, class T, class P> [[gnu::always_inline]] inline E Constant() {
  return ConstantAs<E, T, P>(MakeSeq<kScalars<E>>{});
}

// exp(-j 2 pi (First + Step i) / N) for complex lane i, in the form that Turned takes.
template <int First, int Step, int N> struct RootsRe {
  static constexpr long double At(int i) { return Cosine(First + Step * (i / 2), N); }
};
template <int First, int Step, int N> struct RootsIm {
  static constexpr long double At(int i) { return (i % 2 == 0 ? 1 : -1) * Sine(First + Step * (i / 2), N); }
};

/// Transform of A * B points: get(Int<n>) gives samples n to n + V - 1, put(Int<k>, x) takes as many bins.
/// Every sample is asked for before the first bin is given, some of both twice.
template <class T, int V, int A, int B, bool Inverse, class Get, class Put>
[[gnu::always_inline]] inline void DirectPoints(const Get &get, const Put &put) {
  using E = Complex<T, V>;
  if constexpr (V == 1 && A * B <= 16) {
    E x[A * B];
    Unroll<A * B>([&](auto n) { x[n] = get(n); });
    Butterfly<T, A * B, Inverse>(x);
    Unroll<A * B>([&](auto k) { put(k, x[k]); });
  } else {
    E rows[GroupCount<V>(A)][B];
    Unroll<GroupCount<V>(B)>([&](auto g) {
      constexpr int kAt = GroupStart<V>(g, B);
      E z[A];
      Unroll<A>([&](auto a) { z[a] = get(Int<B * a + kAt>{}); });
      Butterfly<T, A, Inverse>(z);
      Unroll<A - 1>([&](auto i) {
        constexpr int k = i + 1;
        z[k] = Turned<Inverse>(z[k], Constant<E, T, RootsRe<k * kAt, k, A * B>>(),
                               Constant<E, T, RootsIm<k * kAt, k, A * B>>());
      });
      GiveColumns<T, V, A>(z, [&](auto group, auto, auto i, E t) { rows[group][kAt + i] = t; });
    });
    Unroll<GroupCount<V>(A)>([&](auto g) {
      Butterfly<T, B, Inverse>(rows[g]);
      Unroll<B>([&](auto b) { put(Int<A * b + GroupStart<V>(g, A)>{}, rows[g][b]); });
    });
  }
}

template <class T, int V, int A, int B, class Ends>
[[gnu::flatten]] void Direct(const T *in, T *out, Ends ends) {
  using E = Complex<T, V>;
  DirectPoints<T, V, A, B, Ends::kInverse>([&](auto n) { return ends.First(Load<E>(in + 2 * n), 2 * n); },
                                           [&](auto k, E x) { Store(out + 2 * k, x); });
}

/// out = scale * transform of A * B complex values, at most Most of them in a vector; out may be in.
template <class T, int A, int B, int Most>
[[gnu::always_inline]] inline void RunDirect(const T *in, T *out, bool inverse, T scale) {
  constexpr int V = Most < kComplexLanes<T> ? Most : kComplexLanes<T>;
  WithEnds<T>(inverse, scale, [&](auto ends) { Direct<T, V, A, B>(in, out, ends); });
}

// The rows of 128 points: where the registers hold few of them, fewer values at a time.
template <class T> inline constexpr int kRowsOf128 = kComplexLanes<T> > 2 ? 16 : 8;

// Complex lane 0 of a, then the last V - 1 of b in reverse order.
template <int V> struct Mirrored {
  static constexpr int At(int i) { return i < 2 ? i : 4 * V - i / 2 * 2 + i % 2; }
};
template <int V, class E> [[gnu::always_inline]] inline E Mirror(E a, E b) {
  return V == 1 ? a : Shuffle<Mirrored<V>, 2 * V>(a, b);
}

// The first scalar of a, then b from the second on.
template <int V> struct FirstOf {
  static constexpr int At(int i) { return i == 0 ? 0 : 2 * V + i; }
};
// The first complex lane of a, then b from the second on.
template <int V> struct FirstPairOf {
  static constexpr int At(int i) { return i < 2 ? i : 2 * V + i; }
};

// All of a but its second scalar, which is b's.
template <int V> struct SecondCleared {
  static constexpr int At(int i) { return i == 1 ? 2 * V + 1 : i; }
};

// The way from the transform Z of the pairs x[2n] + j x[2n+1] of N = 2 H real samples to their bins, and
// back, a vector of V values of k at a time: with w' = -j exp(-j 2 pi k / N),
//
//   2 X[k] = Z[k] + conj Z[H-k] + w' (Z[k] - conj Z[H-k]),
//   Z[k] = X[k] + conj X[H-k] + conj(w') (X[k] - conj X[H-k]),
//
// where Z[H] = Z[0].
template <class T, int V, int K, int H, bool Inverse>
[[gnu::always_inline]] inline Complex<T, V> SplitOrJoin(Complex<T, V> x, Complex<T, V> mirror) {
  using E = Complex<T, V>;
  const E conjugate = Alternating<E>(T{1}, T{-1});
  const E even = MulAdd(mirror, conjugate, x), difference = NegMulAdd(mirror, conjugate, x);
  const E wre = Constant<E, T, RootsRe<4 * K + 2 * H, 4, 8 * H>>(),
          wim = Constant<E, T, RootsIm<4 * K + 2 * H, 4, 8 * H>>();
  const E partial = MulAdd(difference, wre, even);
  return Inverse ? NegMulAdd(Swapped(difference), wim, partial) : MulAdd(Swapped(difference), wim, partial);
}

template <class T, int V, int A, int B>
[[gnu::flatten]] void DirectRealForward(const T *in, T *out, T scale) {
  using E = Complex<T, V>;
  constexpr int H = A * B, kVectors = H / V;
  static_assert(A % V == 0);
  E z[kVectors], bins[kVectors];
  DirectPoints<T, V, A, B, false>([&](auto n) { return Load<E>(in + 2 * n) * (scale / 2); },
                                  [&](auto k, E x) { z[k / V] = x; });
  Unroll<kVectors>([&](auto i) {
    bins[i] = SplitOrJoin<T, V, i * V, H, false>(
        z[i], Mirror<V>(z[(kVectors - i) % kVectors], z[kVectors - 1 - i]));
  });
  // Bins 0 and H are real, whatever the samples are.
  const E sum = z[0] + Swapped(z[0]), difference = z[0] - Swapped(z[0]), zero{};
  const E first = Shuffle<FirstOf<V>, 2 * V>(sum + sum, zero);
  const E last = Shuffle<FirstOf<V>, 2 * V>(difference + difference, zero);
  bins[0] = V == 1 ? first : Shuffle<FirstPairOf<V>, 2 * V>(first, bins[0]);
  const E conjugate = Alternating<E>(T{1}, T{-1});
  Unroll<kVectors>([&](auto i) {
    Store(out + 2 * (i * V), bins[i]);
    const E mirror = Mirror<V>(i == 0 ? last : bins[(kVectors - i) % kVectors], bins[kVectors - 1 - i]);
    Store(out + 2 * (H + i * V), mirror * conjugate);
  });
}

template <class T, int V, int A, int B>
[[gnu::flatten]] void DirectRealInverse(const T *in, T *out, T scale) {
  using E = Complex<T, V>;
  constexpr int H = A * B, kVectors = H / V;
  static_assert(B % V == 0);
  E bins[kVectors + 1], z[kVectors];
  Unroll<kVectors + 1>([&](auto i) { bins[i] = Load<E>(in + 2 * (i * V)); });
  // Their imaginary parts take no part.
  bins[0] = Shuffle<SecondCleared<V>, 2 * V>(bins[0], E{});
  bins[kVectors] = Shuffle<SecondCleared<V>, 2 * V>(bins[kVectors], E{});
  Unroll<kVectors>([&](auto i) {
    z[i] = SplitOrJoin<T, V, i * V, H, true>(bins[i], Mirror<V>(bins[kVectors - i], bins[kVectors - 1 - i]));
  });
  DirectPoints<T, V, A, B, true>([&](auto n) { return z[n / V]; },
                                 [&](auto k, E x) { Store(out + 2 * k, x * scale); });
}

/// The real transform of 2 * A * B samples: all bins of the samples in `in`, or, inverse, the samples whose
/// lower bins those are. out must not overlap in. A is a multiple of the vectors' lanes, of which there are
/// at most Most, as then no vector of bins begins between two.
template <class T, int A, int B, int Most>
[[gnu::always_inline]] inline void RunDirectReal(const T *in, T *out, bool inverse, T scale) {
  constexpr int V = Most < kComplexLanes<T> ? Most : kComplexLanes<T>;
  if (inverse) {
    DirectRealInverse<T, V, B, A>(in, out, scale);
  } else {
    DirectRealForward<T, V, A, B>(in, out, scale);
  }
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
