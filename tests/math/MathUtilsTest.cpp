#include "qorn/math/MathUtils.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include "qorn/infra/QORNException.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/KernelCheck.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Numbers;
using test::Of;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr double kNaN64 = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kLogOfOffset = -40.00000234080515;
constexpr double kLnOfOffset = -92.10340910966488;

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

// Values of elementary functions: argument and exact result from mpmath, rounded once.

struct Value {
  double x, result;
};

template <class V> using OutOfPlace = void (*)(V &, const V &);

/// vector(dst, src) over all values, to one unit in the last place; dst has another length before.
template <class V> void ExpectValues(OutOfPlace<V> vector, const std::vector<Value> &values) {
  using T = test::ElementOf<V>;
  std::vector<T> arguments;
  for (const Value &v : values) arguments.push_back(static_cast<T>(v.x));
  V dst(2);
  vector(dst, Of<V>(arguments));
  ASSERT_EQ(dst.GetSize(), static_cast<int>(values.size()));
  for (int i = 0; i < dst.GetSize(); ++i) {
    const auto expected = static_cast<T>(values[static_cast<std::size_t>(i)].result);
    EXPECT_TRUE(test::WithinUlps{1.0}(dst[i], expected)) << "element " << i << ": " << test::Show(dst[i]);
  }
}

void ExpectValues(OutOfPlace<VecReal32> vector32, OutOfPlace<VecReal64> vector64, double (*scalar)(double),
                  const std::vector<Value> &values) {
  ExpectValues<VecReal32>(vector32, values);
  ExpectValues<VecReal64>(vector64, values);
  for (const Value &v : values) {
    EXPECT_TRUE(test::WithinUlps{1.0}(scalar(v.x), v.result)) << v.x << ": " << test::Show(scalar(v.x));
  }
}

#define THREE_FORMS(name) &MathUtils::name, &MathUtils::name, &MathUtils::name

TEST(MathUtils, Cos_AnyForm_IsTheCosine) {
  ExpectValues(THREE_FORMS(Cos), {{0.0, 1.0},
                                  {0.5, 0.8775825618903728},
                                  {-2.0, -0.4161468365471424},
                                  {100.0, 0.8623188722876839},
                                  {kInf, kNaN64}});
}

TEST(MathUtils, Sin_AnyForm_IsTheSine) {
  ExpectValues(THREE_FORMS(Sin), {{0.0, 0.0},
                                  {0.5, 0.479425538604203},
                                  {-2.0, -0.9092974268256817},
                                  {100.0, -0.5063656411097588},
                                  {-kInf, kNaN64}});
}

TEST(MathUtils, Atan_AnyForm_IsTheArctangent) {
  ExpectValues(THREE_FORMS(Atan), {{0.0, 0.0},
                                   {0.5, 0.4636476090008061},
                                   {-2.0, -1.1071487177940904},
                                   {100.0, 1.5607966601082315},
                                   {kInf, 1.5707963267948966}});
}

TEST(MathUtils, Exp_AnyForm_IsTheExponential) {
  const std::vector<Value> values = {
      {0.0, 1.0}, {0.5, 1.6487212707001282}, {-2.0, 0.1353352832366127}, {80.0, 5.54062238439351e+34}};
  ExpectValues(THREE_FORMS(Exp), values);
  for (const Value &v : values) {
    const float got = MathUtils::Exp(static_cast<float>(v.x));
    EXPECT_TRUE(test::WithinUlps{1.0}(got, static_cast<float>(v.result))) << v.x;
  }
  auto f = Of<VecReal32>({-2.0F, 0.5F});
  MathUtils::Exp(f);
  EXPECT_FLOAT_EQ(f[0], 0.13533528F);
  EXPECT_FLOAT_EQ(f[1], 1.6487212F);
  auto d = Of<VecReal64>({-2.0, 0.5});
  MathUtils::Exp(d);
  EXPECT_DOUBLE_EQ(d[0], 0.1353352832366127);
  EXPECT_DOUBLE_EQ(d[1], 1.6487212707001282);
}

constexpr double kSmallestNormal = 2.2250738585072014e-308;

TEST(MathUtils, Exp_OneDoubleThatUnderflows_IsTheSmallestNormal) {
  for (const double x : {-1000.0, -745.0, -710.0, -1e300}) {
    EXPECT_EQ(MathUtils::Exp(x), kSmallestNormal) << x;
    VecReal64 dst;
    MathUtils::Exp(dst, Of<VecReal64>({x}));
    EXPECT_EQ(dst[0], kSmallestNormal) << x;
    auto vec = Of<VecReal64>({x});
    MathUtils::Exp(vec);
    EXPECT_EQ(vec[0], kSmallestNormal) << x;
  }
  EXPECT_DOUBLE_EQ(MathUtils::Exp(-708.3), 2.450295530965988e-308);
  EXPECT_EQ(MathUtils::Exp(-kInf), 0.0);
  EXPECT_TRUE(std::isnan(MathUtils::Exp(kNaN64)));
}

