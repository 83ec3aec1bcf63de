// The arguments that design a filter.
#ifndef QORN_TOOL_FILTEROPTIONS_H
#define QORN_TOOL_FILTEROPTIONS_H

#include <qorn/qorn.h>

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "FilterKinds.h"
#include "Recording.h"

namespace tool {

/// As they were given; empty if they were not.
struct FilterOptions {
  std::string type;
  std::string rate, symbolRate, bandwidth, cutoff, low, high, rolloff, bt;
  std::optional<int> taps;
  std::string tapsFrom, tapRate;
};

/// The positional TYPE.
void AddFilterType(CLI::App &command, FilterOptions &options);

/// --rate and all that follows it.
void AddFilterOptions(CLI::App &command, FilterOptions &options);

/// What the options say. The sampling rate is that of the recording, if there is one. Throws UsageError for
/// an option that the kind does not take, for one that it needs, and for a value that makes no sense.
FilterParameters ParametersOf(const FilterKind &kind, const FilterOptions &options,
                              const Recording *recording);

/// The taps of --taps-from, for the kinds that take them.
QORN::VecCplx32 UserTapsOf(const FilterKind &kind, const FilterOptions &options);

} // namespace tool

#endif
