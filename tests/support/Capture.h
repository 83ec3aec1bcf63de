// What a call printed or threw.
#ifndef QORN_TESTS_SUPPORT_CAPTURE_H
#define QORN_TESTS_SUPPORT_CAPTURE_H

#include <gtest/gtest.h>

#include <string>

#include "qorn/infra/QORNException.h"

namespace QORN::test {

/// The text that call() writes to the standard output.
template <class Call> std::string PrintedBy(Call call) {
  testing::internal::CaptureStdout();
  call();
  return testing::internal::GetCapturedStdout();
}

/// The exception that call() throws, or one of code 0.
template <class Call> QORNException ThrownBy(Call call) {
  try {
    call();
  } catch (const QORNException &exception) {
    return exception;
  }
  return QORNException(0, "nothing was thrown", "", 0);
}

/// Expects call() to throw the given code, message and path literal, with a line number.
template <class Call> void ExpectThrown(Call call, int code, const char *message, const char *path) {
  const QORNException exception = ThrownBy(call);
  EXPECT_EQ(exception.GetErrorCode(), code);
  EXPECT_STREQ(exception.GetMessage(), message);
  EXPECT_STREQ(exception.GetFileName(), path);
  EXPECT_GT(exception.GetLineNumber(), 0);
}

} // namespace QORN::test

#endif
