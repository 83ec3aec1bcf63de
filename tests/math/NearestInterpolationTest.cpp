#include "qorn/math/NearestInterpolation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "support/Tables.h"
#include "support/Vectors.h"
#include "support/Wide.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;
using test::Plus;
using test::Times;

template <class V> std::vector<test::ElementOf<V>> Nearest(const V &x, const V &y, const V &values) {
  NearestInterpolation nearest;
  V out;
  EXPECT_EQ(nearest.Interpolate(out, x, y, values), 0);
  return List(out);
}

template <class V> void ExpectExamples() {
  using Values = std::vector<test::ElementOf<V>>;
  EXPECT_EQ(Nearest(Of<V>({0, 1, 2}), Of<V>({10, 20, 30}),
                    Of<V>({0.5, 1.5, static_cast<test::ElementOf<V>>(0.4),
                           static_cast<test::ElementOf<V>>(1.6), -INFINITY, INFINITY, NAN})),
            (Values{20, 20, 10, 30, 10, 30, 30}));
  EXPECT_EQ(Nearest(Of<V>({0, 2, 4, 6}), Of<V>({1, 2, 3, 4}), Of<V>({1, 3, 5, 0.75, 2.75, 4.75, 5.25})),
            (Values{2, 3, 3, 1, 2, 3, 4}))
      << "a tie goes up, on the last border down";
}

TEST(NearestInterpolation, Interpolate_OnAndBetweenBorders_TakesTheNeighbour) {
  ExpectExamples<VecReal32>();
  ExpectExamples<VecReal64>();
}

TEST(NearestInterpolation, Interpolate_OfTwoPoints_TakesTheLowerOneOnTheirBorder) {
  EXPECT_EQ(Nearest(Of<VecReal64>({0, 1}), Of<VecReal64>({5, 6}), Of<VecReal64>({0.25, 0.5, 0.75})),
            (std::vector<double>{5, 5, 6}));
}

TEST(NearestInterpolation, Interpolate_OfOnePoint_GivesItsValueEverywhere) {
  EXPECT_EQ(Nearest(Of<VecReal32>({2}), Of<VecReal32>({7}), Of<VecReal32>({-9, 2, NAN})),
            (std::vector<float>{7, 7, 7}));
}

// y may be longer than x: above the last border its own last element is taken, on it the length of x counts.
TEST(NearestInterpolation, Interpolate_OfALongerY_TakesItsLastElementAtTheEnd) {
  EXPECT_EQ(
      Nearest(Of<VecReal64>({0, 1, 2}), Of<VecReal64>({1, 2, 3, 99}), Of<VecReal64>({1, 1.5, 1.75, NAN})),
      (std::vector<double>{2, 2, 99, 3}));
}

// The borders one rounding at a time, and the search as a scan from the top.
template <class T> T NearestByScan(const test::PointTable<T> &table, T v) {
  const std::size_t last = table.x.size() - 1;
  if (last == 0) return table.y[0];
  std::vector<T> b;
  for (std::size_t i = 0; i < last; ++i) b.push_back(Times(Plus(table.x[i], table.x[i + 1]), T{0.5}));
  if (v < b[0]) return table.y[0];
  if (v > b[last - 1]) return table.y[last];
  if (v == b[last - 1]) return table.y[last - 1];
  std::size_t i = last - 1;
  while (b[i] > v) --i;
  return table.y[i + 1];
}

template <class V> void ExpectNeighboursOfAScan() {
  using T = test::ElementOf<V>;
  NearestInterpolation nearest;
  V out;
  test::ForTables<T>([&](test::Order order, const test::PointTable<T> &table, const std::vector<T> &values) {
    ASSERT_EQ(nearest.Interpolate(out, Of<V>(table.x), Of<V>(table.y), Of<V>(values)), 0);
    ASSERT_EQ(out.GetSize(), static_cast<int>(values.size()));
    for (std::size_t j = 0; j < values.size(); ++j) {
      ASSERT_EQ(out[static_cast<int>(j)], NearestByScan(table, values[j]))
          << "at " << values[j] << ", order " << static_cast<int>(order) << ", points " << table.x.size();
    }
  });
}

TEST(NearestInterpolation, Interpolate_OfAnyTableAndAnyValue_IsThatOfAScanFromTheTop) {
  ExpectNeighboursOfAScan<VecReal32>();
  ExpectNeighboursOfAScan<VecReal64>();
}

// The sum of two large points overflows; the border is then infinite, and so below or above every value.
TEST(NearestInterpolation, Interpolate_OfPointsWhoseSumOverflows_StaysInTheTable) {
  constexpr float kMax = std::numeric_limits<float>::max();
  EXPECT_EQ(Nearest(Of<VecReal32>({-kMax, -kMax / 2, kMax / 2, kMax}), Of<VecReal32>({1, 2, 3, 4}),
                    Of<VecReal32>({-kMax, -1, 0, kMax, INFINITY})),
            (std::vector<float>{2, 2, 3, 3, 3}));
}

} // namespace
