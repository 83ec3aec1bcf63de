// Every kind of signal, sample by sample, against its rule written out once more: the draws from the
// generator's definition, the arithmetic as scalars, and what has tests of its own (elementary functions,
// frequency shift, filter, resampler) through its public form.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <memory>
#include <numbers>
#include <vector>

#include "qorn/dsp/ArbRateResampler.h"
#include "qorn/dsp/BasebandSigGen.h"
#include "qorn/dsp/DSPUtils.h"
#include "qorn/dsp/PulseFilters.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/math/MathUtils.h"
#include "support/Draws.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::DrawPhase;
using test::DrawSymbols;
using test::List;
using test::Of;
using Gen = BasebandSigGen;
using Samples = std::vector<Cplx32>;

constexpr double kPi = 3.141592653589793;
constexpr double kTwoPi = 6.283185307179586;

/// Reaches what derived classes reach.
struct Probe : Gen {
  using Gen::Construct_PSK_QAM_Constellation;
  using Gen::Gen;
  using Gen::Generate_AM_FM_PM;
  using Gen::Generate_CW;
  using Gen::Generate_FSK;
  using Gen::Generate_Pulse;
  using Gen::GenerateRandomData;
  using Gen::GetPhase;
  using Gen::m_dataSeed;
  using Gen::m_lengthFactor;
  using Gen::m_noise;
  using Gen::m_noiseSeed;
  using Gen::m_phaseContinuous;
  using Gen::m_phaseSeed;
  using Gen::ScaleAndFreqAndPhaseOffset;
};

Cplx32 Product(Cplx32 a, Cplx32 b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }

Cplx32 Phasor(double phase) {
  return {static_cast<float>(std::cos(phase)), static_cast<float>(std::sin(phase))};
}

// A unit carrier, shifted.
Samples Shifted(const Samples &samples, double freq, double phase) {
  auto vec = Of<VecCplx32>(samples);
  DSPUtils::FreqShift(vec, freq, &phase);
  return List(vec);
}

float Scale(double dBm) { return static_cast<float>(std::pow(10.0, (dBm - 10.0) / 20.0)); }

// The last steps of every signal without a frequency offset.
void Finish(Samples &samples, double dBm, double phase) {
  const Cplx32 phasor = Phasor(phase);
  for (Cplx32 &x : samples) x = Product(x, {phasor.re * Scale(dBm), phasor.im * Scale(dBm)});
}

Samples Signal(Gen &generator, int n) {
  VecCplx32 signal;
  generator.GenerateSignal(signal, n, false);
  return List(signal);
}

void ExpectSame(const Samples &got, const Samples &expected, const std::string &where = "") {
  ASSERT_EQ(got.size(), expected.size()) << where;
  for (std::size_t i = 0; i < got.size(); ++i) {
    ASSERT_TRUE(got[i] == expected[i]) << where << " at " << i << ": " << got[i].re << ", " << got[i].im
                                       << " instead of " << expected[i].re << ", " << expected[i].im;
  }
}

// Draws.

TEST(BasebandSigGen, GetPhase_NewObject_DrawsFromTheSecondSeed) {
  Probe generator;
  unsigned int seed = 2;
  for (int i = 0; i < 100; ++i) EXPECT_EQ(generator.GetPhase(), DrawPhase(seed));
  EXPECT_EQ(generator.m_phaseSeed, 2U + 100 * 6003);
  generator.SetEnableRandomPhase(false);
  EXPECT_EQ(generator.GetPhase(), 0.0);
  EXPECT_EQ(generator.m_phaseSeed, 2U + 100 * 6003);
}

TEST(BasebandSigGen, GenerateRandomData_AnyAlphabet_DrawsEverySymbolOfIt) {
  Probe generator;
  unsigned int seed = 3;
  for (const int alphabet : {2, 4, 8, 16, 64, 256}) {
    VecInt32 data;
    generator.GenerateRandomData(data, alphabet, 10000);
    const std::vector<int> expected = DrawSymbols(10000, alphabet, seed);
    EXPECT_EQ(List(data), expected);
    std::vector<int> counts(static_cast<std::size_t>(alphabet));
    for (const int symbol : expected) ++counts.at(static_cast<std::size_t>(symbol));
    for (const int count : counts) EXPECT_GT(count, 10000 / alphabet / 3);
  }
  EXPECT_EQ(generator.m_dataSeed, seed);
  VecInt32 none(3);
  generator.GenerateRandomData(none, 4, 0);
  EXPECT_EQ(none.GetSize(), 0);
  EXPECT_EQ(generator.m_dataSeed, seed);
}

TEST(BasebandSigGen, GenerateNoise_AnyLevel_IsUniformInBothParts) {
  Probe generator;
  unsigned int seed = 1;
  for (const double level : {-60.0, 0.0, -7.3}) {
    generator.SetNoiseAmplitude(level);
    VecCplx32 noise;
    generator.GenerateNoise(noise, 5000);
    const auto k = static_cast<float>(std::pow(10.0, level / 20.0));
    const std::vector<float> re = test::Uniform(5000, -k, k, seed), im = test::Uniform(5000, -k, k, seed);
    ASSERT_EQ(noise.GetSize(), 5000);
    for (int i = 0; i < 5000; ++i) {
      const auto at = static_cast<std::size_t>(i);
      ASSERT_TRUE((noise[i] == Cplx32{re[at], im[at]}));
      ASSERT_LE(std::fabs(noise[i].re), k);
    }
    EXPECT_GT(*std::max_element(re.begin(), re.end()), 0.99F * k);
  }
  EXPECT_EQ(generator.m_noiseSeed, 1U + 6 * 6003);
}

