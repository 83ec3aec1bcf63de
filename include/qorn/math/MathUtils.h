#ifndef QORN_MATH_MATHUTILS_H
#define QORN_MATH_MATHUTILS_H

#include "qorn/Export.h"
#include "qorn/infra/Cplx.h"

namespace QORN {

class MatReal32;
class MatReal64;
class VecInt32;
class VecReal32;
class VecReal64;
class VecCplx32;
class VecCplx64;

/// Element-wise mathematics on vectors and scalars, integer helpers, special functions and the arithmetic of
/// small dense matrices: static functions only.
///
/// The destination comes first and is given the length of the first source by Resize, so a kept destination
/// allocates nothing; an in-place form takes the vector alone and keeps its length. i runs over the whole
/// first source; a second one must be at least as long. The destination of an out-of-place form may be a
/// source itself, but not overlap it otherwise. Each form is one kernel, and a scalar form runs the same
/// kernel on one value, so scalar and vector results agree bit for bit, unless told otherwise. Elementary
/// functions err by at most 0.51 units in the last place in float and by less than 1 unit in double; special
/// values are those of IEEE 754. Angles are in radians. Arguments are not checked; nothing is thrown except
/// 11001 by a vector that cannot grow. All functions are reentrant.
class QORN_API MathUtils {
public:
  /// What the vector logarithms do about zeros. Any value other than Log0Check acts as Log0NoCheck.
  enum Log0CheckType : int {
    Log0NoCheck = 0, ///< the elements go straight to the logarithm, which gives minus infinity for 0
    Log0Check = 1    ///< kLogZeroOffset is added to every element first, whatever its value
  };

  /// What keeps a logarithm from an argument of zero: the float with the bits 0x000116C2, widened, which is
  /// 9.99994610111476e-41. Float and double members use this one value.
  static constexpr double kLogZeroOffset = 0x1.16c2p-133;

  /// What stands in place of the logarithm of a negative scalar.
  static constexpr double kLogNegativeResult = -999.0;

  /// The sign of x: 1 above 0, -1 below 0, else 0, also for a zero of either sign and for not-a-number.
  ///@{
  static double Sign(double x);
  static float Sign(float x);
  static int Sign(int x);
  ///@}

  /// The remainder a - n b with the sign of a, n being a / b truncated; exact. Not-a-number for an infinite a
  /// or a b of 0.
  ///@{
  static double Fmod(double a, double b);
  static float Fmod(float a, float b);
  ///@}

  /// The logarithm of x to a base: Ln(x) / Ln(base), each guarded as the scalar Ln, so a negative argument
  /// stands as -999 in its place: LogB(2, -1) is -999 / ln 2, and a negative base divides by -999.
  static double LogB(double base, double x);

  /// LogB(2, x).
  static double Log2(double x);

  /// dst = the elements of src from srcStart to its end, dst given their number; empty if srcStart is the
  /// length of src or more. dst must not be src.
  ///@{
  static void Copy(VecReal32 &dst, const VecReal32 &src, int srcStart);
  static void Copy(VecReal64 &dst, const VecReal64 &src, int srcStart);
  static void Copy(VecCplx32 &dst, const VecCplx32 &src, int srcStart);
  static void Copy(VecCplx64 &dst, const VecCplx64 &src, int srcStart);
  static void Copy(VecInt32 &dst, const VecInt32 &src, int srcStart);
  ///@}

  /// dst = count elements of src from srcStart on, or the rest of src if count is -1, dst given their number.
  /// VecUtils::Copy(dst, src, srcStart, count) in another order. dst must not be src.
  ///@{
  static void Copy(VecReal32 &dst, int count, const VecReal32 &src, int srcStart);
  static void Copy(VecReal64 &dst, int count, const VecReal64 &src, int srcStart);
  static void Copy(VecCplx32 &dst, int count, const VecCplx32 &src, int srcStart);
  static void Copy(VecCplx64 &dst, int count, const VecCplx64 &src, int srcStart);
  static void Copy(VecInt32 &dst, int count, const VecInt32 &src, int srcStart);
  ///@}

