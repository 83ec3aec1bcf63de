#include "qorn/dsp/SFIRFilter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/infra/TargetLib.h"
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
using test::ThrownBy;
using test::VectorOf;

using Samples = std::vector<float>;
using Values = std::vector<Cplx32>;

// The whole signal in pieces of the given lengths.
template <class V> V InPieces(SFIRFilter &filter, const V &in, const std::vector<int> &pieces) {
  V all(in.GetSize()), out;
  int first = 0;
  for (const int piece : pieces) {
    filter.Apply(out, Part(in, first, piece), false);
    EXPECT_EQ(out.GetSize(), piece);
    for (int i = 0; i < piece; ++i) all[first + i] = out[i];
    first += piece;
  }
  return all;
}

template <class V> V Whole(SFIRFilter filter, const V &in) {
  V out;
  filter.Apply(out, in, false);
  return out;
}

TEST(SFIRFilter, Apply_Impulse_GivesTheTaps) {
  SFIRFilter filter(Of<VecReal32>({1.0F, -2.0F, 3.0F}));
  VecReal32 out;
  filter.Apply(out, Of<VecReal32>({0.0F, 1.0F, 0.0F, 0.0F, 0.0F}), false);
  EXPECT_EQ(List(out), (Samples{0.0F, 1.0F, -2.0F, 3.0F, 0.0F}));

  VecCplx32 cplxOut;
  filter.Flush();
  filter.Apply(cplxOut, Of<VecCplx32>({{1.0F, 10.0F}, {0.0F, 0.0F}, {0.0F, 0.0F}}), false);
  EXPECT_EQ(List(cplxOut), (Values{{1.0F, 10.0F}, {-2.0F, -20.0F}, {3.0F, 30.0F}}));

  SFIRFilter complex(Of<VecCplx32>({{1.0F, 2.0F}, {-3.0F, 4.0F}}));
  complex.Apply(cplxOut, Of<VecCplx32>({{1.0F, 0.0F}, {0.0F, 0.0F}}), false);
  EXPECT_EQ(List(cplxOut), (Values{{1.0F, 2.0F}, {-3.0F, 4.0F}}));
  complex.Flush();
  complex.Apply(cplxOut, Of<VecCplx32>({{0.0F, 1.0F}, {0.0F, 0.0F}}), false);
  EXPECT_EQ(List(cplxOut), (Values{{-2.0F, 1.0F}, {-4.0F, -3.0F}}));
}

constexpr int kTapCounts[] = {1,  2,  3,  4,  5,  7,  8,  9,   11,  12,  15,  16,  17,
                              23, 31, 32, 33, 63, 64, 65, 100, 127, 128, 129, 200, 300};

template <class Tap, class E> void CheckSums(int tapCount, int length) {
  const auto taps = NoiseVector<VectorOf<Tap>>(tapCount, 1);
  const auto in = NoiseVector<VectorOf<E>>(length, 2);
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    SFIRFilter filter(taps);
    ReferenceFir<Tap, E> reference(List(taps));
    int first = 0;
    for (const int piece : Pieces(length, 400, static_cast<unsigned>(tapCount))) {
      VectorOf<E> out;
      filter.Apply(out, Part(in, first, piece), false);
      for (int i = 0; i < piece; ++i) {
        reference.Step(in[first + i]);
        ASSERT_TRUE(reference.Gives(out[i]))
            << level.name << ", taps " << tapCount << ", output " << first + i;
      }
      first += piece;
    }
  }
}

TEST(SFIRFilter, Apply_AnyTapsAndPieces_IsTheSumOfProducts) {
  for (const int taps : kTapCounts) {
    CheckSums<float, float>(taps, 700);
    CheckSums<float, Cplx32>(taps, 700);
    CheckSums<Cplx32, Cplx32>(taps, 700);
    if (HasFailure()) return;
  }
}

