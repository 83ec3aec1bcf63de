#include "qorn/dsp/ArbRateResampler.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <numbers>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/infra/QORNException.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/Resampling.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::CplxTone;
using test::Decibels;
using test::Joined;
using test::List;
using test::Noise;
using test::Of;
using test::StatedRun;
using test::ToneFit;
using test::Wing;

static_assert(!std::has_virtual_destructor_v<ArbRateResampler>);

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr float kNanF = std::numeric_limits<float>::quiet_NaN();

struct DesignCase {
  const char *name;
  float window;
  int nStep;
  float rollf, alpha;
};

const DesignCase kDesigns[] = {
    {"default", 90.0F, 16, 0.9F, 6.1422F}, {"sequential", 10.0F, 200, 0.95F, 6.865F},
    {"OFDM", 16.0F, 50, 0.625F, 6.1422F},  {"OFDM, wide", 16.0F, 50, 0.98F, 6.1422F},
    {"odd lengths", 7.3F, 11, 0.8F, 5.0F}, {"one point per sample", 24.0F, 1, 0.7F, 3.0F},
    {"two points", 31.0F, 2, 0.9F, 0.0F},  {"fine", 20.0F, 512, 0.9F, 10.0F},
};

Wing WingOf(const DesignCase &c) {
  return {static_cast<double>(c.window), c.nStep, static_cast<double>(c.rollf), c.alpha};
}

ArbRateResampler Make(const DesignCase &c, double ratio) {
  return {ratio, c.window, c.nStep, c.rollf, c.alpha};
}

std::vector<float> Taps(ArbRateResampler resampler) {
  VecReal32 taps;
  double step = 0.0;
  resampler.GetCoefficients(taps, step);
  return List(taps);
}

std::vector<float> Real(const VecCplx32 &x) {
  std::vector<float> parts;
  for (int i = 0; i < x.GetSize(); ++i) parts.push_back(x[i].re);
  return parts;
}
std::vector<float> Imag(const VecCplx32 &x) {
  std::vector<float> parts;
  for (int i = 0; i < x.GetSize(); ++i) parts.push_back(x[i].im);
  return parts;
}

TEST(ArbRateResampler, GetCoefficients_EveryDesign_IsTheStatedFilter) {
  for (const DesignCase &c : kDesigns) {
    SCOPED_TRACE(c.name);
    const Wing wing = WingOf(c);
    auto resampler = Make(c, 0.7);
    VecReal32 taps;
    double step = 0.0;
    resampler.GetCoefficients(taps, step);
    EXPECT_EQ(step, c.nStep);
    ASSERT_EQ(taps.GetSize(), 2 * wing.length - 1);
    for (int j = 0; j < wing.length; ++j) {
      const double expected = wing.exact[static_cast<std::size_t>(j)];
      ASSERT_NEAR(static_cast<double>(taps[wing.length - 1 + j]), expected,
                  2e-7 * std::fabs(expected) + 1e-12)
          << j;
      ASSERT_EQ(taps[wing.length - 1 - j], taps[wing.length - 1 + j]) << j;
    }
  }
}

TEST(ArbRateResampler, GetCoefficients_EachPhase_SumsToOne) {
  for (const DesignCase &c : kDesigns) {
    SCOPED_TRACE(c.name);
    const auto taps = Taps(Make(c, 1.0));
    for (int phase = 0; phase < c.nStep; ++phase) {
      double sum = 0.0;
      for (auto j = static_cast<std::size_t>(phase); j < taps.size(); j += static_cast<std::size_t>(c.nStep))
        sum += static_cast<double>(taps[j]);
      ASSERT_NEAR(sum, 1.0, 3e-7) << phase;
    }
  }
}

