// qorn: looks at recorded IQ files from the command line.

#include <qorn/qorn.h>

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "Text.h"

namespace {

int Fail(int status, std::string message) {
  std::cout.flush();
  std::cerr << "qorn: " << tool::Printable(message) << '\n';
  return status;
}

int Run(int argc, char **argv) {
  CLI::App app("Looks at recorded IQ files.", "qorn");
  app.set_version_flag("--version", "qorn " QORN_VERSION_STRING);
  app.require_subcommand(1);
  app.get_formatter()->column_width(24);
  tool::AddSpectrum(app);
  tool::AddInfo(app);
  if (argc < 2)
    return Fail(tool::kUsageStatus, "a subcommand is missing: spectrum or info (see qorn --help)");
  const std::vector<CLI::App *> commands = app.get_subcommands({});
  const auto isChosen = [&](const CLI::App *command) { return command->get_name() == argv[1]; };
  if (argv[1][0] != '-' && std::none_of(commands.begin(), commands.end(), isChosen))
    return Fail(tool::kUsageStatus,
                "unknown subcommand " + tool::Quoted(argv[1]) + "; known are spectrum and info");
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success &done) {
    app.exit(done);
  } catch (const CLI::ParseError &error) {
    return Fail(tool::kUsageStatus, error.what());
  }
  return 0;
}

} // namespace

int main(int argc, char **argv) {
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
