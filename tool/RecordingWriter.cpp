#include "RecordingWriter.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>

#include "Failure.h"
#include "IqfWriter.h"
#include "Text.h"

namespace tool {

namespace {

static_assert(std::endian::native == std::endian::little, "numbers are written as they stand in memory");

constexpr int kBlock = 4096; // samples

double DBmOf(double volts) { return 10.0 * std::log10(10.0 * volts * volts); }

// The seconds of a frame from which a reader computes the rate.
double FrameLengthFor(int points, double rate) {
  const double length = points / rate;
  for (const double near : {length, std::nextafter(length, 0.0), std::nextafter(length, 2.0 * length)})
    if (points / near == rate) return near;
  return length;
}

// Blocks of samples as integers of the format, in steps above its lowest.
template <class Int> class IntegerWriter : public RecordingWriter {
public:
  IntegerWriter(Format format, std::ostream &out, const RecordingHead &head)
      : m_out(out), m_facts(FactsOf(format)), m_perVolt(1.0 / head.step),
        m_offset(format == Format::kCu8 ? 127.5 : 0.0) {}

  void Put(const QORN::Cplx32 *samples, int n) override {
    for (int done = 0; done < n; done += kBlock) {
      const int count = std::min(kBlock, n - done);
      Convert(samples + done, count);
      WriteBlock(count);
      m_done += count;
    }
  }

protected:
  virtual void WriteBlock(int count) {
    m_out.write(reinterpret_cast<const char *>(m_block),
                static_cast<std::streamsize>(sizeof(Int) * 2) * count);
  }

  std::ostream &m_out;
  Int m_block[2 * kBlock]{};

private:
  void Convert(const QORN::Cplx32 *samples, int count) {
    const double low = m_facts.lowest + m_offset;
    const double high = m_facts.highest + m_offset;
    const auto parts = reinterpret_cast<const float *>(samples);
    for (int i = 0; i < count; ++i) {
      bool beyond = false;
      for (int k = 2 * i; k < 2 * i + 2; ++k) {
        const double wanted = static_cast<double>(parts[k]) * m_perVolt + m_offset;
        const double x = std::min(std::max(wanted, low), high);
        // What rounds to the limit was not stopped there.
        beyond = beyond || std::fabs(wanted - x) > 0.5;
        if (!std::isfinite(parts[k]))
          throw DataError("sample " + Grouped(m_done + i) + " is not a finite number");
        m_block[k] = static_cast<Int>(std::lrint(x));
      }
      m_saturated += beyond ? 1 : 0;
    }
  }

  const FormatFacts &m_facts;
  double m_perVolt;
  double m_offset;
  std::int64_t m_done = 0;
};

class FloatWriter : public RecordingWriter {
public:
  FloatWriter(std::ostream &out, const RecordingHead &head) : m_out(out), m_perVolt(1.0 / head.step) {}

  void Put(const QORN::Cplx32 *samples, int n) override {
    if (m_perVolt == 1.0) {
      m_out.write(reinterpret_cast<const char *>(samples), std::streamsize{sizeof *samples} * n);
      return;
    }
    for (int done = 0; done < n; done += kBlock) {
      const int count = std::min(kBlock, n - done);
      for (int i = 0; i < count; ++i) {
        const QORN::Cplx32 x = samples[done + i];
        bool beyond = false;
        m_block[i] = {Part(x.re, beyond), Part(x.im, beyond)};
        m_saturated += beyond ? 1 : 0;
      }
      m_out.write(reinterpret_cast<const char *>(m_block), std::streamsize{sizeof *m_block} * count);
    }
  }

private:
  // What is not finite stays so.
  float Part(float volts, bool &beyond) const {
    if (!std::isfinite(volts)) return volts;
    const double most = FactsOf(Format::kCf32).highest;
    const double wanted = static_cast<double>(volts) * m_perVolt;
    beyond = beyond || std::fabs(wanted) > most;
    return static_cast<float>(std::clamp(wanted, -most, most));
  }

  std::ostream &m_out;
  double m_perVolt;
  QORN::Cplx32 m_block[kBlock]{};
};

std::string IqfHeader(const RecordingHead &head, std::int64_t frames) {
  std::string text;
  const auto add = [&](const std::string &key, const std::string &value) {
    // An entry of the recording that this one comes from stands, if it is there.
    if (std::none_of(head.entries.begin(), head.entries.end(),
                     [&](const auto &entry) { return entry.first == key && !entry.second.empty(); }))
      text += key + "=" + value + "\r\n";
  };
  // Readers would take the name behind an empty value for the value.
  for (const auto &[key, value] : head.entries)
    if (!value.empty()) text += key + "=" + value + "\r\n";
  add("FFTPoints", std::to_string(head.framePoints));
  add("CenterFrequency", Shortest(head.centre));
  add("Span", Shortest(head.span > 0.0 ? head.span : head.rate));
  add("FrameLength", Shortest(FrameLengthFor(head.framePoints, head.rate)));
  add("UnitPeriod", Shortest(1.0 / head.rate));
  add("BlockSize", std::to_string(frames));
  add("MultiFrames", "1");
  add("ValidFrames", std::to_string(frames));
  add("MaxInputLevel", Shortest(head.level));
  add("LevelOffset", "0");
  add("GainOffset", Shortest(DBmOf(head.step) - head.level));
  add("IOffset", "0");
  add("QOffset", "0");
  return text;
}

class IqfRecordingWriter : public IntegerWriter<std::int16_t> {
public:
  IqfRecordingWriter(std::ostream &out, const RecordingHead &head)
      : IntegerWriter(Format::kIqf, out, head),
        m_writer(out, IqfHeader(head, (head.samples + head.framePoints - 1) / head.framePoints),
                 head.framePoints),
        m_flatness(head.flatness) {}

