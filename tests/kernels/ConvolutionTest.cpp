// Long convolutions and correlations against direct sums in wider types. What short ones must do as well is
// in ProductTest.cpp.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "qorn/infra/QORNException.h"
#include "qorn/infra/TargetLib.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/KernelCheck.h"
#include "support/Wide.h"

namespace {

using QORN::Cplx32;
using QORN::QORNException;
using QORN::TargetLib;
using QORN::test::AllocationCount;
using QORN::test::AllocationLimit;
using QORN::test::Guarded;
using QORN::test::kIsCplx;
using QORN::test::Part;
using QORN::test::PrintedBy;
using QORN::test::Quad;
using QORN::test::ThrownBy;

namespace kernels = QORN::kernels;

using Signal = std::function<double(int i, int len, double noise)>;

// From even ones, whose outputs are all of a size, to those where loud outputs stand beside quiet ones.
const struct {
  const char *name;
  Signal at;
} kSignals[] = {
    {"noise", [](int, int, double noise) { return noise; }},
    {"constant", [](int, int, double) { return 0.1; }},
    {"tone", [](int i, int, double) { return std::sin(0.37 * i); }},
    {"positive", [](int, int, double noise) { return std::fabs(noise); }},
    {"sinc",
     [](int i, int len, double) {
       const double t = i - (len - 1) / 2.0;
       return t == 0 ? 0.2 : std::sin(0.2 * M_PI * t) / (M_PI * t);
     }},
    {"decay", [](int i, int, double noise) { return noise * std::exp(-0.05 * std::min(i, 800)); }},
    {"bursts", [](int i, int, double noise) { return i / 700 % 3 == 0 ? noise : 0; }},
    {"burst in quiet",
     [](int i, int len, double noise) { return i / 20 == len / 60 ? noise : 1e-12 * noise; }},
    {"outlier", [](int i, int len, double noise) { return i == len / 2 ? 1e6 : noise; }},
    {"impulse", [](int i, int len, double) { return i == len / 3 ? 1.0 : 0.0; }},
    {"every fourth", [](int i, int, double noise) { return i % 4 == 0 ? noise : 0; }},
    {"taper",
     [](int i, int len, double) {
       const double sine = std::sin(M_PI * (i + 0.5) / len);
       return sine * sine;
     }},
};
constexpr int kSignalCount = static_cast<int>(std::size(kSignals));

template <class T> void Fill(T *data, int len, const Signal &signal, std::mt19937 &random) {
  std::normal_distribution<double> normal;
  for (int i = 0; i < len; ++i) {
    if constexpr (kIsCplx<T>) {
      const double re = signal(i, len, normal(random)), im = signal(i + 1, len, normal(random));
      data[i] = {static_cast<float>(re), static_cast<float>(im)};
    } else {
      data[i] = static_cast<T>(signal(i, len, normal(random)));
    }
  }
}

// Wide enough for what is promised of T.
template <class T> struct WiderOf { using Type = double; };
template <> struct WiderOf<double> { using Type = Quad; };

template <class T> auto Re(const T &x) {
  using Wider = typename WiderOf<T>::Type;
  if constexpr (kIsCplx<T>)
    return static_cast<Wider>(x.re);
  else
    return static_cast<Wider>(x);
}
template <class T> auto Im(const T &x) {
  using Wider = typename WiderOf<T>::Type;
  if constexpr (kIsCplx<T>)
    return static_cast<Wider>(x.im);
  else
    return Wider{0};
}
template <class W> W Abs(W x) { return x < 0 ? -x : x; }

// got against sum over i of conj(a[i]) b[i + lag], within 4 eps of the sum of the magnitudes.
template <class T>
testing::AssertionResult IsNear(const T &got, const T *a, int lenA, const T *b, int lenB, long long lag) {
  typename WiderOf<T>::Type re = 0, im = 0;
  double size = 0;
  const long long first = std::max(0LL, -lag), end = std::min<long long>(lenA, lenB - lag);
  for (long long i = first; i < end; ++i) {
    const auto ar = Re(a[i]), ai = -Im(a[i]), br = Re(b[i + lag]), bi = Im(b[i + lag]);
    re += ar * br - ai * bi;
    im += ar * bi + ai * br;
    if constexpr (kIsCplx<T>) {
      size += std::sqrt((ar * ar + ai * ai) * (br * br + bi * bi));
    } else {
      size += std::fabs(static_cast<double>(ar) * static_cast<double>(br));
    }
  }
  const double error =
      std::max(static_cast<double>(Abs(Re(got) - re)), static_cast<double>(Abs(Im(got) - im)));
  const double eps = static_cast<double>(std::numeric_limits<Part<T>>::epsilon());
  if (error <= 4 * eps * size) return testing::AssertionSuccess();
  return testing::AssertionFailure() << "error " << error / (eps * size) << " eps of " << size;
}

// Some places of an output: both ends, fewer and fewer behind them, and a few anywhere.
std::vector<int> Places(int len, int between, std::mt19937 &random) {
  std::vector<int> places;
  const int ends = std::min(len, 12);
  for (int i = 0; i < ends; ++i) {
    places.push_back(i);
    places.push_back(len - 1 - i);
  }
  for (int i = ends; i < len / 2; i += i / 2) {
    places.push_back(i);
    places.push_back(len - 1 - i);
  }
  for (int i = 0; i < between; ++i) places.push_back(static_cast<int>(random() % static_cast<unsigned>(len)));
  return places;
}

template <class T> void Convolve(const T *a, int lenA, const T *b, int lenB, T *dst) {
  if constexpr (std::is_same_v<T, float>)
    TargetLib::Conv_32f(a, lenA, b, lenB, dst);
  else
    TargetLib::Conv_64f(a, lenA, b, lenB, dst);
}
template <class T>
void Correlate(const T *a, int lenA, const T *b, int lenB, T *dst, int dstLen, int lowLag) {
  if constexpr (kIsCplx<T>)
    TargetLib::CrossCorr_32fc(a, lenA, b, lenB, dst, dstLen, lowLag);
  else
    TargetLib::CrossCorr_32f(a, lenA, b, lenB, dst, dstLen, lowLag);
}

// About a tenth of a second for the longest lengths.
int Between(int len1, int len2) { return std::clamp(1000000 / std::min(len1, len2), 4, 40); }

template <class T> void CheckConv(int len1, int len2, int signal1, int signal2) {
  const std::string what = std::to_string(sizeof(T)) + " bytes, " + kSignals[signal1].name + " of " +
                           std::to_string(len1) + " by " + kSignals[signal2].name + " of " +
                           std::to_string(len2);
  std::mt19937 random(static_cast<unsigned>(len1 + len2));
  const int dstLen = len1 + len2 - 1;
  Guarded<T> a(len1, 3), b(len2, 5), dst(dstLen, 1);
  Fill(a.data(), len1, kSignals[signal1].at, random);
  Fill(b.data(), len2, kSignals[signal2].at, random);
  std::vector<T> reversed(a.data(), a.data() + len1);
  std::reverse(reversed.begin(), reversed.end());
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    Convolve(a.data(), len1, b.data(), len2, dst.data());
    ASSERT_TRUE(a.Intact() && b.Intact() && dst.Intact()) << what << level.name;
    for (const int n : Places(dstLen, Between(len1, len2), random)) {
      ASSERT_TRUE(IsNear(dst.data()[n], reversed.data(), len1, b.data(), len2, n - (len1 - 1)))
          << what << " at " << level.name << ", output " << n;
    }
  }
}

