#ifndef QORN_INFRA_TARGETLIB_H
#define QORN_INFRA_TARGETLIB_H

#include "qorn/Export.h"
#include "qorn/infra/Cplx.h"

namespace QORN {

/// The kernel layer: one static function per array operation and element type, through which every numerical
/// loop of the library passes.
///
/// A name reads Name_<types>[_I]. Types: 8u unsigned char, 16s short, 16u unsigned short, 32s int, 32f float,
/// 64f double, 16sc Cplx16, 32fc Cplx32, 64fc Cplx64; two tags name the source, then the result. _I works in
/// place: on (src, srcDst, len), (val, srcDst, len) or (srcDst, len). Else the order is sources, destination,
/// length. Lengths are in elements, a complex value being one; i runs from 0 to len - 1.
///
/// What holds of all of them, unless told otherwise:
/// - A null pointer or a length below 1 does nothing; results through pointers stay unwritten.
/// - Any element-aligned address will do. Element-wise operations may have a source as destination; arrays
///   that overlap otherwise are not allowed.
/// - An element's result depends on its operands alone, not on length, place or alignment. Exact operations
///   and reductions give the same bits on every processor; each step is rounded to the element type, nothing
///   is fused.
/// - Nothing is allocated and nothing thrown. All are reentrant.
class QORN_API TargetLib {
public:
  /// How Convert with five arguments rounds: 0 toward zero, any other value to nearest, ties to even.
  enum ConvertRoundMode : int { ConvertRoundZero = 0, ConvertRoundNear = 1 };

  // Filling and copying.

  /// dst[i] = 0.
  ///@{
  static void Zero_32fc(Cplx32 *dst, int len);
  static void Zero_64fc(Cplx64 *dst, int len);
  ///@}

  /// dst[i] = val.
  ///@{
  static void Set_8u(unsigned char val, unsigned char *dst, int len);
  static void Set_16s(short val, short *dst, int len);
  static void Set_32s(int val, int *dst, int len);
  static void Set_32f(float val, float *dst, int len);
  static void Set_64f(double val, double *dst, int len);
  static void Set_32fc(Cplx32 val, Cplx32 *dst, int len);
  static void Set_64fc(Cplx64 val, Cplx64 *dst, int len);
  ///@}

  /// dst[i] = src[i]. The arrays may overlap in any way.
  ///@{
  static void Copy_8u(const unsigned char *src, unsigned char *dst, int len);
  static void Copy_16s(const short *src, short *dst, int len);
  static void Copy_16sc(const Cplx16 *src, Cplx16 *dst, int len);
  static void Copy_32s(const int *src, int *dst, int len);
  static void Copy_32f(const float *src, float *dst, int len);
  static void Copy_64f(const double *src, double *dst, int len);
  static void Copy_32fc(const Cplx32 *src, Cplx32 *dst, int len);
  static void Copy_64fc(const Cplx64 *src, Cplx64 *dst, int len);
  ///@}

  // Changes of element type.

  /// dst[i] = src[i], widened without loss.
  ///@{
  static void Convert_32f64f(const float *src, double *dst, int len);
  static void Convert_16s32f(const short *src, float *dst, int len);
  static void Convert_16u32f(const unsigned short *src, float *dst, int len);
  static void Convert_16s32s(const short *src, int *dst, int len);
  static void Convert_32s64f(const int *src, double *dst, int len);
  ///@}

  /// dst[i] = src[i], rounded to the nearest float, ties to even.
  ///@{
  static void Convert_64f32f(const double *src, float *dst, int len);
  static void Convert_32s32f(const int *src, float *dst, int len);
  ///@}

  /// dst[i] = src[i] truncated toward zero and saturated at the limits of the target type; not-a-number gives
  /// 0.
  ///@{
  static void Convert_32f32s(const float *src, int *dst, int len);
  static void Convert_64f32s(const double *src, int *dst, int len);
  static void Convert_32f16s(const float *src, short *dst, int len);
  ///@}

  /// dst[i] = src[i] * 2^-scale, rounded by mode (to nearest: ties to even) and saturated at the limits of
  /// the target type; not-a-number gives 0.
  ///@{
  static void Convert_32f16s(const float *src, short *dst, int len, ConvertRoundMode mode, int scale);
  static void Convert_32f16u(const float *src, unsigned short *dst, int len, ConvertRoundMode mode,
                             int scale);
  ///@}

  /// dst[i] = src[i] rounded to the nearest integral value, halves away from zero; the element type stays.
  /// Unlike Convert.
  ///@{
  static void Round_32f(const float *src, float *dst, int len);
  static void Round_64f(const double *src, double *dst, int len);
  ///@}

  /// dst[i] = src[i] rounded toward zero to an integral value; the element type stays.
  ///@{
  static void Trunc_32f(const float *src, float *dst, int len);
  static void Trunc_64f(const double *src, double *dst, int len);
  ///@}

  /// dst[i] = src[i] rounded down to an integral value; the element type stays.
  ///@{
  static void Floor_32f(const float *src, float *dst, int len);
  static void Floor_64f(const double *src, double *dst, int len);
  ///@}

