// VecReal32 and VecReal64: what they share from one text, what differs one by one.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/TempFile.h"

namespace {

using QORN::VecInt32;
using QORN::VecReal32;
using QORN::VecReal64;
using QORN::test::AllocationCount;
using QORN::test::ExpectThrown;
using QORN::test::kNoSuchFile;
using QORN::test::OpenFiles;
using QORN::test::PrintedBy;
using QORN::test::TempFile;

struct Real32 {
  using V = VecReal32;
  using T = float;
  static constexpr const char *kName = "VecReal32", *kSeparator = "\n.................";
};
struct Real64 {
  using V = VecReal64;
  using T = double;
  static constexpr const char *kName = "VecReal64", *kSeparator = "\n.............................";
};
using Kinds = testing::Types<Real32, Real64>;
struct KindName {
  template <class K> static std::string GetName(int) { return K::kName; }
};

template <class V, class T = std::decay_t<decltype(std::declval<V>()[0])>>
std::vector<T> Values(const V &vector) {
  return std::vector<T>(vector.GetPtr(), vector.GetPtr() + vector.GetSize());
}

template <class V, class... X> V Of(X... values) {
  using T = std::decay_t<decltype(std::declval<V>()[0])>;
  V vector(static_cast<int>(sizeof...(values)));
  int i = 0;
  ((vector[i++] = static_cast<T>(values)), ...);
  return vector;
}

// Numbers of both signs and many magnitudes that no formula under test produces.
template <class T> T Sample(int i) {
  const unsigned bits = static_cast<unsigned>(i) * 2654435761U + 12345U;
  const T sign = (bits & 1U) != 0 ? T{1} : T{-1};
  return sign * static_cast<T>((bits >> 8) + 1U) / static_cast<T>(1U << ((bits >> 3) & 15U));
}
template <class V> V Samples(int n, int from) {
  V vector(n);
  for (int i = 0; i < n; ++i) vector[i] = Sample<std::decay_t<decltype(vector[0])>>(from + i);
  return vector;
}

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

template <class K> class VecReal : public testing::Test {};
TYPED_TEST_SUITE(VecReal, Kinds, KindName);

// Filling.

TYPED_TEST(VecReal, Ramp_AnyLength_RoundsProductAndSum) {
  using T = typename TypeParam::T;
  typename TypeParam::V vector;
  const T offset = static_cast<T>(0.7), slope = static_cast<T>(-1.3);
  for (const int n : {1, 5, 1003}) {
    vector.Ramp(n, offset, slope);
    ASSERT_EQ(vector.GetSize(), n);
    for (int i = 0; i < n; ++i) {
      const T product = static_cast<T>(i) * slope;
      ASSERT_EQ(vector[i], product + offset) << i;
    }
  }
  vector.Ramp(3);
  EXPECT_EQ(Values(vector), (std::vector<T>{0, 1, 2}));
  vector.Ramp(0, 1, 1);
  EXPECT_EQ(vector.GetSize(), 0);
}

// Arithmetic.

TYPED_TEST(VecReal, Arithmetic_ByVector_IsElementWise) {
  using V = typename TypeParam::V;
  using T = typename TypeParam::T;
  for (const int n : {0, 1, 7, 64, 1003}) {
    const V a = Samples<V>(n, 0), b = Samples<V>(n, 5000);
    V sum = a, difference = a, product = a, quotient = a;
    EXPECT_EQ(&(sum += b), &sum);
    EXPECT_EQ(&(difference -= b), &difference);
    EXPECT_EQ(&(product *= b), &product);
    EXPECT_EQ(&(quotient /= b), &quotient);
    for (int i = 0; i < n; ++i) {
      const T x = a[i], y = b[i];
      ASSERT_EQ(sum[i], x + y) << i;
      ASSERT_EQ(difference[i], x - y) << i;
      ASSERT_EQ(product[i], x * y) << i;
      ASSERT_EQ(quotient[i], x / y) << i;
    }
    V named = a;
    named.Add(b);
    EXPECT_EQ(named, sum);
    named = a;
    named.Sub(b);
    EXPECT_EQ(named, difference);
    named = a;
    named.Mul(b);
    EXPECT_EQ(named, product);
    named = a;
    named.Div(b);
    EXPECT_EQ(named, quotient);
  }
}

TYPED_TEST(VecReal, Arithmetic_ByConstant_IsElementWise) {
  using V = typename TypeParam::V;
  using T = typename TypeParam::T;
  const T val = static_cast<T>(-2.7);
  const T reciprocal = T{1} / val;
  for (const int n : {0, 1, 7, 64, 1003}) {
    const V a = Samples<V>(n, 100);
    V sum = a, difference = a, product = a, quotient = a;
    EXPECT_EQ(&(sum += val), &sum);
    EXPECT_EQ(&(difference -= val), &difference);
    EXPECT_EQ(&(product *= val), &product);
    EXPECT_EQ(&(quotient /= val), &quotient);
    for (int i = 0; i < n; ++i) {
      const T x = a[i];
      ASSERT_EQ(sum[i], x + val) << i;
      ASSERT_EQ(difference[i], x - val) << i;
      ASSERT_EQ(product[i], x * val) << i;
      ASSERT_EQ(quotient[i], x * reciprocal) << i;
    }
    V named = a;
    named.Add(val);
    EXPECT_EQ(named, sum);
    named = a;
    named.Sub(val);
    EXPECT_EQ(named, difference);
    named = a;
    named.Mul(val);
    EXPECT_EQ(named, product);
    named = a;
    named.Div(val);
    EXPECT_EQ(named, quotient);
  }
}

TYPED_TEST(VecReal, Arithmetic_ByIntOrDoubleConstant_TakesTheScalarForm) {
  using T = typename TypeParam::T;
  auto vector = Of<typename TypeParam::V>(1, 2, 3);
  vector += 2;
  vector *= 2.0;
  vector -= 1;
  vector /= 0.5;
  EXPECT_EQ(Values(vector), (std::vector<T>{10, 14, 18}));
}

TYPED_TEST(VecReal, Arithmetic_WithItself_UsesTheOldElements) {
  using T = typename TypeParam::T;
  auto vector = Of<typename TypeParam::V>(1, -2, 3);
  const auto &self = vector;
  vector += self;
  EXPECT_EQ(Values(vector), (std::vector<T>{2, -4, 6}));
  vector *= self;
  EXPECT_EQ(Values(vector), (std::vector<T>{4, 16, 36}));
  vector /= self;
  EXPECT_EQ(Values(vector), (std::vector<T>{1, 1, 1}));
  vector -= self;
  EXPECT_EQ(Values(vector), (std::vector<T>{0, 0, 0}));
}

TYPED_TEST(VecReal, Arithmetic_OnNarrowedVectors_StaysWithinTheViews) {
  using T = typename TypeParam::T;
  auto a = Of<typename TypeParam::V>(1, 2, 3, 4, 5);
  auto b = Of<typename TypeParam::V>(10, 20, 30, 40);
  a.Truncate(1, 2);
  b.Truncate(2, 2);
  a += b;
  a.Resize(5);
  EXPECT_EQ(Values(a), (std::vector<T>{1, 32, 43, 4, 5}));
}

TYPED_TEST(VecReal, Arithmetic_LongerOperand_IsReadAsFarAsThisVector) {
  using T = typename TypeParam::T;
  auto a = Of<typename TypeParam::V>(1, 2);
  a += Of<typename TypeParam::V>(10, 20, 30);
  EXPECT_EQ(Values(a), (std::vector<T>{11, 22}));
}

TYPED_TEST(VecReal, Division_ByConstantZero_LeavesTheVector) {
  using T = typename TypeParam::T;
  auto vector = Of<typename TypeParam::V>(1, 0, -3, 4);
  vector /= 0;
  EXPECT_EQ(Values(vector), (std::vector<T>{1, 0, -3, 4}));
  vector.Div(static_cast<T>(-0.0));
  EXPECT_EQ(Values(vector), (std::vector<T>{1, 0, -3, 4}));
}

TYPED_TEST(VecReal, Division_ByVectorWithZero_WritesAllElementsThenThrows12001) {
  using V = typename TypeParam::V;
  V a(4);
  const V zeros(4);
  ExpectThrown([&] { a /= zeros; }, 12001, "divide-by-zero error", "infra\\TargetLib_ipp");
  for (int i = 0; i < 4; ++i) EXPECT_TRUE(std::isnan(a[i]));
  a = Of<V>(1, -6, 8);
  const V b = Of<V>(0, 2, 4);
  ExpectThrown([&] { a.Div(b); }, 12001, "divide-by-zero error", "infra\\TargetLib_ipp");
  EXPECT_EQ(Values(a), (std::vector<typename TypeParam::T>{static_cast<typename TypeParam::T>(kInf), -3, 2}));
}

// Statistics.

TYPED_TEST(VecReal, Statistics_OfOneTwoThree_AreTheKnownFigures) {
  const auto vector = Of<typename TypeParam::V>(1, 2, 3);
  EXPECT_EQ(vector.Sum(), 6);
  EXPECT_EQ(vector.Mean(), 2);
  EXPECT_EQ(vector.StdDev(), 1);
  EXPECT_EQ(vector.Var(), 1);
  EXPECT_EQ(vector.Max(), 3);
  EXPECT_EQ(vector.Min(), 1);
}

TYPED_TEST(VecReal, Statistics_OfManyElements_AgreeWithLongDouble) {
  using T = typename TypeParam::T;
  const int n = 1003;
  const auto vector = Samples<typename TypeParam::V>(n, 7);
  long double sum = 0, magnitudes = 0, squares = 0;
  for (int i = 0; i < n; ++i) {
    sum += static_cast<long double>(vector[i]);
    magnitudes += std::abs(static_cast<long double>(vector[i]));
  }
  for (int i = 0; i < n; ++i) {
    const long double d = static_cast<long double>(vector[i]) - sum / n;
    squares += d * d;
  }
  const long double deviation = std::sqrt(squares / (n - 1));
  // Accumulation in double errs by at most n rounding errors of the sum of magnitudes; the result is rounded
  // once to T.
  const auto unit = static_cast<long double>(std::numeric_limits<double>::epsilon());
  const auto last = static_cast<long double>(std::numeric_limits<T>::epsilon());
  const long double bound = unit * n * magnitudes + last * std::abs(sum);
  EXPECT_LE(std::abs(static_cast<long double>(vector.Sum()) - sum), bound);
  EXPECT_LE(std::abs(static_cast<long double>(vector.Mean()) - sum / n), bound / n);
  EXPECT_LE(std::abs(static_cast<long double>(vector.StdDev()) - deviation), (unit * n + last) * deviation);
  EXPECT_EQ(vector.Var(), vector.StdDev() * vector.StdDev());
}

TYPED_TEST(VecReal, Statistics_WithoutEnoughElements_AreZero) {
  using T = typename TypeParam::T;
  const typename TypeParam::V empty;
  EXPECT_EQ(empty.Max(), 0);
  EXPECT_EQ(empty.Min(), 0);
  EXPECT_EQ(empty.Max(0, 0), 0);
  EXPECT_EQ(empty.Min(0, -1), 0);
  EXPECT_EQ(empty.Sum(), 0);
  EXPECT_EQ(empty.Mean(), 0);
  EXPECT_EQ(empty.StdDev(), 0);
  EXPECT_EQ(empty.Var(), 0);
  T value = 5;
  int index = 5;
  empty.Max(value, index);
  EXPECT_EQ(std::pair(value, index), std::pair(T{0}, 0));
  value = 5;
  index = 5;
  empty.Min(value, index);
  EXPECT_EQ(std::pair(value, index), std::pair(T{0}, 0));
  const auto one = Of<typename TypeParam::V>(4);
  EXPECT_EQ(one.StdDev(), 0);
  EXPECT_EQ(one.Var(), 0);
  EXPECT_EQ(one.Mean(), 4);
  one.Max(value, index, 1, 0);
  EXPECT_EQ(std::pair(value, index), std::pair(T{0}, 1));
  typename TypeParam::V negative;
  negative.Resize(-1);
  EXPECT_EQ(negative.Max(), 0);
  EXPECT_EQ(negative.Sum(), 0);
}

TYPED_TEST(VecReal, Extremes_WithTies_AreAtTheFirstOccurrence) {
  using T = typename TypeParam::T;
  const auto vector = Of<typename TypeParam::V>(3, -1, 9, 4, 9, -1);
  T value;
  int index;
  vector.Max(value, index);
  EXPECT_EQ(std::pair(value, index), std::pair(T{9}, 2));
  vector.Min(value, index);
  EXPECT_EQ(std::pair(value, index), std::pair(T{-1}, 1));
  EXPECT_EQ(vector.Max(), 9);
  EXPECT_EQ(vector.Min(), -1);
}

TYPED_TEST(VecReal, Extremes_OfARange_CountTheIndexFromTheStart) {
  using T = typename TypeParam::T;
  auto vector = Of<typename TypeParam::V>(100, -100, 3, 8, 5, 100, -100);
  EXPECT_EQ(vector.Max(2, 3), 8);
  EXPECT_EQ(vector.Min(2, 3), 3);
  EXPECT_EQ(vector.Max(2), 100);
  EXPECT_EQ(vector.Min(2, -1), -100);
  T value;
  int index;
  vector.Max(value, index, 2, 3);
  EXPECT_EQ(std::pair(value, index), std::pair(T{8}, 3));
  vector.Min(value, index, 2, 3);
  EXPECT_EQ(std::pair(value, index), std::pair(T{3}, 2));
  vector.Min(value, index, 2);
  EXPECT_EQ(std::pair(value, index), std::pair(T{-100}, 6));
  vector.Trim(2);
  vector.Max(value, index, 1, 2);
  EXPECT_EQ(std::pair(value, index), std::pair(T{8}, 1));
}

TYPED_TEST(VecReal, Extremes_WithNotANumber_PassItOver) {
  using T = typename TypeParam::T;
  const auto vector = Of<typename TypeParam::V>(kNaN, 2, kNaN, 7, -3);
  T value;
  int index;
  vector.Max(value, index);
  EXPECT_EQ(std::pair(value, index), std::pair(T{7}, 3));
  vector.Min(value, index);
  EXPECT_EQ(std::pair(value, index), std::pair(T{-3}, 4));
  EXPECT_EQ(vector.Max(), 7);
  EXPECT_EQ(vector.Min(), -3);
}

// Import and export through pointers.

TYPED_TEST(VecReal, Import_OfOwnType_CopiesExactlyThatMany) {
  using T = typename TypeParam::T;
  const T source[] = {1, 2, 3, 4};
  typename TypeParam::V vector(9);
  vector.Import(source, 3);
  EXPECT_EQ(Values(vector), (std::vector<T>{1, 2, 3}));
  EXPECT_EQ(vector.GetCapacity(), 9);
  vector.Import(source, 0);
  EXPECT_EQ(vector.GetSize(), 0);
}

TYPED_TEST(VecReal, Import_OfItsOwnBlock_MovesTheElements) {
  using T = typename TypeParam::T;
  auto vector = Of<typename TypeParam::V>(1, 2, 3, 4, 5);
  vector.Import(vector.GetPtr(2), 3);
  EXPECT_EQ(Values(vector), (std::vector<T>{3, 4, 5}));
}

TYPED_TEST(VecReal, Export_OfOwnType_CopiesWhateverTheLength) {
  using T = typename TypeParam::T;
  auto vector = Of<typename TypeParam::V>(1, 2, 3, 4);
  vector.Truncate(1, 1);
  T target[4] = {9, 9, 9, 9};
  vector.Export(target, 3);
  EXPECT_EQ((std::vector<T>(target, target + 4)), (std::vector<T>{2, 3, 4, 9}));
  vector.Export(target, 0);
  EXPECT_EQ(target[0], 2);
}

TEST(VecReal32, Import_OfOtherTypes_Converts) {
  VecReal32 vector;
  const double doubles[] = {0.1, 1e300, -1e-60, 16777217.0};
  vector.Import(doubles, 4);
  EXPECT_EQ(Values(vector), (std::vector<float>{0.1f, kInf, -0.0f, 16777216.0f}));
  EXPECT_TRUE(std::signbit(vector[2]));
  const short shorts[] = {-32768, 0, 32767};
  vector.Import(shorts, 3);
  EXPECT_EQ(Values(vector), (std::vector<float>{-32768, 0, 32767}));
  const unsigned short words[] = {0, 32768, 65535};
  vector.Import(words, 3);
  EXPECT_EQ(Values(vector), (std::vector<float>{0, 32768, 65535}));
  EXPECT_EQ(vector.GetCapacity(), 4);
}

TEST(VecReal32, Export_ToDouble_Widens) {
  const auto vector = Of<VecReal32>(0.1f, 2, 3);
  double target[3] = {9, 9, 9};
  vector.Export(target, 2);
  EXPECT_EQ((std::vector<double>(target, target + 3)),
            (std::vector<double>{static_cast<double>(0.1f), 2, 9}));
}

TEST(VecReal64, Import_OfFloat_Widens) {
  const float floats[] = {0.1f, -2, kInf};
  VecReal64 vector;
  vector.Import(floats, 3);
  EXPECT_EQ(Values(vector), (std::vector<double>{static_cast<double>(0.1f), -2, static_cast<double>(kInf)}));
}

TYPED_TEST(VecReal, Vectors_OfOtherTypes_ConvertOnConstructionAssignmentAndImport) {
  using V = typename TypeParam::V;
  using T = typename TypeParam::T;
  using Twin = std::conditional_t<std::is_same_v<V, VecReal32>, VecReal64, VecReal32>;
  auto twin = Of<Twin>(9, 0.5, 0.1, -3, 9);
  twin.Truncate(1, 3);
  const std::vector<T> expected{T{0.5}, static_cast<T>(twin[1]), T{-3}};
  const V constructed(twin);
  EXPECT_EQ(Values(constructed), expected);
  EXPECT_EQ(constructed.GetCapacity(), 3);
  V vector(8);
  EXPECT_EQ(&(vector = twin), &vector);
  EXPECT_EQ(Values(vector), expected);
  EXPECT_EQ(vector.GetCapacity(), 8);
  vector.Set(0);
  vector.Import(twin);
  EXPECT_EQ(Values(vector), expected);
  const auto integers = Of<VecInt32>(1, -2);
  EXPECT_EQ(&(vector = integers), &vector);
  EXPECT_EQ(Values(vector), (std::vector<T>{1, -2}));
  vector.Set(0, 5);
  vector.Import(integers);
  EXPECT_EQ(Values(vector), (std::vector<T>{1, -2}));
  EXPECT_EQ(V(Twin()).GetCapacity(), 0);
  vector = Twin();
  EXPECT_EQ(vector.GetSize(), 0);
}

// Text files.

TYPED_TEST(VecReal, Import_OfOneColumn_StopsAtTheFirstFieldThatIsNoNumber) {
  using T = typename TypeParam::T;
  const TempFile numbers("1 2\n-3.5e1\t.25\r\n  7"), letter("1 2 x 3"), empty(""), blank(" \n\n");
  typename TypeParam::V vector(2);
  vector.Import(numbers.Path(), false);
  EXPECT_EQ(Values(vector), (std::vector<T>{1, 2, -35, T{0.25}, 7}));
  vector.Import(letter.Path());
  EXPECT_EQ(Values(vector), (std::vector<T>{1, 2}));
  vector.Import(empty.Path(), false);
  EXPECT_EQ(vector.GetSize(), 0);
  vector.Import(blank.Path(), false);
  EXPECT_EQ(vector.GetSize(), 0);
  vector.Import(empty.Path(), true);
  EXPECT_EQ(vector.GetSize(), 0);
}

TYPED_TEST(VecReal, Import_OfTwoColumns_KeepsTheSecond) {
  using T = typename TypeParam::T;
  const TempFile file("0 1.5\n1 2.5\n2 nan\n3 inf 4"), cut("0 1.5\n1");
  typename TypeParam::V vector;
  vector.Import(file.Path(), true);
  ASSERT_EQ(vector.GetSize(), 4);
  EXPECT_EQ(vector[0], T{1.5});
  EXPECT_EQ(vector[1], T{2.5});
  EXPECT_TRUE(std::isnan(vector[2]));
  EXPECT_EQ(vector[3], static_cast<T>(kInf));
  vector.Import(cut.Path(), true);
  EXPECT_EQ(Values(vector), (std::vector<T>{T{1.5}}));
}

TYPED_TEST(VecReal, Import_OfSeveralColumns_KeepsTheOneAsked) {
  using T = typename TypeParam::T;
  const TempFile file("1 2 3\n4 5 6\n");
  const struct {
    int columns, column;
    std::vector<T> expected;
  } cases[] = {
      {3, 2, {3, 6}},
      {3, 1, {2, 5}},
      {3, 0, {1, 4}},
      {3, 3, {1, 4}},
      {3, -1, {1, 4}},
      {2, 1, {2, 4, 6}},
      {2, 0, {1, 3, 5}},
      {2, 2, {1, 3, 5}},
      {1, 0, {1, 2, 3, 4, 5, 6}},
      {1, 2, {1, 2, 3, 4, 5, 6}},
      {0, 0, {1, 2, 3, 4, 5, 6}},
      {4, 1, {1, 2, 3, 4, 5, 6}},
      {-2, 1, {1, 2, 3, 4, 5, 6}},
  };
  for (const auto &c : cases) {
    typename TypeParam::V vector;
    vector.Import(file.Path(), c.columns, c.column);
    EXPECT_EQ(Values(vector), c.expected) << c.columns << ' ' << c.column;
  }
}

TYPED_TEST(VecReal, Import_OfFileThatIsNotThere_Throws13001AndKeepsTheVector) {
  using T = typename TypeParam::T;
  auto vector = Of<typename TypeParam::V>(1, 2);
  const char *message = "error opening file";
  ExpectThrown([&] { vector.Import(kNoSuchFile, false); }, 13001, message, "infra\\Vector");
  ExpectThrown([&] { vector.Import(kNoSuchFile, true); }, 13001, message, "infra\\Vector");
  ExpectThrown([&] { vector.Import(kNoSuchFile, 3, 1); }, 13001, message, "infra\\Vector");
  ExpectThrown([&] { vector.Dump(kNoSuchFile, true); }, 13001, message, "infra\\Vector");
  const char *none = nullptr;
  ExpectThrown([&] { vector.Import(none); }, 13001, message, "infra\\Vector");
  EXPECT_EQ(Values(vector), (std::vector<T>{1, 2}));
}

TYPED_TEST(VecReal, Import_WhateverHappens_ClosesTheFile) {
  const TempFile file("1 2 3 4 5 6 7 8");
  typename TypeParam::V vector;
  const int before = OpenFiles();
  vector.Import(file.Path());
  vector.Dump(file.Path());
  const std::string printed = PrintedBy([&] {
    vector.Release();
    const QORN::test::AllocationLimit limit(7);
    ExpectThrown([&] { vector.Import(file.Path()); }, 11001, "memory allocation error", "infra/Vector");
  });
  EXPECT_NE(printed, "");
  EXPECT_EQ(vector.GetSize(), 0);
  EXPECT_EQ(OpenFiles(), before);
}

TYPED_TEST(VecReal, Import_OfPipe_KeepsNothing) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "1 2 3\n", 6), 6);
  close(ends[1]);
  auto vector = Of<typename TypeParam::V>(7, 7, 7, 7);
  vector.Import(std::string("/dev/fd/").append(std::to_string(ends[0])).c_str());
  close(ends[0]);
  EXPECT_EQ(vector.GetSize(), 0);
}

