#include "qorn/dsp/WaveformGenerator.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Csv.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// A pulse of two parameters; those of one parameter leave the second alone.
using Pulse = void (*)(VecReal32 &, float, float, const VecReal32 &);

void Gaussian(VecReal32 &dst, float B, float, const VecReal32 &t) {
  WaveformGenerator::GaussianPulse(dst, B, t);
}
void SincOf(VecReal32 &dst, float B, float, const VecReal32 &t) { WaveformGenerator::SincPulse(dst, B, t); }
void IntegralRect(VecReal32 &dst, float T, float, const VecReal32 &t) {
  WaveformGenerator::IntegralConvRect(dst, T, t);
}

// The pulses written out for one time, step by step, on the library's elementary functions of one value.
namespace steps {

constexpr float kPi = 3.1415927F;

template <class T> T One(void (*kernel)(const T *, T *, int), T x) {
  kernel(&x, &x, 1);
  return x;
}
double Sin(double x) { return One(TargetLib::Sin_64f, x); }
float Cos(float x) { return One(TargetLib::Cos_32f, x); }
double Exp(double x) { return One(TargetLib::Exp_64f, x); }
double Erf(double x) { return One(TargetLib::Erf_64f, x); }

float S(float x) {
  const float product = 120.0F * 9e-6F;
  const float root = static_cast<float>(std::sqrt(static_cast<double>(product)));
  const float th = static_cast<float>(std::sqrt(static_cast<double>(root)));
  const double w = x;
  if (-th < x && x < th) return static_cast<float>(1.0 - w * w / 6.0);
  return static_cast<float>(Sin(w) / w);
}

float RaisedCosine(float rolloff, float T, float t) {
  const float invT = 1.0F / T;
  const float x = t * invT;
  const float a = x * kPi;
  const float y = x * (rolloff * 2.0F);
  const float p = (y + 1.0F) * (kPi * 0.5F);
  const float q = (y - 1.0F) * (kPi * 0.5F);
  float dst = S(p);
  dst = dst + S(q);
  dst = dst * S(a);
  return dst * (kPi * 0.25F);
}

float RootRaisedCosine(float rolloff, float T, float t) {
  const float invT = 1.0F / T;
  const float x = t * invT;
  const float A = (x + 0.25F) * kPi;
  const float B = (x - 0.25F) * kPi;
  const float W = t * ((1.0F - rolloff) * invT * kPi);
  const float u = t * rolloff * invT;
  const float D = (u + 0.25F) * kPi;
  const float E = (u - 0.25F) * kPi;
  const float first = Cos(A) * S(D);
  const float second = Cos(B) * S(E);
  const float sum = first + second;
  const float dst = S(W) * (1.0F - rolloff) + sum * rolloff;
  return dst * static_cast<float>(std::sqrt(static_cast<double>(invT)));
}

float Gaussian(float bandwidth, float, float t) {
  const double B = bandwidth;
  const double scale = B * std::sqrt(9.064720283654392);
  const double k = B * 9.869604401089358 * B * -2.0 / 0.693147180559945;
  const double w = t;
  return static_cast<float>(Exp(w * k * w) * scale);
}

float Sinc(float B, float, float t) {
  const float w = B * 2.0F;
  const float x = t * (kPi * w);
  return S(x) * w;
}

float IntegralConvRect(float T, float, float t) {
  const float half = T * 0.5F;
  if (!(t > -half)) return 0.0F;
  if (!(t < half)) return 1.0F;
  return t * (1.0F / T) + 0.5F;
}

float IntegralConvGauss(float T, float b, float time) {
  const float lim = T * b * 10.0F;
  if (!(time > -lim)) return 0.0F;
  if (!(time < lim)) return 1.0F;
  const double t = time;
  const double A = t + static_cast<double>(T * 0.5F);
  const double B = t - static_cast<double>(T * 0.5F);
  const float q = -(b * 2.0F * b * T * T);
  const double e1 = Exp(A * A / static_cast<double>(q));
  const double e2 = Exp(B * B / static_cast<double>(q));
  const float factor = static_cast<float>(-static_cast<double>(b) / std::sqrt(6.283185307179586));
  const double E = (e1 - e2) * static_cast<double>(factor);
  const float w = 1.4142135F * b * T;
  const double H = 1.0 + Erf(B / static_cast<double>(w));
  const double J = 1.0 + Erf(A / static_cast<double>(w));
  const double K = (J - H) * (t / static_cast<double>(T) + 0.5) / 2.0;
  return static_cast<float>(H / 2.0 + K - E);
}

float ConvGauss(float T, float b, float t) {
  const float lim = T * b * 20.0F;
  if (!(t > -lim) || !(t < lim)) return 0.0F;
  const double m = 1.0 / (static_cast<double>(T) * 1.414213562373095 * static_cast<double>(b));
  const double P = (static_cast<double>(t) - static_cast<double>(T * 0.5F)) * m;
  const double Q = (static_cast<double>(t) + static_cast<double>(T * 0.5F)) * m;
  const double g = 1.0F / (T * 2.0F);
  if (t <= -T / 2.0F) return static_cast<float>((Erf(-P) - Erf(-Q)) * g);
  if (t <= T / 2.0F) return static_cast<float>((Erf(-P) + Erf(Q)) * g);
  return static_cast<float>((Erf(Q) - Erf(P)) * g);
}

} // namespace steps

