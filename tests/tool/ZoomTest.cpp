// qorn zoom.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <filesystem>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "ToolFixture.h"
#include "WindowShapes.h"

namespace {

using nlohmann::json;
using QORN::test::Contents;
using QORN::test::HeaderText;
using QORN::test::kFullScale;
using QORN::test::kPi;
using QORN::test::kRate;
using QORN::test::NoiseBandwidth;
using QORN::test::Outcome;
using QORN::test::Recording;
using QORN::test::RunTool;
using QORN::test::Scalloping;
using QORN::test::Shape;
using QORN::test::Shapes;
using QORN::test::Signal;
using QORN::test::Tool;

constexpr double kCentre = 100e6; // of the recordings

class Zoom : public Tool {
protected:
  static json Look(const std::string &path, const std::string &centre, const std::string &span,
                   std::vector<std::string> more = {}) {
    more.insert(more.begin(), {path, "--centre", centre, "--span", span});
    return Measure(more, "zoom");
  }
};

/// A tone of so many dBm at so many hertz from the recording's centre.
Signal ToneAt(double dBm, double offset) { return QORN::test::Tone(dBm, offset / kRate); }

/// Complex noise of so many dBm over the sampling rate.
Signal Noise(double dBm) {
  const auto engine = std::make_shared<std::mt19937>(1);
  std::normal_distribution<double> normal(0.0, kFullScale * std::pow(10.0, dBm / 20.0) / std::sqrt(2.0));
  // In braces, the order of the draws is the same with all compilers.
  return [=](int) mutable { return std::complex<double>{normal(*engine), normal(*engine)}; };
}

Signal Sum(const std::vector<Signal> &signals) {
  return [=](int i) {
    std::complex<double> sum;
    for (const Signal &signal : signals) sum += signal(i);
    return sum;
  };
}

TEST_F(Zoom, ToneOfKnownLevel_ReadsItsLevelWithEveryWindow) {
  constexpr double kLevel = -13.0;
  for (const double offset : {123456.0, 123457.3, -80000.0, 0.0}) {
    const std::string path = Save(Recording(20480, ToneAt(kLevel, offset)));
    // 401 points over 40 kHz are 100 Hz apart, five to a bin: blocks of 2000 samples.
    for (const Shape &shape : Shapes()) {
      std::ostringstream centre;
      centre.precision(15);
      centre << kCentre + std::round(offset / 1e4) * 1e4;
      const json report = Look(path, centre.str(), "40e3", {"--points", "401", "--window", shape.name});
      EXPECT_EQ(report["samples_per_block"], 2000);
      EXPECT_EQ(report["blocks"], 10);
      EXPECT_NEAR(report["point_spacing_hz"].get<double>(), 100.0, 1e-9);
      ASSERT_EQ(report["peaks"].size(), 1U) << shape.name << report;
      const json &peak = report["peaks"][0];
      const double off = std::fabs(offset - std::round(offset / 100.0) * 100.0); // the nearest point
      EXPECT_NEAR(peak["level"].get<double>(), kLevel - Scalloping(shape, 2000, off / 500.0), 0.005)
          << shape.name;
      // The top of the flat one rises by a hundredth of a decibel to either side of its middle.
      EXPECT_NEAR(peak["frequency_hz"].get<double>(), kCentre + offset,
                  shape.name == std::string("flat-top") ? 125.0 : 1.0)
          << shape.name;
      EXPECT_NEAR(peak["offset_hz"].get<double>(),
                  peak["frequency_hz"].get<double>() - report["centre_hz"].get<double>(), 1e-6);
      EXPECT_NEAR(report["resolution_bandwidth_hz"].get<double>(), shape.rbw * 500.0, 0.05) << shape.name;
      EXPECT_NEAR(report["noise_bandwidth_hz"].get<double>(), NoiseBandwidth(shape, 2000) * 500.0, 0.05);
    }
  }
}

TEST_F(Zoom, Points_AreTheTransformAtTheirFrequencies) {
  // Against the sum itself, of the samples as the recording holds them.
  const Signal signal = Sum({ToneAt(-10.0, 31e3), ToneAt(-30.0, 34e3), ToneAt(-5.0, -300e3), Noise(-40.0)});
  std::vector<std::complex<double>> samples;
  for (int i = 0; i < 2048; ++i)
    samples.emplace_back(std::round(signal(i).real()), std::round(signal(i).imag()));
  const std::string path = Save(Recording(2048, [&](int i) { return samples[static_cast<std::size_t>(i)]; }));
  const Shape &hann = Shapes()[1];
  ASSERT_STREQ(hann.name, "hann");
  constexpr int kBlock = 600;
  Look(path, "100.0325e6", "8e3",
       {"--points", "41", "--samples", "600", "--start", "100", "--window", "hann", "--csv",
        folder / "z.csv"});
  std::istringstream lines(Contents(folder / "z.csv"));
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, "frequency_Hz,mean_dBm,peak_hold_dBm");
  for (int k = 0; k < 41; ++k) {
    ASSERT_TRUE(std::getline(lines, line));
    std::istringstream cells(line);
    double frequency = 0.0, mean = 0.0, hold = 0.0;
    char comma = ' ';
    cells >> frequency >> comma >> mean >> comma >> hold;
    EXPECT_NEAR(frequency, 100.0285e6 + 200.0 * k, 1e-6);
    std::vector<double> powers;
    for (int block = 0; block < 3; ++block) {
      std::complex<double> sum;
      for (int n = 0; n < kBlock; ++n)
        sum += samples[static_cast<std::size_t>(100 + block * kBlock + n)] / kFullScale *
               std::polar(hann.weight(n, kBlock) * 2.0 / kBlock, // the weights sum to half their number
                          -2.0 * kPi * (28.5e3 + 200.0 * k) * n / kRate);
      powers.push_back(std::norm(sum));
    }
    // A tone of full scale is 0 dBm. The table has four decimals; the weights are floats.
    EXPECT_NEAR(mean, 10.0 * std::log10((powers[0] + powers[1] + powers[2]) / 3.0), 2e-4) << frequency;
    EXPECT_NEAR(hold, 10.0 * std::log10(*std::max_element(powers.begin(), powers.end())), 2e-4) << frequency;
  }
  EXPECT_FALSE(std::getline(lines, line));
}