// Text output.

TYPED_TEST(VecReal, DumpOfElements_UpToTwiceTheCount_PrintsAll) {
  const auto vector = Of<typename TypeParam::V>(1, -2.5, 1e-7, 123456789);
  EXPECT_EQ(PrintedBy([&] { vector.Dump(2); }), "\n [ 0]= 1\n [ 1]= -2.5\n [ 2]= 1e-07\n [ 3]= 1.23457e+08");
  EXPECT_EQ(PrintedBy([&] { vector.Dump(); }), PrintedBy([&] { vector.Dump(4); }));
  EXPECT_EQ(PrintedBy([] { typename TypeParam::V().Dump(3); }), "");
}

TYPED_TEST(VecReal, DumpOfElements_MoreThanTwiceTheCount_PrintsBothEnds) {
  const std::string separator = TypeParam::kSeparator;
  auto vector = Of<typename TypeParam::V>(1, 2, 3, 4, 5);
  EXPECT_EQ(PrintedBy([&] { vector.Dump(2); }),
            std::string("\n [ 0]= 1\n [ 1]= 2").append(separator).append("\n [ 3]= 4\n [ 4]= 5"));
  vector.Resize(3);
  EXPECT_EQ(PrintedBy([&] { vector.Dump(0); }), separator);
  EXPECT_EQ(PrintedBy([&] { vector.Dump(-1); }), separator);
  typename TypeParam::V longer(102);
  EXPECT_EQ(PrintedBy([&] { longer.Dump(1); }),
            std::string("\n [ 0]= 0").append(separator).append("\n [101]= 0"));
}

