#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {

#define QORN_FAMILY "Division.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
