// qorn windows.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <sstream>
#include <string>
#include <vector>

#include "ToolFixture.h"
#include "WindowShapes.h"

namespace {

using nlohmann::json;
using QORN::test::Contents;
using QORN::test::kPi;
using QORN::test::NoiseBandwidth;
using QORN::test::Outcome;
using QORN::test::RunTool;
using QORN::test::Shape;
using QORN::test::Shapes;
using QORN::test::Tool;

/// The response to a tone at so many bins from its own, relative to the top.
double Response(const std::vector<double> &weights, double offset) {
  double top = 0.0;
  std::complex<double> sum;
  for (std::size_t k = 0; k < weights.size(); ++k) {
    top += weights[k];
    sum += std::polar(weights[k],
                      2.0 * kPi * offset * static_cast<double>(k) / static_cast<double>(weights.size()));
  }
  return std::abs(sum) / top;
}

/// The highest response behind the first minimum. The search starts at an offset in the main lobe.
double Sidelobe(const std::vector<double> &weights, double offset) {
  constexpr double kStep = 1.0 / 64.0;
  double highest = Response(weights, offset);
  for (double next = 0.0; (next = Response(weights, offset + kStep)) < highest; highest = next)
    offset += kStep;
  for (; offset < 0.5 * static_cast<double>(weights.size()); offset += kStep)
    highest = std::max(highest, Response(weights, offset));
  return highest;
}

TEST_F(Tool, Windows_EveryWindow_HasTheFiguresOfItsShape) {
  for (const int points : {16, 77, 128}) {
    const json report = Measure({"--points", std::to_string(points)}, "windows");
    EXPECT_EQ(report["points"], points);
    ASSERT_EQ(report["windows"].size(), Shapes().size());
    for (std::size_t i = 0; i < Shapes().size(); ++i) {
      const Shape &shape = Shapes()[i];
      std::vector<double> weights;
      for (int k = 0; k < points; ++k) weights.push_back(shape.weight(k, points));
      const json &window = report["windows"][i];
      EXPECT_EQ(window["window"], shape.name);
      const auto figure = [&](const char *name) { return window[name].get<double>(); };
      const double noise = NoiseBandwidth(shape, points);
      const double half = 0.5 * figure("width_6db_bins");
      // What the rounding of the weights to floats adds to any response, by its rms.
      const double rounding = std::pow(2.0, -24) * std::sqrt(noise / points);
      EXPECT_NEAR(figure("noise_bandwidth_bins"), noise, 1e-5) << shape.name;
      EXPECT_NEAR(Response(weights, 0.5 * figure("width_3db_bins")), std::sqrt(0.5), 1e-6) << shape.name;
      EXPECT_NEAR(Response(weights, half), 0.5, 1e-6) << shape.name;
      EXPECT_NEAR(std::pow(10.0, -figure("scalloping_loss_db") / 20.0), Response(weights, 0.5), 4 * rounding)
          << shape.name;
      const double sidelobe = Sidelobe(weights, half);
      EXPECT_NEAR(std::pow(10.0, figure("highest_sidelobe_db") / 20.0), sidelobe,
                  4 * rounding + 0.002 * sidelobe)
          << shape.name << ' ' << points;
    }
  }
}

TEST_F(Tool, Windows_KnownWindows_HaveTheFiguresOfTheLiterature) {
  // Heinzel, Ruediger and Schilling, Spectrum and spectral density estimation by the DFT, 2002, whose 3 dB
  // are not quite half the power; the 6 dB widths of Harris, 1978.
  struct Known {
    const char *name;
    double noise, width3, width6, scalloping, sidelobe, rbw;
  };
  const std::vector<Known> known = {
      {"rectangle", 1.0, 0.8845, 1.21, 3.9224, -13.3, 0.89},
      {"hann", 1.5, 1.4382, 2.0, 1.4236, -31.5, 1.44},
      {"hamming", 1.3628, 1.3008, 1.81, 1.7514, -42.7, 1.3},
      {"blackman-harris", 2.0044, 1.8962, 0.0, 0.8256, -92.0, 1.9},
  };
  const json windows = Measure({}, "windows")["windows"];
  for (std::size_t i = 0; i < known.size(); ++i) {
    const json &window = windows[i];
    ASSERT_EQ(window["window"], known[i].name);
    EXPECT_NEAR(window["noise_bandwidth_bins"].get<double>(), known[i].noise, 6e-5);
    EXPECT_NEAR(window["width_3db_bins"].get<double>(), known[i].width3, 0.004);
    if (known[i].width6 > 0.0) {
      EXPECT_NEAR(window["width_6db_bins"].get<double>(), known[i].width6, 0.006);
    }
    EXPECT_NEAR(window["scalloping_loss_db"].get<double>(), known[i].scalloping, 6e-5);
    EXPECT_NEAR(window["highest_sidelobe_db"].get<double>(), known[i].sidelobe, 0.06);
    EXPECT_NEAR(window["rbw_scaling_bins"].get<double>(), known[i].rbw, 1e-6);
  }
}

TEST_F(Tool, Windows_Text_IsATable) {
  const Outcome outcome = RunTool({"windows", "hann", "kaiser"});
  EXPECT_EQ(outcome.status, 0) << outcome.error;
  EXPECT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.out,
            "Windows of 1 024 points\n"
            "Window                ENBW 3 dB width 6 dB width Scalloping Sidelobe RBW scaling\n"
            "                      bins       bins       bins         dB       dB        bins\n"
            "hann                1.5000     1.4406     2.0000      1.424    -31.5      1.4400\n"
            "kaiser, beta 16.71  2.3540     2.2251     3.1303      0.603   -127.9      2.2292\n");
}