TEST(VecReal32, DumpToFile_WritesIndexAndTwentyPlaces) {
  const TempFile file("what was there before");
  const auto vector = Of<VecReal32>(1, -0.1f, 0);
  EXPECT_EQ(PrintedBy([&] { vector.Dump(file.Path(), false); }), "");
  EXPECT_EQ(file.Content(), "         0        1.00000000000000000000\n"
                            "         1        -0.10000000149011611938\n"
                            "         2        0.00000000000000000000\n");
}

TEST(VecReal64, DumpToFile_WritesIndexAndSixteenDigits) {
  const TempFile file;
  const auto vector = Of<VecReal64>(1, -0.1, 1e-300);
  EXPECT_EQ(PrintedBy([&] { vector.Dump(file.Path()); }), "");
  EXPECT_EQ(file.Content(), "         0        1\n"
                            "         1        -0.1\n"
                            "         2        1e-300\n");
}

TYPED_TEST(VecReal, DumpToFile_Announced_TellsThePath) {
  const TempFile file;
  const auto vector = Of<typename TypeParam::V>(1);
  EXPECT_EQ(PrintedBy([&] { vector.Dump(file.Path(), true); }),
            std::string("\n====").append(file.Path()).append(" saved"));
}

TYPED_TEST(VecReal, DumpToFile_ReadBackWithTwoColumns_GivesTheElements) {
  const TempFile file;
  auto vector = Of<typename TypeParam::V>(0.5, -3.25, 1e6, 0);
  vector.Dump(file.Path(), false);
  typename TypeParam::V back;
  back.Import(file.Path(), true);
  EXPECT_EQ(back, vector);
  vector.Resize(0);
  vector.Dump(file.Path(), false);
  EXPECT_EQ(file.Content(), "");
}

