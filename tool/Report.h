// A measurement as text, as JSON and as a table of its traces.
#ifndef QORN_TOOL_REPORT_H
#define QORN_TOOL_REPORT_H

#include <ostream>

#include "Levels.h"
#include "Measurement.h"
#include "Recording.h"

namespace tool {

void WriteText(std::ostream &out, const Recording &recording, const Measurement &measurement, Unit unit);
void WriteJson(std::ostream &out, const Recording &recording, const Measurement &measurement, Unit unit);

/// One line per point: frequency in hertz, mean and peak-hold level; a first line names the columns.
void WriteCsv(std::ostream &out, const Measurement &measurement, Unit unit);

} // namespace tool

#endif
