// Inversion against inverses known in closed form, and by its residual.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

#include "qorn/infra/TargetLib.h"
#include "support/Allocations.h"
#include "support/KernelCheck.h"

namespace {

using QORN::TargetLib;
using QORN::test::Guarded;

bool Invert(const float *src, int s1, int s2, float *buffer, float *dst, int d1, int d2, int size) {
  return TargetLib::Invert_m_32f(src, s1, s2, buffer, dst, d1, d2, size);
}
bool Invert(const double *src, int s1, int s2, double *buffer, double *dst, int d1, int d2, int size) {
  return TargetLib::Invert_m_64f(src, s1, s2, buffer, dst, d1, d2, size);
}

template <class T> struct Inverse {
  bool success;
  std::vector<T> values;
};

// A dense matrix, row by row, between guards.
template <class T> Inverse<T> Inverted(const std::vector<T> &matrix) {
  const int size = static_cast<int>(std::lround(std::sqrt(static_cast<double>(matrix.size()))));
  const int step = static_cast<int>(sizeof(T));
  Guarded<T> buffer(size * (size + 1), 3), dst(size * size, 5);
  for (std::size_t i = 0; i < matrix.size(); ++i) dst.data()[i] = T(77);
  const bool success =
      Invert(matrix.data(), size * step, step, buffer.data(), dst.data(), size * step, step, size);
  EXPECT_TRUE(buffer.Intact() && dst.Intact()) << size;
  return {success, std::vector<T>(dst.data(), dst.data() + size * size)};
}

template <class T> class TargetLibMatrix : public testing::Test {};
using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(TargetLibMatrix, Elements);

TYPED_TEST(TargetLibMatrix, Invert_KnownInverses_AreFound) {
  using T = TypeParam;
  using Matrix = std::vector<T>;
  EXPECT_EQ(Inverted(Matrix{4}).values, Matrix{T(0.25)});
  EXPECT_EQ(Inverted(Matrix{0, 2, 4, 0}).values, (Matrix{0, T(0.25), T(0.5), 0}));
  EXPECT_EQ(Inverted(Matrix{2, 1, 1, 1}).values, (Matrix{1, -1, -1, 2}));
  // Permutations need each exchange of rows undone.
  EXPECT_EQ(Inverted(Matrix{0, 1, 0, 0, 0, 1, 1, 0, 0}).values, (Matrix{0, 0, 1, 1, 0, 0, 0, 1, 0}));
  EXPECT_EQ(Inverted(Matrix{0, 0, 0, 1, 1, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 0}).values,
            (Matrix{0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 1, 0, 1, 0, 0, 0}));
  EXPECT_EQ(Inverted(Matrix{1, 2, 3, 0, 1, 4, 5, 6, 0}).success, true);
  const Matrix inverse = Inverted(Matrix{1, 2, 3, 0, 1, 4, 5, 6, 0}).values;
  const double expected[] = {-24, 18, 5, 20, -15, -4, -5, 4, 1};
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR(static_cast<double>(inverse[i]), expected[i],
                3e3 * static_cast<double>(std::numeric_limits<T>::epsilon()));
  }
}

// The inverse of the Hilbert matrix is made of integers (M.-D. Choi, Amer. Math. Monthly 90, 1983); the
// condition of the matrix of size 5 is 5e5.
TYPED_TEST(TargetLibMatrix, Invert_HilbertMatrix_IsWithinItsCondition) {
  using T = TypeParam;
  constexpr int n = 5;
  const auto binomial = [](int a, int b) {
    double value = 1;
    for (int i = 1; i <= b; ++i) value = value * (a - b + i) / i;
    return value;
  };
  std::vector<T> matrix;
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) matrix.push_back(T(1) / static_cast<T>(i + j - 1));
  }
  const Inverse<T> inverse = Inverted(matrix);
  ASSERT_TRUE(inverse.success);
  for (int i = 1; i <= n; ++i) {
    for (int j = 1; j <= n; ++j) {
      const double expected = ((i + j) % 2 == 0 ? 1 : -1) * (i + j - 1) * binomial(n + i - 1, n - j) *
                              binomial(n + j - 1, n - i) * binomial(i + j - 2, i - 1) *
                              binomial(i + j - 2, i - 1);
      EXPECT_NEAR(static_cast<double>(inverse.values[static_cast<std::size_t>((i - 1) * n + j - 1)]),
                  expected, 179200 * 5e5 * static_cast<double>(std::numeric_limits<T>::epsilon()));
    }
  }
}

