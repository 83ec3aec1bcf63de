// The loops that a user would write, left to the compiler and built for the measuring machine; "fast" ones
// also with -ffast-math, without which a compiler does not vectorise a reduction.
#ifndef QORN_BENCH_PEERS_PLAIN_H
#define QORN_BENCH_PEERS_PLAIN_H

#include "qorn/infra/Cplx.h"

namespace peers {

using QORN::Cplx32;
using QORN::Cplx64;

struct Plain {
  static void Add_32f_I(const float *src, float *srcDst, int len);
  static void Mul_32f_I(const float *src, float *srcDst, int len);
  static void MulC_32f_I(float val, float *srcDst, int len);
  static void Div_32f_I(const float *src, float *srcDst, int len);
  static void Mul_64f_I(const double *src, double *srcDst, int len);
  static void Add_16s_I(const short *src, short *srcDst, int len);
  static void Mul_32fc(const Cplx32 *src1, const Cplx32 *src2, Cplx32 *dst, int len);
  static void Mul_64fc(const Cplx64 *src1, const Cplx64 *src2, Cplx64 *dst, int len);
  static void Div_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len);
  static void Div_64fc_I(const Cplx64 *src, Cplx64 *srcDst, int len);
  static void Mag_32fc(const Cplx32 *src, float *dst, int len);
  static void MagSqr_32fc(const Cplx32 *src, float *dst, int len);
  static void Sqrt_32f_I(float *srcDst, int len);
  static void Convert_16s32f(const short *src, float *dst, int len);
  static void Convert_32f16s(const float *src, short *dst, int len);
  static void Convert_32f64f(const float *src, double *dst, int len);
  static void Convert_64f32f(const double *src, float *dst, int len);
  static void Real_32fc(const Cplx32 *src, float *dst, int len);
  static void RealToCplx_32f(const float *re, const float *im, Cplx32 *dst, int len);
  static void Conj_32fc(const Cplx32 *src, Cplx32 *dst, int len);
  static void Flip_32f(const float *src, float *dst, int len);
  static void Flip_32f_I(float *srcDst, int len);
  static void Round_32f(const float *src, float *dst, int len);
  static void Copy_32f(const float *src, float *dst, int len);
};

struct Fast {
  static void Sum_32f(const float *src, int len, float *result);
  static void Sum_64f(const double *src, int len, double *result);
  static void StdDev_32f(const float *src, int len, float *result);
  static void Norm_L2_32f(const float *src, int len, float *result);
  static void Max_32f(const float *src, int len, float *result);
  static void MaxIndx_32f(const float *src, int len, float *result, int *index);
  static void Sum_16s(const short *src, int len, short *result);
};

} // namespace peers

#endif
