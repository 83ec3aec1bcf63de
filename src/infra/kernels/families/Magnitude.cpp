#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {

#define QORN_FAMILY "Magnitude.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
