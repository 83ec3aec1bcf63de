#include "qorn/math/Interpolation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <typeinfo>
#include <vector>

#include "qorn/math/CubicHermiteInterpolation.h"
#include "qorn/math/InterpolationFactory.h"
#include "qorn/math/NearestInterpolation.h"
#include "qorn/math/Spline.h"
#include "support/Allocations.h"
#include "support/Slots.h"
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

template <class V> std::vector<test::ElementOf<V>> Lines(const V &x, const V &y, const V &values) {
  Interpolation linear;
  V out;
  EXPECT_EQ(linear.Interpolate(out, x, y, values), 0);
  return List(out);
}

template <class V> void ExpectExamples() {
  using Values = std::vector<test::ElementOf<V>>;
  EXPECT_EQ(Lines(Of<V>({0, 1}), Of<V>({0, 10}), Of<V>({-1, 0.5, 2})), (Values{-10, 5, 20}));
  EXPECT_EQ(Lines(Of<V>({0, 1, 3}), Of<V>({0, 1, 5}), Of<V>({1, 3, 2, 0})), (Values{1, 5, 3, 0}));
}

TEST(Interpolation, Interpolate_InsideAndOutsideTheTable_FollowsTheLineThroughTheNeighbours) {
  ExpectExamples<VecReal32>();
  ExpectExamples<VecReal64>();
}

// The segment of the upper neighbour is told from that of the lower one by its rounding: a point is met
// exactly only from the segment that begins at it.
TEST(Interpolation, Interpolate_OnAPoint_UsesTheSegmentAboveIt) {
  const auto x = Of<VecReal32>({0, 3, 10, 14}), y = Of<VecReal32>({0.1F, 0.7F, -0.3F, 1e8F});
  EXPECT_EQ(Lines(x, y, x), List(y));
}

// Each step rounded by itself, and the search as a scan from the top.
template <class T> T LineByScan(const test::PointTable<T> &table, T v) {
  const std::vector<T> &x = table.x, &y = table.y;
  const std::size_t last = x.size() - 1;
  std::size_t i = last;
  if (v <= x[0]) {
    i = 0;
  } else if (!(v >= x[last])) {
    while (x[i] > v) --i;
  }
  const std::size_t s = i < last ? i : last - 1;
  const T slope = last > 0 ? Over(Minus(y[s + 1], y[s]), Minus(x[s + 1], x[s])) : T{0};
  return Plus(Times(Minus(v, x[i]), slope), y[i]);
}

template <class V> void ExpectLinesOfAScan() {
  using T = test::ElementOf<V>;
  Interpolation linear;
  V out;
  test::ForTables<T>([&](test::Order order, const test::PointTable<T> &table, const std::vector<T> &values) {
    ASSERT_EQ(linear.Interpolate(out, Of<V>(table.x), Of<V>(table.y), Of<V>(values)), 0);
    ASSERT_EQ(out.GetSize(), static_cast<int>(values.size()));
    for (std::size_t j = 0; j < values.size(); ++j) {
      const T expected = LineByScan(table, values[j]), got = out[static_cast<int>(j)];
      ASSERT_TRUE(test::SameBits(got, expected))
          << got << " for " << expected << " at " << values[j] << ", order " << static_cast<int>(order)
          << ", points " << table.x.size();
    }
  });
}

TEST(Interpolation, Interpolate_OfAnyTableAndAnyValue_IsThatOfAScanFromTheTop) {
  ExpectLinesOfAScan<VecReal32>();
  ExpectLinesOfAScan<VecReal64>();
}

