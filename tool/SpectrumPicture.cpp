#include "SpectrumPicture.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "Axis.h"
#include "Svg.h"
#include "Text.h"

namespace tool {

namespace {

constexpr double kWidth = 1000.0;
constexpr Box kPlot = {84.0, 92.0, 966.0, 492.0};
constexpr double kTable = 566.0; // the baseline of the table's head
constexpr double kRow = 19.0;
constexpr double kColumn = 462.0; // from one column of the table to the next
constexpr double kColumnEnd = 420.0;
constexpr char kRightQuiet[] = "class=\"quiet\" text-anchor=\"end\"";

constexpr char kStyles[] =
    "    .outside { fill: #f3f3f3 }\n"
    "    .key { stroke: #bbb }\n"
    "    .hold { stroke: #e59a3c }\n"
    "    .mean { stroke: #1c4f9c }\n"
    "    .floor { stroke: #2e7d32; stroke-width: 1.2; stroke-dasharray: 6 4; fill: none }\n"
    "    .mark { fill: #b3261e }\n"
    "    .number { fill: #b3261e; font-size: 11px; font-weight: bold;\n"
    "              paint-order: stroke; stroke: #fff; stroke-width: 3px; stroke-linejoin: round }\n"
    "    .leader { stroke: #b3261e; stroke-width: 0.7; fill: none }\n";

double HeightFor(const Measurement &m) {
  const int rows = std::max(1, static_cast<int>(m.peaks.size() + 1) / 2);
  return kTable + rows * kRow + 16.0;
}

class Picture {
public:
  Picture(std::ostream &stream, const Measurement &measured, Unit levelUnit, const std::string &heading,
          int number = 0)
      : svg(stream, kWidth, HeightFor(measured), heading, kStyles, number), m(measured), unit(levelUnit),
        title(heading) {
    LevelsOf(unit, m.mean, mean);
    LevelsOf(unit, m.hold, hold);
    // A bin of the whole spectrum reaches half the way to the next; a zoom ends at its outer points.
    const double margin = m.setup.zoom ? 0.0 : 0.5;
    x = {OffsetOf(-margin), OffsetOf(m.Points() - 1 + margin), kPlot.left, kPlot.right};
    ChooseLevels();
  }

  void Draw() {
    DrawHead();
    DrawAxes();
    DrawTraces();
    DrawMarks();
    DrawTable();
    svg.End();
  }

private:
  // Hertz from the centre, which differ even where the frequencies are one as doubles.
  double OffsetOf(double point) const { return (point - m.middle) * m.spacing; }

  // Whether there is something that the span of the recording does not vouch for.
  bool HasOutside() const {
    const double slack = 0.25; // of a point, for the rounding
    return m.recordedSpan > 0.0 &&
           (m.FrequencyOf(slack) < m.recordedCentre - 0.5 * m.recordedSpan ||
            m.FrequencyOf(m.Points() - 1 - slack) > m.recordedCentre + 0.5 * m.recordedSpan);
  }

  void ChooseLevels() {
    const double top = *std::max_element(hold.GetPtr(), hold.GetPtr() + hold.GetSize());
    if (unit == Unit::kVolt) {
      levelStep = RoundStep(top > 0.0 ? top * 1.08 : 1.0, 8);
      y = {0.0, levelStep * std::ceil((top > 0.0 ? top * 1.08 : 1.0) / levelStep), kPlot.bottom, kPlot.top};
      return;
    }
    if (m.totalPower <= 0.0) {
      y = {-200.0, -100.0, kPlot.bottom, kPlot.top};
      return;
    }
    // Single deep notches between bins must not press the picture flat.
    std::vector<double> sorted(mean.GetPtr(), mean.GetPtr() + mean.GetSize());
    const auto low = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 100);
    std::nth_element(sorted.begin(), low, sorted.end());
    const double bottom = std::max(*low, top - 160.0);
    levelStep = RoundStep(std::max(top - bottom, 10.0) + 12.0, 13);
    const double high = levelStep * std::ceil((top + 6.0) / levelStep);
    const double least = levelStep * std::floor((bottom - 2.0) / levelStep);
    y = {least, high, kPlot.bottom, kPlot.top};
  }

  // What else was done to the traces.
  std::string Treatment() const {
    std::string text;
    if (m.setup.detection)
      text += std::string(" · ") + m.setup.detection->kind->name + " of " + Grouped(m.setup.detection->ratio);
    if (m.setup.correction) text += " · corrected";
    return text;
  }

