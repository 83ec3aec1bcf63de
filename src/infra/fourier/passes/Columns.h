// Transforms over blocks; see Passes.h for the layout.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_COLUMNS_H
#define QORN_SRC_INFRA_FOURIER_PASSES_COLUMNS_H

#include "OddRadix.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// The first `count` scalars of `from`, then zeros. Apart from the passes, which call it for the last few of
// their blocks only.
template <class T> [[gnu::noinline]] void CopyPart(const T *from, Index count, T *part, Index size) {
  for (Index i = 0; i < size; ++i) part[i] = i < count ? from[i] : T{0};
}

// V interleaved complex values from place `at` on, of which only those before `end` exist; the others are 0.
template <class T, int V>
[[gnu::always_inline]] inline void LoadBefore(const T *in, Index at, Index end, Vec<T, V> &re,
                                              Vec<T, V> &im) {
  T part[2 * V];
  const T *from = in + 2 * at;
  if (at + V > end) [[unlikely]] {
    CopyPart(from, 2 * (end - at), part, 2 * V);
    from = part;
  }
  LoadComplex<T, V>(from, re, im);
}

// The last step of a pass: a butterfly, its outputs turned by w, and their stores.
template <class T, int W, int R, bool Turned>
[[gnu::always_inline]] inline void Finish(Vec<T, kLanes<T, W>> (&re)[R], Vec<T, kLanes<T, W>> (&im)[R],
                                          const T *w, T *y, Index step) {
  using E = Vec<T, kLanes<T, W>>;
  Butterfly<T, R>(re, im);
  Unroll<R>([&](auto k) {
    if constexpr (Turned && k > 0) {
      Turn(re[k], im[k], Broadcast<E>(w[2 * k - 2]), Broadcast<E>(w[2 * k - 1]));
    }
    Store(y + k * step, re[k]);
    Store(y + k * step + W, im[k]);
  });
}

// Samples of a transform. An inverse one is the forward one of the conjugate samples, conjugated: `sign` is
// -1 then.
template <class T> struct Samples {
  const T *in;
  Index length;
  T sign;

  template <int V> [[gnu::always_inline]] inline void Load(Index at, Vec<T, V> &re, Vec<T, V> &im) const {
    LoadBefore<T, V>(in, at, length, re, im);
    im *= sign;
  }
};

// Samples of a forward transform that are multiplied by weights first, which come twice each.
template <class T> struct WeightedSamples {
  const T *in, *weights;
  Index length;

  template <int V> [[gnu::always_inline]] inline void Load(Index at, Vec<T, V> &re, Vec<T, V> &im) const {
    Vec<T, V> weight, same;
    LoadBefore<T, V>(in, at, length, re, im);
    LoadBefore<T, V>(weights, at, length, weight, same);
    re *= weight;
    im *= weight;
  }
};

// The first pass: from the samples into blocks. Source::Load<V>(n, re, im) gives V samples from n on.
template <class T, int W, int R, bool Turned, class Source>
[[gnu::flatten]] void FirstPass(const fourier::Columns<T> &plan, const Source &source, T *out) {
  constexpr int V = kLanes<T, W>;
  const Index rest = plan.passes[0].rest, lanes = plan.lanes;
  const T *w = plan.turns + plan.passes[0].turns;
  for (Index p = 0; p < rest; ++p, w += 2 * (R - 1)) {
    for (Index c = 0; c < lanes; c += V) {
      Vec<T, V> re[R], im[R];
      Unroll<R>([&](auto j) { source.template Load<V>(lanes * (p + rest * j) + c, re[j], im[j]); });
      Finish<T, W, R, Turned>(re, im, w, out + R * p * 2 * W + c, 2 * W);
    }
  }
}

