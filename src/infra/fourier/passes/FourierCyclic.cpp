#include "Cyclic.h"

namespace QORN::kernels::QORN_LEVEL {

#define QORN_FAMILY "infra/kernels/families/FourierCyclic.inc"
#include "infra/kernels/families/Define.h"

} // namespace QORN::kernels::QORN_LEVEL