TEST(ArbRateResampler, Constructors_ShorterForms_TakeTheDefaults) {
  EXPECT_EQ(Taps(ArbRateResampler(2.0)), Taps(ArbRateResampler(2.0, 90.0F, 16, 0.9F, 6.1422F)));
  EXPECT_EQ(Taps(ArbRateResampler(0.5, 20.0F, 8)), Taps(ArbRateResampler(0.5, 20.0F, 8, 0.9F, 6.1422F)));
  EXPECT_NE(Taps(ArbRateResampler(0.5, 20.0F, 8, 0.8F, 6.1422F)), Taps(ArbRateResampler(0.5, 20.0F, 8)));
  EXPECT_NE(Taps(ArbRateResampler(0.5, 20.0F, 8, 0.9F, 5.0F)), Taps(ArbRateResampler(0.5, 20.0F, 8)));
  EXPECT_EQ(ArbRateResampler(0.75).GetRatio(), 0.75);
}

TEST(ArbRateResampler, GetHistory_RatioAboveAndBelowOne_CoversTheWing) {
  EXPECT_EQ(ArbRateResampler(1.0).GetHistory(), 46);
  EXPECT_EQ(ArbRateResampler(7.5).GetHistory(), 46);
  EXPECT_EQ(ArbRateResampler(0.5).GetHistory(), 91);
  EXPECT_EQ(ArbRateResampler(0.7123).GetHistory(), 64); // 45 / 0.7123 = 63.2
  EXPECT_EQ(ArbRateResampler(1.0, 7.0F, 16).GetHistory(), 4);
  EXPECT_EQ(ArbRateResampler(0.3, 7.0F, 16).GetHistory(), 12);
}

// One record with margins, at each level, against the stated loop in double.
TEST(ArbRateResampler, Apply_PrimaryKernel_FollowsTheStatedLoop) {
  for (const DesignCase &c : kDesigns) {
    const Wing wing = WingOf(c);
    for (const double ratio : {1.0, 1.2345, 2.0, 1.0 / 0.3, 31.7, 0.999, 0.7123, 0.5, 1.0 / 3.0, 0.0513}) {
      for (const auto &level : kernels::AvailableLevels()) {
        SCOPED_TRACE(testing::Message() << c.name << ", ratio " << ratio << ", " << level.name);
        const kernels::ScopedLevel scoped(level);
        auto resampler = Make(c, ratio);
        const int history = resampler.GetHistory();
        const auto src = Noise(2 * history + 2 + static_cast<int>(std::ceil(40.0 / ratio)));
        VecReal32 out;
        ASSERT_EQ(resampler.Apply(out, Of<VecReal32>(src)), history);
        const StatedRun stated(wing, src, history, static_cast<int>(src.size()) - 2 * history - 2, ratio,
                               false);
        ASSERT_EQ(out.GetSize(), static_cast<int>(stated.out.size()));
        for (int i = 0; i < out.GetSize(); ++i) {
          ASSERT_NEAR(out[i], stated.out[static_cast<std::size_t>(i)], 1e-6) << i;
        }
      }
    }
  }
}

TEST(ArbRateResampler, Apply_AlternateKernel_IsTheStatedLoopBitForBit) {
  for (const DesignCase &c : kDesigns) {
    const Wing wing = WingOf(c);
    for (const double ratio : {0.999, 0.7123, 0.5, 1.0 / 3.0, 0.0513}) {
      for (const double time : {0.0, 11.0, 11.37, 45.9999999, 46.0000001}) {
        SCOPED_TRACE(testing::Message() << c.name << ", ratio " << ratio << ", time " << time);
        auto resampler = Make(c, ratio);
        resampler.UseAlternateResampler(true);
        const auto re = Noise(400), im = Noise(400, 7);
        const StatedRun stated(wing, re, time, 300, ratio, true), other(wing, im, time, 300, ratio, true);
        VecReal32 out;
        ASSERT_EQ(resampler.Apply(out, Of<VecReal32>(re), time, 300), stated.next);
        ASSERT_EQ(List(out), stated.out);
        VecCplx32 cplx;
        ASSERT_EQ(resampler.Apply(cplx, Joined(re, im), time, 300), stated.next);
        ASSERT_EQ(Real(cplx), stated.out);
        ASSERT_EQ(Imag(cplx), other.out);
      }
    }
  }
}

