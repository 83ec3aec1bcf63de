// Numbers in the headers of recordings.
#ifndef QORN_SRC_UTILS_NUMBER_H
#define QORN_SRC_UTILS_NUMBER_H

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace QORN {

/// The decimal number at the start of text, behind blanks, as atof reads it in the "C" locale whatever locale
/// the host has chosen; 0 if there is none.
inline double ParseReal(std::string_view text) {
  const char *end = text.data() + text.size();
  const char *s = text.data() + std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
  const bool negative = s != end && *s == '-';
  if (s != end && (*s == '-' || *s == '+')) ++s;
  if (s == end || *s == '-') return 0.0;
  double value = 0.0;
  const std::from_chars_result result = std::from_chars(s, end, value);
  if (result.ec == std::errc::invalid_argument) return 0.0;
  if (result.ec == std::errc::result_out_of_range) {
    // Too large or too small: the power of ten of the first digit that is not zero tells.
    std::int64_t power = 0;
    bool behindPoint = false;
    bool counts = false;
    for (; s != result.ptr && (*s == '.' || (*s >= '0' && *s <= '9')); ++s) {
      if (*s == '.') {
        behindPoint = true;
        continue;
      }
      counts = counts || *s != '0';
      if (counts && !behindPoint) ++power;
      if (!counts && behindPoint) --power;
    }
    // Behind the digits of the number stands its exponent, if it has one.
    if (s != result.ptr && *++s == '+') ++s;
    int exponent = 0;
    if (std::from_chars(s, result.ptr, exponent).ec == std::errc::result_out_of_range) {
      exponent = *s == '-' ? INT_MIN : INT_MAX;
    }
    value = power + exponent < 0 ? 0.0 : HUGE_VAL;
  }
  return negative ? -value : value;
}

/// x without its fraction, stopped at the limits of int; 0 for not-a-number.
inline int Truncated(double x) {
  if (std::isnan(x)) return 0;
  return x >= INT_MAX ? INT_MAX : x <= INT_MIN ? INT_MIN : static_cast<int>(x);
}

} // namespace QORN

#endif
