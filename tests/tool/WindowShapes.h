// The windows once more, from the literature.
#ifndef QORN_TESTS_TOOL_WINDOWSHAPES_H
#define QORN_TESTS_TOOL_WINDOWSHAPES_H

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <vector>

#include "ToolFixture.h"
#include "WindowKinds.h"

namespace QORN::test {

// The coefficients as the literature has them, and the figure for the resolution bandwidth.
struct Shape {
  const char *name;
  double rbw;
  std::function<double(int k, int n)> weight;
};

inline double CosineSum(int k, int n, const std::vector<double> &a) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i)
    sum += (i % 2 == 0 ? a[i] : -a[i]) * std::cos(2.0 * kPi * static_cast<double>(i) * k / n);
  return sum;
}

inline double Kaiser(int k, int n, double beta) {
  const double x = 2.0 * k / (n - 1) - 1.0;
  return std::cyl_bessel_i(0.0, beta * std::sqrt(std::max(0.0, 1.0 - x * x))) / std::cyl_bessel_i(0.0, beta);
}

inline const std::vector<Shape> &Shapes() {
  static const std::vector<Shape> all = {
      {"rectangle", 0.89, [](int, int) { return 1.0; }},
      {"hann", 1.44,
       [](int k, int n) {
         return CosineSum(k, n, {0.5, 0.5});
       }},
      {"hamming", 1.3,
       [](int k, int n) {
         return CosineSum(k, n, {0.54, 0.46});
       }},
      {"blackman-harris", 1.9,
       [](int k, int n) {
         return CosineSum(k, n, {0.35875, 0.48829, 0.14128, 0.01168});
       }},
      {"flat-top", 3.72,
       [](int k, int n) {
         return CosineSum(k, n, {0.21557895, 0.41663158, 0.277263158, 0.083578947, 0.006947368});
       }},
      {"gauss", 1.86,
       [](int k, int n) {
         const double x = 3.5 * (k - 0.5 * (n - 1)) / n;
         return std::exp(-2.0 * x * x);
       }},
      {"kaiser", 2.2292, [](int k, int n) { return Kaiser(k, n, 16.71); }},
      {"cispr3db", 2.2292, [](int k, int n) { return Kaiser(k, n, 14.6); }},
      {"cispr6db", 2.9605, [](int k, int n) { return Kaiser(k, n, 14.6); }}, // below 9 kHz
      {"mil6db", 2.9605, [](int k, int n) { return Kaiser(k, n, 14.6); }},
  };
  return all;
}

/// How far a tone reads low at so many bins off a bin, in decibels.
inline double Scalloping(const Shape &shape, int n, double offset) {
  double sum = 0.0;
  std::complex<double> response;
  for (int k = 0; k < n; ++k) {
    sum += shape.weight(k, n);
    response += std::polar(shape.weight(k, n), 2.0 * kPi * offset * k / n);
  }
  return -20.0 * std::log10(std::abs(response) / sum);
}

/// The noise bandwidth in bins.
inline double NoiseBandwidth(const Shape &shape, int n) {
  double sum = 0.0;
  double squares = 0.0;
  for (int k = 0; k < n; ++k) {
    sum += shape.weight(k, n);
    squares += shape.weight(k, n) * shape.weight(k, n);
  }
  return n * squares / (sum * sum);
}

} // namespace QORN::test

#endif
