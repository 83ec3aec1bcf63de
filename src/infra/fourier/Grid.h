// What a plan of few points hands to its steps: plain data, as in Passes.h.
#ifndef QORN_SRC_INFRA_FOURIER_GRID_H
#define QORN_SRC_INFRA_FOURIER_GRID_H

namespace QORN::fourier {

/// Transform of few points, N = rows * middle * columns, of interleaved values: Stockham's in two or three
/// steps of large radices. With C = N / rows, n = C a + b and k = a' + rows b' the first one makes
///
///   y[a'][b] = exp(-j 2 pi b a' / N) sum over a of x[C a + b] exp(-j 2 pi a a' / rows)
///
/// for neighbours b at a time, and stores it transposed; what is left are transforms over b, for neighbours
/// a' at a time, by a radix of `middle` unless that is 1, and by one of `columns`.
template <class T> struct Grid {
  int rows, middle, columns;
  /// The factors above: for each a' >= 1, for each b the real part twice, then for each b the imaginary part
  /// negated and as it is.
  const T *turns;
  /// The factors exp(-j 2 pi c k / C) of the middle step: for each c < columns, for each k >= 1, the real
  /// part twice, the imaginary part negated and as it is.
  const T *middleTurns;
};

/// The same of N = rows * middle * columns points whose first step stores whole lines of 64 bytes: where W
/// values fill one, W divides rows and C = middle * columns, and y[a'][b] is stored in the order (a' / W, b,
/// a'). The steps that are left go through one W of a' at a time, in blocks that are lines, so that all their
/// accesses are to whole lines that lie a constant apart. All radices are known to the compiler: see
/// LinesFor.
template <class T> struct Lines {
  static constexpr int kWidth = 64 / (2 * static_cast<int>(sizeof(T))); ///< W
  int length;
  /// As Grid's, in the order of their use: for each W of b, for each a' >= 1.
  const T *turns;
  const T *middleTurns; ///< as Grid's
};

} // namespace QORN::fourier

#endif
