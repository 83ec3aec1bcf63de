#include "Pointwise.h"
#include "Tiled.h"

namespace QORN::kernels::QORN_LEVEL {

#define QORN_FAMILY "infra/kernels/families/Fourier64.inc"
#include "infra/kernels/families/Define.h"

} // namespace QORN::kernels::QORN_LEVEL
