// The loops that a user would write, left to the compiler and built for the measuring machine; "fast" ones
// also with -ffast-math, without which a compiler does not vectorise a reduction.
#ifndef QORN_BENCH_PEERS_PLAIN_H
#define QORN_BENCH_PEERS_PLAIN_H

#include "qorn/infra/Cplx.h"

namespace peers {

using QORN::Cplx32;
using QORN::Cplx64;

struct Plain {
  static void Zero_32fc(Cplx32 *dst, int len);
  static void Set_32f(float val, float *dst, int len);
  static void Set_32fc(Cplx32 val, Cplx32 *dst, int len);
  static void Copy_32f(const float *src, float *dst, int len);
  static void AddC_32f_I(float val, float *srcDst, int len);
  static void AddC_32fc_I(Cplx32 val, Cplx32 *srcDst, int len);
  static void Add_32f_I(const float *src, float *srcDst, int len);
  static void Add_64f_I(const double *src, double *srcDst, int len);
  static void Add_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len);
  static void Add_16s_I(const short *src, short *srcDst, int len);
  static void Add_32s_I(const int *src, int *srcDst, int len);
  static void Sub_32f_I(const float *src, float *srcDst, int len);
  static void Sub_16s_I(const short *src, short *srcDst, int len);
  static void Mul_32f_I(const float *src, float *srcDst, int len);
  static void MulC_32f_I(float val, float *srcDst, int len);
  static void MulC_32fc_I(Cplx32 val, Cplx32 *srcDst, int len);
  static void MulC_16s_I(short val, short *srcDst, int len);
  static void Mul_16s_I(const short *src, short *srcDst, int len);
  static void Mul_32s_I(const int *src, int *srcDst, int len);
  static void Mul_64f_I(const double *src, double *srcDst, int len);
  static void Mul_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len);
  static void Mul_32fc(const Cplx32 *src1, const Cplx32 *src2, Cplx32 *dst, int len);
  static void Mul_64fc(const Cplx64 *src1, const Cplx64 *src2, Cplx64 *dst, int len);
  static void DivC_32f_I(float val, float *srcDst, int len);
  static void Div_32f_I(const float *src, float *srcDst, int len);
  static void Div_64f_I(const double *src, double *srcDst, int len);
  static void Div_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len);
  static void Div_64fc_I(const Cplx64 *src, Cplx64 *srcDst, int len);
  static void And_8u(const unsigned char *src1, const unsigned char *src2, unsigned char *dst, int len);
  static void Not_8u_I(unsigned char *srcDst, int len);
  static void Abs_32f(const float *src, float *dst, int len);
  static void Abs_32s(const int *src, int *dst, int len);
  static void Mag_32f(const float *re, const float *im, float *dst, int len);
  static void Mag_32fc(const Cplx32 *src, float *dst, int len);
  static void Mag_64fc(const Cplx64 *src, double *dst, int len);
  static void MagSqr_32fc(const Cplx32 *src, float *dst, int len);
  static void MagSqr_64fc(const Cplx64 *src, double *dst, int len);
  static void Sqr_32f_I(float *srcDst, int len);
  static void Sqr_32fc_I(Cplx32 *srcDst, int len);
  static void Sqrt_32f_I(float *srcDst, int len);
  static void Sqrt_32f(const float *src, float *dst, int len);
  static void Sqrt_64f(const double *src, double *dst, int len);
  static void Convert_16s32f(const short *src, float *dst, int len);
  static void Convert_32f16s(const float *src, short *dst, int len);
  static void Convert_32f16s_Scaled(const float *src, short *dst, int len);
  static void Convert_32f32s(const float *src, int *dst, int len);
  static void Convert_32s32f(const int *src, float *dst, int len);
  static void Convert_32f64f(const float *src, double *dst, int len);
  static void Convert_64f32f(const double *src, float *dst, int len);
  static void Round_32f(const float *src, float *dst, int len);
  static void Floor_32f(const float *src, float *dst, int len);
  static void Real_32fc(const Cplx32 *src, float *dst, int len);
  static void RealToCplx_32f(const float *re, const float *im, Cplx32 *dst, int len);
  static void Conj_32fc(const Cplx32 *src, Cplx32 *dst, int len);
  static void Flip_32f(const float *src, float *dst, int len);
  static void Flip_64f(const double *src, double *dst, int len);
  static void Flip_32f_I(float *srcDst, int len);
  static void ConjFlip_32fc(const Cplx32 *src, Cplx32 *dst, int len);
  // All len1 + len2 - 1 results.
  static void Conv_32f(const float *src1, int len1, const float *src2, int len2, float *dst);
  static void Conv_64f(const double *src1, int len1, const double *src2, int len2, double *dst);
  static void CrossCorr_32f(const float *src1, int len1, const float *src2, int len2, float *dst);
  static void CrossCorr_32fc(const Cplx32 *src1, int len1, const Cplx32 *src2, int len2, Cplx32 *dst);
};

struct Fast {
  static void Sum_32f(const float *src, int len, float *result);
  static void Sum_64f(const double *src, int len, double *result);
  static void Sum_32fc(const Cplx32 *src, int len, Cplx32 *result);
  static void Sum_16s(const short *src, int len, short *result);
  static void Sum_32s(const int *src, int len, int *result);
  static void StdDev_32f(const float *src, int len, float *result);
  static void StdDev_64f(const double *src, int len, double *result);
  static void Norm_L2_32f(const float *src, int len, float *result);
  static void Max_16s(const short *src, int len, short *result);
  static void Max_32f(const float *src, int len, float *result);
  static void MaxIndx_16s(const short *src, int len, short *result, int *index);
  static void MaxIndx_32f(const float *src, int len, float *result, int *index);
};

} // namespace peers

#endif
