// Sine and cosine.
#ifndef QORN_SRC_INFRA_KERNELS_CIRCULAR_H
#define QORN_SRC_INFRA_KERNELS_CIRCULAR_H

#include "ElementaryBasics.h"
#include "ElementaryCoefficients.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

/// x = quadrant * pi/2 + (high + low), the rest being at most pi/4 in magnitude; the quadrant counts
/// modulo 4.
struct Reduced {
  double high, low;
  std::uint64_t quadrant;
};

/// Up to here n = x / (pi/2) has at most 19 bits, and its products with the short parts of pi/2 are exact.
constexpr double kCircularLimit = 0x1.8p19;

/// Cody and Waite's reduction. Every difference but the last is exact: its terms are multiples of one power
/// of two that is not too small. So the rest is good to 2^-118, and no double below the limit is closer to a
/// multiple of pi/2 than 2^-61. Fused, the first product may be as long as it likes.
QORN_INLINE Reduced Reduce(double x) {
  const double shifted = MulAdd(x, kTwoOverPi, kShifter);
  const double n = shifted - kShifter;
  if constexpr (kFused) {
    const double first = MulAdd(-n, kHalfPiHigh, x);
    const double second = n * kHalfPiMiddle;
    const double high = first - second;
    return {high, MulAdd(-n, kHalfPiLast, (first - high) - second), Bits(shifted)};
  } else {
    const double first = MulAdd(-n, kHalfPi1, x);
    const double second = n * kHalfPi2;
    const double sum = first - second;
    const double third = MulAdd(n, kHalfPi3, -((first - sum) - second));
    const double high = sum - third;
    return {high, MulAdd(-n, kHalfPi4, (sum - high) - third), Bits(shifted)};
  }
}

__extension__ typedef unsigned __int128 Wide;

/// The reduction of Payne and Hanek (SIGNUM Newsletter 18, 1983) for a finite x of at least 2^18: x is an
/// integer times a power of two, so the leading bits of 2/pi contribute whole turns and are skipped. The
/// product with the next 192 bits has at least 70 good ones behind any run of zeros that a double can cause.
inline Reduced ReduceHuge(double x) {
  const std::uint64_t bits = Bits(x);
  const int exponent = static_cast<int>(bits >> 52 & 2047) - 1075;
  const std::uint64_t mantissa = (bits & ((std::uint64_t(1) << 52) - 1)) | (std::uint64_t(1) << 52);

  // The window begins at the bit whose product with the power of two weighs 2; the quadrant stands in its
  // first two bits.
  const int start = 62 + exponent;
  const std::uint64_t *word = kTwoOverPiBits + start / 64;
  const int shift = start % 64;
  std::uint64_t window[3];
  for (int i = 0; i < 3; ++i)
    window[i] = shift == 0 ? word[i] : word[i] << shift | word[i + 1] >> (64 - shift);

  const Wide low = Wide(mantissa) * window[2];
  const Wide middle = Wide(mantissa) * window[1] + static_cast<std::uint64_t>(low >> 64);
  const std::uint64_t top = mantissa * window[0] + static_cast<std::uint64_t>(middle >> 64);
  const std::uint64_t mid = static_cast<std::uint64_t>(middle), end = static_cast<std::uint64_t>(low);

  // The fraction of a quadrant, in two's complement from -1/2 to 1/2, and then its magnitude.
  std::uint64_t f2 = top << 2 | mid >> 62, f1 = mid << 2 | end >> 62, f0 = end << 2;
  const bool negative = f2 >> 63 != 0;
  std::uint64_t quadrant = (top >> 62) + (negative ? 1 : 0);
  if (negative) {
    f0 = ~f0 + 1;
    f1 = ~f1 + (f0 == 0 ? 1 : 0);
    f2 = ~f2 + (f0 == 0 && f1 == 0 ? 1 : 0);
  }
  int zeros = 0;
  if (f2 == 0) {
    f2 = f1;
    f1 = f0;
    f0 = 0;
    zeros = 64;
  }
  const int leading = __builtin_clzll(f2 | 1);
  if (leading > 0) {
    f2 = f2 << leading | f1 >> (64 - leading);
    f1 = f1 << leading | f0 >> (64 - leading);
  }
  const double unit = FromBits(static_cast<std::uint64_t>(1023 - 53 - zeros - leading) << 52);
  const double a = static_cast<double>(f2 >> 11) * unit;
  const double b = static_cast<double>((f2 << 53 | f1 >> 11) >> 1) * (unit * 0x1p-63);

  const double product = a * kHalfPiHigh;
  const double rest = ProductError(a, kHalfPiHigh, product) + (a * kHalfPiLow + b * kHalfPiHigh);
  double high = product + rest;
  double rounded = (product - high) + rest;
  if (negative != (x < 0)) {
    high = -high;
    rounded = -rounded;
  }
  return {high, rounded, x < 0 ? 0 - quadrant : quadrant};
}