TEST(BasebandSigGen, GenerateNoise_DefaultLevel_StaysWithinAThousandth) {
  Gen generator;
  VecCplx32 noise;
  generator.GenerateNoise(noise, 100000);
  float largest = 0.0F;
  for (const Cplx32 &x : List(noise)) largest = std::max({largest, std::fabs(x.re), std::fabs(x.im)});
  EXPECT_LE(largest, 0.001F);
  EXPECT_GT(largest, 0.00099F);
}

TEST(BasebandSigGen, AddNoise_AnyVector_AddsNoiseOfItsLength) {
  Probe generator, same;
  VecCplx32 vec(300), noise;
  vec.Set({1.0F, -2.0F});
  generator.AddNoise(vec);
  same.GenerateNoise(noise, 300);
  for (int i = 0; i < 300; ++i) {
    EXPECT_TRUE((vec[i] == Cplx32{1.0F + noise[i].re, -2.0F + noise[i].im}));
  }
  EXPECT_EQ(List(generator.m_noise), List(noise));
}

TEST(BasebandSigGen, GenerateSignal_WithNoise_AddsItAfterTheLevel) {
  Gen generator(Gen::CW), quiet(Gen::CW), noisy;
  VecCplx32 signal, noise;
  generator.GenerateSignal(signal, 100, true);
  noisy.GenerateNoise(noise, 100);
  auto expected = Of<VecCplx32>(Signal(quiet, 100));
  expected.Add(noise);
  ExpectSame(List(signal), List(expected));
}

// Level, offset and phase.

TEST(BasebandSigGen, ScaleAndFreqAndPhaseOffset_TenDbm_IsAScaleOfOne) {
  Probe generator;
  generator.SetEnableRandomPhase(false);
  generator.SetSignalAmplitude(10.0);
  auto vec = Of<VecCplx32>({{3.0F, -4.0F}, {0.1F, 0.7F}});
  generator.ScaleAndFreqAndPhaseOffset(vec);
  ExpectSame(List(vec), {{3.0F, -4.0F}, {0.1F, 0.7F}});
}

TEST(BasebandSigGen, ScaleAndFreqAndPhaseOffset_Default_IsAScaleOfATenth) {
  Probe generator;
  generator.SetEnableRandomPhase(false);
  auto vec = Of<VecCplx32>({{3.0F, -4.0F}});
  generator.ScaleAndFreqAndPhaseOffset(vec);
  ExpectSame(List(vec), {{3.0F * 0.1F, -4.0F * 0.1F}});
}

TEST(BasebandSigGen, ScaleAndFreqAndPhaseOffset_RandomPhase_TurnsByIt) {
  Probe generator;
  unsigned int seed = 2;
  for (const double dBm : {-10.0, 10.0, 3.7, -123.4}) {
    generator.SetSignalAmplitude(dBm);
    Samples samples = {{3.0F, -4.0F}, {0.1F, 0.7F}};
    auto vec = Of<VecCplx32>(samples);
    generator.ScaleAndFreqAndPhaseOffset(vec);
    Finish(samples, dBm, DrawPhase(seed));
    ExpectSame(List(vec), samples);
  }
}

TEST(BasebandSigGen, ScaleAndFreqAndPhaseOffset_WithOffset_ShiftsFirst) {
  Probe generator;
  generator.SetBasicParameters(1e6, -3.0, -60.0, -123456.0, true);
  const Samples samples(1000, {0.3F, 0.9F});
  auto vec = Of<VecCplx32>(samples);
  generator.ScaleAndFreqAndPhaseOffset(vec);
  unsigned int seed = 2;
  Samples expected = Shifted(samples, -123456.0 / 1e6, DrawPhase(seed));
  for (Cplx32 &x : expected) x = {x.re * Scale(-3.0), x.im * Scale(-3.0)};
  ExpectSame(List(vec), expected);
}

// Carrier.

TEST(BasebandSigGen, Cw_FrequencyZero_IsOneAndDrawsOnePhase) {
  Probe generator(Gen::CW);
  unsigned int seed = 2;
  Samples expected(50, {1.0F, 0.0F});
  Finish(expected, -10.0, DrawPhase(seed));
  ExpectSame(Signal(generator, 50), expected);
  EXPECT_EQ(generator.m_phaseSeed, seed);
}

TEST(BasebandSigGen, Cw_AnyFrequency_DrawsItsPhaseAndThenThatOfTheLevel) {
  Gen generator(Gen::CW);
  generator.SetSampleRate(48000.0);
  generator.SetParameters_CW(-1234.5);
  unsigned int seed = 2;
  for (int i = 0; i < 3; ++i) {
    Samples expected = Shifted(Samples(500, {1.0F, 0.0F}), -1234.5 / 48000.0, DrawPhase(seed));
    Finish(expected, -10.0, DrawPhase(seed));
    ExpectSame(Signal(generator, 500), expected);
  }
}

