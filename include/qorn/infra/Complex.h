#ifndef QORN_INFRA_COMPLEX_H
#define QORN_INFRA_COMPLEX_H

#include "qorn/Export.h"
#include "qorn/infra/Cplx.h"

namespace QORN {

/// Scalar arithmetic on Cplx32 and Cplx64: static functions only.
///
/// Nothing is checked and nothing throws: a result that does not exist is not-a-number, one that is too large
/// is infinity. Every step is rounded to the argument's own precision unless told otherwise, so that a scalar
/// result is bit for bit that of the array kernels. All functions are pure.
class QORN_API Complex {
public:
  /// The pair (re, im).
  static QORN::Cplx32 Cplx(float re, float im) { return {re, im}; }
  static QORN::Cplx64 Cplx(double re, double im) { return {re, im}; }

  /// The unit phasor (cos angle, sin angle), angle in radians. This does not make a complex number of a real
  /// one: that is Cplx(re, 0). The float form takes sine and cosine in double and rounds each once.
  static QORN::Cplx32 Cplx(float angle);
  static QORN::Cplx64 Cplx(double angle);

  /// x with both parts widened; exact.
  static QORN::Cplx64 ToCplx64(QORN::Cplx32 x) {
    return {static_cast<double>(x.re), static_cast<double>(x.im)};
  }

  /// x with each part rounded to float.
  static QORN::Cplx32 ToCplx32(QORN::Cplx64 x) {
    return {static_cast<float>(x.re), static_cast<float>(x.im)};
  }

  /// (re, -im): the sign bit of im is inverted, so a zero becomes a negative zero.
  static QORN::Cplx32 Conj(const QORN::Cplx32 &x) { return {x.re, -x.im}; }
  static QORN::Cplx64 Conj(const QORN::Cplx64 &x) { return {x.re, -x.im}; }

  /// a * conj(b). With c = -b.im: (a.re * b.re - a.im * c, a.im * b.re + a.re * c), each product rounded
  /// before the one subtraction or addition.
  static QORN::Cplx32 MulConj(const QORN::Cplx32 &a, const QORN::Cplx32 &b);
  static QORN::Cplx64 MulConj(const QORN::Cplx64 &a, const QORN::Cplx64 &b);

  /// sqrt(re^2 + im^2). The float form sums the squares in float, takes the root of the widened sum in double
  /// and rounds. The squares are not guarded against overflow.
  static float Mag(const QORN::Cplx32 &x);
  static double Mag(const QORN::Cplx64 &x);

  /// atan2(im, re) in radians, -pi to pi, 0 for (0, 0). The float form works in double and rounds once.
  static float Phase(const QORN::Cplx32 &x);
  static double Phase(const QORN::Cplx64 &x);

  /// re^2 + im^2.
  static float MagSqr(const QORN::Cplx32 &x);
  static double MagSqr(const QORN::Cplx64 &x);

  /// 1 / x: with d = im^2 + re^2, (re / d, -im / d). Both parts of 1 / (0, 0) are not-a-number.
  static QORN::Cplx32 Recip(const QORN::Cplx32 &x);
  static QORN::Cplx64 Recip(const QORN::Cplx64 &x);
};

} // namespace QORN

#endif
