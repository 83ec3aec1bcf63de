// The traces of a measurement, reduced by a detector.
#ifndef QORN_TOOL_DETECTED_H
#define QORN_TOOL_DETECTED_H

#include "Measurement.h"

namespace tool {

/// A measurement whose traces are those of the one given, reduced as its setup has it: blocks of points from
/// the lowest frequency on, of which those that do not fill a block are left out. The detector sees
/// amplitudes, in volts. A point stands in the middle of its block, that of the sample detector at the
/// sample, and the two of peak and minimum in the middle of each half. All figures stay those of the whole
/// spectrum, the peaks at their frequencies.
Measurement Detected(const Measurement &measurement);

} // namespace tool

#endif
