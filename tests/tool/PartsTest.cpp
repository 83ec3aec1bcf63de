// The parts of the tool that compute: text, ticks, noise floor, peaks.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <sstream>

#include "Axis.h"
#include "Failure.h"
#include "Levels.h"
#include "Options.h"
#include "Peaks.h"
#include "Text.h"
#include "WindowKinds.h"

namespace {

using QORN::VecReal64;

std::vector<std::string> Labels(const std::vector<tool::Tick> &ticks) {
  std::vector<std::string> labels;
  for (const tool::Tick &tick : ticks) labels.push_back(tick.label);
  return labels;
}

TEST(Text, Fixed_RoundedToZero_HasNoSign) {
  EXPECT_EQ(tool::Fixed(-0.004, 2), "0.00");
  EXPECT_EQ(tool::Fixed(-0.006, 2), "-0.01");
  EXPECT_EQ(tool::Fixed(-0.0, 0), "0");
  EXPECT_EQ(tool::Fixed(1234.5678, 1), "1234.6");
}

TEST(Text, Quantity_AnyMagnitude_HasFourDigitsAndAPrefix) {
  EXPECT_EQ(tool::Quantity(0.0, "V"), "0 V");
  EXPECT_EQ(tool::Quantity(1e-3, "V"), "1 mV");
  EXPECT_EQ(tool::Quantity(0.99999999e-3, "V"), "1 mV");
  EXPECT_EQ(tool::Quantity(0.00099994, "V"), "999.9 µV");
  EXPECT_EQ(tool::Quantity(-1234.5, "Hz"), "-1.234 kHz");
  EXPECT_EQ(tool::Quantity(927.734375, "Hz"), "927.7 Hz");
  EXPECT_EQ(tool::Quantity(10.24e6, "Hz"), "10.24 MHz");
  EXPECT_EQ(tool::Quantity(123456e9, "Hz"), "123456 GHz");
  EXPECT_EQ(tool::Quantity(1e-15, "V"), "0.001 pV");
}

TEST(Text, Frequency_Resolution_SetsTheDigits) {
  EXPECT_EQ(tool::Frequency(1089933090.0, 488.28), "1089.93309 MHz");
  EXPECT_EQ(tool::Frequency(2441e6, 2500.0), "2441.0000 MHz");
  EXPECT_EQ(tool::Frequency(-1511.23, 1.0), "-1.5112 kHz");
  EXPECT_EQ(tool::Frequency(0.0, 100.0), "0 Hz");
  EXPECT_EQ(tool::Frequency(77e9, 1e7), "77.000 GHz");
}

TEST(Text, Grouped_Digits_StandInThrees) {
  EXPECT_EQ(tool::Grouped(0), "0");
  EXPECT_EQ(tool::Grouped(999), "999");
  EXPECT_EQ(tool::Grouped(-1000), "-1 000");
  EXPECT_EQ(tool::Grouped(-100000), "-100 000");
  EXPECT_EQ(tool::Grouped(2748779069440), "2 748 779 069 440");
}

TEST(Text, Significant_Digits_EndWithoutZeros) {
  EXPECT_EQ(tool::Significant(0.0070710678118654755, 12), "0.00707106781187");
  EXPECT_EQ(tool::Significant(-60.0, 12), "-60");
  EXPECT_EQ(tool::Significant(-0.0, 12), "0");
  EXPECT_EQ(tool::Significant(1e-20, 6), "1e-20");
  EXPECT_EQ(tool::Significant(123456789.0, 12), "123456789");
}

TEST(Text, FrequencyInFull_Digits_AreAllThatCount) {
  EXPECT_EQ(tool::FrequencyInFull(1090012345.678, 100.0), "1090.012345678 MHz");
  EXPECT_EQ(tool::FrequencyInFull(0.1 + 0.2, 0.01), "300 mHz");
  EXPECT_EQ(tool::FrequencyInFull(0.0, 0.01), "0 Hz");
  EXPECT_EQ(tool::FrequencyInFull(-20e3, 20.0), "-20 kHz");
}

TEST(Options, NumberOf_Text_IsReadAsItStands) {
  EXPECT_EQ(tool::NumberOf("X", "0.1"), 0.1);
  EXPECT_EQ(tool::NumberOf("X", "+1090e6"), 1090e6);
  EXPECT_EQ(tool::NumberOf("X", "-.5"), -0.5);
  EXPECT_EQ(tool::NumberOf("X", "9007199254740993"), 9007199254740992.0); // halfway goes to even
  for (const char *text : {"", "+", "-", ".", "1 ", "1k", "1e", "++1", "infinity"})
    EXPECT_THROW(tool::NumberOf("X", text), tool::UsageError) << text;
}

TEST(Options, Wrapped_Names_StayWithinEightyColumns) {
  std::string names = "first";
  for (int i = 0; i < 60; ++i) names += ", name" + std::to_string(i);
  const std::string wrapped = tool::Wrapped(names, 30);
  std::istringstream lines(wrapped);
  std::size_t indent = 30;
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count, indent = 0) {
    EXPECT_LE(indent + line.size(), 79U) << line;
    if (!lines.eof()) {
      EXPECT_GT(indent + line.size(), 70U) << line;
      EXPECT_EQ(line.back(), ',');
    }
  }
  EXPECT_GT(count, 5);
  std::string joined = wrapped;
  std::replace(joined.begin(), joined.end(), '\n', ' ');
  EXPECT_EQ(joined, names);
  EXPECT_EQ(tool::Wrapped("one, two", 9), "one, two");
}

