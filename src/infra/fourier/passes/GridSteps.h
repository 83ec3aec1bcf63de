// Transforms of few points in two or three steps; see infra/fourier/Grid.h for the layout.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_GRIDSTEPS_H
#define QORN_SRC_INFRA_FOURIER_PASSES_GRIDSTEPS_H

#include "Interleaved.h"
#include "infra/fourier/Grid.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Where group g of V places starts, of n >= V in all: the last one ends with them, and so may repeat some of
// the one before, with the same results.
template <int V> constexpr Index GroupStart(Index g, Index n) { return (g + 1) * V <= n ? g * V : n - V; }
template <int V> constexpr Index GroupCount(Index n) { return (n + V - 1) / V; }

/// The two scalars at p, again and again.
template <class E, class T> [[gnu::always_inline]] inline E Pairs(const T *p) {
  if constexpr (sizeof(T) == sizeof(float)) {
    // A pair of floats moves as one double.
    return reinterpret_cast<E>(Broadcast<Vec<double, kScalars<E> / 2>>(Load<double>(p)));
  } else if constexpr (kScalars<E> == 2) {
    return Load<E>(p);
  } else {
    // As instructions: from shuffles GCC 12 makes a way through memory.
#if defined(__AVX512DQ__)
    if constexpr (sizeof(E) == 64) return _mm512_maskz_broadcast_f64x2(0xff, Load<Vec<T, 2>>(p));
#endif
#if defined(__AVX2__)
    if constexpr (sizeof(E) == 32) return _mm256_set_m128d(Load<Vec<T, 2>>(p), Load<Vec<T, 2>>(p));
#endif
  }
}

// V columns, from `at` on, of `columns`: their transforms over A rows, turned.
template <class T, int V, int A, class Ends>
[[gnu::always_inline]] inline void TurnedColumns(const T *in, Index at, Index columns, const T *turns,
                                                 const Ends &ends, Complex<T, V> (&z)[A]) {
  using E = Complex<T, V>;
  Unroll<A>([&](auto a) {
    const Index place = 2 * (columns * a + at);
    z[a] = ends.First(Load<E>(in + place), place);
  });
  Butterfly<T, A, Ends::kInverse>(z);
  const T *w = turns + 2 * at;
  Unroll<A - 1>([&](auto i) {
    constexpr int k = i + 1;
    z[k] = Turned<Ends::kInverse>(z[k], Load<E>(w + i * 4 * columns),
                                  Load<E>(w + i * 4 * columns + 2 * columns));
  });
}

// What TurnedColumns leaves, V values of one column at a time: give(row, i, values) gets those of column i
// from `row` on.
template <class T, int V, int A, class Give>
[[gnu::always_inline]] inline void GiveColumns(const Complex<T, V> (&z)[A], const Give &give) {
  Unroll<GroupCount<V>(A)>([&](auto group) {
    constexpr int kRow = GroupStart<V>(group, A);
    Complex<T, V> t[V];
    Unroll<V>([&](auto i) { t[i] = z[kRow + i]; });
    TransposeComplex<T, V>(t);
    Unroll<V>([&](auto i) { give(group, kRow, i, t[i]); });
  });
}

// The direction, and what is done to the samples first, those from scalar `place` on. They are scaled as they
// are loaded, which takes no instruction of its own.
template <class T, bool Inverse> struct ScaledEnds {
  static constexpr bool kInverse = Inverse;
  T scale;

  template <class E> [[gnu::always_inline]] inline E First(E x, Index) const { return x * scale; }
};
// Nothing: a forward transform of scale 1.
struct PlainEnds {
  static constexpr bool kInverse = false;

  template <class E> [[gnu::always_inline]] inline E First(E x, Index) const { return x; }
};
// The same of samples that are multiplied by weights first.
template <class T> struct WeightedEnds {
  static constexpr bool kInverse = false;
  const T *weights;

  template <class E> [[gnu::always_inline]] inline E First(E x, Index place) const {
    return x * Load<E>(weights + place);
  }
};

// Calls body(ends) with what a transform needs.
template <class T, class F>
[[gnu::always_inline]] inline void WithEnds(bool inverse, T scale, const F &body) {
  if (inverse) {
    body(ScaledEnds<T, true>{scale});
  } else if (scale == 1) {
    body(PlainEnds{});
  } else {
    body(ScaledEnds<T, false>{scale});
  }
}

// The first radix, A, for each of `count` neighbours. Count is Index, or an Int where the compiler is to
// know.
template <class T, int V, int A, class Count, class Ends>
[[gnu::flatten]] void GridColumns(const T *in, Count count, const T *turns, Ends ends, T *scratch) {
  const Index columns = count;
  for (Index g = 0; g < GroupCount<V>(columns); ++g) {
    const Index at = GroupStart<V>(g, columns);
    Complex<T, V> z[A];
    TurnedColumns<T, V, A>(in, at, columns, turns, ends, z);
    GiveColumns<T, V, A>(
        z, [&](auto, auto row, auto i, Complex<T, V> t) { Store(scratch + 2 * (A * (at + i) + row), t); });
  }
}

