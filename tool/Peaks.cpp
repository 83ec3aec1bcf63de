#include "Peaks.h"

#include <algorithm>
#include <cmath>
#include <functional>

namespace tool {

namespace {

// The z-quantile of the mean of n exponential variables of mean 1: Wilson and Hilferty, 1931.
double MeanOfNoise(double n, double z) {
  const double root = 1.0 - 1.0 / (9.0 * n) + z / (3.0 * std::sqrt(n));
  return root * root * root;
}

double FromDecibels(double decibels) { return std::pow(10.0, decibels / 10.0); }

// For each element the lowest one between it and the nearest larger one before it, or the start.
std::vector<double> Valleys(const std::vector<double> &values) {
  std::vector<double> valleys(values.size());
  std::vector<std::size_t> larger;
  std::vector<double> lowest; // between an element of `larger` and the one before it there
  for (std::size_t i = 0; i < values.size(); ++i) {
    double valley = values[i];
    while (!larger.empty() && values[larger.back()] <= values[i]) {
      valley = std::min(valley, lowest.back());
      larger.pop_back();
      lowest.pop_back();
    }
    valleys[i] = valley;
    larger.push_back(i);
    lowest.push_back(valley);
  }
  return valleys;
}

// The offset of the top of the parabola through three equidistant levels.
double TopOffset(double left, double middle, double right) {
  if (!(left > 0.0 && middle > 0.0 && right > 0.0)) return 0.0;
  const double a = std::log(left);
  const double b = std::log(middle);
  const double c = std::log(right);
  const double curvature = a - 2.0 * b + c;
  return curvature < 0.0 ? std::clamp(0.5 * (a - c) / curvature, -0.5, 0.5) : 0.0;
}

} // namespace

double NoiseFloor(const QORN::VecReal64 &mean, std::int64_t blocks) {
  std::vector<double> sorted(mean.GetPtr(), mean.GetPtr() + mean.GetSize());
  const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
  std::nth_element(sorted.begin(), middle, sorted.end());
  return *middle / MeanOfNoise(static_cast<double>(blocks), 0.0);
}

std::vector<double> LeakageOf(const QORN::Window &window) {
  // In bins, the shape hardly depends on the number of points, so a short window of the same kind would do;
  // taking every n-th coefficient makes one of any window.
  constexpr int kShort = 512;
  constexpr int kPerBin = 16;
  QORN::VecReal32 coefficients;
  window.GetCoefficients(coefficients);
  const int step = std::max(1, coefficients.GetSize() / kShort);
  const int size = coefficients.GetSize() / step;
  QORN::VecCplx32 padded(size * kPerBin);
  for (int k = 0; k < size; ++k) padded[k].re = coefficients[k * step] * static_cast<float>(step);
  QORN::VecCplx32 response;
  QORN::FT transform;
  transform.Forward(response, padded);
  QORN::VecReal32 magnitude;
  QORN::MathUtils::Abs(magnitude, response);

  std::vector<double> leakage(static_cast<std::size_t>(size / 2 + 1));
  double largest = 0.0;
  int next = magnitude.GetSize() / 2;
  for (int d = size / 2; d >= 0; --d) {
    // The bin next to the tone may be half a bin nearer to it, and the tone's own bin that much farther from
    // it.
    for (; next >= 0 && next >= (d - 1) * kPerBin; --next) {
      const double ratio = static_cast<double>(magnitude[next] / magnitude[0]);
      largest = std::max(largest, ratio * ratio);
    }
    leakage[static_cast<std::size_t>(d)] = largest;
  }
  return leakage;
}

std::vector<Peak> FindPeaks(const QORN::VecReal64 &mean, const QORN::VecReal64 &scatter, std::int64_t blocks,
                            double noiseFloor, const std::vector<double> &leakage, const Grid &grid,
                            int limit) {
  constexpr double kMargin = 2.0; // 3 dB over the leakage of a stronger peak
  const int n = mean.GetSize();
  // One noise peak in a hundred spectra: the normal quantile of 0.01 / n, from above.
  const double z = std::sqrt(2.0 * std::log(100.0 * n));
  // Without noise, what is left far below the strongest signal is the rounding of the float transform.
  const double strongest = *std::max_element(mean.GetPtr(), mean.GetPtr() + n);
  const double threshold =
      std::max(noiseFloor * std::max(FromDecibels(3.0), MeanOfNoise(static_cast<double>(blocks), z)),
               strongest * FromDecibels(-110.0));

  // Where the ends meet, the spectrum is cut at its lowest point instead: no valley runs over the cut. Else
  // what rises towards an end has no valley behind it, and is none.
  const int cut =
      grid.circle ? static_cast<int>(std::min_element(mean.GetPtr(), mean.GetPtr() + n) - mean.GetPtr()) : 0;
  std::vector<double> circle(mean.GetPtr(), mean.GetPtr() + n);
  std::rotate(circle.begin(), circle.begin() + cut, circle.end());
  const std::vector<double> left = Valleys(circle);
  std::vector<double> mirrored(circle.rbegin(), circle.rend());
  std::vector<double> right = Valleys(mirrored);
  std::reverse(right.begin(), right.end());

  std::vector<Peak> candidates;
  for (int i = 0; i < n; ++i) {
    const auto at = static_cast<std::size_t>(i);
    const double power = circle[at];
    const int index = (i + cut) % n;
    // 3 dB, and three times the scatter of a modulated signal's level: 10 log10(1 + x) is about 4.34 x.
    const double prominence = FromDecibels(3.0 + 3.0 * 4.34 * std::min(scatter[index], 1.0));
    if (!(power > threshold && power >= prominence * std::max(left[at], right[at]))) continue;
    const double offset = TopOffset(mean[(index + n - 1) % n], power, mean[(index + 1) % n]);
    candidates.push_back({index, index + offset, power});
  }
  std::sort(candidates.begin(), candidates.end(), [](const Peak &a, const Peak &b) {
    return a.power > b.power || (a.power == b.power && a.index < b.index);
  });

  std::vector<Peak> peaks;
  for (const Peak &candidate : candidates) {
    const auto explains = [&](const Peak &stronger) {
      const int apart = std::abs(candidate.index - stronger.index);
      const auto distance =
          static_cast<std::size_t>((grid.circle ? std::min(apart, n - apart) : apart) * grid.spacing);
      return candidate.power < kMargin * stronger.power * leakage[std::min(distance, leakage.size() - 1)];
    };
    if (std::any_of(peaks.begin(), peaks.end(), explains)) continue;
    peaks.push_back(candidate);
    if (static_cast<int>(peaks.size()) == limit) break;
  }
  return peaks;
}

} // namespace tool
