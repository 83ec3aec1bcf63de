#include "FilterPicture.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "Axis.h"
#include "Panel.h"
#include "Svg.h"
#include "Text.h"

namespace tool {

namespace {

constexpr double kWidth = 1000.0;
constexpr double kMargin = 24.0;
constexpr Box kTaps = {76.0, 100.0, 484.0, 320.0};
constexpr Box kResponse = {566.0, 100.0, 974.0, 320.0};
constexpr Box kPassBand = {76.0, 400.0, 484.0, 620.0};
constexpr Box kDelay = {566.0, 400.0, 974.0, 620.0};
constexpr double kTable = 696.0; // the baseline of its first row
constexpr double kRow = 20.0;
constexpr double kColumn = 490.0; // from one column of the table to the next
constexpr double kName = 150.0;   // from a name to its value
constexpr std::size_t kMostStems = 130;

constexpr char kStyles[] =
    "    .curve { stroke: #1c4f9c; stroke-width: 1.3 }\n"
    "    .stem { stroke: #1c4f9c; stroke-width: 1; fill: none }\n"
    "    .dot { fill: #1c4f9c }\n"
    "    .imaginary { stroke: #e59a3c }\n"
    "    .imaginary.dot { fill: #e59a3c }\n"
    "    .zero { stroke: #888; stroke-width: 1; fill: none }\n"
    "    .limit { stroke: #b3261e; stroke-width: 1; stroke-dasharray: 5 3; fill: none }\n"
    "    .edge { stroke: #2e7d32; stroke-width: 1; stroke-dasharray: 2 3; fill: none }\n"
    "    .level { fill: #b3261e; font-size: 11px; font-weight: bold;\n"
    "             paint-order: stroke; stroke: #fff; stroke-width: 3px }\n";

class Sheet {
public:
  Sheet(std::ostream &out, const FilterFigures &figures)
      : f(figures), table(TableOf(figures)), title("Filter " + TitleOf(*f.design.kind, f.design.parameters)),
        svg(out, kWidth, kTable + static_cast<double>((table.size() + 1) / 2) * kRow, title, kStyles) {
    ChooseFrequencies();
  }

  void Draw() {
    svg.Text(kMargin, 32, "class=\"title\"", title);
    svg.Text(
        kMargin, 54, "class=\"quiet\"",
        "Dashed: the highest gain in the stop band; half the power and half the amplitude in the pass band. "
        "Dotted: the edges of the 3 dB band.");
    DrawTaps();
    DrawResponse();
    DrawPassBand();
    DrawGroupDelay();
    DrawTable();
    svg.End();
  }

private:
  double Level(double gain) const { return 20.0 * std::log10(std::max(gain, 1e-30)); }

  // All frequencies, unless the pass band would be a line at one end of them.
  void ChooseFrequencies() {
    const double last = f.FrequencyOf(f.gain.size() - 1);
    const double reach = std::max(f.nullHigh.value_or(last), f.nullLow ? -*f.nullLow : 0.0);
    double shown = last;
    if (12.0 * reach < last) shown = 12.0 * reach;
    low = f.design.isComplex ? -shown : 0.0;
    high = shown;
    const double margin = 0.25 * f.width6dB.Width();
    passLow = std::max(f.first, f.width6dB.low - margin);
    passHigh = std::min(last, f.width6dB.high + margin);
  }

