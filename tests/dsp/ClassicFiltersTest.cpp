#include "qorn/dsp/ClassicFilters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "qorn/dsp/DSPUtils.h"
#include "qorn/infra/VecReal64.h"
#include "support/Csv.h"
#include "support/Filters.h"

namespace {

using namespace QORN;
using test::Decibels;
using test::List;
using test::Response;
using test::Taps;

std::unique_ptr<FIRBaseFilter> Designed(const std::string &kind, float fs, float low, float high, int n) {
  std::unique_ptr<FIRBaseFilter> filter;
  if (kind == "LowPass") filter = std::make_unique<LowPassFilter>();
  if (kind == "HighPass") filter = std::make_unique<HighPassFilter>();
  if (kind == "BandPass") filter = std::make_unique<BandPassFilter>();
  filter->SetParameters(fs, low, high, n);
  return filter;
}

// The taps are designed in double, where SciPy's and ours differ by some epsilons of the largest, and rounded
// to float.
TEST(ClassicFilters, Taps_TabulatedDesigns_AreThoseOfSciPy) {
  const auto rows = test::ReadCsv("classic_filters.csv");
  ASSERT_GE(rows.size(), 70U);
  for (const auto &row : rows) {
    ASSERT_GT(row.size(), 5U);
    const auto number = [&row](std::size_t i) { return std::strtod(row[i].c_str(), nullptr); };
    const auto filter = Designed(row[0], static_cast<float>(number(1)), static_cast<float>(number(2)),
                                 static_cast<float>(number(3)), std::atoi(row[4].c_str()));
    const auto taps = Taps(*filter);
    ASSERT_EQ(taps.size(), row.size() - 5);
    for (std::size_t i = 0; i < taps.size(); ++i) {
      const double expected = number(i + 5);
      ASSERT_NEAR(static_cast<double>(taps[i]), expected, 0x1p-24 * std::fabs(expected) + 1e-15)
          << row[0] << ' ' << row[1] << ' ' << row[2] << ' ' << row[4] << ", tap " << i;
    }
  }
}

// The largest and the smallest gain in dB from one frequency to another, relative to the sampling rate.
struct Range {
  long double low, high;
};
Range GainRange(const std::vector<float> &taps, long double from, long double to) {
  Range range{1e9L, -1e9L};
  for (int i = 0; i <= 200; ++i) {
    const long double gain = Decibels(std::abs(Response(taps, from + (to - from) * i / 200)));
    range = {std::min(range.low, gain), std::max(range.high, gain)};
  }
  return range;
}

// The Hamming window: a transition of 3.3 / n from edge to edge, the ripple below 0.02 dB, the stop band
// below -50 dB.
TEST(ClassicFilters, Gain_EachDesign_PassesAndStopsWhatItShould) {
  for (const int n : {101, 200}) {
    const long double half = 3.5L / n / 2;
    const auto low = Taps(*Designed("LowPass", 1.0F, 0.125F, 0.0F, n));
    EXPECT_LT(GainRange(low, 0, 0.125L - half).high, 0.025L);
    EXPECT_GT(GainRange(low, 0, 0.125L - half).low, -0.025L);
    EXPECT_LT(GainRange(low, 0.125L + half, 0.5L).high, -50);
    EXPECT_NEAR(static_cast<double>(std::abs(Response(low, 0.125L))), 0.5, 0.003);
    EXPECT_NEAR(static_cast<double>(std::abs(Response(low, 0))), 1, 1e-6);

    const auto high = Taps(*Designed("HighPass", 1.0F, 0.125F, 0.0F, n));
    EXPECT_LT(GainRange(high, 0, 0.125L - half).high, -50);
    const long double end = n % 2 != 0 ? 0.5L : 0.5L - 2 * half;
    EXPECT_LT(GainRange(high, 0.125L + half, end).high, 0.025L);
    EXPECT_GT(GainRange(high, 0.125L + half, end).low, -0.025L);

    const auto band = Taps(*Designed("BandPass", 1.0F, 0.125F, 0.375F, n));
    EXPECT_LT(GainRange(band, 0, 0.125L - half).high, -50);
    EXPECT_LT(GainRange(band, 0.375L + half, 0.5L).high, -50);
    EXPECT_LT(GainRange(band, 0.125L + half, 0.375L - half).high, 0.025L);
    EXPECT_GT(GainRange(band, 0.125L + half, 0.375L - half).low, -0.025L);
    EXPECT_NEAR(static_cast<double>(std::abs(Response(band, 0.25L))), 1, 1e-6);
  }
}

TEST(ClassicFilters, SetParameters_BothForms_GiveTheSame) {
  LowPassFilter low;
  low.SetParameters(8.0F, 1.0F, 77.0F, 31);
  const auto lowTaps = Taps(low);
  low.SetParameters(8.0F, 2.0F, 11);
  low.SetParameters(8.0F, 1.0F, 31);
  EXPECT_EQ(Taps(low), lowTaps);
  HighPassFilter high;
  high.SetParameters(8.0F, 1.0F, 77.0F, 31);
  const auto highTaps = Taps(high);
  high.SetParameters(8.0F, 2.0F, 11);
  high.SetParameters(8.0F, 1.0F, 31);
  EXPECT_EQ(Taps(high), highTaps);
  EXPECT_NE(lowTaps, highTaps);
}

TEST(ClassicFilters, SetParameters_AnyDesign_StoresItsRates) {
  struct Low : LowPassFilter {
    float Rate() const { return m_rate; }
  } low;
  low.SetParameters(48000.0F, 5000.0F, 0.25F, 32);
  EXPECT_EQ(low.GetSamplingRate(), 48000.0F);
  EXPECT_EQ(low.Rate(), 5000.0F);
  EXPECT_EQ(test::FilterProbe::TapSize(low), 32);
  EXPECT_EQ(low.GetDelay(), 15.5F);
  struct Band : BandPassFilter {
    float Low() const { return m_rate; }
    float High() const { return m_shape; }
  } band;
  band.SetParameters(48000.0F, 5000.0F, 9000.0F, 33);
  EXPECT_EQ(band.Low(), 5000.0F);
  EXPECT_EQ(band.High(), 9000.0F);
  EXPECT_EQ(band.GetDelay(), 16.0F);
}

// The cutoff is a float divided by a float before the design goes on in double.
TEST(ClassicFilters, SetParameters_RatesThatDoNotDivide_TakesTheQuotientInFloat) {
  VecReal64 wide;
  DSPUtils::LowPass(wide, static_cast<double>(1000.0F / 44100.0F), 41);
  const VecReal32 expected(wide);
  EXPECT_EQ(Taps(*Designed("LowPass", 44100.0F, 1000.0F, 0.0F, 41)), List(expected));
}

TEST(ClassicFilters, SetParameters_WhatTheDesignRefuses_GivesZeros) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const char *kind : {"LowPass", "HighPass", "BandPass"}) {
    for (const float cutoff : {0.0F, -1.0F, 4.0F, 5.0F, nan}) {
      EXPECT_EQ(Taps(*Designed(kind, 8.0F, cutoff, 3.0F, 9)), std::vector<float>(9, 0.0F)) << kind << cutoff;
    }
    EXPECT_EQ(Taps(*Designed(kind, 0.0F, 1.0F, 3.0F, 9)), std::vector<float>(9, 0.0F)) << kind;
    EXPECT_EQ(Taps(*Designed(kind, 8.0F, 1.0F, 3.0F, 4)), std::vector<float>(4, 0.0F)) << kind;
    EXPECT_TRUE(Taps(*Designed(kind, 8.0F, 1.0F, 3.0F, 0)).empty()) << kind;
    EXPECT_TRUE(Taps(*Designed(kind, 8.0F, 1.0F, 3.0F, -7)).empty()) << kind;
  }
  EXPECT_EQ(Taps(*Designed("BandPass", 8.0F, 3.0F, 1.0F, 9)), std::vector<float>(9, 0.0F));
}

} // namespace