// Comparison.

TYPED_TEST(VecReal, Equality_IsExactOnElementsAndLengths) {
  using V = typename TypeParam::V;
  const V a = Samples<V>(1003, 3);
  V b = a;
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  EXPECT_TRUE(a == a);
  b[1002] = std::nextafter(b[1002], static_cast<typename TypeParam::T>(kInf));
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(a != b);
  b = a;
  b.Resize(1002);
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(V() == V());
  EXPECT_FALSE(V() != V());
  EXPECT_TRUE(Of<V>(0.0f) == Of<V>(-0.0f));
  EXPECT_FALSE(V() == V(1));
}

TYPED_TEST(VecReal, Equality_WithOneElementThatDiffers_IsFalseWhereverItStands) {
  using V = typename TypeParam::V;
  for (const int n : {1, 2, 17, 255, 256, 257, 600}) {
    const V a = Samples<V>(n, 5);
    V b = a;
    for (int i = 0; i < n; ++i) {
      b[i] = -b[i];
      ASSERT_FALSE(a == b) << n << ' ' << i;
      b[i] = static_cast<typename TypeParam::T>(kNaN);
      ASSERT_TRUE(a != b) << n << ' ' << i;
      b[i] = a[i];
      ASSERT_TRUE(a == b) << n << ' ' << i;
    }
  }
}

