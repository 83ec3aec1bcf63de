// The dispatch table of the kernel layer: one member per row of the families' .inc files.
//
// A row reads
//   QORN_KERNEL(class, name, (parameters), (arguments), implementation)
// and yields the table's member, the level's function, its slot, and the public forwarder TargetLib::name
// with the common guard (a null pointer or a length below 1: do nothing). A kernel whose forwarder does
// something else, or that returns a value, is a row of
//   QORN_KERNEL_OWN_FORWARDER(class, result, name, (parameters), (arguments), implementation)
// which yields all but the forwarder. A copy that is written past the caches where it is too long for them
// (Streamed.h) is a row of
//   QORN_KERNEL_STREAMED(class, name, (parameters), (arguments), implementation)
// The class tells what is promised of the bits:
//   E  exact: one rounding per written step; the same bits at every level
//   R  reduction: fixed lanes, folded in a written order; the same bits at every level
//   F  elementary function: a stated bound in units of the last place at every level
//   T  transform, filter, dot product: a stated error bound
#ifndef QORN_SRC_INFRA_KERNELS_TABLE_H
#define QORN_SRC_INFRA_KERNELS_TABLE_H

#include "../fourier/Cyclic.h"
#include "../fourier/FourStep.h"
#include "../fourier/Grid.h"
#include "../fourier/Passes.h"
#include "Resample.h"
#include "qorn/infra/Cplx.h"

namespace QORN::kernels {

struct Table {
#define QORN_KERNEL(cls, name, params, args, ...) void(*name) params;
#define QORN_KERNEL_OWN_FORWARDER(cls, result, name, params, args, ...) result(*name) params;
#include "families/All.inc"
#undef QORN_KERNEL
#undef QORN_KERNEL_OWN_FORWARDER
};

namespace base {
extern const Table table;
}
namespace v3 {
extern const Table table;
}
namespace v4 {
extern const Table table;
}

} // namespace QORN::kernels

#endif
