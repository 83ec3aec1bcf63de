#include "qorn/dsp/FirstOrderFilters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include "qorn/infra/VecReal32.h"
#include "support/Allocations.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;

static_assert(std::has_virtual_destructor_v<FirstOrderIIRFilter>);
static_assert(std::has_virtual_destructor_v<FirstOrderRCLowPass>);

// Samples with all digits in use.
VecReal32 Signal(int n) {
  VecReal32 signal(n);
  for (int i = 0; i < n; ++i) signal[i] = std::sin(0.37F * static_cast<float>(i)) + 0.1F;
  return signal;
}

template <class Filter> std::vector<float> Output(Filter &filter, const VecReal32 &in) {
  VecReal32 out;
  filter.Apply(out, in);
  return List(out);
}

// The signal through the filter in two pieces, cut at each place in turn.
template <class Filter> void ExpectPiecesGiveTheWhole(const Filter &filter, int n) {
  const auto signal = Signal(n);
  Filter once = filter;
  const auto whole = Output(once, signal);
  for (int cut = 0; cut <= n; ++cut) {
    Filter twice = filter;
    auto head = Output(twice, Of<VecReal32>(std::vector<float>(signal.GetPtr(), signal.GetPtr() + cut)));
    const auto tail =
        Output(twice, Of<VecReal32>(std::vector<float>(signal.GetPtr() + cut, signal.GetPtr() + n)));
    head.insert(head.end(), tail.begin(), tail.end());
    EXPECT_EQ(head, whole) << cut;
  }
}

TEST(FirstOrderIIRFilter, Apply_Impulse_GivesTheImpulseResponse) {
  FirstOrderIIRFilter pole(1.0F, 0.0F, -0.5F);
  EXPECT_EQ(Output(pole, Of<VecReal32>({1.0F, 0.0F, 0.0F, 0.0F})),
            (std::vector<float>{1.0F, 0.5F, 0.25F, 0.125F}));
  FirstOrderIIRFilter both(2.0F, 3.0F, 0.5F);
  EXPECT_EQ(Output(both, Of<VecReal32>({1.0F, 0.0F, 0.0F})), (std::vector<float>{2.0F, 2.0F, -1.0F}));
}

TEST(FirstOrderIIRFilter, Apply_AnySignal_RoundsEachStepToFloat) {
  FirstOrderIIRFilter filter(0.3F, 0.17F, -0.81F);
  const auto in = Signal(500);
  const auto out = Output(filter, in);
  float w = 0.0F;
  for (int i = 0; i < in.GetSize(); ++i) {
    // A double holds the product of two floats exactly, so each narrowing is one rounding.
    const float fed = static_cast<float>(static_cast<double>(-0.81F) * static_cast<double>(w));
    const float v = in[i] - fed;
    const float direct = static_cast<float>(static_cast<double>(0.3F) * static_cast<double>(v));
    const float delayed = static_cast<float>(static_cast<double>(0.17F) * static_cast<double>(w));
    ASSERT_EQ(out[static_cast<std::size_t>(i)], direct + delayed) << i;
    w = v;
  }
}

TEST(FirstOrderIIRFilter, Apply_InPieces_ContinuesTheRecursion) {
  ExpectPiecesGiveTheWhole(FirstOrderIIRFilter(0.3F, 0.17F, -0.81F), 20);
}

TEST(FirstOrderIIRFilter, Flush_BetweenPieces_RestartsTheRecursion) {
  FirstOrderIIRFilter filter(0.3F, 0.17F, -0.81F);
  const auto first = Output(filter, Signal(20));
  EXPECT_NE(Output(filter, Signal(20)), first);
  filter.Flush();
  EXPECT_EQ(Output(filter, Signal(20)), first);
}

TEST(FirstOrderIIRFilter, SetTaps_WhileRunning_KeepsTheState) {
  FirstOrderIIRFilter filter(1.0F, 0.0F, -0.5F);
  EXPECT_EQ(Output(filter, Of<VecReal32>({1.0F})), (std::vector<float>{1.0F}));
  filter.SetTaps(1.0F, 10.0F, -0.25F);
  EXPECT_EQ(Output(filter, Of<VecReal32>({0.0F})), (std::vector<float>{10.25F}));
}

TEST(FirstOrderIIRFilter, Default_AnySignal_GivesZeros) {
  FirstOrderIIRFilter filter;
  EXPECT_EQ(Output(filter, Signal(3)), (std::vector<float>{0.0F, 0.0F, 0.0F}));
}

