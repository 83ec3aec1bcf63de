// The averaged spectrum of a recording, and what is read off it.
#ifndef QORN_TOOL_MEASUREMENT_H
#define QORN_TOOL_MEASUREMENT_H

#include <qorn/qorn.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Correction.h"
#include "DetectorKinds.h"
#include "Peaks.h"
#include "Recording.h"
#include "WindowKinds.h"

namespace tool {

constexpr int kMinBlock = 2; ///< samples

/// The part of the spectrum that a zoom shows: points from centre - span / 2 to centre + span / 2, in hertz.
struct Zoom {
  double centre;
  double span;
  int points;
};

struct Setup {
  const WindowKind *window;
  std::int64_t start;                           ///< the first sample
  std::int64_t count;                           ///< samples from there
  int block;                                    ///< samples of a block; without a zoom it has as many points
  std::optional<Zoom> zoom;                     ///< else the whole spectrum
  std::optional<Detection> detection;           ///< of the traces that are drawn and written
  std::shared_ptr<const Correction> correction; ///< of all levels; null for none
};

/// Powers are squares of peak volts, see Levels.h.
struct Measurement {
  Setup setup;
  double recordedCentre;      ///< hertz
  double recordedSpan;        ///< hertz, as the header tells; 0 if it does not
  double rate;                ///< samples per second
  double centre;              ///< hertz: that of the points
  double middle;              ///< the point at the centre
  double spacing;             ///< hertz from point to point
  double resolution;          ///< hertz: frequencies are told to a tenth of it
  double noiseBandwidth;      ///< hertz: that of a point
  double resolutionBandwidth; ///< hertz
  std::int64_t blocks;        ///< blocks of setup.block samples that were averaged
  std::int64_t polarFrames;   ///< frames that held phase and amplitude
  QORN::VecReal64 mean;       ///< the mean power at each point, lowest frequency first
  QORN::VecReal64 hold;       ///< the largest power at each point
  double totalPower;          ///< the mean power of the samples; of a zoom or with a correction that of mean
  double noiseFloor;          ///< the power of the noise at a point; 0 if it is not known
  std::vector<Peak> peaks;    ///< the strongest first

  int Points() const { return mean.GetSize(); }
  double FrequencyOf(double point) const { return centre + (point - middle) * spacing; }
};

/// Measures all whole blocks of setup; done is called now and then with the number of samples so far. Throws
/// DataError if the samples are not finite.
Measurement Measure(const Recording &recording, const Setup &setup,
                    const std::function<void(std::int64_t)> &done);

} // namespace tool

#endif