TEST(Convolution, Conv_Lengths_IsWithinItsBound) {
  int next = 0;
  for (const int len1 : {1, 2, 7, 31, 32, 33, 64, 127, 200, 513, 1024, 1999, 4096}) {
    for (const int len2 : {1, 40, 511, 2048, 9000}) {
      CheckConv<float>(len1, len2, next % kSignalCount, next / 3 % kSignalCount);
      CheckConv<double>(len1, len2, next % kSignalCount, next / 3 % kSignalCount);
      ++next;
      if (HasFailure()) return;
    }
  }
}

TEST(Convolution, Conv_LongLengths_IsWithinItsBound) {
  for (const int len1 : {1, 17, 100, 1024, 20000, 65536}) {
    CheckConv<float>(len1, 65536, 0, 0);
    CheckConv<double>(65536, len1, 0, 3);
    if (HasFailure()) return;
  }
  // Long blocks, whose errors are the larger ones.
  CheckConv<double>(8192, 49152, 0, 0);
  for (const int signal : {0, 3, 6, 7}) CheckConv<double>(16384, 65536, 0, signal);
  CheckConv<float>(16384, 65536, 0, 7);
}

// Slowly rising towards the middle, where the early and late outputs are far below the errors of a transform
// of all, and of what is left of them, again and again.
TEST(Convolution, Conv_Tapers_IsWithinItsBound) {
  constexpr int kNoise = 0, kPositive = 3, kTaper = kSignalCount - 1;
  for (const int len : {1000, 3000, 20000}) {
    for (const int signal : {kNoise, kPositive, kTaper}) CheckConv<double>(len, len, kTaper, signal);
    CheckConv<double>(len, len, kPositive, kPositive);
    CheckConv<double>(len / 4, len, kTaper, kPositive);
    if (HasFailure()) return;
  }
}

