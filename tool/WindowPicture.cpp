#include "WindowPicture.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "Axis.h"
#include "Svg.h"
#include "Text.h"

namespace tool {

namespace {

constexpr double kWidth = 1000.0;
constexpr double kMargin = 24.0;
constexpr double kHead = 70.0;
constexpr double kTitle = 24.0;  // above a panel
constexpr double kLabels = 46.0; // below the last panel of a column
constexpr double kRow = 20.0;    // of the table

constexpr char kStyles[] = "    .weights { fill: #1c4f9c; fill-opacity: 0.12; stroke: #1c4f9c }\n"
                           "    .response { stroke: #1c4f9c; stroke-width: 1.1 }\n"
                           "    .sidelobe { stroke: #b3261e; stroke-width: 1; stroke-dasharray: 5 3 }\n"
                           "    .level { fill: #b3261e; font-size: 11px; font-weight: bold;\n"
                           "             paint-order: stroke; stroke: #fff; stroke-width: 3px }\n";

// Where things are, by the number of windows: few stand below each other, many in two columns.
struct Layout {
  explicit Layout(std::size_t windows)
      : columns(windows <= 3 ? 1 : 2), rows((windows + columns - 1) / columns), panel(windows == 1   ? 340.0
                                                                                      : windows <= 3 ? 220.0
                                                                                                     : 116.0),
        cell((kWidth - 2 * kMargin - (static_cast<double>(columns) - 1) * 28) / static_cast<double>(columns)),
        table(kHead + static_cast<double>(rows) * (kTitle + panel + 10) + kLabels + 24),
        height(table + (static_cast<double>(windows) + 1) * kRow + 24) {}

  std::size_t columns, rows;
  double panel;  // the height of one
  double cell;   // the width of one
  double table;  // the baseline of its head
  double height; // of all
};

class Sheet {
public:
  Sheet(std::ostream &out, const std::vector<WindowFigures> &windows, int count)
      : figures(windows), points(count), layout(windows.size()),
        svg(out, kWidth, layout.height, "Windows of " + Grouped(count) + " points", kStyles) {
    double lobe = 0.0;
    double sidelobe = -60.0;
    for (const WindowFigures &f : figures) {
      lobe = std::max(lobe, f.mainLobe);
      sidelobe = std::min(sidelobe, f.sidelobe.value_or(0.0));
      lowest = std::min(lowest, static_cast<double>(f.weights.Min()));
    }
    // Some sidelobes to either side, and room below the lowest of the highest.
    bins = std::min(std::max(8.0, 2.0 * std::ceil(1.1 * lobe)), 0.5 * points);
    floor = 20.0 * std::floor((sidelobe - 24.0) / 20.0);
    if (lowest < 0.0) lowest = -0.15;
  }

  void Draw() {
    svg.Text(kMargin, 32, "class=\"title\"", "Windows of " + Grouped(points) + " points");
    svg.Text(
        kMargin, 54, "class=\"quiet\"",
        "Left: the weights, relative to the largest. Right: the response to a tone, relative to its top; "
        "dashed the highest sidelobe.");
    for (std::size_t i = 0; i < figures.size(); ++i) DrawCell(i);
    DrawTable();
    svg.End();
  }

private:
  void DrawCell(std::size_t i) {
    const std::size_t row = i / layout.columns;
    const WindowFigures &f = figures[i];
    const double left = kMargin + static_cast<double>(i % layout.columns) * (layout.cell + 28);
    const double top = kHead + static_cast<double>(row) * (kTitle + layout.panel + 10) + kTitle;
    const double share = layout.columns == 1 ? 0.3 : 0.27;
    const Box weights = {left + 30, top, left + 30 + share * layout.cell, top + layout.panel};
    const Box response = {weights.right + 48, top, left + layout.cell, top + layout.panel};
    const bool labelled = i + layout.columns >= figures.size(); // the last of its column
    svg.Text(weights.left, top - 8, "class=\"name\"", f.kind->Title());
    DrawWeights(f, weights, labelled);
    DrawResponse(f, response, labelled);
  }