struct PulseCase {
  const char *name;
  Pulse pulse;
  float (*one)(float, float, float);
  std::vector<std::pair<float, float>> parameters;
};

const PulseCase kPulses[] = {
    {"RaisedCosine",
     WaveformGenerator::RaisedCosinePulse,
     steps::RaisedCosine,
     {{0.0F, 1.0F}, {0.22F, 0.26F}, {0.35F, 4.115226e-5F}, {1.0F, 3.0F}}},
    {"RootRaisedCosine",
     WaveformGenerator::RootRaisedCosinePulse,
     steps::RootRaisedCosine,
     {{0.0F, 1.0F}, {0.22F, 0.26F}, {0.35F, 4.115226e-5F}, {1.0F, 3.0F}}},
    {"Gaussian", Gaussian, steps::Gaussian, {{0.3F, 0.0F}, {40000.0F, 0.0F}}},
    {"Sinc", SincOf, steps::Sinc, {{0.5F, 0.0F}, {81250.0F, 0.0F}}},
    {"ConvGauss",
     WaveformGenerator::ConvGauss,
     steps::ConvGauss,
     {{1.0F, 0.4416955F}, {3.7e-6F, 0.3F}, {1.0F, 0.02F}, {1.0F, 0.001F}}},
    {"IntegralConvRect", IntegralRect, steps::IntegralConvRect, {{1.0F, 0.0F}, {3.7e-6F, 0.0F}}},
    {"IntegralConvGauss",
     WaveformGenerator::IntegralConvGauss,
     steps::IntegralConvGauss,
     {{1.0F, 0.4416955F}, {3.7e-6F, 0.3F}, {1.0F, 0.02F}, {1.0F, 0.001F}}},
};

// The unit of time of a pulse.
float UnitOf(const PulseCase &pulse, std::pair<float, float> parameters) {
  const std::string name = pulse.name;
  if (name == "RaisedCosine" || name == "RootRaisedCosine") return parameters.second;
  if (name == "Gaussian" || name == "Sinc") return 1.0F / parameters.first;
  return parameters.first;
}

VecReal32 Times(int n, float unit, float reach) {
  VecReal32 t(n);
  for (int i = 0; i < n; ++i) {
    t[i] = unit * reach * (2.0F * static_cast<float>(i) / static_cast<float>(n - 1) - 1.0F);
  }
  return t;
}

std::uint32_t Bits(float x) { return std::bit_cast<std::uint32_t>(x); }

TEST(WaveformGenerator, Pulses_AnyTime_FollowTheStepsBitForBit) {
  for (const auto &pulse : kPulses) {
    for (const auto &p : pulse.parameters) {
      for (const float reach : {0.07F, 1.5F, 12.0F}) {
        const auto t = Times(2049, UnitOf(pulse, p), reach);
        VecReal32 dst;
        pulse.pulse(dst, p.first, p.second, t);
        ASSERT_EQ(dst.GetSize(), t.GetSize());
        for (int i = 0; i < t.GetSize(); ++i) {
          const float expected = pulse.one(p.first, p.second, t[i]);
          ASSERT_EQ(Bits(dst[i]), Bits(expected)) << pulse.name << ' ' << p.first << ' ' << p.second << " at "
                                                  << t[i] << ": " << dst[i] << ", " << expected;
        }
      }
    }
  }
}

