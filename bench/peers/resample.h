// Resamplers of other libraries, for comparison.
#ifndef QORN_BENCH_PEERS_RESAMPLE_H
#define QORN_BENCH_PEERS_RESAMPLE_H

#include <memory>
#include <string>
#include <vector>

#include "qorn/infra/Cplx.h"

namespace peers {

/// A resampler of complex records.
class Resampler {
public:
  virtual ~Resampler() = default;

  /// Resamples a record of len samples from a state of zeros; dst has room for every output. Returns their
  /// number. The first of them may precede the record by the filter's delay.
  virtual int Run(const QORN::Cplx32 *src, int len, QORN::Cplx32 *dst, int room) = 0;
};

struct NamedResampler {
  std::string name;
  std::unique_ptr<Resampler> (*make)(double ratio);
};

/// What is installed: soxr at 16 bits ("LQ"), 20 ("HQ") and 28 ("VHQ"), libsamplerate's medium sinc
/// converter, and the polyphase resampler of liquid-dsp with filters of 90 input samples and 256 phases.
std::vector<NamedResampler> Resamplers();

} // namespace peers

#endif
