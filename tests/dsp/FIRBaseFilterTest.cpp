#include "qorn/dsp/FIRBaseFilter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "dsp/FIRFilterTable.h"
#include "qorn/dsp/FIRFilter.h"
#include "support/Allocations.h"
#include "support/Filters.h"

namespace {

using namespace QORN;
using test::CplxTaps;
using test::FilterKind;
using test::kFilterKinds;
using test::List;
using test::Of;
using test::Taps;
using Probe = test::FilterProbe;

#if defined(__x86_64__) && defined(__GNUC__)
// The slot of a virtual function, in pointers, as the platform's ABI encodes it: 1 + the offset in bytes.
template <class F> std::ptrdiff_t Slot(F function) {
  static_assert(sizeof function == 2 * sizeof(std::ptrdiff_t));
  std::ptrdiff_t words[2];
  std::memcpy(words, &function, sizeof words);
  return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void *));
}

TEST(FIRBaseFilter, VirtualSlots_StandInTheOrderOfTheInterface) {
  using F = FIRBaseFilter;
  // Slots 0 and 1 are the two entries of the destructor.
  EXPECT_EQ(Slot(&F::GetRecommendedTapSize), 2);
  EXPECT_EQ(Slot(&F::SetParameters), 3);
  EXPECT_EQ(Slot(static_cast<void (F::*)(VecCplx32 &, VecReal32 const &, bool)>(&F::Apply)), 4);
  EXPECT_EQ(Slot(static_cast<void (F::*)(VecCplx32 &, VecCplx32 const &, bool)>(&F::Apply)), 5);
  EXPECT_EQ(Slot(static_cast<void (F::*)(VecReal32 &, VecReal32 const &, bool)>(&F::Apply)), 6);
  EXPECT_EQ(Slot(&F::IsIntegralFilter), 7);
  EXPECT_EQ(Slot(&F::IsComplexFilter), 8);
  EXPECT_EQ(Slot(&F::SetTimeShift), 9);
}

// The first slot that a class adds would be the tenth.
template <class F> struct OneMore : F {
  virtual void Added() {}
};
template <class... F> std::vector<std::ptrdiff_t> FirstFreeSlots() { return {Slot(&OneMore<F>::Added)...}; }

TEST(FIRBaseFilter, Subclasses_AddNoVirtualSlots) {
  const auto slots =
      FirstFreeSlots<FIRBaseFilter, RootRaisedCosineFilter, RaisedCosineFilter, GaussianFilter,
                     GaussRectFilter, RectangularFilter, IS95TXMeasurementFilter, IS95TXEQMeasurementFilter,
                     IS95ReferenceFilter, C4FMReverseShapingFilter, HDQPSKP25MeasurementFilter, LowPassFilter,
                     HighPassFilter, BandPassFilter, IntegralGaussianFilter, IntegralRectFilter,
                     UserDefinedFilter, IntegralUserDefinedFilter>();
  EXPECT_EQ(slots, std::vector<std::ptrdiff_t>(18, 10));
}
#endif

template <class... Field> bool Ascend(const void *object, const Field &...field) {
  const void *places[] = {&field...};
  const void *before = object;
  for (const void *place : places) {
    if (!(before < place)) return false;
    before = place;
  }
  return true;
}

TEST(FIRBaseFilter, Fields_StandInTheOrderOfTheInterface) {
  struct Base : FIRBaseFilter {
    static bool InOrder() {
      const Base f;
      return Ascend(&f, f.m_fir, f.m_type, f.m_tapSize, f.m_taps, f.m_cplxTaps, f.m_delay, f.m_timeShift);
    }
  };
  EXPECT_TRUE(Base::InOrder());
  struct Shaped : BandPassFilter {
    static bool InOrder() {
      const Shaped f;
      return Ascend(&f, f.m_timeShift, f.m_samplingRate, f.m_rate, f.m_shape);
    }
  };
  EXPECT_TRUE(Shaped::InOrder());
  struct User : UserDefinedFilter {
    static bool InOrder() {
      const User f;
      return Ascend(&f, f.m_timeShift, f.m_samplingRate, f.m_rate, f.m_tapRate, f.m_userTaps, f.m_tapsPresent,
                    f.m_parametersSet, f.m_complex);
    }
  };
  EXPECT_TRUE(User::InOrder());
  struct Ratio : IS95ReferenceFilter {
    static bool InOrder() {
      const Ratio f;
      return Ascend(&f, f.m_timeShift, f.m_oversamplingRatio);
    }
  };
  EXPECT_TRUE(Ratio::InOrder());
}

