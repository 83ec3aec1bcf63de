#include "Panel.h"

#include <cmath>

#include "Text.h"

namespace tool {

void DrawGrid(Svg &svg, const Box &box, const char *heading, const Scale &x, double xUnit,
              const std::string &xLabel, const Scale &y, double yStep, const std::string &yLabel,
              double yUnit) {
  svg.Text(box.left, box.top - 10, "class=\"name\"", heading);
  svg.Text(box.right, box.top - 10, "class=\"quiet tick\" text-anchor=\"end\"", yLabel);
  const int steps = std::max(4, static_cast<int>((box.right - box.left) / 58.0));
  for (const Tick &tick : Ticks(x.low, x.high, RoundStep(x.high - x.low, steps), xUnit)) {
    svg.Line("grid", x(tick.value), box.top, x(tick.value), box.bottom);
    svg.Text(x(tick.value), box.bottom + 15, "class=\"tick\" text-anchor=\"middle\"", tick.label);
  }
  svg.Text(0.5 * (box.left + box.right), box.bottom + 32, "class=\"quiet\" text-anchor=\"middle\"", xLabel);
  for (const Tick &tick : Ticks(y.low, y.high, yStep, yUnit)) {
    svg.Line("grid", box.left, y(tick.value), box.right, y(tick.value));
    svg.Text(box.left - 6, y(tick.value) + 4, "class=\"tick\" text-anchor=\"end\"", tick.label);
  }
}

void DrawFrequencyGrid(Svg &svg, const Box &box, const char *heading, const Scale &x, const Scale &y,
                       double yStep, const std::string &yLabel) {
  const Prefix prefix = PrefixFor(std::max(std::fabs(x.low), std::fabs(x.high)));
  DrawGrid(svg, box, heading, x, prefix.factor, std::string("Frequency (") + prefix.letter + "Hz)", y, yStep,
           yLabel);
}

} // namespace tool
