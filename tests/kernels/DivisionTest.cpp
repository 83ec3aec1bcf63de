// Divisions: by arrays with the report of a zero, by constants without one, and the scaled operations on
// unsigned shorts.
#include <gtest/gtest.h>

#include <cfenv>
#include <climits>
#include <cmath>

#include "qorn/infra/QORNException.h"
#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"
#include "support/Wide.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::QORNException;
using QORN::TargetLib;
using QORN::test::CheckElementwise;
using QORN::test::CheckInPlace;
using QORN::test::CplxTimes;
using QORN::test::FiniteSamples;
using QORN::test::Over;
using QORN::test::Part;
using QORN::test::Plus;
using QORN::test::Quad;
using QORN::test::Same;
using QORN::test::Samples;
using QORN::test::Times;

namespace kernels = QORN::kernels;

// By a constant.

template <class T> void CheckDivC(const char *name, void (*divC)(T, T *, int)) {
  const std::vector<T> vals = Samples<T>();
  for (std::size_t i = 0; i < vals.size(); i += 3) {
    const T val = vals[i];
    const T r = Over(T(1), val);
    CheckInPlace<T>(
        std::string(name) + " by " + QORN::test::Show(val), [=](T *x, int len) { divC(val, x, len); },
        [=](T x) { return val == T(0) ? x : Times(x, r); }, Same(), {}, {FiniteSamples<T>(1e30)});
    if (testing::Test::HasFailure()) return;
  }
}

template <class C> void CheckCplxDivC(const char *name, void (*divC)(C, C *, int)) {
  using T = Part<C>;
  const std::vector<C> vals = Samples<C>();
  for (std::size_t i = 0; i < vals.size(); i += 13) {
    const C val = vals[i];
    const T square = Plus(Times(val.re, val.re), Times(val.im, val.im));
    const T r = Over(T(1), square);
    const C factor = {Times(val.re, r), -Times(val.im, r)};
    CheckInPlace<C>(
        std::string(name) + " by " + QORN::test::Show(val), [=](C *x, int len) { divC(val, x, len); },
        [=](C x) { return square == T(0) ? x : CplxTimes(x, factor); }, Same(), {}, {FiniteSamples<C>(1e30)});
    if (testing::Test::HasFailure()) return;
  }
}

TEST(TargetLib, DivC_AnyConstant_MultipliesByItsReciprocal) {
  CheckDivC<float>("DivC_32f_I", &TargetLib::DivC_32f_I);
  CheckDivC<double>("DivC_64f_I", &TargetLib::DivC_64f_I);
}
TEST(TargetLib, DivC_AnyComplexConstant_MultipliesByItsReciprocal) {
  CheckCplxDivC<Cplx32>("DivC_32fc_I", &TargetLib::DivC_32fc_I);
  CheckCplxDivC<Cplx64>("DivC_64fc_I", &TargetLib::DivC_64fc_I);
}

template <class T> void CheckRefusal(void (*divC)(T, T *, int), T val) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    const std::vector<T> before = Samples<T>();
    std::vector<T> x = before;
    EXPECT_NO_THROW(divC(val, x.data(), static_cast<int>(x.size())));
    EXPECT_EQ(std::memcmp(static_cast<const void *>(x.data()), static_cast<const void *>(before.data()),
                          sizeof(T) * x.size()),
              0)
        << level.name << ' ' << QORN::test::Show(val);
  }
}

TEST(TargetLib, DivC_ZeroConstant_ChangesNothingAndThrowsNothing) {
  CheckRefusal<float>(&TargetLib::DivC_32f_I, 0.0F);
  CheckRefusal<float>(&TargetLib::DivC_32f_I, -0.0F);
  CheckRefusal<double>(&TargetLib::DivC_64f_I, 0.0);
  CheckRefusal<double>(&TargetLib::DivC_64f_I, -0.0);
  CheckRefusal<Cplx32>(&TargetLib::DivC_32fc_I, {0.0F, -0.0F});
  CheckRefusal<Cplx64>(&TargetLib::DivC_64fc_I, {-0.0, 0.0});
}

