// The formats of recordings: two with a header, and raw pairs of numbers.
#ifndef QORN_TOOL_RECORDINGFORMAT_H
#define QORN_TOOL_RECORDINGFORMAT_H

#include <optional>
#include <string>

namespace tool {

/// IQF and XIQ, and raw pairs of I and Q, little-endian, from the first byte of a file to the last: unsigned
/// 8-bit around 127.5, signed 8-bit, signed 16-bit, 32-bit float.
enum class Format { kIqf, kXiq, kCu8, kCs8, kCs16, kCf32 };

/// What tells a format from the others. Values are in steps: integers in files, but for the centre of cu8.
struct FormatFacts {
  Format format;
  const char *name; ///< and extension
  int pairBytes;
  double lowest, highest; ///< in steps; of floats the largest
  double fullScale;       ///< in steps
};

/// Volts of one step, from and to which recordings are read and written.
constexpr double kLeastStep = 1e-30;
constexpr double kMostStep = 1e15;

const FormatFacts &FactsOf(Format format);

/// Without a header: neither rate nor scale.
bool IsRaw(Format format);

/// The format of a name, in any case.
std::optional<Format> FindFormat(const std::string &name);

/// The format of the extension of a path, in any case.
std::optional<Format> FormatOfPath(const std::string &path);

/// "iqf, xiq, cu8, cs8, cs16, cf32", or those without a header.
std::string FormatNames(bool rawOnly = false);

} // namespace tool

#endif
