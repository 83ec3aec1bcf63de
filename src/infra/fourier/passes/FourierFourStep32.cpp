#include "FourStep.h"

namespace QORN::kernels::QORN_LEVEL {

#define QORN_FAMILY "infra/kernels/families/FourierFourStep32.inc"
#include "infra/kernels/families/Define.h"

} // namespace QORN::kernels::QORN_LEVEL