TEST(ArbRateResampler, UseAlternateResampler_RatioOfOneOrMore_LeavesThePrimaryKernel) {
  // A tone at 0.4 of the sampling rate: the primary kernel keeps it from aliasing at a ratio below 1.
  const auto src = CplxTone(600, 0.4);
  VecCplx32 plain, chosen, undone;
  for (const double ratio : {1.0, 1.5}) {
    ArbRateResampler resampler(ratio);
    resampler.Apply(plain, src);
    resampler.UseAlternateResampler(true);
    resampler.Apply(chosen, src);
    EXPECT_EQ(List(chosen), List(plain));
  }
  ArbRateResampler resampler(0.5);
  resampler.Apply(plain, src);
  resampler.UseAlternateResampler(true);
  resampler.Apply(chosen, src);
  resampler.UseAlternateResampler(false);
  resampler.Apply(undone, src);
  EXPECT_LT(std::fabs(plain[50].re), 1e-3F);
  EXPECT_NEAR(std::hypot(chosen[50].re, chosen[50].im), 1.0F, 0.01F);
  EXPECT_EQ(List(undone), List(plain));
}

TEST(ArbRateResampler, Apply_WholeRecord_ConsumesAllButTheMargins) {
  for (const double ratio : {2.0, 1.0, 0.5}) {
    for (const bool alternate : {false, true}) {
      ArbRateResampler resampler(ratio);
      resampler.UseAlternateResampler(alternate);
      const int history = resampler.GetHistory();
      VecReal32 dst;
      EXPECT_EQ(resampler.Apply(dst, VecReal32(2 * history + 2 + 10)), history);
      EXPECT_EQ(dst.GetSize(), static_cast<int>(10 * ratio));
      VecCplx32 cplx;
      EXPECT_EQ(resampler.Apply(cplx, VecCplx32(2 * history + 2 + 11)), history);
      EXPECT_EQ(cplx.GetSize(), static_cast<int>(std::ceil(11 * ratio)));
    }
  }
}

// A record of no more than its margins: the length is the upper bound of the first sizing.
TEST(ArbRateResampler, Apply_WholeRecordOfMarginsAlone_KeepsTheFirstSize) {
  for (const double ratio : {2.0, 1.0, 0.5}) {
    for (const bool alternate : {false, true}) {
      ArbRateResampler resampler(ratio);
      resampler.UseAlternateResampler(alternate);
      const int history = resampler.GetHistory();
      VecReal32 dst;
      EXPECT_EQ(resampler.Apply(dst, VecReal32(2 * history + 2)), history);
      EXPECT_EQ(dst.GetSize(), static_cast<int>(history * ratio + 2.0));
      EXPECT_EQ(resampler.Apply(dst, VecReal32(history + 2)), history);
      EXPECT_EQ(dst.GetSize(), 2);
      EXPECT_EQ(resampler.Apply(dst, VecReal32()), history);
      EXPECT_EQ(dst.GetSize(), static_cast<int>(-(history + 2) * ratio + 2.0));
      VecCplx32 cplx;
      EXPECT_EQ(resampler.Apply(cplx, VecCplx32(2 * history + 1)), history);
      EXPECT_EQ(cplx.GetSize(), static_cast<int>((history - 1) * ratio + 2.0));
    }
  }
}

TEST(ArbRateResampler, Apply_FromATimeWithoutOutputs_KeepsTheFirstSize) {
  VecReal32 dst;
  const VecReal32 src(100);
  ArbRateResampler up(1.5), down(0.75);
  EXPECT_EQ(up.Apply(dst, src, 50.0, 0), 50.0);
  EXPECT_EQ(dst.GetSize(), 151); // by the length of the source
  EXPECT_EQ(up.Apply(dst, src, 50.25, -3), 50.25);
  EXPECT_EQ(dst.GetSize(), 151);
  EXPECT_EQ(down.Apply(dst, src, 50.0, 0), 50.0);
  EXPECT_EQ(dst.GetSize(), 0); // by the count
  EXPECT_EQ(down.Apply(dst, src, 50.0, -3), 50.0);
  EXPECT_EQ(dst.GetSize(), -3);
  down.UseAlternateResampler(true);
  EXPECT_EQ(down.Apply(dst, src, 50.5, -3), 50.5);
  EXPECT_EQ(dst.GetSize(), -3);
}

