#include "qorn/dsp/SequentialResampler.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "qorn/dsp/ArbRateResampler.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

namespace {

constexpr float kAlpha = 6.865F;

// x truncated, or the nearest integer that the limit allows; 0 for not-a-number.
long long Truncated(double x, double limit) {
  return std::isnan(x) ? 0 : static_cast<long long>(std::clamp(x, -limit, limit));
}

} // namespace

SequentialResampler::SequentialResampler(double ratio, long long totalSamples, int chunkSize)
    : SequentialResampler(ratio, totalSamples, chunkSize, 10.0F, 200) {}

SequentialResampler::SequentialResampler(double ratio, long long totalSamples, int chunkSize, float window,
                                         int nStep)
    : SequentialResampler(ratio, totalSamples, chunkSize, window, nStep, 0.95F, kAlpha) {}

SequentialResampler::SequentialResampler(double ratio, long long totalSamples, int chunkSize, float window,
                                         int nStep, float rollf, float /*alpha*/)
    : m_totalSamples(totalSamples),
      m_resampler(std::make_unique<ArbRateResampler>(ratio, window, nStep, rollf, kAlpha)), m_ratio(ratio),
      m_history(m_resampler->GetHistory()) {
  ComputeSeqParams(chunkSize);
}

SequentialResampler::SequentialResampler(const SequentialResampler &other)
    : m_totalSamples(other.m_totalSamples), m_chunkIndex(other.m_chunkIndex), m_chunkSize(other.m_chunkSize),
      m_numChunks(other.m_numChunks), m_lastChunkSize(other.m_lastChunkSize),
      m_resampler(std::make_unique<ArbRateResampler>(*other.m_resampler)), m_ratio(other.m_ratio),
      m_history(other.m_history), m_fractTime(other.m_fractTime), m_consumed(other.m_consumed),
      m_nextIndexInSrc(other.m_nextIndexInSrc) {}

SequentialResampler &SequentialResampler::operator=(const SequentialResampler &other) {
  // What can fail comes first.
  m_resampler = std::make_unique<ArbRateResampler>(*other.m_resampler);
  m_totalSamples = other.m_totalSamples;
  m_chunkIndex = other.m_chunkIndex;
  m_chunkSize = other.m_chunkSize;
  m_numChunks = other.m_numChunks;
  m_lastChunkSize = other.m_lastChunkSize;
  m_ratio = other.m_ratio;
  m_history = other.m_history;
  m_fractTime = other.m_fractTime;
  m_consumed = other.m_consumed;
  m_nextIndexInSrc = other.m_nextIndexInSrc;
  return *this;
}
SequentialResampler::~SequentialResampler() = default;

void SequentialResampler::ComputeSeqParams(int chunkSize) {
  m_chunkSize = chunkSize;
  m_chunkIndex = 0;
  constexpr double kMostChunks = 2147483646.0; // leaves one for the rest
  m_numChunks = static_cast<int>(Truncated(static_cast<double>(m_totalSamples) / chunkSize, kMostChunks));
  const long long rest = m_totalSamples - static_cast<long long>(m_numChunks) * chunkSize;
  m_lastChunkSize = static_cast<int>(static_cast<std::uint32_t>(rest));
  if (m_lastChunkSize == 0) {
    m_lastChunkSize = chunkSize;
  } else {
    ++m_numChunks;
  }
  m_fractTime = 0.0;
  m_consumed = m_nextIndexInSrc = 0;
}

void SequentialResampler::Apply(VecReal32 &dst, const VecReal32 &src) { ApplyNext(dst, src); }
void SequentialResampler::Apply(VecCplx32 &dst, const VecCplx32 &src) { ApplyNext(dst, src); }

template <class V> void SequentialResampler::ApplyNext(V &dst, const V &src) {
  const int count = m_chunkIndex == m_numChunks - 1 ? m_lastChunkSize : m_chunkSize;
  const double time = m_resampler->Apply(dst, src, m_history + m_fractTime, count);

  // The next output lies `advance` samples behind the start of this chunk. The fraction is taken from that
  // and not from the place in the record, which would cost it a digit for every tenfold of samples. A place
  // that rounds to a sample is that sample.
  const double advance = time - m_history;
  const double place = advance + static_cast<double>(m_consumed);
  const long long consumed = Truncated(place, 0x1p62);
  m_fractTime =
      place == static_cast<double>(consumed) ? 0.0 : advance - static_cast<double>(consumed - m_consumed);
  m_consumed = m_nextIndexInSrc = consumed;
  ++m_chunkIndex;
}

void SequentialResampler::EnableInternalResampler() { m_resampler->UseAlternateResampler(m_ratio < 1.0); }

} // namespace QORN
