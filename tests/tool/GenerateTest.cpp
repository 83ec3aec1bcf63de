// qorn generate.

#include <gtest/gtest.h>
#include <qorn/qorn.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "Constellation.h"
#include "Png.h"
#include "SignalOptions.h"
#include "SignalSheet.h"
#include "SignalSource.h"
#include "ToolFixture.h"

namespace {

using nlohmann::json;
using QORN::BasebandSigGen;
using QORN::Cplx32;
using QORN::OFDMSigGen;
using QORN::VecCplx32;
using QORN::test::Contents;
using QORN::test::LimitFiles;
using QORN::test::Outcome;
using QORN::test::RunTool;
using QORN::test::Tool;

using Arguments = std::vector<std::string>;

const std::string kNames =
    "cw, am, fm, pm, bpsk, qpsk, psk8, psk16, qam16, qam64, qam256, fsk2, fsk4, fsk8, fsk16, pulse, chirp, "
    "80211a";

Arguments operator+(Arguments first, const Arguments &second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

std::string BytesOf(const VecCplx32 &samples) {
  return {reinterpret_cast<const char *>(samples.GetPtr()),
          sizeof(Cplx32) * static_cast<std::size_t>(samples.GetSize())};
}

/// A generator of the library with what the tool takes for its own, but for the level and the rate.
std::unique_ptr<BasebandSigGen> Generator(BasebandSigGen::SignalType type, double rate) {
  std::unique_ptr<BasebandSigGen> generator;
  if (type == BasebandSigGen::Custom)
    generator = std::make_unique<OFDMSigGen>();
  else
    generator = std::make_unique<BasebandSigGen>(type);
  generator->SetSampleRate(rate);
  return generator;
}

struct Case {
  const char *name;
  BasebandSigGen::SignalType type;
  Arguments arguments;
  std::function<void(BasebandSigGen &)> set;
  Arguments standard = {}; ///< of its own parameters
  std::function<void(BasebandSigGen &)> setStandard;
};

/// One of each type: with parameters, and with those that it has by itself at 20 MHz.
std::vector<Case> Cases() {
  using Gen = BasebandSigGen;
  std::vector<Case> cases = {
      {"cw",
       Gen::CW,
       {"--frequency", "-123456.5"},
       [](Gen &g) { g.SetParameters_CW(-123456.5); },
       {},
       [](Gen &g) { g.SetParameters_CW(1e6); }},
      {"am",
       Gen::AM,
       {"--mod-frequency", "1234.5", "--depth", "80"},
       [](Gen &g) { g.SetParameters_AM_FM_PM(1234.5, 80.0); },
       {},
       [](Gen &g) { g.SetParameters_AM_FM_PM(20e3, 50.0); }},
      {"fm",
       Gen::FM,
       {"--mod-frequency", "5000", "--deviation", "75e3", "--triangle"},
       [](Gen &g) { g.SetParameters_AM_FM_PM(-5000.0, 75e3); },
       {},
       [](Gen &g) { g.SetParameters_AM_FM_PM(20e3, 1e6); }},
      {"pm",
       Gen::PM,
       {"--mod-frequency", "5000", "--phase-deviation", "400"},
       [](Gen &g) { g.SetParameters_AM_FM_PM(5000.0, 400.0); },
       {},
       [](Gen &g) { g.SetParameters_AM_FM_PM(20e3, 90.0); }},
      {"pulse",
       Gen::Pulse,
       {"--width", "3e-6", "--period", "20e-6", "--sharp"},
       [](Gen &g) { g.SetParameters_Pulse(-3e-6, 20e-6, 0.0); },
       {},
       [](Gen &g) { g.SetParameters_Pulse(200.0 / 20e6, 2000.0 / 20e6, 0.0); }},
      {"chirp",
       Gen::Chirp,
       {"--width", "9e-6", "--period", "20e-6", "--sweep", "-4e6"},
       [](Gen &g) { g.SetParameters_Pulse(9e-6, 20e-6, -4e6); },
       {},
       [](Gen &g) { g.SetParameters_Pulse(200.0 / 20e6, 2000.0 / 20e6, 5e6); }},
      {"80211a",
       Gen::Custom,
       {"--mcs", "36", "--frame-rate", "5e6", "--guard", "0.125"},
       [](Gen &g) { dynamic_cast<OFDMSigGen &>(g).SetParameters(5e6, OFDMSigGen::Mbps36, 0.125); },
       {},
       [](Gen &) {}},
  };
  const std::pair<const char *, Gen::SignalType> shaped[] = {
      {"bpsk", Gen::BPSK},   {"qpsk", Gen::QPSK},   {"psk8", Gen::PSK8},    {"psk16", Gen::PSK16},
      {"qam16", Gen::QAM16}, {"qam64", Gen::QAM64}, {"qam256", Gen::QAM256}};
  for (const auto &[name, type] : shaped)
    cases.push_back({name,
                     type,
                     {"--symbol-rate", "1.1e6", "--rolloff", "0.35"},
                     [](Gen &g) { g.SetParameters_PSK_QAM(1.1e6, 0.35); },
                     {},
                     [](Gen &g) { g.SetParameters_PSK_QAM(2e6, 0.22); }});
  const std::pair<const char *, Gen::SignalType> keyed[] = {
      {"fsk2", Gen::FSK2}, {"fsk4", Gen::FSK4}, {"fsk8", Gen::FSK8}, {"fsk16", Gen::FSK16}};
  for (const auto &[name, type] : keyed)
    cases.push_back({name,
                     type,
                     {"--symbol-rate", "300e3", "--deviation", "250e3"},
                     [](Gen &g) { g.SetParameters_FSK(300e3, 250e3, false); },
                     {},
                     [](Gen &g) { g.SetParameters_FSK(2e6, 1e6, false); }});
  return cases;
}

class Generate : public Tool {
protected:
  /// Runs what must succeed, and gives what it said.
  static Outcome Make(const Arguments &arguments) {
    const Outcome outcome = RunTool(Arguments{"generate"} + arguments);
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    return outcome;
  }

  /// The recording as floats.
  std::string Floats(const Arguments &arguments) const {
    const std::string path = folder / "x.cf32";
    Make(arguments + Arguments{"--out", path});
    return Contents(path);
  }
};

TEST_F(Generate, EveryType_ItsOptions_GiveWhatTheLibraryMakes) {
  VecCplx32 expected;
  for (const Case &test : Cases()) {
    const auto generator = Generator(test.type, 10e6);
    generator->SetBasicParameters(10e6, -33.3, -60.0, 0.0, true);
    test.set(*generator);
    generator->GenerateSignal(expected, 3001, false);
    EXPECT_EQ(Floats(Arguments{test.name, "--rate", "10e6", "--level", "-33.3", "--samples", "3001"} +
                     test.arguments),
              BytesOf(expected))
        << test.name;
  }
}

TEST_F(Generate, EveryType_NoOptions_HasTheStatedDefaults) {
  VecCplx32 expected;
  for (const Case &test : Cases()) {
    const auto generator = Generator(test.type, 20e6);
    test.setStandard(*generator);
    generator->GenerateSignal(expected, 20000, false);
    EXPECT_EQ(Floats({test.name}), BytesOf(expected)) << test.name;
  }
}

// With all that a signal of any type may have.
TEST_F(Generate, EveryType_NoiseOffsetAndPhase_AreTheLibrarys) {
  VecCplx32 expected;
  for (const Case &test : Cases()) {
    const auto generator = Generator(test.type, 20e6);
    test.setStandard(*generator);
    generator->SetBasicParameters(20e6, 3.0, -45.0, 1.25e6, false);
    generator->GenerateSignal(expected, 2500, true);
    EXPECT_EQ(Floats({test.name, "--level", "3", "--noise", "-45", "--offset", "1.25e6", "--fixed-phase",
                      "--duration", "125e-6"}),
              BytesOf(expected))
        << test.name;
  }
}

TEST_F(Generate, Schemes_AllEight_AreTheLibrarys) {
  const std::pair<const char *, OFDMSigGen::McsType> schemes[] = {
      {"6", OFDMSigGen::Mbps6},   {"9", OFDMSigGen::Mbps9},   {"12", OFDMSigGen::Mbps12},
      {"18", OFDMSigGen::Mbps18}, {"24", OFDMSigGen::Mbps24}, {"36", OFDMSigGen::Mbps36},
      {"48", OFDMSigGen::Mbps48}, {"54", OFDMSigGen::Mbps54}};
  VecCplx32 expected;
  for (const auto &[rate, scheme] : schemes) {
    OFDMSigGen generator;
    generator.SetSampleRate(40e6);
    generator.SetParameters(20e6, scheme, 0.25);
    generator.GenerateSignal(expected, 5000, false);
    EXPECT_EQ(Floats({"80211a", "--rate", "40e6", "--mcs", rate, "--samples", "5000"}), BytesOf(expected))
        << rate;
  }
}

// Signal after signal of one generator, its noise in the gaps, in pieces of 65536 samples.
TEST_F(Generate, Repeat_WithGaps_GoesOnWithTheGenerator) {
  for (const bool noise : {false, true}) {
    for (const int gap : {0, 700, 70000}) {
      BasebandSigGen generator(BasebandSigGen::QPSK);
      generator.SetBasicParameters(1e6, -10.0, -50.0, 0.0, true);
      generator.SetParameters_PSK_QAM(1e5, 0.22);
      std::string expected;
      VecCplx32 part;
      for (int i = 0; i < 3; ++i) {
        generator.GenerateSignal(part, 1000, noise);
        expected += BytesOf(part);
        for (int left = gap; left > 0; left -= 65536) {
          const int count = std::min(left, 65536);
          if (noise) {
            generator.GenerateNoise(part, count);
          } else {
            part.Resize(count);
            part.SetZero();
          }
          expected += BytesOf(part);
        }
      }
      Arguments arguments = {"qpsk",      "--rate", "1e6",
                             "--samples", "1000",   "--repeat",
                             "3",         "--gap",  std::to_string(gap) + "e-6"};
      if (noise) arguments = arguments + Arguments{"--noise", "-50"};
      EXPECT_TRUE(Floats(arguments) == expected) << gap << ' ' << noise;
    }
  }
}

TEST_F(Generate, Repeat_WholePeriodsOfFixedPhase_AreOneSignal) {
  const std::vector<Arguments> cases = {
      {"cw", "--frequency", "30e3"},
      {"am", "--mod-frequency", "20e3"},
      {"fm", "--mod-frequency", "20e3", "--deviation", "30e3"},
      {"pm", "--mod-frequency", "20e3", "--offset", "50e3"},
      {"pm", "--mod-frequency", "20e3", "--triangle"},
      {"pulse", "--period", "100e-6", "--width", "30e-6"},
      {"chirp", "--period", "100e-6", "--width", "30e-6"},
  };
  for (const Arguments &own : cases) {
    const Arguments all = own + Arguments{"--rate", "1e6", "--fixed-phase"};
    const std::string parts = Floats(all + Arguments{"--samples", "500", "--repeat", "4"});
    const std::string whole = Floats(all + Arguments{"--samples", "2000"});
    ASSERT_EQ(parts.size(), whole.size());
    std::vector<float> a(4000), b(4000);
    std::memcpy(a.data(), parts.data(), parts.size());
    std::memcpy(b.data(), whole.data(), whole.size());
    float most = 0.0F;
    for (std::size_t i = 0; i < a.size(); ++i) most = std::max(most, std::fabs(a[i] - b[i]));
    EXPECT_LT(most, 1e-5F) << own[0]; // of 0.1 V; the library's phases are floats
  }
}

struct Seeded : BasebandSigGen {
  explicit Seeded(unsigned seed) : BasebandSigGen(FSK4) {
    m_dataSeed += seed * 2654435761U;
    m_phaseSeed += seed * 2654435761U;
    m_noiseSeed += seed * 2654435761U;
    SetBasicParameters(1e6, -10.0, -40.0, 0.0, true);
    SetParameters_FSK(1e5, 5e4, false);
  }
};

TEST_F(Generate, Seed_AnyNumber_MovesTheThreeSeeds) {
  std::vector<std::string> all;
  for (const unsigned seed : {0U, 1U, 2U, 6003U, 4294967295U}) {
    VecCplx32 expected;
    Seeded(seed).GenerateSignal(expected, 1000, true);
    const Arguments arguments = {
        "fsk4",    "--rate", "1e6",       "--deviation", "5e4",    "--symbol-rate",     "1e5",
        "--noise", "-40",    "--samples", "1000",        "--seed", std::to_string(seed)};
    all.push_back(Floats(arguments));
    EXPECT_EQ(all.back(), BytesOf(expected)) << seed;
    EXPECT_EQ(all.back(), Floats(arguments));
  }
  std::sort(all.begin(), all.end());
  EXPECT_EQ(std::unique(all.begin(), all.end()), all.end());
}

// The largest part takes the largest integer, and all parts lie within half a step.
TEST_F(Generate, Iqf_ReadByTheLibrary_IsTheSignalInSteps) {
  const std::string path = folder / "x.iqf";
  for (const Case &test : Cases()) {
    Make({test.name, "--samples", "2048", "--level", "-20", "--centre", "2.44e9", "--out", path});
    const auto generator = Generator(test.type, 20e6);
    test.setStandard(*generator);
    generator->SetSignalAmplitude(-20.0);
    VecCplx32 expected, got;
    generator->GenerateSignal(expected, 2048, false);
    const QORN::IQFReader reader(path.c_str());
    EXPECT_EQ(reader.GetSamplingFrequency(), 20e6);
    EXPECT_EQ(reader.GetCenterFrequency(), 2.44e9);
    EXPECT_EQ(reader.GetMaxInputLevel(), -20.0);
    EXPECT_EQ(reader.GetNofValidFrames(), 2);
    ASSERT_TRUE(reader.ReadIQData(0, 2048, got));
    float largest = 0.0F;
    for (int i = 0; i < 2048; ++i)
      largest = std::max({largest, std::fabs(expected[i].re), std::fabs(expected[i].im)});
    const auto step = static_cast<float>(reader.GetScalingFactor());
    EXPECT_NEAR(largest / step, 32767.0F, 0.01F) << test.name;
    for (int i = 0; i < 2048; ++i) {
      ASSERT_LT(std::fabs(got[i].re - expected[i].re), 0.505F * step) << test.name << ' ' << i;
      ASSERT_LT(std::fabs(got[i].im - expected[i].im), 0.505F * step) << test.name << ' ' << i;
    }
  }
}

TEST_F(Generate, Xiq_ReadByTheLibrary_IsTheSignalToThirtyBits) {
  const std::string path = folder / "x.xiq";
  for (const Case &test : Cases()) {
    Make({test.name, "--samples", "2000", "--centre", "2.44e9", "--out", path});
    const auto generator = Generator(test.type, 20e6);
    test.setStandard(*generator);
    VecCplx32 expected, got;
    generator->GenerateSignal(expected, 2000, false);
    const QORN::XIQReader reader(path.c_str());
    QORN::XIQReader::AcqInfoStruct info;
    reader.QueryAcqInfo(info);
    EXPECT_EQ(info.samplingFrequency, 20e6);
    EXPECT_EQ(info.frequency, 2.44e9);
    EXPECT_EQ(info.numberSamples, 2000);
    EXPECT_EQ(reader.QueryNumDataSets(), 1);
    reader.ReadIQSamples(got, 0);
    ASSERT_EQ(got.GetSize(), 2000);
    int exact = 0;
    for (int i = 0; i < 2000; ++i) {
      const float error =
          std::max(std::fabs(got[i].re - expected[i].re), std::fabs(got[i].im - expected[i].im));
      ASSERT_LE(static_cast<double>(error), 0.5 * info.scaling) << test.name;
      exact += error == 0.0F;
    }
    EXPECT_GT(exact, 1900) << test.name; // small parts have bits below the last
  }
}

TEST_F(Generate, Format_OptionOrExtension_ChoosesTheWriter) {
  VecCplx32 expected;
  BasebandSigGen generator(BasebandSigGen::CW);
  generator.SetSampleRate(20e6);
  generator.SetParameters_CW(1e6);
  generator.GenerateSignal(expected, 100, false);
  Make({"cw", "--samples", "100", "--out", folder / "x.iqf", "--format", "CF32"});
  EXPECT_EQ(Contents(folder / "x.iqf"), BytesOf(expected));
  const std::pair<const char *, std::size_t> sizes[] = {{"cu8", 2}, {"cs8", 2}, {"CS16", 4}, {"cf32", 8}};
  for (const auto &[name, bytes] : sizes) {
    const std::string path = folder / (std::string("y.") + name);
    Make({"cw", "--samples", "100", "--out", path});
    EXPECT_EQ(Contents(path).size(), 100 * bytes) << name;
  }
  float largest = 0.0F;
  for (int i = 0; i < 100; ++i)
    largest = std::max({largest, std::fabs(expected[i].re), std::fabs(expected[i].im)});
  const std::string words = Contents(folder / "y.CS16");
  for (int i = 0; i < 100; ++i) {
    std::int16_t pair[2];
    std::memcpy(pair, words.data() + 4 * i, 4);
    EXPECT_EQ(pair[0],
              std::lround(static_cast<double>(expected[i].re) / static_cast<double>(largest) * 32767.0));
    EXPECT_EQ(pair[1],
              std::lround(static_cast<double>(expected[i].im) / static_cast<double>(largest) * 32767.0));
  }
}

// The tool's own measurement finds the tone where it was put.
TEST_F(Generate, Cw_MeasuredByTheTool_HasItsLevelAndFrequency) {
  Make({"cw", "--samples", "20480", "--rate", "1e6", "--frequency", "125e3", "--offset", "-31250", "--level",
        "-23.5", "--centre", "100e6", "--out", folder / "x.iqf"});
  const json report = Measure({folder / "x.iqf", "--points", "1024"});
  EXPECT_NEAR(report["peaks"][0]["level"].get<double>(), -23.5, 0.01);
  EXPECT_NEAR(report["peaks"][0]["frequency_hz"].get<double>(), 100.09375e6, 1.0);
}

// The recording of the demonstration: each burst is on from a tenth of its signal to the end, less what the
// resampler takes, and then there is a gap.
// Around a centre at which a double has no place for the digits behind the point.
TEST_F(Generate, NarrowSpectrumFarUp_IsDrawnByItsOffsets) {
  const std::string path = folder / "h.iqf", svg = folder / "h.svg";
  Make({"cw", "--rate", "1", "--centre", "1e15", "--samples", "2048", "--out", path});
  const Outcome outcome = RunTool({"spectrum", path, "--svg", svg}, [] { alarm(60); });
  ASSERT_EQ(outcome.status, 0) << outcome.error;
  const std::string picture = Contents(svg);
  ExpectWellFormed(picture);
  EXPECT_NE(picture.find(">Offset from 1000000000 MHz (mHz)<"), std::string::npos) << picture;
  for (const char *tick : {">-500<", ">-100<", ">0<", ">400<"})
    EXPECT_NE(picture.find(tick), std::string::npos) << tick;
}

TEST_F(Generate, BurstsInNoise_MeasuredByTheTool_HaveTheirPower) {
  Make({"80211a", "--mcs", "54", "--rate", "40e6", "--level", "-20", "--noise", "-60", "--duration", "300e-6",
        "--gap", "100e-6", "--repeat", "4", "--centre", "5180e6", "--out", folder / "x.iqf"});
  const json report = Measure({folder / "x.iqf", "--points", "1024", "--count", "63488"});
  const double on = 4.0 * (12000.0 - 1200.0 + 9.0) / 63488.0; // all that is left out is gap
  const double noise = 10.0 * 2.0 / 3.0 * 1e-6;               // mW
  EXPECT_NEAR(report["total_power"].get<double>(), 10.0 * std::log10(0.01 * on + noise), 0.05);
  EXPECT_EQ(report["centre_hz"], 5180e6);
}

TEST_F(Generate, Text_Report_TellsWhatWasWritten) {
  const std::string path = folder / "x.iqf";
  const std::string sheet = folder / "x.svg";
  const Outcome outcome = Make({"cw", "--rate", "1e6", "--frequency", "0", "--fixed-phase", "--level", "10",
                                "--samples", "1024", "--out", path, "--sheet", sheet});
  EXPECT_EQ(outcome.out, "Signal                Carrier, 0 Hz\n"
                         "Sampling rate         1 MHz\n"
                         "Samples               1 024, 1.024 ms\n"
                         "Level                 10.00 dBm RMS, peak 10.00 dBm\n"
                         "Recording             " +
                             path +
                             ", 30.52 µV per step\n"
                             "Sheet                 " +
                             sheet + "\n");
}

TEST_F(Generate, Titles_EveryKind_NameItsParameters) {
  const std::pair<Arguments, std::string> titles[] = {
      {{"am", "--triangle"}, "AM, triangle of 20 kHz, depth 50 %"},
      {{"fm"}, "FM, cosine of 20 kHz, deviation 1 MHz"},
      {{"pm"}, "PM, cosine of 20 kHz, deviation 90°"},
      {{"qam64"}, "64-QAM, 2 MBd, roll-off 0.22"},
      {{"fsk8"}, "8-FSK, 2 MBd, deviation 1 MHz"},
      {{"pulse"}, "Pulses, 10 µs every 100 µs"},
      {{"chirp"}, "Chirps, 10 µs every 100 µs, sweep 5 MHz"},
      {{"80211a", "--mcs", "48"}, "802.11a burst, 48 Mbit/s"},
  };
  for (const auto &[arguments, title] : titles) {
    const Outcome outcome = Make(arguments + Arguments{"--out", folder / "x.cf32"});
    EXPECT_EQ(outcome.out.substr(0, outcome.out.find('\n')), "Signal                " + title);
    EXPECT_EQ(outcome.out.find("per step"), std::string::npos); // floats are volts
  }
}

TEST_F(Generate, Json_Report_HasTheFigures) {
  const Outcome outcome =
      Make({"am", "--rate", "1e6", "--mod-frequency", "1e3", "--level", "-20", "--depth", "100", "--samples",
            "1000", "--repeat", "2", "--gap", "1e-3", "--out", folder / "x.xiq", "--json"});
  const json report = json::parse(outcome.out);
  EXPECT_EQ(report["signal"], "am");
  EXPECT_EQ(report["sampling_rate_hz"], 1e6);
  EXPECT_EQ(report["samples"], 4000);
  EXPECT_EQ(report["duration_s"], 4e-3);
  // The sidebands add half of the carrier's power, and half of the time there is silence.
  EXPECT_NEAR(report["rms_dbm"].get<double>(), -20.0 + 10.0 * std::log10(0.75), 1e-4);
  EXPECT_NEAR(report["peak_dbm"].get<double>(), -20.0 + 20.0 * std::log10(2.0), 1e-4);
  EXPECT_EQ(report["recording"], folder / "x.xiq");
  EXPECT_GT(report["volts_per_step"].get<double>(), 0.0);
  EXPECT_EQ(report.count("sheet"), 0U);
}

TEST_F(Generate, LongRecording_NeedsTheMemoryOfOneSignal) {
  if (QORN::test::kSanitizesAddresses) GTEST_SKIP() << "the sanitizer's own memory would be measured";
  const auto memory = [](const char *repeats) {
    const Outcome outcome = Make({"qpsk", "--samples", "50000", "--noise", "-40", "--gap", "1e-3", "--repeat",
                                  repeats, "--out", "/dev/null", "--format", "cs16"});
    return outcome.residentKilobytes;
  };
  memory("1");
  EXPECT_LT(memory("60"), memory("1") + 2000); // 33 MB as floats
}

// Sheets.

/// The document without the digits of its images, which may spell anything.
std::string WithoutImages(std::string svg) {
  for (std::size_t at = 0; (at = svg.find("base64,", at)) != std::string::npos; ++at)
    svg.erase(at + 7, svg.find('"', at) - at - 7);
  return svg;
}

TEST_F(Generate, Sheet_EveryType_HasItsPanels) {
  for (const Case &test : Cases()) {
    Make({test.name, "--sheet", folder / "x.svg"});
    const std::string svg = Contents(folder / "x.svg");
    EXPECT_LT(svg.size(), 1000000U) << test.name;
    const auto has = [&](const std::string &text) { return svg.find('>' + text + '<') != std::string::npos; };
    EXPECT_TRUE(has("Spectrum"));
    EXPECT_TRUE(has("Envelope"));
    const bool burst = test.type == BasebandSigGen::Custom;
    const bool symbols = burst || (test.type >= BasebandSigGen::BPSK && test.type <= BasebandSigGen::QAM256);
    const bool frequency = test.type == BasebandSigGen::FM || test.type == BasebandSigGen::Chirp ||
                           (test.type >= BasebandSigGen::FSK2 && test.type <= BasebandSigGen::FSK16);
    EXPECT_EQ(has("Constellation"), symbols) << test.name;
    EXPECT_EQ(has("Frequency"), frequency) << test.name;
    EXPECT_EQ(has("Phase"), !symbols && !frequency) << test.name;
    EXPECT_EQ(has("Spectrogram"), burst) << test.name;
    ExpectWellFormed(WithoutImages(svg));
  }
}

TEST_F(Generate, Sheet_AnyLength_IsWellFormed) {
  for (const Case &test : Cases()) {
    for (const int samples : {1, 2, 3, 17, 100, 700}) {
      tool::SignalOptions options;
      options.type = test.name;
      options.samples = samples;
      const tool::SignalParameters parameters = tool::ParametersOf(options);
      tool::SignalSource source(parameters);
      VecCplx32 signal;
      ASSERT_TRUE(source.Next(signal));
      std::ostringstream out;
      tool::WriteSheet(out, parameters, signal);
      ExpectWellFormed(WithoutImages(out.str()));
    }
  }
}

TEST_F(Generate, Sheet_ExtremeParameters_IsWellFormed) {
  const std::vector<Arguments> cases = {
      {"cw", "--level", "-200", "--noise", "50"},
      {"cw", "--level", "100", "--frequency", "0"},
      {"am", "--mod-frequency", "2", "--depth", "200"},
      {"fm", "--mod-frequency", "10e6", "--deviation", "0"},
      {"pm", "--phase-deviation", "36000", "--mod-frequency", "10e6"},
      {"qpsk", "--symbol-rate", "20e6"},
      {"qam256", "--symbol-rate", "1e3", "--rolloff", "1", "--samples", "2000"},
      {"qpsk", "--rolloff", "0"},
      {"fsk2", "--symbol-rate", "20", "--deviation", "0"},
      {"pulse", "--width", "5e-8", "--period", "5e-8"},
      {"pulse", "--width", "0.2", "--period", "0.2"},
      {"chirp", "--sweep", "-20e6", "--offset", "10e6"},
      {"80211a", "--frame-rate", "1000"},
      {"80211a", "--frame-rate", "20e6", "--guard", "0.0078125", "--mcs", "54"},
      {"80211a", "--rate", "1e10", "--frame-rate", "100000"},
      {"80211a", "--repeat", "2000", "--samples", "1000"},
  };
  for (const Arguments &arguments : cases) {
    SCOPED_TRACE(arguments[0] + ' ' + arguments[1] + ' ' + arguments[2]);
    Make(arguments + Arguments{"--sheet", folder / "x.svg"});
    const std::string svg = Contents(folder / "x.svg");
    EXPECT_LT(svg.size(), 1000000U);
    ExpectWellFormed(WithoutImages(svg));
  }
}

TEST_F(Generate, Sheet_LongRecording_SaysHowMuchShows) {
  Make({"pulse", "--samples", "300000", "--repeat", "4", "--sheet", folder / "x.svg"});
  EXPECT_NE(Contents(folder / "x.svg")
                .find("1 200 000 samples, 60 ms, 4 signals, of which the first 1 048 576 show<"),
            std::string::npos);
}

/// The palette indices of an embedded raster, row by row from the top.
std::vector<int> PixelsOf(const std::string &svg, int &width) {
  const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const std::size_t start = svg.find("base64,") + 7;
  std::string png;
  unsigned word = 0;
  int bits = 0;
  for (const char c : svg.substr(start, svg.find_first_of("=\"", start) - start)) {
    word = word << 6 | static_cast<unsigned>(digits.find(c));
    if ((bits += 6) >= 8) png += static_cast<char>(word >> (bits -= 8) & 0xFFU);
  }
  const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(png[at]); };
  width = byte(18) << 8 | byte(19);
  // Stored blocks follow the name of the chunk and two bytes.
  std::string rows;
  for (std::size_t at = png.find("IDAT") + 6, last = 0; last == 0;) {
    last = byte(at);
    const std::size_t length = byte(at + 1) | static_cast<std::size_t>(byte(at + 2)) << 8;
    rows += png.substr(at + 5, length);
    at += 5 + length;
  }
  std::vector<int> pixels;
  for (std::size_t i = 0; i < rows.size(); ++i)
    if (i % static_cast<std::size_t>(width + 1) != 0) pixels.push_back(static_cast<unsigned char>(rows[i]));
  return pixels;
}

// A burst from a tenth of the signal on, and then a gap as long as the signal.
TEST_F(Generate, Spectrogram_BurstAndGap_StandWhereTheyAre) {
  Make({"80211a", "--rate", "40e6", "--samples", "20000", "--noise", "-60", "--gap", "500e-6", "--offset",
        "10e6", "--sheet", folder / "x.svg"});
  int width = 0;
  const std::vector<int> pixels = PixelsOf(Contents(folder / "x.svg"), width);
  const int height = static_cast<int>(pixels.size()) / width;
  ASSERT_EQ(height, 256);
  const auto mean = [&](double left, double right, double lowMHz, double highMHz) {
    double sum = 0.0, count = 0.0;
    for (int row = 0; row < height; ++row) {
      const double frequency = 20.0 - (row + 0.5) / height * 40.0;
      if (frequency < lowMHz || frequency > highMHz) continue;
      for (int column = static_cast<int>(left * width); column < right * width; ++column, ++count)
        sum += pixels[static_cast<std::size_t>(row * width + column)];
    }
    return sum / count;
  };
  EXPECT_GT(mean(0.07, 0.48, 2.5, 17.5), 170.0);   // the burst
  EXPECT_LT(mean(0.00, 0.04, 2.5, 17.5), 60.0);    // before it
  EXPECT_LT(mean(0.52, 1.00, 2.5, 17.5), 60.0);    // behind it
  EXPECT_LT(mean(0.07, 0.48, -19.0, -2.0), 120.0); // beside it
}

// What a receiver reads.

tool::Constellation Received(tool::SignalOptions options) {
  const tool::SignalParameters parameters = tool::ParametersOf(options);
  tool::SignalSource source(parameters);
  VecCplx32 signal;
  source.Next(signal);
  return tool::Receive(parameters, signal);
}

tool::SignalOptions OptionsOf(const char *type, const char *rate, const char *noise = "") {
  tool::SignalOptions options;
  options.type = type;
  options.numbers[0] = rate;
  options.numbers[2] = "1e5"; // offset
  options.numbers[3] = noise;
  return options;
}

// The taps that the generator takes leave this much, see the figures of the filters.
TEST(GenerateConstellation, PskQam_WithoutNoise_IsThatOfTheSymbols) {
  const std::pair<const char *, std::size_t> types[] = {
      {"bpsk", 2}, {"qpsk", 4}, {"psk8", 8}, {"psk16", 16}, {"qam16", 16}, {"qam64", 64}, {"qam256", 256}};
  for (const auto &[type, order] : types) {
    for (const char *symbolRate : {"2e6", "2.3456e6", "7e6"}) {
      tool::SignalOptions options = OptionsOf(type, "20e6");
      options.numbers[9] = symbolRate;
      const tool::Constellation c = Received(options);
      EXPECT_EQ(c.ideal.size(), order);
      EXPECT_EQ(c.points.size(), 1000U) << type;
      EXPECT_LT(c.evm, 0.006) << type << ' ' << symbolRate;
    }
  }
}

// Noise of power 2 k^2 / 3 per sample, of which the matched filter leaves the share of a symbol's samples.
TEST(GenerateConstellation, PskQam_WithNoise_HasTheErrorOfTheNoise) {
  for (const char *type : {"bpsk", "qpsk", "psk16", "qam64"}) {
    const double expected = std::sqrt(2.0 / 3.0 * 1e-4 / (0.01 * 10.0));
    EXPECT_NEAR(Received(OptionsOf(type, "20e6", "-40")).evm, expected, 0.06 * expected) << type;
  }
}

// Of noise over 128 carriers that of one, against a signal on 52.
TEST(GenerateConstellation, Burst_WithNoise_HasTheErrorOfTheNoise) {
  for (const char *mcs : {"6", "12", "24", "54"}) {
    tool::SignalOptions options = OptionsOf("80211a", "40e6", "-50");
    options.mcs = mcs;
    const double expected = std::sqrt(2.0 / 3.0 * 1e-5 / 0.01 * 52.0 / 128.0);
    const tool::Constellation c = Received(options);
    EXPECT_GE(c.points.size(), 1000U);
    EXPECT_NEAR(c.evm, expected, 0.08 * expected) << mcs;
  }
}

TEST(GenerateConstellation, Burst_AnyRateAndLongGuard_IsReceived) {
  for (const char *rate : {"20e6", "22e6", "31.7e6", "40e6", "61.44e6", "200e6"}) {
    for (const char *guard : {"0.25", "1"}) {
      tool::SignalOptions options = OptionsOf("80211a", rate);
      options.numbers[15] = guard;
      options.mcs = "54";
      options.samples = static_cast<int>(std::stod(rate) * 4e-4);
      EXPECT_LT(Received(options).evm, 0.006) << rate << ' ' << guard;
    }
  }
}

TEST(GenerateConstellation, ShortSignals_HaveNoPoints) {
  for (const char *type : {"qpsk", "80211a"}) {
    tool::SignalOptions options = OptionsOf(type, "20e6");
    options.samples = 100;
    EXPECT_TRUE(Received(options).points.empty()) << type;
  }
}

struct Picture {
  int width, height;
  std::size_t bytes;
  std::uint32_t crc;
};

// The files and their CRC-32 as Python's struct and zlib modules make them, of stored blocks that
// zlib.decompress reads back; the second needs two of them.
TEST(Png, Rasters_OneAndTwoBlocks_AreTheFiles) {
  tool::Palette palette{};
  for (std::size_t i = 0; i < palette.size(); ++i)
    palette[i] = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(255 - i), 7};
  for (const Picture &picture : {Picture{3, 2, 856, 985108761U}, Picture{449, 256, 116053, 3315000839U}}) {
    tool::Raster raster{picture.width, picture.height, {}};
    for (int i = 0; i < picture.width * picture.height; ++i)
      raster.pixels.push_back(static_cast<std::uint8_t>((i * 7 + i / picture.width) % 256));
    const std::string png = tool::PngOf(raster, palette);
    EXPECT_EQ(png.size(), picture.bytes);
    std::uint32_t crc = 0xFFFFFFFFU;
    for (const char byte : png) {
      crc ^= static_cast<unsigned char>(byte);
      for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1U) * 0xEDB88320U);
    }
    EXPECT_EQ(~crc, picture.crc);
  }
}