// A run stops on the first instant at or behind trunc(time) + len and returns it.
TEST(ArbRateResampler, Apply_TimeWithAFraction_CarriesItExactly) {
  const VecReal32 src(200);
  VecReal32 dst;
  for (const bool alternate : {false, true}) {
    ArbRateResampler resampler(0.8); // steps of 1.25
    resampler.UseAlternateResampler(alternate);
    EXPECT_EQ(resampler.Apply(dst, src, 60.5, 10), 70.5);
    EXPECT_EQ(dst.GetSize(), 8);
    EXPECT_EQ(resampler.Apply(dst, src, 60.25, 10), 70.25);
    EXPECT_EQ(dst.GetSize(), 8);
    EXPECT_EQ(resampler.Apply(dst, src, 60.0, 11), 71.25);
    EXPECT_EQ(dst.GetSize(), 9);
    EXPECT_EQ(resampler.Apply(dst, src, 60.75, 1), 62.0);
    EXPECT_EQ(dst.GetSize(), 1);
  }
  ArbRateResampler up(4.0);
  EXPECT_EQ(up.Apply(dst, src, 60.875, 1), 61.125);
  EXPECT_EQ(dst.GetSize(), 1);
  EXPECT_EQ(up.Apply(dst, src, 60.125, 3), 63.125);
  EXPECT_EQ(dst.GetSize(), 12);
}

// Ten million steps that no double can hold exactly.
TEST(ArbRateResampler, Apply_LongRun_DoesNotDriftFromItsInstants) {
  const VecReal32 src;
  VecReal32 dst;
  for (const double ratio : {0.9123456789, 1.0123456789}) {
    ArbRateResampler resampler(ratio, 2.0F, 1);
    const double next = resampler.Apply(dst, src, 0.25, 10000000);
    const long double exact = 0.25L + dst.GetSize() * static_cast<long double>(1.0 / ratio);
    EXPECT_NEAR(static_cast<double>(next - exact), 0.0, 1e-9);
    EXPECT_GE(next, 10000000.0);
    EXPECT_LT(next - 1.0 / ratio, 10000000.0);
  }
}

TEST(ArbRateResampler, Apply_AnyTime_TakesWhatIsOutsideTheSourceForZero) {
  for (const DesignCase &c : kDesigns) {
    const Wing wing = WingOf(c);
    const auto re = Noise(37), im = Noise(37, 5);
    for (const double ratio : {3.3, 1.0, 0.71, 0.04}) {
      for (const bool alternate : {false, true}) {
        for (const double time : {-300.3, -46.0, -7.25, -0.5, 0.0, 12.75, 36.0, 80.1, 2147480000.4}) {
          SCOPED_TRACE(testing::Message()
                       << c.name << ", ratio " << ratio << ", time " << time << ", " << alternate);
          auto resampler = Make(c, ratio);
          resampler.UseAlternateResampler(alternate);
          VecCplx32 out;
          const double next = resampler.Apply(out, Joined(re, im), time, 60);
          const bool second = alternate && ratio < 1.0;
          const StatedRun statedRe(wing, re, time, 60, ratio, second),
              statedIm(wing, im, time, 60, ratio, second);
          ASSERT_EQ(out.GetSize(), static_cast<int>(statedRe.out.size()));
          ASSERT_EQ(next, statedRe.next);
          for (int i = 0; i < out.GetSize(); ++i) {
            const auto at = static_cast<std::size_t>(i);
            ASSERT_NEAR(out[i].re, statedRe.out[at], second ? 0.0 : 1e-6) << i;
            ASSERT_NEAR(out[i].im, statedIm.out[at], second ? 0.0 : 1e-6) << i;
          }
        }
      }
    }
  }
}