// A long table, where values in ascending order lie far from one another, near, and on one segment.
TEST(Interpolation, Interpolate_OfALongTable_FindsEverySegment) {
  constexpr int kPoints = 100000;
  VecReal64 x, y(kPoints), values, out;
  x.Ramp(kPoints);
  for (int i = 0; i < kPoints; ++i) y[i] = i % 2 == 0 ? i : -i;
  Interpolation linear;
  for (const double step : {0.001, 0.25, 1.0, 3.0, 97.0, -0.25, -97.0}) {
    values.Ramp(1001, step > 0 ? 1.125 : 99998.125, step);
    ASSERT_EQ(linear.Interpolate(out, x, y, values), 0);
    for (int j = 0; j < values.GetSize(); ++j) {
      const int i = static_cast<int>(values[j]);
      const double f = values[j] - i;
      ASSERT_NEAR(out[j], y[i] + f * (y[i + 1] - y[i]), 1e-9) << step << ' ' << j;
    }
  }
}

TEST(Interpolation, Interpolate_OfEqualNeighbours_DividesByZeroWithoutAnError) {
  const auto out = Lines(Of<VecReal64>({0, 1, 1, 2}), Of<VecReal64>({0, 1, 3, 4}), Of<VecReal64>({0.5, 1}));
  EXPECT_EQ(out[0], 0.5);
  EXPECT_EQ(out[1], 3.0) << "the last of the equal points";
  const auto steep = Lines(Of<VecReal64>({1, 1}), Of<VecReal64>({3, 4}), Of<VecReal64>({0, 2}));
  EXPECT_EQ(steep, (std::vector<double>{-INFINITY, INFINITY}));
}

TEST(Interpolation, Interpolate_OfOnePoint_GivesItsValueEverywhere) {
  EXPECT_EQ(Lines(Of<VecReal32>({2}), Of<VecReal32>({7}), Of<VecReal32>({-9, 2, 9})),
            (std::vector<float>{7, 7, 7}));
}

// y may be longer than x; beyond the end its own last element is taken.
TEST(Interpolation, Interpolate_OfALongerY_TakesItsLastElementAtTheEnd) {
  EXPECT_EQ(Lines(Of<VecReal64>({0, 1}), Of<VecReal64>({0, 10, 99}), Of<VecReal64>({0.5, 1, 2})),
            (std::vector<double>{5, 99, 109}));
}

// What holds for the vector forms of all three classes that return a code for it.
template <class I, class V> void ExpectRefusedWithoutPoints(int shorterY) {
  using T = test::ElementOf<V>;
  I interpolation;
  V out = Of<V>({4, 5, 6});
  const V none, one = Of<V>({1}), two = Of<V>({1, 2});
  EXPECT_EQ(interpolation.Interpolate(out, none, none, two), 10002);
  ASSERT_EQ(out.GetSize(), 2);
  EXPECT_TRUE(std::isnan(out[0]) && std::isnan(out[1]));
  EXPECT_EQ(interpolation.Interpolate(out, two, one, two), shorterY);
  EXPECT_EQ(interpolation.Interpolate(out, none, none, none), 0);
  EXPECT_EQ(out.GetSize(), 0);
  EXPECT_EQ(interpolation.Interpolate(out, two, two, none), 0);
  EXPECT_EQ(out.GetSize(), 0);
  T single = 3;
  const T at = 1;
  EXPECT_EQ(interpolation.Interpolate(single, none, none, at), 10002);
  EXPECT_TRUE(std::isnan(single));
}

TEST(Interpolation, Interpolate_WithoutPoints_Returns10002AndNotANumber) {
  ExpectRefusedWithoutPoints<Interpolation, VecReal32>(10002);
  ExpectRefusedWithoutPoints<Interpolation, VecReal64>(10002);
  ExpectRefusedWithoutPoints<NearestInterpolation, VecReal32>(10002);
  ExpectRefusedWithoutPoints<NearestInterpolation, VecReal64>(10002);
  ExpectRefusedWithoutPoints<Spline, VecReal32>(10003);
  ExpectRefusedWithoutPoints<Spline, VecReal64>(10003);
}

// What all interpolators have in common.

using Owner = std::unique_ptr<Interpolation>;

const char *NameOf(const Interpolation &interpolation) { return typeid(interpolation).name(); }

template <class Check> void ForAllKinds(Check check) {
  for (int type = 0; type < 4; ++type) {
    check([type] {
      return Owner(InterpolationFactory().MakeInterpolation(static_cast<InterpolationType>(type)));
    });
  }
}

