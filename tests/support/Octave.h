// Tests that need a MATLAB-compatible interpreter.
#ifndef QORN_TESTS_SUPPORT_OCTAVE_H
#define QORN_TESTS_SUPPORT_OCTAVE_H

#include <gtest/gtest.h>

#include <cstdlib>

namespace QORN::test {

/// Programs and scripts of the tests may be told to do without.
inline bool WithoutOctave() { return std::getenv("QORN_TEST_WITHOUT_OCTAVE") != nullptr; }

#define QORN_SKIP_WITHOUT_OCTAVE()                                                                           \
  if (QORN::test::WithoutOctave()) GTEST_SKIP() << "told to do without GNU Octave"

/// The interpreter of the tests: MATLAB, should there be one, is left alone.
inline constexpr const char *kOctave = "octave-cli";

} // namespace QORN::test

#endif