// A pass from blocks to blocks.
template <class T, int W, int R, bool Turned>
[[gnu::flatten]] void InnerPass(const fourier::Columns<T> &plan, const fourier::Pass &pass, const T *in,
                                T *out) {
  constexpr int V = kLanes<T, W>;
  const Index done = pass.done, rest = pass.rest, lanes = plan.lanes;
  const Index inStep = done * rest * 2 * W, outStep = done * 2 * W;
  const T *w = plan.turns + pass.turns;
  for (Index p = 0; p < rest; ++p, w += 2 * (R - 1)) {
    for (Index q = 0; q < done; ++q) {
      for (Index c = 0; c < lanes; c += V) {
        Vec<T, V> re[R], im[R];
        const T *x = in + (done * p + q) * 2 * W + c;
        Unroll<R>([&](auto j) {
          re[j] = Load<Vec<T, V>>(x + j * inStep);
          im[j] = Load<Vec<T, V>>(x + j * inStep + W);
        });
        Finish<T, W, R, Turned>(re, im, w, out + (done * R * p + q) * 2 * W + c, outStep);
      }
    }
  }
}

// V blocks from k on as L rows of V neighbouring values; the last block stands for those that do not exist.
template <class T, int W, int L, int V>
[[gnu::always_inline]] inline void LoadRows(const T *in, Index k, Index blocks, Vec<T, V> (&re)[L],
                                            Vec<T, V> (&im)[L]) {
  using E = Vec<T, V>;
  Unroll<(L + V - 1) / V>([&](auto part) {
    constexpr int kFirst = part * V;
    E rowRe[V], rowIm[V];
    Unroll<V>([&](auto i) {
      const Index block = k + i < blocks ? k + i : blocks - 1;
      rowRe[i] = Load<E>(in + block * 2 * W + kFirst);
      rowIm[i] = Load<E>(in + block * 2 * W + W + kFirst);
    });
    Transpose<T, V>(rowRe);
    Transpose<T, V>(rowIm);
    Unroll<(L - kFirst < V ? L - kFirst : V)>([&](auto i) {
      re[kFirst + i] = rowRe[i];
      im[kFirst + i] = rowIm[i];
    });
  });
}

// Multiplies the rows by the factors that join the lanes.
template <class T, int W, int L, int V>
[[gnu::always_inline]] inline void TurnRows(const fourier::Columns<T> &plan, Index k, Vec<T, V> (&re)[L],
                                            Vec<T, V> (&im)[L]) {
  using E = Vec<T, V>;
  const Index group = k / W;
  if (plan.strides == nullptr) {
    const T *w = plan.joins + group * (L - 1) * 2 * W + k % W;
    Unroll<L - 1>(
        [&](auto l) { Turn(re[l + 1], im[l + 1], Load<E>(w + l * 2 * W), Load<E>(w + l * 2 * W + W)); });
  } else {
    const T *w = plan.joins + k % W, *stride = plan.strides + group * (L - 1) * 2;
    Unroll<L - 1>([&](auto l) {
      E wre = Load<E>(w + l * 2 * W), wim = Load<E>(w + l * 2 * W + W);
      Turn(wre, wim, Broadcast<E>(stride[2 * l]), Broadcast<E>(stride[2 * l + 1]));
      Turn(re[l + 1], im[l + 1], wre, wim);
    });
  }
}

// Joins the lanes: V blocks at a time become L rows of V neighbouring frequencies.
template <class T, int W, int L, int V = kLanes<T, W>>
[[gnu::flatten]] void JoinLanes(const fourier::Columns<T> &plan, const T *in, T *out, T scale, T sign) {
  using E = Vec<T, V>;
  const Index blocks = plan.blocks;
  for (Index k = 0; k < blocks; k += V) {
    E re[L], im[L];
    LoadRows<T, W, L, V>(in, k, blocks, re, im);
    TurnRows<T, W, L, V>(plan, k, re, im);
    Butterfly<T, L>(re, im);
    const Index present = blocks - k;
    Unroll<L>([&](auto l) {
      T *const to = out + 2 * (k + blocks * l);
      if (present >= V) [[likely]] {
        StoreComplex<T, V>(to, re[l] * scale, im[l] * (sign * scale));
      } else {
        T part[2 * V];
        StoreComplex<T, V>(part, re[l] * scale, im[l] * (sign * scale));
        CopyPart(part, 2 * present, to, 2 * present);
      }
    });
  }
}

