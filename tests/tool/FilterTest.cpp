// qorn filter.

#include <gtest/gtest.h>
#include <qorn/qorn.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "ToolFixture.h"

namespace {

using nlohmann::json;
using QORN::test::Contents;
using QORN::test::HasTerminals;
using QORN::test::HeaderText;
using QORN::test::kFullScale;
using QORN::test::kPi;
using QORN::test::kRate;
using QORN::test::LimitFiles;
using QORN::test::Outcome;
using QORN::test::Recording;
using QORN::test::RunTool;
using QORN::test::Signal;
using QORN::test::Tone;
using QORN::test::Tool;
using QORN::test::iqf::Frame;
using QORN::test::iqf::Mark;
using QORN::test::iqf::Pair;

using Arguments = std::vector<std::string>;
using Taps = std::vector<std::complex<double>>;

const std::string kNames =
    "root-raised-cosine, raised-cosine, gaussian, gauss-rect, rectangular, is95-tx, is95-tx-eq, "
    "is95-reference, c4fm, hdqpsk-p25, low-pass, high-pass, band-pass, integral-gaussian, integral-rect, "
    "user, integral-user";

/// The taps of a table that --csv wrote.
Taps ReadTable(const std::string &path) {
  std::istringstream lines(Contents(path));
  std::string line;
  std::getline(lines, line);
  const bool isComplex = line == "index,time_s,real,imaginary";
  EXPECT_TRUE(isComplex || line == "index,time_s,tap") << line;
  Taps taps;
  while (std::getline(lines, line)) {
    std::istringstream cells(line);
    std::string cell;
    std::vector<double> values;
    while (std::getline(cells, cell, ',')) values.push_back(std::stod(cell));
    EXPECT_EQ(values.size(), isComplex ? 4U : 3U);
    EXPECT_EQ(values[0], static_cast<double>(taps.size()));
    taps.emplace_back(values[2], isComplex ? values[3] : 0.0);
  }
  return taps;
}

std::complex<double> Response(const Taps &taps, double cycles) {
  std::complex<double> sum;
  for (std::size_t k = 0; k < taps.size(); ++k)
    sum += taps[k] * std::polar(1.0, -2.0 * kPi * cycles * static_cast<double>(k));
  return sum;
}

double Decibels(double gain) { return 20.0 * std::log10(gain); }

/// Minus the slope of the phase, in samples.
double GroupDelay(const Taps &taps, double cycles) {
  constexpr double kStep = 1e-6;
  const double turned = std::arg(Response(taps, cycles + kStep) * std::conj(Response(taps, cycles - kStep)));
  return -turned / (2.0 * kPi * 2.0 * kStep);
}

struct Case {
  std::string name;
  Arguments arguments;
  bool isStep = false;
};

/// One of each type; userTaps is the path of a file of taps.
std::vector<Case> Cases(const std::string &userTaps) {
  return {
      {"root-raised-cosine", {"--rate", "8e6", "--symbol-rate", "2e6", "--rolloff", "0.35"}},
      {"raised-cosine", {"--rate", "8e6", "--symbol-rate", "2e6", "--rolloff", "0.5", "--taps", "64"}},
      {"gaussian", {"--rate", "1e6", "--symbol-rate", "125e3", "--bt", "0.5"}},
      {"gauss-rect", {"--rate", "1e6", "--symbol-rate", "125e3", "--bt", "0.3"}},
      {"rectangular", {"--rate", "1e6", "--bandwidth", "200e3"}},
      {"is95-tx", {"--rate", "2457600"}},
      {"is95-tx-eq", {"--rate", "8e6", "--symbol-rate", "1e6"}},
      {"is95-reference", {"--rate", "4915200"}},
      {"c4fm", {"--rate", "48e3"}},
      {"hdqpsk-p25", {"--rate", "21600"}},
      {"low-pass", {"--rate", "1e6", "--cutoff", "100e3", "--taps", "81"}},
      {"high-pass", {"--rate", "1e6", "--cutoff", "300e3", "--taps", "64"}},
      {"band-pass", {"--rate", "1e6", "--low", "150e3", "--high", "250e3", "--taps", "101"}},
      {"integral-gaussian", {"--rate", "1e6", "--symbol-rate", "125e3", "--bt", "0.3"}, true},
      {"integral-rect", {"--rate", "1e6", "--symbol-rate", "100e3"}, true},
      {"user", {"--rate", "2e6", "--taps-from", userTaps, "--tap-rate", "1e6"}},
      {"integral-user",
       {"--rate", "4e6", "--symbol-rate", "1e6", "--taps-from", userTaps, "--tap-rate", "2e6"},
       true},
  };
}

TEST_F(Tool, Filter_EveryType_HasTheFiguresOfItsTaps) {
  const std::string userTaps = Save("0.1\n0.5 0.1\n1, 0.2\n0.6 -0.1 # a comment\n\n0.2\n", "taps.txt");
  std::string names;
  for (const Case &test : Cases(userTaps)) {
    SCOPED_TRACE(test.name);
    names += (names.empty() ? "" : ", ") + test.name;
    Arguments arguments = test.arguments;
    arguments.insert(arguments.begin(), test.name);
    arguments.insert(arguments.end(), {"--csv", folder / "taps.csv"});
    const json report = Measure(arguments, "filter");
    const auto figure = [&](const char *name) { return report[name].get<double>(); };
    const double rate = figure("sampling_rate_hz");
    Taps taps = ReadTable(folder / "taps.csv");
    EXPECT_EQ(report["filter"], test.name);
    EXPECT_EQ(report["taps"], taps.size());
    if (test.name != "user" && test.name != "integral-user") {
      const auto single = [](double value) { return static_cast<float>(value); };
      EXPECT_EQ(single(figure("first_tap")), single(taps.front().real()));
      EXPECT_EQ(single(figure("largest_tap")),
                single(taps[report["largest_tap_index"].get<std::size_t>()].real()));
      EXPECT_EQ(figure("delay_samples"), 0.5 * (static_cast<double>(taps.size()) - 1.0));
    }
    for (const auto &tap : taps)
      EXPECT_LE(std::abs(tap), std::abs(taps[report["largest_tap_index"].get<std::size_t>()]));
    EXPECT_EQ(report["response_of"], test.isStep ? "pulse" : "taps");
    if (test.isStep)
      for (std::size_t k = taps.size() - 1; k > 0; --k) taps[k] -= taps[k - 1];
    const auto gain = [&](double hertz) { return std::abs(Response(taps, hertz / rate)); };
    // The table has nine digits.
    double rounding = 0.0;
    for (const auto &tap : taps) rounding += 2e-9 * std::abs(tap);
    const double pass = gain(figure("pass_frequency_hz"));
    EXPECT_NEAR(std::pow(10.0, figure("gain_at_0_hz_db") / 20.0), gain(0.0), rounding);
    EXPECT_NEAR(std::pow(10.0, figure("pass_gain_db") / 20.0), pass, rounding);

    // The bands end where the gain is that low or the frequencies end, and within them it is higher.
    const bool isComplex = report["sum_of_taps"].is_array();
    const double first = isComplex ? -0.5 * rate : 0.0;
    for (const auto &[name, share] : {std::pair{"band_3db", std::sqrt(0.5)}, std::pair{"band_6db", 0.5}}) {
      const double low = report[name]["low_hz"].get<double>();
      const double high = report[name]["high_hz"].get<double>();
      EXPECT_LT(low, high);
      if (low > first) {
        EXPECT_NEAR(gain(low), share * pass, 1e-6 * pass + rounding) << name;
      }
      if (high < 0.5 * rate) {
        EXPECT_NEAR(gain(high), share * pass, 1e-6 * pass + rounding) << name;
      }
      for (int i = 1; i < 200; ++i)
        EXPECT_GT(gain(low + (high - low) * i / 200.0), share * pass * (1.0 - 1e-6)) << name;
    }

    // Nothing beyond the first nulls is higher than the figure, and something is as high.
    double highest = 0.0;
    const double step = rate / static_cast<double>(taps.size()) / 64.0;
    const json above = report["first_null_above_hz"];
    const json below = report["first_null_below_hz"];
    if (above.is_number())
      for (double f = above.get<double>(); f < 0.5 * rate; f += step) highest = std::max(highest, gain(f));
    if (below.is_number())
      for (double f = below.get<double>(); f > first; f -= step) highest = std::max(highest, gain(f));
    if (report["stop_band_db"].is_number()) {
      EXPECT_NEAR(std::pow(10.0, figure("stop_band_db") / 20.0) * pass, highest,
                  2e-3 * highest + 2.0 * rounding);
    } else {
      EXPECT_EQ(highest, 0.0);
    }
    for (const json &null : {above, below}) {
      if (!null.is_number()) continue;
      EXPECT_LE(gain(null.get<double>()), gain(null.get<double>() - step) + rounding);
      EXPECT_LE(gain(null.get<double>()), gain(null.get<double>() + step) + rounding);
    }

    double least = 1e9;
    double most = -1e9;
    const double low = report["band_3db"]["low_hz"].get<double>();
    const double high = report["band_3db"]["high_hz"].get<double>();
    for (int i = 0; i <= 2000; ++i) {
      const double delay = GroupDelay(taps, (low + (high - low) * i / 2000.0) / rate);
      least = std::min(least, delay);
      most = std::max(most, delay);
    }
    EXPECT_NEAR(report["group_delay_samples"]["least"].get<double>(), least, 2e-3);
    EXPECT_NEAR(report["group_delay_samples"]["largest"].get<double>(), most, 2e-3);
  }
  EXPECT_EQ(names, kNames);
}

TEST_F(Tool, Filter_KnownFilters_HaveTheFiguresOfTheirFormulas) {
  const auto high = [](const json &report, const char *band) {
    return report[band]["high_hz"].get<double>();
  };
  // A Gaussian of BT 0.5 has half the power at half the symbol rate, and half the amplitude at sqrt(2) times
  // that.
  const json gaussian =
      Measure({"gaussian", "--rate", "1e6", "--symbol-rate", "125e3", "--bt", "0.5"}, "filter");
  EXPECT_NEAR(high(gaussian, "band_3db"), 62500.0, 1.0);
  EXPECT_NEAR(high(gaussian, "band_6db"), 62500.0 * std::sqrt(2.0), 1.0);
  EXPECT_NEAR(gaussian["gain_at_0_hz_db"].get<double>(), 0.0, 1e-5);
  // Cut as little as that, the raised cosines have half the amplitude and half the power at half the rate.
  const json raised = Measure(
      {"raised-cosine", "--rate", "8e6", "--symbol-rate", "1e6", "--rolloff", "0.5", "--taps", "1001"},
      "filter");
  EXPECT_NEAR(high(raised, "band_6db"), 500e3, 20.0);
  const json root = Measure(
      {"root-raised-cosine", "--rate", "8e6", "--symbol-rate", "1e6", "--rolloff", "0.5", "--taps", "4001"},
      "filter");
  EXPECT_NEAR(high(root, "band_3db"), 500e3, 20.0);
  // A windowed sinc has half the amplitude at its cutoff, and the Hamming window keeps the rest below -52 dB.
  const json low = Measure({"low-pass", "--rate", "1e6", "--cutoff", "100e3", "--taps", "201"}, "filter");
  EXPECT_NEAR(high(low, "band_6db"), 100e3, 30.0);
  EXPECT_LT(low["stop_band_db"].get<double>(), -52.0);
  // Ten samples of a rectangle: the first null at the symbol rate, the first sidelobe 12.97 dB down.
  const json rectangle = Measure({"integral-rect", "--rate", "1e6", "--symbol-rate", "100e3"}, "filter");
  EXPECT_NEAR(rectangle["first_null_above_hz"].get<double>(), 100e3, 1.0);
  double sidelobe = 0.0;
  for (double x = 0.1; x < 0.2; x += 1e-5)
    sidelobe = std::max(sidelobe, std::fabs(std::sin(10.0 * kPi * x) / std::sin(kPi * x) / 10.0));
  EXPECT_NEAR(rectangle["stop_band_db"].get<double>(), Decibels(sidelobe), 1e-3);
  // The tables of IS-95 have a sum of 0.9185.
  for (const char *ratio : {"2", "4", "8", "16"}) {
    const json is95 = Measure({"is95-tx", "--rate", std::to_string(1228800 * std::stoi(ratio))}, "filter");
    EXPECT_NEAR(is95["sum_of_taps"].get<double>(), 0.9185, 1e-4) << ratio;
  }
}

TEST_F(Tool, Filter_UserTapsAtTheSamplingRate_AreThoseOfTheFileReversed) {
  // Their centroid of energy is the middle one, so none is between two samples.
  Measure({"user", "--rate", "1e6", "--taps-from", Save("0.5\n1\n-0.5\n", "real.txt"), "--tap-rate", "1e6",
           "--taps", "3", "--csv", folder / "real.csv"},
          "filter");
  EXPECT_EQ(Contents(folder / "real.csv"), "index,time_s,tap\n0,0,-0.5\n1,1e-06,1\n2,2e-06,0.5\n");
  Measure({"user", "--rate", "1e6", "--taps-from",
           Save("0.5;0.25\r\n# the middle one\n  1 , -2 \n\n-0.5\t-0.25 # the last\n", "complex.txt"),
           "--tap-rate", "1e6", "--taps", "3", "--csv", folder / "complex.csv"},
          "filter");
  EXPECT_EQ(Contents(folder / "complex.csv"),
            "index,time_s,real,imaginary\n0,0,-0.5,-0.25\n1,1e-06,1,-2\n2,2e-06,0.5,0.25\n");
}

TEST_F(Tool, Filter_Text_TellsTheFigures) {
  // 13 samples of a rectangle, |sin(13 pi x) / sin(pi x)|: half the power at x = 0.0341604, half the
  // amplitude at 0.0465127, the first null at 1 / 13 and the highest sidelobe 13.0875 dB below the 22.2789 dB
  // at 0.
  std::string file;
  for (int i = 0; i < 13; ++i) file += "1\n";
  const Outcome outcome = RunTool({"filter", "user", "--rate", "1e6", "--tap-rate", "1e6", "--taps", "13",
                                   "--taps-from", Save(file, "taps.txt")});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.out, "Filter                user\n"
                         "Sampling rate         1 MHz\n"
                         "Symbol rate           1 MHz, 1 sample per symbol\n"
                         "Taps                  13 (15 recommended)\n"
                         "First tap             1\n"
                         "Largest tap           1 at 0\n"
                         "Sum of taps           13\n"
                         "Delay                 6 samples, 6 µs\n"
                         "Gain at 0 Hz          22.279 dB\n"
                         "3 dB bandwidth        34.16 kHz, from 0 Hz to 34.160 kHz\n"
                         "6 dB bandwidth        46.51 kHz, from 0 Hz to 46.513 kHz\n"
                         "First null            76.923 kHz\n"
                         "Stop band             -13.1 dB relative to the pass band\n"
                         "Group delay ripple    0.000 samples in the 3 dB band\n");
}