TEST(Axis, RoundStep_Range_IsOneTwoOrFive) {
  EXPECT_DOUBLE_EQ(tool::RoundStep(100.0, 10), 10.0);
  EXPECT_DOUBLE_EQ(tool::RoundStep(101.0, 10), 20.0);
  EXPECT_DOUBLE_EQ(tool::RoundStep(2e6, 11), 2e5);
  EXPECT_DOUBLE_EQ(tool::RoundStep(0.03, 8), 0.005);
  EXPECT_DOUBLE_EQ(tool::RoundStep(6.0, 8), 1.0);
}

TEST(Axis, Ticks_Range_HasAllMultiplesWithEqualDecimals) {
  EXPECT_EQ(Labels(tool::Ticks(-25.0, 10.0, 10.0, 1.0)), (std::vector<std::string>{"-20", "-10", "0", "10"}));
  EXPECT_EQ(Labels(tool::Ticks(99.5e6, 100.5e6, 0.2e6, 1e6)),
            (std::vector<std::string>{"99.6", "99.8", "100.0", "100.2", "100.4"}));
  EXPECT_EQ(Labels(tool::Ticks(-0.1, 0.1, 0.05, 1.0)),
            (std::vector<std::string>{"-0.10", "-0.05", "0.00", "0.05", "0.10"}));
}

// Every one a multiple of its own, and as many as there is room for.
TEST(Axis, Ticks_FarFromZero_EndAndDiffer) {
  for (const auto &[centre, span] : {std::pair(1e15, 1.0), {1e15, 0.5}, {1e12, 0.001}, {-1e15, 0.5}}) {
    const double low = centre - span / 2, high = centre + span / 2;
    const std::vector<tool::Tick> ticks = tool::Ticks(low, high, tool::RoundStep(high - low, 11), 1e6);
    EXPECT_LE(ticks.size(), 12U);
    for (std::size_t i = 1; i < ticks.size(); ++i) EXPECT_LT(ticks[i - 1].value, ticks[i].value);
  }
  EXPECT_EQ(Labels(tool::Ticks(1e15, 1e15 + 2.0, 0.5, 1.0)),
            (std::vector<std::string>{"1000000000000000.0", "1000000000000000.5", "1000000000000001.0",
                                      "1000000000000001.5", "1000000000000002.0"}));
  EXPECT_EQ(Labels(tool::Ticks(1e12, 1e12 + 0.0025, 0.001, 1.0)).size(), 3U);
  // Neighbours that are one number as doubles.
  EXPECT_TRUE(tool::Ticks(1e15 - 0.5, 1e15 + 0.5, 0.1, 1.0).empty());
}

TEST(Axis, Ticks_NoRange_AreOneOrNone) {
  EXPECT_TRUE(tool::Ticks(1e15, 1e15, tool::RoundStep(0.0, 11), 1.0).empty());
  EXPECT_TRUE(tool::Ticks(0.0, 0.0, tool::RoundStep(0.0, 11), 1.0).empty());
  EXPECT_TRUE(tool::Ticks(0.0, 1.0, std::nan(""), 1.0).empty());
  EXPECT_TRUE(tool::Ticks(1.0, 0.0, 0.1, 1.0).empty());
  EXPECT_EQ(Labels(tool::Ticks(5.0, 5.0, 1.0, 1.0)), std::vector<std::string>{"5"});
  EXPECT_EQ(tool::Ticks(0.0, 1e9, 1.0, 1.0).size(), 1000U);
}