  /// dst[i] = src[i] rounded up to an integral value; the element type stays.
  ///@{
  static void Ceil_32f(const float *src, float *dst, int len);
  static void Ceil_64f(const double *src, double *dst, int len);
  ///@}

  // Complex parts and order.

  /// dst[i] = (re[i], im[i]). dst must not overlap re or im.
  ///@{
  static void RealToCplx_32f(const float *re, const float *im, Cplx32 *dst, int len);
  static void RealToCplx_64f(const double *re, const double *im, Cplx64 *dst, int len);
  ///@}

  /// dst[i] = the real part of src[i].
  ///@{
  static void Real_32fc(const Cplx32 *src, float *dst, int len);
  static void Real_64fc(const Cplx64 *src, double *dst, int len);
  ///@}

  /// dst[i] = the imaginary part of src[i].
  ///@{
  static void Imag_32fc(const Cplx32 *src, float *dst, int len);
  static void Imag_64fc(const Cplx64 *src, double *dst, int len);
  ///@}

  /// mag[i] = |src[i]|, phase[i] = atan2(im, re) of src[i] in radians, -pi to pi: the bits of Mag_32fc and
  /// Phase_32fc. src, mag and phase must not overlap.
  static void CartToPolar_32fc(const Cplx32 *src, float *mag, float *phase, int len);

  /// dst[i] = (mag[i] cos phase[i], mag[i] sin phase[i]), phase in radians, each rounded once. dst must not
  /// overlap mag or phase.
  static void PolarToCart_32fc(const float *mag, const float *phase, Cplx32 *dst, int len);

  /// dst[i] = atan2(im, re) of src[i] in radians, -pi to pi.
  ///@{
  static void Phase_32fc(const Cplx32 *src, float *dst, int len);
  static void Phase_64fc(const Cplx64 *src, double *dst, int len);
  ///@}

  /// dst[i] = (re, -im) of src[i]; the sign bit of im is inverted.
  ///@{
  static void Conj_32fc(const Cplx32 *src, Cplx32 *dst, int len);
  static void Conj_64fc(const Cplx64 *src, Cplx64 *dst, int len);
  static void Conj_32fc_I(Cplx32 *srcDst, int len);
  static void Conj_64fc_I(Cplx64 *srcDst, int len);
  ///@}

  /// dst[i] = src[len - 1 - i]. dst may be src itself.
  ///@{
  static void Flip_32f(const float *src, float *dst, int len);
  static void Flip_64f(const double *src, double *dst, int len);
  static void Flip_32fc(const Cplx32 *src, Cplx32 *dst, int len);
  static void Flip_64fc(const Cplx64 *src, Cplx64 *dst, int len);
  static void Flip_32f_I(float *srcDst, int len);
  static void Flip_64f_I(double *srcDst, int len);
  static void Flip_32fc_I(Cplx32 *srcDst, int len);
  static void Flip_64fc_I(Cplx64 *srcDst, int len);
  ///@}

  /// dst[i] = conj(src[len - 1 - i]). dst may be src itself.
  ///@{
  static void ConjFlip_32fc(const Cplx32 *src, Cplx32 *dst, int len);
  static void ConjFlip_64fc(const Cplx64 *src, Cplx64 *dst, int len);
  ///@}

  // Sorting in place, in a time of len log len whatever the order was. Not-a-number elements stand behind all
  // numbers when ascending and before them when descending; 0 and -0 are equal.

  /// Sorts srcDst in ascending order.
  ///@{
  static void SortAscend_32f(float *srcDst, int len);
  static void SortAscend_64f(double *srcDst, int len);
  static void SortAscend_32s(int *srcDst, int len);
  ///@}

  /// Sorts srcDst in descending order.
  ///@{
  static void SortDescend_32f(float *srcDst, int len);
  static void SortDescend_64f(double *srcDst, int len);
  static void SortDescend_32s(int *srcDst, int len);
  ///@}

  /// Sorts srcDst in ascending order; indices[k] is the former place of the element that is now at k. Equal
  /// elements keep their order.
  ///@{
  static void SortIndexAscend_32f(float *srcDst, int *indices, int len);
  static void SortIndexAscend_64f(double *srcDst, int *indices, int len);
  static void SortIndexAscend_32s(int *srcDst, int *indices, int len);
  ///@}

  /// Sorts srcDst in descending order; indices[k] is the former place of the element that is now at k. Equal
  /// elements keep their order.
  ///@{
  static void SortIndexDescend_32f(float *srcDst, int *indices, int len);
  static void SortIndexDescend_64f(double *srcDst, int *indices, int len);
  static void SortIndexDescend_32s(int *srcDst, int *indices, int len);
  ///@}

  // Magnitudes, squares and roots.

  /// dst[i] = |src[i]|. The integer form saturates: |-2147483648| is 2147483647.
  ///@{
  static void Abs_32s(const int *src, int *dst, int len);
  static void Abs_32f(const float *src, float *dst, int len);
  static void Abs_64f(const double *src, double *dst, int len);
  static void Abs_32f_I(float *srcDst, int len);
  static void Abs_64f_I(double *srcDst, int len);
  ///@}

