// VecInt16, VecInt32, VecUInt8 and VecUInt32.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qorn/infra/VecInt16.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/infra/VecUInt32.h"
#include "qorn/infra/VecUInt8.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/TempFile.h"

namespace {

using QORN::VecInt16;
using QORN::VecInt32;
using QORN::VecReal32;
using QORN::VecReal64;
using QORN::VecUInt32;
using QORN::VecUInt8;
using QORN::test::AllocationCount;
using QORN::test::AllocationLimit;
using QORN::test::ExpectThrown;
using QORN::test::kNoSuchFile;
using QORN::test::OpenFiles;
using QORN::test::PrintedBy;
using QORN::test::TempFile;

template <class V> using ElementOf = std::decay_t<decltype(std::declval<V>()[0])>;

template <class V> std::vector<long long> Values(const V &vector) {
  return std::vector<long long>(vector.GetPtr(), vector.GetPtr() + vector.GetSize());
}

template <class V> V Of(const std::vector<long long> &values) {
  V vector(static_cast<int>(values.size()));
  for (std::size_t i = 0; i < values.size(); ++i) {
    vector[static_cast<int>(i)] = static_cast<ElementOf<V>>(values[i]);
  }
  return vector;
}

// Numbers over the whole range of T.
template <class V> V Samples(int n, int from) {
  V vector(n);
  for (int i = 0; i < n; ++i) {
    vector[i] = static_cast<ElementOf<V>>((static_cast<unsigned>(from + i) * 2654435761U + 12345U) >> 3);
  }
  return vector;
}

using Integers = std::vector<long long>;

template <class V> struct VecInt : testing::Test {
  static ElementOf<V> Saturated(long long x) {
    using Limits = std::numeric_limits<ElementOf<V>>;
    const long long lowest = Limits::min(), largest = Limits::max();
    return static_cast<ElementOf<V>>(x < lowest ? lowest : x > largest ? largest : x);
  }
};
// The classes that have arithmetic, text files, and a copy through pointers.
using Signed = testing::Types<VecInt16, VecInt32>;
using Textual = testing::Types<VecInt16, VecInt32, VecUInt32>;
using Pointed = testing::Types<VecInt16, VecInt32, VecUInt8>;
using All = testing::Types<VecInt16, VecInt32, VecUInt32, VecUInt8>;
struct ClassName {
  template <class V> static std::string GetName(int) {
    return std::is_same_v<V, VecInt16>    ? "VecInt16"
           : std::is_same_v<V, VecInt32>  ? "VecInt32"
           : std::is_same_v<V, VecUInt32> ? "VecUInt32"
                                          : "VecUInt8";
  }
};
TYPED_TEST_SUITE(VecInt, Signed, ClassName);

template <class V> struct VecIntText : testing::Test {};
TYPED_TEST_SUITE(VecIntText, Textual, ClassName);

template <class V> struct VecIntPointer : testing::Test {};
TYPED_TEST_SUITE(VecIntPointer, Pointed, ClassName);

// Arithmetic.

TYPED_TEST(VecInt, Arithmetic_ByVector_Saturates) {
  using V = TypeParam;
  for (const int n : {0, 1, 7, 64, 1003}) {
    const V a = Samples<V>(n, 0), b = Samples<V>(n, 9999);
    V sum = a, difference = a, product = a;
    EXPECT_EQ(&(sum += b), &sum);
    EXPECT_EQ(&(difference -= b), &difference);
    EXPECT_EQ(&(product *= b), &product);
    for (int i = 0; i < n; ++i) {
      const long long x = a[i], y = b[i];
      ASSERT_EQ(sum[i], TestFixture::Saturated(x + y)) << i;
      ASSERT_EQ(difference[i], TestFixture::Saturated(x - y)) << i;
      ASSERT_EQ(product[i], TestFixture::Saturated(x * y)) << i;
    }
    V named = a;
    named.Add(b);
    EXPECT_EQ(Values(named), Values(sum));
    named = a;
    named.Sub(b);
    EXPECT_EQ(Values(named), Values(difference));
    named = a;
    named.Mul(b);
    EXPECT_EQ(Values(named), Values(product));
  }
}

TYPED_TEST(VecInt, Arithmetic_ByConstant_Saturates) {
  using V = TypeParam;
  using T = ElementOf<V>;
  const T limits = std::numeric_limits<T>::max();
  for (const T val : {T{0}, T{1}, T{-1}, T{3}, T{-1000}, limits, static_cast<T>(-limits - 1)}) {
    const V a = Samples<V>(1003, 17);
    V sum = a, difference = a, product = a;
    EXPECT_EQ(&(sum += val), &sum);
    EXPECT_EQ(&(difference -= val), &difference);
    EXPECT_EQ(&(product *= val), &product);
    for (int i = 0; i < a.GetSize(); ++i) {
      const long long x = a[i], y = val;
      ASSERT_EQ(sum[i], TestFixture::Saturated(x + y)) << i;
      ASSERT_EQ(difference[i], TestFixture::Saturated(x - y)) << i;
      ASSERT_EQ(product[i], TestFixture::Saturated(x * y)) << i;
    }
    V named = a;
    named.Add(val);
    EXPECT_EQ(Values(named), Values(sum));
    named = a;
    named.Sub(val);
    EXPECT_EQ(Values(named), Values(difference));
    named = a;
    named.Mul(val);
    EXPECT_EQ(Values(named), Values(product));
  }
}

TEST(VecInt16, Arithmetic_BeyondTheLimits_SticksThere) {
  auto vector = Of<VecInt16>({32000, -32000});
  vector += 1000;
  EXPECT_EQ(Values(vector), (Integers{32767, -31000}));
  vector -= 2000;
  EXPECT_EQ(Values(vector), (Integers{30767, -32768}));
  vector *= 2;
  EXPECT_EQ(Values(vector), (Integers{32767, -32768}));
}

TYPED_TEST(VecInt, Arithmetic_WithItselfOrNarrowed_StaysWithinTheView) {
  auto vector = Of<TypeParam>({1, 2, -3, 4});
  const auto &self = vector;
  vector.Truncate(1, 2);
  vector += self;
  vector *= self;
  vector += Of<TypeParam>({1, 1, 1});
  vector.Resize(4);
  EXPECT_EQ(Values(vector), (Integers{1, 17, 37, 4}));
  vector -= self;
  EXPECT_EQ(Values(vector), (Integers{0, 0, 0, 0}));
}

// Statistics.

TYPED_TEST(VecInt, Extremes_WithTies_AreAtTheFirstOccurrence) {
  using T = ElementOf<TypeParam>;
  const auto vector = Of<TypeParam>({3, -7, 9, 4, 9, -7});
  T value;
  int index;
  vector.Max(value, index);
  EXPECT_EQ(std::pair(value, index), std::pair(T{9}, 2));
  vector.Min(value, index);
  EXPECT_EQ(std::pair(value, index), std::pair(T{-7}, 1));
  EXPECT_EQ(vector.Max(), 9);
  EXPECT_EQ(vector.Min(), -7);
  EXPECT_EQ(vector.Sum(), 11);
}

TYPED_TEST(VecInt, Statistics_OfManyElements_AreExact) {
  const auto vector = Samples<TypeParam>(1003, 5);
  long long sum = 0;
  int largest = 0, smallest = 0;
  for (int i = 0; i < vector.GetSize(); ++i) {
    sum += vector[i];
    if (vector[i] > vector[largest]) largest = i;
    if (vector[i] < vector[smallest]) smallest = i;
  }
  ElementOf<TypeParam> value;
  int index;
  vector.Max(value, index);
  EXPECT_EQ(index, largest);
  EXPECT_EQ(value, vector[largest]);
  EXPECT_EQ(vector.Max(), value);
  vector.Min(value, index);
  EXPECT_EQ(index, smallest);
  EXPECT_EQ(value, vector[smallest]);
  EXPECT_EQ(vector.Min(), value);
  EXPECT_EQ(vector.Sum(), TestFixture::Saturated(sum));
}

TYPED_TEST(VecInt, Statistics_OfEmptyVector_AreZero) {
  using T = ElementOf<TypeParam>;
  const TypeParam empty;
  T value = 5;
  int index = 5;
  empty.Max(value, index);
  EXPECT_EQ(std::pair(value, index), std::pair(T{0}, 0));
  value = 5;
  index = 5;
  empty.Min(value, index);
  EXPECT_EQ(std::pair(value, index), std::pair(T{0}, 0));
  EXPECT_EQ(empty.Max(), 0);
  EXPECT_EQ(empty.Min(), 0);
  EXPECT_EQ(empty.Sum(), 0);
}

TEST(VecInt16, Sum_BeyondTheLimits_SticksThere) {
  VecInt16 vector;
  vector.Set(10000, 10);
  EXPECT_EQ(vector.Sum(), 32767);
  vector *= -1;
  EXPECT_EQ(vector.Sum(), -32768);
}

TEST(VecInt32, Sum_BeyondTheLimits_SticksThere) {
  VecInt32 vector;
  vector.Set(2000000000, 3);
  EXPECT_EQ(vector.Sum(), 2147483647);
  vector *= -1;
  EXPECT_EQ(vector.Sum(), -2147483647 - 1);
}

// Ramp and conversions of VecInt32.

TEST(VecInt32, Ramp_IsOffsetPlusIndexTimesSlope) {
  VecInt32 vector(7);
  vector.Ramp(3, 5, 2);
  EXPECT_EQ(Values(vector), (Integers{5, 7, 9}));
  EXPECT_EQ(vector.GetCapacity(), 7);
  vector.Ramp(4, 1, -3);
  EXPECT_EQ(Values(vector), (Integers{1, -2, -5, -8}));
  vector.Ramp(3);
  EXPECT_EQ(Values(vector), (Integers{0, 1, 2}));
  vector.Ramp(0, 1, 1);
  EXPECT_EQ(vector.GetSize(), 0);
}

TEST(VecInt32, Ramp_BeyondTheLimits_Wraps) {
  VecInt32 vector;
  vector.Ramp(3, 2147483647, 1);
  EXPECT_EQ(Values(vector), (Integers{2147483647, -2147483648LL, -2147483647}));
  vector.Ramp(4, 0, 1 << 30);
  EXPECT_EQ(Values(vector), (Integers{0, 1 << 30, -2147483648LL, -(1 << 30)}));
}

TEST(VecInt32, AssignmentAndImport_FromReals_TruncateTowardZero) {
  VecReal32 floats(2);
  floats[0] = 2.9f;
  floats[1] = -2.9f;
  VecReal64 doubles(3);
  doubles[0] = -0.999;
  doubles[1] = 1e10;
  doubles[2] = -1e10;
  VecInt32 vector(5);
  EXPECT_EQ(&(vector = floats), &vector);
  EXPECT_EQ(Values(vector), (Integers{2, -2}));
  EXPECT_EQ(&(vector = doubles), &vector);
  EXPECT_EQ(Values(vector), (Integers{0, 2147483647, -2147483648LL}));
  vector.Import(floats);
  EXPECT_EQ(Values(vector), (Integers{2, -2}));
  vector.Import(doubles);
  EXPECT_EQ(Values(vector), (Integers{0, 2147483647, -2147483648LL}));
  EXPECT_EQ(vector.GetCapacity(), 5);
}

// Import and export through pointers.

TYPED_TEST(VecIntPointer, ImportAndExport_MoveExactlyThatMany) {
  using T = ElementOf<TypeParam>;
  const T source[] = {1, 2, 3, 4};
  TypeParam vector(9);
  vector.Import(source, 3);
  EXPECT_EQ(Values(vector), (Integers{1, 2, 3}));
  EXPECT_EQ(vector.GetCapacity(), 9);
  vector.Import(vector.GetPtr(1), 2);
  EXPECT_EQ(Values(vector), (Integers{2, 3}));
  vector.Resize(1);
  T target[] = {9, 9, 9};
  vector.Export(target, 2);
  EXPECT_EQ((std::vector<T>(target, target + 3)), (std::vector<T>{2, 3, 9}));
  vector.Import(source, 0);
  EXPECT_EQ(vector.GetSize(), 0);
}

// Filling with the limits of the types: the rest is tested with the other vectors.

TEST(VecUInt32, Set_LargeValue_KeepsItsBits) {
  VecUInt32 vector;
  vector.Set(4294967295U, 3);
  EXPECT_EQ(Values(vector), (Integers{4294967295LL, 4294967295LL, 4294967295LL}));
  const VecUInt32 copy = vector;
  EXPECT_EQ(Values(copy), Values(vector));
}

TEST(VecUInt8, Set_LargeValue_KeepsIt) {
  VecUInt8 vector;
  vector.Set(255, 2);
  EXPECT_EQ(Values(vector), (Integers{255, 255}));
}

// Text files.

TYPED_TEST(VecIntText, Import_OfTextFile_StopsAtTheFirstShortRecord) {
  const TempFile one("1 2\n3\tx 4"), two("0 10\n1 20\n2"), real("5 6.5 7"), empty("");
  TypeParam vector;
  vector.Import(one.Path());
  EXPECT_EQ(Values(vector), (Integers{1, 2, 3}));
  vector.Import(two.Path(), true);
  EXPECT_EQ(Values(vector), (Integers{10, 20}));
  vector.Import(two.Path(), false);
  EXPECT_EQ(Values(vector), (Integers{0, 10, 1, 20, 2}));
  vector.Import(real.Path());
  EXPECT_EQ(Values(vector), (Integers{5, 6}));
  vector.Import(empty.Path(), true);
  EXPECT_EQ(vector.GetSize(), 0);
}

TEST(VecInt16, Import_OfLargeNumbers_KeepsTheLowBits) {
  const TempFile file("40000 65536 -32769 2147483647");
  VecInt16 vector;
  vector.Import(file.Path(), false);
  EXPECT_EQ(Values(vector), (Integers{-25536, 0, 32767, -1}));
}

// 2^64 + 5, 2^32 - 2, 2^31 and -2^64 - 3.
TYPED_TEST(VecIntText, Import_OfNumbersBeyondInt_KeepsTheLowBits) {
  const TempFile file("18446744073709551621 4294967294 2147483648 -18446744073709551619 +9");
  TypeParam vector;
  vector.Import(file.Path());
  using T = std::decay_t<decltype(vector[0])>;
  const auto low = [](long long value) { return static_cast<long long>(static_cast<T>(value)); };
  EXPECT_EQ(Values(vector), (Integers{5, low(-2), low(2147483648LL), low(-3), 9}));
}

TEST(VecUInt32, Import_OfNegativeNumbers_KeepsTheirBits) {
  const TempFile file("-1 2147483647 -2147483648");
  VecUInt32 vector;
  vector.Import(file.Path());
  EXPECT_EQ(Values(vector), (Integers{4294967295LL, 2147483647, 2147483648LL}));
}

TYPED_TEST(VecIntText, Files_ThatCannotBeOpened_Throw13001AndKeepTheVector) {
  auto vector = Of<TypeParam>({1, 2});
  const char *message = "error opening file";
  ExpectThrown([&] { vector.Import(kNoSuchFile, false); }, 13001, message, "infra\\IntVector");
  ExpectThrown([&] { vector.Import(kNoSuchFile, true); }, 13001, message, "infra\\IntVector");
  ExpectThrown([&] { vector.Dump(kNoSuchFile, true); }, 13001, message, "infra\\IntVector");
  EXPECT_EQ(Values(vector), (Integers{1, 2}));
}

TYPED_TEST(VecIntText, Files_WhateverHappens_AreClosed) {
  const TempFile file("1 2 3 4 5 6 7 8 9");
  TypeParam vector;
  const int before = OpenFiles();
  PrintedBy([&] {
    const AllocationLimit limit(9);
    ExpectThrown([&] { vector.Import(file.Path()); }, 11001, "memory allocation error", "infra/IntVector");
  });
  vector.Import(file.Path());
  vector.Dump(file.Path());
  EXPECT_EQ(OpenFiles(), before);
}

TEST(VecInt16, DumpToFile_WritesIndexAndValue) {
  const TempFile file;
  const auto vector = Of<VecInt16>({1, -32768});
  EXPECT_EQ(PrintedBy([&] { vector.Dump(file.Path(), false); }), "");
  EXPECT_EQ(file.Content(), "         0        1\n"
                            "         1        -32768\n");
  VecInt16 back;
  back.Import(file.Path(), true);
  EXPECT_EQ(Values(back), Values(vector));
}

TEST(VecInt32, DumpToFile_WritesTheValueOnly) {
  const TempFile file;
  const auto vector = Of<VecInt32>({1, -2147483648LL});
  EXPECT_EQ(PrintedBy([&] { vector.Dump(file.Path()); }), "");
  EXPECT_EQ(file.Content(), "1\n-2147483648\n");
  VecInt32 back;
  back.Import(file.Path(), false);
  EXPECT_EQ(Values(back), Values(vector));
}

TEST(VecUInt32, DumpToFile_WritesTheValueOnly) {
  const TempFile file;
  const auto vector = Of<VecUInt32>({1, 4294967295LL});
  EXPECT_EQ(PrintedBy([&] { vector.Dump(file.Path()); }), "");
  EXPECT_EQ(file.Content(), "1\n4294967295\n");
}

TEST(VecUInt32, Import_OfItsDump_GivesTheElements) {
  const TempFile file;
  const auto vector = Of<VecUInt32>({0, 7, 2147483647LL, 2147483648LL, 4294967295LL});
  vector.Dump(file.Path());
  VecUInt32 back;
  back.Import(file.Path(), false);
  EXPECT_EQ(Values(back), Values(vector));
}

TYPED_TEST(VecIntText, DumpToFile_Announced_TellsThePath) {
  const TempFile file;
  EXPECT_EQ(PrintedBy([&] { TypeParam(1).Dump(file.Path(), true); }),
            std::string("\n====").append(file.Path()).append(" saved"));
}

template <class V> struct VecIntDump : testing::Test {};
TYPED_TEST_SUITE(VecIntDump, All, ClassName);

TYPED_TEST(VecIntDump, DumpOfElements_UpToTwiceTheCount_PrintsAll) {
  const auto vector = Of<TypeParam>({1, 20, 127});
  EXPECT_EQ(PrintedBy([&] { vector.Dump(2); }), "\n [ 0]= 1\n [ 1]= 20\n [ 2]= 127");
  EXPECT_EQ(PrintedBy([&] { vector.Dump(); }), "\n [ 0]= 1\n [ 1]= 20\n [ 2]= 127");
  EXPECT_EQ(PrintedBy([] { TypeParam().Dump(0); }), "");
}

TYPED_TEST(VecIntDump, DumpOfElements_MoreThanTwiceTheCount_PrintsBothEnds) {
  const auto vector = Of<TypeParam>({1, 2, 3});
  EXPECT_EQ(PrintedBy([&] { vector.Dump(1); }), "\n [ 0]= 1\n.................\n [ 2]= 3");
  EXPECT_EQ(PrintedBy([&] { vector.Dump(0); }), "\n.................");
}

TEST(VecUInt32, DumpOfElements_LargeValue_IsUnsigned) {
  EXPECT_EQ(PrintedBy([] { Of<VecUInt32>({4294967295LL}).Dump(1); }), "\n [ 0]= 4294967295");
  EXPECT_EQ(PrintedBy([] { Of<VecInt32>({-1}).Dump(1); }), "\n [ 0]= -1");
  EXPECT_EQ(PrintedBy([] { Of<VecInt16>({-1}).Dump(1); }), "\n [ 0]= -1");
  EXPECT_EQ(PrintedBy([] { Of<VecUInt8>({255}).Dump(1); }), "\n [ 0]= 255");
}

// Comparison.

TYPED_TEST(VecIntText, IsEqual_NeverPrints_AndComparesWithTheTolerance) {
  using V = TypeParam;
  const auto a = Of<V>({5, 10, 15}), b = Of<V>({6, 9, 15});
  EXPECT_EQ(PrintedBy([&] {
              EXPECT_TRUE(a.IsEqual(a, 0));
              EXPECT_FALSE(a.IsEqual(b, 0));
              EXPECT_TRUE(a.IsEqual(b, 1));
              EXPECT_FALSE(a.IsEqual(a, -1));
              EXPECT_TRUE(V().IsEqual(V(), -1));
              EXPECT_FALSE(a.IsEqual(V(2), 100));
              EXPECT_FALSE(V(2).IsEqual(a, 100));
            }),
            "");
}

TEST(VecUInt32, IsEqual_OfZeroAndTheLargest_DiffersByOne) {
  EXPECT_TRUE(Of<VecUInt32>({0}).IsEqual(Of<VecUInt32>({4294967295LL}), 1));
  EXPECT_TRUE(Of<VecUInt32>({4294967295LL}).IsEqual(Of<VecUInt32>({0}), 1));
  EXPECT_FALSE(Of<VecUInt32>({0}).IsEqual(Of<VecUInt32>({4294967295LL}), 0));
}

TEST(VecInt32, IsEqual_Difference_Wraps) {
  const auto lowest = Of<VecInt32>({-2147483648LL}), largest = Of<VecInt32>({2147483647});
  EXPECT_TRUE(lowest.IsEqual(largest, 1));
  EXPECT_FALSE(lowest.IsEqual(Of<VecInt32>({0}), 2147483647)) << "the magnitude is 2147483648";
}

TEST(VecInt16, IsEqual_Difference_DoesNotWrap) {
  const auto lowest = Of<VecInt16>({-32768}), largest = Of<VecInt16>({32767});
  EXPECT_FALSE(lowest.IsEqual(largest, 65534));
  EXPECT_TRUE(lowest.IsEqual(largest, 65535));
}

// Resources.

TYPED_TEST(VecInt, RepeatedUse_OfKeptVectors_AllocatesNothing) {
  using V = TypeParam;
  using T = ElementOf<V>;
  const V b = Samples<V>(500, 1);
  V a = b;
  std::vector<T> target(500);
  T value;
  int index;
  const long before = AllocationCount();
  a += b;
  a -= b;
  a *= b;
  a += T{1};
  a -= T{1};
  a *= T{2};
  a.Max(value, index);
  a.Min(value, index);
  value = a.Max();
  value = a.Min();
  value = a.Sum();
  a.Import(b.GetPtr(), 400);
  a.Export(target.data(), 400);
  a.Set(3, 500);
  const bool same = a.IsEqual(b, 1);
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_FALSE(same);
}

#if defined(QORN_CHECKED)
TEST(VecIntDeathTest, Operand_ShorterThanTheVector_StopsWithBothLengths) {
  VecInt16 a(5);
  const VecInt16 b(3);
  EXPECT_DEATH(a += b, "QORN: length of arg = 3, length = 5");
  EXPECT_DEATH(a.Sub(b), "QORN: length of arg = 3, length = 5");
  EXPECT_DEATH(a *= b, "QORN: length of arg = 3, length = 5");
}
#endif

} // namespace
