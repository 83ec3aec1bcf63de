#include "qorn/infra/QORNTimer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "infra/TimeStampCounter.h"

namespace {

using Clock = std::chrono::steady_clock;

// Field i of a timer, the virtual table before them.
template <class T> T &Field(QORN::QORNTimer &timer, int i) {
  return *reinterpret_cast<T *>(reinterpret_cast<char *>(&timer) + 8 * (i + 1));
}
double &ClockOf(QORN::QORNTimer &timer) { return Field<double>(timer, 0); }
unsigned long long &OverheadOf(QORN::QORNTimer &timer) { return Field<unsigned long long>(timer, 1); }
unsigned long long &StartOf(QORN::QORNTimer &timer) { return Field<unsigned long long>(timer, 2); }
unsigned long long &StopOf(QORN::QORNTimer &timer) { return Field<unsigned long long>(timer, 3); }

double MicrosecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

TEST(QORNTimer, Layout_OfFields_IsTheTableThenClockOverheadStartStop) {
  static_assert(std::has_virtual_destructor_v<QORN::QORNTimer>);
  static_assert(std::is_copy_constructible_v<QORN::QORNTimer> && std::is_copy_assignable_v<QORN::QORNTimer>);
  static_assert(sizeof(QORN::QORNTimer) == 5 * 8);
  QORN::QORNTimer timer;
  EXPECT_EQ(ClockOf(timer), timer.GetClockFreqMHz());
  const unsigned long long start = timer.StartTimer();
  EXPECT_EQ(StartOf(timer), start);
  OverheadOf(timer) = 3;
  const unsigned long long elapsed = timer.GetElapsedTimeInCycle();
  EXPECT_EQ(elapsed, StopOf(timer) - start - 3);
}

// Each clock reading has a reading of the counter before and after it. The counter's rate then lies between
// two bounds, which an interruption moves apart and nothing else.
TEST(QORNTimer, ClockFrequency_AgainstTheMonotonicClock_AgreesWithinOnePercent) {
  QORN::QORNTimer timer;
  double least = 0.0, most = 1e9;
  for (int attempt = 0; attempt < 5; ++attempt) {
    const unsigned long long beforeStart = timer.StartTimer();
    const Clock::time_point start = Clock::now();
    const unsigned long long afterStart = QORN::ReadTimeStampCounter();
    while (MicrosecondsSince(start) < 20e3) {
    }
    const unsigned long long beforeStop = QORN::ReadTimeStampCounter();
    const double passed = MicrosecondsSince(start);
    const unsigned long long afterStop = QORN::ReadTimeStampCounter();
    least = std::max(least, static_cast<double>(beforeStop - afterStart) / passed);
    most = std::min(most, static_cast<double>(afterStop - beforeStart) / passed);
  }
  EXPECT_GT(timer.GetClockFreqMHz(), 0.99 * least);
  EXPECT_LT(timer.GetClockFreqMHz(), 1.01 * most);
}

TEST(QORNTimer, Construction_LeavesAStartAndASmallOverhead) {
  const unsigned long long before = QORN::ReadTimeStampCounter();
  QORN::QORNTimer timer;
  const unsigned long long after = QORN::ReadTimeStampCounter();
  EXPECT_GE(StartOf(timer), before);
  EXPECT_LE(StartOf(timer), after);
  EXPECT_LT(OverheadOf(timer), after - before);
  EXPECT_GT(timer.GetClockFreqMHz(), 100.0);
}

TEST(QORNTimer, ConvertTimeToUs_DividesInDoubleAndRoundsOnce) {
  QORN::QORNTimer timer;
  ClockOf(timer) = 1000.0;
  EXPECT_EQ(timer.ConvertTimeToUs(2000), 2.0f);
  EXPECT_EQ(timer.ConvertTimeToUs(0), 0.0f);
  ClockOf(timer) = 3.0;
  EXPECT_EQ(timer.ConvertTimeToUs(1), 1.0f / 3.0f);
  EXPECT_EQ(timer.ConvertTimeToUs(50331649), static_cast<float>(50331649.0 / 3.0));
  ClockOf(timer) = 1.0;
  EXPECT_EQ(timer.ConvertTimeToUs(18446744073709551615ULL), 18446744073709551616.0f);
}

TEST(QORNTimer, Elapsed_BelowTheOverhead_WrapsAround) {
  QORN::QORNTimer timer;
  OverheadOf(timer) = 1ULL << 62;
  timer.StartTimer();
  EXPECT_GT(timer.GetElapsedTimeInCycle(), 1ULL << 63);
}

TEST(QORNTimer, Elapsed_ReadTwice_MeasuresFromTheSameStart) {
  QORN::QORNTimer timer;
  OverheadOf(timer) = 0; // a construction that was interrupted may have measured more than the first reading
  const unsigned long long start = timer.StartTimer();
  const Clock::time_point began = Clock::now();
  const unsigned long long first = timer.GetElapsedTimeInCycle();
  while (MicrosecondsSince(began) < 500) {
  }
  const unsigned long long second = timer.GetElapsedTimeInCycle();
  EXPECT_GT(second, first);
  EXPECT_EQ(StartOf(timer), start);
  const float microseconds = timer.GetElapsedTimeInUs();
  EXPECT_GE(microseconds, timer.ConvertTimeToUs(second));
  EXPECT_EQ(microseconds, timer.ConvertTimeToUs(StopOf(timer) - start - OverheadOf(timer)));
}

TEST(QORNTimer, Copy_IsMemberwise) {
  QORN::QORNTimer timer;
  timer.StartTimer();
  QORN::QORNTimer copy(timer), assigned;
  assigned = timer;
  for (QORN::QORNTimer *other : {&copy, &assigned}) {
    EXPECT_EQ(std::memcmp(&ClockOf(*other), &ClockOf(timer), 4 * 8), 0);
  }
}

} // namespace
