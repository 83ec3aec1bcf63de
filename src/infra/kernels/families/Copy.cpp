#include "Kernel.h"
#include "Unroll.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

template <class T> void Zero(T *dst, int len) {
  __builtin_memset(dst, 0, sizeof(T) * static_cast<std::size_t>(len));
}

template <class T> void Set(T val, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = val;
}

// memmove, so that a caller may shift elements within one array.
template <class T> void Copy(const T *src, T *dst, int len) {
  __builtin_memmove(dst, src, sizeof(T) * static_cast<std::size_t>(len));
}

} // namespace

#define QORN_FAMILY "Copy.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
