// Transforms in two steps of tiles; see Passes.h for the layout.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_TILED_H
#define QORN_SRC_INFRA_FOURIER_PASSES_TILED_H

#include "Columns.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Samples of fewer bytes are taken to be in a near cache.
inline constexpr Index kNearBytes = 1 << 21;

// The place of sample or lane `at` in the blocks of a tile: its block and its lane.
template <class T> [[gnu::always_inline]] inline Index BlockOf(Index at) {
  return static_cast<Index>(static_cast<std::size_t>(at) / fourier::Tiled<T>::kWidth);
}
template <class T> [[gnu::always_inline]] inline Index LaneOf(Index at) {
  return static_cast<Index>(static_cast<std::size_t>(at) % fourier::Tiled<T>::kWidth);
}

// Asks for the lines that hold 2 V scalars, to be read or written soon.
template <class T, int V, int Written> [[gnu::always_inline]] inline void Expect(const T *x) {
  constexpr int kLine = 64 / static_cast<int>(sizeof(T));
  Unroll<(2 * V + kLine - 1) / kLine>([&](auto line) { __builtin_prefetch(x + line * kLine, Written, 2); });
}

// Blocks as rows of a tile of columns of the samples, which lie `pitch` scalars apart. What lies `ahead`
// scalars behind each will be wanted soon; 0 for nothing.
template <class T> struct ColumnRows {
  const T *in;
  Index pitch, ahead;
  T sign;

  // Every step-th row, from `first` on.
  ColumnRows Every(Index first, Index step) const { return {in + first * pitch, step * pitch, ahead, sign}; }

  template <int V> [[gnu::always_inline]] inline void Load(Index at, Vec<T, V> &re, Vec<T, V> &im) const {
    const T *const x = in + BlockOf<T>(at) * pitch + 2 * LaneOf<T>(at);
    if (ahead != 0) Expect<T, V, 0>(x + ahead);
    LoadComplex<T, V>(x, re, im);
    im *= sign;
  }
};

// Blocks that lie `pitch` scalars apart; `ahead` as above.
template <class T> struct BlockRows {
  const T *in;
  Index pitch, ahead;

  BlockRows Every(Index first, Index step) const { return {in + first * pitch, step * pitch, ahead}; }

  template <int V> [[gnu::always_inline]] inline void Load(Index at, Vec<T, V> &re, Vec<T, V> &im) const {
    const T *const x = in + BlockOf<T>(at) * pitch + LaneOf<T>(at);
    if (ahead != 0) Expect<T, V, 0>(x + LaneOf<T>(at) + ahead);
    re = kernels::QORN_LEVEL::Load<Vec<T, V>>(x);
    im = kernels::QORN_LEVEL::Load<Vec<T, V>>(x + fourier::Tiled<T>::kWidth);
  }
};

// Where the blocks of a line's parts stand: each part's one behind the other's. One block is left free
// between them, lest those that a butterfly takes share their place in the cache.
template <class T> [[gnu::always_inline]] inline Index PartPitch(const fourier::Line<T> &line) {
  return (line.part.blocks + 1) * 2 * fourier::Tiled<T>::kWidth;
}

// The parts of a line, into `tile`. `spare` holds two parts.
template <class T, class Rows>
void RunParts(const fourier::Line<T> &line, const Rows &rows, T *tile, T *spare) {
  constexpr int W = fourier::Tiled<T>::kWidth;
  const fourier::Columns<T> &plan = line.part;
  const int count = plan.passCount;
  for (int j = 0; j < line.last; ++j, tile += PartPitch(line)) {
    const Rows source = rows.Every(j, line.last);
    if (count == 1) {
      RunFirst<T, W, false, true>(plan, source, tile);
      continue;
    }
    T *now = spare, *next = spare + plan.blocks * 2 * W;
    RunFirst<T, W, true, true>(plan, source, now);
    for (int i = 1; i < count - 1; ++i) {
      RunInner<T, W, true, true>(plan, plan.passes[i], now, next);
      T *const free = now;
      now = next;
      next = free;
    }
    RunInner<T, W, false, true>(plan, plan.passes[count - 1], now, tile);
  }
}