  /// dst[dstStart + i] = src[srcStart + i] for 0 <= i < count, or for the rest of src if count is -1; nothing
  /// for any other count below 1. dst is not resized: the range must fit. dst may be src, the ranges may
  /// overlap. VecUtils::Insert(dst, dstStart, src, srcStart, count) in another order.
  ///@{
  static void Copy(VecReal32 &dst, int dstStart, int count, const VecReal32 &src, int srcStart);
  static void Copy(VecReal64 &dst, int dstStart, int count, const VecReal64 &src, int srcStart);
  static void Copy(VecCplx32 &dst, int dstStart, int count, const VecCplx32 &src, int srcStart);
  static void Copy(VecCplx64 &dst, int dstStart, int count, const VecCplx64 &src, int srcStart);
  static void Copy(VecInt32 &dst, int dstStart, int count, const VecInt32 &src, int srcStart);
  ///@}

  /// vec[i] = the conjugate of vec[i].
  ///@{
  static void Conj(VecCplx32 &vec);
  static void Conj(VecCplx64 &vec);
  ///@}

  /// vec[i] = the conjugate of what was vec[N - 1 - i], N being the length.
  ///@{
  static void ConjFlip(VecCplx32 &vec);
  static void ConjFlip(VecCplx64 &vec);
  ///@}

  /// dst[i] = |src[i]|. The integer form saturates: |-2147483648| is 2147483647.
  ///@{
  static void Abs(VecInt32 &dst, const VecInt32 &src);
  static void Abs(VecReal32 &dst, const VecReal32 &src);
  static void Abs(VecReal64 &dst, const VecReal64 &src);
  static void Abs(VecReal32 &vec);
  static void Abs(VecReal64 &vec);
  static float Abs(float x);
  static double Abs(double x);
  ///@}

  /// The magnitude dst[i] = sqrt(re^2 + im^2) of src[i]. The squares are summed in the element's precision,
  /// without a guard against their overflow; the root is correctly rounded.
  ///@{
  static void Abs(VecReal32 &dst, const VecCplx32 &src);
  static void Abs(VecReal64 &dst, const VecCplx64 &src);
  static float Abs(Cplx32 x);
  static double Abs(Cplx64 x);
  ///@}

  /// dst[i] = src[i] * src[i]; the complex square re^2 - im^2 + 2 j re im of complex elements.
  ///@{
  static void Sqr(VecReal32 &dst, const VecReal32 &src);
  static void Sqr(VecReal64 &dst, const VecReal64 &src);
  static void Sqr(VecCplx32 &dst, const VecCplx32 &src);
  static void Sqr(VecCplx64 &dst, const VecCplx64 &src);
  static void Sqr(VecReal32 &vec);
  static void Sqr(VecReal64 &vec);
  static void Sqr(VecCplx32 &vec);
  static void Sqr(VecCplx64 &vec);
  static double Sqr(double x);
  ///@}

  /// dst[i] = the square root of src[i], correctly rounded for reals; not-a-number for a negative. Of complex
  /// elements the principal root, its real part not negative, to 4 units in the last place of each part.
  ///@{
  static void Sqrt(VecReal32 &dst, const VecReal32 &src);
  static void Sqrt(VecReal64 &dst, const VecReal64 &src);
  static void Sqrt(VecCplx32 &dst, const VecCplx32 &src);
  static void Sqrt(VecCplx64 &dst, const VecCplx64 &src);
  static void Sqrt(VecReal32 &vec);
  static void Sqrt(VecReal64 &vec);
  static void Sqrt(VecCplx32 &vec);
  static void Sqrt(VecCplx64 &vec);
  static double Sqrt(double x);
  ///@}

  /// Each value becomes the nearest integral value, halves away from zero: 2.5 gives 3, -2.5 gives -3. Of
  /// complex elements both parts are rounded; the raw forms round x[0] to x[n - 1], and nothing for n
  /// below 1.
  ///@{
  static void Round(VecReal32 &vec);
  static void Round(VecReal64 &vec);
  static void Round(VecCplx32 &vec);
  static void Round(VecCplx64 &vec);
  static void Round(float *x, int n);
  static void Round(double *x, int n);
  static float Round(float x);
  static double Round(double x);
  ///@}

  /// Each value becomes the integral value next to it toward zero. Forms as of Round.
  ///@{
  static void Trunc(VecReal32 &vec);
  static void Trunc(VecReal64 &vec);
  static void Trunc(VecCplx32 &vec);
  static void Trunc(VecCplx64 &vec);
  static void Trunc(float *x, int n);
  static void Trunc(double *x, int n);
  static float Trunc(float x);
  static double Trunc(double x);
  ///@}

