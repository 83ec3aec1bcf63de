#include "infra/fourier/LongConvolution.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/infra/Cplx.h"

namespace QORN {
namespace {

// The work of doubles is 8 N of them, that of floats and their pairs 6 N, and blocks of memory are counted by
// an int.
template <class T> std::int64_t WorkBytes(std::int64_t taps, std::int64_t samples) {
  const std::int64_t length =
      fourier::BlockLength<T>(taps, taps + samples - 1, std::numeric_limits<double>::infinity());
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

// A run that direct sums are estimated to beat would never be made.
template <class T> void CheckStreamLengths(int runsAtOnce) {
  int lengths = 0;
  for (std::ptrdiff_t taps = 1; taps < 300'000; taps += taps < 3000 ? 1 : taps / 50) {
    const int length = fourier::StreamLength<T>(taps);
    if (length == 0) continue;
    ++lengths;
    const auto products = static_cast<double>(runsAtOnce * (length - taps + 1) * taps);
    ASSERT_GT(products, fourier::LeastTerms<T>(length)) << taps;
    ASSERT_GE(length, taps);
    ASSERT_EQ(length % 64, 0);
  }
  EXPECT_GT(lengths, 2000);
}

TEST(LongConvolution, StreamLength_OfAnyTaps_IsOneWhoseFullRunIsWorthIt) {
  CheckStreamLengths<float>(2);
  CheckStreamLengths<Cplx32>(1);
  EXPECT_EQ(fourier::StreamLength<float>(INT_MAX), 0);
}

// Noise with taps of the streams' length, where it is first 9 * 2^k and where it is beyond 2^18: the outputs
// `every` apart.
template <class T> void CheckLong(int tapCount, int length, int every) {
  constexpr int kParts = sizeof(T) / sizeof(float);
  ASSERT_EQ(fourier::StreamLength<T>(tapCount), length);
  std::mt19937 random(static_cast<unsigned>(tapCount));
  std::normal_distribution<float> normal;
  const int len = length + length / 3;
  std::vector<T> taps(static_cast<std::size_t>(tapCount)), x(static_cast<std::size_t>(len)), out;
  for (auto *values : {&taps, &x}) {
    auto *const parts = reinterpret_cast<float *>(values->data());
    std::generate_n(parts, values->size() * kParts, [&] { return normal(random); });
  }
  const int count = len + tapCount - 1;
  out.resize(static_cast<std::size_t>(count));

  struct Sums {
    double re = 0, im = 0, sizes = 0;
  };
  std::vector<Sums> expected;
  for (int n = 0; n < count; n += every) {
    Sums sums;
    for (int k = std::max(0, tapCount - 1 - n); k < tapCount && n - (tapCount - 1) + k < len; ++k) {
      const auto *const tap = reinterpret_cast<const float *>(taps.data() + k);
      const auto *const value = reinterpret_cast<const float *>(x.data() + (n - (tapCount - 1) + k));
      const double a = tap[0], b = kParts > 1 ? -double{tap[kParts - 1]} : 0;
      const double c = value[0], d = kParts > 1 ? double{value[kParts - 1]} : 0;
      sums.re += a * c - b * d;
      sums.im += a * d + b * c;
      sums.sizes += std::max(std::fabs(a * c) + std::fabs(b * d), std::fabs(a * d) + std::fabs(b * c));
    }
    expected.push_back(sums);
  }

  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    fourier::Correlator<T> correlator(taps.data(), tapCount, length, fourier::Life::kLasting);
    std::fill(out.begin(), out.end(), T{});
    correlator.Run({taps.data(), tapCount, x.data(), len, 0, count, out.data()});
    std::size_t i = 0;
    for (int n = 0; n < count; n += every, ++i) {
      const auto *const got = reinterpret_cast<const float *>(out.data() + n);
      const double bound = 4 * double{std::numeric_limits<float>::epsilon()} * expected[i].sizes;
      ASSERT_NEAR(double{got[0]}, expected[i].re, bound) << level.name << ", taps " << tapCount << ": " << n;
      if (kParts == 1) continue;
      ASSERT_NEAR(double{got[kParts - 1]}, expected[i].im, bound)
          << level.name << ", taps " << tapCount << ": " << n;
    }
  }
}

TEST(LongConvolution, Run_LengthsOfStreams_KeepsTheBound) {
  CheckLong<float>(4200, 9216, 11);
  CheckLong<Cplx32>(4200, 9216, 11);
  CheckLong<float>(9000, 18432, 53);
  CheckLong<Cplx32>(9000, 18432, 53);
}

TEST(LongConvolution, Run_LengthWithFactorsThatAreProducts_KeepsTheBound) {
  CheckLong<float>(130'000, 262'144, 8171);
  CheckLong<Cplx32>(130'000, 262'144, 8171);
}

} // namespace
} // namespace QORN
