// Sorting against std::stable_sort with a comparison of its own, over orders that trouble quicksorts.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "qorn/infra/TargetLib.h"
#include "support/Allocations.h"
#include "support/KernelCheck.h"

namespace {

using QORN::TargetLib;
using QORN::test::Guarded;
using QORN::test::Lengths;
using QORN::test::Samples;

namespace kernels = QORN::kernels;

template <class T> struct Row {
  const char *type;
  void (*ascend)(T *, int);
  void (*descend)(T *, int);
  void (*indexAscend)(T *, int *, int);
  void (*indexDescend)(T *, int *, int);
};

const Row<float> kFloats{"32f", &TargetLib::SortAscend_32f, &TargetLib::SortDescend_32f,
                         &TargetLib::SortIndexAscend_32f, &TargetLib::SortIndexDescend_32f};
const Row<double> kDoubles{"64f", &TargetLib::SortAscend_64f, &TargetLib::SortDescend_64f,
                           &TargetLib::SortIndexAscend_64f, &TargetLib::SortIndexDescend_64f};
const Row<int> kInts{"32s", &TargetLib::SortAscend_32s, &TargetLib::SortDescend_32s,
                     &TargetLib::SortIndexAscend_32s, &TargetLib::SortIndexDescend_32s};

template <class T> bool IsNan(T x) { return x != x; }

// Whether a must stand before b: by value, with not-a-numbers above all numbers and equal to one another.
template <class T> bool Before(T a, T b, bool descending) {
  if (descending) return Before(b, a, false);
  return IsNan(b) ? !IsNan(a) : a < b;
}

template <class T> bool SameBits(const T &a, const T &b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }

template <class T> struct Pattern {
  const char *name;
  std::function<T(int i, int len)> element;
};

std::mt19937_64 &Random() {
  static std::mt19937_64 random(71);
  return random;
}

// A number, where there is none such.
template <class T> T NegativeNan() {
  if constexpr (std::is_floating_point_v<T>) return std::copysign(std::numeric_limits<T>::quiet_NaN(), T(-1));
  return T(-5);
}

template <class T> std::vector<Pattern<T>> Patterns() {
  const std::vector<T> samples = Samples<T>();
  return {
      {"random", [](int, int) { return static_cast<T>(static_cast<int>(Random()())); }},
      {"special values", [samples](int, int) { return samples[Random()() % samples.size()]; }},
      {"few values", [](int, int) { return static_cast<T>(static_cast<int>(Random()() % 5) - 2); }},
      {"ascending", [](int i, int) { return static_cast<T>(i / 2); }},
      {"descending", [](int i, int) { return static_cast<T>(-i / 3); }},
      {"all equal", [](int, int) { return static_cast<T>(7); }},
      {"one value but for a few", [](int i, int) { return static_cast<T>(Random()() % 200 == 0 ? i : 7); }},
      {"one value behind a lower one", [](int i, int) { return static_cast<T>(i == 0 ? 6 : 7); }},
      {"ascending from a negative not-a-number",
       [](int i, int) { return i == 0 ? NegativeNan<T>() : static_cast<T>(i); }},
      {"descending to a negative not-a-number",
       [](int i, int len) { return i == len - 1 ? NegativeNan<T>() : static_cast<T>(-i); }},
      {"ascending to not-a-numbers",
       [](int i, int len) { return i > len - 4 ? -NegativeNan<T>() : static_cast<T>(i); }},
      {"organ pipe", [](int i, int len) { return static_cast<T>(std::min(i, len - 1 - i)); }},
      {"saw tooth", [](int i, int) { return static_cast<T>(i % 17); }},
      {"two ramps",
       [](int i, int len) { return static_cast<T>(i < len / 2 ? 2 * i : 2 * (i - len / 2) + 1); }},
      {"smallest last", [](int i, int len) { return static_cast<T>(i == len - 1 ? -1 : i); }},
      {"signed zeros",
       [](int, int) {
         const T zero = 0;
         return Random()() % 2 != 0 ? zero : -zero;
       }},
      {"not-a-numbers of both signs",
       [](int i, int) {
         if constexpr (std::is_floating_point_v<T>) {
           const T nan = std::numeric_limits<T>::quiet_NaN();
           if (Random()() % 3 == 0) return Random()() % 2 != 0 ? nan : std::copysign(nan, T(-1));
         }
         return static_cast<T>(i % 4);
       }},
  };
}

template <class T> std::vector<int> StableOrder(const std::vector<T> &values, bool descending) {
  std::vector<int> order(values.size());
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
    return Before(values[static_cast<std::size_t>(a)], values[static_cast<std::size_t>(b)], descending);
  });
  return order;
}

template <class T>
void CheckIndexed(const std::vector<T> &values, void (*sort)(T *, int *, int), bool descending, int place,
                  const std::string &where) {
  const int len = static_cast<int>(values.size());
  Guarded<T> data(len, place);
  Guarded<int> indices(len, (3 * place + 1) % 16);
  std::copy(values.begin(), values.end(), data.data());
  const long before = QORN::test::AllocationCount();
  sort(data.data(), indices.data(), len);
  EXPECT_EQ(QORN::test::AllocationCount(), before) << where;
  ASSERT_TRUE(data.Intact() && indices.Intact()) << where;
  const std::vector<int> order = StableOrder(values, descending);
  for (int k = 0; k < len; ++k) {
    const int former = order[static_cast<std::size_t>(k)];
    ASSERT_EQ(indices.data()[k], former) << where << ", place " << k;
    ASSERT_TRUE(SameBits(data.data()[k], values[static_cast<std::size_t>(former)]))
        << where << ", place " << k;
  }
}

