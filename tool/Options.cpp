#include "Options.h"

#include <charconv>
#include <cmath>
#include <optional>

#include "Failure.h"
#include "RecordingFormat.h"
#include "Text.h"
#include "WindowKinds.h"

namespace tool {

namespace {

template <class T> std::optional<T> Parsed(const std::string &text, std::size_t from = 0) {
  T value{};
  const char *const last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data() + from, last, value);
  if (error != std::errc{} || end != last) return std::nullopt;
  return value;
}

} // namespace

CLI::Validator WholeNumber(std::int64_t least, std::int64_t most) {
  return {[=](std::string &text) {
            const std::optional<std::int64_t> value = Parsed<std::int64_t>(text);
            if (value && *value >= least && *value <= most) {
              text = std::to_string(*value);
              return std::string();
            }
            const std::string range = most < kNoLimit
                                          ? "from " + std::to_string(least) + " to " + std::to_string(most)
                                          : "of " + std::to_string(least) + " or more";
            return Quoted(text) + " is not a whole number " + range;
          },
          "", ""};
}

CLI::Validator FileName() {
  return {[](const std::string &name) {
            return name.empty() ? Quoted(name) + " is not the name of a file" : std::string();
          },
          "", ""};
}

CLI::Validator KnownWindow() {
  return {[](const std::string &name) {
            return FindWindow(name) != nullptr
                       ? std::string()
                       : "unknown window " + Quoted(name) + "; known are " + WindowNames();
          },
          "", ""};
}

CLI::Validator KnownFormat() {
  return {[](const std::string &name) {
            return FindFormat(name) ? std::string()
                                    : "unknown format " + Quoted(name) + "; known are " + FormatNames();
          },
          "", ""};
}

void AddRecording(CLI::App &command, std::string &path) {
  command.add_option("RECORDING", path, "IQF or XIQ file")->required()->type_name("");
}

double NumberOf(const std::string &argument, const std::string &text) {
  const bool plus = text.size() > 1 && text[0] == '+' && text[1] != '-';
  const std::optional<double> value = Parsed<double>(text, plus ? 1 : 0);
  if (!value || !std::isfinite(*value))
    throw UsageError(argument + ": " + Quoted(text) + " is not a finite number");
  return *value;
}

double NumberWithin(const std::string &argument, const std::string &text, double least, double most) {
  const double value = NumberOf(argument, text);
  if (value < least || value > most)
    throw UsageError(argument + ": " + Quoted(text) + " is not from " + Significant(least, 6) + " to " +
                     Significant(most, 6));
  return value;
}

double HertzOf(const std::string &argument, const std::string &text) {
  return NumberWithin(argument, text, 1e-3, 1e12);
}

std::string Wrapped(const std::string &names, std::size_t indent) {
  constexpr std::size_t kColumns = 79; // and one for what follows the last
  std::string wrapped = names;
  for (std::size_t start = 0, left = kColumns - indent; wrapped.size() - start > left; left = kColumns) {
    const std::size_t space = wrapped.rfind(' ', start + left);
    if (space == std::string::npos || space <= start) break;
    wrapped[space] = '\n';
    start = space + 1;
  }
  return wrapped;
}

} // namespace tool
