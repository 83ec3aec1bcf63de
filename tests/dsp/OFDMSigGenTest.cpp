#include "qorn/dsp/OFDMSigGen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <memory>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

#include "dsp/OfdmFrame.h"
#include "qorn/infra/QORNException.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/math/UnitConversion.h"
#include "support/Allocations.h"
#include "support/Draws.h"
#include "support/OfdmReceiver.h"
#include "support/Resampling.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::ConstellationPoint;
using test::Decibels;
using test::List;
using test::OfdmReceiver;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Row {
  int mcs, rate, order, bits;
};

// The RATE field of the standard's table 80, and the rates of its table 78.
constexpr Row kRows[] = {{0, 0b1101, 2, 24},   {1, 0b1111, 2, 36},  {2, 0b0101, 4, 48},
                         {3, 0b0111, 4, 72},   {4, 0b1001, 16, 96}, {5, 0b1011, 16, 144},
                         {6, 0b0001, 64, 192}, {7, 0b0011, 64, 216}};

class Generator : public OFDMSigGen {
public:
  using OFDMSigGen::m_cpLength;
  using OFDMSigGen::m_dataBitsPerSymbol;
  using OFDMSigGen::m_dataSeed;
  using OFDMSigGen::m_fftLength;
  using OFDMSigGen::m_fftOversampling;
  using OFDMSigGen::m_fftRate;
  using OFDMSigGen::m_guardFraction;
  using OFDMSigGen::m_mcs;
  using OFDMSigGen::m_modOrder;
  using OFDMSigGen::m_numDataSymbols;
  using OFDMSigGen::m_paramsChanged;
  using OFDMSigGen::m_phaseSeed;
  using OFDMSigGen::m_rateBits;
  using OFDMSigGen::m_symbolDuration;
  using OFDMSigGen::m_symbolFftLength;
  using OFDMSigGen::m_symbolLength;

  Generator() = default;
  explicit Generator(double sampleRate) { SetSampleRate(sampleRate); }
  Generator(double sampleRate, int mcs, double rate = 20e6, double guard = 0.25) {
    SetSampleRate(sampleRate);
    SetParameters(rate, static_cast<McsType>(mcs), guard);
  }
};

// The generator's samples as complex numbers in double.
std::complex<double> At(const VecCplx32 &signal, int i) {
  return {static_cast<double>(signal[i].re), static_cast<double>(signal[i].im)};
}

double Level(const VecCplx32 &signal, double first, double count) {
  double power = 0.0;
  const int begin = static_cast<int>(first), end = begin + static_cast<int>(count);
  for (int i = begin; i < end; ++i) power += std::norm(At(signal, i));
  return std::sqrt(power / (end - begin));
}

std::vector<Cplx32> Zeros(int n) { return std::vector<Cplx32>(static_cast<std::size_t>(n)); }

std::complex<double> CarrierOf(const test::OfdmSymbol &symbol, int carrier) {
  return symbol[static_cast<std::size_t>(carrier + 26)];
}

// Root mean square distances, in dB, of pilots and of data from the points that they should be, over all
// symbols.
struct Errors {
  Errors(const OfdmReceiver &receiver, int order) {
    double pilotSum = 0.0, dataSum = 0.0;
    const int last = receiver.LastSymbol();
    for (int index = 0; index <= last; ++index) {
      const auto symbol = receiver.Symbol(index);
      const int points = index == 0 ? 2 : order;
      for (int k = -26; k <= 26; ++k) {
        const auto value = CarrierOf(symbol, k);
        if (k == 0) continue;
        if (test::IsPilot(k)) {
          pilotSum += std::norm(value - (k == 21 ? -1.0 : 1.0) * test::kPilotPolarity[index % 127]);
          continue;
        }
        double nearest = kInf;
        for (int i = 0; i < points; ++i) {
          nearest = std::min(nearest, std::norm(value - ConstellationPoint(points, i)));
        }
        dataSum += nearest;
      }
    }
    pilots = Decibels(std::sqrt(pilotSum / (4.0 * (last + 1))));
    data = Decibels(std::sqrt(dataSum / (48.0 * (last + 1))));
  }

  double pilots, data;
};

void ExpectReceived(const OfdmReceiver &receiver, const Row &row, int dataSymbols, double error) {
  const auto field = receiver.Signal();
  EXPECT_EQ(field.rate, row.rate);
  EXPECT_EQ(field.reserved, 0);
  EXPECT_EQ(field.length, dataSymbols * row.bits / 8);
  EXPECT_TRUE(field.evenParity);
  EXPECT_TRUE(field.zeroTail);
  EXPECT_EQ(field.errors, 0);
  EXPECT_GE(receiver.LastSymbol(), 5);
  const Errors errors(receiver, row.order);
  EXPECT_LT(errors.pilots, error);
  EXPECT_LT(errors.data, error);
}

TEST(OFDMSigGen, Constructor_Default_IsStandardAt6Mbps) {
  Generator generator;
  EXPECT_EQ(generator.GetSignalType(), BasebandSigGen::Custom);
  EXPECT_TRUE(generator.m_paramsChanged);
  EXPECT_EQ(generator.m_fftOversampling, 2);
  EXPECT_EQ(generator.m_fftRate, 4e7);
  EXPECT_EQ(generator.m_fftLength, 128);
  EXPECT_EQ(generator.m_guardFraction, 0.25);
  EXPECT_EQ(generator.m_mcs, OFDMSigGen::Mbps6);
  EXPECT_EQ(generator.m_rateBits, 13);
  EXPECT_EQ(generator.m_modOrder, 2);
  EXPECT_EQ(generator.m_dataBitsPerSymbol, 24);
}