TEST(TargetLib, DivC_ComplexConstantWhoseSquaresUnderflow_ChangesNothing) {
  CheckRefusal<Cplx32>(&TargetLib::DivC_32fc_I, {1e-23F, 1e-30F});
  CheckRefusal<Cplx64>(&TargetLib::DivC_64fc_I, {1e-170, -1e-163});
}

// Array by array. The exception comes after the last element, so it may be set aside.
template <class T> auto WithoutReport(void (*div)(const T *, T *, int)) {
  return [div](const T *src, T *srcDst, int len) {
    try {
      div(src, srcDst, len);
    } catch (const QORNException &) {
    }
  };
}

TEST(TargetLib, Div_Reals_GivesTheIeeeQuotient) {
  CheckInPlace<float, float>("Div_32f_I", WithoutReport(&TargetLib::Div_32f_I), Over<float>);
  CheckInPlace<double, double>("Div_64f_I", WithoutReport(&TargetLib::Div_64f_I), Over<double>);
}

// (a * conj(b)) / |b|^2 where nothing overflows or vanishes; by zero, each part of a for itself.
template <class C> struct Quotient {
  Quad re;
  Quad im;
};
template <class C> Quotient<C> Exact(C a, C b) {
  const Quad ar = static_cast<Quad>(a.re), ai = static_cast<Quad>(a.im);
  const Quad br = static_cast<Quad>(b.re), bi = static_cast<Quad>(b.im);
  if (br == 0 && bi == 0) return {ar / Quad(0), ai / Quad(0)};
  const Quad square = br * br + bi * bi;
  return {(ar * br + ai * bi) / square, (ai * br - ar * bi) / square};
}
template <class C> C Divided(C a, C b) {
  const Quotient<C> q = Exact(a, b);
  return {static_cast<Part<C>>(q.re), static_cast<Part<C>>(q.im)};
}

// In double, four roundings of 2^-53 each, then one to float: by far less than one unit off each way.
TEST(TargetLib, Div_ComplexFloats_RoundsEachPartOnce) {
  CheckInPlace<Cplx32, Cplx32>("Div_32fc_I", WithoutReport(&TargetLib::Div_32fc_I), Divided<Cplx32>,
                               QORN::test::WithinUlps{1}, {},
                               {FiniteSamples<Cplx32>(1e39), Samples<Cplx32>()});
}

TEST(TargetLib, Div_ComplexFloats_ErrsByLittleMoreThanHalfAUnit) {
  std::mt19937 random(5);
  std::uniform_real_distribution<float> part(-1, 1);
  std::vector<Cplx32> a(20000), b(a.size());
  for (std::size_t i = 0; i < a.size(); ++i) {
    a[i] = {part(random), part(random)};
    // Every other divisor nearly at a right angle to the dividend, so that the real part almost cancels.
    b[i] = {part(random), part(random)};
    if (i % 2 == 0) b[i] = {-a[i].im * 3, std::nextafter(a[i].re * 3, 9.0F)};
  }
  std::vector<Cplx32> q = a;
  TargetLib::Div_32fc_I(b.data(), q.data(), static_cast<int>(q.size()));
  for (std::size_t i = 0; i < a.size(); ++i) {
    const Quotient<Cplx32> exact = Exact(a[i], b[i]);
    for (const auto &[got, wanted] : {std::pair{q[i].re, exact.re}, std::pair{q[i].im, exact.im}}) {
      const double unit = static_cast<double>(std::nextafter(std::fabs(got), 9e9F) - std::fabs(got));
      ASSERT_LE(std::fabs(static_cast<double>(static_cast<Quad>(got) - wanted)), 0.5001 * unit) << i;
    }
  }
}

