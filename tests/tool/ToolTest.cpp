// The tool as its users meet it: by arguments, exit status, output and files.

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <complex>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <qorn/Version.h>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "ToolFixture.h"
#include "WindowShapes.h"
#include "support/XiqRecording.h"

namespace {

namespace xiq = QORN::test::xiq;

using nlohmann::json;
using QORN::test::Contents;
using QORN::test::HasTerminals;
using QORN::test::HeaderText;
using QORN::test::kFullScale;
using QORN::test::kPi;
using QORN::test::kRate;
using QORN::test::LimitFiles;
using QORN::test::NoiseBandwidth;
using QORN::test::Outcome;
using QORN::test::Recording;
using QORN::test::RunTool;
using QORN::test::Scalloping;
using QORN::test::Shape;
using QORN::test::Shapes;
using QORN::test::Signal;
using QORN::test::Tone;
using QORN::test::Tool;
using QORN::test::iqf::Frame;
using QORN::test::iqf::Header;
using QORN::test::iqf::Mark;
using QORN::test::iqf::Pair;

struct Row {
  std::string frequency;
  double mean, hold;
};

std::vector<Row> Table(const std::string &path, const std::string &head) {
  std::istringstream lines(Contents(path));
  std::string line;
  std::getline(lines, line);
  EXPECT_EQ(line, head);
  std::vector<Row> rows;
  while (std::getline(lines, line)) {
    const std::size_t first = line.find(',');
    const std::size_t second = line.find(',', first + 1);
    rows.push_back(
        {line.substr(0, first), std::stod(line.substr(first + 1)), std::stod(line.substr(second + 1))});
  }
  return rows;
}

// Calibration

struct Place {
  int points;
  double bin; // of the tone, from the centre
};

TEST_F(Tool, Spectrum_ToneOfKnownLevel_ReadsItsLevelWithEveryWindow) {
  constexpr double kLevel = -13.0;
  for (const Place &place : {Place{512, 100.0}, Place{512, 100.5}, Place{512, -77.3}, Place{500, 0.0},
                             Place{500, -249.5}, Place{487, 120.25}}) {
    const std::string path = Save(Recording(8192, Tone(kLevel, place.bin / place.points)));
    const double off = std::fabs(place.bin - std::round(place.bin));
    for (const Shape &shape : Shapes()) {
      const json report = Measure({path, "--points", std::to_string(place.points), "--window", shape.name});
      ASSERT_GE(report["peaks"].size(), 1U) << shape.name;
      const json &peak = report["peaks"][0];
      // 0.01 dB for the rounding of samples to integers and of the window to float.
      EXPECT_NEAR(peak["level"].get<double>(), kLevel - Scalloping(shape, place.points, off), 0.01)
          << shape.name << ' ' << place.points << ' ' << place.bin;
      EXPECT_NEAR(report["total_power"].get<double>(), kLevel, 0.01);
      const double spacing = kRate / place.points;
      double expected = place.bin * spacing;
      double found = peak["offset_hz"].get<double>();
      if (found > 0.25 * kRate && expected < -0.25 * kRate) expected += kRate; // the ends meet
      // The top of the parabola lies within a quarter of a bin of the tone, with most windows much closer.
      EXPECT_NEAR(found, expected, 0.25 * spacing) << shape.name << ' ' << place.bin;
      EXPECT_NEAR(peak["frequency_hz"].get<double>(), 100e6 + found, 1e-3);
      EXPECT_NEAR(report["resolution_bandwidth_hz"].get<double>(), shape.rbw * spacing, 1e-4 * spacing)
          << shape.name;
      EXPECT_NEAR(report["noise_bandwidth_hz"].get<double>(), NoiseBandwidth(shape, place.points) * spacing,
                  1e-4 * spacing);
    }
  }
}

TEST_F(Tool, Spectrum_Units_AreOfOneLevel) {
  const std::string path = Save(Recording(4096, Tone(-20.0, 0.125)));
  // -20 dBm are 10 uW: into 50 ohm a tone of sqrt(2 * 50 * 1e-5) V.
  const std::map<std::string, double> levels = {{"dBm", -20.0}, {"dBV", -30.0}, {"V", std::sqrt(1e-3)}};
  for (const auto &[unit, level] : levels) {
    const json report = Measure({path, "--unit", unit, "--points", "1024"});
    EXPECT_EQ(report["unit"], unit);
    EXPECT_NEAR(report["peaks"][0]["level"].get<double>(), level, 1e-3 * std::fabs(level));
    EXPECT_NEAR(report["total_power"].get<double>(), level, 1e-3 * std::fabs(level));
  }
}

TEST_F(Tool, Spectrum_NoiseOfKnownPower_GivesItsFloor) {
  std::mt19937 engine(1);
  std::normal_distribution<double> normal(0.0, kFullScale * std::pow(10.0, -40.0 / 20.0) / std::sqrt(2.0));
  const std::string path = Save(Recording(1 << 17, [&](int) {
    return std::complex<double>{normal(engine), normal(engine)};
  }));
  for (const Shape &shape : Shapes()) {
    for (const char *points : {"256", "2048", "65536"}) {
      const json report = Measure({path, "--points", points, "--window", shape.name});
      const double bandwidth = report["noise_bandwidth_hz"].get<double>();
      EXPECT_NEAR(report["total_power"].get<double>(), -40.0, 0.05);
      // Some 500 blocks of 256 points scatter by 0.2 dB per bin, and the median of 256 by a fraction of it.
      EXPECT_NEAR(report["noise_floor"].get<double>(), -40.0 + 10.0 * std::log10(bandwidth / kRate), 0.15)
          << points;
      EXPECT_NEAR(report["noise_density_per_hz"].get<double>(), -100.0, 0.15) << points;
      EXPECT_EQ(report["peaks"].size(), 0U) << shape.name << ' ' << points << report;
    }
  }
}

TEST_F(Tool, Spectrum_WeakToneBesideAStrongOne_IsFound) {
  const Signal strong = Tone(-10.0, 200.3 / 1024);
  const Signal weak = Tone(-50.0, 207.1 / 1024);
  std::mt19937 engine(1);
  std::normal_distribution<double> normal(0.0, 10.0);
  const std::string path = Save(Recording(1 << 15, [&](int i) {
    return strong(i) + weak(i) + std::complex<double>{normal(engine), normal(engine)};
  }));
  const json peaks = Measure({path, "--points", "1024"})["peaks"];
  ASSERT_EQ(peaks.size(), 2U);
  EXPECT_NEAR(peaks[0]["level"].get<double>(), -10.0, 0.85);
  EXPECT_NEAR(peaks[1]["level"].get<double>(), -50.0, 0.85);
  EXPECT_NEAR(peaks[1]["offset_hz"].get<double>(), 207.1 / 1024 * kRate, 100.0);
  // With the rectangle, the leakage of the strong tone hides the weak one, and is not taken for a signal.
  EXPECT_EQ(Measure({path, "--points", "1024", "--window", "rectangle"})["peaks"].size(), 1U);
}

TEST_F(Tool, Spectrum_ToneInOneOfFourBlocks_AveragesPowerAndHoldsThePeak) {
  const Signal tone = Tone(-20.0, 0.25);
  const std::string path = Save(Recording(4096, [&](int i) { return i < 1024 ? tone(i) : 0.0; }));
  Measure({path, "--points", "1024", "--csv", folder / "t.csv"});
  const Row row = Table(folder / "t.csv", "frequency_Hz,mean_dBm,peak_hold_dBm")[768];
  EXPECT_NEAR(row.mean, -20.0 - 10.0 * std::log10(4.0), 1e-3);
  EXPECT_NEAR(row.hold, -20.0, 1e-3);
}

// What is read

TEST_F(Tool, Spectrum_StartAndCount_ChooseTheSamples) {
  const Signal low = Tone(-20.0, -0.125);
  const Signal high = Tone(-20.0, 0.375);
  for (const int points : {1024, 1000, 77}) {
    const std::string path = Save(Recording(
        20 * points, [&](int i) { return i < 1234 ? low(i) : high(i); }, points));
    const json first = Measure({path, "--points", "64", "--count", "1234"});
    EXPECT_EQ(first["blocks"], 19);
    EXPECT_EQ(first["samples"], 19 * 64);
    EXPECT_EQ(first["samples_left_over"], 1234 - 19 * 64);
    // The rounding to integers leaves lines some 90 dB below.
    ASSERT_TRUE(first["peaks"].size() == 1 || first["peaks"][1]["level"] < -90.0) << first;
    EXPECT_NEAR(first["peaks"][0]["offset_hz"].get<double>(), -0.125 * kRate, 1.0);
    const json second = Measure({path, "--points", "64", "--start", "1234", "--count", "200"});
    EXPECT_EQ(second["start_sample"], 1234);
    EXPECT_EQ(second["blocks"], 3);
    ASSERT_TRUE(second["peaks"].size() == 1 || second["peaks"][1]["level"] < -90.0) << second;
    EXPECT_NEAR(second["peaks"][0]["offset_hz"].get<double>(), 0.375 * kRate, 1.0);
    EXPECT_NEAR(second["peaks"][0]["level"].get<double>(), -20.0, 0.01);
  }
}

TEST_F(Tool, Spectrum_WholeRecording_UsesEverySampleOnce) {
  // The mean of a ramp of magnitudes tells each sample: across frames, chunks of frames and blocks.
  const int points = 100;
  const int samples = 600 * points;
  const std::string path = Save(Recording(
      samples, [](int i) { return std::complex<double>(i % 9973, 0); }, points));
  double sum = 0.0;
  for (int i = 0; i < samples; ++i) sum += std::pow(i % 9973 / kFullScale, 2.0);
  const json report = Measure({path, "--points", "60"});
  EXPECT_EQ(report["blocks"], 1000);
  EXPECT_EQ(report["samples_left_over"], 0);
  EXPECT_NEAR(report["total_power"].get<double>(), 10.0 * std::log10(sum / samples), 1e-4);
}

TEST_F(Tool, Spectrum_ShortRecording_TakesFewerPoints) {
  const std::string path = Save(Recording(1500, Tone(-10.0, 0.1), 500));
  EXPECT_EQ(Measure({path})["points"], 1024);
  EXPECT_EQ(Measure({path, "--count", "3"})["points"], 2);
  EXPECT_EQ(Measure({path, "--points", "1500"})["blocks"], 1);
}

TEST_F(Tool, Spectrum_PolarFrames_AreTurnedIntoSamples) {
  // Phase in radians as integers: a turn of 1 rad per sample, in frames that start at any phase.
  std::string bytes = HeaderText(4, 1024);
  for (int f = 0; f < 4; ++f) bytes += Frame(Mark::kPolar, [f](int k) { return Pair{f * 1024 + k, 3277}; });
  const json report = Measure({Save(bytes), "--points", "2048"});
  EXPECT_EQ(report["polar_frames"], 4);
  ASSERT_GE(report["peaks"].size(), 1U);
  EXPECT_NEAR(report["peaks"][0]["offset_hz"].get<double>(), kRate / (2.0 * kPi), 100.0);
  EXPECT_NEAR(report["total_power"].get<double>(), -20.0, 0.01);
}

TEST_F(Tool, Spectrum_SilentRecording_HasNoPower) {
  const std::string path = Save(Recording(4096, [](int) { return 0.0; }));
  const json report = Measure({path, "--svg", folder / "s.svg", "--csv", folder / "s.csv"});
  EXPECT_TRUE(report["total_power"].is_null());
  EXPECT_TRUE(report["noise_floor"].is_null());
  EXPECT_EQ(report["peaks"].size(), 0U);
  EXPECT_EQ(Contents(folder / "s.svg").find("nan"), std::string::npos);
  EXPECT_EQ(Contents(folder / "s.svg").find("inf"), std::string::npos);
}

// Report, table and picture

TEST_F(Tool, Spectrum_Text_SaysWhatWasMeasured) {
  const std::string path = Save(Recording(10240, Tone(-10.0, 0.25)));
  const Outcome outcome =
      RunTool({"spectrum", path, "--points", "1000", "--window", "hann", "--start", "100"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.error, "");
  std::istringstream lines(outcome.out);
  const std::vector<std::string> expected = {
      "Recording             " + path,
      "Centre                100 MHz",
      "Span                  800 kHz",
      "Sampling rate         1 MHz",
      "Samples               10 000 from sample 100 on, 10 ms; 140 left over",
      "Points                1 000, hann window",
      "Blocks                10",
      "Bin spacing           1 kHz",
      "Resolution bandwidth  1.44 kHz",
      "Total power           -10.00 dBm",
  };
  std::string line;
  for (const std::string &want : expected) {
    std::getline(lines, line);
    EXPECT_EQ(line, want);
  }
  std::getline(lines, line);
  EXPECT_EQ(line.substr(0, 22), "Noise floor           ");
  std::getline(lines, line);
  EXPECT_EQ(line, "Peak 1                -10.00 dBm at 100.2500 MHz  (+250.0 kHz)");
}

TEST_F(Tool, Spectrum_Csv_HasALinePerBin) {
  const std::string path = Save(Recording(4096, Tone(-10.0, 0.25)));
  Measure({path, "--points", "1000", "--csv", folder / "even.csv"});
  const std::vector<Row> even = Table(folder / "even.csv", "frequency_Hz,mean_dBm,peak_hold_dBm");
  ASSERT_EQ(even.size(), 1000U);
  EXPECT_EQ(even.front().frequency, "99500000");
  EXPECT_EQ(even[500].frequency, "1e+08");
  EXPECT_EQ(even.back().frequency, "100499000");
  EXPECT_NEAR(even[750].mean, -10.0, 0.01);
  EXPECT_NEAR(even[750].hold, -10.0, 0.01);
  Measure({path, "--points", "5", "--window", "rectangle", "--unit", "V", "--csv", folder / "odd.csv"});
  const std::vector<Row> odd = Table(folder / "odd.csv", "frequency_Hz,mean_V,peak_hold_V");
  ASSERT_EQ(odd.size(), 5U);
  EXPECT_EQ(odd.front().frequency, "99600000");
  EXPECT_EQ(odd.back().frequency, "100400000");
}

TEST_F(Tool, Spectrum_Svg_IsWellFormedAndComplete) {
  const Signal one = Tone(-10.0, 0.25);
  const Signal two = Tone(-30.0, -0.25);
  const std::string path =
      Save(Recording(8192, [&](int i) { return one(i) + two(i); }), "a<b>&\"c\"\xC3\xA9\xFF\x1B.iqf");
  for (const char *points : {"2", "1000", "8192"}) {
    Measure({path, "--points", points, "--svg", folder / "p.svg"});
    const std::string svg = Contents(folder / "p.svg");
    ExpectWellFormed(svg);
    EXPECT_NE(svg.find("<title>a&lt;b&gt;&amp;&quot;c&quot;\xC3\xA9??.iqf</title>"), std::string::npos);
  }
  const std::string svg = Contents(folder / "p.svg");
  for (const char *text :
       {">Frequency (MHz)<", ">Level (dBm)<", ">100.0<", ">99.6<", ">-20<", ">Mean power<", ">Peak hold<",
        ">100.250", ">-10.00 dBm<", ">-30.00 dBm<", "Outside the span of 800 kHz"})
    EXPECT_NE(svg.find(text), std::string::npos) << text;
  EXPECT_LT(svg.size(), 100000U);
}

TEST_F(Tool, Info_Recording_ShowsTheHeaderAndWhatFollows) {
  std::string bytes = Header("FFTPoints=1000 ValidFrames=10 BlockSize=4 CenterFrequency=2.4G Span=8M\n"
                             "FrameLength=100u MaxInputLevel=0 GainOffset=-90.308998699194358 Note=x");
  for (int f = 0; f < 11; ++f) bytes += Frame(Mark::kNone, [](int) { return Pair{0, 0}; });
  const std::string path = Save(bytes);
  const Outcome outcome = RunTool({"info", path});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.out, "Header of " + path +
                             "\n"
                             "FFTPoints = 1000\n"
                             "ValidFrames = 10\n"
                             "BlockSize = 4\n"
                             "CenterFrequency = 2.4G\n"
                             "Span = 8M\n"
                             "FrameLength = 100u\n"
                             "MaxInputLevel = 0\n"
                             "GainOffset = -90.308998699194358\n"
                             "Note = x\n"
                             "What follows from it\n"
                             "  Samples               10 000, 1 ms\n"
                             "  Sampling rate         10 MHz\n"
                             "  Centre                2.4 GHz\n"
                             "  Span                  8 MHz\n"
                             "  Blocks                3 of 4 frames, the first of 2\n"
                             "  Volts per step        9.651 µV\n"
                             "  Full scale            0.00 dBm, a tone of 32 768 steps\n"
                             "  Frames in the file    10 of 10, and the flatness record\n");
}

TEST_F(Tool, Info_RecordingCutShortOrOdd_StillShowsTheHeader) {
  const Outcome cut = RunTool({"info", Save(Recording(4096, Tone(-10.0, 0.1)).substr(0, 10000))});
  EXPECT_EQ(cut.status, 0);
  EXPECT_NE(cut.out.find("2 of 4: cut short, no flatness record"), std::string::npos) << cut.out;
  const Outcome odd = RunTool({"info", Save(Header("FFTPoints=-7 ValidFrames=2147483647 Span=nan BlockSize=0 "
                                                   "MaxInputLevel=1e30 CenterFrequency=1e999"))});
  EXPECT_EQ(odd.status, 0) << odd.error;
  EXPECT_NE(odd.out.find("ValidFrames = 2147483647\n"), std::string::npos);
  EXPECT_EQ(RunTool({"info", Save("10")}).status, 0);
}

// Help

TEST_F(Tool, Help_FitsOneScreen) {
  struct Help {
    std::vector<std::string> arguments;
    int lines;
  };
  for (const auto &[arguments, most] : {Help{{"--help"}, 24},
                                        {{"-h"}, 24},
                                        {{"spectrum", "--help"}, 30}, // with what is done to its traces
                                        {{"info", "--help"}, 24},
                                        {{"zoom", "--help"}, 24},
                                        {{"windows", "--help"}, 24},
                                        {{"units", "--help"}, 24},
                                        {{"convert", "--help"}, 24},
                                        {{"resample", "--help"}, 24}}) {
    const Outcome outcome = RunTool(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "");
    EXPECT_LE(std::count(outcome.out.begin(), outcome.out.end(), '\n'), most);
    std::istringstream lines(outcome.out);
    for (std::string line; std::getline(lines, line);) EXPECT_LE(line.size(), 80U) << line;
  }
  EXPECT_NE(RunTool({"spectrum", "--help"}).out.find("--window NAME"), std::string::npos);
}

TEST_F(Tool, Version_IsPrinted) {
  const Outcome outcome = RunTool({"--version"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.out, "qorn " QORN_VERSION_STRING "\n");
}

TEST_F(Tool, WholeNumbers_WithLeadingZeros_AreDecimal) {
  const std::string path = Save(Recording(4096, Tone(-10.0, 0.1)));
  EXPECT_EQ(Measure({path, "--count", "0100", "--points", "010"})["samples"], 100);
  EXPECT_EQ(Measure({path, "--points", "00100"})["points"], 100);
  for (const char *start : {"010", "08", "09", "0000000000000000000000019"}) {
    const std::string plain = std::to_string(std::atoi(start));
    EXPECT_EQ(Measure({path, "--start", start}), Measure({path, "--start", plain})) << start;
  }
  EXPECT_EQ(Measure({path, "--ratio", "08", "--detector", "peak"})["points"], 4096);
  EXPECT_EQ(RunTool({"generate", "cw", "--samples", "0020", "--repeat", "010", "--seed", "09", "--out",
                     folder / "x.cf32"})
                .status,
            0);
  EXPECT_EQ(std::filesystem::file_size(folder / "x.cf32"), 8U * 20U * 10U);
  ExpectFailure(2, "--count: '0x10' is not a whole number of 1 or more",
                {"spectrum", path, "--count", "0x10"});
}

// Bad arguments

TEST_F(Tool, Arguments_Wrong_ExitWithTwoAndNameTheArgument) {
  const std::string path = Save(Recording(4096, Tone(-10.0, 0.1)));
  std::string windows;
  for (const Shape &shape : Shapes()) windows += (windows.empty() ? "" : ", ") + std::string(shape.name);
  const std::string known =
      "; known are info, spectrum, zoom, plot, filter, convert, resample, generate, windows, units";
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{}, "a subcommand is missing" + known + " (see qorn --help)"},
      {{"bogus"}, "unknown subcommand 'bogus'" + known},
      {{"spectrum"}, "RECORDING is required"},
      {{"info"}, "RECORDING is required"},
      {{"spectrum", path, "--points", "0"}, "--points: '0' is not a whole number from 2 to 16777216"},
      {{"spectrum", path, "--points", "1"}, "--points: '1' is not a whole number from 2 to 16777216"},
      {{"spectrum", path, "--points", "-4"}, "--points: '-4' is not a whole number from 2 to 16777216"},
      {{"spectrum", path, "--points", "ten"}, "--points: 'ten' is not a whole number from 2 to 16777216"},
      {{"spectrum", path, "--points", "12x"}, "--points: '12x' is not a whole number from 2 to 16777216"},
      {{"spectrum", path, "--points", "1.5"}, "--points: '1.5' is not a whole number from 2 to 16777216"},
      {{"spectrum", path, "--points", ""}, "--points: '' is not a whole number from 2 to 16777216"},
      {{"spectrum", path, "--points", "99999999999999999999"},
       "--points: '99999999999999999999' is not a whole number from 2 to 16777216"},
      {{"spectrum", path, "--points", "4097"},
       "--points: a block of 4097 points does not fit into 4096 samples"},
      {{"spectrum", path, "--window", "tukey"}, "--window: unknown window 'tukey'; known are " + windows},
      {{"spectrum", path, "--window", ""}, "--window: unknown window ''; known are " + windows},
      {{"spectrum", path, "--unit", "W"}, "--unit: unknown unit 'W'; known are dBm, dBV, V"},
      {{"spectrum", path, "--start", "-1"}, "--start: '-1' is not a whole number of 0 or more"},
      {{"spectrum", path, "--start", "4096"},
       "--start: sample 4096 is not in the recording, which has 4096 samples"},
      {{"spectrum", path, "--count", "0"}, "--count: '0' is not a whole number of 1 or more"},
      {{"spectrum", path, "--count", "1"}, "--count: one sample has no spectrum"},
      {{"spectrum", path, "--start", "96", "--count", "4001"},
       "--count: 4001 samples are not in the recording, which has 4000 from sample 96 on"},
      {{"spectrum", path, "--svg", folder / "none/p.svg"},
       "--svg: '" + (folder / "none/p.svg") + "' cannot be written: there is no folder '" +
           (folder / "none") + "'"},
      {{"spectrum", path, "--csv", folder / ""}, "--csv: '" + (folder / "") + "' is a folder"},
      {{"spectrum", path, "--svg", path}, "--svg: '" + path + "' is the recording itself"},
      {{"spectrum", path, "--svg", folder / "x", "--csv", folder / "./x"},
       "--csv: '" + (folder / "./x") + "' is the file of --svg"},
      {{"spectrum", path, "--svg", ""}, "--svg: '' is not the name of a file"},
  };
  for (const auto &[arguments, message] : cases) ExpectFailure(2, message, arguments);
  for (const std::vector<std::string> &arguments : {std::vector<std::string>{"spectrum", path, "--bogus"},
                                                    {"spectrum", path, "--points"},
                                                    {"info", path, "more"}}) {
    const Outcome outcome = RunTool(arguments);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"test.iqf"});
}

