// The part of a recording that a subcommand works on.
#ifndef QORN_TOOL_EXTENT_H
#define QORN_TOOL_EXTENT_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>

#include "Recording.h"

namespace tool {

struct ExtentOptions {
  std::int64_t start = 0;
  std::optional<std::int64_t> count;
};

struct Extent {
  std::int64_t start; ///< the first sample
  std::int64_t count; ///< samples from there
};

/// --start and --count.
void AddExtentOptions(CLI::App &command, ExtentOptions &options);

/// The samples that are asked for, of those that the header promises. Throws UsageError if they are not.
Extent ExtentOf(const ExtentOptions &options, const Recording &recording);

/// Throws DataError if the file does not hold all samples of the extent.
void CheckHeld(const Extent &extent, const Recording &recording);

} // namespace tool

#endif