// Refusals.

TEST_F(Generate, WrongArguments_ExitWithTwoAndLeaveNothing) {
  const std::string out = folder / "x.cf32";
  const std::vector<std::pair<Arguments, std::string>> cases = {
      {{}, "TYPE is required"},
      {{"tone"}, "TYPE: unknown signal 'tone'; known are " + kNames},
      {{""}, "TYPE: unknown signal ''; known are " + kNames},
      {{"cw"}, "--out is required, or --sheet"},
      {{"cw", "--format", "iqf", "--sheet", folder / "x.svg"}, "--format: there is no --out"},
      {{"cw", "--out", folder / "x.bin"},
       "--out: the name '" + (folder / "x.bin") +
           "' ends in no format; known are iqf, xiq, cu8, cs8, cs16, cf32 (or give "
           "--format)"},
      {{"cw", "--out", out, "--format", "wav"},
       "--format: unknown format 'wav'; known are iqf, xiq, cu8, cs8, cs16, cf32"},
      {{"cw", "--out", folder / "none/x.iqf"},
       "--out: '" + (folder / "none/x.iqf") + "' cannot be written: there is no folder '" +
           (folder / "none") + "'"},
      {{"cw", "--out", out, "--sheet", out}, "--out: '" + out + "' is the file of --sheet"},
      {{"cw", "--out", out, "--rate", "0"}, "--rate: '0' is not from 1 to 1e+10"},
      {{"cw", "--out", out, "--rate", "-1e6"}, "--rate: '-1e6' is not from 1 to 1e+10"},
      {{"cw", "--out", out, "--rate", "2e10"}, "--rate: '2e10' is not from 1 to 1e+10"},
      {{"cw", "--out", out, "--rate", "1MHz"}, "--rate: '1MHz' is not a finite number"},
      {{"cw", "--out", out, "--level", "101"}, "--level: '101' is not from -200 to 100"},
      {{"cw", "--out", out, "--level", "inf"}, "--level: 'inf' is not a finite number"},
      {{"cw", "--out", out, "--noise", "51"}, "--noise: '51' is not from -300 to 50"},
      {{"cw", "--out", out, "--offset", "10.1e6"}, "--offset: '10.1e6' is not from -1e+07 to 1e+07"},
      {{"cw", "--out", out, "--frequency", "-10.1e6"}, "--frequency: '-10.1e6' is not from -1e+07 to 1e+07"},
      {{"am", "--out", out, "--mod-frequency", "0"}, "--mod-frequency: '0' is not from 1.19209 to 1e+07"},
      {{"am", "--out", out, "--mod-frequency", "11e6"},
       "--mod-frequency: '11e6' is not from 1.19209 to 1e+07"},
      {{"am", "--out", out, "--depth", "-1"}, "--depth: '-1' is not from 0 to 200"},
      {{"fm", "--out", out, "--deviation", "11e6"}, "--deviation: '11e6' is not from 0 to 1e+07"},
      {{"fsk2", "--out", out, "--deviation", "-1"}, "--deviation: '-1' is not from 0 to 1e+07"},
      {{"pm", "--out", out, "--phase-deviation", "-1"}, "--phase-deviation: '-1' is not from 0 to 36000"},
      {{"qpsk", "--out", out, "--symbol-rate", "20.1e6"},
       "--symbol-rate: '20.1e6' is not from 19.0735 to 2e+07"},
      {{"qpsk", "--out", out, "--symbol-rate", "0"}, "--symbol-rate: '0' is not from 19.0735 to 2e+07"},
      {{"fsk16", "--out", out, "--symbol-rate", "19"}, "--symbol-rate: '19' is not from 19.0735 to 2e+07"},
      {{"qpsk", "--out", out, "--rolloff", "1.1"}, "--rolloff: '1.1' is not from 0 to 1"},
      {{"qpsk", "--out", out, "--rolloff", "0", "--symbol-rate", "1e5"},
       "--symbol-rate: 100000 Hz with a roll-off of 0 needs a filter of more than 1 048 575 taps"},
      {{"pulse", "--out", out, "--width", "0"}, "--width: '0' is not from 5e-08 to 0.209715"},
      {{"pulse", "--out", out, "--width", "-1e-6"}, "--width: '-1e-6' is not from 5e-08 to 0.209715"},
      {{"pulse", "--out", out, "--period", "1"}, "--period: '1' is not from 5e-08 to 0.209715"},
      {{"chirp", "--out", out, "--sweep", "21e6"}, "--sweep: '21e6' is not from -2e+07 to 2e+07"},
      {{"80211a", "--out", out, "--mcs", "7"},
       "--mcs: unknown scheme '7'; known are 6, 9, 12, 18, 24, 36, 48, 54"},
      {{"80211a", "--out", out, "--frame-rate", "21e6"}, "--frame-rate: '21e6' is not from 1000 to 2e+07"},
      {{"80211a", "--out", out, "--frame-rate", "999"}, "--frame-rate: '999' is not from 1000 to 2e+07"},
      {{"80211a", "--out", out, "--rate", "10e6"},
       "--frame-rate: its default of 2e+07 is not from 1000 to 1e+07"},
      {{"80211a", "--out", out, "--guard", "0"}, "--guard: '0' is not from 0.0078125 to 1"},
      {{"qpsk", "--out", out, "--frequency", "1"},
       "--frequency: qpsk does not take it; its own options are --symbol-rate, --rolloff"},
      {{"cw", "--out", out, "--triangle"},
       "--triangle: cw does not take it; its own options are --frequency"},
      {{"am", "--out", out, "--sharp"},
       "--sharp: am does not take it; its own options are --mod-frequency, --depth, --triangle"},
      {{"fsk2", "--out", out, "--mcs", "6"},
       "--mcs: fsk2 does not take it; its own options are --deviation, --symbol-rate"},
      {{"80211a", "--out", out, "--width", "1"},
       "--width: 80211a does not take it; its own options are --frame-rate, --guard, --mcs"},
      {{"chirp", "--out", out, "--depth", "1"},
       "--depth: chirp does not take it; its own options are --width, --period, --sweep, --sharp"},
      {{"cw", "--out", out, "--samples", "0"}, "--samples: '0' is not a whole number from 1 to 4194304"},
      {{"cw", "--out", out, "--samples", "-5"}, "--samples: '-5' is not a whole number from 1 to 4194304"},
      {{"cw", "--out", out, "--samples", "4194305"},
       "--samples: '4194305' is not a whole number from 1 to 4194304"},
      {{"cw", "--out", out, "--duration", "0"}, "--duration: '0' is not a time of 1 to 4 194 304 samples"},
      {{"cw", "--out", out, "--duration", "-1"}, "--duration: '-1' is not from 0 to 1e+12"},
      {{"cw", "--out", out, "--duration", "1"}, "--duration: '1' is not a time of 1 to 4 194 304 samples"},
      {{"cw", "--out", out, "--duration", "1e-3", "--samples", "5"},
       "--duration: it does not go with --samples"},
      {{"cw", "--out", out, "--gap", "-1"}, "--gap: '-1' is not from 0 to 1e+12"},
      {{"cw", "--out", out, "--gap", "1e3"}, "--gap: '1e3' is not a time of 0 to 2 147 482 624 samples"},
      {{"cw", "--out", out, "--repeat", "0"}, "--repeat: '0' is not a whole number from 1 to 1000000"},
      {{"cw", "--out", out, "--repeat", "1000000", "--samples", "2148"},
       "--repeat: the recording would have more than 2 147 482 624 samples"},
      {{"cw", "--out", out, "--seed", "4294967296"},
       "--seed: '4294967296' is not a whole number from 0 to 4294967295"},
      {{"cw", "--out", out, "--centre", "-1"}, "--centre: '-1' is not from 0 to 1e+15"},
      {{"cw", "--out", out, "--bogus"}, "The following argument was not expected: --bogus"},
  };
  for (const auto &[arguments, message] : cases) ExpectFailure(2, message, Arguments{"generate"} + arguments);
  EXPECT_EQ(folder.Names(), std::vector<std::string>{});
}