// A new file and one that is there, seen from another folder and through a link to its own.
TEST_F(Tool, Outputs_OneFileSpeltTwice_ExitWithTwoAndKeepIt) {
  const std::string path = Save(Recording(4096, Tone(-10.0, 0.1)));
  const std::string old = Save("old", "old.txt"), link = folder / "link";
  std::filesystem::create_directory_symlink(folder / "", link);
  const auto enter = [&] { ASSERT_EQ(chdir((folder / "").c_str()), 0); };
  for (const std::string name : {"old.txt", "new.txt"}) {
    const std::string whole = folder / name;
    for (const std::string &other : {whole, "./link/" + name, link + "/" + name}) {
      ExpectFailure(2, "--csv: '" + other + "' is the file of --svg",
                    {"spectrum", path, "--svg", name, "--csv", other}, enter);
      ExpectFailure(2, "--csv: '" + name + "' is the file of --svg",
                    {"spectrum", path, "--svg", other, "--csv", name}, enter);
    }
  }
  EXPECT_EQ(Contents(old), "old");
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"link", "old.txt", "test.iqf"}));
}

TEST_F(Tool, Window_Names_AreTakenInAnyCaseAndWithoutHyphens) {
  const std::string path = Save(Recording(4096, Tone(-10.0, 0.1)));
  EXPECT_EQ(Measure({path, "--window", "BlackmanHarris"})["window"], "blackman-harris");
  EXPECT_EQ(Measure({path, "--window", "FLATTOP"})["window"], "flat-top");
  EXPECT_EQ(Measure({path, "--unit", "dbv"})["unit"], "dBV");
}