TEST_F(Zoom, WholeRate_AgreesWithTheSpectrum) {
  const std::string path = Save(Recording(4096, Sum({ToneAt(-10.0, 31e3), Noise(-40.0)})));
  const json whole = Measure({path, "--points", "1000"});
  const json zoomed = Look(path, "100e6", "1e6", {"--points", "1001", "--samples", "1000"});
  EXPECT_NEAR(zoomed["noise_floor"].get<double>(), whole["noise_floor"].get<double>(), 0.01);
  EXPECT_NEAR(zoomed["power_in_span"].get<double>(), whole["total_power"].get<double>(), 0.05);
  ASSERT_EQ(zoomed["peaks"].size(), whole["peaks"].size());
  EXPECT_NEAR(zoomed["peaks"][0]["level"].get<double>(), whole["peaks"][0]["level"].get<double>(), 1e-4);
  EXPECT_NEAR(zoomed["peaks"][0]["frequency_hz"].get<double>(),
              whole["peaks"][0]["frequency_hz"].get<double>(), 1e-2);
}

TEST_F(Zoom, PowerInSpan_IsThatOfTheSignalsInIt) {
  const std::string path = Save(Recording(1 << 17, Sum({ToneAt(-20.0, 50e3), ToneAt(-3.0, 200e3)})));
  for (const char *window : {"rectangle", "hann", "blackman-harris", "flat-top"}) {
    const json inside = Look(path, "100.05e6", "50e3", {"--window", window});
    // The sidelobes of the rectangle leave a five hundredth outside of the span, and those of the strong tone
    // add as much.
    EXPECT_NEAR(inside["power_in_span"].get<double>(), -20.0, *window == 'r' ? 0.03 : 0.001) << window;
  }
  // What is left beside the strong tone is the rounding of the samples: -93 dBm over the rate for each tone.
  const json beside = Look(path, "100.15e6", "20e3");
  EXPECT_LT(beside["power_in_span"].get<double>(), -90.0);
}