TEST(MathUtils, Exp_LongerVectorThatUnderflows_KeepsWhatIsLeft) {
  for (const int n : {2, 1023, 1024, 1025, 4097}) {
    VecReal64 src(n), dst;
    src[0] = -710.0;
    src[n - 1] = -1000.0;
    MathUtils::Exp(dst, src);
    EXPECT_DOUBLE_EQ(dst[0], 4.47628622567513e-309) << n;
    EXPECT_EQ(dst[n - 1], 0.0) << n;
    MathUtils::Exp(src);
    EXPECT_EQ(List(src), List(dst)) << n;
  }
}

TEST(MathUtils, Exp_FloatThatUnderflows_KeepsWhatIsLeft) {
  EXPECT_EQ(MathUtils::Exp(-1000.0F), 0.0F);
  EXPECT_EQ(MathUtils::Exp(-95.0F), 5.521e-42F);
  VecReal32 dst;
  MathUtils::Exp(dst, Of<VecReal32>({-1000.0F}));
  EXPECT_EQ(dst[0], 0.0F);
}

TEST(MathUtils, Ln_AnyForm_IsTheNaturalLogarithm) {
  const std::vector<Value> values = {
      {1.0, 0.0}, {0.5, -0.6931471805599453}, {2.0, 0.6931471805599453}, {100.0, 4.605170185988092}};
  for (const auto check : {MathUtils::Log0NoCheck, MathUtils::Log0Check}) {
    for (const Value &v : values) {
      VecReal32 f;
      MathUtils::Ln(f, Of<VecReal32>({static_cast<float>(v.x)}), check);
      EXPECT_FLOAT_EQ(f[0], static_cast<float>(v.result));
      VecReal64 d;
      MathUtils::Ln(d, Of<VecReal64>({v.x}), check);
      EXPECT_DOUBLE_EQ(d[0], v.result);
      auto fInPlace = Of<VecReal32>({static_cast<float>(v.x)});
      MathUtils::Ln(fInPlace, check);
      EXPECT_EQ(fInPlace[0], f[0]);
      auto dInPlace = Of<VecReal64>({v.x});
      MathUtils::Ln(dInPlace, check);
      EXPECT_EQ(dInPlace[0], d[0]);
      EXPECT_EQ(MathUtils::Ln(v.x), d[0]);
    }
  }
}

TEST(MathUtils, Ln_Scalar_GuardsZeroAndNegative) {
  EXPECT_EQ(MathUtils::Ln(-1.0), -999.0);
  EXPECT_EQ(MathUtils::Ln(-5e-324), -999.0);
  EXPECT_DOUBLE_EQ(MathUtils::Ln(0.0), kLnOfOffset);
  EXPECT_DOUBLE_EQ(MathUtils::Ln(-0.0), kLnOfOffset);
  EXPECT_TRUE(std::isnan(MathUtils::Ln(kNaN64)));
  // A tiny argument is not offset.
  EXPECT_DOUBLE_EQ(MathUtils::Ln(MathUtils::kLogZeroOffset / 2), kLnOfOffset - 0.6931471805599453);
}

TEST(MathUtils, Ln_Vector_OffsetsAllOrNothing) {
  const double tiny = MathUtils::kLogZeroOffset;
  const auto tiny32 = static_cast<float>(tiny);
  auto d = Of<VecReal64>({0.0, -1.0, tiny});
  MathUtils::Ln(d, MathUtils::Log0Check);
  EXPECT_DOUBLE_EQ(d[0], kLnOfOffset);
  EXPECT_TRUE(std::isnan(d[1]));
  EXPECT_DOUBLE_EQ(d[2], kLnOfOffset + 0.6931471805599453);
  auto f = Of<VecReal32>({0.0F, -1.0F, tiny32});
  MathUtils::Ln(f, MathUtils::Log0Check);
  EXPECT_FLOAT_EQ(f[0], static_cast<float>(kLnOfOffset));
  EXPECT_TRUE(std::isnan(f[1]));
  EXPECT_FLOAT_EQ(f[2], static_cast<float>(kLnOfOffset + 0.6931471805599453));
  for (const int check : {0, 2, -1}) {
    MathUtils::Ln(d, Of<VecReal64>({0.0, -1.0, tiny}), static_cast<MathUtils::Log0CheckType>(check));
    EXPECT_EQ(d[0], -kInf);
    EXPECT_TRUE(std::isnan(d[1]));
    EXPECT_DOUBLE_EQ(d[2], kLnOfOffset);
    MathUtils::Ln(f, Of<VecReal32>({0.0F, -1.0F, tiny32}), static_cast<MathUtils::Log0CheckType>(check));
    EXPECT_EQ(f[0], -std::numeric_limits<float>::infinity());
    EXPECT_TRUE(std::isnan(f[1]));
    EXPECT_FLOAT_EQ(f[2], static_cast<float>(kLnOfOffset));
  }
}

