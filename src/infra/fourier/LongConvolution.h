// Convolutions and correlations too long for direct sums.
#ifndef QORN_SRC_INFRA_FOURIER_LONGCONVOLUTION_H
#define QORN_SRC_INFRA_FOURIER_LONGCONVOLUTION_H

#include <cstddef>

namespace QORN::fourier {

/// Outputs y[first] to y[first + count - 1] of
///   y[n] = sum over k of conj(taps[k]) x[n - (tapCount - 1) + k], 0 <= k < tapCount,
/// x being zero outside 0 to len - 1: the whole convolution has 0 <= n < tapCount + len - 1, and the outputs
/// wanted lie in it. T is float, double or Cplx32.
template <class T> struct Correlation {
  const T *taps;
  int tapCount;
  const T *x;
  int len;
  std::ptrdiff_t first, count;
  T *dst; ///< output n goes to dst[n - first]
};

/// The length of the transforms, as a power of two, that serve the correlation of M taps with L outputs at
/// the least estimated work; 0 if direct sums are estimated to take less. `terms` is the number of products.
/// Depends on its arguments alone.
template <class T> int BlockLog2(std::ptrdiff_t taps, std::ptrdiff_t outputs, double terms);

/// By transforms of 2^log2Length >= tapCount points. Throws QORNException 11001 if there is no memory.
template <class T> void Correlate(const Correlation<T> &job, int log2Length);

} // namespace QORN::fourier

#endif
