#include "qorn/dsp/SFIRFilterDec.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/dsp/SFIRFilter.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/FourierVectors.h"
#include "support/Streams.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::AllocationCount;
using test::AllocationLimit;
using test::ElementOf;
using test::ExpectThrown;
using test::List;
using test::NoiseVector;
using test::Of;
using test::Part;
using test::Pieces;
using test::ReferenceFir;
using test::SameBits;
using test::VectorOf;

using Samples = std::vector<float>;

template <class V> V Whole(SFIRFilterDec filter, const V &in) {
  V out;
  filter.Apply(out, in);
  return out;
}

const Samples kRamp = {0.0F, 1.0F, 2.0F, 3.0F, 4.0F, 5.0F, 6.0F, 7.0F, 8.0F, 9.0F};

TEST(SFIRFilterDec, Apply_NegativePhase_IsTheLastOne) {
  const auto taps = Of<VecReal32>({1.0F});
  EXPECT_EQ(List(Whole(SFIRFilterDec(taps, 4, -1), Of<VecReal32>(kRamp))), (Samples{3.0F, 7.0F}));
  EXPECT_EQ(List(Whole(SFIRFilterDec(taps, 4, 3), Of<VecReal32>(kRamp))), (Samples{3.0F, 7.0F}));
}

TEST(SFIRFilterDec, Apply_TenSamplesByFour_GivesTwo) {
  const auto taps = Of<VecReal32>({1.0F, 10.0F});
  for (int phase = 0; phase < 4; ++phase) {
    const auto out = Whole(SFIRFilterDec(taps, 4, phase), Of<VecReal32>(kRamp));
    const float p = static_cast<float>(phase);
    EXPECT_EQ(List(out), (Samples{p + 10.0F * std::max(p - 1.0F, 0.0F), p + 4.0F + 10.0F * (p + 3.0F)}));
  }
  EXPECT_EQ(Whole(SFIRFilterDec(taps, 4, 0), VecReal32(3)).GetSize(), 0);
}

// As if the samples that do not fill a step had never been.
TEST(SFIRFilterDec, Apply_RestOfABlock_IsDropped) {
  SFIRFilterDec filter(Of<VecReal32>({0.0F, 1.0F}), 4, 0);
  VecReal32 out;
  filter.Apply(out, Of<VecReal32>(kRamp));
  filter.Apply(out, VecReal32(4));
  EXPECT_EQ(List(out), (Samples{7.0F}));
  filter.Apply(out, Of<VecReal32>({1.0F, 2.0F, 3.0F}));
  EXPECT_EQ(out.GetSize(), 0);
  filter.Apply(out, Of<VecReal32>({1.0F, 2.0F, 3.0F, 4.0F}));
  filter.Apply(out, Of<VecReal32>({9.0F, 9.0F, 9.0F}));
  filter.Apply(out, VecReal32(4));
  EXPECT_EQ(List(out), (Samples{4.0F}));
}

template <class E> void CheckSums(int tapCount, int decimation, int phase) {
  const auto taps = NoiseVector<VecReal32>(tapCount, 1);
  const int count = 90;
  const auto in = NoiseVector<VectorOf<E>>(count * decimation, 2);
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    SFIRFilterDec filter(taps, decimation, phase);
    // In pieces for which there are no transforms.
    SFIRFilter plain(taps);
    VectorOf<E> all(in.GetSize()), some;
    for (int at = 0; at < in.GetSize(); at += 30) {
      const int size = std::min(30, in.GetSize() - at);
      plain.Apply(some, Part(in, at, size), false);
      for (int i = 0; i < size; ++i) all[at + i] = some[i];
    }
    ReferenceFir<float, E> reference(List(taps));
    int first = 0, at = 0;
    for (const int piece : Pieces(count, 40, static_cast<unsigned>(tapCount))) {
      VectorOf<E> out;
      filter.Apply(out, Part(in, first * decimation, piece * decimation));
      ASSERT_EQ(out.GetSize(), piece);
      for (int i = 0; i < piece; ++i) {
        for (; at <= (first + i) * decimation + phase; ++at) reference.Step(in[at]);
        ASSERT_TRUE(reference.Gives(out[i]))
            << level.name << ", taps " << tapCount << ", by " << decimation << ", phase " << phase;
        ASSERT_EQ(out[i], all[(first + i) * decimation + phase])
            << level.name << ", taps " << tapCount << ", by " << decimation << ", phase " << phase;
      }
      first += piece;
    }
  }
}

