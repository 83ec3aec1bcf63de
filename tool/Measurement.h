// The averaged spectrum of a recording, and what is read off it.
#ifndef QORN_TOOL_MEASUREMENT_H
#define QORN_TOOL_MEASUREMENT_H

#include <qorn/qorn.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "Peaks.h"
#include "Recording.h"
#include "Windows.h"

namespace tool {

struct Setup {
  int points;
  const WindowKind *window;
  std::int64_t start; ///< the first sample
  std::int64_t count; ///< samples from there
};

/// Powers are squares of peak volts, see Units.h.
struct Measurement {
  Setup setup;
  double centre;              ///< hertz
  double span;                ///< hertz, as the header tells; 0 if it does not
  double rate;                ///< samples per second
  std::int64_t blocks;        ///< blocks of setup.points samples that were averaged
  std::int64_t polarFrames;   ///< frames that held phase and amplitude
  double binSpacing;          ///< hertz
  double noiseBandwidth;      ///< hertz: that of a bin
  double resolutionBandwidth; ///< hertz
  QORN::VecReal64 mean;       ///< the mean power in each bin, lowest frequency first
  QORN::VecReal64 hold;       ///< the largest power in each bin
  double totalPower;          ///< the mean power of the samples
  double noiseFloor;          ///< the power of the noise in a bin
  std::vector<Peak> peaks;    ///< the strongest first

  double FrequencyOf(double bin) const { return centre + (bin - setup.points / 2) * binSpacing; }
};

/// Measures all whole blocks of setup; done is called now and then with the number of samples so far. Throws
/// DataError if the samples are not finite.
Measurement Measure(const Recording &recording, const Setup &setup,
                    const std::function<void(std::int64_t)> &done);

} // namespace tool

#endif
