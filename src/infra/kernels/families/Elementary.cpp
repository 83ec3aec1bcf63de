#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {

#define QORN_FAMILY "Elementary.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
