#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "qorn/dsp/DSPUtils.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/KernelCheck.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::ElementOf;
using test::List;
using test::Of;

constexpr double kPi64 = 3.141592653589793;
constexpr double kTwoPi64 = 6.283185307179586;
constexpr float kPi32 = 3.1415927F;
constexpr float kTwoPi32 = 6.2831855F;

TEST(DSPUtils, CartToPolar_Points_GivesMagnitudeAndAngle) {
  VecReal32 mag;
  VecReal32 phase(9);
  DSPUtils::CartToPolar(
      mag, phase, Of<VecCplx32>({{3.0F, 4.0F}, {0.0F, 2.0F}, {-1.0F, 0.0F}, {0.0F, 0.0F}, {1.0F, -1.0F}}));
  ASSERT_EQ(mag.GetSize(), 5);
  ASSERT_EQ(phase.GetSize(), 5);
  const float mags[] = {5.0F, 2.0F, 1.0F, 0.0F, 1.4142135F};
  const float phases[] = {0.9272952F, 1.5707964F, 3.1415927F, 0.0F, -0.7853982F};
  for (int i = 0; i < 5; ++i) {
    EXPECT_FLOAT_EQ(mag[i], mags[i]) << i;
    EXPECT_FLOAT_EQ(phase[i], phases[i]) << i;
  }
}

TEST(DSPUtils, PolarToCart_MagnitudeAndAngle_GivesThePoints) {
  VecCplx32 dst;
  DSPUtils::PolarToCart(dst, Of<VecReal32>({5.0F, 2.0F, 0.0F}), Of<VecReal32>({0.9272952F, -1.0F, 1.0F}));
  ASSERT_EQ(dst.GetSize(), 3);
  EXPECT_NEAR(dst[0].re, 3.0F, 5e-7F);
  EXPECT_NEAR(dst[0].im, 4.0F, 5e-7F);
  EXPECT_NEAR(dst[1].re, 1.0806046F, 3e-7F);
  EXPECT_NEAR(dst[1].im, -1.682942F, 3e-7F);
  EXPECT_EQ(dst[2].re, 0.0F);
  EXPECT_EQ(dst[2].im, 0.0F);
}

TEST(DSPUtils, CartToPolarAndBack_ManyPoints_RestoresThem) {
  VecCplx32 src(200);
  for (int i = 0; i < 200; ++i) {
    src[i] = {std::cos(0.37F * static_cast<float>(i)) * 3.0F, std::sin(1.1F * static_cast<float>(i))};
  }
  VecReal32 mag;
  VecReal32 phase;
  VecCplx32 back;
  DSPUtils::CartToPolar(mag, phase, src);
  DSPUtils::PolarToCart(back, mag, phase);
  // The phase is rounded to float, by up to 1.2e-7 rad near pi, which turns a point of magnitude 3.2.
  for (int i = 0; i < 200; ++i) {
    EXPECT_NEAR(back[i].re, src[i].re, 1e-6F) << i;
    EXPECT_NEAR(back[i].im, src[i].im, 1e-6F) << i;
  }
}

TEST(DSPUtils, Conversions_EmptySource_GiveEmptyVectors) {
  VecReal32 mag(4);
  VecReal32 phase(4);
  DSPUtils::CartToPolar(mag, phase, VecCplx32());
  EXPECT_EQ(mag.GetSize(), 0);
  EXPECT_EQ(phase.GetSize(), 0);
  VecCplx32 dst(4);
  DSPUtils::PolarToCart(dst, VecReal32(), VecReal32());
  EXPECT_EQ(dst.GetSize(), 0);
}

TEST(DSPUtils, Phase_Points_GivesTheAngle) {
  VecReal32 single(9);
  DSPUtils::Phase(single, Of<VecCplx32>({{0.0F, 2.0F}, {-1.0F, 0.0F}, {-1.0F, -0.0F}, {1.0F, -1.0F}}));
  EXPECT_EQ(List(single), (std::vector<float>{1.5707964F, 3.1415927F, -3.1415927F, -0.7853982F}));
  VecReal64 twice;
  DSPUtils::Phase(twice, Of<VecCplx64>({{0.0, 2.0}, {-1.0, 0.0}, {1.0, 0.0}}));
  EXPECT_EQ(List(twice), (std::vector<double>{1.5707963267948966, 3.141592653589793, 0.0}));
}

