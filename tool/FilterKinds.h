// The designed filters by the names that the command line knows, and what each is designed from.
#ifndef QORN_TOOL_FILTERKINDS_H
#define QORN_TOOL_FILTERKINDS_H

#include <qorn/qorn.h>

#include <string>
#include <vector>

namespace tool {

/// The options that a kind may take beside the sampling rate.
enum FilterOption : unsigned {
  kSymbolRate = 1,
  kBandwidth = 2,
  kCutoff = 4,
  kEdges = 8, ///< --low and --high
  kRolloff = 16,
  kBt = 32,
  kTapCount = 64,
  kTapsFrom = 128, ///< --taps-from and --tap-rate
};

/// What a filter is designed from. Those that its kind does not take are 0.
struct FilterParameters {
  double rate;        ///< samples per second
  double frequency;   ///< the symbol rate, bandwidth, cutoff or lower edge, in hertz
  double shape;       ///< the roll-off, the bandwidth-time product, or the upper edge in hertz
  int taps;           ///< 0 for as many as the library recommends
  double tapRate = 0; ///< of the user's taps, in hertz
};

struct FilterKind {
  const char *name;
  QORN::FIRFilterTypeTag type;
  unsigned takes;           ///< FilterOption joined
  double symbolRate;        ///< that of the standard which the filter belongs to, or 0
  bool isStep;              ///< the taps are a step response, which stays at its last value
  FilterParameters example; ///< for a picture that shows what the filter is about

  bool Takes(FilterOption option) const { return (takes & option) != 0; }

  /// The options as the command line knows them: "--rate, --symbol-rate, --rolloff, --taps".
  std::string Options() const;
};

/// Those that the library makes.
const std::vector<FilterKind> &Filters();

/// The names, with commas between.
std::string FilterNames();

/// The filter of that name, in any case and with or without hyphens; null if there is none.
const FilterKind *FindFilter(const std::string &name);

/// "root-raised-cosine, roll-off 0.22".
std::string TitleOf(const FilterKind &kind, const FilterParameters &parameters);

} // namespace tool

#endif
