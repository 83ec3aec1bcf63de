// From the samples of a block to the powers at the points of a measurement.
#ifndef QORN_TOOL_BLOCKTRANSFORM_H
#define QORN_TOOL_BLOCKTRANSFORM_H

#include <qorn/qorn.h>

#include <functional>

#include "WindowKinds.h"

namespace tool {

/// powers[i] becomes the square of the amplitude in volts at point i.
using BlockTransform = std::function<void(QORN::VecReal64 &powers, const QORN::VecCplx32 &samples)>;

/// All frequencies: as many points as samples, the recording's centre at index points / 2.
BlockTransform WholeSpectrum(const WindowKind &window, int samples);

/// So many points from a frequency on, in hertz from the recording's centre, at a distance.
BlockTransform ZoomedSpectrum(const WindowKind &window, int samples, double rate, int points, double first,
                              double spacing);

} // namespace tool

#endif
