#include "TimeStampCounter.h"

#include <chrono>

#if defined(__x86_64__)
#include <cpuid.h>
#include <x86intrin.h>
#endif

namespace QORN {

namespace {

using Clock = std::chrono::steady_clock;

#if defined(__x86_64__)

struct Registers {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
};

// Intel Software Developer's Manual, CPUID leaf 15H: the counter runs at the crystal's frequency, ecx, times
// ebx / eax. 0 where one of them is not told.
double ToldByProcessor() {
  Registers r;
  if (__get_cpuid_count(0x15, 0, &r.eax, &r.ebx, &r.ecx, &r.edx) == 0 || r.eax == 0) return 0.0;
  return static_cast<double>(r.ecx) * r.ebx / r.eax * 1e-6;
}

// The hypervisors' common timing leaf: the rate in kHz. 0 without a hypervisor, or with one that lacks it.
double ToldByHypervisor() {
  constexpr unsigned kFirstLeaf = 0x40000000, kTimingLeaf = 0x40000010, kHypervisorBit = 1U << 31;
  Registers r;
  if (__get_cpuid(1, &r.eax, &r.ebx, &r.ecx, &r.edx) == 0 || (r.ecx & kHypervisorBit) == 0) return 0.0;
  __cpuid(kFirstLeaf, r.eax, r.ebx, r.ecx, r.edx);
  if (r.eax < kTimingLeaf || r.eax > kFirstLeaf + 0xFFFF) return 0.0;
  __cpuid(kTimingLeaf, r.eax, r.ebx, r.ecx, r.edx);
  return r.eax * 1e-3;
}

// A reading of both clocks. The counter is read on both sides of the other clock, and the pair that lies
// closest together is kept, so that an interruption in between does no harm.
struct Reading {
  unsigned long long ticks;
  Clock::time_point time;
};
Reading ReadBoth() {
  Reading best{};
  unsigned long long narrowest = ~0ULL;
  for (int i = 0; i < 8; ++i) {
    const unsigned long long before = __rdtsc();
    const Clock::time_point now = Clock::now();
    const unsigned long long width = __rdtsc() - before;
    if (width < narrowest) {
      narrowest = width;
      best = {before + width / 2, now};
    }
  }
  return best;
}

double Measured() {
  const Reading start = ReadBoth();
  while (Clock::now() - start.time < std::chrono::milliseconds(5)) {
  }
  const Reading stop = ReadBoth();
  const std::chrono::duration<double, std::micro> passed = stop.time - start.time;
  return static_cast<double>(stop.ticks - start.ticks) / passed.count();
}

#endif

} // namespace

#if defined(__x86_64__)

unsigned long long ReadTimeStampCounter() { return __rdtsc(); }

// What is told is believed above 100 MHz only.
double TimeStampCounterMHz() {
  constexpr double kLeast = 100.0;
  const double byProcessor = ToldByProcessor();
  if (byProcessor > kLeast) return byProcessor;
  const double byHypervisor = ToldByHypervisor();
  return byHypervisor > kLeast ? byHypervisor : Measured();
}

#else

unsigned long long ReadTimeStampCounter() {
  const std::chrono::nanoseconds now = Clock::now().time_since_epoch();
  return static_cast<unsigned long long>(now.count());
}

double TimeStampCounterMHz() { return 1000.0; }

#endif

} // namespace QORN
