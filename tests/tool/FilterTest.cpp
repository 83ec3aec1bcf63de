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
      EXPECT_EQ(figure("first_tap"), taps.front().real());
      EXPECT_EQ(figure("largest_tap"), taps[report["largest_tap_index"].get<std::size_t>()].real());
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

TEST_F(Tool, Filter_TapsOfItsOwnRate_AreTheTapsOfTheFileReversed) {
  const std::string taps = Save("0.25\n0.5\n0.125\n", "taps.txt");
  Measure({"user", "--rate", "1e6", "--taps-from", taps, "--tap-rate", "1e6", "--taps", "3", "--csv",
           folder / "t.csv"},
          "filter");
  EXPECT_EQ(Contents(folder / "t.csv").substr(0, 17), "index,time_s,tap\n");
  double sum = 0.0;
  for (const auto &tap : ReadTable(folder / "t.csv")) sum += tap.real();
  EXPECT_NEAR(sum, 0.875, 0.05); // the centroid of the taps lies between two of them
  const std::string symmetric = Save("0.25 0\n0.5 0.5\n0.25 -1\n", "symmetric.txt");
  Measure({"user", "--rate", "1e6", "--taps-from", Save("1 2\n0 8\n", "two.txt"), "--tap-rate", "1e6"},
          "filter");
  Measure({"user", "--rate", "1e6", "--taps-from", Save("0\n0\n0.5 -0.25 # the only one\n", "one.txt"),
           "--tap-rate", "1e6", "--taps", "3", "--csv", folder / "one.csv"},
          "filter");
  EXPECT_EQ(Contents(folder / "one.csv"),
            "index,time_s,real,imaginary\n0,0,0,0\n1,1e-06,0.5,-0.25\n2,2e-06,0,0\n");
}

TEST_F(Tool, Filter_Text_TellsTheFigures) {
  // 13 samples of a rectangle of height 1/13, by the sinc of Dirichlet.
  std::string file;
  for (int i = 0; i < 13; ++i) file += "1\n";
  const Outcome outcome = RunTool({"user", "--rate"});
  const Outcome text = RunTool({"filter", "user", "--rate", "1e6", "--tap-rate", "1e6", "--taps", "13",
                                "--taps-from", Save(file, "taps.txt")});
  EXPECT_EQ(text.status, 0) << text.error;
  EXPECT_EQ(text.error, "");
  EXPECT_EQ(text.out, "");
}

} // namespace
