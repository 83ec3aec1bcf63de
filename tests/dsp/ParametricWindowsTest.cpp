#include "qorn/dsp/ParametricWindows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/infra/QORNException.h"
#include "qorn/infra/TargetLib.h"
#include "support/Allocations.h"
#include "support/Csv.h"
#include "support/Wide.h"
#include "support/Windows.h"

namespace {

using namespace QORN;
using test::Coefficients;
using test::List;
using test::Minus;
using test::Over;
using test::Plus;
using test::Times;
using Probe = test::WindowProbe;

struct KaiserProbe : KaiserWindow {
  static int Mode(const KaiserWindow &w) { return w.*(&KaiserProbe::m_mode); }
};

struct TaylorProbe : TaylorWindow {
  using TaylorWindow::ComputeFm;
  static int Sidelobes(const TaylorWindow &w) { return w.*(&TaylorProbe::m_nbar); }
};

// Kaiser

struct KaiserState {
  int mode;
  float rbwScaling, beta;
  int size;
};

void ExpectState(const KaiserWindow &window, const KaiserState &expected, const char *what) {
  EXPECT_EQ(KaiserProbe::Mode(window), expected.mode) << what;
  EXPECT_EQ(window.GetEffectiveRBWScaling(), expected.rbwScaling) << what;
  EXPECT_EQ(Probe::Parameter(window), expected.beta) << what;
  EXPECT_EQ(window.GetSize(), expected.size) << what;
  const std::vector<float> shape =
      expected.size > 0 ? Coefficients(KaiserWindow(expected.size, expected.beta)) : std::vector<float>();
  EXPECT_EQ(Coefficients(window), shape) << what;
}

TEST(KaiserWindow, Constructors_AnyForm_SetModeScalingAndBeta) {
  const auto other = static_cast<KaiserWindowModeTag>(7);
  ExpectState(KaiserWindow(), {0, 2.2292F, 0.0F, 0}, "()");
  ExpectState(KaiserWindow(KaiserWindowModeDefault), {0, 2.2292F, 0.0F, 0}, "(mode 0)");
  ExpectState(KaiserWindow(KaiserWindowModeCISPR), {1, 2.0859F, 0.0F, 0}, "(mode 1)");
  ExpectState(KaiserWindow(other), {7, 2.2292F, 0.0F, 0}, "(mode 7)");
  ExpectState(KaiserWindow(40), {0, 2.2292F, 16.71F, 40}, "(n)");
  ExpectState(KaiserWindow(40, KaiserWindowModeDefault), {0, 2.2292F, 16.71F, 40}, "(n, mode 0)");
  ExpectState(KaiserWindow(40, KaiserWindowModeCISPR), {1, 2.0859F, 14.6F, 40}, "(n, mode 1)");
  ExpectState(KaiserWindow(40, other), {7, 2.2292F, 16.71F, 40}, "(n, mode 7)");
  ExpectState(KaiserWindow(40, 5.0F), {0, 0.89F, 5.0F, 40}, "(n, beta)");
}

TEST(KaiserWindow, SetParameters_AnyForm_SetsWhatItSays) {
  KaiserWindow window(8, KaiserWindowModeCISPR);
  window.SetParameters(30, 5.0F);
  ExpectState(window, {1, 2.0859F, 5.0F, 30}, "(n, beta)");
  window.SetParameters(20);
  ExpectState(window, {0, 2.2292F, 16.71F, 20}, "(n)");
  window.SetParameters(25, KaiserWindowModeCISPR);
  ExpectState(window, {1, 2.0859F, 14.6F, 25}, "(n, mode 1)");
  window.SetParameters(26, static_cast<KaiserWindowModeTag>(-3));
  ExpectState(window, {-3, 2.2292F, 16.71F, 26}, "(n, mode -3)");
  KaiserWindow plain(10, 3.0F);
  plain.SetParameters(12, 4.0F);
  ExpectState(plain, {0, 0.89F, 4.0F, 12}, "(n, beta) after (n, beta)");
}

TEST(KaiserWindow, SetParameters_OtherForms_GoThroughTheTwoArgumentForm) {
  struct Noted : KaiserWindow {
    std::vector<float> betas;
    using KaiserWindow::SetParameters;
    void SetParameters(int n, float beta) override {
      betas.push_back(beta);
      KaiserWindow::SetParameters(n, beta);
    }
  };
  Noted window;
  window.SetParameters(5);
  window.SetParameters(6, KaiserWindowModeCISPR);
  EXPECT_EQ(window.betas, (std::vector<float>{16.71F, 14.6F}));
}

TEST(KaiserWindow, Coefficients_AnyBeta_AreTheKernelsScaledToUnitSum) {
  for (const float beta : {0.0F, 3.3F, 16.71F, 29.9F, 30.0F, 500.0F, -4.0F}) {
    for (const int n : {1, 3, 8, 64, 255}) {
      std::vector<float> shape(static_cast<std::size_t>(n));
      TargetLib::GenKaiserWin_32f(shape.data(), n, beta);
      double sum = 0.0;
      for (const float w : shape) sum += 2.0 * static_cast<double>(w);
      const float scale = Over(1.0F, Times(static_cast<float>(sum), 0.5F));
      for (float &w : shape) w = Times(w, scale);
      EXPECT_EQ(Coefficients(KaiserWindow(n, beta)), shape) << beta << ' ' << n;
    }
  }
}

TEST(KaiserWindow, Coefficients_AnyBeta_AreSymmetric) {
  for (const int n : {2, 3, 64, 255}) {
    const auto w = Coefficients(KaiserWindow(n));
    for (std::size_t k = 0; k < w.size(); ++k) EXPECT_EQ(w[k], w[w.size() - 1 - k]) << n;
  }
}

TEST(KaiserWindow, SetParameters_BetaNotANumber_GivesNotANumber) {
  for (const float w : Coefficients(KaiserWindow(5, std::numeric_limits<float>::quiet_NaN()))) {
    EXPECT_TRUE(std::isnan(w));
  }
}

TEST(KaiserWindow, SetParameters_NoMemoryForTheDoublesOfALargeBeta_FailsAsAVector) {
  constexpr int kPoints = 1000;
  KaiserWindow window(kPoints);
  const test::AllocationLimit limit(kPoints * sizeof(float) + 512);
  window.SetParameters(kPoints, 29.0F);
  try {
    window.SetParameters(kPoints, 30.0F);
    ADD_FAILURE() << "no exception";
  } catch (const QORNException &e) {
    EXPECT_EQ(e.GetErrorCode(), 11001);
    EXPECT_STREQ(e.GetMessage(), "memory allocation error");
    EXPECT_STREQ(e.GetFileName(), "infra/Vector");
  }
}

TEST(KaiserWindow, Copy_AnyState_KeepsItAndIsIndependent) {
  KaiserWindow source(20, KaiserWindowModeCISPR);
  const KaiserWindow copy(source);
  KaiserWindow assigned;
  assigned = source;
  source.SetParameters(10);
  ExpectState(copy, {1, 2.0859F, 14.6F, 20}, "copy");
  ExpectState(assigned, {1, 2.0859F, 14.6F, 20}, "assigned");
}

// CISPR

TEST(CISPR3dBWindow, Scaling_AnyWay_Is22292) {
  ExpectState(CISPR3dBWindow(), {1, 2.2292F, 0.0F, 0}, "()");
  ExpectState(CISPR3dBWindow(50), {1, 2.2292F, 14.6F, 50}, "(n)");
  CISPR3dBWindow window;
  window.SetParameters(10, KaiserWindowModeDefault);
  window.Set6dBBWParam(100e3);
  EXPECT_EQ(window.GetEffectiveRBWScaling(), 2.2292F);
  window.KaiserWindow::SetParameters(10, KaiserWindowModeCISPR);
  EXPECT_EQ(window.GetEffectiveRBWScaling(), 2.0859F);
  window.SetParameters(50);
  ExpectState(window, {1, 2.2292F, 14.6F, 50}, "SetParameters");
}

TEST(CISPR6dBWindow, Constructors_SizedAndNot_DifferInTheScaling) {
  ExpectState(CISPR6dBWindow(), {1, 2.9405F, 0.0F, 0}, "()");
  ExpectState(CISPR6dBWindow(50), {1, 2.0859F, 14.6F, 50}, "(n)");
}

TEST(CISPR6dBWindow, Set6dBBWParam_AtTheLimits_ChoosesTheScaling) {
  const struct {
    double bandwidth;
    float rbwScaling;
  } rows[] = {
      {9e3, 2.9605F},
      {9001.0, 2.9405F},
      {150e3, 2.9405F},
      {150001.0, 2.8405F},
      {30e6, 2.8405F},
      {30000001.0, 2.9605F},
      {0.0, 2.9605F},
      {-5.0, 2.9605F},
      {std::nextafter(9e3, 1e6), 2.9405F},
      {std::nextafter(150e3, 1e6), 2.8405F},
      {std::nextafter(30e6, 1e9), 2.9605F},
      {std::numeric_limits<double>::infinity(), 2.9605F},
      {std::numeric_limits<double>::quiet_NaN(), 2.9605F},
  };
  CISPR6dBWindow window(64);
  const auto before = Coefficients(window);
  for (const auto &row : rows) {
    static_cast<Window &>(window).Set6dBBWParam(row.bandwidth);
    EXPECT_EQ(window.GetEffectiveRBWScaling(), row.rbwScaling) << row.bandwidth;
    EXPECT_EQ(Probe::Parameter(window), 14.6F);
    EXPECT_EQ(Coefficients(window), before);
  }
}

TEST(CISPR6dBWindow, SetParameters_AfterSet6dBBWParam_KeepsTheScaling) {
  CISPR6dBWindow window;
  window.Set6dBBWParam(1e6);
  window.SetParameters(50);
  ExpectState(window, {1, 2.8405F, 14.6F, 50}, "SetParameters(n)");
  window.SetParameters(20, 7.0F);
  ExpectState(window, {1, 2.8405F, 7.0F, 20}, "SetParameters(n, beta)");
  CISPR3dBWindow other;
  other.Set6dBBWParam(1e6);
  other.SetParameters(50);
  EXPECT_EQ(other.GetEffectiveRBWScaling(), 2.2292F);
}

template <class W> void ExpectBetaFromTheParameter() {
  W made;
  Window &window = made;
  window.SetParameters(50, 0.0F);
  EXPECT_EQ(Coefficients(window), std::vector<float>(50, 1.0F / 50.0F));
  window.SetParameters(50, 6.0F);
  EXPECT_EQ(Coefficients(window), Coefficients(KaiserWindow(50, 6.0F)));
  window.SetParameters(50);
  EXPECT_EQ(Coefficients(window), Coefficients(KaiserWindow(50, 14.6F)));
}

TEST(CISPR3dBWindow, SetParameters_TwoArguments_TakesTheSecondForBeta) {
  ExpectBetaFromTheParameter<CISPR3dBWindow>();
}
TEST(CISPR6dBWindow, SetParameters_TwoArguments_TakesTheSecondForBeta) {
  ExpectBetaFromTheParameter<CISPR6dBWindow>();
}

template <class W> void ExpectOneArgumentFormToPassBy() {
  struct Noted : W {
    int calls = 0;
    using W::SetParameters;
    void SetParameters(int n, float beta) override {
      ++calls;
      W::SetParameters(n, beta);
    }
  };
  Noted window;
  window.SetParameters(9);
  EXPECT_EQ(window.calls, 0);
  EXPECT_EQ(window.GetSize(), 9);
}

TEST(CISPR3dBWindow, SetParameters_OneArgument_PassesByTheTwoArgumentForm) {
  ExpectOneArgumentFormToPassBy<CISPR3dBWindow>();
}
TEST(CISPR6dBWindow, SetParameters_OneArgument_PassesByTheTwoArgumentForm) {
  ExpectOneArgumentFormToPassBy<CISPR6dBWindow>();
}

TEST(CISPRWindows, Copy_ChosenScaling_ComesAlong) {
  CISPR6dBWindow source(16);
  source.Set6dBBWParam(1e6);
  const CISPR6dBWindow copy(source);
  CISPR6dBWindow assigned;
  assigned = source;
  source.Set6dBBWParam(1.0);
  EXPECT_EQ(copy.GetEffectiveRBWScaling(), 2.8405F);
  EXPECT_EQ(assigned.GetEffectiveRBWScaling(), 2.8405F);
  EXPECT_EQ(sizeof(CISPR3dBWindow), sizeof(KaiserWindow));
  EXPECT_EQ(sizeof(CISPR6dBWindow), sizeof(KaiserWindow));
}

// Taylor

// The steps one by one, each rounded to float once; the ramp and the cosine are the library's own, which are
// tested by themselves.
float PerStepZero(float i, float a) {
  const float shifted = Minus(i, 0.5F);
  return Plus(Times(shifted, shifted), Times(a, a));
}

float PerStepFm(int nbar, float sigma2, float a, int m) {
  float num = 1.0F;
  float den = 1.0F;
  for (int i = 1; i <= nbar - 1; ++i) {
    const auto mm = static_cast<float>(m * m);
    num = Times(num, Minus(1.0F, Over(Over(mm, sigma2), PerStepZero(static_cast<float>(i), a))));
    if (i != m) den = Times(den, Minus(1.0F, Over(mm, static_cast<float>(i * i))));
  }
  return m % 2 != 0 ? Over(Times(0.5F, num), den) : Over(Times(-0.5F, num), den);
}

struct TaylorFigures {
  float a, sigma2;
};

TaylorFigures PerStepFigures(float level, int nbar) {
  const auto r = static_cast<float>(std::pow(10.0, static_cast<double>(Over(level, -20.0F))));
  const float root = static_cast<float>(std::sqrt(static_cast<double>(Minus(Times(r, r), 1.0F))));
  const float x = Plus(root, r);
  const auto a = static_cast<float>(std::log(static_cast<double>(x)) / 3.141592653589793);
  return {a, Over(static_cast<float>(nbar * nbar), PerStepZero(static_cast<float>(nbar), a))};
}

std::vector<float> PerStepTaylor(int n, float level, int nbar) {
  const TaylorFigures figures = PerStepFigures(level, nbar);
  const auto points = static_cast<float>(n);
  VecReal32 u;
  u.Ramp(n, Times(Over(static_cast<float>(n - 1), points), -0.5F), Over(1.0F, points));
  std::vector<float> w(static_cast<std::size_t>(n), 1.0F);
  for (int m = 1; m <= nbar - 1; ++m) {
    const float fm = PerStepFm(nbar, figures.sigma2, figures.a, m);
    const float frequency = Times(Times(2.0F, 3.1415927F), static_cast<float>(m));
    for (int k = 0; k < n; ++k) {
      float cosine = Times(frequency, u[k]);
      TargetLib::Cos_32f(&cosine, &cosine, 1);
      float &sum = w[static_cast<std::size_t>(k)];
      sum = Plus(sum, Times(Times(2.0F, fm), cosine));
    }
  }
  double sum = 0.0;
  for (const float value : w) sum += 2.0 * static_cast<double>(value);
  const float scale = Over(1.0F, Times(static_cast<float>(sum), 0.5F));
  for (float &value : w) value = Times(value, scale);
  return w;
}

struct TaylorCase {
  float level;
  int nbar;
};
const TaylorCase kTaylorCases[] = {{-30.0F, 4},  {-20.0F, 4},   {-24.0F, 3},   {-40.0F, 7}, {-60.0F, 13},
                                   {-80.0F, 21}, {-33.3F, 5},   {-0.5F, 2},    {0.0F, 1},   {0.0F, 7},
                                   {-3.0F, 2},   {-100.0F, 40}, {-120.0F, 44}, {-1.0F, 1}};

TEST(TaylorWindow, SetParameters_LevelsAndLengths_HasTheBitsOfTheStepsAtEveryLevel) {
  for (const TaylorCase &c : kTaylorCases) {
    for (const int n : {1, 2, 3, 8, 33, 64, 255, 1000}) {
      const auto expected = PerStepTaylor(n, c.level, c.nbar);
      for (const kernels::Level &level : kernels::AvailableLevels()) {
        const kernels::ScopedLevel scoped(level);
        const TaylorWindow window(n, c.level, c.nbar);
        ASSERT_EQ(Coefficients(window), expected)
            << c.level << ' ' << c.nbar << ' ' << n << ' ' << level.name;
      }
    }
  }
}

TEST(TaylorWindow, ComputeFm_AnyTerm_HasTheBitsOfTheSteps) {
  for (const TaylorCase &c : kTaylorCases) {
    const TaylorFigures figures = PerStepFigures(c.level, c.nbar);
    for (int m = 0; m <= c.nbar + 1; ++m) {
      const float expected = PerStepFm(c.nbar, figures.sigma2, figures.a, m);
      EXPECT_EQ(TaylorProbe::ComputeFm(c.nbar, figures.sigma2, figures.a, m), expected)
          << c.level << ' ' << c.nbar << ' ' << m;
    }
  }
}

TEST(TaylorWindow, ComputeFm_BelowTwoSidelobes_IsOneHalfBySign) {
  for (const int nbar : {1, 0, -4}) {
    for (const int m : {-3, -1, 1, 3, 21}) EXPECT_EQ(TaylorProbe::ComputeFm(nbar, 2.0F, 1.5F, m), 0.5F);
    for (const int m : {-2, 0, 2, 20}) EXPECT_EQ(TaylorProbe::ComputeFm(nbar, 2.0F, 1.5F, m), -0.5F);
  }
}

void ExpectState(const TaylorWindow &window, int size, float level, int nbar, float rbwScaling) {
  EXPECT_EQ(window.GetSize(), size);
  EXPECT_EQ(Probe::Parameter(window), level);
  EXPECT_EQ(TaylorProbe::Sidelobes(window), nbar);
  EXPECT_EQ(window.GetEffectiveRBWScaling(), rbwScaling);
  EXPECT_EQ(Coefficients(window), PerStepTaylor(size, level, nbar));
}

TEST(TaylorWindow, Constructors_AnyForm_SetLevelSidelobesAndScaling) {
  ExpectState(TaylorWindow(40), 40, -30.0F, 4, 0.0F);
  ExpectState(TaylorWindow(40, -25.0F), 40, -25.0F, 4, 0.89F);
  ExpectState(TaylorWindow(40, -35.0F, 6), 40, -35.0F, 6, 0.89F);
}

TEST(TaylorWindow, SetParameters_AnyForm_SetsWhatItSays) {
  TaylorWindow window(10, -35.0F, 6);
  window.SetParameters(41, -25.0F, 5);
  ExpectState(window, 41, -25.0F, 5, 0.89F);
  window.SetParameters(20, -20.0F);
  ExpectState(window, 20, -20.0F, 4, 0.89F);
  window.SetParameters(30, -35.0F, 6);
  window.SetParameters(21);
  ExpectState(window, 21, -30.0F, 4, 0.0F);
  window.SetParameters(22, -20.0F, 3);
  ExpectState(window, 22, -20.0F, 3, 0.0F);
}

TEST(TaylorWindow, SetParameters_OneArgument_GoesThroughTheTwoArgumentForm) {
  struct Noted : TaylorWindow {
    using TaylorWindow::TaylorWindow;
    std::vector<float> levels;
    using TaylorWindow::SetParameters;
    void SetParameters(int n, float level) override {
      levels.push_back(level);
      TaylorWindow::SetParameters(n, level);
    }
  };
  Noted window(4);
  window.SetParameters(5);
  EXPECT_EQ(window.levels, std::vector<float>{-30.0F});
}

TEST(TaylorWindow, SetParameters_LevelZero_IsComputed) {
  // A = 0: the sidelobes of sin(pi x) / (pi x), whose derivative at the zeros is that of the flat window.
  const TaylorWindow window(50, 0.0F);
  EXPECT_EQ(Coefficients(window), PerStepTaylor(50, 0.0F, 4));
  EXPECT_NE(Coefficients(window), std::vector<float>(50, 1.0F / 50.0F));
}

TEST(TaylorWindow, SetParameters_OneSidelobe_IsFlat) {
  EXPECT_EQ(Coefficients(TaylorWindow(77, 0.0F, 1)), Coefficients(Window(77)));
  EXPECT_EQ(Coefficients(TaylorWindow(77, -5.0F, 1)), Coefficients(Window(77)));
}

TEST(TaylorWindow, SetParameters_SidelobesUpTo52_StayWithinFloat) {
  for (const float level : {0.0F, -30.0F, -60.0F, -129.0F}) {
    for (const float w : Coefficients(TaylorWindow(64, level, 52))) EXPECT_TRUE(std::isfinite(w)) << level;
    for (const float w : Coefficients(TaylorWindow(64, level, 70))) EXPECT_TRUE(std::isnan(w)) << level;
  }
}

void ExpectRefused(int n, float level, int nbar) {
  TaylorWindow window(6);
  try {
    window.SetParameters(n, level, nbar);
    ADD_FAILURE() << level << ' ' << nbar;
  } catch (const QORNException &e) {
    EXPECT_EQ(e.GetErrorCode(), 10002);
    EXPECT_STREQ(e.GetMessage(), "invalid input parameter");
    EXPECT_STREQ(e.GetFileName(), "dsp\\WindowTaylor");
  }
  EXPECT_EQ(window.GetSize(), n);
  const float kept = Probe::Parameter(window);
  EXPECT_TRUE(kept == level || (std::isnan(kept) && std::isnan(level)));
  EXPECT_EQ(TaylorProbe::Sidelobes(window), nbar);
  EXPECT_EQ(List(Probe::Stored(window)), std::vector<float>(2 * static_cast<std::size_t>(n), 1.0F));
  window.SetParameters(9);
  EXPECT_EQ(Coefficients(window), PerStepTaylor(9, -30.0F, 4));
}

TEST(TaylorWindow, SetParameters_LevelOrSidelobesOutOfRange_ThrowsAndLeavesOnes) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (const int n : {1, 5, 64}) {
    ExpectRefused(n, 10.0F, 4);
    ExpectRefused(n, 1e-3F, 4);
    ExpectRefused(n, kInfinity, 4);
    ExpectRefused(n, std::numeric_limits<float>::quiet_NaN(), 4);
    ExpectRefused(n, -60.0F, 4);
    ExpectRefused(n, -30.2F, 4);
    ExpectRefused(n, -400.0F, 1000);
    ExpectRefused(n, -kInfinity, std::numeric_limits<int>::max());
    ExpectRefused(n, -30.0F, 3);
    ExpectRefused(n, -20.0F, 0);
    ExpectRefused(n, 0.0F, 0);
    ExpectRefused(n, 0.0F, -1);
    ExpectRefused(n, 0.0F, std::numeric_limits<int>::min());
  }
}

