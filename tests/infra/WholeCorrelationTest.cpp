#include "infra/fourier/WholeCorrelation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/infra/Cplx.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/KernelCheck.h"
#include "support/Wide.h"

namespace {

using QORN::Cplx32;
using QORN::fourier::CorrelateWhole;
using QORN::fourier::Correlation;
using QORN::fourier::WholeLength;
using QORN::test::AllocationCount;
using QORN::test::AllocationLimit;
using QORN::test::Guarded;
using QORN::test::PrintedBy;
using QORN::test::ThrownBy;

namespace kernels = QORN::kernels;

constexpr double kUnlimited = std::numeric_limits<double>::infinity();

template <class T> constexpr int kParts = sizeof(T) / sizeof(float);
template <class T> float *Parts(std::vector<T> &x) { return reinterpret_cast<float *>(x.data()); }

template <class T> std::vector<T> Noise(int len, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<float> normal;
  std::vector<T> x(static_cast<std::size_t>(len));
  std::generate_n(Parts(x), len * kParts<T>, [&] { return normal(random); });
  return x;
}

struct Sum {
  double re = 0, im = 0, sizes = 0;
};

// Output n by its definition, conj(tap) times value, and the sum of the magnitudes.
template <class T> Sum Expected(std::vector<T> &taps, std::vector<T> &x, int n) {
  const int count = static_cast<int>(taps.size()), len = static_cast<int>(x.size());
  Sum sum;
  for (int k = std::max(0, count - 1 - n); k < count && n - (count - 1) + k < len; ++k) {
    const float *const tap = Parts(taps) + k * kParts<T>;
    const float *const value = Parts(x) + (n - (count - 1) + k) * kParts<T>;
    const double a = tap[0], b = kParts<T> > 1 ? -double{tap[kParts<T> - 1]} : 0;
    const double c = value[0], d = kParts<T> > 1 ? double{value[kParts<T> - 1]} : 0;
    sum.re += a * c - b * d;
    sum.im += a * d + b * c;
    sum.sizes += std::hypot(a, b) * std::hypot(c, d);
  }
  return sum;
}

struct Case {
  int taps, len, first, count;
};

// Each output within the bound, at every level, and nothing written beside them.
template <class T> void Check(const Case &of, int length, std::vector<T> taps, std::vector<T> x) {
  const double eps = double{std::numeric_limits<float>::epsilon()};
  Guarded<T> dst(of.count, 1);
  std::vector<Sum> expected;
  for (int i = 0; i < of.count; ++i) expected.push_back(Expected(taps, x, of.first + i));
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    std::fill_n(dst.data(), of.count, T{});
    ASSERT_TRUE(
        CorrelateWhole<T>({taps.data(), of.taps, x.data(), of.len, of.first, of.count, dst.data()}, length));
    ASSERT_TRUE(dst.Intact());
    for (int i = 0; i < of.count; ++i) {
      const Sum &sum = expected[static_cast<std::size_t>(i)];
      const auto *const got = reinterpret_cast<const float *>(dst.data() + i);
      const double im = kParts<T> > 1 ? double{got[kParts<T> - 1]} : 0;
      ASSERT_LE(std::max(std::fabs(double{got[0]} - sum.re), std::fabs(im - sum.im)), 4 * eps * sum.sizes)
          << level.name << ", " << of.taps << " by " << of.len << ", length " << length << ", output "
          << of.first + i;
    }
  }
}

template <class T> void CheckCases() {
  constexpr Case kCases[] = {
      {32, 32, 0, 63},      {1, 100, 0, 100},    {40, 89, 0, 128},      {65, 128, 0, 192},
      {64, 65, 0, 128},     {100, 300, 17, 250}, {100, 300, 99, 200},   {100, 300, 300, 99},
      {200, 200, 199, 1},   {500, 700, 300, 7},  {313, 400, 0, 712},    {400, 313, 0, 712},
      {700, 1300, 690, 20}, {3000, 4000, 0, 9},  {3000, 4000, 6990, 9}, {64, 2100, 60, 2000},
  };
  for (const Case &of : kCases) {
    double limit = kUnlimited;
    const int length = WholeLength<T>(of.taps, of.len, limit);
    ASSERT_GE(length, of.taps + of.len - 1);
    Check<T>(of, length, Noise<T>(of.taps, 1), Noise<T>(of.len, 2));
  }
  // All outputs of transforms that nothing is left over in, of each form of length.
  for (const int length : {128, 144, 160, 192, 1024, 1152, 1280, 1536}) {
    const Case of{length / 3, length + 1 - length / 3, 0, length};
    Check<T>(of, length, Noise<T>(of.taps, 3), Noise<T>(of.len, 4));
  }
}