template <class V> void ExpectScalarIsVector() {
  using T = test::ElementOf<V>;
  const auto x = Of<V>({-3, 0.5, 1, 4, 5.5}), y = Of<V>({1, 0, static_cast<T>(2.7), -1, -1});
  const auto values = Of<V>({-4, -3, 0, 0.75, 1, 3, 4, 5, 5.5, 7, NAN});
  ForAllKinds([&](auto make) {
    const Owner one = make(), all = make();
    V out;
    ASSERT_EQ(all->Interpolate(out, x, y, values), 0);
    for (int j = 0; j < values.GetSize(); ++j) {
      T got = 99;
      const T v = values[j];
      EXPECT_EQ(one->Interpolate(got, x, y, v), 0);
      EXPECT_TRUE(test::SameBits(got, T{out[j]})) << NameOf(*one) << ' ' << v;
    }
  });
}

TEST(Interpolation, Interpolate_OfOneValue_IsThatOfAVector) {
  ExpectScalarIsVector<VecReal32>();
  ExpectScalarIsVector<VecReal64>();
}

// The scalar forms run whatever vector form the object has.
TEST(Interpolation, Interpolate_OfOneValue_RunsTheVectorFormOfTheObject) {
  struct Fixed : Interpolation {
    using Interpolation::Interpolate;
    int Interpolate(VecReal64 &out, const VecReal64 &, const VecReal64 &, const VecReal64 &in) override {
      out.Set(in[0] + 1, in.GetSize());
      return 42;
    }
    int Interpolate(VecReal32 &out, const VecReal32 &, const VecReal32 &, const VecReal32 &in) override {
      out.Set(in[0] + 2, in.GetSize());
      return 43;
    }
  } fixed;
  double d = 0;
  float f = 0;
  EXPECT_EQ(fixed.Interpolate(d, VecReal64(), VecReal64(), 5.0), 42);
  EXPECT_EQ(fixed.Interpolate(f, VecReal32(), VecReal32(), 5.0F), 43);
  EXPECT_EQ(d, 6.0);
  EXPECT_EQ(f, 7.0F);
}

TEST(Interpolation, Interpolate_OfOneValueByAVectorFormWithoutAResult_KeepsTheDestination) {
  struct Refusing : Interpolation {
    using Interpolation::Interpolate;
    int Interpolate(VecReal64 &, const VecReal64 &, const VecReal64 &, const VecReal64 &) override {
      return 44;
    }
  } refusing;
  double d = 9;
  EXPECT_EQ(refusing.Interpolate(d, VecReal64(), VecReal64(), 5.0), 44);
  EXPECT_EQ(d, 9.0);
}

template <class V> void ExpectInPlace() {
  const auto x = Of<V>({0, 1, 2, 4}), y = Of<V>({0, 1, -2, 3});
  V values(601);
  for (int j = 0; j <= 600; ++j) values[j] = static_cast<test::ElementOf<V>>(j * 37 % 601) / 100 - 1;
  ForAllKinds([&](auto make) {
    V out, inPlace = values, narrowed(611);
    const Owner interpolation = make();
    interpolation->Interpolate(out, x, y, values);
    interpolation->Interpolate(inPlace, x, y, inPlace);
    EXPECT_EQ(List(inPlace), List(out)) << NameOf(*interpolation);
    narrowed.Trim(10);
    for (int j = 0; j <= 600; ++j) narrowed[j] = values[j];
    interpolation->Interpolate(narrowed, x, y, narrowed);
    EXPECT_EQ(List(narrowed), List(out)) << NameOf(*interpolation);
  });
}

TEST(Interpolation, Interpolate_InPlaceOfTheValues_GivesTheSame) {
  ExpectInPlace<VecReal32>();
  ExpectInPlace<VecReal64>();
}