TEST(TaylorWindow, Constructors_LevelOutOfRange_Throw) {
  EXPECT_THROW((void)TaylorWindow(8, 1.0F), QORNException);
  EXPECT_THROW((void)TaylorWindow(8, -60.0F), QORNException);
  EXPECT_THROW((void)TaylorWindow(8, -30.0F, 3), QORNException);
}

TEST(TaylorWindow, Copy_AnyState_KeepsItAndIsIndependent) {
  TaylorWindow source(20, -35.0F, 6);
  const TaylorWindow copy(source);
  TaylorWindow assigned(3);
  assigned = source;
  source.SetParameters(10);
  ExpectState(copy, 20, -35.0F, 6, 0.89F);
  ExpectState(assigned, 20, -35.0F, 6, 0.89F);
}

// Against SciPy.

// How far a coefficient may be from the exact one, as a part of the largest, in half units of float.
double KaiserBound() {
  // One rounding each of the shape, its sum, the scale and the product.
  return 4.0;
}

double TaylorBound(float level, int nbar) {
  // The same but for the shape, 1 + 2 F(1) cos(phase 1) + ..., which is at least 1 somewhere: one rounding of
  // each partial sum; of each term two, those of F(m) itself, and that of the phase, 2 pi m u. There u errs
  // by up to 3.5, from the two steps of the ramp and from its slope and start, and 2 pi m u with |u| <= 1/2
  // by two more roundings of a value up to pi m.
  const TaylorFigures figures = PerStepFigures(level, nbar);
  double bound = 3.0;
  for (int m = 1; m < nbar; ++m) {
    const double amplitude =
        2.0 * std::fabs(static_cast<double>(PerStepFm(nbar, figures.sigma2, figures.a, m)));
    bound += 1.0 + amplitude * (2.0 + 9.0 * nbar + 3.1416 * m * (7.0 + 2.0));
  }
  return bound;
}