TEST(BasebandSigGen, Cw_LengthNotAboveZero_KeepsTheLength) {
  for (const int n : {0, -1, -100}) {
    Probe generator(Gen::CW);
    VecCplx32 vec(7);
    generator.Generate_CW(vec, n);
    ExpectSame(List(vec), Samples(7, {1.0F, 0.0F}));
    generator.SetEnableRandomPhase(false);
    generator.GenerateSignal(vec, n, false);
    ExpectSame(List(vec), Samples(7, {0.1F, 0.0F}));
    VecCplx32 empty;
    generator.GenerateSignal(empty, n, true);
    EXPECT_EQ(empty.GetSize(), 0);
  }
}

// Analogue modulations.

float Cosine(float x) {
  TargetLib::Cos_32f(&x, &x, 1);
  return x;
}

std::vector<float> CosineWave(int n, double modFrequency, double sampleRate, double phase) {
  const auto step = static_cast<float>(modFrequency / sampleRate * 6.283185307179586);
  std::vector<float> wave;
  for (int k = 0; k < n; ++k) {
    const float turned = static_cast<float>(k) * step;
    wave.push_back(Cosine(turned + static_cast<float>(phase)));
  }
  return wave;
}

std::vector<float> TriangleWave(int n, double frequency, double sampleRate, double phase) {
  int period = static_cast<int>(std::round(sampleRate / frequency));
  if (period < 2) period = 2;
  period += period % 2;
  std::vector<float> one;
  for (int k = 0; k < period / 2; ++k) {
    const float risen = static_cast<float>(k) * (2.0F / static_cast<float>(period / 2));
    one.push_back(risen + -1.0F);
  }
  for (int k = 0; k < period / 2; ++k) one.push_back(one[static_cast<std::size_t>(k)] * -1.0F);
  std::vector<float> all;
  const int repeats = static_cast<int>(std::ceil(static_cast<double>(n) / period)) + 2;
  for (int i = 0; i < repeats; ++i) all.insert(all.end(), one.begin(), one.end());
  const auto offset = static_cast<std::ptrdiff_t>(std::floor(period * phase / 6.2831855));
  return {all.begin() + offset, all.begin() + offset + n};
}

Samples Modulated(Gen::SignalType type, const std::vector<float> &wave, double modIndex, double sampleRate) {
  Samples samples;
  float sum = 0.0F;
  for (const float m : wave) {
    if (type == Gen::AM) {
      const float depth = m * static_cast<float>(modIndex / 100.0);
      samples.push_back({depth + 1.0F, 0.0F});
    } else if (type == Gen::FM) {
      sum += m;
      samples.push_back(MathUtils::Expj(sum * static_cast<float>(modIndex / sampleRate * 6.283185307179586)));
    } else {
      const float deviation = modIndex < 0
                                  ? static_cast<float>(-modIndex)
                                  : static_cast<float>(modIndex * 0.002777777777777778 * 6.283185307179586);
      samples.push_back(MathUtils::Expj(m * deviation));
    }
  }
  return samples;
}

TEST(BasebandSigGen, AmFmPm_CosineOrTriangle_FollowTheStatedSteps) {
  for (const Gen::SignalType type : {Gen::AM, Gen::FM, Gen::PM}) {
    for (const double frequency : {1000.0, 0.0, 33333.3, -1000.0, -999.0, -7777.7, -90000.0, -1.0}) {
      for (const double index : {50.0, 0.0, -1.0, 1.0, 130.0}) {
        Probe generator(type);
        generator.SetSampleRate(100e3);
        generator.SetParameters_AM_FM_PM(frequency, index);
        unsigned int seed = 2;
        for (int i = 0; i < 3; ++i) {
          const double phase = DrawPhase(seed);
          Samples expected = Modulated(type,
                                       frequency >= 0 ? CosineWave(777, frequency, 100e3, phase)
                                                      : TriangleWave(777, -frequency, 100e3, phase),
                                       index, 100e3);
          Finish(expected, -10.0, DrawPhase(seed));
          ExpectSame(Signal(generator, 777), expected,
                     std::to_string(type) + ", " + std::to_string(frequency) + ", " + std::to_string(index));
        }
      }
    }
  }
}

// All phases of a triangle, so that no offset is left out.
TEST(BasebandSigGen, Triangle_ManyPhases_StartsWhereThePhaseSays) {
  Probe generator(Gen::AM);
  generator.SetSampleRate(100.0);
  generator.SetParameters_AM_FM_PM(-10.0, 100.0);
  unsigned int seed = 2;
  VecCplx32 got;
  for (int i = 0; i < 200; ++i) {
    generator.Generate_AM_FM_PM(got, 25);
    ExpectSame(List(got), Modulated(Gen::AM, TriangleWave(25, 10.0, 100.0, DrawPhase(seed)), 100.0, 100.0));
  }
}