template <class Tap, class E> void CheckPieces(int tapCount, int length, int longest) {
  const auto taps = NoiseVector<VectorOf<Tap>>(tapCount, 3);
  const auto in = NoiseVector<VectorOf<E>>(length, 4);
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    const auto whole = Whole(SFIRFilter(taps), in);
    for (unsigned seed = 1; seed <= 3; ++seed) {
      SFIRFilter filter(taps);
      ASSERT_TRUE(SameBits(InPieces(filter, in, Pieces(length, longest, seed)), whole))
          << level.name << ", taps " << tapCount;
    }
    SFIRFilter filter(taps);
    ASSERT_TRUE(SameBits(InPieces(filter, in, {length / 3, length - length / 3}), whole)) << level.name;
  }
}

TEST(SFIRFilter, Apply_AnyPiecesAndFewerThan64Taps_HaveTheBitsOfOnePiece) {
  for (const int taps : kTapCounts) {
    if (taps >= 64) break;
    CheckPieces<float, float>(taps, 900, 300);
    CheckPieces<float, Cplx32>(taps, 900, 300);
    CheckPieces<Cplx32, Cplx32>(taps, 900, 300);
    if (HasFailure()) return;
  }
}

TEST(SFIRFilter, Apply_SingleSamples_HaveTheBitsOfOnePiece) {
  const auto taps = NoiseVector<VecReal32>(70);
  const auto in = NoiseVector<VecCplx32>(300);
  SFIRFilter filter(taps);
  EXPECT_TRUE(SameBits(InPieces(filter, in, std::vector<int>(300, 1)), Whole(SFIRFilter(taps), in)));
}

TEST(SFIRFilter, Apply_RealTapsOnComplexSignal_FiltersEachPartAsARealSignal) {
  for (const int tapCount : {1, 6, 40, 64, 97, 150}) {
    const auto taps = NoiseVector<VecReal32>(tapCount, 5);
    const auto in = NoiseVector<VecCplx32>(203, 6); // so few that all sums are direct
    for (const kernels::Level &level : kernels::AvailableLevels()) {
      const kernels::ScopedLevel scope(level);
      SFIRFilter complex(taps), real(taps), imag(taps);
      for (int call = 0; call < 2; ++call) {
        VecCplx32 out;
        complex.Apply(out, in, false);
        VecReal32 re, im, part;
        in.GetReal(part);
        real.Apply(re, part, false);
        in.GetImag(part);
        imag.Apply(im, part, false);
        ASSERT_TRUE(SameBits(out, VecCplx32(re, im))) << level.name << ", taps " << tapCount;
      }
    }
  }
}

// The direct sums are those of the block convolution.
TEST(SFIRFilter, Apply_FromTheBeginning_HasTheBitsOfAShortConvolution) {
  const auto taps = NoiseVector<VecReal32>(29);
  const auto in = NoiseVector<VecReal32>(400);
  VecReal32 whole(428);
  TargetLib::Conv_32f(taps.GetPtr(), 29, in.GetPtr(), 400, whole.GetPtr());
  whole.Trim(0, 399);
  EXPECT_TRUE(SameBits(Whole(SFIRFilter(taps), in), whole));
}

// From even signals, whose outputs are all of a size, to those where loud samples stand beside quiet ones.
enum class Shape { kNoise, kBursts, kQuietAfterLoud, kImpulse, kRealOnly, kSilence };
constexpr Shape kShapes[] = {Shape::kNoise,   Shape::kBursts,   Shape::kQuietAfterLoud,
                             Shape::kImpulse, Shape::kRealOnly, Shape::kSilence};

template <class V> V Signal(Shape shape, int length) {
  V in = NoiseVector<V>(length, 21);
  for (int i = 0; i < length; ++i) {
    float gain = 1;
    if (shape == Shape::kBursts) gain = i / 1500 % 2 == 0 ? 1.0F : 0.0F;
    if (shape == Shape::kQuietAfterLoud) gain = i % 4000 < 100 ? 1e6F : 1e-7F;
    if (shape == Shape::kImpulse) gain = i == length / 2 ? 1.0F : 0.0F;
    if (shape == Shape::kSilence) gain = 0;
    if constexpr (std::is_same_v<ElementOf<V>, float>) {
      in[i] *= gain;
    } else {
      in[i] = {in[i].re * gain, shape == Shape::kRealOnly ? 0 : in[i].im * gain};
    }
  }
  return in;
}

