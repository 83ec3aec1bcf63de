#include "FilteredRecording.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <utility>

#include "RecordingWriter.h"

namespace tool {

namespace {

constexpr int kBlock = 1 << 16; // samples

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
      if (first < block.GetSize()) take(block.GetPtr(first), block.GetSize() - first);
    };
    BlockStream stream(m_recording, m_extent.start, m_extent.count, kBlock);
    while (stream.NextOrRest(block)) {
      const int read = block.GetSize();
      apply();
      m_done(m_read += read);
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

} // namespace

FilteredRecording WriteFiltered(std::ostream &out, Format format, const Recording &recording,
                                const Extent &extent, const FilterDesign &design,
                                const std::function<void(std::int64_t)> &done) {
  Run run(recording, extent, design, done);
  FilteredRecording result{};
  result.samples = extent.count;
  result.advance = static_cast<int>(design.taps.size() / 2);
  bool finite = true;
  float peak = 0.0F;
  run.ForEach([&](const QORN::Cplx32 *samples, int n) {
    for (int i = 0; i < n; ++i) {
      const float part = std::max(std::fabs(samples[i].re), std::fabs(samples[i].im));
      finite = finite && std::isfinite(samples[i].re) && std::isfinite(samples[i].im);
      peak = std::max(peak, part);
    }
  });
  recording.CheckFinite(finite ? 0.0 : std::numeric_limits<double>::infinity());
  result.peak = static_cast<double>(peak);

  RecordingHead head = recording.Head();
  head.samples = extent.count;
  // Values far below the steps of the recording itself would tell nothing.
  head.step = StepFor(format, std::max(result.peak, 0.03 * recording.Step()));
  result.step = head.step;
  if (format == Format::kIqf) result.frames = (extent.count + head.framePoints - 1) / head.framePoints;
  const std::unique_ptr<RecordingWriter> writer = MakeRecordingWriter(format, out, head);
  run.ForEach([&](const QORN::Cplx32 *samples, int n) { writer->Put(samples, n); });
  writer->End();
  return result;
}

} // namespace tool
