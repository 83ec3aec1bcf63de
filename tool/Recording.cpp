#include "Recording.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "Failure.h"
#include "Text.h"

namespace tool {

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kFrameBytes = 4120;
constexpr int kMaxPoints = 1024;
constexpr int kChunkFrames = 256;

[[noreturn]] void Refuse(const std::string &path, const std::string &reason) {
  throw DataError("recording " + Quoted(path) + " " + reason);
}

[[noreturn]] void RefuseForeign(const std::string &path, const std::string &reason) {
  Refuse(path, "is not an IQF recording: " + reason);
}

// Looks at the beginning of the file before the library does: there are first characters that end the program
// there, and a message that names the reason helps more than an error code.
const std::string &Checked(const std::string &path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) Refuse(path, error ? "cannot be opened: " + error.message() : "does not exist");
  if (fs::is_directory(status)) Refuse(path, "is a folder");
  if (!fs::is_regular_file(status)) Refuse(path, "is not a regular file");
  std::ifstream file(path, std::ios::binary);
  if (!file) Refuse(path, std::string("cannot be opened: ") + std::strerror(errno));
  const auto size = static_cast<std::int64_t>(fs::file_size(path, error));
  if (error) Refuse(path, "cannot be opened: " + error.message());
  if (size == 0) Refuse(path, "is empty");

  const int digits = file.get() - '0';
  if (digits < 1 || digits > 9) RefuseForeign(path, "it does not start with the length of a header");
  std::string number(static_cast<std::size_t>(digits), '\0');
  if (!file.read(number.data(), digits)) Refuse(path, "is cut short within the length of its header");
  // As the library reads it: blanks before the digits and other characters behind them do not count.
  char *end = nullptr;
  const std::int64_t length = std::strtol(number.c_str(), &end, 10);
  if (end == number.c_str() || length < 0)
    RefuseForeign(path, "it does not start with the length of a header");
  const std::int64_t held = size - 1 - digits;
  // Only as much as tells a text from something else; a header is a few hundred bytes.
  std::string text(static_cast<std::size_t>(std::min<std::int64_t>({length, held, 65536})), '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(std::min(text.find('\0'), text.size()));
  for (const char c : text)
    if ((static_cast<unsigned char>(c) < 0x20 && std::strchr("\r\n\t", c) == nullptr) || c == 0x7F)
      RefuseForeign(path, "its header is not text");
  if (held < length)
    Refuse(path, "is cut short within its header: " + Grouped(held) + " of " + Grouped(length) + " bytes");
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

} // namespace

Recording::Recording(const std::string &path) : m_path(path), m_reader(Open(path)) {
  std::error_code error;
  const auto size = static_cast<std::int64_t>(fs::file_size(path, error));
  if (error) Refuse(path, "cannot be opened: " + error.message());
  const std::int64_t held = std::max<std::int64_t>(size - m_reader.GetDataOffset(), 0) / kFrameBytes;
  const std::int64_t promised = std::max(m_reader.GetNofValidFrames(), 0);
  m_wholeFrames = static_cast<int>(std::min(held, promised));
  m_hasFlatness = held > promised;
}

std::int64_t Recording::Samples() const {
  return std::int64_t{m_reader.GetNofValidFrames()} * m_reader.GetFFTPoints();
}

void Recording::CheckSignal() const {
  char value[61];
  const int points = m_reader.GetFFTPoints();
  if (!m_reader.GetHeader("FFTPoints", value)) RefuseForeign(m_path, "its header has no entry FFTPoints");
  if (points < 1 || points > kMaxPoints)
    Refuse(m_path, "has a header with FFTPoints of " + Printable(value) + ", where 1 to 1024 fit a frame");
  if (m_reader.GetNofValidFrames() < 1) Refuse(m_path, "has no frames: ValidFrames is below 1");
  const double rate = m_reader.GetSamplingFrequency();
  if (!(rate > 0.0 && rate < 1e15))
    Refuse(m_path, "has no sampling rate: FrameLength is missing, zero or out of range");
  if (!std::isfinite(m_reader.GetCenterFrequency()) || std::fabs(m_reader.GetCenterFrequency()) > 1e15)
    Refuse(m_path, "has a CenterFrequency out of range");
  const double volts = m_reader.GetScalingFactor();
  if (!(volts > 1e-30 && volts < 1e15))
    Refuse(m_path,
           "has no usable level: the sum of MaxInputLevel, LevelOffset and GainOffset is out of range");
}

void Recording::CheckFinite(double sum) const {
  if (!std::isfinite(sum))
    Refuse(m_path, "has no finite samples: its levels, IOffset or QOffset are out of range");
}

BlockStream::BlockStream(const QORN::IQFReader &reader, std::int64_t start, std::int64_t count, int points)
    : m_reader(reader), m_points(points), m_left(count) {
  const int perFrame = reader.GetFFTPoints();
  m_nextFrame = static_cast<int>(start / perFrame);
  m_position = static_cast<int>(start % perFrame);
  m_framesLeft = count == 0 ? 0 : (start + count - 1) / perFrame - m_nextFrame + 1;
  m_headers.resize(kChunkFrames);
}

void BlockStream::ReadChunk() {
  const int perFrame = m_reader.GetFFTPoints();
  const auto frames = static_cast<int>(std::min<std::int64_t>(m_framesLeft, kChunkFrames));
  m_reader.GetIQData(m_nextFrame, frames, m_headers.data(), m_chunk);
  const auto isPolar = [](const QORN::FrameHeader &header) {
    return header.polarMark1 == 0xFFFF && header.polarMark2 == 0xFFFF;
  };
  // One polar frame turns all samples of such a read into magnitudes and phases, so then each frame is read
  // alone, and the polar ones by the call that turns them into samples.
  const auto polar = std::count_if(m_headers.begin(), m_headers.begin() + frames, isPolar);
  if (polar > 0) {
    m_polarFrames += polar;
    for (int f = 0; f < frames; ++f) {
      QORN::FrameHeader &header = m_headers[static_cast<std::size_t>(f)];
      if (isPolar(header))
        m_reader.GetIQData2(m_nextFrame + f, 1, &header, m_frame);
      else
        m_reader.GetIQData(m_nextFrame + f, 1, &header, m_frame);
      QORN::TargetLib::Copy_32fc(m_frame.GetPtr(), m_chunk.GetPtr(f * perFrame), perFrame);
    }
  }
  m_nextFrame += frames;
  m_framesLeft -= frames;
}

bool BlockStream::Next(QORN::VecCplx32 &block) {
  if (m_left < m_points) return false;
  block.Resize(m_points);
  for (int filled = 0; filled < m_points;) {
    if (m_chunk.GetSize() == 0) {
      ReadChunk();
    } else if (m_position >= m_chunk.GetSize()) {
      m_position = 0;
      ReadChunk();
    }
    const int part = std::min(m_points - filled, m_chunk.GetSize() - m_position);
    QORN::TargetLib::Copy_32fc(m_chunk.GetPtr(m_position), block.GetPtr(filled), part);
    filled += part;
    m_position += part;
  }
  m_left -= m_points;
  return true;
}

} // namespace tool
