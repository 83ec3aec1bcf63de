#include "qorn/dsp/FIRFilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "qorn/dsp/DSPUtils.h"
#include "qorn/infra/QORNException.h"
#include "support/Allocations.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::ElementOf;
using test::List;
using test::Of;

using Samples = std::vector<float>;

Samples Filtered(const Samples &taps, const Samples &in, bool centre) {
  FIRFilter filter;
  VecReal32 out;
  filter.Apply(out, Of<VecReal32>(taps), Of<VecReal32>(in), centre);
  return List(out);
}

TEST(FIRFilter, Apply_OneTapOfOne_ReturnsTheInput) {
  const Samples in = {3.0F, -1.0F, 0.5F, 2.0F};
  EXPECT_EQ(Filtered({1.0F}, in, true), in);
  EXPECT_EQ(Filtered({1.0F}, in, false), in);
}

TEST(FIRFilter, Apply_TapAtTheEnd_DelaysByItsPlaceOrByItsDistanceFromTheMiddle) {
  const Samples in = {1.0F, 2.0F, 3.0F, 4.0F, 5.0F};
  EXPECT_EQ(Filtered({0.0F, 0.0F, 1.0F}, in, false), (Samples{0.0F, 0.0F, 1.0F, 2.0F, 3.0F}));
  EXPECT_EQ(Filtered({0.0F, 0.0F, 1.0F}, in, true), (Samples{0.0F, 1.0F, 2.0F, 3.0F, 4.0F}));
}

TEST(FIRFilter, Apply_FourTapsCentred_BeginsAtTheThirdOfTheConvolution) {
  // {1, 2, 3, 4} * {1, 10, 100, 1000} = {1, 12, 123, 1234, 2340, 3400, 4000}
  const Samples taps = {1.0F, 2.0F, 3.0F, 4.0F}, in = {1.0F, 10.0F, 100.0F, 1000.0F};
  EXPECT_EQ(Filtered(taps, in, true), (Samples{123.0F, 1234.0F, 2340.0F, 3400.0F}));
  EXPECT_EQ(Filtered(taps, in, false), (Samples{1.0F, 12.0F, 123.0F, 1234.0F}));
}

// Numbers between -1 and 1.
class Noise {
public:
  template <class T> T Next() {
    m_state = m_state * 1664525U + 1013904223U;
    return static_cast<T>(static_cast<std::int32_t>(m_state)) * static_cast<T>(0x1p-31);
  }
  template <class V> V Vector(int n) {
    V vec(n);
    for (int i = 0; i < n; ++i) {
      if constexpr (std::is_class_v<ElementOf<V>>) {
        using Part = decltype(ElementOf<V>::re);
        const Part re = Next<Part>();
        vec[i] = {re, Next<Part>()};
      } else {
        vec[i] = Next<ElementOf<V>>();
      }
    }
    return vec;
  }

private:
  std::uint32_t m_state = 1;
};

struct Wide {
  long double re, im;
};
template <class T> Wide Widened(T x) {
  if constexpr (std::is_class_v<T>) {
    return {static_cast<long double>(x.re), static_cast<long double>(x.im)};
  } else {
    return {static_cast<long double>(x), 0};
  }
}

template <class T> struct PartOf { using Type = T; };
template <> struct PartOf<Cplx32> { using Type = float; };
template <> struct PartOf<Cplx64> { using Type = double; };

template <class V> long double Norm(const V &vec) {
  long double sum = 0;
  for (int i = 0; i < vec.GetSize(); ++i) {
    const Wide x = Widened(vec[i]);
    sum += x.re * x.re + x.im * x.im;
  }
  return std::sqrt(sum);
}

// Against the direct sum. No sum of products is above the product of the norms; a direct sum of T of them
// errs by at most T half epsilons of that, and one by transforms, which begin to pay from some tens of taps
// on, by less.
template <class Out, class TapVector, class In> void ExpectConvolution(int taps, int samples, bool centre) {
  Noise noise;
  const auto h = noise.Vector<TapVector>(taps);
  const auto x = noise.Vector<In>(samples);
  FIRFilter filter;
  Out out(3);
  filter.Apply(out, h, x, centre);
  ASSERT_EQ(out.GetSize(), samples) << taps;
  using Part = typename PartOf<ElementOf<Out>>::Type;
  const auto epsilon = static_cast<long double>(std::numeric_limits<Part>::epsilon());
  const long double bound = epsilon / 2 * (taps + 2) * Norm(h) * Norm(x);
  for (int n = 0; n < samples; ++n) {
    const int place = centre ? n + taps / 2 : n;
    Wide sum{0, 0};
    for (int i = 0; i < taps; ++i) {
      if (place - i < 0 || place - i >= samples) continue;
      const Wide a = Widened(h[i]), b = Widened(x[place - i]);
      sum.re += a.re * b.re - a.im * b.im;
      sum.im += a.re * b.im + a.im * b.re;
    }
    const Wide got = Widened(out[n]);
    ASSERT_LE(std::fabs(got.re - sum.re), bound) << taps << 'x' << samples << ' ' << centre << ' ' << n;
    ASSERT_LE(std::fabs(got.im - sum.im), bound) << taps << 'x' << samples << ' ' << centre << ' ' << n;
  }
}