// In order, and the same elements bit by bit.
template <class T>
void CheckPlain(const std::vector<T> &values, void (*sort)(T *, int), bool descending, int place,
                const std::string &where) {
  const int len = static_cast<int>(values.size());
  Guarded<T> data(len, place);
  std::copy(values.begin(), values.end(), data.data());
  const long before = QORN::test::AllocationCount();
  sort(data.data(), len);
  EXPECT_EQ(QORN::test::AllocationCount(), before) << where;
  ASSERT_TRUE(data.Intact()) << where;
  for (int k = 1; k < len; ++k) {
    ASSERT_FALSE(Before(data.data()[k], data.data()[k - 1], descending)) << where << ", place " << k;
  }
  const auto byBits = [](const T &a, const T &b) { return std::memcmp(&a, &b, sizeof(T)) < 0; };
  std::vector<T> got(data.data(), data.data() + len), expected = values;
  std::sort(got.begin(), got.end(), byBits);
  std::sort(expected.begin(), expected.end(), byBits);
  for (std::size_t k = 0; k < got.size(); ++k) ASSERT_TRUE(SameBits(got[k], expected[k])) << where;
}

template <class T> void CheckRow(const Row<T> &row, const std::vector<int> &lengths) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    int place = 0;
    for (const Pattern<T> &pattern : Patterns<T>()) {
      for (const int len : lengths) {
        std::vector<T> values;
        for (int i = 0; i < len; ++i) values.push_back(pattern.element(i, len));
        const std::string where = std::string(row.type) + " at " + level.name + ", " + pattern.name +
                                  ", length " + std::to_string(len);
        place = (place + 1) % 16;
        CheckPlain(values, row.ascend, false, place, where + ", ascending");
        CheckPlain(values, row.descend, true, place, where + ", descending");
        CheckIndexed(values, row.indexAscend, false, place, where + ", ascending with places");
        CheckIndexed(values, row.indexDescend, true, place, where + ", descending with places");
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

std::vector<int> AllLengths() {
  std::vector<int> lengths = Lengths();
  for (int n = 71; n < 700; n += 13) lengths.push_back(n);
  return lengths;
}

TEST(TargetLib, SortFloats_AnyOrderOfElements_GivesTheStableOrder) { CheckRow(kFloats, AllLengths()); }
TEST(TargetLib, SortDoubles_AnyOrderOfElements_GivesTheStableOrder) { CheckRow(kDoubles, AllLengths()); }
TEST(TargetLib, SortInts_AnyOrderOfElements_GivesTheStableOrder) { CheckRow(kInts, AllLengths()); }

TEST(TargetLib, SortIndexAscend_Example_TellsFormerPlaces) {
  float values[] = {3, 1, 2, 1};
  int places[4];
  TargetLib::SortIndexAscend_32f(values, places, 4);
  EXPECT_EQ(std::vector<float>(values, values + 4), (std::vector<float>{1, 1, 2, 3}));
  EXPECT_EQ(std::vector<int>(places, places + 4), (std::vector<int>{1, 3, 2, 0}));
}

TEST(TargetLib, SortIndexDescend_EqualElements_KeepTheirOrder) {
  double values[] = {1, 3, 1, 3, 2};
  int places[5];
  TargetLib::SortIndexDescend_64f(values, places, 5);
  EXPECT_EQ(std::vector<double>(values, values + 5), (std::vector<double>{3, 3, 2, 1, 1}));
  EXPECT_EQ(std::vector<int>(places, places + 5), (std::vector<int>{1, 3, 4, 0, 2}));
}

TEST(TargetLib, Sort_NotANumbers_StandBehindAscendingAndBeforeDescendingNumbers) {
  const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
  float values[] = {nan, inf, -nan, -inf, 0};
  TargetLib::SortAscend_32f(values, 5);
  EXPECT_EQ(std::vector<float>(values, values + 3), (std::vector<float>{-inf, 0, inf}));
  EXPECT_TRUE(std::isnan(values[3]) && std::isnan(values[4]));
  TargetLib::SortDescend_32f(values, 5);
  EXPECT_TRUE(std::isnan(values[0]) && std::isnan(values[1]));
  EXPECT_EQ(std::vector<float>(values + 2, values + 5), (std::vector<float>{inf, 0, -inf}));
}

TEST(TargetLib, SortInts_Limits_AreOrdered) {
  int values[] = {0, 2147483647, -2147483647 - 1, -1, 1};
  TargetLib::SortDescend_32s(values, 5);
  EXPECT_EQ(std::vector<int>(values, values + 5), (std::vector<int>{2147483647, 1, 0, -1, -2147483647 - 1}));
  TargetLib::SortAscend_32s(values, 5);
  EXPECT_EQ(std::vector<int>(values, values + 5), (std::vector<int>{-2147483647 - 1, -1, 0, 1, 2147483647}));
}

// The same elements in the same bytes whatever the level, even where the order of equals is left open.
TEST(TargetLib, Sort_AnyLevel_GivesTheSameBytes) {
  std::vector<float> values;
  for (const Pattern<float> &pattern : Patterns<float>()) {
    for (int i = 0; i < 5000; ++i) values.push_back(pattern.element(i, 5000));
  }
  const int len = static_cast<int>(values.size());
  std::vector<float> first;
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    std::vector<float> sorted = values;
    TargetLib::SortAscend_32f(sorted.data(), len);
    if (first.empty()) first = sorted;
    EXPECT_EQ(std::memcmp(first.data(), sorted.data(), values.size() * sizeof(float)), 0) << level.name;
  }
}

} // namespace