// Bad recordings

TEST_F(Tool, Recording_ThatIsNone_ExitsWithOneAndSaysWhy) {
  const std::string missing = folder / "missing.iqf";
  const std::string link = folder / "loop";
  std::filesystem::create_symlink(link, link);
  const std::string pipe = folder / "pipe";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::string many;
  for (int i = 0; i < 51; ++i) many += "a=b ";
  for (const char *command : {"info", "spectrum"}) {
    const auto fails = [&](const std::string &path, const std::string &reason) {
      ExpectFailure(1, "recording '" + path + "' " + reason, {command, path});
    };
    fails(missing, "cannot be opened: No such file or directory");
    fails(link, "cannot be opened: Too many levels of symbolic links");
    fails(pipe, "is not a regular file");
    fails(folder / "", "is a folder");
    fails(Save(""), "is empty");
    const std::string foreign = "is neither an IQF nor an XIQ recording, by its first bytes";
    // The library ends the program at a first character above '9'.
    for (const std::string &bytes :
         {std::string("A"), std::string(":10"), std::string("RIFFxxxxWAVE"), std::string("0"),
          std::string("\x89PNG\r\n\x1A\n"), std::string(100, '\0'), std::string("\xFF\xD8\xFF\xE0"),
          std::string("{\"a\": 1}"), std::string("<?xml version=\"1.0\"?>\n<DataFile offset=\"0100\">")})
      fails(Save(bytes), foreign);
    fails(Save("3a00"), "is not an IQF recording: it does not start with the length of a header");
    fails(Save("3"), "is cut short within the length of its header");
    fails(Save("9999999999"), "is cut short within its header: 0 of 999 999 999 bytes");
    fails(Save("3243FFT"), "is cut short within its header: 3 of 243 bytes");
    fails(Save(Header("FFTPoints=\x1B[2J")), "is not an IQF recording: its header is not text");
    fails(Save("12\x01\x02"), "is not an IQF recording: its header is not text");
    fails(Save(Header(many)), "is not an IQF recording: its header has more than 50 entries");
  }
  if (geteuid() != 0) {
    const std::string path = Save("10", "closed.iqf");
    chmod(path.c_str(), 0);
    ExpectFailure(1, "recording '" + path + "' cannot be opened: Permission denied", {"info", path});
  }
}

