// Transforms in two sweeps; see infra/fourier/FourStep.h for the layout.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_FOURSTEP_H
#define QORN_SRC_INFRA_FOURIER_PASSES_FOURSTEP_H

#include "Lines.h"
#include "infra/fourier/FourStep.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Where butterflies find their inputs or put their outputs, all lines: distances in scalars from one line of
// a butterfly to the next, from one butterfly to the next, and from one row of butterflies to the next.
template <class T> struct LineGrid {
  T *at;
  Index apart, next, row;
};

// Butterflies of radix R, in `rows` rows of `count`, in place or not. Before: the inputs are turned by
// `before`, 4 scalars for each. After: the outputs are turned by `after`, for each k >= 1. All rows have the
// same factors.
template <class T, int R, bool Inverse, bool Before, bool After>
[[gnu::flatten]] void StripStep(LineGrid<const T> from, LineGrid<T> to, Index count, Index rows,
                                const T *before, const T *after) {
  constexpr int V = kComplexLanes<T>, G = kLine<T>;
  using E = Complex<T, V>;
  for (Index row = 0; row < rows; ++row, from.at += from.row, to.at += to.row) {
    const T *x = from.at, *v = before, *w = after;
    T *y = to.at;
    for (Index p = 0; p < count; ++p, x += from.next, y += to.next) {
      // Else the places of all lines are computed before the loop, and the registers do not hold them.
      Hide(from.apart);
      Hide(to.apart);
      Unroll<G / V>([&](auto part) {
        constexpr int kAt = part * 2 * V;
        Points<T, R, Inverse, E>(
            [&](auto i) {
              const E z = Load<E>(x + i * from.apart + kAt);
              if constexpr (!Before) return z;
              return Turned<Inverse>(z, Pairs<E>(v + 4 * i), Pairs<E>(v + 4 * i + 2));
            },
            [&](auto k, E z) {
              if constexpr (After && k > 0) {
                const T *const turn = w + 4 * (k - 1);
                z = Turned<Inverse>(z, Pairs<E>(turn), Pairs<E>(turn + 2));
              }
              Store(y + k * to.apart + kAt, z);
            });
      });
      if constexpr (Before) v += 4 * R;
      if constexpr (After) w += 4 * (R - 1);
    }
  }
}

// `count` strips of one plan that stand `between` scalars apart.
template <class T> struct Strips {
  const fourier::Strip<T> &plan;
  T *lines;
  Index count, between;
};

// The first step of strips, whose lines are at `from` yet, as far apart.
template <class T, bool Inverse, bool Before>
void RunFirst(const Strips<T> &strips, const T *from, const T *before) {
  constexpr Index L = 2 * kLine<T>;
  const fourier::Strip<T> &plan = strips.plan;
  const Index pitch = plan.pitch * L, between = strips.between;
  WithRadix(plan.radices[0], [&]<int R>(Int<R>) {
    StripStep<T, R, Inverse, Before, true>({from, pitch, L, between}, {strips.lines, pitch, L, between},
                                           plan.length / R, strips.count, before, plan.turns);
  });
}

// The steps from `step` on, of `count` parts of the strips, which stand `next` scalars apart. The results of
// a part lie `apart` scalars apart and begin `row` scalars behind those of the part before, those of
// neighbouring strips on neighbouring lines; or they stay in place, if `to` is null.
template <class T, bool Inverse>
void RunParts(const Strips<T> &strips, int step, T *part, Index count, Index next, const T *turns, T *to,
              Index row, Index apart) {
  constexpr Index L = 2 * kLine<T>;
  const fourier::Strip<T> &plan = strips.plan;
  const Index radix = plan.radices[step], between = strips.between;
  if (step == plan.steps - 1) {
    const LineGrid<T> inPlace{part, L, between, next};
    WithRadix(plan.radices[step], [&]<int R>(Int<R>) {
      StripStep<T, R, Inverse, false, false>({part, L, between, next},
                                             to == nullptr ? inPlace : LineGrid<T>{to, apart, L, row},
                                             strips.count, count, nullptr, nullptr);
    });
    return;
  }
  Index rest = 1; // lines of a part of these parts
  for (int i = step + 1; i < plan.steps; ++i) rest *= plan.radices[i];
  for (Index k = 0; k < count; ++k, part += next) {
    WithRadix(plan.radices[step], [&]<int R>(Int<R>) {
      StripStep<T, R, Inverse, false, true>({part, rest * L, L, between}, {part, rest * L, L, between}, rest,
                                            strips.count, nullptr, turns);
    });
    RunParts<T, Inverse>(strips, step + 1, part, radix, rest * L, turns + 4 * (radix - 1) * rest,
                         to == nullptr ? to : to + k * row, apart, radix * apart);
  }
}

