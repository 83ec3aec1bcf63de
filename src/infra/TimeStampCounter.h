// The processor's time-stamp counter and its rate; on a processor without one, the monotonic clock.
#ifndef QORN_SRC_INFRA_TIMESTAMPCOUNTER_H
#define QORN_SRC_INFRA_TIMESTAMPCOUNTER_H

namespace QORN {

/// The counter, read without a serialising instruction.
unsigned long long ReadTimeStampCounter();

/// The counter's rate in MHz: what the processor tells, else what the hypervisor tells, else what is measured
/// against the monotonic clock within 5 ms.
double TimeStampCounterMHz();

} // namespace QORN

#endif