TEST(FirstOrderIIRFilter, Apply_OntoItsInput_GivesTheSame) {
  FirstOrderIIRFilter apart(0.3F, 0.17F, -0.81F);
  FirstOrderIIRFilter together = apart;
  auto signal = Signal(30);
  const auto expected = Output(apart, signal);
  together.Apply(signal, signal);
  EXPECT_EQ(List(signal), expected);
}

// A time constant of 14.4 samples, and its g and c.
FirstOrderRCLowPass LowPassOf14Samples() {
  FirstOrderRCLowPass filter;
  filter.ComputeFilterCoefficients(48000.0F, 0.0003F);
  return filter;
}
const float kGain = 1.0F / (48000.0F * 0.0003F);
const float kFeedback = -static_cast<float>(std::exp(-static_cast<double>(kGain)));

TEST(FirstOrderRCLowPass, Apply_Constant_TendsToTheDocumentedGain) {
  FirstOrderRCLowPass filter;
  filter.ComputeFilterCoefficients(0.001F, 8000.0F); // 8 samples
  const double gain = 1.0F / (0.001F * 8000.0F);
  float y = 0.0F;
  for (int i = 0; i < 1000; ++i) y = filter.Apply(2.0F);
  const double limit = gain * 2.0 / (1.0 - std::exp(-gain));
  EXPECT_GT(limit, 2.12);
  EXPECT_NEAR(y, limit, 2e-6);
}

TEST(FirstOrderRCLowPass, ApplyScalar_AnySignal_RoundsOncePerSample) {
  auto filter = LowPassOf14Samples();
  const auto in = Signal(500);
  float y = 0.0F;
  for (int i = 0; i < in.GetSize(); ++i) {
    y = static_cast<float>(static_cast<double>(kGain) * static_cast<double>(in[i]) -
                           static_cast<double>(kFeedback) * static_cast<double>(y));
    ASSERT_EQ(filter.Apply(in[i]), y) << i;
  }
}

TEST(FirstOrderRCLowPass, ApplyVector_AnySignal_RoundsEachStepToFloat) {
  auto filter = LowPassOf14Samples();
  const auto in = Signal(500);
  const auto out = Output(filter, in);
  float y = 0.0F;
  for (int i = 0; i < in.GetSize(); ++i) {
    const float direct = static_cast<float>(static_cast<double>(kGain) * static_cast<double>(in[i]));
    const float fed = static_cast<float>(static_cast<double>(kFeedback) * static_cast<double>(y));
    y = direct - fed;
    ASSERT_EQ(out[static_cast<std::size_t>(i)], y) << i;
  }
}

TEST(FirstOrderRCLowPass, ApplyScalarAndVector_SameSignal_DifferInLastBitsOnly) {
  auto scalar = LowPassOf14Samples();
  auto vector = LowPassOf14Samples();
  const auto in = Signal(500);
  const auto out = Output(vector, in);
  int differences = 0;
  for (int i = 0; i < in.GetSize(); ++i) {
    const float y = scalar.Apply(in[i]);
    if (y != out[static_cast<std::size_t>(i)]) ++differences;
    // Three roundings of values up to 1.1 against one, and what earlier ones left, which decays.
    EXPECT_NEAR(y, out[static_cast<std::size_t>(i)], 3e-6F) << i;
  }
  EXPECT_GT(differences, 0);
}

TEST(FirstOrderRCLowPass, Apply_InPieces_ContinuesTheRecursion) {
  FirstOrderRCLowPass filter;
  filter.ComputeFilterCoefficients(0.001F, 8000.0F);
  ExpectPiecesGiveTheWhole(filter, 20);
}

TEST(FirstOrderRCLowPass, Apply_ScalarAfterVector_SharesTheState) {
  FirstOrderRCLowPass filter;
  filter.ComputeFilterCoefficients(1.0F, 1.0F);
  const auto out = Output(filter, Of<VecReal32>({1.0F}));
  EXPECT_EQ(out[0], 1.0F);
  EXPECT_FLOAT_EQ(filter.Apply(0.0F), 0.36787944F);
}

TEST(FirstOrderRCLowPass, Flush_BetweenPieces_RestartsTheRecursion) {
  FirstOrderRCLowPass filter;
  filter.ComputeFilterCoefficients(0.001F, 8000.0F);
  const auto first = Output(filter, Signal(20));
  EXPECT_NE(Output(filter, Signal(20)), first);
  filter.Flush();
  EXPECT_EQ(Output(filter, Signal(20)), first);
}

