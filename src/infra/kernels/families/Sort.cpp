#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {

#define QORN_FAMILY "Sort.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
