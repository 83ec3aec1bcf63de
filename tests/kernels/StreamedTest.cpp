// Copies that are written past the caches, with the limit set so low that short ones are.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <vector>

#include "infra/Processor.h"
#include "infra/Streamed.h"
#include "infra/kernels/Levels.h"
#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"

namespace {

using QORN::Cplx32;
using QORN::TargetLib;
using QORN::test::CheckElementwise;

namespace kernels = QORN::kernels;

class ScopedLimit {
public:
  explicit ScopedLimit(std::size_t bytes) : m_former(kernels::streamedBytes) {
    kernels::streamedBytes = bytes;
  }
  ~ScopedLimit() { kernels::streamedBytes = m_former; }
  ScopedLimit(const ScopedLimit &) = delete;
  ScopedLimit &operator=(const ScopedLimit &) = delete;

private:
  std::size_t m_former;
};

TEST(Streamed, Limit_IsTwiceTheLargestCache) {
#if defined(__SSE2__)
  if (const std::int64_t cache = QORN::LargestCacheBytes(); cache != 0) {
    EXPECT_EQ(kernels::streamedBytes, 2 * static_cast<std::size_t>(cache));
    return;
  }
#endif
  EXPECT_EQ(kernels::streamedBytes, SIZE_MAX);
}

TEST(Streamed, WritePastCaches_AnyPlaceAndLength_CopiesThoseBytesOnly) {
  for (std::size_t length = 1; length <= 260; ++length) {
    for (std::size_t place = 0; place < 64; ++place) {
      std::vector<unsigned char> src(length), dst(length + 128, 0xA5);
      std::iota(src.begin(), src.end(), static_cast<unsigned char>(length + place));
      std::vector<unsigned char> expected = dst;
      std::copy(src.begin(), src.end(), expected.begin() + static_cast<std::ptrdiff_t>(place));
      kernels::WritePastCaches(src.data(), dst.data() + place, length);
      kernels::FinishWritingPastCaches();
      ASSERT_EQ(dst, expected) << length << " bytes at " << place;
    }
  }
}

TEST(Streamed, Copy_AnyPlaceLengthAndAlias_GivesTheSame) {
  const ScopedLimit limit(1);
  CheckElementwise<double, double>("Copy_64f", &TargetLib::Copy_64f, [](double x) { return x; });
  CheckElementwise<unsigned char, unsigned char>("Copy_8u", &TargetLib::Copy_8u,
                                                 [](unsigned char x) { return x; });
  CheckElementwise<Cplx32, Cplx32>("Copy_32fc", &TargetLib::Copy_32fc, [](Cplx32 x) { return x; });
}

TEST(Streamed, Copy_OverlappingArrays_MovesAsIfThroughAnother) {
  const ScopedLimit limit(1);
  for (const int shift : {-300, -17, -1, 1, 17, 300}) {
    std::vector<int> values(3000);
    std::iota(values.begin(), values.end(), 0);
    int *src = values.data() + 500;
    TargetLib::Copy_32s(src, src + shift, 2000);
    for (int i = 0; i < 2000; ++i) ASSERT_EQ(src[shift + i], 500 + i) << "shift " << shift;
  }
}

int calls = 0;

TEST(Streamed, Copy_FromTheLimitOn_NeedsNoKernelUnlessItOverlaps) {
  kernels::Table counting = *kernels::active;
  counting.Copy_32f = [](const float *, float *, int) { ++calls; };
  const kernels::ScopedLevel level({"counting", &counting});
  const ScopedLimit limit(4000);
  std::vector<float> src(1001, 1.0F), dst(1001);
  const auto called = [&](int len, float *to) {
    calls = 0;
    TargetLib::Copy_32f(src.data(), to, len);
    return calls;
  };
  EXPECT_EQ(called(999, dst.data()), 1);
  EXPECT_EQ(dst[0], 0.0F);
  EXPECT_EQ(called(1000, dst.data()), 0);
  EXPECT_EQ(dst[999], 1.0F);
  EXPECT_EQ(dst[1000], 0.0F);
  EXPECT_EQ(called(1000, src.data()), 1) << "onto itself";
  EXPECT_EQ(called(1000, src.data() + 1), 1) << "overlapping";
}

} // namespace