TEST_F(Tool, Filter_Gallery_WritesAPictureOfEveryType) {
  const std::string gallery = folder / "gallery";
  for (int run = 0; run < 2; ++run) { // into a new folder, and over what is there
    const Outcome outcome = RunTool({"filter", "--gallery", gallery});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "");
    std::istringstream names(kNames);
    std::string told;
    std::size_t count = 0;
    for (std::string name; names >> name; ++count) {
      if (name.back() == ',') name.pop_back();
      const std::string path = gallery + "/" + name + ".svg";
      told += path + "\n";
      const std::string svg = Contents(path);
      ExpectWellFormed(svg);
      EXPECT_LT(svg.size(), 200000U);
      for (const char *text : {">Tap<", ">Pass band<", ">Group delay<", ">3 dB bandwidth<", ">First null<"})
        EXPECT_NE(svg.find(text), std::string::npos) << name << ' ' << text;
      EXPECT_NE(svg.find(">Filter " + name), std::string::npos) << name;
    }
    EXPECT_EQ(outcome.out, told);
    EXPECT_EQ(count, 17U);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(gallery), {}), 17);
  }
}

TEST_F(Tool, Filter_Svg_IsWellFormed) {
  const std::string one = Save("1e-9 1e-9\n", "one.txt");
  const std::vector<Arguments> cases = {
      {"gaussian", "--rate", "1e6", "--symbol-rate", "100", "--bt", "0.5", "--taps", "20001"},
      {"rectangular", "--rate", "1", "--bandwidth", "0.001", "--taps", "1"},
      {"low-pass", "--rate", "1e12", "--cutoff", "1e11", "--taps", "6"},
      {"user", "--rate", "1e6", "--taps-from", one, "--tap-rate", "1e6"},
      {"root-raised-cosine", "--rate", "1e6", "--symbol-rate", "250e3", "--rolloff", "0", "--taps", "65535"},
  };
  for (Arguments arguments : cases) {
    arguments.insert(arguments.end(), {"--svg", folder / "f.svg"});
    Measure(arguments, "filter");
    ExpectWellFormed(Contents(folder / "f.svg"));
    EXPECT_LT(Contents(folder / "f.svg").size(), 1500000U);
  }
}

