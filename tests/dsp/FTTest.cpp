#include "qorn/dsp/FT.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>

#include "support/Allocations.h"
#include "support/FourierVectors.h"

namespace {

using namespace QORN;
using test::AllocationCount;
using test::AllocationLimit;
using test::NoiseVector;
using test::SameBits;
using test::TransformError;

// The vectors and kinds of a precision.
template <class T> struct Types;
template <> struct Types<float> {
  using Real = VecReal32;
  using Cplx = VecCplx32;
  [[maybe_unused]] static constexpr int kReal = 0, kCplx = 1;
};
template <> struct Types<double> {
  using Real = VecReal64;
  using Cplx = VecCplx64;
  [[maybe_unused]] static constexpr int kReal = 2, kCplx = 3;
};

template <class T> constexpr double kEps = static_cast<double>(std::numeric_limits<T>::epsilon());

// The documented bound of any length.
template <class T> double Bound(int n) { return kEps<T> * std::sqrt(std::max(1.0, std::log2(n))); }

constexpr int kLengths[] = {1,  2,  3,   4,   5,   6,    7,    8,    13,   16,   17,   30,
                            37, 64, 100, 101, 512, 1000, 1009, 1023, 1024, 2310, 4096, 10000};

template <class T> class FTOf : public testing::Test {};
using Scalars = testing::Types<float, double>;
TYPED_TEST_SUITE(FTOf, Scalars);

TYPED_TEST(FTOf, Complex_AnyLength_IsTheDefinition) {
  using Vec = typename Types<TypeParam>::Cplx;
  FT ft;
  for (const int n : kLengths) {
    const auto x = NoiseVector<Vec>(n);
    Vec y, data = x;
    ft.Forward(y, x);
    EXPECT_LE(TransformError(y, x, -1, 1), Bound<TypeParam>(n)) << n;
    ft.Forward(data, data);
    EXPECT_TRUE(SameBits(data, y)) << n;
    ft.Inverse(y, x);
    EXPECT_LE(TransformError(y, x, 1, 1.0L / n), Bound<TypeParam>(n)) << n;
    data = x;
    ft.Inverse(data, data);
    EXPECT_TRUE(SameBits(data, y)) << n;
  }
}

TYPED_TEST(FTOf, RealForward_AnyLength_IsTheDefinitionWithAllBins) {
  using Real = typename Types<TypeParam>::Real;
  using Cplx = typename Types<TypeParam>::Cplx;
  FT ft;
  for (const int n : kLengths) {
    const auto x = NoiseVector<Real>(n);
    Cplx y;
    ft.Forward(y, x);
    ASSERT_EQ(y.GetSize(), n);
    EXPECT_LE(TransformError(y, x, -1, 1), Bound<TypeParam>(n)) << n;
    for (int k = 1; k < n; ++k) {
      ASSERT_EQ(y[k].re, y[n - k].re) << n << ' ' << k;
      ASSERT_EQ(y[k].im, -y[n - k].im) << n << ' ' << k;
    }
  }
}

TYPED_TEST(FTOf, RealForward_Cosine_GivesEqualMagnitudesInMirroredBins) {
  using Real = typename Types<TypeParam>::Real;
  using Cplx = typename Types<TypeParam>::Cplx;
  FT ft;
  for (const int n : {64, 100, 101}) {
    for (const int k : {1, 7, 20}) {
      Real x(n);
      for (int i = 0; i < n; ++i)
        x[i] = static_cast<TypeParam>(std::cos(2 * 3.14159265358979324 * k * i / n));
      Cplx y;
      ft.Forward(y, x);
      EXPECT_NEAR(y[k].re, n / 2.0, n * 4 * kEps<TypeParam>);
      for (int bin = 1; bin < n; ++bin) {
        EXPECT_EQ(std::hypot(y[bin].re, y[bin].im), std::hypot(y[n - bin].re, y[n - bin].im));
        if (bin != k && bin != n - k) {
          EXPECT_NEAR(std::hypot(y[bin].re, y[bin].im), 0, n * 4 * kEps<TypeParam>);
        }
      }
    }
  }
}

TYPED_TEST(FTOf, RealInverse_OfRealForward_IsTheInput) {
  using Real = typename Types<TypeParam>::Real;
  using Cplx = typename Types<TypeParam>::Cplx;
  FT ft;
  for (const int n : kLengths) {
    const auto x = NoiseVector<Real>(n);
    Cplx spectrum;
    Real y;
    ft.Forward(spectrum, x);
    ft.Inverse(y, spectrum);
    ASSERT_EQ(y.GetSize(), n);
    for (int i = 0; i < n; ++i) {
      ASSERT_NEAR(y[i], x[i], 20 * kEps<TypeParam> * std::sqrt(1 + std::log2(n))) << n;
    }
  }
}

TYPED_TEST(FTOf, RealInverse_UpperHalfOverwritten_GivesTheSameOutput) {
  using Real = typename Types<TypeParam>::Real;
  using Cplx = typename Types<TypeParam>::Cplx;
  FT ft;
  for (const int n : kLengths) {
    auto spectrum = NoiseVector<Cplx>(n);
    Real expected, got;
    ft.Inverse(expected, spectrum);
    for (int k = n / 2 + 1; k < n; ++k) {
      spectrum[k] = {std::numeric_limits<TypeParam>::quiet_NaN(), std::numeric_limits<TypeParam>::infinity()};
    }
    ft.Inverse(got, spectrum);
    EXPECT_TRUE(SameBits(got, expected)) << n;
  }
}

TYPED_TEST(FTOf, Transform_EachScaleFlag_ScalesAsTheTableSays) {
  using Real = typename Types<TypeParam>::Real;
  using Cplx = typename Types<TypeParam>::Cplx;
  for (const int n : {7, 8, 96, 1000, 1009}) {
    const long double root = std::sqrt(static_cast<long double>(n));
    const struct {
      FftScaleFlag flag;
      long double forward, inverse;
    } rows[] = {{FftScaleForwardByN, 1.0L / n, 1},
                {FftScaleInverseByN, 1, 1.0L / n},
                {FftScaleBySqrtN, 1 / root, 1 / root},
                {FftScaleNone, 1, 1}};
    for (const auto &row : rows) {
      FT ft(row.flag, QORNAlgorithmFast);
      const auto x = NoiseVector<Cplx>(n);
      const auto real = NoiseVector<Real>(n);
      Cplx y, spectrum;
      ft.Forward(y, x);
      EXPECT_LE(TransformError(y, x, -1, row.forward), Bound<TypeParam>(n)) << n << ' ' << row.flag;
      ft.Inverse(y, x);
      EXPECT_LE(TransformError(y, x, 1, row.inverse), Bound<TypeParam>(n)) << n << ' ' << row.flag;
      ft.Forward(spectrum, real);
      EXPECT_LE(TransformError(spectrum, real, -1, row.forward), Bound<TypeParam>(n)) << n << ' ' << row.flag;
      Real back;
      ft.Inverse(back, spectrum);
      EXPECT_LE(TransformError(back, spectrum, 1, row.inverse), Bound<TypeParam>(n)) << n << ' ' << row.flag;
    }
  }
}

TYPED_TEST(FTOf, Inverse_OfForwardWithoutScale_IsLengthTimesTheInput) {
  using Cplx = typename Types<TypeParam>::Cplx;
  using Real = typename Types<TypeParam>::Real;
  FT ft(FftScaleNone, QORNAlgorithmAccurate);
  for (const int n : {8, 100, 127}) {
    const auto x = NoiseVector<Cplx>(n);
    const auto real = NoiseVector<Real>(n);
    Cplx y;
    Real back;
    const double tolerance = n * 30 * kEps<TypeParam>;
    ft.Forward(y, x);
    ft.Inverse(y, y);
    for (int i = 0; i < n; ++i) {
      EXPECT_NEAR(y[i].re, n * double{x[i].re}, tolerance) << n;
      EXPECT_NEAR(y[i].im, n * double{x[i].im}, tolerance) << n;
    }
    ft.Forward(y, real);
    ft.Inverse(back, y);
    for (int i = 0; i < n; ++i) EXPECT_NEAR(back[i], n * double{real[i]}, tolerance) << n;
  }
}

TYPED_TEST(FTOf, Transform_LengthSeenBefore_AllocatesNothing) {
  using Real = typename Types<TypeParam>::Real;
  using Cplx = typename Types<TypeParam>::Cplx;
  FT ft;
  const auto x = NoiseVector<Cplx>(1009), shorter = NoiseVector<Cplx>(512);
  const auto real = NoiseVector<Real>(1009);
  Cplx y(1009);
  Real back(1009);
  const auto all = [&] {
    ft.Forward(y, x);
    ft.Inverse(y, x);
    ft.Forward(y, shorter);
    ft.Forward(y, real);
    ft.Inverse(back, y);
  };
  all();
  const long before = AllocationCount();
  all();
  EXPECT_EQ(AllocationCount(), before);
}

TEST(FT, SetupFT_LengthsComeAgain_KeepsOnePlanEach) {
  FT ft;
  VecCplx32 y;
  ft.Forward(y, NoiseVector<VecCplx32>(1000));
  const std::size_t large = ft.GetWorkSize();
  ft.Forward(y, NoiseVector<VecCplx32>(512));
  ft.Inverse(y, NoiseVector<VecCplx32>(1000));
  EXPECT_EQ(ft.GetPlanCount(1), 2);
  FT other;
  other.Forward(y, NoiseVector<VecCplx32>(512));
  const std::size_t small = other.GetWorkSize();
  EXPECT_LT(small, large);
  EXPECT_EQ(ft.GetWorkSize(), large);
  other.Forward(y, NoiseVector<VecCplx32>(1000));
  EXPECT_EQ(other.GetWorkSize(), large);
}

TEST(FT, SetupFT_EachKind_HasPlansOfItsOwn) {
  FT ft;
  VecCplx32 cplx32;
  VecCplx64 cplx64;
  ft.Forward(cplx32, NoiseVector<VecReal32>(100));
  ft.Forward(cplx32, NoiseVector<VecCplx32>(100));
  ft.Forward(cplx64, NoiseVector<VecReal64>(100));
  ft.Forward(cplx64, NoiseVector<VecCplx64>(100));
  for (int kind = 0; kind < 4; ++kind) EXPECT_EQ(ft.GetPlanCount(kind), 1) << kind;
  VecReal32 real32;
  ft.Inverse(real32, cplx32);
  EXPECT_EQ(ft.GetPlanCount(0), 1);
  EXPECT_EQ(ft.GetPlanCount(4), 0);
}

TEST(FT, SetupFT_ManyLengths_KeepsThemAllUntilTheEnd) {
  FT ft;
  VecCplx32 y;
  for (int n = 1; n <= 2000; ++n) ft.Forward(y, VecCplx32(n));
  EXPECT_EQ(ft.GetPlanCount(1), 2000);
}

TEST(FT, Transform_EmptyInput_OnlyResizes) {
  FT ft;
  VecCplx32 y(5), none;
  VecReal32 real(5), noReal;
  ft.Forward(y, none);
  EXPECT_EQ(y.GetSize(), 0);
  ft.Inverse(real, none);
  EXPECT_EQ(real.GetSize(), 0);
  y.Resize(5);
  ft.Forward(y, noReal);
  EXPECT_EQ(y.GetSize(), 0);
  ft.Forward(none, none);
  for (int kind = 0; kind < 4; ++kind) EXPECT_EQ(ft.GetPlanCount(kind), 0);
}

TEST(FT, Transform_NoMemoryForThePlan_OnlyResizesAndRecovers) {
  FT ft;
  const auto x = NoiseVector<VecCplx32>(1000);
  VecCplx32 y(1000);
  {
    const AllocationLimit limit(1000);
    ft.Forward(y, x);
    EXPECT_EQ(ft.GetPlanCount(1), 0);
  }
  EXPECT_TRUE(SameBits(y, VecCplx32(1000)));
  ft.Forward(y, x);
  EXPECT_LE(TransformError(y, x, -1, 1), Bound<float>(1000));
}

TEST(FT, Transform_NarrowedViews_StayInsideTheViews) {
  FT ft;
  const auto x = NoiseVector<VecCplx32>(150);
  VecCplx32 data = x, part(100), expected, in = x, out;
  for (int i = 0; i < 100; ++i) part[i] = x[7 + i];
  ft.Forward(expected, part);
  in.Trim(7, 106);
  ft.Forward(out, in);
  EXPECT_TRUE(SameBits(out, expected));
  data.Trim(7, 106);
  ft.Forward(data, data);
  EXPECT_TRUE(SameBits(data, expected));
}

TEST(FT, Copy_EitherGoesFirst_TheOtherStillTransforms) {
  const auto x = NoiseVector<VecCplx32>(1000);
  const auto real = NoiseVector<VecReal64>(1009);
  VecCplx32 expected, got;
  VecCplx64 expectedReal, gotReal;
  auto source = std::make_unique<FT>(FftScaleBySqrtN, QORNAlgorithmAccurate);
  source->Forward(expected, x);
  source->Forward(expectedReal, real);
  auto copy = std::make_unique<FT>(*source);
  source.reset();
  EXPECT_EQ(copy->GetPlanCount(1), 1);
  EXPECT_EQ(copy->GetPlanCount(2), 1);
  got.Resize(1000);
  const long before = AllocationCount();
  copy->Forward(got, x);
  EXPECT_EQ(AllocationCount(), before);
  copy->Forward(gotReal, real);
  EXPECT_TRUE(SameBits(got, expected));
  EXPECT_TRUE(SameBits(gotReal, expectedReal));

  FT assigned;
  assigned.Forward(got, NoiseVector<VecCplx32>(10));
  assigned = *copy;
  copy.reset();
  EXPECT_EQ(assigned.GetPlanCount(1), 1);
  assigned.Forward(got, x);
  EXPECT_TRUE(SameBits(got, expected));
  FT &self = assigned;
  assigned = self;
  got.SetZero();
  assigned.Forward(got, x);
  EXPECT_TRUE(SameBits(got, expected));
}

} // namespace
