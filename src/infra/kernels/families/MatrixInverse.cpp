// Gauss-Jordan elimination in place with complete pivoting (G. H. Golub, C. F. Van Loan: Matrix Computations,
// ch. 3), in registers along the rows. Every product, difference and quotient is rounded, so the bits are
// those of the same steps done one by one, at any width.
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
#include "Registers.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

template <class T> struct Format;
template <> struct Format<float> {
  using Number = std::int32_t;
  using Place = std::uint16_t;
  static constexpr int kDigits = 23, kBias = 127;
  static constexpr float kEpsilon = 0x1p-23F;
};
template <> struct Format<double> {
  using Number = std::int64_t;
  using Place = std::uint32_t;
  static constexpr int kDigits = 52, kBias = 1023;
  static constexpr double kEpsilon = 0x1p-52;
};
template <class T> using NumberOf = typename Format<T>::Number;

struct Larger {
  template <class E> E operator()(E a, E b) const { return a > b ? a : b; }
};
struct Smaller {
  template <class E> E operator()(E a, E b) const { return a < b ? a : b; }
};
template <int V, class E, class F> [[gnu::always_inline]] inline auto OfLanes(E x, F combine) {
  if constexpr (V == 1) {
    return x;
  } else {
    const auto pair = Folded<2, V>(x, combine);
    return combine(pair[0], pair[1]);
  }
}

// V numbers and their bits. Of magnitudes, the bits rise as the numbers do, to infinity and not-a-number
// behind it.
template <class T, int V> struct Several {
  using F = Format<T>;
  using Number = NumberOf<T>;
  using Values = Vec<T, V>;
  using Numbers = Vec<Number, V>;
  static constexpr Number kInfinity = Number{2 * F::kBias + 1} << F::kDigits;
  static constexpr Number kNone = -(1 << 30);

  static Values All(T x) { return Values{} + x; }
  static Numbers All(Number x) { return Numbers{} + x; }
  static Numbers LaneNumbers() {
    Numbers lane{};
    if constexpr (V > 1) {
      for (int i = 0; i < V; ++i) lane[i] = i;
    }
    return lane;
  }
  static Numbers MagnitudeBits(Values x) {
    constexpr auto kSign = std::uint64_t{1} << (8 * sizeof(T) - 1);
    return __builtin_bit_cast(Numbers, x) & static_cast<Number>(kSign - 1);
  }
  static Values Magnitude(Values x) { return __builtin_bit_cast(Values, MagnitudeBits(x)); }
  static Values PowerOfTwo(Numbers exponent) {
    return __builtin_bit_cast(Values, (exponent + Number{F::kBias}) << F::kDigits);
  }
  // The exponent e for which 2^-e * |x| lies between 1/2 and 1, of finite numbers; of zeros one far below.
  static Numbers ExponentOf(Values x) {
    constexpr Number kLift = F::kDigits + 1; // makes a denormal number a normal one
    const Numbers field = MagnitudeBits(x) >> F::kDigits;
    const Numbers lifted = (MagnitudeBits(x * PowerOfTwo(All(kLift))) >> F::kDigits) - kLift;
    const Numbers exponent = (field != Number{0} ? field : lifted) - Number{F::kBias - 1};
    return x != T(0) ? exponent : All(kNone);
  }
};

// 2^exponent * x, rounded once, whatever the exponent: downwards the last product alone can be denormal,
// unless all vanishes.
template <class T> T ScaledFar(T x, NumberOf<T> exponent) {
  using S = Several<T, 1>;
  constexpr NumberOf<T> kMost = Format<T>::kBias - 1;
  const NumberOf<T> last = exponent < -kMost ? -kMost : 0, step = exponent < 0 ? -kMost : kMost;
  for (exponent -= last; exponent > kMost || exponent < -kMost; exponent -= step) x *= S::PowerOfTwo(step);
  return x * S::PowerOfTwo(exponent) * S::PowerOfTwo(last);
}

// The row and the column of a pivot.
template <class T> struct Pivot {
  using Place = typename Format<T>::Place;
  Place row, column;
  static Pivot At(Index row, Index column) { return {static_cast<Place>(row), static_cast<Place>(column)}; }
};

