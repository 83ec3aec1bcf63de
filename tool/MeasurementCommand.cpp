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

} // namespace

void AddMeasurementOptions(CLI::App &command, MeasurementOptions &options) {
  command.add_option("--window", options.window, "window (blackman-harris)")
      ->type_name("NAME")
      ->check(KnownWindow());
  AddExtentOptions(command, options);
  command.add_option("--unit", options.unit, "dBm, dBV or V (dBm)")->type_name("UNIT")->check(KnownUnit());
  command.add_option("--svg", options.svg, "write a picture")->type_name("FILE");
  command.add_option("--csv", options.csv, "write the traces as a table")->type_name("FILE");
  command.add_flag("--json", options.json, "report as JSON instead of text");
}

void RunMeasurement(const MeasurementOptions &options, const Planner &plan) {
  const Unit unit = *FindUnit(options.unit);
  const Recording recording(options.recording);
  recording.CheckSignal();
  const Extent extent = ExtentOf(options, recording);
  Setup setup{};
  setup.window = FindWindow(options.window);
  setup.start = extent.start;
  setup.count = extent.count;
  if (setup.count < kMinBlock) throw UsageError("--count: one sample has no spectrum");
  plan(setup, recording);
  CheckHeld(extent, recording);

  OutputFiles files({{"--svg", options.svg}, {"--csv", options.csv}}, options.recording);
  const Measurement measurement = [&] {
    Progress progress(setup.count);
    return Measure(recording, setup, [&](std::int64_t done) { progress.Update(done); });
  }();

  const std::string title = std::filesystem::path(options.recording).filename().string();
  files.Write({[&](std::ostream &out) { WriteSvg(out, measurement, unit, title); },
               [&](std::ostream &out) { WriteCsv(out, measurement, unit); }});
  if (options.json)
    WriteJson(std::cout, recording, measurement, unit);
  else
    WriteText(std::cout, recording, measurement, unit);
}

} // namespace tool