TEST(MathUtils, Log2AndLogB_AnyArguments_AreQuotientsOfGuardedLogarithms) {
  EXPECT_DOUBLE_EQ(MathUtils::Log2(8.0), 3.0);
  EXPECT_DOUBLE_EQ(MathUtils::Log2(0.0), -132.8771315714809);
  EXPECT_DOUBLE_EQ(MathUtils::Log2(-8.0), -1441.2523458480744);
  EXPECT_TRUE(std::isnan(MathUtils::Log2(kNaN64)));
  EXPECT_DOUBLE_EQ(MathUtils::LogB(10.0, 1000.0), 3.0);
  EXPECT_DOUBLE_EQ(MathUtils::LogB(0.5, 8.0), -3.0);
  EXPECT_DOUBLE_EQ(MathUtils::LogB(2.0, -1.0), -1441.2523458480744);
  EXPECT_DOUBLE_EQ(MathUtils::LogB(-2.0, 8.0), -0.0020815230647445804);
  EXPECT_EQ(MathUtils::LogB(-2.0, -3.0), 1.0);
  EXPECT_DOUBLE_EQ(MathUtils::LogB(0.0, 2.0), -0.007525749451191703);
  EXPECT_EQ(MathUtils::LogB(1.0, 2.0), kInf);
}

// Signs and remainders.

TEST(MathUtils, Sign_AnyType_IsOneMinusOneOrZero) {
  EXPECT_EQ(MathUtils::Sign(3.5), 1.0);
  EXPECT_EQ(MathUtils::Sign(-5e-324), -1.0);
  EXPECT_EQ(MathUtils::Sign(-0.0), 0.0);
  EXPECT_EQ(MathUtils::Sign(-kInf), -1.0);
  EXPECT_EQ(MathUtils::Sign(kNaN64), 0.0);
  EXPECT_EQ(MathUtils::Sign(1e-45F), 1.0F);
  EXPECT_EQ(MathUtils::Sign(-2.0F), -1.0F);
  EXPECT_EQ(MathUtils::Sign(0.0F), 0.0F);
  EXPECT_EQ(MathUtils::Sign(kNaN), 0.0F);
  EXPECT_EQ(MathUtils::Sign(std::numeric_limits<int>::max()), 1);
  EXPECT_EQ(MathUtils::Sign(1), 1);
  EXPECT_EQ(MathUtils::Sign(0), 0);
  EXPECT_EQ(MathUtils::Sign(-1), -1);
  EXPECT_EQ(MathUtils::Sign(std::numeric_limits<int>::min()), -1);
}

TEST(MathUtils, Fmod_AnySigns_HasTheSignOfTheFirst) {
  EXPECT_EQ(MathUtils::Fmod(5.5, 2.0), 1.5);
  EXPECT_EQ(MathUtils::Fmod(-5.5, 2.0), -1.5);
  EXPECT_EQ(MathUtils::Fmod(5.5, -2.0), 1.5);
  EXPECT_EQ(MathUtils::Fmod(1.0, kInf), 1.0);
  EXPECT_TRUE(std::signbit(MathUtils::Fmod(-6.0, 3.0)));
  EXPECT_TRUE(std::isnan(MathUtils::Fmod(1.0, 0.0)));
  EXPECT_TRUE(std::isnan(MathUtils::Fmod(kInf, 2.0)));
  EXPECT_EQ(MathUtils::Fmod(5.3, 0.1), 0.09999999999999953);
  // Of the two floats, which are not 5.3 and 0.1.
  EXPECT_EQ(MathUtils::Fmod(5.3F, 0.1F), 1.1175871e-07F);
  EXPECT_EQ(MathUtils::Fmod(-5.3F, 0.1F), -1.1175871e-07F);
}

// Copies.

template <class V> void ExpectNumbers(const V &vec, const std::vector<int> &numbers) {
  EXPECT_EQ(List(vec), List(Numbers<V>(numbers)));
}

template <class V> class MathUtilsOnAll : public testing::Test {};
using AllVectors = testing::Types<VecReal32, VecReal64, VecCplx32, VecCplx64, VecInt32>;
TYPED_TEST_SUITE(MathUtilsOnAll, AllVectors);

