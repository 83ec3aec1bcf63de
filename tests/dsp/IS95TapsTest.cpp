#include "dsp/IS95Taps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

using namespace QORN;

using Taps = std::span<const float>;

constexpr int kRatios[] = {2, 4, 8, 16};

struct Table {
  const char *name;
  Taps (*taps)(int);
  std::size_t lengths[4];
  std::size_t peakPlaces[4];
  double peaks[4];
  double sum, sumTolerance;
  std::uint64_t designHash;
};

// The peaks are known to four digits. The equaliser's last taps do not yet vanish, which shows in its sums;
// the sums of the reference follow its peaks.
const Table kTables[] = {
    {"transmitter",
     IS95TxTaps,
     {81, 161, 321, 643},
     {40, 80, 160, 320},
     {0.5249, 0.2624, 0.1312, 0.0656},
     0.9185,
     1e-4,
     0xf10fb527121a02eb},
    {"transmitter with equaliser",
     IS95TxEqTaps,
     {81, 161, 321, 643},
     {40, 80, 160, 321},
     {0.5199, 0.2599, 0.1300, 0.0651},
     0.9185,
     3e-4,
     0x3cd747ed22b0ff8c},
    {"reference",
     IS95ReferenceTaps,
     {103, 207, 415, 829},
     {51, 103, 207, 414},
     {2.0017, 1.0004, 0.5001, 0.2501},
     4.064,
     2e-3,
     0x29e014333bc8914d},
};

std::size_t PeakPlace(Taps taps) {
  return static_cast<std::size_t>(std::max_element(taps.begin(), taps.end()) - taps.begin());
}

TEST(IS95Taps, Tables_EveryRatio_HaveTheirLengthPeakAndSum) {
  for (const auto &table : kTables) {
    for (int r = 0; r < 4; ++r) {
      const auto taps = table.taps(kRatios[r]);
      ASSERT_EQ(taps.size(), table.lengths[r]) << table.name;
      const std::size_t place = PeakPlace(taps);
      EXPECT_EQ(place, table.peakPlaces[r]) << table.name << kRatios[r];
      EXPECT_NEAR(taps[place], table.peaks[r], 0.51e-4) << table.name << kRatios[r];
      double sum = 0;
      for (const float tap : taps) sum += static_cast<double>(tap);
      EXPECT_NEAR(sum, table.sum, table.sumTolerance) << table.name << kRatios[r];
    }
  }
}

TEST(IS95Taps, Tables_AnyOtherRatio_AreEmpty) {
  constexpr int kLeast = std::numeric_limits<int>::min();
  constexpr int kMost = std::numeric_limits<int>::max();
  for (const auto &table : kTables) {
    for (const int ratio : {kLeast, -2, -1, 0, 1, 3, 5, 6, 7, 9, 12, 15, 17, 32, 64, kMost}) {
      EXPECT_TRUE(table.taps(ratio).empty()) << table.name << ratio;
    }
  }
}

// FNV-1a over the bytes of the floats, lowest first, of the design as it is published in decimals.
TEST(IS95Taps, Tables_TwoSamplesPerChip_AreTheDesignBitForBit) {
  for (const auto &table : kTables) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const float tap : table.taps(2)) {
      for (int shift = 0; shift < 32; shift += 8) {
        hash = (hash ^ ((std::bit_cast<std::uint32_t>(tap) >> shift) & 0xff)) * 0x100000001b3;
      }
    }
    EXPECT_EQ(hash, table.designHash) << table.name;
  }
}

TEST(IS95Taps, TransmitterTables_EverySecondTap_IsTwiceThatOfTheNextRatio) {
  for (const auto taps : {IS95TxTaps, IS95TxEqTaps}) {
    for (const int ratio : {2, 4, 8}) {
      const auto sparse = taps(ratio);
      const auto dense = taps(2 * ratio);
      for (std::size_t k = 0; k < sparse.size(); ++k) ASSERT_EQ(sparse[k], 2.0F * dense[2 * k]) << k;
    }
  }
}

