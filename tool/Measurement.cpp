#include "Measurement.h"

#include <algorithm>
#include <cmath>

#include "BlockTransform.h"

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

// The integral over the points, by trapezia.
double PowerUnder(const QORN::VecReal64 &mean) {
  return mean.Sum() - 0.5 * (mean[0] + mean[mean.GetSize() - 1]);
}

// Peaks stand out of noise that is as flat as it was recorded, so they were found before.
void Correct(Measurement &m) {
  QORN::VecReal64 frequencies(m.Points());
  for (int k = 0; k < m.Points(); ++k) frequencies[k] = m.FrequencyOf(k);
  const QORN::VecReal64 factors = m.setup.correction->FactorsAt(frequencies);
  m.mean *= factors;
  m.hold *= factors;
  m.totalPower = m.mean.Sum() * m.spacing / m.noiseBandwidth;
  if (m.noiseFloor > 0.0) m.noiseFloor = NoiseFloor(m.mean, m.blocks);
  for (Peak &peak : m.peaks) peak.power *= factors[peak.index];
  std::stable_sort(m.peaks.begin(), m.peaks.end(),
                   [](const Peak &a, const Peak &b) { return a.power > b.power; });
}

} // namespace

Measurement Measure(const Recording &recording, const Setup &setup,
                    const std::function<void(std::int64_t)> &done) {
  Measurement result{};
  result.setup = setup;
  result.recordedCentre = recording.Centre();
  result.recordedSpan = recording.Span();
  result.rate = recording.Rate();
  const double bin = result.rate / setup.block;
  const int points = setup.zoom ? setup.zoom->points : setup.block;
  result.centre = setup.zoom ? setup.zoom->centre : result.recordedCentre;
  result.middle = setup.zoom ? 0.5 * (points - 1) : points / 2;
  result.spacing = setup.zoom ? setup.zoom->span / (points - 1) : bin;
  result.resolution = result.spacing;
  const std::unique_ptr<QORN::Window> window = MakeWindow(*setup.window, setup.block);
  result.noiseBandwidth = bin * static_cast<double>(window->GetENBW());
  // The windows of the CISPR bands choose their figure by the bandwidth itself.
  window->Set6dBBWParam(bin * static_cast<double>(window->GetEffectiveRBWScaling()));
  result.resolutionBandwidth = bin * static_cast<double>(window->GetEffectiveRBWScaling());

  const BlockTransform transform =
      setup.zoom ? ZoomedSpectrum(*setup.window, setup.block, result.rate, points,
                                  result.FrequencyOf(0) - result.recordedCentre, result.spacing)
                 : WholeSpectrum(*setup.window, setup.block);
  BlockStream stream(recording, setup.start, setup.count, setup.block);
  QORN::VecCplx32 block;
  QORN::VecReal64 powers;
  result.mean.Resize(points);
  result.hold.Resize(points);
  QORN::VecReal64 squares(points); // of the powers
  for (; stream.Next(block); ++result.blocks) {
    transform(powers, block);
    const double *power = powers.GetPtr();
    double *mean = result.mean.GetPtr();
    double *hold = result.hold.GetPtr();
    double *square = squares.GetPtr();
    for (int k = 0; k < points; ++k) {
      mean[k] += power[k];
      square[k] += power[k] * power[k];
      hold[k] = std::max(hold[k], power[k]);
    }
    double norm = 0.0;
    QORN::TargetLib::Norm_L2_32fc64f(block.GetPtr(), setup.block, &norm);
    result.totalPower += norm * norm;
    done((result.blocks + 1) * setup.block);
  }
  result.mean *= 1.0 / static_cast<double>(result.blocks);
  result.totalPower = setup.zoom ? PowerUnder(result.mean) * result.spacing / result.noiseBandwidth
                                 : result.totalPower / (static_cast<double>(result.blocks) * setup.block);
  result.polarFrames = stream.PolarFrames();

  double sum = result.totalPower;
  for (int k = 0; k < points; ++k) sum += result.mean[k] + result.hold[k];
  recording.CheckFinite(sum);

  // In a narrower span, a single tone fills more than half of the points.
  const double least = 10.0 * result.noiseBandwidth;
  if (!setup.zoom || setup.zoom->span >= least) result.noiseFloor = NoiseFloor(result.mean, result.blocks);
  result.peaks =
      FindPeaks(result.mean, StandardErrors(result.mean, squares, result.blocks), result.blocks,
                result.noiseFloor, LeakageOf(*window), {result.spacing / bin, !setup.zoom.has_value()});
  if (setup.correction) Correct(result);
  return result;
}

} // namespace tool