TEST(Levels, LevelOf_PowerOfATone_FollowsFromFiftyOhm) {
  // A tone of A volts has A^2 / 2 / 50 watts.
  const double amplitude = 0.1;
  EXPECT_NEAR(tool::LevelOf(tool::Unit::kDbm, amplitude * amplitude),
              10.0 * std::log10(amplitude * amplitude / 100.0 / 1e-3), 1e-12);
  EXPECT_NEAR(tool::LevelOf(tool::Unit::kDbv, amplitude * amplitude), -20.0, 1e-12);
  EXPECT_NEAR(tool::LevelOf(tool::Unit::kVolt, amplitude * amplitude), 0.1, 1e-15);
  EXPECT_EQ(tool::LevelText(tool::Unit::kDbm, 0.0), "no power");
}

TEST(WindowKinds, FindWindow_EveryName_MakesAWindowOfUnitSum) {
  for (const tool::WindowKind &kind : tool::Windows()) {
    ASSERT_EQ(tool::FindWindow(kind.name), &kind);
    QORN::VecReal32 coefficients;
    tool::MakeWindow(kind, 100)->GetCoefficients(coefficients);
    EXPECT_NEAR(coefficients.Sum(), 1.0, 1e-5) << kind.name;
  }
  EXPECT_EQ(tool::FindWindow("none"), nullptr);
}

VecReal64 Noise(int bins, int averages, unsigned seed) {
  std::mt19937 engine(seed);
  std::gamma_distribution<double> power(averages, 1.0 / averages);
  VecReal64 mean(bins);
  for (int k = 0; k < bins; ++k) mean[k] = power(engine);
  return mean;
}

// The relative standard error of such a mean.
VecReal64 Scatter(const VecReal64 &mean, double error) {
  VecReal64 scatter(mean.GetSize());
  scatter.Set(error, mean.GetSize());
  return scatter;
}

TEST(Peaks, NoiseFloor_MeanOfNoise_IsItsPower) {
  for (const int averages : {1, 2, 3, 10, 1000}) {
    VecReal64 mean = Noise(20001, averages, 1);
    // Wilson and Hilferty's median is 1.4 % high for one spectrum; 20001 bins scatter by less than 1 %.
    EXPECT_NEAR(tool::NoiseFloor(mean, averages), 1.0, 0.025) << averages;
    for (int k = 0; k < 2000; ++k) mean[10 * k] += 1000.0; // signals in a tenth of the bins
    EXPECT_NEAR(tool::NoiseFloor(mean, averages), 1.0, averages < 4 ? 0.25 : 0.1) << averages;
  }
}

TEST(Peaks, FindPeaks_NoiseAlone_HasNone) {
  const std::vector<double> leakage = tool::LeakageOf(QORN::HannWindow(512));
  int found = 0;
  for (unsigned seed = 0; seed < 100; ++seed)
    for (const int averages : {1, 3, 30, 3000}) {
      const VecReal64 mean = Noise(4096, averages, seed);
      found += static_cast<int>(tool::FindPeaks(mean, Scatter(mean, 1.0 / std::sqrt(averages)), averages,
                                                tool::NoiseFloor(mean, averages), leakage)
                                    .size());
    }
  EXPECT_LE(found, 8); // one in a hundred spectra, and twice that for chance
}

TEST(Peaks, FindPeaks_Lines_AreTheStrongestFirst) {
  VecReal64 mean = Noise(1000, 100, 3);
  for (int i = 0; i < 12; ++i) mean[40 + 80 * i] = 100.0 * (1 + (7 * i) % 12);
  mean[999] = 1e4; // the ends of the spectrum meet
  mean[0] = 0.9e4;
  const std::vector<double> leakage = {1.0, 0.5, 0.01, 1e-8};
  const std::vector<tool::Peak> peaks = tool::FindPeaks(mean, Scatter(mean, 0.1), 100, 1.0, leakage);
  ASSERT_EQ(peaks.size(), 8U);
  EXPECT_EQ(peaks[0].index, 999);
  EXPECT_GT(peaks[0].place, 999.3);
  for (std::size_t i = 1; i < 8; ++i) EXPECT_EQ(peaks[i].power, 100.0 * static_cast<double>(13 - i));
  EXPECT_EQ(tool::FindPeaks(mean, Scatter(mean, 0.1), 100, 1.0, leakage, {}, 100).size(), 13U);
}