QORN_INLINE double SineOf(double high, double low) {
  const double u = high * high;
  return high + MulAdd(high * u, Polynomial(u, kSin64), low * MulAdd(-0.5, u, 1.0));
}

QORN_INLINE double CosineOf(double high, double low) {
  const double u = high * high;
  const double half = 0.5 * u;
  const double sum = 1 - half;
  return sum + (((1 - sum) - half) + MulAdd(u * u, Polynomial(u, kCos64), -high * low));
}

/// The sine, the cosine or their negatives, as the quadrant says.
QORN_INLINE double Turned(double sine, double cosine, std::uint64_t quadrant) {
  const std::uint64_t swap = 0 - (quadrant & 1);
  return FromBits(((Bits(cosine) & swap) | (Bits(sine) & ~swap)) ^ (quadrant >> 1) << 63);
}

QORN_INLINE Cplx64 PhasorOf(const Reduced &r) {
  const double sine = SineOf(r.high, r.low), cosine = CosineOf(r.high, r.low);
  return {Turned(sine, cosine, r.quadrant + 1), Turned(sine, cosine, r.quadrant)};
}

struct Phasor64 {
  QORN_INLINE static Cplx64 Fast(double x, bool &served) {
    served = Magnitude(x) < kCircularLimit;
    const Cplx64 y = PhasorOf(Reduce(x));
    return {y.re, x == 0 ? x : y.im}; // the last sum loses the sign of a zero
  }
  static Cplx64 Full(double x) {
    if (!(Magnitude(x) < kInfinity)) return {kNaN, kNaN};
    return PhasorOf(ReduceHuge(x));
  }
};

struct Sin64 {
  QORN_INLINE static double Fast(double x, bool &served) { return Phasor64::Fast(x, served).im; }
  static double Full(double x) { return Phasor64::Full(x).im; }
};

struct Cos64 {
  QORN_INLINE static double Fast(double x, bool &served) { return Phasor64::Fast(x, served).re; }
  static double Full(double x) { return Phasor64::Full(x).re; }
};

// Float arguments, in double arithmetic.

constexpr float kCircularLimit32 = 0x1.8p19F;

/// x - n pi/2, n being the nearest integer or so, which the low bits of shifted hold.
QORN_INLINE double AngleOf(double x, double &shifted) {
  shifted = MulAdd(x, kTwoOverPi, kShifter);
  const double n = shifted - kShifter;
  return MulAdd(-n, kHalfPiRest, MulAdd(-n, kHalfPiFirst, x));
}

struct PhasorParts {
  double sine, cosine;
};

QORN_INLINE PhasorParts PartsForFloat(double r) {
  const double u = r * r;
  return {r * MulAdd(u, Polynomial(u, kSin32), 1.0), MulAdd(u, Polynomial(u, kCos32), 1.0)};
}

/// The sine of an angle and a number of quarter turns, which the low bits of n hold.
QORN_INLINE double SineForFloat(double r, std::uint64_t n) {
  const PhasorParts parts = PartsForFloat(r);
  return Turned(parts.sine, parts.cosine, n);
}