TEST_F(Tool, Recording_WithoutASignal_ExitsWithOneAndSaysWhy) {
  const auto fails = [&](const std::string &text, const std::string &reason) {
    const std::string path = Save(Header(text) + std::string(3 * 4120, '\1'));
    ExpectFailure(1, "recording '" + path + "' " + reason,
                  {"spectrum", path, "--svg", folder / "p.svg", "--csv", folder / "p.csv"});
  };
  fails("", "is not an IQF recording: its header has no entry FFTPoints");
  fails("Hello=World", "is not an IQF recording: its header has no entry FFTPoints");
  for (const char *points : {"0", "-1", "1025", "2147483647", "99999999999", "many"})
    fails(std::string("ValidFrames=2 FrameLength=1 FFTPoints=") + points,
          std::string("has a header with FFTPoints of ") + points + ", where 1 to 1024 fit a frame");
  fails("FFTPoints=8 FrameLength=1", "has no frames: ValidFrames is below 1");
  fails("FFTPoints=8 FrameLength=1 ValidFrames=-3", "has no frames: ValidFrames is below 1");
  for (const char *length : {"", "FrameLength=0", "FrameLength=-1", "FrameLength=nan", "FrameLength=1e-300",
                             "FrameLength=1e999", "FrameLength=x"})
    fails(std::string("FFTPoints=8 ValidFrames=2 ") + length,
          "has no sampling rate: FrameLength is missing, zero or out of range");
  fails("FFTPoints=8 ValidFrames=2 FrameLength=1 CenterFrequency=1e999",
        "has a CenterFrequency out of range");
  for (const char *level : {"MaxInputLevel=1e9", "GainOffset=-1e9", "LevelOffset=nan", "MaxInputLevel=4000"})
    fails(std::string("FFTPoints=8 ValidFrames=2 FrameLength=1 ") + level,
          "has no usable level: the sum of MaxInputLevel, LevelOffset and GainOffset is out of range");
  fails("FFTPoints=8 ValidFrames=2 FrameLength=1 IOffset=1e300",
        "has no finite samples: its levels, IOffset or QOffset are out of range");
  fails("FFTPoints=8 ValidFrames=2147483647 FrameLength=1",
        "is cut short: its header promises 2 147 483 647 frames, the file holds 3 (--count 24 reads them)");
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"test.iqf"});
}