// Recordings

TEST_F(Tool, Filter_ToneInAndOutOfThePassBand_ReadsTheGainThere) {
  for (const double cycles : {0.05, -0.05, 0.1, 0.12, -0.2, 0.3}) {
    const std::string path = Save(Recording(16384, Tone(-10.0, cycles)));
    const json report = Measure({"low-pass", path, "--cutoff", "100e3", "--taps", "81", "--csv",
                                 folder / "taps.csv", "--out", folder / "out.iqf"},
                                "filter");
    EXPECT_EQ(report["sampling_rate_hz"], kRate);
    EXPECT_EQ(report["filtered"]["samples"], 16384);
    EXPECT_EQ(report["filtered"]["advance_samples"], 40);
    const double expected = -10.0 + Decibels(std::abs(Response(ReadTable(folder / "taps.csv"), cycles)));
    // In the middle, where nothing of the ends shows.
    const json spectrum =
        Measure({folder / "out.iqf", "--start", "1024", "--count", "14336", "--points", "2048"});
    EXPECT_NEAR(spectrum["total_power"].get<double>(), expected, 0.05) << cycles;
    ASSERT_GE(spectrum["peaks"].size(), 1U);
    EXPECT_NEAR(spectrum["peaks"][0]["offset_hz"].get<double>(), cycles * kRate, 150.0);
    EXPECT_EQ(spectrum["centre_hz"], 100e6);
    EXPECT_EQ(spectrum["span_hz"], 800e3);
  }
}

