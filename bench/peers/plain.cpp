#include "peers/plain.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <type_traits>

namespace peers {

namespace {

short To16(float x) { return static_cast<short>(std::clamp(x, -32768.0F, 32767.0F)); }
short To16(int x) { return static_cast<short>(std::clamp(x, -32768, 32767)); }
int To32(long long x) { return static_cast<int>(std::clamp(x, -2147483648LL, 2147483647LL)); }

template <class C> C Product(C a, C b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
template <class C> C Quotient(C a, C b) {
  const auto square = b.re * b.re + b.im * b.im;
  return {(a.re * b.re + a.im * b.im) / square, (a.im * b.re - a.re * b.im) / square};
}

float Conj(float x) { return x; }
Cplx32 Conj(Cplx32 x) { return {x.re, -x.im}; }

// Sums that do not depend on each other, which a compiler vectorises without leave to change their order.
template <class T> void AddMultiple(T factor, const T *src, int len, T *sums) {
  for (int i = 0; i < len; ++i) {
    if constexpr (std::is_floating_point_v<T>) {
      sums[i] += factor * src[i];
    } else {
      const T product = Product(factor, src[i]);
      sums[i] = {sums[i].re + product.re, sums[i].im + product.im};
    }
  }
}

template <class T> void Convolve(const T *src1, int len1, const T *src2, int len2, T *dst) {
  std::fill_n(dst, len1 + len2 - 1, T{});
  for (int i = 0; i < len1; ++i) AddMultiple(src1[i], src2, len2, dst + i);
}

template <class T> void Correlate(const T *src1, int len1, const T *src2, int len2, T *dst) {
  std::fill_n(dst, len1 + len2 - 1, T{});
  for (int i = 0; i < len1; ++i) AddMultiple(Conj(src1[i]), src2, len2, dst + (len1 - 1 - i));
}

} // namespace

void Plain::Zero_32fc(Cplx32 *dst, int len) {
  std::memset(dst, 0, sizeof(Cplx32) * static_cast<std::size_t>(len));
}
void Plain::Set_32f(float val, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = val;
}
void Plain::Set_32fc(Cplx32 val, Cplx32 *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = val;
}
void Plain::Copy_32f(const float *src, float *dst, int len) {
  std::memcpy(dst, src, sizeof(float) * static_cast<std::size_t>(len));
}
void Plain::AddC_32f_I(float val, float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] += val;
}
void Plain::AddC_32fc_I(Cplx32 val, Cplx32 *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = {srcDst[i].re + val.re, srcDst[i].im + val.im};
}
void Plain::Add_32f_I(const float *src, float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] += src[i];
}
void Plain::Add_64f_I(const double *src, double *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] += src[i];
}
void Plain::Add_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = {srcDst[i].re + src[i].re, srcDst[i].im + src[i].im};
}
void Plain::Add_16s_I(const short *src, short *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = To16(srcDst[i] + src[i]);
}
void Plain::Add_32s_I(const int *src, int *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = To32(static_cast<long long>(srcDst[i]) + src[i]);
}
void Plain::Sub_32f_I(const float *src, float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] -= src[i];
}
void Plain::Sub_16s_I(const short *src, short *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = To16(srcDst[i] - src[i]);
}
void Plain::Mul_32f_I(const float *src, float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] *= src[i];
}
void Plain::MulC_32f_I(float val, float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] *= val;
}
void Plain::MulC_32fc_I(Cplx32 val, Cplx32 *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = Product(srcDst[i], val);
}
void Plain::MulC_16s_I(short val, short *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = To16(srcDst[i] * val);
}
void Plain::Mul_16s_I(const short *src, short *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = To16(srcDst[i] * src[i]);
}
void Plain::Mul_32s_I(const int *src, int *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = To32(static_cast<long long>(srcDst[i]) * src[i]);
}
void Plain::Mul_64f_I(const double *src, double *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] *= src[i];
}
void Plain::Mul_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = Product(srcDst[i], src[i]);
}
void Plain::Mul_32fc(const Cplx32 *src1, const Cplx32 *src2, Cplx32 *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = Product(src1[i], src2[i]);
}
void Plain::Mul_64fc(const Cplx64 *src1, const Cplx64 *src2, Cplx64 *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = Product(src1[i], src2[i]);
}
void Plain::DivC_32f_I(float val, float *srcDst, int len) {
  const float factor = 1 / val;
  for (int i = 0; i < len; ++i) srcDst[i] *= factor;
}
void Plain::Div_32f_I(const float *src, float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] /= src[i];
}
void Plain::Div_64f_I(const double *src, double *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] /= src[i];
}
void Plain::Div_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = Quotient(srcDst[i], src[i]);
}
void Plain::Div_64fc_I(const Cplx64 *src, Cplx64 *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = Quotient(srcDst[i], src[i]);
}
void Plain::And_8u(const unsigned char *src1, const unsigned char *src2, unsigned char *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = static_cast<unsigned char>(src1[i] & src2[i]);
}
void Plain::Not_8u_I(unsigned char *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = static_cast<unsigned char>(~srcDst[i]);
}
void Plain::Abs_32f(const float *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = std::fabs(src[i]);
}
void Plain::Abs_32s(const int *src, int *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = To32(std::abs(static_cast<long long>(src[i])));
}
void Plain::Mag_32f(const float *re, const float *im, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = std::sqrt(re[i] * re[i] + im[i] * im[i]);
}
void Plain::Mag_32fc(const Cplx32 *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = std::sqrt(src[i].re * src[i].re + src[i].im * src[i].im);
}
void Plain::Mag_64fc(const Cplx64 *src, double *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = std::sqrt(src[i].re * src[i].re + src[i].im * src[i].im);
}
void Plain::MagSqr_32fc(const Cplx32 *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = src[i].re * src[i].re + src[i].im * src[i].im;
}
void Plain::MagSqr_64fc(const Cplx64 *src, double *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = src[i].re * src[i].re + src[i].im * src[i].im;
}
void Plain::Sqr_32f_I(float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] *= srcDst[i];
}
void Plain::Sqr_32fc_I(Cplx32 *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = Product(srcDst[i], srcDst[i]);
}
void Plain::Sqrt_32f_I(float *srcDst, int len) {
  for (int i = 0; i < len; ++i) srcDst[i] = std::sqrt(srcDst[i]);
}
void Plain::Sqrt_32f(const float *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = std::sqrt(src[i]);
}
void Plain::Sqrt_64f(const double *src, double *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = std::sqrt(src[i]);
}
void Plain::Convert_16s32f(const short *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = static_cast<float>(src[i]);
}
void Plain::Convert_32f16s(const float *src, short *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = To16(src[i]);
}
void Plain::Convert_32f16s_Scaled(const float *src, short *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = To16(std::nearbyint(src[i] * 0.5F));
}
void Plain::Convert_32f32s(const float *src, int *dst, int len) {
  for (int i = 0; i < len; ++i) {
    dst[i] = src[i] >= 2147483648.0F ? 2147483647 : static_cast<int>(std::max(src[i], -2147483648.0F));
  }
}
void Plain::Convert_32s32f(const int *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = static_cast<float>(src[i]);
}
void Plain::Convert_32f64f(const float *src, double *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = static_cast<double>(src[i]);
}
void Plain::Convert_64f32f(const double *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = static_cast<float>(src[i]);
}
void Plain::Round_32f(const float *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = std::round(src[i]);
}
void Plain::Floor_32f(const float *src, float *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = std::floor(src[i]);
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
void Plain::Flip_64f(const double *src, double *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = src[len - 1 - i];
}
void Plain::Flip_32f_I(float *srcDst, int len) { std::reverse(srcDst, srcDst + len); }
void Plain::ConjFlip_32fc(const Cplx32 *src, Cplx32 *dst, int len) {
  for (int i = 0; i < len; ++i) dst[i] = {src[len - 1 - i].re, -src[len - 1 - i].im};
}

void Plain::Conv_32f(const float *src1, int len1, const float *src2, int len2, float *dst) {
  Convolve(src1, len1, src2, len2, dst);
}
void Plain::Conv_64f(const double *src1, int len1, const double *src2, int len2, double *dst) {
  Convolve(src1, len1, src2, len2, dst);
}
void Plain::CrossCorr_32f(const float *src1, int len1, const float *src2, int len2, float *dst) {
  Correlate(src1, len1, src2, len2, dst);
}
void Plain::CrossCorr_32fc(const Cplx32 *src1, int len1, const Cplx32 *src2, int len2, Cplx32 *dst) {
  Correlate(src1, len1, src2, len2, dst);
}

} // namespace peers
