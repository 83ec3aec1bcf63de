// MatReal32 and MatReal64.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace QORN {
class MatReal32; // real classes and no aliases: they can be declared ahead
class MatReal64;
} // namespace QORN

#include "qorn/infra/MatReal32.h"
#include "qorn/infra/MatReal64.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/Matrices.h"
#include "support/TempFile.h"

namespace {

using QORN::MatReal32;
using QORN::MatReal64;
using QORN::test::AllocationCount;
using QORN::test::ByRows;
using QORN::test::ExpectThrown;
using QORN::test::Flat;
using QORN::test::kNoSuchFile;
using QORN::test::MatrixOf;
using QORN::test::OpenFiles;
using QORN::test::PrintedBy;
using QORN::test::TempFile;

struct Real32 {
  using M = MatReal32;
  using V = QORN::VecReal32;
  using T = float;
  static constexpr const char *kName = "MatReal32";
};
struct Real64 {
  using M = MatReal64;
  using V = QORN::VecReal64;
  using T = double;
  static constexpr const char *kName = "MatReal64";
};
using Kinds = testing::Types<Real32, Real64>;
struct KindName {
  template <class K> static std::string GetName(int) { return K::kName; }
};

using Elements = std::vector<double>;
using Rows = std::vector<Elements>;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

template <class K> class MatReal : public testing::Test {
public:
  static typename K::M Of(int rows, int cols, const Elements &elements) {
    return MatrixOf<typename K::M>(rows, cols, elements);
  }
};
TYPED_TEST_SUITE(MatReal, Kinds, KindName);

// Arithmetic.

TYPED_TEST(MatReal, Arithmetic_ByMatrix_IsElementWise) {
  using M = typename TypeParam::M;
  using T = typename TypeParam::T;
  for (const int rows : {1, 3, 17}) {
    M a(rows, 7), b(rows, 7);
    for (int i = 0; i < a.GetSize(); ++i) {
      *a.GetPtr(i) = static_cast<T>(0.1 * i - 3);
      *b.GetPtr(i) = static_cast<T>(1.7 - 0.3 * i);
    }
    M sum = a, difference = a, product = a, quotient = a;
    const long before = AllocationCount();
    EXPECT_EQ(&(sum += b), &sum);
    EXPECT_EQ(&(difference -= b), &difference);
    EXPECT_EQ(&(product *= b), &product);
    EXPECT_EQ(&(quotient /= b), &quotient);
    EXPECT_EQ(AllocationCount(), before);
    for (int i = 0; i < a.GetSize(); ++i) {
      const T x = *a.GetPtr(i), y = *b.GetPtr(i);
      ASSERT_EQ(*sum.GetPtr(i), x + y) << i;
      ASSERT_EQ(*difference.GetPtr(i), x - y) << i;
      ASSERT_EQ(*product.GetPtr(i), x * y) << i;
      ASSERT_EQ(*quotient.GetPtr(i), x / y) << i;
    }
    M named = a;
    named.Add(b);
    EXPECT_TRUE(named == sum);
    named = a;
    named.Sub(b);
    EXPECT_TRUE(named == difference);
    named = a;
    named.DotMul(b);
    EXPECT_TRUE(named == product);
    named = a;
    named.Div(b);
    EXPECT_TRUE(named == quotient);
  }
}

TYPED_TEST(MatReal, Arithmetic_ByConstant_IsElementWise) {
  using M = typename TypeParam::M;
  using T = typename TypeParam::T;
  const T val = static_cast<T>(-2.7), reciprocal = T{1} / val;
  const M a = this->Of(2, 2, {1, -2.5, 0.3, 8});
  M sum = a, difference = a, product = a, quotient = a;
  EXPECT_EQ(&(sum += val), &sum);
  EXPECT_EQ(&(difference -= val), &difference);
  EXPECT_EQ(&(product *= val), &product);
  EXPECT_EQ(&(quotient /= val), &quotient);
  for (int i = 0; i < 4; ++i) {
    const T x = *a.GetPtr(i);
    EXPECT_EQ(*sum.GetPtr(i), x + val);
    EXPECT_EQ(*difference.GetPtr(i), x - val);
    EXPECT_EQ(*product.GetPtr(i), x * val);
    EXPECT_EQ(*quotient.GetPtr(i), x * reciprocal);
  }
  M named = a;
  named.Add(val);
  EXPECT_TRUE(named == sum);
  named = a;
  named.Sub(val);
  EXPECT_TRUE(named == difference);
  named = a;
  named.Mul(val);
  EXPECT_TRUE(named == product);
  named = a;
  named.Div(val);
  EXPECT_TRUE(named == quotient);
}

TYPED_TEST(MatReal, Arithmetic_OperandOfAnotherShape_IsReadAsItLies) {
  auto a = this->Of(2, 2, {1, 2, 3, 4});
  a += this->Of(1, 5, {10, 20, 30, 40, 50});
  EXPECT_EQ(ByRows(a), (Rows{{11, 22}, {33, 44}}));
  const auto &self = a;
  a -= self;
  EXPECT_EQ(Flat(a), (Elements{0, 0, 0, 0}));
}

TYPED_TEST(MatReal, Division_ByConstantZero_LeavesTheMatrix) {
  using T = typename TypeParam::T;
  auto a = this->Of(2, 2, {1, 0, -3, 4});
  a /= T{0};
  a.Div(static_cast<T>(-0.0));
  EXPECT_EQ(Flat(a), (Elements{1, 0, -3, 4}));
}

TYPED_TEST(MatReal, Division_ByMatrixWithZero_WritesAllElementsThenThrows12001) {
  auto a = this->Of(2, 2, {1, -6, 8, 9});
  const auto b = this->Of(2, 2, {0, 2, 4, 3});
  ExpectThrown([&] { a /= b; }, 12001, "divide-by-zero error", "infra\\TargetLib_ipp");
  EXPECT_EQ(Flat(a), (Elements{kInf, -3, 2, 3}));
}

// Import and export.

TYPED_TEST(MatReal, Import_OfAVector_FillsARowAndKeepsTheShape) {
  typename TypeParam::V v(2);
  v[0] = 7;
  v[1] = 8;
  auto matrix = this->Of(3, 2, {1, 2, 3, 4, 5, 6});
  matrix.Import(1, v);
  EXPECT_EQ(ByRows(matrix), (Rows{{1, 2}, {7, 8}, {5, 6}}));
  v.Resize(1);
  matrix.Import(v);
  EXPECT_EQ(ByRows(matrix), (Rows{{7, 2}, {7, 8}, {5, 6}}));
  typename TypeParam::V longer(4);
  longer.Ramp(4, 1);
  matrix.Import(1, longer);
  EXPECT_EQ(ByRows(matrix), (Rows{{7, 2}, {1, 2}, {3, 4}})) << "it runs on into the next row";
  matrix.Import(2, typename TypeParam::V());
  typename TypeParam::M empty;
  empty.Import(v);
  EXPECT_EQ(empty.GetSize(), 0);
}

// The row table and the block may still be there.
TYPED_TEST(MatReal, Import_OfAVectorIntoARowOfNone_LeavesTheBlock) {
  typename TypeParam::V v(2);
  v[0] = 7;
  v[1] = 8;
  for (const auto &[rows, cols] : {std::pair(0, 3), std::pair(3, 0), std::pair(-1, 2), std::pair(2, -1)}) {
    auto matrix = this->Of(3, 3, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    const auto *const block = matrix.GetPtr();
    matrix.Resize(rows, cols);
    matrix.Import(0, v);
    matrix.Import(v);
    EXPECT_EQ(Elements(block, block + 9), (Elements{1, 2, 3, 4, 5, 6, 7, 8, 9})) << rows << ' ' << cols;
  }
}

TYPED_TEST(MatReal, Export_OfTheBlock_CopiesWhateverTheSize) {
  using T = typename TypeParam::T;
  auto matrix = this->Of(2, 3, {1, 2, 3, 4, 5, 6});
  matrix.Resize(2, 2);
  T target[6] = {9, 9, 9, 9, 9, 9};
  matrix.Export(target, 5);
  EXPECT_EQ((Elements(target, target + 6)), (Elements{1, 2, 3, 4, 5, 9}));
  matrix.Export(target, 0);
  EXPECT_EQ(target[0], 1);
}

// Comparison.

TYPED_TEST(MatReal, Equality_NeedsShapeAndExactElements) {
  using M = typename TypeParam::M;
  using T = typename TypeParam::T;
  const auto a = this->Of(2, 3, {1, 2, 3, 4, 5, 6});
  auto b = a;
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  b[1][2] = std::nextafter(b[1][2], T{9});
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(a != b);
  EXPECT_FALSE(a == this->Of(3, 2, {1, 2, 3, 4, 5, 6}));
  EXPECT_TRUE(M() == M(0, 0));
  EXPECT_FALSE(M() == M(0, 5));
  EXPECT_TRUE(this->Of(1, 1, {0}) == this->Of(1, 1, {-0.0}));
  EXPECT_FALSE(this->Of(1, 1, {kNaN}) == this->Of(1, 1, {kNaN}));
}

TYPED_TEST(MatReal, IsEqual_WithinTheTolerance_IsTrueAndPrintsNothing) {
  using T = typename TypeParam::T;
  const auto a = this->Of(2, 2, {1, 2, 3, 4}), b = this->Of(2, 2, {1, 2.5, 3, 3.5});
  EXPECT_EQ(PrintedBy([&] {
              EXPECT_TRUE(a.IsEqual(b, T{0.5}));
              EXPECT_FALSE(a.IsEqual(b, T{0.4375}));
              EXPECT_TRUE(a.IsEqual(a, 0));
              EXPECT_FALSE(a.IsEqual(a, -1));
              EXPECT_FALSE(a.IsEqual(this->Of(4, 1, {1, 2, 3, 4}), 1));
              EXPECT_FALSE(this->Of(1, 1, {kNaN}).IsEqual(this->Of(1, 1, {kNaN}), 1));
              EXPECT_TRUE(typename TypeParam::M().IsEqual(typename TypeParam::M(), 0));
            }),
            "");
}

// Text output.

TYPED_TEST(MatReal, Dump_UpToTwiceTheCount_PrintsAllRows) {
  const auto matrix = this->Of(2, 3, {1, -2.5, 1e-7, 123456789, 0, 4});
  const std::string all = "\n1 -2.5 1e-07 \n1.23457e+08 0 4 ";
  EXPECT_EQ(PrintedBy([&] { matrix.Dump(1); }), all);
  EXPECT_EQ(PrintedBy([&] { matrix.Dump(); }), all);
  EXPECT_EQ(PrintedBy([] { typename TypeParam::M().Dump(3); }), "");
  EXPECT_EQ(PrintedBy([] { typename TypeParam::M(2, 0).Dump(3); }), "\n\n");
}

TYPED_TEST(MatReal, Dump_OfOneColumn_PrintsBothEnds) {
  const auto matrix = this->Of(5, 1, {1, 2, 3, 4, 5});
  EXPECT_EQ(PrintedBy([&] { matrix.Dump(2); }), "\n1 \n2 \n.................\n4 \n5 ");
  EXPECT_EQ(PrintedBy([&] { matrix.Dump(0); }), "\n.................");
  EXPECT_EQ(PrintedBy([&] { matrix.Dump(-3); }), "\n.................");
}

TYPED_TEST(MatReal, Dump_OfSeveralColumns_HasNoRowsBeyondTheLast) {
  const auto matrix = this->Of(5, 2, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  EXPECT_EQ(PrintedBy([&] { matrix.Dump(2); }), "\n1 2 \n3 4 \n.................");
  EXPECT_EQ(PrintedBy([] { typename TypeParam::M(3, 0).Dump(1); }), "\n\n.................");
}

TYPED_TEST(MatReal, DumpToFile_WritesRowsAndTellsThePath) {
  const TempFile file("what was there before");
  const auto matrix = this->Of(2, 3, {1, -2.5, 0.1, 4, 5e-20, 6});
  const std::string saved = std::string("\n====").append(file.Path()).append(" saved");
  EXPECT_EQ(PrintedBy([&] { matrix.Dump(file.Path()); }), saved);
  EXPECT_EQ(file.Content(), "1 -2.5 0.1 \n4 5e-20 6 \n");
  EXPECT_EQ(PrintedBy([&] { matrix.DumpCSV(file.Path(), false); }), saved);
  EXPECT_EQ(file.Content(), "1, -2.5, 0.1, \n4, 5e-20, 6, \n");
  EXPECT_EQ(PrintedBy([&] { matrix.DumpCSV(file.Path(), true); }), saved);
  EXPECT_EQ(file.Content(), "1, 4, \n-2.5, 5e-20, \n0.1, 6, \n");
  EXPECT_EQ(PrintedBy([&] { typename TypeParam::M().Dump(file.Path()); }), saved);
  EXPECT_EQ(file.Content(), "");
}

TYPED_TEST(MatReal, DumpToFile_ThatCannotBeOpened_Throws13001) {
  const auto matrix = this->Of(1, 1, {1});
  const int before = OpenFiles();
  const char *message = "error opening file", *none = nullptr;
  EXPECT_EQ(PrintedBy([&] {
              ExpectThrown([&] { matrix.Dump(kNoSuchFile); }, 13001, message, "infra\\Matrix");
              ExpectThrown([&] { matrix.Dump(none); }, 13001, message, "infra\\Matrix");
              ExpectThrown([&] { matrix.DumpCSV(kNoSuchFile, true); }, 13001, message, "infra\\Matrix");
            }),
            "");
  EXPECT_EQ(OpenFiles(), before);
}

static_assert(!std::is_convertible_v<MatReal32, MatReal64> && !std::is_constructible_v<MatReal64, MatReal32>);

} // namespace
