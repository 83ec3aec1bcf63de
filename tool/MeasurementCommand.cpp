#include "MeasurementCommand.h"

#include <filesystem>
#include <iostream>

#include "Failure.h"
#include "Levels.h"
#include "Options.h"
#include "OutputFile.h"
#include "Progress.h"
#include "Report.h"
#include "SpectrumPicture.h"
#include "Text.h"

namespace tool {

namespace {

CLI::Validator KnownUnit() {
  return {[](const std::string &name) {
            return FindUnit(name) ? std::string()
                                  : "unknown unit " + Quoted(name) + "; known are dBm, dBV, V";
          },
          "", ""};
}

// The samples that are asked for, of those that the header promises.
Setup SetupOf(const MeasurementOptions &options, const Recording &recording) {
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
  return setup;
}

void CheckHeld(const Setup &setup, const Recording &recording) {
  const std::int64_t held = std::int64_t{recording.WholeFrames()} * recording.Reader().GetFFTPoints();
  if (setup.start + setup.count > held)
    throw DataError(
        "recording " + Quoted(recording.Path()) + " is cut short: its header promises " +
        Grouped(recording.Reader().GetNofValidFrames()) + " frames, the file holds " +
        Grouped(recording.WholeFrames()) +
        (held > setup.start ? " (--count " + std::to_string(held - setup.start) + " reads them)" : ""));
}

} // namespace

void AddMeasurementOptions(CLI::App &command, MeasurementOptions &options) {
  command.add_option("--window", options.window, "window (blackman-harris)")
      ->type_name("NAME")
      ->check(KnownWindow());
  command.add_option("--start", options.start, "first sample (0)")
      ->type_name("SAMPLE")
      ->check(WholeNumber(0));
  command.add_option("--count", options.count, "number of samples (to the end)")
      ->type_name("N")
      ->check(WholeNumber(1));
  command.add_option("--unit", options.unit, "dBm, dBV or V (dBm)")->type_name("UNIT")->check(KnownUnit());
  command.add_option("--svg", options.svg, "write a picture")->type_name("FILE");
  command.add_option("--csv", options.csv, "write the traces as a table")->type_name("FILE");
  command.add_flag("--json", options.json, "report as JSON instead of text");
}

void RunMeasurement(const MeasurementOptions &options, const Planner &plan) {
  const Unit unit = *FindUnit(options.unit);
  const Recording recording(options.recording);
  recording.CheckSignal();
  Setup setup = SetupOf(options, recording);
  if (setup.count < kMinBlock) throw UsageError("--count: one sample has no spectrum");
  plan(setup, recording);
  CheckHeld(setup, recording);

  OutputFiles files(options.svg, options.csv, options.recording);
  const Measurement measurement = [&] {
    Progress progress(setup.count);
    return Measure(recording, setup, [&](std::int64_t done) { progress.Update(done); });
  }();

  const std::string title = std::filesystem::path(options.recording).filename().string();
  files.Write([&](std::ostream &out) { WriteSvg(out, measurement, unit, title); },
              [&](std::ostream &out) { WriteCsv(out, measurement, unit); });
  if (options.json)
    WriteJson(std::cout, recording, measurement, unit);
  else
    WriteText(std::cout, recording, measurement, unit);
}

} // namespace tool
