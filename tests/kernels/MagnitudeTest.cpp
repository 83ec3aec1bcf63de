// Absolute values, squares and square roots.
#include <gtest/gtest.h>

#include <climits>
#include <complex>

#include "qorn/infra/Complex.h"
#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"
#include "support/Wide.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::TargetLib;
using QORN::test::CheckElementwise;
using QORN::test::CheckInPlace;
using QORN::test::CplxTimes;
using QORN::test::Part;
using QORN::test::Plus;
using QORN::test::Root;
using QORN::test::Same;
using QORN::test::Samples;
using QORN::test::Times;
using QORN::test::W;

namespace kernels = QORN::kernels;

TEST(TargetLib, Abs_Ints_SaturatesAtTheLowest) {
  CheckElementwise<int, int>("Abs_32s", &TargetLib::Abs_32s, [](int x) {
    const long long magnitude = x < 0 ? -static_cast<long long>(x) : x;
    return static_cast<int>(std::min(magnitude, 2147483647LL));
  });
}

TEST(TargetLib, Abs_Reals_ClearsTheSign) {
  const auto absolute32 = [](float x) { return std::signbit(x) ? -x : x; };
  const auto absolute64 = [](double x) { return std::signbit(x) ? -x : x; };
  CheckElementwise<float, float>("Abs_32f", &TargetLib::Abs_32f, absolute32);
  CheckElementwise<double, double>("Abs_64f", &TargetLib::Abs_64f, absolute64);
  CheckInPlace<float>("Abs_32f_I", &TargetLib::Abs_32f_I, absolute32);
  CheckInPlace<double>("Abs_64f_I", &TargetLib::Abs_64f_I, absolute64);
}

template <class T> T SquareSum(T re, T im) { return Plus(Times(re, re), Times(im, im)); }
float RootOf(float x) { return static_cast<float>(std::sqrt(W(x))); }
double RootOf(double x) { return static_cast<double>(Root(W(x))); }
template <class T> T MagOf(T re, T im) { return RootOf(SquareSum(re, im)); }

TEST(TargetLib, Mag_TwoArrays_SumsTheSquaresInTheElementTypeAndRoundsTheRoot) {
  CheckElementwise<float, float, float>("Mag_32f", &TargetLib::Mag_32f, MagOf<float>);
  CheckElementwise<double, double, double>("Mag_64f", &TargetLib::Mag_64f, MagOf<double>);
}

TEST(TargetLib, Mag_Complex_SumsTheSquaresInTheElementTypeAndRoundsTheRoot) {
  CheckElementwise<float, Cplx32>("Mag_32fc", &TargetLib::Mag_32fc,
                                  [](Cplx32 x) { return MagOf(x.re, x.im); });
  CheckElementwise<double, Cplx64>("Mag_64fc", &TargetLib::Mag_64fc,
                                   [](Cplx64 x) { return MagOf(x.re, x.im); });
}

TEST(TargetLib, MagMagSqr_Complex_EqualTheScalarForms) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    const std::vector<Cplx32> x = Samples<Cplx32>();
    const std::vector<Cplx64> y = Samples<Cplx64>();
    std::vector<float> mag(x.size()), sqr(x.size());
    std::vector<double> mag64(y.size()), sqr64(y.size());
    TargetLib::Mag_32fc(x.data(), mag.data(), static_cast<int>(x.size()));
    TargetLib::MagSqr_32fc(x.data(), sqr.data(), static_cast<int>(x.size()));
    TargetLib::Mag_64fc(y.data(), mag64.data(), static_cast<int>(y.size()));
    TargetLib::MagSqr_64fc(y.data(), sqr64.data(), static_cast<int>(y.size()));
    for (std::size_t i = 0; i < x.size(); ++i) {
      ASSERT_TRUE(Same()(mag[i], QORN::Complex::Mag(x[i]))) << level.name << ' ' << QORN::test::Show(x[i]);
      ASSERT_TRUE(Same()(sqr[i], QORN::Complex::MagSqr(x[i]))) << level.name << ' ' << QORN::test::Show(x[i]);
      ASSERT_TRUE(Same()(mag64[i], QORN::Complex::Mag(y[i]))) << level.name << ' ' << QORN::test::Show(y[i]);
      ASSERT_TRUE(Same()(sqr64[i], QORN::Complex::MagSqr(y[i])))
          << level.name << ' ' << QORN::test::Show(y[i]);
    }
  }
}