// The backward error of complete pivoting: |A X - 1| <= c size^2 epsilon |A| |X| with a small c, |A| <= 1.
TYPED_TEST(TargetLibMatrix, Invert_RandomMatrices_HaveASmallResidual) {
  using T = TypeParam;
  std::mt19937 random(3);
  std::uniform_real_distribution<double> uniform(-1, 1);
  for (int size = 1; size <= 70; ++size) {
    const auto n = static_cast<std::size_t>(size);
    std::vector<T> a(n * n);
    for (T &x : a) x = static_cast<T>(uniform(random));
    const Inverse<T> inverse = Inverted(a);
    ASSERT_TRUE(inverse.success) << size;
    T largest = 0;
    for (const T x : inverse.values) largest = std::max(largest, std::fabs(x));
    const long double bound =
        4.0L * size * size * static_cast<long double>(std::numeric_limits<T>::epsilon() * largest);
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) {
        long double sum = i == j ? -1 : 0;
        for (std::size_t k = 0; k < n; ++k) {
          sum += static_cast<long double>(a[i * n + k]) * static_cast<long double>(inverse.values[k * n + j]);
        }
        ASSERT_LE(std::fabs(sum), bound) << size << ' ' << i << ' ' << j;
      }
    }
  }
}

TYPED_TEST(TargetLibMatrix, Invert_ExactlySingular_IsFalseAndLeavesTheDestination) {
  using T = TypeParam;
  using Matrix = std::vector<T>;
  for (const Matrix &matrix :
       {Matrix{0}, Matrix{1, 2, 2, 4}, Matrix{1, 2, 3, 4, 5, 6, 7, 8, 9}, Matrix{1, 0, 2, 0, 0, 0, 3, 0, 4},
        Matrix{1, 2, 0, 3, 4, 0, 5, 6, 0}, Matrix{T(0.1), T(0.3), T(0.1), T(0.3)}}) {
    const Inverse<T> inverse = Inverted(matrix);
    EXPECT_FALSE(inverse.success) << matrix.size();
    EXPECT_EQ(inverse.values, Matrix(matrix.size(), 77)) << matrix.size();
  }
  // Integers, with one row the sum of two others or a column repeated.
  std::mt19937 random(8);
  for (std::size_t n = 3; n <= 40; ++n) {
    Matrix a(n * n);
    for (T &x : a) x = static_cast<T>(static_cast<int>(random() % 19) - 9);
    for (std::size_t j = 0; j < n; ++j) a[(n - 1) * n + j] = a[j] + a[n + j];
    EXPECT_FALSE(Inverted(a).success) << n;
    for (T &x : a) x = static_cast<T>(static_cast<int>(random() % 19) - 9);
    for (std::size_t i = 0; i < n; ++i) a[i * n + n - 1] = a[i * n];
    EXPECT_FALSE(Inverted(a).success) << n;
  }
}

// Units must not decide over what is singular.
TYPED_TEST(TargetLibMatrix, Invert_RowsAndColumnsOfVeryDifferentSize_AreInverted) {
  using T = TypeParam;
  using Matrix = std::vector<T>;
  const T big = std::ldexp(T(1), 60), tiny = std::ldexp(T(1), -60);
  EXPECT_EQ(Inverted(Matrix{big, 0, 0, tiny}).values, (Matrix{tiny, 0, 0, big}));
  EXPECT_EQ(Inverted(Matrix{big, big, 1, -1}).values, (Matrix{tiny / 2, T(0.5), tiny / 2, T(-0.5)}));
  EXPECT_EQ(Inverted(Matrix{1, big, 0, 1}).values, (Matrix{1, -big, 0, 1}));
  EXPECT_EQ(Inverted(Matrix{tiny, tiny, tiny, 2 * tiny}).values, (Matrix{2 * big, -big, -big, big}));
}

// The inverse of {{a, b}, {c, d}} by its formula.
template <class T> void ExpectInverseOfTwo(T a, T b, T c, T d) {
  const Inverse<T> inverse = Inverted(std::vector<T>{a, b, c, d});
  ASSERT_TRUE(inverse.success) << a << ' ' << b << ' ' << c << ' ' << d;
  using Wide = long double;
  const Wide determinant = Wide{a} * Wide{d} - Wide{b} * Wide{c};
  const Wide expected[] = {Wide{d} / determinant, -Wide{b} / determinant, -Wide{c} / determinant,
                           Wide{a} / determinant};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_LE(std::fabs(Wide{inverse.values[i]} - expected[i]),
              4 * Wide{std::numeric_limits<T>::epsilon()} * std::fabs(expected[i]))
        << a << ' ' << b << ' ' << c << ' ' << d << ", element " << i;
  }
}

