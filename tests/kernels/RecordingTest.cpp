#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "support/KernelCheck.h"

namespace {

using namespace QORN;

// A pair of shorts is seen as one element (re, im) = (q, i).
TEST(KernelTable, ScaleQI_PairsAndOffsets_ScalesInDoubleAndRoundsOnce) {
  const double iOffset = 0.3, qOffset = -1.7, scale = static_cast<double>(2.5e-5F);
  const auto kernel = [&](const Cplx16 *pairs, Cplx32 *dst, int len) {
    kernels::active->ScaleQI(&pairs->re, dst, len, iOffset, qOffset, scale);
  };
  const auto reference = [&](Cplx16 pair) {
    volatile double i = static_cast<double>(pair.im) - iOffset, q = static_cast<double>(pair.re) - qOffset;
    return Cplx32{static_cast<float>(i * scale), static_cast<float>(q * scale)};
  };
  test::CheckElementwise<Cplx32, Cplx16>("ScaleQI", kernel, reference);
}

// Both kernels for pairs of ints: kernel(pairs, dst, n) against one pair at a time, with nothing written
// beside the n samples.
template <class Dst, class Kernel, class Reference> void CheckPairs(Kernel kernel, Reference reference) {
  std::mt19937 random(3);
  std::vector<int> pairs{INT_MAX, INT_MIN, 0, -1, 16777217, -16777217, 33554435, 1};
  while (pairs.size() < 2500) pairs.push_back(static_cast<int>(random()) >> (random() % 32));
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const int n : {0, 1, 2, 3, 4, 7, 8, 15, 16, 17, 31, 33, 63, 65, 1024, 1201}) {
      for (const int offset : {0, 1, 3}) {
        std::vector<Dst> dst(static_cast<std::size_t>(n + offset + 1), Dst{7, 9});
        kernel(pairs.data() + offset, dst.data() + offset, n);
        for (int k = 0; k < n + offset + 1; ++k) {
          const auto at = static_cast<std::size_t>(2 * (k - offset) + offset);
          const Dst want = k >= offset && k < n + offset ? reference(pairs[at], pairs[at + 1]) : Dst{7, 9};
          ASSERT_TRUE(test::Same()(dst[static_cast<std::size_t>(k)], want))
              << level.name << ' ' << n << ' ' << k;
        }
      }
    }
  }
}

TEST(KernelTable, ScaleIQ32_Pairs_RoundsEachToFloatAndTheProduct) {
  const float scale = 1.2345e-7F;
  CheckPairs<Cplx32>(
      [&](const int *pairs, Cplx32 *dst, int n) { kernels::active->ScaleIQ32(pairs, dst, n, scale); },
      [&](int i, int q) {
        volatile float re = static_cast<float>(i), im = static_cast<float>(q);
        return Cplx32{re * scale, im * scale};
      });
}

TEST(KernelTable, ScaleIQ64_Pairs_RoundsOnlyQToFloat) {
  const double scale = 1.2345e-7;
  CheckPairs<Cplx64>(
      [&](const int *pairs, Cplx64 *dst, int n) { kernels::active->ScaleIQ64(pairs, dst, n, scale); },
      [&](int i, int q) {
        volatile float im = static_cast<float>(q);
        return Cplx64{static_cast<double>(i) * scale, static_cast<double>(im) * scale};
      });
}

TEST(KernelTable, FindText_AnyBytes_GivesTheFirstOccurrence) {
  std::mt19937 random(4);
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (int round = 0; round < 2000; ++round) {
      // Two letters make half-matches frequent.
      std::string text(random() % 1200, 'a'), sought(1 + random() % 12, 'a');
      const unsigned rare = 1U + static_cast<unsigned>(random() % 20);
      for (char &c : text) c = random() % rare == 0 ? 'b' : 'a';
      for (char &c : sought) c = random() % 2 == 0 ? 'b' : 'a';
      const std::size_t place = std::min(text.find(sought), text.size());
      const auto got = kernels::active->FindText(text.data(), static_cast<std::ptrdiff_t>(text.size()),
                                                 sought.data(), static_cast<std::ptrdiff_t>(sought.size()));
      ASSERT_EQ(static_cast<std::size_t>(got), place) << level.name << ' ' << round;
    }
  }
}

} // namespace
