#include "qorn/math/LeastSqrFit.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "qorn/infra/MatReal64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/Matrices.h"
#include "support/Vectors.h"
#include "support/Wide.h"

namespace {

using namespace QORN;
using test::ExpectThrown;
using test::Flat;
using test::List;
using test::MatrixOf;
using test::Of;
using test::Quad;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

template <class V> void ExpectNear(const V &got, const std::vector<double> &expected, double bound) {
  ASSERT_EQ(got.GetSize(), static_cast<int>(expected.size()));
  for (int i = 0; i < got.GetSize(); ++i) {
    EXPECT_NEAR(static_cast<double>(got[i]), expected[static_cast<std::size_t>(i)], bound) << i;
  }
}

void ExpectSingular(const VecReal64 &x, const VecReal64 &y, int degree) {
  auto p = Of<VecReal64>({7, 8});
  ExpectThrown([&] { LeastSqrFit::Polyfit(p, x, y, degree); }, 12004, "singular matrix", "math\\MathUtils");
  EXPECT_EQ(List(p), (std::vector<double>{7, 8})) << "the destination stays";
}

// Polyfit.

TEST(LeastSqrFit, Polyfit_OfALine_GivesTheHighestPowerFirst) {
  VecReal64 p(9);
  LeastSqrFit::Polyfit(p, Of<VecReal64>({1, 3, 5}), 1);
  ExpectNear(p, {2, 1}, 1e-14);
  LeastSqrFit::Polyfit(p, Of<VecReal64>({10, 12, 14}), Of<VecReal64>({1, 3, 5}), 1);
  ExpectNear(p, {1, -9}, 1e-11);
  VecReal32 f;
  LeastSqrFit::Polyfit(f, Of<VecReal32>({1, 3, 5}), 1);
  ExpectNear(f, {2, 1}, 1e-7);
  LeastSqrFit::Polyfit(f, Of<VecReal32>({10, 12, 14}), Of<VecReal32>({1, 3, 5}), 1);
  ExpectNear(f, {1, -9}, 1e-6);
}

TEST(LeastSqrFit, Polyfit_OfDegreeZero_GivesTheMean) {
  VecReal64 p;
  LeastSqrFit::Polyfit(p, Of<VecReal64>({3, 3, 0}), Of<VecReal64>({1, 2, 6}), 0);
  ExpectNear(p, {3}, 1e-15);
}

// The expected values come from tests/data/make_polynomial_fits.py. The bound is the condition of the normal
// equations, below 1e5 for degree 5, times the rounding error.
TEST(LeastSqrFit, Polyfit_OfScatteredPoints_IsThatOfMpmath) {
  auto x = Of<VecReal64>({-61, -48, -35, -29, -11, -4, 7, 18, 26, 39, 52, 63});
  auto y = Of<VecReal64>({120, -75, 33, -210, 64, 5, -98, 177, 243, -16, 81, -150});
  x /= 64;
  y /= 64;
  const struct {
    int degree;
    std::vector<double> expected;
  } cases[] = {
      {1, {0.1834421554907027507, 0.2225019314539818402}},
      {3, {-7.844761071309738194, -0.3734921060978665427, 5.381705279953901503, 0.4085062390686197211}},
      {5,
       {-1.10324443998488217, 0.03793848040865516063, -6.543685038494756698, -0.3987966762623816516,
        5.093493952047069121, 0.4130825252202355427}},
  };
  for (const auto &c : cases) {
    VecReal64 p;
    LeastSqrFit::Polyfit(p, x, y, c.degree);
    ExpectNear(p, c.expected, 1e-9);
    VecReal32 f;
    LeastSqrFit::Polyfit(f, VecReal32(x), VecReal32(y), c.degree);
    ASSERT_EQ(f.GetSize(), c.degree + 1);
    for (int i = 0; i <= c.degree; ++i)
      EXPECT_EQ(f[i], static_cast<float>(p[i])) << "in double, then narrowed";
  }
}

TEST(LeastSqrFit, Polyfit_ThroughAsManyPointsAsTerms_MeetsThem) {
  VecReal64 p, back;
  const auto y = Of<VecReal64>({5, -1, 2, 9});
  LeastSqrFit::Polyfit(p, y, 3);
  LeastSqrFit::Polyval(back, Of<VecReal64>({0, 1, 2, 3}), p);
  ExpectNear(back, {5, -1, 2, 9}, 1e-9);
}

TEST(LeastSqrFit, Polyfit_OfTooFewDistinctPoints_Throws12004) {
  ExpectSingular(Of<VecReal64>({0, 1}), Of<VecReal64>({1, 2}), 2);
  ExpectSingular(Of<VecReal64>({0.1, 0.3, 0.1, 0.3, 0.1}), Of<VecReal64>({1, 2, 3, 4, 5}), 2);
  ExpectSingular(Of<VecReal64>({3, 3, 3}), Of<VecReal64>({1, 2, 3}), 1);
  ExpectSingular(Of<VecReal64>({0.0, -0.0}), Of<VecReal64>({1, 2}), 1);
  ExpectSingular(VecReal64(), VecReal64(), 0);
  ExpectSingular(Of<VecReal64>({1, 2, 3}), Of<VecReal64>({1, 2, 3}), std::numeric_limits<int>::max());
  // Rounding leaves no trace of the dependence in the normal matrix of so many points.
  VecReal64 x(10000), y(10000);
  for (int i = 0; i < 10000; ++i) x[i] = i % 3 * 0.1 + 0.7;
  ExpectSingular(x, y, 3);
  VecReal64 p;
  LeastSqrFit::Polyfit(p, x, y, 2);
  EXPECT_EQ(p.GetSize(), 3);
  VecReal32 f;
  ExpectThrown(
      [&] {
        LeastSqrFit::Polyfit(f, Of<VecReal32>({1, 2}), 2);
      },
      12004, "singular matrix", "math\\MathUtils");
  ExpectThrown(
      [&] {
        LeastSqrFit::Polyfit(f, Of<VecReal32>({4, 4}), Of<VecReal32>({1, 2}), 1);
      },
      12004, "singular matrix", "math\\MathUtils");
  EXPECT_EQ(f.GetSize(), 0);
}

TEST(LeastSqrFit, Polyfit_OfNonsense_Throws12004) {
  const auto y = Of<VecReal64>({1, 2, 3});
  for (const int degree : {-1, -2, std::numeric_limits<int>::min()}) {
    ExpectSingular(Of<VecReal64>({1, 2, 3}), y, degree);
  }
  ExpectSingular(Of<VecReal64>({1, kNaN, 3}), y, 1);
  ExpectSingular(Of<VecReal64>({1, 1e200, 3}), y, 1);
  for (const double x : {kNaN, kInf, -kInf}) {
    ExpectSingular(Of<VecReal64>({5, 5, 5, x}), Of<VecReal64>({0, 1, 2, 3}), 1);
    ExpectSingular(Of<VecReal64>({0, 1, 2, x}), Of<VecReal64>({0, 1, 2, 3}), 2);
  }
}

// The zeroth power of anything is 1.
TEST(LeastSqrFit, Polyfit_OfDegreeZero_IsTheMeanWhateverXHolds) {
  for (const double x : {5.0, kNaN, kInf}) {
    VecReal64 p;
    LeastSqrFit::Polyfit(p, Of<VecReal64>({5, 5, 5, x}), Of<VecReal64>({0, 1, 2, 3}), 0);
    ASSERT_EQ(p.GetSize(), 1) << x;
    EXPECT_EQ(p[0], 1.5) << x;
  }
}

TEST(LeastSqrFit, Polyfit_OfYThatIsNotFinite_GivesNoFiniteCoefficient) {
  for (const double y : {kNaN, kInf, -kInf}) {
    for (int at = 0; at < 4; ++at) {
      for (int degree = 0; degree < 3; ++degree) {
        auto ys = Of<VecReal64>({0, 1, 2, 3});
        ys[at] = y;
        VecReal64 p;
        LeastSqrFit::Polyfit(p, Of<VecReal64>({-1, 0, 1, 2}), ys, degree);
        ASSERT_EQ(p.GetSize(), degree + 1);
        for (int i = 0; i <= degree; ++i)
          EXPECT_FALSE(std::isfinite(p[i])) << y << ' ' << at << ' ' << degree;
      }
    }
  }
}

// Polyval.

TEST(LeastSqrFit, Polyval_OfAnyLength_IsHornersRuleStepByStep) {
  double d = 0;
  LeastSqrFit::Polyval(d, 3.0, Of<VecReal64>({2, 1}));
  EXPECT_EQ(d, 7.0);
  float f = 0;
  LeastSqrFit::Polyval(f, 3.0F, Of<VecReal32>({2, 1}));
  EXPECT_EQ(f, 7.0F);
  const auto p = Of<VecReal64>({0.1, -0.7, 3.3, 1e-3});
  VecReal32 pf(p);
  for (const int n : {0, 1, 7, 512, 1003}) {
    VecReal64 x, out(5000);
    x.Ramp(n, -1.7, 0.0037);
    VecReal32 xf(x), outf;
    const long before = test::AllocationCount();
    LeastSqrFit::Polyval(out, x, p);
    EXPECT_EQ(test::AllocationCount(), before);
    LeastSqrFit::Polyval(outf, xf, pf);
    ASSERT_EQ(out.GetSize(), n);
    ASSERT_EQ(outf.GetSize(), n);
    for (int i = 0; i < n; ++i) {
      double expected = p[0];
      float expectedf = pf[0];
      for (int k = 1; k < 4; ++k) {
        expected = test::Plus(test::Times(expected, x[i]), p[k]);
        expectedf = test::Plus(test::Times(expectedf, xf[i]), pf[k]);
      }
      ASSERT_EQ(out[i], expected) << i;
      ASSERT_EQ(outf[i], expectedf) << i;
      LeastSqrFit::Polyval(d, x[i], p);
      LeastSqrFit::Polyval(f, xf[i], pf);
      ASSERT_EQ(d, expected);
      ASSERT_EQ(f, expectedf);
    }
    LeastSqrFit::Polyval(x, x, p);
    EXPECT_TRUE(x == out) << "in place";
  }
}

TEST(LeastSqrFit, Polyval_OfOneOrNoCoefficient_IsConstant) {
  VecReal64 out;
  LeastSqrFit::Polyval(out, Of<VecReal64>({1, 2}), Of<VecReal64>({5}));
  EXPECT_EQ(List(out), (std::vector<double>{5, 5}));
  LeastSqrFit::Polyval(out, Of<VecReal64>({1, 2}), VecReal64());
  EXPECT_EQ(List(out), (std::vector<double>{0, 0}));
  double value = 3;
  LeastSqrFit::Polyval(value, 2.0, VecReal64());
  EXPECT_EQ(value, 0.0);
}

// Straight lines.

TEST(LeastSqrFit, Line_OfScatteredPoints_AgreesWithQuadruplePrecision) {
  VecReal64 x(101), y(101);
  VecReal32 xf(101), yf(101);
  for (int i = 0; i < 101; ++i) {
    x[i] = 0.37 * i - 4.1 + 0.01 * (i * 31 % 17);
    y[i] = 2.5 - 0.8 * x[i] + 0.3 * (i * 53 % 29);
    xf[i] = static_cast<float>(x[i]);
    yf[i] = static_cast<float>(y[i]);
  }
  Quad sx = 0, sxx = 0, sy = 0, sxy = 0;
  for (int i = 0; i < 101; ++i) {
    sx += static_cast<Quad>(x[i]);
    sxx += static_cast<Quad>(x[i]) * static_cast<Quad>(x[i]);
    sy += static_cast<Quad>(y[i]);
    sxy += static_cast<Quad>(x[i]) * static_cast<Quad>(y[i]);
  }
  const Quad den = 101 * sxx - sx * sx;
  const auto slopeExpected = static_cast<double>((101 * sxy - sy * sx) / den);
  const auto interceptExpected = static_cast<double>((sy * sxx - sxy * sx) / den);
  double slope = 0, intercept = 0;
  LeastSqrFit::LinearLeastSquareFit(slope, intercept, x, y);
  EXPECT_NEAR(slope, slopeExpected, 1e-13);
  EXPECT_NEAR(intercept, interceptExpected, 1e-12);
  float slopef = 0, interceptf = 0;
  LeastSqrFit::LinearLeastSquareFit(slopef, interceptf, xf, yf);
  EXPECT_NEAR(static_cast<double>(slopef), slopeExpected, 1e-5);
  EXPECT_NEAR(static_cast<double>(interceptf), interceptExpected, 1e-4);
}

// Products that float rounds: the float form must use them rounded, and sum them in double.
TEST(LeastSqrFit, Line_InFloat_FormsProductsInFloatAndSumsInDouble) {
  const std::vector<float> xs{4097.0F, 0.1F, -3.3F}, ys{4099.0F, 0.7F, 12345.678F};
  double sx = 0, sxx = 0, sy = 0, sxy = 0;
  for (std::size_t i = 0; i < 3; ++i) {
    sx += static_cast<double>(xs[i]);
    sxx += static_cast<double>(test::Times(xs[i], xs[i]));
    sy += static_cast<double>(ys[i]);
    sxy += static_cast<double>(test::Times(xs[i], ys[i]));
  }
  const double den = 3 * sxx - sx * sx;
  float slope = 0, intercept = 0;
  LeastSqrFit::LinearLeastSquareFit(slope, intercept, Of<VecReal32>(xs), Of<VecReal32>(ys));
  EXPECT_EQ(slope, static_cast<float>((3 * sxy - sy * sx) / den));
  EXPECT_EQ(intercept, static_cast<float>((sy * sxx - sxy * sx) / den));
}

TEST(LeastSqrFit, Line_WithoutAbscissae_CountsFromZero) {
  double slope = 0, intercept = 0;
  const long before = test::AllocationCount();
  const auto y = Of<VecReal64>({1, 3, 5, 7});
  const auto yf = Of<VecReal32>({1, 3, 5, 7});
  const long made = test::AllocationCount();
  EXPECT_GT(made, before);
  LeastSqrFit::LinearLeastSquareFit(slope, intercept, y);
  EXPECT_EQ(slope, 2.0);
  EXPECT_EQ(intercept, 1.0);
  float slopef = 0, interceptf = 0;
  LeastSqrFit::LinearLeastSquareFit(slopef, interceptf, yf);
  EXPECT_EQ(slopef, 2.0F);
  EXPECT_EQ(interceptf, 1.0F);
  EXPECT_EQ(test::AllocationCount(), made);
}

TEST(LeastSqrFit, Line_OfEqualOrNoAbscissae_IsVertical) {
  double slope = 0, intercept = 5;
  LeastSqrFit::LinearLeastSquareFit(slope, intercept, Of<VecReal64>({1, 1, 1}), Of<VecReal64>({1, 2, 3}));
  EXPECT_EQ(slope, 1e10);
  EXPECT_EQ(intercept, 0.0);
  float slopef = 0, interceptf = 5;
  LeastSqrFit::LinearLeastSquareFit(slopef, interceptf, Of<VecReal32>({1, 1, 1}), Of<VecReal32>({1, 2, 3}));
  EXPECT_EQ(std::bit_cast<std::uint32_t>(slopef), 0x501502F9U);
  EXPECT_EQ(interceptf, 0.0F);
  slope = intercept = 5;
  LeastSqrFit::LinearLeastSquareFit(slope, intercept, VecReal64());
  EXPECT_EQ(slope, 1e10);
  EXPECT_EQ(intercept, 0.0);
  LeastSqrFit::LinearLeastSquareFit(slopef, interceptf, Of<VecReal32>({4}));
  EXPECT_EQ(slopef, 1e10F);
  EXPECT_EQ(interceptf, 0.0F);
}

TEST(LeastSqrFit, Residuals_AreTheDistancesFromTheLine) {
  double slope = 0, intercept = 0;
  VecReal64 residual(9);
  LeastSqrFit::LinearLeastSquareFit(slope, intercept, residual, Of<VecReal64>({1, 2, 4}),
                                    Of<VecReal64>({5, 7, 11}));
  EXPECT_NEAR(slope, 2.0, 1e-14);
  EXPECT_NEAR(intercept, 3.0, 1e-14);
  ExpectNear(residual, {0, 0, 0}, 1e-13);
  const auto x = Of<VecReal64>({0.1, 2, 4.7, 5}), y = Of<VecReal64>({5, 7, -1, 0.3});
  LeastSqrFit::LinearLeastSquareFit(slope, intercept, residual, x, y);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(residual[i], test::Minus(test::Minus(y[i], intercept), test::Times(x[i], slope)));
  }
  LeastSqrFit::LinearLeastSquareFit(slope, intercept, residual, Of<VecReal64>({1, 1}), Of<VecReal64>({2, 3}));
  EXPECT_EQ(List(residual), (std::vector<double>{2 - 1e10, 3 - 1e10}));
  auto self = y;
  LeastSqrFit::LinearLeastSquareFit(slope, intercept, self, x, self);
  EXPECT_EQ(self[0], test::Minus(test::Minus(y[0], intercept), test::Times(x[0], slope)));
}