TYPED_TEST(VecReal, Equality_WithNotANumber_IsFalseAndPrintsNothing) {
  const auto vector = Of<typename TypeParam::V>(1, kNaN);
  EXPECT_EQ(PrintedBy([&] { EXPECT_FALSE(vector == vector); }), "");
  EXPECT_TRUE(vector != vector);
}

TYPED_TEST(VecReal, IsEqual_WithinTheTolerance_IsTrueAndPrintsNothing) {
  using V = typename TypeParam::V;
  const auto a = Of<V>(1, 2, -3), b = Of<V>(1.25, 1.75, -3);
  EXPECT_EQ(PrintedBy([&] {
              EXPECT_TRUE(a.IsEqual(a, 0));
              EXPECT_TRUE(a.IsEqual(b, static_cast<typename TypeParam::T>(0.25)));
              EXPECT_TRUE(V().IsEqual(V(), 0));
              EXPECT_TRUE(V().IsEqual(V(), -1));
            }),
            "");
}

TEST(VecReal32, IsEqual_BeyondTheTolerance_TellsTheFirstElement) {
  const auto a = Of<VecReal32>(1, 2, 3), b = Of<VecReal32>(1, 2.5, 9);
  EXPECT_EQ(PrintedBy([&] { EXPECT_FALSE(a.IsEqual(b, 0.25f)); }),
            "\n ==>> Idx:1, Vec:2.00000000e+00, Arg:2.50000000e+00, Err:-5.00000000e-01, "
            "Tol:2.50000000e-01 <<==");
  EXPECT_EQ(PrintedBy([&] { EXPECT_FALSE(a.IsEqual(a, -1)); }),
            "\n ==>> Idx:0, Vec:1.00000000e+00, Arg:1.00000000e+00, Err:0.00000000e+00, "
            "Tol:-1.00000000e+00 <<==");
  const auto c = Of<VecReal32>(kInf, kNaN);
  EXPECT_EQ(PrintedBy([&] { EXPECT_FALSE(Of<VecReal32>(kInf).IsEqual(Of<VecReal32>(1), 2)); }),
            "\n ==>> Idx:0, Vec:inf, Arg:1.00000000e+00, Err:inf, Tol:2.00000000e+00 <<==");
  EXPECT_NE(PrintedBy([&] { EXPECT_FALSE(c.IsEqual(c, kInf)); }), "");
}

