// A recording at another sampling rate.
#ifndef QORN_TOOL_RESAMPLEDRECORDING_H
#define QORN_TOOL_RESAMPLEDRECORDING_H

#include <cstdint>
#include <functional>

#include "Extent.h"
#include "FittedRecording.h"
#include "Recording.h"

namespace tool {

/// The part of half the lower rate that the resampler passes unchanged, to within 0.05 dB.
constexpr double kPassBand = 0.8;

/// Samples at instants 0, 1 / ratio, 2 / ratio and so on before `samples`.
std::int64_t ResampledCount(std::int64_t samples, double ratio);

/// Gives the samples of the extent at rate times ratio, chunk by chunk: ResampledCount of them. Beyond the
/// ends of the extent there are zeros. done is called now and then with the samples of the extent that are
/// through.
void Resample(const Recording &recording, const Extent &extent, double ratio,
              const std::function<void(std::int64_t)> &done, const TakeSamples &take);

} // namespace tool

#endif
