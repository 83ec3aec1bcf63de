// What a plan of a transform in two sweeps hands to its steps: plain data, as in Passes.h.
#ifndef QORN_SRC_INFRA_FOURIER_FOURSTEP_H
#define QORN_SRC_INFRA_FOURIER_FOURSTEP_H

#include <cstddef>

#include "Grid.h"

namespace QORN::fourier {

inline constexpr int kMaxStripSteps = 4;

/// A transform of `length` lines, each value of a line by itself, in one to four steps, whose radices'
/// product the length is. A butterfly of the first step combines lines that lie length / radices[0] apart,
/// and its result number k takes the place of its input number k, so that all results of one number make a
/// part; the next step goes through each part in the same way. The last one's results stand in the order of
/// their digits reversed.
template <class T> struct Strip {
  std::ptrdiff_t length;
  int steps; ///< 0 of a strip that is not there, of length 1
  int radices[kMaxStripSteps];
  /// From one part to the next, in lines: one more than needed, where parts would else share their sets of
  /// the cache.
  std::ptrdiff_t pitch;
  /// The factors between the steps: of the first one, for each place p of a part, for each k >= 1, exp(-j 2
  /// pi p k / length): the real part twice, the imaginary part negated and as it is. Then those of the next
  /// ones, for the lengths of their parts.
  const T *turns;
};

/// Transform of N = A * B points that sweeps the memory twice, from the samples to a matrix of lines and from
/// there to the bins (the four-step method, Bailey 1990). A line holds W neighbouring values and fills 64
/// bytes. With A = P * Q, of which W divides P, and k = k'' + P q
///
///   X[k + A k'] = sum over b of exp(-j 2 pi b k' / B) exp(-j 2 pi b k / N) sum over a of x[B a + b] exp(-j 2
///   pi a k / A)
///
/// The first sweep takes W columns b at a time: a radix of P for lines of neighbouring b, whose results are
/// transposed into lines of neighbouring k'', and for each of these a strip down, of Q lines. Of the factors
/// exp(-j 2 pi b k / N) it applies exp(-j 2 pi b k'' / N); the rest, exp(-j 2 pi b q / (Q B)), is the same
/// for a whole line. The second sweep takes the lines of k through strips across, of B lines. If Q is 1,
/// there is no strip down. All accesses are to whole lines, and the strips stay in a near cache.
template <class T> struct FourStep {
  static constexpr int kWidth = Lines<T>::kWidth; ///< W

  int first;              ///< P, 8 or 16; 0 of another way
  std::ptrdiff_t columns; ///< B, at least W; where W does not divide it, the last W columns begin earlier
  Strip<T> down, across;  ///< two steps or more across
  /// From one row of the matrix, of the strip across of one line of k, to the next, in lines.
  std::ptrdiff_t pitch;
  std::ptrdiff_t together; ///< so many strips across are transformed together, that their bins are neighbours
  /// Whether they are transformed in place and then copied to their bins in order, since the bins of a
  /// butterfly would meet in one set of the cache.
  bool isSpread;
  /// For each W of b, for each k'' >= 1, the factors exp(-j 2 pi b k'' / N): W real parts twice each, then
  /// the imaginary parts, negated and as they are.
  const T *columnTurns;
  /// Of the strips down, whose places are j: for each j, for all k'', the factors exp(-j 2 pi j k'' / A) in
  /// the same form.
  const T *downTurns;
  /// For each q, for each b in the order of the first step across, place by place, the factors exp(-j 2 pi b
  /// q / (Q B)), as those of a strip.
  const T *acrossTurns;
};

} // namespace QORN::fourier

#endif