TEST(WaveformGenerator, Pulses_AnyLengthAndPlace_GiveEachTimeItsOwnValue) {
  for (const auto &pulse : kPulses) {
    const auto p = pulse.parameters[0];
    const auto all = Times(2049, UnitOf(pulse, p), 3.0F);
    VecReal32 whole;
    pulse.pulse(whole, p.first, p.second, all);
    for (const int n : {1, 2, 7, 1023, 1024, 1025}) {
      const int first = 1024 - n / 2;
      const auto t = Of<VecReal32>(std::vector<float>(all.GetPtr(first), all.GetPtr(first) + n));
      VecReal32 dst(5);
      pulse.pulse(dst, p.first, p.second, t);
      ASSERT_EQ(dst.GetSize(), n);
      for (int i = 0; i < n; ++i) ASSERT_EQ(Bits(dst[i]), Bits(whole[first + i])) << pulse.name << n;
    }
  }
}

TEST(WaveformGenerator, Pulses_OntoTheirTimes_GiveTheSame) {
  for (const auto &pulse : kPulses) {
    const auto p = pulse.parameters[0];
    const auto t = Times(1500, UnitOf(pulse, p), 6.0F);
    VecReal32 apart;
    pulse.pulse(apart, p.first, p.second, t);
    VecReal32 together(t);
    pulse.pulse(together, p.first, p.second, together);
    EXPECT_EQ(List(together), List(apart)) << pulse.name;
    VecReal32 narrowed(t);
    narrowed.Trim(700, 799);
    pulse.pulse(narrowed, p.first, p.second, narrowed);
    ASSERT_EQ(narrowed.GetSize(), 100);
    for (int i = 0; i < 100; ++i) EXPECT_EQ(narrowed[i], apart[700 + i]) << pulse.name;
    EXPECT_EQ(*(narrowed.GetPtr() - 1), t[699]);
    EXPECT_EQ(*(narrowed.GetPtr() + 100), t[800]);
  }
}

TEST(WaveformGenerator, Pulses_EmptyTimes_GiveEmptyVectors) {
  for (const auto &pulse : kPulses) {
    VecReal32 dst(3);
    pulse.pulse(dst, 1.0F, 0.5F, VecReal32());
    EXPECT_EQ(dst.GetSize(), 0) << pulse.name;
  }
}

TEST(WaveformGenerator, Pulses_BadParameters_StillFillTheirLength) {
  const float odd[] = {0.0F, -0.0F, -1.0F, 1e-38F, 1e-45F, 3e38F, -3e38F, kInfinity, -kInfinity, kNaN};
  auto t = Times(1030, 1.0F, 2.0F);
  t[3] = kNaN;
  t[515] = kNaN;
  t[1000] = kInfinity;
  for (const auto &pulse : kPulses) {
    for (const float first : odd) {
      for (const float second : odd) {
        VecReal32 dst;
        pulse.pulse(dst, first, second, t);
        ASSERT_EQ(dst.GetSize(), 1030);
      }
    }
  }
}

TEST(WaveformGenerator, Pulses_PeriodOfZero_AreNotFinite) {
  const auto t = Of<VecReal32>({-1.0F, 0.0F, 1.0F});
  VecReal32 dst;
  WaveformGenerator::RaisedCosinePulse(dst, 0.22F, 0.0F, t);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(std::isnan(dst[i])) << i;
  WaveformGenerator::RootRaisedCosinePulse(dst, 0.22F, 0.0F, t);
  for (int i = 0; i < 3; ++i) EXPECT_TRUE(std::isnan(dst[i])) << i;
  // A width of zero leaves no time between the limits.
  WaveformGenerator::IntegralConvRect(dst, 0.0F, t);
  EXPECT_EQ(List(dst), (std::vector<float>{0.0F, 0.0F, 1.0F}));
  WaveformGenerator::IntegralConvGauss(dst, 1.0F, 0.0F, t);
  EXPECT_EQ(List(dst), (std::vector<float>{0.0F, 0.0F, 1.0F}));
  WaveformGenerator::ConvGauss(dst, 0.0F, 0.3F, t);
  EXPECT_EQ(List(dst), (std::vector<float>{0.0F, 0.0F, 0.0F}));
}

