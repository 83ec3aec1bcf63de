// This level's dispatch table: the rows once more, as declarations and as slots.
#include "../Table.h"

#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {

#define QORN_KERNEL(cls, name, params, args, ...) void name params;
#define QORN_KERNEL_OWN_FORWARDER(cls, result, name, params, args, ...) result name params;
#include "All.inc"
#undef QORN_KERNEL
#undef QORN_KERNEL_OWN_FORWARDER

constinit const Table table = {
#define QORN_KERNEL(cls, name, params, args, ...) &name,
#define QORN_KERNEL_OWN_FORWARDER(cls, result, name, params, args, ...) &name,
#include "All.inc"
#undef QORN_KERNEL
#undef QORN_KERNEL_OWN_FORWARDER
};

} // namespace QORN::kernels::QORN_LEVEL
