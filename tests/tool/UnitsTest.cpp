// qorn units.

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "ToolFixture.h"

namespace {

using QORN::test::Outcome;
using QORN::test::RunTool;
using QORN::test::Tool;

/// What a conversion prints, which must be one number and the unit.
double Converted(const std::string &value, const std::string &from, const std::string &to) {
  const Outcome outcome = RunTool({"units", value, from, to});
  EXPECT_EQ(outcome.status, 0) << outcome.error;
  EXPECT_EQ(outcome.error, "");
  std::istringstream line(outcome.out);
  double number = 0.0;
  std::string unit, rest;
  EXPECT_TRUE(line >> number >> unit) << outcome.out;
  EXPECT_FALSE(line >> rest) << rest;
  EXPECT_EQ(unit, to);
  return number;
}

struct Row {
  const char *from, *to;
  double value, expected;
};

// By definition, in a system of 50 ohm; a field of 1 V/m goes with one of 1 / (120 pi) A/m.
const double kDbvAt0Dbm = 10.0 * std::log10(0.05);
const double kField = 20.0 * std::log10(120.0 * std::acos(-1.0));
const std::vector<Row> kRows = {
    {"V/V", "dB", 2.0, 20.0 * std::log10(2.0)},
    {"W/W", "dB", 2.0, 10.0 * std::log10(2.0)},
    {"V", "dBV", 0.5, 20.0 * std::log10(0.5)},
    {"V", "dBm", 0.5, 10.0 * std::log10(0.5 * 0.5 / 50.0 / 1e-3)},
    {"Vpeak", "dBm", 0.5, 10.0 * std::log10(0.5 * 0.5 / 2.0 / 50.0 / 1e-3)},
    {"uA", "dBm", 7.0, 10.0 * std::log10(7e-6 * 7e-6 * 50.0 / 1e-3)},
    {"W", "dBm", 0.25, 10.0 * std::log10(0.25 / 1e-3)},
    {"W", "dBV", 0.25, 10.0 * std::log10(0.25 * 50.0)},
    {"dB", "V/V", -7.0, std::pow(10.0, -0.35)},
    {"dB", "W/W", -7.0, std::pow(10.0, -0.7)},
    {"dBV", "V", -7.0, std::pow(10.0, -0.35)},
    {"dBV", "W", -7.0, std::pow(10.0, -0.7) / 50.0},
    {"dBm", "V", -30.0, std::sqrt(1e-6 * 50.0)},
    {"dBm", "Vpeak", -30.0, std::sqrt(2.0 * 1e-6 * 50.0)},
    {"dBm", "uA", -30.0, 1e6 * std::sqrt(1e-6 / 50.0)},
    {"dBm", "W", -30.0, 1e-6},
    {"dBm", "dBW", 4.5, -25.5},
    {"dBW", "dBm", 4.5, 34.5},
    {"dBm", "dBuW", 4.5, 34.5},
    {"dBuW", "dBm", 4.5, -25.5},
    {"dBm", "dBV", 4.5, 4.5 + kDbvAt0Dbm},
    {"dBV", "dBm", 4.5, 4.5 - kDbvAt0Dbm},
    {"dBm", "dBmV", 4.5, 4.5 + kDbvAt0Dbm + 60.0},
    {"dBmV", "dBm", 4.5, 4.5 - kDbvAt0Dbm - 60.0},
    {"dBm", "dBuV", 4.5, 4.5 + kDbvAt0Dbm + 120.0},
    {"dBuV", "dBm", 4.5, 4.5 - kDbvAt0Dbm - 120.0},
    {"dBm", "dBmA", 4.5, 4.5 + 10.0 * std::log10(1e-3 / 50.0) + 60.0},
    {"dBmA", "dBm", 4.5, 4.5 - 10.0 * std::log10(1e-3 / 50.0) - 60.0},
    {"dBm", "dBuA", 4.5, 4.5 + 10.0 * std::log10(1e-3 / 50.0) + 120.0},
    {"dBuA", "dBm", 4.5, 4.5 - 10.0 * std::log10(1e-3 / 50.0) - 120.0},
    {"dBm", "dBuV/m", 4.5, 4.5 + kDbvAt0Dbm + 120.0},
    {"dBuV/m", "dBm", 4.5, 4.5 - kDbvAt0Dbm - 120.0},
    {"dBm", "dBuA/m", 4.5, 4.5 + kDbvAt0Dbm + 120.0 - kField},
    {"dBuA/m", "dBm", 4.5, 4.5 - kDbvAt0Dbm - 120.0 + kField},
    {"dBpT", "dBuV/m", 4.5, 54.0},
    {"dBuV/m", "dBpT", 4.5, -45.0},
    {"V", "W", 3.0, 9.0 / 50.0},
    {"W", "V", 3.0, std::sqrt(150.0)},
    {"V", "A", 3.0, 0.06},
    {"A", "V", 3.0, 150.0},
    {"deg", "rad", 90.0, std::acos(0.0)},
    {"rad", "deg", 1.0, 90.0 / std::acos(0.0)},
};

TEST_F(Tool, Units_EveryConversion_FollowsItsDefinition) {
  for (const Row &row : kRows) {
    std::ostringstream value;
    value << row.value;
    // Twelve digits are shown.
    EXPECT_NEAR(Converted(value.str(), row.from, row.to), row.expected,
                6e-12 * std::fabs(row.expected) + 1e-10)
        << row.from << ' ' << row.to;
  }
}

TEST_F(Tool, Units_List_ShowsEveryConversionAligned) {
  const Outcome outcome = RunTool({"units", "--list"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.error, "");
  std::istringstream lines(outcome.out);
  std::vector<std::string> groups, pairs, expected;
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 80U) << line;
    if (line[0] != ' ') {
      groups.push_back(line);
      continue;
    }
    EXPECT_EQ(line[1], ' ');
    for (const std::size_t column : {2U, 10U, 18U, 62U}) {
      EXPECT_EQ(line[column - 1], ' ') << line;
      EXPECT_NE(line[column], ' ') << line;
    }
    std::istringstream words(line);
    std::string from, to;
    words >> from >> to;
    pairs.push_back(from + " " + to);
  }
  EXPECT_EQ(groups, (std::vector<std::string>{"Linear to logarithmic", "Logarithmic to linear",
                                              "Logarithmic to logarithmic", "Linear and angles"}));
  for (const Row &row : kRows) expected.push_back(std::string(row.from) + " " + row.to);
  std::sort(pairs.begin(), pairs.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(pairs, expected);
  for (const char *line : {"  V       dBm     20 log10(x / sqrt(0.05))                    Volt2dBm\n",
                           "  dBuA/m  dBm     (x + 51.5266223748352) - 106.9897000433602  dBuAm2dBm\n"})
    EXPECT_NE(outcome.out.find(line), std::string::npos) << outcome.out;
}

TEST_F(Tool, Units_Numbers_AreTakenAsTheyAreWritten) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"-30", "-60 dBW\n"}, {"+3", "-27 dBW\n"},      {"-.5", "-30.5 dBW\n"}, {".5", "-29.5 dBW\n"},
      {"1e3", "970 dBW\n"}, {"-1E-1", "-30.1 dBW\n"}, {"30", "0 dBW\n"},      {"1e-7", "-29.9999999 dBW\n"},
  };
  for (const auto &[value, line] : cases) {
    const Outcome outcome = RunTool({"units", value, "dBm", "dBW"});
    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(outcome.out, line);
  }
  EXPECT_EQ(RunTool({"units", "--", "-30", "dBm", "dBW"}).out, "-60 dBW\n");
  EXPECT_EQ(RunTool({"units", "-0", "deg", "rad"}).out, "0 rad\n");
}

