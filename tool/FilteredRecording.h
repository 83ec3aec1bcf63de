// A recording that is run through a filter.
#ifndef QORN_TOOL_FILTEREDRECORDING_H
#define QORN_TOOL_FILTEREDRECORDING_H

#include <cstdint>
#include <functional>
#include <ostream>

#include "Extent.h"
#include "FilterDesign.h"
#include "Recording.h"

namespace tool {

struct FilteredRecording {
  std::int64_t samples; ///< as many as went in
  std::int64_t frames;  ///< of an IQF recording, the last with zeros behind them; otherwise 0
  int advance;          ///< by so many samples the output stands earlier than the filter gives it
  double peak;          ///< the largest magnitude of a real or an imaginary part, in volts
  double step;          ///< volts
};

/// Writes the samples of the extent, filtered, as a recording of the format with the header of the other but
/// for the scale: the largest value becomes the largest integer. Output sample n is the sum of taps[k] x[n +
/// advance - k], advance half the number of taps, rounded down, and x zero outside of the extent. The
/// recording is read RunsFor(format) times; done is called now and then with the samples read so far. Throws
/// DataError if the samples are not finite.
FilteredRecording WriteFiltered(std::ostream &out, Format format, const Recording &recording,
                                const Extent &extent, const FilterDesign &design,
                                const std::function<void(std::int64_t)> &done);

} // namespace tool

#endif
