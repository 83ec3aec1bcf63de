// Results that are written past the caches, with the limit set so low that short ones are.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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
using QORN::Cplx64;
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
  const std::int64_t cache = QORN::LargestCacheBytes();
#if defined(__SSE2__)
  if (cache != 0) {
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

// One kernel of each form: copied, to a wider and to a narrower type, from two sources, from and to complex.
TEST(Streamed, AnyKernel_AnyPlaceLengthAndAlias_GivesTheSame) {
  const ScopedLimit limit(1);
  CheckElementwise<double, double>("Copy_64f", &TargetLib::Copy_64f, [](double x) { return x; });
  CheckElementwise<unsigned char, unsigned char>("Copy_8u", &TargetLib::Copy_8u,
                                                 [](unsigned char x) { return x; });
  CheckElementwise<float, short>("Convert_16s32f", &TargetLib::Convert_16s32f,
                                 [](short x) { return static_cast<float>(x); });
  CheckElementwise<float, Cplx32>("Real_32fc", &TargetLib::Real_32fc, [](Cplx32 x) { return x.re; });
  CheckElementwise<Cplx64, double, double>("RealToCplx_64f", &TargetLib::RealToCplx_64f,
                                           [](double re, double im) {
                                             return Cplx64{re, im};
                                           });
  CheckElementwise<unsigned char, unsigned char, unsigned char>(
      "And_8u", &TargetLib::And_8u,
      [](unsigned char x, unsigned char y) { return static_cast<unsigned char>(x & y); });
  CheckElementwise<double, double>("Abs_64f", &TargetLib::Abs_64f, [](double x) { return std::fabs(x); });
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

// The lengths that a kernel is called with.
std::vector<int> lengths;

TEST(Streamed, Length_FromTheLimitOn_GoesInPieces) {
  kernels::Table counting = *kernels::active;
  counting.Abs_32f = [](const float *, float *, int len) { lengths.push_back(len); };
  const kernels::ScopedLevel level({"counting", &counting});
  const ScopedLimit limit(4000);
  std::vector<float> src(1001), dst(1001);
  const auto called = [&](int len, float *to) {
    lengths.clear();
    TargetLib::Abs_32f(src.data(), to, len);
    return lengths;
  };
  EXPECT_EQ(called(999, dst.data()), (std::vector<int>{999}));
  EXPECT_EQ(called(1000, dst.data()), (std::vector<int>{256, 256, 256, 232}));
  EXPECT_EQ(called(1001, dst.data()), (std::vector<int>{256, 256, 256, 233}));
  EXPECT_EQ(called(1001, src.data()), (std::vector<int>{1001})) << "in place";
}

// The real limit, where the processor tells its caches and they are no larger than here can be tried.
TEST(Streamed, Convert_ResultAtTheRealLimit_GivesEveryElement) {
  const std::size_t limit = kernels::streamedBytes;
  if (limit > (std::size_t{1} << 28))
    GTEST_SKIP() << "a result of " << limit << " bytes is too much for a test";
  const auto element = [](int i) { return static_cast<short>(i % 65521 - 32760); };
  for (const std::size_t bytes : {limit - 8, limit, limit + 8}) {
    const auto len = static_cast<int>(bytes / 8);
    std::vector<short> src(static_cast<std::size_t>(len) + 1);
    for (int i = 0; i < len; ++i) src[static_cast<std::size_t>(i)] = element(i);
    std::vector<int> narrow(static_cast<std::size_t>(len));
    std::vector<double> dst(static_cast<std::size_t>(len) + 1, -1.0);
    TargetLib::Convert_16s32s(src.data(), narrow.data(), len);
    TargetLib::Convert_32s64f(narrow.data(), dst.data(), len);
    for (int i = 0; i < len; ++i) {
      ASSERT_EQ(dst[static_cast<std::size_t>(i)], static_cast<double>(element(i))) << i;
    }
    EXPECT_EQ(dst.back(), -1.0);
  }
}

} // namespace
