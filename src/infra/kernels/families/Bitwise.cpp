#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {

#define QORN_FAMILY "Bitwise.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
