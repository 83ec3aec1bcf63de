// The picture of a test signal.
#ifndef QORN_TOOL_SIGNALSHEET_H
#define QORN_TOOL_SIGNALSHEET_H

#include <qorn/qorn.h>

#include <ostream>

#include "SignalKinds.h"

namespace tool {

/// Samples from the start of a recording that a sheet shows.
constexpr int kShownSamples = 1 << 20;

/// Writes a sheet of the spectrum, the constellation (PSK, QAM and the burst), the frequency (FM, FSK and
/// chirps) or the phase (all others), the envelope, and of the burst the spectrogram. start: the first
/// samples of the recording.
void WriteSheet(std::ostream &out, const SignalParameters &parameters, const QORN::VecCplx32 &start);

} // namespace tool

#endif