// Every kind of signal through every other, with transforms.
TEST(Convolution, Conv_Signals_IsWithinItsBound) {
  for (int signal1 = 0; signal1 < kSignalCount; ++signal1) {
    for (int signal2 = 0; signal2 < kSignalCount; ++signal2) {
      CheckConv<float>(700, 12000, signal1, signal2);
      CheckConv<double>(12000, 1000, signal1, signal2);
      CheckConv<double>(3000, 2500, signal1, signal2);
      if (HasFailure()) return;
    }
  }
}

// The outputs about those that the first and the last value of a burst still reach, 240 dB above the others.
template <class T> void CheckBehindBurst(int taps, int len) {
  std::mt19937 random(8);
  const int begin = len / 3, end = begin + 20;
  std::normal_distribution<double> normal;
  std::vector<T> h(static_cast<std::size_t>(taps)), x(static_cast<std::size_t>(len)),
      dst(h.size() + x.size() - 1);
  for (T &value : h) value = static_cast<T>(normal(random));
  h.front() = h.back() = T(1e-6); // so that one loud value does not make an output loud
  for (int i = 0; i < len; ++i)
    x[static_cast<std::size_t>(i)] = static_cast<T>(normal(random) * (i >= begin && i < end ? 1 : 1e-12));
  const std::vector<T> reversed(h.rbegin(), h.rend());
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    Convolve(h.data(), taps, x.data(), len, dst.data());
    for (const int edge : {begin, end + taps - 1}) {
      for (int n = edge - 70; n < edge + 70; ++n) {
        ASSERT_TRUE(
            IsNear(dst[static_cast<std::size_t>(n)], reversed.data(), taps, x.data(), len, n - (taps - 1)))
            << taps << " taps at " << level.name << ", output " << n;
      }
    }
  }
}

TEST(Convolution, Conv_QuietBesideABurst_IsWithinItsBound) {
  CheckBehindBurst<float>(16384, 65536);
  CheckBehindBurst<double>(16384, 65536);
}

// As by direct sums, outputs without a nonzero product are zero and not almost zero.
template <class T> void CheckSilence(int taps, int len, int begin, int pause, int resume, int end) {
  std::mt19937 random(4);
  std::vector<T> h(static_cast<std::size_t>(taps)), x(static_cast<std::size_t>(len)),
      dst(h.size() + x.size() - 1);
  Fill(h.data(), taps, kSignals[0].at, random);
  Fill(x.data(), len, kSignals[0].at, random);
  for (int i = 0; i < len; ++i) {
    if (i < begin || (i > pause && i < resume) || i > end) x[static_cast<std::size_t>(i)] = 0;
  }
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    std::fill(dst.begin(), dst.end(), T{9});
    Convolve(h.data(), taps, x.data(), len, dst.data());
    int zeros = 0;
    for (int n = 0; n < taps + len - 1; ++n) {
      bool silent = true;
      for (int i = std::max(0, n - taps + 1); i <= std::min(n, len - 1); ++i)
        silent = silent && x[static_cast<std::size_t>(i)] == 0;
      EXPECT_EQ(dst[static_cast<std::size_t>(n)] == 0, silent) << level.name << ' ' << n;
      zeros += silent;
    }
    EXPECT_GT(zeros, len / 4);
  }
}

TEST(Convolution, Conv_Silence_IsExactlyZero) {
  CheckSilence<float>(900, 40000, 3000, 10000, 12000, 30000);
  CheckSilence<double>(900, 40000, 3000, 10000, 12000, 30000);
  CheckSilence<double>(900, 4000, 700, 2000, 3100, 3700); // both operands by one transform each
}