// With unit roundoff u: two roundings in each part of the numerator, two in the square, one in the division,
// and by Cauchy's inequality all relative to |q|: within 5 u |q|, and the last digits of a part that is
// denormal.
struct WithinFiveRoundings {
  bool operator()(Cplx64 got, Cplx64 expected) const {
    const double size = std::min(std::hypot(expected.re, expected.im), std::numeric_limits<double>::max());
    const double bound = 5.01 * 0x1p-53 * size + 2 * 0x1p-1074;
    return Near(got.re, expected.re, bound) && Near(got.im, expected.im, bound);
  }
  // One part may overflow alone.
  static bool Near(double got, double expected, double bound) {
    return std::isfinite(expected) ? std::fabs(got - expected) <= bound : Same()(got, expected);
  }
};

TEST(TargetLib, Div_ComplexDoubles_StaysNearTheQuotientOverTheWholeRange) {
  CheckInPlace<Cplx64, Cplx64>(
      "Div_64fc_I", WithoutReport(&TargetLib::Div_64fc_I), Divided<Cplx64>, WithinFiveRoundings(), {},
      {FiniteSamples<Cplx64>(1e307), FiniteSamples<Cplx64>(std::numeric_limits<double>::max())});
}

TEST(TargetLib, Div_ComplexDoublesOfExtremeSize_NeitherOverflowsNorVanishes) {
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    Cplx64 a, b, q;
  } rows[] = {{{0x1p1000, 0x1p1000}, {0x1p1000, 0x1p1000}, {1, 0}},
              {{0x1p-1060, 0x1p-1060}, {0x1p-1060, 0}, {1, 1}},
              {{0x1p1000, -0x1p999}, {0, 0x1p10}, {-0x1p989, -0x1p990}},
              {{0x1p510, 0}, {0x1p-510, 0}, {0x1p1020, 0}},
              {{0x1p-510, 0}, {0x1p510, 0}, {0x1p-1020, 0}},
              {{0x1p-600, 0}, {0x1p470, 0}, {0x1p-1070, 0}},
              {{0x1p1023, 0x1p1023}, {0x1p-1074, 0}, {inf, inf}},
              {{0x1p-1074, 0}, {0x1p1023, 0}, {0, 0}}};
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const auto &row : rows) {
      Cplx64 x = row.a;
      TargetLib::Div_64fc_I(&row.b, &x, 1);
      EXPECT_EQ(x.re, row.q.re) << level.name << ' ' << QORN::test::Show(row.a);
      EXPECT_EQ(x.im, row.q.im) << level.name << ' ' << QORN::test::Show(row.a);
    }
  }
}

// Sizes on both sides of the limits from which on operands are scaled: beside whatever others a quotient
// stands, it has the bits that it has alone at the lowest level.
TEST(TargetLib, Div_ComplexDoublesOfAllSizesSideBySide_HaveTheBitsOfEachAlone) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> part(-1, 1);
  const int exponents[] = {0, 0, 0, 0, 0, 0, 498, 499, 500, 501, 1000, -498, -499, -500, -501, -1000, -1060};
  const auto number = [&] {
    const auto size = [&] { return std::ldexp(part(random), exponents[random() % std::size(exponents)]); };
    switch (random() % 8) {
    case 0:
      return Cplx64{size(), 0};
    case 1:
      return Cplx64{0, size()};
    case 2:
      return Cplx64{size(), size()};
    default: {
      const double scale = std::ldexp(1.0, exponents[random() % std::size(exponents)]);
      return Cplx64{part(random) * scale, part(random) * scale};
    }
    }
  };
  const auto div = WithoutReport(&TargetLib::Div_64fc_I);
  for (int trial = 0; trial < 3000; ++trial) {
    std::vector<Cplx64> a(1 + random() % 40), b(a.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
      a[i] = random() % 16 == 0 ? Cplx64{0, 0} : number();
      b[i] = number();
    }
    std::vector<Cplx64> alone = a;
    {
      const kernels::ScopedLevel scope(kernels::AvailableLevels().front());
      for (std::size_t i = 0; i < a.size(); ++i) div(&b[i], &alone[i], 1);
    }
    for (const kernels::Level &level : kernels::AvailableLevels()) {
      const kernels::ScopedLevel scope(level);
      std::vector<Cplx64> q = a;
      div(b.data(), q.data(), static_cast<int>(q.size()));
      for (std::size_t i = 0; i < q.size(); ++i) {
        ASSERT_TRUE(Same()(q[i], alone[i]))
            << level.name << ' ' << QORN::test::Show(a[i]) << " / " << QORN::test::Show(b[i]);
      }
    }
  }
}