TEST(SFIRFilterDec, Apply_AnyPieces_KeepsTheOutputsOfTheFilterBitForBit) {
  for (const int decimation : {1, 2, 3, 4, 5, 8, 13, 64}) {
    for (const int taps : {1, 2, 3, 7, 8, 16, 31, 64, 101, 200}) {
      for (const int phase : {0, decimation / 2, decimation - 1}) {
        CheckSums<float>(taps, decimation, phase);
        CheckSums<Cplx32>(taps, decimation, phase);
        if (HasFailure()) return;
      }
    }
  }
}

TEST(SFIRFilterDec, Apply_LongBlock_HasTheBitsOfPieces) {
  for (const int decimation : {1, 2, 7, 300}) {
    const auto in = NoiseVector<VecCplx32>(3000 * decimation);
    const SFIRFilterDec filter(NoiseVector<VecReal32>(70), decimation, -1);
    const auto whole = Whole(filter, in);
    SFIRFilterDec running(filter);
    int first = 0;
    for (const int piece : Pieces(3000, 1000, 3)) {
      VecCplx32 out;
      running.Apply(out, Part(in, first * decimation, piece * decimation));
      ASSERT_TRUE(SameBits(out, Part(whole, first, piece))) << decimation << ' ' << first;
      first += piece;
    }
  }
}

template <class V> void CheckInPlace(int tapCount, int decimation, int length) {
  SFIRFilterDec apart(NoiseVector<VecReal32>(tapCount), decimation, decimation / 2), inPlace(apart);
  for (int call = 0; call < 3; ++call) {
    const auto in = NoiseVector<V>(length, static_cast<unsigned>(call));
    V out, data(in);
    const auto *const start = data.GetPtr();
    apart.Apply(out, in);
    inPlace.Apply(data, data);
    ASSERT_TRUE(SameBits(data, out)) << tapCount << ' ' << decimation << ' ' << length;
    if (data.GetSize() > 0) {
      EXPECT_EQ(data.GetPtr(), start);
    }
  }
}

TEST(SFIRFilterDec, Apply_InPlace_GivesTheSameCutToItsLength) {
  for (const int taps : {1, 5, 100, 300}) {
    for (const int decimation : {1, 2, 9, 300, 310}) {
      for (const int length : {1, 8, 9, 50, 2500}) {
        CheckInPlace<VecReal32>(taps, decimation, length);
        CheckInPlace<VecCplx32>(taps, decimation, length);
      }
    }
  }
}

TEST(SFIRFilterDec, Apply_OutputOfTheRightLength_KeepsItsView) {
  SFIRFilterDec filter(Of<VecReal32>({1.0F}), 2, 0);
  VecReal32 out(8), longer(8), shorter(1);
  out.Trim(3, 7);
  const float *const start = out.GetPtr();
  filter.Apply(out, Of<VecReal32>(kRamp));
  EXPECT_EQ(out.GetPtr(), start);
  const Samples even = {0.0F, 2.0F, 4.0F, 6.0F, 8.0F};
  EXPECT_EQ(List(out), even);
  filter.Apply(longer, Of<VecReal32>(kRamp));
  filter.Apply(shorter, Of<VecReal32>(kRamp));
  EXPECT_EQ(List(longer), even);
  EXPECT_EQ(List(shorter), even);
}

TEST(SFIRFilterDec, Flush_ThenTheSameBlock_GivesTheSame) {
  SFIRFilterDec filter(NoiseVector<VecReal32>(20), 3, 1);
  const auto in = NoiseVector<VecCplx32>(99);
  VecCplx32 first, after, again;
  filter.Apply(first, in);
  filter.Apply(after, in);
  EXPECT_FALSE(SameBits(first, after));
  filter.Flush();
  filter.Apply(again, in);
  EXPECT_TRUE(SameBits(first, again));
}