TEST(DSPUtils, MapPhase_TurnsAndHalfTurns_FoldsTowardsZero) {
  auto vec = Of<VecReal64>({2.5 * kPi64, 1.5 * kPi64, -2.5 * kPi64, -1.5 * kPi64, 0.0, 1.0, -1.0});
  DSPUtils::MapPhase(vec);
  const double expected[] = {0.5 * kPi64, -0.5 * kPi64, -0.5 * kPi64, 0.5 * kPi64, 0.0, 1.0, -1.0};
  for (int i = 0; i < 7; ++i) EXPECT_NEAR(vec[i], expected[i], 1e-15) << i;
  auto single = Of<VecReal32>({2.5F * kPi32, 1.5F * kPi32, -2.5F * kPi32, 0.0F});
  DSPUtils::MapPhase(single);
  for (int i = 0; i < 4; ++i) {
    const double wanted[] = {0.5 * kPi64, -0.5 * kPi64, -0.5 * kPi64, 0.0};
    EXPECT_NEAR(static_cast<double>(single[i]), wanted[i], 1e-6) << i;
  }
}

TEST(DSPUtils, MapPhase_SpecialValues_StayOrGiveNotANumber) {
  const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
  auto vec = Of<VecReal32>({-0.0F, nan, inf, -inf, kPi32, -kPi32});
  DSPUtils::MapPhase(vec);
  EXPECT_TRUE(std::signbit(vec[0]) && vec[0] == 0.0F);
  for (int i = 1; i < 4; ++i) EXPECT_TRUE(std::isnan(vec[i])) << i;
  EXPECT_EQ(vec[4], kPi32); // not above pi, so it stays
  EXPECT_EQ(vec[5], -kPi32);
  VecReal64 empty;
  DSPUtils::MapPhase(empty);
  EXPECT_EQ(empty.GetSize(), 0);
}

// The two steps as documented, for each width with its own constants.
float Folded(float x) {
  const double turns = std::floor(static_cast<double>(std::fabs(x)) / 6.283185307179586);
  const float whole = static_cast<float>(turns * 6.283185307179586);
  float y = x;
  if (x > 0) y = x - whole;
  if (x < 0) y = x + whole;
  if (y > 3.1415927F) return y - 6.2831855F;
  if (y < -3.1415927F) return y + 6.2831855F;
  return y;
}
double Folded(double x) {
  const double turns = std::floor(std::fabs(x) / 6.283185307179586);
  const double whole = turns * 6.283185307179586;
  double y = x;
  if (x > 0) y = x - whole;
  if (x < 0) y = x + whole;
  if (y > 3.141592653589793) return y - 6.283185307179586;
  if (y < -3.141592653589793) return y + 6.283185307179586;
  return y;
}

template <class V> class RealPhases : public testing::Test {};
using BothReals = testing::Types<VecReal32, VecReal64>;
TYPED_TEST_SUITE(RealPhases, BothReals);

TYPED_TEST(RealPhases, MapPhase_AnyFiniteValue_KeepsThePrecisionOfEachStep) {
  using T = ElementOf<TypeParam>;
  std::vector<T> values = test::FiniteSamples<T>(1e30);
  for (int i = -2000; i < 2000; ++i) {
    values.push_back(static_cast<T>(i * 0.037));
    values.push_back(static_cast<T>(i * kPi64));
    values.push_back(std::nextafter(static_cast<T>(i * kTwoPi64), static_cast<T>(1000)));
  }
  TypeParam vec = Of<TypeParam>(values);
  DSPUtils::MapPhase(vec);
  for (std::size_t i = 0; i < values.size(); ++i) {
    ASSERT_TRUE(test::Same()(vec[static_cast<int>(i)], Folded(values[i]))) << test::Show(values[i]);
  }
}

TYPED_TEST(RealPhases, Unwrap_OneJump_IsRemoved) {
  using T = ElementOf<TypeParam>;
  TypeParam dst(9);
  DSPUtils::Unwrap(dst, Of<TypeParam>({0, 3, -3}), static_cast<T>(kTwoPi64));
  ASSERT_EQ(dst.GetSize(), 3);
  EXPECT_EQ(dst[0], 0);
  EXPECT_EQ(dst[1], 3);
  EXPECT_EQ(dst[2], static_cast<T>(-3) + static_cast<T>(kTwoPi64));
}