TEST(VecReal64, IsEqual_BeyondTheTolerance_TellsTheFirstElement) {
  const auto a = Of<VecReal64>(1, 2, 3), b = Of<VecReal64>(1, 2.5, 9);
  EXPECT_EQ(PrintedBy([&] { EXPECT_FALSE(a.IsEqual(b, 0.25)); }),
            "\n ==>> Idx:1, Vec:2.0000000000000000e+00, Arg:2.5000000000000000e+00, "
            "Err:-5.0000000000000000e-01, Tol:2.5000000000000000e-01 <<==");
}

TYPED_TEST(VecReal, IsEqual_WithNotANumber_IsFalseWithAMessage) {
  const auto vector = Of<typename TypeParam::V>(1, kNaN);
  const std::string printed = PrintedBy([&] { EXPECT_FALSE(vector.IsEqual(vector, 0)); });
  EXPECT_EQ(printed.substr(0, 17), "\n ==>> Idx:1, Vec");
}

TEST(VecReal32, IsEqual_DifferenceIsFormedInFloat) {
  // 16777216 - 0.5 is 16777216 in float, so the difference is exactly the tolerance.
  EXPECT_TRUE(Of<VecReal32>(16777216).IsEqual(Of<VecReal32>(-0.5f), 16777216));
}