// One period of the triangle at a phase of 0.
TEST(BasebandSigGen, Triangle_PhaseZero_RisesAndFallsByEqualSteps) {
  Probe generator(Gen::AM);
  generator.SetSampleRate(100.0);
  generator.SetEnableRandomPhase(false);
  generator.SetParameters_AM_FM_PM(-12.5, 100.0);
  VecCplx32 got;
  generator.Generate_AM_FM_PM(got, 10);
  std::vector<float> re;
  for (const Cplx32 &x : List(got)) re.push_back(x.re - 1.0F);
  EXPECT_EQ(re, (std::vector<float>{-1, -0.5, 0, 0.5, 1, 0.5, 0, -0.5, -1, -0.5}));
}

// The largest phase that a signal reaches.
double PeakPhase(const Samples &samples) {
  double peak = 0.0;
  for (const Cplx32 &x : samples) {
    peak = std::max(peak, std::fabs(std::atan2(static_cast<double>(x.im), static_cast<double>(x.re))));
  }
  return peak;
}

TEST(BasebandSigGen, Pm_IndexOfEitherSign_IsInDegreesOrRadians) {
  Probe generator(Gen::PM);
  generator.SetSampleRate(1e5);
  VecCplx32 got;
  generator.SetParameters_AM_FM_PM(100.0, -1.0);
  generator.Generate_AM_FM_PM(got, 1000);
  EXPECT_NEAR(PeakPhase(List(got)), 1.0, 1e-5);
  generator.SetParameters_AM_FM_PM(100.0, 1.0);
  generator.Generate_AM_FM_PM(got, 1000);
  EXPECT_NEAR(PeakPhase(List(got)), kPi / 180, 1e-6);
}

// The steps between samples are the instantaneous frequency.
TEST(BasebandSigGen, Fm_Index_IsThePeakDeviation) {
  for (const double frequency : {200.0, -200.0}) {
    Probe generator(Gen::FM);
    generator.SetSampleRate(1e5);
    generator.SetParameters_AM_FM_PM(frequency, 5000.0);
    VecCplx32 got;
    generator.Generate_AM_FM_PM(got, 1000);
    double highest = 0.0;
    for (int i = 1; i < 1000; ++i) {
      const std::complex<double> a(got[i - 1].re, got[i - 1].im), b(got[i].re, got[i].im);
      highest = std::max(highest, std::arg(b * std::conj(a)) * 1e5 / kTwoPi);
    }
    EXPECT_NEAR(highest, 5000.0, 1.0);
  }
}

// Constellations.

Samples Points(Gen::SignalType type, bool normalise) {
  VecCplx32 points;
  Probe::Construct_PSK_QAM_Constellation(points, type, normalise);
  return List(points);
}

// The first quadrant, then its rotations, each the one before times j.
std::vector<std::complex<double>> Square(int points) {
  if (points == 4) return {{1, 1}, {-1, 1}, {-1, -1}, {1, -1}};
  std::vector<std::complex<double>> all;
  const double shift = std::sqrt(points) / 2;
  for (const auto &x : Square(points / 4)) all.push_back(x + std::complex<double>(shift, shift));
  for (int i = 0; i < 3 * points / 4; ++i) {
    all.push_back(all[static_cast<std::size_t>(i)] * std::complex<double>(0, 1));
  }
  if (points > 4) all.resize(static_cast<std::size_t>(points));
  return all;
}

TEST(BasebandSigGen, Constellation_Psk_StandsAnticlockwise) {
  ExpectSame(Points(Gen::BPSK, false), {{1.0F, 0.0F}, {-1.0F, 0.0F}});
  const float c = 1.0F / 1.4142135F;
  ExpectSame(Points(Gen::QPSK, false), {{c, c}, {-c, c}, {-c, -c}, {c, -c}});
  for (const int points : {8, 16}) {
    const Samples got = Points(points == 8 ? Gen::PSK8 : Gen::PSK16, true);
    ASSERT_EQ(got.size(), static_cast<std::size_t>(points));
    for (int i = 0; i < points; ++i) {
      EXPECT_NEAR(got[static_cast<std::size_t>(i)].re, std::cos(kTwoPi * i / points), 1e-6);
      EXPECT_NEAR(got[static_cast<std::size_t>(i)].im, std::sin(kTwoPi * i / points), 1e-6);
    }
  }
}

TEST(BasebandSigGen, Constellation_Psk8_MultipliesItsRotatorOn) {
  const Cplx32 rotator = Phasor(static_cast<double>(6.2831855F / 8.0F));
  Samples expected = {{1.0F, 0.0F}};
  while (expected.size() < 8) expected.push_back(Product(expected.back(), rotator));
  ExpectSame(Points(Gen::PSK8, false), expected);
}