struct FilterRun {
  const char *name;
  Arguments arguments;
  int samples, points;
  std::int64_t start, count;
};

TEST_F(Tool, Filter_Recording_IsTheConvolutionWithItsDelayTakenOff) {
  const std::string taps = Save("0.5 0.5\n1 -1\n-0.5 0.25\n", "taps.txt");
  const Signal signal = [](int i) {
    const std::int64_t at = i;
    return std::complex<double>(static_cast<double>(at * 7919 % 20011 - 10000),
                                static_cast<double>(at * 104729 % 15013 - 7500));
  };
  const Arguments lowPass = {"low-pass", "--cutoff", "200e3", "--taps"};
  const auto with = [](Arguments arguments, const Arguments &more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  };
  const std::vector<FilterRun> runs = {
      {"odd", with(lowPass, {"21"}), 8192, 1024, 0, 8192},
      {"even", with(lowPass, {"32"}), 8192, 1024, 0, 8192},
      {"longer than the recording", with(lowPass, {"5001"}), 2048, 1024, 0, 2048},
      {"short frames", with(lowPass, {"15"}), 1000, 100, 0, 1000},
      {"a part", with(lowPass, {"15", "--start", "1500", "--count", "1001"}), 4096, 1024, 1500, 1001},
      {"blocks", with(lowPass, {"101"}), 140 * 1024, 1024, 0, 140 * 1024},
      {"complex", {"user", "--taps-from", taps, "--tap-rate", "1e6"}, 4096, 1024, 0, 4096},
  };
  for (const FilterRun &run : runs) {
    SCOPED_TRACE(run.name);
    const std::string path = Save(Recording(run.samples, signal, run.points));
    Arguments arguments = run.arguments;
    arguments.insert(arguments.begin() + 1, path);
    arguments.insert(arguments.end(), {"--out", folder / "out.iqf", "--csv", folder / "taps.csv"});
    const json report = Measure(arguments, "filter");
    const Taps h = ReadTable(folder / "taps.csv");
    const std::int64_t advance = static_cast<std::int64_t>(h.size() / 2);
    EXPECT_EQ(report["filtered"]["advance_samples"], advance);
    EXPECT_EQ(report["filtered"]["samples"], run.count);

    QORN::IQFReader in(path.c_str());
    QORN::IQFReader out((folder / "out.iqf").c_str());
    EXPECT_EQ(out.GetFFTPoints(), run.points);
    EXPECT_EQ(out.GetNofValidFrames(), (run.count + run.points - 1) / run.points);
    EXPECT_EQ(out.GetSamplingFrequency(), in.GetSamplingFrequency());
    EXPECT_EQ(std::filesystem::file_size(folder / "out.iqf"),
              static_cast<std::uintmax_t>(out.GetDataOffset() + 4120 * (out.GetNofValidFrames() + 1)));
    const double step = report["filtered"]["volts_per_step"].get<double>();
    EXPECT_NEAR(out.GetScalingFactor(), step, 1e-9 * step);
    QORN::VecCplx32 x;
    QORN::VecCplx32 y;
    ASSERT_TRUE(in.ReadIQData(static_cast<int>(run.start), static_cast<int>(run.count), x));
    ASSERT_TRUE(out.ReadIQData(0, out.GetNoflSamplesInFile(), y));
    double peak = 0.0;
    const int stride = run.count > 10000 ? 37 : 1;
    for (std::int64_t n = 0; n < y.GetSize(); n += stride) {
      std::complex<double> sum;
      for (std::int64_t k = 0; k < static_cast<std::int64_t>(h.size()); ++k) {
        const std::int64_t i = n + advance - k;
        if (n >= run.count || i < 0 || i >= run.count) continue;
        const QORN::Cplx32 sample = x[static_cast<int>(i)];
        sum += h[static_cast<std::size_t>(k)] *
               std::complex<double>(static_cast<double>(sample.re), static_cast<double>(sample.im));
      }
      const QORN::Cplx32 got = y[static_cast<int>(n)];
      ASSERT_NEAR(static_cast<double>(got.re), sum.real(), 0.51 * step) << n;
      ASSERT_NEAR(static_cast<double>(got.im), sum.imag(), 0.51 * step) << n;
      peak = std::max({peak, std::fabs(sum.real()), std::fabs(sum.imag())});
    }
    // The largest value is the largest integer.
    if (stride == 1) {
      EXPECT_NEAR(peak, 32767.0 * step, 0.01 * step);
      EXPECT_NEAR(report["filtered"]["peak_v"].get<double>(), peak, 1e-5 * peak);
    }
  }
}

