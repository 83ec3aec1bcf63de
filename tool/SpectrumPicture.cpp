#include "SpectrumPicture.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "Axis.h"
#include "Report.h"
#include "Text.h"

namespace tool {

namespace {

constexpr double kWidth = 1000.0;
constexpr double kLeft = 84.0;
constexpr double kRight = 976.0;
constexpr double kTop = 92.0;
constexpr double kBottom = 492.0;
constexpr double kTable = 566.0; // the baseline of the table's head
constexpr double kRow = 19.0;
constexpr double kColumn = 472.0; // from one column of the table to the next
constexpr double kColumnEnd = 420.0;
constexpr char kRightQuiet[] = "class=\"quiet\" text-anchor=\"end\"";

constexpr char kStyle[] =
    "  <style>\n"
    "    text { font-family: 'DejaVu Sans', 'Segoe UI', Helvetica, Arial, sans-serif; font-size: 12px; fill: "
    "#222 }\n"
    "    .title { font-size: 17px; font-weight: bold }\n"
    "    .quiet { fill: #555 }\n"
    "    .grid { stroke: #dcdcdc; stroke-width: 1; fill: none }\n"
    "    .frame { stroke: #444; stroke-width: 1; fill: none }\n"
    "    .outside { fill: #f3f3f3 }\n"
    "    .key { stroke: #bbb }\n"
    "    .trace { fill: none; stroke-width: 1.3; stroke-linejoin: round }\n"
    "    .hold { stroke: #e59a3c }\n"
    "    .mean { stroke: #1c4f9c }\n"
    "    .floor { stroke: #2e7d32; stroke-width: 1.2; stroke-dasharray: 6 4; fill: none }\n"
    "    .mark { fill: #b3261e }\n"
    "    .number { fill: #b3261e; font-size: 11px; font-weight: bold;\n"
    "              paint-order: stroke; stroke: #fff; stroke-width: 3px; stroke-linejoin: round }\n"
    "    .leader { stroke: #b3261e; stroke-width: 0.7; fill: none }\n"
    "  </style>\n";

// Text for an XML document. What is not valid there, control characters and broken UTF-8, becomes a question
// mark.
std::string Escaped(const std::string &text) {
  std::string result;
  for (std::size_t i = 0; i < text.size();) {
    const auto c = static_cast<unsigned char>(text[i]);
    std::size_t length = 1;
    if (c >= 0xC2 && c < 0xF5) length = c < 0xE0 ? 2 : c < 0xF0 ? 3 : 4;
    bool valid = c >= 0x20 && (c < 0x7F || length > 1) && i + length <= text.size();
    for (std::size_t k = 1; valid && k < length; ++k)
      valid = (static_cast<unsigned char>(text[i + k]) & 0xC0) == 0x80;
    // The shortest forms alone, no surrogates, and nothing above the last code point.
    if (valid && length > 2) {
      const auto second = static_cast<unsigned char>(text[i + 1]);
      if ((c == 0xE0 && second < 0xA0) || (c == 0xED && second > 0x9F) || (c == 0xF0 && second < 0x90) ||
          (c == 0xF4 && second > 0x8F) ||
          (c == 0xEF && second == 0xBF && static_cast<unsigned char>(text[i + 2]) > 0xBD))
        valid = false;
    }
    if (!valid) {
      result += '?';
      ++i;
      continue;
    }
    if (c == '&')
      result += "&amp;";
    else if (c == '<')
      result += "&lt;";
    else if (c == '>')
      result += "&gt;";
    else if (c == '"')
      result += "&quot;";
    else
      result.append(text, i, length);
    i += length;
  }
  return result;
}

// A linear map of values to a side of the drawing.
struct Scale {
  double low, high, from, to;
  double operator()(double value) const { return from + (value - low) / (high - low) * (to - from); }
};

class Picture {
public:
  Picture(std::ostream &stream, const Measurement &measured, Unit levelUnit)
      : out(stream), m(measured), unit(levelUnit) {
    LevelsOf(unit, m.mean, mean);
    LevelsOf(unit, m.hold, hold);
    const double half = 0.5 * m.spacing;
    x = {m.FrequencyOf(0) - half, m.FrequencyOf(m.Points() - 1) + half, kLeft, kRight};
    ChooseLevels();
  }