  void DrawHead() {
    svg.Text(kPlot.left, 30, "class=\"title\"", title);
    const std::string blocks = Grouped(m.blocks) + (m.blocks == 1 ? " block of " : " blocks of ") +
                               Grouped(m.setup.block) + (m.setup.zoom ? " samples" : " points");
    svg.Text(kPlot.left, 52, "class=\"quiet\"",
             "Centre " + FrequencyInFull(m.centre, m.resolution) + " · " +
                 (m.setup.zoom ? "span " + FrequencyInFull(m.setup.zoom->span, m.resolution)
                               : "sampling rate " + Quantity(m.rate, "Hz")) +
                 " · RBW " + Quantity(m.resolutionBandwidth, "Hz") + ", " + m.setup.window->name + " · " +
                 blocks + Treatment());
    const double keyY = 74;
    svg.Line("trace mean", kPlot.left, keyY, kPlot.left + 26, keyY);
    svg.Text(kPlot.left + 32, keyY + 4, "", "Mean power");
    svg.Line("trace hold", kPlot.left + 130, keyY, kPlot.left + 156, keyY);
    svg.Text(kPlot.left + 162, keyY + 4, "", "Peak hold");
    if (m.noiseFloor > 0.0) {
      svg.Line("floor", kPlot.left + 245, keyY, kPlot.left + 271, keyY);
      svg.Text(kPlot.left + 277, keyY + 4, "", "Noise floor " + LevelText(unit, m.noiseFloor));
    }
    if (HasOutside()) {
      svg.Rectangle("outside key", {kPlot.left + 462, keyY - 6, kPlot.left + 488, keyY + 6});
      svg.Text(kPlot.left + 494, keyY + 4, "", "Outside the span of " + Quantity(m.recordedSpan, "Hz"));
    }
    svg.Text(kPlot.right, keyY + 4, "text-anchor=\"end\"",
             (m.setup.zoom ? "Power in span " : "Total power ") + LevelText(unit, m.totalPower));
  }

  void DrawAxes() {
    // Beyond the span that the recording vouches for, filters shape the spectrum.
    if (HasOutside()) {
      const double middle = m.recordedCentre - m.centre;
      const double first = x(middle - m.recordedSpan / 2);
      const double last = x(middle + m.recordedSpan / 2);
      if (first > kPlot.left)
        svg.Rectangle("outside", {kPlot.left, kPlot.top, std::min(first, kPlot.right), kPlot.bottom});
      if (last < kPlot.right)
        svg.Rectangle("outside", {std::max(last, kPlot.left), kPlot.top, kPlot.right, kPlot.bottom});
    }
    const double step = RoundStep(x.high - x.low, 11);
    const double low = m.centre + x.low, high = m.centre + x.high;
    Prefix prefix = FrequencyPrefixFor(std::max(std::fabs(low), std::fabs(high)), m.resolution);
    std::string label = "Frequency";
    double origin = m.centre;
    std::vector<Tick> ticks = Ticks(low, high, step, prefix.factor);
    // Where the digits that differ are far behind those that do not, only the former are of interest; and
    // doubles have no more than sixteen.
    const bool isNarrow = x.high - x.low < 1e-12 * std::fabs(m.centre);
    const auto isLong = [](const Tick &tick) { return tick.label.size() > 9; };
    if (m.centre != 0.0 && (isNarrow || std::any_of(ticks.begin(), ticks.end(), isLong))) {
      origin = 0.0;
      prefix = FrequencyPrefixFor(0.5 * (x.high - x.low), m.resolution);
      ticks = Ticks(x.low, x.high, step, prefix.factor);
      label = "Offset from " + FrequencyInFull(m.centre, m.resolution);
    }
    for (const Tick &tick : ticks) {
      const double at = x(tick.value - origin);
      svg.Line("grid", at, kPlot.top, at, kPlot.bottom);
      svg.Text(at, kPlot.bottom + 18, "text-anchor=\"middle\"", tick.label);
    }
    svg.Text((kPlot.left + kPlot.right) / 2, kPlot.bottom + 40, "text-anchor=\"middle\"",
             label + " (" + prefix.letter + "Hz)");

    const Prefix levelPrefix = unit == Unit::kVolt ? PrefixFor(y.high) : Prefix{1.0, ""};
    for (const Tick &tick : Ticks(y.low, y.high, levelStep, levelPrefix.factor)) {
      svg.Line("grid", kPlot.left, y(tick.value), kPlot.right, y(tick.value));
      svg.Text(kPlot.left - 8, y(tick.value) + 4, "text-anchor=\"end\"", tick.label);
    }
    svg.TextUpwards(26, (kPlot.top + kPlot.bottom) / 2,
                    std::string(unit == Unit::kVolt ? "Amplitude (" : "Level (") + levelPrefix.letter +
                        NameOf(unit) + ")");
  }

  void DrawTraces() {
    svg.BeginClip(kPlot);
    DrawTrace("hold", hold);
    DrawTrace("mean", mean);
    if (m.noiseFloor > 0.0) {
      const double at = y(LevelOf(unit, m.noiseFloor));
      svg.Line("floor", kPlot.left, at, kPlot.right, at);
    }
    svg.EndClip();
    svg.Rectangle("frame", kPlot);
  }