TEST_F(Tool, Units_Names_AreTakenInAnyCaseAndSpelling) {
  for (const char *name : {"dBuV/m", "DBUV/M", "dBuVm", "dB\xC2\xB5V/m", "dB\xCE\xBCVm"})
    EXPECT_EQ(RunTool({"units", "49.5", name, "dbpt"}).out, "0 dBpT\n") << name;
}

TEST_F(Tool, Units_WrongArguments_ExitWithTwoAndNameTheArgument) {
  const std::string units = "A, dB, dBm, dBmA, dBmV, dBpT, dBuA, dBuA/m, dBuV, dBuV/m, dBuW, dBV, dBW, deg, "
                            "rad, uA, V, V/V, Vpeak, W, W/W";
  const std::vector<std::pair<std::vector<std::string>, std::string>> cases = {
      {{}, "VALUE is required"},
      {{"1"}, "FROM is required"},
      {{"1", "V"}, "TO is required"},
      {{"1", "V", "W", "more"}, "The following argument was not expected: more"},
      {{"1", "V", "W", "--bogus"}, "The following argument was not expected: --bogus"},
      {{"-x", "V", "W"}, "The following argument was not expected: -x"},
      {{"1", "V", "W", "--list"}, "--list stands alone, without VALUE, FROM and TO"},
      {{"", "V", "W"}, "VALUE: '' is not a finite number"},
      {{"ten", "V", "W"}, "VALUE: 'ten' is not a finite number"},
      {{"-30dBm", "dBm", "W"}, "VALUE: '-30dBm' is not a finite number"},
      {{"1,5", "V", "W"}, "VALUE: '1,5' is not a finite number"},
      {{"0x10", "V", "W"}, "VALUE: '0x10' is not a finite number"},
      {{"1e400", "V", "W"}, "VALUE: '1e400' is not a finite number"},
      {{"nan", "V", "W"}, "VALUE: 'nan' is not a finite number"},
      {{"inf", "V", "W"}, "VALUE: 'inf' is not a finite number"},
      {{"+-1", "V", "W"}, "VALUE: '+-1' is not a finite number"},
      {{" 1", "V", "W"}, "VALUE: ' 1' is not a finite number"},
      {{"1", "mV", "V"}, "FROM: unknown unit 'mV'; known are " + units},
      {{"1", "", "V"}, "FROM: unknown unit ''; known are " + units},
      {{"1", "\x1B[2J", "V"}, "FROM: unknown unit '?[2J'; known are " + units},
      {{"1", "V", "mV"}, "TO: unknown unit 'mV'; V goes to A, dBm, dBV, W"},
      {{"1", "v", "RAD"}, "TO: no conversion from V to rad; V goes to A, dBm, dBV, W"},
      {{"1", "dBm", "dBm"},
       "TO: no conversion from dBm to dBm; dBm goes to dBmA, dBmV, dBuA, dBuA/m, dBuV, dBuV/m, dBuW, dBV, "
       "dBW, uA, V, Vpeak, W"},
      {{"0", "V", "dBm"}, "VALUE: 0 V has no logarithm"},
      {{"-1", "W/W", "dB"}, "VALUE: -1 W/W has no logarithm"},
      {{"-1", "W", "V"}, "VALUE: -1 W has no value in V"},
      {{"1e5", "dBm", "W"}, "VALUE: 1e5 dBm is out of range in W"},
      {{"-1e5", "dBm", "W"}, "VALUE: -1e5 dBm is out of range in W"},
      {{"1e200", "V", "W"}, "VALUE: 1e200 V is out of range in W"},
  };
  for (auto [arguments, message] : cases) {
    arguments.insert(arguments.begin(), "units");
    ExpectFailure(2, message, arguments);
  }
}

} // namespace