TEST_F(Zoom, NoiseOfKnownPower_GivesItsFloor) {
  // A tenth of 2^19 samples, unevenly weighted by the window: four standard deviations are up to 0.2 dB.
  const std::string path = Save(Recording(1 << 19, Noise(-40.0)));
  for (const char *window : {"rectangle", "hann", "flat-top"})
    for (const char *points : {"201", "1001"}) {
      const json report = Look(path, "99.8e6", "100e3", {"--points", points, "--window", window});
      EXPECT_NEAR(report["power_in_span"].get<double>(), -50.0, 0.2) << window << points;
      EXPECT_NEAR(report["noise_density_per_hz"].get<double>(), -100.0, 0.2) << window << points;
      EXPECT_EQ(report["peaks"].size(), 0U) << report;
    }
}

TEST_F(Zoom, SpanOfFewBandwidths_TellsNoFloor) {
  const std::string path = Save(Recording(20480, Sum({ToneAt(-10.0, 0.0), Noise(-60.0)})));
  // A block of all samples has a noise bandwidth of 98 Hz, and a main lobe of 391 Hz.
  const json narrow = Look(path, "100e6", "700");
  EXPECT_TRUE(narrow["noise_floor"].is_null());
  EXPECT_TRUE(narrow["noise_density_per_hz"].is_null());
  ASSERT_EQ(narrow["peaks"].size(), 1U) << narrow;
  EXPECT_NEAR(narrow["peaks"][0]["level"].get<double>(), -10.0, 0.01);
  const Outcome outcome = RunTool({"zoom", path, "--centre", "100e6", "--span", "700"});
  EXPECT_NE(outcome.out.find("\nNoise floor           unknown, the span is too narrow\n"), std::string::npos)
      << outcome.out;
  // -60 dBm in 1 MHz; the one block scatters.
  EXPECT_NEAR(Look(path, "100e6", "5e3")["noise_floor"].get<double>(), -60.0 - 10.0 * std::log10(1e6 / 98),
              3.0);
}

TEST_F(Zoom, CloseTones_AreResolvedByLongBlocks) {
  const std::string path =
      Save(Recording(1 << 17, Sum({ToneAt(-10.0, 20000.0), ToneAt(-30.0, 20050.0), Noise(-50.0)})));
  // A resolution of 19 Hz parts them, one of 190 Hz does not.
  const json fine = Look(path, "100.02e6", "1e3", {"--samples", "100000"});
  ASSERT_EQ(fine["peaks"].size(), 2U) << fine;
  EXPECT_NEAR(fine["peaks"][0]["level"].get<double>(), -10.0, 0.05);
  EXPECT_NEAR(fine["peaks"][1]["level"].get<double>(), -30.0, 0.05);
  EXPECT_NEAR(fine["peaks"][1]["frequency_hz"].get<double>(), 100020050.0, 0.5);
  EXPECT_EQ(Look(path, "100.02e6", "1e3", {"--samples", "10000"})["peaks"].size(), 1U);
}

TEST_F(Zoom, ToneBeyondTheEdge_IsNoPeak) {
  const std::string path = Save(Recording(1 << 16, Sum({ToneAt(-10.0, 50e3), Noise(-50.0)})));
  // The tone stands one to three hundred hertz behind either edge, with a main lobe of 800 Hz to each side.
  for (const char *centre : {"100.0449e6", "100.0447e6", "100.0551e6", "100.0553e6"}) {
    const json report = Look(path, centre, "10e3", {"--samples", "5000"});
    EXPECT_EQ(report["peaks"].size(), 0U) << centre << report;
  }
  EXPECT_EQ(Look(path, "100.0455e6", "10e3", {"--samples", "5000"})["peaks"].size(), 1U);
}