// Scaled with its row alone, the small column would be lost.
TEST(TargetLibMatrix, Invert_SmallColumnBesideALargeOne_IsInverted) {
  ExpectInverseOfTwo(1e20F, 1e-25F, 1e20F, -1e-25F);
  ExpectInverseOfTwo(1e20F, 3.33333e-22F, 1e20F, -1.1e-22F);
  ExpectInverseOfTwo(1e20F, 1e20F, 1e-25F, -1e-25F);
  ExpectInverseOfTwo(1e200, 1e-200, 1e200, -1e-200);
  ExpectInverseOfTwo(1e200, 3.33333e-200, 1e200, -1.1e-200);
}

// The steps of the inversion one by one: scale rows and columns by powers of two, take the first largest
// element that is left as the pivot, eliminate, put the order and the scales back.
template <class T> Inverse<T> InvertedStepByStep(const std::vector<T> &matrix, int size) {
  const auto n = static_cast<std::size_t>(size);
  constexpr int kNone = -100000;
  const auto exponent = [](T x) { return x == 0 ? kNone : std::ilogb(x) + 1; };
  std::vector<int> rows(n, kNone), columns(n, kNone);
  for (std::size_t i = 0; i < n * n; ++i) rows[i / n] = std::max(rows[i / n], exponent(matrix[i]));
  for (std::size_t i = 0; i < n * n; ++i) {
    columns[i % n] = std::max(columns[i % n], exponent(matrix[i]) - rows[i / n]);
  }
  for (std::size_t i = 0; i < n; ++i) {
    if (rows[i] < kNone / 2 || columns[i] < kNone / 2) return {false, {}};
  }
  std::vector<T> a(n * n);
  for (std::size_t i = 0; i < n * n; ++i) a[i] = std::ldexp(matrix[i], -rows[i / n] - columns[i % n]);
  std::vector<std::size_t> places;
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t best = k * n + k;
    T largest = -1;
    for (std::size_t i = k * n; i < n * n; ++i) {
      if (i % n < k || !(std::fabs(a[i]) > largest)) continue;
      largest = std::fabs(a[i]);
      best = i;
    }
    if (!(largest > static_cast<T>(size) * std::numeric_limits<T>::epsilon())) return {false, {}};
    places.push_back(best);
    for (std::size_t j = 0; j < n; ++j) std::swap(a[best / n * n + j], a[k * n + j]);
    for (std::size_t i = 0; i < n; ++i) std::swap(a[i * n + best % n], a[i * n + k]);
    const T pivot = a[k * n + k];
    a[k * n + k] = 1;
    for (std::size_t j = 0; j < n; ++j) a[k * n + j] /= pivot;
    for (std::size_t i = 0; i < n; ++i) {
      if (i == k) continue;
      const T factor = a[i * n + k];
      a[i * n + k] = 0;
      for (std::size_t j = 0; j < n; ++j) {
        const volatile T product = factor * a[k * n + j]; // rounded before it is taken away
        a[i * n + j] -= product;
      }
    }
  }
  for (std::size_t k = n; k-- > 0;) {
    for (std::size_t i = 0; i < n; ++i) std::swap(a[i * n + places[k] / n], a[i * n + k]);
    for (std::size_t j = 0; j < n; ++j) std::swap(a[places[k] % n * n + j], a[k * n + j]);
  }
  for (std::size_t i = 0; i < n * n; ++i) a[i] = std::ldexp(a[i], -columns[i / n] - rows[i % n]);
  return {true, a};
}

// Row by row, and column by column, which leaves gaps between the elements of a row.
template <class T> void CheckBits(const std::vector<T> &matrix, int size, const Inverse<T> &expected) {
  const auto n = static_cast<std::size_t>(size);
  const int step = static_cast<int>(sizeof(T));
  std::vector<T> byColumns(n * n), buffer(n * (n + 1)), values(n * n);
  for (std::size_t i = 0; i < n * n; ++i) byColumns[i % n * n + i / n] = matrix[i];
  for (const QORN::kernels::Level &level : QORN::kernels::AvailableLevels()) {
    const QORN::kernels::ScopedLevel scope(level);
    const Inverse<T> inverse = Inverted(matrix);
    ASSERT_EQ(inverse.success, expected.success) << level.name << ", size " << size;
    ASSERT_EQ(
        Invert(byColumns.data(), step, size * step, buffer.data(), values.data(), step, size * step, size),
        expected.success);
    for (std::size_t i = 0; i < n * n && expected.success; ++i) {
      const std::size_t across = i % n * n + i / n;
      ASSERT_TRUE(QORN::test::Same()(inverse.values[i], expected.values[i])) << level.name << ", " << i;
      ASSERT_TRUE(QORN::test::Same()(values[across], expected.values[i])) << level.name << ", " << i;
    }
  }
}