// All steps but the first one, if there are more.
template <class T, bool Inverse> void RunRest(const Strips<T> &strips, T *to, Index apart) {
  constexpr Index L = 2 * kLine<T>;
  const fourier::Strip<T> &plan = strips.plan;
  if (plan.steps == 1) return RunParts<T, Inverse>(strips, 0, strips.lines, 1, 0, nullptr, to, 0, apart);
  const Index parts = plan.radices[0];
  RunParts<T, Inverse>(strips, 1, strips.lines, parts, plan.pitch * L,
                       plan.turns + 4 * (plan.length - plan.length / parts), to, apart, parts * apart);
}

// The results of strips in place, in order, to where RunRest would store them.
template <class T> void Spread(const Strips<T> &strips, T *to, Index apart) {
  constexpr int V = kComplexLanes<T>;
  constexpr Index L = 2 * kLine<T>;
  const fourier::Strip<T> &plan = strips.plan;
  const Index last = plan.radices[plan.steps - 1], outer = plan.radices[0];
  // Of up to two steps between, whose digits are in reversed order too.
  const Index inner = plan.length / (outer * last), second = plan.steps < 4 ? inner : plan.radices[1];
  for (Index i = 0; i < last; ++i) {
    for (Index m = 0; m < inner; ++m) {
      const T *line = strips.lines + ((m % second * (inner / second) + m / second) * last + i) * L;
      for (Index k = 0; k < outer; ++k, line += plan.pitch * L, to += apart) {
        for (Index j = 0; j < strips.count; ++j) {
          Unroll<kLine<T> / V>([&](auto v) {
            Store(to + j * L + v * 2 * V, Load<Complex<T, V>>(line + j * strips.between + v * 2 * V));
          });
        }
      }
    }
  }
}

// The first step of the first sweep, for W columns and for `count` neighbouring rows, which lie `pitch`
// scalars apart; what a butterfly combines lies `apart` scalars apart. The results of column b and of the
// g-th W of k'' go to lines `between` * b + `groups` * g scalars behind `to`, and those of neighbouring rows
// one behind the other. Turn: they are turned by `down` first. `place` is that of the first sample.
template <class T, int P, bool Turn, class Ends>
[[gnu::flatten]] void FirstDown(const T *in, Index place, Index pitch, Index apart, Index count,
                                const T *turns, const T *down, Ends ends, T *to, Index between,
                                Index groups) {
  constexpr Index G = kLine<T>;
  using E = Complex<T, kComplexLanes<T>>;
  for (Index j = 0; j < count; ++j, place += pitch, to += 2 * G, down += Turn ? 4 * P : 0) {
    Hide(apart);
    Hide(between);
    LineColumn<T, P>(in + place, apart, place, turns, ends, [&](auto row, Index b, E z) {
      if constexpr (Turn) {
        const T *const w = down + 2 * row;
        z = Turned<Ends::kInverse>(z, Load<E>(w), Load<E>(w + 2 * P));
      }
      Store(to + row / G * groups + b * between + 2 * (row % G), z);
    });
  }
}

