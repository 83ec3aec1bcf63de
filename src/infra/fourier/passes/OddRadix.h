// Butterflies of a large odd prime number R of vectors, in loops.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_ODDRADIX_H
#define QORN_SRC_INFRA_FOURIER_PASSES_ODDRADIX_H

#include "Butterfly.h"
#include "infra/fourier/Passes.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Rows of the table at a time: their sums stay in registers.
inline constexpr int kOddRows = kRegisterBytes == 64 ? 4 : 2;

// Outputs k + 1 and R - 1 - k for Rows values of k from `row` on. The differences carry the factor -j.
template <class T, class E> struct OddInputs { E sumRe, sumIm, differenceRe, differenceIm; };
template <int Rows, class T, class E, class Put>
[[gnu::always_inline]] inline void OddOutputs(const OddInputs<T, E> *x, E re0, E im0, const T *table,
                                              int half, int row, const Put &put) {
  E evenRe[Rows], evenIm[Rows], oddRe[Rows], oddIm[Rows];
  Unroll<Rows>([&](auto i) {
    evenRe[i] = re0;
    evenIm[i] = im0;
    oddRe[i] = E{};
    oddIm[i] = E{};
  });
  const T *w = table + 2 * row * half;
  for (int j = 0; j < half; ++j, w += 2) {
    const OddInputs<T, E> in = x[j];
    Unroll<Rows>([&](auto i) {
      const E c = Broadcast<E>(w[i * 2 * half]), s = Broadcast<E>(w[i * 2 * half + 1]);
      evenRe[i] = MulAdd(in.sumRe, c, evenRe[i]);
      evenIm[i] = MulAdd(in.sumIm, c, evenIm[i]);
      oddRe[i] = MulAdd(in.differenceRe, s, oddRe[i]);
      oddIm[i] = MulAdd(in.differenceIm, s, oddIm[i]);
    });
  }
  Unroll<Rows>([&](auto i) {
    put(row + i + 1, evenRe[i] + oddIm[i], evenIm[i] - oddRe[i]);
    put(2 * half - row - i, evenRe[i] - oddIm[i], evenIm[i] + oddRe[i]);
  });
}

/// Transforms R vectors: get(n, re, im) gives input n, put(k, re, im) takes output k. `table` is a pass's.
template <class T, class E, class Get, class Put>
[[gnu::always_inline]] inline void OddButterfly(int radix, const T *table, const Get &get, const Put &put) {
  OddInputs<T, E> x[fourier::kMaxRadix / 2];
  const int half = radix / 2;
  E re0, im0;
  get(0, re0, im0);
  E sumRe = re0, sumIm = im0;
  for (int j = 0; j < half; ++j) {
    E re, im, backRe, backIm;
    get(j + 1, re, im);
    get(radix - 1 - j, backRe, backIm);
    x[j] = {re + backRe, im + backIm, re - backRe, im - backIm};
    sumRe += x[j].sumRe;
    sumIm += x[j].sumIm;
  }
  put(0, sumRe, sumIm);
  int row = 0;
  for (; row + kOddRows <= half; row += kOddRows) OddOutputs<kOddRows>(x, re0, im0, table, half, row, put);
  for (; row < half; ++row) OddOutputs<1>(x, re0, im0, table, half, row, put);
}

// A pass of any radix above kMaxStraight over done * radix * rest blocks. get(place, c, re, im) gives the
// lanes from c on of the block at a place.
template <class T, int W, bool Turned, class Get>
[[gnu::always_inline]] inline void OddPass(const fourier::Pass &pass, const T *turns, Index lanes, T *out,
                                           const Get &get) {
  constexpr int V = kLanes<T, W>;
  using E = Vec<T, V>;
  const Index done = pass.done, rest = pass.rest, half = pass.radix / 2;
  const T *const table = turns + pass.turns, *w = table + 2 * half * half;
  for (Index p = 0; p < rest; ++p, w += 2 * (pass.radix - 1)) {
    for (Index q = 0; q < done; ++q) {
      for (Index c = 0; c < lanes; c += V) {
        T *const y = out + (done * pass.radix * p + q) * 2 * W + c;
        OddButterfly<T, E>(
            pass.radix, table, [&](Index j, E &re, E &im) { get(done * (p + rest * j) + q, c, re, im); },
            [&](Index k, E re, E im) {
              if constexpr (Turned) {
                if (k > 0) Turn(re, im, Broadcast<E>(w[2 * k - 2]), Broadcast<E>(w[2 * k - 1]));
              }
              Store(y + k * done * 2 * W, re);
              Store(y + k * done * 2 * W + W, im);
            });
      }
    }
  }
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
