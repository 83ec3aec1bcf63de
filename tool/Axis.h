// Scales and round ticks.
#ifndef QORN_TOOL_AXIS_H
#define QORN_TOOL_AXIS_H

#include <string>
#include <vector>

namespace tool {

/// A linear map from values to places in a drawing: low goes to from, high to to.
struct Scale {
  double low, high, from, to;
  double operator()(double value) const { return from + (value - low) / (high - low) * (to - from); }
};

struct Tick {
  double value;
  std::string label;
};

/// 1, 2 or 5 times a power of ten: the smallest that needs at most maxSteps steps for the range.
double RoundStep(double range, int maxSteps);

/// The multiples of step from low to high, labelled in units of `unit` with as many decimals as step needs.
/// None if step is not above 0, or if the multiples cannot be told apart as doubles; a thousand at most.
std::vector<Tick> Ticks(double low, double high, double step, double unit);

} // namespace tool

#endif