TEST_F(Tool, Filter_Recording_KeepsTheHeaderAndTheFlatness) {
  std::string bytes = HeaderText(2, 512, "Bins=400 UnitPeriod=1u MultiFrames=3 IOffset=7 QOffset=-5 ");
  for (int f = 0; f < 2; ++f) bytes += Frame(Mark::kCartesian, [](int k) { return Pair{k % 100, 500 - k}; });
  bytes += Frame(Mark::kNone, [](int k) { return Pair{k - 300, 2 * k - 700}; });
  const std::string path = Save(bytes);
  const Outcome outcome =
      RunTool({"filter", "rectangular", path, "--bandwidth", "400e3", "--out", folder / "out.iqf"});
  EXPECT_EQ(outcome.status, 0) << outcome.error;
  EXPECT_NE(outcome.out.find("\nFiltered              " + (folder / "out.iqf") +
                             "\nSamples               1 024, 12 of delay taken off\nLargest value "),
            std::string::npos)
      << outcome.out;
  const QORN::IQFReader in(path.c_str());
  const QORN::IQFReader out((folder / "out.iqf").c_str());
  for (const char *key : {"Title", "FFTPoints", "Bins", "CenterFrequency", "Span", "FrameLength",
                          "UnitPeriod", "BlockSize", "MultiFrames", "ValidFrames"}) {
    char before[61];
    char after[61];
    EXPECT_TRUE(in.GetHeader(key, before)) << key;
    EXPECT_TRUE(out.GetHeader(key, after)) << key;
    EXPECT_STREQ(before, after) << key;
  }
  EXPECT_EQ(in.GetMaxInputLevel(), out.GetMaxInputLevel());
  QORN::VecReal32 amplitude[2];
  QORN::VecReal32 phase[2];
  in.GetFlatness(amplitude[0], phase[0]);
  out.GetFlatness(amplitude[1], phase[1]);
  for (int i = 0; i < 512; ++i) {
    ASSERT_EQ(amplitude[0][i], amplitude[1][i]);
    ASSERT_EQ(phase[0][i], phase[1][i]);
  }
}

