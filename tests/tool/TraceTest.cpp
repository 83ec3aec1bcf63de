// What qorn spectrum does to its traces: detectors, which reduce them, and corrections of their levels. What
// is expected is computed from the traces as they are without.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "ToolFixture.h"

namespace {

using nlohmann::json;
using QORN::test::Contents;
using QORN::test::kFullScale;
using QORN::test::kRate;
using QORN::test::Outcome;
using QORN::test::Recording;
using QORN::test::RunTool;
using QORN::test::Tone;
using QORN::test::Tool;

using Arguments = std::vector<std::string>;

struct Row {
  double frequency, mean, hold;
};

Arguments operator+(Arguments a, const Arguments &b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

class Trace : public Tool {
protected:
  // Two tones, and noise that makes each bin another.
  std::string Noisy(int samples = 8192) const {
    std::mt19937 engine(3);
    std::normal_distribution<double> normal(0.0, kFullScale * 1e-3);
    const auto first = Tone(-10.0, 0.125), second = Tone(-30.0, -0.3);
    return Save(Recording(samples, [&](int i) {
      return first(i) + second(i) + std::complex<double>{normal(engine), normal(engine)};
    }));
  }

  std::vector<Row> Table(const Arguments &arguments) const {
    const std::string path = folder / "table.csv";
    const Outcome outcome = RunTool(Arguments{"spectrum"} + arguments + Arguments{"--csv", path});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.error, "");
    std::istringstream lines(Contents(path));
    std::string line;
    std::getline(lines, line);
    std::vector<Row> rows;
    while (std::getline(lines, line)) {
      std::replace(line.begin(), line.end(), ',', ' ');
      std::istringstream words(line);
      Row row{};
      EXPECT_TRUE(words >> row.frequency >> row.mean >> row.hold) << line;
      rows.push_back(row);
    }
    return rows;
  }

  std::string Corrections(const std::string &rows) const { return Save(rows, "table.txt"); }
};

// Detectors.

using Block = std::vector<double>; // amplitudes

double Mean(const Block &x, const std::function<double(double)> &of) {
  double sum = 0.0;
  for (const double value : x) sum += of(value);
  return sum / static_cast<double>(x.size());
}

struct DetectorRow {
  const char *name;
  std::function<std::vector<double>(const Block &)> points;
  double place(double first, double last, std::size_t point) const {
    if (std::string(name) == "sample") return first;
    if (std::string(name) != "peak-and-min") return 0.5 * (first + last);
    // The middle of the lower and of the upper half of the block, which reaches half a bin further.
    const double quarter = 0.25 * (last - first + kRate / 512);
    return 0.5 * (first + last) + (point == 0 ? -quarter : quarter);
  }
};

std::vector<DetectorRow> Detectors() {
  const auto peak = [](const Block &x) { return *std::max_element(x.begin(), x.end()); };
  const auto min = [](const Block &x) { return *std::min_element(x.begin(), x.end()); };
  return {
      {"peak", [=](const Block &x) { return Block{peak(x)}; }},
      {"min", [=](const Block &x) { return Block{min(x)}; }},
      {"peak-and-min",
       [=](const Block &x) {
         return Block{peak(x), min(x)};
       }},
      {"average", [](const Block &x) { return Block{Mean(x, [](double v) { return v; })}; }},
      {"rms", [](const Block &x) { return Block{std::sqrt(Mean(x, [](double v) { return v * v; }))}; }},
      {"log-average",
       [](const Block &x) { return Block{std::exp(Mean(x, [](double v) { return std::log(v); }))}; }},
      {"sample", [](const Block &x) { return Block{x[0]}; }},
  };
}

TEST_F(Trace, Detector_EachType_ReducesBlocksOfAmplitudes) {
  const std::string path = Noisy();
  const Arguments plain = {path, "--points", "512", "--unit", "V"};
  const std::vector<Row> whole = Table(plain);
  ASSERT_EQ(whole.size(), 512U);
  for (const DetectorRow &detector : Detectors()) {
    for (const std::size_t ratio : {1U, 2U, 7U, 64U, 512U}) {
      const std::vector<Row> rows =
          Table(plain + Arguments{"--detector", detector.name, "--ratio", std::to_string(ratio)});
      std::size_t next = 0;
      for (std::size_t b = 0; b < 512 / ratio; ++b) {
        Block mean, hold;
        for (std::size_t k = b * ratio; k < (b + 1) * ratio; ++k) {
          mean.push_back(whole[k].mean);
          hold.push_back(whole[k].hold);
        }
        const Block means = detector.points(mean), holds = detector.points(hold);
        for (std::size_t p = 0; p < means.size(); ++p, ++next) {
          ASSERT_LT(next, rows.size()) << detector.name << ' ' << ratio;
          EXPECT_NEAR(rows[next].frequency,
                      detector.place(whole[b * ratio].frequency, whole[(b + 1) * ratio - 1].frequency, p),
                      1e-3)
              << detector.name << ' ' << ratio << ' ' << b;
          EXPECT_NEAR(rows[next].mean / means[p], 1.0, 1e-5) << detector.name << ' ' << ratio << ' ' << b;
          EXPECT_NEAR(rows[next].hold / holds[p], 1.0, 1e-5) << detector.name << ' ' << ratio << ' ' << b;
        }
      }
      EXPECT_EQ(next, rows.size()) << detector.name << ' ' << ratio;
    }
  }
}

TEST_F(Trace, Detector_Figures_StayThoseOfTheWhole) {
  const std::string path = Noisy();
  const Arguments plain = {path, "--points", "512"};
  json whole = Measure(plain);
  EXPECT_FALSE(whole.contains("detector"));
  json reduced = Measure(plain + Arguments{"--detector", "RMS", "--ratio", "5"});
  EXPECT_EQ(reduced["detector"], "rms");
  EXPECT_EQ(reduced["ratio"], 5);
  EXPECT_EQ(reduced["trace_points"], 102);
  EXPECT_DOUBLE_EQ(reduced["trace_spacing_hz"].get<double>(), 5.0 * kRate / 512);
  for (const char *more : {"detector", "ratio", "trace_points", "trace_spacing_hz"}) reduced.erase(more);
  EXPECT_EQ(reduced, whole);
  json pairs = Measure(plain + Arguments{"--detector", "PeakAndMin", "--ratio", "5"});
  EXPECT_EQ(pairs["detector"], "peak-and-min");
  EXPECT_EQ(pairs["trace_points"], 204);
  EXPECT_DOUBLE_EQ(pairs["trace_spacing_hz"].get<double>(), 2.5 * kRate / 512);
}

TEST_F(Trace, Detector_Text_TellsTheTracePoints) {
  const Outcome outcome =
      RunTool({"spectrum", Noisy(), "--points", "500", "--detector", "peak", "--ratio", "10"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find("Trace points"), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("50, 20 kHz apart, peak of 10\n"), std::string::npos) << outcome.out;
}

TEST_F(Trace, Detector_Picture_IsOfTheReducedTrace) {
  const std::string path = Noisy(), svg = folder / "p.svg";
  const Arguments plain = {"spectrum", path, "--points", "512", "--svg", svg};
  ASSERT_EQ(RunTool(plain).status, 0);
  const std::string whole = Contents(svg);
  for (const DetectorRow &detector : Detectors()) {
    const Arguments reduced = {"--detector", detector.name, "--ratio", "8"};
    ASSERT_EQ(RunTool(plain + reduced).status, 0);
    const std::string picture = Contents(svg);
    ExpectWellFormed(picture);
    EXPECT_LT(picture.size(), whole.size());
    EXPECT_NE(picture.find(std::string(" · ") + detector.name + " of 8<"), std::string::npos);
    const auto peaks = [](const std::string &text) { return text.substr(text.find("Peak frequency")); };
    EXPECT_EQ(peaks(picture), peaks(whole));
  }
}

TEST_F(Trace, Detector_Silence_HasNoPower) {
  const std::string path = Save(Recording(2048, [](int) { return 0.0; }));
  for (const DetectorRow &detector : Detectors()) {
    const std::vector<Row> rows = Table({path, "--points", "64", "--unit", "V", "--detector", detector.name,
                                         "--ratio", "4", "--svg", folder / "p.svg"});
    EXPECT_EQ(rows.size(), std::string(detector.name) == "peak-and-min" ? 32U : 16U);
    for (const Row &row : rows) EXPECT_EQ(row.mean, 0.0);
    ExpectWellFormed(Contents(folder / "p.svg"));
  }
}

TEST_F(Trace, Detector_WrongArguments_ExitWithTwo) {
  const std::string path = Noisy(4096);
  const std::string whole = " is not a whole number from 1 to 16777216";
  const std::vector<std::pair<Arguments, std::string>> cases = {
      {{"--detector", "quasi-peak", "--ratio", "2"},
       "--detector: unknown detector 'quasi-peak'; known are peak, min, peak-and-min, average, rms, "
       "log-average, sample"},
      {{"--detector", "", "--ratio", "2"},
       "--detector: unknown detector ''; known are peak, min, peak-and-min, average, rms, log-average, "
       "sample"},
      {{"--detector", "peak"}, "--ratio is required for --detector"},
      {{"--ratio", "2"}, "--detector is required for --ratio"},
      {{"--detector", "peak", "--ratio", "0"}, "--ratio: '0'" + whole},
      {{"--detector", "peak", "--ratio", "-2"}, "--ratio: '-2'" + whole},
      {{"--detector", "peak", "--ratio", "2.5"}, "--ratio: '2.5'" + whole},
      {{"--detector", "peak", "--ratio", "16777217"}, "--ratio: '16777217'" + whole},
      {{"--detector", "peak", "--ratio", "513", "--points", "512"},
       "--ratio: a trace of 512 points has no block of 513"},
  };
  for (const auto &[arguments, message] : cases)
    ExpectFailure(2, message, Arguments{"spectrum", path} + arguments);
}

// Corrections.

// The corrections that a run with a table makes, by bins of 1 kHz from 99.5 MHz on.
class CorrectedTrace : public Trace {
protected:
  void ExpectAdded(const std::string &table, const Arguments &more,
                   const std::function<double(double)> &decibelsAtOffset) {
    const std::string path = Noisy();
    const Arguments plain = {path, "--points", "1000"};
    const std::vector<Row> before = Table(plain);
    const std::vector<Row> after = Table(plain + Arguments{"--correction", Corrections(table)} + more);
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t k = 0; k < after.size(); ++k) {
      ASSERT_EQ(after[k].frequency, before[k].frequency);
      const double added = decibelsAtOffset((after[k].frequency - 100e6) / 1e3);
      ASSERT_NEAR(after[k].mean - before[k].mean, added, 2e-4) << k; // four decimals each
      ASSERT_NEAR(after[k].hold - before[k].hold, added, 2e-4) << k;
    }
  }
};

TEST_F(CorrectedTrace, Linear_GoesOnBeyondTheTable) {
  const char *table = "# antenna factor\n"
                      "\n"
                      "99.9e6 -3\n"
                      "100.0e6,\t1.0 # at the centre\r\n"
                      "   +100.3e6 ; 2.5\n";
  const auto expected = [](double kHz) { return 1.0 + (kHz < 0.0 ? 4.0 / 100 * kHz : 1.5 / 300 * kHz); };
  ExpectAdded(table, {}, expected);
  ExpectAdded(table, {"--interpolation", "linear"}, expected);
  ExpectAdded(table, {"--interpolation", "LINEAR"}, expected);
}

TEST_F(CorrectedTrace, Nearest_KeepsTheEnds) {
  ExpectAdded("99.9e6 -3\n100.0e6 1\n100.3e6 2.5", {"--interpolation", "nearest"}, [](double kHz) {
    // A frequency between two rows takes the upper one, that between the last two the lower one.
    return kHz < -50.0 ? -3.0 : kHz <= 150.0 ? 1.0 : 2.5;
  });
}

// Three rows at -1, 0 and 1 of 400 kHz with 0, 1 and 0 dB. The natural spline has the second derivative -3 in
// the middle; the shape-preserving cubic has the slopes 2, 0 and -2.
TEST_F(CorrectedTrace, Spline_IsTheNaturalOne) {
  ExpectAdded("99.6e6 0\n100e6 1\n100.4e6 0\n", {"--interpolation", "spline"}, [](double kHz) {
    const double t = std::fabs(kHz) / 400.0; // the curve is even
    return 1.0 - 1.5 * t * t + 0.5 * t * t * t;
  });
}

TEST_F(CorrectedTrace, Hermite_KeepsTheShape) {
  ExpectAdded("99.6e6 0\n100e6 1\n100.4e6 0\n", {"--interpolation", "hermite"}, [](double kHz) {
    const double t = std::fabs(kHz) / 400.0;
    return 1.0 - t * t;
  });
}

TEST_F(CorrectedTrace, EveryKind_ThroughALine_IsTheLine) {
  for (const char *kind : {"linear", "spline", "hermite"})
    ExpectAdded("99.8e6 -2\n99.9e6 -1\n100.2e6 2\n100.4e6 4\n", {"--interpolation", kind},
                [](double kHz) { return kHz / 100.0; });
}

TEST_F(CorrectedTrace, TwoRows_ServeEveryKind) {
  for (const char *kind : {"linear", "spline", "hermite"})
    ExpectAdded("99.9e6 -1\n100.1e6 1\n", {"--interpolation", kind}, [](double kHz) { return kHz / 100.0; });
  ExpectAdded("99.9e6 -1\n100.1e6 1\n", {"--interpolation", "nearest"},
              [](double kHz) { return kHz <= 0.0 ? -1.0 : 1.0; });
}

TEST_F(CorrectedTrace, Figures_AreOfTheCorrectedTrace) {
  const std::string path = Noisy(), table = Corrections("99e6 20\n101e6 20\n");
  const Arguments plain = {path, "--points", "1000"};
  const json before = Measure(plain);
  const json after = Measure(plain + Arguments{"--correction", table, "--interpolation", "hermite"});
  EXPECT_EQ(after["correction"], table);
  EXPECT_EQ(after["interpolation"], "hermite");
  EXPECT_FALSE(before.contains("correction"));
  EXPECT_NEAR(after["noise_floor"].get<double>(), before["noise_floor"].get<double>() + 20.0, 1e-6);
  // The power of the samples of whole blocks, weighted by the window or not.
  EXPECT_NEAR(after["total_power"].get<double>(), before["total_power"].get<double>() + 20.0, 0.05);
  ASSERT_EQ(after["peaks"].size(), before["peaks"].size());
  for (std::size_t i = 0; i < after["peaks"].size(); ++i) {
    EXPECT_NEAR(after["peaks"][i]["level"].get<double>(), before["peaks"][i]["level"].get<double>() + 20.0,
                1e-6);
    EXPECT_NEAR(after["peaks"][i]["frequency_hz"].get<double>(),
                before["peaks"][i]["frequency_hz"].get<double>(), 1e-3);
  }
}

TEST_F(CorrectedTrace, TableAsOutput_IsRefusedAndKept) {
  const std::string rows = "99e6 1\n101e6 2\n", path = Noisy(), table = Corrections(rows);
  for (const char *option : {"--csv", "--svg"}) {
    const Outcome outcome = RunTool({"spectrum", path, "--correction", table, option, table});
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.error,
              "qorn: " + std::string(option) + ": '" + table + "' is the file of --correction\n");
    EXPECT_EQ(Contents(table), rows);
  }
}

