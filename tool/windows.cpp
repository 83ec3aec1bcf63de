// qorn windows: the shapes of the windows, and their figures.

#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include "Options.h"
#include "OutputFile.h"
#include "WindowFigures.h"
#include "WindowPicture.h"

namespace tool {

namespace {

struct Options {
  std::vector<std::string> names;
  int points = 1024;
  std::string svg;
  std::string csv;
  bool json = false;
};

// Those that are named, each once, or all.
std::vector<const WindowKind *> Chosen(const std::vector<std::string> &names) {
  std::vector<const WindowKind *> chosen;
  for (const std::string &name : names) {
    const WindowKind *kind = FindWindow(name);
    if (std::find(chosen.begin(), chosen.end(), kind) == chosen.end()) chosen.push_back(kind);
  }
  if (names.empty())
    for (const WindowKind &kind : Windows()) chosen.push_back(&kind);
  return chosen;
}

void Run(const Options &options) {
  OutputFiles files({{"--svg", options.svg}, {"--csv", options.csv}});
  std::vector<WindowFigures> figures;
  for (const WindowKind *kind : Chosen(options.names)) figures.push_back(FiguresOf(*kind, options.points));
  files.Write({[&](std::ostream &out) { WriteSvg(out, figures, options.points); },
               [&](std::ostream &out) { WriteCsv(out, figures); }});
  if (options.json)
    WriteJson(std::cout, figures, options.points);
  else
    WriteText(std::cout, figures, options.points);
}

} // namespace

void AddWindows(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("windows", "Compare the windows by shape and figures");
  command->add_option("NAME", options->names, "windows (all)")->type_name("")->check(KnownWindow());
  command->add_option("--points", options->points, "points of the windows (1024)")
      ->type_name("N")
      ->transform(WholeNumber(16, 65536));
  command->add_option("--svg", options->svg, "write a picture of weights and responses")->type_name("FILE");
  command->add_option("--csv", options->csv, "write the figures as a table")->type_name("FILE");
  command->add_flag("--json", options->json, "report as JSON instead of text");
  command->footer("Windows: " + Wrapped(WindowNames(), 9) +
                  ".\n"
                  "A bin is the sampling rate divided by the number of points. ENBW is the noise\n"
                  "bandwidth; 3 dB and 6 dB stand for half the power and half the amplitude.\n"
                  "Scalloping is how far a tone midway between two bins reads low. RBW scaling is\n"
                  "the resolution bandwidth by which the library knows the window.");
  command->callback([options] { Run(*options); });
}

} // namespace tool