  void End() override { m_writer.End(m_flatness); }

protected:
  void WriteBlock(int count) override {
    for (int i = 0; i < count; ++i) m_writer.Put(m_block[2 * i], m_block[2 * i + 1]);
  }

private:
  IqfWriter m_writer;
  std::vector<std::pair<int, int>> m_flatness;
};

std::string XiqHeader(const RecordingHead &head) {
  const double span = head.span > 0.0 ? head.span : head.rate;
  const auto line = [](const std::string &tag, const std::string &unit, const std::string &value) {
    return "      <" + tag + (unit.empty() ? "" : " units=\"" + unit + "\"") + ">" + value + "</" + tag +
           ">\n";
  };
  const std::string rest =
      "  <Setup/>\n"
      "  <DataSetsCollection>\n"
      "    <Data>\n" +
      line("SamplingFrequency", "Hz", Shortest(head.rate)) +
      line("NumberSamples", "", std::to_string(head.samples)) + line("Scaling", "", Shortest(head.step)) +
      line("Frequency", "Hz", Shortest(head.centre)) + line("AcquisitionBandwidth", "Hz", Shortest(span)) +
      line("MaxSpan", "Hz", Shortest(span)) + line("RFAttenuation", "dB", "0") +
      line("ReferenceLevel", "dBm", Shortest(head.level)) +
      "    </Data>\n"
      "    <DataSet>\n" +
      line("TriggerPosition", "Seconds", "0") + line("TimestampOffset", "Seconds", "0") +
      "    </DataSet>\n"
      "  </DataSetsCollection>\n"
      "</DataFile>\n";
  // Readers leave out the first digit of the offset.
  constexpr std::size_t kDigits = 10;
  const std::string start = "<DataFile offset=\"";
  const std::string end = "\">\n";
  std::string digits = std::to_string(start.size() + kDigits + end.size() + rest.size());
  digits.insert(0, kDigits - digits.size(), '0');
  return start + digits + end + rest;
}

} // namespace

double StepFor(Format format, double peak) {
  if (format == Format::kCf32 || !(peak > 0.0)) return 1.0;
  if (format != Format::kXiq) return peak / FactsOf(format).highest;
  int exponent = 0;
  std::frexp(peak, &exponent);
  return std::ldexp(1.0, exponent - 31);
}

void CheckCount(Format format, const RecordingHead &head) {
  std::int64_t most = std::numeric_limits<std::int64_t>::max();
  if (format == Format::kIqf) most = std::int64_t{std::numeric_limits<int>::max()} * head.framePoints;
  if (format == Format::kXiq) most = std::numeric_limits<int>::max();
  if (head.samples > most)
    throw DataError(Grouped(head.samples) + " samples are more than the " + Grouped(most) + " that " +
                    FactsOf(format).name + " holds");
}

void CheckStep(Format format, double step) {
  if (!IsRaw(format) && !(step >= kLeastStep && step <= kMostStep))
    throw DataError(std::string("a ") + FactsOf(format).name + " recording of these values would have " +
                    Significant(step, 6) + " V per step, which is not from " + Significant(kLeastStep, 6) +
                    " to " + Significant(kMostStep, 6));
}

std::unique_ptr<RecordingWriter> MakeRecordingWriter(Format format, std::ostream &out,
                                                     const RecordingHead &head) {
  CheckCount(format, head);
  CheckStep(format, head.step);
  switch (format) {
  case Format::kIqf:
    return std::make_unique<IqfRecordingWriter>(out, head);
  case Format::kXiq: {
    const std::string header = XiqHeader(head);
    out.write(header.data(), static_cast<std::streamsize>(header.size()));
    return std::make_unique<IntegerWriter<std::int32_t>>(format, out, head);
  }
  case Format::kCu8:
    return std::make_unique<IntegerWriter<std::uint8_t>>(format, out, head);
  case Format::kCs8:
    return std::make_unique<IntegerWriter<std::int8_t>>(format, out, head);
  case Format::kCs16:
    return std::make_unique<IntegerWriter<std::int16_t>>(format, out, head);
  case Format::kCf32:
    break;
  }
  return std::make_unique<FloatWriter>(out, head);
}

} // namespace tool