TEST_F(Generate, RecordingThatCannotBeWrittenWhole_IsNotWritten) {
  ExpectFailure(
      1, "--out: '" + (folder / "x.iqf") + "' could not be written: File too large",
      {"generate", "cw", "--samples", "100000", "--out", folder / "x.iqf", "--sheet", folder / "x.svg"},
      LimitFiles);
  EXPECT_EQ(folder.Names(), std::vector<std::string>{});
}

// Each option with its unit, its bounds and its default.
TEST_F(Generate, Help_EveryOption_HasBoundsAndDefault) {
  const Outcome outcome = Make({"--help"});
  for (const char *line : {"--rate HZ             sampling rate, 1 to 1e10 (20e6)\n",
                           "--level DBM           level, -200 to 100 (-10)\n",
                           "--mcs MBIT            rate of 80211a: 6, 9, 12, 18, 24, 36, 48, 54 (6)\n",
                           "--samples N           length of the signal, 1 to 2^22 (20000)\n",
                           "--gap S               silence behind each, 0 to 2^31-1024 samples (0)\n"})
    EXPECT_NE(outcome.out.find(line), std::string::npos) << line;
  std::size_t widest = 0;
  std::istringstream lines(outcome.out);
  for (std::string line; std::getline(lines, line);) widest = std::max(widest, line.size());
  EXPECT_LE(widest, 80U);
}

} // namespace
