#include "qorn/dsp/ArbRateResampler.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <type_traits>
#include <utility>

#include "infra/kernels/Levels.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

using Index = std::ptrdiff_t;

constexpr double kIntRange = 2147483648.0;

int Saturated(std::int64_t x) {
  using Limits = std::numeric_limits<int>;
  return static_cast<int>(std::clamp<std::int64_t>(x, Limits::min(), Limits::max()));
}

// x truncated; the nearest int if it is out of range, 0 if it is not finite.
int Truncated(double x) {
  return std::isfinite(x) ? static_cast<int>(std::clamp(x, -kIntRange, kIntRange - 1.0)) : 0;
}

Index RoundedUp(Index n, Index factor) { return (n + factor - 1) / factor * factor; }

// The number of instants from the first on that lie before end.
std::int64_t CountBefore(double end, const kernels::Instants &instants, double step) {
  const double estimate = std::ceil((end - instants.start) / step);
  if (estimate >= kIntRange) return std::numeric_limits<int>::max();
  auto count = static_cast<Index>(estimate);
  while (count > 0 && instants[count - 1] >= end) --count;
  while (instants[count] < end) ++count;
  return count;
}

int HistoryOf(float window, double ratio) {
  const int reach = ratio < 1.0 ? Truncated(static_cast<double>(window) / (ratio * -2.0))
                                : Truncated(static_cast<double>(window * -0.5F));
  return Saturated(1 - static_cast<std::int64_t>(reach));
}

// At most a number that no memory is given for.
int PointsOf(float window, int nStep) {
  const double points = 0.5 * static_cast<double>(window) * nStep;
  return nStep > 0 && points >= 1.0 ? static_cast<int>(std::min(points, 0x1p30)) : 0;
}

} // namespace

struct ArbRateResampler::Design {
  Design(double ratio, float window, int nStep, float rollf, float alpha);

  kernels::ResampleTable Table() const {
    return {points.GetPtr(), length, nStep, gain, length > 0 ? rows.GetPtr() + zeros : nullptr, wing,
            stride,          pitch};
  }

  void MakePoints(float rollf, float alpha);
  void MakeRows();

  int nStep;
  int length; // points of a wing
  float gain = 1.0F;
  VecReal32 points; // one more than length, which is zero: the last interval falls to it
  Index wing;
  Index stride;
  Index zeros; // before and behind each row
  Index pitch;
  VecReal32 rows;
};

ArbRateResampler::Design::Design(double ratio, float window, int steps, float rollf, float alpha)
    : nStep(steps), length(PointsOf(window, steps)), wing(length > 0 ? (length - 1) / steps + 1 : 0) {
  stride = RoundedUp(2 * wing, kernels::kResampleLanes);
  zeros = ratio < 1.0 ? kernels::kResampleZeros : 0;
  pitch = ratio < 1.0 ? 2 * wing + zeros : stride;
  if (length == 0) return;
  rows.Resize(Saturated(4 * static_cast<Index>(nStep) * pitch + 2 * zeros));
  MakePoints(rollf, alpha);
  MakeRows();
}

void ArbRateResampler::Design::MakePoints(float rollf, float alpha) {
  VecReal64 window(2 * length + 1), taps(length + 1);
  TargetLib::GenKaiserWin_64f(window.GetPtr(), window.GetSize(), alpha);
  for (int j = 0; j <= length; ++j) {
    taps[j] = std::numbers::pi * static_cast<double>(rollf) * (static_cast<double>(j) / nStep);
  }
  VecReal64 angles(taps);
  TargetLib::Sin_64f(angles.GetPtr(), taps.GetPtr(), length + 1);
  for (int j = 0; j <= length; ++j) {
    taps[j] = (angles[j] == 0.0 ? 1.0 : taps[j] / angles[j]) * window[length + j];
  }

  const int phases = std::min(nStep, length);
  VecReal64 sums(phases);
  double mean = 0.0;
  for (int phase = 0; phase < phases; ++phase) {
    for (Index j = phase; j < length; j += nStep) sums[phase] += taps.GetPtr()[j];
    for (Index j = nStep - phase; j < length; j += nStep) sums[phase] += taps.GetPtr()[j];
    mean += sums[phase] / nStep;
  }
  bool alike = phases == nStep;
  for (int phase = 0; phase < phases; ++phase) {
    alike = alike && std::fabs(sums[phase] - mean) < 0.1 * std::fabs(mean);
  }
  points.Resize(length + 1);
  for (int j = 0; j < length; ++j) {
    points[j] = static_cast<float>(taps[j] / (alike ? sums[j % nStep] : mean));
  }
}

void ArbRateResampler::Design::MakeRows() {
  const float *h = points.GetPtr();
  for (int row = 0; row < 2 * nStep; ++row) {
    float *values = rows.GetPtr() + zeros + 2 * row * pitch + wing, *slopes = values + pitch;
    const int between = row % 2;
    for (Index y = -wing; y < wing; ++y) {
      const Index point = row / 2 + nStep * y, near = point < 0 ? -point : point;
      // A place between two points of the far wing lies inwards of `near`.
      const Index inner = point < 0 ? near - between : near;
      if (inner >= length) continue;
      const float slope = h[inner + 1] - h[inner];
      values[y] = h[near];
      slopes[y] = point < 0 ? -slope : slope;
    }
  }
}