TEST_F(Tool, Recording_CutAnywhere_IsRefusedOrWhole) {
  const std::string whole = Recording(3 * 64, Tone(-10.0, 0.1), 64);
  const std::size_t frames = whole.size() - 4120;
  const json expected = Measure({Save(whole), "--points", "64"});
  for (std::size_t length = 0; length < whole.size(); length += length < 400 ? 13 : 517) {
    const std::string path = Save(whole.substr(0, length));
    if (length >= frames) { // what is missing is the flatness record alone
      EXPECT_EQ(Measure({path, "--points", "64"})["peaks"], expected["peaks"]);
      continue;
    }
    const Outcome outcome = RunTool({"spectrum", path, "--svg", folder / "p.svg"});
    EXPECT_EQ(outcome.status, 1) << length;
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(std::count(outcome.error.begin(), outcome.error.end(), '\n'), 1) << outcome.error;
    EXPECT_EQ(RunTool({"info", path}).status, outcome.error.find("header:") != std::string::npos ||
                                                      outcome.error.find("empty") != std::string::npos ||
                                                      outcome.error.find("length of its") != std::string::npos
                                                  ? 1
                                                  : 0);
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"test.iqf"});
  const std::string path = Save(whole.substr(0, frames - 4120));
  EXPECT_EQ(Measure({path, "--count", "128", "--points", "64"})["blocks"], 2);
}

