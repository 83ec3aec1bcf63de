// What the arguments of several subcommands have in common.
#ifndef QORN_TOOL_OPTIONS_H
#define QORN_TOOL_OPTIONS_H

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>
#include <string>

namespace tool {

constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();

/// For transform: whole numbers from least to most, in decimal notation with any number of leading zeros; all
/// else gets one message. The zeros go, for they would make the parser's numbers octal.
CLI::Validator WholeNumber(std::int64_t least, std::int64_t most = kNoLimit);

/// Any text but an empty one.
CLI::Validator FileName();

/// The name of a window.
CLI::Validator KnownWindow();

/// The name of a format.
CLI::Validator KnownFormat();

/// The positional RECORDING, the path of an IQF or an XIQ file.
void AddRecording(CLI::App &command, std::string &path);

/// The finite number in decimal notation that text is: "1090", "-30", "+.5", "1e6". Throws UsageError with
/// the name of the argument if it is none.
double NumberOf(const std::string &argument, const std::string &text);

/// The same from least to most.
double NumberWithin(const std::string &argument, const std::string &text, double least, double most);

/// A frequency or a rate above 0 that makes sense.
double HertzOf(const std::string &argument, const std::string &text);

/// Names with commas between, broken after a comma so that each line stays within 80 columns; the first
/// follows a text of `indent` columns.
std::string Wrapped(const std::string &names, std::size_t indent);

} // namespace tool

#endif
