// The subcommands. Each adds itself to the command line and runs when it was chosen.
#ifndef QORN_TOOL_COMMANDS_H
#define QORN_TOOL_COMMANDS_H

#include <CLI/CLI.hpp>

namespace tool {

void AddConvert(CLI::App &app);
void AddFilter(CLI::App &app);
void AddGenerate(CLI::App &app);
void AddInfo(CLI::App &app);
void AddPlot(CLI::App &app);
void AddResample(CLI::App &app);
void AddSpectrum(CLI::App &app);
void AddUnits(CLI::App &app);
void AddWindows(CLI::App &app);
void AddZoom(CLI::App &app);

} // namespace tool

#endif
