// qorn zoom: a narrow part of the averaged spectrum of a recording.

#include <algorithm>
#include <cmath>
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

constexpr int kDefaultPoints = 1001;
constexpr int kMinPoints = 3;
constexpr int kMaxPoints = 1 << 20;
constexpr int kMaxBlock = 1 << 21;
// Where the user leaves it open. A tone between two points then reads 0.15 dB low at most.
constexpr double kPointsPerBin = 5.0;

struct Options : MeasurementOptions {
  std::string centre;
  std::string span;
  std::optional<int> points;
  std::optional<int> samples;
};

std::string Hertz(double value) { return Significant(value, 12) + " Hz"; }

// The part of the spectrum that is asked for. Its frequencies are those of the report of the whole.
Zoom ZoomOf(const Options &options, const Recording &recording) {
  const double rate = recording.Rate();
  const double low = recording.Centre() - 0.5 * rate;
  const double high = recording.Centre() + 0.5 * rate;
  const std::string recorded = "the recording, which has " + Hertz(low) + " to " + Hertz(high);
  Zoom zoom{};
  zoom.centre = NumberOf("--centre", options.centre);
  zoom.span = NumberOf("--span", options.span);
  if (!(zoom.span > 0.0)) throw UsageError("--span: " + Quoted(options.span) + " is not above 0");
  if (zoom.centre < low || zoom.centre > high)
    throw UsageError("--centre: " + Hertz(zoom.centre) + " is outside " + recorded);
  const double slack = 1e-6 * rate; // a rate from a header may be rounded
  if (zoom.centre - 0.5 * zoom.span < low - slack || zoom.centre + 0.5 * zoom.span > high + slack)
    throw UsageError("--span: " + Hertz(zoom.span) + " around " + Hertz(zoom.centre) + " reaches beyond " +
                     recorded);
  return zoom;
}

int Limited(double wanted, double least, double most) {
  return static_cast<int>(std::clamp(std::ceil(wanted - 1e-6), least, most));
}

void Plan(Setup &setup, const Options &options, const Recording &recording) {
  Zoom zoom = ZoomOf(options, recording);
  // A block of n samples has n bins over the sampling rate, so this many over the span.
  const double share = zoom.span / recording.Rate();
  zoom.points = options.points.value_or(
      options.samples ? Limited(kPointsPerBin * share * *options.samples + 1.0, kDefaultPoints, kMaxPoints)
                      : kDefaultPoints);
  if (options.samples.value_or(0) > setup.count)
    throw UsageError("--samples: a block of " + std::to_string(*options.samples) +
                     " samples does not fit into " + std::to_string(setup.count) + " samples");
  setup.block =
      options.samples.value_or(Limited((zoom.points - 1) / (kPointsPerBin * share), kMinBlock,
                                       static_cast<double>(std::min<std::int64_t>(setup.count, kMaxBlock))));
  const double needed = std::ceil(share * setup.block - 1e-6) + 1.0;
  if (zoom.points < needed)
    throw UsageError("--points: " + std::to_string(zoom.points) + " points miss signals between them; " +
                     Significant(needed, 12) + " or more are needed for blocks of " +
                     std::to_string(setup.block) + " samples");
  // Frequencies are doubles, and points must stay apart in them.
  if (zoom.span / (zoom.points - 1) < 1e-13 * (std::fabs(zoom.centre) + recording.Rate()))
    throw UsageError("--span: " + Hertz(zoom.span) + " is too narrow for " + std::to_string(zoom.points) +
                     " points");
  setup.zoom = zoom;
}

} // namespace

void AddZoom(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("zoom", "Look into a narrow part of a recording's spectrum");
  AddRecording(*command, options->recording);
  command->add_option("--centre", options->centre, "middle of the part, such as 1090e6")
      ->type_name("HZ")
      ->required();
  command->add_option("--span", options->span, "width of the part")->type_name("HZ")->required();
  command->add_option("--points", options->points, "points over the span (1001)")
      ->type_name("N")
      ->transform(WholeNumber(kMinPoints, kMaxPoints));
  command->add_option("--samples", options->samples, "samples of a block (for 5 points per bin)")
      ->type_name("N")
      ->transform(WholeNumber(kMinBlock, kMaxBlock));
  AddMeasurementOptions(*command, *options);
  command->footer("Windows: " + Wrapped(WindowNames(), 9) +
                  ".\n"
                  "HZ is a frequency as qorn spectrum reports it. More samples in a block tell\n"
                  "finer lines apart. dBm is power into 50 ohm; dBV and V are a tone's amplitude.");
  command->callback([options] {
    RunMeasurement(*options,
                   [&](Setup &setup, const Recording &recording) { Plan(setup, *options, recording); });
  });
}

} // namespace tool
