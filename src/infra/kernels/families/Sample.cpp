#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Also right for dst == src: an element is written after it, or one behind it, was read.
template <class T> void SampleDown(const T *src, int srcLen, T *dst, int *dstLen, int factor, int *phase) {
  if (factor == 1) {
    __builtin_memmove(dst, src, sizeof(T) * static_cast<std::size_t>(srcLen));
    *dstLen = srcLen;
    return;
  }
  const Index first = *phase;
  const Index count = first < srcLen ? (srcLen - first + factor - 1) / factor : 0;
  for (Index k = 0; k < count; ++k) dst[k] = src[first + k * factor];
  *dstLen = static_cast<int>(count);
  *phase = static_cast<int>(first + count * factor - srcLen);
}

template <class T> void SampleUp(const T *src, int srcLen, T *dst, int *dstLen, int factor, int *phase) {
  const Index count = static_cast<Index>(factor) * srcLen;
  if (count > 2147483647) return; // the result's length could not be told
  if (factor == 1) {
    __builtin_memmove(dst, src, sizeof(T) * static_cast<std::size_t>(srcLen));
  } else {
    __builtin_memset(static_cast<void *>(dst), 0, sizeof(T) * static_cast<std::size_t>(count));
    T *placed = dst + *phase;
    for (Index n = 0; n < srcLen; ++n) placed[n * factor] = src[n];
  }
  *dstLen = static_cast<int>(count);
}

} // namespace

#define QORN_FAMILY "Sample.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