TEST(FIRFilter, Apply_AnyFormAndLength_IsTheDirectSum) {
  for (const int taps : {1, 2, 3, 4, 7, 32, 101, 400, 2000}) {
    for (const int samples : {1, 2, 5, 64, 333, 1500}) {
      for (const bool centre : {false, true}) {
        ExpectConvolution<VecReal32, VecReal32, VecReal32>(taps, samples, centre);
        ExpectConvolution<VecCplx32, VecReal32, VecCplx32>(taps, samples, centre);
        ExpectConvolution<VecCplx64, VecReal64, VecCplx64>(taps, samples, centre);
        ExpectConvolution<VecCplx32, VecCplx32, VecCplx32>(taps, samples, centre);
        ExpectConvolution<VecCplx32, VecCplx32, VecReal32>(taps, samples, centre);
      }
    }
  }
}

// Where sums are direct, that is up to 31 elements of the shorter operand, not a bit differs.
TEST(FIRFilter, Apply_ComplexTaps_IsMadeOfFourRealConvolutions) {
  for (const int taps : {1, 2, 7, 31, 200}) {
    for (const int samples : {1, 3, 31, 64, 1000}) {
      if (std::min(taps, samples) > 31) continue;
      for (const bool centre : {false, true}) {
        Noise noise;
        const auto h = noise.Vector<VecCplx32>(taps), x = noise.Vector<VecCplx32>(samples);
        VecReal32 hr, hi, xr, xi, rr, ii, ri, ir;
        h.GetReal(hr);
        h.GetImag(hi);
        x.GetReal(xr);
        x.GetImag(xi);
        DSPUtils::Conv(rr, hr, xr);
        DSPUtils::Conv(ii, hi, xi);
        DSPUtils::Conv(ri, hr, xi);
        DSPUtils::Conv(ir, hi, xr);
        VecCplx32 out;
        FIRFilter().Apply(out, h, x, centre);
        ASSERT_EQ(out.GetSize(), samples);
        for (int n = 0; n < samples; ++n) {
          const int k = centre ? n + taps / 2 : n;
          ASSERT_EQ(out[n], (Cplx32{rr[k] - ii[k], ri[k] + ir[k]})) << taps << 'x' << samples << ' ' << n;
        }
      }
    }
  }
}

TEST(FIRFilter, Apply_AgainOnOtherLengths_RemembersNothing) {
  Noise noise;
  FIRFilter used;
  for (const int taps : {40, 3, 100}) {
    for (const int samples : {200, 10, 2500}) {
      const auto h = noise.Vector<VecCplx32>(taps);
      const auto x = noise.Vector<VecCplx32>(samples);
      VecCplx32 out, fresh;
      used.Apply(out, h, x, true);
      FIRFilter().Apply(fresh, h, x, true);
      EXPECT_EQ(List(out), List(fresh));
    }
  }
}

TEST(FIRFilter, Apply_OutputThatIsASource_GivesTheSame) {
  Noise noise;
  const auto real = noise.Vector<VecReal32>(50), realTaps = noise.Vector<VecReal32>(9);
  const auto complex = noise.Vector<VecCplx32>(50), complexTaps = noise.Vector<VecCplx32>(9);
  FIRFilter filter;
  VecReal32 expected, same(real), sameTaps(realTaps), both(real);
  filter.Apply(expected, realTaps, real, true);
  filter.Apply(same, realTaps, same, true);
  filter.Apply(sameTaps, sameTaps, real, true);
  EXPECT_EQ(List(same), List(expected));
  EXPECT_EQ(List(sameTaps), List(expected));
  filter.Apply(expected, real, real, false);
  filter.Apply(both, both, both, false);
  EXPECT_EQ(List(both), List(expected));

  VecCplx32 wanted, sameComplex(complex), sameComplexTaps(complexTaps);
  filter.Apply(wanted, complexTaps, complex, false);
  filter.Apply(sameComplex, complexTaps, sameComplex, false);
  filter.Apply(sameComplexTaps, sameComplexTaps, complex, false);
  EXPECT_EQ(List(sameComplex), List(wanted));
  EXPECT_EQ(List(sameComplexTaps), List(wanted));
  filter.Apply(wanted, realTaps, complex, true);
  sameComplex = complex;
  filter.Apply(sameComplex, realTaps, sameComplex, true);
  EXPECT_EQ(List(sameComplex), List(wanted));
}

