// What the processor tells about itself through its own instructions.
#ifndef QORN_SRC_INFRA_PROCESSOR_H
#define QORN_SRC_INFRA_PROCESSOR_H

#include <cstdint>

namespace QORN {

#if defined(__x86_64__)
struct CpuRegisters {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
};
/// All zero for a leaf that the processor does not have.
CpuRegisters CpuId(unsigned leaf, unsigned subleaf = 0);
#endif

/// The size of the largest cache that serves a core; 0 where it is not known.
std::int64_t LargestCacheBytes();

} // namespace QORN

#endif
