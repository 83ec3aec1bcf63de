// Forwarders of elementary functions with a rule of their own.
#include "kernels/Levels.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

// The exponential of a single finite argument never comes out as a denormal or as zero: callers divide by it.
// Seen by value and not by the processor's underflow flag, which belongs to the host.
void TargetLib::Exp_64f(const double *src, double *dst, int len) {
  if (src == nullptr || dst == nullptr || len < 1) return;
  constexpr double smallest = 2.2250738585072014e-308;
  constexpr double lowest = -1.7976931348623157e308;
  const bool finite = len == 1 && *src >= lowest; // e^-infinity is exactly 0, which is no underflow
  kernels::active->Exp_64f(src, dst, len);
  if (finite && *dst < smallest) *dst = smallest;
}

} // namespace QORN