#if defined(QORN_FLOAT_REGISTERS)
// The same in registers.

/// x = quadrant * pi/2 + angle, the quadrant modulo 4 in the low bits of n in a float above 2^23.
struct FloatAngle {
  Halves angle;
  Words quadrant;
};

QORN_INLINE FloatAngle ReduceFloats(Floats x) {
  constexpr float shifter = 0x1.8p23F;
  const Floats shifted = MulAdd(x, Every(kTwoOverPi32), Every(shifter));
  const Floats n = shifted - shifter;
  // Exact: both terms are multiples of 2^-24, or n is 0, and the difference is below 1.
  const Halves rest = Widened(NegMulAdd(n, Every(kHalfPi32), x)), turns = Widened(n);
  const Doubles lost = Broadcast<Doubles>(kHalfPi32Lost);
  return {{NegMulAdd(turns.lower, lost, rest.lower), NegMulAdd(turns.upper, lost, rest.upper)},
          Bits(shifted)};
}

// Which halves' lanes are odd, and choices by that.
#if defined(__AVX512F__)
using OddLanes = __mmask16;
QORN_INLINE OddLanes OddOf(Words x) {
  return _mm512_test_epi32_mask(__builtin_bit_cast(__m512i, x), _mm512_set1_epi32(1));
}
QORN_INLINE Floats OddOr(OddLanes odd, Floats a, Floats b) { return _mm512_mask_blend_ps(odd, b, a); }
template <int Upper> QORN_INLINE Doubles OddOr(OddLanes odd, Doubles a, Doubles b) {
  return _mm512_mask_blend_pd(static_cast<__mmask8>(odd >> 8 * Upper), b, a);
}
template <int Upper> QORN_INLINE Doubles OddOr(OddLanes odd, double a, double b) {
  return OddOr<Upper>(odd, Broadcast<Doubles>(a), Broadcast<Doubles>(b));
}
#else
struct OddLanes {
  __m256 floats;
  __m256d doubles[2];
};
QORN_INLINE OddLanes OddOf(Words x) {
  const __m256i odd = __builtin_bit_cast(__m256i, __builtin_bit_cast(Ints, x << 31) >> 31);
  return {_mm256_castsi256_ps(odd),
          {_mm256_castsi256_pd(_mm256_cvtepi32_epi64(_mm256_castsi256_si128(odd))),
           _mm256_castsi256_pd(_mm256_cvtepi32_epi64(_mm256_extracti128_si256(odd, 1)))}};
}
QORN_INLINE Floats OddOr(const OddLanes &odd, Floats a, Floats b) {
  return _mm256_blendv_ps(b, a, odd.floats);
}
template <int Upper> QORN_INLINE Doubles OddOr(const OddLanes &odd, Doubles a, Doubles b) {
  return _mm256_blendv_pd(b, a, odd.doubles[Upper]);
}
// Constants by a permutation: blends take the units that products need.
template <int Upper> QORN_INLINE Doubles OddOr(const OddLanes &odd, double a, double b) {
  return _mm256_permutevar_pd(_mm256_setr_pd(b, a, b, a), _mm256_castpd_si256(odd.doubles[Upper]));
}
#endif

/// The cosine of the lanes that are odd, the sine of the others.
template <int Upper> QORN_INLINE Doubles SineOrCosine(const OddLanes &odd, Doubles r) {
  const Doubles u = r * r;
  Doubles p = OddOr<Upper>(odd, kCos32[3], kSin32[3]);
  Unroll<3>([&](auto i) { p = MulAdd(u, p, OddOr<Upper>(odd, kCos32[2 - i], kSin32[2 - i])); });
  return OddOr<Upper>(odd, Broadcast<Doubles>(1.0), r) * MulAdd(u, p, Broadcast<Doubles>(1.0));
}

QORN_INLINE Floats SineOf(const Halves &angle, Words quadrant) {
  const OddLanes odd = OddOf(quadrant);
  const Floats y = Narrowed(SineOrCosine<0>(odd, angle.lower), SineOrCosine<1>(odd, angle.upper));
  return FromBits(Bits(y) ^ (quadrant << 30 & 0x80000000U));
}

