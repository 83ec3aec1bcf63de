#include "Magnitudes.h"

#include <algorithm>
#include <cmath>

#include "infra/kernels/Levels.h"

namespace QORN::fourier {

namespace {

// In root mean squares.
constexpr double kAt[Magnitudes::kSteps] = {0.25, 0.6, 1.1};
constexpr double Rise(std::size_t step) { return kAt[step] - (step == 0 ? 0 : kAt[step - 1]); }

} // namespace

Magnitudes::Magnitudes(const double *x, std::ptrdiff_t len, double norm, Life life)
    : m_unit(norm / std::sqrt(static_cast<double>(len))),
      m_counts(static_cast<std::ptrdiff_t>(kSteps) * (len / kBlock + 1), life) {
  static_assert(kBlock == 64 && kSteps == 3); // the kernel's
  double steps[kSteps];
  std::transform(kAt, kAt + kSteps, steps, [&](double step) { return step * m_unit; });
  kernels::active->ConvCountAbove_64f(x, len / kBlock, steps, m_counts.Data());
}

std::array<double, Magnitudes::kSteps> Magnitudes::Above(Range range) const {
  constexpr auto kStride = static_cast<std::ptrdiff_t>(kSteps);
  const std::ptrdiff_t first = (range.first + kBlock - 1) / kBlock, end = range.end / kBlock;
  std::array<double, kSteps> above{};
  if (first >= end) return above; // and the blocks may have come to an end
  const std::ptrdiff_t *const from = m_counts.Data() + kStride * first;
  const std::ptrdiff_t *const to = m_counts.Data() + kStride * end;
  for (std::size_t i = 0; i < kSteps; ++i) above[i] = static_cast<double>(to[i] - from[i]);
  return above;
}

bool Magnitudes::AllReach(double least, const Outputs &outputs, const Magnitudes &taps, const Magnitudes &x) {
  // The taps of which all these outputs have products, and the values of which all have products with them:
  // those between the last output's first one and the first output's last one.
  const std::ptrdiff_t n = outputs.first, last = n + outputs.count - 1;
  const std::ptrdiff_t first = std::max(std::ptrdiff_t{0}, last - (outputs.xLen - 1)),
                       end = std::min(outputs.tapCount, n + 1), terms = end - first;
  if (terms <= 0) return false;
  const Range tapRange =
      outputs.isReversed ? Range{outputs.tapCount - end, outputs.tapCount - first} : Range{first, end};
  const Range xRange{last - (end - 1) - outputs.xFirst, n - first + 1 - outputs.xFirst};
  const auto above = taps.Above(tapRange), other = x.Above(xRange);

  const double enough = least / (taps.m_unit * x.m_unit) * (1 + 1e-9);
  double sum = 0;
  for (std::size_t i = 0; i < kSteps && sum < enough; ++i) {
    const double rest = static_cast<double>(terms) - above[i];
    double own = 0;
    for (std::size_t j = 0; j < kSteps; ++j) own += std::max(other[j] - rest, 0.0) * Rise(j);
    sum += own * Rise(i);
  }
  return sum >= enough;
}

} // namespace QORN::fourier
