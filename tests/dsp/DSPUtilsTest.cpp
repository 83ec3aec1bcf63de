#include "qorn/dsp/DSPUtils.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::ElementOf;
using test::List;
using test::Of;

// 0, 1, 2, ... ; in the imaginary part with the other sign.
template <class V> V Count(int n) {
  using T = ElementOf<V>;
  V vec(n);
  for (int i = 0; i < n; ++i) {
    if constexpr (std::is_class_v<T>) {
      using Part = decltype(T::re);
      vec[i] = {static_cast<Part>(i), static_cast<Part>(-i)};
    } else {
      vec[i] = static_cast<T>(i);
    }
  }
  return vec;
}

// The element at i comes from place (i + n / 2 rounded up) modulo n.
template <class V> std::vector<ElementOf<V>> Shifted(int n) {
  const auto count = List(Count<V>(n));
  std::vector<ElementOf<V>> out;
  for (int i = 0; i < n; ++i) out.push_back(count[static_cast<std::size_t>((i + (n + 1) / 2) % n)]);
  return out;
}

template <class V> class FFTShiftOnAll : public testing::Test {};
using AllVectors = testing::Types<VecReal32, VecReal64, VecCplx32, VecCplx64, VecInt32>;
TYPED_TEST_SUITE(FFTShiftOnAll, AllVectors);

template <class V> class FFTShiftOnSamples : public testing::Test {};
using SampleVectors = testing::Types<VecReal32, VecReal64, VecCplx32, VecCplx64>;
TYPED_TEST_SUITE(FFTShiftOnSamples, SampleVectors);

TYPED_TEST(FFTShiftOnAll, FFTShift_AnyLength_MovesTheStartToTheMiddle) {
  for (int n = 0; n < 20; ++n) {
    const auto src = Count<TypeParam>(n);
    TypeParam dst(3);
    DSPUtils::FFTShift(dst, src);
    EXPECT_EQ(List(dst), Shifted<TypeParam>(n)) << n;
    EXPECT_EQ(List(src), List(Count<TypeParam>(n))) << n;
    TypeParam same(src);
    DSPUtils::FFTShift(same, same);
    EXPECT_EQ(List(same), Shifted<TypeParam>(n)) << n;
  }
}

TYPED_TEST(FFTShiftOnSamples, FFTShift_InPlace_GivesTheSame) {
  for (int n = 0; n < 20; ++n) {
    auto vec = Count<TypeParam>(n);
    DSPUtils::FFTShift(vec);
    EXPECT_EQ(List(vec), Shifted<TypeParam>(n)) << n;
  }
}

TEST(DSPUtils, FFTShift_FourAndFive_AreAsDocumented) {
  VecReal32 dst;
  DSPUtils::FFTShift(dst, Of<VecReal32>({0.0F, 1.0F, 2.0F, 3.0F}));
  EXPECT_EQ(List(dst), (std::vector<float>{2.0F, 3.0F, 0.0F, 1.0F}));
  DSPUtils::FFTShift(dst, Of<VecReal32>({0.0F, 1.0F, 2.0F, 3.0F, 4.0F}));
  EXPECT_EQ(List(dst), (std::vector<float>{3.0F, 4.0F, 0.0F, 1.0F, 2.0F}));
}

TEST(DSPUtils, FFTShift_Twice_RestoresEvenLengthsOnly) {
  auto even = Count<VecReal32>(6);
  DSPUtils::FFTShift(even);
  DSPUtils::FFTShift(even);
  EXPECT_EQ(List(even), List(Count<VecReal32>(6)));
  auto odd = Count<VecReal32>(5);
  DSPUtils::FFTShift(odd);
  DSPUtils::FFTShift(odd);
  EXPECT_EQ(List(odd), (std::vector<float>{1.0F, 2.0F, 3.0F, 4.0F, 0.0F}));
}

template <class V> class RealVectors : public testing::Test {};
using BothReals = testing::Types<VecReal32, VecReal64>;
TYPED_TEST_SUITE(RealVectors, BothReals);

// The real vector of each width with the complex one.
struct Single {
  using Real = VecReal32;
  using Complex = VecCplx32;
  using Scalar = float;
};
struct Double {
  using Real = VecReal64;
  using Complex = VecCplx64;
  using Scalar = double;
};
template <class W> class BothWidths : public testing::Test {};
using Widths = testing::Types<Single, Double>;
TYPED_TEST_SUITE(BothWidths, Widths);