// Whatever the operands, the levels agree and nothing is written beside the array.
template <class C> void CheckAgreement(const char *name, void (*div)(const C *, C *, int)) {
  CheckInPlace<C, C>(
      name, WithoutReport(div), [](C a, C) { return a; }, [](const C &, const C &) { return true; });
}
TEST(TargetLib, Div_ComplexWithInfinitiesAndNotANumber_IsTheSameAtEveryLevel) {
  CheckAgreement<Cplx32>("Div_32fc_I", &TargetLib::Div_32fc_I);
  CheckAgreement<Cplx64>("Div_64fc_I", &TargetLib::Div_64fc_I);
}

template <class T> T Number(double re) {
  if constexpr (QORN::test::kIsCplx<T>) {
    return {Part<T>(re), Part<T>(2 * re)};
  } else {
    return T(re);
  }
}

// A zero at any place, in the body or in the tail, is reported once all elements are written.
template <class T> void CheckReport(const char *name, void (*div)(const T *, T *, int)) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const int len : {1, 2, 7, 33, 67, 130}) {
      for (int zero = -1; zero < len; ++zero) {
        const auto count = static_cast<std::size_t>(len);
        std::vector<T> x(count, Number<T>(6)), divisors(count, Number<T>(2));
        if (zero >= 0) divisors[static_cast<std::size_t>(zero)] = Number<T>(zero % 2 == 0 ? 0.0 : -0.0);
        const std::string where = std::string(name) + " at " + level.name + ", length " +
                                  std::to_string(len) + ", zero at " + std::to_string(zero);
        bool thrown = false;
        try {
          div(divisors.data(), x.data(), len);
        } catch (const QORNException &error) {
          thrown = true;
          EXPECT_EQ(error.GetErrorCode(), 12001) << where;
          EXPECT_STREQ(error.GetMessage(), "divide-by-zero error") << where;
          EXPECT_STREQ(error.GetFileName(), "infra\\TargetLib_ipp") << where;
        }
        ASSERT_EQ(thrown, zero >= 0) << where;
        for (int i = 0; i < len; ++i) {
          const T got = x[static_cast<std::size_t>(i)];
          if constexpr (QORN::test::kIsCplx<T>) {
            const Part<T> expected = i == zero ? Part<T>(INFINITY) : Part<T>(3);
            ASSERT_EQ(got.re, expected) << where << ", element " << i;
            ASSERT_EQ(got.im, i == zero ? expected : Part<T>(0)) << where << ", element " << i;
          } else {
            ASSERT_EQ(std::fabs(got), i == zero ? T(INFINITY) : T(3)) << where << ", element " << i;
          }
        }
      }
    }
  }
}

TEST(TargetLib, Div_ADivisorOfZero_WritesAllElementsThenThrows) {
  CheckReport<float>("Div_32f_I", &TargetLib::Div_32f_I);
  CheckReport<double>("Div_64f_I", &TargetLib::Div_64f_I);
  CheckReport<Cplx32>("Div_32fc_I", &TargetLib::Div_32fc_I);
  CheckReport<Cplx64>("Div_64fc_I", &TargetLib::Div_64fc_I);
}

