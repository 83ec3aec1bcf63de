#include "FilteredRecording.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "IqfWriter.h"
#include "Text.h"

namespace tool {

namespace {

constexpr int kBlock = 1 << 16; // samples
constexpr double kLargest = 32767.0;

QORN::SFIRFilter MakeStream(const FilterDesign &design) {
  const int count = static_cast<int>(design.taps.size());
  QORN::VecCplx32 taps(count);
  for (int i = 0; i < count; ++i) {
    const std::complex<double> tap = design.taps[static_cast<std::size_t>(i)];
    taps[i] = {static_cast<float>(tap.real()), static_cast<float>(tap.imag())};
  }
  if (design.isComplex) return QORN::SFIRFilter(taps);
  QORN::VecReal32 real;
  taps.GetReal(real);
  return QORN::SFIRFilter(real);
}

// Gives the filtered samples to take, block by block, without the first `advance` ones of the stream and with
// as many behind its end.
class Run {
public:
  Run(const Recording &recording, const Extent &extent, const FilterDesign &design,
      std::function<void(std::int64_t)> done)
      : m_recording(recording), m_extent(extent), m_design(design), m_done(std::move(done)) {}

  template <class Take> void ForEach(const Take &take) {
    QORN::SFIRFilter filter = MakeStream(m_design);
    auto skipped = static_cast<std::int64_t>(m_design.taps.size() / 2);
    const auto behind = static_cast<int>(skipped);
    QORN::VecCplx32 block;
    const auto apply = [&] {
      filter.Apply(block, false);
      const auto first = static_cast<int>(std::min<std::int64_t>(skipped, block.GetSize()));
      skipped -= first;
      for (int i = first; i < block.GetSize(); ++i) take(block[i]);
    };
    const std::int64_t rest = m_extent.count % kBlock;
    BlockStream whole(m_recording.Reader(), m_extent.start, m_extent.count - rest, kBlock);
    while (whole.Next(block)) {
      apply();
      m_done(m_read += kBlock);
    }
    if (rest > 0) {
      BlockStream last(m_recording.Reader(), m_extent.start + m_extent.count - rest, rest,
                       static_cast<int>(rest));
      last.Next(block);
      apply();
      m_done(m_read += rest);
    }
    block.Resize(behind);
    block.SetZero();
    apply();
  }

private:
  const Recording &m_recording;
  Extent m_extent;
  const FilterDesign &m_design;
  std::function<void(std::int64_t)> m_done;
  std::int64_t m_read = 0;
};

// The header of the recording for other samples: of so many frames, and of so many volts per step.
std::string HeaderOf(const QORN::IQFReader &reader, std::int64_t frames, double step) {
  std::string header;
  char value[61];
  const auto copy = [&](const char *key) {
    if (reader.GetHeader(key, value)) header += std::string(key) + "=" + value + "\r\n";
  };
  double level = 10.0 * std::log10(10.0 * step * step); // dBm of a tone of one step
  for (const char *key : {"Title", "FFTPoints", "Bins", "CenterFrequency", "Span", "FrameLength",
                          "UnitPeriod", "BlockSize", "MultiFrames"})
    copy(key);
  header += "ValidFrames=" + std::to_string(frames) +
            "\r\nMaxInputLevel=" + Shortest(reader.GetMaxInputLevel()) + "\r\n";
  level -= reader.GetMaxInputLevel();
  return header + "LevelOffset=0\r\nGainOffset=" + Shortest(level) + "\r\nIOffset=0\r\nQOffset=0\r\n";
}

std::vector<std::pair<int, int>> FlatnessOf(const Recording &recording) {
  std::vector<std::pair<int, int>> pairs;
  if (!recording.HasFlatness()) return pairs;
  QORN::FrameHeader header;
  QORN::VecReal32 amplitude, phase;
  recording.Reader().GetRawFlatness(&header, amplitude, phase);
  for (int i = 0; i < amplitude.GetSize(); ++i)
    pairs.emplace_back(static_cast<int>(amplitude[i]), static_cast<int>(phase[i]));
  return pairs;
}

} // namespace

FilteredRecording WriteFiltered(std::ostream &out, const Recording &recording, const Extent &extent,
                                const FilterDesign &design, const std::function<void(std::int64_t)> &done) {
  const QORN::IQFReader &reader = recording.Reader();
  const int points = reader.GetFFTPoints();
  Run run(recording, extent, design, done);
  FilteredRecording result{};
  result.samples = extent.count;
  result.frames = (extent.count + points - 1) / points;
  result.advance = static_cast<int>(design.taps.size() / 2);
  bool finite = true;
  float peak = 0.0F;
  run.ForEach([&](const QORN::Cplx32 &sample) {
    const float part = std::max(std::fabs(sample.re), std::fabs(sample.im));
    finite = finite && std::isfinite(sample.re) && std::isfinite(sample.im);
    peak = std::max(peak, part);
  });
  recording.CheckFinite(finite ? 0.0 : std::numeric_limits<double>::infinity());
  result.peak = static_cast<double>(peak);
  // Steps far below those of the recording itself would tell nothing.
  result.step = std::max(result.peak / kLargest, 1e-6 * reader.GetScalingFactor());

  IqfWriter writer(out, HeaderOf(reader, result.frames, result.step), points);
  const auto steps = [&](float volts) {
    return static_cast<int>(std::lround(std::min(static_cast<double>(volts) / result.step, kLargest)));
  };
  run.ForEach([&](const QORN::Cplx32 &sample) { writer.Put(steps(sample.re), steps(sample.im)); });
  writer.End(FlatnessOf(recording));
  return result;
}

} // namespace tool
