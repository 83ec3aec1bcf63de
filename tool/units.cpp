// qorn units: the library's dictionary of unit conversions.

#include <qorn/qorn.h>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Commands.h"
#include "Failure.h"
#include "Options.h"
#include "Text.h"

namespace tool {

namespace {

using U = QORN::UnitConversion;

enum class Group { kToLogarithmic, kToLinear, kOffsets, kLinear };

struct Conversion {
  Group group;
  const char *from;
  const char *to;
  const char *formula;
  const char *name; ///< of the function
  double (*convert)(double);
};

constexpr Conversion kConversions[] = {
    {Group::kToLogarithmic, "V/V", "dB", "20 log10(x)", "VoltageRatio2dB", U::VoltageRatio2dB},
    {Group::kToLogarithmic, "W/W", "dB", "10 log10(x)", "PowerRatio2dB", U::PowerRatio2dB},
    {Group::kToLogarithmic, "V", "dBV", "20 log10(x)", "Volt2dBV", U::Volt2dBV},
    {Group::kToLogarithmic, "V", "dBm", "20 log10(x / sqrt(0.05))", "Volt2dBm", U::Volt2dBm},
    {Group::kToLogarithmic, "Vpeak", "dBm", "20 log10(x) + 10", "PeakVolt2dBm", U::PeakVolt2dBm},
    {Group::kToLogarithmic, "uA", "dBm", "20 log10(x) - 73.0102999566398", "uA2dBm", U::uA2dBm},
    {Group::kToLogarithmic, "W", "dBm", "10 log10(1000 x)", "Watt2dBm", U::Watt2dBm},
    {Group::kToLogarithmic, "W", "dBV", "10 log10(1000 x) - 13.01029995663981", "Watt2dBV", U::Watt2dBV},
    {Group::kToLinear, "dB", "V/V", "10^(x / 20)", "dB2VoltageRatio", U::dB2VoltageRatio},
    {Group::kToLinear, "dB", "W/W", "10^(x / 10)", "dB2PowerRatio", U::dB2PowerRatio},
    {Group::kToLinear, "dBV", "V", "10^(x / 20)", "dBV2Volt", U::dBV2Volt},
    {Group::kToLinear, "dBV", "W", "10^((x + 13.01029995663981) / 10) * 0.001", "dBV2Watt", U::dBV2Watt},
    {Group::kToLinear, "dBm", "V", "10^(x / 20) * sqrt(0.05)", "dBm2Volt", U::dBm2Volt},
    {Group::kToLinear, "dBm", "Vpeak", "10^((x - 10) / 20)", "dBm2PeakVolt", U::dBm2PeakVolt},
    {Group::kToLinear, "dBm", "uA", "10^((x + 73.0102999566398) / 20)", "dBm2uA", U::dBm2uA},
    {Group::kToLinear, "dBm", "W", "10^(x / 10) * 0.001", "dBm2Watt", U::dBm2Watt},
    {Group::kOffsets, "dBm", "dBW", "x - 30", "dBm2dBW", U::dBm2dBW},
    {Group::kOffsets, "dBW", "dBm", "x + 30", "dBW2dBm", U::dBW2dBm},
    {Group::kOffsets, "dBm", "dBuW", "x + 30", "dBm2dBuW", U::dBm2dBuW},
    {Group::kOffsets, "dBuW", "dBm", "x - 30", "dBuW2dBm", U::dBuW2dBm},
    {Group::kOffsets, "dBm", "dBV", "x - 13.01029995663981", "dBm2dBV", U::dBm2dBV},
    {Group::kOffsets, "dBV", "dBm", "x + 13.01029995663981", "dBV2dBm", U::dBV2dBm},
    {Group::kOffsets, "dBm", "dBmV", "x + 46.9897000433602", "dBm2dBmV", U::dBm2dBmV},
    {Group::kOffsets, "dBmV", "dBm", "x - 46.9897000433602", "dBmV2dBm", U::dBmV2dBm},
    {Group::kOffsets, "dBm", "dBuV", "x + 106.9897000433602", "dBm2dBuV", U::dBm2dBuV},
    {Group::kOffsets, "dBuV", "dBm", "x - 106.9897000433602", "dBuV2dBm", U::dBuV2dBm},
    {Group::kOffsets, "dBm", "dBmA", "x + 13.0102999566398", "dBm2dBmA", U::dBm2dBmA},
    {Group::kOffsets, "dBmA", "dBm", "x - 13.0102999566398", "dBmA2dBm", U::dBmA2dBm},
    {Group::kOffsets, "dBm", "dBuA", "x + 73.0102999566398", "dBm2dBuA", U::dBm2dBuA},
    {Group::kOffsets, "dBuA", "dBm", "x - 73.0102999566398", "dBuA2dBm", U::dBuA2dBm},
    {Group::kOffsets, "dBm", "dBuV/m", "x + 106.9897000433602", "dBm2dBuVm", U::dBm2dBuVm},
    {Group::kOffsets, "dBuV/m", "dBm", "x - 106.9897000433602", "dBuVm2dBm", U::dBuVm2dBm},
    {Group::kOffsets, "dBm", "dBuA/m", "(x + 106.9897000433602) - 51.5266223748352", "dBm2dBuAm",
     U::dBm2dBuAm},
    {Group::kOffsets, "dBuA/m", "dBm", "(x + 51.5266223748352) - 106.9897000433602", "dBuAm2dBm",
     U::dBuAm2dBm},
    {Group::kOffsets, "dBpT", "dBuV/m", "x + 49.5", "dBpT2dBuVm", U::dBpT2dBuVm},
    {Group::kOffsets, "dBuV/m", "dBpT", "x - 49.5", "dBuVm2dBpT", U::dBuVm2dBpT},
    {Group::kLinear, "V", "W", "x^2 / 50", "Volt2Watt", U::Volt2Watt},
    {Group::kLinear, "W", "V", "sqrt(50 x)", "Watt2Volt", U::Watt2Volt},
    {Group::kLinear, "V", "A", "x / 50", "Volts2Amps", U::Volts2Amps},
    {Group::kLinear, "A", "V", "50 x", "Amps2Volts", U::Amps2Volts},
    {Group::kLinear, "deg", "rad", "x * 0.017453292519943", "Deg2Rad", U::Deg2Rad},
    {Group::kLinear, "rad", "deg", "x * 57.29577951308232", "Rad2Deg", U::Rad2Deg},
};

const char *NameOf(Group group) {
  switch (group) {
  case Group::kToLogarithmic:
    return "Linear to logarithmic";
  case Group::kToLinear:
    return "Logarithmic to linear";
  case Group::kOffsets:
    return "Logarithmic to logarithmic";
  default:
    return "Linear and angles";
  }
}

// A unit is known in any case, with or without its stroke, and with a micro sign for the u.
std::string Plain(const std::string &name) {
  std::string plain;
  for (const char c : Lower(name)) {
    const bool isMicro = !plain.empty() && ((plain.back() == '\xC2' && c == '\xB5') || // the sign
                                            (plain.back() == '\xCE' && c == '\xBC'));  // the Greek letter
    if (isMicro)
      plain.back() = 'u';
    else if (c != '/')
      plain += c;
  }
  return plain;
}

void AddOnce(std::vector<std::string> &names, const std::string &name) {
  if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
}

// All units, or those that a unit goes to; Plain of the argument counts.
std::vector<std::string> Units(const std::string &from = "") {
  std::vector<std::string> names;
  for (const Conversion &row : kConversions)
    if (from.empty() || Plain(row.from) == Plain(from)) {
      if (from.empty()) AddOnce(names, row.from);
      AddOnce(names, row.to);
    }
  std::sort(names.begin(), names.end(), [](const auto &a, const auto &b) { return Lower(a) < Lower(b); });
  return names;
}

const Conversion &Find(const std::string &from, const std::string &to) {
  for (const Conversion &row : kConversions)
    if (Plain(row.from) == Plain(from) && Plain(row.to) == Plain(to)) return row;
  const std::vector<std::string> known = Units();
  const auto nameOf = [&](const std::string &name) -> const std::string * {
    for (const std::string &unit : known)
      if (Plain(unit) == Plain(name)) return &unit;
    return nullptr;
  };
  const std::string *source = nameOf(from);
  if (source == nullptr)
    throw UsageError("FROM: unknown unit " + Quoted(from) + "; known are " + Joined(known));
  const std::string *target = nameOf(to);
  throw UsageError("TO: " +
                   (target == nullptr ? "unknown unit " + Quoted(to)
                                      : "no conversion from " + *source + " to " + *target) +
                   "; " + *source + " goes to " + Joined(Units(from)));
}

struct Options {
  std::string value;
  std::string from;
  std::string to;
  bool list = false;
};

void Convert(const Options &options) {
  const double x = NumberOf("VALUE", options.value);
  const Conversion &row = Find(options.from, options.to);
  const double result = row.convert(x);
  const auto refuse = [&](const std::string &reason) {
    throw UsageError("VALUE: " + Printable(options.value) + " " + row.from + reason);
  };
  // The library answers a logarithm of nothing with a number that stands for it. Here it is a slip.
  if (row.group == Group::kToLogarithmic && x <= 0.0) refuse(" has no logarithm");
  if (std::isnan(result)) refuse(std::string(" has no value in ") + row.to);
  if (std::isinf(result) || (row.group == Group::kToLinear && result == 0.0))
    refuse(std::string(" is out of range in ") + row.to);
  std::cout << Significant(result, 12) << ' ' << row.to << '\n';
}

void List() {
  const Conversion *before = nullptr;
  for (const Conversion &row : kConversions) {
    if (before == nullptr || before->group != row.group) std::cout << NameOf(row.group) << '\n';
    before = &row;
    std::cout << std::left << "  " << std::setw(8) << row.from << std::setw(8) << row.to << std::setw(44)
              << row.formula << row.name << '\n';
  }
}

} // namespace

void AddUnits(CLI::App &app) {
  const auto options = std::make_shared<Options>();
  CLI::App *command = app.add_subcommand("units", "Convert a value between units");
  const CLI::Option *positionals[] = {
      command->add_option("VALUE", options->value, "number, such as -30 or 1e-3")->type_name(""),
      command->add_option("FROM", options->from, "its unit")->type_name(""),
      command->add_option("TO", options->to, "the unit to convert it to")->type_name(""),
  };
  command->add_flag("--list", options->list, "show all conversions instead");
  command->footer("Units: " + Wrapped(Joined(Units()), 7) +
                  ".\n"
                  "Case does not matter. V, A and uA are rms values, Vpeak is an amplitude. V/V and\n"
                  "W/W are ratios. The impedance is 50 ohm.");
  command->callback([=] {
    for (const CLI::Option *positional : positionals)
      if (positional->empty() != options->list)
        throw UsageError(options->list ? "--list stands alone, without VALUE, FROM and TO"
                                       : positional->get_name() + " is required");
    if (options->list)
      List();
    else
      Convert(*options);
  });
}

} // namespace tool