TEST_F(Zoom, PointsAndSamples_FollowFromEachOther) {
  const std::string path = Save(Recording(20480, ToneAt(-10.0, 0.0)));
  const auto expect = [&](std::vector<std::string> more, int points, int samples) {
    const json report = Look(path, "100e6", "100e3", more);
    EXPECT_EQ(report["points"], points);
    EXPECT_EQ(report["samples_per_block"], samples);
  };
  expect({}, 1001, 2000);
  expect({"--points", "501"}, 501, 1000);
  expect({"--samples", "1000"}, 1001, 1000);
  expect({"--samples", "10000"}, 5001, 10000);
  expect({"--samples", "10000", "--points", "1001"}, 1001, 10000); // one to a bin
  expect({"--count", "700"}, 1001, 700);                           // all there are
  expect({"--points", "3"}, 3, 4);
}

TEST_F(Zoom, Text_SaysWhatWasMeasured) {
  const std::string path = Save(Recording(10240, ToneAt(-10.0, 250e3)));
  const Outcome outcome = RunTool({"zoom", path, "--centre", "100249000", "--span", "20e3", "--samples",
                                   "5000", "--window", "hann", "--start", "100"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.error, "");
  std::istringstream lines(outcome.out);
  std::string line;
  for (const std::string &want : {
           "Recording             " + path,
           std::string("Centre                100.249 MHz"),
           std::string("Span                  20 kHz"),
           std::string("Sampling rate         1 MHz"),
           std::string("Samples               10 000 from sample 100 on, 10 ms; 140 left over"),
           std::string("Points                1 001, 20 Hz apart"),
           std::string("Blocks                2 of 5 000 samples, hann window"),
           std::string("Resolution bandwidth  288 Hz"),
           std::string("Power in span         -10.00 dBm"),
       }) {
    std::getline(lines, line);
    EXPECT_EQ(line, want);
  }
  std::getline(lines, line);
  EXPECT_EQ(line.substr(0, 22), "Noise floor           ");
  std::getline(lines, line);
  EXPECT_EQ(line, "Peak 1                -10.00 dBm at 100.250000 MHz  (+1.000 kHz)");
  EXPECT_FALSE(std::getline(lines, line)) << line;
}

TEST_F(Zoom, Svg_IsWellFormedAndComplete) {
  const std::string path = Save(Recording(20480, Sum({ToneAt(-10.0, 391e3), Noise(-60.0)})));
  const json report = Look(path, "100.4e6", "100e3", {"--svg", folder / "z.svg"});
  const std::string svg = Contents(folder / "z.svg");
  ExpectWellFormed(svg);
  for (const char *text :
       {">test.iqf<",
        "Centre 100.4 MHz · span 100 kHz · RBW 950 Hz, blackman-harris · 10 blocks of 2 000 samples<",
        ">Power in span -10.00 dBm<", ">Outside the span of 800 kHz<", ">100.38<", ">100.42<",
        ">Frequency (MHz)<", ">100.39100 MHz<"})
    EXPECT_NE(svg.find(text), std::string::npos) << text;
  Look(path, "100.1e6", "100e3", {"--svg", folder / "z.svg"});
  EXPECT_EQ(Contents(folder / "z.svg").find("Outside"), std::string::npos);
}

TEST_F(Zoom, SilentRecording_HasNoPower) {
  const std::string path = Save(Recording(4096, [](int) { return 0.0; }));
  const json report = Look(path, "100e6", "10e3", {"--svg", folder / "s.svg", "--csv", folder / "s.csv"});
  EXPECT_TRUE(report["power_in_span"].is_null());
  EXPECT_TRUE(report["noise_floor"].is_null());
  EXPECT_EQ(report["peaks"].size(), 0U);
  ExpectWellFormed(Contents(folder / "s.svg"));
}

TEST_F(Zoom, WrongArguments_ExitWithTwoAndNameTheArgument) {
  const std::string path = Save(Recording(4096, ToneAt(-10.0, 0.0)));
  const auto fails = [&](const std::string &message, std::vector<std::string> more) {
    more.insert(more.begin(), {"zoom", path});
    ExpectFailure(2, message, more);
  };
  const auto with = [&](const std::string &message, std::vector<std::string> more) {
    more.insert(more.end(), {"--centre", "100e6", "--span", "1e4"});
    fails(message, more);
  };
  ExpectFailure(2, "RECORDING is required", {"zoom"});
  fails("--centre is required", {});
  fails("--centre is required", {"--span", "1e3"});
  fails("--span is required", {"--centre", "100e6"});
  fails("--centre: '100M' is not a finite number", {"--centre", "100M", "--span", "1e3"});
  fails("--span: '' is not a finite number", {"--centre", "100e6", "--span", ""});
  fails("--span: '0' is not above 0", {"--centre", "100e6", "--span", "0"});
  fails("--span: '-1e3' is not above 0", {"--centre", "100e6", "--span", "-1e3"});
  const std::string recorded = "the recording, which has 99500000 Hz to 100500000 Hz";
  fails("--centre: 0 Hz is outside " + recorded, {"--centre", "0", "--span", "1e3"});
  fails("--centre: -1000 Hz is outside " + recorded, {"--centre", "-1e3", "--span", "1e3"});
  fails("--centre: 100500001 Hz is outside " + recorded, {"--centre", "100500001", "--span", "1e3"});
  fails("--span: 2000000 Hz around 100000000 Hz reaches beyond " + recorded,
        {"--centre", "100e6", "--span", "2e6"});
  fails("--span: 1000 Hz around 99500000 Hz reaches beyond " + recorded,
        {"--centre", "99.5e6", "--span", "1e3"});
  for (const char *span : {"1e-09", "1e-300"})
    fails("--span: " + std::string(span) + " Hz is too narrow for 1001 points",
          {"--centre", "100e6", "--span", span});
  with("--points: '2' is not a whole number from 3 to 1048576", {"--points", "2"});
  with("--points: '1e3' is not a whole number from 3 to 1048576", {"--points", "1e3"});
  with("--samples: '1' is not a whole number from 2 to 2097152", {"--samples", "1"});
  with("--samples: a block of 4097 samples does not fit into 4096 samples", {"--samples", "4097"});
  with("--samples: a block of 4096 samples does not fit into 4000 samples",
       {"--samples", "4096", "--start", "96"});
  with("--points: 11 points miss signals between them; 41 or more are needed for blocks of 4000 samples",
       {"--points", "11", "--samples", "4000"});
  with("--count: one sample has no spectrum", {"--count", "1"});
  with("--start: sample 4096 is not in the recording, which has 4096 samples", {"--start", "4096"});
  with("--unit: unknown unit 'W'; known are dBm, dBV, V", {"--unit", "W"});
  with("--svg: '" + path + "' is the recording itself", {"--svg", path});
  with("--csv: '" + (folder / "./x") + "' is the file of --svg",
       {"--svg", folder / "x", "--csv", folder / "./x"});
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"test.iqf"});
}

