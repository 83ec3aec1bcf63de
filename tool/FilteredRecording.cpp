#include "FilteredRecording.h"

#include <algorithm>
#include <utility>

#include "FittedRecording.h"

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

  void ForEach(const TakeSamples &take) {
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
  RecordingHead head = recording.Head();
  head.samples = extent.count;
  const FittedRecording fitted =
      WriteFitted(out, format, head, recording, [&](const TakeSamples &take) { run.ForEach(take); });
  return {extent.count, FramesFor(format, head), static_cast<int>(design.taps.size() / 2), fitted.peak,
          fitted.step};
}

} // namespace tool
