#include "MeasurementCommand.h"

#include <filesystem>
#include <string>

#include "Detected.h"
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

constexpr int kDefaultPoints = 4096;

CLI::Validator KnownUnit() {
  return {[](const std::string &name) {
            return FindUnit(name) ? std::string()
                                  : "unknown unit " + Quoted(name) + "; known are dBm, dBV, V";
          },
          "", ""};
}

} // namespace

void AddLevelOptions(CLI::App &command, LevelOptions &options) {
  command.add_option("--window", options.window, "window (blackman-harris)")
      ->type_name("NAME")
      ->check(KnownWindow());
  AddExtentOptions(command, options);
  command.add_option("--unit", options.unit, "dBm, dBV or V (dBm)")->type_name("UNIT")->check(KnownUnit());
}

void AddMeasurementOptions(CLI::App &command, MeasurementOptions &options) {
  AddLevelOptions(command, options);
  command.add_option("--svg", options.svg, "write a picture")->type_name("FILE");
  command.add_option("--csv", options.csv, "write the traces as a table")->type_name("FILE");
  command.add_flag("--json", options.json, "report as JSON instead of text");
}

void AddPointsOption(CLI::App &command, std::optional<int> &points, int most) {
  command.add_option("--points", points, "points of the transform (" + std::to_string(kDefaultPoints) + ")")
      ->type_name("N")
      ->transform(WholeNumber(kMinBlock, most));
}

void PlanPoints(Setup &setup, std::optional<int> points) {
  if (points.value_or(0) > setup.count)
    throw UsageError("--points: a block of " + std::to_string(*points) + " points does not fit into " +
                     std::to_string(setup.count) + " samples");
  setup.block = points.value_or(kDefaultPoints);
  while (setup.block > setup.count) setup.block /= 2;
}

Setup SetupOf(const LevelOptions &options, const Recording &recording, const Planner &plan) {
  recording.CheckSignal();
  const Extent extent = ExtentOf(options, recording);
  Setup setup{};
  setup.window = FindWindow(options.window);
  setup.start = extent.start;
  setup.count = extent.count;
  if (setup.count < kMinBlock) throw UsageError("--count: one sample has no spectrum");
  plan(setup, recording);
  CheckHeld(extent, recording);
  return setup;
}

Measurement MeasureWithProgress(const Recording &recording, const Setup &setup) {
  Progress progress(setup.count);
  return Measure(recording, setup, [&](std::int64_t done) { progress.Update(done); });
}

void RunMeasurement(const MeasurementOptions &options, const Planner &plan) {
  const Unit unit = *FindUnit(options.unit);
  const Recording recording(options.recording);
  const Setup setup = SetupOf(options, recording, plan);
  const std::string correction = setup.correction ? setup.correction->Path() : std::string();
  OutputFiles files({{"--svg", options.svg}, {"--csv", options.csv}}, options.recording,
                    {{"--correction", correction}});
  const Measurement measurement = MeasureWithProgress(recording, setup);

  const Measurement traces = setup.detection ? Detected(measurement) : measurement;
  const std::string title = std::filesystem::path(options.recording).filename().string();
  files.Write({[&](std::ostream &out) { WriteSvg(out, traces, unit, title); },
               [&](std::ostream &out) { WriteCsv(out, traces, unit); }});
  if (options.json)
    WriteJson(files.Report(), recording, measurement, unit);
  else
    WriteText(files.Report(), recording, measurement, unit);
}

} // namespace tool
