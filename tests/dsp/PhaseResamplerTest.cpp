#include "qorn/dsp/PhaseResampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"
#include "support/Allocations.h"
#include "support/Resampling.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Noise;
using test::Of;

// The stated filter, step by step; the delay is left alone if none is found.
std::vector<float> StatedFilter(int n, float frac, int &delay) {
  const int mid = (n - 1) / 2;
  std::vector<float> coef(static_cast<std::size_t>(n), 0.0F);
  coef[static_cast<std::size_t>(mid)] = 1.0F;
  int k = frac >= 0.0F ? 1 : 0;
  float d = static_cast<float>(k) - frac;
  while (std::fabs(static_cast<float>(mid) - d) > 0.5F) {
    k += 1;
    d = static_cast<float>(static_cast<double>(d) + 1.0);
    if (k > 2 * mid) return coef;
  }
  delay = k;
  for (int i = 0; i < n; ++i) {
    float product = 1.0F;
    for (int m = 0; m < n; ++m) {
      if (m == i) continue;
      product = product * (d - static_cast<float>(m));
      product = product / static_cast<float>(i - m);
    }
    coef[static_cast<std::size_t>(i)] = product;
  }
  return coef;
}

// The filter of a resampler: what comes out for an impulse.
std::vector<float> Filter(PhaseResampler &resampler, int n, float frac, int &delay) {
  VecReal32 impulse(n), out;
  impulse[0] = 1.0F;
  resampler.Apply(out, delay, impulse, frac);
  return List(out);
}

TEST(PhaseResampler, Apply_AnyFraction_UsesTheStatedFilter) {
  for (const int n : {15, 1, 2, 3, 4, 5, 7, 8, 21, 33}) {
    for (const float frac : {0.0F, 0.25F, -0.25F, 0.5F, -0.5F, 0.75F, 1.0F, -1.0F, 0.3333333F, 2.6F, -3.9F,
                             6.99F, 7.4F, 7.6F, 8.0F, 8.5F, -8.0F, 1e9F, -1e9F}) {
      SCOPED_TRACE(testing::Message() << n << " taps, " << frac);
      PhaseResampler resampler;
      resampler.SetFilterLength(n);
      int delay = 1000, stated = 1000;
      const auto expected = StatedFilter(n, frac, stated);
      EXPECT_EQ(Filter(resampler, n, frac, delay), expected);
      EXPECT_EQ(delay, stated + (n - 1) / 2);
    }
  }
}

TEST(PhaseResampler, Apply_FractionOfZero_IsAnImpulseAtTheMiddleTap) {
  PhaseResampler resampler;
  EXPECT_EQ(resampler.GetPreCharge(), 7);
  int delay = 0;
  std::vector<float> impulse(15, 0.0F);
  impulse[7] = 1.0F;
  EXPECT_EQ(Filter(resampler, 15, 0.0F, delay), impulse);
  EXPECT_EQ(delay, 14);
}

TEST(PhaseResampler, Apply_QuarterOfASample_DelaysBySeven) {
  PhaseResampler resampler;
  int delay = 0;
  const auto coef = Filter(resampler, 15, 0.25F, delay);
  EXPECT_EQ(delay, 14);
  // Lagrange's basis at 6.75, in long double.
  for (int i = 0; i < 15; ++i) {
    long double product = 1.0L;
    for (int m = 0; m < 15; ++m) {
      if (m != i) product *= (6.75L - m) / (i - m);
    }
    EXPECT_NEAR(coef[static_cast<std::size_t>(i)], static_cast<double>(product), 1e-6);
  }
}

// Beyond the reach of the filter: an impulse, and a delay that is the caller's plus the pre-charge.
TEST(PhaseResampler, Apply_FractionBeyondTheFilter_LeavesTheDelayToTheCaller) {
  PhaseResampler resampler;
  std::vector<float> impulse(15, 0.0F);
  impulse[7] = 1.0F;
  for (const float frac : {8.0F, 100.0F, -100.0F, std::numeric_limits<float>::infinity(),
                           -std::numeric_limits<float>::infinity()}) {
    int delay = 500;
    EXPECT_EQ(Filter(resampler, 15, frac, delay), impulse) << frac;
    EXPECT_EQ(delay, 507) << frac;
  }
}