TYPED_TEST(RealPhases, Unwrap_OutOfPlace_RemovesOnePeriodPerStep) {
  using T = ElementOf<TypeParam>;
  const auto src = Of<TypeParam>({1, 31, 31, 1, 6, 1, -4, -10});
  TypeParam dst;
  DSPUtils::Unwrap(dst, src, static_cast<T>(10));
  // Up by 30 and down by 30: one period each; by 5 either way: half a period is no jump; down by 6: one.
  EXPECT_EQ(List(dst), (std::vector<T>{1, 21, 21, 1, 6, 1, -4, 0}));
  TypeParam same(src);
  DSPUtils::Unwrap(same, same, static_cast<T>(10));
  EXPECT_EQ(List(same), List(dst));
}

TYPED_TEST(RealPhases, Unwrap_OutOfPlaceRounding_IsThatOfTheElement) {
  using T = ElementOf<TypeParam>;
  TypeParam src(3000), dst;
  for (int i = 0; i < 3000; ++i) src[i] = static_cast<T>(std::sin(0.9 * i * i) * 7);
  const T period = static_cast<T>(5.3);
  DSPUtils::Unwrap(dst, src, period);
  T offset = 0;
  for (int i = 0; i < 3000; ++i) {
    if (i > 0) {
      T d = src[i] - src[i - 1];
      if (std::fabs(d) > period / 2) offset = d > 0 ? offset - period : offset + period;
    }
    ASSERT_EQ(dst[i], src[i] + offset) << i;
  }
}

TYPED_TEST(RealPhases, Unwrap_FromTheMiddle_RemovesJumpsOfAnySizeBothWays) {
  using T = ElementOf<TypeParam>;
  auto vec = Of<TypeParam>({-28, 2, 33, 4, 35, -24});
  DSPUtils::Unwrap(vec, 2, static_cast<T>(12), static_cast<T>(10));
  // Forward from 33, expected near 12: 13, then 14, 15, 16. Backward from 13: 12, 12.
  EXPECT_EQ(List(vec), (std::vector<T>{12, 12, 13, 14, 15, 16}));
}

TYPED_TEST(RealPhases, Unwrap_FromTheEnds_WorksOneWayOnly) {
  using T = ElementOf<TypeParam>;
  auto first = Of<TypeParam>({31, 2, -27});
  DSPUtils::Unwrap(first, 0, static_cast<T>(0), static_cast<T>(10));
  EXPECT_EQ(List(first), (std::vector<T>{1, 2, 3}));
  auto last = Of<TypeParam>({31, 2, -27});
  DSPUtils::Unwrap(last, 2, static_cast<T>(3), static_cast<T>(10));
  EXPECT_EQ(List(last), (std::vector<T>{1, 2, 3}));
  TypeParam empty;
  DSPUtils::Unwrap(empty, 0, static_cast<T>(0), static_cast<T>(10));
  EXPECT_EQ(empty.GetSize(), 0);
}

TYPED_TEST(RealPhases, Unwrap_InPlaceRounding_IsThatOfTheElement) {
  using T = ElementOf<TypeParam>;
  constexpr int kSize = 2000, kStart = 700;
  TypeParam vec(kSize);
  for (int i = 0; i < kSize; ++i) vec[i] = static_cast<T>(std::sin(1.3 * i * i) * 40);
  std::vector<T> expected = List(vec);
  const T period = static_cast<T>(6.1), initial = static_cast<T>(-2.2), half = period * static_cast<T>(0.5);
  const auto correct = [&](T &element, T &previous, T &offset) {
    const T raw = element;
    T d = raw - previous;
    while (d > half) d = d - period, offset -= period;
    while (d < -half) d = d + period, offset += period;
    previous = raw;
    element = raw + offset;
  };
  T previous = initial, offset = 0;
  for (std::size_t i = kStart; i < kSize; ++i) correct(expected[i], previous, offset);
  previous = expected[kStart], offset = 0;
  for (std::size_t i = kStart; i-- > 0;) correct(expected[i], previous, offset);
  DSPUtils::Unwrap(vec, kStart, initial, period);
  EXPECT_EQ(List(vec), expected);
}

