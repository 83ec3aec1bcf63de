// The arctangent of a number and of a point.
#ifndef QORN_SRC_INFRA_KERNELS_ARCTANGENT_H
#define QORN_SRC_INFRA_KERNELS_ARCTANGENT_H

#include "ElementaryBasics.h"
#include "ElementaryCoefficients.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

/// atan(num / den) for 0 <= num <= den is atan(c) + atan(t), t = (num - c den) / (den + c num), with c = 0,
/// 1/2 or 1, whichever leaves |t| below 7/16. The numerator is exact.
struct Octant {
  double num, den; ///< of t
  Pair centre;     ///< atan(c)
};

QORN_INLINE Octant ChooseCentre(double num, double den) {
  const bool middle = num > 0.4375 * den, upper = num > 0.6875 * den;
  const double c = upper ? 1.0 : middle ? 0.5 : 0.0;
  return {num - c * den,
          den + c * num,
          {upper    ? 0.5 * kHalfPiHigh
           : middle ? kAtanHalfHigh
                    : 0.0,
           upper    ? 0.5 * kHalfPiLow
           : middle ? kAtanHalfLow
                    : 0.0}};
}

/// centre + atan(t + low) as a pair.
QORN_INLINE Pair AroundCentre(const Pair &centre, double t, double low) {
  const double u = t * t;
  const double small = t + MulAdd(t * u, Polynomial(u, kAtan64), low + centre.low);
  const double sum = centre.high + small;
  return {sum, (centre.high - sum) + small};
}

/// base + a, or base - a if away.
QORN_INLINE double FromBase(const Pair &base, const Pair &a, bool away) {
  const double high = away ? -a.high : a.high, low = away ? -a.low : a.low;
  const double sum = base.high + high;
  return sum + (((base.high - sum) + high) + (base.low + low));
}

struct Atan64 {
  QORN_INLINE static double Fast(double x) {
    const double size = Magnitude(x) > 0x1p60 ? 0x1p60 : Magnitude(x); // from 2^54 on the angle is pi/2
    const bool inverted = size > 1;
    const Octant o = ChooseCentre(inverted ? 1.0 : size, inverted ? size : 1.0);
    const Pair a = AroundCentre(o.centre, o.num / o.den, 0.0);
    const double angle = FromBase({inverted ? kHalfPiHigh : 0.0, inverted ? kHalfPiLow : 0.0}, a, inverted);
    return WithSignOf(angle, x);
  }
};

/// What atan2 adds the octant's angle to: 0, pi/2 or pi, by which of the two is longer and by the sign of x.
struct Quadrant {
  Pair base;
  bool away;
};

QORN_INLINE Quadrant ChooseQuadrant(double sizeY, double sizeX, double signX) {
  const bool steep = sizeY > sizeX, left = signX < 0;
  return {{steep  ? kHalfPiHigh
           : left ? 2 * kHalfPiHigh
                  : 0.0,
           steep  ? kHalfPiLow
           : left ? 2 * kHalfPiLow
                  : 0.0},
          steep != left};
}

struct Atan2_64 {
  /// The extra steps make up for the rounding of the quotient, which is all that there is to the result near
  /// the axis. The limits keep what they compute with from under- and overflow.
  QORN_INLINE static double Fast(double y, double x, bool &served) {
    const double sizeY = Magnitude(y), sizeX = Magnitude(x);
    const bool steep = sizeY > sizeX;
    const double num = steep ? sizeX : sizeY, den = steep ? sizeY : sizeX;
    const double angle = Angle(num, den, ChooseQuadrant(sizeY, sizeX, WithSignOf(1.0, x)));
    served = Both(Both(den > 0x1p-900, den < 0x1p900), Either(num > 0x1p-960, num == 0));
    return WithSignOf(angle, y);
  }

  static double Full(double y, double x) {
    if (x != x || y != y) return kNaN;
    double sizeY = Magnitude(y), sizeX = Magnitude(x);
    const Quadrant quadrant = ChooseQuadrant(sizeY, sizeX, WithSignOf(1.0, x));
    double num = sizeY > sizeX ? sizeX : sizeY, den = sizeY > sizeX ? sizeY : sizeX;
    if (num == den && (num == 0 || num == kInfinity)) {
      num = num == 0 ? 0.0 : 1.0;
      den = 1.0;
    }
    double angle;
    if (num == 0 || num < den * 0x1p-60) {
      // atan(t) = t to far beyond the last place; a denormal quotient is rounded once, by the division.
      angle = FromBase(quadrant.base, {num / den, 0.0}, quadrant.away);
    } else {
      const double scale = den > 1 ? 0x1p-600 : 0x1p600;
      angle = Angle(num * scale, den * scale, quadrant);
    }
    return WithSignOf(angle, y);
  }

private:
  QORN_INLINE static double Angle(double num, double den, const Quadrant &quadrant) {
    const Octant o = ChooseCentre(num, den);
    const double inverse = 1 / o.den;
    const double t = o.num * inverse;
    const double product = t * o.den;
    const double low = ((o.num - product) - ProductError(t, o.den, product)) * inverse;
    return FromBase(quadrant.base, AroundCentre(o.centre, t, low), quadrant.away);
  }
};

// Float arguments, in double arithmetic: one polynomial serves |t| <= 1.

QORN_INLINE double AtanForFloat(double t) {
  const double u = t * t;
  return MulAdd(t * u, Polynomial(u, kAtan32), t);
}

struct Atan32 {
  QORN_INLINE static float Fast(float argument) {
    const double x = static_cast<double>(argument), size = Magnitude(x);
    const bool inverted = size > 1;
    const double a = AtanForFloat(inverted ? 1 / size : size);
    return static_cast<float>(WithSignOf(inverted ? kHalfPiHigh - a : a, x));
  }
};

struct Atan2_32 {
  QORN_INLINE static float Fast(float ordinate, float abscissa) {
    const double y = static_cast<double>(ordinate), x = static_cast<double>(abscissa);
    const double sizeY = Magnitude(y), sizeX = Magnitude(x);
    const bool steep = sizeY > sizeX;
    const double num = steep ? sizeX : sizeY, den = steep ? sizeY : sizeX;
    // 0 / 0 counts as 0 and infinity / infinity as 1.
    const double quotient = num / (den == 0 ? 1.0 : den);
    const double t = Both(num == den, den > 0) ? 1.0 : quotient;
    const Quadrant quadrant = ChooseQuadrant(sizeY, sizeX, WithSignOf(1.0, x));
    const double a = AtanForFloat(t);
    return static_cast<float>(WithSignOf(quadrant.base.high + (quadrant.away ? -a : a), y));
  }
};

/// The angle of a complex value.
struct Phase32 {
  QORN_INLINE static float Fast(Cplx32 x) { return Atan2_32::Fast(x.im, x.re); }
};
struct Phase64 {
  QORN_INLINE static double Fast(Cplx64 x, bool &served) { return Atan2_64::Fast(x.im, x.re, served); }
  static double Full(Cplx64 x) { return Atan2_64::Full(x.im, x.re); }
};

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
