// The units of level. Powers are held as squares of peak volts: a tone of amplitude A volts has the power
// A^2, which is A^2 / 100 watts into 50 ohm.
#ifndef QORN_TOOL_LEVELS_H
#define QORN_TOOL_LEVELS_H

#include <qorn/qorn.h>

#include <optional>
#include <string>

namespace tool {

enum class Unit {
  kDbm,  ///< power into 50 ohm
  kDbv,  ///< 20 log10 of the amplitude in volts
  kVolt, ///< the amplitude in volts
};

const char *NameOf(Unit unit);

/// The unit of that name, in any case.
std::optional<Unit> FindUnit(const std::string &name);

/// "dBm/Hz" and so on: the unit of a power in one hertz.
const char *DensityNameOf(Unit unit);

double LevelOf(Unit unit, double power);

/// levels[i] = LevelOf(unit, powers[i]).
void LevelsOf(Unit unit, const QORN::VecReal64 &powers, QORN::VecReal64 &levels);

/// A level with its unit: "-20.25 dBm", "12.34 mV"; "no power" for a power of zero.
std::string LevelText(Unit unit, double power);

} // namespace tool

#endif