  /// dst[i] = sqrt(re[i]^2 + im[i]^2). The squares are summed in the element's precision, without a guard
  /// against their overflow; the root is correctly rounded.
  ///@{
  static void Mag_32f(const float *re, const float *im, float *dst, int len);
  static void Mag_64f(const double *re, const double *im, double *dst, int len);
  ///@}

  /// dst[i] = |src[i]| = sqrt(re^2 + im^2), with the steps of Mag_32f.
  ///@{
  static void Mag_32fc(const Cplx32 *src, float *dst, int len);
  static void Mag_64fc(const Cplx64 *src, double *dst, int len);
  ///@}

  /// dst[i] = re^2 + im^2 of src[i].
  ///@{
  static void MagSqr_32fc(const Cplx32 *src, float *dst, int len);
  static void MagSqr_64fc(const Cplx64 *src, double *dst, int len);
  ///@}

  /// dst[i] = src[i] * src[i]; the complex square for complex types.
  ///@{
  static void Sqr_32f(const float *src, float *dst, int len);
  static void Sqr_64f(const double *src, double *dst, int len);
  static void Sqr_32fc(const Cplx32 *src, Cplx32 *dst, int len);
  static void Sqr_64fc(const Cplx64 *src, Cplx64 *dst, int len);
  static void Sqr_32f_I(float *srcDst, int len);
  static void Sqr_64f_I(double *srcDst, int len);
  static void Sqr_32fc_I(Cplx32 *srcDst, int len);
  static void Sqr_64fc_I(Cplx64 *srcDst, int len);
  ///@}

  /// dst[i] = the square root of src[i]; of a negative real not-a-number. For complex types the principal
  /// value, with the real part not negative and the branch cut along the negative real axis. Real roots are
  /// rounded correctly; the parts of complex ones err by at most 0.51 units in the last place in float and 4
  /// in double, over the whole range, with the special values of csqrt in C99, Annex G.
  ///@{
  static void Sqrt_32f(const float *src, float *dst, int len);
  static void Sqrt_64f(const double *src, double *dst, int len);
  static void Sqrt_32fc(const Cplx32 *src, Cplx32 *dst, int len);
  static void Sqrt_64fc(const Cplx64 *src, Cplx64 *dst, int len);
  static void Sqrt_32f_I(float *srcDst, int len);
  static void Sqrt_64f_I(double *srcDst, int len);
  static void Sqrt_32fc_I(Cplx32 *srcDst, int len);
  static void Sqrt_64fc_I(Cplx64 *srcDst, int len);
  ///@}

  /// *result = sqrt(sum of |src[i]|^2), the squares and their sum in double, without a guard against the
  /// overflow or underflow of a double's square.
  ///@{
  static void Norm_L2_32f(const float *src, int len, float *result);
  static void Norm_L2_64f(const double *src, int len, double *result);
  static void Norm_L2_32fc64f(const Cplx32 *src, int len, double *result);
  static void Norm_L2_64fc64f(const Cplx64 *src, int len, double *result);
  ///@}

  // Elementary functions, at full precision: the float forms err by at most 0.51 units in the last place, the
  // double forms by less than 1 unit. Special values as IEEE 754 has them; no error is reported.

  /// dst[i] = cos src[i], src in radians.
  ///@{
  static void Cos_32f(const float *src, float *dst, int len);
  static void Cos_64f(const double *src, double *dst, int len);
  ///@}

  /// dst[i] = sin src[i], src in radians.
  ///@{
  static void Sin_32f(const float *src, float *dst, int len);
  static void Sin_64f(const double *src, double *dst, int len);
  ///@}

  /// dst[i] = atan src[i], in radians.
  ///@{
  static void Atan_32f(const float *src, float *dst, int len);
  static void Atan_64f(const double *src, double *dst, int len);
  ///@}

  /// dst[i] = the natural logarithm of src[i]: minus infinity for 0, not-a-number for a negative.
  ///@{
  static void Ln_32f(const float *src, float *dst, int len);
  static void Ln_64f(const double *src, double *dst, int len);
  ///@}

  /// dst[i] = the base-10 logarithm of src[i]: minus infinity for 0, not-a-number for a negative.
  ///@{
  static void Log10_32f(const float *src, float *dst, int len);
  static void Log10_64f(const double *src, double *dst, int len);
  ///@}

  /// dst[i] = e ^ src[i].
  /// One exception: Exp_64f with len = 1 replaces a result that underflows by the smallest normal double,
  /// 2.2250738585072014e-308. Longer arrays keep what underflow leaves, a denormal or 0.
  ///@{
  static void Exp_32f(const float *src, float *dst, int len);
  static void Exp_64f(const double *src, double *dst, int len);
  ///@}

