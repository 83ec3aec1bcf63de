// qorn filter: designs a filter, tells and draws what it does, and runs recordings through it.

#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "Commands.h"
#include "Extent.h"
#include "Failure.h"
#include "FilterDesign.h"
#include "FilterFigures.h"
#include "FilterOptions.h"
#include "FilterPicture.h"
#include "FilteredRecording.h"
#include "FittedRecording.h"
#include "Options.h"
#include "OutputFile.h"
#include "Progress.h"
#include "Text.h"

namespace tool {

namespace {

struct Options : ExtentOptions {
  FilterOptions filter;
  std::string recording;
  std::string out;
  std::string svg;
  std::string csv;
  bool json = false;
  std::string gallery;
};

void RunOne(const Options &options) {
  const FilterKind &kind = *FindFilter(options.filter.type);
  const bool runs = !options.recording.empty();
  if (runs && options.out.empty()) throw UsageError("--out is required to filter a recording");
  const auto needsRecording = [&](const char *option, bool given) {
    if (!runs && given) throw UsageError(std::string(option) + ": there is no RECORDING to filter");
  };
  needsRecording("--out", !options.out.empty());
  needsRecording("--start", options.start != 0);
  needsRecording("--count", options.count.has_value());
  if (runs && kind.isStep)
    throw UsageError(std::string(kind.name) +
                     ": what it adds for a sample never ends; it filters no recording");
  std::optional<Recording> recording;
  Extent extent{};
  if (runs) {
    recording.emplace(options.recording);
    recording->CheckSignal();
    extent = ExtentOf(options, *recording);
    CheckHeld(extent, *recording);
  }
  const FilterParameters parameters = ParametersOf(kind, options.filter, recording ? &*recording : nullptr);
  const QORN::VecCplx32 userTaps = UserTapsOf(kind, options.filter);
  OutputFiles files({{"--svg", options.svg}, {"--csv", options.csv}, {"--out", options.out}},
                    options.recording, {{"--taps-from", options.filter.tapsFrom}});
  const FilterFigures figures = FiguresOf(DesignOf(kind, parameters, userTaps));
  std::optional<FilteredRecording> filtered;
  const Format format = recording ? FormatOfPath(options.out).value_or(recording->Format()) : Format::kIqf;
  files.Write({[&](std::ostream &out) { WriteSvg(out, figures); },
               [&](std::ostream &out) { WriteCsv(out, figures); },
               [&](std::ostream &out) {
                 Progress progress(RunsFor(format) * extent.count);
                 filtered = WriteFiltered(out, format, *recording, extent, figures.design,
                                          [&](std::int64_t done) { progress.Update(done); });
               }});
  std::ostream &out = files.Report();
  if (options.json) {
    nlohmann::ordered_json report = JsonOf(figures);
    if (filtered) {
      nlohmann::ordered_json &part = report["filtered"];
      part["recording"] = options.out;
      part["samples"] = filtered->samples;
      if (filtered->frames > 0) part["frames"] = filtered->frames;
      part["advance_samples"] = filtered->advance;
      part["peak_v"] = filtered->peak;
      part["volts_per_step"] = filtered->step;
    }
    // A path need not be valid UTF-8, JSON must.
    out << report.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
    return;
  }
  WriteText(out, figures);
  if (!filtered) return;
  Line(out, "Filtered", Printable(options.out));
  Line(out, "Samples",
       Grouped(filtered->samples) + ", " + Grouped(filtered->advance) + " of delay taken off");
  Line(out, "Largest value",
       Quantity(filtered->peak, "V") + ", " + Quantity(filtered->step, "V") + " per step");
}

void RunGallery(const CLI::App &command, const Options &options) {
  for (const CLI::Option *option : command.get_options())
    if (option->count() > 0 && option->get_name() != "--gallery")
      throw UsageError("--gallery: " + option->get_name() + " does not go with it");
  namespace fs = std::filesystem;
  const fs::path folder = options.gallery;
  std::error_code error;
  if (!fs::is_directory(folder, error)) fs::create_directory(folder, error);
  if (!fs::is_directory(folder))
    throw UsageError("--gallery: " + Quoted(options.gallery) + " cannot be made a folder" +
                     (error ? ": " + error.message() : ""));
  for (const FilterKind &kind : Filters()) {
    const std::string path = (folder / (std::string(kind.name) + ".svg")).string();
    OutputFiles files({{"--gallery", path}});
    const FilterFigures figures = FiguresOf(DesignOf(kind, kind.example, ExampleTaps()));
    files.Write({[&](std::ostream &out) { WriteSvg(out, figures); }});
    std::cout << Printable(path) << '\n';
  }
}

} // namespace

void AddFilter(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("filter", "Design a filter, draw it, and filter a recording");
  const auto text = [&](const char *name, std::string &value, const char *type, const char *help) {
    command->add_option(name, value, help)->type_name(type);
  };
  AddFilterType(*command, options->filter);
  text("RECORDING", options->recording, "", "IQF or XIQ file to filter");
  AddFilterOptions(*command, options->filter);
  text("--out", options->out, "FILE", "write the filtered recording, its format by name");
  AddExtentOptions(*command, *options);
  text("--svg", options->svg, "FILE", "write a picture");
  text("--csv", options->csv, "FILE", "write the taps as a table");
  command->add_flag("--json", options->json, "report as JSON instead of text");
  text("--gallery", options->gallery, "DIR", "write a picture of every filter, and nothing else");
  command->footer("Filters: " + Wrapped(FilterNames(), 9) +
                  ".\n"
                  "Each type takes the options that design it, and names them if one is missing or\n"
                  "too many; is95, c4fm and hdqpsk filters know their symbol rates. Bandwidths and\n"
                  "nulls are those of the taps; of the integral types, those of the pulse whose\n"
                  "running sum the taps are. user takes the taps of the file in reverse order.\n"
                  "\n"
                  "A recording is filtered at its own sampling rate. Half the taps are taken off as\n"
                  "delay, so each sample stays at its time; an even number of taps leaves it half a\n"
                  "sample early. As many samples come out as went in, the first and last of them\n"
                  "from zeros beyond the ends. The scale is such that the largest value just fits.");
  command->callback([options, command] {
    if (!options->gallery.empty())
      RunGallery(*command, *options);
    else if (options->filter.type.empty())
      throw UsageError("TYPE is required");
    else
      RunOne(*options);
  });
}

} // namespace tool
