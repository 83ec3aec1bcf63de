#include "WindowFigures.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <iomanip>
#include <nlohmann/json.hpp>

#include "Text.h"

namespace tool {

namespace {

constexpr int kPerBin = WindowFigures::kPerBin;

// The response to a tone at so many bins from its own, in decibels below the top.
double ResponseAt(const QORN::VecReal32 &weights, double bins) {
  constexpr double kTurn = 6.283185307179586;
  double top = 0.0;
  std::complex<double> sum;
  for (int k = 0; k < weights.GetSize(); ++k) {
    const auto weight = static_cast<double>(weights[k]);
    top += weight;
    sum += std::polar(weight, -kTurn * bins * k / weights.GetSize());
  }
  return QORN::UnitConversion::VoltageRatio2dB(std::abs(sum) / top);
}

// The response from the top to the farthest frequency.
QORN::VecReal64 ResponseOf(const QORN::VecReal32 &weights) {
  const int points = weights.GetSize();
  QORN::VecReal64 padded(points * kPerBin);
  for (int k = 0; k < points; ++k) padded[k] = static_cast<double>(weights[k]);
  QORN::VecCplx64 transform;
  QORN::FT().Forward(transform, padded);
  QORN::VecReal64 magnitude;
  QORN::MathUtils::Abs(magnitude, transform);
  magnitude *= 1.0 / magnitude[0];
  QORN::VecReal64 response;
  QORN::UnitConversion::VoltageRatio2dB(response, magnitude);
  response.Resize(points * kPerBin / 2 + 1);
  return response;
}

// The width in bins between the points that lie this far below the top.
double WidthAt(double level, const QORN::VecReal64 &response, const QORN::VecReal32 &weights) {
  int above = 0;
  while (above + 2 < response.GetSize() && response[above + 1] > level) ++above;
  double near = static_cast<double>(above) / kPerBin;
  double far = near + 1.0 / kPerBin;
  for (int i = 0; i < 20; ++i) {
    const double middle = 0.5 * (near + far);
    (ResponseAt(weights, middle) > level ? near : far) = middle;
  }
  return near + far;
}

// The level of the only maximum between two points of the response.
double TopBetween(int first, int last, const QORN::VecReal32 &weights) {
  double left = static_cast<double>(first) / kPerBin;
  double right = static_cast<double>(last) / kPerBin;
  for (int i = 0; i < 12; ++i) {
    const double third = (right - left) / 3.0;
    if (ResponseAt(weights, left + third) < ResponseAt(weights, right - third))
      left += third;
    else
      right -= third;
  }
  return ResponseAt(weights, 0.5 * (left + right));
}

} // namespace

WindowFigures FiguresOf(const WindowKind &kind, int points) {
  const std::unique_ptr<QORN::Window> window = MakeWindow(kind, points);
  WindowFigures figures{};
  figures.kind = &kind;
  figures.noiseBandwidth = static_cast<double>(window->GetENBW());
  figures.rbwScaling = static_cast<double>(window->GetEffectiveRBWScaling());
  QORN::VecReal32 &weights = figures.weights;
  window->GetCoefficients(weights);
  QORN::VecReal64 &response = figures.response;
  response = ResponseOf(weights);
  figures.width3dB = WidthAt(-10.0 * std::log10(2.0), response, weights);
  figures.width6dB = WidthAt(-20.0 * std::log10(2.0), response, weights);
  figures.scallopingLoss = -ResponseAt(weights, 0.5);

  // A flat top may have minima of its own, so the search for the end of the main lobe starts on its slope.
  const int last = response.GetSize() - 1;
  int end = static_cast<int>(0.5 * figures.width6dB * kPerBin);
  while (end < last && response[end + 1] < response[end]) ++end;
  figures.mainLobe = static_cast<double>(end) / kPerBin;
  int highest = end;
  for (int i = end + 1; i < last; ++i)
    if (response[i] > response[highest]) highest = i;
  if (highest > end) figures.sidelobe = TopBetween(highest - 1, highest + 1, weights);
  weights *= 1.0F / weights.Max();
  return figures;
}

std::vector<std::vector<std::string>> TableOf(const std::vector<WindowFigures> &figures) {
  std::vector<std::vector<std::string>> table = {
      {"Window", "ENBW", "3 dB width", "6 dB width", "Scalloping", "Sidelobe", "RBW scaling"},
      {"", "bins", "bins", "bins", "dB", "dB", "bins"}};
  for (const WindowFigures &f : figures)
    table.push_back({f.kind->Title(), Fixed(f.noiseBandwidth, 4), Fixed(f.width3dB, 4), Fixed(f.width6dB, 4),
                     Fixed(f.scallopingLoss, 3), f.sidelobe ? Fixed(*f.sidelobe, 1) : "none",
                     Fixed(f.rbwScaling, 4)});
  return table;
}

void WriteText(std::ostream &out, const std::vector<WindowFigures> &figures, int points) {
  out << "Windows of " << Grouped(points) << " points\n";
  constexpr int kWidths[] = {19, 7, 11, 11, 11, 9, 12};
  for (const std::vector<std::string> &row : TableOf(figures)) {
    for (std::size_t i = 0; i < row.size(); ++i)
      out << (i == 0 ? std::left : std::right) << std::setw(kWidths[i]) << row[i];
    out << '\n';
  }
}

void WriteJson(std::ostream &out, const std::vector<WindowFigures> &figures, int points) {
  nlohmann::ordered_json report;
  report["points"] = points;
  report["windows"] = nlohmann::ordered_json::array();
  for (const WindowFigures &f : figures) {
    nlohmann::ordered_json window;
    window["window"] = f.kind->name;
    if (*f.kind->symbol != '\0') window[f.kind->symbol] = f.kind->parameter;
    window["noise_bandwidth_bins"] = f.noiseBandwidth;
    window["width_3db_bins"] = f.width3dB;
    window["width_6db_bins"] = f.width6dB;
    window["scalloping_loss_db"] = f.scallopingLoss;
    window["highest_sidelobe_db"] = f.sidelobe ? nlohmann::ordered_json(*f.sidelobe) : nullptr;
    window["rbw_scaling_bins"] = f.rbwScaling;
    report["windows"].push_back(window);
  }
  out << report.dump(2) << '\n';
}

void WriteCsv(std::ostream &out, const std::vector<WindowFigures> &figures) {
  out << "window,noise_bandwidth_bins,width_3dB_bins,width_6dB_bins,scalloping_loss_dB,highest_sidelobe_dB,"
         "rbw_scaling_bins\n";
  for (const WindowFigures &f : figures)
    out << f.kind->name << ',' << Significant(f.noiseBandwidth, 6) << ',' << Significant(f.width3dB, 6) << ','
        << Significant(f.width6dB, 6) << ',' << Significant(f.scallopingLoss, 6) << ','
        << (f.sidelobe ? Significant(*f.sidelobe, 6) : "") << ',' << Significant(f.rbwScaling, 6) << '\n';
}

} // namespace tool