template <class V> void ExpectNoAllocations() {
  const auto x = Of<V>({0, 1, 2, 4}), shuffled = Of<V>({2, 0, 4, 1}), y = Of<V>({0, 1, -2, 3});
  V values(1000), out;
  for (int j = 0; j < 1000; ++j) values[j] = static_cast<test::ElementOf<V>>(j * 7 % 50) / 10;
  for (const InterpolationType type : {InterpLinear, InterpNearest, InterpCubicHermite}) {
    const Owner interpolation(InterpolationFactory().MakeInterpolation(type));
    test::ElementOf<V> one = 0;
    const test::ElementOf<V> at = 1;
    interpolation->Interpolate(out, x, y, values);
    interpolation->Interpolate(one, x, y, at);
    const long before = AllocationCount();
    interpolation->Interpolate(out, x, y, values);
    interpolation->Interpolate(one, x, y, at);
    if (type != InterpCubicHermite) interpolation->Interpolate(out, shuffled, y, values);
    EXPECT_EQ(AllocationCount(), before) << NameOf(*interpolation);
  }
}

TEST(Interpolation, Interpolate_AgainOnATableOfLikeSize_AllocatesNothing) {
  ExpectNoAllocations<VecReal32>();
  ExpectNoAllocations<VecReal64>();
}

// A copy has its own scratch, in either order of destruction.
template <class I> void ExpectIndependentCopies() {
  const auto x = Of<VecReal64>({0, 1, 2, 3}), y = Of<VecReal64>({0, 1, 5, 6});
  auto source = std::make_unique<I>();
  double first = 0, second = 0, third = 0;
  source->Interpolate(first, x, y, 1.25);
  auto copy = std::make_unique<I>(*source);
  I assigned;
  assigned.Interpolate(third, Of<VecReal64>({0, 1}), Of<VecReal64>({0, 1}), 0.5);
  assigned = *source;
  source.reset();
  copy->Interpolate(second, x, y, 1.25);
  EXPECT_EQ(first, second);
  copy.reset();
  assigned.Interpolate(third, x, y, 1.25);
  EXPECT_EQ(first, third);
  const I &self = assigned;
  assigned = self;
  assigned.Interpolate(third, x, y, 1.25);
  EXPECT_EQ(first, third);
}

TEST(Interpolation, Copy_OutlivesItsSource) {
  ExpectIndependentCopies<Interpolation>();
  ExpectIndependentCopies<NearestInterpolation>();
  ExpectIndependentCopies<Spline>();
  ExpectIndependentCopies<CubicHermiteInterpolation>();
}

// A copy has the vectors of its source with their lengths, and so allocates nothing on its first call.
TEST(Interpolation, Copy_HoldsTheScratchOfItsSource) {
  const auto x = Of<VecReal64>({0, 1, 2, 3}), y = Of<VecReal64>({0, 1, 5, 6});
  for (const InterpolationType type : {InterpLinear, InterpNearest, InterpCubicHermite}) {
    double out = 0;
    const Owner source(InterpolationFactory().MakeInterpolation(type));
    source->Interpolate(out, x, y, 1.25);
    Owner copy;
    if (type == InterpLinear) copy = std::make_unique<Interpolation>(*source);
    if (type == InterpNearest) {
      copy = std::make_unique<NearestInterpolation>(dynamic_cast<const NearestInterpolation &>(*source));
    }
    if (type == InterpCubicHermite) {
      copy = std::make_unique<CubicHermiteInterpolation>(
          dynamic_cast<const CubicHermiteInterpolation &>(*source));
    }
    const long before = AllocationCount();
    copy->Interpolate(out, x, y, 1.25);
    EXPECT_EQ(AllocationCount(), before) << type;
  }
}

