// e^x and its relatives.
#ifndef QORN_SRC_INFRA_KERNELS_EXPONENTIAL_H
#define QORN_SRC_INFRA_KERNELS_EXPONENTIAL_H

#include "ElementaryBasics.h"
#include "ElementaryCoefficients.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

/// e^x = (1 + fraction) * 2^n with 3/4 <= 1 + fraction <= 3/2: there the last place of the fraction is never
/// coarser than a quarter of that of the sum, so that one rounding dominates. shifted holds n in its low
/// bits.
struct ExpParts {
  double fraction, n, shifted;
};

/// The parts of e^(x + low), for |x| below about 1100 and low at most some rounding errors of x.
QORN_INLINE ExpParts SplitExp(double x, double low) {
  const double shifted = (x - kExpShift) * kLog2e + kShifter;
  const double n = shifted - kShifter;
  const double high = MulAdd(-n, kLn2High, x); // exact: ln 2 is cut so that the product is
  const double rest = MulAdd(n, kLn2Low, -low);
  const double r = high - rest;
  return {high + MulAdd(r * r, Polynomial(r, kExp64), -rest), n, shifted};
}

/// 2^n for a shifted n as above, n from -1022 to 1023.
QORN_INLINE double PowerOfTwo(double shifted) { return FromBits((Bits(shifted) + 1023) << 52); }

QORN_INLINE double Scaled(const ExpParts &parts) {
  const double scale = PowerOfTwo(parts.shifted);
  return MulAdd(scale, parts.fraction, scale);
}

/// e^(x + low) over the whole range, x not being a not-a-number: two scalings, of which only the last can
/// round, reach the denormals and infinity.
QORN_INLINE double ScaledFully(double x, double low) {
  x = x < -800 ? -800 : x > 800 ? 800 : x;
  const ExpParts parts = SplitExp(x, low);
  const double half = parts.n * 0.5 + kShifter;
  const double first = PowerOfTwo(half);
  const double second = PowerOfTwo(parts.n - (half - kShifter) + kShifter);
  return (1 + parts.fraction) * first * second;
}

struct Exp64 {
  QORN_INLINE static double Fast(double x, bool &served) {
    served = Magnitude(x) < 707;
    return Scaled(SplitExp(x, 0.0));
  }
  static double Full(double x) { return x != x ? x : ScaledFully(x, 0.0); }
};

/// 2^t = 2^fraction * scale, for |t| below 1000.
struct Exp2Parts {
  double fraction, scale;
};

QORN_INLINE Exp2Parts SplitExp2(double t) {
  constexpr double shifter = kShifter + 1023;
  const double shifted = t + shifter;
  return {t - (shifted - shifter), FromBits(Bits(shifted) << 52)};
}

/// 2^t to the precision of a float.
QORN_INLINE double Exp2ForFloat(const Exp2Parts &t) { return Polynomial(t.fraction, kExp2_32) * t.scale; }
QORN_INLINE double Exp2ForFloat(double t) { return Exp2ForFloat(SplitExp2(t)); }

struct Exp32 {
  QORN_INLINE static float Fast(float x) {
    const float y = static_cast<float>(Exp2ForFloat(static_cast<double>(x) * kLog2e));
    const float low = x < -150.0F ? 0.0F : y;
    return x > 150.0F ? __builtin_inff() : low;
  }

#if defined(QORN_FLOAT_REGISTERS)
  // 2^k T e^r with T from the table: T + T r exactly, and to it what is at most a hundredth of it. The first
  // difference is exact, since n is small and the product with it fused.
  // Magnitudes, up to 87: beyond it the scaling may round.
  template <class T> QORN_INLINE static auto Rank(T x) { return Bits(x) & 0x7fffffffU; }
  static constexpr std::uint32_t Ranks() { return 0x42ae0000; }
  QORN_INLINE static Floats InFloats(Floats x) {
    constexpr float shifter = 0x1.8p23F;
    const Floats shifted = MulAdd(x, Every(kExpSteps), Every(shifter));
    const Words index = Bits(shifted);
    const Floats n = shifted - shifter;
    const Floats high = NegMulAdd(n, Every(kExpStepHigh), x);
    const Floats low = NegMulAdd(n, Every(kExpStepLow), Choose(kExpPowerLost, index));
    const Floats power = Choose(kExpPower, index);
    const Floats r = high + low;
    const Floats rest = MulAdd(r * r, Polynomial(r, kExpRest32), low);
    const Floats sum = MulAdd(power, high, power);
    const Floats lost = MulAdd(power, high, power - sum);
    const Floats y = sum + MulAdd(power, rest, lost);
    return FromBits(Bits(y) + ((index & ~7U) << 20));
  }
#endif
};

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
