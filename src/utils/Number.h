// Numbers in the headers of recordings.
#ifndef QORN_SRC_UTILS_NUMBER_H
#define QORN_SRC_UTILS_NUMBER_H

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace QORN {

/// The number at the start of text, decimal, hexadecimal or in words, behind blanks, as atof reads it in the
/// "C" locale whatever locale the host has chosen; 0 if there is none.
inline double ParseReal(std::string_view text) {
  const char *end = text.data() + text.size();
  const char *s = text.data() + std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size());
  const bool negative = s != end && *s == '-';
  if (s != end && (*s == '-' || *s == '+')) ++s;
  if (s == end || *s == '-') return 0.0;
  const auto isHexDigit = [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
  };
  // Without a digit behind it, the zero of the prefix is the number.
  const std::ptrdiff_t left = end - s;
  const std::ptrdiff_t digit = left > 3 && s[2] == '.' ? 3 : 2;
  const bool isHex = left > digit && s[0] == '0' && (s[1] == 'x' || s[1] == 'X') && isHexDigit(s[digit]);
  if (isHex) {
    s += 2;
    // std::from_chars may take "p+-5" for an exponent; the digits before it are the number.
    end = s + std::min(std::string_view(s, static_cast<std::size_t>(end - s)).find("+-"),
                       static_cast<std::size_t>(end - s));
  }
  double value = 0.0;
  const std::from_chars_result result =
      std::from_chars(s, end, value, isHex ? std::chars_format::hex : std::chars_format::general);
  if (result.ec == std::errc::invalid_argument) return 0.0;
  if (result.ec == std::errc::result_out_of_range) {
    // Too large or too small: the power of ten, or of two, of the first digit that is not zero tells.
    const int ofDigit = isHex ? 4 : 1;
    std::int64_t power = 0;
    bool behindPoint = false;
    bool counts = false;
    for (; s != result.ptr && (*s == '.' || (isHex ? isHexDigit(*s) : *s >= '0' && *s <= '9')); ++s) {
      if (*s == '.') {
        behindPoint = true;
        continue;
      }
      counts = counts || *s != '0';
      if (counts && !behindPoint) power += ofDigit;
      if (!counts && behindPoint) power -= ofDigit;
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
