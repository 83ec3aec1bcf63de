// Numbers and quantities as text, the same in every locale.
#ifndef QORN_TOOL_TEXT_H
#define QORN_TOOL_TEXT_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace tool {

/// value with so many decimals; never "-0".
std::string Fixed(double value, int decimals);

/// The shortest text that reads back as value.
std::string Shortest(double value);

/// 1234567 as "1 234 567".
std::string Grouped(std::int64_t value);

/// A power of a thousand, and the letter for it: 1e6 and "M". Between 1e-12 and 1e9.
struct Prefix {
  double factor;
  const char *letter;
};

/// The largest prefix that leaves at least one digit before the point.
Prefix PrefixFor(double magnitude);

/// value with four significant digits and the prefix that fits: "927.7 Hz", "1.6 MHz".
std::string Quantity(double value, const std::string &unit);

/// The prefix for a frequency of which steps of the resolution are told apart: as in the laboratory, 2440.015
/// MHz and not 2.440015 GHz.
Prefix FrequencyPrefixFor(double hertz, double resolution);

/// A frequency to a tenth of the resolution: "1090.00005 MHz".
std::string Frequency(double hertz, double resolution);

/// A frequency with all its digits, up to fifteen, and the prefix for the resolution: "1090.0123 MHz".
std::string FrequencyInFull(double hertz, double resolution);

/// value with so many significant digits, without zeros at the end: "0.00707106781187", "1e-20".
std::string Significant(double value, int digits);

/// text with the capital letters of the English alphabet as small ones.
std::string Lower(std::string text);

/// A name as it is compared: in small letters, without hyphens and underscores.
std::string PlainName(const std::string &name);

/// "one, two, three".
std::string Joined(const std::vector<std::string> &names);

/// text for a terminal: control characters become question marks.
std::string Printable(const std::string &text);

/// text for a message: printable and in single quotes.
std::string Quoted(const std::string &text);

/// A line of a report: the name, and the value in a column of its own.
void Line(std::ostream &out, const std::string &name, const std::string &value);

} // namespace tool

#endif