QORN_INLINE ComplexFloats PhasorOf(const Halves &angle, Words quadrant) {
  const auto one = Broadcast<Doubles>(1.0);
  const auto factor = [&](Doubles r, const double(&c)[4]) {
    const Doubles u = r * r;
    return MulAdd(u, Polynomial(u, c), one);
  };
  const Floats cosine = Narrowed(factor(angle.lower, kCos32), factor(angle.upper, kCos32));
  const Floats sine =
      Narrowed(angle.lower * factor(angle.lower, kSin32), angle.upper * factor(angle.upper, kSin32));
  const OddLanes odd = OddOf(quadrant);
  return {FromBits(Bits(OddOr(odd, sine, cosine)) ^ ((quadrant + 1) << 30 & 0x80000000U)),
          FromBits(Bits(OddOr(odd, cosine, sine)) ^ (quadrant << 30 & 0x80000000U))};
}

struct NotHuge {
  template <class T> QORN_INLINE static auto Rank(T x) { return Bits(x) & 0x7fffffffU; }
  static constexpr std::uint32_t Ranks() { return __builtin_bit_cast(std::uint32_t, kCircularLimit32); }
};
#else
struct NotHuge {};
#endif

/// The sine of x and a number of quarter turns.
template <int Turns> struct Circular32 : NotHuge {
  QORN_INLINE static double Begin(float x, double &shifted, bool &served) {
    served = Magnitude(x) < kCircularLimit32;
    return AngleOf(static_cast<double>(x), shifted);
  }
  QORN_INLINE static float End(double angle, double shifted) {
    return static_cast<float>(SineForFloat(angle, Bits(shifted) + Turns));
  }
  static float Full(float x) {
    const Cplx64 phasor = Phasor64::Full(static_cast<double>(x));
    return static_cast<float>(Turns == 0 ? phasor.im : phasor.re);
  }
#if defined(QORN_FLOAT_REGISTERS)
  QORN_INLINE static FloatAngle BeginFloats(Floats x) { return ReduceFloats(x); }
  QORN_INLINE static Floats EndFloats(const FloatAngle &x) { return SineOf(x.angle, x.quadrant + Turns); }
#endif
};
using Sin32 = Circular32<0>;
using Cos32 = Circular32<1>;

struct Phasor32 : NotHuge {
  QORN_INLINE static double Begin(float x, double &shifted, bool &served) {
    return Sin32::Begin(x, shifted, served);
  }
  QORN_INLINE static Cplx32 End(double angle, double shifted) {
    return {Cos32::End(angle, shifted), Sin32::End(angle, shifted)};
  }
  static Cplx32 Full(float x) { return {Cos32::Full(x), Sin32::Full(x)}; }
#if defined(QORN_FLOAT_REGISTERS)
  QORN_INLINE static FloatAngle BeginFloats(Floats x) { return ReduceFloats(x); }
  QORN_INLINE static ComplexFloats EndFloats(const FloatAngle &x) { return PhasorOf(x.angle, x.quadrant); }
#endif
};

/// A vector of given length and angle, rounded once.
struct Polar32 {
  QORN_INLINE static Cplx32 Times(float length, double cosine, double sine) {
    const double l = static_cast<double>(length);
    return {static_cast<float>(l * cosine), static_cast<float>(l * sine)};
  }
  QORN_INLINE static Cplx32 Fast(float length, float angle, bool &served) {
    served = Magnitude(angle) < kCircularLimit32;
    double shifted;
    const double r = AngleOf(static_cast<double>(angle), shifted);
    return Times(length, SineForFloat(r, Bits(shifted) + 1), SineForFloat(r, Bits(shifted)));
  }
  static Cplx32 Full(float length, float angle) {
    const Cplx64 phasor = Phasor64::Full(static_cast<double>(angle));
    return Times(length, phasor.re, phasor.im);
  }
};

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
