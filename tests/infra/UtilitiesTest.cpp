#include "qorn/infra/Utilities.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>

#include "infra/PathRule.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/TempFile.h"

namespace {

using QORN::ResolvePath;
using QORN::Utilities;
using QORN::test::TempFile;

struct Case {
  const char *path, *expected;
};

TEST(Utilities, PathRule_WithBackslashes_IsThatOfWindows) {
  const Case cases[] = {
      {"a/b", "c:\\p\\a\\b"},
      {"a\\b", "c:\\p\\a\\b"},
      {"a", "c:\\p\\a"},
      {"", "c:\\p\\"},
      {".", "c:\\p\\."},
      {"..", "c:\\p\\.."},
      {"..\\a", "c:\\a"},
      {"../a", "c:\\a"},
      {"../../a", "c:\\a"}, // nothing left to cut
      {"..\\", "c:\\"},
      {"../a/b", "c:\\a\\b"},
      {"../a\\b", "c:\\b"}, // the step up ends at the first backslash
      {"a/../b", "c:\\p\\a\\..\\b"},
      {"...\\a", "c:\\p\\...\\a"},
      {"d:/x/y", "d:/x/y"},
      {"d:", "d:"},
      {"::", "::"},
      {"\\x/y", "\\x/y"},
      {"\\\\server\\x", "\\\\server\\x"},
      {"/x", "c:\\p\\\\x"}, // not absolute there
  };
  for (const Case &c : cases) EXPECT_EQ(ResolvePath("c:\\p\\bin\\x.exe", c.path, '\\'), c.expected) << c.path;
  EXPECT_EQ(ResolvePath("c:\\p\\q\\bin\\x.exe", "../../a", '\\'), "c:\\a");
  EXPECT_EQ(ResolvePath("x.exe", "a", '\\'), "x.exe\\a");
}

TEST(Utilities, PathRule_WithSlashes_UsesThem) {
  const Case cases[] = {
      {"a/b", "/opt/p/a/b"},  {"a\\b", "/opt/p/a/b"}, {"../a", "/opt/a"},  {"..\\a", "/opt/a"},
      {"../../a", "/a"},      {"../../../a", "/a"},   {"..", "/opt/p/.."}, {"/x\\y", "/x\\y"},
      {"c:\\x/y", "c:\\x/y"}, {"\\x", "\\x"},
  };
  for (const Case &c : cases) EXPECT_EQ(ResolvePath("/opt/p/bin/x", c.path, '/'), c.expected) << c.path;
  EXPECT_EQ(ResolvePath("/x", "a", '/'), "/a");
}

TEST(Utilities, PathRule_LongPaths_AreCutTo259CharactersUnlessAbsolute) {
  const std::string longName(400, 'n'), absolute = std::string("/").append(longName);
  const std::string resolved = ResolvePath("/p/bin/x", longName, '/');
  EXPECT_EQ(resolved, std::string("/p/").append(256, 'n'));
  EXPECT_EQ(ResolvePath("/p/bin/x", longName.substr(0, 256), '/'), resolved);
  EXPECT_EQ(ResolvePath("/p/bin/x", absolute, '/'), absolute);
}

std::string Freed(char *text) {
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  return text;
}

TEST(Utilities, GetAbsolutePath_OfThisProgram_IsTheFolderAboveItsFolder) {
  const auto folder = std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path().string();
  ASSERT_LT(folder.size(), 200U);
  EXPECT_EQ(Freed(Utilities::GetAbsolutePath("a/b")), std::string(folder).append("/a/b"));
  EXPECT_EQ(Freed(Utilities::GetAbsolutePath("/a/../b")), "/a/../b");
  EXPECT_EQ(Freed(Utilities::GetAbsolutePath("d:\\a/b")), "d:\\a/b");
  EXPECT_EQ(Utilities::GetAbsolutePath(nullptr), nullptr);
}

// The running program takes memory to tell.
TEST(Utilities, GetAbsolutePath_OfAnAbsolutePath_DoesNotAskForTheProgram) {
  for (const char *path : {"/a/../b", "\\a", "d:\\a/b"}) {
    const QORN::test::AllocationLimit limit(0);
    const std::unique_ptr<char, decltype(&std::free)> copy(Utilities::GetAbsolutePath(path), &std::free);
    EXPECT_STREQ(copy.get(), path);
  }
}

TEST(Utilities, GetAbsolutePath_WithoutMemory_IsNull) {
  const QORN::test::AllocationLimit limit(0);
  EXPECT_EQ(Utilities::GetAbsolutePath("a/b"), nullptr);
}

TEST(Utilities, GetAbsolutePathExt_ToABufferOrTheStaticOne_CopiesThePath) {
  const std::string expected = Freed(Utilities::GetAbsolutePath("a/b"));
  char buffer[Utilities::kPathLength];
  EXPECT_EQ(Utilities::GetAbsolutePathExt("a/b", buffer), buffer);
  EXPECT_EQ(buffer, expected);
  char *shared = Utilities::GetAbsolutePathExt("a/b", nullptr);
  EXPECT_EQ(shared, expected);
  EXPECT_EQ(Utilities::GetAbsolutePathExt("/c"), shared);
  EXPECT_STREQ(shared, "/c");
  const std::string absolute(400, '/');
  EXPECT_EQ(Utilities::GetAbsolutePathExt(absolute.c_str(), buffer), std::string(259, '/'));
  EXPECT_STREQ(Utilities::GetAbsolutePathExt(nullptr, buffer), "");
}

// The text of the C library, of a moment between two readings of the clock.
void ExpectTimeBetween(const std::string &text, std::time_t first, std::time_t last) {
  for (std::time_t t = first; t <= last; ++t) {
    if (text == std::asctime(std::localtime(&t))) return;
  }
  ADD_FAILURE() << text;
}

TEST(Utilities, TimeStamp_IntoABuffer_Is24CharactersAndANewline) {
  char buffer[Utilities::kTimeLength];
  const std::time_t before = std::time(nullptr);
  EXPECT_EQ(Utilities::TimeStamp(buffer), buffer);
  ExpectTimeBetween(buffer, before, std::time(nullptr));
  EXPECT_EQ(std::string(buffer).size(), 25U);
  EXPECT_EQ(buffer[24], '\n');
}

TEST(Utilities, TimeStamp_OfNull_IsTheStaticBuffer) {
  const std::time_t before = std::time(nullptr);
  const char *shared = Utilities::TimeStamp(nullptr);
  ExpectTimeBetween(shared, before, std::time(nullptr));
  EXPECT_EQ(Utilities::TimeStamp(), shared);
  char *none = nullptr;
  EXPECT_EQ(Utilities::TimeStamp(none), shared);
}

TEST(Utilities, TimeStamp_ToAStream_HasTwoNewlines) {
  const TempFile file;
  std::FILE *stream = std::fopen(file.Path(), "w");
  const std::time_t before = std::time(nullptr);
  Utilities::TimeStamp(stream);
  const std::time_t after = std::time(nullptr);
  std::fclose(stream);
  const std::string content = file.Content();
  ASSERT_EQ(content.size(), 26U);
  EXPECT_EQ(content.back(), '\n');
  ExpectTimeBetween(content.substr(0, 25), before, after);
  stream = nullptr;
  Utilities::TimeStamp(stream);
}

TEST(Utilities, PrintToOutputDebugWindow_OfAnyFormat_PrintsNothing) {
  EXPECT_EQ(QORN::test::PrintedBy([] {
              Utilities::PrintToOutputDebugWindow("%s %n", "text");
              Utilities::PrintToOutputDebugWindow(nullptr);
            }),
            "");
}

} // namespace
