// The block-by-block convolution, as a streaming filter would use it.
#include "infra/fourier/OverlapSave.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <random>
#include <thread>
#include <vector>

#include "support/Allocations.h"

namespace {

using QORN::fourier::ComplexPlan;
using QORN::fourier::OverlapSave;
using QORN::fourier::SharedPlan;
using QORN::test::AllocationCount;

std::vector<double> Noise(int scalars, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  std::vector<double> x(static_cast<std::size_t>(scalars));
  for (double &value : x) value = normal(random);
  return x;
}

// Runs the complex signal through the filter, block by block, and compares with the direct sum.
void CheckStream(OverlapSave<double> &filter, const std::vector<double> &h, const std::vector<double> &x) {
  const int taps = filter.Taps(), len = static_cast<int>(x.size() / 2), step = filter.Step();
  for (int first = 0; first < len; first += step) {
    for (int i = 0; i < filter.Length(); ++i) {
      const int at = first - (taps - 1) + i;
      const bool inside = at >= 0 && at < len;
      filter.Block()[2 * i] = inside ? x[static_cast<std::size_t>(2 * at)] : 0;
      filter.Block()[2 * i + 1] = inside ? x[static_cast<std::size_t>(2 * at + 1)] : 0;
    }
    filter.Run();
    for (int i = 0; i < step && first + i < len; ++i) {
      double re = 0, im = 0;
      for (int k = 0; k < taps && k <= first + i; ++k) {
        const auto t = static_cast<std::size_t>(2 * k), s = static_cast<std::size_t>(2 * (first + i - k));
        re += h[t] * x[s] - h[t + 1] * x[s + 1];
        im += h[t] * x[s + 1] + h[t + 1] * x[s];
      }
      ASSERT_NEAR(filter.Block()[2 * (taps - 1 + i)], re, 1e-12) << first + i;
      ASSERT_NEAR(filter.Block()[2 * (taps - 1 + i) + 1], im, 1e-12) << first + i;
    }
  }
}

TEST(OverlapSave, Run_ComplexTapsAndSignal_IsTheLinearConvolution) {
  for (const int length : {64, 72, 80, 96, 512, 576}) {
    for (const int taps : {1, 2, 33, 64}) {
      OverlapSave<double> filter(length, taps);
      EXPECT_EQ(filter.Length(), length);
      EXPECT_EQ(filter.Step(), length - taps + 1);
      const auto h = Noise(2 * taps, 1);
      filter.SetTaps(h.data());
      CheckStream(filter, h, Noise(2 * 300, 2));
    }
  }
}

TEST(OverlapSave, SetTaps_Again_ReplacesThem) {
  OverlapSave<double> filter(128, 20);
  filter.SetTaps(Noise(40, 3).data());
  const auto h = Noise(40, 4);
  filter.SetTaps(h.data());
  CheckStream(filter, h, Noise(400, 5));
}

TEST(OverlapSave, Copy_OfAFilter_IsAClone) {
  const auto h = Noise(20, 6);
  std::optional<OverlapSave<double>> filter(std::in_place, 96, 10);
  filter->SetTaps(h.data());
  OverlapSave<double> copy(*filter);
  filter->SetTaps(Noise(20, 7).data());
  filter.reset();
  CheckStream(copy, h, Noise(400, 8));
}

TEST(OverlapSave, Run_InSteadyState_AllocatesNothing) {
  OverlapSave<float> filter(1024, 100);
  const std::vector<float> h(200, 0.5F);
  const long before = AllocationCount();
  for (int i = 0; i < 3; ++i) {
    filter.SetTaps(h.data());
    filter.Run();
  }
  EXPECT_EQ(AllocationCount(), before);
}

TEST(SharedPlan, ManyThreads_GetOnePlan) {
  std::vector<const ComplexPlan<float> *> plans(8);
  std::vector<std::thread> threads;
  for (auto &plan : plans) threads.emplace_back([&plan] { plan = &SharedPlan<float>(8192); });
  for (auto &thread : threads) thread.join();
  for (const auto *plan : plans) EXPECT_EQ(plan, plans[0]);
  EXPECT_EQ(plans[0]->Length(), 8192);
}

} // namespace
