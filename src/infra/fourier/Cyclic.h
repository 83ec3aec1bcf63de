// What a plan of a cyclic convolution hands to its steps: plain data, as in Passes.h.
#ifndef QORN_SRC_INFRA_FOURIER_CYCLIC_H
#define QORN_SRC_INFRA_FOURIER_CYCLIC_H

#include <cstddef>

namespace QORN::fourier {

/// A step of the strips, in place: butterflies of `radix` lines that lie `rest` lines apart. Result number k
/// of one takes the place of its input number k, so that all results of one number make a part of `rest`
/// lines; the next step goes through each part in the same way. The last one has a rest of 1.
struct CyclicStep {
  int radix;
  std::ptrdiff_t rest;
  /// For each place p of a part, for each k >= 1, exp(-j 2 pi p k / (radix * rest)): the real part twice, the
  /// imaginary part negated and as it is. Null in the last step.
  const double *turns;
};

/// Cyclic convolution of N = R * C complex values in double. A line holds W neighbouring values and fills 64
/// bytes. Sample C a + b is the one of row a in column b.
///
/// The transform takes W columns at a time through a butterfly of radix R, turns result k'' of column b by
/// exp(-j 2 pi b k'' / N) and transposes these results into lines of neighbouring k'': R / W strips of C
/// lines, which are the columns. Each strip then goes through its steps, all values of a line by themselves.
/// What they leave are the bins in the order of their digits reversed, which is as good as any other for the
/// product with the spectrum of the taps. The inverse transform takes the same steps back: factors before
/// butterflies, the last step first. So a strip is read from memory once, and there and back it stays in the
/// nearest cache that holds it.
struct CyclicSteps {
  static constexpr int kWidth = 64 / (2 * static_cast<int>(sizeof(double))); ///< W
  static constexpr int kMaxSteps = 8;

  std::ptrdiff_t length;
  int first;              ///< R, 8 or 16
  std::ptrdiff_t columns; ///< C, a multiple of W
  int stepCount;
  CyclicStep steps[kMaxSteps]; ///< their radices have 4 to 16 points and the product C
  const double *columnTurns;   ///< for each W columns b, for each k'' >= 1, the W factors above
};

/// A convolution with taps. Doubles are cut in two parts, x = x1 + x2 and taps = h1 + h2, of which x1 and h1
/// are whole multiples of a step each, and the results are x1 * h1 and the rest, x1 * h2 + x2 * (h1 + h2).
struct Cyclic {
  const CyclicSteps *plan;
  const double *spectrum; ///< that of the taps divided by N, in the order of its use: 2 N scalars, or 4 N
  double *scratch;        ///< 2 N scalars, of doubles 4 N: their parts' strips take turns
};

/// Two real signals of N doubles each, and where their results from number `first` on go.
struct CyclicPair {
  const double *x0, *x1;
  double *dst0, *dst1;
  std::ptrdiff_t first, count0, count1;
};

/// What a cyclic convolution tells of its values and results.
struct CyclicFigures {
  double energy;   ///< the sum of all values' squares, but for the transform's errors
  double smallest; ///< the smallest magnitude of the results' parts that were wanted
};

/// The same of doubles. The energies are those of x2 and, without the errors of the inverse transform, of
/// all results x1 * h1 and of the rest.
struct CyclicParts {
  double low, coarse, rest;
  double smallest;
};

} // namespace QORN::fourier

#endif
