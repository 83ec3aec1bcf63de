// Work memory: copies, and what waits for the next call.
#include "infra/fourier/WorkArray.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <thread>
#include <utility>
#include <vector>

#include "support/Allocations.h"

namespace {

using QORN::fourier::Life;
using QORN::fourier::WorkArray;
using QORN::test::AllocationCount;

constexpr std::ptrdiff_t kMegabyte = 1 << 20;

// A copy has memory of its own for all, and takes over what is to be kept.
TEST(WorkArray, Copy_OfSomeKept_CopiesThese) {
  WorkArray<double> source(1000, 3);
  std::fill_n(source.Data(), 1000, 5.0);
  WorkArray<double> copy(source), assigned;
  assigned = source;
  std::fill_n(source.Data(), 1000, 6.0);
  for (const WorkArray<double> *array : {&copy, &assigned}) {
    EXPECT_EQ(std::vector<double>(array->Data(), array->Data() + 3), std::vector<double>(3, 5.0));
    std::fill_n(array->Data(), 1000, 7.0);
  }
  const WorkArray<double> moved(std::move(copy)), empty(copy);
  EXPECT_EQ(moved.Data()[999], 7.0);
  EXPECT_EQ(empty.Data(), nullptr);
}

// The allocations that an array of so many bytes makes.
long Allocations(std::ptrdiff_t bytes, Life life) {
  const long before = AllocationCount();
  const WorkArray<float> array(bytes / 4, life);
  std::fill_n(array.Data(), bytes / 4, 7.0F);
  return AllocationCount() - before;
}

TEST(WorkArray, ForACall_WaitsForTheNextOne) {
  Allocations(8 * kMegabyte, Life::kCall);
  EXPECT_EQ(Allocations(8 * kMegabyte, Life::kCall), 0);
  EXPECT_EQ(Allocations(kMegabyte, Life::kCall), 0) << "of less";
  {
    const WorkArray<float> first(kMegabyte, Life::kCall), second(kMegabyte, Life::kCall),
        third(kMegabyte, Life::kCall), fourth(kMegabyte, Life::kCall);
    EXPECT_GT(Allocations(4 * kMegabyte, Life::kCall), 0) << "of a fifth";
  }
}

TEST(WorkArray, Lasting_IsGivenBack) {
  EXPECT_GT(Allocations(3 * kMegabyte, Life::kLasting), 0);
  EXPECT_GT(Allocations(3 * kMegabyte, Life::kLasting), 0);
  Allocations(3 * kMegabyte, Life::kCall);
  EXPECT_GT(Allocations(3 * kMegabyte, Life::kLasting), 0) << "that of a call waits for calls alone";
}

TEST(WorkArray, ForACall_VeryMuchOrLittle_IsGivenBack) {
  for (const std::ptrdiff_t bytes : {8 * kMegabyte + 4, std::ptrdiff_t{1020}}) {
    EXPECT_GT(Allocations(bytes, Life::kCall), 0);
    EXPECT_GT(Allocations(bytes, Life::kCall), 0);
  }
}

// Little and much memory wait apart.
TEST(WorkArray, ForCalls_LittleAndMuch_BothWait) {
  for (int i = 0; i < 6; ++i) {
    const WorkArray<float> large(kMegabyte + i, Life::kCall), small(1000 + i, Life::kCall);
  }
  EXPECT_EQ(Allocations(4 * kMegabyte, Life::kCall), 0);
  EXPECT_EQ(Allocations(4000, Life::kCall), 0);
}

// Of many arrays at once four wait: the largest.
TEST(WorkArray, ForCalls_TheLargestFourWait) {
  {
    std::vector<WorkArray<double>> arrays;
    for (int i = 1; i <= 8; ++i) arrays.emplace_back(i * kMegabyte / 8, Life::kCall);
  }
  const long before = AllocationCount();
  {
    const WorkArray<double> a(kMegabyte, Life::kCall), b(7 * kMegabyte / 8, Life::kCall),
        c(6 * kMegabyte / 8, Life::kCall), d(5 * kMegabyte / 8, Life::kCall);
    EXPECT_EQ(AllocationCount(), before);
    const WorkArray<double> e(4 * kMegabyte / 8, Life::kCall);
    EXPECT_GT(AllocationCount(), before);
  }
}

// A copy of such an array is one too, and has memory of its own.
TEST(WorkArray, ForACall_CopiedAndMoved_HasItsOwnMemory) {
  WorkArray<double> source(20000, 2, Life::kCall);
  source.Data()[1] = 5;
  WorkArray<double> copy(source), moved(std::move(source));
  EXPECT_NE(copy.Data(), moved.Data());
  copy.Data()[0] = 6;
  moved.Data()[0] = 7;
  copy = moved;
  EXPECT_EQ(copy.Data()[0], 7);
  EXPECT_EQ(copy.Data()[1], 5);
}

TEST(WorkArray, ManyThreads_NeverShareMemory) {
  std::vector<std::thread> threads;
  std::vector<int> mistakes(4);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([t, &mistakes] {
      for (int round = 0; round < 300; ++round) {
        const WorkArray<float> array(20000 + 100 * (round % 7), Life::kCall);
        const auto mark = static_cast<float>(t);
        std::fill_n(array.Data(), 20000, mark);
        mistakes[static_cast<std::size_t>(t)] +=
            static_cast<int>(20000 - std::count(array.Data(), array.Data() + 20000, mark));
      }
    });
  }
  for (auto &thread : threads) thread.join();
  EXPECT_EQ(mistakes, std::vector<int>(4));
}

} // namespace