// The largest magnitude of some rows from one column on. Each lane keeps its largest so far and the number of
// the row that brought it; not-a-number is passed over.
template <class T, int V> class Search {
  using S = Several<T, V>;
  using Values = typename S::Values;
  using Numbers = typename S::Numbers;
  using Number = typename S::Number;

public:
  explicit Search(Index first) : m_first(first), m_number(S::All(static_cast<Number>(first))) {}

  // What a row has from column j on, some of which may lie before the first column.
  [[gnu::always_inline]] void Look(Values x, Index j) {
    if (j + V <= m_first) return;
    x = S::Magnitude(x);
    if (j < m_first) x = S::LaneNumbers() < static_cast<Number>(m_first - j) ? S::All(T(-1)) : x;
    m_ofRow = Larger()(x, m_ofRow);
  }
  [[gnu::always_inline]] void EndRow(Index row) {
    const auto larger = m_ofRow > m_largest;
    m_number = larger ? S::All(static_cast<Number>(row)) : m_number;
    m_largest = larger ? m_ofRow : m_largest;
    m_ofRow = S::All(T(-1));
  }

  // The first place by rows that has it.
  [[gnu::always_inline]] Pivot<T> Found(const T *work, Index stride, Index size) const {
    const T largest = OfLanes<V>(m_largest, Larger());
    const Index row =
        OfLanes<V>(m_largest == largest ? m_number : S::All(static_cast<Number>(size)), Smaller());
    for (Index j = m_first; j < size; ++j) {
      if (Several<T, 1>::Magnitude(work[row * stride + j]) == largest) return Pivot<T>::At(row, j);
    }
    return Pivot<T>::At(m_first, m_first);
  }

private:
  Index m_first;
  Values m_largest = S::All(T(-1)), m_ofRow = S::All(T(-1));
  Numbers m_number;
};

// A matrix with strides in bytes.
template <class T, class Byte> struct Strided {
  Byte *data;
  Index rowStride, stride;

  bool HasGaps() const { return stride != sizeof(T); }
  T *At(Index row, Index column) const {
    return reinterpret_cast<T *>(data + row * rowStride + column * stride);
  }
};

