// The matrix functions of MathUtils.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "qorn/infra/MatReal32.h"
#include "qorn/infra/MatReal64.h"
#include "qorn/math/MathUtils.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/Matrices.h"
#include "support/TempFile.h"
#include "support/Vectors.h"
#include "support/Wide.h"

namespace {

using namespace QORN;
using test::ByRows;
using test::ExpectThrown;
using test::Flat;
using test::MatrixOf;
using test::Quad;
using test::TempFile;
using Rows = std::vector<std::vector<double>>;
using Elements = std::vector<double>;

struct Real32 {
  using M = MatReal32;
  using V = VecReal32;
  using T = float;
  static constexpr const char *kName = "MatReal32";
};
struct Real64 {
  using M = MatReal64;
  using V = VecReal64;
  using T = double;
  static constexpr const char *kName = "MatReal64";
};
using Kinds = testing::Types<Real32, Real64>;
struct KindName {
  template <class K> static std::string GetName(int) { return K::kName; }
};

template <class K> class MathUtilsMatrix : public testing::Test {
public:
  static typename K::M Of(int rows, int cols, const Elements &elements) {
    return MatrixOf<typename K::M>(rows, cols, elements);
  }
  // Uniform elements from -1 to 1.
  static typename K::M Random(int rows, int cols, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> uniform(-1, 1);
    typename K::M matrix(rows, cols);
    for (int i = 0; i < matrix.GetSize(); ++i) {
      *matrix.GetPtr(i) = static_cast<typename K::T>(uniform(random));
    }
    return matrix;
  }
  static double Epsilon() { return static_cast<double>(std::numeric_limits<typename K::T>::epsilon()); }
};
TYPED_TEST_SUITE(MathUtilsMatrix, Kinds, KindName);

// The largest sum of magnitudes of a row.
template <class M> double NormOf(const M &matrix) {
  double norm = 0;
  for (const Elements &row : ByRows(matrix)) {
    double sum = 0;
    for (const double x : row) sum += std::abs(x);
    norm = std::max(norm, sum);
  }
  return norm;
}

// The norm of a b - 1, formed in quadruple precision.
template <class M> double ResidualOf(const M &a, const M &b) {
  const int n = a.GetRows();
  double norm = 0;
  for (int i = 0; i < n; ++i) {
    Quad sum = 0;
    for (int j = 0; j < n; ++j) {
      Quad element = i == j ? -1 : 0;
      for (int k = 0; k < n; ++k) element += static_cast<Quad>(a[i][k]) * static_cast<Quad>(b[k][j]);
      sum += element < 0 ? -element : element;
    }
    norm = std::max(norm, static_cast<double>(sum));
  }
  return norm;
}

// Inverses.

TYPED_TEST(MathUtilsMatrix, Inv_OfRandomMatrices_LeavesASmallResidual) {
  for (int n = 1; n <= 64; n += n < 8 ? 1 : 7) {
    const auto matrix = this->Random(n, n, static_cast<unsigned>(n));
    typename TypeParam::M inverse;
    MathUtils::Inv(inverse, matrix);
    const double condition = NormOf(matrix) * NormOf(inverse);
    EXPECT_LE(ResidualOf(matrix, inverse), 10 * n * this->Epsilon() * condition) << n;
  }
}

// From mpmath.inverse at 40 digits of the matrix whose elements are the integers below, divided by 8.
TYPED_TEST(MathUtilsMatrix, Inv_OfAKnownMatrix_IsThatOfMpmath) {
  auto matrix = this->Of(4, 4, {3, -7, 2, 11, 5, 1, -9, 4, -6, 8, 13, -2, 10, -3, 7, 5});
  matrix /= 8;
  const Elements expected{
      -0.4442186252449735066, 0.2462074471945996951,  -0.1492342309646512303, 0.7206213253974014662,
      -0.222399651593235102,  0.9494084343471002395,  0.6886840386150831095,  0.005226101473470276548,
      0.03948610002177542281, -0.3774406619728533062, 0.1910430427524134427,  0.2915003266313420919,
      0.69971691950352036,    0.6056470929810553822,  0.4442186252449735066,  -0.2462074471945996951};
  typename TypeParam::M inverse(1, 3);
  MathUtils::Inv(inverse, matrix);
  const double bound = this->Epsilon() * NormOf(matrix) * NormOf(inverse) * NormOf(inverse);
  ASSERT_EQ(inverse.GetRows(), 4);
  for (int i = 0; i < 16; ++i) {
    EXPECT_NEAR(static_cast<double>(*inverse.GetPtr(i)), expected[static_cast<std::size_t>(i)], bound) << i;
  }
  MathUtils::Inv(matrix, matrix);
  EXPECT_TRUE(matrix == inverse) << "in place";
}

TYPED_TEST(MathUtilsMatrix, Inv_OfSingularMatrices_Throws12004) {
  using M = typename TypeParam::M;
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  for (const M &matrix :
       {this->Of(1, 1, {0}), this->Of(3, 3, {1, 1, 1, 1, 1, 1, 1, 1, 1}), this->Of(2, 2, {1, 2, 2, 4}),
        this->Of(2, 2, {0, 0, 0, 1}), this->Of(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9}), this->Of(1, 1, {nan}),
        this->Of(2, 2, {1, inf, 0, 1}), M(), M(0, 4), this->Of(3, 2, {1, 2, 3, 4, 5, 6})}) {
    M inverse;
    ExpectThrown([&] { MathUtils::Inv(inverse, matrix); }, 12004, "singular matrix", "math\\MathUtils");
    EXPECT_EQ(inverse.GetRows(), matrix.GetRows());
    EXPECT_EQ(inverse.GetCols(), matrix.GetCols());
  }
}

