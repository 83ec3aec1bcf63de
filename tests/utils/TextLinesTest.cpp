// The fast scan of lines against the C library's own line reading.
#include "utils/TextLines.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "support/TempFile.h"
#include "utils/Number.h"

namespace {

using QORN::BinaryFile;
using QORN::ParseReal;
using QORN::TextLines;
using QORN::test::TempFile;

std::vector<std::string> LinesByFgets(const char *path) {
  std::vector<std::string> lines;
  std::FILE *file = std::fopen(path, "rb");
  for (char line[1024]; std::fgets(line, sizeof line, file) != nullptr;) lines.emplace_back(line);
  std::fclose(file);
  return lines;
}

// Bytes with texts, newlines and zeros at random places, dense or sparse.
std::string Bytes(std::mt19937 &random, std::size_t size) {
  static const std::string pieces[] = {"<DataSet>", "/Setup",          "/Setu",
                                       "p/",        "<DataSet>/Setup", std::string("<Data\0Set>", 10)};
  const auto pick = [&](unsigned n) { return random() % n; };
  const unsigned newlines = 1U << pick(14), zeros = 1U << pick(14), texts = 1U << (3 + pick(12));
  std::string bytes;
  while (bytes.size() < size) {
    if (pick(newlines) == 0) bytes += '\n';
    if (pick(zeros) == 0) bytes += '\0';
    if (pick(texts) == 0) bytes += pieces[pick(6)];
    bytes += "</a>D"[pick(5)];
  }
  return bytes;
}

TEST(TextLines, NextHolding_AnyBytes_GivesTheLinesThatFgetsGives) {
  std::mt19937 random(5);
  for (int round = 0; round < 60; ++round) {
    const TempFile file(Bytes(random, round % 5 == 0 ? 700000 : random() % 5000));
    std::vector<std::string> want, got;
    for (const std::string &line : LinesByFgets(file.Path())) {
      if (line.find("<DataSet>") != line.npos || line.find("/Setup") != line.npos) want.push_back(line);
    }
    const BinaryFile binary(file.Path(), BinaryFile::Mode::kRead, "test");
    TextLines lines(binary, {"<DataSet>", "/Setup"});
    for (std::string_view line; lines.NextHolding(line);) got.emplace_back(line);
    ASSERT_EQ(got, want) << round;
  }
}

TEST(TextLines, NextAndNextHoldingMixed_AnyBytes_FollowEachOther) {
  std::mt19937 random(6);
  for (int round = 0; round < 60; ++round) {
    const TempFile file(Bytes(random, round % 5 == 0 ? 700000 : random() % 5000));
    std::vector<std::string> want, got;
    const std::vector<std::string> all = LinesByFgets(file.Path());
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (all[i].find("<DataSet>") == std::string::npos) continue;
      for (std::size_t k = 0; k < 3 && i + k < all.size(); ++k) want.push_back(all[i + k]);
      i += 2;
    }
    const BinaryFile binary(file.Path(), BinaryFile::Mode::kRead, "test");
    TextLines lines(binary, {"<DataSet>"});
    for (std::string_view line; lines.NextHolding(line);) {
      got.emplace_back(line);
      for (int k = 0; k < 2 && lines.Next(line); ++k) got.emplace_back(line);
    }
    ASSERT_EQ(got, want) << round;
  }
}

TEST(TextLines, Next_AnyBytes_GivesTheLinesThatFgetsGives) {
  std::mt19937 random(7);
  for (int round = 0; round < 20; ++round) {
    const TempFile file(Bytes(random, round % 5 == 0 ? 700000 : random() % 5000));
    const BinaryFile binary(file.Path(), BinaryFile::Mode::kRead, "test");
    TextLines lines(binary, {});
    std::vector<std::string> got;
    for (std::string_view line; lines.Next(line);) got.emplace_back(line);
    ASSERT_EQ(got, LinesByFgets(file.Path())) << round;
  }
}

// The tests run in the "C" locale, where atof is the reference.
TEST(ParseReal, AnyText_IsReadAsAtofReadsIt) {
  std::vector<std::string> texts = {"",
                                    " ",
                                    "1",
                                    " \t\n\v\f\r12.5x",
                                    "+3",
                                    "-3",
                                    "+-3",
                                    "-+3",
                                    "--3",
                                    "-",
                                    "+",
                                    ".",
                                    "-.",
                                    ".5",
                                    "5.",
                                    "-.5e1",
                                    "1e",
                                    "1e+",
                                    "1e5",
                                    "1e+5",
                                    "1E-5",
                                    "1e999",
                                    "-1e999",
                                    "1e-999",
                                    "-1e-999",
                                    "inf",
                                    "-INF",
                                    "infinity",
                                    "nan",
                                    "abc",
                                    "-abc",
                                    "0",
                                    "-0",
                                    "1,5",
                                    "1 2",
                                    "1e99999999999999999999",
                                    "0e999",
                                    "1e-99999999999999999999",
                                    "1e9223372036854775807",
                                    "0.01e-9223372036854775808",
                                    "0.01e-2147483648",
                                    "4.9e-324",
                                    "2e-324",
                                    "1.7976931348623157e308",
                                    "0x10",
                                    " -0X1.8p3z",
                                    "+0x.8",
                                    "0x8.",
                                    "0x",
                                    "0xg",
                                    "0x.",
                                    "0x.g",
                                    "0x-5",
                                    "0x+5",
                                    "0xinf",
                                    "0xnan",
                                    "00x10",
                                    "x10",
                                    "0x1p",
                                    "0x1p+",
                                    "0x1p-1",
                                    "0x1p+-1",
                                    "0x.4P+-5",
                                    "0x1e5",
                                    "0xFFFFFFFFFFFFFFFF",
                                    "0x1.fffffffffffff8p0",
                                    "0x1.fffffffffffff7p0",
                                    "0x1p1023",
                                    "0x1p1024",
                                    "-0x1p1024",
                                    "0x1p-1074",
                                    "0x1p-1075",
                                    "0x1.8p-1075",
                                    "-0x1p-1076",
                                    "0x0.0000000000000000001p1100",
                                    "0x1p99999999999999999999",
                                    "0x1p-99999999999999999999",
                                    "0x0p99999999999999999999"};
  texts.push_back("0x" + std::string(400, 'f'));
  texts.push_back("0x" + std::string(400, '1') + "p-1500");
  texts.push_back("0x0." + std::string(400, '0') + "1p1700");
  texts.push_back("0x0." + std::string(400, '0') + "1");
  texts.push_back(std::string(400, '9'));
  texts.push_back("0." + std::string(400, '0') + "1");
  texts.push_back("0." + std::string(400, '0') + "1e390");
  texts.push_back(std::string(400, '1') + "e-390");
  // What stands behind the number is no exponent.
  for (const char *rest : {"x-999", "e", "e+", "e+-999", "-999", ".e", "e-"}) {
    texts.push_back(std::string(400, '1') + rest);
  }
  texts.push_back("-" + std::string(500, '1') + "." + std::string(500, '1'));
  for (const std::string &text : texts) {
    const double want = std::atof(text.c_str()), got = ParseReal(text);
    EXPECT_TRUE(std::memcmp(&want, &got, sizeof want) == 0 || (std::isnan(want) && std::isnan(got)))
        << text << ": " << got << " for " << want;
  }
}

} // namespace
