#ifndef QORN_INFRA_QORNTIMER_H
#define QORN_INFRA_QORNTIMER_H

#include "qorn/Export.h"

namespace QORN {

/// Measures short stretches of code in cycles of the processor's time-stamp counter and in microseconds.
///
/// Readings are not serialised against the code around them, and those of different processors are not to be
/// compared. Where the processor has no such counter the system's monotonic clock serves, in nanoseconds.
/// A timer belongs to one thread. Nothing is thrown.
class QORN_API QORNTimer {
public:
  /// Finds the counter's rate and what a start and a reading cost. This takes 5 ms where neither the
  /// processor nor a hypervisor tells the rate.
  QORNTimer();

  QORNTimer(const QORNTimer &) = default;
  QORNTimer &operator=(const QORNTimer &) = default;
  virtual ~QORNTimer();

  /// The rate of the counter in MHz.
  double GetClockFreqMHz() const { return m_clockFreqMHz; }

  /// Reads the counter, from which elapsed time is measured from now on.
  unsigned long long StartTimer();

  /// The cycles since StartTimer, less the overhead; the measurement goes on. A reading below the overhead
  /// wraps around to a very large count. Before any StartTimer it starts at the construction.
  unsigned long long GetElapsedTimeInCycle();

  /// The same in microseconds.
  float GetElapsedTimeInUs();

  /// cycles / GetClockFreqMHz(), rounded to float.
  float ConvertTimeToUs(unsigned long long cycles) const;

private:
  void SetClockFreqMHz();
  unsigned long long MeasOverhead();

  double m_clockFreqMHz = 0.0;
  unsigned long long m_overhead = 0;
  unsigned long long m_startTime = 0;
  unsigned long long m_stopTime = 0;
};

} // namespace QORN

#endif
