#include "qorn/infra/Complex.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>

#include "support/KernelCheck.h"

namespace {

using QORN::Complex;
using QORN::Cplx16;
using QORN::Cplx32;
using QORN::Cplx64;
using QORN::test::Same;
using QORN::test::Samples;

template <class C, class T> void ExpectPlainPair() {
  EXPECT_EQ(sizeof(C), 2 * sizeof(T));
  EXPECT_EQ(offsetof(C, re), 0U);
  EXPECT_EQ(offsetof(C, im), sizeof(T));
  EXPECT_TRUE((std::is_same_v<decltype(C::re), T>));
  EXPECT_TRUE(std::is_trivial_v<C>);
  EXPECT_TRUE(std::is_standard_layout_v<C>);
}

TEST(Cplx, Layout_EveryType_IsAPlainPairRealPartFirst) {
  ExpectPlainPair<Cplx16, short>();
  ExpectPlainPair<Cplx32, float>();
  ExpectPlainPair<Cplx64, double>();
}

TEST(Cplx, Arrays_CastToScalars_AreInterleaved) {
  Cplx32 values[] = {{1, 2}, {3, 4}};
  auto *scalars = reinterpret_cast<float *>(values);
  EXPECT_EQ(scalars[1], 2.0F);
  EXPECT_EQ(scalars[2], 3.0F);
  scalars[3] = 5.0F;
  EXPECT_EQ(reinterpret_cast<Cplx32 *>(scalars)[1].im, 5.0F);
  Cplx64 wide[] = {{1, 2}, {3, 4}};
  auto *parts = reinterpret_cast<double *>(wide);
  EXPECT_EQ(parts[2], 3.0);
  parts[3] = 5.0;
  EXPECT_EQ(reinterpret_cast<Cplx64 *>(parts)[1].im, 5.0);
}

TEST(Complex, Cplx_TwoParts_IsThePair) {
  EXPECT_TRUE(Same()(Complex::Cplx(3.0F, 0.0F), Cplx32{3, 0}));
  EXPECT_TRUE(Same()(Complex::Cplx(-0.0, 4.0), Cplx64{-0.0, 4.0}));
}

TEST(Complex, Cplx_Angle_IsAUnitPhasor) {
  EXPECT_TRUE(Same()(Complex::Cplx(0.0F), Cplx32{1, 0}));
  EXPECT_TRUE(Same()(Complex::Cplx(0.0), Cplx64{1, 0}));
  // The double sine and cosine of the widened angle, rounded to float once: a long double result rounded to
  // float is the same, except where it lies within the double's error of the middle between two floats; none
  // of these does.
  for (const float angle : {0.1F, -0.5F, 1.0F, 3.1415927F, -2.0F, 100.0F, 1.0e6F, -1.0e-20F}) {
    const Cplx32 phasor = Complex::Cplx(angle);
    EXPECT_EQ(phasor.re, static_cast<float>(std::cos(static_cast<long double>(angle))))
        << static_cast<double>(angle);
    EXPECT_EQ(phasor.im, static_cast<float>(std::sin(static_cast<long double>(angle))))
        << static_cast<double>(angle);
    const Cplx64 wide = Complex::Cplx(static_cast<double>(angle));
    EXPECT_EQ(phasor.re, static_cast<float>(wide.re));
    EXPECT_EQ(phasor.im, static_cast<float>(wide.im));
  }
}

TEST(Complex, ToCplx64AndBack_AnyValue_RoundsOnlyWhenNarrowing) {
  EXPECT_TRUE(Same()(Complex::ToCplx64(Cplx32{0.1F, -0.0F}), Cplx64{static_cast<double>(0.1F), -0.0}));
  EXPECT_TRUE(
      Same()(Complex::ToCplx32(Cplx64{0.1, 1e300}), Cplx32{0.1F, std::numeric_limits<float>::infinity()}));
}

TEST(Complex, Conj_AnyValue_InvertsTheSignBit) {
  EXPECT_TRUE(Same()(Complex::Conj(Cplx32{1, 0}), Cplx32{1, -0.0F}));
  EXPECT_TRUE(Same()(Complex::Conj(Cplx64{1, -2}), Cplx64{1, 2}));
  EXPECT_TRUE(Same()(Complex::Conj(Cplx64{1, 0}), Cplx64{1, -0.0}));
}

// Products that are stored to volatile variables cannot be fused with the sum that follows.
template <class C, class T> C MulConjByStep(const C &a, const C &b) {
  const T c = -b.im;
  volatile T reRe = a.re * b.re;
  volatile T imC = a.im * c;
  volatile T imRe = a.im * b.re;
  volatile T reC = a.re * c;
  return {reRe - imC, imRe + reC};
}

TEST(Complex, MulConj_AnyValues_RoundsEveryStep) {
  const auto floats = Samples<Cplx32>();
  const auto doubles = Samples<Cplx64>();
  for (std::size_t i = 0; i < floats.size(); ++i) {
    const Cplx32 a = floats[i], b = floats[(17 * i + 5) % floats.size()];
    EXPECT_TRUE(Same()(Complex::MulConj(a, b), (MulConjByStep<Cplx32, float>(a, b)))) << i;
    const Cplx64 c = doubles[i], d = doubles[(17 * i + 5) % doubles.size()];
    EXPECT_TRUE(Same()(Complex::MulConj(c, d), (MulConjByStep<Cplx64, double>(c, d)))) << i;
  }
}

TEST(Complex, MulConj_OfItself_IsTheSquaredMagnitude) {
  for (const Cplx32 a : QORN::test::FiniteSamples<Cplx32>(1e15)) {
    const Cplx32 product = Complex::MulConj(a, a);
    EXPECT_EQ(product.re, Complex::MagSqr(a));
    EXPECT_EQ(product.im, 0.0F);
  }
  for (const Cplx64 a : QORN::test::FiniteSamples<Cplx64>(1e15)) {
    const Cplx64 product = Complex::MulConj(a, a);
    EXPECT_EQ(product.re, Complex::MagSqr(a));
    EXPECT_EQ(product.im, 0.0);
  }
}

TEST(Complex, MagSqr_AnyValue_StaysInItsPrecision) {
  for (const Cplx32 x : Samples<Cplx32>()) {
    volatile float reRe = x.re * x.re, imIm = x.im * x.im;
    EXPECT_TRUE(Same()(Complex::MagSqr(x), reRe + imIm));
  }
  for (const Cplx64 x : Samples<Cplx64>()) {
    volatile double reRe = x.re * x.re, imIm = x.im * x.im;
    EXPECT_TRUE(Same()(Complex::MagSqr(x), reRe + imIm));
  }
}

TEST(Complex, Mag_AnyValue_TakesTheRootOfTheSumOfSquares) {
  for (const Cplx32 x : Samples<Cplx32>()) {
    volatile float reRe = x.re * x.re, imIm = x.im * x.im;
    const float sum = reRe + imIm;
    EXPECT_TRUE(Same()(Complex::Mag(x), static_cast<float>(std::sqrt(static_cast<double>(sum)))));
  }
  EXPECT_EQ(Complex::Mag(Cplx64{3, -4}), 5.0);
}

TEST(Complex, Mag_LargeParts_OverflowsToInfinity) {
  EXPECT_TRUE(std::isinf(Complex::Mag(Cplx32{2e19F, 0})));
  EXPECT_TRUE(std::isinf(Complex::Mag(Cplx64{1e155, 0})));
}

TEST(Complex, Phase_AxesAndOrigin_FollowsTheConventionsOfAtan2) {
  const double pi = 3.141592653589793;
  const struct {
    double re, im, phase;
  } rows[] = {{0, 0, 0},        {0, -0.0, -0.0}, {-0.0, 0, pi},      {-0.0, -0.0, -pi},
              {1, 0, 0},        {-1, 0, pi},     {-1, -0.0, -pi},    {0, 2, pi / 2},
              {0, -2, -pi / 2}, {1, 1, pi / 4},  {-1, 1, 3 * pi / 4}};
  for (const auto &row : rows) {
    EXPECT_DOUBLE_EQ(Complex::Phase(Cplx64{row.re, row.im}), row.phase) << row.re << ' ' << row.im;
    EXPECT_EQ(std::signbit(Complex::Phase(Cplx64{row.re, row.im})), std::signbit(row.phase));
    const Cplx32 narrow{static_cast<float>(row.re), static_cast<float>(row.im)};
    EXPECT_EQ(Complex::Phase(narrow), static_cast<float>(row.phase)) << row.re << ' ' << row.im;
  }
}

TEST(Complex, Recip_AnyValue_DividesBothPartsByTheSquaredMagnitude) {
  EXPECT_TRUE(Same()(Complex::Recip(Cplx32{3, 4}), Cplx32{3.0F / 25.0F, -4.0F / 25.0F}));
  EXPECT_TRUE(Same()(Complex::Recip(Cplx64{0, 2}), Cplx64{0, -0.5}));
  for (const Cplx32 x : Samples<Cplx32>()) {
    volatile float imIm = x.im * x.im, reRe = x.re * x.re;
    const float d = imIm + reRe;
    EXPECT_TRUE(Same()(Complex::Recip(x), Cplx32{x.re / d, -x.im / d}));
  }
}

TEST(Complex, Recip_OfZero_IsNotANumberInBothParts) {
  EXPECT_TRUE(std::isnan(Complex::Recip(Cplx32{0, 0}).re));
  EXPECT_TRUE(std::isnan(Complex::Recip(Cplx32{0, 0}).im));
  EXPECT_TRUE(std::isnan(Complex::Recip(Cplx64{0, 0}).re));
  EXPECT_TRUE(std::isnan(Complex::Recip(Cplx64{0, 0}).im));
}

} // namespace