// Long taps in long pieces, where transforms come in: within the bound wherever the signal is cut, and in
// place.
template <class Tap, class E> void CheckLong(int tapCount, Shape shape) {
  constexpr int kLength = 16000;
  const auto taps = NoiseVector<VectorOf<Tap>>(tapCount, 22);
  const auto in = Signal<VectorOf<E>>(shape, kLength);
  VectorOf<E> inPlace(in);
  SFIRFilter filter(taps), pieces(taps);
  filter.Apply(inPlace, false);
  const VectorOf<E> outs[] = {Whole(SFIRFilter(taps), in),
                              InPieces(pieces, in, Pieces(kLength, 6000, static_cast<unsigned>(tapCount))),
                              inPlace};
  EXPECT_TRUE(SameBits(outs[0], outs[2]));
  ReferenceFir<Tap, E> reference(List(taps));
  for (int n = 0; n < kLength; ++n) {
    reference.Step(in[n]);
    if (n % 97 != 0 && n % 4000 > 20 && n != kLength / 2) continue;
    for (const auto &out : outs) {
      ASSERT_TRUE(reference.Gives(out[n]))
          << "taps " << tapCount << ", shape " << static_cast<int>(shape) << ", output " << n;
    }
  }
}

TEST(SFIRFilter, Apply_LongTapsInLongPieces_KeepsTheBound) {
  for (const Shape shape : kShapes) {
    for (const int taps : {300, 900, 2500}) {
      CheckLong<float, float>(taps, shape);
      CheckLong<float, Cplx32>(taps, shape);
      CheckLong<Cplx32, Cplx32>(taps, shape);
      if (HasFailure()) return;
    }
  }
}

TEST(SFIRFilter, Apply_LongTapsInLongPieces_KeepsTheBoundAtEveryLevel) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    CheckLong<float, float>(1100, Shape::kNoise);
    CheckLong<float, Cplx32>(1100, Shape::kQuietAfterLoud);
    CheckLong<Cplx32, Cplx32>(1100, Shape::kNoise);
  }
}

// That the tests above are about transforms: direct sums would have the same bits.
TEST(SFIRFilter, Apply_LongTapsInLongPieces_GoesThroughTransforms) {
  const auto taps = NoiseVector<VecReal32>(1000);
  const auto complex = NoiseVector<VecCplx32>(9000);
  const auto real = NoiseVector<VecReal32>(9000);
  const std::vector<int> singles(9000, 1);
  SFIRFilter filter(taps), other(taps);
  EXPECT_FALSE(SameBits(InPieces(filter, complex, singles), Whole(SFIRFilter(taps), complex)));
  EXPECT_FALSE(SameBits(InPieces(other, real, singles), Whole(SFIRFilter(taps), real)));
}

TEST(SFIRFilter, Flush_ThenTheSameBlock_GivesTheSame) {
  const auto check = [](const auto &taps, const auto &in) {
    SFIRFilter filter(taps);
    auto first = in, again = in, after = in;
    filter.Apply(first, in, false);
    filter.Apply(after, in, false);
    EXPECT_FALSE(SameBits(first, after));
    filter.Flush();
    filter.Apply(again, in, false);
    EXPECT_TRUE(SameBits(first, again));
  };
  check(NoiseVector<VecReal32>(20), NoiseVector<VecReal32>(64));
  check(NoiseVector<VecReal32>(20), NoiseVector<VecCplx32>(64));
  check(NoiseVector<VecCplx32>(20), NoiseVector<VecCplx32>(64));
}