TEST(TargetLib, MagSqr_Complex_RoundsEveryStep) {
  CheckElementwise<float, Cplx32>("MagSqr_32fc", &TargetLib::MagSqr_32fc,
                                  [](Cplx32 x) { return SquareSum(x.re, x.im); });
  CheckElementwise<double, Cplx64>("MagSqr_64fc", &TargetLib::MagSqr_64fc,
                                   [](Cplx64 x) { return SquareSum(x.re, x.im); });
}

TEST(TargetLib, Sqr_Reals_RoundOnce) {
  const auto square32 = [](float x) { return Times(x, x); };
  const auto square64 = [](double x) { return Times(x, x); };
  CheckElementwise<float, float>("Sqr_32f", &TargetLib::Sqr_32f, square32);
  CheckElementwise<double, double>("Sqr_64f", &TargetLib::Sqr_64f, square64);
  CheckInPlace<float>("Sqr_32f_I", &TargetLib::Sqr_32f_I, square32);
  CheckInPlace<double>("Sqr_64f_I", &TargetLib::Sqr_64f_I, square64);
}

TEST(TargetLib, Sqr_Complex_IsTheProductWithItself) {
  const auto square32 = [](Cplx32 x) { return CplxTimes(x, x); };
  const auto square64 = [](Cplx64 x) { return CplxTimes(x, x); };
  CheckElementwise<Cplx32, Cplx32>("Sqr_32fc", &TargetLib::Sqr_32fc, square32);
  CheckElementwise<Cplx64, Cplx64>("Sqr_64fc", &TargetLib::Sqr_64fc, square64);
  CheckInPlace<Cplx32>("Sqr_32fc_I", &TargetLib::Sqr_32fc_I, square32);
  CheckInPlace<Cplx64>("Sqr_64fc_I", &TargetLib::Sqr_64fc_I, square64);
}

TEST(TargetLib, Sqrt_Reals_RoundsCorrectlyAndNegativesGiveNotANumber) {
  const auto root32 = [](float x) { return RootOf(x); };
  const auto root64 = [](double x) { return RootOf(x); };
  CheckElementwise<float, float>("Sqrt_32f", &TargetLib::Sqrt_32f, root32);
  CheckElementwise<double, double>("Sqrt_64f", &TargetLib::Sqrt_64f, root64);
  CheckInPlace<float>("Sqrt_32f_I", &TargetLib::Sqrt_32f_I, root32);
  CheckInPlace<double>("Sqrt_64f_I", &TargetLib::Sqrt_64f_I, root64);
}

// The C library's root in extended precision.
template <class C> std::complex<long double> ExtendedRoot(C x) {
  return std::sqrt(std::complex<long double>(static_cast<long double>(x.re), static_cast<long double>(x.im)));
}
template <class C> C PrincipalRoot(C x) {
  const std::complex<long double> root = ExtendedRoot(x);
  return {static_cast<Part<C>>(root.real()), static_cast<Part<C>>(root.imag())};
}

// The float form works in double and rounds each part once, so it may miss the rounded root by one unit where
// that is next to a tie. In the double form, with u = 2^-53: two roundings of |z|^2 and one of its root make
// 2 u; adding |x| and taking the root make it (3 u) / 2 + u, and the quotient adds one u: below 4 units.
TEST(TargetLib, Sqrt_Complex_GivesThePrincipalValue) {
  const QORN::test::WithinUlps oneUnit{1}, fourUnits{4};
  CheckElementwise<Cplx32, Cplx32>("Sqrt_32fc", &TargetLib::Sqrt_32fc, PrincipalRoot<Cplx32>, oneUnit);
  CheckElementwise<Cplx64, Cplx64>("Sqrt_64fc", &TargetLib::Sqrt_64fc, PrincipalRoot<Cplx64>, fourUnits);
  CheckInPlace<Cplx32>("Sqrt_32fc_I", &TargetLib::Sqrt_32fc_I, PrincipalRoot<Cplx32>, oneUnit);
  CheckInPlace<Cplx64>("Sqrt_64fc_I", &TargetLib::Sqrt_64fc_I, PrincipalRoot<Cplx64>, fourUnits);
}

