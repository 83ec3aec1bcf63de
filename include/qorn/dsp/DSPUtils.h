#ifndef QORN_DSP_DSPUTILS_H
#define QORN_DSP_DSPUTILS_H

#include "qorn/Export.h"

namespace QORN {

class VecInt32;
class VecReal32;
class VecReal64;
class VecCplx32;
class VecCplx64;

/// Everyday signal work on vectors: static functions only.
///
/// The destination comes first and is given its length by Resize, so a kept destination allocates nothing.
/// Arguments are not checked; nothing is thrown except 11001 by a vector that cannot grow. All functions are
/// reentrant.
class QORN_API DSPUtils {
public:
  /// Puts the zero frequency of a transform in the middle: with n elements and first = n / 2 rounded up, dst
  /// = src[first] to src[n - 1], followed by src[0] to src[first - 1]; so src[0] lands at n / 2 rounded down.
  /// {0, 1, 2, 3} gives {2, 3, 0, 1}; {0, 1, 2, 3, 4} gives {3, 4, 0, 1, 2}. Shifting an odd length twice
  /// does not restore it. dst may be src. The in-place form costs a temporary copy.
  ///@{
  static void FFTShift(VecReal32 &dst, const VecReal32 &src);
  static void FFTShift(VecReal64 &dst, const VecReal64 &src);
  static void FFTShift(VecCplx32 &dst, const VecCplx32 &src);
  static void FFTShift(VecCplx64 &dst, const VecCplx64 &src);
  static void FFTShift(VecInt32 &dst, const VecInt32 &src);
  static void FFTShift(VecReal32 &vec);
  static void FFTShift(VecReal64 &vec);
  static void FFTShift(VecCplx32 &vec);
  static void FFTShift(VecCplx64 &vec);
  ///@}

  /// mag[i] = |src[i]|, phase[i] = atan2(im, re) of src[i] in radians, -pi to pi. mag and phase must be two
  /// vectors.
  static void CartToPolar(VecReal32 &mag, VecReal32 &phase, const VecCplx32 &src);

  /// dst[i] = (mag[i] cos phase[i], mag[i] sin phase[i]), phase in radians. dst gets the length of mag; phase
  /// must be as long.
  static void PolarToCart(VecCplx32 &dst, const VecReal32 &mag, const VecReal32 &phase);
};

} // namespace QORN

#endif