TEST_F(CorrectedTrace, StrongestPeak_IsThatOfTheCorrectedTrace) {
  // The tone at -300 kHz has 20 dB less than that at 125 kHz, and gets 40 dB more.
  const json report =
      Measure({Noisy(), "--points", "1000", "--correction", Corrections("99.7e6 40\n100.125e6 0\n")});
  ASSERT_GE(report["peaks"].size(), 2U);
  EXPECT_NEAR(report["peaks"][0]["offset_hz"].get<double>(), -300e3, 250.0);
  EXPECT_NEAR(report["peaks"][0]["level"].get<double>(), 10.0, 0.05);
}

TEST_F(CorrectedTrace, TextAndPicture_TellOfIt) {
  const std::string path = Noisy(), table = Corrections("99.5e6 1\n100.5e6 2\n"), svg = folder / "p.svg";
  const Outcome outcome = RunTool({"spectrum", path, "--points", "1000", "--correction", table, "--detector",
                                   "rms", "--ratio", "10", "--svg", svg});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find(table + ", linear, 99.5 MHz to 100.5 MHz\n"), std::string::npos) << outcome.out;
  ExpectWellFormed(Contents(svg));
  EXPECT_NE(Contents(svg).find(" · rms of 10 · corrected<"), std::string::npos);
}

