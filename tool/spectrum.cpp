// qorn spectrum: the averaged spectrum of a recording.

#include <memory>
#include <optional>
#include <string>

#include "Commands.h"
#include "Failure.h"
#include "MeasurementCommand.h"
#include "Options.h"
#include "Text.h"

namespace tool {

namespace {

constexpr int kMaxPoints = 1 << 24;

struct Options : MeasurementOptions {
  std::optional<int> points;
  std::string detector;
  std::optional<int> ratio;
  std::string correction;
  std::string interpolation;
};

CLI::Validator KnownDetector() {
  return {[](const std::string &name) {
            return FindDetector(name) != nullptr
                       ? std::string()
                       : "unknown detector " + Quoted(name) + "; known are " + DetectorNames();
          },
          "", ""};
}

CLI::Validator KnownInterpolation() {
  return {[](const std::string &name) {
            return FindInterpolation(name) != nullptr
                       ? std::string()
                       : "unknown interpolation " + Quoted(name) + "; known are " + InterpolationNames();
          },
          "", ""};
}

void PlanDetection(Setup &setup, const Options &options) {
  if (options.detector.empty() && !options.ratio) return;
  if (!options.ratio) throw UsageError("--ratio is required for --detector");
  if (options.detector.empty()) throw UsageError("--detector is required for --ratio");
  if (*options.ratio > setup.block)
    throw UsageError("--ratio: a trace of " + std::to_string(setup.block) + " points has no block of " +
                     std::to_string(*options.ratio));
  setup.detection = Detection{FindDetector(options.detector), *options.ratio};
}

void PlanCorrection(Setup &setup, const Options &options) {
  if (options.correction.empty()) {
    if (!options.interpolation.empty()) throw UsageError("--correction is required for --interpolation");
    return;
  }
  setup.correction = std::make_shared<Correction>(
      options.correction,
      *FindInterpolation(options.interpolation.empty() ? "linear" : options.interpolation));
}

void Plan(Setup &setup, const Options &options) {
  PlanPoints(setup, options.points);
  PlanDetection(setup, options);
  PlanCorrection(setup, options);
}

} // namespace

void AddSpectrum(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("spectrum", "Average the power spectra of a recording");
  AddRecording(*command, options->recording);
  AddPointsOption(*command, options->points, kMaxPoints);
  AddMeasurementOptions(*command, *options);
  command->add_option("--detector", options->detector, "reduce the traces written and drawn")
      ->type_name("TYPE")
      ->check(KnownDetector());
  command->add_option("--ratio", options->ratio, "points to one of a detector's")
      ->type_name("N")
      ->transform(WholeNumber(1, kMaxPoints));
  command->add_option("--correction", options->correction, "file of rows: Hz, dB to add")->type_name("TABLE");
  command->add_option("--interpolation", options->interpolation, "of the table (linear)")
      ->type_name("KIND")
      ->check(KnownInterpolation());
  command->footer("Windows: " + Wrapped(WindowNames(), 9) +
                  ".\n"
                  "Detectors: " +
                  DetectorNames() +
                  ".\n"
                  "Outside its table, a linear, spline or hermite correction goes on as in the\n"
                  "table's first or last interval, a nearest one keeps the level at its end.\n"
                  "dBm is power into 50 ohm; dBV and V are a tone's amplitude (peak), which reads\n"
                  "its level in its bin. The noise floor is that in one bin.");
  command->callback([options] {
    RunMeasurement(*options, [&](Setup &setup, const Recording &) { Plan(setup, *options); });
  });
}

} // namespace tool