TEST(FIRBaseFilter, NewFilter_HasNothing) {
  FIRBaseFilter filter;
  EXPECT_EQ(filter.GetType(), 0);
  EXPECT_EQ(filter.GetDelay(), 0.0F);
  EXPECT_TRUE(Taps(filter).empty());
  EXPECT_TRUE(CplxTaps(filter).empty());
  EXPECT_FALSE(filter.IsIntegralFilter());
  EXPECT_FALSE(filter.IsComplexFilter());
  EXPECT_EQ(filter.GetRecommendedTapSize(4.0F, 1.0F, 0.35F), 0);
  filter.SetParameters(4.0F, 1.0F, 0.35F, 11);
  EXPECT_TRUE(Taps(filter).empty());
}

TEST(FIRBaseFilter, Apply_EachForm_TakesItsTaps) {
  for (const bool complex : {false, true}) {
    Probe filter({1.0F, 2.0F}, {{0.0F, 3.0F}, {0.0F, 0.0F}}, complex);
    VecReal32 real;
    filter.Apply(real, Of<VecReal32>({1.0F, 10.0F}), false);
    EXPECT_EQ(List(real), (std::vector<float>{1.0F, 12.0F}));
    VecCplx32 out;
    filter.Apply(out, Of<VecReal32>({1.0F, 10.0F}), false);
    EXPECT_EQ(List(out), (std::vector<Cplx32>{{0.0F, 3.0F}, {0.0F, 30.0F}}));
    filter.Apply(out, Of<VecCplx32>({{1.0F, 2.0F}, {10.0F, 0.0F}}), false);
    EXPECT_EQ(List(out), complex ? (std::vector<Cplx32>{{-6.0F, 3.0F}, {0.0F, 30.0F}})
                                 : (std::vector<Cplx32>{{1.0F, 2.0F}, {12.0F, 4.0F}}));
    filter.Apply(real, Of<VecReal32>({1.0F, 10.0F}), true);
    EXPECT_EQ(List(real), (std::vector<float>{12.0F, 20.0F}));
  }
}

TEST(FIRBaseFilter, GetTaps_OfEitherType_GivesTheTargetTheirNumber) {
  const Probe filter({1.0F, 2.0F}, {{0.0F, 3.0F}, {4.0F, 0.0F}, {5.0F, 0.0F}}, false);
  VecReal32 real(9);
  filter.GetTaps(real);
  EXPECT_EQ(List(real), (std::vector<float>{1.0F, 2.0F}));
  VecCplx32 complex(9);
  filter.GetTaps(complex);
  EXPECT_EQ(List(complex), (std::vector<Cplx32>{{0.0F, 3.0F}, {4.0F, 0.0F}, {5.0F, 0.0F}}));
}

TEST(FIRBaseFilter, SetTimeShift_AnyFilter_StoresItAndNothingElse) {
  for (const FilterKind &kind : kFilterKinds) {
    const auto filter = kind.Make();
    EXPECT_EQ(Probe::TimeShift(*filter), 0.0F) << kind.type;
    filter->SetParameters(4.0F, 1.0F, 0.5F, 21);
    const auto taps = Taps(*filter);
    const float delay = filter->GetDelay();
    filter->SetTimeShift(0.25F);
    EXPECT_EQ(Probe::TimeShift(*filter), 0.25F) << kind.type;
    EXPECT_EQ(Taps(*filter), taps) << kind.type;
    EXPECT_EQ(filter->GetDelay(), delay) << kind.type;
  }
}

