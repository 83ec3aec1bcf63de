// How a command fails: with one line for the error stream and an exit status.
#ifndef QORN_TOOL_FAILURE_H
#define QORN_TOOL_FAILURE_H

#include <stdexcept>
#include <string>

namespace tool {

constexpr int kDataStatus = 1;
constexpr int kUsageStatus = 2;

/// The recording, or the system, does not allow what was asked for.
struct DataError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// An argument is wrong.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

} // namespace tool

#endif