TEST(BasebandSigGen, Constellation_Qam_HasOddCoordinatesByQuadrants) {
  // The first quadrant of 16 points in the order of the symbols.
  const std::complex<double> first[] = {{3, 3}, {1, 3}, {1, 1}, {3, 1}};
  for (int i = 0; i < 4; ++i) EXPECT_EQ(Square(16)[static_cast<std::size_t>(i)], first[i]);
  for (const auto &[type, points] : {std::pair{Gen::QAM16, 16}, {Gen::QAM64, 64}, {Gen::QAM256, 256}}) {
    const Samples got = Points(type, false), unit = Points(type, true);
    const auto expected = Square(points);
    ASSERT_EQ(got.size(), expected.size());
    ASSERT_EQ(unit.size(), expected.size());
    double power = 0.0;
    for (const auto &x : expected) power += std::norm(x) / points;
    for (std::size_t i = 0; i < got.size(); ++i) {
      EXPECT_NEAR(got[i].re, expected[i].real(), 3e-6);
      EXPECT_NEAR(got[i].im, expected[i].imag(), 3e-6);
      EXPECT_NEAR(unit[i].re, expected[i].real() / std::sqrt(power), 1e-6);
      EXPECT_NEAR(unit[i].im, expected[i].imag() / std::sqrt(power), 1e-6);
    }
  }
}

TEST(BasebandSigGen, Constellation_OtherTypes_IsEmpty) {
  for (const int type : {-1, 0, 3, 11, 15, 17, 99}) {
    VecCplx32 points(5);
    Probe::Construct_PSK_QAM_Constellation(points, static_cast<Gen::SignalType>(type), true);
    EXPECT_EQ(points.GetSize(), 0) << type;
  }
}

// PSK and QAM.

// What the stated steps take and leave, for symbols through the shaping chain.
struct Shaping {
  Shaping(Gen::SignalType type, double sampleRate, double symbolRate, double rolloff)
      : samplesPerSymbol(sampleRate / symbolRate),
        oversampling(std::max(2, static_cast<int>(std::ceil(samplesPerSymbol)))),
        ratio(sampleRate / (oversampling * symbolRate)), points(Points(type, true)), resampler(ratio) {
    const auto inner = static_cast<float>(oversampling * symbolRate), rate = static_cast<float>(symbolRate),
               shape = static_cast<float>(rolloff);
    taps = std::max(201, filter.GetRecommendedTapSize(inner, rate, shape));
    filter.SetParameters(inner, rate, shape, taps);
    for (Cplx32 &x : points) {
      x = {x.re * static_cast<float>(oversampling), x.im * static_cast<float>(oversampling)};
    }
  }

  Samples Run(int n, unsigned int &seed) {
    const int margin = taps / oversampling * 2 + 2;
    for (;; factor = n / length + 0.5) {
      const int count = static_cast<int>(std::ceil((n / samplesPerSymbol + margin) * factor));
      symbols = DrawSymbols(count, static_cast<int>(points.size()), seed);
      VecCplx32 up(count * oversampling), shaped, out;
      for (int i = 0; i < count; ++i) {
        up[i * oversampling] = points[static_cast<std::size_t>(symbols[static_cast<std::size_t>(i)])];
      }
      filter.Apply(shaped, up, false);
      resampler.Apply(out, shaped);
      length = out.GetSize();
      if (length < n) continue;
      Samples all = List(out);
      return {all.end() - n, all.end()};
    }
  }

  double samplesPerSymbol;
  int oversampling;
  double ratio;
  int taps;
  RootRaisedCosineFilter filter;
  Samples points;
  ArbRateResampler resampler;
  double factor = 1.0, length = 0.0;
  std::vector<int> symbols; // of the latest run
};

constexpr Gen::SignalType kShapedTypes[] = {Gen::BPSK,  Gen::QPSK,  Gen::PSK8,  Gen::PSK16,
                                            Gen::QAM16, Gen::QAM64, Gen::QAM256};

TEST(BasebandSigGen, PskQam_AnyType_FollowsTheStatedSteps) {
  for (const Gen::SignalType type : kShapedTypes) {
    for (const double symbolRate : {250e3, 299792.458, 1e6, 700e3, 12345.6, 1.25e6, 1e7}) {
      Gen generator(type);
      generator.SetSampleRate(1e6);
      generator.SetParameters_PSK_QAM(symbolRate, 0.3);
      Shaping shaping(type, 1e6, symbolRate, 0.3);
      unsigned int data = 3, phases = 2;
      for (const int n : {1000, 1, 0, 2500}) {
        if (n < 2 && symbolRate == 1e7) continue; // the plain steps find no number of symbols for these
        Samples expected = shaping.Run(n, data);
        Finish(expected, -10.0, DrawPhase(phases));
        ExpectSame(Signal(generator, n), expected, std::to_string(type) + ", " + std::to_string(symbolRate));
      }
    }
  }
}