// Keeps the process from reading at places from `place` on: the system reports an error of the device.
bool BreakFiles(unsigned place) {
  sock_filter code[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_pread64, 0, 3),
                        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[3])), // the low half
                        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, place, 0, 1),
                        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EIO),
                        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  const sock_fprog program{static_cast<unsigned short>(std::size(code)), code};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

TEST_F(Tool, Recording_ThatTheSystemFailsToRead_ExitsWithOne) {
  const pid_t child = fork();
  if (child == 0) _exit(BreakFiles(0) ? 0 : 1);
  int status = 0;
  waitpid(child, &status, 0);
  if (status != 0) GTEST_SKIP() << "the system lets no process filter its calls";

  constexpr int kFrames = 300, kSound = 264; // whole pieces that are read at once
  std::string xiq = xiq::Header(xiq::DataSet(0.0, 0.0) + xiq::Acquisition(300 * 1024, "1e-6") +
                                "  </DataSetsCollection>\n" + xiq::SetupLines("0", "0"));
  xiq.resize(xiq.size() + 8 * 300 * 1024, '\1');
  const std::string iqf = Recording(kFrames * 1024, Tone(-10.0, 0.1));
  const auto place = static_cast<unsigned>(iqf.size() - 4120 * (kFrames + 1 - kSound));
  const auto breakFiles = [&] { BreakFiles(place); };
  const std::string out = folder / "out.cf32";
  for (const std::string &path : {Save(iqf, "a.iqf"), Save(xiq, "a.xiq")}) {
    const std::string message = "recording '" + path + "' cannot be read: Input/output error";
    ExpectFailure(1, message, {"spectrum", path}, breakFiles);
    ExpectFailure(1, message, {"convert", path, out}, breakFiles);
    ExpectFailure(1, message, {"resample", path, "--rate", "1e6", "--out", out}, breakFiles);
  }
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"a.iqf", "a.xiq"}));
  // What can be read is.
  const std::vector<std::string> sound = {"spectrum", folder / "a.iqf", "--count",
                                          std::to_string(kSound * 1024)};
  const Outcome outcome = RunTool(sound, breakFiles);
  EXPECT_EQ(outcome.status, 0) << outcome.error;
  EXPECT_EQ(outcome.out, RunTool(sound).out);
}

