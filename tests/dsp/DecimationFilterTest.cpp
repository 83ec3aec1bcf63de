#include "qorn/dsp/DecimationFilter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <vector>

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
using test::List;
using test::NoiseVector;
using test::Of;
using test::ReferenceFir;
using test::SameBits;

using Samples = std::vector<float>;

TEST(DecimationFilter, GetFilterChargeTime_ThreeStagesOfNineTaps_Is56) {
  DecimationFilter filter(3, VecReal32(9));
  EXPECT_EQ(filter.GetFilterChargeTime(), 56);
  EXPECT_EQ(filter.GetRequiredInputLength(0), 56);
  EXPECT_EQ(filter.GetRequiredInputLength(1), 64);
}

TEST(DecimationFilter, GetRequiredInputLength_OtherStagesAndTaps_FollowsTheRecursion) {
  EXPECT_EQ(DecimationFilter(0, VecReal32(9)).GetRequiredInputLength(17), 17);
  EXPECT_EQ(DecimationFilter(0, VecReal32(9)).GetFilterChargeTime(), 0);
  EXPECT_EQ(DecimationFilter(-2, VecReal32(9)).GetFilterChargeTime(), 0);
  EXPECT_EQ(DecimationFilter(1, VecReal32(8)).GetRequiredInputLength(5), 16); // h = 3
  EXPECT_EQ(DecimationFilter(2, VecReal32(1)).GetRequiredInputLength(5), 20);
  EXPECT_EQ(DecimationFilter(2, VecReal32()).GetRequiredInputLength(5), 20);
  EXPECT_EQ(DecimationFilter(40, VecReal32(1)).GetRequiredInputLength(1), std::numeric_limits<int>::max());
}

TEST(DecimationFilter, Apply_RequiredLength_GivesTheOutputsAskedFor) {
  for (const int taps : {1, 3, 9, 33}) {
    for (const int stages : {1, 2, 3}) {
      for (const int outputs : {1, 2, 5, 64}) {
        DecimationFilter filter(stages, NoiseVector<VecReal32>(taps));
        const int length = filter.GetRequiredInputLength(outputs);
        VecReal32 out;
        filter.Apply(out, NoiseVector<VecReal32>(length));
        EXPECT_EQ(out.GetSize(), outputs) << taps << ' ' << stages;
      }
    }
  }
}

// A stage as it is told, in float between stages.
template <class E> std::vector<E> Stage(const Samples &taps, const std::vector<E> &in, bool &ended) {
  ReferenceFir<float, E> fir(taps);
  std::vector<E> charged, kept;
  for (std::size_t n = 0; n < in.size(); ++n) {
    fir.Step(in[n]);
    if (n + 1 < taps.size()) continue;
    test::LongPair sizes;
    const test::LongPair y = fir.Output(sizes);
    if constexpr (std::is_same_v<E, float>)
      charged.push_back(static_cast<float>(y.re));
    else
      charged.push_back({static_cast<float>(y.re), static_cast<float>(y.im)});
  }
  ended = charged.size() < 2;
  if (ended) return {};
  for (std::size_t n = 0; n < charged.size(); n += 2) kept.push_back(charged[n]);
  return kept;
}

// Integers, so that every sum is exact and the stages' roundings need no bound.
template <class V> V Integers(int n, int most) {
  V vec(n);
  for (int i = 0; i < n; ++i) vec[i] = test::Element<ElementOf<V>>((i * 37 + i * i) % (2 * most + 1) - most);
  return vec;
}

template <class V> void CheckStages(int stages, int tapCount, int length) {
  const auto taps = Integers<VecReal32>(tapCount, 3);
  const auto in = Integers<V>(length, 4);
  auto expected = List(in);
  bool ended = false;
  for (int stage = 0; stage < stages && !ended; ++stage) expected = Stage(List(taps), expected, ended);
  DecimationFilter filter(stages, taps);
  V out(3), data(in);
  for (int call = 0; call < 2; ++call) {
    filter.Apply(out, in);
    ASSERT_EQ(List(out), expected) << stages << " stages, " << tapCount << " taps, length " << length;
  }
  filter.Apply(data, data);
  EXPECT_EQ(List(data), expected);
}

TEST(DecimationFilter, Apply_StagesTapsAndLengths_FollowsTheStageLoop) {
  for (const int stages : {0, 1, 2, 3}) {
    for (const int taps : {1, 2, 3, 8, 9}) {
      for (const int length : {1, 2, 3, 9, 10, 11, 40, 64, 65, 200, 1001}) {
        CheckStages<VecReal32>(stages, taps, length);
        CheckStages<VecCplx32>(stages, taps, length);
        if (HasFailure()) return;
      }
    }
  }
}

