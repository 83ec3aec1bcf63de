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
  const int decimals = static_cast<int>(std::clamp(std::ceil(-std::log10(step / unit) - 1e-6), 0.0, 12.0));
  std::vector<Tick> ticks;
  const double slack = 1e-6;
  for (double i = std::ceil(low / step - slack); i <= high / step + slack; i += 1.0)
    ticks.push_back({i * step, Fixed(i * step / unit, decimals)});
  return ticks;
}

} // namespace tool