  /// dst[i] = the error function of src[i], 2 / sqrt(pi) times the integral of exp(-t^2) from 0 to src[i].
  ///@{
  static void Erf_32f(const float *src, float *dst, int len);
  static void Erf_64f(const double *src, double *dst, int len);
  ///@}

  /// dst[i] = (cos phase[i], sin phase[i]), phase in radians. dst must not overlap phase.
  ///@{
  static void Expj_32f(const float *phase, Cplx32 *dst, int len);
  static void Expj_64f(const double *phase, Cplx64 *dst, int len);
  ///@}

  /// dst[i] = the angle of the point (x[i], y[i]) in radians, -pi to pi; the ordinate comes first.
  ///@{
  static void Atan2_32f(const float *y, const float *x, float *dst, int len);
  static void Atan2_64f(const double *y, const double *x, double *dst, int len);
  ///@}

  /// dst[i] = base[i] ^ exponent[i]. A negative base has a power for whole exponents only, and else gives
  /// not-a-number; anything to the power 0, and 1 to any power, is 1.
  ///@{
  static void Pow_32f(const float *base, const float *exponent, float *dst, int len);
  static void Pow_64f(const double *base, const double *exponent, double *dst, int len);
  ///@}

  /// dst[i] = src[i] ^ val, the bits of Pow_32f and Pow_64f.
  ///@{
  static void Powx_32f(const float *src, float val, float *dst, int len);
  static void Powx_64f(const double *src, double val, double *dst, int len);
  ///@}

  /// dst[i] = 10 ^ src[i]: dst is filled with 10 and then raised to src, so dst must not be src, nor overlap
  /// it.
  ///@{
  static void Pow10_32f(const float *src, float *dst, int len);
  static void Pow10_64f(const double *src, double *dst, int len);
  ///@}

  // Reductions: the result goes through a pointer and stays unwritten for an empty array.

  /// *result = the largest element. A not-a-number element is passed over; among zeros of both signs the
  /// first counts.
  ///@{
  static void Max_16s(const short *src, int len, short *result);
  static void Max_32s(const int *src, int len, int *result);
  static void Max_32f(const float *src, int len, float *result);
  static void Max_64f(const double *src, int len, double *result);
  ///@}

  /// *result = the smallest element. A not-a-number element is passed over; among zeros of both signs the
  /// first counts.
  ///@{
  static void Min_16s(const short *src, int len, short *result);
  static void Min_32s(const int *src, int len, int *result);
  static void Min_32f(const float *src, int len, float *result);
  static void Min_64f(const double *src, int len, double *result);
  ///@}

  /// *result = the largest element, *index = the place of its first occurrence. A not-a-number element is
  /// passed over; if all are, the first one is the result.
  ///@{
  static void MaxIndx_16s(const short *src, int len, short *result, int *index);
  static void MaxIndx_32s(const int *src, int len, int *result, int *index);
  static void MaxIndx_32f(const float *src, int len, float *result, int *index);
  static void MaxIndx_64f(const double *src, int len, double *result, int *index);
  ///@}

  /// *result = the smallest element, *index = the place of its first occurrence. A not-a-number element is
  /// passed over; if all are, the first one is the result.
  ///@{
  static void MinIndx_16s(const short *src, int len, short *result, int *index);
  static void MinIndx_32s(const int *src, int len, int *result, int *index);
  static void MinIndx_32f(const float *src, int len, float *result, int *index);
  static void MinIndx_64f(const double *src, int len, double *result, int *index);
  ///@}

  /// *result = the sum of all elements. The float forms accumulate in double and round once.
  /// Here and in the means, deviations and norms, scalar i of the array is added to lane i mod 32, and the
  /// lanes are then added in halves: lane j and lane j + 16 and so on. The order, and with it each bit, is
  /// the same on every processor, and the error bound is that of n / 32 + 5 additions (N. J. Higham: Accuracy
  /// and stability of numerical algorithms, 2002, section 4.2).
  ///@{
  static void Sum_32f(const float *src, int len, float *result);
  static void Sum_64f(const double *src, int len, double *result);
  static void Sum_32fc(const Cplx32 *src, int len, Cplx32 *result);
  static void Sum_64fc(const Cplx64 *src, int len, Cplx64 *result);
  ///@}

  /// *result = the exact sum of all elements, saturated to the element type.
  ///@{
  static void Sum_16s(const short *src, int len, short *result);
  static void Sum_32s(const int *src, int len, int *result);
  ///@}

  /// *result = the sum of all elements / len. The float forms accumulate and divide in double and round once.
  ///@{
  static void Mean_32f(const float *src, int len, float *result);
  static void Mean_64f(const double *src, int len, double *result);
  static void Mean_32fc(const Cplx32 *src, int len, Cplx32 *result);
  static void Mean_64fc(const Cplx64 *src, int len, Cplx64 *result);
  ///@}

  /// *result = sqrt(sum of (src[i] - mean)^2 / (len - 1)), the sample standard deviation, with the digits of
  /// two passes. The float form works in double and rounds once. With len below 2 the result stays unwritten.
  ///@{
  static void StdDev_32f(const float *src, int len, float *result);
  static void StdDev_64f(const double *src, int len, double *result);
  ///@}