TEST(TargetLib, Div_ByZero_GivesSignedInfinitiesAndNotANumberForZeroByZero) {
  const float divisors[] = {0.0F, 0.0F, -0.0F, 0.0F, 2.0F};
  float x[] = {1.0F, -1.0F, 1.0F, 0.0F, 5.0F};
  EXPECT_THROW(TargetLib::Div_32f_I(divisors, x, 5), QORNException);
  EXPECT_EQ(x[0], INFINITY);
  EXPECT_EQ(x[1], -INFINITY);
  EXPECT_EQ(x[2], -INFINITY);
  EXPECT_TRUE(std::isnan(x[3]));
  EXPECT_EQ(x[4], 2.5F);

  const Cplx64 zeros[] = {{0, 0}, {0, 0}, {0, 0}};
  Cplx64 y[] = {{1, -1}, {0, 2}, {0, 0}};
  EXPECT_THROW(TargetLib::Div_64fc_I(zeros, y, 3), QORNException);
  EXPECT_EQ(y[0].re, INFINITY);
  EXPECT_EQ(y[0].im, -INFINITY);
  EXPECT_TRUE(std::isnan(y[1].re));
  EXPECT_EQ(y[1].im, INFINITY);
  EXPECT_TRUE(std::isnan(y[2].re) && std::isnan(y[2].im));
}

TEST(TargetLib, Div_TinyComplexDivisors_AreNotZero) {
  const Cplx32 tiny = {1e-40F, -1e-42F};
  Cplx32 x = tiny;
  EXPECT_NO_THROW(TargetLib::Div_32fc_I(&tiny, &x, 1));
  EXPECT_EQ(x.re, 1.0F);
  EXPECT_EQ(x.im, 0.0F);
}

TEST(TargetLib, Div_AnArrayByItself_GivesOnes) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    std::vector<float> x(131, 3.0F);
    TargetLib::Div_32f_I(x.data(), x.data(), 131);
    for (const float q : x) ASSERT_EQ(q, 1.0F) << level.name;
    std::vector<Cplx64> y(67, Cplx64{3.0, -5.0});
    TargetLib::Div_64fc_I(y.data(), y.data(), 67);
    for (const Cplx64 q : y) ASSERT_TRUE(q.re == 1.0 && q.im == 0.0) << level.name;
  }
}

TEST(TargetLib, Div_NullPointerOrLengthBelowOne_DoesNothing) {
  const float zero = 0.0F;
  float x = 7.0F;
  for (const int len : {0, -1, INT_MIN}) EXPECT_NO_THROW(TargetLib::Div_32f_I(&zero, &x, len));
  EXPECT_NO_THROW(TargetLib::Div_32f_I(nullptr, &x, 1));
  EXPECT_NO_THROW(TargetLib::Div_32f_I(&zero, nullptr, 1));
  EXPECT_EQ(x, 7.0F);
  const double zero64 = 0.0;
  const Cplx32 zero32c = {};
  const Cplx64 zero64c = {};
  EXPECT_NO_THROW(TargetLib::Div_64f_I(&zero64, nullptr, 1));
  EXPECT_NO_THROW(TargetLib::Div_32fc_I(&zero32c, nullptr, 1));
  EXPECT_NO_THROW(TargetLib::Div_64fc_I(&zero64c, nullptr, 1));
}

// Unsigned shorts with a scale.

unsigned short Limited(long double x) {
  return static_cast<unsigned short>(std::nearbyint(std::fmin(std::fmax(x, 0.0L), 65535.0L)));
}

const int kScales[] = {0,  1,  2,   3,   7,   15,  16,  17,  18,   40,    INT_MAX,
                       -1, -2, -15, -16, -17, -30, -31, -32, -100, -2000, INT_MIN};

unsigned short ScaledDifference(unsigned short x, unsigned short val, int scale) {
  if (scale > 16) return 0;
  return Limited(std::ldexp(static_cast<long double>(x - val), scale < -1000 ? 1000 : -scale));
}

// In integers: numerator and denominator, quotient and remainder, ties to the even quotient.
unsigned short ScaledQuotient(unsigned short x, unsigned short val, int scale) {
  if (val == 0) return x;
  if (scale > 16) return 0;
  if (scale < -31) return 65535;
  const unsigned long long numerator = static_cast<unsigned long long>(x) << (scale < 0 ? -scale : 0);
  const unsigned long long denominator = static_cast<unsigned long long>(val) << (scale > 0 ? scale : 0);
  const unsigned long long whole = numerator / denominator, twice = 2 * (numerator % denominator);
  const bool up = twice > denominator || (twice == denominator && whole % 2 == 1);
  return static_cast<unsigned short>(std::min(whole + (up ? 1 : 0), 65535ULL));
}

