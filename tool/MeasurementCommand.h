// What the subcommands that measure a recording have in common.
#ifndef QORN_TOOL_MEASUREMENTCOMMAND_H
#define QORN_TOOL_MEASUREMENTCOMMAND_H

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "Extent.h"
#include "Measurement.h"
#include "Recording.h"

namespace tool {

struct MeasurementOptions : ExtentOptions {
  std::string recording;
  std::string window = "blackman-harris";
  std::string unit = "dBm";
  std::string svg;
  std::string csv;
  bool json = false;
};

/// --window and all that follows it.
void AddMeasurementOptions(CLI::App &command, MeasurementOptions &options);

/// Fills in what a subcommand measures, in a setup whose window, start and count stand. Throws UsageError if
/// that cannot be.
using Planner = std::function<void(Setup &, const Recording &)>;

/// Opens the recording, plans, measures, and writes the files and the report.
void RunMeasurement(const MeasurementOptions &options, const Planner &plan);

} // namespace tool

#endif
