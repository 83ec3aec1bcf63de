#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/dsp/DSPUtils.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"
#include "support/Allocations.h"
#include "support/KernelCheck.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;

constexpr double kTwoPi = 6.283185307179586;
constexpr long double kTwoPiLong = 6.283185307179586476925286766559L;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Samples in the square from -1 to 1, always the same.
VecCplx32 Noise(int n) {
  VecCplx32 vec(n);
  std::uint32_t state = 1;
  const auto next = [&] {
    state = state * 1664525 + 1013904223;
    return static_cast<float>(static_cast<std::int32_t>(state)) * 0x1p-31F;
  };
  for (int i = 0; i < n; ++i) vec[i] = {next(), next()};
  return vec;
}

// The rule as documented, one sample after the other: a phasor multiplied on, made anew every R samples.
void Sequential(VecCplx32 &vec, double freq, double *phase) {
  const int n = vec.GetSize();
  const double f = std::fmod(freq, 1.0), p = std::fmod(*phase, kTwoPi);
  double cRe = std::cos(p), cIm = std::sin(p);
  const double sRe = std::cos(kTwoPi * f), sIm = std::sin(kTwoPi * f);
  int period = n;
  if (std::fabs(f) > 0) {
    const double q = 100.0 / std::fabs(f);
    if (n > q) period = static_cast<int>(q);
    if (period < 100) period = 100;
  }
  double cycles = p / kTwoPi;
  int last = 0, left = period;
  for (int i = 0; i < n; ++i) {
    const double re = static_cast<double>(vec[i].re), im = static_cast<double>(vec[i].im);
    vec[i] = {static_cast<float>(re * cRe - im * cIm), static_cast<float>(re * cIm + im * cRe)};
    if (--left == 0) {
      cycles = std::fmod((i - last) * f + cycles, 1.0);
      cRe = std::cos(kTwoPi * cycles);
      cIm = std::sin(kTwoPi * cycles);
      last = i;
      left = period;
    }
    const double turned = cRe * sRe - cIm * sIm;
    cIm = cRe * sIm + cIm * sRe;
    cRe = turned;
  }
  *phase = std::atan2(cIm, cRe);
}

// By how much two phases differ, whole turns apart.
double Apart(double a, double b) { return std::fabs(std::remainder(a - b, kTwoPi)); }

double UnitOf(float x) {
  x = std::fabs(x);
  return static_cast<double>(std::nextafter(x, std::numeric_limits<float>::max()) - x);
}

// Within one unit in the last place of expected, but for `turn`.
bool IsClose(float got, float expected, float turn) {
  const float error = std::fabs(got - expected);
  return error <= turn || static_cast<double>(error) <= UnitOf(expected) + static_cast<double>(turn);
}

// Each part is within one unit in its last place, but for what `radians` of phase turn the sample by: where a
// part nearly cancels, its own unit says nothing of the phasors.
void ExpectClose(const VecCplx32 &got, const VecCplx32 &expected, const VecCplx32 &src, double radians,
                 const std::string &where) {
  ASSERT_EQ(got.GetSize(), expected.GetSize()) << where;
  const Cplx32 *x = got.GetPtr(), *y = expected.GetPtr(), *z = src.GetPtr();
  for (int i = 0; i < got.GetSize(); ++i) {
    const float turn = static_cast<float>(radians) * (std::fabs(z[i].re) + std::fabs(z[i].im));
    if (IsClose(x[i].re, y[i].re, turn) && IsClose(x[i].im, y[i].im, turn)) continue;
    FAIL() << where << ", at " << i << ": " << test::Show(x[i]) << " instead of " << test::Show(y[i]);
  }
}

const double kFrequencies[] = {0.25,   0.3,       -0.3, 0.99,  -0.999, 0.5,        0.0123, 1.25,
                               -7.77,  1.0,       -1.0, 1e-3,  1e-5,   -1e-9,      1e-17,  1e-300,
                               5e-324, 1e5 + 0.1, 1e17, 1e300, 0.1237, 100 / 101.0};

