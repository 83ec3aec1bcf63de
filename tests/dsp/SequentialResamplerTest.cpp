#include "qorn/dsp/SequentialResampler.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "qorn/dsp/ArbRateResampler.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"
#include "support/Allocations.h"
#include "support/Resampling.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Noise;
using test::Of;

// `count` samples from `first` on, zeros where the record has none.
template <class V> void Cut(V &piece, const V &record, long long first, int count) {
  piece.Resize(count);
  piece.SetZero();
  const long long begin = std::max(first, 0LL), end = std::min<long long>(first + count, record.GetSize());
  if (begin < end) {
    std::copy(record.GetPtr(static_cast<int>(begin)), record.GetPtr(static_cast<int>(begin)) + (end - begin),
              piece.GetPtr() + (begin - first));
  }
}

// All chunks of a record. Ends with the place behind the last sample that was consumed.
template <class V> long long RunChunks(SequentialResampler &resampler, const V &record, V &joined) {
  V piece, out;
  long long covered = 0;
  int length = 0;
  joined.Resize(2 * record.GetSize() + 1000);
  for (int i = 0; i < resampler.GetNumOfChunks(); ++i) {
    const int count =
        i == resampler.GetNumOfChunks() - 1 ? resampler.GetLastChunkSize() : resampler.GetChunkSize();
    const long long first = resampler.GetNextIndexInSrc();
    const int before = resampler.GetNumOfPreSamples();
    Cut(piece, record, first - before, before + count + resampler.GetNumOfPostSamples());
    resampler.Apply(out, piece);
    std::copy(out.GetPtr(), out.GetPtr() + out.GetSize(), joined.GetPtr() + length);
    length += out.GetSize();
    covered = first + count;
  }
  joined.Resize(length);
  return covered;
}

// The same record in one run over `count` samples.
template <class V>
void RunWhole(ArbRateResampler &resampler, const V &record, int count, double fraction, V &whole) {
  const int history = resampler.GetHistory();
  V padded;
  Cut(padded, record, -history, count + 2 * history);
  resampler.Apply(whole, padded, history + fraction, count);
}

TEST(SequentialResampler, ComputeSeqParams_AnyRecord_CutsIt) {
  SequentialResampler resampler(1.5, 1000, 100);
  EXPECT_EQ(resampler.GetChunkSize(), 100);
  EXPECT_EQ(resampler.GetNumOfChunks(), 10);
  EXPECT_EQ(resampler.GetLastChunkSize(), 100);
  resampler.ComputeSeqParams(300);
  EXPECT_EQ(resampler.GetChunkSize(), 300);
  EXPECT_EQ(resampler.GetNumOfChunks(), 4);
  EXPECT_EQ(resampler.GetLastChunkSize(), 100);
  resampler.ComputeSeqParams(5000); // a record shorter than a chunk
  EXPECT_EQ(resampler.GetNumOfChunks(), 1);
  EXPECT_EQ(resampler.GetLastChunkSize(), 1000);
  EXPECT_EQ(resampler.GetNextIndexInSrc(), 0);
  SequentialResampler large(1.5, 10000000001LL, 1000000);
  EXPECT_EQ(large.GetNumOfChunks(), 10001);
  EXPECT_EQ(large.GetLastChunkSize(), 1);
}

TEST(SequentialResampler, GetNumOfPreSamples_AnyRatio_IsTheHistory) {
  SequentialResampler up(1.5, 1000, 100), down(0.4, 1000, 100), wide(0.4, 1000, 100, 40.0F, 50);
  EXPECT_EQ(up.GetNumOfPreSamples(), 6);
  EXPECT_EQ(up.GetNumOfPostSamples(), 6);
  EXPECT_EQ(down.GetNumOfPreSamples(), 13); // 5 / 0.4 = 12.5
  EXPECT_EQ(down.GetNumOfPostSamples(), 13);
  EXPECT_EQ(wide.GetNumOfPreSamples(), 51);
}

TEST(SequentialResampler, ComputeSeqParams_UselessSizes_AreHarmless) {
  for (const long long total :
       {0LL, 1000LL, -1000LL, std::numeric_limits<long long>::max(), std::numeric_limits<long long>::min()}) {
    SequentialResampler resampler(1.5, total, 100);
    for (const int size : {0, -1, -100, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
      resampler.ComputeSeqParams(size);
      EXPECT_EQ(resampler.GetChunkSize(), size);
    }
    resampler.ComputeSeqParams(0);
    VecReal32 out;
    resampler.Apply(out, VecReal32(50));
  }
}

// The last argument of the longest constructor is not used.
TEST(SequentialResampler, Constructors_AllForms_ShareTheirDefaults) {
  const auto record = Of<VecReal32>(Noise(5000));
  VecReal32 first, second, third, whole;
  SequentialResampler plain(0.7123, 5000, 900), windowed(0.7123, 5000, 900, 10.0F, 200),
      full(0.7123, 5000, 900, 10.0F, 200, 0.95F, 2.0F);
  RunChunks(plain, record, first);
  RunChunks(windowed, record, second);
  const long long covered = RunChunks(full, record, third);
  EXPECT_EQ(List(first), List(second));
  EXPECT_EQ(List(first), List(third));
  ArbRateResampler once(0.7123, 10.0F, 200, 0.95F, 6.865F);
  RunWhole(once, record, static_cast<int>(covered), 0.0, whole);
  ASSERT_EQ(first.GetSize(), whole.GetSize());
  for (int i = 0; i < whole.GetSize(); ++i) ASSERT_NEAR(first[i], whole[i], 1e-6);

  SequentialResampler narrow(0.7123, 5000, 900, 10.0F, 200, 0.5F, 6.865F);
  RunChunks(narrow, record, second);
  EXPECT_NE(List(first), List(second));
}

// Chunks of any size join without a seam: as many outputs as one run has, at the same instants.
TEST(SequentialResampler, Apply_TenMillionSamplesInRandomChunks_GiveOneRun) {
  constexpr int kTotal = 10000000;
  const auto noise = Noise(kTotal);
  VecReal32 record(kTotal), joined, whole;
  std::copy(noise.begin(), noise.end(), record.GetPtr());
  std::uint32_t random = 12345;
  for (const double ratio : {1.0 + 1.0 / 3.14159265358979, 0.9123456789}) {
    SequentialResampler resampler(ratio, kTotal, 1, 4.0F, 50);
    ArbRateResampler once(ratio, 4.0F, 50, 0.95F, 6.865F);
    for (int round = 0; round < 2; ++round) {
      random = random * 1664525U + 1013904223U;
      const int size = 1000 + static_cast<int>(random % 200000);
      SCOPED_TRACE(testing::Message() << "ratio " << ratio << ", chunks of " << size);
      resampler.ComputeSeqParams(size);
      const long long covered = RunChunks(resampler, record, joined);
      EXPECT_TRUE(covered == kTotal || ratio < 1.0);
      RunWhole(once, record, static_cast<int>(covered), 0.0, whole);
      ASSERT_EQ(joined.GetSize(), whole.GetSize());
      float worst = 0.0F;
      for (int i = 0; i < whole.GetSize(); ++i) worst = std::max(worst, std::fabs(joined[i] - whole[i]));
      EXPECT_LT(worst, 1e-6F);
      // The output that would follow, in one rounding.
      const long double next = static_cast<long double>(1.0 / ratio) * whole.GetSize();
      EXPECT_EQ(resampler.GetNextIndexInSrc(), static_cast<long long>(next));
    }
  }
}

} // namespace