  void DrawTaps() {
    const auto &taps = f.design.taps;
    double least = 0.0;
    double most = 0.0;
    for (const auto &tap : taps) {
      least = std::min({least, tap.real(), tap.imag()});
      most = std::max({most, tap.real(), tap.imag()});
    }
    const double margin = 0.06 * (most - least);
    // Small taps are told in units of a power of ten.
    const double largest = std::max(most, -least);
    const int power =
        largest < 0.01 || largest >= 1000.0 ? static_cast<int>(std::floor(std::log10(largest))) : 0;
    const std::string unit = power == 0 ? "" : "in units of 1e" + std::to_string(power);
    const double last = static_cast<double>(taps.size()) - 1.0;
    const Scale x = {-0.5, last + 0.5, kTaps.left, kTaps.right};
    const Scale y = {least < 0.0 ? least - margin : 0.0, most > 0.0 ? most + margin : 0.0, kTaps.bottom,
                     kTaps.top};
    DrawGrid(svg, kTaps, f.design.kind->isStep ? "Taps: the step response" : "Taps: the impulse response", x,
             1.0, "Tap", y, RoundStep(y.high - y.low, 6),
             (f.design.isComplex ? "real blue, imaginary orange " : "") + unit, std::pow(10.0, power));
    svg.Line("zero", kTaps.left, y(0.0), kTaps.right, y(0.0));
    if (f.design.isComplex)
      DrawPart(x, y, "imaginary ", [](const std::complex<double> &tap) { return tap.imag(); });
    DrawPart(x, y, "", [](const std::complex<double> &tap) { return tap.real(); });
    svg.Rectangle("frame", kTaps);
  }

  template <class Part>
  void DrawPart(const Scale &x, const Scale &y, const std::string &style, const Part &part) {
    const auto &taps = f.design.taps;
    std::vector<Point> points;
    for (std::size_t i = 0; i < taps.size(); ++i)
      points.push_back({x(static_cast<double>(i)), y(part(taps[i]))});
    if (points.size() > kMostStems) {
      svg.Trace(style + "curve", points);
      return;
    }
    for (const Point &point : points) svg.Line((style + "stem").c_str(), point.x, y(0.0), point.x, point.y);
    const bool small = points.size() > 60;
    for (const Point &point : points)
      svg.Path(style + "dot", {point.x - (small ? 1.5 : 2.5), point.y},
               small ? "a1.5 1.5 0 1 0 3 0a1.5 1.5 0 1 0 -3 0" : "a2.5 2.5 0 1 0 5 0a2.5 2.5 0 1 0 -5 0");
  }

  void DrawResponse() {
    const Scale x = {low, high, kResponse.left, kResponse.right};
    const double top = Level(*std::max_element(f.gain.begin(), f.gain.end()));
    const double stop = f.stopGain ? Level(*f.stopGain) : LowestShown(top);
    const double floor = 20.0 * std::floor((std::max(stop, top - 140.0) - 30.0) / 20.0);
    const double step = RoundStep(top - floor, 6);
    const Scale y = {floor, top + 0.06 * (top - floor), kResponse.bottom, kResponse.top};
    DrawFrequencyGrid(svg, kResponse, f.design.kind->isStep ? "Gain of the pulse" : "Gain", x, y, step, "dB");
    svg.BeginClip(kResponse);
    DrawCurve(x, y, Shown(x), [&](std::size_t i) { return std::max(Level(f.gain[i]), floor - 10.0); });
    if (f.stopGain) {
      const double level = y(Level(*f.stopGain));
      const double left = f.nullLow && !f.nullHigh ? x(low) : f.nullHigh ? x(*f.nullHigh) : x(low);
      const double right = f.nullLow && !f.nullHigh ? x(*f.nullLow) : kResponse.right;
      svg.Line("limit", left, level, right, level);
      if (f.nullLow && f.nullHigh) svg.Line("limit", kResponse.left, level, x(*f.nullLow), level);
      const bool atLeft = f.nullLow && !f.nullHigh;
      svg.Text(atLeft ? kResponse.left + 5 : kResponse.right - 5, level - 5,
               atLeft ? "class=\"level\"" : "class=\"level\" text-anchor=\"end\"",
               DecibelText(*f.stopGain / f.passGain, 1));
    }
    svg.EndClip();
    svg.Rectangle("frame", kResponse);
  }

  double LowestShown(double top) const {
    return std::max(Level(*std::min_element(f.gain.begin(), f.gain.end())), top - 100.0);
  }

  // The points of the response that show, and one to either side.
  std::pair<std::size_t, std::size_t> Shown(const Scale &x) const {
    return {static_cast<std::size_t>(std::max(std::floor((x.low - f.first) / f.spacing), 0.0)),
            std::min(f.gain.size() - 1, static_cast<std::size_t>(std::ceil((x.high - f.first) / f.spacing)))};
  }