  void Draw(const std::string &title) {
    const int rows = std::max(1, static_cast<int>(m.peaks.size() + 1) / 2);
    const double height = kTable + rows * kRow + 16.0;
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << Number(kWidth) << "\" height=\""
        << Number(height) << "\" viewBox=\"0 0 " << Number(kWidth) << ' ' << Number(height) << "\">\n"
        << "  <title>" << Escaped(title) << "</title>\n"
        << kStyle << "  <rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    DrawHead(title);
    DrawAxes();
    DrawTraces();
    DrawMarks();
    DrawTable();
    out << "</svg>\n";
  }

private:
  static std::string Number(double value) {
    std::string text = Fixed(value, 1);
    if (text.size() > 2 && text.compare(text.size() - 2, 2, ".0") == 0) text.resize(text.size() - 2);
    return text;
  }

  void Text(double atX, double atY, const std::string &attributes, const std::string &text) {
    out << "  <text x=\"" << Number(atX) << "\" y=\"" << Number(atY) << '"' << (attributes.empty() ? "" : " ")
        << attributes << '>' << Escaped(text) << "</text>\n";
  }

  void Line(const char *style, double x1, double y1, double x2, double y2) {
    out << "  <path class=\"" << style << "\" d=\"M" << Number(x1) << ' ' << Number(y1) << 'L' << Number(x2)
        << ' ' << Number(y2) << "\"/>\n";
  }

  bool HasOutside() const { return m.recordedSpan > 0.0 && m.recordedSpan < m.rate; }

