// qorn spectrum: the averaged spectrum of a recording.

#include <memory>
#include <optional>
#include <string>

#include "Commands.h"
#include "Failure.h"
#include "MeasurementCommand.h"
#include "Options.h"

namespace tool {

namespace {

constexpr int kDefaultPoints = 4096;
constexpr int kMaxPoints = 1 << 24;

struct Options : MeasurementOptions {
  std::optional<int> points;
};

void Plan(Setup &setup, std::optional<int> points) {
  if (points.value_or(0) > setup.count)
    throw UsageError("--points: a block of " + std::to_string(*points) + " points does not fit into " +
                     std::to_string(setup.count) + " samples");
  setup.block = points.value_or(kDefaultPoints);
  while (setup.block > setup.count) setup.block /= 2;
}

} // namespace

void AddSpectrum(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("spectrum", "Average the power spectra of a recording");
  AddRecording(*command, options->recording);
  command->add_option("--points", options->points, "points of the transform (4096)")
      ->type_name("N")
      ->check(WholeNumber(kMinBlock, kMaxPoints));
  AddMeasurementOptions(*command, *options);
  command->footer("Windows: " + Wrapped(WindowNames(), 9) +
                  ".\n"
                  "dBm is power into 50 ohm; dBV and V are the amplitude (peak) of a tone of that\n"
                  "power. A tone reads its level in its bin. The noise floor is that in one bin.");
  command->callback([options] {
    RunMeasurement(*options, [&](Setup &setup, const Recording &) { Plan(setup, options->points); });
  });
}

} // namespace tool