// A receiver: the samples, correlated with the pulse in closed form at each symbol's instant, give back the
// symbols that were drawn, at their places.
TEST(BasebandSigGen, PskQam_MatchedReceiver_FindsTheDrawnSymbols) {
  constexpr double kRolloff = 0.25;
  constexpr int kLength = 6000;
  const auto pulse = [](double x) { // unit energy for a period of 1
    const double r = kRolloff, edge = 4 * r * x;
    if (std::fabs(x) < 1e-9) return 1 - r + 4 * r / kPi;
    if (std::fabs(1 - edge * edge) < 1e-9) {
      return r / std::numbers::sqrt2 *
             ((1 + 2 / kPi) * std::sin(kPi / 4 / r) + (1 - 2 / kPi) * std::cos(kPi / 4 / r));
    }
    return (std::sin(kPi * x * (1 - r)) + edge * std::cos(kPi * x * (1 + r))) / (kPi * x * (1 - edge * edge));
  };
  for (const Gen::SignalType type : kShapedTypes) {
    for (const double samplesPerSymbol : {4.0, 2.9, 2.0}) {
      const double symbolRate = 1e6 / samplesPerSymbol;
      Gen generator(type);
      generator.SetBasicParameters(1e6, 10.0, -60.0, 0.0, false);
      generator.SetParameters_PSK_QAM(symbolRate, kRolloff);
      const Samples signal = Signal(generator, kLength);
      Shaping shaping(type, 1e6, symbolRate, kRolloff);
      unsigned int seed = 3;
      shaping.Run(kLength, seed);
      const double firstInstant = shaping.resampler.GetHistory() + (shaping.length - kLength) / shaping.ratio;
      double error = 0.0;
      int received = 0;
      for (std::size_t i = 0; i < shaping.symbols.size(); ++i) {
        // The symbol's centre in samples of the signal.
        const double centre =
            (static_cast<double>(i) * shaping.oversampling + (shaping.taps - 1) / 2.0 - firstInstant) *
            shaping.ratio;
        const double reach = 40 * samplesPerSymbol;
        if (centre < reach || centre > kLength - 1 - reach) continue;
        std::complex<double> sum = 0.0;
        for (int k = static_cast<int>(centre - reach); k < centre + reach; ++k) {
          const Cplx32 x = signal[static_cast<std::size_t>(k)];
          sum += std::complex<double>(x.re, x.im) * pulse((k - centre) / samplesPerSymbol);
        }
        const Cplx32 point = shaping.points[static_cast<std::size_t>(shaping.symbols[i])];
        const std::complex<double> ideal(static_cast<double>(point.re) / shaping.oversampling,
                                         static_cast<double>(point.im) / shaping.oversampling);
        error += std::norm(sum / samplesPerSymbol - ideal);
        ++received;
      }
      EXPECT_GT(received, 1000);
      EXPECT_LT(std::sqrt(error / received), 0.004) << type << ", " << samplesPerSymbol;
    }
  }
}

// FSK.

struct Keying {
  Samples Run(int n, unsigned int &data, unsigned int &phases) {
    const double samplesPerSymbol = sampleRate / symbolRate;
    const int oversampling = std::max(2, static_cast<int>(std::ceil(samplesPerSymbol)));
    ArbRateResampler resampler(sampleRate / (oversampling * symbolRate));
    for (;; factor = n / length + 0.5) {
      const int count = static_cast<int>(std::ceil(n / samplesPerSymbol * factor));
      symbols = DrawSymbols(count, alphabet, data);
      double phase = randomPhase ? DrawPhase(phases) : 0.0;
      Samples joined;
      for (int i = 0; i < count; ++i) {
        const int symbol = symbols[static_cast<std::size_t>(i)];
        if (!continuous && i > 0 && symbol != symbols[static_cast<std::size_t>(i - 1)]) {
          phase = randomPhase ? DrawPhase(phases) : 0.0;
        }
        const double frequency = deviation * (symbol * (2.0 / (alphabet - 1)) - 1.0);
        VecCplx32 block(oversampling);
        block.Set({1.0F, 0.0F});
        DSPUtils::FreqShift(block, frequency / sampleRate, &phase);
        const Samples list = List(block);
        joined.insert(joined.end(), list.begin(), list.end());
      }
      VecCplx32 out;
      resampler.Apply(out, Of<VecCplx32>(joined));
      length = out.GetSize();
      if (length < n) continue;
      const Samples all = List(out);
      return {all.end() - n, all.end()};
    }
  }

  int alphabet;
  double sampleRate, symbolRate, deviation;
  bool randomPhase, continuous;
  double factor = 1.0, length = 0.0;
  std::vector<int> symbols = {};
};

TEST(BasebandSigGen, Fsk_AnyType_FollowsTheStatedSteps) {
  for (const int bits : {1, 2, 3, 4}) {
    for (const double symbolRate : {100e3, 299792.458, 1e6, 1.25e6, 1e7}) {
      for (const int way : {0, 1, 2}) {
        Keying keying{1 << bits, 1e6, symbolRate, 80e3, way != 1, way == 2};
        Probe generator(static_cast<Gen::SignalType>(Gen::FSK2 + bits - 1));
        generator.SetSampleRate(1e6);
        generator.SetEnableRandomPhase(keying.randomPhase);
        generator.m_phaseContinuous = keying.continuous;
        generator.SetParameters_FSK(symbolRate, 80e3, way == 0);
        unsigned int data = 3, phases = 2;
        for (const int n : {1000, 2500, 700}) {
          Samples expected = keying.Run(n, data, phases);
          Finish(expected, -10.0, keying.randomPhase ? DrawPhase(phases) : 0.0);
          ExpectSame(Signal(generator, n), expected, std::to_string(bits) + ", " + std::to_string(way));
          EXPECT_EQ(generator.m_lengthFactor, keying.factor);
        }
      }
    }
  }
}

