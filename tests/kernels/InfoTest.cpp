// The text about processor and kernels, line by line.
#include <gtest/gtest.h>

#include <cstdlib>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/Version.h"
#include "qorn/infra/TargetLib.h"

namespace {

using QORN::TargetLib;

namespace kernels = QORN::kernels;

std::vector<std::string> Lines(const std::string &text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

TEST(TargetLib, GetCpuAndLibInfo_EveryLine_HasItsFormat) {
  const std::string text = TargetLib::GetCpuAndLibInfo();
  ASSERT_LE(text.size(), 2000U);
  ASSERT_EQ(text.back(), '\n');
  const std::vector<std::string> lines = Lines(text);
  ASSERT_EQ(lines.size(), 8U);
  const std::string part = R"(Name:[^ ].*[^ ]  Ver:[^ ].*[^ ]  Build:\d+\.\d+\.\d+\.\d+)";
  const std::string formats[] = {R"(CPU  : Clk:\d+ MHz  Cache:\d+ kB)",
                                 R"(CPU  : Features:0x[0-9a-f]{8,16} = \[( \d+\(\d+\))* \])",
                                 "IPP  : " + part,
                                 "IPPs : " + part,
                                 "IPPvm: " + part,
                                 "IPPi : " + part,
                                 "IPPiLeg90 : " + part,
                                 "IPPmLeg90 : " + part};
  for (std::size_t i = 0; i < 8; ++i) {
    EXPECT_TRUE(std::regex_match(lines[i], std::regex(formats[i]))) << lines[i] << "\nis not\n" << formats[i];
  }
}

TEST(TargetLib, GetCpuAndLibInfo_Features_ListsTheBitsOfTheMask) {
  const std::string line = Lines(TargetLib::GetCpuAndLibInfo())[1];
  const std::size_t start = line.find("0x");
  const unsigned long long mask = std::strtoull(line.c_str() + start, nullptr, 16);
  std::string bits;
  for (int bit = 0; bit < 30; ++bit) {
    const unsigned long long value = 1ULL << bit;
    if ((mask & value) != 0) {
      bits.append(" ").append(std::to_string(bit)).append("(").append(std::to_string(value)).append(")");
    }
  }
  EXPECT_EQ(line.substr(line.find(" = ")), " = [" + bits + " ]");
#if defined(__x86_64__)
  EXPECT_NE(mask & 1, 0U); // every such processor has SSE2
#endif
}

TEST(TargetLib, GetCpuAndLibInfo_Versions_TellTheLibrarysAndTheLevel) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    const std::vector<std::string> lines = Lines(TargetLib::GetCpuAndLibInfo());
    const std::string expected = "Ver:" + std::string(QORN_VERSION_STRING) + " (" + level.name +
                                 ")  Build:" + std::to_string(QORN_VERSION_MAJOR) + '.' +
                                 std::to_string(QORN_VERSION_MINOR) + '.' +
                                 std::to_string(QORN_VERSION_PATCH) + ".0";
    for (std::size_t i = 2; i < lines.size(); ++i)
      EXPECT_NE(lines[i].find(expected), std::string::npos) << lines[i];
  }
}

TEST(TargetLib, GetCpuAndLibInfo_CalledAgain_OverwritesTheOneBuffer) {
  char *first = TargetLib::GetCpuAndLibInfo();
  const std::size_t length = std::string(first).size();
  first[0] = 'x';
  char *second = TargetLib::GetCpuAndLibInfo();
  EXPECT_EQ(first, second);
  EXPECT_EQ(second[0], 'C');
  EXPECT_NEAR(static_cast<double>(std::string(second).size()), static_cast<double>(length),
              4); // the clock may vary
}

} // namespace
