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

struct Ln32 {
  QORN_INLINE static float Fast(float x) {
    return LogLimits(x, static_cast<float>(LogForFloat(static_cast<double>(x), kLog32, 1.0, kLn2)));
  }
};

struct Log10_32 {
  QORN_INLINE static float Fast(float x) {
    return LogLimits(x, static_cast<float>(LogForFloat(static_cast<double>(x), kLog32, kLog10e, kLog10Of2)));
  }
};

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