TEST(WaveformGenerator, Pulses_OnKeptDestinations_AllocateNothing) {
  const auto t = Times(3000, 1.0F, 4.0F);
  VecReal32 dst(3000);
  VecReal64 wide(3000);
  const VecReal64 x(3000);
  unsigned int seed = 1;
  const long before = test::AllocationCount();
  for (const auto &pulse : kPulses) pulse.pulse(dst, 0.5F, 0.5F, t);
  WaveformGenerator::Sinc(dst, t, 9e-6F);
  WaveformGenerator::Sinc(wide, x, 1e-12);
  WaveformGenerator::RandUniform(dst, 3000, 0.0F, 1.0F);
  WaveformGenerator::RandGauss(dst, 3000, 0.0F, 1.0F, seed);
  WaveformGenerator::KaiserWindow(dst, 3000, 8.0F);
  WaveformGenerator::KaiserWindow(wide, 3000, 40.0F);
  EXPECT_EQ(test::AllocationCount(), before);
}

// Bounds against exact values. A guarded sinc errs by 9e-6 at the most and a little for the rounding of its
// argument, whose relative error is below 3e-7.
struct PulseBound {
  const char *name;
  Pulse pulse;
  std::function<double(double first, double second, double value)> bound;
};

const PulseBound kBounds[] = {
    // pi / 4 times the product of one sinc and the sum of two, that sum being at most 4 / pi.
    {"RaisedCosine", WaveformGenerator::RaisedCosinePulse,
     [](double, double, double) { return (1.0 + 2.0 * 0.7854) * 9.3e-6; }},
    {"RootRaisedCosine", WaveformGenerator::RootRaisedCosinePulse,
     [](double r, double T, double) { return ((1.0 - r + 2.0 * r) * 9.3e-6 + r * 3e-6) / std::sqrt(T); }},
    // Half a unit for the rounding to float.
    {"Gaussian", Gaussian, [](double, double, double value) { return value * 0x1.01p-24; }},
    {"Sinc", SincOf, [](double B, double, double) { return 2.0 * B * 9.5e-6; }},
    // The rounding of 1 / (2 T) and of the result; each error function errs by 1e-16.
    {"ConvGauss", WaveformGenerator::ConvGauss,
     [](double T, double, double value) { return value * 0x1.01p-23 + 2e-16 / T; }},
    // The widths of the error function and of the exponential are rounded to float, three times each.
    {"IntegralConvGauss", WaveformGenerator::IntegralConvGauss, [](double, double, double) { return 4e-7; }},
};

float FromBits(const std::string &word) {
  return std::bit_cast<float>(static_cast<std::uint32_t>(std::strtoul(word.c_str(), nullptr, 16)));
}

TEST(WaveformGenerator, Pulses_AgainstExactValues_KeepTheirBounds) {
  const auto rows = test::ReadCsv("pulses.csv");
  ASSERT_GT(rows.size(), 1000U);
  for (const auto &bound : kBounds) {
    int count = 0;
    for (const auto &row : rows) {
      if (row[0] != bound.name) continue;
      ++count;
      const float first = FromBits(row[1]);
      const float second = FromBits(row[2]);
      const float t = FromBits(row[3]);
      const double exact = std::strtod(row[4].c_str(), nullptr);
      VecReal32 dst;
      bound.pulse(dst, first, second, Of<VecReal32>({t}));
      EXPECT_NEAR(dst[0], exact, bound.bound(first, second, exact))
          << row[0] << ' ' << first << ' ' << second << " at " << t;
    }
    EXPECT_GT(count, 50) << bound.name;
  }
}

TEST(WaveformGenerator, RaisedCosinePulse_AtZero_IsOneAtAnyRollOff) {
  VecReal32 dst;
  for (int i = 0; i <= 1000; ++i) {
    WaveformGenerator::RaisedCosinePulse(dst, static_cast<float>(i) * 0.001F, 0.37F, Of<VecReal32>({0.0F}));
    EXPECT_EQ(dst[0], 1.0F) << i;
  }
}

