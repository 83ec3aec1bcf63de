#include "qorn/infra/QORNTimer.h"

#include "TimeStampCounter.h"

namespace QORN {

QORNTimer::QORNTimer() {
  SetClockFreqMHz();
  m_overhead = MeasOverhead();
}

QORNTimer::~QORNTimer() = default;

unsigned long long QORNTimer::StartTimer() { return m_startTime = ReadTimeStampCounter(); }

unsigned long long QORNTimer::GetElapsedTimeInCycle() {
  m_stopTime = ReadTimeStampCounter();
  return m_stopTime - m_startTime - m_overhead;
}

float QORNTimer::GetElapsedTimeInUs() { return ConvertTimeToUs(GetElapsedTimeInCycle()); }

float QORNTimer::ConvertTimeToUs(unsigned long long cycles) const {
  return static_cast<float>(static_cast<double>(cycles) / m_clockFreqMHz);
}

void QORNTimer::SetClockFreqMHz() { m_clockFreqMHz = TimeStampCounterMHz(); }

unsigned long long QORNTimer::MeasOverhead() {
  constexpr unsigned kPairs = 10;
  unsigned long long sum = 0;
  for (unsigned i = 0; i < kPairs; ++i) {
    const unsigned long long first = StartTimer();
    sum += StartTimer() - first;
  }
  return sum / kPairs;
}

} // namespace QORN