// Every operand once with many constants and scales; places and lengths with a few of them.
template <class Kernel, class Reference>
void CheckScaled(const char *name, const Kernel &kernel, const Reference &reference) {
  ASSERT_EQ(std::fegetround(), FE_TONEAREST);
  std::vector<unsigned short> all(65536), result(all.size()), expected(all.size());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<unsigned short>(i);
  for (const int constant : {0, 1, 2, 3, 7, 100, 32767, 32768, 65534, 65535}) {
    const auto val = static_cast<unsigned short>(constant);
    for (const int scale : kScales) {
      const std::string where =
          std::string(name) + " with " + std::to_string(val) + ", scale " + std::to_string(scale);
      for (std::size_t i = 0; i < all.size(); ++i) expected[i] = reference(all[i], val, scale);
      for (const kernels::Level &level : kernels::AvailableLevels()) {
        const kernels::ScopedLevel scope(level);
        kernel(all.data(), val, result.data(), 65536, scale);
        for (std::size_t i = 0; i < all.size(); ++i) {
          ASSERT_EQ(result[i], expected[i]) << where << " at " << level.name << " of " << i;
        }
      }
      if (constant % 5 != 0 || scale % 3 != 0) continue;
      CheckElementwise<unsigned short, unsigned short>(
          where,
          [&](const unsigned short *src, unsigned short *dst, int len) { kernel(src, val, dst, len, scale); },
          [&](unsigned short x) { return reference(x, val, scale); });
    }
  }
}

TEST(TargetLib, SubC_UnsignedShorts_ScalesRoundsAndSaturates) {
  CheckScaled("SubC_16u", &TargetLib::SubC_16u, ScaledDifference);
}

TEST(TargetLib, DivC_UnsignedShorts_ScalesRoundsAndSaturates) {
  const auto divideCopy = [](const unsigned short *src, unsigned short val, unsigned short *dst, int len,
                             int scale) {
    TargetLib::Copy_16s(reinterpret_cast<const short *>(src), reinterpret_cast<short *>(dst), len);
    TargetLib::DivC_16u_I(val, dst, len, scale);
  };
  CheckScaled("DivC_16u_I", divideCopy, ScaledQuotient);
}

TEST(TargetLib, SubCDivC_UnsignedShortsByHand_MatchTheRules) {
  const unsigned short x[] = {5, 6, 7, 3, 65535};
  unsigned short dst[5];
  TargetLib::SubC_16u(x, 4, dst, 5, 1);
  const unsigned short halves[] = {0, 1, 2, 0, 32766};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(dst[i], halves[i]) << i;
  TargetLib::SubC_16u(x, 4, dst, 5, -2);
  const unsigned short fourfold[] = {4, 8, 12, 0, 65535};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(dst[i], fourfold[i]) << i;
  unsigned short y[] = {5, 6, 7, 3, 65535};
  TargetLib::DivC_16u_I(2, y, 5, 0);
  const unsigned short quotients[] = {2, 3, 4, 2, 32768};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(y[i], quotients[i]) << i;
}

TEST(TargetLib, SubCDivC_UnsignedShortsNullPointerOrLengthBelowOne_DoNothing) {
  const unsigned short x = 9;
  unsigned short dst = 77;
  for (const int len : {0, -1, INT_MIN}) {
    TargetLib::SubC_16u(&x, 1, &dst, len, 2);
    TargetLib::DivC_16u_I(3, &dst, len, 2);
  }
  TargetLib::SubC_16u(nullptr, 1, &dst, 1, 2);
  TargetLib::SubC_16u(&x, 1, nullptr, 1, 2);
  TargetLib::DivC_16u_I(3, nullptr, 1, 2);
  EXPECT_EQ(dst, 77);
}

} // namespace
