#include "qorn/infra/QORNException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <new>
#include <type_traits>

#include "infra/Errors.h"

namespace {

using QORN::QORNException;

TEST(QORNException, Record_AnyArguments_IsPlainAndCopyable) {
  EXPECT_FALSE(std::is_polymorphic_v<QORNException>);
  EXPECT_TRUE(std::is_trivially_copyable_v<QORNException>);
  EXPECT_FALSE((std::is_base_of_v<std::exception, QORNException>));
  EXPECT_TRUE(std::is_standard_layout_v<QORNException>);
  struct Layout {
    int errorCode;
    const char *message;
    const char *fileName;
    long lineNumber;
    unsigned int reserved;
  };
  EXPECT_EQ(sizeof(QORNException), sizeof(Layout));
}

TEST(QORNException, Constructor_AnyArguments_SetsReservedToZero) {
  alignas(QORNException) unsigned char memory[sizeof(QORNException)];
  std::fill(std::begin(memory), std::end(memory), static_cast<unsigned char>(0xFF));
  new (memory) QORNException(1, "", "", 1);
  for (std::size_t i = 32; i < 36; ++i) EXPECT_EQ(memory[i], 0) << i;
}

TEST(QORNException, Catch_ByValue_ReportsWhatTheConstructorWasGiven) {
  static const char message[] = "divide-by-zero error";
  static const char path[] = "infra\\TargetLib_ipp";
  try {
    throw QORNException(12001, message, path, 4711L);
  } catch (QORNException caught) {
    EXPECT_EQ(caught.GetErrorCode(), 12001);
    EXPECT_EQ(caught.GetMessage(), message);
    EXPECT_EQ(caught.GetFileName(), path);
    EXPECT_EQ(caught.GetLineNumber(), 4711L);
  }
}

TEST(QORNException, displayErrorMessage_AnyRecord_WritesThreeLinesToStandardError) {
  QORNException error(13001, "error opening file", "infra\\Vector", 123456789L);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  error.displayErrorMessage();
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "\nEXCEPTION: error opening file, QORNErrorCode: 13001\n"
                                                    "File: infra\\Vector,  Line: 123456789\n");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(QORNException, Throw_OfTheVocabulary_CarriesCodeMessagePathAndLine) {
  const long line = __LINE__ + 2;
  try {
    QORN::Throw(QORN::errors::kFileOpen, "utils\\IQFReader");
    FAIL();
  } catch (QORNException caught) {
    EXPECT_EQ(caught.GetErrorCode(), 13001);
    EXPECT_STREQ(caught.GetMessage(), "error opening file");
    EXPECT_STREQ(caught.GetFileName(), "utils\\IQFReader");
    EXPECT_EQ(caught.GetLineNumber(), line);
  }
}

TEST(QORNException, Vocabulary_EveryError_HasItsCodeAndMessage) {
  namespace errors = QORN::errors;
  const struct {
    QORN::Error error;
    int code;
    const char *message;
  } rows[] = {
      {errors::kMatlabAccess, 3, "MATLAB access error"},
      {errors::kUnexpectedSoftware, 10001, "unexpected software error"},
      {errors::kInvalidParameter, 10002, "invalid input parameter"},
      {errors::kMemoryAllocation, 11001, "memory allocation error"},
      {errors::kDivideByZero, 12001, "divide-by-zero error"},
      {errors::kSingularMatrix, 12004, "singular matrix"},
      {errors::kHermite, 12005, "CubicHermiteInterpolation error"},
      {errors::kFileOpen, 13001, "error opening file"},
      {errors::kFileRead, 13002, "error reading file"},
      {errors::kFileWrite, 13003, "error writing file"},
      {errors::kFileVersion, 13004, "file version error"},
      {errors::kFileType, 13005, "file type error"},
  };
  for (const auto &row : rows) {
    EXPECT_EQ(row.error.code, row.code);
    EXPECT_STREQ(row.error.message, row.message);
  }
}

} // namespace
