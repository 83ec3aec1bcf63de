// Windowed-sinc filters against the formula in 40 digits.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <limits>
#include <string>
#include <vector>

#include "qorn/infra/TargetLib.h"
#include "support/ExpectedValues.h"
#include "support/KernelCheck.h"

namespace {

using QORN::TargetLib;
using QORN::test::Expected;
using QORN::test::ExpectedValues;
using QORN::test::Guarded;

void Generate(const std::string &kind, double low, double high, double *taps, int len) {
  if (kind == "lowpass") TargetLib::FIRGenLowpassWinHamming_64f(low, taps, len);
  if (kind == "highpass") TargetLib::FIRGenHighpassWinHamming_64f(low, taps, len);
  if (kind == "bandpass") TargetLib::FIRGenBandpassWinHamming_64f(low, high, taps, len);
}

// The rounded angles 2 pi f m err in proportion to m, by which the sine is divided: so a tap errs by a few
// roundings of numbers up to 1. The gain that all are divided by is a sum of half as many terms as there are
// taps; each errs as the tap does, and each addition by half an epsilon of at most the taps' magnitudes.
TEST(TargetLib, FIRGen_LengthsAndFrequencies_IsTheFormula) {
  for (const std::string kind : {"lowpass", "highpass", "bandpass"}) {
    const std::vector<Expected> sets = ExpectedValues(kind);
    ASSERT_GE(sets.size(), 28U) << kind;
    for (const Expected &set : sets) {
      const int len = static_cast<int>(set.values.size());
      Guarded<double> taps(len, len % 16);
      Generate(kind, set.parameters[1], set.parameters[2], taps.data(), len);
      ASSERT_TRUE(taps.Intact()) << kind << ' ' << set.name;
      double magnitudes = 0;
      for (const double tap : set.values) magnitudes += std::fabs(tap);
      const double gainError = (4 + len / 4.0) * magnitudes;
      for (int n = 0; n < len; ++n) {
        const double expected = set.values[static_cast<std::size_t>(n)];
        EXPECT_NEAR(taps.data()[n], expected,
                    std::numeric_limits<double>::epsilon() * (4 + std::fabs(expected) * gainError))
            << kind << ' ' << set.name << ", tap " << n;
      }
    }
  }
}

double Gain(const std::vector<double> &taps, double f) {
  std::complex<double> sum = 0;
  for (std::size_t n = 0; n < taps.size(); ++n) {
    sum += taps[n] * std::polar(1.0, -2 * 3.141592653589793 * f * static_cast<double>(n));
  }
  return std::abs(sum);
}

TEST(TargetLib, FIRGen_AnyLength_IsSymmetricWithUnitGainInThePassBand) {
  for (int len = 5; len <= 70; ++len) {
    const struct {
      const char *kind;
      double low, high, centre;
    } cases[] = {{"lowpass", 0.2, 0.2, 0},
                 {"highpass", 0.3, 0.3, len % 2 != 0 ? 0.5 : 0.4},
                 {"bandpass", 0.1, 0.3, 0.2}};
    for (const auto &c : cases) {
      std::vector<double> taps(static_cast<std::size_t>(len));
      Generate(c.kind, c.low, c.high, taps.data(), len);
      EXPECT_NEAR(Gain(taps, c.centre), 1, 1e-13) << c.kind << len;
      for (std::size_t n = 0; n < taps.size(); ++n) {
        ASSERT_EQ(taps[n], taps[taps.size() - 1 - n]) << c.kind << len;
      }
    }
  }
}

TEST(TargetLib, FIRGen_LongFilters_StopWhatTheyShould) {
  std::vector<double> taps(201);
  Generate("lowpass", 0.1, 0, taps.data(), 201);
  EXPECT_NEAR(Gain(taps, 0.05), 1, 0.003);
  EXPECT_NEAR(Gain(taps, 0.1), 0.5, 0.003);
  EXPECT_LT(Gain(taps, 0.15), 0.003);
  Generate("highpass", 0.1, 0, taps.data(), 201);
  EXPECT_LT(Gain(taps, 0.05), 0.003);
  EXPECT_NEAR(Gain(taps, 0.15), 1, 0.003);
  Generate("bandpass", 0.1, 0.2, taps.data(), 201);
  EXPECT_LT(Gain(taps, 0.05), 0.003);
  EXPECT_NEAR(Gain(taps, 0.15), 1, 0.003);
  EXPECT_LT(Gain(taps, 0.25), 0.003);
}

TEST(TargetLib, FIRGen_LengthBelow5OrFrequencyOutside_DoesNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> taps(9, 7.0);
  const auto untouched = [&] { return taps == std::vector<double>(9, 7.0); };
  for (const char *kind : {"lowpass", "highpass", "bandpass"}) {
    for (const int len : {4, 1, 0, -1}) Generate(kind, 0.1, 0.2, taps.data(), len);
    for (const double f : {0.0, -0.1, 0.5, 0.7, nan}) {
      Generate(kind, f, 0.3, taps.data(), 9);
      TargetLib::FIRGenBandpassWinHamming_64f(0.1, f, taps.data(), 9);
    }
    Generate(kind, 0.1, 0.2, nullptr, 9);
    EXPECT_TRUE(untouched()) << kind;
  }
  TargetLib::FIRGenBandpassWinHamming_64f(0.2, 0.2, taps.data(), 9);
  TargetLib::FIRGenBandpassWinHamming_64f(0.3, 0.2, taps.data(), 9);
  EXPECT_TRUE(untouched());
}

} // namespace
