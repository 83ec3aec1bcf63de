#include "peers/plain.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace peers {

void Plain::Add_32f_I(const float *src, float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] += src[i];
}
void Plain::Mul_32f_I(const float *src, float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] *= src[i];
}
void Plain::MulC_32f_I(float val, float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] *= val;
}
void Plain::Div_32f_I(const float *src, float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] /= src[i];
}
void Plain::Mul_64f_I(const double *src, double *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] *= src[i];
}
void Plain::Add_16s_I(const short *src, short *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = static_cast<short>(std::clamp(srcDst[i] + src[i], -32768, 32767));
}
void Plain::Mul_32fc(const Cplx32 *src1, const Cplx32 *src2, Cplx32 *dst, int len) {
  for (int i = 0; i < len; ++i) {
    const Cplx32 a = src1[i], b = src2[i];
    dst[i] = {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
  }
}
void Plain::Mul_64fc(const Cplx64 *src1, const Cplx64 *src2, Cplx64 *dst, int len) {
  for (int i = 0; i < len; ++i) {
    const Cplx64 a = src1[i], b = src2[i];
    dst[i] = {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re};
  }
}
void Plain::Div_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len) {
  for (int i = 0; i < len; ++i) {
    const Cplx32 a = srcDst[i], b = src[i];
    const float square = b.re * b.re + b.im * b.im;
    srcDst[i] = {(a.re * b.re + a.im * b.im) / square, (a.im * b.re - a.re * b.im) / square};
  }
}
void Plain::Div_64fc_I(const Cplx64 *src, Cplx64 *srcDst, int len) {
  for (int i = 0; i < len; ++i) {
    const Cplx64 a = srcDst[i], b = src[i];
    const double square = b.re * b.re + b.im * b.im;
    srcDst[i] = {(a.re * b.re + a.im * b.im) / square, (a.im * b.re - a.re * b.im) / square};
  }
}
void Plain::Mag_32fc(const Cplx32 *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = std::sqrt(src[i].re * src[i].re + src[i].im * src[i].im);
}
void Plain::MagSqr_32fc(const Cplx32 *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = src[i].re * src[i].re + src[i].im * src[i].im;
}
void Plain::Sqrt_32f_I(float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = std::sqrt(srcDst[i]);
}
void Plain::Convert_16s32f(const short *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = static_cast<float>(src[i]);
}
void Plain::Convert_32f16s(const float *src, short *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = static_cast<short>(std::clamp(src[i], -32768.0F, 32767.0F));
}
void Plain::Convert_32f64f(const float *src, double *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = static_cast<double>(src[i]);
}
void Plain::Convert_64f32f(const double *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = static_cast<float>(src[i]);
}
void Plain::Real_32fc(const Cplx32 *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = src[i].re;
}
void Plain::RealToCplx_32f(const float *re, const float *im, Cplx32 *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = {re[i], im[i]};
}
void Plain::Conj_32fc(const Cplx32 *src, Cplx32 *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = {src[i].re, -src[i].im};
}
void Plain::Flip_32f(const float *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = src[len - 1 - i];
}
void Plain::Flip_32f_I(float *srcDst, int len) { std::reverse(srcDst, srcDst + len); }
void Plain::Round_32f(const float *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = std::round(src[i]);
}
void Plain::Copy_32f(const float *src, float *dst, int len) {
  std::memcpy(dst, src, sizeof(float) * static_cast<std::size_t>(len));
}

} // namespace peers