TEST(SFIRFilter, Apply_OneTapOfOne_PassesAllAndTrimsNothing) {
  SFIRFilter filter(Of<VecReal32>({1.0F}));
  const auto in = NoiseVector<VecCplx32>(33);
  VecCplx32 out;
  filter.Apply(out, in, true);
  EXPECT_TRUE(SameBits(out, in));
  SFIRFilter complex(Of<VecCplx32>({{1.0F, 0.0F}}));
  complex.Apply(out, in, true);
  EXPECT_EQ(List(out), List(in));
}

template <class TapVector, class V> void CheckTrim() {
  const auto taps = NoiseVector<TapVector>(9);
  const auto in = NoiseVector<V>(50);
  SFIRFilter plain(taps), trimming(taps);
  for (int call = 0; call < 3; ++call) {
    V all, trimmed;
    plain.Apply(all, in, false);
    trimming.Apply(trimmed, in, true);
    ASSERT_EQ(trimmed.GetSize(), 42);
    EXPECT_EQ(trimmed.GetCapacity(), 50);
    EXPECT_TRUE(SameBits(trimmed, Part(all, 8, 42)));
  }
}

TEST(SFIRFilter, Apply_Trim_DropsTheFirstOutputsOfEveryCall) {
  CheckTrim<VecReal32, VecReal32>();
  CheckTrim<VecReal32, VecCplx32>();
  CheckTrim<VecCplx32, VecCplx32>();
}

TEST(SFIRFilter, Apply_TrimInPlace_MovesTheView) {
  SFIRFilter filter(NoiseVector<VecReal32>(9));
  VecReal32 data(50);
  const float *const start = data.GetPtr();
  filter.Apply(data, true);
  EXPECT_EQ(data.GetPtr(), start + 8);
  EXPECT_EQ(data.GetSize(), 42);
  filter.Apply(data, true);
  EXPECT_EQ(data.GetPtr(), start + 16);
  EXPECT_EQ(data.GetSize(), 34);
}

TEST(SFIRFilter, Apply_TrimOfAShortBlock_LeavesNothingAndKeepsTheState) {
  SFIRFilter filter(Of<VecReal32>({0.0F, 0.0F, 0.0F, 1.0F}));
  for (const int length : {1, 2, 3}) {
    filter.Flush();
    VecReal32 out, in(length);
    in[0] = 7.0F;
    filter.Apply(out, in, true);
    EXPECT_EQ(out.GetSize(), 0);
    filter.Apply(out, VecReal32(4), false);
    EXPECT_EQ(out[3 - length], 7.0F);
  }
}

template <class TapVector, class V> void CheckInPlace(int tapCount, int length) {
  const auto taps = NoiseVector<TapVector>(tapCount);
  const auto in = NoiseVector<V>(length);
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    SFIRFilter apart(taps), one(taps), both(taps);
    for (int call = 0; call < 3; ++call) {
      V out, data(in), same(in);
      apart.Apply(out, in, false);
      one.Apply(data, false);
      both.Apply(same, same, false);
      ASSERT_TRUE(SameBits(data, out)) << level.name << ", taps " << tapCount << ", length " << length;
      ASSERT_TRUE(SameBits(same, out)) << level.name << ", taps " << tapCount << ", length " << length;
    }
  }
}

TEST(SFIRFilter, Apply_InPlace_GivesTheSame) {
  for (const int taps : {1, 2, 10, 64, 200}) {
    for (const int length : {1, 9, 10, 11, 150, 700}) {
      CheckInPlace<VecReal32, VecReal32>(taps, length);
      CheckInPlace<VecReal32, VecCplx32>(taps, length);
      CheckInPlace<VecCplx32, VecCplx32>(taps, length);
    }
  }
}

TEST(SFIRFilter, Apply_InPlaceOnANarrowedView_LeavesTheRestAlone) {
  auto data = Of<VecReal32>({5.0F, 1.0F, 2.0F, 3.0F, 6.0F});
  data.Trim(1, 3);
  SFIRFilter filter(Of<VecReal32>({2.0F}));
  filter.Apply(data, false);
  EXPECT_EQ(List(data), (Samples{2.0F, 4.0F, 6.0F}));
  data.Resize(5);
  EXPECT_EQ(List(data), (Samples{5.0F, 2.0F, 4.0F, 6.0F, 6.0F}));
}