// In the middle of its symbols the frequency is one of the two deviations and nothing else.
TEST(BasebandSigGen, Fsk2_WholeSamplesPerSymbol_TakesTheTwoDeviations) {
  constexpr int kPerSymbol = 400;
  Probe generator(Gen::FSK2);
  generator.SetBasicParameters(1e6, 10.0, -60.0, 0.0, true);
  generator.m_phaseContinuous = true;
  generator.SetParameters_FSK(1e6 / kPerSymbol, 20e3, true);
  const Samples signal = Signal(generator, 40 * kPerSymbol);
  int low = 0, high = 0, other = 0;
  for (std::size_t i = 1; i < signal.size(); ++i) {
    const std::complex<double> a(signal[i - 1].re, signal[i - 1].im), b(signal[i].re, signal[i].im);
    const double frequency = std::arg(b * std::conj(a)) * 1e6 / kTwoPi;
    low += std::fabs(frequency + 20e3) < 100;
    high += std::fabs(frequency - 20e3) < 100;
    other += std::fabs(std::fabs(frequency) - 20e3) >= 100;
  }
  EXPECT_GT(low, 10 * kPerSymbol);
  EXPECT_GT(high, 10 * kPerSymbol);
  EXPECT_LT(other, static_cast<int>(signal.size()) / 4);
}

// Requests shorter than what the resampler takes for its margins; its ripple is 0.02 dB.
TEST(BasebandSigGen, Fsk_AnyShortLength_GivesThatLength) {
  for (const double samplesPerSymbol : {0.1, 0.8, 1.0, 1.5, 2.0, 3.7, 20.0, 46.0, 47.0, 80.0, 1000.0}) {
    for (int n = 0; n <= 130; ++n) {
      Probe generator(Gen::FSK4);
      generator.SetBasicParameters(1e6, 10.0, -60.0, 0.0, true);
      generator.m_phaseContinuous = true;
      generator.SetParameters_FSK(1e6 / samplesPerSymbol, 0.0, false);
      const Samples signal = Signal(generator, n);
      ASSERT_EQ(signal.size(), static_cast<std::size_t>(n)) << samplesPerSymbol;
      for (const Cplx32 &x : signal) ASSERT_NEAR(std::hypot(x.re, x.im), 1.0, 2.3e-3) << samplesPerSymbol;
      ASSERT_GE(generator.m_lengthFactor, 1.0);
    }
  }
}

// The last of the samples that more symbols give: the margins are filled whatever the length.
TEST(BasebandSigGen, PskQam_ManySymbolsPerSample_GivesAnyShortLength) {
  for (const double samplesPerSymbol : {0.1, 0.8}) {
    for (int n = 0; n <= 130; n += 13) {
      Gen generator(Gen::BPSK);
      generator.SetBasicParameters(1e6, 10.0, -60.0, 0.0, false);
      generator.SetParameters_PSK_QAM(1e6 / samplesPerSymbol, 0.3);
      const Samples signal = Signal(generator, n);
      ASSERT_EQ(signal.size(), static_cast<std::size_t>(n)) << samplesPerSymbol;
      for (const Cplx32 &x : signal) ASSERT_TRUE(x.re != 0.0F && std::fabs(x.re) < 3.0F) << samplesPerSymbol;
    }
  }
}

// Pulses.

struct Pulses {
  Samples Run(int n, unsigned int &seed) const {
    const double w = std::fabs(width), edge = width > 0 ? 0.05 * w : 0.0, on = w + edge;
    const auto samplesOf = [this](double seconds) { return std::round(sampleRate * seconds); };
    const int cycle = static_cast<int>(std::min<double>(samplesOf(std::max(on, period)), n));
    if (cycle < 1) return Samples(static_cast<std::size_t>(n), {0.0F, 0.0F}); // no period, no pulse
    const int length = static_cast<int>(std::min<double>(samplesOf(on), cycle));
    const int repeats = static_cast<int>(std::ceil(static_cast<double>(n) / cycle));
    Samples p(static_cast<std::size_t>(length), {1.0F, 0.0F});
    if (chirp != 0) {
      for (int k = 0; k < length; ++k) {
        const float t = static_cast<float>(k) * static_cast<float>(1.0 / sampleRate);
        const float slope = t * static_cast<float>(chirp / on * 0.5);
        const float frequency = slope + static_cast<float>(-chirp * 0.5);
        const float cycles = frequency * t;
        p[static_cast<std::size_t>(k)] = MathUtils::Expj(cycles * 6.2831855F);
      }
    }
    const int e = static_cast<int>(samplesOf(edge));
    const auto weigh = [&](int at, float weight) {
      if (at < 0 || at >= length) return;
      Cplx32 &x = p[static_cast<std::size_t>(at)];
      x = {x.re * weight, x.im * weight};
    };
    const auto rise = [e](int k) { return (static_cast<float>(std::cos(-kPi + k * kPi / e)) + 1.0F) * 0.5F; };
    for (int k = 0; k < e; ++k) weigh(k, rise(k));
    for (int k = 0; k < e; ++k) weigh(length - e + k, rise(k) * -1.0F + 1.0F);
    Samples all(static_cast<std::size_t>(repeats * cycle), {0.0F, 0.0F});
    for (int r = 0; r < repeats; ++r) {
      const Cplx32 phasor = Phasor(DrawPhase(seed));
      for (Cplx32 &x : p) x = Product(x, phasor);
      std::copy(p.begin(), p.end(), all.begin() + ((r + 1) * cycle - length));
    }
    all.resize(static_cast<std::size_t>(n));
    return all;
  }