// Integers whose sums their type holds.
template <class T> void CheckIntegers(int taps, int len, int largest) {
  std::mt19937 random(5);
  std::vector<T> h(static_cast<std::size_t>(taps)), x(static_cast<std::size_t>(len)),
      dst(h.size() + x.size() - 1);
  for (auto *values : {&h, &x}) {
    for (T &value : *values) {
      value = static_cast<T>(static_cast<int>(random() % static_cast<unsigned>(2 * largest + 1)) - largest);
    }
  }
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    Convolve(h.data(), taps, x.data(), len, dst.data());
    for (int n = 0; n < taps + len - 1; n += 11) {
      long long sum = 0;
      for (int k = std::max(0, n - len + 1); k <= std::min(n, taps - 1); ++k) {
        sum += static_cast<long long>(h[static_cast<std::size_t>(k)]) *
               static_cast<long long>(x[static_cast<std::size_t>(n - k)]);
      }
      ASSERT_EQ(dst[static_cast<std::size_t>(n)], static_cast<T>(sum))
          << level.name << ' ' << taps << ' ' << n;
    }
  }
}

TEST(Convolution, Conv_Integers_IsExact) {
  CheckIntegers<float>(900, 20000, 100);
  CheckIntegers<float>(900, 1100, 100);
  for (const int taps : {100, 300, 900, 5000}) CheckIntegers<double>(taps, 20000, 1000);
  CheckIntegers<double>(900, 1100, 10000);
}

template <class T> int Class(T x) { return std::isnan(x) ? 2 : std::isinf(x) ? (x > 0 ? 1 : -1) : 0; }

// What is not finite shows in the outputs that it belongs to, in the way of direct sums, and nowhere else.
template <class T> void CheckNonFinite(std::vector<T> taps, std::vector<T> x, const std::string &what) {
  const int m = static_cast<int>(taps.size()), len = static_cast<int>(x.size());
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    std::vector<T> dst(taps.size() + x.size() - 1);
    Convolve(taps.data(), m, x.data(), len, dst.data());
    for (int n = 0; n < m + len - 1; ++n) {
      T special = 0; // the sum of the products that are not finite
      bool any = false;
      for (int i = std::max(0, n - len + 1); i <= std::min(n, m - 1); ++i) {
        const T tap = taps[static_cast<std::size_t>(i)], value = x[static_cast<std::size_t>(n - i)];
        if (std::isfinite(tap) && std::isfinite(value)) continue;
        special += tap * value;
        any = true;
      }
      ASSERT_EQ(Class(dst[static_cast<std::size_t>(n)]), any ? Class(special) : 0)
          << what << " at " << level.name << ", output " << n;
    }
  }
}

template <class T> void CheckNonFinite() {
  using Limits = std::numeric_limits<T>;
  std::mt19937 random(5);
  std::vector<T> taps(800), x(9000);
  Fill(taps.data(), 800, kSignals[0].at, random);
  Fill(x.data(), 9000, kSignals[0].at, random);
  taps[17] = 0;
  auto spoiled = x;
  spoiled[4000] = Limits::quiet_NaN();
  CheckNonFinite(taps, spoiled, "not a number");
  spoiled[4000] = Limits::infinity();
  spoiled[8999] = -Limits::infinity();
  CheckNonFinite(taps, spoiled, "infinities");
  spoiled[4500] = Limits::quiet_NaN();
  CheckNonFinite(taps, spoiled, "both");
  auto spoiledTaps = taps;
  spoiledTaps[400] = Limits::infinity();
  CheckNonFinite(spoiledTaps, x, "infinite tap");
}

TEST(Convolution, Conv_NotFinite_ShowsOnlyWhereItBelongs) {
  CheckNonFinite<float>();
  CheckNonFinite<double>();
}

// The bound is relative, so it holds at every scale; and squares of the operands may be out of range.
TEST(Convolution, Conv_Scales_IsWithinItsBound) {
  for (const double scale : {1e-18, 1e18}) {
    std::mt19937 random(6);
    std::vector<float> taps(1000), x(9000), dst(9999);
    Fill(
        taps.data(), 1000, [=](int, int, double noise) { return noise * scale; }, random);
    Fill(
        x.data(), 9000, [=](int, int, double noise) { return noise * scale; }, random);
    std::vector<float> reversed(taps.rbegin(), taps.rend());
    TargetLib::Conv_32f(taps.data(), 1000, x.data(), 9000, dst.data());
    for (const int n : Places(9999, 200, random)) {
      // Products near the ends of the range are left to the magnitudes' sum.
      ASSERT_TRUE(IsNear(dst[static_cast<std::size_t>(n)], reversed.data(), 1000, x.data(), 9000, n - 999))
          << scale << ' ' << n;
    }
  }
  for (const double scale : {1e-140, 1e-110, 1e-60, 1e60, 1e110, 1e150}) {
    std::mt19937 random(7);
    std::vector<double> taps(1000), x(9000), dst(9999);
    Fill(
        taps.data(), 1000, [=](int, int, double noise) { return noise * scale; }, random);
    Fill(
        x.data(), 9000, [=](int, int, double noise) { return noise * scale; }, random);
    std::vector<double> reversed(taps.rbegin(), taps.rend());
    TargetLib::Conv_64f(taps.data(), 1000, x.data(), 9000, dst.data());
    for (const int n : Places(9999, 50, random)) {
      ASSERT_TRUE(IsNear(dst[static_cast<std::size_t>(n)], reversed.data(), 1000, x.data(), 9000, n - 999))
          << scale << ' ' << n;
    }
  }
}