TYPED_TEST(TargetLibMatrix, Invert_AnySizeAtEveryLevel_HasTheBitsOfTheStepsOneByOne) {
  using T = TypeParam;
  std::mt19937 random(7);
  std::uniform_real_distribution<double> uniform(-1, 1);
  constexpr int kFar = std::is_same_v<T, float> ? 60 : 500;
  int inverses = 0, others = 0;
  const auto check = [&](const std::vector<T> &matrix, int size) {
    const Inverse<T> expected = InvertedStepByStep(matrix, size);
    ++(expected.success ? inverses : others);
    CheckBits(matrix, size, expected);
  };
  for (int size = 1; size <= 70; size += size < 36 ? 1 : 17) {
    const auto n = static_cast<std::size_t>(size);
    std::vector<T> matrix(n * n);
    for (T &x : matrix) x = static_cast<T>(uniform(random));
    check(matrix, size);
    // Many elements that are equally large, and many zeros.
    for (T &x : matrix) x = static_cast<T>(static_cast<int>(random() % 3) - 1);
    check(matrix, size);
    // Zeros of either sign beside few others.
    for (T &x : matrix) x = random() % 16 == 0 ? T(1) : random() % 2 == 0 ? T(0) : T(-0.0);
    for (std::size_t i = 0; i < n; ++i) matrix[i * n + (5 * i + 3) % n] = T(1 + random() % 3);
    check(matrix, size);
    // Rows and columns so far apart that no one factor scales them, and denormal elements.
    std::vector<int> exponents(2 * n);
    for (int &exponent : exponents) exponent = static_cast<int>(random() % (2 * kFar)) - kFar;
    for (std::size_t i = 0; i < n * n; ++i) {
      matrix[i] = static_cast<T>(std::ldexp(uniform(random), exponents[i / n] + exponents[n + i % n]));
    }
    check(matrix, size);
    for (T &x : matrix) x *= std::numeric_limits<T>::min();
    check(matrix, size);
  }
  EXPECT_GT(inverses, 90);
  EXPECT_GT(others, 3);
}

TYPED_TEST(TargetLibMatrix, Invert_NotFinite_IsFalse) {
  using T = TypeParam;
  for (const T bad : {std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity()}) {
    for (std::size_t at = 0; at < 9; ++at) {
      std::vector<T> a{1, 2, 3, 0, 1, 4, 5, 6, 0};
      a[at] = bad;
      EXPECT_FALSE(Inverted(a).success) << at;
    }
  }
}

TYPED_TEST(TargetLibMatrix, Invert_Strides_AreBytesBetweenRowsAndElements) {
  using T = TypeParam;
  constexpr int step = static_cast<int>(sizeof(T));
  // Rows 7 elements apart, elements 2 apart; the result column by column, 3 apart; gaps untouched.
  std::vector<T> src(14, 55), dst(6, 66), buffer(6);
  src[0] = 2, src[2] = 1, src[7] = 4, src[9] = 4;
  ASSERT_TRUE(Invert(src.data(), 7 * step, 2 * step, buffer.data(), dst.data(), step, 3 * step, 2));
  EXPECT_EQ(dst, (std::vector<T>{1, -1, 66, T(-0.25), T(0.5), 66}));
  EXPECT_EQ(src[1], 55);
}

TYPED_TEST(TargetLibMatrix, Invert_OntoItsSource_IsTheSame) {
  using T = TypeParam;
  constexpr int step = static_cast<int>(sizeof(T));
  std::vector<T> a{1, 2, 3, 0, 1, 4, 5, 6, 0}, buffer(12);
  const std::vector<T> expected = Inverted(a).values;
  ASSERT_TRUE(Invert(a.data(), 3 * step, step, buffer.data(), a.data(), 3 * step, step, 3));
  EXPECT_EQ(a, expected);
}

TYPED_TEST(TargetLibMatrix, Invert_NullOrEmpty_IsFalse) {
  using T = TypeParam;
  constexpr int step = static_cast<int>(sizeof(T));
  T a[1] = {2}, dst[1] = {9}, buffer[2];
  EXPECT_FALSE(Invert(nullptr, step, step, buffer, dst, step, step, 1));
  EXPECT_FALSE(Invert(a, step, step, static_cast<T *>(nullptr), dst, step, step, 1));
  EXPECT_FALSE(Invert(a, step, step, buffer, static_cast<T *>(nullptr), step, step, 1));
  EXPECT_FALSE(Invert(a, step, step, buffer, dst, step, step, 0));
  EXPECT_FALSE(Invert(a, step, step, buffer, dst, step, step, -4));
  EXPECT_EQ(dst[0], 9);
  const long before = QORN::test::AllocationCount();
  EXPECT_TRUE(Invert(a, step, step, buffer, dst, step, step, 1));
  EXPECT_EQ(QORN::test::AllocationCount(), before);
  EXPECT_EQ(dst[0], T(0.5));
}

} // namespace
