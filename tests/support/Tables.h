// Tables to interpolate in, regular and hostile ones, and the values to look up in them.
#ifndef QORN_TESTS_SUPPORT_TABLES_H
#define QORN_TESTS_SUPPORT_TABLES_H

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "support/Csv.h"
#include "support/Vectors.h"

namespace QORN::test {

/// Equal in every bit, the sign of zero too; one not-a-number is like another.
template <class T> bool SameBits(T a, T b) {
  using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
  return (std::isnan(a) && std::isnan(b)) || std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b);
}

enum class Order { kAscending, kEqualNeighbours, kShuffled, kDescending, kNotANumber, kInfiniteEnds };

inline constexpr Order kAllOrders[] = {Order::kAscending,  Order::kEqualNeighbours, Order::kShuffled,
                                       Order::kDescending, Order::kNotANumber,      Order::kInfiniteEnds};

template <class T> struct PointTable { std::vector<T> x, y; };

/// n points, x multiples of 1/4 in the given order.
template <class T> PointTable<T> MakeTable(Order order, int n, std::mt19937 &random) {
  PointTable<T> table;
  T x = static_cast<T>(static_cast<int>(random() % 40)) / 4 - 5;
  for (int i = 0; i < n; ++i) {
    const int least = order == Order::kEqualNeighbours ? 0 : 1;
    x += static_cast<T>(least + static_cast<int>(random() % 4)) / 4;
    table.x.push_back(x);
    table.y.push_back(static_cast<T>(static_cast<int>(random() % 2001) - 1000) / 7);
  }
  if (order == Order::kShuffled) std::shuffle(table.x.begin(), table.x.end(), random);
  if (order == Order::kDescending) std::reverse(table.x.begin(), table.x.end());
  if (order == Order::kNotANumber) {
    for (int k = 0; k <= n / 8; ++k) {
      table.x[random() % table.x.size()] = std::numeric_limits<T>::quiet_NaN();
    }
  }
  if (order == Order::kInfiniteEnds && n > 1) {
    table.x.front() = -std::numeric_limits<T>::infinity();
    table.x.back() = std::numeric_limits<T>::infinity();
  }
  return table;
}

/// Values on the points of a table, between them, beside it and none at all; ascending if asked for.
template <class T>
std::vector<T> MakeValues(const PointTable<T> &table, int count, bool ascending, std::mt19937 &random) {
  std::vector<T> values;
  const auto size = static_cast<int>(table.x.size());
  for (int j = 0; j < count; ++j) {
    const auto steps = static_cast<T>(static_cast<int>(random() % 8U)) / 8;
    const T x = table.x[static_cast<std::size_t>(random() % static_cast<unsigned>(size))];
    switch (random() % 16) {
    case 0:
      values.push_back(std::numeric_limits<T>::infinity());
      break;
    case 1:
      values.push_back(-std::numeric_limits<T>::infinity());
      break;
    case 2:
      values.push_back(std::numeric_limits<T>::quiet_NaN());
      break;
    case 3:
      values.push_back(static_cast<T>(-9 - j % 5));
      break;
    case 4:
      values.push_back(static_cast<T>(2 * size + j % 5));
      break;
    default:
      values.push_back(x + steps);
    }
  }
  if (ascending) {
    for (T &v : values) {
      if (std::isnan(v)) v = 0;
    }
    std::sort(values.begin(), values.end());
  }
  return values;
}

/// Runs check(order, table, values) over orders, lengths on both sides of what a search takes in one step,
/// and values in both orders.
template <class T, class Check> void ForTables(Check check) {
  std::mt19937 random(20250611);
  for (const Order order : kAllOrders) {
    for (const int n : {1, 2, 3, 4, 5, 7, 8, 16, 33, 64, 65, 66, 129, 300}) {
      for (const int count : {1, 7, 8, 9, 24, 255, 257, 600}) {
        for (const bool ascending : {false, true}) {
          const PointTable<T> table = MakeTable<T>(order, n, random);
          check(order, table, MakeValues(table, count, ascending, random));
        }
      }
    }
  }
}

/// The points, and the values of one curve, of tests/data/interpolation.csv.
template <class V> struct Curve { V x, y, at, expected; };

template <class V> Curve<V> ReadCurve(const std::string &name) {
  using T = ElementOf<V>;
  std::vector<T> x, y, at, expected;
  for (const std::vector<std::string> &row : ReadCsv("interpolation.csv")) {
    const auto first = static_cast<T>(std::strtod(row.at(2).c_str(), nullptr));
    const auto second = static_cast<T>(std::strtod(row.at(3).c_str(), nullptr));
    if (row[0] == "table") {
      x.push_back(first);
      y.push_back(second);
    } else if (row[0] == name) {
      at.push_back(first);
      expected.push_back(second);
    }
  }
  return {Of<V>(x), Of<V>(y), Of<V>(at), Of<V>(expected)};
}

/// Every value of the curve is met within the bound, times its magnitude where that is above 1.
template <class V> void ExpectCurve(const V &got, const Curve<V> &curve, double bound) {
  ASSERT_GT(curve.expected.GetSize(), 100);
  ASSERT_EQ(got.GetSize(), curve.expected.GetSize());
  for (int j = 0; j < got.GetSize(); ++j) {
    const auto expected = static_cast<double>(curve.expected[j]);
    EXPECT_NEAR(static_cast<double>(got[j]), expected, bound * std::max(1.0, std::fabs(expected)))
        << "at " << curve.at[j];
  }
}

} // namespace QORN::test

#endif