// Radix B, for each of `rows` neighbours of each of `columns`. Where the registers hold the factors beside
// the values, they stay there from group to group.
template <class T, int V, int B, bool Inverse>
[[gnu::flatten]] void GridMiddle(const T *in, Index rows, Index columns, const T *turns, T *out) {
  using E = Complex<T, V>;
  constexpr int kRegisters = kRegisterBytes == 64 ? 32 : 16;
  constexpr bool kHeld = 2 * (B - 1) + B < kRegisters;
  for (Index c = 0; c < columns; ++c, turns += (B - 1) * 4) {
    E held[2 * (B - 1)];
    if constexpr (kHeld) Unroll<2 * (B - 1)>([&](auto i) { held[i] = Pairs<E>(turns + 2 * i); });
    for (Index g = 0; g < GroupCount<V>(rows); ++g) {
      const Index at = GroupStart<V>(g, rows);
      E z[B];
      Unroll<B>([&](auto b) { z[b] = Load<E>(in + 2 * (rows * (columns * b + c) + at)); });
      Butterfly<T, B, Inverse>(z);
      T *const to = out + 2 * (rows * B * c + at);
      Store(to, z[0]);
      Unroll<B - 1>([&](auto i) {
        const auto factor = [&](auto part) {
          if constexpr (kHeld) {
            return held[2 * i + part];
          } else {
            return Pairs<E>(turns + 4 * i + 2 * part);
          }
        };
        Store(to + (i + 1) * 2 * rows, Turned<Inverse>(z[i + 1], factor(Int<0>{}), factor(Int<1>{})));
      });
    }
  }
}

// The last radix, B, for each of `count` neighbours.
template <class T, int V, int B, bool Inverse, class Count>
[[gnu::flatten]] void GridRows(const T *scratch, Count count, T *out) {
  const Index rows = count;
  using E = Complex<T, V>;
  for (Index g = 0; g < GroupCount<V>(rows); ++g) {
    const Index at = GroupStart<V>(g, rows);
    E z[B];
    Unroll<B>([&](auto b) { z[b] = Load<E>(scratch + 2 * (rows * b + at)); });
    Butterfly<T, B, Inverse>(z);
    Unroll<B>([&](auto b) { Store(out + 2 * (rows * b + at), z[b]); });
  }
}

// Calls body(Int<radix>).
template <class F> [[gnu::always_inline]] inline void WithRadix(int radix, const F &body) {
  switch (radix) {
  case 4:
    return body(Int<4>{});
  case 5:
    return body(Int<5>{});
  case 6:
    return body(Int<6>{});
  case 7:
    return body(Int<7>{});
  case 8:
    return body(Int<8>{});
  case 9:
    return body(Int<9>{});
  case 10:
    return body(Int<10>{});
  case 12:
    return body(Int<12>{});
  case 14:
    return body(Int<14>{});
  case 15:
    return body(Int<15>{});
  case 16:
    return body(Int<16>{});
  }
}

template <class T, int V, class Ends>
void RunGridWith(const fourier::Grid<T> &plan, const T *in, T *out, T *scratch, Ends ends) {
  const int columns = plan.middle * plan.columns;
  if constexpr (V > 4) {
    if (plan.rows < V || columns < V) return RunGridWith<T, V / 2>(plan, in, out, scratch, ends);
  }
  // The last step reads scratch; one before may write out, so that less memory is touched.
  T *const first = plan.middle == 1 ? scratch : out != in ? out : scratch + 2 * plan.rows * columns;
  WithRadix(plan.rows, [&]<int A>(Int<A>) {
    if constexpr (A >= V) GridColumns<T, V, A>(in, Index{columns}, plan.turns, ends, first);
  });
  if (plan.middle != 1) {
    WithRadix(plan.middle, [&]<int B>(Int<B>) {
      GridMiddle<T, V, B, Ends::kInverse>(first, plan.rows, plan.columns, plan.middleTurns, scratch);
    });
  }
  WithRadix(plan.columns, [&]<int B>(Int<B>) {
    GridRows<T, V, B, Ends::kInverse>(scratch, Index{plan.rows} * plan.middle, out);
  });
}

template <class T, class Ends>
void RunGridEnds(const fourier::Grid<T> &plan, const T *in, T *out, T *scratch, Ends ends) {
  constexpr int V = kComplexLanes<T>;
  if (plan.middle == 1 && plan.rows == 16 && plan.columns == 16) {
    GridColumns<T, V, 16>(in, Int<16>{}, plan.turns, ends, scratch);
    GridRows<T, V, 16, Ends::kInverse>(scratch, Int<16>{}, out);
  } else {
    RunGridWith<T, V>(plan, in, out, scratch, ends);
  }
}

/// out = scale * transform of in; out may be in. scratch holds twice as many values as the transform.
template <class T>
void RunGrid(const fourier::Grid<T> &plan, const T *in, T *out, T *scratch, bool inverse, T scale) {
  WithEnds<T>(inverse, scale, [&](auto ends) { RunGridEnds(plan, in, out, scratch, ends); });
}

/// out = forward transform of the products of in and weights, scalar by scalar; out may be in. scratch as
/// above.
template <class T>
void RunWeightedGrid(const fourier::Grid<T> &plan, const T *in, const T *weights, T *out, T *scratch) {
  RunGridEnds(plan, in, out, scratch, WeightedEnds<T>{weights});
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