TEST_F(Tool, Filter_SilentRecording_StaysSilent) {
  const std::string path = Save(Recording(2048, [](int) { return std::complex<double>(); }));
  Measure({"low-pass", path, "--cutoff", "100e3", "--taps", "9", "--out", folder / "out.iqf"}, "filter");
  EXPECT_EQ(Measure({folder / "out.iqf"})["total_power"], nullptr);
}

TEST_F(Tool, Filter_LongRecording_NeedsLittleMemory) {
  if (QORN::test::kSanitizesAddresses) GTEST_SKIP() << "the sanitizer's own memory would be measured";
  long memory[2];
  const int frames[] = {100, 20000}; // 0.4 and 82 megabytes, of holes
  for (int i = 0; i < 2; ++i) {
    const std::string header = HeaderText(frames[i], 1024);
    const std::string path = Save(header + Frame(Mark::kCartesian, [](int) { return Pair{100, 200}; }));
    std::filesystem::resize_file(path, header.size() + static_cast<std::uintmax_t>(frames[i] + 1) * 4120);
    const Outcome outcome = RunTool(
        {"filter", "low-pass", path, "--cutoff", "100e3", "--taps", "21", "--out", folder / "out.iqf"});
    ASSERT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(std::filesystem::file_size(folder / "out.iqf") / 4120, static_cast<unsigned>(frames[i] + 1));
    memory[i] = outcome.residentKilobytes;
  }
  EXPECT_LT(memory[1], memory[0] + 4096);
}

// Failures