TEST(ArbRateResampler, Apply_TimeOutOfRange_GivesNoOutputs) {
  const VecReal32 src(100);
  VecReal32 dst;
  for (const double ratio : {1.5, 0.5}) {
    for (const bool alternate : {false, true}) {
      ArbRateResampler resampler(ratio);
      resampler.UseAlternateResampler(alternate);
      for (const double time : {kInfinity, -kInfinity, 1e300, -1e300, 2147483648.0, -2147483648.0}) {
        EXPECT_EQ(resampler.Apply(dst, src, time, 10), time);
        EXPECT_EQ(dst.GetSize(), ratio < 1.0 ? 10 : 151);
      }
      EXPECT_TRUE(std::isnan(resampler.Apply(dst, src, kNan, 10)));
      EXPECT_EQ(dst.GetSize(), ratio < 1.0 ? 10 : 151);
    }
  }
}

TEST(ArbRateResampler, Apply_RatioThatIsNoRatio_GivesNoOutputs) {
  const VecReal32 src(100);
  VecReal32 dst;
  for (const double ratio : {0.0, -0.0, -0.5, -2.0, kInfinity, -kInfinity, kNan, 1e-320}) {
    SCOPED_TRACE(ratio);
    ArbRateResampler resampler(ratio, 16.0F, 8);
    resampler.UseAlternateResampler(true);
    EXPECT_EQ(resampler.Apply(dst, src, 50.5, 10), 50.5);
    EXPECT_EQ(dst.GetSize(), ratio < 1.0 ? 10 : 0);
    EXPECT_EQ(resampler.Apply(dst, src), resampler.GetHistory());
    VecCplx32 cplx;
    EXPECT_EQ(resampler.Apply(cplx, VecCplx32(100), 50.5, 10), 50.5);
  }
}

TEST(ArbRateResampler, Apply_RatioFarFromOne_EndsAndGivesItsOutputs) {
  VecReal32 dst;
  const auto src = Of<VecReal32>(Noise(100));
  // Steps far below the spacing of doubles at the start time.
  ArbRateResampler fine(1e8, 8.0F, 4);
  EXPECT_GE(fine.Apply(dst, VecReal32(), 1e9 + 0.999999, 1), 1e9 + 1.0);
  EXPECT_NEAR(dst.GetSize(), 100, 12);
  // One output, and the next one out of sight.
  ArbRateResampler coarse(1e-300, 8.0F, 4);
  EXPECT_EQ(coarse.Apply(dst, src, 50.0, 10), 1.0 / 1e-300);
  EXPECT_EQ(dst.GetSize(), 1);
  EXPECT_TRUE(std::isfinite(dst[0]));
  coarse.UseAlternateResampler(true);
  EXPECT_EQ(coarse.Apply(dst, src, 50.0, 10), 1.0 / 1e-300);
  EXPECT_EQ(dst.GetSize(), 1);
}

TEST(ArbRateResampler, Apply_MoreOutputsThanAVectorHolds_ReportsMemory) {
  const auto expectRefused = [](double ratio, int len) {
    ArbRateResampler resampler(ratio, 8.0F, 4);
    VecReal32 dst;
    QORNException exception(0, "", "", 0);
    test::PrintedBy(
        [&] { exception = test::ThrownBy([&] { resampler.Apply(dst, VecReal32(10), 0.0, len); }); });
    EXPECT_EQ(exception.GetErrorCode(), 11001) << ratio << ", " << len;
  };
  expectRefused(1e300, 1);
  expectRefused(1e10, 1);
  expectRefused(0.5, std::numeric_limits<int>::max());
  expectRefused(1.0, std::numeric_limits<int>::max());
}

TEST(ArbRateResampler, Apply_FilterWithoutPoints_GivesZeros) {
  const auto src = Of<VecReal32>(Noise(50));
  for (const auto &[window, nStep] : {std::pair{0.0F, 16},
                                      {-90.0F, 16},
                                      {kNanF, 16},
                                      {90.0F, 0},
                                      {90.0F, -5},
                                      {-90.0F, -16},
                                      {0.1F, 1},
                                      {90.0F, std::numeric_limits<int>::min()}}) {
    for (const double ratio : {2.0, 0.5}) {
      for (const bool alternate : {false, true}) {
        SCOPED_TRACE(testing::Message() << window << " " << nStep << " " << ratio);
        ArbRateResampler resampler(ratio, window, nStep);
        resampler.UseAlternateResampler(alternate);
        VecReal32 dst;
        dst.Set(7.0F, 100);
        EXPECT_EQ(resampler.Apply(dst, src, 20.0, 10), 30.0);
        EXPECT_EQ(List(dst), std::vector<float>(static_cast<std::size_t>(10 * ratio), 0.0F));
        VecReal32 taps(3);
        double step = 0.0;
        resampler.GetCoefficients(taps, step);
        EXPECT_EQ(taps.GetSize(), -1);
        EXPECT_EQ(step, nStep);
      }
    }
  }
}