TYPED_TEST(MathUtilsMatrix, Inv_OfAWideMatrix_TakesTheFirstElementsOfTheBlock) {
  typename TypeParam::M inverse;
  MathUtils::Inv(inverse, this->Of(2, 3, {2, 0, 0, 4, 7, 7}));
  EXPECT_EQ(inverse.GetCols(), 3);
  EXPECT_EQ(*inverse.GetPtr(0), typename TypeParam::T(0.5));
  EXPECT_EQ(*inverse.GetPtr(3), typename TypeParam::T(0.25));
}

TYPED_TEST(MathUtilsMatrix, Inv_WithoutMemoryForTheScratch_Throws12004) {
  const auto matrix = this->Random(20, 20, 4);
  typename TypeParam::M inverse(20, 20);
  const test::AllocationLimit limit(20 * 21 * sizeof(typename TypeParam::T) - 1);
  ExpectThrown([&] { MathUtils::Inv(inverse, matrix); }, 12004, "singular matrix", "math\\MathUtils");
}

// Products.

TYPED_TEST(MathUtilsMatrix, Mul_ByVector_SumsOverTheColumns) {
  using T = typename TypeParam::T;
  typename TypeParam::V dst, x = test::Of<typename TypeParam::V>({1, -2, 3});
  MathUtils::Mul(dst, this->Of(2, 3, {1, 2, 3, 4, 5, 6}), x);
  EXPECT_EQ(test::List(dst), (std::vector<T>{6, 12}));
  for (const int n : {1, 7, 64, 1003}) {
    const auto a = this->Random(3, n, 5), column = this->Random(n, 1, 6);
    typename TypeParam::V v;
    v.Import(column.GetPtr(), n);
    MathUtils::Mul(dst, a, v);
    for (int r = 0; r < 3; ++r) {
      Quad sum = 0, magnitudes = 0;
      for (int k = 0; k < n; ++k) {
        const Quad product = static_cast<Quad>(a[r][k]) * static_cast<Quad>(v[k]);
        sum += product;
        magnitudes += product < 0 ? -product : product;
      }
      EXPECT_NEAR(static_cast<double>(dst[r]), static_cast<double>(sum),
                  (n / 32.0 + 10) * this->Epsilon() * static_cast<double>(magnitudes));
    }
  }
  dst.Set(9, 2);
  MathUtils::Mul(dst, typename TypeParam::M(2, 0), typename TypeParam::V());
  EXPECT_EQ(test::List(dst), (std::vector<T>{0, 0}));
}

