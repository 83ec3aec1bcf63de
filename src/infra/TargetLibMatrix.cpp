// Gauss-Jordan elimination in place with partial pivoting (G. H. Golub, C. F. Van Loan: Matrix Computations,
// ch. 3).
//
// Rows and then columns are first scaled by powers of two, which rounds nothing, so that their largest
// elements lie between 1/2 and 1: units must not decide over pivots, nor over what is singular. A pivot not
// above the rounding errors of the elimination, size * epsilon, tells a singular matrix. The source is read
// again for the scales in the end, so that the caller's buffer suffices.
#include "qorn/infra/TargetLib.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>
#include <utility>

namespace QORN {

namespace {

using Index = std::ptrdiff_t;

// A matrix with strides in bytes.
template <class T> class Strided {
public:
  Strided(T *data, int rowStride, int stride) : m_data(data), m_rowStride(rowStride), m_stride(stride) {}

  T &operator()(Index row, Index column) const {
    using Byte = std::conditional_t<std::is_const_v<T>, const char, char>;
    return *reinterpret_cast<T *>(reinterpret_cast<Byte *>(m_data) + row * m_rowStride + column * m_stride);
  }

private:
  T *m_data;
  Index m_rowStride, m_stride;
};

// The exponent e for which 2^e * largest lies between 1/2 and 1.
template <class T> int ScaleOf(T largest) {
  int exponent = 0;
  std::frexp(largest, &exponent);
  return -exponent;
}

template <class T> class Inversion {
public:
  Inversion(Strided<const T> src, T *buffer, Index size)
      : m_src(src), m_work(buffer), m_extra(buffer + size * size), m_size(size) {}

  bool Run(Strided<T> dst) {
    if (!Load() || !Eliminate()) return false;
    RestoreColumns();
    RestoreScales();
    for (Index i = 0; i < m_size; ++i) {
      for (Index j = 0; j < m_size; ++j) dst(i, j) = Row(i)[j];
    }
    return true;
  }

private:
  T *Row(Index i) { return m_work + i * m_size; }

  // Zero for a row or column of zeros; not-a-number or infinite where an element is.
  template <class Get> T Largest(Get get) const {
    T largest = 0;
    for (Index i = 0; i < m_size; ++i) {
      const T x = std::fabs(get(i));
      if (!(x <= largest)) largest = x;
      if (std::isnan(x)) break;
    }
    return largest;
  }

  static bool CanScale(T largest) { return largest > 0 && largest <= std::numeric_limits<T>::max(); }

  // Leaves the rows' scales in the extra row.
  bool SetRowScales() {
    for (Index i = 0; i < m_size; ++i) {
      const T largest = Largest([&](Index j) { return m_src(i, j); });
      if (!CanScale(largest)) return false;
      m_extra[i] = static_cast<T>(ScaleOf(largest));
    }
    return true;
  }

  T RowScaled(Index i, Index j) const { return std::ldexp(m_src(i, j), static_cast<int>(m_extra[i])); }

  // The scale of column j of the source with scaled rows, or false for a column of zeros.
  bool ColumnScale(Index j, int &scale) const {
    const T largest = Largest([&](Index i) { return RowScaled(i, j); });
    if (!CanScale(largest)) return false;
    scale = ScaleOf(largest);
    return true;
  }

  bool Load() {
    if (!SetRowScales()) return false;
    for (Index j = 0; j < m_size; ++j) {
      int scale = 0;
      if (!ColumnScale(j, scale)) return false;
      for (Index i = 0; i < m_size; ++i) Row(i)[j] = std::ldexp(RowScaled(i, j), scale);
    }
    return true;
  }

  // Step k turns column k of the work matrix into column k of what will be the inverse. The extra row keeps
  // which row was exchanged with row k.
  bool Eliminate() {
    const T negligible = static_cast<T>(m_size) * std::numeric_limits<T>::epsilon();
    for (Index k = 0; k < m_size; ++k) {
      Index best = k;
      for (Index i = k + 1; i < m_size; ++i) {
        if (std::fabs(Row(i)[k]) > std::fabs(Row(best)[k])) best = i;
      }
      if (!(std::fabs(Row(best)[k]) > negligible)) return false;
      if (best != k) std::swap_ranges(Row(k), Row(k) + m_size, Row(best));
      m_extra[k] = static_cast<T>(best);
      Step(k);
    }
    return true;
  }

  void Step(Index k) {
    T *pivotRow = Row(k);
    const T pivot = pivotRow[k];
    pivotRow[k] = 1;
    for (Index j = 0; j < m_size; ++j) pivotRow[j] /= pivot;
    for (Index i = 0; i < m_size; ++i) {
      if (i == k) continue;
      T *row = Row(i);
      const T factor = row[k];
      row[k] = 0;
      for (Index j = 0; j < m_size; ++j) row[j] -= factor * pivotRow[j];
    }
  }

  // Exchanges of rows on the way in are exchanges of columns on the way out, last first.
  void RestoreColumns() {
    for (Index k = m_size - 1; k >= 0; --k) {
      const Index other = static_cast<Index>(m_extra[k]);
      if (other == k) continue;
      for (Index i = 0; i < m_size; ++i) std::swap(Row(i)[k], Row(i)[other]);
    }
  }

  // With the work matrix R A C for the diagonal scales R and C, the inverse of A is C (R A C)^-1 R.
  void RestoreScales() {
    SetRowScales();
    for (Index i = 0; i < m_size; ++i) {
      int scale = 0;
      ColumnScale(i, scale);
      for (Index j = 0; j < m_size; ++j) {
        Row(i)[j] = std::ldexp(Row(i)[j], scale + static_cast<int>(m_extra[j]));
      }
    }
  }

  Strided<const T> m_src;
  T *m_work;  // size x size
  T *m_extra; // size
  Index m_size;
};

template <class T>
bool Invert(const T *src, int srcStride1, int srcStride2, T *buffer, T *dst, int dstStride1, int dstStride2,
            int size) {
  if (src == nullptr || buffer == nullptr || dst == nullptr || size < 1) return false;
  Inversion<T> inversion({src, srcStride1, srcStride2}, buffer, size);
  return inversion.Run({dst, dstStride1, dstStride2});
}

} // namespace

bool TargetLib::Invert_m_32f(const float *src, int srcStride1, int srcStride2, float *buffer, float *dst,
                             int dstStride1, int dstStride2, int size) {
  return Invert(src, srcStride1, srcStride2, buffer, dst, dstStride1, dstStride2, size);
}

bool TargetLib::Invert_m_64f(const double *src, int srcStride1, int srcStride2, double *buffer, double *dst,
                             int dstStride1, int dstStride2, int size) {
  return Invert(src, srcStride1, srcStride2, buffer, dst, dstStride1, dstStride2, size);
}

} // namespace QORN
