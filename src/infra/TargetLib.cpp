// The public kernels: each forwards to the active level's table. Rows with the common guard are made from the
// families' tables; those with another rule stand here.
#include "qorn/infra/TargetLib.h"

#include <type_traits>

#include "Errors.h"
#include "kernels/Levels.h"

namespace QORN {

namespace {

[[maybe_unused]] constexpr const char *kModule = "infra\\TargetLib_ipp";

// The common guard: every pointer is there, and the last int, the length, is at least 1.
template <class A> void Look(A argument, bool &pointers, int &length) {
  if constexpr (std::is_pointer_v<A>) pointers = pointers && argument != nullptr;
  if constexpr (std::is_same_v<A, int>) length = argument;
}

template <class... A> bool Runs(A... arguments) {
  bool pointers = true;
  int length = 0;
  (Look(arguments, pointers, length), ...);
  return pointers && length >= 1;
}

} // namespace

#define QORN_KERNEL(cls, name, params, args, ...)                                                            \
  void TargetLib::name params {                                                                              \
    if (Runs args) kernels::active->name args;                                                               \
  }
#define QORN_KERNEL_OWN_FORWARDER(cls, result, name, params, args, ...)
#include "kernels/families/All.inc"
#undef QORN_KERNEL
#undef QORN_KERNEL_OWN_FORWARDER

} // namespace QORN
