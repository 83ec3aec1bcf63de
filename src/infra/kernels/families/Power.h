// x^y.
#ifndef QORN_SRC_INFRA_KERNELS_POWER_H
#define QORN_SRC_INFRA_KERNELS_POWER_H

#include "Exponential.h"
#include "Logarithm.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

constexpr std::uint64_t kPowStartBits = 0x3fe6a00000000000;

/// ln(x) + k ln 2 to about 67 bits for a positive normal x: the product with an exponent may reach 745, and
/// what it errs by is a relative error of the power.
QORN_INLINE Pair LogForPower(double x, double k) {
  const LogParts parts = SplitLog(x, kPowStartBits);
  const std::uint64_t row = (parts.bits >> 45) & 127;
  const double inverse = kPowInverse[row];
  // Exact: z is a multiple of 2^-53, the inverse has 8 bits behind the point, and the result is below 2^-7.
  double r;
  if constexpr (kFused) {
    r = MulAdd(parts.z, inverse, -1.0);
  } else {
    const double z1 = FromBits(Bits(parts.z) & (~std::uint64_t(0) << 27));
    r = (z1 * inverse - 1) + (parts.z - z1) * inverse;
  }
  k += parts.k;
  const double exponent = MulAdd(k, kLn2High, kPowLogHigh[row]); // exact
  const double sum = exponent + r;
  const double sumLost = (exponent - sum) + r;
  const double square = r * r;
  const double halfSquare = 0.5 * square;
  const double high = sum - halfSquare;
  const double highLost = (sum - high) - halfSquare;
  const double rest = MulAdd(k, kLn2Low, kPowLogLow[row]) - 0.5 * ProductError(r, r, square);
  const double low = ((rest + sumLost) + highLost) + square * r * Polynomial(r, kPowLog64);
  const double all = high + low;
  return {all, (high - all) + low};
}

/// |x|^y with the sign that belongs to x^y, or a not-a-number where a negative x has no such power; y below
/// 2^51 in magnitude.
QORN_INLINE double PowerSigned(double power, double x, double y) {
  const double shifted = y + kShifter;
  const double value = FromBits(Bits(power) ^ ((Bits(shifted) << 63) & Bits(x)));
  return Both(x < 0, shifted - kShifter != y) ? kNaN : value;
}

/// x^y where the rules of IEEE 754 (and Annex F of the C standard) name the value, and else the sign that
/// |x|^y must be given.
struct PowerCase {
  bool settled;
  double value;
};

inline PowerCase SettlePower(double x, double y) {
  if (y == 0 || x == 1) return {true, 1.0};
  if (x != x || y != y) return {true, kNaN};
  const double size = Magnitude(x), exponent = Magnitude(y);
  if (exponent == kInfinity) return {true, size == 1 ? 1.0 : (size > 1) == (y > 0) ? kInfinity : 0.0};
  // Every double from 2^53 on is an even number.
  const double half = 0.5 * exponent;
  const bool whole = exponent >= 0x1p52 || (exponent + 0x1p52) - 0x1p52 == exponent;
  const bool odd = exponent < 0x1p53 && whole && (half + 0x1p52) - 0x1p52 != half;
  const double sign = (Bits(x) & kSignBit) != 0 && odd ? -1.0 : 1.0;
  if (size == 0 || size == kInfinity) return {true, sign * ((size == 0) == (y > 0) ? 0.0 : kInfinity)};
  if (x < 0 && !whole) return {true, kNaN};
  return {false, sign};
}

struct Power64 {
  QORN_INLINE static double Fast(double x, double y, bool &served) {
    const double size = Magnitude(x);
    const Pair log = LogForPower(size, 0.0);
    const double high = y * log.high;
    const double low = MulAdd(y, log.low, ProductError(y, log.high, high));
    served = Both(Both(size >= kSmallestNormal, size < kInfinity),
                  Both(Magnitude(high) < 707, Magnitude(y) < 0x1p51));
    return PowerSigned(Scaled(SplitExp(high, low)), x, y);
  }
  static double Full(double x, double y) {
    const PowerCase c = SettlePower(x, y);
    if (c.settled) return c.value;
    const double size = Magnitude(x);
    const Pair log = size < kSmallestNormal ? LogForPower(size * 0x1p54, -54.0) : LogForPower(size, 0.0);
    const double high = y * log.high;
    if (!(Magnitude(high) < 800)) return c.value * (high > 0 ? kInfinity : 0.0);
    const double low = MulAdd(y, log.low, ProductError(y, log.high, high));
    return c.value * ScaledFully(high, low);
  }
};