TEST(ArbRateResampler, Constructor_HugeDesign_ReportsMemory) {
  constexpr int kMost = std::numeric_limits<int>::max();
  constexpr float kInfinityF = std::numeric_limits<float>::infinity();
  for (const auto &[window, nStep] :
       {std::pair{90.0F, kMost}, {1e30F, 16}, {kInfinityF, 16}, {1e-6F, kMost}, {1e30F, kMost}}) {
    QORNException exception(0, "", "", 0);
    test::PrintedBy(
        [&, w = window, n = nStep] { exception = test::ThrownBy([&] { ArbRateResampler(0.5, w, n); }); });
    EXPECT_EQ(exception.GetErrorCode(), 11001) << window << " " << nStep;
  }
}

TEST(ArbRateResampler, Apply_AnyFilterShape_IsHarmless) {
  const auto src = Of<VecReal32>(Noise(200));
  for (const float rollf : {0.0F, -0.5F, 2.0F, 100.0F, kNanF, std::numeric_limits<float>::infinity()}) {
    for (const float alpha : {0.0F, -6.0F, 700.0F, 1e30F, kNanF}) {
      for (const float window : {0.5F, 1.0F, 1.5F, 20.0F}) {
        ArbRateResampler resampler(1.5, window, 8, rollf, alpha);
        VecReal32 dst;
        resampler.Apply(dst, src, 100.0, 10);
        EXPECT_EQ(dst.GetSize(), 15);
        EXPECT_TRUE(std::isnan(dst[0]) || !(std::isnan(rollf) || std::isnan(alpha)));
      }
    }
  }
}

TEST(ArbRateResampler, Apply_Constant_StaysThatConstant) {
  for (const DesignCase &c : kDesigns) {
    for (const double ratio : {1.0, 1.2345, 50.3}) {
      auto resampler = Make(c, ratio);
      VecReal32 src, dst;
      src.Set(1.0F, 2 * resampler.GetHistory() + 60);
      resampler.Apply(dst, src);
      for (int i = 0; i < dst.GetSize(); ++i)
        ASSERT_NEAR(dst[i], 1.0F, 6e-7F) << c.name << " " << ratio << " " << i;
    }
  }
}

TEST(ArbRateResampler, Apply_NotANumberInTheSource_ReachesNoFurtherThanTheFilter) {
  const DesignCase c = kDesigns[0];
  const Wing wing = WingOf(c);
  for (const float bad : {kNanF, std::numeric_limits<float>::infinity()}) {
    for (const double ratio : {1.2345, 2.0, 1.0, 0.7123, 0.5}) {
      for (const bool alternate : {false, true}) {
        auto src = Noise(500);
        src[250] = bad;
        auto resampler = Make(c, ratio);
        resampler.UseAlternateResampler(alternate);
        VecReal32 dst;
        resampler.Apply(dst, Of<VecReal32>(src), 50.0, 400);
        const StatedRun stated(wing, src, 50.0, 400, ratio, alternate && ratio < 1.0);
        for (int i = 0; i < dst.GetSize(); ++i) {
          ASSERT_EQ(std::isfinite(dst[i]), std::isfinite(stated.out[static_cast<std::size_t>(i)]))
              << ratio << " " << i;
        }
      }
    }
  }
}