// The same of a large odd radix.
template <class T, int W, bool Turned, class Source>
[[gnu::flatten]] void FirstOddPass(const fourier::Columns<T> &plan, const Source &source, T *out) {
  OddPass<T, W, Turned>(plan.passes[0], plan.turns, plan.lanes, out,
                        [&](Index place, Index c, auto &re, auto &im) {
                          source.template Load<kLanes<T, W>>(plan.lanes * place + c, re, im);
                        });
}
template <class T, int W, bool Turned>
[[gnu::flatten]] void InnerOddPass(const fourier::Columns<T> &plan, const fourier::Pass &pass, const T *in,
                                   T *out) {
  using E = Vec<T, kLanes<T, W>>;
  OddPass<T, W, Turned>(pass, plan.turns, plan.lanes, out, [&](Index place, Index c, E &re, E &im) {
    re = Load<E>(in + place * 2 * W + c);
    im = Load<E>(in + place * 2 * W + W + c);
  });
}

// Large: whether a radix may be above kMaxStraight, as in transforms that go through tiles.
template <class T, int W, bool Turned, bool Large = false, class Source>
void RunFirst(const fourier::Columns<T> &plan, const Source &source, T *out) {
  switch (plan.passes[0].radix) {
  case 2:
    return FirstPass<T, W, 2, Turned>(plan, source, out);
  case 3:
    return FirstPass<T, W, 3, Turned>(plan, source, out);
  case 4:
    return FirstPass<T, W, 4, Turned>(plan, source, out);
  case 5:
    return FirstPass<T, W, 5, Turned>(plan, source, out);
  case 7:
    return FirstPass<T, W, 7, Turned>(plan, source, out);
  case 8:
    return FirstPass<T, W, 8, Turned>(plan, source, out);
  case 9:
    return FirstPass<T, W, 9, Turned>(plan, source, out);
  case 11:
    return FirstPass<T, W, 11, Turned>(plan, source, out);
  case 13:
    return FirstPass<T, W, 13, Turned>(plan, source, out);
  default:
    if constexpr (Large) return FirstOddPass<T, W, Turned>(plan, source, out);
  }
}

template <class T, int W, bool Turned, bool Large = false>
void RunInner(const fourier::Columns<T> &plan, const fourier::Pass &pass, const T *in, T *out) {
  switch (pass.radix) {
  case 2:
    return InnerPass<T, W, 2, Turned>(plan, pass, in, out);
  case 3:
    return InnerPass<T, W, 3, Turned>(plan, pass, in, out);
  case 4:
    return InnerPass<T, W, 4, Turned>(plan, pass, in, out);
  case 5:
    return InnerPass<T, W, 5, Turned>(plan, pass, in, out);
  case 7:
    return InnerPass<T, W, 7, Turned>(plan, pass, in, out);
  case 8:
    return InnerPass<T, W, 8, Turned>(plan, pass, in, out);
  case 9:
    return InnerPass<T, W, 9, Turned>(plan, pass, in, out);
  case 11:
    return InnerPass<T, W, 11, Turned>(plan, pass, in, out);
  case 13:
    return InnerPass<T, W, 13, Turned>(plan, pass, in, out);
  default:
    if constexpr (Large) return InnerOddPass<T, W, Turned>(plan, pass, in, out);
  }
}

template <class T, int W>
void RunJoin(const fourier::Columns<T> &plan, const T *in, T *out, T scale, T sign) {
  if constexpr (W == 8) {
    switch (plan.lanes) {
    case 5:
      return JoinLanes<T, 8, 5>(plan, in, out, scale, sign);
    case 6:
      return JoinLanes<T, 8, 6>(plan, in, out, scale, sign);
    case 7:
      return JoinLanes<T, 8, 7>(plan, in, out, scale, sign);
    case 8:
      return JoinLanes<T, 8, 8>(plan, in, out, scale, sign);
    }
  } else {
    switch (plan.lanes) {
    case 9:
      return JoinLanes<T, 16, 9>(plan, in, out, scale, sign);
    case 10:
      return JoinLanes<T, 16, 10>(plan, in, out, scale, sign);
    case 11:
      return JoinLanes<T, 16, 11>(plan, in, out, scale, sign);
    case 12:
      return JoinLanes<T, 16, 12>(plan, in, out, scale, sign);
    case 13:
      return JoinLanes<T, 16, 13>(plan, in, out, scale, sign);
    case 14:
      return JoinLanes<T, 16, 14>(plan, in, out, scale, sign);
    case 15:
      return JoinLanes<T, 16, 15>(plan, in, out, scale, sign);
    case 16:
      return JoinLanes<T, 16, 16>(plan, in, out, scale, sign);
    }
  }
}