  void DrawGrid(const Box &box, const Scale &x, double stepX, const Scale &y, double stepY, bool labelled,
                const std::string &label) {
    for (const Tick &tick : Ticks(x.low, x.high, stepX, 1.0)) {
      svg.Line("grid", x(tick.value), box.top, x(tick.value), box.bottom);
      if (labelled)
        svg.Text(x(tick.value), box.bottom + 15, "class=\"tick\" text-anchor=\"middle\"", tick.label);
    }
    if (labelled)
      svg.Text(0.5 * (box.left + box.right), box.bottom + 32, "class=\"quiet\" text-anchor=\"middle\"",
               label);
    for (const Tick &tick : Ticks(y.low, y.high, stepY, 1.0)) {
      svg.Line("grid", box.left, y(tick.value), box.right, y(tick.value));
      svg.Text(box.left - 6, y(tick.value) + 4, "class=\"tick\" text-anchor=\"end\"", tick.label);
    }
  }

  void DrawWeights(const WindowFigures &f, const Box &box, bool labelled) {
    const Scale x = {0.0, static_cast<double>(points), box.left, box.right};
    const Scale y = {lowest, 1.1, box.bottom, box.top};
    DrawGrid(box, x, RoundStep(points, 4), y, 0.5, labelled, "Sample");
    constexpr int kMost = 400;
    const int step = std::max(1, points / kMost);
    std::vector<Point> line = {{x(0.0), y(0.0)}};
    for (int k = 0; k < points; k += step) line.push_back({x(k), y(static_cast<double>(f.weights[k]))});
    line.push_back({x(points), y(static_cast<double>(f.weights[points - 1]))});
    line.push_back({x(points), y(0.0)});
    svg.Trace("weights", line);
    svg.Rectangle("frame", box);
  }

  void DrawResponse(const WindowFigures &f, const Box &box, bool labelled) {
    const Scale x = {-bins, bins, box.left, box.right};
    const Scale y = {floor, 8.0, box.bottom, box.top};
    const double levelStep = RoundStep(-floor, layout.columns == 1 ? 9 : 5);
    DrawGrid(box, x, RoundStep(2.0 * bins, layout.columns == 1 ? 12 : 6), y, levelStep, labelled,
             "Bins from the tone");
    const int last = static_cast<int>(bins * WindowFigures::kPerBin);
    std::vector<Point> line;
    for (int i = -last; i <= last; ++i) {
      const double level = f.response[std::abs(i)];
      line.push_back({x(static_cast<double>(i) / WindowFigures::kPerBin), y(std::max(level, floor))});
    }
    svg.Trace("response", line);
    if (f.sidelobe) {
      svg.Line("sidelobe", box.left, y(*f.sidelobe), box.right, y(*f.sidelobe));
      svg.Text(box.right - 5, y(*f.sidelobe) - 5, "class=\"level\" text-anchor=\"end\"",
               Fixed(*f.sidelobe, 1) + " dB");
    }
    svg.Text(box.left, box.top - 8, "class=\"quiet tick\"", "dB");
    svg.Rectangle("frame", box);
  }

  void DrawTable() {
    const std::vector<std::vector<std::string>> table = TableOf(figures);
    const double right = kWidth - kMargin;
    double baseline = layout.table;
    for (std::size_t row = 0; row < table.size(); ++row) {
      const char *style = row < 2 ? "class=\"quiet\" " : "";
      for (std::size_t column = 0; column < table[row].size(); ++column) {
        const double at = right - static_cast<double>(table[row].size() - 1 - column) * 126.0;
        if (column == 0)
          svg.Text(kMargin + 30, baseline, style, table[row][0]);
        else
          svg.Text(at, baseline, std::string(style) + "text-anchor=\"end\"", table[row][column]);
      }
      if (row == 1) svg.Line("frame", kMargin + 30, baseline + 6, right, baseline + 6);
      if (row > 1) svg.Line("grid", kMargin + 30, baseline + 6, right, baseline + 6);
      baseline += row == 0 ? 15.0 : row == 1 ? kRow + 2.0 : kRow;
    }
  }

  const std::vector<WindowFigures> &figures;
  int points;
  Layout layout;
  Svg svg;
  double bins = 8.0;   // to either side of the tone
  double floor = 0.0;  // the lowest level that shows, in decibels
  double lowest = 0.0; // weight
};

} // namespace

void WriteSvg(std::ostream &out, const std::vector<WindowFigures> &figures, int points) {
  Sheet(out, figures, points).Draw();
}

} // namespace tool
