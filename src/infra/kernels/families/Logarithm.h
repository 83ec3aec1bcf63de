// Logarithms to the bases e and 10.
#ifndef QORN_SRC_INFRA_KERNELS_LOGARITHM_H
#define QORN_SRC_INFRA_KERNELS_LOGARITHM_H

#include "ElementaryBasics.h"
#include "ElementaryCoefficients.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

/// x = z * 2^k, z from the number with the bits `start` to twice that; start must lie between 1/2 and 1.
struct LogParts {
  double z, k;
  std::uint64_t bits; ///< the bits of x relative to start, with k + 1024 as the exponent
};

QORN_INLINE LogParts SplitLog(double x, std::uint64_t start) {
  // The bias keeps the shift unsigned: a signed one of 64 bits exists from the widest level on only.
  constexpr std::uint64_t fraction = (std::uint64_t(1) << 52) - 1;
  const std::uint64_t bits = Bits(x) - start + (std::uint64_t(1024) << 52);
  const double k = FromBits(bits >> 52 | Bits(0x1p52)) - (0x1p52 + 1024);
  return {FromBits((bits & fraction) + start), k, bits};
}

constexpr std::uint64_t kRootHalfBits = 0x3fe6a09e667f3bcd;

// ln(1 + f) with s = f / (2 + f): 2 s + s^3 P(s^2) = f - f^2/2 + s (f^2/2 + s^2 P(s^2)), in which f is exact
// and the rest small.
struct LogTerms {
  double f, halfSquare, rest, k;
};

QORN_INLINE LogTerms ReduceLog(double x) {
  const LogParts parts = SplitLog(x, kRootHalfBits);
  const double f = parts.z - 1;
  const double s = f / (2 + f);
  const double u = s * s;
  const double halfSquare = 0.5 * f * f;
  return {f, halfSquare, s * MulAdd(u, Polynomial(u, kLog64), halfSquare), parts.k};
}

struct LnBase {
  QORN_INLINE static double Of(const LogTerms &t) {
    const double exponent = t.k * kLogLn2High; // exact
    const double sum = exponent + t.f;
    const double lost = (exponent - sum) + t.f;
    return sum + (lost - (t.halfSquare - MulAdd(t.k, kLogLn2Low, t.rest)));
  }
};

struct Log10Base {
  QORN_INLINE static double Of(const LogTerms &t) {
    // The logarithm in two parts, the first short enough for an exact product with the first part of log10 e.
    const double high = FromBits(Bits(t.f - t.halfSquare) & (~std::uint64_t(0) << 32));
    const double low = ((t.f - high) - t.halfSquare) + t.rest;
    const double exponent = t.k * kLog10Of2High; // exact
    const double scaled = high * kLog10eHigh;    // exact
    const double sum = exponent + scaled;
    const double lost = (exponent - sum) + scaled;
    const double rest = MulAdd(low + high, kLog10eLow, MulAdd(low, kLog10eHigh, t.k * kLog10Of2Low));
    return sum + (lost + rest);
  }
};

template <class Base> struct Log64 {
  QORN_INLINE static double Fast(double x, bool &served) {
    served = Both(x >= kSmallestNormal, x < kInfinity);
    return Base::Of(ReduceLog(x));
  }
  static double Full(double x) {
    if (x != x || x == kInfinity) return x;
    if (x == 0) return -kInfinity;
    if (x < 0) return kNaN;
    LogTerms t = ReduceLog(x * 0x1p54);
    t.k -= 54;
    return Base::Of(t);
  }
};

/// k + log2(z) or the like: k times `unit` plus ln(z) times `factor`, to the precision of a float.
template <int N>
QORN_INLINE double LogForFloat(double x, const double (&coefficients)[N], double factor, double unit) {
  const LogParts parts = SplitLog(x, kRootHalfBits);
  const double f = parts.z - 1;
  const double ln = MulAdd(f * f, Polynomial(f, coefficients), f);
  return MulAdd(parts.k, unit, ln * factor);
}

QORN_INLINE float LogLimits(float x, float y) {
  constexpr float infinity = __builtin_inff();
  y = x > 0 ? y : (x == 0 ? -infinity : __builtin_nanf(""));
  return x < infinity ? y : x;
}

#if defined(QORN_FLOAT_REGISTERS)
// In float arithmetic, of positive normal numbers: k log 2 + log c, short enough to be exact, with log(1 +
// r), the leading terms in two parts and the rest so small beside them that its roundings do not count.

struct FloatLogTerms {
  Floats r, whole, rest; ///< k log 2 + log c is whole + rest
};