// Real signals and the real parts of complex ones have one delay line.
TEST(SFIRFilterDec, Apply_RealSignalAfterAComplexOne_ContinuesItsRealParts) {
  SFIRFilterDec filter(Of<VecReal32>({0.0F, 1.0F}), 2, 0);
  VecCplx32 cplxOut;
  filter.Apply(cplxOut, Of<VecCplx32>({{1.0F, 2.0F}, {3.0F, 4.0F}}));
  VecReal32 out;
  filter.Apply(out, Of<VecReal32>({5.0F, 6.0F}));
  EXPECT_EQ(List(out), (Samples{3.0F}));
  filter.Apply(cplxOut, VecCplx32(2));
  ASSERT_EQ(cplxOut.GetSize(), 1);
  EXPECT_EQ(cplxOut[0], (Cplx32{6.0F, 4.0F}));
}

TEST(SFIRFilterDec, SetParams_OnARunningFilter_BeginsAnew) {
  const auto taps = NoiseVector<VecReal32>(20), other = NoiseVector<VecReal32>(33);
  const auto in = NoiseVector<VecReal32>(120);
  SFIRFilterDec filter(taps, 3, 1);
  VecReal32 out;
  filter.Apply(out, in);
  filter.SetParams(other, 5, -1);
  EXPECT_TRUE(SameBits(Whole(filter, in), Whole(SFIRFilterDec(other, 5, 4), in)));
}

TEST(SFIRFilterDec, Apply_NotSetUp_ThrowsDivideByZero) {
  VecReal32 out(3);
  VecCplx32 cplxOut;
  for (SFIRFilterDec filter :
       {SFIRFilterDec(), SFIRFilterDec(VecReal32(5), 0, 0), SFIRFilterDec(VecReal32(5), 0, -1)}) {
    ExpectThrown([&] { filter.Apply(out, VecReal32(4)); }, 12001, "divide-by-zero error",
                 "dsp\\SFIRFilterDec");
    ExpectThrown([&] { filter.Apply(cplxOut, VecCplx32(4)); }, 12001, "divide-by-zero error",
                 "dsp\\SFIRFilterDec");
    filter.Flush();
  }
  EXPECT_EQ(out.GetSize(), 3);
}

TEST(SFIRFilterDec, SetParams_BadDecimationOrPhase_ThrowsAndLeavesNothingSetUp) {
  const auto taps = NoiseVector<VecReal32>(5);
  constexpr int kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
  const struct {
    int decimation, phase;
  } cases[] = {{-1, 0}, {-4, -1}, {kLeast, 0}, {kLeast + 1, -1}, {4, 4}, {1, 1}, {4, kMost}};
  for (const auto &c : cases) {
    SFIRFilterDec filter(taps, 2, 0);
    ExpectThrown([&] { filter.SetParams(taps, c.decimation, c.phase); }, 10002, "invalid input parameter",
                 "dsp\\SFIRFilterDec");
    VecReal32 out;
    ExpectThrown([&] { filter.Apply(out, VecReal32(4)); }, 12001, "divide-by-zero error",
                 "dsp\\SFIRFilterDec");
  }
}

TEST(SFIRFilterDec, Apply_WithoutTaps_GivesZeros) {
  SFIRFilterDec filter(VecReal32(), 3, 0);
  EXPECT_EQ(List(Whole(filter, Of<VecReal32>(kRamp))), Samples(3, 0.0F));
  EXPECT_EQ(List(Whole(filter, NoiseVector<VecCplx32>(7))), std::vector<Cplx32>(2));
  auto data = Of<VecReal32>(kRamp);
  filter.Apply(data, data);
  EXPECT_EQ(List(data), Samples(3, 0.0F));
  filter.Flush();
}

// More steps than there are samples, and more taps than a step has.
TEST(SFIRFilterDec, Apply_HugeDecimation_GivesNoneAndKeepsNone) {
  SFIRFilterDec filter(NoiseVector<VecReal32>(9), std::numeric_limits<int>::max(), -1);
  EXPECT_EQ(Whole(filter, Of<VecReal32>(kRamp)).GetSize(), 0);
}

