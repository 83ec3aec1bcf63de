#include "FittedRecording.h"

#include <algorithm>
#include <bit>
#include <memory>

namespace tool {

void LargestPart::Add(const QORN::Cplx32 *samples, int n) {
  // Floats above zero are ordered as their bits are, and what is not finite comes last.
  constexpr std::int32_t kMagnitude = 0x7FFFFFFF;
  std::int32_t magnitude = m_magnitude;
  std::int32_t highest = m_highest;
  for (int i = 0; i < n; ++i)
    for (const float part : {samples[i].re, samples[i].im}) {
      const auto bits = std::bit_cast<std::int32_t>(part);
      magnitude = std::max(magnitude, bits & kMagnitude);
      highest = std::max(highest, bits);
    }
  m_magnitude = magnitude;
  m_highest = highest;
}

double LargestPart::Magnitude() const { return static_cast<double>(std::bit_cast<float>(m_magnitude)); }

double LargestPart::Highest() const { return static_cast<double>(std::bit_cast<float>(m_highest)); }

std::int64_t FramesFor(Format format, const RecordingHead &head) {
  return format == Format::kIqf ? (head.samples + head.framePoints - 1) / head.framePoints : 0;
}

int RunsFor(Format format) { return format == Format::kCf32 ? 1 : 2; }

FittedRecording WriteFitted(std::ostream &out, Format format, RecordingHead head, const Recording &recording,
                            const SampleRun &run) {
  CheckCount(format, head);
  LargestPart peak;
  const auto add = [&](const QORN::Cplx32 *samples, int n) { peak.Add(samples, n); };
  if (RunsFor(format) == 2) {
    run(add);
    recording.CheckFinite(peak.Magnitude());
  }
  // Values far below the steps of the recording itself would tell nothing.
  head.step = StepFor(format, std::max(peak.Magnitude(), 0.03 * recording.Step()));
  const std::unique_ptr<RecordingWriter> writer = MakeRecordingWriter(format, out, head);
  run([&](const QORN::Cplx32 *samples, int n) {
    if (RunsFor(format) == 1) add(samples, n);
    writer->Put(samples, n);
  });
  writer->End();
  recording.CheckFinite(peak.Magnitude());
  return {peak.Magnitude(), head.step};
}

} // namespace tool
