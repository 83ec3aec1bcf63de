#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <optional>

#include "RecordingSource.h"
#include "Text.h"

namespace tool {

namespace {

constexpr std::int64_t kSampleBytes = 8;
constexpr char kOffsetKey[] = "DataFile offset=\"";

// As much of the first line as the library looks at.
std::string FirstLine(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  std::string line(1023, '\0');
  file.read(line.data(), static_cast<std::streamsize>(line.size()));
  line.resize(static_cast<std::size_t>(file.gcount()));
  return line.substr(0, line.find_first_of(std::string("\n\0", 2)));
}

// Bytes to the first sample; 0 if they are not told. As in the library, the first character of the attribute
// does not count, the number behind it may be any that atof reads, and a quotation mark must follow.
std::int64_t OffsetIn(const std::string &line) {
  const std::size_t key = line.find(kOffsetKey);
  const std::size_t from = key + sizeof kOffsetKey;
  if (key == std::string::npos || from >= line.size()) return 0;
  const std::size_t end = line.find('"', from);
  if (end == std::string::npos) return 0;
  const double offset = std::atof(line.substr(from, end - from).c_str());
  const double most = std::numeric_limits<int>::max();
  return offset > 0.0 ? static_cast<std::int64_t>(std::min(offset, most)) : 0;
}

QORN::XIQReader Open(const std::string &path) {
  std::optional<QORN::XIQReader> reader;
  ReadOrRefuse(path, [&] { reader.emplace(path.c_str()); });
  return *reader;
}

class XiqSource : public RecordingSource {
public:
  explicit XiqSource(const std::string &path)
      : RecordingSource(path), m_reader(Open(path)), m_offset(OffsetIn(FirstLine(path))) {
    QORN::XIQReader::AcqInfoStruct info;
    m_reader.QueryAcqInfo(info);
    const std::int64_t promised = std::int64_t{m_reader.QueryNumDataSets()} * m_reader.QueryNumSamples();
    const std::int64_t held = std::max<std::int64_t>(BytesOf(path) - m_offset, 0) / kSampleBytes;
    m_facts = {Format::kXiq,
               info.samplingFrequency,
               info.frequency,
               info.acquisitionBandwidth,
               info.scaling,
               info.referenceLevel,
               promised,
               std::min(held, promised),
               Grouped(promised) + " samples",
               Grouped(std::min(held, promised)),
               false,
               "SamplingFrequency",
               "Frequency",
               "Scaling is missing, zero or out of range"};
  }

  const QORN::XIQReader *Xiq() const override { return &m_reader; }

  void CheckSamples() const override {
    if (m_offset == 0)
      RefuseRecording(Path(), "does not tell where its samples start: DataFile offset is no number above 0");
    if (m_reader.QueryNumDataSets() < 1)
      RefuseRecording(Path(), "has no data sets: its header has no line with <DataSet>");
    if (m_reader.QueryNumSamples() < 1)
      RefuseRecording(Path(), "has no samples: NumberSamples is missing or below 1");
  }

protected:
  // Data sets join.
  int ReadSamples(std::int64_t start, int n, QORN::VecCplx32 &dst) override {
    const std::int64_t each = m_reader.QueryNumSamples();
    if (start % each + n <= each) {
      m_reader.ReadIQSamples(dst, static_cast<int>(start / each), static_cast<int>(start % each), n);
      return 0;
    }
    dst.Resize(n);
    for (int done = 0; done < n; done += m_part.GetSize()) {
      const std::int64_t at = (start + done) % each;
      const auto count = static_cast<int>(std::min<std::int64_t>(n - done, each - at));
      m_reader.ReadIQSamples(m_part, static_cast<int>((start + done) / each), static_cast<int>(at), count);
      QORN::TargetLib::Copy_32fc(m_part.GetPtr(), dst.GetPtr(done), count);
    }
    return 0;
  }

  std::int64_t BytesTo(std::int64_t end) const override { return m_offset + end * kSampleBytes; }

private:
  QORN::XIQReader m_reader;
  std::int64_t m_offset;
  QORN::VecCplx32 m_part;
};

} // namespace

bool LooksLikeXiq(const std::string &path) { return FirstLine(path).find(kOffsetKey) != std::string::npos; }

std::unique_ptr<RecordingSource> OpenXiq(const std::string &path) {
  return std::make_unique<XiqSource>(path);
}

} // namespace tool