TEST_F(Zoom, RecordingCutShort_ExitsWithOneAndWritesNothing) {
  const std::string path = Save(Recording(4096, ToneAt(-10.0, 0.0)).substr(0, 10000));
  ExpectFailure(
      1,
      "recording '" + path +
          "' is cut short: its header promises 4 frames, the file holds 2 (--count 2048 reads them)",
      {"zoom", path, "--centre", "100e6", "--span", "1e4", "--svg", folder / "z.svg"});
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"test.iqf"});
  EXPECT_EQ(Look(path, "100e6", "1e4", {"--count", "2048"})["samples"], 2048);
}

TEST_F(Zoom, LongRecording_NeedsNoMoreMemoryThanAShortOne) {
  // Silence: files with holes.
  const auto resident = [&](int frames) {
    const std::string header = HeaderText(frames, 1024);
    const std::string path = Save(header);
    std::filesystem::resize_file(path, header.size() + static_cast<std::uintmax_t>(frames + 1) * 4120);
    const Outcome outcome =
        RunTool({"zoom", path, "--centre", "100e6", "--span", "1e5", "--points", "101", "--json"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(json::parse(outcome.out)["samples"].get<int>(), frames * 1024 / 200 * 200);
    return outcome.residentKilobytes;
  };
  const long little = resident(1000);
  EXPECT_LT(resident(16000), little + 8 * 1024); // 62 MiB more of samples
}

} // namespace