  void ChooseLevels() {
    const double top = *std::max_element(hold.GetPtr(), hold.GetPtr() + hold.GetSize());
    if (unit == Unit::kVolt) {
      levelStep = RoundStep(top > 0.0 ? top * 1.08 : 1.0, 8);
      y = {0.0, levelStep * std::ceil((top > 0.0 ? top * 1.08 : 1.0) / levelStep), kBottom, kTop};
      return;
    }
    if (m.totalPower <= 0.0) {
      y = {-200.0, -100.0, kBottom, kTop};
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
    y = {least, high, kBottom, kTop};
  }

  void DrawHead(const std::string &title) {
    Text(kLeft, 30, "class=\"title\"", title);
    Text(kLeft, 52, "class=\"quiet\"",
         "Centre " + CentreText(m) + " · sampling rate " + Quantity(m.rate, "Hz") + " · RBW " +
             Quantity(m.resolutionBandwidth, "Hz") + ", " + m.setup.window->name + " · " + Grouped(m.blocks) +
             (m.blocks == 1 ? " block of " : " blocks of ") + Grouped(m.Points()) + " points");
    const double keyY = 74;
    Line("trace mean", kLeft, keyY, kLeft + 26, keyY);
    Text(kLeft + 32, keyY + 4, "", "Mean power");
    Line("trace hold", kLeft + 130, keyY, kLeft + 156, keyY);
    Text(kLeft + 162, keyY + 4, "", "Peak hold");
    if (m.noiseFloor > 0.0) {
      Line("floor", kLeft + 245, keyY, kLeft + 271, keyY);
      Text(kLeft + 277, keyY + 4, "", "Noise floor " + LevelText(unit, m.noiseFloor));
    }
    if (HasOutside()) {
      out << "  <rect class=\"outside key\" x=\"" << Number(kLeft + 462) << "\" y=\"" << Number(keyY - 6)
          << "\" width=\"26\" height=\"12\"/>\n";
      Text(kLeft + 494, keyY + 4, "", "Outside the span of " + Quantity(m.recordedSpan, "Hz"));
    }
    Text(kRight, keyY + 4, "text-anchor=\"end\"", "Total power " + LevelText(unit, m.totalPower));
  }

  void DrawAxes() {
    // Beyond the span that the recording vouches for, filters shape the spectrum.
    if (HasOutside()) {
      const double first = x(m.centre - m.recordedSpan / 2);
      const double last = x(m.centre + m.recordedSpan / 2);
      for (const auto &[from, to] : {std::pair(kLeft, first), std::pair(last, kRight)})
        out << "  <rect class=\"outside\" x=\"" << Number(from) << "\" y=\"" << Number(kTop) << "\" width=\""
            << Number(to - from) << "\" height=\"" << Number(kBottom - kTop) << "\"/>\n";
    }
    const double step = RoundStep(x.high - x.low, 11);
    Prefix prefix = FrequencyPrefixFor(std::max(std::fabs(x.low), std::fabs(x.high)), m.spacing);
    std::string label = "Frequency";
    double origin = 0.0;
    std::vector<Tick> ticks = Ticks(x.low, x.high, step, prefix.factor);
    // Where the digits that differ are far behind those that do not, only the former are of interest.
    const auto isLong = [](const Tick &tick) { return tick.label.size() > 9; };
    if (m.centre != 0.0 && std::any_of(ticks.begin(), ticks.end(), isLong)) {
      origin = m.centre;
      prefix = FrequencyPrefixFor(m.rate / 2, m.spacing);
      ticks = Ticks(x.low - origin, x.high - origin, step, prefix.factor);
      label = "Offset from " + CentreText(m);
    }
    for (const Tick &tick : ticks) {
      const double at = x(tick.value + origin);
      Line("grid", at, kTop, at, kBottom);
      Text(at, kBottom + 18, "text-anchor=\"middle\"", tick.label);
    }
    Text((kLeft + kRight) / 2, kBottom + 40, "text-anchor=\"middle\"", label + " (" + prefix.letter + "Hz)");

    const Prefix levelPrefix = unit == Unit::kVolt ? PrefixFor(y.high) : Prefix{1.0, ""};
    for (const Tick &tick : Ticks(y.low, y.high, levelStep, levelPrefix.factor)) {
      Line("grid", kLeft, y(tick.value), kRight, y(tick.value));
      Text(kLeft - 8, y(tick.value) + 4, "text-anchor=\"end\"", tick.label);
    }
    const double middle = (kTop + kBottom) / 2;
    out << "  <text class=\"axis\" transform=\"translate(26 " << Number(middle)
        << ") rotate(-90)\" text-anchor=\"middle\">" << (unit == Unit::kVolt ? "Amplitude (" : "Level (")
        << levelPrefix.letter << NameOf(unit) << ")</text>\n";
  }

  void DrawTraces() {
    out << "  <clipPath id=\"plot\"><rect x=\"" << Number(kLeft) << "\" y=\"" << Number(kTop) << "\" width=\""
        << Number(kRight - kLeft) << "\" height=\"" << Number(kBottom - kTop) << "\"/></clipPath>\n"
        << "  <g clip-path=\"url(#plot)\">\n";
    DrawTrace("hold", hold);
    DrawTrace("mean", mean);
    if (m.noiseFloor > 0.0) {
      const double at = y(LevelOf(unit, m.noiseFloor));
      Line("floor", kLeft, at, kRight, at);
    }
    out << "  </g>\n  <rect class=\"frame\" x=\"" << Number(kLeft) << "\" y=\"" << Number(kTop)
        << "\" width=\"" << Number(kRight - kLeft) << "\" height=\"" << Number(kBottom - kTop) << "\"/>\n";
  }

  // Where several bins share a column, the trace runs through the highest and the lowest of them, so that no
  // line of the spectrum is lost and the file stays small.
  void DrawTrace(const char *style, const QORN::VecReal64 &levels) {
    const int n = levels.GetSize();
    const int columns = static_cast<int>(kRight - kLeft);
    const auto place = [&](double level) {
      return Number(std::clamp(y(level), kTop - 50.0, kBottom + 50.0));
    };
    out << "  <path class=\"trace " << style << "\" d=\"";
    const char *command = "M";
    if (n <= 2 * columns) {
      for (int k = 0; k < n; ++k) {
        out << command << Number(x(m.FrequencyOf(k))) << ' ' << place(levels[k]);
        command = "L";
      }
    } else {
      for (int column = 0; column < columns; ++column) {
        const auto first = static_cast<int>(std::int64_t{n} * column / columns);
        const auto end = static_cast<int>(std::int64_t{n} * (column + 1) / columns);
        const auto [low, high] = std::minmax_element(levels.GetPtr(first), levels.GetPtr(end));
        const double at = kLeft + column + 0.5;
        const bool rising = low < high;
        out << command << Number(at) << ' ' << place(rising ? *low : *high) << 'L' << Number(at) << ' '
            << place(rising ? *high : *low);
        command = "L";
      }
    }
    out << "\"/>\n";
  }

  void DrawMarks() {
    struct Box {
      double x, y;
    };
    std::vector<Box> taken;
    for (std::size_t i = 0; i < m.peaks.size(); ++i) {
      const double atX = x(m.FrequencyOf(m.peaks[i].bin));
      const double atY = std::clamp(y(LevelOf(unit, m.peaks[i].power)), kTop, kBottom);
      Box number{atX, atY - 12};
      const auto collides = [&](const Box &other) {
        return std::fabs(other.x - number.x) < 14 && std::fabs(other.y - number.y) < 13;
      };
      while (std::any_of(taken.begin(), taken.end(), collides)) number.y -= 6;
      taken.push_back(number);
      if (number.y < atY - 13) Line("leader", atX, atY - 9, atX, number.y + 2);
      out << "  <path class=\"mark\" d=\"M" << Number(atX) << ' ' << Number(atY - 1) << "l-4.5 -8h9z\"/>\n";
      Text(number.x, number.y, "class=\"number\" text-anchor=\"middle\"", std::to_string(i + 1));
    }
  }

  void DrawTable() {
    if (m.peaks.empty()) {
      Text(kLeft, kTable, "class=\"quiet\"",
           m.totalPower > 0.0 ? "No peaks stand out of the noise." : "All samples are zero.");
      return;
    }
    const std::size_t rows = (m.peaks.size() + 1) / 2;
    const std::size_t columns = m.peaks.size() > 1 ? 2 : 1;
    for (std::size_t column = 0; column < columns; ++column) {
      const double at = kLeft + static_cast<double>(column) * kColumn;
      Text(at + 40, kTable - 5, "class=\"quiet\"", "Peak frequency");
      if (m.centre != 0.0) Text(at + 280, kTable - 5, kRightQuiet, "From centre");
      Text(at + kColumnEnd, kTable - 5, kRightQuiet, "Level");
      Line("grid", at, kTable + 2, at + kColumnEnd, kTable + 2);
    }
    for (std::size_t i = 0; i < m.peaks.size(); ++i) {
      const double at = kLeft + static_cast<double>(i / rows) * kColumn;
      const double row = kTable + static_cast<double>(i % rows + 1) * kRow;
      const double frequency = m.FrequencyOf(m.peaks[i].bin);
      Text(at + 10, row, "class=\"number\" text-anchor=\"middle\"", std::to_string(i + 1));
      Text(at + 40, row, "", Frequency(frequency, m.spacing));
      if (m.centre != 0.0)
        Text(at + 280, row, "text-anchor=\"end\"", Frequency(frequency - m.centre, m.spacing));
      Text(at + kColumnEnd, row, "text-anchor=\"end\"", LevelText(unit, m.peaks[i].power));
    }
  }

  std::ostream &out;
  const Measurement &m;
  Unit unit;
  QORN::VecReal64 mean;
  QORN::VecReal64 hold;
  Scale x{};
  Scale y{};
  double levelStep = 10.0;
};

} // namespace

void WriteSvg(std::ostream &out, const Measurement &measurement, Unit unit, const std::string &title) {
  Picture(out, measurement, unit).Draw(title);
}

} // namespace tool
