// qorn spectrum: the averaged spectrum of a recording.

#include <qorn/qorn.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <string>

#include "Commands.h"
#include "Failure.h"
#include "Measurement.h"
#include "OutputFile.h"
#include "Progress.h"
#include "Report.h"
#include "Svg.h"
#include "Text.h"

namespace tool {

namespace {

constexpr int kDefaultPoints = 4096;
constexpr int kMinPoints = 2;
constexpr int kMaxPoints = 1 << 24;

struct Options {
  std::string recording;
  std::optional<int> points;
  std::string window = "blackman-harris";
  std::int64_t start = 0;
  std::optional<std::int64_t> count;
  std::string unit = "dBm";
  std::string svg;
  std::string csv;
  bool json = false;
};

// Whole numbers from least to most; all else gets one message.
CLI::Validator WholeNumber(std::int64_t least, std::int64_t most) {
  return {[=](const std::string &text) {
            std::int64_t value = 0;
            const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
            const bool good = error == std::errc{} && end == text.data() + text.size();
            if (good && value >= least && value <= most) return std::string();
            const std::string range = most < std::numeric_limits<std::int64_t>::max()
                                          ? "from " + std::to_string(least) + " to " + std::to_string(most)
                                          : "of " + std::to_string(least) + " or more";
            return Quoted(text) + " is not a whole number " + range;
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

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; });
  return text;
}

std::optional<Unit> FindUnit(const std::string &name) {
  for (const Unit unit : {Unit::kDbm, Unit::kDbv, Unit::kVolt})
    if (Lower(name) == Lower(NameOf(unit))) return unit;
  return std::nullopt;
}

CLI::Validator KnownUnit() {
  return {[](const std::string &name) {
            return FindUnit(name) ? std::string()
                                  : "unknown unit " + Quoted(name) + "; known are dBm, dBV, V";
          },
          "", ""};
}

// The samples that are asked for, after a look at what the recording promises and holds.
Setup SetupOf(const Options &options, const Recording &recording) {
  const std::int64_t promised = recording.Samples();
  if (options.start >= promised)
    throw UsageError("--start: sample " + std::to_string(options.start) +
                     " is not in the recording, which has " + std::to_string(promised) + " samples");
  const std::int64_t available = promised - options.start;
  if (options.count.value_or(0) > available)
    throw UsageError("--count: " + std::to_string(*options.count) +
                     " samples are not in the recording, which has " + std::to_string(available) +
                     " from sample " + std::to_string(options.start) + " on");
  Setup setup{};
  setup.window = FindWindow(options.window);
  setup.start = options.start;
  setup.count = options.count.value_or(available);
  if (options.points) {
    setup.points = *options.points;
    if (setup.points > setup.count)
      throw UsageError("--points: a block of " + std::to_string(setup.points) + " points does not fit into " +
                       std::to_string(setup.count) + " samples");
  } else {
    setup.points = kDefaultPoints;
    while (setup.points > setup.count) setup.points /= 2;
    if (setup.points < kMinPoints) throw UsageError("--count: one sample has no spectrum");
  }

  const int perFrame = recording.Reader().GetFFTPoints();
  const std::int64_t held = std::int64_t{recording.WholeFrames()} * perFrame;
  if (setup.start + setup.count > held)
    throw DataError(
        "recording " + Quoted(recording.Path()) + " is cut short: its header promises " +
        Grouped(recording.Reader().GetNofValidFrames()) + " frames, the file holds " +
        Grouped(recording.WholeFrames()) +
        (held > setup.start ? " (--count " + std::to_string(held - setup.start) + " reads them)" : ""));
  return setup;
}

void Run(const Options &options) {
  const Unit unit = *FindUnit(options.unit);
  const Recording recording(options.recording);
  recording.CheckSignal();
  const Setup setup = SetupOf(options, recording);

  std::unique_ptr<OutputFile> svg;
  std::unique_ptr<OutputFile> csv;
  if (!options.svg.empty()) svg = std::make_unique<OutputFile>("--svg", options.svg, options.recording);
  if (!options.csv.empty()) csv = std::make_unique<OutputFile>("--csv", options.csv, options.recording);
  if (svg && csv && svg->Place().lexically_normal() == csv->Place().lexically_normal())
    throw UsageError("--csv: " + Quoted(options.csv) + " is the file of --svg");

  const Measurement measurement = [&] {
    Progress progress(setup.count);
    return Measure(recording, setup, [&](std::int64_t done) { progress.Update(done); });
  }();

  // All files are complete before the first takes its place.
  if (svg) {
    WriteSvg(svg->Stream(), measurement, unit, std::filesystem::path(options.recording).filename().string());
    svg->Finish();
  }
  if (csv) {
    WriteCsv(csv->Stream(), measurement, unit);
    csv->Finish();
  }
  if (svg) svg->Commit();
  if (csv) csv->Commit();
  if (options.json)
    WriteJson(std::cout, recording, measurement, unit);
  else
    WriteText(std::cout, recording, measurement, unit);
}

// The names, broken after a comma so that a line of help stays within 80 columns.
std::string WrappedWindowNames() {
  std::string names = WindowNames();
  const std::size_t space = names.rfind(' ', 68);
  if (names.size() > 68 && space != std::string::npos) names[space] = '\n';
  return names;
}

} // namespace

void AddSpectrum(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("spectrum", "Average the power spectra of a recording");
  command->add_option("RECORDING", options->recording, "IQF file")->required()->type_name("");
  command->add_option("--points", options->points, "points of the transform (4096)")
      ->type_name("N")
      ->check(WholeNumber(kMinPoints, kMaxPoints));
  command->add_option("--window", options->window, "window (blackman-harris)")
      ->type_name("NAME")
      ->check(KnownWindow());
  command->add_option("--start", options->start, "first sample (0)")
      ->type_name("SAMPLE")
      ->check(WholeNumber(0, std::numeric_limits<std::int64_t>::max()));
  command->add_option("--count", options->count, "number of samples (to the end)")
      ->type_name("N")
      ->check(WholeNumber(1, std::numeric_limits<std::int64_t>::max()));
  command->add_option("--unit", options->unit, "dBm, dBV or V (dBm)")->type_name("UNIT")->check(KnownUnit());
  command->add_option("--svg", options->svg, "write a picture")->type_name("FILE");
  command->add_option("--csv", options->csv, "write the traces as a table")->type_name("FILE");
  command->add_flag("--json", options->json, "report as JSON instead of text");
  command->footer("Windows: " + WrappedWindowNames() +
                  ".\n"
                  "dBm is power into 50 ohm; dBV and V are the amplitude (peak) of a tone of that\n"
                  "power. A tone reads its level in its bin. The noise floor is that in one bin.");
  command->callback([options] { Run(*options); });
}

} // namespace tool
