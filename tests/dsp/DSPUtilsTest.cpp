#include "qorn/dsp/DSPUtils.h"

#include <gtest/gtest.h>

#include <cmath>
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

TEST(DSPUtils, Functions_OnKeptDestinations_AllocateNothing) {
  const VecCplx32 src(100);
  VecCplx32 complex(100);
  VecReal32 mag(100);
  VecReal32 phase(100);
  const long before = test::AllocationCount();
  DSPUtils::FFTShift(complex, src);
  DSPUtils::CartToPolar(mag, phase, src);
  DSPUtils::PolarToCart(complex, mag, phase);
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