// Of a matrix of at least V rows and columns. The work matrix is small, with rows of kRegisters registers
// padded by zeros, or in the caller's buffer, without padding, if that is none: then the last register of a
// row reaches back over the one before it.
template <class T, int V, int kRegisters> class Inversion {
  using S = Several<T, V>;
  using Values = typename S::Values;
  using Numbers = typename S::Numbers;
  using Number = typename S::Number;

public:
  Inversion(Strided<const T, const char> src, T *buffer, Index size)
      : m_src(src), m_work(buffer), m_size(size), m_extra(buffer + size * Stride()) {
    for (Index i = 0; i <= size && kRegisters > 1; ++i) Store(Row(i) + Stride() - V, Values{});
  }

  // Elements of a small work matrix with the extra row.
  static constexpr int kRoom = kRegisters * V * (kRegisters * V + 1);

  bool Run(Strided<T, char> dst) {
    if (!LoadScaled() || !Eliminate()) return false;
    RestoreOrder();
    RestoreScales();
    for (Index i = 0; i < m_size; ++i) {
      for (Index j = 0; j < m_size; ++j) *dst.At(i, j) = Row(i)[j];
    }
    return true;
  }

private:
  static constexpr bool kSmall = kRegisters > 0;

  Index Stride() const { return kSmall ? kRegisters * V : m_size; }
  T *Row(Index i) { return m_work + i * Stride(); }

  // The columns from which a register holds a part of the source's rows; the last one reaches back.
  template <class F> [[gnu::always_inline]] void OverRow(F at) const {
    for (Index j = 0; j < m_size - V; j += V) at(j);
    at(m_size - V);
  }
  // The registers of a row of the work matrix. In place, the last one is taken before the one before it is
  // written.
  template <class F> [[gnu::always_inline]] void Rewrite(T *row, F value) const {
    if constexpr (kSmall) {
      Unroll<kRegisters>([&](auto r) { Store(row + r * V, value(r * V)); });
    } else {
      const Index end = m_size - V;
      const Values last = value(end);
      for (Index j = 0; j < end; j += V) Store(row + j, value(j));
      Store(row + end, last);
    }
  }

  Values Source(Index i, Index j) const {
    if (!m_src.HasGaps()) return Load<Values>(m_src.At(i, j));
    T x[V];
    for (int c = 0; c < V; ++c) x[c] = *m_src.At(i, j + c);
    return Load<Values>(x);
  }

  // The scale of a row, as an exponent, is kept in its element of the extra row.
  Number RowScale(Index i) const { return Load<Number>(m_extra + i); }
  bool SetRowScales() {
    m_farthest = 0;
    for (Index i = 0; i < m_size; ++i) {
      Numbers most = {};
      OverRow([&](Index j) { most = Larger()(S::MagnitudeBits(Source(i, j)), most); });
      const Number largest = OfLanes<V>(most, Larger());
      if (largest == 0 || largest >= S::kInfinity) return false;
      const Number scale = -Several<T, 1>::ExponentOf(__builtin_bit_cast(T, largest));
      m_farthest = Larger()(m_farthest, scale < 0 ? -scale : scale);
      Store(m_extra + i, scale);
    }
    return true;
  }

  // The scales of the columns of the source with scaled rows, from column j on.
  Numbers ColumnScales(Index j) const {
    Numbers largest = S::All(S::kNone);
    for (Index i = 0; i < m_size; ++i) largest = Larger()(S::ExponentOf(Source(i, j)) + RowScale(i), largest);
    return -largest;
  }

  // Whether the sum of any row's scale with each of these is a power of two that there is.
  bool AreNear(Numbers scales) const {
    const Number most = OfLanes<V>(Larger()(scales, -scales), Larger());
    return most + m_farthest < Number{Format<T>::kBias};
  }
  static Values Scaled(Values x, Numbers exponents, bool near) {
    if (near) [[likely]]
      return x * S::PowerOfTwo(exponents);
    T values[V];
    Number each[V];
    Store(values, x);
    Store(each, exponents);
    for (int c = 0; c < V; ++c) values[c] = ScaledFar(values[c], each[c]);
    return Load<Values>(values);
  }

  // False where a row or a column is all zeros, or an element is not finite.
  bool LoadScaled() {
    if (!SetRowScales()) return false;
    bool zeros = false;
    OverRow([&](Index j) {
      const Numbers scales = ColumnScales(j);
      zeros |= OfLanes<V>(scales, Larger()) > -S::kNone / 2;
      if (zeros) return;
      const bool near = AreNear(scales);
      for (Index i = 0; i < m_size; ++i) {
        Store(Row(i) + j, Scaled(Source(i, j), scales + RowScale(i), near));
      }
    });
    return !zeros;
  }

  // With the work matrix R A C for the diagonal scales R and C, the inverse of A is C (R A C)^-1 R.
  void RestoreScales() {
    SetRowScales();
    Index done = 0;
    OverRow([&](Index first) {
      const Numbers scales = ColumnScales(first);
      const bool near = AreNear(scales);
      Number each[V];
      Store(each, scales);
      for (; done < first + V; ++done) {
        T *const row = Row(done);
        const Number scale = each[done - first];
        Rewrite(row, [&](Index j) {
          return Scaled(Load<Values>(row + j), Load<Numbers>(m_extra + j) + scale, near);
        });
      }
    });
  }

  void ExchangeRows(Index i, Index k) {
    if (i == k) return;
    T *a = Row(i), *b = Row(k);
    if constexpr (kSmall) {
      Rewrite(a, [a, b](Index j) {
        const auto x = Load<Values>(b + j);
        Store(b + j, Load<Values>(a + j));
        return x;
      });
    } else {
      const Index end = m_size - V;
      const auto lastOfA = Load<Values>(a + end), lastOfB = Load<Values>(b + end);
      for (Index j = 0; j < end; j += V) {
        const auto x = Load<Values>(a + j);
        Store(a + j, Load<Values>(b + j));
        Store(b + j, x);
      }
      Store(a + end, lastOfB);
      Store(b + end, lastOfA);
    }
  }
  void ExchangeColumns(Index j, Index k) {
    for (Index i = 0; i < m_size && j != k; ++i) {
      T *row = Row(i);
      const T x = row[j];
      row[j] = row[k];
      row[k] = x;
    }
  }

  // A pivot's place is kept, as bits, in its element of the extra row, in which no arithmetic is done
  // meanwhile.
  bool Eliminate() {
    static_assert(sizeof(Pivot<T>) == sizeof(T));
    const T negligible = static_cast<T>(m_size) * Format<T>::kEpsilon;
    Search<T, V> all(0);
    for (Index i = 0; i < m_size; ++i) {
      OverRow([&](Index j) { all.Look(Load<Values>(Row(i) + j), j); });
      all.EndRow(i);
    }
    Pivot<T> pivot = all.Found(m_work, Stride(), m_size);
    for (Index k = 0; k < m_size; ++k) {
      if (!(Several<T, 1>::Magnitude(Row(pivot.row)[pivot.column]) > negligible)) return false;
      ExchangeRows(pivot.row, k);
      if constexpr (!kSmall) ExchangeColumns(pivot.column, k);
      Store(m_extra + k, pivot);
      pivot = Step(k, pivot.column);
    }
    return true;
  }

  // x, which a row has from column j on, with other in one column.
  [[gnu::always_inline]] static Values With(Index column, T other, Values x, Index j) {
    return S::LaneNumbers() == static_cast<Number>(column - j) ? Broadcast<Values>(other) : x;
  }

  // Turns column k of the work matrix into column k of what will be the inverse, and finds the next pivot.
  // A register would have to wait for an element in it that was just stored. So in small matrices columns k
  // and `column` are exchanged on the way, and what column k becomes is what its products leave of zeros; in
  // others they have been exchanged before, and the elements of column k are written last.
  Pivot<T> Step(Index k, Index column) {
    const Index from = kSmall ? column : k;
    // What a row has from column j on, its element of column k being `ofK`, with `own` there.
    const auto exchanged = [=](const T *row, Index j, T ofK, T own) __attribute__((always_inline)) {
      const auto x = Load<Values>(row + j);
      return kSmall ? With(k, own, With(column, ofK, x, j), j) : x;
    };
    T *const pivotRow = Row(k);
    const T pivot = pivotRow[from], pivotRowK = pivotRow[k], reciprocal = T(1) / pivot;
    Rewrite(pivotRow, [=](Index j) {
      const Values quotient = exchanged(pivotRow, j, pivotRowK, pivot) / pivot;
      return kSmall ? With(k, reciprocal, quotient, j) : quotient;
    });
    const auto eliminate = [&](T * row, auto look) __attribute__((always_inline)) {
      const T factor = row[from], rowK = row[k];
      Rewrite(
          row, [=](Index j) __attribute__((always_inline)) {
            // Not Rounded(): GCC 12 leaves this form unfused, but takes registers apart at the barrier.
            const Values product = factor * Load<Values>(pivotRow + j);
            const Values difference = exchanged(row, j, rowK, T(0)) - product;
            look(difference, j);
            return difference;
          });
      if constexpr (!kSmall) row[k] = T(0) - Rounded(factor * reciprocal);
    };
    for (Index i = 0; i < k; ++i) eliminate(Row(i), [](Values, Index) {});
    Search<T, V> rest(k + 1);
    for (Index i = k + 1; i < m_size; ++i) {
      eliminate(
          Row(i), [&rest](Values x, Index j) __attribute__((always_inline)) { rest.Look(x, j); });
      rest.EndRow(i);
    }
    if constexpr (!kSmall) pivotRow[k] = reciprocal;
    return k + 1 < m_size ? rest.Found(m_work, Stride(), m_size) : Pivot<T>{};
  }

  // What was a row of the matrix is a column of its inverse; so exchanges are undone the other way round,
  // last first.
  void RestoreOrder() {
    for (Index k = m_size - 1; k >= 0; --k) {
      const auto made = Load<Pivot<T>>(m_extra + k);
      ExchangeColumns(made.row, k);
      ExchangeRows(made.column, k);
    }
  }

  Strided<const T, const char> m_src;
  T *m_work; // size rows
  Index m_size;
  T *m_extra; // a row
  Number m_farthest = 0;
};

template <int V, class T>
bool InverseByLanes(Strided<const T, const char> src, T *buffer, Strided<T, char> dst, Index size) {
  if constexpr (V > 1) {
    if (size < V) return InverseByLanes<V / 2>(src, buffer, dst, size);
  }
  const auto small = [=]<int kRegisters>(Int<kRegisters>) __attribute__((noinline)) {
    using Small = Inversion<T, V, kRegisters>;
    T work[Small::kRoom];
    return Small(src, work, size).Run(dst);
  };
  if constexpr (V >= 2) {
    if (size == V) return small(Int<1>{});
    if (size <= 2 * V) return small(Int<2>{});
  }
  return Inversion<T, V, 0>(src, buffer, size).Run(dst);
}

template <class T>
bool MatrixInverse(const T *src, int srcStride1, int srcStride2, T *buffer, T *dst, int dstStride1,
                   int dstStride2, int size) {
  return InverseByLanes<kRegisterBytes / static_cast<int>(sizeof(T)), T>(
      {reinterpret_cast<const char *>(src), srcStride1, srcStride2}, buffer,
      {reinterpret_cast<char *>(dst), dstStride1, dstStride2}, size);
}

} // namespace

#define QORN_FAMILY "MatrixInverse.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