TEST(FirstOrderRCLowPass, ComputeFilterCoefficients_SameValuesAgain_ChangesNothing) {
  FirstOrderRCLowPass once;
  once.ComputeFilterCoefficients(0.001F, 8000.0F);
  FirstOrderRCLowPass again = once;
  for (int i = 0; i < 20; ++i) {
    again.ComputeFilterCoefficients(0.001F, 8000.0F);
    const float x = static_cast<float>(i) * 0.3F;
    EXPECT_EQ(again.Apply(x), once.Apply(x)) << i;
  }
}

TEST(FirstOrderRCLowPass, ComputeFilterCoefficients_NewValues_KeepTheState) {
  FirstOrderRCLowPass filter;
  filter.ComputeFilterCoefficients(0.001F, 8000.0F);
  const float y = filter.Apply(8.0F);
  EXPECT_FLOAT_EQ(y, 1.0F);
  filter.ComputeFilterCoefficients(0.5F, 4.0F);
  EXPECT_FLOAT_EQ(filter.Apply(0.0F), 0.60653067F);
  // One changed argument is a change.
  filter.ComputeFilterCoefficients(0.5F, 2.0F);
  EXPECT_FLOAT_EQ(filter.Apply(0.0F), 0.60653067F * 0.36787944F);
}

TEST(FirstOrderRCLowPass, ComputeFilterCoefficients_OrderOfArguments_DoesNotCount) {
  FirstOrderRCLowPass a;
  FirstOrderRCLowPass b;
  a.ComputeFilterCoefficients(0.001F, 8000.0F);
  b.ComputeFilterCoefficients(8000.0F, 0.001F);
  EXPECT_EQ(Output(a, Signal(20)), Output(b, Signal(20)));
}

TEST(FirstOrderRCLowPass, Default_AnySignal_GivesZeros) {
  FirstOrderRCLowPass filter;
  EXPECT_EQ(filter.Apply(3.0F), 0.0F);
  EXPECT_EQ(Output(filter, Signal(3)), (std::vector<float>{0.0F, 0.0F, 0.0F}));
}

TEST(FirstOrderRCLowPass, ComputeFilterCoefficients_ProductOfZero_GivesInfiniteGain) {
  for (const float b : {0.0F, 8000.0F}) {
    FirstOrderRCLowPass filter;
    filter.ComputeFilterCoefficients(0.0F, b);
    EXPECT_EQ(filter.Apply(1.0F), std::numeric_limits<float>::infinity());
  }
}

TEST(FirstOrderRCLowPass, ComputeFilterCoefficients_BadValues_AreHarmless) {
  FirstOrderRCLowPass filter;
  for (const float a :
       {-1.0F, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
    filter.Flush();
    filter.ComputeFilterCoefficients(a, 100.0F);
    EXPECT_EQ(Output(filter, Signal(3)).size(), 3U);
  }
  // An infinite time constant lets nothing in and nothing out.
  filter.Flush();
  filter.ComputeFilterCoefficients(std::numeric_limits<float>::infinity(), 1.0F);
  EXPECT_EQ(filter.Apply(5.0F), 0.0F);
}

TEST(FirstOrderFilters, Apply_EmptyInput_GivesAnEmptyVectorAndKeepsTheState) {
  FirstOrderIIRFilter iir(1.0F, 0.0F, -0.5F);
  FirstOrderRCLowPass rc;
  rc.ComputeFilterCoefficients(1.0F, 1.0F);
  Output(iir, Of<VecReal32>({1.0F}));
  rc.Apply(1.0F);
  VecReal32 out(4);
  iir.Apply(out, VecReal32());
  EXPECT_EQ(out.GetSize(), 0);
  out.Resize(4);
  rc.Apply(out, VecReal32());
  EXPECT_EQ(out.GetSize(), 0);
  EXPECT_EQ(Output(iir, Of<VecReal32>({0.0F})), (std::vector<float>{0.5F}));
  EXPECT_FLOAT_EQ(rc.Apply(0.0F), 0.36787944F);
}

TEST(FirstOrderFilters, Apply_OntoAKeptDestination_AllocatesNothing) {
  FirstOrderIIRFilter iir(1.0F, 0.0F, -0.5F);
  FirstOrderRCLowPass rc;
  const auto in = Signal(100);
  VecReal32 out(100);
  const long before = test::AllocationCount();
  iir.Apply(out, in);
  rc.ComputeFilterCoefficients(1.0F, 1.0F);
  rc.Apply(out, in);
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
