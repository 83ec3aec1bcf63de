#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {

#define QORN_FAMILY "Reduce.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