// The first sweep.
template <class T, int P, class Ends>
void SweepDown(const fourier::FourStep<T> &plan, const T *in, Ends ends, T *matrix, T *tile) {
  constexpr Index G = kLine<T>, L = 2 * G, kGroups = P / G;
  const fourier::Strip<T> &down = plan.down, &across = plan.across;
  const Index columns = plan.columns, part = columns / across.radices[0];
  const Index parts = down.steps < 2 ? 1 : down.radices[0], rows = down.length / parts;
  const Index between = parts * down.pitch * L;
  const T *turns = plan.columnTurns;
  for (Index at = 0; at < columns; at += G, turns += (P - 1) * 2 * L) {
    const Index first = at + G <= columns ? at : columns - G;
    T *const to = matrix + (first + first / part * (across.pitch - part)) * L;
    if (down.length == 1) {
      FirstDown<T, P, false>(in, 2 * first, 0, 2 * columns, 1, turns, nullptr, ends, to, L, plan.pitch * L);
      continue;
    }
    for (Index i = 0; i < parts; ++i) {
      FirstDown<T, P, true>(in, 2 * (first + columns * rows * i), 2 * columns, 2 * columns * down.length,
                            rows, turns, plan.downTurns + i * rows * 4 * P, ends, tile + i * down.pitch * L,
                            between, G * between);
    }
    if (down.steps > 1) RunFirst<T, Ends::kInverse, false>({down, tile, P, between}, tile, nullptr);
    for (Index group = 0; group < kGroups; ++group) {
      RunRest<T, Ends::kInverse>({down, tile + group * G * between, G, between}, to + group * plan.pitch * L,
                                 kGroups * plan.pitch * L);
    }
  }
}

// The second one.
template <class T, bool Inverse>
void SweepAcross(const fourier::FourStep<T> &plan, T *matrix, T *tile, T *out) {
  constexpr Index G = kLine<T>, L = 2 * G;
  const Index rows = plan.first * plan.down.length, lines = rows / G, groups = plan.first / G;
  const Index between = plan.pitch * L;
  for (Index at = 0; at < lines; at += plan.together) {
    const Index count = lines - at < plan.together ? lines - at : plan.together;
    T *const here = matrix + at * between, *const to = out + at * L;
    const Strips<T> strips{plan.across, plan.down.length == 1 ? here : tile, count, between};
    if (plan.down.length == 1) {
      RunFirst<T, Inverse, false>(strips, here, nullptr);
    } else {
      for (Index i = 0; i < count; ++i) {
        RunFirst<T, Inverse, true>({plan.across, tile + i * between, 1, between}, here + i * between,
                                   plan.acrossTurns + (at + i) / groups * 4 * plan.columns);
      }
    }
    RunRest<T, Inverse>(strips, plan.isSpread ? nullptr : to, 2 * rows);
    if (plan.isSpread) Spread(strips, to, 2 * rows);
  }
}

template <class T, class Ends>
void RunFourStepEnds(const fourier::FourStep<T> &plan, const T *in, T *out, T *scratch, Ends ends) {
  const Index rows = plan.first * plan.down.length;
  T *const tile = scratch + 2 * rows * plan.pitch;
  switch (plan.first) {
  case 8:
    SweepDown<T, 8>(plan, in, ends, scratch, tile);
    break;
  case 16:
    SweepDown<T, 16>(plan, in, ends, scratch, tile);
    break;
  }
  SweepAcross<T, Ends::kInverse>(plan, scratch, tile, out);
}

/// out = scale * transform of in; out may be in. scratch holds the matrix, and behind it, if there are strips
/// down, either those of W columns or the strips across that are transformed together, whichever take more.
template <class T>
void RunFourStep(const fourier::FourStep<T> &plan, const T *in, T *out, T *scratch, bool inverse, T scale) {
  WithEnds<T>(inverse, scale, [&](auto ends) { RunFourStepEnds(plan, in, out, scratch, ends); });
}

/// out = forward transform of the products of in and weights, scalar by scalar; out may be in. scratch as
/// above.
template <class T>
void RunWeightedFourStep(const fourier::FourStep<T> &plan, const T *in, const T *weights, T *out,
                         T *scratch) {
  RunFourStepEnds(plan, in, out, scratch, WeightedEnds<T>{weights});
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