TEST(FIRFilter, Apply_WithoutTapsOrSamples_GivesZerosOfTheInputsLength) {
  FIRFilter filter;
  for (const bool centre : {false, true}) {
    VecReal32 real = Of<VecReal32>({1.0F, 2.0F});
    filter.Apply(real, VecReal32(), VecReal32(3), centre);
    EXPECT_EQ(List(real), Samples(3, 0.0F));
    filter.Apply(real, Of<VecReal32>({1.0F, 2.0F, 3.0F}), VecReal32(), centre);
    EXPECT_EQ(real.GetSize(), 0);
    VecCplx32 complex = Of<VecCplx32>({{1.0F, 2.0F}});
    filter.Apply(complex, VecReal32(), VecCplx32(2), centre);
    EXPECT_EQ(List(complex), std::vector<Cplx32>(2));
    filter.Apply(complex, VecCplx32(), VecCplx32(2), centre);
    EXPECT_EQ(List(complex), std::vector<Cplx32>(2));
    filter.Apply(complex, VecCplx32(), VecReal32(2), centre);
    EXPECT_EQ(List(complex), std::vector<Cplx32>(2));
    filter.Apply(complex, VecCplx32(4), VecCplx32(), centre);
    EXPECT_EQ(complex.GetSize(), 0);
    VecCplx64 wide(1);
    filter.Apply(wide, VecReal64(4), VecCplx64(), centre);
    EXPECT_EQ(wide.GetSize(), 0);
  }
}

TEST(FIRFilter, Apply_Output_IsAViewOfTheWholeConvolution) {
  FIRFilter filter;
  VecCplx32 out;
  filter.Apply(out, VecReal32(9), VecCplx32(100), true);
  EXPECT_EQ(out.GetSize(), 100);
  EXPECT_EQ(out.GetCapacity(), 108);
}

TEST(FIRFilter, Apply_BlocksOfLikeSize_AllocatesNothingWithRealTaps) {
  FIRFilter filter;
  Noise noise;
  const auto taps = noise.Vector<VecReal32>(31);
  const auto wideTaps = noise.Vector<VecReal64>(31);
  const auto in = noise.Vector<VecCplx32>(1000);
  const auto wideIn = noise.Vector<VecCplx64>(1000);
  const auto realIn = noise.Vector<VecReal32>(1000);
  VecCplx32 out;
  VecCplx64 wideOut;
  VecReal32 realOut;
  const auto apply = [&](bool centre) {
    filter.Apply(out, taps, in, centre);
    filter.Apply(wideOut, wideTaps, wideIn, centre);
    filter.Apply(realOut, taps, realIn, centre);
  };
  apply(true);
  const long before = test::AllocationCount();
  apply(false);
  apply(true);
  EXPECT_EQ(test::AllocationCount(), before);
}

TEST(FIRFilter, Apply_ComplexTapsAgain_AllocatesTheirTemporariesOnly) {
  FIRFilter filter;
  Noise noise;
  const auto taps = noise.Vector<VecCplx32>(31);
  const auto in = noise.Vector<VecCplx32>(1000);
  const auto realIn = noise.Vector<VecReal32>(1000);
  VecCplx32 out;
  filter.Apply(out, taps, in, true);
  long before = test::AllocationCount();
  filter.Apply(out, taps, in, true);
  EXPECT_EQ(test::AllocationCount(), before + 1);
  filter.Apply(out, taps, realIn, true);
  before = test::AllocationCount();
  filter.Apply(out, taps, realIn, true);
  EXPECT_EQ(test::AllocationCount(), before + 2);
}

TEST(FIRFilter, Apply_NoMemory_ThrowsAsAVector) {
  FIRFilter filter;
  const VecReal32 taps(100);
  const VecCplx32 in(5000);
  VecCplx32 out;
  testing::internal::CaptureStdout();
  try {
    const test::AllocationLimit limit(1000);
    filter.Apply(out, taps, in, true);
    ADD_FAILURE();
  } catch (const QORNException &e) {
    EXPECT_EQ(e.GetErrorCode(), 11001);
    EXPECT_STREQ(e.GetMessage(), "memory allocation error");
    EXPECT_STREQ(e.GetFileName(), "infra/Vector");
  }
  testing::internal::GetCapturedStdout();
  filter.Apply(out, taps, in, true);
  EXPECT_EQ(out.GetSize(), 5000);
}

TEST(FIRFilter, Copy_OfAUsedFilter_BeginsWithoutScratch) {
  FIRFilter filter;
  VecReal32 out;
  filter.Apply(out, VecReal32(3), VecReal32(5000), true);
  VecCplx32 complex;
  filter.Apply(complex, VecReal32(3), VecCplx32(5000), true);
  const long before = test::AllocationCount();
  FIRFilter copy(filter);
  copy = filter;
  EXPECT_EQ(test::AllocationCount(), before);
  copy.Apply(out, Of<VecReal32>({2.0F}), Of<VecReal32>({1.0F, 5.0F}), true);
  EXPECT_EQ(List(out), (Samples{2.0F, 10.0F}));
}

TEST(FIRFilter, Size_IsThatOfEightScratchVectors) {
  EXPECT_EQ(sizeof(FIRFilter), 4 * sizeof(VecReal32) + 4 * sizeof(VecReal64));
}

} // namespace