  // Where several points share a column, the trace runs through the highest and the lowest of them, so that
  // no line of the spectrum is lost and the file stays small.
  void DrawTrace(const char *style, const QORN::VecReal64 &levels) {
    const int n = levels.GetSize();
    const int columns = static_cast<int>(kPlot.right - kPlot.left);
    const auto place = [&](double level) {
      return std::clamp(y(level), kPlot.top - 50.0, kPlot.bottom + 50.0);
    };
    std::vector<Point> points;
    if (n <= 2 * columns) {
      for (int k = 0; k < n; ++k) points.push_back({x(OffsetOf(k)), place(levels[k])});
    } else {
      for (int column = 0; column < columns; ++column) {
        const auto first = static_cast<int>(std::int64_t{n} * column / columns);
        const auto end = static_cast<int>(std::int64_t{n} * (column + 1) / columns);
        const auto [low, high] = std::minmax_element(levels.GetPtr(first), levels.GetPtr(end));
        const double at = kPlot.left + column + 0.5;
        const bool rising = low < high;
        points.push_back({at, place(rising ? *low : *high)});
        points.push_back({at, place(rising ? *high : *low)});
      }
    }
    svg.Trace(style, points);
  }

  void DrawMarks() {
    std::vector<Point> taken;
    for (std::size_t i = 0; i < m.peaks.size(); ++i) {
      const double atX = x(OffsetOf(m.peaks[i].place));
      const double atY = std::clamp(y(LevelOf(unit, m.peaks[i].power)), kPlot.top, kPlot.bottom);
      Point number{atX, atY - 12};
      const auto collides = [&](const Point &other) {
        return std::fabs(other.x - number.x) < 14 && std::fabs(other.y - number.y) < 13;
      };
      while (std::any_of(taken.begin(), taken.end(), collides)) number.y -= 6;
      taken.push_back(number);
      if (number.y < atY - 13) svg.Line("leader", atX, atY - 9, atX, number.y + 2);
      svg.Path("mark", {atX, atY - 1}, "l-4.5 -8h9z");
      svg.Text(number.x, number.y, "class=\"number\" text-anchor=\"middle\"", std::to_string(i + 1));
    }
  }

  void DrawTable() {
    if (m.peaks.empty()) {
      svg.Text(kPlot.left, kTable, "class=\"quiet\"",
               m.totalPower > 0.0 ? "No peaks stand out of the noise." : "All samples are zero.");
      return;
    }
    const std::size_t rows = (m.peaks.size() + 1) / 2;
    const std::size_t columns = m.peaks.size() > 1 ? 2 : 1;
    for (std::size_t column = 0; column < columns; ++column) {
      const double at = kPlot.left + static_cast<double>(column) * kColumn;
      svg.Text(at + 40, kTable - 5, "class=\"quiet\"", "Peak frequency");
      if (m.centre != 0.0) svg.Text(at + 280, kTable - 5, kRightQuiet, "From centre");
      svg.Text(at + kColumnEnd, kTable - 5, kRightQuiet, "Level");
      svg.Line("grid", at, kTable + 2, at + kColumnEnd, kTable + 2);
    }
    for (std::size_t i = 0; i < m.peaks.size(); ++i) {
      const double at = kPlot.left + static_cast<double>(i / rows) * kColumn;
      const double row = kTable + static_cast<double>(i % rows + 1) * kRow;
      const double frequency = m.FrequencyOf(m.peaks[i].place);
      svg.Text(at + 10, row, "class=\"number\" text-anchor=\"middle\"", std::to_string(i + 1));
      svg.Text(at + 40, row, "", Frequency(frequency, m.resolution));
      if (m.centre != 0.0)
        svg.Text(at + 280, row, "text-anchor=\"end\"", Frequency(frequency - m.centre, m.resolution));
      svg.Text(at + kColumnEnd, row, "text-anchor=\"end\"", LevelText(unit, m.peaks[i].power));
    }
  }

  Svg svg;
  const Measurement &m;
  Unit unit;
  std::string title;
  QORN::VecReal64 mean;
  QORN::VecReal64 hold;
  Scale x{};
  Scale y{};
  double levelStep = 10.0;
};

} // namespace

void WriteSvg(std::ostream &out, const Measurement &measurement, Unit unit, const std::string &title) {
  Picture(out, measurement, unit, title).Draw();
}

void WriteSvgs(std::ostream &out, const std::vector<TitledMeasurement> &measurements, Unit unit) {
  double height = 0.0;
  for (const TitledMeasurement &one : measurements) height += HeightFor(*one.measurement);
  out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << Fixed(kWidth, 0) << "\" height=\""
      << Fixed(height, 0) << "\" viewBox=\"0 0 " << Fixed(kWidth, 0) << ' ' << Fixed(height, 0) << "\">\n";
  double top = 0.0;
  int number = 0;
  for (const TitledMeasurement &one : measurements) {
    out << "<g transform=\"translate(0 " << Fixed(top, 0) << ")\">\n";
    Picture(out, *one.measurement, unit, one.title, number++).Draw();
    out << "</g>\n";
    top += HeightFor(*one.measurement);
  }
  out << "</svg>\n";
}

} // namespace tool
