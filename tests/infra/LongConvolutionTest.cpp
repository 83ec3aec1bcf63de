#include "infra/fourier/LongConvolution.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <type_traits>

#include "qorn/infra/Cplx.h"

namespace QORN {
namespace {

// The work of doubles is 8 N of them, that of floats and their pairs 6 N, and blocks of memory are counted by
// an int.
template <class T> std::int64_t WorkBytes(std::int64_t taps, std::int64_t samples) {
  const std::int64_t length = fourier::BlockLength<T>(
      taps, taps + samples - 1, static_cast<double>(taps) * static_cast<double>(samples));
  EXPECT_GE(length, taps);
  return length * (sizeof(T) == sizeof(double) && !std::is_same_v<T, Cplx32> ? 8 : 6) *
         std::int64_t{sizeof(double)};
}

TEST(LongConvolution, BlockLength_ForTheLongestOperands_LeavesWorkMemoryThatCanBeCounted) {
  for (const std::int64_t taps : {5'000'000, 10'000'000, 12'000'000, 14'000'000}) {
    for (const std::int64_t samples : {taps, 2 * taps, 5 * taps}) {
      EXPECT_LE(WorkBytes<double>(taps, samples), INT_MAX) << taps << " x " << samples;
      EXPECT_LE(WorkBytes<float>(2 * taps, 2 * samples), INT_MAX) << taps << " x " << samples;
      EXPECT_LE(WorkBytes<Cplx32>(2 * taps, 2 * samples), INT_MAX) << taps << " x " << samples;
    }
  }
}

} // namespace
} // namespace QORN
