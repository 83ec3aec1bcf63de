// Gauss-Jordan elimination in place with complete pivoting (G. H. Golub, C. F. Van Loan: Matrix Computations,
// ch. 3).
//
// Rows and then columns are first scaled by powers of two, which rounds nothing, so that their largest
// elements lie between 1/2 and 1: units must not decide over pivots, nor over what is singular. An element is
// scaled by both at once: with its row's scale alone, what its column's lifts again could be lost below the
// range of the type. A matrix is singular if all that is left to be the next pivot is not above size *
// epsilon. Under complete pivoting, what rounding leaves of an exact zero stays below a third of that;
// partial pivoting would let it grow a hundredfold, and no limit could then tell a singular matrix from a
// usable one.
//
// The source is read again for the scales in the end, so that the caller's buffer suffices.
#include "qorn/infra/TargetLib.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
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

// The exponent e for which 2^-e * |x| lies between 1/2 and 1, x being neither zero nor infinite.
template <class T> int ExponentOf(T x) {
  int exponent = 0;
  std::frexp(x, &exponent);
  return exponent;
}

template <class T> class Inversion {
public:
  Inversion(Strided<const T> src, T *buffer, Index size)
      : m_src(src), m_work(buffer), m_extra(buffer + size * size), m_size(size) {}

  bool Run(Strided<T> dst) {
    if (!Load() || !Eliminate()) return false;
    RestoreOrder();
    RestoreScales();
    for (Index i = 0; i < m_size; ++i) {
      for (Index j = 0; j < m_size; ++j) dst(i, j) = Row(i)[j];
    }
    return true;
  }

private:
  T *Row(Index i) { return m_work + i * m_size; }

  // Zero for a row of zeros; not-a-number or infinite where an element is.
  template <class Get> T Largest(Get get) const {
    T largest = 0;
    for (Index i = 0; i < m_size; ++i) {
      const T x = std::fabs(get(i));
      if (!(x <= largest)) largest = x;
      if (std::isnan(x)) break;
    }
    return largest;
  }

  // Leaves the rows' scales, as exponents, in the extra row.
  bool SetRowScales() {
    for (Index i = 0; i < m_size; ++i) {
      const T largest = Largest([&](Index j) { return m_src(i, j); });
      if (!(largest > 0 && largest <= std::numeric_limits<T>::max())) return false;
      m_extra[i] = static_cast<T>(-ExponentOf(largest));
    }
    return true;
  }

  int RowScale(Index i) const { return static_cast<int>(m_extra[i]); }

  // The scale of column j of the source with scaled rows, or false for a column of zeros.
  bool ColumnScale(Index j, int &scale) const {
    constexpr int kNone = -std::numeric_limits<int>::max();
    int largest = kNone;
    for (Index i = 0; i < m_size; ++i) {
      const T x = m_src(i, j);
      if (x != 0) largest = std::max(largest, ExponentOf(x) + RowScale(i));
    }
    scale = -largest;
    return largest != kNone;
  }

  bool Load() {
    if (!SetRowScales()) return false;
    for (Index j = 0; j < m_size; ++j) {
      int scale = 0;
      if (!ColumnScale(j, scale)) return false;
      for (Index i = 0; i < m_size; ++i) Row(i)[j] = std::ldexp(m_src(i, j), RowScale(i) + scale);
    }
    return true;
  }

  // The row and the column that changed places with row and column k. Kept as bits in element k of the extra
  // row, in which no arithmetic is done meanwhile.
  struct Exchange {
    using Place = std::conditional_t<sizeof(T) == 4, std::uint16_t, std::uint32_t>;
    Place row, column;
  };
  static_assert(sizeof(Exchange) == sizeof(T));

  Exchange LargestFrom(Index k) {
    Exchange best{static_cast<typename Exchange::Place>(k), static_cast<typename Exchange::Place>(k)};
    T largest = -1;
    for (Index i = k; i < m_size; ++i) {
      for (Index j = k; j < m_size; ++j) {
        if (std::fabs(Row(i)[j]) > largest) {
          largest = std::fabs(Row(i)[j]);
          best = {static_cast<typename Exchange::Place>(i), static_cast<typename Exchange::Place>(j)};
        }
      }
    }
    return best;
  }

  void ExchangeRows(Index i, Index k) {
    if (i != k) std::swap_ranges(Row(i), Row(i) + m_size, Row(k));
  }
  void ExchangeColumns(Index j, Index k) {
    for (Index i = 0; i < m_size && j != k; ++i) std::swap(Row(i)[j], Row(i)[k]);
  }

  // Step k turns column k of the work matrix into column k of what will be the inverse.
  bool Eliminate() {
    const T negligible = static_cast<T>(m_size) * std::numeric_limits<T>::epsilon();
    for (Index k = 0; k < m_size; ++k) {
      const Exchange best = LargestFrom(k);
      if (!(std::fabs(Row(best.row)[best.column]) > negligible)) return false;
      ExchangeRows(best.row, k);
      ExchangeColumns(best.column, k);
      std::memcpy(&m_extra[k], &best, sizeof best);
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

  // What was a row of the matrix is a column of its inverse; so exchanges are undone the other way round,
  // last first.
  void RestoreOrder() {
    for (Index k = m_size - 1; k >= 0; --k) {
      Exchange made;
      std::memcpy(&made, &m_extra[k], sizeof made);
      ExchangeColumns(made.row, k);
      ExchangeRows(made.column, k);
    }
  }

  // With the work matrix R A C for the diagonal scales R and C, the inverse of A is C (R A C)^-1 R.
  void RestoreScales() {
    SetRowScales();
    for (Index i = 0; i < m_size; ++i) {
      int scale = 0;
      ColumnScale(i, scale);
      for (Index j = 0; j < m_size; ++j) {
        Row(i)[j] = std::ldexp(Row(i)[j], scale + RowScale(j));
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
  if (sizeof(T) == 4 && size > 65535) return false; // places are counted in 16 bits
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
