// The arguments that make a test signal.
#ifndef QORN_TOOL_SIGNALOPTIONS_H
#define QORN_TOOL_SIGNALOPTIONS_H

#include <CLI/CLI.hpp>
#include <array>
#include <optional>
#include <string>

#include "SignalKinds.h"

namespace tool {

constexpr int kMostSamples = 1 << 22;    ///< of one signal, which the library makes in one piece
constexpr int kDefaultSamples = 20000;   ///< of one signal
constexpr std::size_t kNumberCount = 16; ///< options that are numbers

/// As they were given; empty if they were not.
struct SignalOptions {
  std::string type;
  std::array<std::string, kNumberCount> numbers; ///< in the order of the options in --help
  std::string mcs, duration, gap;
  bool triangle = false, sharp = false, fixedPhase = false;
  std::optional<int> samples;
  std::int64_t repeats = 1;
  unsigned seed = 0;
};

/// TYPE, and all options that shape the recording.
void AddSignalOptions(CLI::App &command, SignalOptions &options);

/// What the options say. Throws UsageError for an option that the kind does not take and for a value that
/// makes no sense, also where a default makes none beside the others.
SignalParameters ParametersOf(const SignalOptions &options);

} // namespace tool

#endif
