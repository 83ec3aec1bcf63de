#include "qorn/dsp/UserDefinedFilters.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "qorn/infra/QORNException.h"
#include "qorn/infra/TargetLib.h"
#include "support/Allocations.h"
#include "support/Filters.h"

namespace {

using namespace QORN;
using test::CplxTaps;
using test::kPiLong;
using test::List;
using test::LongSinc;
using test::Of;
using test::Taps;

using Complexes = std::vector<Cplx32>;
using Samples = std::vector<float>;

Complexes Noise(int n, std::uint32_t random = 1) {
  Complexes noise;
  const auto next = [&random] {
    random = random * 1664525U + 1013904223U;
    return static_cast<float>(static_cast<std::int32_t>(random)) * 0x1p-31F;
  };
  for (int i = 0; i < n; ++i) {
    const float re = next();
    noise.push_back({re, next()});
  }
  return noise;
}

Complexes FromReal(const Samples &re) {
  Complexes all;
  for (const float x : re) all.push_back({x, 0.0F});
  return all;
}

// The library's own sine: that of the C library has other last bits on other machines.
double Sine(double a) {
  double sine = 0;
  TargetLib::Sin_64f(&a, &sine, 1);
  return sine;
}

double Centre(const Complexes &h) {
  double energy = 0, moment = 0;
  for (std::size_t i = 0; i < h.size(); ++i) {
    const double re = static_cast<double>(h[i].re), im = static_cast<double>(h[i].im);
    energy += re * re + im * im;
    moment += static_cast<double>(i) * (re * re + im * im);
  }
  return energy > 0 ? moment / energy : (static_cast<double>(h.size()) - 1) * 0.5;
}

int Nearest(double p) { return static_cast<int>(p < 0 ? p - 0.5 : p + 0.5); }

// The resampling as it is told, one value at a time.
Complexes Resampled(const Complexes &h, float tapRate, float ratio) {
  const int L = static_cast<int>(h.size());
  const double step = static_cast<double>(tapRate / ratio), c = Centre(h);
  const int M = static_cast<int>(std::max(c, L - 1 - c) / step) * 2 + 3;
  Complexes out(static_cast<std::size_t>(M));
  for (int j = 0; j < M; ++j) {
    Cplx32 &value = out[static_cast<std::size_t>(j)];
    const double p = c - (j - M / 2) * step;
    const int r = Nearest(p);
    if (r >= 0 && r < L && std::fabs(p - r) < 0.001) {
      value = h[static_cast<std::size_t>(r)];
    } else {
      for (int i = std::max(r - 200, 0); i < std::min(r + 201, L); ++i) {
        const double a = (i - p) * static_cast<double>(3.1415927F), sinc = Sine(a) / a;
        value.re += static_cast<float>(static_cast<double>(h[static_cast<std::size_t>(i)].re) * sinc);
        value.im += static_cast<float>(static_cast<double>(h[static_cast<std::size_t>(i)].im) * sinc);
      }
    }
    value.re /= ratio;
    value.im /= ratio;
  }
  return out;
}

// The step response as it is told, one point at a time.
Complexes Integrated(const Complexes &h, float tapRate, float ratio) {
  const int L = static_cast<int>(h.size());
  double step = static_cast<double>(tapRate / ratio);
  int R = 1;
  while (static_cast<double>(tapRate) / step < 32.0) {
    step /= 2;
    R *= 2;
  }
  const double c = Centre(h);
  const int half = static_cast<int>(static_cast<float>(R) * ratio * 0.5F);
  int F = (static_cast<int>(std::max(c, L - 1 - c) / step) + half) * 2 + 1;
  int K = F / R;
  if (K % 2 == 0) {
    K += 1;
    F = K * R + 1;
  }
  const int b = (K / 2 + 1) * R - 1;
  Complexes fine(static_cast<std::size_t>(F));
  for (int i = 0; i < F; ++i) {
    const double p = (i - 0.5 - b) * step + c;
    const int r = Nearest(p);
    if (r < 0 || r >= L) continue;
    if (std::fabs(p - r) < 0.001) {
      fine[static_cast<std::size_t>(i)] = h[static_cast<std::size_t>(r)];
      continue;
    }
    for (int k = std::max(r - 200, 0); k < std::min(r + 201, L); ++k) {
      const double a = (k - p) * 3.141592653589793, g = Sine(a) / a;
      const float re = static_cast<float>(static_cast<double>(h[static_cast<std::size_t>(k)].re) * g);
      const float im = static_cast<float>(static_cast<double>(h[static_cast<std::size_t>(k)].im) * g);
      for (int m = std::max(i - half, 0); m <= std::min(i + half, F - 1); ++m) {
        fine[static_cast<std::size_t>(m)].re += re;
        fine[static_cast<std::size_t>(m)].im += im;
      }
    }
  }
  Complexes out;
  double re = 0, im = 0;
  for (int g = 0; g < K; ++g) {
    for (int i = g * R; i < (g + 1) * R; ++i) {
      re += static_cast<double>(fine[static_cast<std::size_t>(i)].re);
      im += static_cast<double>(fine[static_cast<std::size_t>(i)].im);
    }
    out.push_back({static_cast<float>(re), static_cast<float>(im)});
  }
  const float scale = static_cast<float>(1 / std::sqrt(re * re + im * im));
  for (Cplx32 &x : out) x = {x.re * scale, x.im * scale};
  return out;
}

template <class F> Complexes Computed(const Complexes &user, float tapRate, float ratio) {
  VecCplx32 out(3);
  F::ComputeResampledFilterTaps(out, Of<VecCplx32>(user), tapRate, ratio);
  return List(out);
}

struct Rates {
  float tapRate, ratio;
};
const Rates kRates[] = {{4, 4}, {4, 8}, {8, 4}, {4, 10}, {3, 7}, {16, 5.5F}, {1, 40}, {4, 0.5F}, {2.5F, 33}};

TEST(UserDefinedFilter, ComputeResampledFilterTaps_AnyTaps_IsTheToldResampling) {
  for (const int n : {1, 2, 5, 32, 101, 450}) {
    for (const Rates &r : kRates) {
      ASSERT_EQ(Computed<UserDefinedFilter>(Noise(n), r.tapRate, r.ratio),
                Resampled(Noise(n), r.tapRate, r.ratio))
          << n << ' ' << r.tapRate << ' ' << r.ratio;
    }
  }
}

TEST(IntegralUserDefinedFilter, ComputeResampledFilterTaps_AnyTaps_IsTheToldStepResponse) {
  for (const int n : {1, 2, 5, 32, 101}) {
    for (const Rates &r : kRates) {
      ASSERT_EQ(Computed<IntegralUserDefinedFilter>(Noise(n), r.tapRate, r.ratio),
                Integrated(Noise(n), r.tapRate, r.ratio))
          << n << ' ' << r.tapRate << ' ' << r.ratio;
    }
  }
}

TEST(UserDefinedFilter, ComputeResampledFilterTaps_StepOne_CopiesTheTapsReversed) {
  // The energy is centred on tap 2: 16 (1 - 2) ... so every position is a whole one.
  const Complexes user = FromReal({1.0F, 2.0F, 4.0F, 2.0F, 1.0F});
  Complexes expected = FromReal({0.0F, 0.25F, 0.5F, 1.0F, 0.5F, 0.25F, 0.0F});
  auto taps = Computed<UserDefinedFilter>(user, 4.0F, 4.0F);
  ASSERT_EQ(taps.size(), 7U);
  // Outside of the user's taps, sines of multiples of the float pi are left: below 1e-6.
  for (std::size_t i = 0; i < 7; ++i) {
    EXPECT_NEAR(taps[i].re, expected[i].re, i == 0 || i == 6 ? 1e-6F : 0.0F) << i;
    EXPECT_EQ(taps[i].im, 0.0F);
  }
  // {3, 1, 5, 1, 3i}: centred as well, and not symmetric.
  const Complexes other = {{3.0F, 0.0F}, {1.0F, 0.0F}, {5.0F, 0.0F}, {1.0F, 0.0F}, {0.0F, 3.0F}};
  taps = Computed<UserDefinedFilter>(other, 2.0F, 2.0F);
  ASSERT_EQ(taps.size(), 7U);
  for (std::size_t i = 1; i < 6; ++i)
    EXPECT_EQ(taps[i], (Cplx32{other[5 - i].re / 2, other[5 - i].im / 2})) << i;
}

// A band-limited pulse that has died out at the ends, sampled more densely, is the pulse itself.
TEST(UserDefinedFilter, ComputeResampledFilterTaps_SmoothPulse_IsThatPulseAtTheOtherRate) {
  Samples user;
  const auto pulse = [](long double x) { return std::exp(-x * x / 18); }; // in user taps
  for (int i = 0; i < 61; ++i) user.push_back(static_cast<float>(pulse(i - 30)));
  for (const float ratio : {5.0F, 8.0F, 10.0F, 3.0F}) {
    const auto taps = Computed<UserDefinedFilter>(FromReal(user), 4.0F, ratio);
    const int n = static_cast<int>(taps.size());
    EXPECT_NEAR(n, 2 * 30 * ratio / 4, 3);
    for (int j = 0; j < n; ++j) {
      const long double expected = pulse((j - n / 2) * 4 / static_cast<long double>(ratio));
      EXPECT_NEAR(static_cast<double>(taps[static_cast<std::size_t>(j)].re) * static_cast<double>(ratio),
                  static_cast<double>(expected), 2e-6)
          << ratio << ' ' << j;
    }
  }
}

// What the running integral of that pulse over one symbol is.
TEST(IntegralUserDefinedFilter, ComputeResampledFilterTaps_SmoothPulse_IsItsStepResponse) {
  Samples user;
  for (int i = 0; i < 61; ++i) user.push_back(static_cast<float>(std::exp(-(i - 30) * (i - 30) / 18.0)));
  const float tapRate = 8.0F, ratio = 10.0F;
  const auto taps = Computed<IntegralUserDefinedFilter>(FromReal(user), tapRate, ratio);
  const int n = static_cast<int>(taps.size());
  ASSERT_EQ(n % 2, 1);
  EXPECT_NEAR(taps.back().re, 1.0F, 2e-7F);
  // A Gaussian of deviation 3 taps, or 3.75 samples, smeared over a symbol of 10 samples, which the grid of 4
  // points per sample makes 41 points wide: the mean of the normal distribution function over that width.
  const auto area = [](double x) { // the integral of the distribution function, in deviations
    return x * 0.5 * std::erfc(-x / std::sqrt(2.0)) + std::exp(-x * x / 2) / std::sqrt(2 * 3.141592653589793);
  };
  for (int g = 0; g < n; ++g) {
    const double t = (g - n / 2) / 3.75, half = 41.0 / 8 / 3.75;
    const double expected = (area(t + half) - area(t - half)) / (2 * half);
    EXPECT_NEAR(static_cast<double>(taps[static_cast<std::size_t>(g)].re), expected, 1e-4) << g;
  }
}

TEST(IntegralUserDefinedFilter, ComputeResampledFilterTaps_AnyTaps_EndAtMagnitudeOne) {
  for (const int n : {1, 7, 40}) {
    for (const Rates &r : kRates) {
      const auto taps = Computed<IntegralUserDefinedFilter>(Noise(n), r.tapRate, r.ratio);
      ASSERT_EQ(taps.size() % 2, 1U);
      EXPECT_NEAR(std::hypot(taps.back().re, taps.back().im), 1.0F, 2e-7F) << n << ' ' << r.ratio;
    }
  }
}

template <class F> class UserTaps : public testing::Test {};
using UserFilters = testing::Types<UserDefinedFilter, IntegralUserDefinedFilter>;
TYPED_TEST_SUITE(UserTaps, UserFilters);

TYPED_TEST(UserTaps, ComputeResampledFilterTaps_NoEnergy_IsCentredAndZero) {
  for (const auto &taps :
       {Computed<TypeParam>(Complexes(5), 4.0F, 4.0F), Computed<TypeParam>({}, 4.0F, 4.0F)}) {
    for (const Cplx32 tap : taps) EXPECT_EQ(tap, (Cplx32{0.0F, 0.0F}));
  }
}

TYPED_TEST(UserTaps, ComputeResampledFilterTaps_StepThatMakesNoSense_IsEmpty) {
  const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
  const float tiny = std::numeric_limits<float>::denorm_min(), huge = std::numeric_limits<float>::max();
  const test::AllocationLimit limit(1 << 26);
  const auto user = Noise(9);
  const float odd[] = {0.0F, -0.0F, -1.0F, nan, inf, -inf, tiny, huge, -huge};
  for (const float x : odd) {
    EXPECT_TRUE(Computed<TypeParam>(user, x, 4.0F).empty() || x > 0.0F) << x;
    EXPECT_TRUE(Computed<TypeParam>(user, 4.0F, x).empty() || x > 0.0F) << x;
    for (const float y : odd) (void)Computed<TypeParam>(user, x, y);
  }
  EXPECT_TRUE(Computed<TypeParam>(user, 0.0F, 4.0F).empty());
  EXPECT_TRUE(Computed<TypeParam>(user, nan, 4.0F).empty());
  EXPECT_TRUE(Computed<TypeParam>(user, -4.0F, 4.0F).empty());
  EXPECT_TRUE(Computed<TypeParam>(user, 4.0F, 0.0F).empty());
  EXPECT_TRUE(Computed<TypeParam>(user, 4.0F, -4.0F).empty());
  EXPECT_TRUE(Computed<TypeParam>(user, 4.0F, inf).empty());
  EXPECT_TRUE(Computed<TypeParam>(user, 1e-7F, 4.0F).empty()); // too many taps
  EXPECT_TRUE(Computed<TypeParam>(user, 4.0F, 1e9F).empty());
}

TYPED_TEST(UserTaps, ComputeResampledFilterTaps_TapsThatAreNotNumbers_EndsAllTheSame) {
  const float nan = std::numeric_limits<float>::quiet_NaN(), inf = std::numeric_limits<float>::infinity();
  for (const float bad : {nan, inf, -inf, 3e38F}) {
    const auto taps = Computed<TypeParam>({{1.0F, 0.0F}, {bad, 0.0F}, {1.0F, 0.0F}}, 4.0F, 8.0F);
    EXPECT_LT(taps.size(), 100U);
  }
}

TYPED_TEST(UserTaps, ResizeFilterTaps_AnySizes_KeepsTheMiddle) {
  const auto resized = [](int newSize, const Samples &old) {
    VecCplx32 taps = Of<VecCplx32>(FromReal(old));
    TypeParam::ResizeFilterTaps(taps, newSize, static_cast<int>(old.size()));
    VecReal32 re;
    taps.GetReal(re);
    return List(re);
  };
  const Samples five = {1, 2, 3, 4, 5};
  EXPECT_EQ(resized(9, five), (Samples{0, 0, 1, 2, 3, 4, 5, 0, 0}));
  EXPECT_EQ(resized(8, five), (Samples{0, 1, 2, 3, 4, 5, 0, 0}));
  EXPECT_EQ(resized(5, five), five);
  EXPECT_EQ(resized(4, five), (Samples{1, 2, 3, 4}));
  EXPECT_EQ(resized(3, five), (Samples{2, 3, 4}));
  EXPECT_EQ(resized(2, five), (Samples{2, 3}));
  EXPECT_EQ(resized(1, five), (Samples{3}));
  EXPECT_EQ(resized(0, five), (Samples{}));
  EXPECT_EQ(resized(-1, five), (Samples{}));
  EXPECT_EQ(resized(3, {}), (Samples{0, 0, 0}));
  VecCplx32 taps = Of<VecCplx32>(FromReal(five));
  TypeParam::ResizeFilterTaps(taps, 7, 100); // more than there are
  EXPECT_EQ(taps.GetSize(), 7);
}

template <class F> struct Reached : F {
  float Rate() const { return this->m_rate; }
  Complexes User() const { return List(this->m_userTaps); }
  bool Present() const { return this->m_tapsPresent; }
  bool Set() const { return this->m_parametersSet; }
};

TYPED_TEST(UserTaps, NewFilter_WithoutTaps_RecommendsAndStoresOnly) {
  Reached<TypeParam> filter;
  EXPECT_EQ(filter.GetRecommendedTapSize(8.0F, 1.0F, 0.3F), 1023);
  EXPECT_FALSE(filter.Set());
  EXPECT_FALSE(filter.IsComplexFilter());
  filter.SetParameters(8.0F, 2.0F, 0.3F, 55);
  EXPECT_EQ(filter.GetSamplingRate(), 8.0F);
  EXPECT_EQ(filter.Rate(), 2.0F);
  EXPECT_TRUE(filter.Set());
  EXPECT_TRUE(CplxTaps(filter).empty());
  EXPECT_TRUE(Taps(filter).empty());
  EXPECT_EQ(filter.GetDelay(), 0.0F);
  EXPECT_EQ(test::FilterProbe::TapSize(filter), 0);
  EXPECT_EQ(filter.GetTapRate(), 0.0F);
}

TYPED_TEST(UserTaps, SetUserTaps_BeforeTheParameters_WaitsForThem) {
  Reached<TypeParam> filter;
  filter.SetUserTaps(Of<VecCplx32>(Noise(20)), 4.0F);
  EXPECT_TRUE(filter.Present());
  EXPECT_TRUE(filter.IsComplexFilter());
  EXPECT_EQ(filter.GetTapRate(), 4.0F);
  EXPECT_EQ(filter.User(), Noise(20));
  EXPECT_TRUE(CplxTaps(filter).empty());
  filter.SetParameters(48000.0F, 4800.0F, 0.0F, 0);
  const auto expected = Computed<TypeParam>(Noise(20), 4.0F, 10.0F);
  EXPECT_EQ(CplxTaps(filter), expected);
  EXPECT_EQ(filter.GetDelay(), static_cast<float>((expected.size() - 1) / 2));
  EXPECT_EQ(test::FilterProbe::TapSize(filter), static_cast<int>(expected.size()));
}

TYPED_TEST(UserTaps, SetUserTaps_AfterTheParameters_ResamplesAtOnce) {
  Reached<TypeParam> filter;
  filter.SetParameters(48000.0F, 4800.0F, 0.0F, 99);
  filter.SetUserTaps(Of<VecReal32>({1.0F, 2.0F, 1.0F}), 4.0F);
  EXPECT_EQ(filter.User(), FromReal({1.0F, 2.0F, 1.0F}));
  EXPECT_TRUE(filter.IsComplexFilter());
  auto expected = Computed<TypeParam>(FromReal({1.0F, 2.0F, 1.0F}), 4.0F, 10.0F);
  EXPECT_EQ(CplxTaps(filter), expected);
  EXPECT_EQ(filter.GetDelay(), static_cast<float>((expected.size() - 1) / 2));
  filter.SetUserTaps(Of<VecCplx32>(Noise(9)), 2.0F);
  expected = Computed<TypeParam>(Noise(9), 2.0F, 10.0F);
  EXPECT_EQ(CplxTaps(filter), expected);
  EXPECT_EQ(test::FilterProbe::TapSize(filter), static_cast<int>(expected.size()));
}

TYPED_TEST(UserTaps, GetRecommendedTapSize_WithTaps_DesignsTheFilter) {
  Reached<TypeParam> filter;
  filter.SetUserTaps(Of<VecCplx32>(Noise(9)), 2.0F);
  const auto expected = Computed<TypeParam>(Noise(9), 2.0F, 10.0F);
  EXPECT_EQ(filter.GetRecommendedTapSize(10.0F, 1.0F, 0.7F), static_cast<int>(expected.size()));
  EXPECT_EQ(CplxTaps(filter), expected);
  EXPECT_EQ(filter.GetSamplingRate(), 10.0F);
  EXPECT_EQ(filter.Rate(), 1.0F);
}

TYPED_TEST(UserTaps, SetParameters_WithACount_ResizesAroundTheMiddle) {
  Reached<TypeParam> filter;
  filter.SetUserTaps(Of<VecCplx32>(Noise(9)), 2.0F);
  const auto natural = Computed<TypeParam>(Noise(9), 2.0F, 10.0F);
  const int n = static_cast<int>(natural.size());
  for (const int count : {n + 7, n - 4, n, n - 5, 1}) {
    VecCplx32 expected;
    filter.GetTaps(expected);
    if (expected.GetSize() == 0) expected = Of<VecCplx32>(natural);
    TypeParam::ResizeFilterTaps(expected, count, expected.GetSize());
    filter.SetParameters(10.0F, 1.0F, 0.0F, count);
    EXPECT_EQ(CplxTaps(filter), List(expected)) << count;
    EXPECT_EQ(filter.GetDelay(), static_cast<float>((count - 1) / 2)) << count;
    EXPECT_EQ(test::FilterProbe::TapSize(filter), count);
  }
  // The same rates: what was cut off is not made again. Others: everything is.
  filter.SetParameters(10.0F, 1.0F, 0.0F, 0);
  EXPECT_EQ(CplxTaps(filter).size(), 1U);
  filter.SetParameters(10.0F, 1.0F, 0.0F, -3);
  EXPECT_EQ(CplxTaps(filter).size(), 1U);
  filter.SetParameters(20.0F, 2.0F, 0.0F, 0);
  EXPECT_EQ(CplxTaps(filter), natural);
  filter.SetParameters(20.0F, 4.0F, 0.0F, 0);
  EXPECT_EQ(CplxTaps(filter), Computed<TypeParam>(Noise(9), 2.0F, 5.0F));
}

TYPED_TEST(UserTaps, SetParameters_TheSameRates_ComputesNothing) {
  Reached<TypeParam> filter;
  filter.SetUserTaps(Of<VecCplx32>(Noise(9)), 2.0F);
  filter.SetParameters(10.0F, 1.0F, 0.0F, 0);
  const long before = test::AllocationCount();
  filter.SetParameters(10.0F, 1.0F, 0.0F, 0);
  EXPECT_EQ(test::AllocationCount(), before);
}

TYPED_TEST(UserTaps, SetParameters_AfterMemoryFailed_DesignsAgain) {
  Reached<TypeParam> filter;
  const auto expected = Computed<TypeParam>(Noise(9), 2.0F, 100.0F);
  testing::internal::CaptureStdout();
  filter.SetUserTaps(Of<VecCplx32>(Noise(9)), 2.0F);
  {
    const test::AllocationLimit limit(1000);
    EXPECT_THROW(filter.SetParameters(100.0F, 1.0F, 0.0F, 0), QORNException);
  }
  filter.SetParameters(100.0F, 1.0F, 0.0F, 0);
  EXPECT_EQ(CplxTaps(filter), expected);
  {
    const auto taps = Of<VecCplx32>(Noise(99));
    const test::AllocationLimit limit(1000);
    EXPECT_THROW(filter.SetUserTaps(taps, 2.0F), QORNException);
  }
  testing::internal::GetCapturedStdout();
  filter.SetUserTaps(Of<VecCplx32>(Noise(9)), 2.0F);
  filter.SetParameters(100.0F, 1.0F, 0.0F, 0);
  EXPECT_EQ(CplxTaps(filter), expected);
}

TYPED_TEST(UserTaps, Clear_AfterADesign_LeavesTheTapsAndStoresRatesOnly) {
  Reached<TypeParam> filter;
  filter.SetUserTaps(Of<VecCplx32>(Noise(9)), 2.0F);
  filter.SetParameters(10.0F, 1.0F, 0.0F, 0);
  const auto taps = CplxTaps(filter);
  filter.Clear();
  EXPECT_FALSE(filter.Present());
  EXPECT_FALSE(filter.Set());
  EXPECT_EQ(filter.GetRecommendedTapSize(10.0F, 1.0F, 0.0F), 1023);
  filter.SetParameters(40.0F, 2.0F, 0.0F, 5);
  EXPECT_EQ(CplxTaps(filter), taps);
  EXPECT_EQ(filter.GetSamplingRate(), 40.0F);
  EXPECT_EQ(filter.Rate(), 2.0F);
  EXPECT_TRUE(filter.IsComplexFilter());
}

TYPED_TEST(UserTaps, Apply_EmptyDesign_GivesZeros) {
  TypeParam filter;
  filter.SetUserTaps(Of<VecCplx32>(Noise(9)), 0.0F);
  filter.SetParameters(10.0F, 1.0F, 0.0F, 0);
  EXPECT_TRUE(CplxTaps(filter).empty());
  VecCplx32 out;
  filter.Apply(out, Of<VecCplx32>(Noise(4)), true);
  EXPECT_EQ(List(out), Complexes(4));
  VecReal32 real;
  filter.Apply(real, Of<VecReal32>({1.0F, 2.0F}), true);
  EXPECT_EQ(List(real), Samples(2, 0.0F));
}

TEST(UserDefinedFilter, Apply_ComplexSamples_TakesTheComplexTaps) {
  UserDefinedFilter filter;
  filter.SetUserTaps(Of<VecReal32>({1.0F, 3.0F, 1.0F}), 4.0F);
  filter.SetParameters(4.0F, 1.0F, 0.0F, 0);
  const auto taps = CplxTaps(filter);
  VecCplx32 in(static_cast<int>(taps.size())), out;
  in[0] = {1.0F, 0.0F};
  filter.Apply(out, in, false);
  EXPECT_EQ(List(out), taps);
  EXPECT_FALSE(filter.IsIntegralFilter());
}

// The hold steps as they are told.
template <class T, class Times>
std::vector<T> Held(const std::vector<T> &taps, const std::vector<T> &in, int s, Times times) {
  const int T0 = static_cast<int>(taps.size()), L = static_cast<int>(in.size());
  std::vector<T> out(in.size());
  for (int n = 0; n < L; ++n) {
    const int e = std::min(n - s + T0 - 1, L - 1);
    if (e < 0) continue;
    for (int m = std::max(n - s, 0); m <= e; ++m) {
      if (m - n + s >= T0) continue;
      out[static_cast<std::size_t>(m)] =
          times(out[static_cast<std::size_t>(m)], taps[static_cast<std::size_t>(m - n + s)],
                in[static_cast<std::size_t>(n)]);
    }
    if (e < L - 1) out[static_cast<std::size_t>(e + 1)] = out[static_cast<std::size_t>(e)];
  }
  return out;
}

IntegralUserDefinedFilter Designed(float shift, int count = 0) {
  IntegralUserDefinedFilter filter;
  filter.SetUserTaps(Of<VecCplx32>({{1.0F, 0.5F}, {2.0F, 0.0F}, {1.0F, -1.0F}}), 4.0F);
  filter.SetParameters(8.0F, 1.0F, 0.0F, count);
  filter.SetTimeShift(shift);
  return filter;
}

TEST(IntegralUserDefinedFilter, Apply_AnySamples_IsTheToldSumWithItsHold) {
  Complexes in = Noise(60);
  for (const std::size_t zero : {0U, 3U, 4U, 5U, 20U, 59U}) in[zero] = {0.0F, 0.0F};
  Samples real;
  for (const Cplx32 x : in) real.push_back(x.re);
  for (const float shift : {0.0F, 0.25F, -0.5F, 0.06F, 0.07F, -5.0F, 4.0F}) {
    for (const int count : {0, 1, 12, 100}) {
      auto filter = Designed(shift, count);
      const auto taps = CplxTaps(filter);
      Samples realTaps;
      for (const Cplx32 x : taps) realTaps.push_back(x.re);
      const int s = static_cast<int>(std::floor(static_cast<double>(8.0F * shift + filter.GetDelay()) + 0.5));
      for (const bool centre : {false, true}) {
        VecCplx32 out;
        filter.Apply(out, Of<VecCplx32>(in), centre);
        EXPECT_EQ(List(out), Held(taps, in, s,
                                  [](Cplx32 sum, Cplx32 a, Cplx32 b) {
                                    const float re = a.re * b.re - a.im * b.im,
                                                im = a.re * b.im + a.im * b.re;
                                    return Cplx32{sum.re + re, sum.im + im};
                                  }))
            << shift << ' ' << count;
        VecReal32 realOut;
        filter.Apply(realOut, Of<VecReal32>(real), centre);
        EXPECT_EQ(List(realOut), Held(realTaps, real, s,
                                      [](float sum, float a, float b) {
                                        const float part = a * b;
                                        return sum + part;
                                      }))
            << shift << ' ' << count;
      }
    }
  }
}

TEST(IntegralUserDefinedFilter, Apply_OneInput_RisesAndStaysAtItsFinalLevel) {
  auto filter = Designed(0.0F);
  const auto taps = CplxTaps(filter);
  const int half = static_cast<int>(taps.size()) / 2;
  VecReal32 in(200), out;
  in[60] = 2.0F;
  filter.Apply(out, in, true);
  for (int m = 0; m < 60 - half; ++m) EXPECT_EQ(out[m], 0.0F) << m;
  for (int i = 0; i <= 2 * half; ++i) {
    EXPECT_EQ(out[60 - half + i], taps[static_cast<std::size_t>(i)].re * 2.0F) << i;
  }
  for (int m = 60 + half; m < 200; ++m) EXPECT_EQ(out[m], taps.back().re * 2.0F) << m;
  VecCplx32 complexIn(200), complexOut;
  complexIn[60] = {1.0F, 0.0F};
  filter.Apply(complexOut, complexIn, true);
  for (int m = 60 + half; m < 200; ++m) EXPECT_EQ(complexOut[m], taps.back()) << m;
  EXPECT_NEAR(std::hypot(complexOut[199].re, complexOut[199].im), 1.0F, 2e-7F);
}

TEST(IntegralUserDefinedFilter, SetTimeShift_AnyShift_MovesByWholeSamples) {
  VecReal32 in(300), still, moved;
  in[150] = 1.0F;
  Designed(0.0F).Apply(still, in, true);
  for (const float shift : {0.125F, 0.25F, -0.375F, 0.05F, 0.07F, 0.06F}) {
    Designed(shift).Apply(moved, in, true);
    const int whole = static_cast<int>(std::floor(8 * static_cast<double>(shift) + 0.5));
    for (int m = 100; m < 200; ++m) EXPECT_EQ(moved[m], still[m + whole]) << shift << ' ' << m;
  }
}

TEST(IntegralUserDefinedFilter, Apply_ShiftBeyondTheBlock_IsHarmless) {
  const auto in = Of<VecReal32>({1.0F, 2.0F, 3.0F});
  VecReal32 out;
  for (const float shift :
       {1e30F, std::numeric_limits<float>::infinity(), std::numeric_limits<float>::quiet_NaN(), 1e9F, -1e30F,
        -std::numeric_limits<float>::infinity(), -1e9F}) {
    Designed(shift).Apply(out, in, true);
    EXPECT_EQ(List(out), Samples(3, 0.0F)) << shift;
  }
}

TEST(IntegralUserDefinedFilter, Apply_OutputThatIsTheInput_GivesTheSame) {
  auto filter = Designed(0.0F);
  VecCplx32 expected, same = Of<VecCplx32>(Noise(50));
  filter.Apply(expected, same, true);
  filter.Apply(same, same, true);
  EXPECT_EQ(List(same), List(expected));
  VecReal32 out;
  filter.Apply(out, VecReal32(), true);
  EXPECT_EQ(out.GetSize(), 0);
}

TEST(IntegralUserDefinedFilter, Apply_RealIntoComplex_IsThePlainConvolution) {
  auto filter = Designed(0.0F);
  const auto taps = CplxTaps(filter);
  VecReal32 in(static_cast<int>(taps.size()));
  in[0] = 1.0F;
  VecCplx32 out;
  filter.Apply(out, in, false);
  EXPECT_EQ(List(out), taps);
  EXPECT_TRUE(filter.IsIntegralFilter());
}

} // namespace