TEST(TargetLib, Sqrt_ComplexFloats_ErrsByLittleMoreThanHalfAUnit) {
  std::mt19937 random(7);
  std::uniform_real_distribution<float> part(-1, 1);
  std::uniform_int_distribution<int> exponent(-60, 60);
  std::vector<Cplx32> x(20000), y(x.size());
  for (Cplx32 &z : x)
    z = {std::ldexp(part(random), exponent(random)), std::ldexp(part(random), exponent(random))};
  TargetLib::Sqrt_32fc(x.data(), y.data(), static_cast<int>(x.size()));
  for (std::size_t i = 0; i < x.size(); ++i) {
    const std::complex<long double> root = ExtendedRoot(x[i]);
    for (const auto &[got, wanted] : {std::pair{y[i].re, root.real()}, std::pair{y[i].im, root.imag()}}) {
      const float size = std::fabs(got);
      const auto unit = static_cast<long double>(std::nextafter(size, 9e9F) - size);
      ASSERT_LE(std::fabs(static_cast<long double>(got) - wanted), 0.5001L * unit) << QORN::test::Show(x[i]);
    }
  }
}

template <class C> void CheckSpecialRoots(void (*sqrt)(const C *, C *, int)) {
  using T = Part<C>;
  const T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
  const struct {
    C x, root;
  } rows[] = {{{0, 0}, {0, 0}},
              {{T(-0.0), 0}, {0, 0}},
              {{0, T(-0.0)}, {0, T(-0.0)}},
              {{T(-0.0), T(-0.0)}, {0, T(-0.0)}},
              {{4, 0}, {2, 0}},
              {{4, T(-0.0)}, {2, T(-0.0)}},
              {{-4, 0}, {0, 2}},
              {{-4, T(-0.0)}, {0, -2}},
              {{0, 8}, {2, 2}},
              {{T(-0.0), -8}, {2, -2}},
              {{3, 4}, {2, 1}},
              {{-3, -4}, {1, -2}},
              {{1, inf}, {inf, inf}},
              {{nan, -inf}, {inf, -inf}},
              {{-inf, inf}, {inf, inf}},
              {{inf, 1}, {inf, 0}},
              {{inf, -1}, {inf, T(-0.0)}},
              {{-inf, 1}, {0, inf}},
              {{-inf, -1}, {0, -inf}},
              {{inf, nan}, {inf, nan}},
              {{-inf, nan}, {nan, inf}},
              {{nan, 1}, {nan, nan}},
              {{1, nan}, {nan, nan}},
              {{nan, nan}, {nan, nan}}};
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const auto &row : rows) {
      C root{};
      sqrt(&row.x, &root, 1);
      EXPECT_TRUE(Same()(root, row.root))
          << level.name << ": root of " << QORN::test::Show(row.x) << " gave " << QORN::test::Show(root);
    }
  }
}

TEST(TargetLib, Sqrt_ComplexSpecialValues_AreThoseOfTheCStandard) {
  CheckSpecialRoots<Cplx32>(&TargetLib::Sqrt_32fc);
  CheckSpecialRoots<Cplx64>(&TargetLib::Sqrt_64fc);
}

TEST(TargetLib, Sqrt_ComplexOfExtremeSize_NeitherOverflowsNorVanishes) {
  // Squares of exact roots: (p + j q)^2 = (p^2 - q^2) + j 2 p q.
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const int e : {-530, -505, -301, -249, -1, 0, 1, 249, 251, 301, 505, 509}) {
      const double p = std::ldexp(2.0, e), q = std::ldexp(1.0, e);
      const Cplx64 x = {std::ldexp(3.0, 2 * e), std::ldexp(4.0, 2 * e)};
      Cplx64 root{};
      TargetLib::Sqrt_64fc(&x, &root, 1);
      EXPECT_EQ(root.re, p) << level.name << ' ' << e;
      EXPECT_EQ(root.im, q) << level.name << ' ' << e;
    }
  }
}

// The parts may be many powers of ten apart: the small one keeps its digits.
TEST(TargetLib, Sqrt_ComplexWithOneSmallPart_KeepsTheDigitsOfBoth) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const Cplx64 x :
         {Cplx64{1e300, 1e-10}, Cplx64{-1e300, 1e-10}, Cplx64{1e-300, 1e-310}, Cplx64{4e-320, 1e-5}}) {
      Cplx64 root{};
      TargetLib::Sqrt_64fc(&x, &root, 1);
      EXPECT_TRUE(QORN::test::WithinUlps{4}(root, PrincipalRoot(x)))
          << level.name << ' ' << QORN::test::Show(x) << " gave " << QORN::test::Show(root);
    }
  }
}

} // namespace
