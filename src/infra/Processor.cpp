#include "Processor.h"

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace QORN {

#if defined(__x86_64__)

CpuRegisters CpuId(unsigned leaf, unsigned subleaf) {
  CpuRegisters r;
  if (__get_cpuid_count(leaf, subleaf, &r.eax, &r.ebx, &r.ecx, &r.edx) == 0) return {};
  return r;
}

namespace {

// The largest of the caches that a leaf enumerates. Both makers' leaves have one form.
std::int64_t LargestCacheOf(unsigned leaf) {
  std::int64_t largest = 0;
  for (unsigned index = 0; index < 16; ++index) {
    const CpuRegisters r = CpuId(leaf, index);
    if ((r.eax & 0x1FU) == 0) break;
    const std::int64_t ways = (r.ebx >> 22) + 1, partitions = ((r.ebx >> 12) & 0x3FFU) + 1;
    const std::int64_t line = (r.ebx & 0xFFFU) + 1, sets = static_cast<std::int64_t>(r.ecx) + 1;
    if (ways * partitions * line * sets > largest) largest = ways * partitions * line * sets;
  }
  return largest;
}

} // namespace

std::int64_t LargestCacheBytes() {
  const std::int64_t size = LargestCacheOf(4);
  return size != 0 ? size : LargestCacheOf(0x8000001D);
}

#else

std::int64_t LargestCacheBytes() { return 0; }

#endif

} // namespace QORN
