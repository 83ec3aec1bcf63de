#include "qorn/math/Spline.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "support/Allocations.h"
#include "support/Tables.h"
#include "support/Vectors.h"
#include "support/Wide.h"

namespace {

using namespace QORN;
using test::AllocationCount;
using test::List;
using test::Minus;
using test::Of;
using test::Over;
using test::Plus;
using test::Times;

struct OpenSpline : Spline {
  using Spline::SplineInit;
  using Spline::Splint;
};

template <class V>
std::vector<test::ElementOf<V>> SecondDerivatives(OpenSpline &spline, const V &x, const V &y) {
  std::vector<test::ElementOf<V>> y2(static_cast<std::size_t>(x.GetSize()), 99);
  EXPECT_TRUE(spline.SplineInit(x.GetSize(), x, y, y2.data()));
  return y2;
}

template <class T>
void ExpectNear(const std::vector<T> &got, const std::vector<double> &expected, double bound) {
  ASSERT_EQ(got.size(), expected.size());
  for (std::size_t i = 0; i < got.size(); ++i) {
    EXPECT_NEAR(static_cast<double>(got[i]), expected[i], bound) << i;
  }
}

// The same curve by other means: the continuity of the first derivative gives a row for each point, a full
// elimination solves them, and the cubics are evaluated from their Taylor coefficients.

using test::Quad;

struct Reference {
  std::vector<Quad> x, y, m; // m: second derivatives
  Quad operator()(Quad v) const {
    std::size_t i = 0;
    while (i + 2 < x.size() && v >= x[i + 1]) ++i;
    const Quad h = x[i + 1] - x[i], t = v - x[i];
    const Quad slope = (y[i + 1] - y[i]) / h - h * (2 * m[i] + m[i + 1]) / 6;
    return y[i] + t * (slope + t * (m[i] / 2 + t * (m[i + 1] - m[i]) / (6 * h)));
  }
};

constexpr double kNatural = 1e31;

template <class T>
Reference Solve(const std::vector<T> &x, const std::vector<T> &y, double first, double last) {
  Reference r;
  for (const T v : x) r.x.push_back(static_cast<Quad>(v));
  for (const T v : y) r.y.push_back(static_cast<Quad>(v));
  const std::size_t n = x.size();
  std::vector<std::vector<Quad>> a(n, std::vector<Quad>(n + 1, 0));
  const auto h = [&r](std::size_t i) { return r.x[i + 1] - r.x[i]; };
  const auto d = [&r, h](std::size_t i) { return (r.y[i + 1] - r.y[i]) / h(i); };
  a[0][0] = a[n - 1][n - 1] = 1;
  if (first < kNatural) {
    a[0][0] = 2 * h(0);
    a[0][1] = h(0);
    a[0][n] = 6 * (d(0) - static_cast<Quad>(first));
  }
  if (last < kNatural) {
    a[n - 1][n - 2] = h(n - 2);
    a[n - 1][n - 1] = 2 * h(n - 2);
    a[n - 1][n] = 6 * (static_cast<Quad>(last) - d(n - 2));
  }
  for (std::size_t i = 1; i + 1 < n; ++i) {
    a[i][i - 1] = h(i - 1);
    a[i][i] = 2 * (h(i - 1) + h(i));
    a[i][i + 1] = h(i);
    a[i][n] = 6 * (d(i) - d(i - 1));
  }
  for (std::size_t k = 0; k < n; ++k) { // the rows' own entries dominate: no pivoting
    for (std::size_t i = 0; i < n; ++i) {
      if (i == k) continue;
      const Quad factor = a[i][k] / a[k][k];
      for (std::size_t c = k; c <= n; ++c) a[i][c] -= factor * a[k][c];
    }
  }
  for (std::size_t i = 0; i < n; ++i) r.m.push_back(a[i][n] / a[i][i]);
  return r;
}

// The system is well conditioned: a row's own entry is at least twice the sum of the others. So the bound is
// a small multiple of the rounding of the slopes, times the largest value.
template <class V> void ExpectDirectSolution(double eps) {
  using T = test::ElementOf<V>;
  std::mt19937 random(77);
  OpenSpline spline;
  V out;
  for (int n = 2; n <= 24; ++n) {
    for (const double first : {kNatural, 0.0, -3.5}) {
      for (const double last : {kNatural, 2.25}) {
        const auto table = test::MakeTable<T>(test::Order::kAscending, n, random);
        spline.SetBoundaryCondition1(first);
        spline.SetBoundaryCondition2(last);
        const Reference reference = Solve(table.x, table.y, first, last);
        const V x = Of<V>(table.x), y = Of<V>(table.y);
        const std::vector<T> y2 = SecondDerivatives(spline, x, y);
        for (std::size_t i = 0; i < y2.size(); ++i) {
          EXPECT_NEAR(static_cast<double>(y2[i]), static_cast<double>(reference.m[i]), 2e5 * eps)
              << n << ' ' << i;
        }
        V values(200);
        const T step = (table.x.back() - table.x.front() + 1) / 199;
        for (int j = 0; j < 200; ++j) values[j] = table.x.front() - T{0.5} + static_cast<T>(j) * step;
        ASSERT_EQ(spline.Interpolate(out, x, y, values), 0);
        for (int j = 0; j < 200; ++j) {
          const auto expected = static_cast<double>(reference(static_cast<Quad>(T{values[j]})));
          EXPECT_NEAR(static_cast<double>(out[j]), expected, 2e4 * eps) << n << " at " << values[j];
        }
      }
    }
  }
}

TEST(Spline, Interpolate_OfRandomTables_IsTheDirectSolution) {
  ExpectDirectSolution<VecReal32>(1.2e-7);
  ExpectDirectSolution<VecReal64>(2.3e-16);
}

template <class V> void ExpectScipy(double bound) {
  const struct {
    const char *name;
    double first, last;
  } curves[] = {{"natural", kNatural, kNatural},
                {"clamped", 0.75, -2.5},
                {"clampedfirst", 3.0, kNatural},
                {"clampedlast", kNatural, 1.25}};
  for (const auto &c : curves) {
    const auto curve = test::ReadCurve<V>(c.name);
    Spline spline;
    spline.SetBoundaryCondition1(c.first);
    spline.SetBoundaryCondition2(c.last);
    V out;
    ASSERT_EQ(spline.Interpolate(out, curve.x, curve.y, curve.at), 0);
    test::ExpectCurve(out, curve, bound);
  }
}

TEST(Spline, Interpolate_WithEitherEnd_IsThatOfScipy) {
  ExpectScipy<VecReal32>(2e-4); // the cubics beyond the ends amplify the rounding of the second derivatives
  ExpectScipy<VecReal64>(1e-12);
}

template <class V> void ExpectExamples() {
  using Values = std::vector<test::ElementOf<V>>;
  OpenSpline spline;
  const auto x = Of<V>({0, 1, 2}), y = Of<V>({0, 1, 0});
  EXPECT_EQ(SecondDerivatives(spline, x, y), (Values{0, -3, 0}));
  spline.SetBoundaryCondition1(0.0);
  ExpectNear(SecondDerivatives(spline, x, y), {36.0 / 7, -30.0 / 7, 0}, 1e-6);
  spline.SetBoundaryCondition2(0.0);
  ExpectNear(SecondDerivatives(spline, x, y), {6, -6, 6}, 1e-6);
  spline.SetNaturalSpline();
  EXPECT_EQ(SecondDerivatives(spline, x, y), (Values{0, -3, 0}));
}

TEST(Spline, SplineInit_OfThreePoints_GivesTheSecondDerivatives) {
  ExpectExamples<VecReal32>();
  ExpectExamples<VecReal64>();
}

// The threshold itself does not count as natural.
TEST(Spline, SetBoundaryCondition_OfExactlyTheThreshold_IsALargeDerivative) {
  OpenSpline spline;
  const auto x = Of<VecReal64>({0, 1, 2}), y = Of<VecReal64>({0, 1, 0});
  spline.SetBoundaryCondition1(1e30);
  EXPECT_LT(SecondDerivatives(spline, x, y)[0], -1e30);
  spline.SetBoundaryCondition1(std::nextafter(1e30, 2e30));
  EXPECT_EQ(SecondDerivatives(spline, x, y)[0], 0.0);
  spline.SetNaturalSpline();
  spline.SetBoundaryCondition2(1e30);
  EXPECT_GT(SecondDerivatives(spline, x, y)[2], 1e30);
  spline.SetBoundaryCondition2(std::nextafter(1e30, 2e30));
  EXPECT_EQ(SecondDerivatives(spline, x, y)[2], 0.0);
}

// A given end has the derivative that was asked for; a line through both is the spline of its own points.
TEST(Spline, SetBoundaryCondition_OfALine_GivesTheLine) {
  Spline spline;
  VecReal64 out;
  spline.SetBoundaryCondition1(2.0);
  spline.SetBoundaryCondition2(2.0);
  ASSERT_EQ(
      spline.Interpolate(out, Of<VecReal64>({0, 1, 4}), Of<VecReal64>({1, 3, 9}), Of<VecReal64>({-2, 2, 7})),
      0);
  EXPECT_EQ(List(out), (std::vector<double>{-3, 5, 15}));
}

// The stated steps, each rounded by itself to the type that it has; the search with its bracket.
template <class T> struct Steps {
  double first = kNatural, last = kNatural;
  int low = 0, high = 0;

  static double D(T x) { return static_cast<double>(x); }

  std::vector<T> Init(const std::vector<T> &x, const std::vector<T> &y) {
    const std::size_t n = x.size();
    std::vector<T> y2(n), u(n);
    const auto slope = [&](std::size_t i) { return Over(Minus(y[i + 1], y[i]), Minus(x[i + 1], x[i])); };
    if (first <= 1e30) {
      y2[0] = static_cast<T>(-0.5);
      u[0] = static_cast<T>(Times(Over(3.0, D(Minus(x[1], x[0]))), Minus(D(slope(0)), first)));
    }
    for (std::size_t i = 1; i + 1 < n; ++i) {
      const T span = Minus(x[i + 1], x[i - 1]);
      const T s = Over(Minus(x[i], x[i - 1]), span);
      const auto p = static_cast<T>(Plus(D(Times(s, y2[i - 1])), 2.0));
      y2[i] = static_cast<T>(Over(Minus(D(s), 1.0), D(p)));
      const T w = Minus(slope(i), slope(i - 1));
      const double bend = Over(Times(6.0, D(w)), D(span));
      u[i] = static_cast<T>(Over(Minus(bend, D(Times(s, u[i - 1]))), D(p)));
    }
    T q = 0, e = 0;
    if (last <= 1e30) {
      q = static_cast<T>(0.5);
      e = static_cast<T>(Times(Over(3.0, D(Minus(x[n - 1], x[n - 2]))), Minus(last, D(slope(n - 2)))));
    }
    y2[n - 1] = static_cast<T>(Over(D(Minus(e, Times(q, u[n - 2]))), Plus(D(Times(q, y2[n - 2])), 1.0)));
    for (std::size_t k = n - 1; k-- > 0;) y2[k] = Plus(Times(y2[k], y2[k + 1]), u[k]);
    low = high = 0;
    return y2;
  }

  T At(const std::vector<T> &x, const std::vector<T> &y, const std::vector<T> &y2, T v) {
    const int n = static_cast<int>(x.size());
    const auto X = [&x](int i) { return x[static_cast<std::size_t>(i)]; };
    if (low == 0 && high == 0) {
      high = n - 1;
    } else if (high < n - 2) {
      high += 2;
    } else {
      high = n - 1;
      low = low > 2 ? low - 2 : 0;
    }
    if ((X(low) > v && X(high) > v) || (v > X(low) && v > X(high))) {
      low = 0;
      high = n - 1;
    }
    while (high - low > 1) {
      const int k = (high + low) / 2;
      (X(k) > v ? high : low) = k;
    }
    const auto l = static_cast<std::size_t>(low), g = static_cast<std::size_t>(high);
    const T h = Minus(x[g], x[l]);
    if (h == 0) return y[g];
    const T a = Over(Minus(x[g], v), h), b = Over(Minus(v, x[l]), h);
    const auto cubic = [](T c) { return Minus(Times(Times(c, c), c), c); };
    const T bend = Times(Plus(Times(cubic(b), y2[g]), Times(cubic(a), y2[l])), Times(h, h));
    return static_cast<T>(Plus(Over(D(bend), 6.0), D(Plus(Times(y[g], b), Times(y[l], a)))));
  }
};

template <class V> void ExpectStatedSteps() {
  using T = test::ElementOf<V>;
  OpenSpline spline;
  Steps<T> steps;
  V out;
  int run = 0;
  test::ForTables<T>([&](test::Order order, const test::PointTable<T> &table, const std::vector<T> &values) {
    if (table.x.size() < 2) return;
    ++run;
    steps.first = run % 3 == 0 ? 1.7 : kNatural;
    steps.last = run % 5 == 0 ? -0.3 : kNatural;
    spline.SetBoundaryCondition1(steps.first);
    spline.SetBoundaryCondition2(steps.last);
    const V x = Of<V>(table.x), y = Of<V>(table.y);
    const std::vector<T> expected = steps.Init(table.x, table.y), y2 = SecondDerivatives(spline, x, y);
    for (std::size_t i = 0; i < y2.size(); ++i) {
      ASSERT_TRUE(test::SameBits(y2[i], expected[i])) << y2[i] << ' ' << expected[i] << ' ' << i;
    }
    ASSERT_EQ(spline.Interpolate(out, x, y, Of<V>(values)), 0);
    for (std::size_t j = 0; j < values.size(); ++j) {
      const T at = steps.At(table.x, table.y, expected, values[j]), got = out[static_cast<int>(j)];
      ASSERT_TRUE(test::SameBits(got, at)) << got << " for " << at << " at " << values[j] << ", order "
                                           << static_cast<int>(order) << ", points " << table.x.size();
    }
    // One value after another, from the bracket that the last one left.
    steps.low = steps.high = 0;
    EXPECT_TRUE(spline.SplineInit(x.GetSize(), x, y, std::vector<T>(y2).data()));
    for (std::size_t j = 0; j < values.size() && j < 40; ++j) {
      const T at = steps.At(table.x, table.y, expected, values[j]);
      const T got = spline.Splint(x.GetSize(), x, y, y2.data(), values[j]);
      ASSERT_TRUE(test::SameBits(got, at)) << got << " for " << at << " at " << values[j];
    }
  });
}

TEST(Spline, Interpolate_OfAnyTableAndAnyValue_FollowsTheStepsBitForBit) {
  ExpectStatedSteps<VecReal32>();
  ExpectStatedSteps<VecReal64>();
}

template <class V> void ExpectPointsMet(double bound) {
  std::mt19937 random(5);
  using T = test::ElementOf<V>;
  const auto table = test::MakeTable<T>(test::Order::kAscending, 100, random);
  Spline spline;
  V out;
  ASSERT_EQ(spline.Interpolate(out, Of<V>(table.x), Of<V>(table.y), Of<V>(table.x)), 0);
  for (int i = 0; i < 100; ++i) {
    EXPECT_NEAR(static_cast<double>(out[i]), static_cast<double>(table.y[static_cast<std::size_t>(i)]),
                bound);
  }
}

TEST(Spline, Interpolate_AtThePoints_GivesTheirValues) {
  ExpectPointsMet<VecReal32>(1e-4);
  ExpectPointsMet<VecReal64>(1e-13);
}

// On the first interval of {0, 1, 2}, {0, 1, 0} the natural spline is 1.5 v - 0.5 v^3.
TEST(Spline, Interpolate_OutsideTheTable_GoesOnWithTheEndCubics) {
  Spline spline;
  VecReal64 out;
  spline.Interpolate(out, Of<VecReal64>({0, 1, 2}), Of<VecReal64>({0, 1, 0}), Of<VecReal64>({-2, -1, 3, 4}));
  EXPECT_EQ(List(out), (std::vector<double>{1, -1, -1, 1}));
}

TEST(Spline, Interpolate_OfFewPoints_IsALineOrAConstant) {
  Spline spline;
  VecReal64 out;
  EXPECT_EQ(spline.Interpolate(out, Of<VecReal64>({1, 3}), Of<VecReal64>({5, 9}), Of<VecReal64>({0, 2, 4})),
            0);
  EXPECT_EQ(List(out), (std::vector<double>{3, 7, 11}));
  EXPECT_EQ(spline.Interpolate(out, Of<VecReal64>({1}), Of<VecReal64>({5}), Of<VecReal64>({0, 1, NAN})), 0);
  EXPECT_EQ(List(out), (std::vector<double>{5, 5, 5}));
  spline.SetBoundaryCondition1(1.0);
  spline.SetBoundaryCondition2(1.0);
  EXPECT_EQ(spline.Interpolate(out, Of<VecReal64>({1}), Of<VecReal64>({5}), Of<VecReal64>({0})), 0);
  EXPECT_EQ(List(out), (std::vector<double>{5}));
  VecReal32 one;
  EXPECT_EQ(spline.Interpolate(one, Of<VecReal32>({1}), Of<VecReal32>({5}), Of<VecReal32>({0})), 0);
  EXPECT_EQ(List(one), (std::vector<float>{5}));
}

TEST(Spline, Splint_OnAnIntervalWithoutWidth_GivesTheUpperValue) {
  OpenSpline spline;
  const auto x = Of<VecReal64>({1, 1}), y = Of<VecReal64>({5, 6});
  const double y2[] = {0, 0};
  EXPECT_EQ(spline.Splint(2, x, y, y2, 1.0), 6.0);
  EXPECT_EQ(spline.Splint(2, x, y, y2, -3.0), 6.0);
  const auto f = Of<VecReal32>({1, 1}), g = Of<VecReal32>({5, 6});
  const float f2[] = {0, 0};
  EXPECT_EQ(spline.Splint(2, f, g, f2, 1.0F), 6.0F);
}

// The interval of a value in a long table means nothing in a short one, and does no harm there.
TEST(Spline, Splint_AfterALongerTable_FindsTheIntervalOfTheShorterOne) {
  VecReal32 x, y(1000), table, shortTable, out;
  x.Ramp(1000);
  const auto shortX = Of<VecReal32>({0, 1, 2}), shortY = Of<VecReal32>({0, 1, 0});
  Spline spline, fresh;
  ASSERT_TRUE(fresh.MakeSplineTable(shortTable, shortY, shortX));
  ASSERT_TRUE(spline.MakeSplineTable(table, y, x));
  for (const float late : {1.5F, 2.5F, 997.5F, 999.5F}) {
    for (const float v : {-1.0F, 0.0F, 0.5F, 1.0F, 1.75F, 2.0F, 5.0F}) {
      spline.Interpolate(late, y, x, table);
      EXPECT_EQ(spline.Interpolate(v, shortY, shortX, shortTable),
                fresh.Interpolate(v, shortY, shortX, shortTable))
          << late << ' ' << v;
      const auto one = Of<VecReal32>({3}), oneY = Of<VecReal32>({8}), oneTable = Of<VecReal32>({0});
      spline.Interpolate(late, y, x, table);
      EXPECT_EQ(spline.Interpolate(v, oneY, one, oneTable), 8.0F);
    }
  }
}

// Tables that are made once.

TEST(Spline, MakeSplineTable_OfPoints_ServesLikeTheWholeCalculation) {
  std::mt19937 random(9);
  const auto points = test::MakeTable<float>(test::Order::kAscending, 50, random);
  const auto x = Of<VecReal32>(points.x), y = Of<VecReal32>(points.y);
  for (const bool ascending : {false, true}) {
    const auto values = Of<VecReal32>(test::MakeValues(points, 700, ascending, random));
    OpenSpline spline;
    spline.SetBoundaryCondition1(-1.5);
    VecReal32 table, whole, byTable;
    ASSERT_TRUE(spline.MakeSplineTable(table, y, x));
    EXPECT_EQ(List(table), SecondDerivatives(spline, x, y));
    ASSERT_EQ(spline.Interpolate(whole, x, y, values), 0);
    EXPECT_TRUE(spline.Interpolate(byTable, values, y, x, table));
    ASSERT_EQ(byTable.GetSize(), 700);
    for (int j = 0; j < 700; ++j) {
      EXPECT_TRUE(test::SameBits(byTable[j], whole[j])) << j;
      EXPECT_TRUE(test::SameBits(spline.Interpolate(values[j], y, x, table), whole[j])) << j;
    }
  }
}

TEST(Spline, MakeSplineTable_OfExchangedArguments_GivesAnotherTableWithoutAnError) {
  Spline spline;
  const auto x = Of<VecReal32>({0, 1, 2}), y = Of<VecReal32>({0, 1, 0});
  VecReal32 table, exchanged;
  EXPECT_TRUE(spline.MakeSplineTable(table, y, x));
  EXPECT_TRUE(spline.MakeSplineTable(exchanged, x, y));
  EXPECT_EQ(List(table), (std::vector<float>{0, -3, 0}));
  ASSERT_EQ(exchanged.GetSize(), 3);
  EXPECT_NE(List(exchanged), List(table));
}

TEST(Spline, MakeSplineTable_IntoOneOfItsSources_StillReadsThem) {
  Spline spline;
  const auto x = Of<VecReal32>({0, 1, 2});
  auto y = Of<VecReal32>({0, 1, 0});
  EXPECT_TRUE(spline.MakeSplineTable(y, y, x));
  EXPECT_EQ(List(y), (std::vector<float>{0, -3, 0}));
}

TEST(Spline, MakeSplineTable_OfTooFewPoints_StaysInItsVectors) {
  Spline spline;
  auto table = Of<VecReal32>({7});
  const auto one = Of<VecReal32>({1}), two = Of<VecReal32>({1, 2});
  EXPECT_FALSE(spline.MakeSplineTable(table, one, two)) << "y is shorter than x";
  EXPECT_EQ(List(table), (std::vector<float>{7}));
  EXPECT_TRUE(spline.MakeSplineTable(table, one, one));
  EXPECT_EQ(List(table), (std::vector<float>{0}));
  EXPECT_TRUE(spline.MakeSplineTable(table, VecReal32(), VecReal32()));
  EXPECT_EQ(table.GetSize(), 0);
}

TEST(Spline, Interpolate_WithATableThatDoesNotFit_IsNotANumber) {
  Spline spline;
  const auto one = Of<VecReal32>({1}), two = Of<VecReal32>({1, 2});
  const VecReal32 none;
  const VecReal32 *cases[][3] = {{&two, &two, &one}, {&one, &two, &two}, {&none, &none, &none}};
  for (const auto &c : cases) {
    VecReal32 out;
    EXPECT_TRUE(spline.Interpolate(out, two, *c[0], *c[1], *c[2]));
    ASSERT_EQ(out.GetSize(), 2);
    EXPECT_TRUE(std::isnan(out[0]) && std::isnan(out[1]));
    EXPECT_TRUE(std::isnan(spline.Interpolate(1.0F, *c[0], *c[1], *c[2])));
  }
}

TEST(Spline, Interpolate_WithATable_AllocatesNothing) {
  Spline spline;
  const auto x = Of<VecReal32>({0, 1, 2}), y = Of<VecReal32>({0, 1, 0});
  VecReal32 table, values, out(1000);
  values.Ramp(1000, -1.0F, 0.005F);
  ASSERT_TRUE(spline.MakeSplineTable(table, y, x));
  const long before = AllocationCount();
  spline.Interpolate(out, values, y, x, table);
  const float one = spline.Interpolate(0.5F, y, x, table);
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_EQ(one, 0.6875F);
}

// Failures.

template <class V> void ExpectFailures() {
  using T = test::ElementOf<V>;
  OpenSpline spline;
  const auto x = Of<V>({0, 1, 2}), y = Of<V>({0, 1, 0}), longer = Of<V>({0, 1, 0, 1}), at = Of<V>({1});
  V out(1);
  EXPECT_EQ(spline.Interpolate(out, x, longer, at), 10003);
  EXPECT_EQ(spline.Interpolate(out, longer, y, at), 10003);
  EXPECT_EQ(spline.Interpolate(out, V(), y, at), 10003);
  EXPECT_EQ(spline.Interpolate(out, x, V(), at), 10003);
  V resized(9);
  EXPECT_EQ(spline.Interpolate(resized, x, longer, at), 10003);
  EXPECT_EQ(resized.GetSize(), 1);
  T one = 0;
  const T v = 1;
  EXPECT_EQ(spline.Interpolate(one, x, longer, v), 10003);
  EXPECT_EQ(spline.Interpolate(one, x, y, v), 0);
  EXPECT_EQ(one, 1);
  T y2[3];
  int blocks0 = 0, blocks1 = 0;
  bool init = true;
  {
    const test::AllocationBudget budget(0);
    blocks0 = spline.Interpolate(out, x, y, at);
    init = spline.SplineInit(3, x, y, y2);
  }
  {
    const test::AllocationBudget budget(1);
    blocks1 = spline.Interpolate(out, x, y, at);
  }
  EXPECT_EQ(blocks0, 10003) << "no second derivatives";
  EXPECT_FALSE(init);
  EXPECT_EQ(blocks1, 11001) << "no scratch to solve for them";
  const long before = AllocationCount();
  EXPECT_EQ(spline.Interpolate(out, x, y, at), 0);
  EXPECT_EQ(AllocationCount(), before + 2) << "and nothing else";
  EXPECT_EQ(out[0], 1);
}

TEST(Spline, Interpolate_OfUnequalLengthsOrWithoutMemory_ReturnsTheCode) {
  ExpectFailures<VecReal32>();
  ExpectFailures<VecReal64>();
}

TEST(Spline, MakeSplineTable_WithoutMemory_IsFalse) {
  Spline spline;
  const auto x = Of<VecReal32>({0, 1, 2}), y = Of<VecReal32>({0, 1, 0});
  auto table = Of<VecReal32>({7});
  for (const long served : {0, 1}) {
    bool made = true;
    {
      const test::AllocationBudget budget(served);
      made = spline.MakeSplineTable(table, y, x);
    }
    EXPECT_FALSE(made) << served;
    EXPECT_EQ(List(table), (std::vector<float>{7}));
  }
}

// A copy has the boundaries and the bracket of its source, and no more to do with it.
TEST(Spline, Copy_KeepsItsOwnBoundaries) {
  const auto x = Of<VecReal64>({0, 1, 2}), y = Of<VecReal64>({0, 1, 0});
  OpenSpline source;
  source.SetBoundaryCondition1(0.0);
  source.SetBoundaryCondition2(0.0);
  OpenSpline copy(source), assigned;
  assigned = source;
  source.SetNaturalSpline();
  EXPECT_EQ(SecondDerivatives(source, x, y), (std::vector<double>{0, -3, 0}));
  ExpectNear(SecondDerivatives(copy, x, y), {6, -6, 6}, 1e-14);
  ExpectNear(SecondDerivatives(assigned, x, y), {6, -6, 6}, 1e-14);
}

} // namespace
