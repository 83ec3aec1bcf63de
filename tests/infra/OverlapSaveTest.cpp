// The block-by-block convolution, as a streaming filter would use it.
#include "infra/fourier/OverlapSave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "infra/kernels/Levels.h"
#include "support/Allocations.h"
#include "support/KernelCheck.h"
#include "support/Wide.h"

namespace {

using QORN::fourier::ComplexPlan;
using QORN::fourier::CyclicFigures;
using QORN::fourier::CyclicParts;
using QORN::fourier::DoubleOverlapSave;
using QORN::fourier::FloatOverlapSave;
using QORN::fourier::OverlapSave;
using QORN::fourier::SharedPlan;
using QORN::test::AllocationCount;
using QORN::test::Guarded;

std::vector<double> Noise(int scalars, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  std::vector<double> x(static_cast<std::size_t>(scalars));
  for (double &value : x) value = normal(random);
  return x;
}

std::vector<float> FloatNoise(int scalars, unsigned seed) {
  const auto x = Noise(scalars, seed);
  return std::vector<float>(x.begin(), x.end());
}

// Runs the complex signal through the filter, block by block, and compares with the direct sum. The errors of
// the transforms in float are a few eps of the norms of a block and of the taps.
void CheckStream(OverlapSave &filter, const std::vector<float> &h, const std::vector<float> &x) {
  const int taps = filter.Taps(), len = static_cast<int>(x.size() / 2), step = filter.Step();
  for (int first = 0; first < len; first += step) {
    for (int i = 0; i < filter.Length(); ++i) {
      const int at = first - (taps - 1) + i;
      const bool inside = at >= 0 && at < len;
      filter.Block()[2 * i] = inside ? x[static_cast<std::size_t>(2 * at)] : 0;
      filter.Block()[2 * i + 1] = inside ? x[static_cast<std::size_t>(2 * at + 1)] : 0;
    }
    filter.Run();
    for (int i = 0; i < step && first + i < len; ++i) {
      double re = 0, im = 0;
      for (int k = 0; k < taps && k <= first + i; ++k) {
        const auto t = static_cast<std::size_t>(2 * k), s = static_cast<std::size_t>(2 * (first + i - k));
        const double hRe = h[t], hIm = h[t + 1], xRe = x[s], xIm = x[s + 1];
        re += hRe * xRe - hIm * xIm;
        im += hRe * xIm + hIm * xRe;
      }
      ASSERT_NEAR(double{filter.Block()[2 * (taps - 1 + i)]}, re, 1e-4) << first + i;
      ASSERT_NEAR(double{filter.Block()[2 * (taps - 1 + i) + 1]}, im, 1e-4) << first + i;
    }
  }
}

TEST(OverlapSave, Run_ComplexTapsAndSignal_IsTheLinearConvolution) {
  for (const int length : {64, 192, 320, 512, 576}) {
    for (const int taps : {1, 2, 33, 64}) {
      OverlapSave filter(length, taps);
      EXPECT_EQ(filter.Length(), length);
      EXPECT_EQ(filter.Step(), length - taps + 1);
      const auto h = FloatNoise(2 * taps, 1);
      filter.SetTaps(h.data());
      CheckStream(filter, h, FloatNoise(2 * 300, 2));
    }
  }
}

TEST(OverlapSave, SetTaps_Again_ReplacesThem) {
  OverlapSave filter(128, 20);
  filter.SetTaps(FloatNoise(40, 3).data());
  const auto h = FloatNoise(40, 4);
  filter.SetTaps(h.data());
  CheckStream(filter, h, FloatNoise(400, 5));
}

TEST(OverlapSave, Copy_OfAFilter_IsAClone) {
  const auto h = FloatNoise(20, 6);
  std::optional<OverlapSave> filter(std::in_place, 192, 10);
  filter->SetTaps(h.data());
  OverlapSave copy(*filter);
  filter->SetTaps(FloatNoise(20, 7).data());
  filter.reset();
  CheckStream(copy, h, FloatNoise(400, 8));
}

TEST(OverlapSave, Run_InSteadyState_AllocatesNothing) {
  OverlapSave filter(1024, 100);
  const std::vector<float> h(200, 0.5F);
  const long before = AllocationCount();
  for (int i = 0; i < 3; ++i) {
    filter.SetTaps(h.data());
    filter.Run();
  }
  EXPECT_EQ(AllocationCount(), before);
}

// FloatOverlapSave: the cyclic convolution of floats, summed here in long double.

using Wide = long double;

struct WideComplex {
  Wide re = 0, im = 0;
};

// Result n of h with the complex signal whose parts are x0[stride n] and x1[stride n].
WideComplex CyclicSum(const std::vector<float> &h, const float *x0, const float *x1, int stride, int length,
                      int n) {
  WideComplex sum;
  for (int k = 0; 2 * k < static_cast<int>(h.size()); ++k) {
    const auto t = static_cast<std::size_t>(2 * k);
    const int at = stride * ((n - k + length) % length);
    const Wide re = h[t], im = h[t + 1];
    sum.re += re * Wide{x0[at]} - im * Wide{x1[at]};
    sum.im += re * Wide{x1[at]} + im * Wide{x0[at]};
  }
  return sum;
}

Wide EnergyOf(const std::vector<float> &x) {
  Wide sum = 0;
  for (const float value : x) sum += Wide{value} * Wide{value};
  return sum;
}

// What the transforms in double may add to the rounding of a result, for noise of deviation 1 and its taps.
Wide Allowance(int length, int taps) {
  return 1e-14L * std::sqrt(static_cast<Wide>(length)) * std::sqrt(static_cast<Wide>(2 * taps));
}

// The float that is nearest to a value which is uncertain by `allowance`.
void ExpectRounded(float got, Wide expected, Wide allowance, const std::string &what) {
  const Wide half = std::ldexp(std::fabs(expected), -24) + Wide{std::numeric_limits<float>::denorm_min()};
  ASSERT_LE(std::fabs(Wide{got} - expected), half + allowance) << what;
}

struct Case {
  int length, taps, everyNth;
};

FloatOverlapSave Filter(const Case &of, const std::vector<float> &h) {
  FloatOverlapSave filter(of.length, of.taps);
  EXPECT_EQ(filter.Length(), of.length);
  EXPECT_EQ(filter.Taps(), of.taps);
  EXPECT_EQ(filter.Step(), of.length - of.taps + 1);
  std::copy(h.begin(), h.end(), filter.NewTaps());
  filter.SetTaps();
  return filter;
}

std::string Describe(const Case &of, const char *level, int n) {
  return std::string(level)
      .append(", length ")
      .append(std::to_string(of.length))
      .append(", taps ")
      .append(std::to_string(of.taps))
      .append(", result ")
      .append(std::to_string(n));
}

void ExpectFigures(const CyclicFigures &figures, Wide energy, Wide smallest, Wide allowance,
                   const std::string &what) {
  ASSERT_NEAR(figures.energy, static_cast<double>(energy), 1e-13 * static_cast<double>(energy)) << what;
  if (std::isinf(smallest)) {
    ASSERT_EQ(figures.smallest, std::numeric_limits<double>::infinity()) << what;
  } else {
    ASSERT_NEAR(figures.smallest, static_cast<double>(smallest), static_cast<double>(allowance)) << what;
  }
}

// Complex taps and values; the results begin after those that are wrapped around.
void CheckComplex(const Case &of) {
  const auto h = FloatNoise(2 * of.taps, 11), x = FloatNoise(2 * of.length, 12);
  const int step = of.length - of.taps + 1;
  const Wide allowance = Allowance(of.length, of.taps), energy = EnergyOf(x);
  std::vector<WideComplex> sums(static_cast<std::size_t>(step));
  for (int i = 0; i < step; i += of.everyNth) {
    sums[static_cast<std::size_t>(i)] = CyclicSum(h, x.data(), x.data() + 1, 2, of.length, of.taps - 1 + i);
  }
  for (const auto &level : QORN::kernels::AvailableLevels()) {
    const QORN::kernels::ScopedLevel scope(level);
    FloatOverlapSave filter = Filter(of, h);
    for (const int count : {1, 7, step / 2, step}) {
      if (count < 1 || count > step) continue;
      Guarded<float> dst(2 * count, 3);
      const CyclicFigures figures = filter.Run(x.data(), dst.data(), count);
      ASSERT_TRUE(dst.Intact()) << Describe(of, level.name, count);
      Wide smallest = std::numeric_limits<Wide>::infinity();
      for (int i = 0; i < count; i += of.everyNth) {
        const WideComplex &sum = sums[static_cast<std::size_t>(i)];
        ExpectRounded(dst.data()[2 * i], sum.re, allowance, Describe(of, level.name, i));
        ExpectRounded(dst.data()[2 * i + 1], sum.im, allowance, Describe(of, level.name, i));
        smallest = std::min({smallest, std::fabs(sum.re), std::fabs(sum.im)});
      }
      if (of.everyNth > 1) smallest = figures.smallest;
      ExpectFigures(figures, energy, smallest, allowance, Describe(of, level.name, count));
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

// Real taps and two real signals, of which one or both may have no results that are wanted.
void CheckPair(const Case &of) {
  auto h = FloatNoise(2 * of.taps, 13);
  for (std::size_t i = 1; i < h.size(); i += 2) h[i] = 0;
  const auto x0 = FloatNoise(of.length, 14), x1 = FloatNoise(of.length, 15);
  const int step = of.length - of.taps + 1;
  const Wide allowance = Allowance(of.length, of.taps), energy = EnergyOf(x0) + EnergyOf(x1);
  std::vector<WideComplex> sums(static_cast<std::size_t>(step));
  for (int i = 0; i < step; i += of.everyNth) {
    sums[static_cast<std::size_t>(i)] = CyclicSum(h, x0.data(), x1.data(), 1, of.length, of.taps - 1 + i);
  }
  const int counts[][2] = {{step, step}, {step, 0}, {0, step}, {0, 0}, {step, 1}, {step / 3, step / 2}};
  for (const auto &level : QORN::kernels::AvailableLevels()) {
    const QORN::kernels::ScopedLevel scope(level);
    FloatOverlapSave filter = Filter(of, h);
    for (const auto &count : counts) {
      Guarded<float> dst0(count[0], 1), dst1(count[1], 6);
      const CyclicFigures figures =
          filter.Run(x0.data(), x1.data(), dst0.data(), count[0], dst1.data(), count[1]);
      ASSERT_TRUE(dst0.Intact() && dst1.Intact()) << Describe(of, level.name, count[0]);
      Wide smallest = std::numeric_limits<Wide>::infinity();
      for (int i = 0; i < step; i += of.everyNth) {
        const WideComplex &sum = sums[static_cast<std::size_t>(i)];
        if (i < count[0]) {
          ExpectRounded(dst0.data()[i], sum.re, allowance, Describe(of, level.name, i));
          smallest = std::min(smallest, std::fabs(sum.re));
        }
        if (i < count[1]) {
          ExpectRounded(dst1.data()[i], sum.im, allowance, Describe(of, level.name, i));
          smallest = std::min(smallest, std::fabs(sum.im));
        }
      }
      if (of.everyNth > 1) smallest = figures.smallest;
      ExpectFigures(figures, energy, smallest, allowance, Describe(of, level.name, count[0]));
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

TEST(FloatOverlapSave, Run_AnyLength_IsTheConvolutionRoundedOnce) {
  for (const int odd : {1, 3, 5, 9}) {
    for (const int power : {1, 2, 4, 8}) {
      const int length = 64 * odd * power;
      for (const int taps : {1, 20, 64}) {
        CheckComplex({length, taps, 1});
        CheckPair({length, taps, 1});
        if (HasFatalFailure()) return;
      }
    }
  }
}

// The lengths whose factors are products of two, and the first one with a factor 9 that filters choose.
TEST(FloatOverlapSave, Run_GreatLength_IsTheConvolutionRoundedOnce) {
  for (const int length : {9216, 1 << 18, 9 << 15}) {
    const Case of{length, 1000, length / 50 + 1};
    CheckComplex(of);
    CheckPair(of);
    if (HasFatalFailure()) return;
  }
}

TEST(FloatOverlapSave, Gain_AnyLength_IsTheLargestMagnitudeOfTheSpectrum) {
  constexpr Wide kPi = 3.14159265358979323846264338327950288L;
  for (const int odd : {1, 3, 5, 9}) {
    for (const int power : {1, 2, 8}) {
      const Case of{64 * odd * power, 20, 1};
      const auto h = FloatNoise(2 * of.taps, 16);
      Wide largest = 0;
      for (int k = 0; k < of.length; ++k) {
        WideComplex bin;
        for (int n = 0; n < of.taps; ++n) {
          const Wide angle = 2 * kPi * static_cast<Wide>(n * k % of.length) / of.length;
          const Wide re = h[static_cast<std::size_t>(2 * n)], im = h[static_cast<std::size_t>(2 * n + 1)];
          bin.re += re * std::cos(angle) + im * std::sin(angle);
          bin.im += im * std::cos(angle) - re * std::sin(angle);
        }
        largest = std::max(largest, std::hypot(bin.re, bin.im));
      }
      for (const auto &level : QORN::kernels::AvailableLevels()) {
        const QORN::kernels::ScopedLevel scope(level);
        ASSERT_NEAR(Filter(of, h).Gain(), static_cast<double>(largest), 1e-13 * static_cast<double>(largest))
            << Describe(of, level.name, 0);
      }
    }
  }
}

TEST(FloatOverlapSave, Copy_OfAFilter_IsAClone) {
  const Case of{320, 10, 1};
  const auto h = FloatNoise(2 * of.taps, 17), x = FloatNoise(2 * of.length, 18);
  std::optional<FloatOverlapSave> filter(Filter(of, h));
  std::vector<float> expected(static_cast<std::size_t>(2 * filter->Step())), got(expected);
  filter->Run(x.data(), expected.data(), filter->Step());
  FloatOverlapSave copy(*filter), assigned(64, 3);
  assigned = *filter;
  std::fill_n(filter->NewTaps(), 20, 0.0F);
  filter->SetTaps();
  filter.reset();
  for (FloatOverlapSave *clone : {&copy, &assigned}) {
    clone->Run(x.data(), got.data(), clone->Step());
    EXPECT_EQ(got, expected);
  }
}

// DoubleOverlapSave: what it is made of, whole steps and the rest, summed in __float128.

using QORN::test::Quad;

struct Cut {
  double steps, rest;
};
Cut CutOf(double x, double step) {
  const double steps = std::nearbyint(x / step) * step;
  return {steps, x - steps};
}

struct QuadSums {
  Quad coarse = 0, rest = 0;
};
QuadSums CyclicSums(const std::vector<double> &h, double tapStep, const std::vector<double> &x, double step,
                    int n) {
  QuadSums sums;
  const int length = static_cast<int>(x.size());
  for (int k = 0; k < static_cast<int>(h.size()); ++k) {
    const Cut tap = CutOf(h[static_cast<std::size_t>(k)], tapStep),
              value = CutOf(x[static_cast<std::size_t>((n - k + length) % length)], step);
    sums.coarse += Quad{tap.steps} * Quad{value.steps};
    sums.rest += Quad{tap.rest} * Quad{value.steps} + (Quad{tap.steps} + Quad{tap.rest}) * Quad{value.rest};
  }
  return sums;
}

DoubleOverlapSave DoubleFilter(const Case &of, const std::vector<double> &h, double tapStep) {
  DoubleOverlapSave filter(of.length, of.taps);
  EXPECT_EQ(filter.Length(), of.length);
  EXPECT_EQ(filter.Taps(), of.taps);
  EXPECT_EQ(filter.Step(), of.length - of.taps + 1);
  std::vector<double> filled(h);
  filled.resize(static_cast<std::size_t>(of.length));
  filter.SetTaps(filled.data(), 0x1.8p52 * tapStep);
  return filter;
}

// With steps so large that the coarse results are exact, those of noise come out with the error of the rest,
// which is 2^-16 of them, and their own rounding.
void CheckDoubles(const Case &of) {
  constexpr double kTapStep = 0x1p-18, kStep = 0x1p-20;
  const auto h = Noise(of.taps, 21), x0 = Noise(of.length, 22), x1 = Noise(of.length, 23);
  const int step = of.length - of.taps + 1;
  std::vector<QuadSums> sums0(static_cast<std::size_t>(step)), sums1(sums0);
  double low = 0, coarse = 0, rest = 0;
  for (const auto *x : {&x0, &x1}) {
    for (const double value : *x) low += std::pow(CutOf(value, kStep).rest, 2);
  }
  for (int n = 0; n < of.length; n += of.everyNth) {
    for (const auto *x : {&x0, &x1}) {
      const QuadSums sums = CyclicSums(h, kTapStep, *x, kStep, n);
      coarse += static_cast<double>(sums.coarse * sums.coarse);
      rest += static_cast<double>(sums.rest * sums.rest);
      if (n >= of.taps - 1) (x == &x0 ? sums0 : sums1)[static_cast<std::size_t>(n - of.taps + 1)] = sums;
    }
  }
  const double allowance = 1e-17 * std::sqrt(static_cast<double>(of.length) * of.taps) * 0x1p-10;
  const int counts[][2] = {{step, step}, {step, 0}, {0, step}, {0, 0}, {step, 1}, {step / 3, step / 2}};
  for (const auto &level : QORN::kernels::AvailableLevels()) {
    const QORN::kernels::ScopedLevel scope(level);
    DoubleOverlapSave filter = DoubleFilter(of, h, kTapStep);
    for (const auto &count : counts) {
      const std::string what = Describe(of, level.name, count[0]);
      Guarded<double> dst0(count[0], 1), dst1(count[1], 5);
      const CyclicParts figures =
          filter.Run({x0.data(), x1.data(), dst0.data(), dst1.data(), of.taps - 1, count[0], count[1]},
                     0x1.8p52 * kStep, 0x1.8p52 * kStep * kTapStep);
      ASSERT_TRUE(dst0.Intact() && dst1.Intact()) << what;
      double smallest = std::numeric_limits<double>::infinity();
      for (int i = (of.everyNth - (of.taps - 1) % of.everyNth) % of.everyNth; i < step; i += of.everyNth) {
        const auto at = static_cast<std::size_t>(i);
        for (const int which : {0, 1}) {
          if (i >= count[which]) continue;
          const QuadSums &sums = (which == 0 ? sums0 : sums1)[at];
          const double got = (which == 0 ? dst0 : dst1).data()[i];
          const auto error = static_cast<double>(Quad{got} - (sums.coarse + sums.rest));
          ASSERT_LE(std::fabs(error), allowance + std::fabs(got) * 0x1p-53) << what << ", result " << i;
          smallest = std::min(smallest, std::fabs(got));
        }
      }
      if (of.everyNth == 1) {
        ASSERT_EQ(figures.smallest, smallest) << what;
        ASSERT_NEAR(figures.low, low, 1e-12 * low) << what;
        ASSERT_NEAR(figures.coarse, coarse, 1e-12 * coarse) << what;
        ASSERT_NEAR(figures.rest, rest, 1e-9 * rest) << what;
      } else if (count[0] + count[1] > 0) {
        ASSERT_LE(figures.smallest, smallest) << what;
      }
    }
  }
}

TEST(DoubleOverlapSave, Run_AnyLength_IsTheConvolutionOfTheParts) {
  for (const int odd : {1, 3, 5, 9}) {
    for (const int power : {1, 2, 4, 8}) {
      for (const int taps : {1, 20, 64}) {
        CheckDoubles({64 * odd * power, taps, 1});
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(DoubleOverlapSave, Run_GreatLength_IsTheConvolutionOfTheParts) {
  for (const int length : {9216, 20480, 1 << 17}) {
    CheckDoubles({length, 300, length / 50 + 1});
    if (HasFatalFailure()) return;
  }
}

// The coarse results of whole steps are exact, and nothing else is added.
TEST(DoubleOverlapSave, Run_WholeSteps_IsExact) {
  const Case of{640, 100, 1};
  auto h = Noise(of.taps, 24), x0 = Noise(of.length, 25), x1 = Noise(of.length, 26);
  for (auto *values : {&h, &x0, &x1}) {
    for (double &value : *values) value = std::nearbyint(1000 * value);
  }
  const int step = of.length - of.taps + 1;
  std::vector<double> dst0(static_cast<std::size_t>(step)), dst1(dst0);
  for (const auto &level : QORN::kernels::AvailableLevels()) {
    const QORN::kernels::ScopedLevel scope(level);
    DoubleOverlapSave filter = DoubleFilter(of, h, 1);
    const CyclicParts figures = filter.Run(
        {x0.data(), x1.data(), dst0.data(), dst1.data(), of.taps - 1, step, step}, 0x1.8p52, 0x1.8p52);
    EXPECT_EQ(figures.low, 0);
    EXPECT_EQ(figures.rest, 0);
    for (int i = 0; i < step; ++i) {
      const auto at = static_cast<std::size_t>(i);
      ASSERT_EQ(dst0[at], static_cast<double>(CyclicSums(h, 1, x0, 1, of.taps - 1 + i).coarse));
      ASSERT_EQ(dst1[at], static_cast<double>(CyclicSums(h, 1, x1, 1, of.taps - 1 + i).coarse));
    }
  }
}

TEST(DoubleOverlapSave, Gain_AnyLength_IsThatOfTheTapsWholeSteps) {
  constexpr Wide kPi = 3.14159265358979323846264338327950288L;
  for (const int length : {64, 192, 320, 576, 1024}) {
    const Case of{length, 20, 1};
    const auto h = Noise(of.taps, 27);
    Wide largest = 0;
    for (int k = 0; k < of.length; ++k) {
      Wide re = 0, im = 0;
      for (int n = 0; n < of.taps; ++n) {
        const Wide angle = 2 * kPi * static_cast<Wide>(n * k % of.length) / of.length;
        const Wide tap = CutOf(h[static_cast<std::size_t>(n)], 0.25).steps;
        re += tap * std::cos(angle);
        im -= tap * std::sin(angle);
      }
      largest = std::max(largest, std::hypot(re, im));
    }
    for (const auto &level : QORN::kernels::AvailableLevels()) {
      const QORN::kernels::ScopedLevel scope(level);
      ASSERT_NEAR(DoubleFilter(of, h, 0.25).Gain(), static_cast<double>(largest),
                  1e-13 * static_cast<double>(largest))
          << Describe(of, level.name, 0);
    }
  }
}

TEST(DoubleOverlapSave, Copy_OfAFilter_IsAClone) {
  const Case of{320, 10, 1};
  const auto h = Noise(of.taps, 28), x = Noise(2 * of.length, 29);
  std::optional<DoubleOverlapSave> filter(DoubleFilter(of, h, 0x1p-18));
  const int step = filter->Step();
  const auto run = [&](DoubleOverlapSave &clone) {
    std::vector<double> dst(static_cast<std::size_t>(2 * step));
    clone.Run({x.data(), x.data() + clone.Length(), dst.data(), dst.data() + step, clone.Taps() - 1, step, step},
           0x1.8p52 * 0x1p-20, 0x1.8p52 * 0x1p-38);
    return dst;
  };
  const std::vector<double> expected = run(*filter);
  DoubleOverlapSave copy(*filter), assigned(64, 3);
  assigned = *filter;
  filter->SetTaps(std::vector<double>(320).data(), 0x1.8p52);
  filter.reset();
  EXPECT_EQ(run(copy), expected);
  EXPECT_EQ(run(assigned), expected);
}

TEST(SharedPlan, ManyThreads_GetOnePlan) {
  std::vector<const ComplexPlan<float> *> plans(8);
  std::vector<std::thread> threads;
  for (auto &plan : plans) threads.emplace_back([&plan] { plan = &SharedPlan<ComplexPlan<float>>(8192); });
  for (auto &thread : threads) thread.join();
  for (const auto *plan : plans) EXPECT_EQ(plan, plans[0]);
  EXPECT_EQ(plans[0]->Length(), 8192);
}

} // namespace