// A bad sample in one part leaves the bits of the other part alone, and the outputs out of its reach too.
TEST(ArbRateResampler, Apply_NotANumberInOnePart_LeavesTheOther) {
  const auto clean = Noise(500), im = Noise(500, 3);
  auto re = clean;
  re[250] = kNanF;
  for (const auto &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scoped(level);
    for (const double ratio : {5.1, 1.2345, 2.0, 1.0, 0.7123, 0.5, 0.11}) {
      for (const bool alternate : {false, true}) {
        SCOPED_TRACE(testing::Message() << level.name << ", ratio " << ratio);
        ArbRateResampler resampler(ratio);
        resampler.UseAlternateResampler(alternate);
        VecCplx32 got, expected;
        resampler.Apply(got, Joined(re, im), 50.3, 400);
        resampler.Apply(expected, Joined(clean, im), 50.3, 400);
        ASSERT_EQ(got.GetSize(), expected.GetSize());
        int bad = 0;
        for (int i = 0; i < got.GetSize(); ++i) {
          ASSERT_EQ(got[i].im, expected[i].im) << i;
          if (std::isnan(got[i].re)) {
            ++bad;
          } else {
            ASSERT_EQ(got[i].re, expected[i].re) << i;
          }
        }
        EXPECT_GT(bad, 0);
      }
    }
  }
}

// The parts of a complex record, at any level, are what real records of theirs give at the first level.
TEST(ArbRateResampler, Apply_RealAndComplexAtEachLevel_GiveTheSameBits) {
  const auto re = Noise(700), im = Noise(700, 3);
  for (const DesignCase &c : kDesigns) {
    for (const double ratio : {5.1, 1.2345, 1.0, 0.7123, 0.5, 0.0321}) {
      for (const bool alternate : {false, true}) {
        std::optional<std::vector<float>> first;
        for (const auto &level : kernels::AvailableLevels()) {
          SCOPED_TRACE(testing::Message() << c.name << ", ratio " << ratio << ", " << level.name);
          const kernels::ScopedLevel scoped(level);
          auto resampler = Make(c, ratio);
          resampler.UseAlternateResampler(alternate);
          VecReal32 x, y;
          VecCplx32 xy;
          resampler.Apply(x, Of<VecReal32>(re), 3.3, 650);
          resampler.Apply(y, Of<VecReal32>(im), 3.3, 650);
          resampler.Apply(xy, Joined(re, im), 3.3, 650);
          ASSERT_EQ(Real(xy), List(x));
          ASSERT_EQ(Imag(xy), List(y));
          if (!first) first = List(x);
          ASSERT_EQ(List(x), *first);
        }
      }
    }
  }
}

// A later start in a longer record changes nothing.
TEST(ArbRateResampler, Apply_RecordMovedByWholeSamples_GivesTheSameBits) {
  const auto noise = Noise(600);
  for (const double ratio : {1.25, 0.75}) {
    std::vector<float> moved(113, 0.5F);
    moved.insert(moved.end(), noise.begin(), noise.end());
    ArbRateResampler resampler(ratio);
    VecReal32 a, b;
    resampler.Apply(a, Of<VecReal32>(noise), 100.5, 400);
    resampler.Apply(b, Of<VecReal32>(moved), 213.5, 400);
    EXPECT_EQ(List(a), List(b));
  }
}

TEST(ArbRateResampler, Copies_AnyOrderOfDestruction_AreIndependent) {
  const auto src = CplxTone(400, 0.37);
  for (const double ratio : {1.3, 0.7}) {
    auto source = std::make_unique<ArbRateResampler>(ratio);
    source->UseAlternateResampler(true);
    VecCplx32 expected, got;
    source->Apply(expected, src);
    auto copy = std::make_unique<ArbRateResampler>(*source);
    ArbRateResampler assigned(2.0, 10.0F, 4);
    assigned = *source;
    assigned = *&assigned;
    source.reset();
    copy->Apply(got, src);
    EXPECT_EQ(List(got), List(expected));
    copy.reset();
    assigned.Apply(got, src);
    EXPECT_EQ(List(got), List(expected));
    EXPECT_EQ(assigned.GetRatio(), ratio);
    EXPECT_EQ(assigned.GetHistory(), ArbRateResampler(ratio).GetHistory());
  }
}