TEST(WholeCorrelation, CorrelateWhole_Noise_KeepsTheBound) {
  CheckCases<float>();
  CheckCases<Cplx32>();
}

TEST(WholeCorrelation, ConvolveWhole_Noise_KeepsTheBound) {
  const double eps = double{std::numeric_limits<float>::epsilon()};
  for (const auto &[count, len] : {std::pair{40, 90}, {90, 40}, {500, 525}, {1, 128}}) {
    std::vector<float> taps = Noise<float>(count, 12), x = Noise<float>(len, 13), reversed = taps;
    std::fill(x.begin() + len / 3, x.begin() + len / 3 + 2, 0.0F);
    std::reverse(reversed.begin(), reversed.end());
    for (const kernels::Level &level : kernels::AvailableLevels()) {
      const kernels::ScopedLevel scope(level);
      Guarded<float> dst(count + len - 1, 1);
      ASSERT_TRUE(QORN::fourier::ConvolveWhole(taps.data(), count, x.data(), len, dst.data(), 1024));
      ASSERT_TRUE(dst.Intact());
      for (int n = 0; n < count + len - 1; ++n) {
        const Sum sum = Expected(reversed, x, n);
        ASSERT_NEAR(double{dst.data()[n]}, sum.re, 4 * eps * sum.sizes)
            << level.name << ' ' << count << ' ' << n;
      }
    }
  }
}

// Integers whose sums a float holds come out exactly.
TEST(WholeCorrelation, CorrelateWhole_Integers_IsExact) {
  std::mt19937 random(5);
  std::vector<float> taps(300), x(700), dst(999);
  for (auto *values : {&taps, &x}) {
    for (float &value : *values) value = static_cast<float>(static_cast<int>(random() % 201) - 100);
  }
  ASSERT_TRUE(CorrelateWhole<float>({taps.data(), 300, x.data(), 700, 0, 999, dst.data()}, 1024));
  for (int n = 0; n < 999; ++n) ASSERT_EQ(double{dst[static_cast<std::size_t>(n)]}, Expected(taps, x, n).re);
}

// Values that begin late and end early: the outputs that see none of them are exactly 0.
TEST(WholeCorrelation, CorrelateWhole_SilenceAtTheEnds_IsExactlyZeroThere) {
  const Case of{100, 600, 0, 699};
  std::vector<float> taps = Noise<float>(of.taps, 14), x(600), dst(699, 1.0F);
  const std::vector<float> burst = Noise<float>(50, 15);
  std::copy(burst.begin(), burst.end(), x.begin() + 200);
  Check<float>(of, 1024, taps, x);
  ASSERT_TRUE(CorrelateWhole<float>({taps.data(), of.taps, x.data(), of.len, 0, of.count, dst.data()}, 1024));
  for (std::size_t n = 0; n < 699; ++n) EXPECT_EQ(dst[n] == 0.0F, n < 200 || n >= 349) << n;
}

// A pause that a few outputs lie in: these are exactly 0, those around it keep their own bounds.
TEST(WholeCorrelation, CorrelateWhole_ShortPause_IsExactlyZeroThere) {
  const Case of{40, 1000, 0, 1039};
  std::vector<float> taps = Noise<float>(of.taps, 6), x = Noise<float>(of.len, 7), dst(1039);
  std::fill_n(x.begin() + 500, 44, 0.0F);
  Check<float>(of, 1152, taps, x);
  ASSERT_TRUE(CorrelateWhole<float>({taps.data(), of.taps, x.data(), of.len, 0, of.count, dst.data()}, 1152));
  for (std::size_t n = 539; n < 544; ++n) EXPECT_EQ(dst[n], 0.0F) << n;
  EXPECT_NE(dst[538], 0.0F);
  EXPECT_NE(dst[544], 0.0F);
}

