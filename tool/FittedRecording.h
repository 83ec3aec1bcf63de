// Writing samples that can be computed more than once.
#ifndef QORN_TOOL_FITTEDRECORDING_H
#define QORN_TOOL_FITTEDRECORDING_H

#include <qorn/qorn.h>

#include <cstdint>
#include <functional>
#include <ostream>

#include "Recording.h"
#include "RecordingWriter.h"

namespace tool {

using TakeSamples = std::function<void(const QORN::Cplx32 *samples, int n)>;

/// Gives all samples to take, in order and in volts, each time that it is called.
using SampleRun = std::function<void(const TakeSamples &take)>;

/// The largest real or imaginary part.
class LargestPart {
public:
  void Add(const QORN::Cplx32 *samples, int n);

  /// The largest magnitude; not finite if a part is not.
  double Magnitude() const;

  /// The largest part that is not negative, or 0.
  double Highest() const;

private:
  std::int32_t m_magnitude = 0; ///< as bits of the float
  std::int32_t m_highest = 0;
};

/// Frames that the samples fill in the format, 0 if it has none.
std::int64_t FramesFor(Format format, const RecordingHead &head);

struct FittedRecording {
  double peak; ///< volts
  double step; ///< volts
};

/// How many times WriteFitted runs: twice to find the scale and to write, once for floats.
int RunsFor(Format format);

/// Writes what was computed from a recording, with a head that stands but for the step: the largest value
/// just fits, and floats are volts. Throws DataError if a sample is not finite.
FittedRecording WriteFitted(std::ostream &out, Format format, RecordingHead head, const Recording &recording,
                            const SampleRun &run);

} // namespace tool

#endif