TYPED_TEST(MathUtilsMatrix, Mul_ByMatrix_HasTheShapeOfTheOuterDimensions) {
  const auto left = this->Of(2, 3, {1, 2, 3, 4, 5, 6}), right = this->Of(3, 2, {1, 0, -1, 2, 0, 3});
  typename TypeParam::M dst(9, 9);
  const long before = test::AllocationCount();
  MathUtils::Mul(dst, left, right);
  EXPECT_EQ(test::AllocationCount(), before);
  EXPECT_EQ(ByRows(dst), (Rows{{-1, 13}, {-1, 28}}));
  MathUtils::Mul(dst, this->Of(1, 1, {2}), this->Of(1, 3, {1, 2, 3}));
  EXPECT_EQ(ByRows(dst), (Rows{{2, 4, 6}}));
  MathUtils::Mul(dst, typename TypeParam::M(2, 0), typename TypeParam::M(0, 2));
  EXPECT_EQ(ByRows(dst), (Rows{{0, 0}, {0, 0}}));
  MathUtils::Mul(dst, typename TypeParam::M(), typename TypeParam::M());
  EXPECT_EQ(dst.GetSize(), 0);
}

// 0.1f * 0.1f rounded to float differs from the exact product; the sum of many keeps double precision.
TEST(MathUtils, Mul_OfFloatMatrices_RoundsProductsToFloatAndSumsInDouble) {
  MatReal32 a(1, 3), b(3, 1), dst;
  const float x[] = {0.1F, 16777216.0F, 1.0F}, y[] = {0.1F, 1.0F, 1.0F};
  a.Import(x, 1, 3);
  b.Import(y, 3, 1);
  MathUtils::Mul(dst, a, b);
  const double expected = static_cast<double>(0.1F * 0.1F) + 16777216.0 + 1.0;
  EXPECT_EQ(dst[0][0], static_cast<float>(expected));
  a[0][1] = 16777215.0F;
  a[0][2] = -16777215.0F;
  MathUtils::Mul(dst, a, b);
  EXPECT_EQ(dst[0][0], static_cast<float>(static_cast<double>(0.1F * 0.1F) + 16777215.0 - 16777215.0));
  EXPECT_NE(static_cast<double>(0.1F * 0.1F), static_cast<double>(0.1F) * static_cast<double>(0.1F));
}

TYPED_TEST(MathUtilsMatrix, Mul_WithTheIdentity_GivesTheMatrix) {
  const auto matrix = this->Random(17, 17, 8);
  typename TypeParam::M one, left, right;
  MathUtils::Eye(one, 17);
  MathUtils::Mul(left, one, matrix);
  MathUtils::Mul(right, matrix, one);
  EXPECT_TRUE(left == matrix);
  EXPECT_TRUE(right == matrix);
}

// Sums, transposes, identities.