TEST(Peaks, FindPeaks_LeakageOfAStrongerLine_IsNoPeak) {
  VecReal64 mean(256);
  for (int k = 0; k < 256; ++k) mean[k] = 1e-9;
  mean[100] = 1.0;
  mean[103] = 1e-3; // 30 dB down, three bins away
  mean[150] = 1e-3;
  const std::vector<double> leakage = {1.0, 1.0, 1e-1, 1e-2, 1e-3, 1e-4};
  const std::vector<tool::Peak> peaks = tool::FindPeaks(mean, Scatter(mean, 0.0), 1000, 1e-9, leakage);
  ASSERT_EQ(peaks.size(), 2U);
  EXPECT_EQ(peaks[0].index, 100);
  EXPECT_EQ(peaks[1].index, 150);
}

TEST(Peaks, FindPeaks_ShallowValley_PartsSteadyTonesAlone) {
  VecReal64 mean(64);
  for (int k = 0; k < 64; ++k) mean[k] = 1e-6;
  mean[20] = 1.0;
  for (const int k : {21, 22, 23}) mean[k] = 0.2; // 7 dB down, between two lines of nearly one level
  mean[24] = 0.9;
  const std::vector<double> leakage = {1.0, 1.0, 0.1, 1e-3};
  EXPECT_EQ(tool::FindPeaks(mean, Scatter(mean, 0.01), 10, 1e-6, leakage).size(), 2U);
  EXPECT_EQ(tool::FindPeaks(mean, Scatter(mean, 0.2), 10, 1e-6, leakage).size(), 2U);
  EXPECT_EQ(tool::FindPeaks(mean, Scatter(mean, 0.5), 10, 1e-6, leakage).size(), 1U);
}

TEST(Peaks, FindPeaks_OpenEnds_AreNoPeaks) {
  VecReal64 mean(100);
  for (int k = 0; k < 100; ++k) mean[k] = 1e-6;
  mean[0] = mean[99] = 1.0; // the skirts of signals beyond
  mean[1] = mean[98] = 0.5;
  mean[40] = 0.1;
  const std::vector<double> leakage = {1.0, 1.0, 1e-3};
  const std::vector<tool::Peak> peaks =
      tool::FindPeaks(mean, Scatter(mean, 0.0), 1000, 1e-6, leakage, {1.0, false});
  ASSERT_EQ(peaks.size(), 1U);
  EXPECT_EQ(peaks[0].index, 40);
  EXPECT_EQ(tool::FindPeaks(mean, Scatter(mean, 0.0), 1000, 1e-6, leakage)[0].index, 0);
}

TEST(Peaks, FindPeaks_PointsCloserThanBins_LeakByTheDistanceInBins) {
  VecReal64 mean(100);
  for (int k = 0; k < 100; ++k) mean[k] = 1e-6;
  mean[40] = 1.0;
  mean[50] = 1e-2;
  const std::vector<double> leakage = {1.0, 1.0, 0.1, 1e-4};
  const auto count = [&](double spacing) {
    return tool::FindPeaks(mean, Scatter(mean, 0.0), 1000, 1e-6, leakage, {spacing, false}).size();
  };
  EXPECT_EQ(count(1.0), 2U);
  EXPECT_EQ(count(0.3), 2U);
  EXPECT_EQ(count(0.29), 1U); // fewer than three bins apart
}

TEST(Peaks, LeakageOf_Windows_FollowsTheirSidelobes) {
  // The highest sidelobes in decibels as Harris gives them, and the first bin behind the main lobe's zero
  // plus one.
  struct Known {
    std::unique_ptr<QORN::Window> window;
    std::size_t behind;
    double sidelobe;
  };
  Known known[] = {{std::make_unique<QORN::Window>(512), 2, -13.3},
                   {std::make_unique<QORN::HannWindow>(512), 3, -31.5},
                   {std::make_unique<QORN::BlackmanHarrisWindow>(512), 5, -92.0}};
  for (const Known &row : known) {
    const std::vector<double> leakage = tool::LeakageOf(*row.window);
    EXPECT_EQ(leakage.size(), 257U);
    EXPECT_NEAR(leakage[0], 1.0, 1e-6);
    EXPECT_NEAR(leakage[1], 1.0, 1e-6);
    EXPECT_NEAR(10.0 * std::log10(leakage[row.behind]), row.sidelobe, 0.3);
    for (std::size_t d = 1; d < leakage.size(); ++d) EXPECT_LE(leakage[d], leakage[d - 1]);
  }
}

} // namespace
