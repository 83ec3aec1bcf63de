#include "qorn/math/MathUtils.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr double kLogOfOffset = -40.00000234080515;

TEST(MathUtils, LogZeroOffset_InBothWidths_IsOneValue) {
  EXPECT_EQ(std::bit_cast<std::uint64_t>(MathUtils::kLogZeroOffset), 0x37A16C2000000000U);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(static_cast<float>(MathUtils::kLogZeroOffset)), 0x000116C2U);
  EXPECT_EQ(MathUtils::kLogNegativeResult, -999.0);
}

TEST(MathUtils, Log0CheckType_Values_AreThoseOfTheInterface) {
  EXPECT_EQ(MathUtils::Log0NoCheck, 0);
  EXPECT_EQ(MathUtils::Log0Check, 1);
}

TEST(MathUtils, Abs_RealAndInteger_DropsTheSign) {
  VecReal32 f;
  MathUtils::Abs(f, Of<VecReal32>({-1.5F, 0.0F, 2.0F}));
  EXPECT_EQ(List(f), (std::vector<float>{1.5F, 0.0F, 2.0F}));
  VecReal64 d(7);
  MathUtils::Abs(d, Of<VecReal64>({-1.5, -2.0}));
  EXPECT_EQ(List(d), (std::vector<double>{1.5, 2.0}));
  VecInt32 i;
  MathUtils::Abs(i, Of<VecInt32>({-3, 4, std::numeric_limits<int>::min()}));
  EXPECT_EQ(List(i), (std::vector<int>{3, 4, std::numeric_limits<int>::max()}));
}

TEST(MathUtils, Abs_InPlace_DropsTheSign) {
  auto f = Of<VecReal32>({-1.5F, 2.0F});
  MathUtils::Abs(f);
  EXPECT_EQ(List(f), (std::vector<float>{1.5F, 2.0F}));
  auto d = Of<VecReal64>({-1.5, 2.0});
  MathUtils::Abs(d);
  EXPECT_EQ(List(d), (std::vector<double>{1.5, 2.0}));
}

TEST(MathUtils, Abs_InPlaceOnANarrowedView_KeepsTheView) {
  auto vec = Of<VecReal32>({-1.0F, -2.0F, -3.0F, -4.0F});
  vec.Trim(1, 2);
  MathUtils::Abs(vec);
  EXPECT_EQ(List(vec), (std::vector<float>{2.0F, 3.0F}));
  EXPECT_EQ(*(vec.GetPtr() - 1), -1.0F);
}

TEST(MathUtils, Abs_Complex_IsTheMagnitude) {
  VecReal32 f;
  MathUtils::Abs(f, Of<VecCplx32>({{3.0F, 4.0F}, {0.0F, -2.0F}, {-5.0F, 12.0F}}));
  EXPECT_EQ(List(f), (std::vector<float>{5.0F, 2.0F, 13.0F}));
  VecReal64 d;
  MathUtils::Abs(d, Of<VecCplx64>({{3.0, 4.0}, {0.0, -2.0}, {-5.0, 12.0}}));
  EXPECT_EQ(List(d), (std::vector<double>{5.0, 2.0, 13.0}));
}

TEST(MathUtils, Abs_Scalar_GivesWhatTheVectorGives) {
  EXPECT_EQ(MathUtils::Abs(-1.5F), 1.5F);
  EXPECT_EQ(MathUtils::Abs(-1.5), 1.5);
  EXPECT_FALSE(std::signbit(MathUtils::Abs(-0.0)));
  const Cplx32 x{0.3F, -0.7F};
  VecReal32 f;
  MathUtils::Abs(f, Of<VecCplx32>({x}));
  EXPECT_EQ(MathUtils::Abs(x), f[0]);
  EXPECT_FLOAT_EQ(MathUtils::Abs(x), 0.76157731F);
  const Cplx64 y{0.3, -0.7};
  VecReal64 d;
  MathUtils::Abs(d, Of<VecCplx64>({y}));
  EXPECT_EQ(MathUtils::Abs(y), d[0]);
  EXPECT_DOUBLE_EQ(MathUtils::Abs(y), 0.7615773105863908);
}

TEST(MathUtils, Log10_ScalarZero_IsThatOfTheOffset) {
  EXPECT_DOUBLE_EQ(MathUtils::Log10(0.0), kLogOfOffset);
  EXPECT_DOUBLE_EQ(MathUtils::Log10(-0.0), kLogOfOffset);
}

TEST(MathUtils, Log10_ScalarNegative_IsTheStandIn) {
  EXPECT_EQ(MathUtils::Log10(-1.0), -999.0);
  EXPECT_EQ(MathUtils::Log10(-1e-300), -999.0);
  EXPECT_EQ(MathUtils::Log10(-std::numeric_limits<double>::infinity()), -999.0);
}

TEST(MathUtils, Log10_ScalarNotANumber_PassesThrough) {
  EXPECT_TRUE(std::isnan(MathUtils::Log10(std::numeric_limits<double>::quiet_NaN())));
}

TEST(MathUtils, Log10_Scalar_IsTheLogarithm) {
  EXPECT_EQ(MathUtils::Log10(1.0), 0.0);
  EXPECT_DOUBLE_EQ(MathUtils::Log10(1000.0), 3.0);
  EXPECT_DOUBLE_EQ(MathUtils::Log10(2.0), 0.3010299956639812);
  EXPECT_DOUBLE_EQ(MathUtils::Log10(5e-324), -323.3062153431158);
}