  /// Each value becomes the largest integral value not above it. Forms as of Round.
  ///@{
  static void Floor(VecReal32 &vec);
  static void Floor(VecReal64 &vec);
  static void Floor(VecCplx32 &vec);
  static void Floor(VecCplx64 &vec);
  static void Floor(float *x, int n);
  static void Floor(double *x, int n);
  static float Floor(float x);
  static double Floor(double x);
  ///@}

  /// Each value becomes the smallest integral value not below it. Forms as of Round.
  ///@{
  static void Ceil(VecReal32 &vec);
  static void Ceil(VecReal64 &vec);
  static void Ceil(VecCplx32 &vec);
  static void Ceil(VecCplx64 &vec);
  static void Ceil(float *x, int n);
  static void Ceil(double *x, int n);
  static float Ceil(float x);
  static double Ceil(double x);
  ///@}

  /// dst[i] = the cosine of src[i].
  ///@{
  static void Cos(VecReal32 &dst, const VecReal32 &src);
  static void Cos(VecReal64 &dst, const VecReal64 &src);
  static double Cos(double x);
  ///@}

  /// dst[i] = cos(i * step + start) for 0 <= i < n, dst given the length n. The float form rounds step and
  /// start to float first, and the argument at each of its two steps: far from 0 it is coarse.
  ///@{
  static void Cos(VecReal32 &dst, int n, double step, double start);
  static void Cos(VecReal64 &dst, int n, double step, double start);
  ///@}

  /// dst[i] = the sine of src[i].
  ///@{
  static void Sin(VecReal32 &dst, const VecReal32 &src);
  static void Sin(VecReal64 &dst, const VecReal64 &src);
  static double Sin(double x);
  ///@}

  /// dst[i] = sin(i * step + start) for 0 <= i < n, as this form of Cos.
  ///@{
  static void Sin(VecReal32 &dst, int n, double step, double start);
  static void Sin(VecReal64 &dst, int n, double step, double start);
  ///@}

  /// dst[i] = the arctangent of src[i], -pi / 2 to pi / 2.
  ///@{
  static void Atan(VecReal32 &dst, const VecReal32 &src);
  static void Atan(VecReal64 &dst, const VecReal64 &src);
  static double Atan(double x);
  ///@}

  /// dst[i] = the angle of the point (x[i], y[i]), -pi to pi. The ordinate comes first and gives the length.
  ///@{
  static void Atan2(VecReal32 &dst, const VecReal32 &y, const VecReal32 &x);
  static void Atan2(VecReal64 &dst, const VecReal64 &y, const VecReal64 &x);
  static double Atan2(double y, double x);
  ///@}

  /// The unit phasor dst[i] = cos(phase[i]) + j sin(phase[i]).
  ///@{
  static void Expj(VecCplx32 &dst, const VecReal32 &phase);
  static void Expj(VecCplx64 &dst, const VecReal64 &phase);
  static Cplx32 Expj(float phase);
  static Cplx64 Expj(double phase);
  ///@}

  /// A tone of magnitude 1: dst[i] = exp(j (2 pi freq i + phase)) for 0 <= i < n, dst given the length n;
  /// freq in cycles per sample, phase in radians. The phase of each element is computed in the element's
  /// precision: a long float tone drifts, see Expj_EP. Allocates a scratch ramp of n reals.
  ///@{
  static void Expj(VecCplx32 &dst, int n, float freq, float phase);
  static void Expj(VecCplx64 &dst, int n, double freq, double phase);
  ///@}

  /// The same tone in float with extended precision: made in double, each finished value rounded to float.
  /// Allocates the double tone besides.
  static void Expj_EP(VecCplx32 &dst, int n, double freq, double phase);

  /// dst[i] = src[i] ^ exponent. A negative base has a power for whole exponents only, and else gives
  /// not-a-number; anything to the power 0, and 1 to any power, is 1.
  ///@{
  static void Pow(VecReal32 &dst, const VecReal32 &src, float exponent);
  static void Pow(VecReal64 &dst, const VecReal64 &src, double exponent);
  static void Pow(VecReal32 &vec, float exponent);
  static void Pow(VecReal64 &vec, double exponent);
  static double Pow(double x, double y);
  ///@}