TEST(SFIRFilter, Apply_OutputLongerOrShorter_GetsTheInputsLength) {
  SFIRFilter filter(Of<VecReal32>({2.0F}));
  VecReal32 longer(10), shorter(1);
  filter.Apply(longer, Of<VecReal32>({1.0F, 2.0F, 3.0F}), false);
  filter.Apply(shorter, Of<VecReal32>({1.0F, 2.0F, 3.0F}), false);
  EXPECT_EQ(List(longer), (Samples{2.0F, 4.0F, 6.0F}));
  EXPECT_EQ(List(shorter), (Samples{2.0F, 4.0F, 6.0F}));
}

TEST(SFIRFilter, Apply_EmptyBlock_GivesNoneAndKeepsTheState) {
  SFIRFilter filter(Of<VecReal32>({0.0F, 1.0F}));
  VecReal32 out(5);
  filter.Apply(out, Of<VecReal32>({3.0F}), false);
  for (const bool trim : {false, true}) {
    filter.Apply(out, VecReal32(), trim);
    EXPECT_EQ(out.GetSize(), 0);
  }
  filter.Apply(out, VecReal32(1), false);
  EXPECT_EQ(List(out), (Samples{3.0F}));
}

TEST(SFIRFilter, Apply_WithoutTaps_GivesZeros) {
  const auto real = Of<VecReal32>({1.0F, 2.0F});
  const auto complex = Of<VecCplx32>({{1.0F, 2.0F}});
  for (const bool trim : {false, true}) {
    for (SFIRFilter filter : {SFIRFilter(), SFIRFilter(VecReal32())}) {
      VecReal32 out, data(real);
      filter.Apply(out, real, trim);
      EXPECT_EQ(List(out), Samples(2, 0.0F));
      filter.Apply(data, trim);
      EXPECT_EQ(List(data), Samples(2, 0.0F));
      VecCplx32 cplxOut;
      filter.Apply(cplxOut, complex, trim);
      EXPECT_EQ(List(cplxOut), Values(1));
      filter.Flush();
    }
    SFIRFilter filter{VecCplx32()};
    VecCplx32 cplxOut(complex);
    filter.Apply(cplxOut, trim);
    EXPECT_EQ(List(cplxOut), Values(1));
  }
}

TEST(SFIRFilter, Apply_RealSignalAndComplexTaps_ThrowsInvalidParameter) {
  SFIRFilter filter(NoiseVector<VecCplx32>(3));
  VecReal32 data(4);
  ExpectThrown([&] { filter.Apply(data, false); }, 10002, "invalid input parameter", "dsp\\SFIRFilter");
  ExpectThrown([&] { filter.Apply(data, VecReal32(2), true); }, 10002, "invalid input parameter",
               "dsp\\SFIRFilter");
  EXPECT_EQ(data.GetSize(), 4);
}

TEST(SFIRFilter, SetTaps_OnARunningFilter_BeginsAnew) {
  const auto real = NoiseVector<VecReal32>(30, 7), other = NoiseVector<VecReal32>(12, 8);
  const auto complex = NoiseVector<VecCplx32>(17, 9);
  const auto in = NoiseVector<VecCplx32>(100, 10);
  SFIRFilter filter(real);
  VecCplx32 out;
  filter.Apply(out, in, false);
  filter.SetTaps(other);
  EXPECT_TRUE(SameBits(Whole(filter, in), Whole(SFIRFilter(other), in)));
  filter.Apply(out, in, false);
  filter.SetTaps(complex);
  EXPECT_TRUE(SameBits(Whole(filter, in), Whole(SFIRFilter(complex), in)));
  filter.Apply(out, in, false);
  filter.SetTaps(real);
  EXPECT_TRUE(SameBits(Whole(filter, in), Whole(SFIRFilter(real), in)));
  filter.SetTaps(VecReal32());
  EXPECT_EQ(List(Whole(filter, in)), Values(100));
}

