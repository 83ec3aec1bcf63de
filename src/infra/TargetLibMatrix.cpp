// Inverses of matrices.
#include "kernels/Levels.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

bool TargetLib::Invert_m_32f(const float *src, int srcStride1, int srcStride2, float *buffer, float *dst,
                             int dstStride1, int dstStride2, int size) {
  if (src == nullptr || buffer == nullptr || dst == nullptr || size < 1) return false;
  if (size > 65535) return false; // the places of pivots are kept in 16 bits
  return kernels::active->MatrixInverse_32f(src, srcStride1, srcStride2, buffer, dst, dstStride1, dstStride2,
                                            size);
}

bool TargetLib::Invert_m_64f(const double *src, int srcStride1, int srcStride2, double *buffer, double *dst,
                             int dstStride1, int dstStride2, int size) {
  if (src == nullptr || buffer == nullptr || dst == nullptr || size < 1) return false;
  return kernels::active->MatrixInverse_64f(src, srcStride1, srcStride2, buffer, dst, dstStride1, dstStride2,
                                            size);
}

} // namespace QORN