template <class T> void CheckRefusals() {
  const std::vector<T> noise = Noise<T>(400, 8);
  std::vector<T> dst(799);
  const auto isGood = [&](std::vector<T> taps, std::vector<T> x) {
    return CorrelateWhole<T>({taps.data(), 400, x.data(), 400, 0, 799, dst.data()}, 1024);
  };
  EXPECT_TRUE(isGood(noise, noise));
  for (const float bad : {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN()}) {
    std::vector<T> spoiled = noise;
    Parts(spoiled)[100] = bad;
    EXPECT_FALSE(isGood(spoiled, noise));
    EXPECT_FALSE(isGood(noise, spoiled));
  }
  std::vector<T> quiet = noise;
  for (std::size_t i = 100; i < 400 * kParts<T>; ++i) Parts(quiet)[i] *= 1e-12F;
  EXPECT_FALSE(isGood(quiet, noise));
  EXPECT_FALSE(isGood(noise, quiet));
  EXPECT_TRUE(isGood(noise, std::vector<T>(400)));
  for (std::size_t i = 0; i < dst.size() * kParts<T>; ++i) {
    EXPECT_EQ(Parts(dst)[i], 0.0F);
    EXPECT_FALSE(std::signbit(Parts(dst)[i]));
  }
}

TEST(WholeCorrelation, CorrelateWhole_WhatItCannotVouchFor_IsRefused) {
  CheckRefusals<float>();
  CheckRefusals<Cplx32>();
}

TEST(WholeCorrelation, CorrelateWhole_Again_AllocatesNothing) {
  const std::vector<float> x = Noise<float>(2000, 9);
  std::vector<float> dst(3999);
  const Correlation<float> job{x.data(), 2000, x.data(), 2000, 0, 3999, dst.data()};
  ASSERT_TRUE(CorrelateWhole(job, 4096));
  const AllocationLimit none(0);
  const long before = AllocationCount();
  ASSERT_TRUE(CorrelateWhole(job, 4096));
  ASSERT_TRUE(CorrelateWhole<float>({x.data(), 30, x.data(), 90, 0, 119, dst.data()}, 4096));
  EXPECT_EQ(AllocationCount(), before);
}

TEST(WholeCorrelation, CorrelateWhole_MuchMemory_IsGivenBack) {
  constexpr int kLength = 3 << 17;
  const std::vector<float> x = Noise<float>(1000, 10);
  std::vector<float> dst(1999);
  const Correlation<float> job{x.data(), 1000, x.data(), 1000, 0, 1999, dst.data()};
  ASSERT_TRUE(CorrelateWhole(job, kLength));
  const long before = AllocationCount();
  ASSERT_TRUE(CorrelateWhole(job, kLength));
  EXPECT_GT(AllocationCount(), before);
}

TEST(WholeCorrelation, CorrelateWhole_NoMemory_Throws11001) {
  const std::vector<float> x = Noise<float>(1000, 11);
  std::vector<float> dst(1999);
  for (const int length : {5 << 16, 5 << 17}) { // without the plan and with it
    const Correlation<float> job{x.data(), 1000, x.data(), 1000, 0, 1999, dst.data()};
    if (length == 5 << 17) {
      ASSERT_TRUE(CorrelateWhole(job, length));
    }
    QORN::QORNException thrown(0, "nothing was thrown", "", 0);
    PrintedBy([&] {
      thrown = ThrownBy([&] {
        const AllocationLimit limited(1000);
        CorrelateWhole(job, length);
      });
    });
    EXPECT_EQ(thrown.GetErrorCode(), 11001);
    EXPECT_STREQ(thrown.GetMessage(), "memory allocation error");
    EXPECT_TRUE(CorrelateWhole(job, length));
  }
}

// Doubles, whose parts go through one transform: against sums in __float128.

using QORN::fourier::ConvolveWhole;
using QORN::test::Quad;
using Doubles = std::vector<double>;