TYPED_TEST(RealVectors, Ramp_OffsetAndSlope_RoundsEachStep) {
  using T = ElementOf<TypeParam>;
  TypeParam dst(2);
  T offset = static_cast<T>(0.7), slope = static_cast<T>(-0.3);
  DSPUtils::Ramp(dst, 1000, offset, slope);
  ASSERT_EQ(dst.GetSize(), 1000);
  for (int i = 0; i < 1000; ++i) {
    const T product = static_cast<T>(i) * slope;
    ASSERT_EQ(dst[i], product + offset) << i;
  }
  DSPUtils::Ramp(dst, 0, offset, slope);
  EXPECT_EQ(dst.GetSize(), 0);
}

TEST(DSPUtils, Ramp_Integers_WrapsBeyondTheLimits) {
  VecInt32 dst;
  DSPUtils::Ramp(dst, 4, 5, -3);
  EXPECT_EQ(List(dst), (std::vector<int>{5, 2, -1, -4}));
  DSPUtils::Ramp(dst, 3, 2147483646, 1);
  EXPECT_EQ(List(dst), (std::vector<int>{2147483646, 2147483647, -2147483647 - 1}));
}

TYPED_TEST(RealVectors, CumSum_AnyVector_AddsInOrderInItsOwnWidth) {
  using T = ElementOf<TypeParam>;
  TypeParam src(1000);
  for (int i = 0; i < 1000; ++i) src[i] = static_cast<T>(std::sin(i) * 1000);
  std::vector<T> expected;
  T sum = 0;
  for (int i = 0; i < 1000; ++i) {
    sum = sum + src[i];
    expected.push_back(sum);
  }
  TypeParam dst(3);
  DSPUtils::CumSum(dst, src);
  EXPECT_EQ(List(dst), expected);
  DSPUtils::CumSum(src, src);
  EXPECT_EQ(List(src), expected);
  DSPUtils::CumSum(dst, TypeParam());
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(BothWidths, Mag_ComplexOrTwoReals_GiveTheSame) {
  using T = typename TypeParam::Scalar;
  const typename TypeParam::Complex src =
      Of<typename TypeParam::Complex>({{3, 4}, {-5, 12}, {0, 0}, {0, -2}, {static_cast<T>(0.1), 1}});
  typename TypeParam::Real dst(1), re, im;
  DSPUtils::Mag(dst, src);
  const T tenth = static_cast<T>(0.1);
  const T square = tenth * tenth;
  const std::vector<T> expected{5, 13, 0, 2, std::sqrt(square + 1)};
  EXPECT_EQ(List(dst), expected);
  src.GetReal(re);
  src.GetImag(im);
  DSPUtils::Mag(dst, re, im);
  EXPECT_EQ(List(dst), expected);
  im.Resize(9); // a longer one is read as far as needed
  src.GetImag(im);
  DSPUtils::Mag(re, re, im);
  EXPECT_EQ(List(re), expected);
}

TYPED_TEST(BothWidths, MagSqr_Points_GivesTheSumOfSquares) {
  using T = typename TypeParam::Scalar;
  typename TypeParam::Real dst;
  DSPUtils::MagSqr(dst, Of<typename TypeParam::Complex>({{3, 4}, {-1, 1}, {0, 0}}));
  EXPECT_EQ(List(dst), (std::vector<T>{25, 2, 0}));
}

TYPED_TEST(BothWidths, MagdB_Points_GivesDecibelsOfThePower) {
  using T = typename TypeParam::Scalar;
  typename TypeParam::Real dst(9);
  DSPUtils::MagdB(dst, Of<typename TypeParam::Complex>({{3, 4}, {0, -1}, {0, 0}, {30, 40}}));
  ASSERT_EQ(dst.GetSize(), 4);
  const double ulps = 4 * static_cast<double>(std::numeric_limits<T>::epsilon());
  EXPECT_NEAR(static_cast<double>(dst[0]), 13.979400086720376, 14 * ulps);
  EXPECT_NEAR(static_cast<double>(dst[1]), 0.0, 1e-30);
  EXPECT_NEAR(static_cast<double>(dst[2]), -400.00002340805156, 400 * ulps);
  EXPECT_NEAR(static_cast<double>(dst[3]), 33.979400086720376, 34 * ulps);
}

TEST(DSPUtils, PeakToAve_Values_DividesTheMaximumByTheMean) {
  EXPECT_EQ(DSPUtils::PeakToAve(Of<VecReal32>({1.0F, 2.0F, 6.0F, -1.0F})), 3.0F);
  EXPECT_EQ(DSPUtils::PeakToAve(Of<VecReal32>({-1.0F, -2.0F, -6.0F})), -1.0F / -3.0F);
  EXPECT_EQ(DSPUtils::PeakToAve(Of<VecReal32>({1.0F, -1.0F})), std::numeric_limits<float>::infinity());
}

TEST(DSPUtils, Norm_AllTypes_IsTheRootOfTheSumOfSquares) {
  EXPECT_EQ(DSPUtils::Norm(Of<VecReal32>({2.0F, -3.0F, 6.0F})), 7.0F);
  EXPECT_EQ(DSPUtils::Norm(Of<VecReal64>({2.0, -3.0, 6.0})), 7.0);
  EXPECT_EQ(DSPUtils::Norm(Of<VecCplx32>({{2.0F, -3.0F}, {0.0F, 6.0F}})), 7.0);
  EXPECT_EQ(DSPUtils::Norm(Of<VecCplx64>({{2.0, -3.0}, {0.0, 6.0}})), 7.0);
  EXPECT_EQ(DSPUtils::Norm(VecReal32()), 0.0F);
  EXPECT_EQ(DSPUtils::Norm(VecReal64()), 0.0);
  EXPECT_EQ(DSPUtils::Norm(VecCplx32()), 0.0);
  EXPECT_EQ(DSPUtils::Norm(VecCplx64()), 0.0);
  EXPECT_TRUE((std::is_same_v<decltype(DSPUtils::Norm(VecCplx32())), double>));
  EXPECT_TRUE((std::is_same_v<decltype(DSPUtils::SumSqrMag(VecReal32())), float>));
}

// Each measure squares a norm that was rounded before: of three ones sqrt(3), whose square is not 3.
TEST(DSPUtils, SquaredMeasures_OfARoundedNorm_RoundEachStep) {
  const auto real32 = Of<VecReal32>({1.0F, 1.0F, 1.0F});
  const auto real64 = Of<VecReal64>({1.0, 1.0, 1.0});
  const auto cplx32 = Of<VecCplx32>({{1.0F, 0.0F}, {0.0F, 1.0F}, {-1.0F, 0.0F}});
  const auto cplx64 = Of<VecCplx64>({{1.0, 0.0}, {0.0, 1.0}, {-1.0, 0.0}});
  const double root = 1.7320508075688772;

  const float square32 = static_cast<float>(root) * static_cast<float>(root);
  const double square64 = root * root;
  ASSERT_NE(square64, 3.0);
  EXPECT_EQ(DSPUtils::SumSqrMag(real32), square32);
  EXPECT_EQ(DSPUtils::SumSqrMag(cplx32), square64);
  EXPECT_EQ(DSPUtils::SumSqrMag(cplx64), square64);

  const float mean32 = square32 / 3.0F;
  const double mean64 = square64 / 3.0;
  EXPECT_EQ(DSPUtils::MeanSqrMag(real32), mean32);
  EXPECT_EQ(DSPUtils::MeanSqrMag(cplx32), mean64);
  EXPECT_EQ(DSPUtils::MeanSqrMag(cplx64), mean64);

  EXPECT_EQ(DSPUtils::RootMeanSqr(real32), static_cast<float>(std::sqrt(static_cast<double>(mean32))));
  EXPECT_EQ(DSPUtils::RootMeanSqr(cplx32), std::sqrt(mean64));
  EXPECT_EQ(DSPUtils::RootMeanSqr(cplx64), std::sqrt(mean64));
  ASSERT_NE(std::sqrt(mean64), 1.0);
  EXPECT_EQ(DSPUtils::RootMeanSqr(real64), 1.0);
}

TEST(DSPUtils, RootMeanSqr_HugeFloats_OverflowsInTheSquareOfTheNorm) {
  EXPECT_EQ(DSPUtils::RootMeanSqr(Of<VecReal32>({1e20F, 1e20F})), std::numeric_limits<float>::infinity());
}

TEST(DSPUtils, Measures_EmptyVector_AreNotANumber) {
  EXPECT_TRUE(std::isnan(DSPUtils::PeakToAve(VecReal32())));
  EXPECT_EQ(DSPUtils::SumSqrMag(VecReal32()), 0.0F);
  EXPECT_EQ(DSPUtils::SumSqrMag(VecCplx32()), 0.0);
  EXPECT_EQ(DSPUtils::SumSqrMag(VecCplx64()), 0.0);
  EXPECT_TRUE(std::isnan(DSPUtils::MeanSqrMag(VecReal32())));
  EXPECT_TRUE(std::isnan(DSPUtils::MeanSqrMag(VecCplx32())));
  EXPECT_TRUE(std::isnan(DSPUtils::MeanSqrMag(VecCplx64())));
  EXPECT_TRUE(std::isnan(DSPUtils::RootMeanSqr(VecReal32())));
  EXPECT_TRUE(std::isnan(DSPUtils::RootMeanSqr(VecReal64())));
  EXPECT_TRUE(std::isnan(DSPUtils::RootMeanSqr(VecCplx32())));
  EXPECT_TRUE(std::isnan(DSPUtils::RootMeanSqr(VecCplx64())));
}

TEST(DSPUtils, GetArbPointValue_WithinAndAtTheEnds_Interpolates) {
  const auto vec = Of<VecReal32>({1.0F, 3.0F, -1.0F, 7.0F});
  EXPECT_EQ(DSPUtils::GetArbPointValue(vec, 0.0), 1.0F);
  EXPECT_EQ(DSPUtils::GetArbPointValue(vec, 0.25), 1.5F);
  EXPECT_EQ(DSPUtils::GetArbPointValue(vec, 1.0), 3.0F);
  EXPECT_EQ(DSPUtils::GetArbPointValue(vec, 1.75), 0.0F);
  EXPECT_EQ(DSPUtils::GetArbPointValue(vec, 2.5), 3.0F);
  EXPECT_EQ(DSPUtils::GetArbPointValue(vec, 3.0), 7.0F);
}

TEST(DSPUtils, GetArbPointValue_AnyIndex_RoundsTheFractionToFloatAndWorksInFloat) {
  VecReal32 vec(50);
  for (int i = 0; i < 50; ++i) vec[i] = static_cast<float>(std::sin(1.7 * i) * 100);
  for (double x = 0; x <= 49; x += 0.0371) {
    const int k = static_cast<int>(x);
    const bool last = k == 49;
    const float from = last ? vec[48] : vec[k], to = last ? vec[49] : vec[k + 1];
    const float t = static_cast<float>(last ? x - 49 + 1 : x - k);
    const float product = t * (to - from);
    ASSERT_EQ(DSPUtils::GetArbPointValue(vec, x), from + product) << x;
  }
}

TEST(DSPUtils, Integrate_FromTheFirstInterval_BeginsAtSampleOne) {
  const auto ones = Of<VecReal32>({1.0F, 1.0F, 1.0F, 1.0F, 1.0F});
  EXPECT_EQ(DSPUtils::Integrate(ones, 0.0, 3.0), 2.0);
  EXPECT_EQ(DSPUtils::Integrate(ones, 0.7, 3.0), 2.0);
}

TEST(DSPUtils, Integrate_BeyondTheFirstInterval_IsTheTrapezoidRule) {
  const auto ones = Of<VecReal32>({1.0F, 1.0F, 1.0F, 1.0F, 1.0F});
  EXPECT_EQ(DSPUtils::Integrate(ones, 1.25, 3.5), 2.25);
  EXPECT_EQ(DSPUtils::Integrate(ones, 1.0, 4.0), 3.0);
  EXPECT_EQ(DSPUtils::Integrate(ones, 2.0, 4.0), 2.0);
  // The integral of x, exact for straight lines.
  const auto line = Of<VecReal32>({0.0F, 1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F});
  EXPECT_EQ(DSPUtils::Integrate(line, 1.5, 5.25), (5.25 * 5.25 - 1.5 * 1.5) / 2);
  EXPECT_EQ(DSPUtils::Integrate(line, 2.0, 6.0), 16.0);
}

TEST(DSPUtils, Integrate_AnyEnds_KeepsThePrecisionOfEachStep) {
  VecReal32 vec(40);
  for (int i = 0; i < 40; ++i) vec[i] = static_cast<float>(std::cos(0.9 * i) + 0.3);
  for (double x1 = 0; x1 < 20; x1 += 0.731) {
    for (double x2 = x1 + 0.1; x2 <= 39; x2 += 0.877) {
      const int i1 = static_cast<int>(x1), i2 = static_cast<int>(x2);
      double sum = 0;
      if (i1 >= 1) {
        const float ends = vec[i1 + 1] + DSPUtils::GetArbPointValue(vec, x1);
        sum += static_cast<double>(ends) * (i1 + 1 - x1) * 0.5;
      }
      sum += static_cast<double>(vec[i1 + 1]) * 0.5;
      for (int i = i1 + 2; i <= i2 - 1; ++i) sum += static_cast<double>(vec[i]);
      const float half = vec[i2] * 0.5F;
      sum += static_cast<double>(half);
      if (i2 < 39) {
        const double y2 = static_cast<double>(DSPUtils::GetArbPointValue(vec, x2));
        sum += (static_cast<double>(vec[i2]) + y2) * (x2 - i2) * 0.5;
      }
      ASSERT_EQ(DSPUtils::Integrate(vec, x1, x2), sum) << x1 << " to " << x2;
    }
  }
}

TYPED_TEST(RealVectors, MovingAverage_OddWidth_IsCentred) {
  using T = ElementOf<TypeParam>;
  TypeParam dst;
  DSPUtils::MovingAverage(dst, Of<TypeParam>({1, 2, 3, 4, 5}), 3);
  EXPECT_EQ(List(dst), (std::vector<T>{1, 2, 3, 4, 5}));
  DSPUtils::MovingAverage(dst, Of<TypeParam>({0, 3, 0, 3, 0}), 3);
  EXPECT_EQ(List(dst), (std::vector<T>{0, 1, 2, 1, 0}));
}

TYPED_TEST(RealVectors, MovingAverage_EvenWidth_ReachesOneFurtherBack) {
  using T = ElementOf<TypeParam>;
  TypeParam dst;
  DSPUtils::MovingAverage(dst, Of<TypeParam>({9, 1, 4, 2}), 2);
  EXPECT_EQ(List(dst), (std::vector<T>{9, 5, 2.5, 3}));
  DSPUtils::MovingAverage(dst, Of<TypeParam>({1, 2, 3, 6, 0, 9}), 4);
  EXPECT_EQ(List(dst), (std::vector<T>{1, 2, 3, 2.75, 4.5, 9}));
}

TYPED_TEST(RealVectors, MovingAverage_WidthThatDoesNotFit_CopiesTheSource) {
  const auto src = Of<TypeParam>({3, 1, 2, 5});
  for (const int width : {5, 6, 7, 8, 9, 100, std::numeric_limits<int>::max(), 0, -1, -2, -3, 1}) {
    TypeParam dst(9);
    DSPUtils::MovingAverage(dst, src, width);
    EXPECT_EQ(List(dst), List(src)) << width;
  }
  TypeParam dst(3);
  DSPUtils::MovingAverage(dst, TypeParam(), 3);
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(RealVectors, MovingAverage_WidthOfTheWholeLength_FillsOnePlace) {
  using T = ElementOf<TypeParam>;
  TypeParam dst;
  DSPUtils::MovingAverage(dst, Of<TypeParam>({3, 1, 2, 6, 8}), 5);
  EXPECT_EQ(List(dst), (std::vector<T>{3, 1, 4, 6, 8}));
  DSPUtils::MovingAverage(dst, Of<TypeParam>({3, 1, 2, 6}), 4);
  EXPECT_EQ(List(dst), (std::vector<T>{3, 1, 3, 6}));
}

TEST(DSPUtils, Functions_OnKeptDestinations_AllocateNothing) {
  const VecCplx32 src(100);
  const VecReal32 real(100);
  VecCplx32 complex(100);
  VecReal32 dst(100);
  const long before = test::AllocationCount();
  DSPUtils::FFTShift(complex, src);
  DSPUtils::Ramp(dst, 100, 1.0F, 2.0F);
  DSPUtils::CumSum(dst, real);
  DSPUtils::Mag(dst, src);
  DSPUtils::Mag(dst, real, real);
  DSPUtils::MagSqr(dst, src);
  DSPUtils::MagdB(dst, src);
  DSPUtils::RootMeanSqr(src);
  DSPUtils::MovingAverage(dst, real, 7);
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
