#include "Axis.h"

#include <algorithm>
#include <cmath>

#include "Text.h"

namespace tool {

double RoundStep(double range, int maxSteps) {
  const double least = range / maxSteps;
  const double decade = std::pow(10.0, std::floor(std::log10(least)));
  for (const double factor : {1.0, 2.0, 5.0})
    if (factor * decade >= least * 0.999999) return factor * decade;
  return 10.0 * decade;
}

std::vector<Tick> Ticks(double low, double high, double step, double unit) {
  constexpr double kMostTicks = 1000.0;
  constexpr double kMostSteps = 9007199254740992.0; // beyond, not every whole number is a double
  constexpr double kSlack = 1e-6;
  std::vector<Tick> ticks;
  if (!(step > 0.0)) return ticks;
  const double first = std::ceil(low / step - kSlack);
  const double last = std::floor(high / step + kSlack);
  if (!(first <= last && first >= -kMostSteps && last <= kMostSteps)) return ticks;
  const int decimals = static_cast<int>(std::clamp(std::ceil(-std::log10(step / unit) - 1e-6), 0.0, 12.0));
  const int count = static_cast<int>(std::min(last - first + 1.0, kMostTicks));
  for (int i = 0; i < count; ++i) {
    const double value = (first + i) * step;
    ticks.push_back({value, Fixed(value / unit, decimals)});
  }
  return ticks;
}

} // namespace tool