TEST(WaveformGenerator, RootRaisedCosinePulse_AtZero_IsTheLimit) {
  VecReal32 dst;
  for (int i = 0; i <= 100; ++i) {
    const float r = static_cast<float>(i) * 0.01F;
    WaveformGenerator::RootRaisedCosinePulse(dst, r, 1.0F, Of<VecReal32>({0.0F}));
    const double limit = 1.0 - static_cast<double>(r) + 4.0 * static_cast<double>(r) / 3.141592653589793;
    EXPECT_NEAR(dst[0], limit, 4e-7) << r;
  }
}

TEST(WaveformGenerator, GaussianPulse_FarFromZero_UnderflowsToZero) {
  VecReal32 dst;
  WaveformGenerator::GaussianPulse(dst, 1.0F, Of<VecReal32>({-30.0F, 1e30F, kInfinity, 0.0F}));
  EXPECT_EQ(dst[0], 0.0F);
  EXPECT_EQ(dst[1], 0.0F);
  EXPECT_EQ(dst[2], 0.0F);
  EXPECT_FLOAT_EQ(dst[3], 3.0107673F);
  WaveformGenerator::GaussianPulse(dst, 1.0F, Of<VecReal32>({-30.0F}));
  EXPECT_EQ(dst[0], 0.0F);
}

TEST(WaveformGenerator, GaussianPulse_Ln2_HasFifteenDigits) {
  // A time at which the sixteenth digit turns the last bit of the result.
  VecReal32 dst;
  WaveformGenerator::GaussianPulse(dst, 1.0F, Of<VecReal32>({0x1.b2a75p+0F}));
  EXPECT_EQ(dst[0], 0x1.1cc68ep-117F);
}

TEST(WaveformGenerator, IntegralConvRect_AtTheEdges_IsExact) {
  VecReal32 dst;
  WaveformGenerator::IntegralConvRect(dst, 0.5F, Of<VecReal32>({-0.3F, -0.25F, -0.125F, 0.0F, 0.25F, 9.0F}));
  EXPECT_EQ(List(dst), (std::vector<float>{0.0F, 0.0F, 0.25F, 0.5F, 1.0F, 1.0F}));
}

TEST(WaveformGenerator, LimitedPulses_TimesOnOneSide_GiveTheEndValue) {
  const auto before = Of<VecReal32>({-50.0F, -40.0F, -30.0F});
  const auto after = Of<VecReal32>({30.0F, 40.0F, 50.0F});
  const std::vector<float> zeros(3, 0.0F);
  const std::vector<float> ones(3, 1.0F);
  VecReal32 dst;
  WaveformGenerator::IntegralConvRect(dst, 1.0F, before);
  EXPECT_EQ(List(dst), zeros);
  WaveformGenerator::IntegralConvGauss(dst, 1.0F, 0.5F, before);
  EXPECT_EQ(List(dst), zeros);
  WaveformGenerator::ConvGauss(dst, 1.0F, 0.5F, before);
  EXPECT_EQ(List(dst), zeros);
  WaveformGenerator::IntegralConvRect(dst, 1.0F, after);
  EXPECT_EQ(List(dst), ones);
  WaveformGenerator::IntegralConvGauss(dst, 1.0F, 0.5F, after);
  EXPECT_EQ(List(dst), ones);
  WaveformGenerator::ConvGauss(dst, 1.0F, 0.5F, after);
  EXPECT_EQ(List(dst), zeros);
}

TEST(WaveformGenerator, ConvGauss_NarrowGaussian_CutsTheRectangleOff) {
  // The limit is 20 b T = 0.2, within the rectangle, which reaches to 0.5.
  VecReal32 dst;
  WaveformGenerator::ConvGauss(dst, 1.0F, 0.01F, Of<VecReal32>({-0.3F, -0.19F, 0.0F, 0.19F, 0.3F}));
  EXPECT_EQ(List(dst), (std::vector<float>{0.0F, 1.0F, 1.0F, 1.0F, 0.0F}));
}

