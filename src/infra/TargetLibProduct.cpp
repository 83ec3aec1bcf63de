// CrossCorr has three lengths and a lag, which may be negative: its guard is its own.
#include "kernels/Levels.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

void TargetLib::CrossCorr_32f(const float *src1, int len1, const float *src2, int len2, float *dst,
                              int dstLen, int lowLag) {
  if (src1 == nullptr || src2 == nullptr || dst == nullptr || len1 < 1 || len2 < 1 || dstLen < 1) return;
  kernels::active->CrossCorr_32f(src1, len1, src2, len2, dst, dstLen, lowLag);
}

void TargetLib::CrossCorr_32fc(const Cplx32 *src1, int len1, const Cplx32 *src2, int len2, Cplx32 *dst,
                               int dstLen, int lowLag) {
  if (src1 == nullptr || src2 == nullptr || dst == nullptr || len1 < 1 || len2 < 1 || dstLen < 1) return;
  kernels::active->CrossCorr_32fc(src1, len1, src2, len2, dst, dstLen, lowLag);
}

} // namespace QORN
