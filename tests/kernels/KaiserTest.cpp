// Kaiser windows against the formula in 40 digits.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "qorn/infra/TargetLib.h"
#include "support/Allocations.h"
#include "support/ExpectedValues.h"
#include "support/KernelCheck.h"

namespace {

using QORN::TargetLib;
using QORN::test::AllocationCount;
using QORN::test::AllocationLimit;
using QORN::test::Expected;
using QORN::test::ExpectedValues;
using QORN::test::Guarded;

// A value errs by some roundings of the Bessel functions, of which the series below 8 has the most, and by
// the rounding of the exponent alpha - x, which reaches alpha. Values below the normal range have no relative
// error.
double Bound(double epsilon, double alpha, double value) {
  return epsilon * (8 + alpha) * value + std::numeric_limits<double>::denorm_min();
}

TEST(TargetLib, GenKaiserWin64_LengthsAndShapes_IsTheFormula) {
  const std::vector<Expected> sets = ExpectedValues("kaiser");
  ASSERT_EQ(sets.size(), 90U);
  for (const Expected &set : sets) {
    const int len = static_cast<int>(set.parameters[0]);
    const double alpha = set.parameters[1];
    Guarded<double> window(len, len % 16);
    TargetLib::GenKaiserWin_64f(window.data(), len, static_cast<float>(alpha));
    ASSERT_TRUE(window.Intact()) << set.name;
    for (std::size_t k = 0; k < set.values.size(); ++k) {
      EXPECT_NEAR(window.data()[set.indices[k]], set.values[k],
                  Bound(std::numeric_limits<double>::epsilon(), alpha, set.values[k]))
          << set.name << ", index " << set.indices[k];
    }
  }
}

TEST(TargetLib, GenKaiserWin32_LengthsAndShapes_IsTheFormulaRoundedOnce) {
  for (const Expected &set : ExpectedValues("kaiser")) {
    const int len = static_cast<int>(set.parameters[0]);
    Guarded<float> window(len, len % 16);
    TargetLib::GenKaiserWin_32f(window.data(), len, static_cast<float>(set.parameters[1]));
    ASSERT_TRUE(window.Intact()) << set.name;
    for (std::size_t k = 0; k < set.values.size(); ++k) {
      const auto expected = static_cast<float>(set.values[k]);
      const float unit = std::nextafter(expected, 2.0F) - expected;
      EXPECT_NEAR(window.data()[set.indices[k]], set.values[k], 0.5001 * static_cast<double>(unit))
          << set.name << ", index " << set.indices[k];
    }
  }
}

TEST(TargetLib, GenKaiserWin_AnyLength_IsSymmetricWithAnExactTop) {
  for (int len = 1; len <= 1100; len = len < 70 ? len + 1 : len + 103) {
    for (const float alpha : {0.5F, 9.0F, 29.9F, 30.0F, 800.0F}) {
      Guarded<double> wide(len, 3);
      Guarded<float> narrow(len, 5);
      TargetLib::GenKaiserWin_64f(wide.data(), len, alpha);
      TargetLib::GenKaiserWin_32f(narrow.data(), len, alpha);
      ASSERT_TRUE(wide.Intact() && narrow.Intact());
      for (int n = 0; n < len; ++n) {
        ASSERT_EQ(wide.data()[n], wide.data()[len - 1 - n]) << len << ' ' << alpha;
        ASSERT_EQ(narrow.data()[n], narrow.data()[len - 1 - n]) << len << ' ' << alpha;
      }
      if (len % 2 != 0) {
        EXPECT_EQ(wide.data()[len / 2], 1) << len << ' ' << alpha;
        EXPECT_EQ(narrow.data()[len / 2], 1) << len << ' ' << alpha;
      }
    }
  }
}

TEST(TargetLib, GenKaiserWin_ShapeZero_IsAllOnes) {
  std::vector<float> window(33);
  TargetLib::GenKaiserWin_32f(window.data(), 33, 0);
  EXPECT_EQ(window, std::vector<float>(33, 1));
}

TEST(TargetLib, GenKaiserWin_NegativeShape_IsThatOfItsMagnitude) {
  std::vector<double> a(40), b(40);
  TargetLib::GenKaiserWin_64f(a.data(), 40, -12);
  TargetLib::GenKaiserWin_64f(b.data(), 40, 12);
  EXPECT_EQ(a, b);
}

TEST(TargetLib, GenKaiserWin32_Below30_NeedsNoMemoryFrom30OnADoubleArray) {
  float window[64] = {};
  const long before = AllocationCount();
  TargetLib::GenKaiserWin_32f(window, 64, 29.9F);
  EXPECT_EQ(AllocationCount(), before);
  TargetLib::GenKaiserWin_32f(window, 64, 30);
  EXPECT_EQ(AllocationCount(), before + 1);
  EXPECT_EQ(QORN::test::LatestRequest(), 64 * sizeof(double));
}

TEST(TargetLib, GenKaiserWin32_WithoutMemoryForTheDoubleArray_DoesNothing) {
  float window[8] = {9, 9, 9, 9, 9, 9, 9, 9};
  const AllocationLimit none(0);
  TargetLib::GenKaiserWin_32f(window, 8, 30);
  for (const float w : window) EXPECT_EQ(w, 9);
}

TEST(TargetLib, GenKaiserWin_EmptyOrNull_DoesNothing) {
  double wide[1] = {9};
  float narrow[1] = {9};
  TargetLib::GenKaiserWin_64f(wide, 0, 3);
  TargetLib::GenKaiserWin_64f(wide, -1, 3);
  TargetLib::GenKaiserWin_64f(nullptr, 5, 3);
  TargetLib::GenKaiserWin_32f(narrow, 0, 3);
  TargetLib::GenKaiserWin_32f(narrow, 0, 30);
  TargetLib::GenKaiserWin_32f(nullptr, 5, 30);
  EXPECT_EQ(wide[0], 9);
  EXPECT_EQ(narrow[0], 9);
}

TEST(TargetLib, GenKaiserWin_NotANumberShape_GivesNotANumber) {
  float window[4] = {};
  TargetLib::GenKaiserWin_32f(window, 4, std::numeric_limits<float>::quiet_NaN());
  for (const float w : window) EXPECT_TRUE(std::isnan(w));
}

} // namespace
