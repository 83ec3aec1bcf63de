#include "qorn/dsp/UserDefinedFilters.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "infra/Constants.h"
#include "qorn/infra/TargetLib.h"

namespace QORN {

template <class F> void UserTapsFilter<F>::SetUserTaps(VecCplx32 const &taps, float tapRate) {
  m_userTaps = taps;
  m_tapRate = tapRate;
  m_complex = true;
  m_tapsPresent = true;
  if (!m_parametersSet) return;
  Resample();
  m_delay = static_cast<float>((m_tapSize - 1) / 2);
}

template <class F> void UserTapsFilter<F>::SetUserTaps(VecReal32 const &taps, float tapRate) {
  SetUserTaps(VecCplx32(taps), tapRate);
}

template <class F> int UserTapsFilter<F>::GetRecommendedTapSize(float samplingRate, float rate, float) {
  if (!m_tapsPresent) return 1023;
  SetParameters(samplingRate, rate, 0.0F, 0);
  return m_tapSize;
}

template <class F> void UserTapsFilter<F>::SetParameters(float samplingRate, float rate, float, int n) {
  const bool changed = !m_parametersSet || samplingRate != m_samplingRate || rate != m_rate;
  m_samplingRate = samplingRate;
  m_rate = rate;
  if (m_tapsPresent) {
    if (changed) Resample();
    if (n > 0 && n != m_tapSize) {
      ResizeFilterTaps(m_cplxTaps, n, m_tapSize);
      m_tapSize = n;
    }
    m_delay = static_cast<float>((m_tapSize - 1) / 2);
  }
  m_parametersSet = true;
}

template <class F> void UserTapsFilter<F>::Clear() {
  m_tapsPresent = false;
  m_parametersSet = false;
}

template <class F> void UserTapsFilter<F>::Resample() {
  m_parametersSet = false; // where memory fails, the next SetParameters tries again
  F::ComputeResampledFilterTaps(m_cplxTaps, m_userTaps, m_tapRate, m_samplingRate / m_rate);
  m_tapSize = m_cplxTaps.GetSize();
  m_parametersSet = true;
}

template <class F> void UserTapsFilter<F>::ResizeFilterTaps(VecCplx32 &taps, int newSize, int oldSize) {
  const VecCplx32 old(taps);
  const int from = std::clamp(oldSize, 0, taps.GetSize()), to = std::max(newSize, 0);
  taps.Resize(to);
  taps.SetZero();
  const int before = (to - from) / 2; // zeros put in front, or taps taken away there
  TargetLib::Copy_32fc(old.GetPtr(std::max(-before, 0)), taps.GetPtr(std::max(before, 0)),
                       std::min(from, to));
}

template class UserTapsFilter<UserDefinedFilter>;
template class UserTapsFilter<IntegralUserDefinedFilter>;

namespace {

constexpr double kMostTaps = 1 << 22; // also points of the fine grid
constexpr double kMostAdditions = 0x1p+37;
using constants::kPi;
constexpr auto kWidenedPi = static_cast<double>(kPi<float>);

bool IsPositive(double x) { return x > 0.0 && std::isfinite(x); }

// The centroid of energy of the taps, or their middle where there is none.
double Centroid(const VecCplx32 &taps) {
  double energy = 0.0, moment = 0.0;
  for (int i = 0; i < taps.GetSize(); ++i) {
    const auto re = static_cast<double>(taps[i].re), im = static_cast<double>(taps[i].im);
    const double square = re * re + im * im;
    energy += square;
    moment += i * square;
  }
  return energy > 0.0 ? moment / energy : (taps.GetSize() - 1) * 0.5;
}

// From the centroid to the farther end.
double Reach(const VecCplx32 &taps, double centroid) {
  return std::max(centroid, taps.GetSize() - 1 - centroid);
}

// Halves away from zero.
double Nearest(double p) { return std::trunc(p + (p < 0.0 ? -0.5 : 0.5)); }

// True if p is as good as the place r of a tap.
bool IsPlace(double p, double r, int length) {
  return r >= 0.0 && r <= length - 1 && std::fabs(p - r) < 0.001;
}

// The weights sin(a) / a, a = (i - p) pi, of the taps i from First() to End() - 1.
class SincWeights {
public:
  SincWeights(double p, double r, int length, double pi)
      : m_first(Place(r - kReach, length)), m_end(std::max(Place(r + kReach + 1, length), m_first)) {
    double angle[2 * kReach + 1];
    const int count = m_end - m_first;
    for (int i = 0; i < count; ++i) angle[i] = (m_first + i - p) * pi;
    TargetLib::Sin_64f(angle, m_weight, count);
    for (int i = 0; i < count; ++i) m_weight[i] /= angle[i];
  }