  /// dst[i] = e ^ src[i]. In double a single value, a scalar or a vector of one element, never underflows:
  /// the smallest normal double, 2.2250738585072014e-308, stands in place of a denormal or 0, so that it can
  /// be divided by. Only e ^ -infinity is 0. Longer vectors keep what underflow leaves.
  ///@{
  static void Exp(VecReal32 &dst, const VecReal32 &src);
  static void Exp(VecReal64 &dst, const VecReal64 &src);
  static void Exp(VecReal32 &vec);
  static void Exp(VecReal64 &vec);
  static float Exp(float x);
  static double Exp(double x);
  ///@}

  /// dst[i] = 10 ^ src[i].
  ///@{
  static void Pow10(VecReal32 &dst, const VecReal32 &src);
  static void Pow10(VecReal64 &dst, const VecReal64 &src);
  static void Pow10(VecReal32 &vec);
  static void Pow10(VecReal64 &vec);
  static double Pow10(double x);
  ///@}

  /// dst[i] = the base-10 (Log10) or natural (Ln) logarithm of src[i]; with Log0Check that of
  /// src[i] + kLogZeroOffset, the sum rounded to the element type: then a zero gives -40.00000234080515
  /// (-92.10340910966488) and any element that is not tiny its own logarithm. A negative element gives
  /// not-a-number in either case; only the scalar form replaces it.
  ///@{
  static void Log10(VecReal32 &dst, const VecReal32 &src, Log0CheckType check = Log0NoCheck);
  static void Log10(VecReal64 &dst, const VecReal64 &src, Log0CheckType check = Log0NoCheck);
  static void Log10(VecReal32 &vec, Log0CheckType check = Log0NoCheck);
  static void Log10(VecReal64 &vec, Log0CheckType check = Log0NoCheck);
  static void Ln(VecReal32 &dst, const VecReal32 &src, Log0CheckType check = Log0NoCheck);
  static void Ln(VecReal64 &dst, const VecReal64 &src, Log0CheckType check = Log0NoCheck);
  static void Ln(VecReal32 &vec, Log0CheckType check = Log0NoCheck);
  static void Ln(VecReal64 &vec, Log0CheckType check = Log0NoCheck);
  ///@}

  /// The guarded logarithm: kLogNegativeResult for x below 0, that of kLogZeroOffset for a zero of either
  /// sign, else that of x. Not-a-number passes through.
  ///@{
  static double Log10(double x);
  static double Ln(double x);
  ///@}

  // Integer helpers.

  /// The square root of x, rounded down; 0 for a negative x.
  static int SqrtInteger(int x);

  /// The base-2 logarithm of x, rounded down; 0 for x below 2.
  static int Log2Integer(int x);

  /// 2 ^ k. In 32 bits k counts modulo 32; in 64 bits a k outside 0 to 63 gives 0. The highest bit makes the
  /// result negative.
  ///@{
  static int Pow2Integer(int k);
  static long long Pow2Integer(long long k);
  ///@}

  /// The least power of two not below x: 1 for x below 2, and 0 above 2^30 (2^62), where the type has none.
  ///@{
  static int GetPowerOfTwoInteger_GTorEQ(int x);
  static long long GetPowerOfTwoInteger_GTorEQ(long long x);
  ///@}

  /// The greatest power of two not above x; 1 for x below 2.
  static int GetPowerOfTwoInteger_LTorEQ(int x);

  /// True if x is 1, 2, 4, ... 2^30.
  static bool IsExactPowerOfTwoInteger(int x);

  // Special functions.

  /// dst[i] = the error function of src[i], 2 / sqrt(pi) times the integral of exp(-t^2) from 0 to src[i].
  ///@{
  static void Erf(VecReal32 &dst, const VecReal32 &src);
  static void Erf(VecReal64 &dst, const VecReal64 &src);
  static float Erf(float x);
  static double Erf(double x);
  ///@}

  /// The Bessel function of x of the first (J) or second (Y) kind and an integer order. They are those of the
  /// C library, and so is their precision. The second kind is minus infinity at 0 and not-a-number below.
  ///@{
  static double BesselFirstKind(int order, double x);
  static double BesselSecondKind(int order, double x);
  ///@}