// Real signals and the real parts of complex ones have one delay line.
TEST(SFIRFilter, Apply_RealSignalAfterAComplexOne_ContinuesItsRealParts) {
  SFIRFilter filter(Of<VecReal32>({0.0F, 1.0F}));
  VecCplx32 cplxOut;
  filter.Apply(cplxOut, Of<VecCplx32>({{3.0F, 4.0F}}), false);
  VecReal32 out;
  filter.Apply(out, Of<VecReal32>({5.0F}), false);
  EXPECT_EQ(out[0], 3.0F);
  filter.Apply(cplxOut, VecCplx32(1), false);
  EXPECT_EQ(cplxOut[0], (Cplx32{5.0F, 4.0F}));
}

template <class TapVector, class V> void CheckCopies() {
  const auto taps = NoiseVector<TapVector>(40, 11), otherTaps = NoiseVector<TapVector>(3, 12);
  const auto in = NoiseVector<V>(200, 13), next = NoiseVector<V>(77, 14);
  V out, expected;
  auto source = std::make_unique<SFIRFilter>(taps);
  source->Apply(out, in, false);
  SFIRFilter copy(*source), assigned(otherTaps), same(*source);
  assigned = *source;
  same = *&same;
  source->Apply(expected, next, false);
  SFIRFilter moved(std::move(*source));
  source->Apply(out, next, false);
  EXPECT_EQ(List(out), std::vector<ElementOf<V>>(77));
  source.reset();
  copy.Apply(out, next, false);
  EXPECT_TRUE(SameBits(out, expected));
  assigned.Apply(out, next, false);
  EXPECT_TRUE(SameBits(out, expected));
  same.Apply(out, next, false);
  EXPECT_TRUE(SameBits(out, expected));
  moved.Apply(out, next, false);
  copy.Apply(expected, next, false);
  EXPECT_TRUE(SameBits(out, expected));
}

TEST(SFIRFilter, Copy_OfARunningFilter_GoesOnByItself) {
  CheckCopies<VecReal32, VecReal32>();
  CheckCopies<VecReal32, VecCplx32>();
  CheckCopies<VecCplx32, VecCplx32>();
}

template <class TapVector, class V> void CheckAllocations(int tapCount, int longest) {
  SFIRFilter filter(NoiseVector<TapVector>(tapCount));
  V in = NoiseVector<V>(longest), out(longest), data(longest);
  // Quiet outputs beside loud ones take more work, but no more memory.
  for (int i = longest / 3; i < longest; ++i) in[i] = {};
  in[0] = test::Element<ElementOf<V>>(1000000);
  const AllocationLimit none(0);
  const long before = AllocationCount();
  for (int call = 0; call < 100; ++call) {
    in.Resize(1 + call * 3701 % longest);
    filter.Apply(out, in, call % 2 == 0);
    data.Resize(longest);
    filter.Apply(data, true);
    if (call % 10 == 0) filter.Flush();
  }
  EXPECT_EQ(AllocationCount(), before) << tapCount;
}

// From the first call on, and whatever the lengths of the pieces: so the filter cannot grow with the signal.
TEST(SFIRFilter, Apply_AnyPieces_AllocatesNothing) {
  for (const int taps : {1, 30, 1000}) {
    CheckAllocations<VecReal32, VecReal32>(taps, 9000);
    CheckAllocations<VecReal32, VecCplx32>(taps, 9000);
    CheckAllocations<VecCplx32, VecCplx32>(taps, 9000);
  }
}

TEST(SFIRFilter, SetTaps_NoMemory_ThrowsAndLeavesNoTaps) {
  SFIRFilter filter(NoiseVector<VecReal32>(5));
  const auto taps = NoiseVector<VecReal32>(3000);
  QORNException thrown(0, "", "", 0);
  test::PrintedBy([&] {
    thrown = ThrownBy([&] {
      const AllocationLimit limit(13000);
      filter.SetTaps(taps);
    });
  });
  EXPECT_EQ(thrown.GetErrorCode(), 11001);
  EXPECT_STREQ(thrown.GetMessage(), "memory allocation error");
  EXPECT_EQ(List(Whole(filter, Of<VecReal32>({1.0F, 2.0F}))), Samples(2, 0.0F));
  filter.SetTaps(taps);
  EXPECT_EQ(Whole(filter, Of<VecReal32>({1.0F}))[0], taps[0]);
}

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