template <class T> void CheckCorr(int len1, int len2, int dstLen, int lowLag, int signal1, int signal2) {
  const std::string what = std::to_string(sizeof(T)) + " bytes, lengths " + std::to_string(len1) + ' ' +
                           std::to_string(len2) + ' ' + std::to_string(dstLen) + ", lag " +
                           std::to_string(lowLag) + ", " + kSignals[signal1].name + ", " +
                           kSignals[signal2].name;
  std::mt19937 random(static_cast<unsigned>(len1 + len2));
  Guarded<T> a(len1, 3), b(len2, 5), dst(dstLen, 1);
  Fill(a.data(), len1, kSignals[signal1].at, random);
  Fill(b.data(), len2, kSignals[signal2].at, random);
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    Correlate(a.data(), len1, b.data(), len2, dst.data(), dstLen, lowLag);
    ASSERT_TRUE(a.Intact() && b.Intact() && dst.Intact()) << what << level.name;
    for (const int n : Places(dstLen, Between(len1, len2), random)) {
      ASSERT_TRUE(IsNear(dst.data()[n], a.data(), len1, b.data(), len2, static_cast<long long>(n) + lowLag))
          << what << " at " << level.name << ", output " << n;
    }
  }
}

TEST(Convolution, CrossCorr_LongLengthsAndLags_IsWithinItsBound) {
  const struct {
    int len1, len2, dstLen, lowLag;
  } cases[] = {
      {2500, 2500, 4999, -2499},                          // all lags
      {9000, 600, 9599, -8999},                           // the first is the longer
      {600, 9000, 9599, -599},    {600, 9000, 8000, 100}, // some lags
      {9000, 600, 20000, -12000},                         // and lags outside
      {600, 9000, 300, 8990},     {9000, 9000, 3000, -1500}, {65536, 65536, 131071, -65535},
  };
  int next = 0;
  for (const auto &c : cases) {
    for (int pair = 0; pair < (c.len1 > 10000 ? 1 : 5); ++pair, next += 7) {
      CheckCorr<float>(c.len1, c.len2, c.dstLen, c.lowLag, pair, next % kSignalCount);
      CheckCorr<Cplx32>(c.len1, c.len2, c.dstLen, c.lowLag, pair, next % kSignalCount);
      if (HasFailure()) return;
    }
  }
}

TEST(Convolution, CrossCorr_ComplexNotFinite_ShowsOnlyWhereItBelongs) {
  std::mt19937 random(8);
  std::vector<Cplx32> taps(500), x(9000), dst(9499);
  Fill(taps.data(), 500, kSignals[0].at, random);
  Fill(x.data(), 9000, kSignals[0].at, random);
  x[5000].im = std::numeric_limits<float>::quiet_NaN();
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    TargetLib::CrossCorr_32fc(taps.data(), 500, x.data(), 9000, dst.data(), 9499, -499);
    for (int n = 0; n < 9499; ++n) {
      const int first = n - 499; // the first element of x that belongs to output n
      const bool spoiled = first <= 5000 && 5000 < first + 500;
      const Cplx32 y = dst[static_cast<std::size_t>(n)];
      ASSERT_EQ(std::isnan(y.re) && std::isnan(y.im), spoiled) << level.name << ' ' << n;
      ASSERT_EQ(std::isnan(y.re) || std::isnan(y.im), spoiled) << level.name << ' ' << n;
    }
  }
}