TEST(VecReal32, IsEqual_OfDifferentLengths_IsFalseWithoutAMessage) {
  const auto a = Of<VecReal32>(1, 2, 3), b = Of<VecReal32>(1, 2, 3, 4, 5);
  EXPECT_EQ(PrintedBy([&] {
              EXPECT_FALSE(a.IsEqual(b, 0));
              EXPECT_FALSE(b.IsEqual(a, 0));
            }),
            "");
}

TEST(VecReal64, IsEqual_OfLongerArgument_ComparesThisLengthOnly) {
  const auto a = Of<VecReal64>(1, 2, 3), b = Of<VecReal64>(1, 2, 3, 4, 5);
  EXPECT_EQ(PrintedBy([&] { EXPECT_TRUE(a.IsEqual(b, 0)); }), "");
  EXPECT_TRUE(VecReal64().IsEqual(b, 0));
}

// Resources.

TYPED_TEST(VecReal, RepeatedUse_OfKeptVectors_AllocatesNothing) {
  using V = typename TypeParam::V;
  using T = typename TypeParam::T;
  const V b = Samples<V>(500, 1);
  const auto integers = Of<VecInt32>(1, 2, 3);
  const VecReal32 floats = Samples<VecReal32>(500, 3);
  const VecReal64 doubles = Samples<VecReal64>(500, 3);
  V a = b;
  std::vector<T> target(500);
  T value;
  int index;
  const long before = AllocationCount();
  a += b;
  a -= b;
  a *= b;
  a /= b;
  a += T{1};
  a -= T{1};
  a *= T{2};
  a /= T{2};
  a.Ramp(500, 1, 1);
  a.Max(value, index);
  a.Min(value, index, 1, 300);
  a.Import(b.GetPtr(), 400);
  a.Import(floats.GetPtr(), 500);
  a.Import(doubles.GetPtr(), 500);
  a = floats;
  a = doubles;
  a = integers;
  a.Export(target.data(), 3);
  const T figures = a.Max() + a.Min() + a.Sum() + a.Mean() + a.StdDev() + a.Var() + a.Max(1, 2);
  const bool same = a == b || a.IsEqual(a, 0);
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_TRUE(same);
  EXPECT_GT(figures, 0);
}