TEST(ArbRateResampler, Apply_KeptDestination_AllocatesNothing) {
  const auto src = CplxTone(3000, 0.1);
  const auto real = Of<VecReal32>(Noise(3000));
  for (const double ratio : {1.3, 0.7}) {
    for (const bool alternate : {false, true}) {
      ArbRateResampler resampler(ratio);
      resampler.UseAlternateResampler(alternate);
      VecCplx32 dst;
      VecReal32 realDst;
      resampler.Apply(dst, src);
      resampler.Apply(realDst, real);
      resampler.Apply(dst, src, 46.0, 2000);
      resampler.Apply(realDst, real, 46.0, 2000);
      const long before = test::AllocationCount();
      resampler.Apply(dst, src);
      resampler.Apply(realDst, real);
      resampler.Apply(dst, src, 46.5, 2000);
      resampler.Apply(realDst, real, -10.5, 2000);
      EXPECT_EQ(test::AllocationCount(), before);
    }
  }
}

// The figures of the documentation, over ratios from 0.01 to 100.
struct QualityRow {
  DesignCase design;
  double band;            // tones up to this part of half the lower rate ...
  double lowest, highest; // ... have a gain between these, in decibels,
  double images;          // and images below this
  double alias;           // what is left of tones from 2 - band on
};

const QualityRow kQuality[] = {{{"default", 90.0F, 16, 0.9F, 6.1422F}, 0.8, -0.021, 0.005, -57.0, -59.0},
                               {{"sequential", 10.0F, 200, 0.95F, 6.865F}, 0.5, -0.001, 0.015, -62.0, -62.0},
                               {{"OFDM", 16.0F, 50, 0.625F, 6.1422F}, 0.4, -0.038, 0.007, -72.0, -72.0},
                               {{"fine", 90.0F, 512, 0.9F, 10.0F}, 0.8, -0.0002, 0.0002, -104.0, -105.0}};

TEST(ArbRateResampler, Apply_Tones_HaveTheQualityOfTheDocumentation) {
  for (const QualityRow &row : kQuality) {
    double lowest = 400.0, highest = -400.0, images = -400.0, alias = -400.0;
    for (const double ratio : {100.0, 31.41592653589793, 3.0, std::numbers::e, 2.0, 1.5, 1.2345, 1.0000001,
                               1.0, 0.99, 0.7123, 0.5, 1.0 / 3.0, 0.1234567, 0.01}) {
      auto resampler = Make(row.design, ratio);
      const int history = resampler.GetHistory();
      const int samples = 2 * history + 2 + static_cast<int>(400.0 / std::min(ratio, 1.0));
      const double half = 0.5 * std::min(ratio, 1.0);
      VecCplx32 out;
      for (int i = 0; i <= 12; ++i) {
        const double frequency = row.band * i / 12 * half;
        resampler.Apply(out, CplxTone(samples, frequency));
        const ToneFit fit(out, frequency, history, 1.0 / ratio);
        lowest = std::min(lowest, Decibels(fit.gain.real()));
        highest = std::max(highest, Decibels(fit.gain.real()));
        EXPECT_NEAR(fit.gain.imag(), 0.0, 2e-4); // the instants are those of the tone
        images = std::max(images, Decibels(fit.rest));
      }
      for (double part = 2.0 - row.band; part * half <= 0.5 && part < 3.0; part += 0.05) {
        resampler.Apply(out, CplxTone(samples, part * half));
        const ToneFit fit(out, part * half, history, 1.0 / ratio);
        alias = std::max(alias, Decibels(std::hypot(std::abs(fit.gain), fit.rest)));
      }
    }
    // Not worse than the figures, and none of these is far too modest.
    SCOPED_TRACE(row.design.name);
    EXPECT_GE(lowest, row.lowest);
    EXPECT_LE(highest, row.highest);
    EXPECT_LE(images, row.images);
    EXPECT_GE(images, row.images - 2.0);
    EXPECT_LE(alias, row.alias);
    EXPECT_GE(alias, row.alias - 2.0);
  }
}

} // namespace