float &LastPart(float &x) { return x; }
float &LastPart(Cplx32 &x) { return x.im; }
float LastPart(const float &x) { return x; }
float LastPart(const Cplx32 &x) { return x.im; }
float FirstPart(const float &x) { return x; }
float FirstPart(const Cplx32 &x) { return x.re; }

template <class Tap, class E> void CheckNotFiniteSamples(int tapCount, float value) {
  constexpr bool kBothParts = std::is_same_v<Tap, E>; // those of a product
  auto in = NoiseVector<VectorOf<E>>(9600);
  LastPart(in[250]) = value;
  SFIRFilter filter(NoiseVector<VectorOf<Tap>>(tapCount));
  const auto out = InPieces(filter, in, {200, 70, 9330});
  for (int n = 0; n < 9600; ++n) {
    const bool apart = n < 250 || n >= 250 + tapCount;
    ASSERT_EQ(std::isfinite(FirstPart(out[n])), apart || !kBothParts) << tapCount << ' ' << n;
    ASSERT_EQ(std::isfinite(LastPart(out[n])), apart) << tapCount << ' ' << n;
  }
}

TEST(SFIRFilter, Apply_NotFinite_ShowsOnlyUnderTheTaps) {
  for (const int taps : {1, 5, 64, 100, 2000}) {
    for (const float value : {kInfinity, -kInfinity, kNaN}) {
      CheckNotFiniteSamples<float, float>(taps, value);
      CheckNotFiniteSamples<float, Cplx32>(taps, value);
      CheckNotFiniteSamples<Cplx32, Cplx32>(taps, value);
      if (HasFailure()) return;
    }
  }
}

bool IsAlike(float a, float b) { return std::isnan(a) ? std::isnan(b) : a == b; }

// A zero sample, one before the first included, gives not-a-number under such a tap, and a one the tap
// itself.
template <class Tap, class E> void CheckNotFiniteTaps(int tapCount, float value) {
  constexpr int kLength = 5000, kPlace = 300;
  const int late = tapCount - 3;
  auto taps = NoiseVector<VectorOf<Tap>>(tapCount);
  LastPart(taps[late]) = value;
  VectorOf<E> in(kLength), one(1);
  LastPart(in[kPlace]) = 1.0F;
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    SFIRFilter filter(taps), single(taps);
    const auto out = InPieces(filter, in, {100, 4100, 800});
    for (int n = 0; n < kLength; ++n) {
      single.Apply(one, Part(in, n, 1), false);
      ASSERT_TRUE(IsAlike(FirstPart(out[n]), FirstPart(one[0])) &&
                  IsAlike(LastPart(out[n]), LastPart(one[0])))
          << level.name << ' ' << tapCount << ' ' << n;
      if constexpr (std::is_same_v<Tap, float>) {
        const float expected = n == kPlace + late ? value : kNaN;
        ASSERT_TRUE(IsAlike(LastPart(out[n]), expected)) << level.name << ' ' << tapCount << ' ' << n;
      }
      ASSERT_FALSE(std::isfinite(LastPart(out[n]))) << level.name << ' ' << tapCount << ' ' << n;
    }
  }
}

TEST(SFIRFilter, Apply_NotFiniteTap_CountsForEverySample) {
  for (const int taps : {100, 2000}) {
    for (const float value : {kInfinity, -kInfinity, kNaN}) {
      CheckNotFiniteTaps<float, float>(taps, value);
      CheckNotFiniteTaps<float, Cplx32>(taps, value);
      CheckNotFiniteTaps<Cplx32, Cplx32>(taps, value);
      if (HasFailure()) return;
    }
  }
}

} // namespace