Doubles DoubleNoise(int len, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  Doubles x(static_cast<std::size_t>(len));
  for (double &value : x) value = normal(random);
  return x;
}

struct WideSum {
  Quad value = 0;
  double sizes = 0;
};
WideSum ConvolvedAt(const Doubles &taps, const Doubles &x, int n) {
  WideSum sum;
  const int count = static_cast<int>(taps.size()), len = static_cast<int>(x.size());
  for (int k = std::max(0, n - (len - 1)); k < count && k <= n; ++k) {
    const double tap = taps[static_cast<std::size_t>(k)], value = x[static_cast<std::size_t>(n - k)];
    sum.value += Quad{tap} * Quad{value};
    sum.sizes += std::fabs(tap * value);
  }
  return sum;
}

// Every output that is a multiple of `every`, and the first and the last 300, at every level. False if the
// whole was refused.
bool CheckDoubles(const Doubles &taps, const Doubles &x, int length, int every = 1) {
  const double eps = std::numeric_limits<double>::epsilon();
  const int count = static_cast<int>(taps.size() + x.size()) - 1;
  std::vector<WideSum> expected(static_cast<std::size_t>(count));
  const auto isChecked = [&](int n) { return n % every == 0 || n < 300 || n >= count - 300; };
  for (int n = 0; n < count; ++n) {
    if (isChecked(n)) expected[static_cast<std::size_t>(n)] = ConvolvedAt(taps, x, n);
  }
  Guarded<double> dst(count, 1);
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    std::fill_n(dst.data(), count, 9.0);
    if (!ConvolveWhole(taps.data(), static_cast<int>(taps.size()), x.data(), static_cast<int>(x.size()),
                       dst.data(), length)) {
      return false;
    }
    EXPECT_TRUE(dst.Intact());
    for (int n = 0; n < count; ++n) {
      if (!isChecked(n)) continue;
      const WideSum &sum = expected[static_cast<std::size_t>(n)];
      const double error = std::fabs(static_cast<double>(Quad{dst.data()[n]} - sum.value));
      EXPECT_LE(error, 4 * eps * sum.sizes)
          << level.name << ", " << taps.size() << " by " << x.size() << ", length " << length << ": " << n;
      EXPECT_TRUE(sum.sizes != 0 || dst.data()[n] == 0) << n;
      if (testing::Test::HasFailure()) return true;
    }
  }
  return true;
}

TEST(WholeCorrelation, ConvolveWholeDoubles_Noise_KeepsTheBound) {
  for (const auto &[count, len] :
       {std::pair{1, 128}, {2, 127}, {40, 90}, {90, 40}, {65, 65}, {500, 525}, {700, 1300}, {2100, 900}}) {
    double limit = kUnlimited;
    const int best = WholeLength<double>(count, len, limit);
    ASSERT_GE(best, count + len - 1);
    for (const int length : {best, 4096, 4608, 3 << 10, 5 << 10}) {
      if (length >= count + len - 1) {
        EXPECT_TRUE(CheckDoubles(DoubleNoise(count, 21), DoubleNoise(len, 22), length));
      }
    }
  }
}

// The ends and the middle are settled in different ways.
TEST(WholeCorrelation, ConvolveWholeDoubles_LongNoise_KeepsTheBound) {
  for (const auto &[count, len] : {std::pair{4096, 4096}, {5000, 9000}, {16384, 20000}}) {
    double limit = kUnlimited;
    const int length = WholeLength<double>(count, len, limit);
    EXPECT_TRUE(CheckDoubles(DoubleNoise(count, 23), DoubleNoise(len, 24), length, 97));
  }
  EXPECT_TRUE(CheckDoubles(DoubleNoise(70000, 25), DoubleNoise(61072, 26), 1 << 17, 4001));
}

// Operands whose convolution is much larger than that of noise: the first steps are too small.
TEST(WholeCorrelation, ConvolveWholeDoubles_LoudBin_KeepsTheBound) {
  const auto loud = [](int len) {
    Doubles x = DoubleNoise(len, 27);
    for (double &value : x) value = std::fabs(value) + 0.1;
    return x;
  };
  EXPECT_TRUE(CheckDoubles(loud(1500), loud(2500), 4096));
  EXPECT_TRUE(CheckDoubles(loud(5000), loud(5000), 10240, 31));
  EXPECT_TRUE(CheckDoubles(Doubles(3000, 0.1), Doubles(3000, 0.7), 6144, 7));
}