TEST(DSPUtils, FreqShift_AllFrequencies_FollowsTheSequentialRule) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const double freq : kFrequencies) {
      for (const int n : {1, 2, 15, 16, 17, 99, 100, 101, 102, 200, 201, 997, 12345}) {
        const VecCplx32 src = Noise(n);
        VecCplx32 got(src), expected(src);
        double phase = 2.5 - n, expectedPhase = phase;
        DSPUtils::FreqShift(got, freq, &phase);
        Sequential(expected, freq, &expectedPhase);
        const std::string where = std::string("at ") + level.name + ", frequency " + test::Show(freq) +
                                  ", length " + std::to_string(n);
        EXPECT_LE(Apart(phase, expectedPhase), 1e-13) << where;
        EXPECT_LE(std::fabs(phase), 3.141592653589793) << where;
        ExpectClose(got, expected, src, 1e-12, where);
        if (HasFailure()) return;
      }
    }
  }
}

// Seeds every 333 samples and every 8333333: the count of the phase carries the rounding of 100 cycles on
// from seed to seed, and both forms must carry the same.
TEST(DSPUtils, FreqShift_TenMillionSamples_CarriesThePhaseOfTheSequentialRule) {
  constexpr int kSize = 10'000'000;
  const VecCplx32 src = Noise(kSize);
  for (const double freq : {0.3, -1.2e-5}) {
    VecCplx32 expected(src);
    double expectedPhase = 1.5;
    Sequential(expected, freq, &expectedPhase);
    for (const kernels::Level &level : kernels::AvailableLevels()) {
      const kernels::ScopedLevel scope(level);
      const std::string where = std::string("at ") + level.name + ", frequency " + test::Show(freq);
      VecCplx32 got;
      double phase = 1.5;
      DSPUtils::FreqShift(got, src, freq, &phase);
      EXPECT_LE(Apart(phase, expectedPhase), 1e-12) << where;
      ExpectClose(got, expected, src, 1e-11, where);
      if (HasFailure()) return;
    }
  }
}

// exp(j (phase + 2 pi freq i)) in extended precision, the turns taken off first.
struct Phasor {
  long double re, im;
};
Phasor TruePhasor(double freq, double phase, int i) {
  const long double cycles = std::fmod(static_cast<long double>(std::fmod(freq, 1.0)) * i, 1.0L);
  const long double angle = kTwoPiLong * cycles + static_cast<long double>(phase);
  return {std::cos(angle), std::sin(angle)};
}

// What the phase may be off: each seed rounds a product and a sum of about 100 cycles, and in between
// products and tables round.
double PhaseBound(double freq, int n) {
  const double cycles = std::fabs(std::fmod(freq, 1.0)) * n;
  return 1e-12 + (cycles / 100 + 1) * 2 * 0x1p-47 * kTwoPi;
}

TEST(DSPUtils, FreqShift_AllFrequencies_RoundsTheTrueProductOnce) {
  constexpr int kSize = 20'000;
  const VecCplx32 src = Noise(kSize);
  for (const double freq : kFrequencies) {
    VecCplx32 got(src);
    double phase = -3.0;
    DSPUtils::FreqShift(got, freq, &phase);
    const double radians = PhaseBound(freq, kSize);
    for (int i = 0; i < kSize; ++i) {
      const Phasor c = TruePhasor(freq, -3.0, i);
      const long double x = src[i].re, y = src[i].im;
      const long double re = x * c.re - y * c.im, im = x * c.im + y * c.re;
      const double turn = radians * static_cast<double>(std::hypot(x, y));
      const double reError = static_cast<double>(std::fabs(static_cast<long double>(got[i].re) - re));
      const double imError = static_cast<double>(std::fabs(static_cast<long double>(got[i].im) - im));
      ASSERT_LE(reError, 0.5 * UnitOf(got[i].re) + turn) << freq << ", at " << i;
      ASSERT_LE(imError, 0.5 * UnitOf(got[i].im) + turn) << freq << ", at " << i;
    }
    const Phasor next = TruePhasor(freq, -3.0, kSize);
    EXPECT_LE(Apart(phase, static_cast<double>(std::atan2(next.im, next.re))), radians) << freq;
  }
}