TEST(PhaseResampler, Apply_ToneShifted_IsTheToneBetweenTheSamples) {
  for (const float frac : {0.25F, -0.4F, 0.5F, 2.3F, -1.7F}) {
    PhaseResampler resampler;
    const double frequency = 0.07;
    const VecCplx32 src = test::CplxTone(200, frequency);
    VecCplx32 out;
    int delay = 0;
    resampler.Apply(out, delay, src, frac);
    ASSERT_EQ(out.GetSize(), 200);
    VecReal32 real(200), realOut;
    for (int i = 0; i < 200; ++i) real[i] = src[i].re;
    int realDelay = 0;
    resampler.Apply(realOut, realDelay, real, frac);
    ASSERT_EQ(realOut.GetSize(), 200);
    EXPECT_EQ(realDelay, delay);
    for (int n = std::max(14 - delay, 0); n + delay < 200; ++n) {
      const double phase =
          2.0 * std::numbers::pi * frequency * (n + resampler.GetPreCharge() + static_cast<double>(frac));
      ASSERT_NEAR(out[n + delay].re, std::cos(phase), 3e-6) << frac << " " << n;
      ASSERT_NEAR(out[n + delay].im, std::sin(phase), 3e-6) << frac << " " << n;
      ASSERT_NEAR(realOut[n + delay], std::cos(phase), 3e-6) << frac << " " << n;
    }
  }
}

TEST(PhaseResampler, SetFilterLength_BelowOne_GivesZeros) {
  for (const int n : {0, -1, -15, std::numeric_limits<int>::min()}) {
    PhaseResampler resampler;
    resampler.SetFilterLength(n);
    VecReal32 out;
    out.Set(7.0F, 20);
    VecCplx32 cplx;
    cplx.Set({7.0F, 7.0F}, 20);
    int delay = 0;
    resampler.Apply(out, delay, Of<VecReal32>(Noise(20)), 0.25F);
    EXPECT_EQ(List(out), std::vector<float>(20, 0.0F)) << n;
    resampler.Apply(cplx, delay, VecCplx32(20), 0.25F);
    EXPECT_EQ(List(cplx), std::vector<Cplx32>(20, Cplx32{0.0F, 0.0F})) << n;
  }
}

TEST(PhaseResampler, Apply_RecordsShorterThanTheFilter_KeepTheirLength) {
  PhaseResampler resampler;
  int delay = 0;
  VecReal32 out;
  resampler.Apply(out, delay, VecReal32(), 0.25F);
  EXPECT_EQ(out.GetSize(), 0);
  resampler.Apply(out, delay, Of<VecReal32>({1.0F, 2.0F}), 0.0F);
  EXPECT_EQ(List(out), (std::vector<float>{0.0F, 0.0F}));
  VecCplx32 cplx;
  resampler.Apply(cplx, delay, VecCplx32(), 0.25F);
  EXPECT_EQ(cplx.GetSize(), 0);
}

TEST(PhaseResampler, Copies_KeepTheirLengthAndScratch) {
  PhaseResampler source;
  source.SetFilterLength(5);
  PhaseResampler copy(source), assigned;
  assigned = source;
  source.SetFilterLength(9);
  EXPECT_EQ(copy.GetPreCharge(), 2);
  EXPECT_EQ(assigned.GetPreCharge(), 2);
  int delay = 0, stated = 0;
  EXPECT_EQ(Filter(copy, 5, 0.3F, delay), StatedFilter(5, 0.3F, stated));
}

TEST(PhaseResampler, Apply_KeptRealDestination_AllocatesNothing) {
  PhaseResampler resampler;
  const auto src = Of<VecReal32>(Noise(1000));
  VecReal32 out;
  int delay = 0;
  resampler.Apply(out, delay, src, 0.25F);
  const long before = test::AllocationCount();
  resampler.Apply(out, delay, src, 0.35F);
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
