// What a plan hands to the passes: plain data, since the passes are compiled once per instruction-set level.
//
// The unit of work is the block: W complex values, W real parts followed by W imaginary parts, each in a lane
// of its own. Transforms run over arrays of blocks, all lanes at once, so that no butterfly but one ever
// mixes lanes and every load and store is a full vector whatever the length. A transform of N = M * L points
// with L <= W lanes takes sample L t + l as lane l of block t, transforms each lane over its M blocks, and
// joins the lanes by the twiddle factors exp(-j 2 pi l k / N) and an L-point butterfly over transposed
// blocks:
//
//   X[k + M k'] = sum over l of exp(-j 2 pi l k' / L) exp(-j 2 pi l k / N) sum over t of x[L t + l] exp(-j 2
//   pi t k / M)
//
// The M-point transform over blocks is Stockham's: passes between two buffers, sorted on the way.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_H
#define QORN_SRC_INFRA_FOURIER_PASSES_H

#include <cstddef>

namespace QORN::fourier {

/// One pass over M blocks: butterflies of `radix` blocks that lie M / radix apart. Their outputs are turned
/// by exp(-j 2 pi p k / (radix * rest)), 1 <= k < radix, where p = 0 to rest - 1 and `done * radix * rest` =
/// M: `done` is the product of the radices before. In the last pass rest is 1 and nothing is turned.
struct Pass {
  int radix;
  std::ptrdiff_t done;
  std::ptrdiff_t rest;
  /// Where the pass's factors start in Columns::turns, in scalars. Those of a radix above kMaxStraight come
  /// behind its cosines and sines: for k = 1 to radix / 2, for j = 1 to radix / 2, both of 2 pi k j / radix.
  std::ptrdiff_t turns;
};

/// The largest radix that has a straight-line butterfly; larger ones are odd primes, to kMaxRadix.
inline constexpr int kMaxStraight = 13;
inline constexpr int kMaxRadix = 127;

inline constexpr int kMaxPasses = 32;

/// Transform of length = blocks * lanes.
template <class T> struct Columns {
  std::ptrdiff_t length;
  std::ptrdiff_t blocks; ///< M, at least 2
  int lanes;             ///< L, 5 to 16
  int width;             ///< W: 8 or 16, at least L
  int passCount;
  Pass passes[kMaxPasses];
  const T *turns; ///< complex factors of the passes, for each p the radix - 1 of them
  /// The factors that join the lanes, exp(-j 2 pi l k / N): for each group of W values of k, for each l >= 1,
  /// W real parts, W imaginary parts. Where strides is not null, of the first group only: those of group g
  /// are the first one's times exp(-j 2 pi l W g / N), which strides holds for each g, for each l >= 1. So
  /// the factors of a long transform take less memory than its samples.
  const T *joins;
  const T *strides;
};

/// A transform of `part.blocks` * `last` = N blocks: `last` transforms of every last-th block by the passes
/// of `part`, then one pass of radix `last`, 1 to 9, whose inputs are turned by exp(-j 2 pi q j / N), 1 <= j
/// < last, for each q < part.blocks. These factors are in part.turns from lastTurns on.
template <class T> struct Line {
  Columns<T> part; ///< lanes = width = Tiled<T>::kWidth; joins nothing
  int last;
  std::ptrdiff_t lastTurns;
};

/// A transform of N = A * B points, A, B >= W, that sweeps the memory twice. Sample B a + b is the one of row
/// a in column b, and
///
///   X[k + A k'] = sum over b of exp(-j 2 pi b k' / B) exp(-j 2 pi b k / N) sum over a of x[B a + b] exp(-j 2
///   pi a k / A)
///
/// First W columns at a time are transformed as blocks of W lanes, turned, transposed into blocks whose lanes
/// are W neighbouring k, and written to memory in the order (k / W, b). Then these B blocks at a time are
/// transformed and written to where they belong. The blocks of either step stay in the caches, and there is
/// no other access than to whole blocks. Where W does not divide A or B, the last W lanes begin earlier and
/// overlap the former ones.
template <class T> struct Tiled {
  static constexpr int kWidth = 64 / static_cast<int>(sizeof(T)); ///< W

  Line<T> down, across; ///< the transforms of A and of B points
  /// The factors exp(-j 2 pi b k / N) are products of two: of `steps`, a block for each b with those of the
  /// first W values of k, and of `strides`, for each tile of W columns, for each group of W values of k, the
  /// factors of its first k for each of the columns, interleaved.
  const T *steps, *strides;
  std::ptrdiff_t tile; ///< the scalars of scratch that a tile takes
};

} // namespace QORN::fourier

#endif