  // Arithmetic. Integer results saturate at the limits of the element type.

  /// srcDst[i] = srcDst[i] + val.
  ///@{
  static void AddC_16s_I(short val, short *srcDst, int len);
  static void AddC_32s_I(int val, int *srcDst, int len);
  static void AddC_32f_I(float val, float *srcDst, int len);
  static void AddC_64f_I(double val, double *srcDst, int len);
  static void AddC_32fc_I(Cplx32 val, Cplx32 *srcDst, int len);
  static void AddC_64fc_I(Cplx64 val, Cplx64 *srcDst, int len);
  ///@}

  /// srcDst[i] = srcDst[i] - val.
  ///@{
  static void SubC_16s_I(short val, short *srcDst, int len);
  static void SubC_32s_I(int val, int *srcDst, int len);
  static void SubC_32f_I(float val, float *srcDst, int len);
  static void SubC_64f_I(double val, double *srcDst, int len);
  static void SubC_32fc_I(Cplx32 val, Cplx32 *srcDst, int len);
  static void SubC_64fc_I(Cplx64 val, Cplx64 *srcDst, int len);
  ///@}

  /// srcDst[i] = srcDst[i] * val.
  ///@{
  static void MulC_16s_I(short val, short *srcDst, int len);
  static void MulC_32s_I(int val, int *srcDst, int len);
  static void MulC_32f_I(float val, float *srcDst, int len);
  static void MulC_64f_I(double val, double *srcDst, int len);
  static void MulC_32fc_I(Cplx32 val, Cplx32 *srcDst, int len);
  static void MulC_64fc_I(Cplx64 val, Cplx64 *srcDst, int len);
  ///@}

  /// srcDst[i] = srcDst[i] + src[i].
  ///@{
  static void Add_16s_I(const short *src, short *srcDst, int len);
  static void Add_32s_I(const int *src, int *srcDst, int len);
  static void Add_32f_I(const float *src, float *srcDst, int len);
  static void Add_64f_I(const double *src, double *srcDst, int len);
  static void Add_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len);
  static void Add_64fc_I(const Cplx64 *src, Cplx64 *srcDst, int len);
  ///@}

