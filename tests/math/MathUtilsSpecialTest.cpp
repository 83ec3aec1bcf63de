// The integer helpers, special functions, differences and pairwise extremes of MathUtils.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/math/MathUtils.h"
#include "support/Allocations.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;

constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();
constexpr long long kMost64 = std::numeric_limits<long long>::max();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(MathUtils, SqrtInteger_OfAnyNumber_RoundsDown) {
  EXPECT_EQ(MathUtils::SqrtInteger(16), 4);
  EXPECT_EQ(MathUtils::SqrtInteger(15), 3);
  EXPECT_EQ(MathUtils::SqrtInteger(0), 0);
  EXPECT_EQ(MathUtils::SqrtInteger(kMost), 46340);
  for (int root = 1; root <= 46340; ++root) {
    ASSERT_EQ(MathUtils::SqrtInteger(root * root), root);
    ASSERT_EQ(MathUtils::SqrtInteger(root * root - 1), root - 1);
  }
  EXPECT_EQ(MathUtils::SqrtInteger(-1), 0);
  EXPECT_EQ(MathUtils::SqrtInteger(kLeast), 0);
}

TEST(MathUtils, Log2Integer_OfAnyNumber_RoundsDown) {
  for (const int x : {1, 0, -1, kLeast}) EXPECT_EQ(MathUtils::Log2Integer(x), 0) << x;
  EXPECT_EQ(MathUtils::Log2Integer(2), 1);
  EXPECT_EQ(MathUtils::Log2Integer(1023), 9);
  EXPECT_EQ(MathUtils::Log2Integer(1024), 10);
  EXPECT_EQ(MathUtils::Log2Integer(1025), 10);
  EXPECT_EQ(MathUtils::Log2Integer(kMost), 30);
}

TEST(MathUtils, Pow2Integer_InBothWidths_TreatsLargeExponentsAsTold) {
  EXPECT_EQ(MathUtils::Pow2Integer(0), 1);
  EXPECT_EQ(MathUtils::Pow2Integer(33), 2);
  EXPECT_EQ(MathUtils::Pow2Integer(31), kLeast);
  EXPECT_EQ(MathUtils::Pow2Integer(-1), kLeast);
  EXPECT_EQ(MathUtils::Pow2Integer(33LL), 8589934592LL);
  EXPECT_EQ(MathUtils::Pow2Integer(0LL), 1);
  EXPECT_EQ(MathUtils::Pow2Integer(62LL), 1LL << 62);
  EXPECT_EQ(MathUtils::Pow2Integer(63LL), std::numeric_limits<long long>::min());
  for (const long long k : {64LL, 65LL, kMost64, -1LL}) EXPECT_EQ(MathUtils::Pow2Integer(k), 0) << k;
}

TEST(MathUtils, PowersOfTwo_AroundAnyNumber_AreFound) {
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_GTorEQ(1000), 1024);
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_GTorEQ(1024), 1024);
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_GTorEQ(1025), 2048);
  for (const int x : {-5, 0, 1, kLeast}) EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_GTorEQ(x), 1) << x;
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_GTorEQ(1 << 30), 1 << 30);
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_GTorEQ((1 << 30) + 1), 0);
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_GTorEQ(kMost), 0);
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_GTorEQ(5000000000LL), 8589934592LL);
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_GTorEQ(1LL << 62), 1LL << 62);
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_GTorEQ(kMost64), 0);
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_GTorEQ(-7LL), 1);
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_LTorEQ(1000), 512);
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_LTorEQ(1024), 1024);
  EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_LTorEQ(kMost), 1 << 30);
  for (const int x : {0, 1, -9}) EXPECT_EQ(MathUtils::GetPowerOfTwoInteger_LTorEQ(x), 1) << x;
  for (const int x : {1, 2, 64, 1 << 30}) EXPECT_TRUE(MathUtils::IsExactPowerOfTwoInteger(x)) << x;
  for (const int x : {0, 6, -1, -2, kMost, kLeast}) {
    EXPECT_FALSE(MathUtils::IsExactPowerOfTwoInteger(x)) << x;
  }
}

// From mpmath.erf at 40 digits.
TEST(MathUtils, Erf_InAllForms_IsThatOfMpmath) {
  const std::vector<double> x{0.125, -0.75, 1.5, 3.25},
      expected{0.14031620480133381739, -0.7111556336535151316, 0.96610514647531072707,
               0.99999569722053632488};
  VecReal64 d;
  MathUtils::Erf(d, Of<VecReal64>(x));
  VecReal32 f;
  MathUtils::Erf(f, Of<VecReal32>({0.125F, -0.75F, 1.5F, 3.25F}));
  for (int i = 0; i < 4; ++i) {
    const double value = expected[static_cast<std::size_t>(i)], arg = x[static_cast<std::size_t>(i)];
    EXPECT_NEAR(d[i], value, 2.3e-16 * std::abs(value));
    EXPECT_NEAR(static_cast<double>(f[i]), value, 6.1e-8 * std::abs(value));
    EXPECT_EQ(MathUtils::Erf(arg), d[i]);
    EXPECT_EQ(MathUtils::Erf(static_cast<float>(arg)), f[i]);
  }
  MathUtils::Erf(d, d);
  EXPECT_EQ(d.GetSize(), 4);
}