  double sampleRate, width, period, chirp;
};

TEST(BasebandSigGen, Pulse_AnyWidthAndPeriod_FollowsTheStatedSteps) {
  for (const double width : {1e-6, -1e-6, 20e-6, -20e-6, 0.0, 1e-9}) {
    for (const double period : {10e-6, 0.0, 5.5e-6, 1e-3, 1e-8}) {
      for (const double chirp : {0.0, 5e6, -3e6}) {
        Gen generator(chirp == 0.0 ? Gen::Pulse : Gen::Chirp);
        generator.SetSampleRate(100e6);
        generator.SetParameters_Pulse(width, period, chirp);
        const Pulses pulses{100e6, width, period, chirp};
        unsigned int seed = 2;
        for (const int n : {5000, 1, 30, 777}) {
          Samples expected = pulses.Run(n, seed);
          Finish(expected, -10.0, DrawPhase(seed));
          ExpectSame(Signal(generator, n), expected,
                     std::to_string(width * 1e9) + ", " + std::to_string(period * 1e9) + ", " +
                         std::to_string(n));
        }
      }
    }
  }
}

std::vector<int> OnSamples(const Samples &samples) {
  std::vector<int> on;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    if (std::hypot(samples[i].re, samples[i].im) > 0.0F) on.push_back(static_cast<int>(i));
  }
  return on;
}

Samples PulseTrain(double width, double period, int n) {
  Probe generator(Gen::Pulse);
  generator.SetBasicParameters(100e6, 10.0, -60.0, 0.0, false);
  generator.SetParameters_Pulse(width, period, 0.0);
  return Signal(generator, n);
}

TEST(BasebandSigGen, Pulse_NegativeWidth_HasSharpEdges) {
  const Samples got = PulseTrain(-1e-6, 5e-6, 500);
  const std::vector<int> on = OnSamples(got);
  ASSERT_EQ(on.size(), 100U); // 1 us
  EXPECT_EQ(on.front(), 400); // behind the idle samples of its period
  for (const int i : on) EXPECT_EQ(got[static_cast<std::size_t>(i)], (Cplx32{1.0F, 0.0F}));
}

TEST(BasebandSigGen, Pulse_PositiveWidth_HasRaisedCosineEdges) {
  const Samples got = PulseTrain(1e-6, 5e-6, 500);
  // 105 samples with edges of 5, of which the very first is 0 and the last but one edge begins at 1.
  EXPECT_EQ(OnSamples(got).front(), 396);
  EXPECT_EQ(OnSamples(got).size(), 104U);
  for (int k = 0; k < 5; ++k) {
    const double rise = (1 - std::cos(kPi * k / 5)) / 2;
    EXPECT_NEAR(got[static_cast<std::size_t>(395 + k)].re, rise, 1e-7);
    EXPECT_NEAR(got[static_cast<std::size_t>(495 + k)].re, 1 - rise, 1e-7);
  }
  for (std::size_t i = 400; i < 495; ++i) EXPECT_EQ(got[i].re, 1.0F);
}

TEST(BasebandSigGen, Pulse_PeriodShorterThanThePulse_IsGapless) {
  EXPECT_EQ(OnSamples(PulseTrain(-1e-6, 0.5e-6, 1000)).size(), 1000U);
}

TEST(BasebandSigGen, Pulse_PeriodLongerThanTheSignal_EndsWithThePulse) {
  const std::vector<int> on = OnSamples(PulseTrain(-1e-6, 1.0, 300));
  ASSERT_EQ(on.size(), 100U);
  EXPECT_EQ(on.front(), 200);
  EXPECT_EQ(OnSamples(PulseTrain(-1e-6, 1.0, 60)).size(), 60U); // the pulse is cut to fit
}

TEST(BasebandSigGen, Chirp_Bandwidth_IsSweptUpwards) {
  Probe generator(Gen::Chirp);
  generator.SetBasicParameters(100e6, 10.0, -60.0, 0.0, false);
  generator.SetParameters_Pulse(-50e-6, 50e-6, 20e6);
  const Samples got = Signal(generator, 5000);
  const auto frequency = [&](std::size_t i) {
    const std::complex<double> a(got[i].re, got[i].im), b(got[i + 1].re, got[i + 1].im);
    return std::arg(b * std::conj(a)) * 100e6 / kTwoPi;
  };
  EXPECT_NEAR(frequency(0), -10e6, 20e3);
  EXPECT_NEAR(frequency(2499), 0.0, 20e3);
  EXPECT_NEAR(frequency(4998), 10e6, 20e3);
}

} // namespace
