#include "Detected.h"

#include <algorithm>
#include <cmath>

namespace tool {

namespace {

// In floats relative to the largest amplitude, so that every level has one.
QORN::VecReal64 Reduced(const QORN::VecReal64 &powers, const Detection &detection) {
  const double largest = *std::max_element(powers.GetPtr(), powers.GetPtr() + powers.GetSize());
  const double scale = largest > 0.0 ? std::sqrt(largest) : 1.0;
  QORN::VecReal32 amplitudes(powers.GetSize()), points;
  for (int k = 0; k < powers.GetSize(); ++k) amplitudes[k] = static_cast<float>(std::sqrt(powers[k]) / scale);
  QORN::Detector::DetectAndDecimate(points, amplitudes, detection.ratio, detection.kind->type);
  QORN::VecReal64 result(points);
  for (int k = 0; k < result.GetSize(); ++k) {
    const double amplitude = largest > 0.0 ? result[k] * scale : 0.0;
    result[k] = amplitude * amplitude;
  }
  return result;
}

} // namespace

Measurement Detected(const Measurement &measurement) {
  const Detection &detection = *measurement.setup.detection;
  const double step = detection.Step(), first = detection.First();
  Measurement result = measurement;
  result.mean = Reduced(measurement.mean, detection);
  result.hold = Reduced(measurement.hold, detection);
  result.spacing = measurement.spacing * step;
  result.middle = (measurement.middle - first) / step;
  for (Peak &peak : result.peaks) {
    peak.place = (peak.place - first) / step;
    peak.index = static_cast<int>(std::lround(peak.place));
  }
  return result;
}

} // namespace tool
