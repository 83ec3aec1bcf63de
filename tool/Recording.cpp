#include "Recording.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "Failure.h"
#include "Text.h"

namespace tool {

namespace {

namespace fs = std::filesystem;

// What can be told before anything is known of the format.
const std::string &CheckedFile(const std::string &path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status))
    RefuseRecording(path, error ? "cannot be opened: " + error.message() : "does not exist");
  if (fs::is_directory(status)) RefuseRecording(path, "is a folder");
  if (!fs::is_regular_file(status)) RefuseRecording(path, "is not a regular file");
  std::ifstream file(path, std::ios::binary);
  if (!file) RefuseRecording(path, std::string("cannot be opened: ") + std::strerror(errno));
  if (BytesOf(path) == 0) RefuseRecording(path, "is empty");
  file.peek();
  if (file.bad()) RefuseUnreadable(path);
  return path;
}

} // namespace

void RefuseRecording(const std::string &path, const std::string &reason) {
  throw DataError("recording " + Quoted(path) + " " + reason);
}

void RefuseUnreadable(const std::string &path) {
  RefuseRecording(path, std::string("cannot be read: ") + std::strerror(errno));
}

void ReadOrRefuse(const std::string &path, const std::function<void()> &read) {
  // What is no error of the file, such as an interruption, does not come twice.
  for (int run = 0; run < 2; ++run) {
    errno = 0;
    read();
    if (errno == 0) return;
  }
  RefuseUnreadable(path);
}

std::int64_t BytesOf(const std::string &path) {
  std::error_code error;
  const auto size = static_cast<std::int64_t>(fs::file_size(path, error));
  if (error) RefuseRecording(path, "cannot be opened: " + error.message());
  return size;
}

int RecordingSource::Read(std::int64_t start, int n, QORN::VecCplx32 &dst) {
  int polar = 0;
  ReadOrRefuse(m_path, [&] { polar = ReadSamples(start, n, dst); });
  return polar;
}

void RecordingSource::CheckHeld(std::int64_t end) const {
  if (BytesOf(m_path) < BytesTo(end)) RefuseRecording(m_path, "was cut short while it was read");
}

Recording::Recording(const std::string &path)
    : m_source(LooksLikeXiq(CheckedFile(path)) ? OpenXiq(path) : OpenIqf(path)) {}

Recording::Recording(const std::string &path, const RawFormat &raw)
    : m_source(OpenRaw(CheckedFile(path), raw)) {}

void Recording::CheckSignal() const {
  m_source->CheckSamples();
  const SourceFacts &facts = Facts();
  // Raw pairs go from one file into another without it.
  if (!(Rate() > 0.0 && Rate() < 1e15) && !IsRaw(Format()))
    RefuseRecording(Path(), std::string("has no sampling rate: ") + facts.rateEntry +
                                " is missing, zero or out of range");
  if (!std::isfinite(Centre()) || std::fabs(Centre()) > 1e15)
    RefuseRecording(Path(), std::string("has a ") + facts.centreEntry + " out of range");
  const double slack = 1e-9; // a step that the header tells as a level in decibels is rounded
  if (!(Step() >= kLeastStep * (1.0 - slack) && Step() <= kMostStep * (1.0 + slack)))
    RefuseRecording(Path(), std::string("has no usable level: ") + facts.noLevel);
}

void Recording::CheckFinite(double sum) const {
  if (std::isfinite(sum)) return;
  RefuseRecording(Path(), Format() == tool::Format::kIqf
                              ? "has no finite samples: its levels, IOffset or QOffset are out of range"
                              : "has samples that are not finite numbers");
}

RecordingHead Recording::Head() const {
  RecordingHead head;
  head.rate = Rate();
  head.centre = Centre();
  head.span = std::isfinite(Span()) && Span() > 0.0 ? Span() : 0.0;
  head.step = Step();
  head.level = std::isfinite(Facts().level) ? Facts().level : 0.0;
  const QORN::IQFReader *reader = m_source->Iqf();
  if (reader == nullptr) return head;
  head.framePoints = reader->GetFFTPoints();
  char value[61];
  for (const char *key : {"Title", "FFTPoints", "Bins", "CenterFrequency", "Span", "FrameLength",
                          "UnitPeriod", "BlockSize", "MultiFrames"}) {
    const bool replaced =
        (m_rate > 0.0 && (std::strcmp(key, "FrameLength") == 0 || std::strcmp(key, "UnitPeriod") == 0)) ||
        (m_hasCentre && std::strcmp(key, "CenterFrequency") == 0);
    if (!replaced && reader->GetHeader(key, value)) head.entries.emplace_back(key, value);
  }
  if (!Facts().hasFlatness) return head;
  QORN::FrameHeader header;
  QORN::VecReal32 amplitude, phase;
  ReadOrRefuse(Path(), [&] { reader->GetRawFlatness(&header, amplitude, phase); });
  for (int i = 0; i < amplitude.GetSize(); ++i)
    head.flatness.emplace_back(static_cast<int>(amplitude[i]), static_cast<int>(phase[i]));
  return head;
}

BlockStream::BlockStream(const Recording &recording, std::int64_t start, std::int64_t count, int points)
    : m_source(recording.Source()), m_points(points), m_left(count), m_next(start), m_end(start + count) {}

void BlockStream::ReadChunk() {
  const int chunk = m_source.ChunkSamples();
  const auto count = static_cast<int>(std::min<std::int64_t>(chunk - m_next % chunk, m_end - m_next));
  m_polarFrames += m_source.Read(m_next, count, m_chunk);
  m_source.CheckHeld(m_next + count);
  m_next += count;
  m_position = 0;
}

void BlockStream::Take(QORN::VecCplx32 &block, int count) {
  block.Resize(count);
  for (int filled = 0; filled < count;) {
    if (m_position >= m_chunk.GetSize()) ReadChunk();
    const int part = std::min(count - filled, m_chunk.GetSize() - m_position);
    QORN::TargetLib::Copy_32fc(m_chunk.GetPtr(m_position), block.GetPtr(filled), part);
    filled += part;
    m_position += part;
  }
  m_left -= count;
}

bool BlockStream::Next(QORN::VecCplx32 &block) {
  if (m_left < m_points) return false;
  Take(block, m_points);
  return true;
}

bool BlockStream::NextOrRest(QORN::VecCplx32 &block) {
  if (m_left == 0) return false;
  Take(block, static_cast<int>(std::min<std::int64_t>(m_left, m_points)));
  return true;
}

} // namespace tool
