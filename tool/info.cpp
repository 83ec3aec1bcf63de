// qorn info: all that the header of a recording says.

#include <qorn/qorn.h>

#include <cmath>
#include <iostream>
#include <memory>
#include <string>

#include "Commands.h"
#include "Options.h"
#include "Recording.h"
#include "Text.h"

namespace tool {

namespace {

void Line(const char *name, const std::string &value) {
  std::cout << "  ";
  tool::Line(std::cout, name, value);
}

void Run(const std::string &path) {
  const Recording recording(path);
  const QORN::IQFReader &reader = recording.Reader();
  std::cout << "Header of " << Printable(path) << '\n' << std::flush;
  reader.ListHeader();

  const double rate = reader.GetSamplingFrequency();
  const bool hasRate = rate > 0.0 && std::isfinite(rate);
  const auto samples = static_cast<double>(recording.Samples());
  std::cout << "What follows from it\n";
  Line("Samples", Grouped(recording.Samples()) + (hasRate ? ", " + Quantity(samples / rate, "s") : ""));
  Line("Sampling rate", hasRate ? Quantity(rate, "Hz") : "unknown");
  Line("Centre", Quantity(reader.GetCenterFrequency(), "Hz"));
  Line("Span", Quantity(reader.GetSpan(), "Hz"));
  Line("Blocks", Grouped(reader.GetNofBlocks()) + " of " + Grouped(reader.GetBlockSize()) +
                     " frames, the first of " + Grouped(reader.GetFirstBlockSize()));
  Line("Volts per step", Quantity(reader.GetScalingFactor(), "V"));
  Line("Full scale", Fixed(QORN::UnitConversion::PeakVolt2dBm(32768.0 * reader.GetScalingFactor()), 2) +
                         " dBm, a tone of 32 768 steps");
  const bool whole = recording.WholeFrames() == reader.GetNofValidFrames();
  Line("Frames in the file",
       Grouped(recording.WholeFrames()) + " of " + Grouped(reader.GetNofValidFrames()) +
           (whole ? "" : ": cut short") +
           (recording.HasFlatness() ? ", and the flatness record" : ", no flatness record"));
}

} // namespace

void AddInfo(CLI::App &app) {
  const auto path = std::make_shared<std::string>();
  CLI::App *command = app.add_subcommand("info", "Show what the header of a recording says");
  AddRecording(*command, *path);
  command->callback([path] { Run(*path); });
}

} // namespace tool