TEST(SFIRFilterDec, Copy_OfARunningFilter_GoesOnByItself) {
  const auto in = NoiseVector<VecCplx32>(200), next = NoiseVector<VecCplx32>(80);
  VecCplx32 out, expected;
  auto source = std::make_unique<SFIRFilterDec>(NoiseVector<VecReal32>(30), 4, 2);
  source->Apply(out, in);
  SFIRFilterDec copy(*source), assigned, third(*source);
  assigned = *source;
  source->Apply(expected, next);
  const SFIRFilterDec moved(std::move(*source));
  ExpectThrown([&] { source->Apply(out, next); }, 12001, "divide-by-zero error", "dsp\\SFIRFilterDec");
  source.reset();
  copy.Apply(out, next);
  EXPECT_TRUE(SameBits(out, expected));
  assigned.Apply(out, next);
  EXPECT_TRUE(SameBits(out, expected));
  copy.Apply(expected, next);
  EXPECT_TRUE(SameBits(Whole(moved, next), expected));
  EXPECT_FALSE(SameBits(Whole(third, next), expected));
}

template <class V> void CheckAllocations(int tapCount, int decimation) {
  SFIRFilterDec filter(NoiseVector<VecReal32>(tapCount), decimation, 0);
  V in(2000), out(2000), data(2000);
  const AllocationLimit none(0);
  const long before = AllocationCount();
  for (int call = 0; call < 100; ++call) {
    in.Resize(1 + call * 37 % 2000);
    filter.Apply(out, in);
    data.Resize(2000);
    filter.Apply(data, data);
    if (call % 10 == 0) filter.Flush();
  }
  EXPECT_EQ(AllocationCount(), before);
}

TEST(SFIRFilterDec, Apply_AnyPieces_AllocatesNothing) {
  for (const int taps : {1, 30, 300}) {
    CheckAllocations<VecReal32>(taps, 3);
    CheckAllocations<VecCplx32>(taps, 8);
  }
}

// A block of memory has at most the values of two parts that are under the taps, sixteen more for each of the
// streams, which are not more than the taps, and what few streams need. Where the outputs have no sample in
// common, it has two floats for each tap.
TEST(SFIRFilterDec, SetParams_AnyDecimation_TakesASmallMultipleOfTheTaps) {
  for (const int count : {100, 1000, 5000, 30000}) {
    const auto taps = NoiseVector<VecReal32>(count);
    for (const int decimation : {1, 10, 200, 257, 999, 1000, 1001, 4999, 29999, 30000, 100000}) {
      const bool isApart = count > 256 && decimation >= count;
      const AllocationLimit limit(sizeof(float) *
                                  static_cast<std::size_t>(isApart ? 2 * count + 100 : 34 * count + 20000));
      EXPECT_NO_THROW(SFIRFilterDec(taps, decimation, 0)) << count << " by " << decimation;
    }
  }
}

TEST(SFIRFilterDec, Apply_ManyStreams_KeepsTheOutputsOfTheFilterBitForBit) {
  for (const auto &[taps, decimation] :
       {std::pair(300, 300), std::pair(300, 700), std::pair(600, 290), std::pair(700, 601)}) {
    for (const int phase : {0, decimation / 2, decimation - 1}) {
      CheckSums<float>(taps, decimation, phase);
      CheckSums<Cplx32>(taps, decimation, phase);
      if (HasFailure()) return;
    }
  }
}

TEST(SFIRFilterDec, SetParams_NoMemory_ThrowsAndLeavesNothingSetUp) {
  SFIRFilterDec filter(NoiseVector<VecReal32>(5), 2, 0);
  const auto taps = NoiseVector<VecReal32>(3000);
  test::PrintedBy([&] {
    const AllocationLimit limit(13000);
    QORNException thrown = test::ThrownBy([&] { filter.SetParams(taps, 2, 0); });
    EXPECT_EQ(thrown.GetErrorCode(), 11001);
    EXPECT_STREQ(thrown.GetMessage(), "memory allocation error");
  });
  VecReal32 out;
  ExpectThrown([&] { filter.Apply(out, VecReal32(4)); }, 12001, "divide-by-zero error", "dsp\\SFIRFilterDec");
}

TEST(SFIRFilterDec, Apply_NotFinite_ShowsOnlyUnderTheTaps) {
  auto in = NoiseVector<VecCplx32>(600);
  in[301].re = std::numeric_limits<float>::quiet_NaN();
  const auto out = Whole(SFIRFilterDec(NoiseVector<VecReal32>(50), 4, 1), in);
  for (int i = 0; i < 150; ++i) {
    const int n = 4 * i + 1;
    EXPECT_EQ(std::isfinite(out[i].re), n < 301 || n >= 351) << i;
    EXPECT_TRUE(std::isfinite(out[i].im)) << i;
  }
}

} // namespace