  template <class Value>
  void DrawCurve(const Scale &x, const Scale &y, const std::pair<std::size_t, std::size_t> &range,
                 const Value &value) {
    svg.Trace("curve", Thinned(range.first, range.second, [&](std::size_t i) {
                return Point{x(f.FrequencyOf(i)), y(value(i))};
              }));
  }

  void DrawPassBand() {
    const Scale x = {passLow, passHigh, kPassBand.left, kPassBand.right};
    const double top = Level(*std::max_element(f.gain.begin(), f.gain.end()) / f.passGain);
    const Scale y = {-10.0, std::max(1.0, std::ceil(top + 0.3)), kPassBand.bottom, kPassBand.top};
    DrawFrequencyGrid(svg, kPassBand, "Pass band", x, y, 1.0, "dB");
    svg.BeginClip(kPassBand);
    DrawCurve(x, y, Shown(x), [&](std::size_t i) { return std::max(Level(f.gain[i] / f.passGain), -12.0); });
    svg.EndClip();
    DrawEdges(x, kPassBand);
    for (const double share : {std::sqrt(0.5), 0.5}) {
      const double level = Level(share);
      svg.Line("limit", kPassBand.left, y(level), kPassBand.right, y(level));
    }
    svg.Rectangle("frame", kPassBand);
  }

  // Where the gain is half the power.
  void DrawEdges(const Scale &x, const Box &box) {
    for (const double edge : {f.width3dB.low, f.width3dB.high})
      if (edge > x.low && edge < x.high) svg.Line("edge", x(edge), box.top, x(edge), box.bottom);
  }

  void DrawGroupDelay() {
    const Scale x = {passLow, passHigh, kDelay.left, kDelay.right};
    // A delay that is constant is to look so.
    const double middle = 0.5 * (f.delays.low + f.delays.high);
    const double half = std::max(0.75 * f.delays.Width(), 1.0);
    const Scale y = {middle - half, middle + half, kDelay.bottom, kDelay.top};
    DrawFrequencyGrid(svg, kDelay, "Group delay", x, y, RoundStep(2.0 * half, 8), "samples");
    // Around nulls of the gain, the delay of what is not there would only distract.
    auto [from, to] = Shown(x);
    const auto middlePoint = static_cast<std::size_t>(std::lround((f.passFrequency - f.first) / f.spacing));
    const double least = 0.1 * f.passGain;
    for (std::size_t i = middlePoint; i > from; --i)
      if (f.gain[i] < least) from = i;
    for (std::size_t i = middlePoint; i < to; ++i)
      if (f.gain[i] < least) to = i;
    svg.BeginClip(kDelay);
    DrawCurve(x, y, {from, to},
              [&](std::size_t i) { return std::clamp(f.delay[i], y.low - half, y.high + half); });
    svg.EndClip();
    DrawEdges(x, kDelay);
    svg.Rectangle("frame", kDelay);
  }

  void DrawTable() {
    const std::size_t rows = (table.size() + 1) / 2;
    for (std::size_t i = 0; i < table.size(); ++i) {
      const double left = kMargin + static_cast<double>(i / rows) * kColumn;
      const double baseline = kTable + static_cast<double>(i % rows) * kRow;
      svg.Text(left, baseline, "class=\"quiet\"", table[i].first);
      svg.Text(left + kName, baseline, "", table[i].second);
      svg.Line("grid", left, baseline + 6, left + kColumn - 30, baseline + 6);
    }
  }

  const FilterFigures &f;
  FigureTable table;
  std::string title;
  Svg svg;
  double low = 0.0, high = 0.0;         // of the response, in hertz
  double passLow = 0.0, passHigh = 0.0; // of the pass band
};

} // namespace

void WriteSvg(std::ostream &out, const FilterFigures &figures) { Sheet(out, figures).Draw(); }

} // namespace tool