// The general linear model.

TEST(LeastSqrFit, Model_OfOnes_GivesTheMean) {
  MatReal64 beta(5, 5);
  LeastSqrFit::LinearLeastSquareFit(beta, MatrixOf<MatReal64>(4, 1, {1, 2, 3, 6}),
                                    MatrixOf<MatReal64>(4, 1, {1, 1, 1, 1}));
  EXPECT_EQ(beta.GetRows(), 1);
  EXPECT_EQ(beta.GetCols(), 1);
  EXPECT_NEAR(beta[0][0], 3.0, 1e-15);
}

TEST(LeastSqrFit, Model_WithoutNoise_FindsItsCoefficients) {
  MatReal64 X(20, 3), y(20, 1), beta;
  for (int i = 0; i < 20; ++i) {
    X[i][0] = 1;
    X[i][1] = std::sin(0.4 * i);
    X[i][2] = std::cos(0.9 * i);
    y[i][0] = 2 * X[i][0] - 3 * X[i][1] + 0.5 * X[i][2];
  }
  LeastSqrFit::LinearLeastSquareFit(beta, y, X);
  ASSERT_EQ(beta.GetRows(), 3);
  ASSERT_EQ(beta.GetCols(), 1);
  EXPECT_NEAR(beta[0][0], 2.0, 1e-13);
  EXPECT_NEAR(beta[1][0], -3.0, 1e-13);
  EXPECT_NEAR(beta[2][0], 0.5, 1e-13);
}

TEST(LeastSqrFit, Model_OfDependentColumns_Throws12004) {
  auto beta = MatrixOf<MatReal64>(1, 1, {9});
  const auto expectSingular = [&](const MatReal64 &y, const MatReal64 &X) {
    ExpectThrown([&] { LeastSqrFit::LinearLeastSquareFit(beta, y, X); }, 12004, "singular matrix",
                 "math\\MathUtils");
    EXPECT_EQ(Flat(beta), (std::vector<double>{9}));
  };
  const auto y = MatrixOf<MatReal64>(3, 1, {1, 2, 3});
  expectSingular(y, MatrixOf<MatReal64>(3, 2, {1, 2, 2, 4, 3, 6}));
  expectSingular(y, MatrixOf<MatReal64>(3, 2, {0.1, 0.1, 0.3, 0.3, 0.7, 0.7}));
  expectSingular(y, MatrixOf<MatReal64>(3, 1, {0, 0, 0}));
  expectSingular(MatrixOf<MatReal64>(2, 1, {1, 2}),
                 MatrixOf<MatReal64>(2, 3, {0.1, 0.2, 0.7, 0.3, 0.9, 0.4}));
  expectSingular(MatReal64(), MatReal64());
}

} // namespace