TEST(OFDMSigGen, SetParameters_AnyMcs_SelectsItsRow) {
  Generator generator;
  for (const Row &row : kRows) {
    generator.m_paramsChanged = false;
    generator.SetParameters(20e6, static_cast<OFDMSigGen::McsType>(row.mcs), 0.25);
    EXPECT_TRUE(generator.m_paramsChanged);
    EXPECT_EQ(generator.m_mcs, row.mcs);
    EXPECT_EQ(generator.m_rateBits, row.rate);
    EXPECT_EQ(generator.m_modOrder, row.order);
    EXPECT_EQ(generator.m_dataBitsPerSymbol, row.bits);
  }
  for (const int unknown : {9, 8, -1, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    generator.SetParameters(20e6, static_cast<OFDMSigGen::McsType>(unknown), 0.25);
    EXPECT_EQ(generator.m_mcs, unknown);
    EXPECT_EQ(generator.m_rateBits, 13);
    EXPECT_EQ(generator.m_modOrder, 2);
    EXPECT_EQ(generator.m_dataBitsPerSymbol, 24);
  }
}

TEST(OFDMSigGen, SetParameters_AnyRate_GivesTwiceTheRate) {
  const double rates[][2] = {{20e6, 4e7},     {10e6, 2e7},  {1000.0, 2000.0}, {-312500.0, 4e7},
                             {-20.0, 2560.0}, {500.0, 4e7}, {999.999, 4e7},   {-15.0, 4e7},
                             {0.0, 4e7},      {kNan, 4e7}};
  Generator generator;
  for (const auto &[rate, fftRate] : rates) {
    generator.SetParameters(rate, OFDMSigGen::Mbps6, 0.0);
    EXPECT_EQ(generator.m_fftRate, fftRate) << rate;
    EXPECT_EQ(generator.m_guardFraction, 0.25);
  }
}

TEST(OFDMSigGen, SetParameters_AnyGuard_GivesWholeSamples) {
  const std::pair<double, int> guards[] = {{0.25, 32}, {0.125, 16}, {1.0 / 32.0, 4}, {0.3, 38},   {0.5, 64},
                                           {1.0, 128}, {1.5, 128},  {1e300, 128},    {kInf, 128}, {1e-300, 0},
                                           {0.0, 32},  {-0.5, 32},  {kNan, 32}};
  VecCplx32 signal;
  for (const auto &[guard, samples] : guards) {
    Generator generator(40e6, 0, 20e6, guard);
    generator.GenerateSignal(signal, 5000, false);
    EXPECT_EQ(generator.m_cpLength, samples) << guard;
    EXPECT_EQ(generator.m_symbolFftLength, 128);
    EXPECT_EQ(generator.m_symbolLength, 128 + samples);
    EXPECT_EQ(generator.m_symbolDuration, (128 + samples) / 4e7);
    EXPECT_EQ(generator.m_numDataSymbols, 5000 / (128 + samples) - 1);
  }
}

// The burst of a new generator without random phase, in exact arithmetic from the tables of the standard.
struct ExactBurst {
  ExactBurst(const Row &row, int lead, int dataSymbols) : samples(static_cast<std::size_t>(lead)) {
    test::OfdmSymbol carriers{};
    constexpr int kShort[] = {1, -1, 1, -1, 1, 1, -1, -1, 1, 1, 1, 1};
    int next = 0;
    for (int k = -24; k <= 24; k += 4) {
      if (k != 0)
        carriers[Place(k)] = std::sqrt(13.0 / 6.0) * kShort[next++] * std::complex<double>(1.0, 1.0);
    }
    Add(carriers, 64, 2);
    for (int k = -26; k <= 26; ++k) carriers[Place(k)] = test::kLongSequence[k + 26];
    Add(carriers, 64, 2);
    const auto signalBits = ofdm::CodedSignal(row.rate, dataSymbols * row.bits / 8);
    unsigned int seed = 3;
    for (int index = 0; index <= dataSymbols; ++index) {
      float draws[48];
      if (index > 0) {
        TargetLib::RandUniform_Direct_32f(draws, 48, 0.0F, static_cast<float>(row.order) - 1e-5F, &seed);
      }
      std::size_t place = 0;
      for (int k = -26; k <= 26; ++k) {
        if (k == 0) continue;
        if (test::IsPilot(k)) {
          carriers[Place(k)] = (k == 21 ? -1.0 : 1.0) * test::kPilotPolarity[index % 127];
        } else if (index == 0) {
          carriers[Place(k)] = 2.0 * signalBits[place++] - 1.0;
        } else {
          carriers[Place(k)] = ConstellationPoint(row.order, static_cast<int>(draws[place++]));
        }
      }
      Add(carriers, 32, 1);
    }
    samples.resize(samples.size() + 160);
  }

  static std::size_t Place(int carrier) { return static_cast<std::size_t>(carrier + 26); }

  void Add(const test::OfdmSymbol &carriers, int guard, int times) {
    for (int m = -guard; m < 128 * times; ++m) {
      std::complex<double> sum = 0.0;
      for (int k = -26; k <= 26; ++k) {
        sum += carriers[Place(k)] * std::polar(1.0, 2.0 * std::numbers::pi * (k * m % 128) / 128.0);
      }
      samples.push_back(sum / std::sqrt(52.0));
    }
  }

  // The resampler as it is stated, from `history` on, at full level.
  std::vector<std::complex<double>> Resampled(double ratio, int history) const {
    const auto rolloff = static_cast<float>(std::min(0.98, 1.25 * ratio));
    const test::Wing wing(16.0, 50, static_cast<double>(rolloff), 6.1422F);
    std::vector<float> re, im;
    for (const auto &x : samples) {
      re.push_back(static_cast<float>(x.real()));
      im.push_back(static_cast<float>(x.imag()));
    }
    const int len = static_cast<int>(samples.size()) - 2 * history - 2;
    const test::StatedRun first(wing, re, history, len, ratio, ratio < 1.0);
    const test::StatedRun second(wing, im, history, len, ratio, ratio < 1.0);
    std::vector<std::complex<double>> out;
    for (std::size_t i = 0; i < first.out.size(); ++i) {
      out.emplace_back(static_cast<double>(first.out[i]), static_cast<double>(second.out[i]));
    }
    return out;
  }

  std::vector<std::complex<double>> samples;
};

// Sample for sample, at a ratio of 1, above and below. The last sample rate does not hold the band.
TEST(OFDMSigGen, GenerateSignal_AnyRatio_IsTheStatedBurst) {
  struct Case {
    double ratio;
    int n, dataSymbols, history;
  };
  constexpr Case kCases[] = {{1.0, 1600, 9, 9},   {1.536, 2500, 9, 9}, {0.5, 800, 9, 17},
                             {0.7, 1400, 11, 12}, {5.0, 16000, 19, 9}, {0.05, 200, 24, 161}};
  VecCplx32 signal;
  for (const Case &it : kCases) {
    for (const Row &row : {kRows[2], kRows[5], kRows[7]}) {
      SCOPED_TRACE(it.ratio);
      Generator generator(40e6 * it.ratio, row.mcs);
      generator.SetEnableRandomPhase(false);
      generator.SetSignalAmplitude(10.0);
      generator.GenerateSignal(signal, it.n, false);
      ASSERT_EQ(generator.m_numDataSymbols, it.dataSymbols);
      const auto expected = ExactBurst(row, it.n / 10, it.dataSymbols).Resampled(it.ratio, it.history);
      for (int i = 0; i < it.n; ++i) {
        const auto at = static_cast<std::size_t>(i) % expected.size();
        ASSERT_LT(std::abs(At(signal, i) - expected[at]), 4e-6) << i;
      }
    }
  }
}

// The level is that of the exact burst, root mean square and peak.
TEST(OFDMSigGen, GenerateSignal_AnyLevel_HasThePeakAndRmsOfTheBurst) {
  VecCplx32 signal;
  for (const Row &row : kRows) {
    const auto burst = ExactBurst(row, 160, 9).Resampled(1.0, 9);
    double power = 0.0, peak = 0.0;
    for (std::size_t i = 0; i < 1600; ++i) {
      power += std::norm(burst[i]);
      peak = std::max(peak, std::norm(burst[i]));
    }
    for (const double level : {-10.0, 0.0, 10.0, -63.5}) {
      Generator generator(40e6, row.mcs);
      generator.SetSignalAmplitude(level);
      generator.GenerateSignal(signal, 1600, false);
      double largest = 0.0;
      for (int i = 0; i < 1600; ++i) largest = std::max(largest, std::abs(At(signal, i)));
      const double unit = UnitConversion::PeakVolt2dBm(1.0); // dBm of a carrier of unit amplitude
      EXPECT_NEAR(UnitConversion::PeakVolt2dBm(Level(signal, 0, 1600)),
                  level - unit + UnitConversion::PeakVolt2dBm(std::sqrt(power / 1600.0)), 1e-4);
      EXPECT_NEAR(UnitConversion::PeakVolt2dBm(largest),
                  level - unit + UnitConversion::PeakVolt2dBm(std::sqrt(peak)), 1e-4);
    }
  }
}

// One draw of phase for each burst turns it, and its noise is drawn for the real and then for the imaginary
// parts: sample for sample what the draws and the burst without them give.
TEST(OFDMSigGen, GenerateSignal_PhaseAndNoise_AreTheDraws) {
  for (const double sampleRate : {40e6, 20e6}) {
    Generator generator(sampleRate, 5), plain(sampleRate, 5);
    generator.SetNoiseAmplitude(-30.0);
    plain.SetEnableRandomPhase(false);
    plain.SetSignalAmplitude(10.0);
    unsigned int phaseSeed = 2, noiseSeed = 1;
    VecCplx32 signal, burst;
    const auto k = static_cast<float>(std::pow(10.0, -1.5));
    for (int call = 0; call < 3; ++call) {
      generator.GenerateSignal(signal, 2000, true);
      plain.GenerateSignal(burst, 2000, false);
      const double phase = test::DrawPhase(phaseSeed);
      const auto scale = static_cast<float>(std::pow(10.0, (-10.0 - 10.0) / 20.0));
      const float re = static_cast<float>(std::cos(phase)) * scale,
                  im = static_cast<float>(std::sin(phase)) * scale;
      const std::vector<float> noiseRe = test::Uniform(2000, -k, k, noiseSeed);
      const std::vector<float> noiseIm = test::Uniform(2000, -k, k, noiseSeed);
      for (int i = 0; i < 2000; ++i) {
        const Cplx32 x = burst[i];
        const float realParts[] = {x.re * re, x.im * im}, imaginaryParts[] = {x.re * im, x.im * re};
        const Cplx32 turned = {realParts[0] - realParts[1], imaginaryParts[0] + imaginaryParts[1]};
        const auto at = static_cast<std::size_t>(i);
        ASSERT_EQ(signal[i].re, turned.re + noiseRe[at]) << call << ' ' << i;
        ASSERT_EQ(signal[i].im, turned.im + noiseIm[at]) << call << ' ' << i;
      }
    }
    EXPECT_EQ(generator.m_phaseSeed, phaseSeed);
  }
}

struct Rate {
  double sampleRate, error;
};

class OFDMBurst : public testing::TestWithParam<Rate> {};

// At 40 and 20 MHz all instants are those of samples, and the error is that of float arithmetic; at 100 MHz
// they lie on table points, and the resampler's images beside the band. Elsewhere images, each 64 dB below
// its carrier by the design of the filter, fall into the band.
INSTANTIATE_TEST_SUITE_P(Rates, OFDMBurst,
                         testing::Values(Rate{40e6, -120.0}, Rate{20e6, -120.0}, Rate{100e6, -120.0},
                                         Rate{61.44e6, -80.0}, Rate{31.25e6, -60.0}, Rate{30.72e6, -60.0},
                                         Rate{22e6, -60.0}, Rate{39.9e6, -60.0}, Rate{41e6, -60.0}),
                         [](const auto &rate) {
                           return std::to_string(std::lround(rate.param.sampleRate / 1e4)) + "0kHz";
                         });

TEST_P(OFDMBurst, GenerateSignal_AllMcs_IsReceived) {
  const auto [sampleRate, error] = GetParam();
  for (const Row &row : kRows) {
    SCOPED_TRACE(row.mcs);
    Generator generator(sampleRate, row.mcs);
    VecCplx32 signal;
    const int n = static_cast<int>(sampleRate * 62e-6); // SIGNAL and 14 symbols
    generator.GenerateSignal(signal, n, false);
    ASSERT_EQ(signal.GetSize(), n);
    EXPECT_EQ(generator.m_numDataSymbols, 14);
    const OfdmReceiver receiver(signal, sampleRate);
    ExpectReceived(receiver, row, 14, error);
    for (int k = -26; k <= 26; ++k) {
      if (k == 0) continue;
      const double gain = std::abs(CarrierOf(receiver.Gains(), k)) * std::sqrt(52.0);
      EXPECT_NEAR(Decibels(gain / 0.1), 0.0, sampleRate < 40e6 ? 0.06 : 0.02) << k; // -10 dBm is 0.1
    }
  }
}

// SIGNAL and the first symbol come 640 samples and a guard of 32 behind the start of the burst. The resampler
// takes 9 samples.
TEST(OFDMSigGen, GenerateSignal_AtTwiceTheRate_LaysOutTheFrame) {
  VecCplx32 signal;
  Generator generator(40e6);
  for (const int n : {170000, 2400, 24000}) { // what a longer burst leaves behind shows nowhere
    generator.GenerateSignal(signal, n, false);
    const int lead = std::min(n / 10, 16000) - 9; // at most 100 symbols
    const OfdmReceiver receiver(signal, 40e6);
    EXPECT_EQ(receiver.Start(), lead);
    EXPECT_EQ(receiver.Place(0), lead + 640 + 32);
    EXPECT_EQ(receiver.Place(1), lead + 640 + 160 + 32);
    const auto first = List(signal);
    EXPECT_EQ(std::vector<Cplx32>(first.begin(), first.begin() + lead - 8), Zeros(lead - 8));
    EXPECT_GT(std::abs(At(signal, lead)), 0.0);
  }
}

// The standard's list, but for the sign of carrier -8.
TEST(OFDMSigGen, GenerateSignal_ShortTraining_HasTwelveCarriers) {
  constexpr int kStandard[] = {1, -1, 1, -1, -1, 1, -1, -1, 1, 1, 1, 1};
  Generator generator(40e6);
  VecCplx32 signal;
  generator.GenerateSignal(signal, 2400, false);
  const OfdmReceiver receiver(signal, 40e6);
  const auto symbol = receiver.ShortTraining();
  int next = 0;
  for (int k = -26; k <= 26; ++k) {
    std::complex<double> expected = 0.0;
    if (k != 0 && k % 4 == 0)
      expected = std::sqrt(13.0 / 6.0) * kStandard[next++] * std::complex<double>(1.0, 1.0);
    if (k == -8) expected = -expected;
    if (k == 0) continue;
    EXPECT_LT(std::abs(CarrierOf(symbol, k) - expected), 1e-6) << k;
  }
  // It recurs every 32 samples, and lasts for ten of them.
  const int start = static_cast<int>(receiver.Start());
  for (int i = start + 8; i < start + 320 - 32 - 8; ++i) {
    EXPECT_LT(std::abs(At(signal, i + 32) - At(signal, i)), 1e-6) << i;
  }
}

// The worked example of the standard's annex G: 36 Mbit/s, 100 octets.
TEST(OFDMSigGen, CodedSignal_AnnexG_IsBitExact) {
  const std::string expected = "100101001101000000010100100000110010010010010100";
  const auto bits = ofdm::CodedSignal(ofdm::RateOf(OFDMSigGen::Mbps36).rateBits, 100);
  std::string text;
  for (const int bit : bits) text += std::to_string(bit);
  EXPECT_EQ(text, expected);

  auto received = bits;
  received[5] ^= 1;
  received[40] ^= 1;
  const auto field = test::DecodeSignal(received);
  EXPECT_EQ(field.rate, 0b1011);
  EXPECT_EQ(field.length, 100);
  EXPECT_TRUE(field.evenParity);
  EXPECT_TRUE(field.zeroTail);
  EXPECT_EQ(field.errors, 2);
}

TEST(OFDMSigGen, CodedSignal_AnyRateAndLength_DecodesToThem) {
  for (const Row &row : kRows) {
    for (const int length : {0, 1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048, 1365, 2730, 4095}) {
      const auto field = test::DecodeSignal(ofdm::CodedSignal(row.rate, length));
      EXPECT_EQ(field.rate, row.rate);
      EXPECT_EQ(field.reserved, 0);
      EXPECT_EQ(field.length, length);
      EXPECT_TRUE(field.evenParity);
      EXPECT_TRUE(field.zeroTail);
      EXPECT_EQ(field.errors, 0);
    }
  }
}

TEST(OFDMSigGen, PilotPolarity_AnyIndex_IsTheStandardsOfPeriod127) {
  for (int i = 0; i < 400; ++i) EXPECT_EQ(ofdm::PilotPolarity(i), test::kPilotPolarity[i % 127]) << i;
}

// More symbols than the pilots' polarity has values.
TEST(OFDMSigGen, GenerateSignal_LongBurst_IsReceivedToItsEnd) {
  Generator generator(40e6);
  VecCplx32 signal;
  generator.GenerateSignal(signal, 30000, false);
  EXPECT_EQ(OfdmReceiver(signal, 40e6).LastSymbol(), (30000 - 3000 + 9 - 640) / 160 - 1);
  ExpectReceived(OfdmReceiver(signal, 40e6), kRows[0], 186, -120.0);
}

TEST(OFDMSigGen, GenerateSignal_Data_AreTheDrawsFromSeed3) {
  for (const Row &row : kRows) {
    Generator generator(40e6, row.mcs);
    generator.SetEnableRandomPhase(false);
    VecCplx32 signal;
    unsigned int seed = 3;
    for (int call = 0; call < 2; ++call) {
      generator.GenerateSignal(signal, 3200, false); // 20 symbols, of which 14 lie in the record whole
      const OfdmReceiver receiver(signal, 40e6);
      EXPECT_EQ(receiver.LastSymbol(), 13);
      for (int index = 1; index <= generator.m_numDataSymbols; ++index) {
        float draws[48];
        TargetLib::RandUniform_Direct_32f(draws, 48, 0.0F, static_cast<float>(row.order) - 1e-5F, &seed);
        if (index > receiver.LastSymbol()) continue;
        const auto symbol = receiver.Symbol(index);
        const float *draw = draws;
        for (int k = -26; k <= 26; ++k) {
          if (k == 0 || test::IsPilot(k)) continue;
          const auto expected = ConstellationPoint(row.order, static_cast<int>(*draw++));
          ASSERT_LT(std::abs(CarrierOf(symbol, k) - expected), 1e-5) << row.mcs << ' ' << index << ' ' << k;
        }
      }
    }
    EXPECT_EQ(generator.m_dataSeed, seed);
  }
}

TEST(OFDMSigGen, GenerateSignal_OtherFrames_AreReceived) {
  VecCplx32 signal, same;
  Generator half(40e6, 5, 10e6), spaced(40e6, 5, -156250.0);
  half.GenerateSignal(signal, 5000, false);
  spaced.GenerateSignal(same, 5000, false);
  EXPECT_EQ(List(same), List(signal));
  ExpectReceived(OfdmReceiver(signal, 40e6, 156250.0), kRows[5], 5000 / 320 - 1, -120.0);

  for (const double guard : {0.5, 1.0, 7.0}) {
    Generator longGuard(40e6, 3, 20e6, guard);
    longGuard.GenerateSignal(signal, 5000, false);
    const double used = std::min(guard, 1.0);
    ExpectReceived(OfdmReceiver(signal, 40e6, 312500.0, used), kRows[3],
                   static_cast<int>(5000 / (128 * (1.0 + used))) - 1, -120.0);
  }
}

// Training fields, SIGNAL, BPSK and QPSK symbols have the power of 52 unit carriers, each in any 128 samples
// of it. The filter's ripple is below 1e-3.
TEST(OFDMSigGen, GenerateSignal_AnyLevel_HasItsRootMeanSquare) {
  VecCplx32 signal;
  for (const double level : {10.0, -10.0, 0.0, -63.5}) {
    const double amplitude = std::pow(10.0, (level - 10.0) / 20.0);
    for (const Row &row : kRows) {
      Generator generator(40e6, row.mcs);
      generator.SetSignalAmplitude(level);
      generator.GenerateSignal(signal, 12000, false);
      const OfdmReceiver receiver(signal, 40e6);
      EXPECT_NEAR(Level(signal, receiver.Start() + 16, 256) / amplitude, 1.0, 1e-3); // short training
      EXPECT_NEAR(Level(signal, receiver.Start() + 384, 256) / amplitude, 1.0, 1e-3);
      double power = 0.0;
      for (int index = 0; index <= receiver.LastSymbol(); ++index) {
        const double one = Level(signal, receiver.Place(index) - 16, 128) / amplitude;
        if (row.order <= 4) {
          EXPECT_NEAR(one, 1.0, 1e-3);
        }
        power += one * one;
      }
      // The power of a random point deviates from its mean by up to 0.6; of 3072 points' mean, by 0.011.
      EXPECT_NEAR(power / (receiver.LastSymbol() + 1), 1.0, 0.05);
      // The whole burst, guards included.
      EXPECT_NEAR(Level(signal, receiver.Start(), signal.GetSize() - receiver.Start()) / amplitude, 1.0,
                  0.05);
    }
  }
}

// At half of the transform's rate the filter reaches into the band: each carrier is attenuated as the taps
// say.
TEST(OFDMSigGen, GenerateSignal_At20MHz_AttenuatesAsTheFilter) {
  const test::Wing wing(16.0, 50, static_cast<double>(0.625F), 6.1422F);
  Generator generator(20e6);
  generator.SetSignalAmplitude(10.0);
  VecCplx32 signal;
  generator.GenerateSignal(signal, 2400, false);
  const OfdmReceiver receiver(signal, 20e6);
  double edge = 0.0;
  for (int k = -26; k <= 26; ++k) {
    if (k == 0) continue;
    double expected = wing.exact[0];
    for (int j = 1; j < 8; ++j) {
      expected +=
          2.0 * wing.exact[static_cast<std::size_t>(50 * j)] * std::cos(2.0 * std::numbers::pi * j * k / 128);
    }
    EXPECT_NEAR(std::abs(CarrierOf(receiver.Gains(), k)) * std::sqrt(52.0), expected, 2e-6) << k;
    edge = Decibels(expected);
  }
  EXPECT_NEAR(edge, -0.05, 0.005);
}

// Signals whose lengths agree but for the last digit are the same burst: the shorter ends where it is cut,
// not earlier.
TEST(OFDMSigGen, GenerateSignal_CutBurst_ReachesToTheLastSample) {
  for (const double rate : {40e6, 20e6, 61.44e6, 31.7e6, 200e6}) {
    for (const int n : {2000, 3010, 12340}) {
      VecCplx32 whole, cut;
      Generator(rate).GenerateSignal(whole, n + 9, false);
      ASSERT_GT(Level(whole, n - 20, 29), 0.01);
      for (int less = 1; less <= 9; ++less) {
        Generator(rate).GenerateSignal(cut, n + 9 - less, false);
        const auto expected = List(whole);
        EXPECT_EQ(List(cut), std::vector<Cplx32>(expected.begin(), expected.end() - less))
            << rate << ' ' << n;
      }
    }
  }
}

// LENGTH reaches its limit, 4095 octets in steps of a symbol, and the burst recurs as it is.
TEST(OFDMSigGen, GenerateSignal_BeyondTheLongestBurst_RepeatsIt) {
  VecCplx32 signal;
  for (const Row &row : {kRows[0], kRows[7]}) {
    SCOPED_TRACE(row.mcs);
    const int most = 32760 / row.bits, lead = 16000;
    const int burst = lead + 640 + (most + 2) * 160 - 20;
    Generator generator(40e6, row.mcs);
    generator.GenerateSignal(signal, 500000, false);
    ASSERT_EQ(signal.GetSize(), 500000);
    EXPECT_EQ(generator.m_numDataSymbols, most);
    const auto field = OfdmReceiver(signal, 40e6).Signal();
    EXPECT_EQ(field.rate, row.rate);
    EXPECT_EQ(field.length, most * row.bits / 8);
    EXPECT_LE(field.length, 4095);
    int differing = 0;
    for (int i = burst; i < 500000; ++i) {
      const Cplx32 now = signal[i], before = signal[i - burst];
      differing += now.re != before.re || now.im != before.im;
    }
    EXPECT_EQ(differing, 0);
    EXPECT_GT(Level(signal, burst + lead, 640), 0.05);
    EXPECT_EQ(Level(signal, burst - 100, 100), 0.0); // the silent symbol
  }
}

// No symbol fits: the training fields alone, and no data are drawn.
TEST(OFDMSigGen, GenerateSignal_LessThanASymbol_IsTrainingAlone) {
  Generator generator(40e6);
  VecCplx32 signal;
  generator.GenerateSignal(signal, 159, false);
  EXPECT_EQ(generator.m_numDataSymbols, -1);
  EXPECT_EQ(generator.m_dataSeed, 3U);
  EXPECT_EQ(signal.GetSize(), 159);
  EXPECT_NEAR(Level(signal, 15, 128), 0.1, 1e-4);
  generator.GenerateSignal(signal, 160, false);
  EXPECT_EQ(generator.m_numDataSymbols, 0); // SIGNAL alone
  EXPECT_EQ(generator.m_dataSeed, 3U);
  generator.GenerateSignal(signal, 320, false);
  EXPECT_EQ(generator.m_numDataSymbols, 1);
  EXPECT_EQ(generator.m_dataSeed, 6006U);
}

TEST(OFDMSigGen, GenerateSignal_NoOutputsOfTheResampler_GivesZeros) {
  VecCplx32 signal;
  Generator generator(8e5); // margins of 804 samples
  generator.GenerateSignal(signal, 100, false);
  EXPECT_GT(Level(signal, 50, 20), 0.01);
  generator.GenerateSignal(signal, 3, false); // a burst of 800
  EXPECT_EQ(List(signal), Zeros(3));
}

TEST(OFDMSigGen, GenerateSignal_BadSampleRates_GiveZeros) {
  constexpr std::size_t kLimit = std::size_t{8} << 20U;
  VecCplx32 signal;
  for (const double rate : {-1.0, 0.0, -0.0, kNan, kInf, -kInf, 5e-324, 1e-300, 1.0, 39.0, 3e12, 1e300, -4e7,
                            std::numeric_limits<double>::max()}) {
    for (const int n : {1, 9, 10, 100, 1000, 50000}) {
      signal.Set({7.0F, 7.0F}, n + 3);
      Generator generator(rate);
      const test::AllocationLimit limit(kLimit);
      generator.GenerateSignal(signal, n, false);
      EXPECT_EQ(List(signal), Zeros(n)) << rate << ' ' << n;
    }
  }
}

TEST(OFDMSigGen, GenerateSignal_SampleRateNeverSet_GivesZeros) {
  OFDMSigGen generator;
  VecCplx32 signal;
  generator.GenerateSignal(signal, 1000, false);
  EXPECT_EQ(List(signal), Zeros(1000));
}

// What a large or a small ratio asks for is bounded by n and the longest burst.
TEST(OFDMSigGen, GenerateSignal_ExtremeRatios_AskForNoMoreThanTheyNeed) {
  VecCplx32 signal;
  for (const double rate : {4e2, 4e3, 4e4, 4e5, 4e8, 4e9, 4e10, 4e11, 2.6e12}) {
    for (const int n : {1, 9, 10, 100, 1000}) {
      Generator generator(rate);
      const test::AllocationLimit limit(std::size_t{8} << 20U);
      generator.GenerateSignal(signal, n, false);
      EXPECT_EQ(signal.GetSize(), n);
      for (int i = 0; i < n; ++i) ASSERT_TRUE(std::abs(At(signal, i)) < 1.0);
    }
  }
}

TEST(OFDMSigGen, SetParameters_BadValues_AreHarmless) {
  VecCplx32 signal;
  for (const double rate : {kInf, -kInf, 1e300, -1e300, 1e12, 1000.0, -1e-300}) {
    for (const double guard : {0.25, kInf, 1e300}) {
      Generator generator(40e6, 7, rate, guard);
      const test::AllocationLimit limit(std::size_t{8} << 20U);
      generator.GenerateSignal(signal, 3000, false);
      ASSERT_EQ(signal.GetSize(), 3000);
      for (int i = 0; i < 3000; ++i) ASSERT_TRUE(std::abs(At(signal, i)) < 1.0);
      if (rate > 1e100 || rate < -1e100) {
        EXPECT_EQ(List(signal), Zeros(3000));
      }
    }
  }
}

// The silence in front, a tenth of n samples at the transform's rate, takes half of the record at 200 MHz,
// and from 400 MHz on all of it but what exceeds the limit of 100 symbols. Instants lie on table points, and
// images beside the band.
TEST(OFDMSigGen, GenerateSignal_LargeRatio_IsReceived) {
  Generator fine(200e6, 2), finest(500e6, 2);
  VecCplx32 signal;
  fine.GenerateSignal(signal, 24000, false);
  const OfdmReceiver receiver(signal, 200e6);
  EXPECT_EQ(receiver.Start(), 5 * (2400 - 9));
  ExpectReceived(receiver, kRows[2], 24000 / 800 - 1, -120.0);

  finest.GenerateSignal(signal, 150000, false);
  EXPECT_EQ(Level(signal, 0, 150000), 0.0);
  finest.GenerateSignal(signal, 225000, false);
  ExpectReceived(OfdmReceiver(signal, 500e6), kRows[2], 225000 / 2000 - 1, -120.0);
}

TEST(OFDMSigGen, GenerateSignal_NoLength_GivesAnEmptyVector) {
  Generator generator(40e6);
  VecCplx32 signal;
  for (const int n : {0, -1, -1000, std::numeric_limits<int>::min()}) {
    signal.Set({7.0F, 7.0F}, 5);
    generator.GenerateSignal(signal, n, true);
    EXPECT_EQ(signal.GetSize(), 0);
  }
  // Parameters that changed meanwhile are not lost.
  generator.SetParameters(20e6, OFDMSigGen::Mbps24, 0.25);
  generator.GenerateSignal(signal, 0, false);
  generator.GenerateSignal(signal, 2480, false);
  ExpectReceived(OfdmReceiver(signal, 40e6), kRows[4], 14, -120.0);
}

TEST(OFDMSigGen, GenerateSignal_ThroughTheBase_MakesTheBurst) {
  VecCplx32 signal, expected;
  Generator direct(40e6);
  direct.GenerateSignal(expected, 2480, false);
  const std::unique_ptr<BasebandSigGen> generator = std::make_unique<OFDMSigGen>();
  generator->SetSampleRate(40e6);
  generator->GenerateSignal(signal, 2480, false);
  EXPECT_EQ(List(signal), List(expected));
}

TEST(OFDMSigGen, GenerateSignal_FrequencyOffset_TurnsTheBurst) {
  VecCplx32 signal, expected;
  Generator plain(40e6), offset(40e6);
  plain.SetEnableRandomPhase(false);
  offset.SetBasicParameters(40e6, -10.0, -60.0, 312500.0, false);
  plain.GenerateSignal(expected, 2480, false);
  offset.GenerateSignal(signal, 2480, false);
  for (int i = 0; i < 2480; ++i) {
    const auto turned = At(expected, i) * std::polar(1.0, 2.0 * std::numbers::pi * i / 128.0);
    ASSERT_LT(std::abs(At(signal, i) - turned), 1e-6) << i;
  }
}

// A signal without a change designs nothing and allocates nothing, whatever its length up to the longest yet.
TEST(OFDMSigGen, GenerateSignal_SteadyState_AllocatesNothing) {
  for (const double rate : {40e6, 20e6, 61.44e6}) {
    Generator generator(rate, 5);
    VecCplx32 signal;
    generator.GenerateSignal(signal, 5000, true);
    const long before = test::AllocationCount();
    for (const int n : {5000, 3000, 10, 0, 5000}) generator.GenerateSignal(signal, n, true);
    EXPECT_EQ(test::AllocationCount(), before);
  }
}

TEST(OFDMSigGen, GenerateSignal_Changes_DesignOnce) {
  Generator generator(40e6, 5);
  VecCplx32 signal;
  generator.GenerateSignal(signal, 5000, false);
  const auto allocations = [&] {
    const long before = test::AllocationCount();
    generator.GenerateSignal(signal, 2000, false);
    return test::AllocationCount() - before;
  };
  const auto changes = [&](auto change) {
    change();
    const bool designs = allocations() > 0;
    EXPECT_EQ(allocations(), 0);
    return designs;
  };
  EXPECT_FALSE(changes([&] { generator.SetSampleRate(40e6); }));
  EXPECT_FALSE(changes([&] { generator.SetSignalAmplitude(3.0); }));
  EXPECT_FALSE(changes([&] { generator.SetFreqOffset(1e6); }));
  EXPECT_FALSE(changes([&] { generator.SetEnableRandomPhase(false); }));
  EXPECT_TRUE(changes([&] { generator.SetSampleRate(20e6); }));
  EXPECT_TRUE(changes([&] { generator.SetParameters(20e6, OFDMSigGen::Mbps36, 0.25); })); // even the same
  EXPECT_TRUE(changes([&] { generator.SetParameters(20e6, OFDMSigGen::Mbps54, 0.25); }));
  EXPECT_TRUE(changes([&] { generator.ReleaseAll(); }));
  EXPECT_TRUE(changes([&] { generator.SetParameters_FSK(2e6, 1e5, false); })); // tracked by the base
  EXPECT_FALSE(changes([&] { generator.SetSampleRate(20e6); }));
}

// Limits at which first the transform, then one part after the other finds no memory.
TEST(OFDMSigGen, GenerateSignal_WithoutMemory_ThrowsAndMayBeRepeated) {
  VecCplx32 expected;
  Generator(40e6, 5).GenerateSignal(expected, 6000, false);
  int failures = 0, successes = 0;
  for (std::size_t bytes = 512; bytes < 200000; bytes += bytes / 4) {
    Generator generator(40e6, 5);
    VecCplx32 signal;
    bool failed = false;
    testing::internal::CaptureStdout();
    {
      const test::AllocationLimit limit(bytes);
      try {
        generator.GenerateSignal(signal, 6000, false);
      } catch (const QORNException &e) {
        EXPECT_EQ(e.GetErrorCode(), 11001);
        failed = true;
      }
    }
    testing::internal::GetCapturedStdout();
    (failed ? failures : successes) += 1;
    if (failed) generator.GenerateSignal(signal, 6000, false);
    EXPECT_EQ(List(signal), List(expected)) << bytes;
  }
  EXPECT_GT(failures, 5);
  EXPECT_GT(successes, 2);
}

// A copy that found no memory for its transform makes it later.
TEST(OFDMSigGen, Copy_WithoutMemory_ThrowsOrWorks) {
  Generator source(40e6, 5);
  VecCplx32 signal, expected;
  source.GenerateSignal(signal, 3000, false);
  Generator(source).GenerateSignal(expected, 3000, false);
  int failures = 0, successes = 0;
  for (std::size_t bytes = 512; bytes < 100000; bytes += bytes / 4) {
    Generator copy;
    bool failed = false;
    testing::internal::CaptureStdout();
    {
      const test::AllocationLimit limit(bytes);
      try {
        copy = source;
      } catch (const QORNException &e) {
        EXPECT_EQ(e.GetErrorCode(), 11001);
        failed = true;
      }
    }
    testing::internal::GetCapturedStdout();
    (failed ? failures : successes) += 1;
    if (failed) continue;
    copy.GenerateSignal(signal, 3000, false);
    EXPECT_EQ(List(signal), List(expected)) << bytes;
  }
  EXPECT_GT(failures, 5);
  EXPECT_GT(successes, 2);
}

// A change is not lost on a signal of another type, nor is the resampler of one taken for that of another.
TEST(OFDMSigGen, SetSignalType_BackAndForth_KeepsTheChainsApart) {
  Generator generator(40e6);
  VecCplx32 signal, expected;
  generator.SetParameters_PSK_QAM(1e6, 0.22);
  generator.SetParameters_FSK(1e6, 250e3, false);
  generator.SetEnableRandomPhase(false);
  generator.SetSignalType(BasebandSigGen::FSK2); // before there was a burst
  generator.GenerateSignal(expected, 2480, false);
  generator.SetSignalType(BasebandSigGen::Custom);
  generator.GenerateSignal(signal, 2480, false);
  ExpectReceived(OfdmReceiver(signal, 40e6), kRows[0], 14, -120.0);

  generator.SetSignalType(BasebandSigGen::FSK2);
  generator.m_dataSeed = 3;
  generator.GenerateSignal(signal, 2480, false);
  EXPECT_EQ(List(signal), List(expected));

  generator.SetSignalType(BasebandSigGen::Custom); // FSK left a resampler of the same ratio
  generator.GenerateSignal(signal, 2480, false);
  ExpectReceived(OfdmReceiver(signal, 40e6), kRows[0], 14, -120.0);

  generator.SetSampleRate(20e6);
  generator.SetSignalType(BasebandSigGen::CW);
  generator.GenerateSignal(signal, 10, false);
  generator.SetSignalType(BasebandSigGen::Custom); // CW took the change of the sample rate
  generator.GenerateSignal(signal, 1240, false);
  ExpectReceived(OfdmReceiver(signal, 20e6), kRows[0], 14, -120.0);

  for (const auto type : {BasebandSigGen::CW, BasebandSigGen::QPSK, BasebandSigGen::FSK2}) {
    SCOPED_TRACE(type);
    const int next = 7 - type % 8;
    generator.SetParameters(20e6, static_cast<OFDMSigGen::McsType>(next), 0.25);
    generator.SetSampleRate(type == BasebandSigGen::CW ? 20e6 : 40e6);
    generator.SetSignalType(type);
    generator.GenerateSignal(signal, 2480, false);
    generator.SetSignalType(BasebandSigGen::Custom);
    const double rate = type == BasebandSigGen::CW ? 20e6 : 40e6;
    const int n = static_cast<int>(rate * 62e-6);
    generator.GenerateSignal(signal, n, false);
    ExpectReceived(OfdmReceiver(signal, rate), kRows[next], 14, -120.0);
  }
}

TEST(OFDMSigGen, Copy_OfAUsedGenerator_GoesOnByItself) {
  VecCplx32 first, second;
  auto source = std::make_unique<Generator>(61.44e6, 6);
  source->GenerateSignal(first, 4000, true);
  Generator copy(*source), assigned;
  assigned.GenerateSignal(first, 100, false);
  assigned = *source;
  const auto &self = assigned;
  assigned = self;
  source->GenerateSignal(first, 4000, true);
  source.reset();
  const long before = test::AllocationCount();
  copy.GenerateSignal(second, 0, false);
  EXPECT_EQ(test::AllocationCount(), before); // its own chain is there
  EXPECT_EQ(copy.m_cpLength, 32);

  for (Generator *each : {&copy, &assigned}) {
    if (each == &copy) each->m_phaseSeed -= 6003; // the empty signal drew a phase
    each->GenerateSignal(second, 4000, true);
    EXPECT_EQ(List(second), List(first));
  }

  Generator moved(std::move(copy));
  moved.GenerateSignal(first, 4000, false);
  assigned.GenerateSignal(second, 4000, false);
  EXPECT_EQ(List(second), List(first));
  copy.GenerateSignal(first, 4000, false); // NOLINT: a moved-from generator may be used
  EXPECT_EQ(first.GetSize(), 4000);
  EXPECT_GT(Level(first, 1000, 1000), 0.05);
}

} // namespace
