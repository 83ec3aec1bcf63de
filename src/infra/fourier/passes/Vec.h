// Vectors of V lanes, V at most what a register of this level holds, and the few operations on them that the
// Fourier passes need. A vector of one lane is the plain scalar, so that tails and tiny lengths run the same
// text.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_VEC_H
#define QORN_SRC_INFRA_FOURIER_PASSES_VEC_H

#include "infra/kernels/families/Kernel.h"

#if defined(__FMA__)
#include <immintrin.h> // its functions are always inlined: no symbol of theirs reaches an object
#endif

namespace QORN::kernels::QORN_LEVEL {
namespace {

template <class T, int V> struct VecOf { typedef T Type __attribute__((vector_size(V * sizeof(T)))); };
template <class T> struct VecOf<T, 1> { using Type = T; };
template <class T, int V> using Vec = typename VecOf<T, V>::Type;

#if defined(__AVX512F__)
inline constexpr int kRegisterBytes = 64;
#elif defined(__AVX2__)
inline constexpr int kRegisterBytes = 32;
#else
inline constexpr int kRegisterBytes = 16;
#endif

/// Lanes of T in the widest register, or W if that is less.
template <class T, int W>
inline constexpr int kLanes = W < kRegisterBytes / static_cast<int>(sizeof(T))
                                  ? W
                                  : kRegisterBytes / static_cast<int>(sizeof(T));

// Compile-time loops: every index is a constant expression, so that arrays of vectors become registers.
template <int N> struct Int {
  constexpr operator int() const { return N; }
};
template <int... I> struct Seq {};
#if defined(__clang__)
template <class, int... I> struct SeqOf { using Type = Seq<I...>; };
template <int N> using MakeSeq = typename __make_integer_seq<SeqOf, int, N>::Type;
#else
template <int N> using MakeSeq = Seq<__integer_pack(N)...>;
#endif
template <class F, int... I> [[gnu::always_inline]] inline void UnrollOver(const F &f, Seq<I...>) {
  (f(Int<I>{}), ...);
}
template <int N, class F> [[gnu::always_inline]] inline void Unroll(const F &f) {
  UnrollOver(f, MakeSeq<N>{});
}

template <class E, class T> [[gnu::always_inline]] inline E Load(const T *p) {
  E v;
  __builtin_memcpy(&v, p, sizeof v);
  return v;
}
template <class E, class T> [[gnu::always_inline]] inline void Store(T *p, E v) {
  __builtin_memcpy(p, &v, sizeof v);
}

/// All lanes x. The subtraction of zero keeps every value, a negative zero too, and costs nothing.
template <class E, class T> [[gnu::always_inline]] inline E Broadcast(T x) { return x - E{}; }

// MulAdd: a * b + c, MulSub: a * b - c, NegMulAdd: c - a * b; rounded once where the level has the
// instruction. MulAdd of scalars is every kernel's. MulSubAdd takes the difference in lanes 0, 2, 4, ... and
// the sum in the others, MulAddSub vice versa; where they are no instructions, Interleaved.h has them.
#if defined(__FMA__)
#define QORN_FUSED_AS(name, instruction, T, V, width, suffix)                                                \
  [[gnu::always_inline]] inline Vec<T, V> name(Vec<T, V> a, Vec<T, V> b, Vec<T, V> c) {                      \
    return _mm##width##_##instruction##_##suffix(a, b, c);                                                   \
  }
#define QORN_FUSED(...)                                                                                      \
  QORN_FUSED_AS(MulAdd, fmadd, __VA_ARGS__)                                                                  \
  QORN_FUSED_AS(MulSub, fmsub, __VA_ARGS__)                                                                  \
  QORN_FUSED_AS(NegMulAdd, fnmadd, __VA_ARGS__)                                                              \
  QORN_FUSED_AS(MulSubAdd, fmaddsub, __VA_ARGS__)                                                            \
  QORN_FUSED_AS(MulAddSub, fmsubadd, __VA_ARGS__)
QORN_FUSED(float, 4, , ps)
QORN_FUSED(double, 2, , pd)
QORN_FUSED(float, 8, 256, ps)
QORN_FUSED(double, 4, 256, pd)
#if defined(__AVX512F__)
QORN_FUSED(float, 16, 512, ps)
QORN_FUSED(double, 8, 512, pd)
#endif
#undef QORN_FUSED
#undef QORN_FUSED_AS
[[gnu::always_inline]] inline float MulSub(float a, float b, float c) { return MulAdd(a, b, -c); }
[[gnu::always_inline]] inline double MulSub(double a, double b, double c) { return MulAdd(a, b, -c); }
[[gnu::always_inline]] inline float NegMulAdd(float a, float b, float c) { return MulAdd(-a, b, c); }
[[gnu::always_inline]] inline double NegMulAdd(double a, double b, double c) { return MulAdd(-a, b, c); }
#elif defined(__ARM_FEATURE_FMA)
// Lane by lane, which the compiler joins to one instruction.
[[gnu::always_inline]] inline Vec<float, 4> MulAdd(Vec<float, 4> a, Vec<float, 4> b, Vec<float, 4> c) {
  for (int i = 0; i < 4; ++i) c[i] = MulAdd<float>(a[i], b[i], c[i]);
  return c;
}
[[gnu::always_inline]] inline Vec<double, 2> MulAdd(Vec<double, 2> a, Vec<double, 2> b, Vec<double, 2> c) {
  for (int i = 0; i < 2; ++i) c[i] = MulAdd<double>(a[i], b[i], c[i]);
  return c;
}
template <class E> [[gnu::always_inline]] inline E MulSub(E a, E b, E c) { return MulAdd(a, b, -c); }
template <class E> [[gnu::always_inline]] inline E NegMulAdd(E a, E b, E c) { return MulAdd(-a, b, c); }
#else
// Kernel.h's MulAdd serves vectors as well here.
template <class E> [[gnu::always_inline]] inline E MulSub(E a, E b, E c) { return a * b - c; }
template <class E> [[gnu::always_inline]] inline E NegMulAdd(E a, E b, E c) { return c - a * b; }
#endif

/// The compiler takes x for a value that it does not know.
template <class I> [[gnu::always_inline]] inline void Hide(I &x) { asm("" : "+r"(x)); }

/// Lane i of the result is lane P::At(i) of a followed by b.
template <class P, class E, int... I> [[gnu::always_inline]] inline E ShuffleAs(E a, E b, Seq<I...>) {
  return __builtin_shufflevector(a, b, P::At(I)...);
}
template <class P, int V, class E> [[gnu::always_inline]] inline E Shuffle(E a, E b) {
  return ShuffleAs<P>(a, b, MakeSeq<V>{});
}

// a0 a2 a4 ... b0 b2 b4 ... and the odd ones.
template <int Odd> struct EveryOther {
  static constexpr int At(int i) { return 2 * i + Odd; }
};
// a0 b0 a1 b1 ... of the lower or the upper half.
template <int V, int Upper> struct Zipped {
  static constexpr int At(int i) { return i / 2 + (i % 2) * V + Upper * (V / 2); }
};
template <int V> struct Reversed {
  static constexpr int At(int i) { return V - 1 - i; }
};
// Within each group of G lanes: a0 b0 a1 b1 ..., from the lower or the upper half of the group.
template <int V, int G, int Upper> struct GroupZipped {
  static constexpr int At(int i) { return i / G * G + (i % G) / 2 + (i % 2) * V + Upper * (G / 2); }
};
// Within each group of four lanes: two neighbours of a, then the same two of b.
template <int V, int Upper> struct PairsJoined {
  static constexpr int At(int i) { return i / 4 * 4 + 2 * Upper + i % 2 + (i % 4) / 2 * V; }
};
// Every other group of G lanes of a, then of b.
template <int V, int G, int Odd> struct GroupsEveryOther {
  static constexpr int At(int i) { return (2 * (i / G) + Odd) * G + i % G; }
};

/// Turns V rows of V lanes into their V columns. Steps of one instruction each: first inside the 128-bit
/// parts of the registers, then by whole parts.
template <class T, int V> [[gnu::always_inline]] inline void Transpose(Vec<T, V> *r) {
  constexpr int kGroup = 16 / static_cast<int>(sizeof(T));
  constexpr int kParts = V / kGroup;
  using E = Vec<T, V>;
  Unroll<kParts>([&](auto part) {
    E *g = r + part * kGroup;
    if constexpr (kGroup == 2) {
      const E a = g[0], b = g[1];
      g[0] = Shuffle<GroupZipped<V, 2, 0>, V>(a, b);
      g[1] = Shuffle<GroupZipped<V, 2, 1>, V>(a, b);
    } else {
      const E a = Shuffle<GroupZipped<V, 4, 0>, V>(g[0], g[1]);
      const E b = Shuffle<GroupZipped<V, 4, 1>, V>(g[0], g[1]);
      const E c = Shuffle<GroupZipped<V, 4, 0>, V>(g[2], g[3]);
      const E d = Shuffle<GroupZipped<V, 4, 1>, V>(g[2], g[3]);
      g[0] = Shuffle<PairsJoined<V, 0>, V>(a, c);
      g[1] = Shuffle<PairsJoined<V, 1>, V>(a, c);
      g[2] = Shuffle<PairsJoined<V, 0>, V>(b, d);
      g[3] = Shuffle<PairsJoined<V, 1>, V>(b, d);
    }
  });
  using Even = GroupsEveryOther<V, kGroup, 0>;
  using Odd = GroupsEveryOther<V, kGroup, 1>;
  Unroll<kGroup>([&](auto i) {
    if constexpr (kParts == 2) {
      const E a = r[i], b = r[kGroup + i];
      r[i] = Shuffle<Even, V>(a, b);
      r[kGroup + i] = Shuffle<Odd, V>(a, b);
    } else if constexpr (kParts == 4) {
      const E a = r[i], b = r[kGroup + i], c = r[2 * kGroup + i], d = r[3 * kGroup + i];
      const E ab0 = Shuffle<Even, V>(a, b), ab1 = Shuffle<Odd, V>(a, b);
      const E cd0 = Shuffle<Even, V>(c, d), cd1 = Shuffle<Odd, V>(c, d);
      r[i] = Shuffle<Even, V>(ab0, cd0);
      r[kGroup + i] = Shuffle<Even, V>(ab1, cd1);
      r[2 * kGroup + i] = Shuffle<Odd, V>(ab0, cd0);
      r[3 * kGroup + i] = Shuffle<Odd, V>(ab1, cd1);
    }
  });
}

/// V interleaved complex values as V real and V imaginary parts, and back.
template <class T, int V>
[[gnu::always_inline]] inline void LoadComplex(const T *p, Vec<T, V> &re, Vec<T, V> &im) {
  if constexpr (V == 1) {
    re = p[0];
    im = p[1];
  } else {
    const auto a = Load<Vec<T, V>>(p), b = Load<Vec<T, V>>(p + V);
    re = Shuffle<EveryOther<0>, V>(a, b);
    im = Shuffle<EveryOther<1>, V>(a, b);
  }
}
template <class T, int V> [[gnu::always_inline]] inline void StoreComplex(T *p, Vec<T, V> re, Vec<T, V> im) {
  if constexpr (V == 1) {
    p[0] = re;
    p[1] = im;
  } else {
    Store(p, Shuffle<Zipped<V, 0>, V>(re, im));
    Store(p + V, Shuffle<Zipped<V, 1>, V>(re, im));
  }
}

/// The lanes in reverse order.
template <class T, int V> [[gnu::always_inline]] inline Vec<T, V> Reverse(Vec<T, V> x) {
  if constexpr (V == 1) {
    return x;
  } else {
    return Shuffle<Reversed<V>, V>(x, x);
  }
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