TEST(WaveformGenerator, LimitedPulses_AtTheirLimits_HaveTheEndValue) {
  // With b T = 1 / 64 the limits are floats, and the pulses are not at their end values beside them.
  const float b = 1.0F / 64.0F;
  const auto around = [](float limit) {
    const float inside = std::nextafter(limit, 0.0F);
    return Of<VecReal32>({-limit, -inside, inside, limit});
  };
  VecReal32 dst;
  WaveformGenerator::ConvGauss(dst, 1.0F, b, around(20.0F * b));
  EXPECT_EQ(List(dst), (std::vector<float>{0.0F, 1.0F, 1.0F, 0.0F}));
  WaveformGenerator::IntegralConvGauss(dst, 1.0F, b, around(10.0F * b));
  EXPECT_EQ(dst[0], 0.0F);
  EXPECT_NEAR(dst[1], 0.34375F, 1e-6F);
  EXPECT_NEAR(dst[2], 0.65625F, 1e-6F);
  EXPECT_EQ(dst[3], 1.0F);
}

TEST(WaveformGenerator, Sinc_AtZero_IsOneUnlessUnguarded) {
  VecReal32 f;
  VecReal64 d;
  WaveformGenerator::Sinc(f, Of<VecReal32>({0.0F, -0.0F}), 9e-6F);
  EXPECT_EQ(List(f), (std::vector<float>{1.0F, 1.0F}));
  WaveformGenerator::Sinc(d, Of<VecReal64>({0.0}), 1e-12);
  EXPECT_EQ(d[0], 1.0);
  WaveformGenerator::Sinc(f, Of<VecReal32>({0.0F}), 0.0F);
  EXPECT_TRUE(std::isnan(f[0]));
  WaveformGenerator::Sinc(d, Of<VecReal64>({0.0}), 0.0);
  EXPECT_TRUE(std::isnan(d[0]));
}

TEST(WaveformGenerator, Sinc_AroundTheThreshold_ChangesFromSeriesToQuotient) {
  // The fourth root of 120 eps, the roots rounded to float in the float form. The series is for less than it.
  const float th = std::sqrt(std::sqrt(120.0F * 9e-6F));
  const float under = std::nextafter(th, 0.0F);
  VecReal32 f;
  WaveformGenerator::Sinc(f, Of<VecReal32>({-th, -under, under, th, 2.0F}), 9e-6F);
  const double w = under;
  const float series = static_cast<float>(1.0 - w * w / 6.0);
  const float quotient = static_cast<float>(std::sin(static_cast<double>(th)) / static_cast<double>(th));
  EXPECT_GT(quotient - series, 8e-6F);
  EXPECT_EQ(List(f), (std::vector<float>{quotient, series, series, quotient,
                                         static_cast<float>(0.45464871341284085)}));

  const double wideTh = std::sqrt(std::sqrt(120.0 * 9e-6));
  const double wideUnder = std::nextafter(wideTh, 0.0);
  VecReal64 d;
  WaveformGenerator::Sinc(d, Of<VecReal64>({wideUnder, wideTh, -2.0}), 9e-6);
  EXPECT_EQ(d[0], 1.0 - wideUnder * wideUnder / 6.0);
  EXPECT_DOUBLE_EQ(d[1], std::sin(wideTh) / wideTh);
  EXPECT_DOUBLE_EQ(d[2], 0.45464871341284085);
}

TEST(WaveformGenerator, Sinc_NegativeOrNoTolerance_IsTheQuotient) {
  VecReal32 f;
  for (const float eps : {-1.0F, kNaN, 0.0F}) {
    WaveformGenerator::Sinc(f, Of<VecReal32>({0.01F, 0.0F}), eps);
    EXPECT_FLOAT_EQ(f[0], 0.99998333F);
    EXPECT_TRUE(std::isnan(f[1]));
  }
}

TEST(WaveformGenerator, RandGauss_WithoutASeed_RepeatsItself) {
  VecReal32 a;
  VecReal32 b(2000);
  WaveformGenerator::RandGauss(a, 1000, 0.5F, 2.0F);
  WaveformGenerator::RandGauss(b, 1000, 0.5F, 2.0F);
  EXPECT_EQ(List(a), List(b));
  unsigned int seed = 0x12345678;
  WaveformGenerator::RandGauss(b, 1000, 0.5F, 2.0F, seed);
  EXPECT_EQ(List(a), List(b));
  EXPECT_NEAR(a.Mean(), 0.5F, 0.2F);
  EXPECT_NEAR(a.StdDev(), 2.0F, 0.2F);
}