  /// dst[i] = the same of x[i].
  ///@{
  static void BesselFirstKind(VecReal64 &dst, int order, const VecReal64 &x);
  static void BesselSecondKind(VecReal64 &dst, int order, const VecReal64 &x);
  ///@}

  // Vectors.

  /// First differences: dst[i] = src[i + 1] - src[i] for 0 <= i < N - 1, N being the length of src. dst is
  /// left as a view that begins one element behind the start of its storage, until its next Resize. dst must
  /// not be src; it is empty if src is.
  ///@{
  static void Diff(VecReal32 &dst, const VecReal32 &src);
  static void Diff(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dst[i] = b[i] if b[i] > a[i] (MaxVectorPairs) or a[i] > b[i] (MinVectorPairs), else a[i], over the
  /// length of a. So where one of the two is not a number, a[i] is taken.
  ///@{
  static void MaxVectorPairs(VecReal32 &dst, const VecReal32 &a, const VecReal32 &b);
  static void MaxVectorPairs(VecReal64 &dst, const VecReal64 &a, const VecReal64 &b);
  static void MinVectorPairs(VecReal32 &dst, const VecReal32 &a, const VecReal32 &b);
  static void MinVectorPairs(VecReal64 &dst, const VecReal64 &a, const VecReal64 &b);
  ///@}

  // Matrices. Elements are taken as they lie in the block, row by row, whatever the row table holds.
  // Dimensions that must agree are asserted by a build with QORN_CHECKED only.

  /// The sum of a row, in float and in the order of its columns.
  static float SumRow(const MatReal32 &m, int row);

  /// The sum of a column, in float and in the order of its rows.
  static float SumCol(const MatReal32 &m, int col);

  /// dst = the inverse of src, by TargetLib::Invert_m_32f or Invert_m_64f: elimination with pivoting after
  /// scaling by powers of two. dst is resized to the shape of src, and may be src. Allocates scratch of
  /// n (n + 1) elements, n being the number of rows. Throws QORNException 12004 if src is singular or as good
  /// as singular, not finite, empty, has more rows than columns, or if there is no memory for the scratch;
  /// dst then has its new shape and undefined elements. Of a src with more columns than rows the first n^2
  /// elements of the block are inverted.
  ///@{
  static void Inv(MatReal32 &dst, const MatReal32 &src);
  static void Inv(MatReal64 &dst, const MatReal64 &src);
  ///@}

  /// dst[r] = the sum of a[r][k] * x[k] over k, by TargetLib::DotProd_32f or DotProd_64f, dst resized to the
  /// rows of a. x must have as many elements as a has columns, and dst must not be x.
  ///@{
  static void Mul(VecReal32 &dst, const MatReal32 &a, const VecReal32 &x);
  static void Mul(VecReal64 &dst, const MatReal64 &a, const VecReal64 &x);
  ///@}

  /// dst[i][j] = the sum of a[i][k] * b[k][j] over rising k, dst resized to the rows of a and the columns of
  /// b. Each product is rounded to the element type; the sum is formed in double and rounded to the element
  /// type in the end. b must have as many rows as a has columns, and dst must be neither of them.
  ///@{
  static void Mul(MatReal32 &dst, const MatReal32 &a, const MatReal32 &b);
  static void Mul(MatReal64 &dst, const MatReal64 &a, const MatReal64 &b);
  ///@}

  /// dst[c][r] = src[r][c], dst resized to the columns by the rows of src. dst must not be src.
  ///@{
  static void Trns(MatReal32 &dst, const MatReal32 &src);
  static void Trns(MatReal64 &dst, const MatReal64 &src);
  ///@}

  /// dst = the identity, resized to n by n.
  ///@{
  static void Eye(MatReal32 &dst, int n);
  static void Eye(MatReal64 &dst, int n);
  ///@}

  /// A printed self-check of Inv for n = 2 to 6: the matrix n - |r - c|, its inverse, their product, the sum
  /// of the product's differences from the identity, and the time of 10000 inversions. Goes to the file, or
  /// to the standard output if path is null; does nothing if the file cannot be opened.
  static void MatrixInverseTimingTest(const char *path);
};

} // namespace QORN

#endif
