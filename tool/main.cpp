// qorn: looks at recorded IQ files from the command line.

#include <qorn/qorn.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "Options.h"
#include "Text.h"

namespace {

int Fail(int status, std::string message) {
  std::cout.flush();
  std::cerr << "qorn: " << tool::Printable(message) << '\n';
  return status;
}

int Run(int argc, char **argv) {
  CLI::App app("Measures, filters, converts and makes IQ recordings; knows windows and units.", "qorn");
  app.set_version_flag("--version", "qorn " QORN_VERSION_STRING);
  app.require_subcommand(1);
  app.get_formatter()->column_width(24);
  tool::AddInfo(app);
  tool::AddSpectrum(app);
  tool::AddZoom(app);
  tool::AddPlot(app);
  tool::AddFilter(app);
  tool::AddConvert(app);
  tool::AddResample(app);
  tool::AddGenerate(app);
  tool::AddWindows(app);
  tool::AddUnits(app);
  std::vector<std::string> commands;
  for (CLI::App *command : app.get_subcommands({})) {
    commands.push_back(command->get_name());
    for (CLI::Option *option : command->get_options())
      if (option->get_type_name() == "FILE") option->check(tool::FileName());
  }
  const std::string known = "; known are " + tool::Joined(commands);
  if (argc < 2) return Fail(tool::kUsageStatus, "a subcommand is missing" + known + " (see qorn --help)");
  if (argv[1][0] != '-' && std::find(commands.begin(), commands.end(), argv[1]) == commands.end())
    return Fail(tool::kUsageStatus, "unknown subcommand " + tool::Quoted(argv[1]) + known);
  // "-.5" is a number, which the parser would take for an option unless a digit follows the sign.
  std::vector<std::string> words(argv + 1, argv + argc);
  for (std::string &word : words)
    if (word.size() > 2 && word.compare(0, 2, "-.") == 0 && word[2] >= '0' && word[2] <= '9')
      word.insert(1, 1, '0');
  std::reverse(words.begin(), words.end()); // as parse wants them
  try {
    app.parse(std::move(words));
  } catch (const CLI::Success &done) {
    app.exit(done);
  } catch (const CLI::ParseError &error) {
    return Fail(tool::kUsageStatus, error.what());
  }
  return 0;
}

} // namespace

int main(int argc, char **argv) {
  // A file that gets too large is then an error with a message, and not the end.
  std::signal(SIGXFSZ, SIG_IGN);
  try {
    const int status = Run(argc, argv);
    if (status != 0) return status;
    std::cout.flush();
    if (!std::cout || std::fflush(stdout) != 0)
      return Fail(tool::kDataStatus, "the output could not be written");
    return 0;
  } catch (const tool::UsageError &error) {
    return Fail(tool::kUsageStatus, error.what());
  } catch (QORN::QORNException &error) {
    return Fail(tool::kDataStatus,
                error.GetErrorCode() == 11001 ? "there is not enough memory" : error.GetMessage());
  } catch (const std::bad_alloc &) {
    return Fail(tool::kDataStatus, "there is not enough memory");
  } catch (const std::exception &error) {
    return Fail(tool::kDataStatus, error.what());
  }
}