// From mpmath.besselj and bessely at 40 digits.
TEST(MathUtils, Bessel_OfBothKinds_IsThatOfMpmath) {
  const struct {
    int order;
    double x, first, second;
  } cases[] = {
      {0, 0.5, 0.93846980724081290423, -0.44451873350670655715},
      {1, 0.5, 0.24226845767487388638, -1.4714723926702430692},
      {2, 5.5, -0.11731548164728747597, 0.33084123326140572253},
      {-3, 4.25, -0.43413979789302673066, 0.094420983635096093096},
      {7, 20.125, -0.18179420131482081133, -0.025854720705782287818},
  };
  for (const auto &c : cases) {
    EXPECT_NEAR(MathUtils::BesselFirstKind(c.order, c.x), c.first, 1e-15) << c.order;
    EXPECT_NEAR(MathUtils::BesselSecondKind(c.order, c.x), c.second, 2e-15) << c.order;
  }
  EXPECT_NEAR(MathUtils::BesselFirstKind(0, -3.25), -0.33275080217061150939, 1e-15);
  EXPECT_NEAR(MathUtils::BesselFirstKind(1, -2.0), -0.5767248077568733872, 1e-15);
  EXPECT_EQ(MathUtils::BesselFirstKind(0, 0.0), 1.0);
  EXPECT_EQ(MathUtils::BesselSecondKind(0, 0.0), -kInf);
  EXPECT_TRUE(std::isnan(MathUtils::BesselSecondKind(1, -1.0)));
}

TEST(MathUtils, Bessel_OfVectors_IsTheScalarOfEachElement) {
  const auto x = Of<VecReal64>({0.5, 2.0, 5.5, 40.0});
  VecReal64 dst(9);
  for (const int order : {0, 1, 2, 5}) {
    MathUtils::BesselFirstKind(dst, order, x);
    ASSERT_EQ(dst.GetSize(), 4);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(dst[i], MathUtils::BesselFirstKind(order, x[i]));
    MathUtils::BesselSecondKind(dst, order, x);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(dst[i], MathUtils::BesselSecondKind(order, x[i]));
  }
  dst = x;
  MathUtils::BesselFirstKind(dst, 0, dst);
  EXPECT_EQ(dst[3], MathUtils::BesselFirstKind(0, 40.0));
  MathUtils::BesselFirstKind(dst, 0, VecReal64());
  EXPECT_EQ(dst.GetSize(), 0);
}

template <class V> class MathUtilsPairs : public testing::Test {};
using RealVectors = testing::Types<VecReal32, VecReal64>;
TYPED_TEST_SUITE(MathUtilsPairs, RealVectors);

TYPED_TEST(MathUtilsPairs, Diff_OfAnyVector_LeavesAViewOneElementFurther) {
  using T = test::ElementOf<TypeParam>;
  TypeParam dst(5);
  const T *block = dst.GetPtr();
  const long before = test::AllocationCount();
  const auto src = Of<TypeParam>({1, 4, 9});
  const long after = test::AllocationCount();
  MathUtils::Diff(dst, src);
  EXPECT_EQ(test::AllocationCount(), after);
  EXPECT_GT(after, before);
  EXPECT_EQ(List(dst), (std::vector<T>{3, 5}));
  EXPECT_EQ(dst.GetPtr(), block + 1);
  EXPECT_EQ(dst.GetCapacity(), 5);
  dst.Resize(3);
  EXPECT_EQ(List(dst), (std::vector<T>{1, 3, 5}));
  MathUtils::Diff(dst, Of<TypeParam>({7}));
  EXPECT_EQ(dst.GetSize(), 0);
  MathUtils::Diff(dst, TypeParam());
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(MathUtilsPairs, Extremes_OfPairs_TakeTheFirstWhereNotComparable) {
  using T = test::ElementOf<TypeParam>;
  const T nan = std::numeric_limits<T>::quiet_NaN();
  const auto a = Of<TypeParam>({1, 5, nan, 1, 0}), b = Of<TypeParam>({2, 3, 1, nan, static_cast<T>(-0.0)});
  TypeParam dst;
  MathUtils::MaxVectorPairs(dst, a, b);
  ASSERT_EQ(dst.GetSize(), 5);
  EXPECT_EQ(dst[0], 2);
  EXPECT_EQ(dst[1], 5);
  EXPECT_TRUE(std::isnan(dst[2]));
  EXPECT_EQ(dst[3], 1);
  EXPECT_FALSE(std::signbit(dst[4])) << "a tie takes the first";
  MathUtils::MinVectorPairs(dst, a, b);
  EXPECT_EQ(dst[0], 1);
  EXPECT_EQ(dst[1], 3);
  EXPECT_TRUE(std::isnan(dst[2]));
  EXPECT_EQ(dst[3], 1);
  EXPECT_FALSE(std::signbit(dst[4]));
  const auto longer = Of<TypeParam>({9, 0, 9, 0, 9, 0, 9});
  auto self = a;
  MathUtils::MaxVectorPairs(self, self, longer);
  EXPECT_EQ(self[1], 5);
  EXPECT_EQ(self.GetSize(), 5);
  self = longer;
  MathUtils::MinVectorPairs(self, a, self);
  EXPECT_EQ(self[0], 1);
  EXPECT_EQ(self.GetSize(), 5);
}

TYPED_TEST(MathUtilsPairs, Extremes_OfManyPairs_AgreeElementByElement) {
  using T = test::ElementOf<TypeParam>;
  TypeParam a(1003), b(1003), largest, smallest;
  for (int i = 0; i < 1003; ++i) {
    a[i] = static_cast<T>(i * 37 % 101);
    b[i] = static_cast<T>(i * 53 % 103);
  }
  MathUtils::MaxVectorPairs(largest, a, b);
  MathUtils::MinVectorPairs(smallest, a, b);
  for (int i = 0; i < 1003; ++i) {
    ASSERT_EQ(largest[i], std::fmax(a[i], b[i]));
    ASSERT_EQ(smallest[i], std::fmin(a[i], b[i]));
  }
}

} // namespace
