#include "qorn/dsp/MeasurementFilters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <numeric>
#include <span>
#include <vector>

#include "dsp/IS95Taps.h"
#include "support/Filters.h"

namespace {

using namespace QORN;
using test::kPiLong;
using test::List;
using test::LongSinc;
using test::Response;
using test::Taps;

struct Table {
  std::unique_ptr<IS95Filter> filter;
  std::span<const float> (*taps)(int ratio);
  int lengths[4]; // at ratios 2, 4, 8 and 16
  float delays[4];
};

std::vector<Table> Tables() {
  std::vector<Table> tables;
  tables.push_back(
      {std::make_unique<IS95TXMeasurementFilter>(), &IS95TxTaps, {81, 161, 321, 643}, {40, 80, 160, 321}});
  tables.push_back({std::make_unique<IS95TXEQMeasurementFilter>(),
                    &IS95TxEqTaps,
                    {81, 161, 321, 643},
                    {40, 80, 160, 321}});
  tables.push_back({std::make_unique<IS95ReferenceFilter>(),
                    &IS95ReferenceTaps,
                    {103, 207, 415, 829},
                    {51, 103, 207, 414}});
  return tables;
}

constexpr int kRatios[] = {2, 4, 8, 16};

TEST(IS95Filter, SetParameters_TabulatedRatio_LoadsItsTable) {
  for (const Table &table : Tables()) {
    EXPECT_EQ(table.filter->GetOversamplingRatio(), 0);
    for (int i = 0; i < 4; ++i) {
      const int ratio = kRatios[i];
      const std::span<const float> expected = table.taps(ratio);
      table.filter->SetParameters(ratio);
      EXPECT_EQ(Taps(*table.filter), std::vector<float>(expected.begin(), expected.end()));
      EXPECT_EQ(Taps(*table.filter).size(), static_cast<std::size_t>(table.lengths[i]));
      EXPECT_EQ(test::FilterProbe::TapSize(*table.filter), table.lengths[i]);
      EXPECT_EQ(table.filter->GetDelay(), table.delays[i]);
      EXPECT_EQ(table.filter->GetOversamplingRatio(), ratio);
      EXPECT_EQ(table.filter->GetRecommendedTapSize(static_cast<float>(ratio) * 1.2288e6F, 1.2288e6F, 0.0F),
                table.lengths[i]);
    }
  }
}

TEST(IS95Filter, SetParameters_ThreeClasses_HaveThreeTables) {
  const auto tables = Tables();
  for (const Table &table : tables) table.filter->SetParameters(2);
  EXPECT_EQ(Taps(*tables[0].filter)[40], 0.524884164F);
  EXPECT_EQ(Taps(*tables[1].filter)[40], 0.519874573F);
  EXPECT_EQ(Taps(*tables[2].filter)[51], 2.00168443F);
}

TEST(IS95Filter, SetParameters_RatesBetween_TakesTheNearestRatio) {
  for (const Table &table : Tables()) {
    table.filter->SetParameters(4.4F, 1.0F, 9.0F, 3);
    EXPECT_EQ(table.filter->GetOversamplingRatio(), 4);
    const auto four = Taps(*table.filter);
    EXPECT_EQ(four.size(), static_cast<std::size_t>(table.lengths[1]));
    table.filter->SetParameters(4.5F, 1.0F, 0.0F, 0); // 5, which has no table
    EXPECT_EQ(Taps(*table.filter), four);
    EXPECT_EQ(table.filter->GetOversamplingRatio(), 4);
    EXPECT_EQ(table.filter->GetDelay(), table.delays[1]);
    table.filter->SetParameters(3.5F, 1.0F, 0.0F, 0);
    EXPECT_EQ(Taps(*table.filter), four);
    table.filter->SetParameters(15.5F, 1.0F, 0.0F, 0);
    EXPECT_EQ(table.filter->GetOversamplingRatio(), 16);
  }
}

TEST(IS95Filter, SetParameters_OtherRatio_LeavesEverything) {
  for (const Table &table : Tables()) {
    table.filter->SetParameters(2);
    const auto two = Taps(*table.filter);
    for (const int ratio : {0, 1, 3, 5, 6, 7, 9, 15, 17, 32, -2, std::numeric_limits<int>::max()}) {
      table.filter->SetParameters(ratio);
      EXPECT_EQ(Taps(*table.filter), two) << ratio;
      EXPECT_EQ(table.filter->GetOversamplingRatio(), 2) << ratio;
    }
    for (const float fs :
         {1e30F, -1e30F, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
      table.filter->SetParameters(fs, 1.0F, 0.0F, 0);
      EXPECT_EQ(Taps(*table.filter), two) << fs;
      EXPECT_EQ(table.filter->GetRecommendedTapSize(fs, 1.0F, 0.0F), 0) << fs;
    }
  }
}

struct C4FMCase {
  float samples; // per symbol
  int n, bins;
};
const C4FMCase kC4FMCases[] = {{10, 255, 256}, {8, 255, 256},     {5, 101, 128},    {10, 256, 256},
                               {4, 33, 64},    {10.4F, 255, 256}, {6.5F, 127, 128}, {2, 3, 4}};

// One value of the inverse transform of the stated bins, summed directly.
long double C4FMTap(long double samples, int bins, int place) {
  long double sum = samples;
  for (int k = 1; k < bins / 2 && k * samples / bins < 1; ++k) {
    sum += 2 * samples * LongSinc(k * samples / bins) * std::cos(2 * kPiLong * k * place / bins);
  }
  return sum / bins / std::round(samples);
}

// Times 1 / samples the bins are at most 1 and are rounded to float; the transform adds some epsilons of
// that.
TEST(C4FMReverseShapingFilter, Taps_AnyDesign_AreTheInverseTransformOfTheResponse) {
  for (const C4FMCase &c : kC4FMCases) {
    C4FMReverseShapingFilter filter;
    filter.SetParameters(c.samples * 4800.0F, 4800.0F, 0.2F, c.n);
    const auto taps = Taps(filter);
    ASSERT_EQ(taps.size(), static_cast<std::size_t>(c.n));
    const int centre = (c.n - 1) / 2;
    for (int i = 0; i < c.n; ++i) {
      const int place = i - centre;
      const bool cut = place != 0 && std::abs(place) >= centre;
      const long double expected = cut ? 0 : C4FMTap(static_cast<long double>(c.samples), c.bins, place);
      EXPECT_NEAR(static_cast<double>(taps[static_cast<std::size_t>(i)]), static_cast<double>(expected), 1e-7)
          << c.samples << ' ' << c.n << ", tap " << i;
    }
  }
}

// At the bins of the design, but for the three values of the inverse transform that have no tap.
TEST(C4FMReverseShapingFilter, Response_255Taps_IsTheSincUpToTheSymbolRate) {
  C4FMReverseShapingFilter filter;
  filter.SetParameters(48000.0F, 4800.0F, 0.0F, 255);
  const auto taps = Taps(filter);
  const long double missing = 2 * std::fabs(C4FMTap(10, 256, 127)) + std::fabs(C4FMTap(10, 256, 128));
  EXPECT_LT(missing, 1e-3L);
  for (int k = 0; k < 128; ++k) {
    const long double f = k * 10 / 256.0L; // in symbol rates
    const long double expected = f < 1 ? LongSinc(f) : 0;
    EXPECT_LE(std::fabs(Response(taps, k / 256.0L).real() - expected), missing + 3e-7L) << k;
  }
}

TEST(C4FMReverseShapingFilter, Taps_EndsAndMiddle_AreWhereTheyShouldBe) {
  C4FMReverseShapingFilter filter;
  filter.SetParameters(48000.0F, 4800.0F, 0.0F, 255);
  auto taps = Taps(filter);
  EXPECT_EQ(taps[0], 0.0F);
  EXPECT_EQ(taps[254], 0.0F);
  EXPECT_NE(taps[1], 0.0F);
  EXPECT_NE(taps[253], 0.0F);
  // As symmetric as the float transform of 256 points is exact: 0.4 eps sqrt(log2 256) of the norm on each
  // side.
  const double norm = std::sqrt(std::inner_product(taps.begin(), taps.end(), taps.begin(), 0.0));
  const double error = 0.4 * 0x1p-23 * std::sqrt(8.0) * norm;
  for (std::size_t i = 0; i < 255; ++i) {
    EXPECT_LE(taps[i], taps[127]);
    EXPECT_NEAR(taps[i], taps[254 - i], 2 * error) << i;
  }
  filter.SetParameters(48000.0F, 4800.0F, 0.0F, 256);
  taps = Taps(filter);
  EXPECT_EQ(taps[0], 0.0F);
  EXPECT_EQ(taps[254], 0.0F);
  EXPECT_EQ(taps[255], 0.0F);
  EXPECT_NE(taps[253], 0.0F);
  EXPECT_EQ(filter.GetDelay(), 127.5F);
}

TEST(C4FMReverseShapingFilter, Taps_NoWholeNumberOfSamples_AreOffByTheRounding) {
  const auto gain = [](float samples) {
    VecReal32 taps;
    C4FMReverseShapingFilter::C4FMFilterTap(taps, samples, 1.0F, 1023);
    return static_cast<double>(Response(List(taps), 0).real());
  };
  EXPECT_NEAR(gain(10.0F), 1.0, 2e-3);
  EXPECT_NEAR(gain(10.4F), 1.04, 2e-3);
  EXPECT_NEAR(gain(9.5F), 0.95, 2e-3);
}

TEST(C4FMReverseShapingFilter, Taps_ShortLengths_HoldTheMiddleOnly) {
  VecReal32 taps(5);
  for (const int n : {0, -4}) {
    C4FMReverseShapingFilter::C4FMFilterTap(taps, 10.0F, 1.0F, n);
    EXPECT_EQ(taps.GetSize(), 0);
  }
  // Two bins, of which the second is 0.
  C4FMReverseShapingFilter::C4FMFilterTap(taps, 10.0F, 1.0F, 1);
  EXPECT_EQ(List(taps), std::vector<float>{0.5F});
  C4FMReverseShapingFilter::C4FMFilterTap(taps, 10.0F, 1.0F, 2);
  EXPECT_EQ(List(taps), (std::vector<float>{0.5F, 0.0F}));
}

TEST(C4FMReverseShapingFilter, SymbolRate_OfAnyValue_ScalesTheGrid) {
  C4FMReverseShapingFilter usual, other;
  usual.SetParameters(48000.0F, 4800.0F, 0.0F, 127);
  other.SetParameters(10.0F, 1.0F, 0.0F, 127);
  const auto expected = Taps(usual), taps = Taps(other);
  for (std::size_t i = 0; i < 127; ++i) EXPECT_NEAR(taps[i], expected[i], 1e-7F) << i;
  EXPECT_EQ(other.GetSymbolRate(), 1.0F);
  EXPECT_EQ(other.GetSamplingRate(), 10.0F);
  EXPECT_EQ(other.GetRoleoff(), 0.0F);
  EXPECT_EQ(test::FilterProbe::TapSize(other), 127);
}

TEST(HDQPSKP25MeasurementFilter, SetParameters_AnyLength_Gives32Taps) {
  VecReal32 expected;
  RootRaisedCosineFilter::RootRaisedCosineFilterTap(expected, 0.8333F, 1.0F / 7200.0F, 1.0F / 28800.0F, 32);
  HDQPSKP25MeasurementFilter filter;
  for (const int n : {32, 1, 0, 33, 1000}) {
    filter.SetParameters(28800.0F, 1.0F, 0.1F, n);
    EXPECT_EQ(Taps(filter), List(expected)) << n;
    EXPECT_EQ(filter.GetDelay(), static_cast<float>(n - 1) / 2.0F);
    EXPECT_EQ(test::FilterProbe::TapSize(filter), 32);
  }
}

TEST(HDQPSKP25MeasurementFilter, Taps_FourSamplesPerSymbol_AreTheRootRaisedCosine) {
  HDQPSKP25MeasurementFilter filter;
  filter.SetParameters(28800.0F, 0.0F, 0.0F, 32);
  const auto taps = Taps(filter);
  const long double r = 0.8333L;
  for (int i = 0; i < 32; ++i) {
    const long double x = (i - 15.5L) / 4, y = 4 * r * x;
    const long double pulse =
        (std::sin(kPiLong * x * (1 - r)) + y * std::cos(kPiLong * x * (1 + r))) / (kPiLong * x * (1 - y * y));
    EXPECT_NEAR(static_cast<double>(taps[static_cast<std::size_t>(i)]), static_cast<double>(pulse / 4), 2e-6)
        << i;
  }
}

TEST(HDQPSKP25MeasurementFilter, FixedParameters_AtAnyTime_AreThoseOfTheStandard) {
  struct Filter : HDQPSKP25MeasurementFilter {
    float Rate() const { return m_rate; }
  } filter;
  EXPECT_EQ(filter.Rate(), 7200.0F);
  EXPECT_EQ(filter.GetRoleoff(), 0.8333F);
  EXPECT_EQ(filter.GetSamplingRate(), 0.0F);
  filter.SetParameters(28800.0F, 1.0F, 0.1F, 32);
  EXPECT_EQ(filter.Rate(), 7200.0F);
  EXPECT_EQ(filter.GetRoleoff(), 0.8333F);
  EXPECT_EQ(filter.GetSamplingRate(), 28800.0F);
  EXPECT_EQ(filter.GetRecommendedTapSize(28800.0F, 1.0F, 0.1F),
            RootRaisedCosineFilter().GetRecommendedTapSize(28800.0F, 7200.0F, 0.8333F));
}

} // namespace