TEST(MathUtils, SumRowAndSumCol_InFloat_FollowTheOrder) {
  const auto m = MatrixOf<MatReal32>(2, 3, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(MathUtils::SumRow(m, 0), 6.0F);
  EXPECT_EQ(MathUtils::SumRow(m, 1), 15.0F);
  EXPECT_EQ(MathUtils::SumCol(m, 0), 5.0F);
  EXPECT_EQ(MathUtils::SumCol(m, 2), 9.0F);
  EXPECT_EQ(MathUtils::SumRow(MatReal32(1, 0), 0), 0.0F);
  // 1 is lost beside 2^24 in float, but not before it.
  EXPECT_EQ(MathUtils::SumRow(MatrixOf<MatReal32>(1, 3, {16777216, 1, 1}), 0), 16777216.0F);
  EXPECT_EQ(MathUtils::SumRow(MatrixOf<MatReal32>(1, 3, {1, 1, 16777216}), 0), 16777218.0F);
  EXPECT_EQ(MathUtils::SumCol(MatrixOf<MatReal32>(3, 1, {16777216, 1, 1}), 0), 16777216.0F);
}

TYPED_TEST(MathUtilsMatrix, Trns_OfAnyShape_ExchangesRowsAndColumns) {
  typename TypeParam::M dst;
  MathUtils::Trns(dst, this->Of(2, 3, {1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(ByRows(dst), (Rows{{1, 4}, {2, 5}, {3, 6}}));
  MathUtils::Trns(dst, typename TypeParam::M(0, 4));
  EXPECT_EQ(dst.GetRows(), 4);
  EXPECT_EQ(dst.GetCols(), 0);
}

TYPED_TEST(MathUtilsMatrix, Eye_OfAnySize_IsTheIdentity) {
  auto dst = this->Of(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
  MathUtils::Eye(dst, 2);
  EXPECT_EQ(ByRows(dst), (Rows{{1, 0}, {0, 1}}));
  MathUtils::Eye(dst, 0);
  EXPECT_EQ(dst.GetSize(), 0);
  EXPECT_EQ(dst.GetRows(), 0);
  ExpectThrown([&] { MathUtils::Eye(dst, 65536); }, 11001, "memory allocation error", "infra/Matrix");
}

// The printed self-check.

std::string Printed(const char *format, ...) {
  char text[200];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return text;
}

std::string Table(const std::string &title, const MatReal64 &matrix) {
  std::string text = std::string(title).append(":\n");
  for (const Elements &row : ByRows(matrix)) {
    for (const double x : row) text += Printed("%10.6f ", x);
    text += "\n";
  }
  return text;
}

// All of the report but the two times of each matrix, which are written as T.
std::string ExpectedReport() {
  std::string text;
  for (int n = 2; n <= 6; ++n) {
    MatReal64 matrix(n, n), inverse, product;
    for (int i = 0; i < n * n; ++i) *matrix.GetPtr(i) = n - std::abs(i / n - i % n);
    MathUtils::Inv(inverse, matrix);
    // The inverse of this matrix has 1 and -1/2 on three diagonals, but for its corners.
    for (int r = 0; r < n; ++r) {
      for (int c = 0; c < n; ++c) {
        const bool end = r == c && (r == 0 || r == n - 1), corner = std::abs(r - c) == n - 1;
        double expected = r == c ? 1.0 : std::abs(r - c) == 1 ? -0.5 : 0.0;
        if (end) expected = (n + 2.0) / (2 * n + 2);
        if (corner) expected += 1.0 / (2 * n + 2);
        EXPECT_NEAR(inverse[r][c], expected, 1e-14) << n << ' ' << r << ' ' << c;
      }
    }
    MathUtils::Mul(product, matrix, inverse);
    double distance = 0;
    for (int i = 0; i < n * n; ++i) distance += std::abs(*product.GetPtr(i) - (i / n == i % n ? 1.0 : 0.0));
    text += Table("INPUT", matrix) + Table("INVERSE", inverse) + Table("PRODUCT", product);
    text += Printed("Sum(abs(PROD-EYE)): %.5e  \n", distance);
    text += Printed("TIMING:\nMatDim:%ix%i  Loops:10000  ElapsedTime:T msec  PerLoop:T usec\n\n", n, n);
  }
  return text;
}

std::string WithoutTimes(const std::string &text) {
  return std::regex_replace(text, std::regex("Time:[0-9]+\\.[0-9]{3} msec  PerLoop:[0-9]+\\.[0-9]{3} usec"),
                            "Time:T msec  PerLoop:T usec");
}

TEST(MathUtils, MatrixInverseTimingTest_ToAFile_IsTheReport) {
  const TempFile file("what was there before");
  EXPECT_EQ(test::PrintedBy([&] { MathUtils::MatrixInverseTimingTest(file.Path()); }), "");
  const std::string content = file.Content();
  EXPECT_EQ(WithoutTimes(content), ExpectedReport());
  EXPECT_EQ(content.substr(0, 60), "INPUT:\n  2.000000   1.000000 \n  1.000000   2.000000 \nINVERSE");
  // 10000 loops, so ten times as many milliseconds as microseconds per loop.
  std::smatch times;
  ASSERT_TRUE(std::regex_search(content, times, std::regex("Time:([0-9.]+) msec  PerLoop:([0-9.]+) usec")));
  EXPECT_NEAR(std::stod(times[1]), 10 * std::stod(times[2]), 0.006);
  EXPECT_GT(std::stod(times[1]), 0.0);
}

TEST(MathUtils, MatrixInverseTimingTest_OfNull_GoesToTheStandardOutput) {
  EXPECT_EQ(WithoutTimes(test::PrintedBy([] { MathUtils::MatrixInverseTimingTest(nullptr); })),
            ExpectedReport());
}

TEST(MathUtils, MatrixInverseTimingTest_WithoutAFile_DoesNothing) {
  EXPECT_EQ(test::PrintedBy([] { MathUtils::MatrixInverseTimingTest(test::kNoSuchFile); }), "");
}

} // namespace