#if defined(QORN_CHECKED)
TEST(VecRealDeathTest, Operand_ShorterThanTheVector_StopsWithBothLengths) {
  VecReal32 a(5);
  const VecReal32 b(3);
  EXPECT_DEATH(a += b, "QORN: length of arg = 3, length = 5");
  EXPECT_DEATH(a.Sub(b), "QORN: length of arg = 3, length = 5");
  EXPECT_DEATH(a *= b, "QORN: length of arg = 3, length = 5");
  EXPECT_DEATH(a.Div(b), "QORN: length of arg = 3, length = 5");
  EXPECT_DEATH(static_cast<void>(VecReal64(5).IsEqual(VecReal64(3), 0)),
               "QORN: length of arg = 3, length = 5");
}

TEST(VecRealDeathTest, Range_OutsideTheVector_StopsWithBothValues) {
  const VecReal64 a(5);
  double value;
  int index;
  EXPECT_DEATH(static_cast<void>(a.Max(6, 0)), "QORN: first = 6, length = 5");
  EXPECT_DEATH(static_cast<void>(a.Min(3, 3)), "QORN: count = 3, length - first = 2");
  EXPECT_DEATH(a.Max(value, index, -1, 2), "QORN: first = -1, length = 5");
  EXPECT_DEATH(a.Min(value, index, 1, 5), "QORN: count = 5, length - first = 4");
}
#endif

} // namespace
