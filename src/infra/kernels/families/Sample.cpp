#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {

#define QORN_FAMILY "Sample.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
