// Transforms of whole cache lines; see infra/fourier/Grid.h for the layout.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_LINES_H
#define QORN_SRC_INFRA_FOURIER_PASSES_LINES_H

#include "GridSteps.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

template <class T> inline constexpr int kLine = fourier::Lines<T>::kWidth;

// The steps for a line's worth of neighbours, from their first V values on: the others are read and written
// while their line is at hand, and wait in between.
template <class T, int R> struct Aside {
  static constexpr int V = kComplexLanes<T>, kMore = kLine<T> / V - 1;
  using E = Complex<T, V>;
  alignas(64) T values[(kMore == 0 ? 1 : kMore) * R * 2 * V];

  T *At(int part, int i) { return values + (part * R + i) * 2 * V; }
};

// The first radix, A, of a line of neighbours: of the lines that lie `apart` scalars behind each other from
// x, scalar `place` of the samples, on. `turns` are those of these neighbours, and give gets the results as
// of GiveColumns, row by row.
template <class T, int A, class Ends, class Give>
[[gnu::always_inline]] inline void LineColumn(const T *x, Index apart, Index place, const T *turns,
                                              const Ends &ends, const Give &give) {
  constexpr int V = kComplexLanes<T>, G = kLine<T>;
  using E = Complex<T, V>;
  using Waiting = Aside<T, A>;
  Waiting aside;
  const auto column = [&](Index v, const auto &get) {
    const T *const w = turns + 2 * v;
    E z[A];
    Points<T, A, Ends::kInverse, E>([&](auto a) { return ends.First(get(a), place + a * apart + 2 * v); },
                                    [&](auto k, E result) {
                                      if constexpr (k == 0) {
                                        z[0] = result;
                                      } else {
                                        constexpr int kAt = (k - 1) * 4 * G;
                                        z[k] = Turned<Ends::kInverse>(result, Load<E>(w + kAt),
                                                                      Load<E>(w + kAt + 2 * G));
                                      }
                                    });
    GiveColumns<T, V, A>(z, [&](auto, auto row, auto i, E t) { give(row, v + i, t); });
  };
  column(0, [&](auto a) {
    const T *const line = x + a * apart;
    Unroll<Waiting::kMore>([&](auto i) { Store(aside.At(i, a), Load<E>(line + (i + 1) * 2 * V)); });
    return Load<E>(line);
  });
  for (int i = 0; i < Waiting::kMore; ++i)
    column((i + 1) * V, [&](auto a) { return Load<E>(aside.At(i, a)); });
}

// The same for each of `Count` neighbours.
template <class T, int A, int Count, class Ends>
[[gnu::flatten]] void LineColumns(const T *in, const T *turns, Ends ends, T *lines) {
  constexpr int V = kComplexLanes<T>, G = kLine<T>;
  for (Index at = 0; at < Count; at += G, in += 2 * G, turns += (A - 1) * 4 * G, lines += 2 * G * G) {
    LineColumn<T, A>(in, 2 * Count, 2 * at, turns, ends, [&](auto row, Index column, Complex<T, V> z) {
      Store(lines + 2 * (Count * (row / G * G) + G * column + row % G), z);
    });
  }
}

// Radix M, for each of D lines. M + 1 lines apart, the results of one meet those of others in no set of the
// cache.
template <class T, int M, int D, bool Inverse>
[[gnu::flatten]] void LineMiddle(const T *lines, const T *turns, T *to) {
  constexpr int V = kComplexLanes<T>, G = kLine<T>;
  using E = Complex<T, V>;
  for (Index c = 0; c < D; ++c, turns += (M - 1) * 4, lines += 2 * G, to += (M + 1) * 2 * G) {
    for (int v = 0; v < 2 * G; v += 2 * V) {
      Points<T, M, Inverse, E>([&](auto m) { return Load<E>(lines + m * D * 2 * G + v); },
                               [&](auto k, E z) {
                                 if constexpr (k > 0) {
                                   const T *const w = turns + (k - 1) * 4;
                                   z = Turned<Inverse>(z, Pairs<E>(w), Pairs<E>(w + 2));
                                 }
                                 Store(to + k * 2 * G + v, z);
                               });
    }
  }
}

