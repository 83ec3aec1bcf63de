#include "infra/fourier/passes/Vec.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Explicit vectors and unrolled loops over a block: else the compilers keep no block of sums in registers,
// which is what a product's speed comes from.
constexpr int kWidest = kRegisterBytes / static_cast<int>(sizeof(double));

// Vectors of one element too, so that a lone column runs the same code.
template <class T, int width> struct LanesOf {
  typedef T Type __attribute__((vector_size(width * sizeof(T))));
};
template <class T, int width> using Lanes = typename LanesOf<T, width>::Type;

// GCC splits the conversion of a generic vector into narrower ones; and it warns of what the form without a
// mask leaves undefined.
template <class T, int width> [[gnu::always_inline]] inline Lanes<double, width> Widened(Lanes<T, width> x) {
  if constexpr (sizeof(T) == sizeof(double)) {
    return x;
  } else {
#if defined(__AVX512F__)
    if constexpr (width == 8) return _mm512_maskz_cvtps_pd(0xff, x);
#endif
#if defined(__AVX2__)
    if constexpr (width == 4) return _mm256_cvtps_pd(x);
#endif
    return __builtin_convertvector(x, Lanes<double, width>);
  }
}

// Rows i to i + height - 1 of the product, and the columns of `groups` vectors from j on. Every sum goes over
// rising k in double, of products that are rounded to T. So an element's bits depend on its row and its
// column alone.
template <int height, int groups, int width, class T>
[[gnu::always_inline]] inline void Block(const T *a, const T *b, T *dst, Index i, Index j, Index inner,
                                         Index cols) {
  using Part = Lanes<T, width>;
  Lanes<double, width> sums[height][groups] = {};
  for (Index k = 0; k < inner; ++k) {
    Part right[groups];
#pragma GCC unroll 2
    for (int g = 0; g < groups; ++g) {
      __builtin_memcpy(&right[g], b + k * cols + j + g * width, sizeof right[g]);
    }
#pragma GCC unroll 4
    for (int r = 0; r < height; ++r) {
#pragma GCC unroll 2
      for (int g = 0; g < groups; ++g) {
        // Not Rounded(): GCC 12 leaves this form unfused, but takes vectors of floats apart at the barrier.
        const Part products = a[(i + r) * inner + k] * right[g];
        sums[r][g] += Widened<T, width>(products);
      }
    }
  }
#pragma GCC unroll 4
  for (int r = 0; r < height; ++r) {
#pragma GCC unroll 2
    for (int g = 0; g < groups; ++g) {
      const Part part = __builtin_convertvector(sums[r][g], Part);
      __builtin_memcpy(dst + (i + r) * cols + j + g * width, &part, sizeof part);
    }
  }
}

// The columns from j on, fewer than twice `width`.
template <int height, int width, class T>
[[gnu::always_inline]] inline void LastColumns(const T *a, const T *b, T *dst, Index i, Index j, Index inner,
                                               Index cols) {
  if (cols - j >= width) {
    Block<height, 1, width>(a, b, dst, i, j, inner, cols);
    j += width;
  }
  if constexpr (width > 1) LastColumns<height, width / 2>(a, b, dst, i, j, inner, cols);
}

template <int height, class T> void Stripe(const T *a, const T *b, T *dst, Index i, Index inner, Index cols) {
  constexpr int kPair = 2 * kWidest;
  Index j = 0;
  for (; cols - j >= kPair; j += kPair) Block<height, 2, kWidest>(a, b, dst, i, j, inner, cols);
  LastColumns<height, kWidest>(a, b, dst, i, j, inner, cols);
}

template <class T> void MatrixProduct(const T *a, const T *b, T *dst, int rows, int inner, int cols) {
  Index i = 0;
  for (; rows - i >= 4; i += 4) Stripe<4>(a, b, dst, i, inner, cols);
  if (rows - i == 3) return Stripe<3>(a, b, dst, i, inner, cols);
  if (rows - i == 2) return Stripe<2>(a, b, dst, i, inner, cols);
  if (rows - i == 1) Stripe<1>(a, b, dst, i, inner, cols);
}

} // namespace

#define QORN_FAMILY "MatrixProduct.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
