// Fourier transforms in long double, for tests: by their definition for lengths without factor, and by
// splitting off the smallest prime factor for the rest, so that long lengths can be checked too.
#ifndef QORN_TESTS_SUPPORT_FOURIERREFERENCE_H
#define QORN_TESTS_SUPPORT_FOURIERREFERENCE_H

#include <cmath>
#include <complex>
#include <cstddef>
#include <vector>

namespace QORN::test {

using LongComplex = std::complex<long double>;

// The transform of `size` values that lie `stride` apart; roots[i] = exp(sign j 2 pi i / (size * stride)).
inline std::vector<LongComplex> ReferencePart(const LongComplex *x, std::size_t size, std::size_t stride,
                                              const std::vector<LongComplex> &roots) {
  if (size == 1) return {*x};
  std::size_t factor = 2;
  while (factor * factor <= size && size % factor != 0) ++factor;
  if (size % factor != 0) factor = size;
  const std::size_t rest = size / factor;
  std::vector<std::vector<LongComplex>> parts;
  for (std::size_t j = 0; j < factor; ++j) {
    parts.push_back(ReferencePart(x + j * stride, rest, stride * factor, roots));
  }
  std::vector<LongComplex> result(size);
  for (std::size_t k = 0; k < size; ++k) {
    long double re = 0, im = 0;
    std::size_t at = 0;
    for (std::size_t j = 0; j < factor; ++j) {
      const LongComplex a = parts[j][k % rest], w = roots[at * stride];
      re += a.real() * w.real() - a.imag() * w.imag();
      im += a.real() * w.imag() + a.imag() * w.real();
      at = (at + k) % size;
    }
    result[k] = {re, im};
  }
  return result;
}

/// X[k] = sum over n of x[n] exp(sign j 2 pi n k / N), sign being -1 or 1.
inline std::vector<LongComplex> ReferenceTransform(const std::vector<LongComplex> &x, int sign) {
  std::vector<LongComplex> roots(x.size());
  for (std::size_t k = 0; k < x.size(); ++k) {
    const long double angle = sign * 2 * 3.14159265358979323846264338327950288L *
                              static_cast<long double>(k) / static_cast<long double>(x.size());
    roots[k] = {std::cos(angle), std::sin(angle)};
  }
  return ReferencePart(x.data(), x.size(), 1, roots);
}

/// The 2-norm of got - expected over that of expected.
template <class Sequence>
long double RelativeError(const Sequence &got, const std::vector<LongComplex> &expected) {
  long double error = 0, size = 0;
  for (std::size_t k = 0; k < expected.size(); ++k) {
    error += std::norm(LongComplex(got[k]) - expected[k]);
    size += std::norm(expected[k]);
  }
  return size == 0 ? error : std::sqrt(error / size);
}

} // namespace QORN::test

#endif
