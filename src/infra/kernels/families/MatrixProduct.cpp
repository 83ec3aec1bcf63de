#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

#if defined(__AVX512F__)
constexpr int kDoubles = 8;
#elif defined(__AVX2__)
constexpr int kDoubles = 4;
#else
constexpr int kDoubles = 2;
#endif

// Explicit vectors, of the level's width or less: of a loop over arrays the compilers keep no block of sums
// in registers, which is what a product's speed comes from.
template <class T, int width> struct Lanes {
  typedef T Type __attribute__((vector_size(width * sizeof(T))));
};

// Rows i to i + height - 1 of the product, and as many columns as `groups` vectors have, from j on. Every sum
// goes over rising k in double, of products that are rounded to T. So an element's bits depend on its row and
// its column alone.
template <int height, int groups, int width, class T>
[[gnu::always_inline]] inline void Block(const T *a, const T *b, T *dst, Index i, Index j, Index inner,
                                         Index cols) {
  using Part = typename Lanes<T, width>::Type;
  using Sums = typename Lanes<double, width>::Type;
  Sums sums[height][groups] = {};
  for (Index k = 0; k < inner; ++k) {
    Part right[groups];
    __builtin_memcpy(right, b + k * cols + j, sizeof right);
    for (int r = 0; r < height; ++r) {
      for (int g = 0; g < groups; ++g) {
        const Part products = Rounded(a[(i + r) * inner + k] * right[g]);
        sums[r][g] += __builtin_convertvector(products, Sums);
      }
    }
  }
  for (int r = 0; r < height; ++r) {
    for (int g = 0; g < groups; ++g) {
      const Part part = __builtin_convertvector(sums[r][g], Part);
      __builtin_memcpy(dst + (i + r) * cols + j + g * width, &part, sizeof part);
    }
  }
}

// The columns from j on, fewer than two vectors of twice this width.
template <int height, int width, class T>
[[gnu::always_inline]] inline void LastColumns(const T *a, const T *b, T *dst, Index i, Index j, Index inner,
                                               Index cols) {
  if (cols - j >= width) Block<height, 1, width>(a, b, dst, i, j, inner, cols), j += width;
  if constexpr (width > 1) LastColumns<height, width / 2>(a, b, dst, i, j, inner, cols);
}

template <int height, class T> void Stripe(const T *a, const T *b, T *dst, Index i, Index inner, Index cols) {
  constexpr int kPair = 2 * kDoubles;
  Index j = 0;
  for (; cols - j >= kPair; j += kPair) Block<height, 2, kDoubles>(a, b, dst, i, j, inner, cols);
  LastColumns<height, kDoubles>(a, b, dst, i, j, inner, cols);
}

template <class T> void MatrixProduct(const T *a, const T *b, T *dst, int rows, int inner, int cols) {
  Index i = 0;
  for (; rows - i >= 4; i += 4) Stripe<4>(a, b, dst, i, inner, cols);
  for (; i < rows; ++i) Stripe<1>(a, b, dst, i, inner, cols);
}

} // namespace

#define QORN_FAMILY "MatrixProduct.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
