#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Pairs of (q, i) to samples ((i - iOffset) * scale, (q - qOffset) * scale), in double and rounded once.
void ScalePairs(const short *pairs, Cplx32 *dst, int len, double iOffset, double qOffset, double scale) {
  for (Index k = 0; k < len; ++k) {
    dst[k].re = static_cast<float>((static_cast<double>(pairs[2 * k + 1]) - iOffset) * scale);
    dst[k].im = static_cast<float>((static_cast<double>(pairs[2 * k]) - qOffset) * scale);
  }
}

} // namespace

#define QORN_FAMILY "Recording.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