  int First() const { return m_first; }
  int End() const { return m_end; }

  /// Tap i times its weight, rounded to float.
  Cplx32 Times(const VecCplx32 &taps, int i) const {
    const double weight = m_weight[i - m_first];
    return {static_cast<float>(static_cast<double>(taps[i].re) * weight),
            static_cast<float>(static_cast<double>(taps[i].im) * weight)};
  }

private:
  static constexpr int kReach = 200;

  static int Place(double x, int length) {
    return static_cast<int>(std::clamp(x, 0.0, static_cast<double>(length)));
  }

  int m_first, m_end;
  double m_weight[2 * kReach + 1];
};

} // namespace

void UserDefinedFilter::ComputeResampledFilterTaps(VecCplx32 &out, VecCplx32 const &user, float tapRate,
                                                   float ratio) {
  const int length = user.GetSize();
  const auto step = static_cast<double>(tapRate / ratio);
  const double centroid = Centroid(user);
  const double count = std::trunc(Reach(user, centroid) / step) * 2.0 + 3.0;
  out.Resize(IsPositive(step) && count >= 1.0 && count <= kMostTaps ? static_cast<int>(count) : 0);
  const int n = out.GetSize();
  for (int j = 0; j < n; ++j) {
    const double p = centroid - (j - n / 2) * step, r = Nearest(p);
    Cplx32 sum{0.0F, 0.0F};
    if (IsPlace(p, r, length)) {
      sum = user[static_cast<int>(r)];
    } else {
      const SincWeights weights(p, r, length, kWidenedPi);
      for (int i = weights.First(); i < weights.End(); ++i) {
        const Cplx32 term = weights.Times(user, i);
        sum = {sum.re + term.re, sum.im + term.im};
      }
    }
    out[j] = {sum.re / ratio, sum.im / ratio};
  }
}

void IntegralUserDefinedFilter::ComputeResampledFilterTaps(VecCplx32 &out, VecCplx32 const &user,
                                                           float tapRate, float ratio) {
  out.Resize(0);
  const int length = user.GetSize();
  auto step = static_cast<double>(tapRate / ratio);
  const auto rate = static_cast<double>(tapRate);
  if (!IsPositive(rate) || !(ratio > 0.0F) || !IsPositive(step)) return;
  int pointsPerSample = 1;
  for (; rate / step < 32.0 && pointsPerSample < kMostTaps; pointsPerSample *= 2) step *= 0.5;
  const double centroid = Centroid(user);
  const auto wideHalf = static_cast<double>(std::trunc(static_cast<float>(pointsPerSample) * ratio * 0.5F));
  const double widePoints = (std::trunc(Reach(user, centroid) / step) + wideHalf) * 2.0 + 1.0;
  if (!(widePoints >= 1.0 && widePoints <= kMostTaps)) return;

  const int half = static_cast<int>(wideHalf);
  int points = static_cast<int>(widePoints);
  int samples = points / pointsPerSample;
  if (samples % 2 == 0) {
    samples += 1;
    points = samples * pointsPerSample + 1;
  }
  const double additions = static_cast<double>(points) * (2.0 * half + 1.0) * std::min(length, 401);
  if (points > kMostTaps || additions > kMostAdditions) return;

  const int offset = (samples / 2 + 1) * pointsPerSample - 1;
  VecCplx32 fine(points);
  for (int i = 0; i < points; ++i) {
    const double p = (i - 0.5 - offset) * step + centroid, r = Nearest(p);
    if (!(r >= 0.0 && r <= length - 1)) continue;
    if (IsPlace(p, r, length)) {
      fine[i] = user[static_cast<int>(r)];
      continue;
    }
    const int first = std::max(i - half, 0), last = std::min(i + half, points - 1);
    const SincWeights weights(p, r, length, kPi<double>);
    for (int k = weights.First(); k < weights.End(); ++k) {
      TargetLib::AddC_32fc_I(weights.Times(user, k), fine.GetPtr(first), last - first + 1);
    }
  }

  out.Resize(samples);
  double re = 0.0, im = 0.0;
  for (int g = 0, i = 0; g < samples; ++g) {
    for (const int end = i + pointsPerSample; i < end; ++i) {
      re += static_cast<double>(fine[i].re);
      im += static_cast<double>(fine[i].im);
    }
    out[g] = {static_cast<float>(re), static_cast<float>(im)};
  }
  const double square = re * re + im * im;
  if (square > 0.0) out.Mul(static_cast<float>(1.0 / std::sqrt(square)));
}

namespace {

float Product(float a, float b) { return a * b; }
Cplx32 Product(Cplx32 a, Cplx32 b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
void Accumulate(float &sum, float x) { sum += x; }
void Accumulate(Cplx32 &sum, Cplx32 x) {
  sum.re += x.re;
  sum.im += x.im;
}
bool IsZero(float x) { return x == 0.0F; }
bool IsZero(Cplx32 x) { return x.re == 0.0F && x.im == 0.0F; }

// By how many samples the output is early: an advance in samples, rounded, halves upwards. Beyond the limit,
// which no vector reaches, and for not-a-number every input has passed.
std::int64_t WholeSamples(float advance) {
  constexpr double kLimit = 0x1p+40;
  const double rounded = std::floor(static_cast<double>(advance) + 0.5);
  return static_cast<std::int64_t>(rounded < kLimit ? std::max(rounded, -kLimit) : kLimit);
}

// The sum of the taps' responses, each of which stays at its last value; see Apply.
template <class V> void ApplyHolding(V &out, const V &in, const V &taps, float advance) {
  if (&out == &in) {
    const V samples(in);
    ApplyHolding(out, samples, taps, advance);
    return;
  }
  const int length = in.GetSize();
  out.Resize(length);
  out.SetZero();
  const std::int64_t shift = WholeSamples(advance), end = length - 1;
  for (int n = 0; n < length; ++n) {
    const std::int64_t begin = n - shift, last = std::min(begin + taps.GetSize() - 1, end);
    if (last < 0) continue;
    const std::int64_t first = std::max<std::int64_t>(begin, 0);
    if (first <= last && !IsZero(in[n])) {
      auto *sum = out.GetPtr(static_cast<int>(first));
      const auto *tap = taps.GetPtr(static_cast<int>(first - begin));
      const auto sample = in[n];
      for (std::int64_t i = 0; i <= last - first; ++i) Accumulate(sum[i], Product(tap[i], sample));
    }
    if (last < end) out[static_cast<int>(last) + 1] = out[static_cast<int>(last)];
  }
}

} // namespace

void IntegralUserDefinedFilter::Apply(VecCplx32 &out, VecCplx32 const &in, bool) {
  ApplyHolding(out, in, m_cplxTaps, m_samplingRate * m_timeShift + m_delay);
}

void IntegralUserDefinedFilter::Apply(VecReal32 &out, VecReal32 const &in, bool) {
  VecReal32 taps;
  m_cplxTaps.GetReal(taps);
  ApplyHolding(out, in, taps, m_samplingRate * m_timeShift + m_delay);
}

} // namespace QORN