TEST(WaveformGenerator, RandUniform_WithoutASeed_RepeatsItself) {
  VecReal32 a;
  VecReal32 b;
  WaveformGenerator::RandUniform(a, 1000, -1.0F, 3.0F);
  WaveformGenerator::RandUniform(b, 1000, -1.0F, 3.0F);
  EXPECT_EQ(List(a), List(b));
  unsigned int seed = 0x12345678;
  WaveformGenerator::RandUniform(b, 1000, -1.0F, 3.0F, seed);
  EXPECT_EQ(List(a), List(b));
  EXPECT_GE(a.Min(), -1.0F);
  EXPECT_LE(a.Max(), 3.0F);
  EXPECT_NEAR(a.Mean(), 1.0F, 0.15F);
}

TEST(WaveformGenerator, RandomNumbers_WithAKeptSeed_GoOn) {
  unsigned int seed = 1;
  VecReal32 a;
  VecReal32 b;
  VecReal32 kernel(50);
  WaveformGenerator::RandGauss(a, 50, 0.0F, 1.0F, seed);
  EXPECT_EQ(seed, 6004U);
  WaveformGenerator::RandGauss(b, 50, 0.0F, 1.0F, seed);
  EXPECT_EQ(seed, 12007U);
  EXPECT_NE(List(a), List(b));
  unsigned int same = 1;
  TargetLib::RandGauss_Direct_32f(kernel.GetPtr(), 50, 0.0F, 1.0F, &same);
  EXPECT_EQ(List(a), List(kernel));
  WaveformGenerator::RandUniform(a, 50, 0.0F, 1.0F, seed);
  EXPECT_EQ(seed, 18010U);
  WaveformGenerator::RandUniform(b, 50, 0.0F, 1.0F, seed);
  EXPECT_NE(List(a), List(b));
  same = 12007;
  TargetLib::RandUniform_Direct_32f(kernel.GetPtr(), 50, 0.0F, 1.0F, &same);
  EXPECT_EQ(List(a), List(kernel));
}

TEST(WaveformGenerator, KaiserWindow_AnyShape_IsTheQuotientOfBesselFunctions) {
  for (const float beta : {0.0F, 2.5F, 8.0F, 35.0F}) {
    for (const int n : {1, 2, 33, 64}) {
      VecReal32 f;
      VecReal64 d;
      WaveformGenerator::KaiserWindow(f, n, beta);
      WaveformGenerator::KaiserWindow(d, n, beta);
      ASSERT_EQ(f.GetSize(), n);
      ASSERT_EQ(d.GetSize(), n);
      for (int i = 0; i < n; ++i) {
        const double x = n == 1 ? 0.0 : 2.0 * i / (n - 1) - 1.0;
        const double expected =
            std::cyl_bessel_i(0.0, beta * std::sqrt(1.0 - x * x)) / std::cyl_bessel_i(0.0, beta);
        // The shape per half-length is rounded to float.
        EXPECT_NEAR(d[i], expected, 3e-6 * expected) << beta << ' ' << n << ' ' << i;
        EXPECT_NEAR(f[i], expected, 3e-6 * expected) << beta << ' ' << n << ' ' << i;
      }
    }
  }
}

TEST(WaveformGenerator, CountsBelowOne_FillNothing) {
  for (const int n : {0, -5}) {
    VecReal32 f(4);
    VecReal64 d(4);
    unsigned int seed = 7;
    WaveformGenerator::RandUniform(f, n, 0.0F, 1.0F);
    EXPECT_LE(f.GetSize(), 0);
    WaveformGenerator::RandGauss(f, n, 0.0F, 1.0F, seed);
    EXPECT_LE(f.GetSize(), 0);
    EXPECT_EQ(seed, 7U);
    WaveformGenerator::KaiserWindow(f, n, 3.0F);
    EXPECT_LE(f.GetSize(), 0);
    WaveformGenerator::KaiserWindow(d, n, 3.0F);
    EXPECT_LE(d.GetSize(), 0);
  }
}

} // namespace
