// Writes recordings in the XIQ format byte by byte, independently of the reader.
#ifndef QORN_TESTS_SUPPORT_XIQRECORDING_H
#define QORN_TESTS_SUPPORT_XIQRECORDING_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace QORN::test::xiq {

inline void AppendInteger(std::string &bytes, std::int32_t value) {
  const auto word = static_cast<std::uint32_t>(value);
  for (int i = 0; i < 4; ++i) bytes += static_cast<char>(word >> (8 * i) & 0xFF);
}

/// One line of XML: a tag, with its attribute if it has one, and its value.
inline std::string Line(const std::string &tag, const std::string &attribute, const std::string &value) {
  std::string line = "    <";
  line += tag;
  line += attribute;
  line += ">";
  line += value;
  line += "</";
  line += tag;
  line += ">\n";
  return line;
}

/// The lines of one data set's times, the three that count first.
inline std::string DataSet(double trigger, double timestamp) {
  return std::string("   <DataSet>\n")
      .append(Line("TriggerPosition", " units=\"Seconds\"", std::to_string(trigger)))
      .append(Line("TimestampOffset", " units=\"Seconds\"", std::to_string(timestamp)))
      .append("   </DataSet>\n");
}

inline std::string SetupLines(const std::string &offset, const std::string &length) {
  return std::string("  <Setup>\n   <NumericParameter pid=\"anOffset\" name=\"Analysis Offset\">\n")
      .append(Line("Value", "", offset))
      .append("   </NumericParameter>\n")
      .append("   <NumericParameter pid=\"anLenReq\" name=\"Analysis Length Requested\">\n")
      .append(Line("Value", "", length))
      .append("   </NumericParameter>\n  </Setup>\n");
}

/// The eight lines of the acquisition.
inline std::string Acquisition(int numberSamples, const std::string &scaling) {
  const char *hertz = " units=\"Hz\"";
  return Line("SamplingFrequency", hertz, "56000000")
      .append(Line("NumberSamples", "", std::to_string(numberSamples)))
      .append(Line("Scaling", "", scaling))
      .append(Line("Frequency", hertz, "1.09e9"))
      .append(Line("AcquisitionBandwidth", hertz, "40000000"))
      .append(Line("MaxSpan", hertz, "36000000"))
      .append(Line("RFAttenuation", " units=\"dB\"", "10"))
      .append(Line("ReferenceLevel", " units=\"dBm\"", "-20.5"));
}

/// A whole header: the line that tells where the samples start, the given lines, and blanks up to there. The
/// first character of the attribute does not count.
inline std::string Header(const std::string &lines) {
  const std::size_t offset = lines.size() + 100;
  std::string digits = std::to_string(offset);
  digits.insert(0, 12 - digits.size(), '0');
  std::string bytes = "<DataFile offset=\"";
  bytes += digits;
  bytes += "\" type=\"binary\">\n";
  bytes += lines;
  bytes.resize(offset, ' ');
  return bytes;
}

} // namespace QORN::test::xiq

#endif