TEST(IS95Taps, ReferenceTables_EverySecondTapFromTheMiddle_IsTwiceThatOfTheNextRatioButForTheScale) {
  for (const int ratio : {2, 4, 8}) {
    const auto sparse = IS95ReferenceTaps(ratio);
    const auto dense = IS95ReferenceTaps(2 * ratio);
    const auto middle = sparse.size() / 2;
    const auto denseMiddle = dense.size() / 2;
    const double scale = static_cast<double>(dense[denseMiddle]) / static_cast<double>(sparse[middle]);
    EXPECT_NEAR(scale, 0.5, 0.5 * 0.5e-3); // half a thousandth
    // Each tap and each peak is rounded to float.
    for (std::size_t k = 0; k <= std::min(middle, denseMiddle / 2); ++k) {
      const double expected = scale * static_cast<double>(sparse[middle - k]);
      ASSERT_NEAR(dense[denseMiddle - 2 * k], expected, 2.5e-7 * std::fabs(expected)) << ratio << ' ' << k;
    }
  }
}

TEST(IS95Taps, ReferenceTables_EveryRatio_AreSymmetricToTheLastBit) {
  for (const int ratio : kRatios) {
    const auto taps = IS95ReferenceTaps(ratio);
    for (std::size_t k = 0; k < taps.size(); ++k) {
      ASSERT_EQ(std::bit_cast<std::uint32_t>(taps[k]),
                std::bit_cast<std::uint32_t>(taps[taps.size() - 1 - k]));
    }
  }
}

TEST(IS95Taps, TransmitterTables_WithoutEqualiser_AreNearlySymmetricAboutTheirPeak) {
  for (const int ratio : kRatios) {
    const auto taps = IS95TxTaps(ratio);
    const auto peak = PeakPlace(taps);
    float worst = 0.0F;
    for (std::size_t k = 0; k <= peak; ++k) {
      worst = std::max(worst, std::fabs(taps[peak - k] - taps[peak + k]) * static_cast<float>(ratio) / 2.0F);
    }
    EXPECT_GT(worst, 6.0e-5F) << ratio;
    EXPECT_LT(worst, 6.3e-5F) << ratio;
  }
}

// The response at t samples of the design: the sum of its taps times sin(pi x) / (pi x). With t in eighths
// all sines of a sum are one sine, but for the sign.
long double Response(Taps design, int eighths) {
  if (eighths % 8 == 0) {
    const int place = eighths / 8;
    return place >= 0 && place < static_cast<int>(design.size()) ? design[static_cast<std::size_t>(place)]
                                                                 : 0;
  }
  const long double pi = 3.14159265358979323846264338327950288L;
  long double sum = 0;
  for (int k = 0; k < static_cast<int>(design.size()); ++k) {
    const long double term = design[static_cast<std::size_t>(k)] / (pi * (eighths / 8.0L - k));
    sum += k % 2 == 0 ? term : -term;
  }
  return sum * std::sin(pi * eighths / 8.0L);
}

TEST(IS95Taps, Tables_EveryRatio_AreOneBandLimitedResponse) {
  for (const auto &table : kTables) {
    const auto design = table.taps(2);
    const bool centred = table.taps == IS95ReferenceTaps;
    for (const int ratio : {4, 8, 16}) {
      const auto taps = table.taps(ratio);
      const int step = 16 / ratio;
      const int origin = centred ? static_cast<int>(taps.size() / 2) : 0;
      const int start = centred ? 8 * static_cast<int>(design.size() / 2) : 0;
      const long double scale =
          centred ? static_cast<long double>(taps[taps.size() / 2]) / design[design.size() / 2]
                  : 2.0L / ratio;
      for (int k = 0; k < static_cast<int>(taps.size()); ++k) {
        const long double exact = scale * Response(design, start + (k - origin) * step);
        // Half a unit of the tap, as much of the peak that gives the scale, and the sums' own rounding.
        ASSERT_NEAR(static_cast<double>(taps[static_cast<std::size_t>(k)]), static_cast<double>(exact),
                    1.25e-7 * std::fabs(static_cast<double>(exact)) + 1e-17)
            << table.name << ' ' << ratio << ' ' << k;
      }
    }
  }
}

} // namespace
