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

// All chunks of a record; after each of them, check(outputs so far). Returns the place behind the last sample
// that was consumed.
template <class V, class Check>
long long RunChunks(SequentialResampler &resampler, const V &record, V &joined, Check check) {
  V piece, out;
  long long covered = 0;
  int length = 0;
  joined.Resize(4 * record.GetSize() + 1000);
  for (int i = 0; i < resampler.GetNumOfChunks(); ++i) {
    const bool isLast = i == resampler.GetNumOfChunks() - 1;
    const int count = isLast ? resampler.GetLastChunkSize() : resampler.GetChunkSize();
    const long long first = resampler.GetNextIndexInSrc();
    const int before = resampler.GetNumOfPreSamples();
    Cut(piece, record, first - before, before + count + resampler.GetNumOfPostSamples());
    resampler.Apply(out, piece);
    std::copy(out.GetPtr(), out.GetPtr() + out.GetSize(), joined.GetPtr() + length);
    length += out.GetSize();
    covered = first + count;
    check(length);
  }
  joined.Resize(length);
  return covered;
}

template <class V> long long RunChunks(SequentialResampler &resampler, const V &record, V &joined) {
  return RunChunks(resampler, record, joined, [](int) {});
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

// Chunks of any size join without a seam: as many outputs as one run has, at the same instants. The last two
// ratios have steps a little longer and a little shorter than 1.25: outputs pass the samples by a distance
// that grows from nothing to 1e-8, so the place of each chunk tells its instant.
TEST(SequentialResampler, Apply_TenMillionSamplesInRandomChunks_GiveOneRun) {
  constexpr int kTotal = 10000000;
  const auto noise = Noise(kTotal);
  VecReal32 record(kTotal), joined, whole;
  std::copy(noise.begin(), noise.end(), record.GetPtr());
  std::uint32_t random = 12345;
  for (const double ratio : {1.0 + 1.0 / 3.14159265358979, 0.9123456789, 0.8 - 0x1p-50, 0.8 + 0x1p-50}) {
    SequentialResampler resampler(ratio, kTotal, 1, 4.0F, 50);
    ArbRateResampler once(ratio, 4.0F, 50, 0.95F, 6.865F);
    random = random * 1664525U + 1013904223U;
    const int size = 1000 + 5 * static_cast<int>(random % 20000);
    SCOPED_TRACE(testing::Message() << "ratio " << ratio << ", chunks of " << size);
    resampler.ComputeSeqParams(size);
    int checked = 0;
    const long long covered = RunChunks(resampler, record, joined, [&](int outputs) {
      const long double place = static_cast<long double>(1.0 / ratio) * outputs;
      if (std::fabs(place - std::round(place)) < 1e-9L) return; // may round to the sample
      EXPECT_EQ(resampler.GetNextIndexInSrc(), static_cast<long long>(place)) << outputs;
      ++checked;
    });
    EXPECT_GT(checked, resampler.GetNumOfChunks() / 2);
    EXPECT_TRUE(covered == kTotal || ratio < 1.0);
    RunWhole(once, record, static_cast<int>(covered), 0.0, whole);
    ASSERT_EQ(joined.GetSize(), whole.GetSize());
    float worst = 0.0F;
    for (int i = 0; i < whole.GetSize(); ++i) worst = std::max(worst, std::fabs(joined[i] - whole[i]));
    EXPECT_LT(worst, 1e-6F);
  }
}

TEST(SequentialResampler, Apply_AnyChunkSize_GivesOneRun) {
  const auto re = Noise(3000), im = Noise(3000, 9);
  const VecCplx32 record = test::Joined(re, im);
  VecCplx32 joined, whole;
  for (const double ratio : {3.7, 1.0, 0.61, 0.12}) {
    for (const bool alternate : {false, true}) {
      SequentialResampler resampler(ratio, 3000, 100);
      ArbRateResampler once(ratio, 10.0F, 200, 0.95F, 6.865F);
      if (alternate) resampler.EnableInternalResampler();
      once.UseAlternateResampler(alternate);
      for (const int size : {1, 2, 7, 64, 999, 1500, 3000, 4000}) {
        for (const double fraction : {0.0, 0.4}) {
          SCOPED_TRACE(testing::Message() << "ratio " << ratio << ", chunks of " << size);
          resampler.ComputeSeqParams(size);
          resampler.SetFractTime(fraction);
          const long long covered = RunChunks(resampler, record, joined);
          RunWhole(once, record, static_cast<int>(covered), fraction, whole);
          ASSERT_EQ(joined.GetSize(), whole.GetSize());
          for (int i = 0; i < whole.GetSize(); ++i) {
            ASSERT_NEAR(joined[i].re, whole[i].re, 1e-6) << i;
            ASSERT_NEAR(joined[i].im, whole[i].im, 1e-6) << i;
          }
        }
      }
    }
  }
}

TEST(SequentialResampler, GetNextIndexInSrc_StepsAboveOne_PassesTheEndOfTheChunk) {
  SequentialResampler resampler(0.4, 1000, 100); // steps of 2.5
  VecReal32 out;
  resampler.Apply(out, VecReal32(126));
  EXPECT_EQ(out.GetSize(), 40);
  EXPECT_EQ(resampler.GetNextIndexInSrc(), 100);
  resampler.ComputeSeqParams(99);
  EXPECT_EQ(resampler.GetNextIndexInSrc(), 0);
  resampler.Apply(out, VecReal32(125));
  EXPECT_EQ(out.GetSize(), 40);
  EXPECT_EQ(resampler.GetNextIndexInSrc(), 100);
  resampler.Apply(out, VecReal32(125));
  EXPECT_EQ(out.GetSize(), 40);
  EXPECT_EQ(resampler.GetNextIndexInSrc(), 200);
  resampler.ComputeSeqParams(1);
  resampler.SetFractTime(0.75);
  resampler.Apply(out, VecReal32(27));
  EXPECT_EQ(out.GetSize(), 1);
  EXPECT_EQ(resampler.GetNextIndexInSrc(), 3);
  resampler.Apply(out, VecReal32(27));
  EXPECT_EQ(resampler.GetNextIndexInSrc(), 5); // 3.25 and 2.5 more
}

// A tone beyond the output's band: the primary kernel suppresses it, the alternate one lets it alias.
TEST(SequentialResampler, EnableInternalResampler_RatioBelowOne_ChoosesTheAlternateKernel) {
  const VecCplx32 tone = test::CplxTone(1000, 0.3);
  VecCplx32 out;
  for (const double ratio : {0.2, 1.2}) {
    SequentialResampler plain(ratio, 1000, 1000), chosen(ratio, 1000, 1000);
    chosen.EnableInternalResampler();
    VecCplx32 first, second;
    RunChunks(plain, tone, first);
    RunChunks(chosen, tone, second);
    EXPECT_NEAR(std::hypot(second[100].re, second[100].im), 1.0F, 0.02F);
    if (ratio < 1.0) {
      EXPECT_LT(std::hypot(first[100].re, first[100].im), 1e-2F);
    } else {
      EXPECT_EQ(List(first), List(second));
    }
  }
}

TEST(SequentialResampler, Copies_AnyOrderOfDestruction_AreIndependent) {
  const auto record = Of<VecReal32>(Noise(2000));
  VecReal32 expected, got, piece, out;
  auto source = std::make_unique<SequentialResampler>(0.7, 2000, 500);
  Cut(piece, record, -source->GetNumOfPreSamples(), 600);
  source->Apply(out, piece); // a place and a fraction to copy
  auto copy = std::make_unique<SequentialResampler>(*source);
  SequentialResampler assigned(2.0, 10, 5);
  assigned = *source;
  assigned = *&assigned;
  Cut(piece, record, source->GetNextIndexInSrc() - source->GetNumOfPreSamples(), 600);
  source->Apply(expected, piece);
  const long long next = source->GetNextIndexInSrc();
  source.reset();
  copy->Apply(got, piece);
  EXPECT_EQ(List(got), List(expected));
  EXPECT_EQ(copy->GetNextIndexInSrc(), next);
  copy.reset();
  assigned.Apply(got, piece);
  EXPECT_EQ(List(got), List(expected));
  EXPECT_EQ(assigned.GetNextIndexInSrc(), next);
  EXPECT_EQ(assigned.GetChunkSize(), 500);
  EXPECT_EQ(assigned.GetNumOfChunks(), 4);
}

TEST(SequentialResampler, Apply_KeptDestination_AllocatesNothing) {
  for (const double ratio : {1.3, 0.7}) {
    SequentialResampler resampler(ratio, 100000, 1000);
    const VecCplx32 piece = test::CplxTone(1020, 0.1);
    VecCplx32 out;
    resampler.Apply(out, piece);
    const long before = test::AllocationCount();
    resampler.Apply(out, piece);
    resampler.Apply(out, piece);
    EXPECT_EQ(test::AllocationCount(), before);
  }
}

} // namespace
