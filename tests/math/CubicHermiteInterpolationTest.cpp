#include "qorn/math/CubicHermiteInterpolation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/Tables.h"
#include "support/Vectors.h"
#include "support/Wide.h"

namespace {

using namespace QORN;
using test::ExpectThrown;
using test::List;
using test::Minus;
using test::Of;
using test::Over;
using test::Plus;
using test::Times;

constexpr char kPath[] = "math\\CubicHermiteInterpolation";

template <class V> std::vector<test::ElementOf<V>> Curve(const V &x, const V &y, const V &values) {
  CubicHermiteInterpolation hermite;
  V out;
  EXPECT_EQ(hermite.Interpolate(out, x, y, values), 0);
  return List(out);
}

template <class V> void ExpectExamples() {
  using Values = std::vector<test::ElementOf<V>>;
  EXPECT_EQ(Curve(Of<V>({1, 3}), Of<V>({5, 9}), Of<V>({-1, 1, 2, 3, 7})), (Values{1, 5, 7, 9, 17}));
  // A step: flat, 3 t^2 - 2 t^3, flat.
  EXPECT_EQ(Curve(Of<V>({0, 1, 2, 3}), Of<V>({0, 0, 1, 1}), Of<V>({0, 0.5, 1, 1.25, 1.5, 1.75, 2, 2.5, 3})),
            (Values{0, 0, 0, 0.15625, 0.5, 0.84375, 1, 1, 1}));
  // A peak has the derivative 0; the ends have 2 and -2: 2 t - t^2.
  EXPECT_EQ(Curve(Of<V>({0, 1, 2}), Of<V>({0, 1, 0}), Of<V>({-1, 0.5, 0.75, 1, 1.25, 1.5, 3})),
            (Values{-3, 0.75, 0.9375, 1, 0.9375, 0.75, -3}));
}

TEST(CubicHermiteInterpolation, Interpolate_OfSmallTables_GivesTheirCubics) {
  ExpectExamples<VecReal32>();
  ExpectExamples<VecReal64>();
}

template <class V> void ExpectScipy(double bound) {
  for (const char *name : {"hermite", "hermite2", "hermite3"}) {
    auto curve = test::ReadCurve<V>(name);
    V out;
    CubicHermiteInterpolation hermite;
    if (name[7] != 0) curve.x.Truncate(0, name[7] - '0');
    ASSERT_EQ(hermite.Interpolate(out, curve.x, curve.y, curve.at), 0);
    test::ExpectCurve(out, curve, bound);
  }
}

TEST(CubicHermiteInterpolation, Interpolate_OfAnyShape_IsThatOfScipy) {
  ExpectScipy<VecReal32>(1.2e-7); // the points are exact: only the result is rounded
  ExpectScipy<VecReal64>(1e-13);
}

TEST(CubicHermiteInterpolation, Interpolate_OfMonotoneData_IsMonotone) {
  std::mt19937 random(3);
  for (int run = 0; run < 50; ++run) {
    auto table = test::MakeTable<double>(test::Order::kAscending, 20, random);
    for (double &y : table.y) y = std::floor(y / 20);
    std::sort(table.y.begin(), table.y.end());
    VecReal64 values;
    values.Ramp(2001, table.x.front(), (table.x.back() - table.x.front()) / 2000);
    const auto out = Curve(Of<VecReal64>(table.x), Of<VecReal64>(table.y), values);
    for (std::size_t j = 1; j < out.size(); ++j) ASSERT_GE(out[j], out[j - 1] - 1e-13) << run << ' ' << j;
    EXPECT_GE(out.front(), table.y.front() - 1e-13);
    EXPECT_LE(out.back(), table.y.back() + 1e-13);
  }
}

// The published routines step by step, with their walk through the values: positions count from 1, and a
// value to the left of the interval sends the walk back.
template <class T> struct Routines {
  std::vector<T> x, y;
  std::vector<double> d{};

  static double Sign(double a) { return a > 0 ? 1 : a < 0 ? -1 : 0; }
  static double Pchst(double a, double b) { return Sign(a) * Sign(b); }

  static double End(double h1, double hsum, double del1, double del2) {
    double d = Minus(Times(Over(Plus(h1, hsum), hsum), del1), Times(Over(h1, hsum), del2));
    if (Pchst(d, del1) <= 0) {
      d = 0;
    } else if (Pchst(del1, del2) < 0) {
      const double dmax = Times(3.0, del1);
      if (std::fabs(d) > std::fabs(dmax)) d = dmax;
    }
    return d;
  }

  void Set() {
    const std::size_t n = x.size();
    d.assign(n, 0);
    const auto h = [this](std::size_t i) { return static_cast<double>(Minus(x[i + 1], x[i])); };
    const auto del = [this, h](std::size_t i) {
      return Over(static_cast<double>(Minus(y[i + 1], y[i])), h(i));
    };
    if (n == 2) {
      d[0] = d[1] = del(0);
      return;
    }
    d[0] = End(h(0), Plus(h(0), h(1)), del(0), del(1));
    for (std::size_t i = 1; i + 1 < n; ++i) {
      const double h1 = h(i - 1), h2 = h(i), del1 = del(i - 1), del2 = del(i), hsum = Plus(h1, h2);
      if (Pchst(del1, del2) <= 0) continue;
      const double t = Times(3.0, hsum), w1 = Over(Plus(hsum, h1), t), w2 = Over(Plus(hsum, h2), t);
      const double dmax = std::max(std::fabs(del1), std::fabs(del2));
      const double dmin = std::min(std::fabs(del1), std::fabs(del2));
      d[i] = Over(dmin, Plus(Times(w1, Over(del1, dmax)), Times(w2, Over(del2, dmax))));
    }
    d[n - 1] = End(h(n - 2), Plus(h(n - 2), h(n - 3)), del(n - 2), del(n - 3));
  }

  static T At(double x1, double x2, double f1, double f2, double d1, double d2, T v, int *next) {
    const double h = Minus(x2, x1), delta = Over(Minus(f2, f1), h);
    const double del1 = Over(Minus(d1, delta), h), del2 = Over(Minus(d2, delta), h);
    const double c2 = -Plus(Plus(del1, del1), del2), c3 = Over(Plus(del1, del2), h);
    const double t = Minus(static_cast<double>(v), x1);
    if (t < (0.0 > h ? h : 0.0)) ++next[0];
    if (t > (0.0 > h ? 0.0 : h)) ++next[1];
    return static_cast<T>(Plus(f1, Times(t, Plus(d1, Times(t, Plus(c2, Times(t, c3)))))));
  }

  std::vector<T> Walk(const std::vector<T> &xe) const {
    const auto n = static_cast<int>(x.size()), ne = static_cast<int>(xe.size());
    std::vector<T> ye(xe.size());
    const auto at = [](const auto &list, int position) {
      return list[static_cast<std::size_t>(position - 1)];
    };
    int j = 1, ir = 2;
    while (ir <= n && j <= ne) {
      int j2 = j;
      while (j2 <= ne && !(at(xe, j2) >= at(x, ir))) ++j2;
      if (ir == n) j2 = ne + 1;
      if (j2 > j) {
        int next[2] = {0, 0};
        for (int k = j; k < j2; ++k) {
          ye[static_cast<std::size_t>(k - 1)] =
              At(static_cast<double>(at(x, ir - 1)), static_cast<double>(at(x, ir)),
                 static_cast<double>(at(y, ir - 1)), static_cast<double>(at(y, ir)), at(d, ir - 1), at(d, ir),
                 at(xe, k), next);
        }
        EXPECT_FALSE(next[1] > 0 && ir < n);
        if (next[0] > 0 && ir >= 3) {
          int back = j;
          while (!(at(xe, back) < at(x, ir - 1))) ++back;
          j2 = back;
          int position = 1;
          while (!(at(x, position) > at(xe, j2))) ++position;
          ir = std::max(position - 1, 1);
        }
      }
      j = j2;
      ++ir;
    }
    return ye;
  }
};

template <class V> void ExpectPublishedRoutines() {
  using T = test::ElementOf<V>;
  CubicHermiteInterpolation hermite;
  V out;
  test::ForTables<T>([&](test::Order order, const test::PointTable<T> &table, const std::vector<T> &values) {
    if (table.x.size() < 2) return;
    const V x = Of<V>(table.x), y = Of<V>(table.y), at = Of<V>(values);
    bool refused = false;
    for (std::size_t i = 0; i + 1 < table.x.size(); ++i) refused |= table.x[i] >= table.x[i + 1];
    if (refused) {
      ExpectThrown([&] { hermite.Interpolate(out, x, y, at); }, 10002, "invalid input parameter", kPath);
      return;
    }
    Routines<T> routines{table.x, table.y};
    routines.Set();
    const std::vector<T> expected = routines.Walk(values);
    ASSERT_EQ(hermite.Interpolate(out, x, y, at), 0);
    ASSERT_EQ(out.GetSize(), static_cast<int>(values.size()));
    for (std::size_t j = 0; j < values.size(); ++j) {
      const T got = out[static_cast<int>(j)];
      ASSERT_TRUE(test::SameBits(got, expected[j]))
          << got << " for " << expected[j] << " at " << values[j] << ", order " << static_cast<int>(order)
          << ", points " << table.x.size();
    }
  });
}

TEST(CubicHermiteInterpolation, Interpolate_OfAnyTableAndAnyValue_FollowsTheRoutinesBitForBit) {
  ExpectPublishedRoutines<VecReal32>();
  ExpectPublishedRoutines<VecReal64>();
}

// A float table's neighbours are subtracted in float.
TEST(CubicHermiteInterpolation, Interpolate_OfFloats_FormsTheDifferencesInFloat) {
  const auto x = Of<VecReal32>({0.1F, 1.0F / 3, 16777216.0F}), y = Of<VecReal32>({0.7F, 1.1F, 3e7F});
  Routines<float> routines{List(x), List(y)};
  routines.Set();
  Routines<double> wide{{x[0], x[1], x[2]}, {y[0], y[1], y[2]}};
  wide.Set();
  ASSERT_NE(routines.d, wide.d);
  const auto values = Of<VecReal32>({0.2F, 5.0F, 1e6F, 1.6e7F});
  EXPECT_EQ(Curve(x, y, values), routines.Walk(List(values)));
}

template <class V> void ExpectSameInAnyOrder() {
  using T = test::ElementOf<V>;
  std::mt19937 random(8);
  const auto table = test::MakeTable<T>(test::Order::kAscending, 40, random);
  const auto values = test::MakeValues(table, 900, true, random);
  const auto up = Curve(Of<V>(table.x), Of<V>(table.y), Of<V>(values));
  const auto down = Curve(Of<V>(table.x), Of<V>(table.y), Of<V>({values.rbegin(), values.rend()}));
  for (std::size_t j = 0; j < up.size(); ++j)
    EXPECT_TRUE(test::SameBits(up[j], down[up.size() - 1 - j])) << j;
}

TEST(CubicHermiteInterpolation, Interpolate_OfDescendingValues_IsThatOfAscendingOnes) {
  ExpectSameInAnyOrder<VecReal32>();
  ExpectSameInAnyOrder<VecReal64>();
}

// A missing y spoils its two intervals; what lies further takes it for a flat stretch at the next point.
TEST(CubicHermiteInterpolation, Interpolate_OfNotANumberInY_SpoilsItsIntervalsOnly) {
  const auto out = Curve(Of<VecReal64>({0, 1, 2, 3, 4}), Of<VecReal64>({0, 1, NAN, 3, 4}),
                         Of<VecReal64>({0.5, 1.5, 2.5, 3.5}));
  EXPECT_TRUE(std::isfinite(out[0]));
  EXPECT_TRUE(std::isnan(out[1]));
  EXPECT_TRUE(std::isnan(out[2]));
  EXPECT_TRUE(std::isfinite(out[3]));
}

template <class V> void ExpectErrors() {
  CubicHermiteInterpolation hermite;
  const char *const parameter = "invalid input parameter", *const fatal = "CubicHermiteInterpolation error";
  const V values = Of<V>({0, 1});
  V out(5);
  const auto call = [&](const V &x, const V &y) {
    return [&hermite, &out, &values, x, y] { hermite.Interpolate(out, x, y, values); };
  };
  ExpectThrown(call(Of<V>({0, 0, 1}), Of<V>({1, 2, 3})), 10002, parameter, kPath);
  ExpectThrown(call(Of<V>({0, 1, 1}), Of<V>({1, 2, 3})), 10002, parameter, kPath);
  ExpectThrown(call(Of<V>({0, 2, 1}), Of<V>({1, 2, 3})), 10002, parameter, kPath);
  ExpectThrown(call(Of<V>({0, 1, 2}), Of<V>({1, 2})), 10002, parameter, kPath);
  EXPECT_EQ(out.GetSize(), 5) << "untouched";
  ExpectThrown(call(Of<V>({0}), Of<V>({1})), 12005, fatal, kPath);
  EXPECT_EQ(out.GetSize(), 2) << "already resized";
  ExpectThrown(call(V(), V()), 12005, fatal, kPath);
  test::ElementOf<V> one = 7;
  const test::ElementOf<V> at = 0;
  ExpectThrown([&] { hermite.Interpolate(one, Of<V>({3, 3}), Of<V>({1, 1}), at); }, 10002, parameter, kPath);
  ExpectThrown([&] { hermite.Interpolate(one, Of<V>({3}), Of<V>({1}), at); }, 12005, fatal, kPath);
  EXPECT_EQ(one, 7);
  EXPECT_EQ(hermite.Interpolate(out, Of<V>({0, 1}), Of<V>({1, 2}), V()), 0);
  EXPECT_EQ(out.GetSize(), 0);
}

TEST(CubicHermiteInterpolation, Interpolate_OfABadTable_Throws) {
  ExpectErrors<VecReal32>();
  ExpectErrors<VecReal64>();
}

// The buffer serves both precisions and never shrinks.
TEST(CubicHermiteInterpolation, Interpolate_OfSmallerTables_KeepsTheBuffer) {
  CubicHermiteInterpolation hermite;
  VecReal64 x, out(3);
  x.Ramp(100);
  VecReal32 f(x), outF(3);
  const auto few = Of<VecReal64>({0, 1, 2});
  const VecReal32 fewF(few);
  hermite.Interpolate(out, x, x, few);
  const long before = test::AllocationCount();
  hermite.Interpolate(out, few, few, few);
  hermite.Interpolate(out, x, x, few);
  hermite.Interpolate(outF, f, f, fewF);
  EXPECT_EQ(test::AllocationCount(), before);
  EXPECT_EQ(List(outF), (std::vector<float>{0, 1, 2}));
}

} // namespace
