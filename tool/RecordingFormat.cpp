#include "RecordingFormat.h"

#include <filesystem>
#include <limits>
#include <vector>

#include "Text.h"

namespace tool {

namespace {

constexpr auto kLargestFloat = static_cast<double>(std::numeric_limits<float>::max());

constexpr FormatFacts kFormats[] = {
    {Format::kIqf, "iqf", 4, -32768.0, 32767.0, 32768.0},
    {Format::kXiq, "xiq", 8, -2147483648.0, 2147483647.0, 2147483648.0},
    {Format::kCu8, "cu8", 2, -127.5, 127.5, 128.0},
    {Format::kCs8, "cs8", 2, -128.0, 127.0, 128.0},
    {Format::kCs16, "cs16", 4, -32768.0, 32767.0, 32768.0},
    {Format::kCf32, "cf32", 8, -kLargestFloat, kLargestFloat, 1.0},
};

} // namespace

const FormatFacts &FactsOf(Format format) { return kFormats[static_cast<int>(format)]; }

bool IsRaw(Format format) { return format != Format::kIqf && format != Format::kXiq; }

std::optional<Format> FindFormat(const std::string &name) {
  for (const FormatFacts &facts : kFormats)
    if (Lower(name) == facts.name) return facts.format;
  return std::nullopt;
}

std::optional<Format> FormatOfPath(const std::string &path) {
  const std::string extension = std::filesystem::path(path).extension().string();
  return extension.empty() ? std::nullopt : FindFormat(extension.substr(1));
}

std::string FormatNames(bool rawOnly) {
  std::vector<std::string> names;
  for (const FormatFacts &facts : kFormats)
    if (!rawOnly || IsRaw(facts.format)) names.emplace_back(facts.name);
  return Joined(names);
}

} // namespace tool