template <class Tables> QORN_INLINE FloatLogTerms ReduceLog(Floats x) {
  const Words bits = Bits(x) - kLogStart32;
  const Words exponent = bits & 0xff800000U;
  const Words index = bits >> Tables::kShift;
  constexpr float unit = 0x1p-23F; // of the exponent where it stands
  const Floats k = __builtin_convertvector(__builtin_bit_cast(Ints, exponent), Floats);
  return {MulSub(FromBits(Bits(x) - exponent), Choose(Tables::kInverse, index), Every(1.0F)),
          MulAdd(k, Every(Tables::kTwoHigh * unit), Choose(Tables::kHigh, index)),
          MulAdd(k, Every(Tables::kTwoLow * unit), Choose(Tables::kLow, index))};
}

struct PositiveNormal {
  template <class T> QORN_INLINE static auto Rank(T x) { return Bits(x) - 0x00800000U; }
  static constexpr std::uint32_t Ranks() { return 0x7f000000; }
};

#if defined(__AVX512F__)
// From tables of 32: |r| is so small that only r log e needs two parts.

struct FineTables {
  static constexpr int kShift = 18;
  static constexpr const float (&kInverse)[32] = kLogFineInverse;
};
struct LnTables : FineTables {
  static constexpr const float (&kHigh)[32] = kLnFineHigh, (&kLow)[32] = kLnFineLow;
  static constexpr const float (&kRest)[4] = kLnFineRest;
  static constexpr float kTwoHigh = kLnFine2High, kTwoLow = kLnFine2Low, kEHigh = 1.0F, kELow = 0.0F;
};
struct Log10Tables : FineTables {
  static constexpr const float (&kHigh)[32] = kLog10FineHigh, (&kLow)[32] = kLog10FineLow;
  static constexpr const float (&kRest)[4] = kLog10FineRest;
  static constexpr float kTwoHigh = kLog10Fine2High, kTwoLow = kLog10Fine2Low;
  static constexpr float kEHigh = kLog10eHigh32, kELow = kLog10eLow32;
};

template <class Tables> struct LogInFloats : PositiveNormal {
  QORN_INLINE static Floats InFloats(Floats x) {
    const FloatLogTerms t = ReduceLog<Tables>(x);
    const Floats sum = MulAdd(t.r, Every(Tables::kEHigh), t.whole);
    const Floats lost = MulAdd(t.r, Every(Tables::kEHigh), t.whole - sum);
    const Floats second = MulAdd(t.r, Polynomial(t.r, Tables::kRest), Every(Tables::kELow));
    return sum + MulAdd(t.r, second, lost + t.rest);
  }
};
using LnInFloats = LogInFloats<LnTables>;
using Log10InFloats = LogInFloats<Log10Tables>;
#else
// From tables of eight: r - r^2/2 in two parts.

struct CoarseTables {
  static constexpr int kShift = 20;
  static constexpr const float (&kInverse)[8] = kLogInverse32, (&kHigh)[8] = kLogHigh32;
  static constexpr const float (&kLow)[8] = kLogLow32;
  static constexpr float kTwoHigh = kLogLn2High32, kTwoLow = kLogLn2Low32;
};

struct FloatLog {
  Floats high, low;
};

QORN_INLINE FloatLog LogOfFloats(Floats x) {
  const FloatLogTerms t = ReduceLog<CoarseTables>(x);
  const Floats r = t.r;
  const Floats sum = t.whole + r;
  const Floats sumLost = (t.whole - sum) + r;
  const Floats half = r * -0.5F;
  const Floats high = MulAdd(half, r, sum);
  const Floats highLost = MulAdd(half, r, sum - high);
  const Floats cubic = MulAdd(r * r * r, Polynomial(r, kLogRest32), t.rest);
  return {high, cubic + (sumLost + highLost)};
}

struct LnInFloats : PositiveNormal {
  QORN_INLINE static Floats InFloats(Floats x) {
    const FloatLog log = LogOfFloats(x);
    return log.high + log.low;
  }
};

struct Log10InFloats : PositiveNormal {
  QORN_INLINE static FloatLog BeginFloats(Floats x) { return LogOfFloats(x); }
  QORN_INLINE static Floats EndFloats(const FloatLog &log) {
    const Floats low = MulAdd(log.low, Every(kLog10eHigh32), log.high * kLog10eLow32);
    return MulAdd(log.high, Every(kLog10eHigh32), low);
  }
};
#endif
#else
struct LnInFloats {};
struct Log10InFloats {};
#endif

struct Ln32 : LnInFloats {
  QORN_INLINE static float Fast(float x) {
    return LogLimits(x, static_cast<float>(LogForFloat(static_cast<double>(x), kLog32, 1.0, kLn2)));
  }
};

struct Log10_32 : Log10InFloats {
  QORN_INLINE static float Fast(float x) {
    return LogLimits(x, static_cast<float>(LogForFloat(static_cast<double>(x), kLog32, kLog10e, kLog10Of2)));
  }
};

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
