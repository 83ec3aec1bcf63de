// What the tests of the resamplers share: the stated design and the stated loop, written out once more, and
// measures of quality that know nothing of either.
#ifndef QORN_TESTS_SUPPORT_RESAMPLING_H
#define QORN_TESTS_SUPPORT_RESAMPLING_H

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdint>
#include <numbers>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"

namespace QORN::test {

/// One wing of the stated design, points 0 to length, in double and as floats.
struct Wing {
  Wing(double window, int steps, double rollf, float alpha)
      : nStep(steps), length(static_cast<int>(window * steps / 2)) {
    // The shape per point is a float, as that of every Kaiser window here.
    const double shape = static_cast<double>(alpha / static_cast<float>(length)) * length;
    std::vector<double> taps;
    for (int j = 0; j <= length; ++j) {
      const double x = std::numbers::pi * rollf * j / nStep, u = static_cast<double>(j) / length;
      taps.push_back((j == 0 ? 1.0 : std::sin(x) / x) *
                     std::cyl_bessel_i(0.0, shape * std::sqrt(1.0 - u * u)) / std::cyl_bessel_i(0.0, shape));
    }
    for (int j = 0; j <= length; ++j) {
      double sum = 0.0;
      for (int k = j % nStep; k < length; k += nStep) sum += taps[static_cast<std::size_t>(k)];
      for (int k = nStep - j % nStep; k < length; k += nStep) sum += taps[static_cast<std::size_t>(k)];
      exact.push_back(taps[static_cast<std::size_t>(j)] / sum);
      h.push_back(static_cast<float>(exact.back()));
    }
    exact.back() = h.back() = 0.0F;
  }

  int nStep, length;
  std::vector<double> exact;
  std::vector<float> h;
};

/// A run as the contract states it: one output after the other, the left wing outwards and then the right
/// one, all in double. The alternate kernel sums the steps of its time; the primary one multiplies them, and
/// scales those through the table by a ratio below 1. Samples outside of the source are left out.
struct StatedRun {
  StatedRun(const Wing &wing, const std::vector<float> &src, double time, int len, double ratio,
            bool alternate)
      : next(time) {
    const double step = 1.0 / ratio, scale = !alternate && ratio < 1.0 ? ratio : 1.0;
    const double end = std::trunc(time) + len;
    const auto gain = static_cast<double>(1.0F * static_cast<float>(scale));
    while (end > next) {
      const auto i = static_cast<long long>(std::floor(next));
      const double f = next - static_cast<double>(i);
      double sum = 0.0;
      Add(wing, src, f * wing.nStep * scale, wing.nStep * scale, i, -1, sum);
      Add(wing, src, (1.0 - f) * wing.nStep * scale, wing.nStep * scale, i + 1, 1, sum);
      out.push_back(static_cast<float>(sum * gain));
      times.push_back(next);
      next =
          alternate ? next + step : static_cast<double>(time + static_cast<long double>(times.size()) * step);
    }
  }

  static void Add(const Wing &wing, const std::vector<float> &src, double x, double step, long long i,
                  int way, double &sum) {
    for (long long m = 0;; ++m, i += way) {
      // For whole steps the fraction is that of the first point.
      const bool whole = step == wing.nStep;
      const double place = whole ? x : x + static_cast<double>(m) * step;
      const auto k = static_cast<long long>(place + 1e-5);
      const double a = place - static_cast<double>(k), b = 1.0 - a;
      const long long j = whole ? k + m * wing.nStep : k;
      if (j >= wing.length) return;
      if (i < 0 || i >= static_cast<long long>(src.size())) continue;
      const auto at = static_cast<std::size_t>(j);
      const double tap = static_cast<double>(wing.h[at]) * b + static_cast<double>(wing.h[at + 1]) * a;
      sum += tap * static_cast<double>(src[static_cast<std::size_t>(i)]);
    }
  }

  std::vector<float> out;
  std::vector<double> times;
  double next;
};

/// n values between -1 and 1.
inline std::vector<float> Noise(int n, std::uint32_t state = 1) {
  std::vector<float> noise;
  for (int i = 0; i < n; ++i) {
    state = state * 1664525U + 1013904223U;
    noise.push_back(static_cast<float>(static_cast<std::int32_t>(state)) * 0x1p-31F);
  }
  return noise;
}

inline VecCplx32 Joined(const std::vector<float> &re, const std::vector<float> &im) {
  VecCplx32 joined(static_cast<int>(re.size()));
  for (int i = 0; i < joined.GetSize(); ++i) {
    joined[i] = {re[static_cast<std::size_t>(i)], im[static_cast<std::size_t>(i)]};
  }
  return joined;
}

/// exp(j 2 pi frequency n), frequency in cycles per sample.
inline VecCplx32 CplxTone(int n, double frequency) {
  VecCplx32 tone(n);
  for (int i = 0; i < n; ++i) {
    const auto x = std::polar(1.0, 2.0 * std::numbers::pi * std::fmod(frequency * i, 1.0));
    tone[i] = {static_cast<float>(x.real()), static_cast<float>(x.imag())};
  }
  return tone;
}

/// How outputs at first, first + step, ... compare with a tone of the input: the amplitude of the part that
/// is the tone, and the root mean square of what is left.
struct ToneFit {
  ToneFit(const VecCplx32 &out, double frequency, double first, double step) {
    const int n = out.GetSize();
    std::complex<double> product = 0.0;
    double power = 0.0;
    for (int i = 0; i < n; ++i) {
      const double cycles = std::fmod(frequency * (first + i * step), 1.0);
      const std::complex<double> x(static_cast<double>(out[i].re), static_cast<double>(out[i].im));
      product += x * std::polar(1.0, -2.0 * std::numbers::pi * cycles);
      power += std::norm(x);
    }
    gain = product / static_cast<double>(n);
    rest = std::sqrt(std::max(power / n - std::norm(gain), 0.0));
  }

  std::complex<double> gain;
  double rest;
};

inline double Decibels(double amplitude) { return 20.0 * std::log10(std::max(amplitude, 1e-12)); }

} // namespace QORN::test

#endif
