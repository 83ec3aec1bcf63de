#include "Levels.h"

#include <cmath>

#include "Text.h"

namespace tool {

const char *NameOf(Unit unit) { return unit == Unit::kDbm ? "dBm" : unit == Unit::kDbv ? "dBV" : "V"; }

std::optional<Unit> FindUnit(const std::string &name) {
  for (const Unit unit : {Unit::kDbm, Unit::kDbv, Unit::kVolt})
    if (Lower(name) == Lower(NameOf(unit))) return unit;
  return std::nullopt;
}

const char *DensityNameOf(Unit unit) {
  return unit == Unit::kDbm ? "dBm/Hz" : unit == Unit::kDbv ? "dBV/√Hz" : "V/√Hz";
}

double LevelOf(Unit unit, double power) {
  const double volts = std::sqrt(power);
  if (unit == Unit::kDbm) return QORN::UnitConversion::PeakVolt2dBm(volts);
  if (unit == Unit::kDbv) return QORN::UnitConversion::Volt2dBV(volts);
  return volts;
}

void LevelsOf(Unit unit, const QORN::VecReal64 &powers, QORN::VecReal64 &levels) {
  levels.Resize(powers.GetSize());
  for (int i = 0; i < powers.GetSize(); ++i) levels[i] = LevelOf(unit, powers[i]);
}

std::string LevelText(Unit unit, double power) {
  if (power <= 0.0) return "no power";
  if (unit == Unit::kVolt) return Quantity(LevelOf(unit, power), "V");
  return Fixed(LevelOf(unit, power), 2) + " " + NameOf(unit);
}

} // namespace tool