TEST_F(CorrectedTrace, TiltedNoise_HasNoMorePeaks) {
  const std::string path = Noisy();
  const Arguments plain = {path, "--points", "1000"};
  const json report = Measure(plain + Arguments{"--correction", Corrections("99.5e6 0\n100.5e6 60\n")});
  EXPECT_EQ(report["peaks"].size(), Measure(plain)["peaks"].size());
}

// The correction comes first, bin by bin.
TEST_F(CorrectedTrace, Detector_ReducesTheCorrectedTrace) {
  const std::string path = Noisy(), table = Corrections("99.5e6 0\n100.5e6 50\n");
  const Arguments corrected = {path, "--points", "1000", "--correction", table};
  const std::vector<Row> whole = Table(corrected);
  const std::vector<Row> rows = Table(corrected + Arguments{"--detector", "peak", "--ratio", "100"});
  ASSERT_EQ(rows.size(), 10U);
  for (std::size_t b = 0; b < 10; ++b) {
    double peak = -1e3;
    for (std::size_t k = 100 * b; k < 100 * b + 100; ++k) peak = std::max(peak, whole[k].mean);
    EXPECT_NEAR(rows[b].mean, peak, 2e-4);
  }
}

TEST_F(CorrectedTrace, BadTable_ExitsWithTwoAndNamesTheLine) {
  const std::string path = Noisy(4096);
  const auto fails = [&](const std::string &rows, const std::string &message) {
    ExpectFailure(2, "--correction: " + message, {"spectrum", path, "--correction", Corrections(rows)});
  };
  const std::string file = std::string("'").append(folder / "table.txt").append("'");
  fails("", file + " has fewer than two rows");
  fails("# nothing\n\n", file + " has fewer than two rows");
  fails("1e6 3\n", file + " has fewer than two rows");
  fails("1e6 3\nx 4\n", "line 2: 'x' is not a finite number");
  fails("1e6 3\n2e6 nan\n", "line 2: 'nan' is not a finite number");
  fails("1e6 3\n2e6 inf\n", "line 2: 'inf' is not a finite number");
  fails("1e6 3\n2e6 4dB\n", "line 2: '4dB' is not a finite number");
  fails("1e6 3\n2e6 1e999\n", "line 2: '1e999' is not a finite number");
  fails("1e6 3\n2e6 0x10\n", "line 2: '0x10' is not a finite number");
  fails("1e6 3\n# note\n\n2e6\n", "line 4: a row is a frequency in Hz and a correction in dB");
  fails("1e6 3\n2e6 4 5\n", "line 2: a row is a frequency in Hz and a correction in dB");
  fails("1e6 3\n1e6 4\n", "line 2: the frequency 1000000 Hz is that of the row before");
  fails("1e6 3\n2e6 4\n1.5e6 4\n",
        "line 3: the frequency 1500000 Hz is below that of the row before, 2000000 Hz");
  fails("1e6 3\n1e16 4\n", "line 2: '1e16' is out of range");
  fails("1e6 3\n2e6 1001\n", "line 2: a correction of 1001 dB is out of range");
  fails(std::string("1e6 3\n\0 4\n", 11), "line 2: '?' is not a finite number");
  fails("1e6 0\n2e6 100\n",
        "the linear curve is out of range at 99500000 Hz; the table has 1000000 to 2000000 Hz");
}

TEST_F(CorrectedTrace, BadArguments_ExitWithTwo) {
  const std::string path = Noisy(4096);
  ExpectFailure(2,
                "--interpolation: unknown interpolation 'cubic'; known are linear, nearest, spline, hermite",
                {"spectrum", path, "--interpolation", "cubic"});
  ExpectFailure(2, "--correction is required for --interpolation",
                {"spectrum", path, "--interpolation", "spline"});
  ExpectFailure(2, "--correction: '" + (folder / "none") + "' cannot be opened: No such file or directory",
                {"spectrum", path, "--correction", folder / "none"});
  ExpectFailure(2, "--correction: '" + (folder / "") + "' is a folder",
                {"spectrum", path, "--correction", folder / ""});
}

} // namespace
