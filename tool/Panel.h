// What panels of several pictures have in common.
#ifndef QORN_TOOL_PANEL_H
#define QORN_TOOL_PANEL_H

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include "Axis.h"
#include "Svg.h"

namespace tool {

/// A heading above the box, grid lines, and numbers and names along both axes. Numbers are in units of xUnit
/// and yUnit; yLabel stands above the right end of the box.
void DrawGrid(Svg &svg, const Box &box, const char *heading, const Scale &x, double xUnit,
              const std::string &xLabel, const Scale &y, double yStep, const std::string &yLabel,
              double yUnit = 1.0);

/// Frequencies along the lower edge.
void DrawFrequencyGrid(Svg &svg, const Box &box, const char *heading, const Scale &x, const Scale &y,
                       double yStep, const std::string &yLabel);

/// The points at(from) to at(to) for a trace. Where very many share a pixel, the lowest and the highest of
/// them are enough.
template <class At> std::vector<Point> Thinned(std::size_t from, std::size_t to, const At &at) {
  constexpr std::size_t kGroups = 800;
  const auto group = std::max<std::size_t>(1, (to - from) / kGroups);
  std::vector<Point> points;
  for (std::size_t i = from; i <= to; i += group) {
    const std::size_t end = std::min(i + group, to + 1);
    std::size_t low = i;
    std::size_t high = i;
    for (std::size_t k = i; k < end; ++k) {
      if (at(k).y < at(low).y) low = k;
      if (at(k).y > at(high).y) high = k;
    }
    points.push_back(at(std::min(low, high)));
    if (low != high) points.push_back(at(std::max(low, high)));
  }
  return points;
}

} // namespace tool

#endif