// The last radix, D, for each of M lines, to lines that lie Step values apart.
template <class T, int M, int D, int Step, bool Inverse>
[[gnu::flatten]] void LineLast(const T *from, T *out) {
  constexpr int V = kComplexLanes<T>, G = kLine<T>;
  using E = Complex<T, V>;
  for (Index k = 0; k < M; ++k, from += 2 * G, out += 2 * Step) {
    using Waiting = Aside<T, D>;
    Waiting aside;
    const auto run = [&](int v, const auto &put) {
      Points<T, D, Inverse, E>([&](auto c) { return Load<E>(from + c * (M + 1) * 2 * G + 2 * v); },
                               [&](auto d, E z) { put(d, z); });
    };
    Unroll<Waiting::kMore>([&](auto i) { run(i * V, [&](auto d, E z) { Store(aside.At(i, d), z); }); });
    run(G - V, [&](auto d, E z) {
      T *const to = out + 2 * d * Step * M;
      Unroll<Waiting::kMore>([&](auto i) { Store(to + i * 2 * V, Load<E>(aside.At(i, d))); });
      Store(to + 2 * (G - V), z);
    });
  }
}

// Lines that lie one behind the other, to where they are Step values apart.
template <class T, int Count, int Step> void SpreadLines(const T *lines, T *out) {
  constexpr int V = kComplexLanes<T>, G = kLine<T>;
  for (Index i = 0; i < Count; ++i) {
    Unroll<G / V>([&](auto v) {
      Store(out + i * 2 * Step + v * 2 * V, Load<Complex<T, V>>(lines + i * 2 * G + v * 2 * V));
    });
  }
}

template <class T, int A, int M, int D, class Ends>
void LinesOf(const fourier::Lines<T> &plan, const T *in, T *out, T *scratch, Ends ends) {
  constexpr int G = kLine<T>;
  constexpr Index kPage = 4096;
  constexpr bool kInverse = Ends::kInverse;
  T *const part = scratch + 2 * A * M * D;
  LineColumns<T, A, M * D>(in, plan.turns, ends, scratch);
  for (Index row = 0; row < A; row += G) {
    T *const lines = scratch + 2 * row * M * D;
    LineMiddle<T, M, D, kInverse>(lines, plan.middleTurns, part);
    if constexpr (A * M * 2 * sizeof(T) % kPage == 0) {
      // The lines that a butterfly writes would meet in one set of the cache.
      LineLast<T, M, D, G, kInverse>(part, lines);
      SpreadLines<T, M * D, A>(lines, out + 2 * row);
    } else {
      LineLast<T, M, D, A, kInverse>(part, out + 2 * row);
    }
  }
}

template <class T, class Ends>
void RunLinesEnds(const fourier::Lines<T> &plan, const T *in, T *out, T *scratch, Ends ends) {
  switch (plan.length) {
  case 512:
    return LinesOf<T, 8, 8, 8>(plan, in, out, scratch, ends);
  case 1024:
    return LinesOf<T, 8, 8, 16>(plan, in, out, scratch, ends);
  case 1536:
    return LinesOf<T, 8, 12, 16>(plan, in, out, scratch, ends);
  case 2048:
    return LinesOf<T, 8, 16, 16>(plan, in, out, scratch, ends);
  case 4096:
    if constexpr (sizeof(T) == sizeof(float)) return LinesOf<T, 16, 16, 16>(plan, in, out, scratch, ends);
  }
}

/// out = scale * transform of in; out may be in. scratch holds as many values as the transform and as
/// (middle + 1) * columns lines.
template <class T>
void RunLines(const fourier::Lines<T> &plan, const T *in, T *out, T *scratch, bool inverse, T scale) {
  WithEnds<T>(inverse, scale, [&](auto ends) { RunLinesEnds(plan, in, out, scratch, ends); });
}

/// out = forward transform of the products of in and weights, scalar by scalar; out may be in. scratch as
/// above.
template <class T>
void RunWeightedLines(const fourier::Lines<T> &plan, const T *in, const T *weights, T *out, T *scratch) {
  RunLinesEnds(plan, in, out, scratch, WeightedEnds<T>{weights});
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