// The plans of lengths that nothing else has asked for are made by several threads at once.
TEST(Convolution, Conv_ManyThreads_GiveWhatOneGives) {
  constexpr int kThreads = 4, kTaps = 90000, kLen = 150000;
  std::mt19937 random(9);
  std::vector<float> taps(kTaps), x(kLen);
  Fill(taps.data(), kTaps, kSignals[0].at, random);
  Fill(x.data(), kLen, kSignals[0].at, random);
  std::vector<std::vector<float>> results(kThreads, std::vector<float>(kTaps + kLen - 1));
  std::vector<std::thread> threads;
  for (auto &result : results) {
    threads.emplace_back([&] { TargetLib::Conv_32f(taps.data(), kTaps, x.data(), kLen, result.data()); });
  }
  for (auto &thread : threads) thread.join();
  std::vector<float> alone(kTaps + kLen - 1);
  TargetLib::Conv_32f(taps.data(), kTaps, x.data(), kLen, alone.data());
  for (const auto &result : results) EXPECT_TRUE(result == alone);
}

TEST(Convolution, Conv_Short_AllocatesNothing) {
  std::vector<float> taps(31), x(60000), dst(60030);
  const AllocationLimit none(0);
  const long before = AllocationCount();
  TargetLib::Conv_32f(taps.data(), 31, x.data(), 60000, dst.data());
  TargetLib::Conv_32f(x.data(), 60, x.data(), 60, dst.data());
  TargetLib::CrossCorr_32f(taps.data(), 31, x.data(), 60000, dst.data(), 60000, 0);
  EXPECT_EQ(AllocationCount(), before);
}

// Operands so long that the work memory is too large to wait for the next call. Vectors report what they
// lack, other objects, which come first in blocks, only throw.
void CheckNoMemory(int tapCount, int len, bool isReportedAlways) {
  const std::vector<double> taps(static_cast<std::size_t>(tapCount), 1.0),
      x(static_cast<std::size_t>(len), 1.0);
  std::vector<double> dst(taps.size() + x.size() - 1);
  TargetLib::Conv_64f(taps.data(), tapCount, x.data(), len, dst.data()); // makes the plan
  const double first = dst[500];
  for (const std::size_t limit : {std::size_t{0}, std::size_t{10000}, std::size_t{2} << 20}) {
    QORNException thrown(0, "nothing was thrown", "", 0);
    const std::string printed = PrintedBy([&] {
      thrown = ThrownBy([&] {
        const AllocationLimit limited(limit);
        TargetLib::Conv_64f(taps.data(), tapCount, x.data(), len, dst.data());
      });
    });
    EXPECT_EQ(thrown.GetErrorCode(), 11001) << limit;
    EXPECT_STREQ(thrown.GetMessage(), "memory allocation error");
    EXPECT_EQ(printed == "", limit == 0 && !isReportedAlways) << limit;
  }
  const long before = AllocationCount();
  TargetLib::Conv_64f(taps.data(), tapCount, x.data(), len, dst.data());
  EXPECT_EQ(dst[500], first);
  EXPECT_LT(AllocationCount() - before, 20) << "the plan was made again";
}

TEST(Convolution, Conv_NoMemory_ThrowsAndGivesAllBack) {
  CheckNoMemory(150000, 150000, true);
  CheckNoMemory(60000, 700000, false);
}

// The first value that is not large, at every place of blocks of every length; a complex value is large if
// one of its parts is.
template <class T, class Find> void CheckFirstSmall(int parts, const Find &find) {
  for (int len = 0; len <= 150; ++len) {
    std::vector<T> x(static_cast<std::size_t>(parts * len));
    for (std::size_t i = 0; i < x.size(); ++i) x[i] = i % 3 == 0 ? T{-2} : T{2};
    for (std::size_t i = 1; parts == 2 && i < x.size(); i += 2) x[i - i / 2 % 2] = 0;
    ASSERT_EQ(find(x.data(), len, T{2}), len);
    for (int place = 0; place < len; ++place) {
      for (const T small : {std::nextafter(T{2}, T{0}), T{0}, std::numeric_limits<T>::quiet_NaN()}) {
        auto changed = x;
        std::fill_n(changed.begin() + parts * place, parts, small);
        ASSERT_EQ(find(changed.data(), len, T{2}), place) << len;
      }
    }
  }
}

TEST(Convolution, ConvLarge_AnyPlace_IsFound) {
  for (const auto &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    SCOPED_TRACE(level.name);
    CheckFirstSmall<float>(1, kernels::active->ConvLarge_32f);
    CheckFirstSmall<float>(2, kernels::active->ConvLarge_32fc);
    CheckFirstSmall<double>(1, kernels::active->ConvLarge_64f);
    if (HasFatalFailure()) return;
  }
}

} // namespace
