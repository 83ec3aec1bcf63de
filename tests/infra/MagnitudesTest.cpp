#include "infra/fourier/Magnitudes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <functional>
#include <random>
#include <vector>

#include "infra/kernels/Levels.h"

namespace {

using QORN::fourier::Life;
using QORN::fourier::Magnitudes;

namespace kernels = QORN::kernels;

using Values = std::vector<double>;

double Norm(const Values &x) {
  double sum = 0;
  for (const double value : x) sum += value * value;
  return std::sqrt(sum);
}

Values Signal(int len, unsigned seed, const std::function<double(int, double)> &shape) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  Values x(static_cast<std::size_t>(len));
  for (int i = 0; i < len; ++i) x[static_cast<std::size_t>(i)] = shape(i, normal(random));
  return x;
}

// The sum of the magnitudes of output n of the convolution of h with x.
double SumOf(const Values &h, const Values &x, std::ptrdiff_t n) {
  double sum = 0;
  for (std::size_t i = 0; i < h.size(); ++i) {
    const std::ptrdiff_t at = n - static_cast<std::ptrdiff_t>(i);
    if (at >= 0 && at < static_cast<std::ptrdiff_t>(x.size()))
      sum += std::fabs(h[i] * x[static_cast<std::size_t>(at)]);
  }
  return sum;
}

// The largest of the bounds that AllReach confirms, to 1 part in a thousand; 0 if none.
double LargestReached(const Magnitudes::Outputs &outputs, const Magnitudes &taps, const Magnitudes &x) {
  double low = 0, high = 1e9;
  if (!Magnitudes::AllReach(1e-9, outputs, taps, x)) return 0;
  while (high - low > 1e-3 * high) {
    const double middle = (low + high) / 2;
    (Magnitudes::AllReach(middle, outputs, taps, x) ? low : high) = middle;
  }
  return low;
}

struct Case {
  int taps, len, count;
  std::function<double(int, double)> tapShape, shape;
};

const std::function<double(int, double)> kNoise = [](int, double noise) { return noise; };

// No bound is above the least sum of the outputs, whichever way the taps lie and wherever the values begin.
// Returns the sum of the bounds over that of the least sums.
double CheckCase(const Case &of) {
  const Values h = Signal(of.taps, 1, of.tapShape), x = Signal(of.len, 2, of.shape);
  Values reversed(h);
  std::reverse(reversed.begin(), reversed.end());
  double bounds = 0, sums = 0;
  const Magnitudes taps(h.data(), of.taps, Norm(h), Life::kCall),
      backwards(reversed.data(), of.taps, Norm(h), Life::kCall),
      values(x.data(), of.len, Norm(x), Life::kCall);
  for (std::ptrdiff_t n = 0; n < of.taps + of.len - 1; n += of.count) {
    double least = 1e300;
    for (std::ptrdiff_t i = n; i < n + of.count; ++i) least = std::min(least, SumOf(h, x, i));
    const double bound = LargestReached({n, of.count, of.taps, false, of.len, 0}, taps, values);
    EXPECT_LE(bound, least * (1 + 1e-12)) << n;
    EXPECT_LE(LargestReached({n, of.count, of.taps, true, of.len, 0}, backwards, values), least * (1 + 1e-12))
        << n;
    // The magnitudes of the values under the taps alone, with zeros where there are none.
    Values window(static_cast<std::size_t>(of.taps - 1 + of.count));
    const std::ptrdiff_t first = n - (of.taps - 1);
    for (std::size_t i = 0; i < window.size(); ++i) {
      const std::ptrdiff_t at = first + static_cast<std::ptrdiff_t>(i);
      if (at >= 0 && at < of.len) window[i] = x[static_cast<std::size_t>(at)];
    }
    const Magnitudes near(window.data(), static_cast<std::ptrdiff_t>(window.size()), Norm(x), Life::kCall);
    EXPECT_LE(LargestReached({n, of.count, of.taps, true, of.len, first}, backwards, near),
              least * (1 + 1e-12))
        << n;
    bounds += bound;
    sums += least;
  }
  return bounds / sums;
}

TEST(Magnitudes, AllReach_AnySignals_IsNeverMoreThanTheSums) {
  const auto burst = [](int i, double noise) { return i / 300 % 2 == 0 ? noise : 1e-9 * noise; };
  const auto sparse = [](int i, double noise) { return i % 7 == 0 ? noise : 0; };
  const auto constant = [](int, double) { return 0.3; };
  const std::function<double(int, double)> shapes[] = {kNoise, burst, sparse, constant};
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const auto &tapShape : shapes) {
      for (const auto &shape : shapes) {
        CheckCase({300, 1000, 64, tapShape, shape});
        CheckCase({700, 700, 50, tapShape, shape});
        CheckCase({1000, 333, 128, tapShape, shape});
      }
    }
    CheckCase({40, 70, 1, kNoise, kNoise});
    CheckCase({64, 64, 3, kNoise, kNoise});
  }
}

// What it is good for.
TEST(Magnitudes, AllReach_Noise_IsAFairShareOfTheSums) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    EXPECT_GT(CheckCase({2000, 3000, 64, kNoise, kNoise}), 0.15) << level.name;
  }
}

// A constant lies above two of the three steps, 0.6 of its root mean square.
TEST(Magnitudes, AllReach_Constant_IsWhatTheStepsGive) {
  const Values ones(1024, -1.0);
  const Magnitudes taps(ones.data(), 512, std::sqrt(512.0), Life::kCall),
      values(ones.data(), 1024, 32.0, Life::kCall);
  const Magnitudes::Outputs one{703,   1,    512,
                                false, 1024, 0}; // under the taps: values 192 to 703, whole blocks
  EXPECT_TRUE(Magnitudes::AllReach(0.3599 * 512, one, taps, values));
  EXPECT_FALSE(Magnitudes::AllReach(0.3601 * 512, one, taps, values));
}

TEST(Magnitudes, AllReach_OutputsWithoutProducts_IsFalse) {
  const Values ones(128, 1.0);
  const Magnitudes both(ones.data(), 128, std::sqrt(128.0), Life::kCall);
  EXPECT_FALSE(Magnitudes::AllReach(0, {255, 64, 128, false, 128, 0}, both, both));
  EXPECT_FALSE(Magnitudes::AllReach(0, {200, 64, 128, false, 128, 0}, both, both)) << "the last ones";
}

} // namespace