ArbRateResampler::ArbRateResampler(double ratio) : ArbRateResampler(ratio, 90.0F, 16) {}

ArbRateResampler::ArbRateResampler(double ratio, float window, int nStep)
    : ArbRateResampler(ratio, window, nStep, 0.9F, 6.1422F) {}

ArbRateResampler::ArbRateResampler(double ratio, float window, int nStep, float rollf, float alpha)
    : m_ratio(ratio), m_history(HistoryOf(window, ratio)),
      m_design(std::make_unique<Design>(ratio, window, nStep, rollf, alpha)) {
  const Index rows = ratio < 1.0 ? kernels::kResampleRows : 2;
  m_scratch.Resize(Saturated(2 * m_design->zeros + rows * m_design->pitch));
}

ArbRateResampler::ArbRateResampler(const ArbRateResampler &other)
    : m_ratio(other.m_ratio), m_history(other.m_history), m_design(std::make_unique<Design>(*other.m_design)),
      m_scratch(other.m_scratch), m_useAlternate(other.m_useAlternate) {}

ArbRateResampler &ArbRateResampler::operator=(const ArbRateResampler &other) {
  // What can fail comes first: it changes nothing but scratch.
  auto design = std::make_unique<Design>(*other.m_design);
  m_scratch = other.m_scratch;
  m_ratio = other.m_ratio;
  m_history = other.m_history;
  m_design = std::move(design);
  m_useAlternate = other.m_useAlternate;
  return *this;
}

ArbRateResampler::~ArbRateResampler() = default;

int ArbRateResampler::Apply(VecReal32 &dst, const VecReal32 &src) { return RunWhole(dst, src); }
int ArbRateResampler::Apply(VecCplx32 &dst, const VecCplx32 &src) { return RunWhole(dst, src); }

double ArbRateResampler::Apply(VecReal32 &dst, const VecReal32 &src, double time, int len) {
  return RunFrom(dst, src, time, len);
}
double ArbRateResampler::Apply(VecCplx32 &dst, const VecCplx32 &src, double time, int len) {
  return RunFrom(dst, src, time, len);
}

template <class V> int ArbRateResampler::RunWhole(V &dst, const V &src) {
  const std::int64_t length = src.GetSize(), history = m_history;
  const int size = Truncated(static_cast<double>(length - history - 2) * m_ratio + 2.0);
  Run(dst, size, src, static_cast<double>(m_history), Saturated(length - 2 * history - 2));
  return m_history;
}

template <class V> double ArbRateResampler::RunFrom(V &dst, const V &src, double time, int len) {
  return Run(dst, m_ratio < 1.0 ? len : Truncated(std::ceil(src.GetSize() * m_ratio) + 1.0), src, time, len);
}

// size is the length of a dst that gets no outputs.
template <class V> double ArbRateResampler::Run(V &dst, int size, const V &src, double time, int len) {
  const double step = 1.0 / m_ratio;
  std::int64_t count = 0;
  double next = time;
  if (step > 0.0 && std::isfinite(step) && m_ratio > 0.0 && std::fabs(time) < kIntRange) {
    const double end = std::trunc(time) + len;
    if (m_useAlternate) {
      for (; next < end; next += step) ++count;
    } else if (time < end) {
      const kernels::Instants instants(time, step);
      count = CountBefore(end, instants, step);
      next = instants[count];
    }
  }
  const int outputs = Saturated(count);
  dst.Resize(std::max(size, count > 0 ? outputs : size));
  if (count == 0) return time;
  dst.Resize(outputs);

  const kernels::ResampleTable table = m_design->Table();
  const kernels::Table &kernel = *kernels::active;
  const auto *from = src.GetPtr();
  auto *to = dst.GetPtr();
  float *scratch = m_scratch.GetPtr();
  const int n = src.GetSize();
  if (table.length == 0 || n < 1) {
    dst.SetZero();
  } else if constexpr (std::is_same_v<V, VecReal32>) {
    if (m_useAlternate) {
      kernel.ResampleInDouble_32f(table, from, n, time, step, to, outputs);
    } else if (m_ratio < 1.0) {
      kernel.ResampleNarrow_32f(table, from, n, time, step, m_ratio, to, outputs, scratch);
    } else {
      kernel.ResampleWiden_32f(table, from, n, time, step, to, outputs, scratch);
    }
  } else {
    if (m_useAlternate) {
      kernel.ResampleInDouble_32fc(table, from, n, time, step, to, outputs);
    } else if (m_ratio < 1.0) {
      kernel.ResampleNarrow_32fc(table, from, n, time, step, m_ratio, to, outputs, scratch);
    } else {
      kernel.ResampleWiden_32fc(table, from, n, time, step, to, outputs, scratch);
    }
  }
  return next;
}

void ArbRateResampler::GetCoefficients(VecReal32 &taps, double &step) {
  const int length = m_design->length;
  taps.Resize(2 * length - 1);
  for (int i = 0; i < length; ++i) {
    taps[length - 1 + i] = taps[length - 1 - i] = m_design->points[i];
  }
  step = m_design->nStep;
}

} // namespace QORN
