// Writing recordings of any format through one interface.
#ifndef QORN_TOOL_RECORDINGWRITER_H
#define QORN_TOOL_RECORDINGWRITER_H

#include <qorn/qorn.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "RecordingFormat.h"

namespace tool {

/// What the header of a recording tells. A raw format keeps nothing of it but the step.
struct RecordingHead {
  std::int64_t samples = 0; ///< exactly as many as will be put
  double rate = 0.0;        ///< samples per second
  double centre = 0.0;      ///< hertz
  double span = 0.0;        ///< hertz; 0 for the rate
  double step = 1.0;        ///< volts of one step, of 1 for floats
  double level = 0.0;       ///< dBm: the reference level, for which the scale needs none

  // Of the IQF format alone.
  int framePoints = 1024; ///< samples of a frame, 1024 at most
  std::vector<std::pair<std::string, std::string>>
      entries; ///< names and values that come first; those without a value do not
  std::vector<std::pair<int, int>> flatness; ///< amplitude and phase, as in the file
};

/// Takes samples in volts and writes them to a stream. Integers are rounded to nearest, and stop at the
/// limits of the format.
class RecordingWriter {
public:
  virtual ~RecordingWriter() = default;
  RecordingWriter(const RecordingWriter &) = delete;
  RecordingWriter &operator=(const RecordingWriter &) = delete;

  /// Writes the next n samples. Throws DataError at one that is not finite, unless the format has floats.
  virtual void Put(const QORN::Cplx32 *samples, int n) = 0;

  /// Writes what comes behind the last sample.
  virtual void End() {}

  /// Samples so far that were stopped at a limit.
  std::int64_t Saturated() const { return m_saturated; }

protected:
  RecordingWriter() = default;

  std::int64_t m_saturated = 0;
};

/// The volts of a step at which values up to peak just fit the format: 1 for floats and for silence, and a
/// power of two for XIQ, so that what were floats before are kept as they are.
double StepFor(Format format, double peak);

/// Throws DataError if the format cannot hold as many samples.
void CheckCount(Format format, const RecordingHead &head);

/// Throws DataError if a recording of the format with such a step would be refused when it is read. Raw pairs
/// do not tell it.
void CheckStep(Format format, double step);

/// A writer of the format; the header is written at once. out must outlive it. Throws as CheckCount and
/// CheckStep.
std::unique_ptr<RecordingWriter> MakeRecordingWriter(Format format, std::ostream &out,
                                                     const RecordingHead &head);

} // namespace tool

#endif