TEST(DSPUtils, FreqShift_SplitAnywhere_ContinuesThePhase) {
  constexpr int kSize = 30'000;
  const VecCplx32 src = Noise(kSize);
  for (const double freq : {0.25, 0.3, -0.987, 1e-4, 3e-6, 1.0}) {
    VecCplx32 whole(src);
    double wholePhase = 0.4;
    DSPUtils::FreqShift(whole, freq, &wholePhase);
    for (const int piece : {1, 7, 100, 333, 4096, 15000, 29999}) {
      VecCplx32 pieces;
      VecCplx32 joined(kSize);
      double phase = 0.4;
      for (int first = 0; first < kSize; first += piece) {
        const int count = std::min(piece, kSize - first);
        pieces.Import(src.GetPtr(first), count);
        DSPUtils::FreqShift(pieces, freq, &phase);
        TargetLib::Copy_32fc(pieces.GetPtr(), joined.GetPtr(first), count);
      }
      // Each piece hands on a phase that is rounded a few times, near pi.
      const double radians = 2 * PhaseBound(freq, kSize) + 2e-15 * (kSize / piece);
      const std::string where = "frequency " + test::Show(freq) + ", pieces of " + std::to_string(piece);
      EXPECT_LE(Apart(phase, wholePhase), radians) << where;
      ExpectClose(joined, whole, src, radians, where);
    }
  }
}

TEST(DSPUtils, FreqShift_FrequencyAndPhaseZero_ChangesNothing) {
  const auto src = Of<VecCplx32>({{0.1F, -0.7F}, {-0.0F, 1e-45F}, {3e38F, 0.0F}});
  for (const double zero : {0.0, -0.0}) {
    VecCplx32 vec(src);
    double phase = zero;
    DSPUtils::FreqShift(vec, zero, &phase);
    EXPECT_EQ(List(vec), List(src));
    EXPECT_TRUE(test::Same()(phase, zero));
  }
  VecCplx32 vec(src);
  double phase = kNaN;
  DSPUtils::FreqShift(vec, 0.0, &phase);
  EXPECT_EQ(List(vec), List(src));
  EXPECT_TRUE(std::isnan(phase));
}

TEST(DSPUtils, FreqShift_FrequencyZero_TurnsByThePhaseInFloat) {
  const VecCplx32 src = Noise(50);
  for (const double given : {0.5, -2.0, 1e-60, 100.0, 12345.678}) {
    VecCplx32 vec(src);
    double phase = given;
    DSPUtils::FreqShift(vec, 0.0, &phase);
    EXPECT_EQ(phase, given);
    const double narrowed = static_cast<double>(static_cast<float>(given));
    const auto c = static_cast<float>(std::cos(narrowed)), s = static_cast<float>(std::sin(narrowed));
    for (int i = 0; i < 50; ++i) {
      const float rr = src[i].re * c, ii = src[i].im * s, ri = src[i].re * s, ir = src[i].im * c;
      EXPECT_EQ(vec[i].re, rr - ii) << given << ", " << i;
      EXPECT_EQ(vec[i].im, ri + ir) << given << ", " << i;
    }
  }
}

TEST(DSPUtils, FreqShift_QuarterOfTheRate_GivesTheFourRoots) {
  VecCplx32 vec(8);
  vec.Set({1.0F, 0.0F});
  double phase = 0.0;
  DSPUtils::FreqShift(vec, 0.25, &phase);
  const Cplx32 roots[] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
  for (int i = 0; i < 8; ++i) {
    EXPECT_NEAR(vec[i].re, roots[i % 4].re, 1e-15F) << i;
    EXPECT_NEAR(vec[i].im, roots[i % 4].im, 1e-15F) << i;
  }
  EXPECT_NEAR(phase, 0.0, 1e-15);
  vec.Resize(3);
  vec.Set({1.0F, 0.0F});
  DSPUtils::FreqShift(vec, 0.25, &phase);
  EXPECT_NEAR(phase, -1.5707963267948966, 1e-15);
}

