#include "qorn/dsp/DecimationFilter.h"

#include <algorithm>
#include <climits>
#include <cstdint>

#include "math/Elementwise.h"

namespace QORN {

DecimationFilter::DecimationFilter(int stages, VecReal32 const &taps)
    : m_stages(static_cast<std::size_t>(std::max(stages, 0)), SFIRFilter(taps)),
      m_tapCount(std::max(taps.GetSize(), 0)), m_stageCount(std::max(stages, 0)) {}

template <class V> void DecimationFilter::Run(V &out, V const &in, V &filtered, V &kept) {
  const V *block = &in;
  for (SFIRFilter &stage : m_stages) {
    stage.Apply(filtered, *block, true);
    const int size = filtered.GetSize();
    if (size < 2) return out.Resize(0);
    int count = (size + 1) / 2, phase = 0;
    kept.Resize(count);
    Kernels<ElementOf<V>>::SampleDown(filtered.GetPtr(), size, kept.GetPtr(), &count, 2, &phase);
    block = &kept;
  }
  if (block != &out) out = *block;
}

void DecimationFilter::Apply(VecReal32 &out, VecReal32 const &in) { Run(out, in, m_filtered, m_kept); }

void DecimationFilter::Apply(VecCplx32 &out, VecCplx32 const &in) {
  Run(out, in, m_cplxFiltered, m_cplxKept);
}

int DecimationFilter::GetRequiredInputLength(int outputLength) const {
  std::int64_t length = outputLength;
  for (int stage = 0; stage < m_stageCount; ++stage) {
    length = std::clamp<std::int64_t>((length + (m_tapCount - 1) / 2) * 2, INT_MIN, INT_MAX);
  }
  return static_cast<int>(length);
}

int DecimationFilter::GetFilterChargeTime() const { return GetRequiredInputLength(0); }

void DecimationFilter::Flush() {
  for (SFIRFilter &stage : m_stages) stage.Flush();
}

} // namespace QORN
