// From the parameters of a filter to its taps.
#ifndef QORN_TOOL_FILTERDESIGN_H
#define QORN_TOOL_FILTERDESIGN_H

#include <qorn/qorn.h>

#include <complex>
#include <string>
#include <vector>

#include "FilterKinds.h"

namespace tool {

constexpr int kMaxTaps = 65535;

struct FilterDesign {
  const FilterKind *kind;
  FilterParameters parameters;
  int recommended; ///< taps; 0 if the library recommends no number
  double delay;    ///< in samples, as the library gives it
  bool isComplex;  ///< a tap has an imaginary part
  std::vector<std::complex<double>> taps;

  double SamplesPerSymbol() const { return parameters.rate / parameters.frequency; }

  /// Where the gain of the pass band is told, in hertz; below 0 if that is at the top of the response.
  double PassFrequency() const;
};

/// userTaps are those of the kinds that take any. Throws UsageError if there is no such filter.
FilterDesign DesignOf(const FilterKind &kind, const FilterParameters &parameters,
                      const QORN::VecCplx32 &userTaps);

/// Reads taps from a text file: one to a line, a number or the two of a complex tap with a blank or a comma
/// between; '#' starts a comment. Throws UsageError with the line that is wrong.
QORN::VecCplx32 ReadTaps(const std::string &path);

/// A pulse of two symbols at two taps a symbol, for an example of the kinds that take any taps.
QORN::VecCplx32 ExampleTaps();

} // namespace tool

#endif