struct Power32 {
  /// log2 of size^y, at most 200: beyond it, the float is infinite or zero in any case.
  QORN_INLINE static double Exponent(double size, double y) {
    const double t = y * LogForFloat(size, kPowLog32, kLog2e, 1.0);
    const double low = t < -200 ? -200 : t;
    return low > 200 ? 200 : low;
  }
  QORN_INLINE static double Core(double size, double y) { return Exp2ForFloat(Exponent(size, y)); }
  QORN_INLINE static float Fast(float base, float exponent, bool &served) {
    const double x = static_cast<double>(base), y = static_cast<double>(exponent);
    const float size = Magnitude(base);
    served = Both(Both(size > 0, size < __builtin_inff()), Magnitude(exponent) < 0x1p51F);
    return static_cast<float>(PowerSigned(Core(Magnitude(x), y), x, y));
  }
  static float Full(float base, float exponent) {
    const double x = static_cast<double>(base), y = static_cast<double>(exponent);
    const PowerCase c = SettlePower(x, y);
    return static_cast<float>(c.settled ? c.value : c.value * Core(Magnitude(x), y));
  }
};

/// x^y with one y for all elements.
template <class Power, class T> struct PowerBy {
  T exponent;
  QORN_INLINE T Fast(T x, bool &served) const { return Power::Fast(x, exponent, served); }
  T Full(T x) const { return Power::Full(x, exponent); }
};

/// 10^y: the general power, of which the compiler evaluates the logarithm once.
struct TenTo64 {
  QORN_INLINE static double Fast(double y, bool &served) { return Power64::Fast(10, y, served); }
  static double Full(double y) { return Power64::Full(10, y); }
};

struct TenTo32 {
  QORN_INLINE static double Begin(float y, double &scale, bool &) {
    const Exp2Parts t = SplitExp2(Power32::Exponent(10, static_cast<double>(y)));
    scale = t.scale;
    return t.fraction;
  }
  QORN_INLINE static float End(double fraction, double scale) {
    return static_cast<float>(Exp2ForFloat(Exp2Parts{fraction, scale}));
  }
  static float Full(float y) { return Power32::Full(10, y); }

#if defined(QORN_FLOAT_REGISTERS)
  // The same for magnitudes up to 60, with which nothing has to be limited.
  template <class T> QORN_INLINE static auto Rank(T x) { return Bits(x) & 0x7fffffffU; }
  static constexpr std::uint32_t Ranks() { return 0x42700000; }
  struct Begun {
    Doubles fraction, scale;
  };
  struct BegunHalves {
    Begun lower, upper;
  };
  QORN_INLINE static Begun BeginHalf(Doubles y) {
    constexpr double shifter = kShifter + 1023;
    const Doubles t = y * LogForFloat(10.0, kPowLog32, kLog2e, 1.0);
    const Doubles shifted = t + shifter;
    const auto scale = __builtin_bit_cast(Vec<std::uint64_t, kFloats / 2>, shifted) << 52;
    return {t - (shifted - shifter), __builtin_bit_cast(Doubles, scale)};
  }
  QORN_INLINE static Doubles EndHalf(const Begun &x) { return Polynomial(x.fraction, kExp2_32) * x.scale; }
  QORN_INLINE static BegunHalves BeginFloats(Floats y) {
    const Halves wide = Widened(y);
    return {BeginHalf(wide.lower), BeginHalf(wide.upper)};
  }
  QORN_INLINE static Floats EndFloats(const BegunHalves &x) {
    return Narrowed(EndHalf(x.lower), EndHalf(x.upper));
  }
#endif
};

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