TEST_F(Tool, Filter_WrongArguments_ExitWithTwoAndNameTheArgument) {
  const std::string path = Save(Recording(2048, Tone(-10.0, 0.1)));
  const std::string out = folder / "out.iqf";
  const std::string taps = Save("1\n2\n", "taps.txt");
  const std::string takesRoot = "it takes --rate, --symbol-rate, --rolloff, --taps";
  const Arguments lowPass = {"low-pass", "--rate", "1e6", "--cutoff", "1e5", "--taps", "21"};
  const Arguments user = {"user", "--rate", "1e6", "--tap-rate", "1e6", "--taps-from"};
  const auto with = [](Arguments arguments, const Arguments &more) {
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  };
  const std::vector<std::pair<Arguments, std::string>> cases = {
      {{}, "TYPE is required"},
      {{"sinc"}, "TYPE: unknown filter 'sinc'; known are " + kNames},
      {{""}, "TYPE: unknown filter ''; known are " + kNames},
      {{"low-pass"}, "--rate is required for low-pass"},
      {{"low-pass", "--rate", "1e6"}, "--cutoff is required for low-pass"},
      {{"low-pass", "--rate", "1e6", "--cutoff", "1e5"}, "--taps is required for low-pass"},
      {{"low-pass", "--rate", "1e6", "--cutoff", "1e5", "--taps", "4"}, "--taps: low-pass takes 5 or more"},
      {{"low-pass", "--rate", "1e6", "--cutoff", "500e3", "--taps", "9"},
       "--cutoff: 500000 Hz is not below half the sampling rate of 1000000 Hz"},
      {{"high-pass", "--rate", "1e6", "--cutoff", "0", "--taps", "9"},
       "--cutoff: '0' is not from 0.001 to 1e+12"},
      {{"band-pass", "--rate", "1e6", "--low", "1e5", "--taps", "9"}, "--high is required for band-pass"},
      {{"band-pass", "--rate", "1e6", "--high", "1e5", "--taps", "9"}, "--low is required for band-pass"},
      {{"band-pass", "--rate", "1e6", "--low", "1e5", "--high", "1e5", "--taps", "9"},
       "--low: 100000 Hz is not below --high"},
      {{"band-pass", "--rate", "1e6", "--low", "1e5", "--high", "6e5", "--taps", "9"},
       "--high: 600000 Hz is not below half the sampling rate of 1000000 Hz"},
      {{"root-raised-cosine", "--rate", "1e6", "--rolloff", "0.2"},
       "--symbol-rate is required for root-raised-cosine"},
      {{"root-raised-cosine", "--rate", "1e6", "--symbol-rate", "1e5"},
       "--rolloff is required for root-raised-cosine"},
      {{"root-raised-cosine", "--rate", "1e6", "--symbol-rate", "1e5", "--rolloff", "1.1"},
       "--rolloff: '1.1' is not from 0 to 1"},
      {{"root-raised-cosine", "--rate", "1e6", "--symbol-rate", "2e6", "--rolloff", "0.5"},
       "--symbol-rate: 2000000 Hz is above the sampling rate of 1000000 Hz"},
      {{"root-raised-cosine", "--bt", "0.3"}, "--bt: root-raised-cosine does not take it; " + takesRoot},
      {{"root-raised-cosine", "--cutoff", "3"},
       "--cutoff: root-raised-cosine does not take it; " + takesRoot},
      {{"root-raised-cosine", "--bandwidth", "3"},
       "--bandwidth: root-raised-cosine does not take it; " + takesRoot},
      {{"root-raised-cosine", "--low", "3"}, "--low: root-raised-cosine does not take it; " + takesRoot},
      {{"root-raised-cosine", "--high", "3"}, "--high: root-raised-cosine does not take it; " + takesRoot},
      {{"root-raised-cosine", "--tap-rate", "3"},
       "--tap-rate: root-raised-cosine does not take it; " + takesRoot},
      {{"root-raised-cosine", "--taps-from", taps},
       "--taps-from: root-raised-cosine does not take it; " + takesRoot},
      {{"gaussian", "--rolloff", "1"},
       "--rolloff: gaussian does not take it; it takes --rate, --symbol-rate, --bt, --taps"},
      {{"low-pass", "--symbol-rate", "1"},
       "--symbol-rate: low-pass does not take it; it takes --rate, --cutoff, --taps"},
      {{"hdqpsk-p25", "--rate", "28.8e3", "--taps", "33"},
       "--taps: hdqpsk-p25 does not take it; it takes --rate"},
      {{"is95-tx", "--rate", "4e6", "--taps", "9"},
       "--taps: is95-tx does not take it; it takes --rate, --symbol-rate"},
      {{"is95-tx", "--rate", "3686400"},
       "--rate: is95-tx is for 2, 4, 8 or 16 samples per symbol, not for 3"},
      {{"gaussian", "--rate", "1e6", "--symbol-rate", "1e5", "--bt", "0"},
       "--bt: '0' is not from 0.01 to 10"},
      {{"raised-cosine", "--rate", "1e6", "--symbol-rate", "1e4", "--rolloff", "0"},
       "--taps: the recommended 437 501 taps of raised-cosine are more than 65 535; give a number"},
      {{"rectangular", "--rate", "1e6", "--bandwidth", "2e6"},
       "--bandwidth: 2000000 Hz is above the sampling rate of 1000000 Hz"},
      {{"rectangular", "--rate", "1e12", "--bandwidth", "0.001"}, "--taps is required for rectangular"},
      {{"rectangular", "--rate", "x", "--bandwidth", "1"}, "--rate: 'x' is not a finite number"},
      {{"rectangular", "--rate", "1e13", "--bandwidth", "1"}, "--rate: '1e13' is not from 0.001 to 1e+12"},
      {{"rectangular", "--rate", "1e6", "--bandwidth", "1e5", "--taps", "0"},
       "--taps: '0' is not a whole number from 1 to 65535"},
      {{"rectangular", "--rate", "1e6", "--bandwidth", "1e5", "--taps", "65536"},
       "--taps: '65536' is not a whole number from 1 to 65535"},
      {{"user", "--rate", "1e6", "--taps-from", taps}, "--tap-rate is required for user"},
      {{"user", "--rate", "1e6", "--tap-rate", "1e6"}, "--taps-from is required for user"},
      {{"integral-user", "--rate", "1e6", "--tap-rate", "1e6", "--taps-from", taps},
       "--symbol-rate is required for integral-user"},
      {{"user", "--rate", "1e12", "--tap-rate", "1e6", "--taps-from", taps},
       "--taps: the recommended 1 600 003 taps of user are more than 65 535; give a number"},
      {{"user", "--rate", "1e12", "--tap-rate", "1", "--taps-from", taps},
       "--tap-rate: taps at 1 Hz cannot be resampled to 1e+12 Hz"},
      {with(user, {folder / "none"}),
       "--taps-from: '" + (folder / "none") + "' cannot be opened: No such file or directory"},
      {with(user, {folder / ""}), "--taps-from: '" + (folder / "") + "' is a folder"},
      {with(user, {Save("# nothing\n", "empty.txt")}),
       "--taps-from: '" + (folder / "empty.txt") + "' has no taps"},
      {with(user, {Save("1\nx\n", "x.txt")}), "--taps-from: line 2: 'x' is not a finite number"},
      {with(user, {Save("1 2 3\n", "three.txt")}), "--taps-from: line 1: a tap is one number or two"},
      {with(user, {Save("\n1e16\n", "large.txt")}), "--taps-from: line 2: '1e16' is out of range"},
      {with(user, {Save("0\n0\n", "zero.txt")}),
       "user: all taps are zero or out of range with these parameters"},
      {with(lowPass, {"--svg", folder / "none/f.svg"}), "--svg: '" + (folder / "none/f.svg") +
                                                            "' cannot be written: there is no folder '" +
                                                            (folder / "none") + "'"},
      {with(lowPass, {"--svg", folder / "f", "--csv", folder / "f"}),
       "--csv: '" + (folder / "f") + "' is the file of --svg"},
      {with(lowPass, {"--svg", ""}), "--svg: '' is not the name of a file"},
      {with(user, {""}), "--taps-from: '' is not the name of a file"},
      {with(user, {taps, "--svg", taps}), "--svg: '" + taps + "' is the file of --taps-from"},
      {with(user, {taps, "--csv", folder / "./taps.txt"}),
       "--csv: '" + (folder / "./taps.txt") + "' is the file of --taps-from"},
      {with(user, {taps, path, "--out", taps}), "--out: '" + taps + "' is the file of --taps-from"},
      {with(user, {"/dev/zero"}), "--taps-from: '/dev/zero' is longer than 5 242 816 bytes"},
      {with(user, {"/proc/self/mem"}), "--taps-from: '/proc/self/mem' cannot be read: Input/output error"},
      {with(lowPass, {"--out", out}), "--out: there is no RECORDING to filter"},
      {with(lowPass, {"--start", "1"}), "--start: there is no RECORDING to filter"},
      {with(lowPass, {"--count", "1"}), "--count: there is no RECORDING to filter"},
      {with(lowPass, {path}), "--out is required to filter a recording"},
      {with(lowPass, {path, "--out", path}), "--out: '" + path + "' is the recording itself"},
      {with(lowPass, {path, "--csv", path, "--out", out}), "--csv: '" + path + "' is the recording itself"},
      {with(lowPass, {path, "--svg", out, "--out", out}), "--out: '" + out + "' is the file of --svg"},
      {with(lowPass, {path, "--out", folder / "none/o.iqf"}),
       "--out: '" + (folder / "none/o.iqf") + "' cannot be written: there is no folder '" +
           (folder / "none") + "'"},
      {with(lowPass, {path, "--out", out, "--start", "2048"}),
       "--start: sample 2048 is not in the recording, which has 2048 samples"},
      {with(lowPass, {path, "--out", out, "--count", "2049"}),
       "--count: 2049 samples are not in the recording, which has 2048 from sample 0 on"},
      {{"low-pass", path, "--rate", "2e6", "--cutoff", "1e5", "--taps", "21", "--out", out},
       "--rate: '2e6' is not the rate of the recording, which is 1000000 Hz"},
      {{"integral-rect", path, "--symbol-rate", "1e5", "--out", out},
       "integral-rect: what it adds for a sample never ends; it filters no recording"},
      {{"low-pass", "--gallery", folder / "g"}, "--gallery: TYPE does not go with it"},
      {{"--json", "--gallery", folder / "g"}, "--gallery: --json does not go with it"},
      {{"--gallery", taps}, "--gallery: '" + taps + "' cannot be made a folder: File exists"},
      {{"--bogus"}, "The following argument was not expected: --bogus"},
  };
  const std::vector<std::string> before = folder.Names();
  const std::string recorded = Contents(path);
  for (auto [arguments, message] : cases) {
    arguments.insert(arguments.begin(), "filter");
    ExpectFailure(2, message, arguments);
  }
  EXPECT_EQ(folder.Names(), before);
  EXPECT_EQ(Contents(path), recorded);
}

