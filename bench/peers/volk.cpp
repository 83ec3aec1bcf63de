#include "peers/volk.h"

#if defined(QORN_PEER_VOLK)

#include <volk/volk.h>

namespace peers {

namespace {

unsigned Count(int len) { return static_cast<unsigned>(len); }
const lv_32fc_t *In(const QORN::Cplx32 *x) { return reinterpret_cast<const lv_32fc_t *>(x); }
lv_32fc_t *Out(QORN::Cplx32 *x) { return reinterpret_cast<lv_32fc_t *>(x); }

} // namespace

void Volk::Add_32f_I(const float *src, float *srcDst, int len) {
  volk_32f_x2_add_32f(srcDst, srcDst, src, Count(len));
}
void Volk::Mul_32f_I(const float *src, float *srcDst, int len) {
  volk_32f_x2_multiply_32f(srcDst, srcDst, src, Count(len));
}
void Volk::MulC_32f_I(float val, float *srcDst, int len) {
  volk_32f_s32f_multiply_32f(srcDst, srcDst, val, Count(len));
}
void Volk::Div_32f_I(const float *src, float *srcDst, int len) {
  volk_32f_x2_divide_32f(srcDst, srcDst, src, Count(len));
}
void Volk::Mul_64f_I(const double *src, double *srcDst, int len) {
  volk_64f_x2_multiply_64f(srcDst, srcDst, src, Count(len));
}
void Volk::Mul_32fc(const QORN::Cplx32 *src1, const QORN::Cplx32 *src2, QORN::Cplx32 *dst, int len) {
  volk_32fc_x2_multiply_32fc(Out(dst), In(src1), In(src2), Count(len));
}
void Volk::Div_32fc_I(const QORN::Cplx32 *src, QORN::Cplx32 *srcDst, int len) {
  volk_32fc_x2_divide_32fc(Out(srcDst), In(srcDst), In(src), Count(len));
}
void Volk::Mag_32fc(const QORN::Cplx32 *src, float *dst, int len) {
  volk_32fc_magnitude_32f(dst, In(src), Count(len));
}
void Volk::MagSqr_32fc(const QORN::Cplx32 *src, float *dst, int len) {
  volk_32fc_magnitude_squared_32f(dst, In(src), Count(len));
}
void Volk::Sqrt_32f_I(float *srcDst, int len) { volk_32f_sqrt_32f(srcDst, srcDst, Count(len)); }
void Volk::Convert_16s32f(const short *src, float *dst, int len) {
  volk_16i_s32f_convert_32f(dst, src, 1.0F, Count(len));
}
void Volk::Convert_32f16s(const float *src, short *dst, int len) {
  volk_32f_s32f_convert_16i(dst, src, 1.0F, Count(len));
}
void Volk::Convert_32f64f(const float *src, double *dst, int len) {
  volk_32f_convert_64f(dst, src, Count(len));
}
void Volk::Convert_64f32f(const double *src, float *dst, int len) {
  volk_64f_convert_32f(dst, src, Count(len));
}
void Volk::Real_32fc(const QORN::Cplx32 *src, float *dst, int len) {
  volk_32fc_deinterleave_real_32f(dst, In(src), Count(len));
}
void Volk::RealToCplx_32f(const float *re, const float *im, QORN::Cplx32 *dst, int len) {
  volk_32f_x2_interleave_32fc(Out(dst), re, im, Count(len));
}
void Volk::Conj_32fc(const QORN::Cplx32 *src, QORN::Cplx32 *dst, int len) {
  volk_32fc_conjugate_32fc(Out(dst), In(src), Count(len));
}
void Volk::Sum_32f(const float *src, int len, float *result) {
  volk_32f_accumulator_s32f(result, src, Count(len));
}
void Volk::StdDev_32f(const float *src, int len, float *result) {
  float mean = 0;
  volk_32f_stddev_and_mean_32f_x2(result, &mean, src, Count(len));
}
void Volk::MaxIndx_32f(const float *src, int len, float *result, int *index) {
  unsigned place = 0;
  volk_32f_index_max_32u(&place, src, Count(len));
  *index = static_cast<int>(place);
  *result = src[place];
}

} // namespace peers

#endif
