// The detectors by the names that the command line knows.
#ifndef QORN_TOOL_DETECTORKINDS_H
#define QORN_TOOL_DETECTORKINDS_H

#include <qorn/qorn.h>

#include <string>

namespace tool {

struct DetectorKind {
  const char *name;
  QORN::DetectorType type;
};

/// How a trace is reduced: so many of its points become one, or two with the detector of peak and minimum.
struct Detection {
  const DetectorKind *kind;
  int ratio;

  bool HasPairs() const { return kind->type == QORN::DetectorPeakAndMin; }
  int PointsOf(int points) const { return points / ratio * (HasPairs() ? 2 : 1); }
  /// From one point to the next, in points of the whole trace.
  double Step() const { return HasPairs() ? 0.5 * ratio : ratio; }
  /// The place of the first point: the middle of what it stands for, or the sample that it is.
  double First() const { return kind->type == QORN::DetectorPointSample ? 0.0 : 0.5 * (Step() - 1.0); }
};

/// The names, with commas between.
std::string DetectorNames();

/// The detector of that name, in any case and with or without hyphens; null if there is none.
const DetectorKind *FindDetector(const std::string &name);

} // namespace tool

#endif
