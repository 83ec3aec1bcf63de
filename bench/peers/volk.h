// VOLK's kernels, with the argument order of ours. Its own dispatch picks the variant.
#ifndef QORN_BENCH_PEERS_VOLK_H
#define QORN_BENCH_PEERS_VOLK_H

#if defined(QORN_PEER_VOLK)

#include "qorn/infra/Cplx.h"

namespace peers {

struct Volk {
  static void Add_32f_I(const float *src, float *srcDst, int len);
  static void Mul_32f_I(const float *src, float *srcDst, int len);
  static void MulC_32f_I(float val, float *srcDst, int len);
  static void Div_32f_I(const float *src, float *srcDst, int len);
  static void Mul_64f_I(const double *src, double *srcDst, int len);
  static void Mul_32fc(const QORN::Cplx32 *src1, const QORN::Cplx32 *src2, QORN::Cplx32 *dst, int len);
  static void Div_32fc_I(const QORN::Cplx32 *src, QORN::Cplx32 *srcDst, int len);
  static void Mag_32fc(const QORN::Cplx32 *src, float *dst, int len);
  static void MagSqr_32fc(const QORN::Cplx32 *src, float *dst, int len);
  static void Sqrt_32f_I(float *srcDst, int len);
  static void Convert_16s32f(const short *src, float *dst, int len);
  static void Convert_32f16s(const float *src, short *dst, int len); ///< rounds to nearest
  static void Convert_32f64f(const float *src, double *dst, int len);
  static void Convert_64f32f(const double *src, float *dst, int len);
  static void Real_32fc(const QORN::Cplx32 *src, float *dst, int len);
  static void RealToCplx_32f(const float *re, const float *im, QORN::Cplx32 *dst, int len);
  static void Conj_32fc(const QORN::Cplx32 *src, QORN::Cplx32 *dst, int len);
  static void Sum_32f(const float *src, int len, float *result);    ///< accumulates in float
  static void StdDev_32f(const float *src, int len, float *result); ///< accumulates in float
  static void MaxIndx_32f(const float *src, int len, float *result, int *index);
};

} // namespace peers

#endif
#endif