TEST(MathUtils, Log10_VectorWithCheck_OffsetsZeroAndNotTheNegative) {
  VecReal64 d;
  MathUtils::Log10(d, Of<VecReal64>({0.0, -1.0, 100.0}), MathUtils::Log0Check);
  EXPECT_DOUBLE_EQ(d[0], kLogOfOffset);
  EXPECT_TRUE(std::isnan(d[1]));
  EXPECT_DOUBLE_EQ(d[2], 2.0);
  VecReal32 f;
  MathUtils::Log10(f, Of<VecReal32>({0.0F, -1.0F, 100.0F}), MathUtils::Log0Check);
  EXPECT_FLOAT_EQ(f[0], static_cast<float>(kLogOfOffset));
  EXPECT_TRUE(std::isnan(f[1]));
  EXPECT_FLOAT_EQ(f[2], 2.0F);
}

TEST(MathUtils, Log10_VectorWithCheck_OffsetsEveryElement) {
  // Twice the offset of a denormal that equals it: the sum is seen because it is as small as the offset.
  const double tiny = MathUtils::kLogZeroOffset;
  auto vec = Of<VecReal64>({tiny});
  MathUtils::Log10(vec, MathUtils::Log0Check);
  EXPECT_DOUBLE_EQ(vec[0], kLogOfOffset + 0.3010299956639812);
}

TEST(MathUtils, Log10_VectorWithoutCheck_GivesMinusInfinityForZero) {
  for (const int check : {0, 2, -1}) {
    auto f = Of<VecReal32>({0.0F, 10.0F, kNaN});
    MathUtils::Log10(f, static_cast<MathUtils::Log0CheckType>(check));
    EXPECT_EQ(f[0], -std::numeric_limits<float>::infinity());
    EXPECT_FLOAT_EQ(f[1], 1.0F);
    EXPECT_TRUE(std::isnan(f[2]));
    VecReal64 d;
    MathUtils::Log10(d, Of<VecReal64>({0.0, 10.0}), static_cast<MathUtils::Log0CheckType>(check));
    EXPECT_EQ(d[0], -std::numeric_limits<double>::infinity());
    EXPECT_DOUBLE_EQ(d[1], 1.0);
  }
}

TEST(MathUtils, Log10_AnyLength_GivesEachElementTheScalarResult) {
  for (const int n : {0, 1, 7, 1023, 1024, 1025, 3000}) {
    VecReal64 src(n);
    for (int i = 0; i < n; ++i) src[i] = 0.37 * (i + 1);
    VecReal64 dst;
    MathUtils::Log10(dst, src);
    ASSERT_EQ(dst.GetSize(), n);
    for (int i = 0; i < n; ++i) ASSERT_EQ(dst[i], MathUtils::Log10(src[i])) << i;
    MathUtils::Log10(src);
    EXPECT_EQ(List(src), List(dst));
  }
}

TEST(MathUtils, Log10_OnANarrowedViewOfItself_KeepsTheView) {
  auto vec = Of<VecReal32>({5.0F, 10.0F, 100.0F, 7.0F});
  vec.Trim(1, 2);
  MathUtils::Log10(vec, vec);
  EXPECT_EQ(vec.GetSize(), 2);
  EXPECT_FLOAT_EQ(vec[0], 1.0F);
  EXPECT_FLOAT_EQ(vec[1], 2.0F);
  EXPECT_EQ(*(vec.GetPtr() - 1), 5.0F);
  EXPECT_EQ(*(vec.GetPtr() + 2), 7.0F);
}

TEST(MathUtils, Pow10_AnyForm_RaisesTen) {
  VecReal32 f;
  MathUtils::Pow10(f, Of<VecReal32>({0.0F, 2.0F, -1.0F, 0.5F}));
  EXPECT_EQ(f[0], 1.0F);
  EXPECT_FLOAT_EQ(f[1], 100.0F);
  EXPECT_FLOAT_EQ(f[2], 0.1F);
  EXPECT_FLOAT_EQ(f[3], 3.1622777F);
  MathUtils::Pow10(f);
  EXPECT_FLOAT_EQ(f[0], 10.0F);
  auto d = Of<VecReal64>({0.5, -300.0});
  MathUtils::Pow10(d, d);
  EXPECT_DOUBLE_EQ(d[0], 3.1622776601683795);
  EXPECT_DOUBLE_EQ(d[1], 1e-300);
  auto e = Of<VecReal64>({3.1622776601683795});
  MathUtils::Pow10(e);
  EXPECT_DOUBLE_EQ(e[0], 1453.0403018990434);
  EXPECT_DOUBLE_EQ(MathUtils::Pow10(-2.5), 0.0031622776601683794);
}

TEST(MathUtils, Functions_OnKeptDestinations_AllocateNothing) {
  VecReal32 src(3000);
  VecReal32 dst(3000);
  const VecCplx32 complex(3000);
  const long before = test::AllocationCount();
  MathUtils::Abs(dst, src);
  MathUtils::Abs(dst, complex);
  MathUtils::Log10(dst, src, MathUtils::Log0Check);
  MathUtils::Log10(src, MathUtils::Log0Check);
  MathUtils::Pow10(dst, src);
  MathUtils::Pow10(dst);
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