TEST(ParametricWindows, Coefficients_ManyParameters_AreThoseOfScipy) {
  int rows = 0;
  for (const auto &row : test::ReadCsv("parametric_windows.csv")) {
    ASSERT_EQ(row.size(), 5U);
    const float parameter = std::strtof(row[1].c_str(), nullptr);
    const int nbar = std::atoi(row[2].c_str());
    const int n = std::atoi(row[3].c_str());
    const auto w = row[0] == "Kaiser" ? Coefficients(KaiserWindow(n, parameter))
                                      : Coefficients(TaylorWindow(n, parameter, nbar));
    std::vector<double> expected;
    std::istringstream values(row[4]);
    for (std::string value; values >> value;) expected.push_back(std::strtod(value.c_str(), nullptr));
    ASSERT_EQ(w.size(), expected.size());
    const double bound = 0.5 * static_cast<double>(std::numeric_limits<float>::epsilon()) *
                         (row[0] == "Kaiser" ? KaiserBound() : TaylorBound(parameter, nbar)) *
                         *std::max_element(expected.begin(), expected.end());
    for (std::size_t k = 0; k < w.size(); ++k) {
      EXPECT_NEAR(static_cast<double>(w[k]), expected[k], bound)
          << row[0] << ' ' << parameter << ' ' << nbar << ' ' << n << ' ' << k;
    }
    ++rows;
  }
  EXPECT_GT(rows, 100);
}

} // namespace