TEST_F(Tool, Filter_RecordingThatCannotBeWrittenWhole_IsNotWritten) {
  const std::string path = Save(Recording(65536, Tone(-10.0, 0.1)));
  std::ofstream(folder / "out.iqf") << "old";
  // The picture and the table fit, and yet do not take their places.
  ExpectFailure(1, "--out: '" + (folder / "out.iqf") + "' could not be written: File too large",
                {"filter", "low-pass", path, "--cutoff", "1e5", "--taps", "9", "--out", folder / "out.iqf",
                 "--svg", folder / "f.svg", "--csv", folder / "f.csv"},
                LimitFiles);
  EXPECT_EQ(Contents(folder / "out.iqf"), "old");
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"out.iqf", "test.iqf"}));
}

TEST_F(Tool, Filter_WrongRecordings_ExitWithOneAndLeaveNothing) {
  const std::string sound = Recording(4096, Tone(-10.0, 0.1));
  const std::string cut = Save(sound.substr(0, sound.size() - 3 * 4120), "cut.iqf");
  std::string bytes = HeaderText(1, 1024, "IOffset=nan ");
  bytes += Frame(Mark::kCartesian, [](int) { return Pair{1, 1}; });
  const std::string wild = Save(bytes, "wild.iqf");
  const std::string out = folder / "out.iqf";
  const std::vector<std::string> before = folder.Names();
  const Arguments rest = {"--cutoff", "1e5", "--taps", "9", "--out", out};
  const auto fails = [&](const std::string &path, const std::string &message) {
    Arguments arguments = {"filter", "low-pass", path};
    arguments.insert(arguments.end(), rest.begin(), rest.end());
    ExpectFailure(1, message, arguments);
    EXPECT_EQ(folder.Names(), before);
  };
  fails(folder / "none.iqf",
        "recording '" + (folder / "none.iqf") + "' cannot be opened: No such file or directory");
  fails(cut, "recording '" + cut +
                 "' is cut short: its header promises 4 frames, the file holds 2 (--count 2048 reads them)");
  fails(wild,
        "recording '" + wild + "' has no finite samples: its levels, IOffset or QOffset are out of range");
}

} // namespace
