// What the subcommands that measure a recording have in common.
#ifndef QORN_TOOL_MEASUREMENTCOMMAND_H
#define QORN_TOOL_MEASUREMENTCOMMAND_H

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>

#include "Extent.h"
#include "Measurement.h"
#include "Recording.h"

namespace tool {

/// What is measured, and in which unit it is told.
struct LevelOptions : ExtentOptions {
  std::string recording;
  std::string window = "blackman-harris";
  std::string unit = "dBm";
};

struct MeasurementOptions : LevelOptions {
  std::string svg;
  std::string csv;
  bool json = false;
};

/// --window, --start, --count and --unit.
void AddLevelOptions(CLI::App &command, LevelOptions &options);

/// The same and the options of the report and its files.
void AddMeasurementOptions(CLI::App &command, MeasurementOptions &options);

/// --points of a spectrum.
void AddPointsOption(CLI::App &command, std::optional<int> &points, int most);

/// Blocks of so many points, or of a usual number as far as the samples suffice.
void PlanPoints(Setup &setup, std::optional<int> points);

/// Fills in what a subcommand measures, in a setup whose window, start and count stand. Throws UsageError if
/// that cannot be.
using Planner = std::function<void(Setup &, const Recording &)>;

/// What is to be measured. Throws UsageError or DataError if that cannot be.
Setup SetupOf(const LevelOptions &options, const Recording &recording, const Planner &plan);

/// Measures, and tells a terminal how far it is.
Measurement MeasureWithProgress(const Recording &recording, const Setup &setup);

/// Opens the recording, plans, measures, and writes the files and the report.
void RunMeasurement(const MeasurementOptions &options, const Planner &plan);

} // namespace tool

#endif
