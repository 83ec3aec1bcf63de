#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

#include "RecordingSource.h"
#include "Text.h"

namespace tool {

namespace {

constexpr std::int64_t kFrameBytes = 4120;
constexpr int kMaxPoints = 1024;
constexpr std::size_t kMaxPath = 999; // characters that the library keeps
constexpr int kChunkFrames = 256;

[[noreturn]] void RefuseForeign(const std::string &path, const std::string &reason) {
  RefuseRecording(path, "is not an IQF recording: " + reason);
}

// Looks at the beginning of the file before the library does: there are first characters that end the program
// there, and a message that names the reason helps more than an error code.
const std::string &Checked(const std::string &path) {
  if (path.size() > kMaxPath)
    RefuseRecording(path, "has a path of " + Grouped(static_cast<std::int64_t>(path.size())) +
                              " characters; those of IQF recordings have " + std::to_string(kMaxPath) +
                              " or fewer");
  std::ifstream file(path, std::ios::binary);
  const std::int64_t size = BytesOf(path);
  const int digits = file.get() - '0';
  if (digits < 1 || digits > 9)
    RefuseRecording(path, "is neither an IQF nor an XIQ recording, by its first bytes");
  std::string number(static_cast<std::size_t>(digits), '\0');
  if (!file.read(number.data(), digits) && !file.bad())
    RefuseRecording(path, "is cut short within the length of its header");
  // As the library reads it: blanks before the digits and other characters behind them do not count.
  char *end = nullptr;
  const std::int64_t length = std::strtol(number.c_str(), &end, 10);
  if (end == number.c_str() || length < 0)
    RefuseForeign(path, "it does not start with the length of a header");
  const std::int64_t held = size - 1 - digits;
  // Only as much as tells a text from something else; a header is a few hundred bytes.
  std::string text(static_cast<std::size_t>(std::min<std::int64_t>({length, held, 65536})), '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  if (file.bad()) RefuseUnreadable(path);
  text.resize(std::min(text.find('\0'), text.size()));
  for (const char c : text)
    if ((static_cast<unsigned char>(c) < 0x20 && std::strchr("\r\n\t", c) == nullptr) || c == 0x7F)
      RefuseForeign(path, "its header is not text");
  if (held < length)
    RefuseRecording(path,
                    "is cut short within its header: " + Grouped(held) + " of " + Grouped(length) + " bytes");
  return path;
}

QORN::IQFReader Open(const std::string &path) {
  try {
    return QORN::IQFReader(Checked(path).c_str());
  } catch (QORN::QORNException &e) {
    if (e.GetErrorCode() == 11001) throw;
    RefuseForeign(path, "its header has more than 50 entries");
  }
}

class IqfSource : public RecordingSource {
public:
  explicit IqfSource(const std::string &path)
      : RecordingSource(path), m_reader(Open(path)), m_headers(kChunkFrames) {
    const std::int64_t held =
        std::max<std::int64_t>(BytesOf(path) - m_reader.GetDataOffset(), 0) / kFrameBytes;
    const std::int64_t promised = std::max(m_reader.GetNofValidFrames(), 0);
    const std::int64_t points = m_reader.GetFFTPoints();
    m_facts = {Format::kIqf,
               m_reader.GetSamplingFrequency(),
               m_reader.GetCenterFrequency(),
               m_reader.GetSpan(),
               m_reader.GetScalingFactor(),
               m_reader.GetMaxInputLevel(),
               points * m_reader.GetNofValidFrames(),
               points * std::min(held, promised),
               Grouped(m_reader.GetNofValidFrames()) + " frames",
               Grouped(std::min(held, promised)),
               held > promised,
               "FrameLength",
               "CenterFrequency",
               "the sum of MaxInputLevel, LevelOffset and GainOffset is out of range"};
  }

  const QORN::IQFReader *Iqf() const override { return &m_reader; }
  int ChunkSamples() const override { return kChunkFrames * m_reader.GetFFTPoints(); }

  void CheckSamples() const override {
    char value[61];
    const int points = m_reader.GetFFTPoints();
    if (!m_reader.GetHeader("FFTPoints", value)) RefuseForeign(Path(), "its header has no entry FFTPoints");
    if (points < 1 || points > kMaxPoints)
      RefuseRecording(Path(),
                      "has a header with FFTPoints of " + Printable(value) + ", where 1 to 1024 fit a frame");
    if (m_reader.GetNofValidFrames() < 1) RefuseRecording(Path(), "has no frames: ValidFrames is below 1");
  }

protected:
  int ReadSamples(std::int64_t start, int n, QORN::VecCplx32 &dst) override {
    const int points = m_reader.GetFFTPoints();
    const auto first = static_cast<int>(start / points);
    const auto skipped = static_cast<int>(start % points);
    const auto frames = static_cast<int>((start + n + points - 1) / points - first);
    if (skipped == 0 && n == frames * points) return ReadFrames(first, frames, dst);
    const int polar = ReadFrames(first, frames, m_frames);
    dst.Resize(n);
    QORN::TargetLib::Copy_32fc(m_frames.GetPtr(skipped), dst.GetPtr(), n);
    return polar;
  }

  std::int64_t BytesTo(std::int64_t end) const override {
    const int points = m_reader.GetFFTPoints();
    return m_reader.GetDataOffset() + kFrameBytes * ((end + points - 1) / points);
  }

private:
  int ReadFrames(int first, int frames, QORN::VecCplx32 &dst) {
    m_headers.resize(std::max(m_headers.size(), static_cast<std::size_t>(frames)));
    m_reader.GetIQData(first, frames, m_headers.data(), dst);
    const auto isPolar = [](const QORN::FrameHeader &header) {
      return header.polarMark1 == 0xFFFF && header.polarMark2 == 0xFFFF;
    };
    const auto polar =
        static_cast<int>(std::count_if(m_headers.begin(), m_headers.begin() + frames, isPolar));
    if (polar == 0) return 0;
    // One polar frame turns all samples of such a read into magnitudes and phases, so then each frame is read
    // alone, and the polar ones by the call that turns them into samples.
    const int points = m_reader.GetFFTPoints();
    for (int f = 0; f < frames; ++f) {
      QORN::FrameHeader &header = m_headers[static_cast<std::size_t>(f)];
      if (isPolar(header))
        m_reader.GetIQData2(first + f, 1, &header, m_frame);
      else
        m_reader.GetIQData(first + f, 1, &header, m_frame);
      QORN::TargetLib::Copy_32fc(m_frame.GetPtr(), dst.GetPtr(f * points), points);
    }
    return polar;
  }

  QORN::IQFReader m_reader;
  QORN::VecCplx32 m_frames; // whole ones, of which a part is wanted
  QORN::VecCplx32 m_frame;  // one, where they are read one by one
  std::vector<QORN::FrameHeader> m_headers;
};

} // namespace

std::unique_ptr<RecordingSource> OpenIqf(const std::string &path) {
  return std::make_unique<IqfSource>(path);
}

} // namespace tool
