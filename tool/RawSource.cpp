#include <bit>
#include <cmath>
#include <cstring>
#include <fstream>
#include <vector>

#include "RecordingSource.h"
#include "Text.h"

namespace tool {

namespace {

static_assert(std::endian::native == std::endian::little, "numbers are read as they stand in the file");

template <class Number>
void Convert(const std::vector<char> &bytes, double offset, double step, QORN::VecCplx32 &dst) {
  const char *place = bytes.data();
  const auto next = [&] {
    Number number;
    std::memcpy(&number, place, sizeof number);
    place += sizeof number;
    return static_cast<float>((static_cast<double>(number) - offset) * step);
  };
  QORN::Cplx32 *samples = dst.GetPtr();
  for (int i = 0; i < dst.GetSize(); ++i) {
    samples[i].re = next();
    samples[i].im = next();
  }
}

class RawSource : public RecordingSource {
public:
  RawSource(const std::string &path, const RawFormat &raw)
      : RecordingSource(path), m_file(path, std::ios::binary) {
    const FormatFacts &format = FactsOf(raw.format);
    const std::int64_t bytes = BytesOf(path);
    if (bytes % format.pairBytes != 0)
      RefuseRecording(path, "ends within a sample: " + Grouped(bytes) + " bytes are no multiple of " +
                                std::to_string(format.pairBytes));
    const std::int64_t samples = bytes / format.pairBytes;
    const double full = format.fullScale * raw.step;
    m_facts = {raw.format, raw.rate,
               raw.centre, 0.0,
               raw.step,   QORN::UnitConversion::PeakVolt2dBm(full),
               samples,    samples,
               "",         "",
               false,      "",
               "",         "the volts of a step are zero or out of range"};
  }

protected:
  int ReadSamples(std::int64_t start, int n, QORN::VecCplx32 &dst) override {
    const FormatFacts &format = FactsOf(m_facts.format);
    m_bytes.assign(static_cast<std::size_t>(n) * static_cast<std::size_t>(format.pairBytes), '\0');
    m_file.clear();
    m_file.seekg(start * format.pairBytes);
    m_file.read(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
    if (m_file.bad()) RefuseUnreadable(Path());
    dst.Resize(n);
    switch (m_facts.format) {
    case Format::kCu8:
      Convert<unsigned char>(m_bytes, 127.5, m_facts.step, dst);
      break;
    case Format::kCs8:
      Convert<signed char>(m_bytes, 0.0, m_facts.step, dst);
      break;
    case Format::kCs16:
      Convert<std::int16_t>(m_bytes, 0.0, m_facts.step, dst);
      break;
    default:
      Convert<float>(m_bytes, 0.0, m_facts.step, dst);
      break;
    }
    return 0;
  }

  std::int64_t BytesTo(std::int64_t end) const override { return end * FactsOf(m_facts.format).pairBytes; }

private:
  std::ifstream m_file;
  std::vector<char> m_bytes;
};

} // namespace

std::unique_ptr<RecordingSource> OpenRaw(const std::string &path, const RawFormat &raw) {
  return std::make_unique<RawSource>(path, raw);
}

} // namespace tool
