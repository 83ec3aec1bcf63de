// Ramps: the index is converted, the product and the sum are rounded each.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"
#include "support/Wide.h"

namespace {

using QORN::TargetLib;
using QORN::test::Guarded;
using QORN::test::Lengths;
using QORN::test::Plus;
using QORN::test::Times;

namespace kernels = QORN::kernels;

template <class T> void CheckSlope(const char *name, void (*slope)(T *, int, T, T)) {
  const struct {
    double offset, slope;
  } cases[] = {{0, 1}, {1.1, 0.1}, {-3, 1e-3}, {1e30, -1e26}, {0, 0}, {0.7, 6.2831855 * 0.123}};
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const auto &c : cases) {
      const T offset = static_cast<T>(c.offset), step = static_cast<T>(c.slope);
      for (const int len : Lengths()) {
        Guarded<T> dst(len, (3 * len + 1) % 16);
        slope(dst.data(), len, offset, step);
        ASSERT_TRUE(dst.Intact()) << name << level.name << len;
        for (int i = 0; i < len; ++i) {
          ASSERT_EQ(dst.data()[i], Plus(Times(static_cast<T>(i), step), offset))
              << name << " at " << level.name << ", length " << len << ", index " << i;
        }
      }
    }
  }
}

TEST(TargetLib, VectorSlope_AnyOffsetAndSlope_RoundsProductAndSum) {
  CheckSlope("VectorSlope_32f", &TargetLib::VectorSlope_32f);
  CheckSlope("VectorSlope_64f", &TargetLib::VectorSlope_64f);
}

// Beyond 2^24, not every index is a float: the nearest one counts.
TEST(TargetLib, VectorSlope_IndexBeyondTheFloats_IsRounded) {
  const int len = (1 << 24) + 8;
  std::vector<float> dst(static_cast<std::size_t>(len));
  TargetLib::VectorSlope_32f(dst.data(), len, 0, 1);
  EXPECT_EQ(dst[(1 << 24) + 1], 16777216.0F);
  EXPECT_EQ(dst[(1 << 24) + 2], 16777218.0F);
  EXPECT_EQ(dst[(1 << 24) + 3], 16777220.0F);
}

} // namespace