template <class V> void ExpectAscendingOrder() {
  EXPECT_TRUE(Interpolation::CheckAscendingOrder(V()));
  EXPECT_TRUE(Interpolation::CheckAscendingOrder(Of<V>({1})));
  EXPECT_TRUE(Interpolation::CheckAscendingOrder(Of<V>({NAN})));
  EXPECT_FALSE(Interpolation::CheckAscendingOrder(Of<V>({1, 1})));
  EXPECT_TRUE(Interpolation::CheckAscendingOrder(Of<V>({-INFINITY, -1, 2, INFINITY})));
  EXPECT_FALSE(Interpolation::CheckAscendingOrder(Of<V>({1, NAN, 2})));
  for (const int n : {2, 63, 64, 65, 66, 128, 129, 200}) {
    V x;
    x.Ramp(n);
    EXPECT_TRUE(Interpolation::CheckAscendingOrder(x)) << n;
    for (int i = 1; i < n; ++i) {
      x[i] = x[i - 1];
      EXPECT_FALSE(Interpolation::CheckAscendingOrder(x)) << n << ' ' << i;
      x[i] = static_cast<test::ElementOf<V>>(NAN);
      EXPECT_FALSE(Interpolation::CheckAscendingOrder(x)) << n << ' ' << i;
      x[i] = static_cast<test::ElementOf<V>>(i);
    }
  }
}

TEST(Interpolation, CheckAscendingOrder_OfAnyVector_WantsEveryElementBelowItsSuccessor) {
  ExpectAscendingOrder<VecReal32>();
  ExpectAscendingOrder<VecReal64>();
}

TEST(Interpolation, Layout_OfTheInterpolators_IsFixed) {
  constexpr std::size_t kVectors = 5 * sizeof(VecReal64) + 3 * sizeof(VecReal32);
  EXPECT_EQ(sizeof(Interpolation), sizeof(void *) + kVectors);
  EXPECT_EQ(sizeof(NearestInterpolation), sizeof(Interpolation) + sizeof(VecReal64) + sizeof(VecReal32));
  EXPECT_EQ(sizeof(Spline), sizeof(Interpolation) + 3 * sizeof(double) + 2 * sizeof(VecReal64) +
                                2 * sizeof(VecReal32) + 2 * sizeof(int));
  EXPECT_EQ(sizeof(CubicHermiteInterpolation), sizeof(Interpolation) + sizeof(VecReal64));
  EXPECT_EQ(sizeof(InterpolationFactory), 2 * sizeof(void *));
}

#if defined(QORN_TEST_SLOTS)
template <class I> struct OneMore : I {
  virtual void Next() {}
};

TEST(Interpolation, VirtualSlots_OfTheInterpolators_AreTheDestructorAndFourForms) {
  using D = double;
  using DoubleOne = int (Interpolation::*)(D &, const VecReal64 &, const VecReal64 &, const D &);
  using FloatOne = int (Interpolation::*)(float &, const VecReal32 &, const VecReal32 &, float);
  using DoubleAll =
      int (Interpolation::*)(VecReal64 &, const VecReal64 &, const VecReal64 &, const VecReal64 &);
  using FloatAll =
      int (Interpolation::*)(VecReal32 &, const VecReal32 &, const VecReal32 &, const VecReal32 &);
  EXPECT_EQ(test::SlotOf(static_cast<DoubleOne>(&Interpolation::Interpolate)), 2U);
  EXPECT_EQ(test::SlotOf(static_cast<FloatOne>(&Interpolation::Interpolate)), 3U);
  EXPECT_EQ(test::SlotOf(static_cast<DoubleAll>(&Interpolation::Interpolate)), 4U);
  EXPECT_EQ(test::SlotOf(static_cast<FloatAll>(&Interpolation::Interpolate)), 5U);
  EXPECT_EQ(test::SlotOf(&OneMore<Interpolation>::Next), 6U);
  EXPECT_EQ(test::SlotOf(&OneMore<NearestInterpolation>::Next), 6U);
  EXPECT_EQ(test::SlotOf(&OneMore<Spline>::Next), 6U);
  EXPECT_EQ(test::SlotOf(&OneMore<CubicHermiteInterpolation>::Next), 6U);
  EXPECT_EQ(test::SlotOf(&OneMore<InterpolationFactory>::Next), 2U);
}
#endif

} // namespace
