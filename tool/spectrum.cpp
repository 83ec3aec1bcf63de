// qorn spectrum: the averaged spectrum of a recording.

#include <memory>
#include <optional>
#include <string>

#include "Commands.h"
#include "MeasurementCommand.h"
#include "Options.h"

namespace tool {

namespace {

constexpr int kMaxPoints = 1 << 24;

struct Options : MeasurementOptions {
  std::optional<int> points;
};

} // namespace

void AddSpectrum(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("spectrum", "Average the power spectra of a recording");
  AddRecording(*command, options->recording);
  AddPointsOption(*command, options->points, kMaxPoints);
  AddMeasurementOptions(*command, *options);
  command->footer("Windows: " + Wrapped(WindowNames(), 9) +
                  ".\n"
                  "dBm is power into 50 ohm; dBV and V are the amplitude (peak) of a tone of that\n"
                  "power. A tone reads its level in its bin. The noise floor is that in one bin.");
  command->callback([options] {
    RunMeasurement(*options, [&](Setup &setup, const Recording &) { PlanPoints(setup, options->points); });
  });
}

} // namespace tool
