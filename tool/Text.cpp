#include "Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iomanip>

namespace tool {

namespace {

constexpr Prefix kPrefixes[] = {{1e9, "G"},  {1e6, "M"},  {1e3, "k"},  {1.0, ""},
                                {1e-3, "m"}, {1e-6, "µ"}, {1e-9, "n"}, {1e-12, "p"}};

} // namespace

std::string Fixed(double value, int decimals) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr;
  std::string result(text, end);
  const bool zero = result.find_first_not_of("-0.") == std::string::npos;
  if (zero && result.front() == '-') result.erase(0, 1);
  return result;
}

std::string Shortest(double value) {
  char text[40];
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

std::string Grouped(std::int64_t value) {
  std::string text = std::to_string(value);
  for (std::size_t i = text.size(); i > 3;) {
    i -= 3;
    if (text[i - 1] != '-') text.insert(i, 1, ' ');
  }
  return text;
}

Prefix PrefixFor(double magnitude) {
  for (const Prefix &prefix : kPrefixes)
    if (magnitude >= prefix.factor * 0.9999999) return prefix;
  return magnitude > 0.0 ? kPrefixes[7] : kPrefixes[3];
}

std::string Quantity(double value, const std::string &unit) {
  const Prefix prefix = PrefixFor(std::fabs(value) * 1.00005); // what would round to 1000 takes the next
  const double scaled = value / prefix.factor;
  const double magnitude = std::fabs(scaled);
  std::string number = Fixed(scaled, magnitude < 9.9995   ? 3
                                     : magnitude < 99.995 ? 2
                                     : magnitude < 999.95 ? 1
                                                          : 0);
  if (number.find('.') != std::string::npos) {
    number.erase(number.find_last_not_of('0') + 1);
    if (number.back() == '.') number.pop_back();
  }
  return number + " " + prefix.letter + unit;
}

Prefix FrequencyPrefixFor(double hertz, double resolution) {
  const Prefix prefix = PrefixFor(std::max(std::fabs(hertz) + 0.05 * resolution, resolution));
  return prefix.factor == 1e9 && resolution < 1e6 ? Prefix{1e6, "M"} : prefix;
}

std::string Frequency(double hertz, double resolution) {
  const Prefix prefix = FrequencyPrefixFor(hertz, resolution);
  const double digits = std::ceil(std::log10(prefix.factor / resolution)) + 1.0;
  return Fixed(hertz / prefix.factor, static_cast<int>(std::clamp(digits, 0.0, 12.0))) + " " + prefix.letter +
         "Hz";
}

std::string FrequencyInFull(double hertz, double resolution) {
  const Prefix prefix = hertz == 0.0 ? Prefix{1.0, ""} : FrequencyPrefixFor(hertz, resolution);
  return Significant(hertz / prefix.factor, 15) + " " + prefix.letter + "Hz";
}

std::string Significant(double value, int digits) {
  char text[400];
  if (value == 0.0) value = 0.0; // without its sign
  return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits).ptr};
}

std::string Lower(std::string text) {
  for (char &c : text)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return text;
}

std::string PlainName(const std::string &name) {
  std::string plain;
  for (const char c : Lower(name))
    if (c != '-' && c != '_') plain += c;
  return plain;
}

std::string Joined(const std::vector<std::string> &names) {
  std::string text;
  for (const std::string &name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

std::string Printable(const std::string &text) {
  std::string result = text;
  for (char &c : result)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '?';
  return result;
}

std::string Quoted(const std::string &text) {
  return std::string(1, '\'').append(Printable(text)).append(1, '\'');
}

void Line(std::ostream &out, const std::string &name, const std::string &value) {
  out << std::left << std::setw(22) << name << value << '\n';
}

} // namespace tool