// Far from 1, where squares still are doubles.
TEST(WholeCorrelation, ConvolveWholeDoubles_Scales_KeepsTheBound) {
  for (const double scale : {1e-95, 1e-30, 1e30, 1e95}) {
    Doubles taps = DoubleNoise(300, 28), x = DoubleNoise(400, 29);
    for (double &value : taps) value *= scale;
    EXPECT_TRUE(CheckDoubles(taps, x, 1024));
    EXPECT_TRUE(CheckDoubles(x, taps, 1024));
    for (double &value : x) value *= std::fabs(std::log10(scale)) < 50 ? scale : 1 / scale;
    EXPECT_TRUE(CheckDoubles(taps, x, 1024));
  }
}

TEST(WholeCorrelation, ConvolveWholeDoubles_Integers_IsExact) {
  std::mt19937 random(30);
  for (const int count : {100, 900, 3000}) {
    Doubles taps(static_cast<std::size_t>(count)), x(taps.size() + 17), dst(taps.size() + x.size() - 1);
    for (auto *values : {&taps, &x}) {
      for (double &value : *values) value = static_cast<double>(static_cast<int>(random() % 2001) - 1000);
    }
    double limit = kUnlimited;
    const int len = static_cast<int>(x.size()), length = WholeLength<double>(count, len, limit);
    for (const kernels::Level &level : kernels::AvailableLevels()) {
      const kernels::ScopedLevel scope(level);
      ASSERT_TRUE(ConvolveWhole(taps.data(), count, x.data(), len, dst.data(), length));
      for (int n = 0; n < count + len - 1; n += 7) {
        ASSERT_EQ(dst[static_cast<std::size_t>(n)], static_cast<double>(ConvolvedAt(taps, x, n).value))
            << level.name << ' ' << n;
      }
    }
  }
}

TEST(WholeCorrelation, ConvolveWholeDoubles_Silence_IsExactlyZero) {
  Doubles taps = DoubleNoise(40, 31), x = DoubleNoise(5000, 32);
  std::fill_n(x.begin(), 20, 0.0);
  std::fill_n(x.begin() + 2500, 50, 0.0);
  std::fill_n(x.end() - 30, 30, 0.0);
  EXPECT_TRUE(CheckDoubles(taps, x, 5120));
  // Operands that are mostly silent at their ends.
  x.assign(6000, 0.0);
  const Doubles burst = DoubleNoise(3000, 33);
  std::copy(burst.begin(), burst.end(), x.begin() + 1500);
  EXPECT_TRUE(CheckDoubles(DoubleNoise(3000, 34), x, 9216, 7));
}

TEST(WholeCorrelation, ConvolveWholeDoubles_WhatItCannotVouchFor_IsRefused) {
  const Doubles noise = DoubleNoise(400, 35);
  Doubles dst(799);
  const auto isGood = [&](const Doubles &taps, const Doubles &x) {
    return ConvolveWhole(taps.data(), 400, x.data(), 400, dst.data(), 1024);
  };
  EXPECT_TRUE(isGood(noise, noise));
  for (const double bad : {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN(),
                           1e160, std::numeric_limits<double>::max()}) {
    Doubles spoiled = noise;
    spoiled[100] = bad;
    EXPECT_FALSE(isGood(spoiled, noise));
    EXPECT_FALSE(isGood(noise, spoiled));
    EXPECT_FALSE(isGood(spoiled, Doubles(400)));
    EXPECT_FALSE(isGood(Doubles(400), spoiled));
  }
  Doubles quiet = noise;
  for (std::size_t i = 100; i < 400; ++i) quiet[i] *= 1e-12;
  EXPECT_FALSE(isGood(quiet, noise));
  EXPECT_FALSE(isGood(noise, quiet));
  EXPECT_FALSE(isGood(noise, Doubles(400, 1e-170))) << "squares that vanish";
  EXPECT_FALSE(isGood(Doubles(400, 1e-80), Doubles(400, 1e-80))) << "squares of results that vanish";
  EXPECT_FALSE(isGood(Doubles(400, 1e80), Doubles(400, 1e80))) << "squares of results that overflow";
  EXPECT_TRUE(isGood(noise, Doubles(400)));
  EXPECT_TRUE(isGood(Doubles(400), noise));
  EXPECT_EQ(dst, Doubles(799));
}

