// The picture of a measurement.
#ifndef QORN_TOOL_SPECTRUMPICTURE_H
#define QORN_TOOL_SPECTRUMPICTURE_H

#include <ostream>
#include <string>
#include <vector>

#include "Levels.h"
#include "Measurement.h"

namespace tool {

/// Writes a drawing of the mean and the peak-hold trace over frequency, with the peaks marked and listed.
void WriteSvg(std::ostream &out, const Measurement &measurement, Unit unit, const std::string &title);

struct TitledMeasurement {
  const Measurement *measurement;
  std::string title;
};

/// Writes such drawings below one another.
void WriteSvgs(std::ostream &out, const std::vector<TitledMeasurement> &measurements, Unit unit);

} // namespace tool

#endif