void GiveUserTaps(FIRBaseFilter &filter) {
  const auto taps = Of<VecCplx32>({{0.5F, 0.0F}, {1.0F, 0.25F}, {0.5F, -0.25F}});
  if (auto *user = dynamic_cast<UserDefinedFilter *>(&filter)) user->SetUserTaps(taps, 2.0F);
  if (auto *user = dynamic_cast<IntegralUserDefinedFilter *>(&filter)) user->SetUserTaps(taps, 2.0F);
}

std::vector<Cplx32> Filtered(FIRBaseFilter &filter) {
  VecCplx32 in(40), out;
  for (int i = 0; i < 40; ++i) in[i] = {std::cos(0.3F * static_cast<float>(i * i)), 0.1F};
  filter.Apply(out, in, true);
  auto all = List(out);
  VecReal32 re, filtered;
  in.GetReal(re);
  filter.Apply(filtered, re, true);
  for (const float x : List(filtered)) all.push_back({x, 0.0F});
  filter.Apply(out, re, false);
  for (const Cplx32 x : List(out)) all.push_back(x);
  return all;
}

TEST(FIRBaseFilter, Copy_OfAnyFilter_IsIndependentOfItsSource) {
  for (const FilterKind &kind : kFilterKinds) {
    auto source = kind.Make();
    GiveUserTaps(*source);
    source->SetParameters(4.0F, 1.0F, 0.35F, 21);
    source->SetTimeShift(0.25F);
    const auto expected = Filtered(*source);
    const auto taps = Taps(*source);
    const auto cplxTaps = CplxTaps(*source);
    EXPECT_FALSE(taps.empty() && cplxTaps.empty()) << kind.type;

    auto copy = CloneFilter(*source);
    ASSERT_NE(copy, nullptr) << kind.type;
    EXPECT_NE(Probe::Engine(*copy), Probe::Engine(*source)) << kind.type;
    EXPECT_EQ(copy->GetDelay(), source->GetDelay()) << kind.type;
    EXPECT_EQ(Probe::TapSize(*copy), Probe::TapSize(*source)) << kind.type;
    EXPECT_EQ(Probe::TimeShift(*copy), 0.25F) << kind.type;
    EXPECT_EQ(copy->GetType(), source->GetType()) << kind.type;
    source->SetParameters(8.0F, 1.0F, 0.4F, 31);
    EXPECT_EQ(Taps(*copy), taps) << kind.type;
    EXPECT_EQ(CplxTaps(*copy), cplxTaps) << kind.type;
    source.reset();
    EXPECT_EQ(Filtered(*copy), expected) << kind.type;

    // The other order of destruction.
    source = CloneFilter(*copy);
    copy.reset();
    EXPECT_EQ(Filtered(*source), expected) << kind.type;
  }
}

TEST(FIRBaseFilter, Assignment_OverADesign_TakesTheValueAndKeepsItsEngine) {
  RootRaisedCosineFilter source, target;
  source.SetParameters(4.0F, 1.0F, 0.35F, 21);
  source.SetTimeShift(1.5F);
  target.SetParameters(8.0F, 1.0F, 0.22F, 51);
  const FIRFilter *engine = Probe::Engine(target);
  const RootRaisedCosineFilter &alias = target;
  target = alias;
  EXPECT_EQ(Taps(target).size(), 51U);
  target = source;
  EXPECT_EQ(Probe::Engine(target), engine);
  EXPECT_EQ(Taps(target), Taps(source));
  EXPECT_EQ(target.GetDelay(), 10.0F);
  EXPECT_EQ(target.GetSamplingRate(), 4.0F);
  EXPECT_EQ(target.GetRoleoff(), 0.35F);
  EXPECT_EQ(Probe::TapSize(target), 21);
  EXPECT_EQ(Probe::TimeShift(target), 1.5F);
}

TEST(FIRBaseFilter, Apply_BlocksOfLikeSize_AllocatesNothing) {
  RootRaisedCosineFilter filter;
  filter.SetParameters(4.0F, 1.0F, 0.35F, 31);
  const VecCplx32 in(1000);
  VecCplx32 out;
  filter.Apply(out, in, true);
  const long before = test::AllocationCount();
  filter.Apply(out, in, true);
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
