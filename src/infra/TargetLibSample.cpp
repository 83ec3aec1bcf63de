// Sampling refuses more than the common guard: an impossible phase, and a result too long to be told.
#include "kernels/Levels.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

namespace {

template <class T>
bool CanSample(const T *src, int srcLen, const T *dst, const int *dstLen, int factor, const int *phase) {
  if (src == nullptr || dst == nullptr || dstLen == nullptr || phase == nullptr) return false;
  return srcLen >= 1 && factor >= 1 && *phase >= 0 && *phase < factor;
}

} // namespace

#define QORN_KERNEL(cls, name, params, args, ...)
#define QORN_KERNEL_OWN_FORWARDER(cls, result, name, params, args, ...)                                      \
  result TargetLib::name params {                                                                            \
    if (CanSample args) kernels::active->name args;                                                          \
  }
#include "kernels/families/Sample.inc"
#undef QORN_KERNEL
#undef QORN_KERNEL_OWN_FORWARDER

} // namespace QORN