TEST(DecimationFilter, Apply_TooShortABlock_LeavesNothing) {
  DecimationFilter filter(3, VecReal32(9));
  VecReal32 out(5);
  VecCplx32 cplxOut(5);
  for (const int length : {0, 1, 8, 9, 20, 50}) {
    filter.Apply(out, VecReal32(length));
    EXPECT_EQ(out.GetSize(), 0) << length;
    filter.Apply(cplxOut, VecCplx32(length));
    EXPECT_EQ(cplxOut.GetSize(), 0) << length;
  }
}

TEST(DecimationFilter, Apply_WithoutTaps_GivesZeros) {
  DecimationFilter filter(2, VecReal32());
  VecReal32 out;
  filter.Apply(out, NoiseVector<VecReal32>(9));
  EXPECT_EQ(List(out), Samples(3, 0.0F));
}

// A tone in the pass band comes through, one that would fold into it does not.
TEST(DecimationFilter, Apply_Tones_KeepsTheLowOneAndStopsTheOneThatWouldFold) {
  VecReal32 taps(47);
  for (int i = 0; i < 47; ++i) {
    const double t = i - 23,
                 w = 0.42 + 0.5 * std::cos(M_PI * t / 23.5) + 0.08 * std::cos(2 * M_PI * t / 23.5);
    taps[i] = static_cast<float>(w * (t == 0 ? 0.5 : std::sin(0.5 * M_PI * t) / (M_PI * t)));
  }
  const auto level = [&](double frequency) {
    VecCplx32 in(2000), out;
    for (int i = 0; i < 2000; ++i) {
      const double phase = 2 * M_PI * frequency * i;
      in[i] = {static_cast<float>(std::cos(phase)), static_cast<float>(std::sin(phase))};
    }
    DecimationFilter(2, taps).Apply(out, in);
    const Cplx32 y = out[out.GetSize() / 2];
    return std::hypot(static_cast<double>(y.re), static_cast<double>(y.im));
  };
  EXPECT_NEAR(level(0.03), 1.0, 1e-3);
  EXPECT_LT(level(0.22), 2e-4);
  EXPECT_LT(level(0.47), 2e-4);
}

TEST(DecimationFilter, Flush_BetweenBlocks_ChangesNothing) {
  const auto in = NoiseVector<VecCplx32>(300);
  DecimationFilter filter(2, NoiseVector<VecReal32>(9));
  VecCplx32 first, second, third;
  filter.Apply(first, in);
  filter.Apply(second, in);
  filter.Flush();
  filter.Apply(third, in);
  EXPECT_TRUE(SameBits(first, second));
  EXPECT_TRUE(SameBits(first, third));
}

TEST(DecimationFilter, Copy_OfAFilter_IsAClone) {
  const auto in = NoiseVector<VecReal32>(300);
  auto source = std::make_unique<DecimationFilter>(2, NoiseVector<VecReal32>(9));
  VecReal32 out, expected;
  source->Apply(expected, in);
  DecimationFilter copy(*source), assigned(1, VecReal32(1));
  assigned = *source;
  source.reset();
  copy.Apply(out, in);
  EXPECT_TRUE(SameBits(out, expected));
  assigned.Apply(out, in);
  EXPECT_TRUE(SameBits(out, expected));
}

TEST(DecimationFilter, Apply_BlocksOfLikeSize_AllocatesNothing) {
  DecimationFilter filter(3, NoiseVector<VecReal32>(33));
  const auto real = NoiseVector<VecReal32>(1000);
  const auto complex = NoiseVector<VecCplx32>(1000);
  VecReal32 out;
  VecCplx32 cplxOut;
  filter.Apply(out, real);
  filter.Apply(cplxOut, complex);
  const AllocationLimit none(0);
  const long before = AllocationCount();
  for (int call = 0; call < 20; ++call) {
    filter.Apply(out, real);
    filter.Apply(cplxOut, complex);
    filter.Flush();
  }
  EXPECT_EQ(AllocationCount(), before);
}

TEST(DecimationFilter, Apply_NoMemory_ThrowsAsAVector) {
  DecimationFilter filter(1, VecReal32(3));
  VecReal32 out;
  test::PrintedBy([&] {
    const AllocationLimit limit(1000);
    const QORNException thrown = test::ThrownBy([&] { filter.Apply(out, VecReal32(200)); });
    EXPECT_EQ(thrown.GetErrorCode(), 0);
  });
  const VecReal32 in(5000);
  test::PrintedBy([&] {
    const AllocationLimit limit(1000);
    const QORNException thrown = test::ThrownBy([&] { filter.Apply(out, in); });
    EXPECT_EQ(thrown.GetErrorCode(), 11001);
    EXPECT_STREQ(thrown.GetFileName(), "infra/Vector");
  });
  filter.Apply(out, in);
  EXPECT_EQ(out.GetSize(), 2499);
}

} // namespace