TEST(WholeCorrelation, ConvolveWholeDoubles_Again_AllocatesNothing) {
  const Doubles x = DoubleNoise(5000, 36);
  Doubles dst(9999);
  // It asks for pieces of many sizes, and finds waiting ones for all of them after a few calls.
  for (int i = 0; i < 5; ++i) ASSERT_TRUE(ConvolveWhole(x.data(), 5000, x.data(), 5000, dst.data(), 10240));
  const AllocationLimit none(0);
  const long before = AllocationCount();
  ASSERT_TRUE(ConvolveWhole(x.data(), 5000, x.data(), 5000, dst.data(), 10240));
  EXPECT_EQ(AllocationCount(), before);
}

TEST(WholeCorrelation, ConvolveEnds_AnyCounts_AreThoseOutputs) {
  const double eps = std::numeric_limits<double>::epsilon();
  const Doubles taps = DoubleNoise(700, 37), x = DoubleNoise(1100, 38);
  constexpr int kCount = 1799;
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const auto &[early, late] : {std::pair{0, 0}, {1, 0}, {0, 1}, {30, 500}, {500, 30}, {899, 900}}) {
      Guarded<double> dst(kCount, 3);
      std::fill_n(dst.data(), kCount, 9.0);
      if (early < late) // either operand may be the longer one
        QORN::fourier::ConvolveEnds(taps.data(), 700, x.data(), 1100, dst.data(), early, late);
      else
        QORN::fourier::ConvolveEnds(x.data(), 1100, taps.data(), 700, dst.data(), early, late);
      ASSERT_TRUE(dst.Intact());
      for (int n = 0; n < kCount; ++n) {
        if (n >= early && n < kCount - late) {
          ASSERT_EQ(dst.data()[n], 9.0) << level.name << ' ' << n;
          continue;
        }
        const WideSum sum = ConvolvedAt(taps, x, n);
        ASSERT_LE(std::fabs(static_cast<double>(Quad{dst.data()[n]} - sum.value)), 4 * eps * sum.sizes)
            << level.name << ' ' << n;
      }
    }
  }
}

template <class T> void CheckLengths() {
  for (std::ptrdiff_t taps = 32; taps < 3'000'000; taps += taps / 3 + 1) {
    for (std::ptrdiff_t len = taps; len < 9'000'000; len += len / 3 + 1) {
      double limit = kUnlimited;
      const int length = WholeLength<T>(taps, len, limit);
      if (length == 0) {
        // Of doubles, few taps leave many outputs in doubt, and the more the longer the other operand is.
        constexpr bool kDoubles = std::is_same_v<T, double>;
        EXPECT_TRUE(taps + len > (kDoubles ? 1'000'000 : 1 << 22) || (kDoubles && taps < len / 16))
            << taps << ' ' << len;
        continue;
      }
      ASSERT_GE(length, taps + len - 1);
      ASSERT_LE(length, std::max<std::ptrdiff_t>(2 * (taps + len), 128));
      int odd = length;
      while (odd % 2 == 0) odd /= 2;
      ASSERT_TRUE(odd == 1 || odd == 3 || odd == 5 || odd == 9) << length;
      ASSERT_EQ(length % 16, 0);
      double same = limit;
      EXPECT_EQ(WholeLength<T>(taps, len, same), 0) << "what is not less is not taken";
      EXPECT_EQ(same, limit);
    }
  }
}

TEST(WholeCorrelation, WholeLength_OfAnyOperands_HoldsThemAndNotMuchMore) {
  CheckLengths<float>();
  CheckLengths<double>();
  CheckLengths<Cplx32>();
}

} // namespace