TEST(DSPUtils, FreqShift_WholeCyclesMore_ChangeNothing) {
  const VecCplx32 src = Noise(1000);
  VecCplx32 quarter(src), more(src);
  DSPUtils::FreqShift(quarter, 0.25, 0.3);
  DSPUtils::FreqShift(more, 1.25, 0.3);
  EXPECT_EQ(List(more), List(quarter));
  DSPUtils::FreqShift(more, src, 1024.25, 0.3);
  EXPECT_EQ(List(more), List(quarter));
}

TEST(DSPUtils, FreqShift_FrequencyOne_TurnsByThePhaseInDouble) {
  const VecCplx32 src = Noise(1000);
  for (const double freq : {1.0, -3.0, 1e300}) {
    VecCplx32 vec(src);
    double phase = 0.5;
    DSPUtils::FreqShift(vec, freq, &phase);
    EXPECT_NEAR(phase, 0.5, 1e-15);
    const double c = std::cos(0.5), s = std::sin(0.5);
    for (int i = 0; i < 1000; ++i) {
      const double re = static_cast<double>(src[i].re), im = static_cast<double>(src[i].im);
      ASSERT_EQ(vec[i].re, static_cast<float>(re * c - im * s)) << i;
      ASSERT_EQ(vec[i].im, static_cast<float>(re * s + im * c)) << i;
    }
  }
}

TEST(DSPUtils, FreqShift_NegativeFrequency_TurnsBack) {
  const VecCplx32 src = Noise(5000);
  VecCplx32 vec(src);
  DSPUtils::FreqShift(vec, 0.1237, 1.0);
  DSPUtils::FreqShift(vec, -0.1237, -1.0);
  ExpectClose(vec, src, src, 2e-7, "there and back");
}

TEST(DSPUtils, FreqShift_PhasesOfAnySize_ActByTheirRemainder) {
  for (const double given : {1e5, -1e5, 1e15, -3e300, 7.0, 1e-320}) {
    auto vec = Of<VecCplx32>({{1.0F, 0.0F}, {1.0F, 0.0F}});
    double phase = given;
    DSPUtils::FreqShift(vec, 0.125, &phase);
    const double reduced = std::fmod(given, kTwoPi);
    EXPECT_EQ(vec[0].re, static_cast<float>(std::cos(reduced))) << given;
    EXPECT_EQ(vec[0].im, static_cast<float>(std::sin(reduced))) << given;
    EXPECT_LE(Apart(phase, reduced + 0.25 * kTwoPi), 2e-15) << given;
  }
}

TEST(DSPUtils, FreqShift_NotFinite_GivesNotANumber) {
  const VecCplx32 src = Noise(300);
  for (const double freq : {kNaN, kInfinity, -kInfinity}) {
    VecCplx32 vec(src);
    double phase = 0.0;
    DSPUtils::FreqShift(vec, freq, &phase);
    EXPECT_EQ(vec[0].re, src[0].re);
    EXPECT_EQ(vec[0].im, src[0].im);
    for (int i = 1; i < 300; ++i) ASSERT_TRUE(std::isnan(vec[i].re) && std::isnan(vec[i].im)) << i;
    EXPECT_TRUE(std::isnan(phase));
  }
  for (const double given : {kNaN, kInfinity, -kInfinity}) {
    VecCplx32 vec(src);
    double phase = given;
    DSPUtils::FreqShift(vec, 0.3, &phase);
    for (int i = 0; i < 300; ++i) ASSERT_TRUE(std::isnan(vec[i].re) && std::isnan(vec[i].im)) << i;
    EXPECT_TRUE(std::isnan(phase));
  }
}