TYPED_TEST(RealPhases, Unwrap_DifferencesWithoutEnd_AreLeft) {
  using T = ElementOf<TypeParam>;
  const T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
  const T huge = static_cast<T>(1e30);
  auto vec = Of<TypeParam>({huge, 1, inf, 2, nan, 3});
  DSPUtils::Unwrap(vec, 1, static_cast<T>(1), static_cast<T>(10));
  EXPECT_TRUE(std::isnan(vec[4]));
  vec[4] = 0;
  EXPECT_EQ(List(vec), (std::vector<T>{huge, 1, inf, 2, 0, 3}));
  auto still = Of<TypeParam>({1, 9, 4});
  DSPUtils::Unwrap(still, 1, static_cast<T>(0), static_cast<T>(0));
  EXPECT_EQ(List(still), (std::vector<T>{1, 9, 4}));
}

template <class R, class C> void CheckPhaseAndUnwrap(ElementOf<R> period) {
  C src(500);
  for (int i = 0; i < 500; ++i) {
    using T = ElementOf<R>;
    src[i] = {static_cast<T>(std::cos(0.7 * i)), static_cast<T>(std::sin(0.7 * i))};
  }
  R phases, expected, dst;
  DSPUtils::Phase(phases, src);
  DSPUtils::Unwrap(expected, phases, period);
  DSPUtils::PhaseAndUnwrap(dst, src);
  EXPECT_EQ(List(dst), List(expected));
  EXPECT_NEAR(static_cast<double>(dst[499]), 0.7 * 499, 1e-3);
}

TEST(DSPUtils, PhaseAndUnwrap_Tone_GivesAStraightLineWithThePeriodOfTheWidth) {
  CheckPhaseAndUnwrap<VecReal32, VecCplx32>(kTwoPi32);
  CheckPhaseAndUnwrap<VecReal64, VecCplx64>(kTwoPi64);
  VecReal32 dst(3);
  DSPUtils::PhaseAndUnwrap(dst, VecCplx32());
  EXPECT_EQ(dst.GetSize(), 0);
}

TEST(DSPUtils, RotatePhase_Float_RoundsThePhasorOnceAndMultipliesInFloat) {
  for (const float angle : {0.0F, 0.3F, -2.0F, 1.5707964F, 100.5F, 1e10F}) {
    auto vec = Of<VecCplx32>({{1.0F, 0.0F}, {0.3F, -0.7F}, {-1e10F, 1.0F}});
    const auto src = List(vec);
    DSPUtils::RotatePhase(vec, angle);
    const float c = static_cast<float>(std::cos(static_cast<double>(angle)));
    const float s = static_cast<float>(std::sin(static_cast<double>(angle)));
    for (int i = 0; i < 3; ++i) {
      const Cplx32 x = src[static_cast<std::size_t>(i)];
      const float rr = x.re * c, ii = x.im * s, ri = x.re * s, ir = x.im * c;
      EXPECT_EQ(vec[i].re, rr - ii) << angle;
      EXPECT_EQ(vec[i].im, ri + ir) << angle;
    }
  }
}

TEST(DSPUtils, RotatePhase_Double_MultipliesInDouble) {
  auto vec = Of<VecCplx64>({{2.0, 1.0}});
  DSPUtils::RotatePhase(vec, 0.5);
  EXPECT_NEAR(vec[0].re, 2 * 0.8775825618903728 - 0.479425538604203, 4e-16);
  EXPECT_NEAR(vec[0].im, 2 * 0.479425538604203 + 0.8775825618903728, 4e-16);
}

TEST(DSPUtils, PhaseFunctions_OnKeptDestinations_AllocateNothing) {
  const VecCplx32 src(100);
  VecCplx32 complex(100);
  VecReal32 mag(100), phase(100);
  const long before = test::AllocationCount();
  DSPUtils::CartToPolar(mag, phase, src);
  DSPUtils::PolarToCart(complex, mag, phase);
  DSPUtils::Phase(phase, src);
  DSPUtils::PhaseAndUnwrap(phase, src);
  DSPUtils::Unwrap(mag, phase, kTwoPi32);
  DSPUtils::Unwrap(phase, 50, 0.0F, kTwoPi32);
  DSPUtils::MapPhase(phase);
  DSPUtils::RotatePhase(complex, 0.1F);
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