  /// srcDst[i] = srcDst[i] - src[i].
  ///@{
  static void Sub_16s_I(const short *src, short *srcDst, int len);
  static void Sub_32s_I(const int *src, int *srcDst, int len);
  static void Sub_32f_I(const float *src, float *srcDst, int len);
  static void Sub_64f_I(const double *src, double *srcDst, int len);
  static void Sub_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len);
  static void Sub_64fc_I(const Cplx64 *src, Cplx64 *srcDst, int len);
  ///@}

  /// srcDst[i] = srcDst[i] * src[i].
  ///@{
  static void Mul_16s_I(const short *src, short *srcDst, int len);
  static void Mul_32s_I(const int *src, int *srcDst, int len);
  static void Mul_32f_I(const float *src, float *srcDst, int len);
  static void Mul_64f_I(const double *src, double *srcDst, int len);
  static void Mul_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len);
  static void Mul_64fc_I(const Cplx64 *src, Cplx64 *srcDst, int len);
  ///@}

  /// dst[i] = src1[i] * src2[i]. dst may be either source.
  ///@{
  static void Mul_32fc(const Cplx32 *src1, const Cplx32 *src2, Cplx32 *dst, int len);
  static void Mul_64fc(const Cplx64 *src1, const Cplx64 *src2, Cplx64 *dst, int len);
  ///@}

  /// srcDst[i] = srcDst[i] * r with r = 1 / val, formed once in the element's precision, so the last bit may
  /// differ from that of a division. A val of 0 leaves srcDst as it is, without any report.
  ///@{
  static void DivC_32f_I(float val, float *srcDst, int len);
  static void DivC_64f_I(double val, double *srcDst, int len);
  ///@}

  /// srcDst[i] = srcDst[i] * (val.re * r, -(val.im * r)) with r = 1 / (val.re^2 + val.im^2), formed once in
  /// the element's precision. If that sum of squares is 0, srcDst stays as it is, without any report; so it
  /// does for a val so small that its squares underflow.
  ///@{
  static void DivC_32fc_I(Cplx32 val, Cplx32 *srcDst, int len);
  static void DivC_64fc_I(Cplx64 val, Cplx64 *srcDst, int len);
  ///@}

  /// srcDst[i] = srcDst[i] / src[i]. All elements are written; if a divisor was 0, its element holds the IEEE
  /// result, signed infinity or for 0 / 0 not-a-number, and QORNException 12001 "divide-by-zero error" is
  /// thrown at the end.
  /// Complex quotients are (a * conj(b)) / |b|^2. The float form works in double and rounds each part once,
  /// within 0.51 units in the last place. The double form first scales a and b by powers of two where they
  /// need it; its parts err by at most 5 * 2^-53 of the quotient's magnitude. So neither overflows or
  /// vanishes on the way to a quotient that does not. Only a divisor with two parts of 0 counts as zero; each
  /// part of a is then divided by 0 for itself. Infinities and not-a-number go through the formula: a number
  /// divided by infinity is not-a-number.
  ///@{
  static void Div_32f_I(const float *src, float *srcDst, int len);
  static void Div_64f_I(const double *src, double *srcDst, int len);
  static void Div_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len);
  static void Div_64fc_I(const Cplx64 *src, Cplx64 *srcDst, int len);
  ///@}

  /// dst[i] = (src[i] - val) * 2^-scale, rounded to nearest, ties to even, and saturated to 0 to 65535. A
  /// scale above 16 writes zeros.
  static void SubC_16u(const unsigned short *src, unsigned short val, unsigned short *dst, int len,
                       int scale);

  /// srcDst[i] = srcDst[i] / val * 2^-scale, rounded to nearest, ties to even, and saturated at 65535. A val
  /// of 0 leaves srcDst as it is. A scale above 16 writes zeros, one below -31 writes 65535.
  static void DivC_16u_I(unsigned short val, unsigned short *srcDst, int len, int scale);

  // Logic on bytes.

  /// dst[i] = src1[i] & src2[i], in place srcDst[i] = srcDst[i] & src[i].
  ///@{
  static void And_8u(const unsigned char *src1, const unsigned char *src2, unsigned char *dst, int len);
  static void And_8u_I(const unsigned char *src, unsigned char *srcDst, int len);
  ///@}

  /// dst[i] = src1[i] | src2[i], in place srcDst[i] = srcDst[i] | src[i].
  ///@{
  static void Or_8u(const unsigned char *src1, const unsigned char *src2, unsigned char *dst, int len);
  static void Or_8u_I(const unsigned char *src, unsigned char *srcDst, int len);
  ///@}

  /// dst[i] = src1[i] ^ src2[i], in place srcDst[i] = srcDst[i] ^ src[i].
  ///@{
  static void Xor_8u(const unsigned char *src1, const unsigned char *src2, unsigned char *dst, int len);
  static void Xor_8u_I(const unsigned char *src, unsigned char *srcDst, int len);
  ///@}

  /// dst[i] = ~src[i].
  ///@{
  static void Not_8u(const unsigned char *src, unsigned char *dst, int len);
  static void Not_8u_I(unsigned char *srcDst, int len);
  ///@}

  // Products and correlation.

  /// *result = sum of src1[i] * src2[i], without conjugation. Each product and each sum is rounded to the
  /// result's type; the products go by turns to L sums of their own, which are added in the end. So the bits
  /// are the same on every processor, and the error is at most (len / L + 9) u times the sum of the products'
  /// magnitudes, u being 2^-24 or 2^-53 and L 64 for 32f, 32 for 64f and 32f32fc, 16 for 32fc and 8 for 64fc.
  ///@{
  static void DotProd_32f(const float *src1, const float *src2, int len, float *result);
  static void DotProd_64f(const double *src1, const double *src2, int len, double *result);
  static void DotProd_32fc(const Cplx32 *src1, const Cplx32 *src2, int len, Cplx32 *result);
  static void DotProd_64fc(const Cplx64 *src1, const Cplx64 *src2, int len, Cplx64 *result);
  static void DotProd_32f32fc(const float *src1, const Cplx32 *src2, int len, Cplx32 *result);
  ///@}

  /// *result = sum of src1[i] * src2[i], summed exactly and rounded once.
  static void DotProd_16s(const short *src1, const short *src2, int len, float *result);

  /// dst[n] = sum over i of conj(src1[i]) * src2[i + n + lowLag], 0 <= i < len1, 0 <= n < dstLen, with the
  /// terms for which src2 has an element, 0 to len2 - 1; not normalised. A length below 1 does nothing. dst
  /// must not overlap a source.
  ///
  /// The error of each result, or of each part of a complex one, is at most 4 eps times its own sum of
  /// |src1[i]| |src2[i + n + lowLag]|, eps being 2^-23 (2^-52 for 64f), whatever the lengths, as long as no
  /// term leaves the range of normal numbers. There are three methods, and the lengths alone choose between
  /// them:
  /// - direct sums, where the shorter source has fewer than 32 elements, or where the number of products is
  ///   small. These allocate nothing. Each result depends on its own operands alone.
  /// - one transform of each source as a whole, where that is estimated as the least work: of equal lengths
  ///   from some 100 by 100 elements on (35 for 32fc, 130 for 64f).
  /// - transforms of overlapping blocks (overlap-save), where these are: from about 65 (35 for 32fc, 100 for
  ///   64f) elements on if the other source is long.
  /// Results that the rounding errors of transforms could have spoiled, quiet ones beside loud ones, are
  /// found by bounds and computed again, in blocks or directly. So results without a nonzero product are
  /// exactly 0, and what is not finite shows where it would by direct sums and nowhere else; where the
  /// shorter source is not finite, or squares of doubles or of results leave the range, the sums are direct. The last bits
  /// of a result may depend on its place. QORNException 11001 if there is no memory. The factors of the
  /// transforms stay with the process, and up to 33 MiB of work memory for the next call.
  ///@{
  static void CrossCorr_32f(const float *src1, int len1, const float *src2, int len2, float *dst, int dstLen,
                            int lowLag);
  static void CrossCorr_32fc(const Cplx32 *src1, int len1, const Cplx32 *src2, int len2, Cplx32 *dst,
                             int dstLen, int lowLag);
  ///@}

  /// The linear convolution dst[n] = sum over i of src1[i] * src2[n - i], 0 <= n < len1 + len2 - 1; method,
  /// error bound and memory as CrossCorr. The caller supplies dst of that length; it must not overlap a
  /// source. A length below 1 does nothing.
  ///@{
  static void Conv_32f(const float *src1, int len1, const float *src2, int len2, float *dst);
  static void Conv_64f(const double *src1, int len1, const double *src2, int len2, double *dst);
  ///@}

  // Sampling with a phase that is carried from block to block.

  /// Every factor-th sample: dst[k] = src[*phase + k * factor] as long as that lies in the source. *dstLen =
  /// the number written, *phase = where the next block must start. A factor below 1, or a phase outside 0 to
  /// factor - 1, does nothing. dst must not overlap src unless it is src.
  ///@{
  static void SampleDown_16s(const short *src, int srcLen, short *dst, int *dstLen, int factor, int *phase);
  static void SampleDown_16sc(const Cplx16 *src, int srcLen, Cplx16 *dst, int *dstLen, int factor,
                              int *phase);
  static void SampleDown_32f(const float *src, int srcLen, float *dst, int *dstLen, int factor, int *phase);
  static void SampleDown_64f(const double *src, int srcLen, double *dst, int *dstLen, int factor, int *phase);
  static void SampleDown_32fc(const Cplx32 *src, int srcLen, Cplx32 *dst, int *dstLen, int factor,
                              int *phase);
  static void SampleDown_64fc(const Cplx64 *src, int srcLen, Cplx64 *dst, int *dstLen, int factor,
                              int *phase);
  ///@}

  /// Inserted zeros: dst[n * factor + *phase] = src[n], all other of the *dstLen = factor * srcLen elements
  /// 0; *phase stays. A factor below 1, a phase outside 0 to factor - 1, or a result of more elements than an
  /// int counts does nothing. dst must not overlap src.
  ///@{
  static void SampleUp_32f(const float *src, int srcLen, float *dst, int *dstLen, int factor, int *phase);
  static void SampleUp_64f(const double *src, int srcLen, double *dst, int *dstLen, int factor, int *phase);
  static void SampleUp_32fc(const Cplx32 *src, int srcLen, Cplx32 *dst, int *dstLen, int factor, int *phase);
  static void SampleUp_64fc(const Cplx64 *src, int srcLen, Cplx64 *dst, int *dstLen, int factor, int *phase);
  ///@}

  // Generators.

  /// dst[i] = i * slope + offset, the index converted to the element type, one rounding for each of the two
  /// steps; not accumulated.
  ///@{
  static void VectorSlope_32f(float *dst, int len, float offset, float slope);
  static void VectorSlope_64f(double *dst, int len, double offset, double slope);
  ///@}

  /// Uniformly distributed numbers from low to high. The same *seed always gives the same array; *seed is
  /// then advanced by 6003, so that a caller who keeps it gets a new array at each call. The generator adds a
  /// 32-bit linear congruential sequence to a subtract-with-borrow sequence (G. Marsaglia, A. Zaman: A new
  /// class of random number generators, 1991).
  ///@{
  static void RandUniform_Direct_32f(float *dst, int len, float low, float high, unsigned int *seed);
  static void RandUniform_Direct_64f(double *dst, int len, double low, double high, unsigned int *seed);
  ///@}

  /// Normally distributed numbers by the polar method (G. Marsaglia, T. A. Bray, 1964) on the generator of
  /// RandUniform_Direct; *seed is used and advanced as there.
  ///@{
  static void RandGauss_Direct_32f(float *dst, int len, float mean, float stdDev, unsigned int *seed);
  static void RandGauss_Direct_64f(double *dst, int len, double mean, double stdDev, unsigned int *seed);
  ///@}

  /// A complex tone, dst[i] = magnitude * exp(j (2 pi relFreq i + *phase)), relFreq in cycles per sample,
  /// *phase in radians. First relFreq is reduced to 0 to 1 and *phase to 0 to 2 pi; then the phase is
  /// computed for each element, in the element's precision and not accumulated. The 32fc form
  /// takes 6.2831855f for 2 pi there, so late samples of long blocks err by the rounding of large floats.
  /// *phase becomes that of the sample that would follow, from 0 to 2 pi, formed in double in both. Allocates
  /// a scratch ramp of len elements and throws 11001 if there is no memory.
  ///@{
  static void Tone_Direct_32fc(Cplx32 *dst, int len, float magnitude, float relFreq, float *phase);
  static void Tone_Direct_64fc(Cplx64 *dst, int len, double magnitude, double relFreq, double *phase);
  ///@}

  /// The Kaiser window of shape alpha: dst[n] = I0(alpha sqrt(1 - (2n / (len - 1) - 1)^2)) / I0(alpha), with
  /// I0 the modified Bessel function of order zero (J. F. Kaiser: Nonrecursive digital filter design using
  /// the I0-sinh window function, 1974). The shape per half-length, alpha / ((len - 1) / 2), is rounded to
  /// float. The sign of alpha does not matter; a window of length 1 is 1. All of it is computed in double;
  /// GenKaiserWin_32f takes a scratch array of doubles from alpha = 30 on, and leaves dst unwritten if there
  /// is no memory for it.
  ///@{
  static void GenKaiserWin_32f(float *dst, int len, float alpha);
  static void GenKaiserWin_64f(double *dst, int len, float alpha);
  ///@}

  /// Windowed-sinc taps with the Hamming window 0.54 - 0.46 cos(2 pi n / (len - 1)), symmetric about
  /// (len - 1) / 2, scaled to a gain of 1 at the centre of the pass band: at 0, at half the sampling rate, or
  /// midway between the edges. A high-pass of even length has no gain at half the sampling rate; it is scaled
  /// to 1 midway between relFreq and there. Frequencies are relative to the sampling rate, 0 < f < 0.5,
  /// lowFreq < highFreq. A length below 5 or a frequency outside does nothing.
  ///@{
  static void FIRGenLowpassWinHamming_64f(double relFreq, double *taps, int len);
  static void FIRGenHighpassWinHamming_64f(double relFreq, double *taps, int len);
  static void FIRGenBandpassWinHamming_64f(double lowFreq, double highFreq, double *taps, int len);
  ///@}

  // Matrices, bitmaps, information.

  /// Inverts a size x size matrix by Gauss-Jordan elimination with complete pivoting, after scaling its rows
  /// and columns by powers of two. Strides are in bytes: stride1 from row to row, stride2 from element to
  /// element. buffer is work memory of size * (size + 1) elements. True on success; false, with dst
  /// unwritten, if a pivot is not above size * epsilon of the scaled matrix (it is singular, or as good as),
  /// if an element is not finite, for a null pointer or a size below 1. dst may be src.
  ///@{
  static bool Invert_m_32f(const float *src, int srcStride1, int srcStride2, float *buffer, float *dst,
                           int dstStride1, int dstStride2, int size);
  static bool Invert_m_64f(const double *src, int srcStride1, int srcStride2, double *buffer, double *dst,
                           int dstStride1, int dstStride2, int size);
  ///@}

  /// Resizes an image of 4 interleaved 8-bit channels: dst(x, y) = src((x - xShift) / xFactor, (y - yShift) /
  /// yFactor) over the two regions of interest, which are clipped to the images. Coordinates count from the
  /// images' first pixels; a pixel is a sample at its coordinates and reaches to the next one. Written are
  /// the pixels of the destination's region whose position lies in the source's region; only samples of that
  /// are read, and the last ones go on to the region's end. Steps are bytes from row to row: a source row
  /// that does not fit into its step is refused, a destination row ends with its step. interpolation 1 takes
  /// the nearest sample, halves upwards; any other value is linear in both directions, rounded to nearest,
  /// halves upwards. reservedA and reservedB take no part. Null pointers, empty regions and factors that are
  /// not above 0 do nothing. Keeps a work buffer of 12 bytes for each column written between calls and throws
  /// 11001 if there is no memory for it: call from one thread only, and DestroyStretchBuffer when done.
  static void StretchBitmap(const unsigned char *src, int srcWidth, int srcHeight, int srcStep, int srcRoiX,
                            int srcRoiY, int srcRoiWidth, int srcRoiHeight, unsigned char *dst, int dstStep,
                            int dstRoiX, int dstRoiY, int dstRoiWidth, int dstRoiHeight, double xFactor,
                            double yFactor, double reservedA, double reservedB, double xShift, double yShift,
                            int interpolation);

  /// Frees the work buffer of StretchBitmap, if any.
  static void DestroyStretchBuffer();

  /// A text about the processor and the kernel layer, in a static buffer that each call overwrites: call from
  /// one thread only. Its first line has the clock in MHz and the largest cache in kB, each 0 if unknown, the
  /// second the mask of processor features with each bit's number and value, six more the names and versions
  /// of the layer's parts and the instruction-set level in use.
  ///
  /// Bits: 0 SSE2, 1 SSE3, 2 SSSE3, 3 SSE4.1, 4 SSE4.2, 5 POPCNT, 6 AVX, 7 AVX2, 8 FMA, 9 BMI, 10 BMI2;
  /// AVX-512: 11 F, 12 CD, 13 BW, 14 DQ, 15 VL, 16 IFMA, 17 VBMI, 18 VBMI2, 19 VNNI, 20 BITALG, 21 VPOPCNTDQ;
  /// 24 the vectors of 64-bit Arm.
  static char *GetCpuAndLibInfo();
};

} // namespace QORN

#endif