// Files

TEST_F(Tool, Files_ThatCannotBeWrittenWhole_AreNotWritten) {
  const std::string path = Save(Recording(65536, Tone(-10.0, 0.1)));
  std::ofstream(folder / "p.csv") << "old";
  // The table is longer than a file may be, the picture is not: neither may take its place.
  ExpectFailure(1, "--csv: '" + (folder / "p.csv") + "' could not be written: File too large",
                {"spectrum", path, "--points", "65536", "--svg", folder / "p.svg", "--csv", folder / "p.csv"},
                LimitFiles);
  EXPECT_EQ(Contents(folder / "p.csv"), "old");
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"p.csv", "test.iqf"}));
}

TEST_F(Tool, Files_ThatExist_AreReplacedThroughLinksAndKeepTheirMode) {
  const std::string path = Save(Recording(4096, Tone(-10.0, 0.1)));
  std::ofstream(folder / "real.csv") << "old";
  chmod((folder / "real.csv").c_str(), 0600);
  std::filesystem::create_symlink(folder / "real.csv", folder / "link.csv");
  const auto mask = [] { umask(022); };
  EXPECT_EQ(
      RunTool({"spectrum", path, "--csv", folder / "link.csv", "--svg", folder / "new.svg"}, mask).status, 0);
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.csv"));
  EXPECT_EQ(Contents(folder / "real.csv").substr(0, 13), "frequency_Hz,");
  struct stat status {};
  stat((folder / "real.csv").c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  stat((folder / "new.svg").c_str(), &status);
  EXPECT_EQ(status.st_mode & 0777U, 0644U);
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"link.csv", "new.svg", "real.csv", "test.iqf"}));
}

TEST_F(Tool, Files_ThatAreDevices_AreWrittenDirectly) {
  const std::string path = Save(Recording(4096, Tone(-10.0, 0.1)));
  EXPECT_EQ(RunTool({"spectrum", path, "--csv", "/dev/null"}).status, 0);
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  ExpectFailure(1, "--csv: '/dev/full' could not be written: No space left on device",
                {"spectrum", path, "--csv", "/dev/full"});
}

// Data that go to the standard output are not mixed with a report.
TEST_F(Tool, Files_ThatAreTheOutput_AreWrittenThereAndTheReportBesideThem) {
  const std::string path = Save(Recording(4096, Tone(-10.0, 0.1)));
  const std::vector<std::string> plain = {"spectrum", path, "--csv", folder / "plain.csv"};
  const Outcome report = RunTool(plain);
  const std::string table = Contents(folder / "plain.csv");
  std::filesystem::remove(folder / "plain.csv");
  for (const char *name : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
    const std::vector<std::string> arguments = {"spectrum", path, "--csv", name};
    const Outcome piped = RunTool(arguments);
    EXPECT_EQ(piped.status, 0);
    EXPECT_EQ(piped.out, table);
    EXPECT_EQ(piped.error, report.out);
    // Behind what is there, and in the same file.
    const std::string log = Save("before\n", "log");
    const Outcome redirected = RunTool(arguments, [&] {
      if (std::freopen(log.c_str(), "a", stdout) == nullptr) _exit(99);
    });
    EXPECT_EQ(redirected.status, 0);
    EXPECT_EQ(redirected.error, report.out);
    EXPECT_EQ(Contents(log), "before\n" + table);
  }
  // By its own name too, and as a recording.
  const Outcome named = RunTool({"spectrum", path, "--csv", folder / "log", "--json"}, [&] {
    if (std::freopen((folder / "log").c_str(), "w", stdout) == nullptr) _exit(99);
  });
  EXPECT_EQ(Contents(folder / "log"), table);
  EXPECT_EQ(json::parse(named.error)["points"], 4096);
  const Outcome converted = RunTool({"convert", path, "/dev/stdout", "--to", "cs16", "--json"});
  EXPECT_EQ(converted.status, 0);
  EXPECT_EQ(converted.out.size(), 4U * 4096U);
  EXPECT_EQ(json::parse(converted.error)["samples"], 4096);
  ExpectFailure(2, "--csv: '/dev/stdout' is the file of --svg",
                {"spectrum", path, "--svg", "/dev/fd/1", "--csv", "/dev/stdout"});
  // A reader that goes away, and a file that gets too long.
  ExpectFailure(1, "OUT: '/dev/stdout' could not be written: Broken pipe",
                {"convert", path, "/dev/stdout", "--to", "cs16"}, [] {
                  int sides[2];
                  if (pipe(sides) != 0 || dup2(sides[1], STDOUT_FILENO) < 0) _exit(99);
                  close(sides[0]);
                  std::signal(SIGPIPE, SIG_IGN);
                });
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"log", "test.iqf"}));
}

