#ifndef QORN_MATH_MATHUTILS_H
#define QORN_MATH_MATHUTILS_H

#include "qorn/Export.h"
#include "qorn/infra/Cplx.h"

namespace QORN {

class VecInt32;
class VecReal32;
class VecReal64;
class VecCplx32;
class VecCplx64;

/// Element-wise mathematics on vectors and scalars: static functions only.
///
/// The destination comes first and is given the source's length by Resize, so a kept destination allocates
/// nothing; an in-place form takes the vector alone and keeps its length. i runs over the whole source. The
/// destination of an out-of-place form may be the source itself. A scalar form runs the same kernel on one
/// value, so scalar and vector results agree bit for bit. Arguments are not checked; nothing is thrown except
/// 11001 by a destination that cannot grow. All functions are reentrant.
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

  /// dst[i] = 10 ^ src[i].
  ///@{
  static void Pow10(VecReal32 &dst, const VecReal32 &src);
  static void Pow10(VecReal64 &dst, const VecReal64 &src);
  static void Pow10(VecReal32 &vec);
  static void Pow10(VecReal64 &vec);
  static double Pow10(double x);
  ///@}

  /// dst[i] = log10(src[i]), with Log0Check log10(src[i] + kLogZeroOffset), the sum rounded to the element
  /// type: then a zero gives -40.00000234080515 and any element that is not tiny its own logarithm. A
  /// negative element gives not-a-number in either case; only the scalar form replaces it.
  ///@{
  static void Log10(VecReal32 &dst, const VecReal32 &src, Log0CheckType check = Log0NoCheck);
  static void Log10(VecReal64 &dst, const VecReal64 &src, Log0CheckType check = Log0NoCheck);
  static void Log10(VecReal32 &vec, Log0CheckType check = Log0NoCheck);
  static void Log10(VecReal64 &vec, Log0CheckType check = Log0NoCheck);
  ///@}

  /// The guarded logarithm: kLogNegativeResult for x below 0, log10(kLogZeroOffset) for a zero of either
  /// sign, else log10(x). Not-a-number passes through.
  static double Log10(double x);
};

} // namespace QORN

#endif
