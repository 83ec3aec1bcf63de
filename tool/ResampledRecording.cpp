#include "ResampledRecording.h"

#include <algorithm>
#include <cmath>

namespace tool {

namespace {

constexpr int kLargestChunk = 1 << 17; // samples, in or out
constexpr int kSmallestChunk = 1 << 10;
constexpr int kBlock = 1 << 14;

// The design of the library's default resampler, with points so close that interpolation between them leaves
// no images.
constexpr float kWindow = 90.0F;
constexpr int kPointsPerSample = 512;
constexpr float kCutoff = 0.9F;
constexpr float kAlpha = 0.0F; // not used

// The part of an extent, with zeros around it, that moves forward through it.
class Window {
public:
  Window(const Recording &recording, const Extent &extent)
      : m_stream(recording, extent.start, extent.count, kBlock), m_count(extent.count) {}

  /// Samples first to first + n - 1; first does not go back.
  const QORN::VecCplx32 &Move(std::int64_t first, int n) {
    const std::int64_t shift = m_samples.GetSize() == 0 ? 0 : first - m_first;
    const auto kept = static_cast<int>(std::max<std::int64_t>(m_samples.GetSize() - shift, 0));
    if (kept > 0) {
      QORN::Cplx32 *samples = m_samples.GetPtr();
      std::copy(samples + shift, samples + shift + kept, samples);
    }
    m_first = first;
    m_samples.Resize(n);
    for (int i = std::min(kept, n); i < n;) i += Fill(first + i, m_samples.GetPtr(i), n - i);
    return m_samples;
  }

private:
  // Some of the n samples from a place on, and how many.
  int Fill(std::int64_t place, QORN::Cplx32 *dst, int n) {
    if (place < 0 || place >= m_count) {
      const auto zeros = static_cast<int>(place < 0 ? std::min<std::int64_t>(-place, n) : n);
      std::fill(dst, dst + zeros, QORN::Cplx32{});
      return zeros;
    }
    while (place >= m_blockFirst + m_block.GetSize()) {
      m_blockFirst += m_block.GetSize();
      m_stream.NextOrRest(m_block);
    }
    const auto skipped = static_cast<int>(place - m_blockFirst);
    const int part = std::min(n, m_block.GetSize() - skipped);
    QORN::TargetLib::Copy_32fc(m_block.GetPtr(skipped), dst, part);
    return part;
  }

  BlockStream m_stream;
  std::int64_t m_count;
  QORN::VecCplx32 m_block; // of the stream
  std::int64_t m_blockFirst = 0;
  QORN::VecCplx32 m_samples;
  std::int64_t m_first = 0;
};

} // namespace

std::int64_t ResampledCount(std::int64_t samples, double ratio) {
  const auto end = static_cast<double>(samples);
  auto count = static_cast<std::int64_t>(std::ceil(end * ratio));
  while (count > 0 && static_cast<double>(count - 1) / ratio >= end) --count;
  while (static_cast<double>(count) / ratio < end) ++count;
  return count;
}

void Resample(const Recording &recording, const Extent &extent, double ratio,
              const std::function<void(std::int64_t)> &done, const TakeSamples &take) {
  const int chunk =
      std::clamp(static_cast<int>(kLargestChunk / std::max(ratio, 1.0)), kSmallestChunk, kLargestChunk);
  // Beyond the end for one more output, so that none is missing where an instant is rounded.
  const std::int64_t total = extent.count + static_cast<std::int64_t>(1.0 / ratio) + 2;
  QORN::SequentialResampler resampler(ratio, total, chunk, kWindow, kPointsPerSample, kCutoff, kAlpha);
  const int margins = resampler.GetNumOfPreSamples() + resampler.GetNumOfPostSamples();
  Window window(recording, extent);
  QORN::VecCplx32 output;
  std::int64_t left = ResampledCount(extent.count, ratio);
  for (int i = 0; i < resampler.GetNumOfChunks() && left > 0; ++i) {
    const bool last = i == resampler.GetNumOfChunks() - 1;
    const int size = last ? resampler.GetLastChunkSize() : resampler.GetChunkSize();
    const std::int64_t first = resampler.GetNextIndexInSrc() - resampler.GetNumOfPreSamples();
    resampler.Apply(output, window.Move(first, size + margins));
    // Chunks may reach somewhat further than the extent.
    const auto n = static_cast<int>(std::min<std::int64_t>(output.GetSize(), left));
    if (n > 0) take(output.GetPtr(), n);
    left -= n;
    done(std::min(first + margins + size, extent.count));
  }
}

} // namespace tool