TEST(DSPUtils, FreqShift_NotANumberAmongTheSamples_StaysAtItsPlace) {
  VecCplx32 vec = Noise(200);
  vec[77].im = std::numeric_limits<float>::quiet_NaN();
  DSPUtils::FreqShift(vec, 0.3, 0.0);
  for (int i = 0; i < 200; ++i) EXPECT_EQ(std::isnan(vec[i].re) && std::isnan(vec[i].im), i == 77) << i;
}

TEST(DSPUtils, FreqShift_EmptyVector_OnlyReducesThePhase) {
  VecCplx32 empty;
  for (const double freq : {0.25, 1.0, -0.999, 1e-300}) {
    double phase = 7.0;
    DSPUtils::FreqShift(empty, freq, &phase);
    EXPECT_NEAR(phase, 7.0 - kTwoPi, 1e-15) << freq;
  }
  double phase = 7.0;
  DSPUtils::FreqShift(empty, 0.0, &phase);
  EXPECT_EQ(phase, 7.0);
  VecCplx32 dst(5);
  DSPUtils::FreqShift(dst, VecCplx32(), 0.25, &phase);
  EXPECT_EQ(dst.GetSize(), 0);
  DSPUtils::FreqShift(dst, VecReal32(), 0.25, 1.0);
  EXPECT_EQ(dst.GetSize(), 0);
}

TEST(DSPUtils, FreqShift_AllForms_GiveTheSame) {
  const VecCplx32 src = Noise(777);
  VecReal32 real;
  src.GetReal(real);
  const VecCplx32 realAsComplex(real);
  for (const double freq : {0.0, 0.3, 1.0}) {
    VecCplx32 expected(src), expectedReal(realAsComplex);
    double next = 0.7, nextReal = 0.7;
    DSPUtils::FreqShift(expected, freq, &next);
    DSPUtils::FreqShift(expectedReal, freq, &nextReal);

    double phase = 0.7;
    VecCplx32 dst(3);
    DSPUtils::FreqShift(dst, src, freq, &phase);
    EXPECT_EQ(List(dst), List(expected));
    EXPECT_EQ(phase, next);
    phase = 0.7;
    DSPUtils::FreqShift(dst, real, freq, &phase);
    EXPECT_EQ(List(dst), List(expectedReal));
    EXPECT_EQ(phase, nextReal);

    VecCplx32 same(src);
    DSPUtils::FreqShift(same, freq, 0.7);
    EXPECT_EQ(List(same), List(expected));
    DSPUtils::FreqShift(dst, src, freq, 0.7);
    EXPECT_EQ(List(dst), List(expected));
    DSPUtils::FreqShift(dst, real, freq, 0.7);
    EXPECT_EQ(List(dst), List(expectedReal));

    VecCplx32 itself(src);
    itself.Trim(100, 400);
    VecCplx32 part;
    part.Import(src.GetPtr(100), 301);
    DSPUtils::FreqShift(part, freq, 0.7);
    DSPUtils::FreqShift(itself, itself, freq, 0.7);
    EXPECT_EQ(List(itself), List(part));
  }
}

TEST(DSPUtils, FreqShift_OnKeptDestinations_AllocatesNothing) {
  const VecCplx32 src = Noise(1000);
  const VecReal32 real(1000);
  VecCplx32 dst(1000);
  double phase = 0.1;
  const long before = test::AllocationCount();
  for (const double freq : {0.0, 0.3, 1.0}) {
    DSPUtils::FreqShift(dst, freq, &phase);
    DSPUtils::FreqShift(dst, src, freq, &phase);
    DSPUtils::FreqShift(dst, real, freq, &phase);
    DSPUtils::FreqShift(dst, freq, 0.1);
    DSPUtils::FreqShift(dst, src, freq, 0.1);
    DSPUtils::FreqShift(dst, real, freq, 0.1);
  }
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
