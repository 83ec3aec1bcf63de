// What kernels do with registers beyond what the Fourier passes need: whole ones of any type, floats in
// double, and folds of lanes.
#ifndef QORN_SRC_INFRA_KERNELS_REGISTERS_H
#define QORN_SRC_INFRA_KERNELS_REGISTERS_H

#include "infra/fourier/passes/Vec.h"

#if defined(__SSE2__)
#include <emmintrin.h> // its functions are always inlined: no symbol of theirs reaches an object
#endif

namespace QORN::kernels::QORN_LEVEL {
namespace {

template <class T> inline constexpr int kPerRegister = kRegisterBytes / static_cast<int>(sizeof(T));
template <class T> using Register = Vec<T, kPerRegister<T>>;

/// Each pair of lanes exchanged.
struct Swapped {
  static constexpr int At(int i) { return i ^ 1; }
};

/// Floats in double. GCC splits the conversion of a generic vector into narrower ones, down to single
/// elements; and it warns of what the form without a mask leaves undefined.
[[gnu::always_inline]] inline Vec<double, 2> Widened(Vec<float, 2> x) {
#if defined(__SSE2__)
  return _mm_cvtps_pd(_mm_castpd_ps(_mm_set_sd(__builtin_bit_cast(double, x))));
#else
  return __builtin_convertvector(x, Vec<double, 2>);
#endif
}
#if defined(__AVX2__)
[[gnu::always_inline]] inline Vec<double, 4> Widened(Vec<float, 4> x) { return _mm256_cvtps_pd(x); }
#endif
#if defined(__AVX512F__)
[[gnu::always_inline]] inline Vec<double, 8> Widened(Vec<float, 8> x) {
  return _mm512_maskz_cvtps_pd(0xff, x);
}
#endif

/// The lower or the upper half of V lanes.
template <int First, class E, int... I> [[gnu::always_inline]] inline auto LanesFrom(E x, Seq<I...>) {
  return __builtin_shufflevector(x, x, (First + I)...);
}
template <int Upper, int V, class E> [[gnu::always_inline]] inline auto HalfOf(E x) {
  return LanesFrom<Upper * V / 2>(x, MakeSeq<V / 2>{});
}

/// Combines lane j with lane j + half of it, until To of V lanes are left.
template <int To, int V, class E, class F> [[gnu::always_inline]] inline auto Folded(E x, F combine) {
  if constexpr (V == To) {
    return x;
  } else {
    return Folded<To, V / 2>(combine(HalfOf<0, V>(x), HalfOf<1, V>(x)), combine);
  }
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