// The pass that joins the parts, for places q from first to end - 1 of each. sink.Store<V>(q, k, c, re, im)
// takes lanes from c on of output q + part.blocks * k.
template <class T, int R, class Sink>
[[gnu::flatten]] void JoinParts(const fourier::Line<T> &line, const T *tile, Index first, Index end,
                                const Sink &sink) {
  constexpr int W = fourier::Tiled<T>::kWidth, V = kLanes<T, W>;
  using E = Vec<T, V>;
  const Index pitch = PartPitch(line);
  const T *w = line.part.turns + line.lastTurns + first * 2 * (R - 1);
  for (Index q = first; q < end; ++q, w += 2 * (R - 1)) {
    for (Index c = 0; c < W; c += V) {
      E re[R], im[R];
      const T *const x = tile + q * 2 * W + c;
      Unroll<R>([&](auto j) {
        re[j] = Load<E>(x + j * pitch);
        im[j] = Load<E>(x + j * pitch + W);
        if constexpr (j > 0) Turn(re[j], im[j], Broadcast<E>(w[2 * j - 2]), Broadcast<E>(w[2 * j - 1]));
      });
      Butterfly<T, R>(re, im);
      Unroll<R>([&](auto k) { sink.template Store<V>(q, k, c, re[k], im[k]); });
    }
  }
}
template <class T, class Sink>
void RunJoinParts(const fourier::Line<T> &line, const T *tile, Index first, Index end, const Sink &sink) {
  switch (line.last) {
  case 1:
    return JoinParts<T, 1>(line, tile, first, end, sink);
  case 2:
    return JoinParts<T, 2>(line, tile, first, end, sink);
  case 3:
    return JoinParts<T, 3>(line, tile, first, end, sink);
  case 4:
    return JoinParts<T, 4>(line, tile, first, end, sink);
  case 5:
    return JoinParts<T, 5>(line, tile, first, end, sink);
  case 7:
    return JoinParts<T, 7>(line, tile, first, end, sink);
  case 8:
    return JoinParts<T, 8>(line, tile, first, end, sink);
  case 9:
    return JoinParts<T, 9>(line, tile, first, end, sink);
  }
}

// To blocks: those of each k one behind the other, places `first` to first + count - 1.
template <class T> struct BlockSink {
  T *to;
  Index first, count;

  template <int V>
  [[gnu::always_inline]] inline void Store(Index q, Index k, Index c, Vec<T, V> re, Vec<T, V> im) const {
    constexpr int W = fourier::Tiled<T>::kWidth;
    T *const y = to + (k * count + q - first) * 2 * W + c;
    kernels::QORN_LEVEL::Store(y, re);
    kernels::QORN_LEVEL::Store(y + W, im);
  }
};

// To bins, W of them from `to` on for each output, which lie `pitch` scalars apart.
template <class T> struct BinSink {
  T *to;
  Index pitch, blocks;
  T scale, sign;

  template <int V>
  [[gnu::always_inline]] inline void Store(Index q, Index k, Index c, Vec<T, V> re, Vec<T, V> im) const {
    StoreComplex<T, V>(to + (q + blocks * k) * pitch + 2 * c, re * scale, im * (sign * scale));
  }
};

