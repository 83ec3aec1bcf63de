// The elementary kernels by name, and errors in units in the last place. The exact values come from long
// double functions (64 bits of precision, so about a thousandth of a double's last place) or from files.
#ifndef QORN_TESTS_SUPPORT_ELEMENTARY_H
#define QORN_TESTS_SUPPORT_ELEMENTARY_H

#include <algorithm>
#include <cmath>
#include <limits>

namespace QORN::test {

/// The distance of got from the exact value (high + low) * 2^exponent in units in the last place of that
/// value, 1 <= |high| < 2; one step of the denormals below the smallest normal.
template <class T> double UlpError(T got, int exponent, double high, double low) {
  if (!std::isfinite(got)) return std::numeric_limits<double>::infinity();
  using Limits = std::numeric_limits<T>;
  const int unit = std::max(exponent, Limits::min_exponent - 1) - (Limits::digits - 1);
  const long double scaled = std::ldexp(static_cast<long double>(got), -exponent);
  const long double difference = (scaled - static_cast<long double>(high)) - static_cast<long double>(low);
  return static_cast<double>(std::ldexp(std::fabs(difference), exponent - unit));
}

/// The same for a value that is known to the precision of a long double. Infinities, zeros and not-a-number
/// must match; a result beyond the type's range must be the infinity that rounding gives.
template <class T> double UlpError(T got, long double exact) {
  using Limits = std::numeric_limits<T>;
  constexpr double wrong = std::numeric_limits<double>::infinity();
  if (std::isnan(exact) || std::isnan(got)) return std::isnan(exact) && std::isnan(got) ? 0 : wrong;
  if (exact == 0) return got == 0 ? 0 : wrong;
  const long double largest = static_cast<long double>(Limits::max());
  const long double limit = largest + std::ldexp(1.0L, Limits::max_exponent - Limits::digits - 1);
  if (std::fabs(exact) >= limit || !std::isfinite(got)) {
    const bool infinite = std::isinf(got) && std::signbit(got) == std::signbit(exact);
    return infinite && std::fabs(exact) > largest ? 0 : wrong;
  }
  const int unit = std::max(std::ilogb(exact), Limits::min_exponent - 1) - (Limits::digits - 1);
  return static_cast<double>(std::ldexp(std::fabs(static_cast<long double>(got) - exact), -unit));
}

} // namespace QORN::test

#endif