TYPED_TEST(MathUtilsOnAll, Copy_FromAStart_TakesTheRest) {
  const auto src = Numbers<TypeParam>({0, 1, 2, 3, 4, 5, 6, 7});
  TypeParam dst(3);
  MathUtils::Copy(dst, src, 5);
  ExpectNumbers(dst, {5, 6, 7});
  MathUtils::Copy(dst, src, 0);
  ExpectNumbers(dst, {0, 1, 2, 3, 4, 5, 6, 7});
  MathUtils::Copy(dst, src, 8);
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(MathUtilsOnAll, Copy_Count_GivesDstThatLength) {
  const auto src = Numbers<TypeParam>({0, 1, 2, 3, 4, 5, 6, 7});
  TypeParam dst;
  MathUtils::Copy(dst, 5, src, 2);
  ExpectNumbers(dst, {2, 3, 4, 5, 6});
  MathUtils::Copy(dst, -1, src, 6);
  ExpectNumbers(dst, {6, 7});
  MathUtils::Copy(dst, 0, src, 6);
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(MathUtilsOnAll, Copy_IntoAPlace_OverwritesWithoutResize) {
  const auto src = Numbers<TypeParam>({10, 11, 12, 13});
  auto dst = Numbers<TypeParam>({0, 1, 2, 3, 4});
  MathUtils::Copy(dst, 1, 2, src, 2);
  ExpectNumbers(dst, {0, 12, 13, 3, 4});
  MathUtils::Copy(dst, 3, -1, src, 2);
  ExpectNumbers(dst, {0, 12, 13, 12, 13});
  MathUtils::Copy(dst, 0, 0, src, 1);
  MathUtils::Copy(dst, 0, -2, src, 1);
  MathUtils::Copy(dst, 0, -1, src, 4);
  ExpectNumbers(dst, {0, 12, 13, 12, 13});
  MathUtils::Copy(dst, 1, 4, dst, 0);
  ExpectNumbers(dst, {0, 0, 12, 13, 12});
}

// Complex elements.

template <class V> class MathUtilsOnComplex : public testing::Test {};
using ComplexVectors = testing::Types<VecCplx32, VecCplx64>;
TYPED_TEST_SUITE(MathUtilsOnComplex, ComplexVectors);

TYPED_TEST(MathUtilsOnComplex, Conj_InPlace_NegatesTheImaginaryPart) {
  auto vec = Of<TypeParam>({{1, 2}, {-3, -4}, {5, 0}});
  MathUtils::Conj(vec);
  EXPECT_EQ(List(vec), List(Of<TypeParam>({{1, -2}, {-3, 4}, {5, 0}})));
  EXPECT_TRUE(std::signbit(vec[2].im));
}

TYPED_TEST(MathUtilsOnComplex, ConjFlip_AnyLength_ConjugatesAndReverses) {
  for (int n = 0; n < 70; ++n) {
    TypeParam vec(n), expected(n);
    using Part = test::Part<test::ElementOf<TypeParam>>;
    for (int i = 0; i < n; ++i) {
      vec[i] = {static_cast<Part>(i), static_cast<Part>(i + 1)};
      expected[n - 1 - i] = {static_cast<Part>(i), static_cast<Part>(-i - 1)};
    }
    MathUtils::ConjFlip(vec);
    EXPECT_EQ(List(vec), List(expected)) << n;
  }
}

TYPED_TEST(MathUtilsOnComplex, Sqr_AnyForm_IsTheComplexSquare) {
  const auto src = Of<TypeParam>({{3, 4}, {0, -2}, {-1, 1}});
  const auto squares = List(Of<TypeParam>({{-7, 24}, {-4, 0}, {0, -2}}));
  TypeParam dst;
  MathUtils::Sqr(dst, src);
  EXPECT_EQ(List(dst), squares);
  MathUtils::Copy(dst, src, 0);
  MathUtils::Sqr(dst);
  EXPECT_EQ(List(dst), squares);
}

TYPED_TEST(MathUtilsOnComplex, Sqrt_AnyForm_IsThePrincipalRoot) {
  using T = test::ElementOf<TypeParam>;
  const auto src = Of<TypeParam>({{3, 4}, {0, -2}, {-1, 2}, {-4, 0}});
  using Part = test::Part<T>;
  const std::vector<T> roots = {{2, 1}, {1, -1}, {Part(0.7861513777574233), Part(1.272019649514069)}, {0, 2}};
  TypeParam dst, vec(src);
  MathUtils::Sqrt(dst, src);
  MathUtils::Sqrt(vec);
  ASSERT_EQ(dst.GetSize(), 4);
  for (int i = 0; i < 4; ++i) {
    EXPECT_TRUE(test::WithinUlps{4.0}(dst[i], roots[static_cast<std::size_t>(i)])) << test::Show(dst[i]);
  }
  EXPECT_EQ(List(vec), List(dst));
}

template <class V> class MathUtilsOnReal : public testing::Test {};
using RealVectors = testing::Types<VecReal32, VecReal64>;
TYPED_TEST_SUITE(MathUtilsOnReal, RealVectors);

TYPED_TEST(MathUtilsOnReal, SqrAndSqrt_AnyForm_AreRoundedOnce) {
  using T = test::ElementOf<TypeParam>;
  TypeParam dst;
  MathUtils::Sqr(dst, Of<TypeParam>({T(1.5), -3, T(0.1)}));
  EXPECT_EQ(List(dst), (std::vector<T>{T(2.25), 9, T(0.1) * T(0.1)}));
  MathUtils::Sqr(dst);
  EXPECT_EQ(dst[1], 81);
  MathUtils::Sqrt(dst, Of<TypeParam>({T(2.25), 2, 0, -1}));
  EXPECT_EQ(dst[0], T(1.5));
  EXPECT_EQ(dst[1], T(1.4142135623730951));
  EXPECT_EQ(dst[2], 0);
  EXPECT_TRUE(std::isnan(dst[3]));
  MathUtils::Sqrt(dst);
  EXPECT_EQ(dst[0], T(1.224744871391589));
}

TEST(MathUtils, SqrAndSqrt_Scalar_AreThoseOfADouble) {
  EXPECT_EQ(MathUtils::Sqr(-1.5), 2.25);
  EXPECT_EQ(MathUtils::Sqr(0.1), 0.1 * 0.1);
  EXPECT_EQ(MathUtils::Sqrt(2.0), 1.4142135623730951);
  EXPECT_TRUE(std::isnan(MathUtils::Sqrt(-1.0)));
}

// Rounding to integral values.

template <class V, class C> struct RoundingForms {
  void (*vector)(V &);
  void (*complex)(C &);
  void (*raw)(test::ElementOf<V> *, int);
  test::ElementOf<V> (*scalar)(test::ElementOf<V>);
};

template <class V, class C>
void ExpectRounded(const RoundingForms<V, C> &round, const std::vector<Value> &values) {
  using T = test::ElementOf<V>;
  for (const Value &v : values) {
    const auto x = static_cast<T>(v.x), result = static_cast<T>(v.result);
    const test::Same same;
    EXPECT_TRUE(same(round.scalar(x), result)) << v.x;
    auto vec = Of<V>({1, x, -1});
    round.vector(vec);
    EXPECT_TRUE(same(vec[1], result)) << v.x;
    auto pairs = Of<C>({{x, 1}, {1, x}, {x, x}});
    round.complex(pairs);
    for (const auto &[got, expected] : {std::pair(pairs[0], test::ElementOf<C>{result, 1}),
                                        {pairs[1], {1, result}},
                                        {pairs[2], {result, result}}}) {
      EXPECT_TRUE(same(got, expected)) << test::Show(got);
    }
    T array[] = {x, x, x};
    round.raw(array, 2);
    EXPECT_TRUE(same(array[0], result)) << v.x;
    EXPECT_TRUE(same(array[1], result)) << v.x;
    EXPECT_TRUE(same(array[2], x)) << v.x;
    round.raw(array + 2, 0);
    round.raw(array + 2, -3);
    EXPECT_TRUE(same(array[2], x)) << v.x;
  }
}

#define EXPECT_ROUNDED(name, ...)                                                                            \
  do {                                                                                                       \
    const std::vector<Value> rounded = __VA_ARGS__;                                                          \
    ExpectRounded<VecReal32, VecCplx32>(                                                                     \
        {&MathUtils::name, &MathUtils::name, &MathUtils::name, &MathUtils::name}, rounded);                  \
    ExpectRounded<VecReal64, VecCplx64>(                                                                     \
        {&MathUtils::name, &MathUtils::name, &MathUtils::name, &MathUtils::name}, rounded);                  \
  } while (false)

TEST(MathUtils, Round_AnyForm_GoesToTheNearestAndHalvesAwayFromZero) {
  EXPECT_ROUNDED(Round, {{2.5, 3.0},
                         {-2.5, -3.0},
                         {0.5, 1.0},
                         {-0.5, -1.0},
                         {1.5, 2.0},
                         {2.25, 2.0},
                         {-2.75, -3.0},
                         {0.25, 0.0},
                         {-0.25, -0.0},
                         {-0.0, -0.0},
                         {1e19, 1e19},
                         {8388607.5, 8388608.0},
                         {kInf, kInf},
                         {kNaN64, kNaN64}});
  EXPECT_EQ(MathUtils::Round(0.49999997F), 0.0F);
  EXPECT_EQ(MathUtils::Round(0.49999999999999994), 0.0);
}

TEST(MathUtils, Trunc_AnyForm_GoesTowardZero) {
  EXPECT_ROUNDED(Trunc, {{2.75, 2.0},
                         {-2.75, -2.0},
                         {0.5, 0.0},
                         {-0.5, -0.0},
                         {3.0, 3.0},
                         {-1e19, -1e19},
                         {8388607.5, 8388607.0},
                         {-kInf, -kInf},
                         {kNaN64, kNaN64}});
}

TEST(MathUtils, Floor_AnyForm_GoesDown) {
  EXPECT_ROUNDED(Floor, {{2.75, 2.0},
                         {-2.25, -3.0},
                         {0.5, 0.0},
                         {-0.5, -1.0},
                         {3.0, 3.0},
                         {-0.0, -0.0},
                         {-8388607.5, -8388608.0},
                         {-kInf, -kInf},
                         {kNaN64, kNaN64}});
}

TEST(MathUtils, Ceil_AnyForm_GoesUp) {
  EXPECT_ROUNDED(Ceil, {{2.25, 3.0},
                        {-2.75, -2.0},
                        {0.5, 1.0},
                        {-0.5, -0.0},
                        {-3.0, -3.0},
                        {-0.0, -0.0},
                        {8388607.5, 8388608.0},
                        {kInf, kInf},
                        {kNaN64, kNaN64}});
}

// Cosine and sine of a ramp.

template <class V> using Generator = void (*)(V &, int, double, double);

/// Element i against the function of i * step + start, both steps rounded to the element type.
template <class V>
void ExpectOfRamp(Generator<V> generate, long double (*exact)(long double), double step, double start) {
  using T = test::ElementOf<V>;
  V dst(7);
  generate(dst, 1000, step, start);
  ASSERT_EQ(dst.GetSize(), 1000);
  for (int i = 0; i < 1000; ++i) {
    const T product = static_cast<T>(i) * static_cast<T>(step);
    const T x = product + static_cast<T>(start);
    const auto expected = static_cast<T>(exact(static_cast<long double>(x)));
    ASSERT_TRUE(test::WithinUlps{1.0}(dst[i], expected)) << i << ": " << test::Show(dst[i]);
  }
  generate(dst, 0, step, start);
  EXPECT_EQ(dst.GetSize(), 0);
}

TEST(MathUtils, CosAndSin_OfARamp_TakeItInTheElementsPrecision) {
  for (const double step : {0.1, -3.7, 0.0}) {
    for (const double start : {0.2, -100.0}) {
      ExpectOfRamp<VecReal32>(&MathUtils::Cos, &std::cos, step, start);
      ExpectOfRamp<VecReal64>(&MathUtils::Cos, &std::cos, step, start);
      ExpectOfRamp<VecReal32>(&MathUtils::Sin, &std::sin, step, start);
      ExpectOfRamp<VecReal64>(&MathUtils::Sin, &std::sin, step, start);
    }
  }
}

TEST(MathUtils, Cos_OfALongFloatRamp_ErrsWithTheRampInFloat) {
  VecReal32 dst;
  MathUtils::Cos(dst, 100000, 0.1, 0.0);
  EXPECT_GT(std::abs(static_cast<double>(dst[99999]) - std::cos(9999.9)), 1e-5);
}

// Angles of points.

TEST(MathUtils, Atan2_AnyForm_TakesTheOrdinateFirst) {
  // The longer second source does not count.
  VecReal32 f(9);
  MathUtils::Atan2(f, Of<VecReal32>({1.0F, 1.0F, -1.0F, -1.0F}),
                   Of<VecReal32>({2.0F, -2.0F, -2.0F, 2.0F, 7.0F}));
  ASSERT_EQ(f.GetSize(), 4);
  VecReal64 d;
  MathUtils::Atan2(d, Of<VecReal64>({1.0, 1.0, -1.0, -1.0}), Of<VecReal64>({2.0, -2.0, -2.0, 2.0, 7.0}));
  ASSERT_EQ(d.GetSize(), 4);
  const double angles[] = {0.4636476090008061, 2.677945044588987, -2.677945044588987, -0.4636476090008061};
  for (int i = 0; i < 4; ++i) {
    EXPECT_FLOAT_EQ(f[i], static_cast<float>(angles[i]));
    EXPECT_DOUBLE_EQ(d[i], angles[i]);
  }
  EXPECT_DOUBLE_EQ(MathUtils::Atan2(1.0, -2.0), 2.677945044588987);
  EXPECT_EQ(MathUtils::Atan2(0.0, 0.0), 0.0);
  EXPECT_DOUBLE_EQ(MathUtils::Atan2(-0.0, -1.0), -3.141592653589793);
}

TEST(MathUtils, Atan2_IntoASource_KeepsItsView) {
  const auto y = Of<VecReal64>({1.0, -1.0});
  const auto x = Of<VecReal64>({2.0, -2.0});
  VecReal64 first(y);
  MathUtils::Atan2(first, first, x);
  EXPECT_DOUBLE_EQ(first[0], 0.4636476090008061);
  EXPECT_DOUBLE_EQ(first[1], -2.677945044588987);
  auto second = Of<VecReal64>({9.0, 2.0, -2.0, 8.0});
  second.Trim(1);
  MathUtils::Atan2(second, y, second);
  ASSERT_EQ(second.GetSize(), 2);
  EXPECT_DOUBLE_EQ(second[0], 0.4636476090008061);
  EXPECT_DOUBLE_EQ(second[1], -2.677945044588987);
  EXPECT_EQ(*(second.GetPtr() - 1), 9.0);
  EXPECT_EQ(*(second.GetPtr() + 2), 8.0);
  MathUtils::Atan2(second, VecReal64(), second);
  EXPECT_EQ(second.GetSize(), 0);
}

// Powers.

TEST(MathUtils, Pow_AnyForm_RaisesToTheExponent) {
  VecReal32 f;
  MathUtils::Pow(f, Of<VecReal32>({0.5F, 4.0F, -1.0F}), -2.5F);
  EXPECT_FLOAT_EQ(f[0], 5.656854249492381F);
  EXPECT_FLOAT_EQ(f[1], 0.03125F);
  EXPECT_TRUE(std::isnan(f[2]));
  auto fInPlace = Of<VecReal32>({-3.0F, 2.5F});
  MathUtils::Pow(fInPlace, 3.0F);
  EXPECT_EQ(List(fInPlace), (std::vector<float>{-27.0F, 15.625F}));
  VecReal64 d;
  MathUtils::Pow(d, Of<VecReal64>({2.5, 1.0}), 3.25);
  EXPECT_DOUBLE_EQ(d[0], 19.647397338795866);
  EXPECT_EQ(d[1], 1.0);
  auto dInPlace = Of<VecReal64>({-3.0, 0.0});
  MathUtils::Pow(dInPlace, 3.0);
  EXPECT_EQ(List(dInPlace), (std::vector<double>{-27.0, 0.0}));
  EXPECT_DOUBLE_EQ(MathUtils::Pow(2.5, 3.25), 19.647397338795866);
  EXPECT_DOUBLE_EQ(MathUtils::Pow(10.0, 0.5), 3.1622776601683795);
  EXPECT_EQ(MathUtils::Pow(kNaN64, 0.0), 1.0);
}

// Phasors and tones.

TEST(MathUtils, Expj_Phases_AreUnitPhasors) {
  VecCplx32 f;
  MathUtils::Expj(f, Of<VecReal32>({0.0F, 0.5F, -2.0F}));
  VecCplx64 d;
  MathUtils::Expj(d, Of<VecReal64>({0.0, 0.5, -2.0}));
  const Cplx64 expected[] = {
      {1.0, 0.0}, {0.8775825618903728, 0.479425538604203}, {-0.4161468365471424, -0.9092974268256817}};
  ASSERT_EQ(f.GetSize(), 3);
  ASSERT_EQ(d.GetSize(), 3);
  for (int i = 0; i < 3; ++i) {
    EXPECT_DOUBLE_EQ(d[i].re, expected[i].re);
    EXPECT_DOUBLE_EQ(d[i].im, expected[i].im);
    EXPECT_FLOAT_EQ(f[i].re, static_cast<float>(expected[i].re));
    EXPECT_FLOAT_EQ(f[i].im, static_cast<float>(expected[i].im));
  }
  EXPECT_EQ(MathUtils::Expj(0.5F), f[1]);
  EXPECT_EQ(MathUtils::Expj(0.5), d[1]);
}

TYPED_TEST(MathUtilsOnComplex, Expj_ToneOfAQuarter_TurnsByRightAnglesAndKeepsThePhase) {
  using Part = test::Part<test::ElementOf<TypeParam>>;
  TypeParam dst;
  Part phase = 0;
  MathUtils::Expj(dst, 8, Part(0.25), phase);
  EXPECT_EQ(phase, 0);
  ASSERT_EQ(dst.GetSize(), 8);
  const int re[] = {1, 0, -1, 0}, im[] = {0, 1, 0, -1};
  for (int i = 0; i < 8; ++i) {
    EXPECT_NEAR(static_cast<double>(dst[i].re), re[i % 4], 2e-6) << i;
    EXPECT_NEAR(static_cast<double>(dst[i].im), im[i % 4], 2e-6) << i;
  }
  MathUtils::Expj(dst, 0, Part(0.25), phase);
  EXPECT_EQ(dst.GetSize(), 0);
}

constexpr long double kTwoPi = 6.283185307179586476925L;

TEST(MathUtils, Expj_Tone_HasItsFrequencyAndPhase) {
  VecCplx64 d;
  MathUtils::Expj(d, 500, 0.0123, -1.5);
  VecCplx32 f;
  MathUtils::Expj(f, 500, 0.0123F, -1.5F);
  for (int i = 0; i < 500; ++i) {
    const long double turn = kTwoPi * static_cast<long double>(0.0123) * i - 1.5L;
    EXPECT_NEAR(d[i].re, static_cast<double>(std::cos(turn)), 1e-13);
    EXPECT_NEAR(d[i].im, static_cast<double>(std::sin(turn)), 1e-13);
    EXPECT_NEAR(static_cast<double>(f[i].re), static_cast<double>(std::cos(turn)), 2e-5);
    EXPECT_NEAR(static_cast<double>(f[i].im), static_cast<double>(std::sin(turn)), 2e-5);
  }
}

TEST(MathUtils, ExpjEP_AnyTone_IsThatInDoubleRounded) {
  VecCplx64 wide;
  MathUtils::Expj(wide, 3000, 0.1234567, 0.7);
  VecCplx32 tone(5);
  MathUtils::Expj_EP(tone, 3000, 0.1234567, 0.7);
  ASSERT_EQ(tone.GetSize(), 3000);
  for (int i = 0; i < 3000; ++i) {
    EXPECT_EQ(tone[i], (Cplx32{static_cast<float>(wide[i].re), static_cast<float>(wide[i].im)})) << i;
  }
}

TEST(MathUtils, ExpjEP_LongTone_DoesNotDrift) {
  constexpr int n = 200000;
  VecCplx32 precise, plain;
  MathUtils::Expj_EP(precise, n, 0.1234567, 0.0);
  MathUtils::Expj(plain, n, 0.1234567F, 0.0F);
  const auto exact = static_cast<double>(std::cos(kTwoPi * (n - 1) * static_cast<long double>(0.1234567)));
  EXPECT_NEAR(static_cast<double>(precise[n - 1].re), exact, 6e-8);
  EXPECT_GT(std::abs(static_cast<double>(plain[n - 1].re) - exact), 1e-4);
}

// Destinations.

TYPED_TEST(MathUtilsOnReal, AnyDestination_Narrowed_IsWholeAgainAndGrowsByNeed) {
  TypeParam dst(5);
  const auto *storage = dst.GetPtr();
  const auto three = Of<TypeParam>({1, 2, 3});
  const std::function<void()> calls[] = {
      [&] { MathUtils::Abs(dst, three); },       [&] { MathUtils::Cos(dst, three); },
      [&] { MathUtils::Cos(dst, 3, 0.5, 0.0); }, [&] { MathUtils::Atan2(dst, three, three); },
      [&] { MathUtils::Pow(dst, three, 2); },    [&] { MathUtils::Pow10(dst, three); },
      [&] { MathUtils::Ln(dst, three); },        [&] { MathUtils::Ln(dst, three, MathUtils::Log0Check); },
      [&] { MathUtils::Copy(dst, three, 0); }};
  for (const auto &call : calls) {
    dst.Trim(2);
    call();
    EXPECT_EQ(dst.GetSize(), 3);
    EXPECT_EQ(dst.GetCapacity(), 5);
    EXPECT_EQ(dst.GetPtr(), storage);
  }
  MathUtils::Exp(dst, TypeParam(8));
  EXPECT_EQ(dst.GetSize(), 8);
  EXPECT_EQ(dst.GetCapacity(), 8);
}

TEST(MathUtils, AnyGenerator_BeyondAnyVector_FailsAsALackOfMemory) {
  constexpr int n = std::numeric_limits<int>::max();
  VecReal32 f;
  VecReal64 d;
  VecCplx32 cf;
  VecCplx64 cd;
  const std::function<void()> calls[] = {
      [&] { MathUtils::Cos(f, n, 0.1, 0.0); }, [&] { MathUtils::Sin(d, n, 0.1, 0.0); },
      [&] { MathUtils::Expj(cf, n, 0.1F, 0.0F); }, [&] { MathUtils::Expj(cd, n, 0.1, 0.0); },
      [&] { MathUtils::Expj_EP(cf, n, 0.1, 0.0); }};
  testing::internal::CaptureStdout();
  for (const auto &call : calls) {
    try {
      call();
      ADD_FAILURE() << "no exception";
    } catch (const QORNException &e) {
      EXPECT_EQ(e.GetErrorCode(), 11001);
    }
  }
  testing::internal::GetCapturedStdout();
}

TEST(MathUtils, Functions_OnKeptDestinations_AllocateNothing) {
  VecReal32 src(3000);
  VecReal32 dst(3000);
  const VecCplx32 complex(3000);
  VecCplx32 phasors(3000);
  const long before = test::AllocationCount();
  MathUtils::Abs(dst, src);
  MathUtils::Abs(dst, complex);
  MathUtils::Log10(dst, src, MathUtils::Log0Check);
  MathUtils::Log10(src, MathUtils::Log0Check);
  MathUtils::Pow10(dst, src);
  MathUtils::Pow10(dst);
  MathUtils::Ln(dst, src);
  MathUtils::Exp(dst, src);
  MathUtils::Pow(dst, src, 2.0F);
  MathUtils::Atan2(dst, src, src);
  MathUtils::Cos(dst, src);
  MathUtils::Cos(dst, 3000, 0.1, 0.0);
  MathUtils::Sqrt(phasors, complex);
  MathUtils::Expj(phasors, src);
  MathUtils::Round(phasors);
  MathUtils::ConjFlip(phasors);
  MathUtils::Copy(dst, 100, src, 5);
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