// W blocks, transposed and turned. What lies `ahead` scalars behind the results will be written soon; 0 for
// nothing.
template <class T>
[[gnu::flatten]] void TurnOver(const T *blocks, const T *steps, const T *strides, T *to, Index ahead) {
  constexpr int W = fourier::Tiled<T>::kWidth, V = kLanes<T, W>;
  using E = Vec<T, V>;
  for (Index a = 0; a < W; a += V) {
    for (Index b = 0; b < W; b += V) {
      const T *const x = blocks + a * 2 * W + b;
      T *const y = to + b * 2 * W + a;
      // The real parts wait in memory, as the registers do not hold both.
      E rows[V];
      Unroll<V>([&](auto i) { rows[i] = Load<E>(x + i * 2 * W); });
      Transpose<T, V>(rows);
      Unroll<V>([&](auto i) { Store(y + i * 2 * W, rows[i]); });
      Unroll<V>([&](auto i) { rows[i] = Load<E>(x + i * 2 * W + W); });
      Transpose<T, V>(rows);
      const T *const w = steps + b * 2 * W + a, *const first = strides + 2 * b;
      Unroll<V>([&](auto i) {
        E wre = Load<E>(w + i * 2 * W), wim = Load<E>(w + i * 2 * W + W), re = Load<E>(y + i * 2 * W);
        Turn(wre, wim, Broadcast<E>(first[2 * i]), Broadcast<E>(first[2 * i + 1]));
        Turn(re, rows[i], wre, wim);
        if (ahead != 0) Expect<T, V, 1>(to + (b + i) * 2 * W + 2 * a + ahead);
        Store(y + i * 2 * W, re);
        Store(y + i * 2 * W + W, rows[i]);
      });
    }
  }
}

// The transforms of W columns from `column` on, turned, to where the transforms of the rows want them.
template <class T>
void RunDown(const fourier::Tiled<T> &plan, Index column, const ColumnRows<T> &rows, const T *strides,
             T *tile, T *spare, T *to) {
  constexpr int W = fourier::Tiled<T>::kWidth;
  const fourier::Line<T> &line = plan.down;
  const Index part = line.part.blocks;
  const Index width = plan.across.part.blocks * plan.across.last;
  RunParts(line, rows, tile, spare);
  // A few places of all parts at a time, if their bins are neighbours as they are wanted; else all.
  const Index count = part % W == 0 ? W : part;
  const Index joined = count * line.last;
  for (Index q = 0; q < part; q += count) {
    RunJoinParts(line, tile, q, q + count, BlockSink<T>{spare, q, count});
    for (Index at = 0; at < joined; at += W) {
      const Index from = at + W <= joined ? at : joined - W;
      const Index k = count == part ? from : q + part * (from / W);
      const Index group = (k + W - 1) / W;
      TurnOver(spare + from * 2 * W, plan.steps + column * 2 * W, strides + group * 2 * W,
               to + (group * width + column) * 2 * W, rows.ahead == 0 ? 0 : W * 2 * W);
    }
  }
}

/// out = scale * transform of in; out may be in.
template <class T>
void RunTiled(const fourier::Tiled<T> &plan, const T *in, T *out, T *scratch, bool inverse, T scale) {
  constexpr Index W = fourier::Tiled<T>::kWidth;
  const T sign = static_cast<T>(inverse ? -1 : 1);
  const Index rows = plan.down.part.blocks * plan.down.last,
              columns = plan.across.part.blocks * plan.across.last;
  const Index groups = (rows + W - 1) / W;
  T *const middle = scratch, *const tile = middle + groups * columns * 2 * W;
  T *const spare = tile + plan.tile;
  const bool isFar = rows * columns * 2 * static_cast<Index>(sizeof(T)) > kNearBytes;
  const T *strides = plan.strides;
  for (Index at = 0; at < columns; at += W, strides += groups * 2 * W) {
    const Index column = at + W <= columns ? at : columns - W;
    const Index next = isFar && at + 2 * W <= columns ? W : 0;
    RunDown(plan, column, ColumnRows<T>{in + 2 * column, 2 * columns, 2 * next, sign}, strides, tile, spare,
            middle);
  }
  for (Index group = 0; group < groups; ++group) {
    const Index k = group * W + W <= rows ? group * W : rows - W;
    RunParts(plan.across,
             BlockRows<T>{middle + group * columns * 2 * W, 2 * W,
                          isFar && group + 1 < groups ? columns * 2 * W : 0},
             tile, spare);
    RunJoinParts(plan.across, tile, 0, plan.across.part.blocks,
                 BinSink<T>{out + 2 * k, 2 * rows, plan.across.part.blocks, scale, sign});
  }
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