TEST_F(Tool, Output_ThatCannotBeWritten_ExitsWithOne) {
  const std::string path = Save(Recording(4096, Tone(-10.0, 0.1)));
  for (const std::vector<std::string> &arguments :
       {std::vector<std::string>{"spectrum", path}, {"spectrum", path, "--json"}, {"info", path}}) {
    const Outcome outcome = RunTool(arguments, [] {
      if (std::freopen("/dev/full", "w", stdout) == nullptr) _exit(99);
    });
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "qorn: the output could not be written\n");
  }
}

// Examples

#ifdef QORN_EXAMPLE_SPECTRUM
// Frames that are no whole number of the blocks.
TEST_F(Tool, ExampleSpectrum_AnyLength_ReadsTheLevelOfATone) {
  for (const int samples : {1100, 2000, 3000}) {
    const std::string path = Save(Recording(samples, Tone(-10.0, 0.125), 100));
    const Outcome outcome = RunTool({path}, {}, false, QORN_EXAMPLE_SPECTRUM);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_NE(outcome.out.find("\n100125000 -10.00\n"), std::string::npos) << samples;
  }
}
#endif

// Paths

TEST_F(Tool, Recording_AtALongPath_IsReadOrRefusedWithTheReason) {
  std::string place = folder / "";
  for (int depth = 0; place.size() < 1100; ++depth) {
    place += std::string(200, static_cast<char>('a' + depth)) + "/";
    ASSERT_TRUE(std::filesystem::create_directory(place));
  }
  const std::string sound = Recording(4096, Tone(-10.0, 0.1));
  const std::string iqf = place + "a.iqf", raw = place + "a.cs16", out = place + "b.cs16";
  std::ofstream(iqf, std::ios::binary) << sound;
  ExpectFailure(1,
                "recording '" + iqf + "' has a path of " + std::to_string(iqf.size() / 1000) + " " +
                    std::to_string(iqf.size()).substr(1) +
                    " characters; those of IQF recordings have 999 or fewer",
                {"spectrum", iqf});
  // From nearer, and of another kind.
  const auto enter = [&] { ASSERT_EQ(chdir(place.c_str()), 0); };
  EXPECT_EQ(RunTool({"convert", "a.iqf", raw}, enter).status, 0);
  EXPECT_EQ(RunTool({"convert", raw, place + "a.xiq", "--rate", "1e6"}).status, 0);
  EXPECT_EQ(RunTool({"convert", place + "a.xiq", out}).status, 0);
  EXPECT_EQ(std::filesystem::file_size(out), 4U * 4096U);
  // The longest that can be opened.
  std::string last = place.substr(0, place.size() - 201 * 2);
  const std::string name(999 - last.size() - 1, 'n');
  ASSERT_LT(name.size(), 256U);
  std::ofstream(last + "/" + name, std::ios::binary) << sound;
  EXPECT_EQ(Measure({last + "/" + name})["samples"], 4096);
  std::filesystem::rename(last + "/" + name, last + "/" + name + "n");
  EXPECT_EQ(RunTool({"spectrum", last + "/" + name + "n"}).status, 1);
}

TEST_F(Tool, Files_WithTheLongestName_AreWritten) {
  const std::string path = Save(Recording(4096, Tone(-10.0, 0.1)));
  const std::string name = std::string(251, 'n') + ".csv"; // as much as a folder takes
  for (int run = 0; run < 2; ++run) {
    const Outcome outcome = RunTool({"spectrum", path, "--csv", folder / name});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(Contents(folder / name).substr(0, 13), "frequency_Hz,");
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{name, "test.iqf"}));
  }
}

// Long recordings

TEST_F(Tool, Spectrum_TenGibibytes_NeedsLittleMemoryAndShowsProgress) {
  if (QORN::test::kSanitizesAddresses) GTEST_SKIP() << "the sanitizer's own memory would be measured";
  // Silence but for the first frame: a file with holes.
  constexpr std::int64_t kFrames = (std::int64_t{10} << 30) / 4120;
  const std::string header = HeaderText(static_cast<int>(kFrames), 1024);
  const Signal tone = Tone(0.0, 0.25);
  const std::string path = Save(header + Frame(Mark::kCartesian, [&](int k) {
                                  const std::complex<double> x = 0.99 * tone(k);
                                  return Pair{static_cast<int>(x.imag()), static_cast<int>(x.real())};
                                }));
  std::filesystem::resize_file(path, header.size() + static_cast<std::uintmax_t>(kFrames + 1) * 4120);
  const Outcome outcome = RunTool({"spectrum", path, "--points", "1024", "--json"}, {}, HasTerminals());
  ASSERT_EQ(outcome.status, 0) << outcome.error;
  EXPECT_LT(outcome.residentKilobytes, 200 * 1024);
  const json report = json::parse(outcome.out);
  EXPECT_EQ(report["samples"].get<std::int64_t>(), kFrames * 1024);
  EXPECT_NEAR(report["total_power"].get<double>(), 20.0 * std::log10(0.99) - 10.0 * std::log10(kFrames),
              0.01);
  if (!HasTerminals()) GTEST_SKIP() << "there is no terminal to show progress on";
  EXPECT_NE(outcome.error.find("\r["), std::string::npos);
  EXPECT_NE(outcome.error.find(" % "), std::string::npos);
  EXPECT_EQ(outcome.error.substr(outcome.error.size() - 4), "\r\x1B[K"); // it takes itself away
}

} // namespace