TEST_F(Tool, Windows_Names_ChooseAndOrder) {
  const json windows = Measure({"FlatTop", "hann", "flat-top", "gauss"}, "windows")["windows"];
  ASSERT_EQ(windows.size(), 3U);
  EXPECT_EQ(windows[0]["window"], "flat-top");
  EXPECT_EQ(windows[1]["window"], "hann");
  EXPECT_EQ(windows[2]["window"], "gauss");
  EXPECT_EQ(windows[2]["alpha"], 3.5);
}

TEST_F(Tool, Windows_Csv_HasALinePerWindow) {
  // As the formulas of the two windows give them for 1024 points.
  Measure({"rectangle", "hann", "--csv", folder / "w.csv"}, "windows");
  EXPECT_EQ(
      Contents(folder / "w.csv"),
      "window,noise_bandwidth_bins,width_3dB_bins,width_6dB_bins,scalloping_loss_dB,highest_sidelobe_dB,"
      "rbw_scaling_bins\n"
      "rectangle,1,0.885893,1.20671,3.92239,-13.2614,0.89\n"
      "hann,1.5,1.44058,2,1.42362,-31.4673,1.44\n");
}

TEST_F(Tool, Windows_Svg_IsWellFormedAndComplete) {
  for (const std::vector<std::string> &names : {std::vector<std::string>{},
                                                {"hann"},
                                                {"hann", "rectangle", "gauss"},
                                                {"--points", "16"},
                                                {"--points", "65536"}}) {
    std::vector<std::string> arguments = names;
    arguments.insert(arguments.end(), {"--svg", folder / "w.svg"});
    const json report = Measure(arguments, "windows");
    const std::string svg = Contents(folder / "w.svg");
    ExpectWellFormed(svg);
    EXPECT_LT(svg.size(), 300000U);
    for (const char *text : {">Sample<", ">Bins from the tone<", ">ENBW<", ">RBW scaling<"})
      EXPECT_NE(svg.find(text), std::string::npos) << text;
    for (const json &window : report["windows"]) {
      std::ostringstream sidelobe;
      sidelobe << std::fixed;
      sidelobe.precision(1);
      sidelobe << '>' << window["highest_sidelobe_db"].get<double>() << " dB<";
      EXPECT_NE(svg.find(sidelobe.str()), std::string::npos) << sidelobe.str();
      EXPECT_NE(svg.find('>' + window["window"].get<std::string>()), std::string::npos);
    }
  }
}

TEST_F(Tool, Windows_WrongArguments_ExitWithTwoAndNameTheArgument) {
  std::string windows;
  for (const Shape &shape : Shapes()) windows += (windows.empty() ? "" : ", ") + std::string(shape.name);
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{"tukey"}, "NAME: unknown window 'tukey'; known are " + windows},
      {{"hann", ""}, "NAME: unknown window ''; known are " + windows},
      {{"--points", "15"}, "--points: '15' is not a whole number from 16 to 65536"},
      {{"--points", "65537"}, "--points: '65537' is not a whole number from 16 to 65536"},
      {{"--bogus"}, "The following argument was not expected: --bogus"},
      {{"--svg", folder / "none/w.svg"},
       "--svg: '" + (folder / "none/w.svg") + "' cannot be written: there is no folder '" +
           (folder / "none") + "'"},
      {{"--svg", folder / "w", "--csv", folder / "w"},
       "--csv: '" + (folder / "w") + "' is the file of --svg"},
  };
  for (auto [arguments, message] : cases) {
    arguments.insert(arguments.begin(), "windows");
    ExpectFailure(2, message, arguments);
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{});
}

} // namespace
