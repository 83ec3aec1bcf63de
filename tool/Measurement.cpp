#include "Measurement.h"

#include <algorithm>
#include <cmath>

#include "Failure.h"
#include "Text.h"

namespace tool {

namespace {

// The standard error of each mean relative to it, from the sum of squares. One block tells nothing: then that
// of noise.
QORN::VecReal64 StandardErrors(const QORN::VecReal64 &mean, const QORN::VecReal64 &squares,
                               std::int64_t blocks) {
  QORN::VecReal64 errors(mean.GetSize());
  const auto n = static_cast<double>(blocks);
  for (int k = 0; k < mean.GetSize(); ++k) {
    const double ratio = mean[k] > 0.0 ? squares[k] / (n * mean[k] * mean[k]) : 1.0;
    errors[k] = blocks > 1 ? std::sqrt(std::max(ratio - 1.0, 0.0) / (n - 1.0)) : 1.0;
  }
  return errors;
}

} // namespace

Measurement Measure(const Recording &recording, const Setup &setup,
                    const std::function<void(std::int64_t)> &done) {
  const QORN::IQFReader &reader = recording.Reader();
  const int points = setup.points;

  Measurement result{};
  result.setup = setup;
  result.centre = reader.GetCenterFrequency();
  result.span = reader.GetSpan();
  result.rate = reader.GetSamplingFrequency();
  result.binSpacing = result.rate / points;
  const std::unique_ptr<QORN::Window> window = MakeWindow(*setup.window, points);
  result.noiseBandwidth = result.binSpacing * static_cast<double>(window->GetENBW());
  // The windows of the CISPR bands choose their figure by the bandwidth itself.
  window->Set6dBBWParam(result.binSpacing * static_cast<double>(window->GetEffectiveRBWScaling()));
  result.resolutionBandwidth = result.binSpacing * static_cast<double>(window->GetEffectiveRBWScaling());

  QORN::Spectrum spectrum(points, setup.window->type, setup.window->parameter);
  spectrum.SetUnit(QORN::PowerUnitVolt);
  BlockStream stream(reader, setup.start, setup.count, points);
  QORN::VecCplx32 block;
  QORN::VecReal32 volts;
  result.mean.Resize(points);
  result.hold.Resize(points);
  QORN::VecReal64 squares(points); // of the powers
  for (; stream.Next(block); ++result.blocks) {
    spectrum.Apply(volts, block);
    const float *magnitude = volts.GetPtr();
    double *mean = result.mean.GetPtr();
    double *hold = result.hold.GetPtr();
    double *square = squares.GetPtr();
    for (int k = 0; k < points; ++k) {
      const double power = static_cast<double>(magnitude[k]) * static_cast<double>(magnitude[k]);
      mean[k] += power;
      square[k] += power * power;
      hold[k] = std::max(hold[k], power);
    }
    double norm = 0.0;
    QORN::TargetLib::Norm_L2_32fc64f(block.GetPtr(), points, &norm);
    result.totalPower += norm * norm;
    done((result.blocks + 1) * points);
  }
  result.mean *= 1.0 / static_cast<double>(result.blocks);
  result.totalPower /= static_cast<double>(result.blocks) * points;
  result.polarFrames = stream.PolarFrames();

  double sum = result.totalPower;
  for (int k = 0; k < points; ++k) sum += result.mean[k] + result.hold[k];
  if (!std::isfinite(sum))
    throw DataError("recording " + Quoted(recording.Path()) +
                    " has no finite samples: its levels, IOffset or QOffset are out of range");

  result.noiseFloor = NoiseFloor(result.mean, result.blocks);
  result.peaks = FindPeaks(result.mean, StandardErrors(result.mean, squares, result.blocks), result.blocks,
                           result.noiseFloor, LeakageOf(*window));
  return result;
}

} // namespace tool