template <class T, int W, class Source>
void RunWidth(const fourier::Columns<T> &plan, const Source &samples, T *out, T *scratch, T scale, T sign) {
  // The last pass writes scratch, for the joining to read; before, every other one may write out instead, so
  // that less memory is touched.
  T *const other = out != samples.in && plan.lanes == W ? out : scratch + plan.blocks * 2 * W;
  const int count = plan.passCount;
  T *from = count % 2 != 0 ? scratch : other;
  if (count > 1) {
    RunFirst<T, W, true>(plan, samples, from);
  } else {
    RunFirst<T, W, false>(plan, samples, from);
  }
  for (int i = 1; i < count; ++i) {
    T *const to = from == scratch ? other : scratch;
    if (i < count - 1) {
      RunInner<T, W, true>(plan, plan.passes[i], from, to);
    } else {
      RunInner<T, W, false>(plan, plan.passes[i], from, to);
    }
    from = to;
  }
  RunJoin<T, W>(plan, scratch, out, scale, sign);
}

template <class T, class Source>
void RunColumnsOf(const fourier::Columns<T> &plan, const Source &samples, T *out, T *scratch, T scale,
                  T sign) {
  if (plan.width == 8) {
    RunWidth<T, 8>(plan, samples, out, scratch, scale, sign);
  } else {
    RunWidth<T, 16>(plan, samples, out, scratch, scale, sign);
  }
}

/// out = scale * transform of in; out may be in. scratch holds 4 * width * blocks scalars.
template <class T>
void RunColumns(const fourier::Columns<T> &plan, const T *in, T *out, T *scratch, bool inverse, T scale) {
  const T sign = static_cast<T>(inverse ? -1 : 1);
  RunColumnsOf(plan, Samples<T>{in, plan.length, sign}, out, scratch, scale, sign);
}

/// out = forward transform of in, sample n multiplied by weights[2 n], which is weights[2 n + 1]; out may be
/// in. scratch as above.
template <class T>
void RunWeightedColumns(const fourier::Columns<T> &plan, const T *in, const T *weights, T *out, T *scratch) {
  RunColumnsOf(plan, WeightedSamples<T>{in, weights, plan.length}, out, scratch, T{1}, T{1});
}

template <class T, int N> [[gnu::flatten]] void Small(const T *in, T *out, T scale, T sign) {
  T re[N], im[N];
  Unroll<N>([&](auto n) {
    re[n] = in[2 * n];
    im[n] = in[2 * n + 1] * sign;
  });
  Butterfly<T, N>(re, im);
  Unroll<N>([&](auto n) {
    out[2 * n] = re[n] * scale;
    out[2 * n + 1] = im[n] * (sign * scale);
  });
}

/// A length of at most 16 without a kernel of its own, in scalars; out may be in.
template <class T> void RunSmall(int length, const T *in, T *out, bool inverse, T scale) {
  const T sign = static_cast<T>(inverse ? -1 : 1);
  switch (length) {
  case 1:
    return Small<T, 1>(in, out, scale, sign);
  case 2:
    return Small<T, 2>(in, out, scale, sign);
  case 3:
    return Small<T, 3>(in, out, scale, sign);
  case 4:
    return Small<T, 4>(in, out, scale, sign);
  case 5:
    return Small<T, 5>(in, out, scale, sign);
  case 6:
    return Small<T, 6>(in, out, scale, sign);
  case 7:
    return Small<T, 7>(in, out, scale, sign);
  case 9:
    return Small<T, 9>(in, out, scale, sign);
  case 10:
    return Small<T, 10>(in, out, scale, sign);
  case 11:
    return Small<T, 11>(in, out, scale, sign);
  case 13:
    return Small<T, 13>(in, out, scale, sign);
  case 14:
    return Small<T, 14>(in, out, scale, sign);
  case 15:
    return Small<T, 15>(in, out, scale, sign);
  }
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
