// Transforms over blocks; see Passes.h for the layout.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_COLUMNS_H
#define QORN_SRC_INFRA_FOURIER_PASSES_COLUMNS_H

#include "Butterfly.h"
#include "infra/fourier/Passes.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// V interleaved complex values from place `at` on, of which only those before `end` exist; the others are 0.
template <class T, int V>
[[gnu::always_inline]] inline void LoadBefore(const T *in, Index at, Index end, Vec<T, V> &re,
                                              Vec<T, V> &im) {
  if (at + V <= end) [[likely]] {
    LoadComplex<T, V>(in + 2 * at, re, im);
  } else {
    T part[2 * V] = {};
    for (Index i = 0; i < 2 * (end - at); ++i) part[i] = in[2 * at + i];
    LoadComplex<T, V>(part, re, im);
  }
}

// The butterflies of one pass whose outputs need no turning (p = 0) or are turned by w, and their stores.
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

// The first pass: from the samples into blocks. An inverse transform is the forward one with real and
// imaginary parts exchanged on the way in and on the way out.
template <class T, int W, int R, bool Inverse>
[[gnu::flatten]] void FirstPass(const fourier::Columns<T> &plan, const T *in, T *out) {
  constexpr int V = kLanes<T, W>;
  const Index rest = plan.passes[0].rest, lanes = plan.lanes, length = plan.length;
  const T *w = plan.turns + plan.passes[0].turns;
  for (Index p = 0; p < rest; ++p) {
    for (Index c = 0; c < lanes; c += V) {
      Vec<T, V> re[R], im[R];
      Unroll<R>([&](auto j) {
        const Index at = lanes * (p + rest * j) + c;
        if constexpr (Inverse) {
          LoadBefore<T, V>(in, at, length, im[j], re[j]);
        } else {
          LoadBefore<T, V>(in, at, length, re[j], im[j]);
        }
      });
      T *y = out + R * p * 2 * W + c;
      if (p == 0) {
        Finish<T, W, R, false>(re, im, w, y, 2 * W);
      } else {
        Finish<T, W, R, true>(re, im, w + (p - 1) * 2 * (R - 1), y, 2 * W);
      }
    }
  }
}

// A pass from blocks to blocks.
template <class T, int W, int R>
[[gnu::flatten]] void InnerPass(const fourier::Columns<T> &plan, const fourier::Pass &pass, const T *in,
                                T *out) {
  constexpr int V = kLanes<T, W>;
  const Index done = pass.done, rest = pass.rest, lanes = plan.lanes;
  const Index inStep = done * rest * 2 * W, outStep = done * 2 * W;
  const T *w = plan.turns + pass.turns;
  const auto run = [&](Index p, auto turned) {
    for (Index q = 0; q < done; ++q) {
      for (Index c = 0; c < lanes; c += V) {
        Vec<T, V> re[R], im[R];
        const T *x = in + (done * p + q) * 2 * W + c;
        Unroll<R>([&](auto j) {
          re[j] = Load<Vec<T, V>>(x + j * inStep);
          im[j] = Load<Vec<T, V>>(x + j * inStep + W);
        });
        Finish<T, W, R, turned>(re, im, w + (p - 1) * 2 * (R - 1), out + (done * R * p + q) * 2 * W + c,
                                outStep);
      }
    }
  };
  run(0, Int<false>{});
  for (Index p = 1; p < rest; ++p) run(p, Int<true>{});
}

// Joins the lanes: V blocks at a time become L rows of V neighbouring frequencies.
template <class T, int W, int L, bool Inverse>
[[gnu::flatten]] void JoinLanes(const fourier::Columns<T> &plan, const T *in, T *out, T scale) {
  constexpr int V = kLanes<T, W>;
  using E = Vec<T, V>;
  const Index blocks = plan.blocks;
  for (Index k = 0; k < blocks; k += V) {
    E re[L], im[L];
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
    const T *w = plan.joins + k / W * (L - 1) * 2 * W + k % W;
    Unroll<L - 1>(
        [&](auto l) { Turn(re[l + 1], im[l + 1], Load<E>(w + l * 2 * W), Load<E>(w + l * 2 * W + W)); });
    Butterfly<T, L>(re, im);
    const Index present = blocks - k;
    Unroll<L>([&](auto l) {
      E r = re[l] * scale, i = im[l] * scale;
      if constexpr (Inverse) {
        const E t = r;
        r = i;
        i = t;
      }
      T *to = out + 2 * (k + blocks * l);
      if (present >= V) [[likely]] {
        StoreComplex<T, V>(to, r, i);
      } else {
        T part[2 * V];
        StoreComplex<T, V>(part, r, i);
        for (Index n = 0; n < 2 * present; ++n) to[n] = part[n];
      }
    });
  }
}

template <class T, int W, bool Inverse> void RunFirst(const fourier::Columns<T> &plan, const T *in, T *out) {
  switch (plan.passes[0].radix) {
  case 2:
    return FirstPass<T, W, 2, Inverse>(plan, in, out);
  case 3:
    return FirstPass<T, W, 3, Inverse>(plan, in, out);
  case 4:
    return FirstPass<T, W, 4, Inverse>(plan, in, out);
  case 5:
    return FirstPass<T, W, 5, Inverse>(plan, in, out);
  case 7:
    return FirstPass<T, W, 7, Inverse>(plan, in, out);
  case 8:
    return FirstPass<T, W, 8, Inverse>(plan, in, out);
  case 9:
    return FirstPass<T, W, 9, Inverse>(plan, in, out);
  case 11:
    return FirstPass<T, W, 11, Inverse>(plan, in, out);
  case 13:
    return FirstPass<T, W, 13, Inverse>(plan, in, out);
  case 16:
    return FirstPass<T, W, 16, Inverse>(plan, in, out);
  }
}

template <class T, int W>
void RunInner(const fourier::Columns<T> &plan, const fourier::Pass &pass, const T *in, T *out) {
  switch (pass.radix) {
  case 2:
    return InnerPass<T, W, 2>(plan, pass, in, out);
  case 3:
    return InnerPass<T, W, 3>(plan, pass, in, out);
  case 4:
    return InnerPass<T, W, 4>(plan, pass, in, out);
  case 5:
    return InnerPass<T, W, 5>(plan, pass, in, out);
  case 7:
    return InnerPass<T, W, 7>(plan, pass, in, out);
  case 8:
    return InnerPass<T, W, 8>(plan, pass, in, out);
  case 9:
    return InnerPass<T, W, 9>(plan, pass, in, out);
  case 11:
    return InnerPass<T, W, 11>(plan, pass, in, out);
  case 13:
    return InnerPass<T, W, 13>(plan, pass, in, out);
  case 16:
    return InnerPass<T, W, 16>(plan, pass, in, out);
  }
}

template <class T, bool Inverse> void RunJoin(const fourier::Columns<T> &plan, const T *in, T *out, T scale) {
  switch (plan.lanes) {
  case 2:
    return JoinLanes<T, 4, 2, Inverse>(plan, in, out, scale);
  case 3:
    return JoinLanes<T, 4, 3, Inverse>(plan, in, out, scale);
  case 4:
    return JoinLanes<T, 4, 4, Inverse>(plan, in, out, scale);
  case 5:
    return JoinLanes<T, 8, 5, Inverse>(plan, in, out, scale);
  case 6:
    return JoinLanes<T, 8, 6, Inverse>(plan, in, out, scale);
  case 7:
    return JoinLanes<T, 8, 7, Inverse>(plan, in, out, scale);
  case 8:
    return JoinLanes<T, 8, 8, Inverse>(plan, in, out, scale);
  case 9:
    return JoinLanes<T, 16, 9, Inverse>(plan, in, out, scale);
  case 10:
    return JoinLanes<T, 16, 10, Inverse>(plan, in, out, scale);
  case 11:
    return JoinLanes<T, 16, 11, Inverse>(plan, in, out, scale);
  case 12:
    return JoinLanes<T, 16, 12, Inverse>(plan, in, out, scale);
  case 13:
    return JoinLanes<T, 16, 13, Inverse>(plan, in, out, scale);
  case 14:
    return JoinLanes<T, 16, 14, Inverse>(plan, in, out, scale);
  case 15:
    return JoinLanes<T, 16, 15, Inverse>(plan, in, out, scale);
  case 16:
    return JoinLanes<T, 16, 16, Inverse>(plan, in, out, scale);
  }
}

template <class T, int W, bool Inverse>
void RunWidth(const fourier::Columns<T> &plan, const T *in, T *out, T *scratch, T scale) {
  T *from = scratch, *to = scratch + plan.blocks * 2 * W;
  RunFirst<T, W, Inverse>(plan, in, from);
  for (int i = 1; i < plan.passCount; ++i) {
    RunInner<T, W>(plan, plan.passes[i], from, to);
    T *const written = to;
    to = from;
    from = written;
  }
  RunJoin<T, Inverse>(plan, from, out, scale);
}

/// out = scale * transform of in; out may be in. scratch holds 4 * width * blocks scalars.
template <class T>
void RunColumns(const fourier::Columns<T> &plan, const T *in, T *out, T *scratch, bool inverse, T scale) {
  switch (inverse ? -plan.width : plan.width) {
  case 4:
    return RunWidth<T, 4, false>(plan, in, out, scratch, scale);
  case -4:
    return RunWidth<T, 4, true>(plan, in, out, scratch, scale);
  case 8:
    return RunWidth<T, 8, false>(plan, in, out, scratch, scale);
  case -8:
    return RunWidth<T, 8, true>(plan, in, out, scratch, scale);
  case 16:
    return RunWidth<T, 16, false>(plan, in, out, scratch, scale);
  case -16:
    return RunWidth<T, 16, true>(plan, in, out, scratch, scale);
  }
}

template <class T, int N> [[gnu::flatten]] void Small(const T *in, T *out, bool inverse, T scale) {
  T re[N], im[N];
  Unroll<N>([&](auto n) {
    re[n] = in[2 * n + inverse];
    im[n] = in[2 * n + !inverse];
  });
  Butterfly<T, N>(re, im);
  Unroll<N>([&](auto n) {
    out[2 * n + inverse] = re[n] * scale;
    out[2 * n + !inverse] = im[n] * scale;
  });
}

/// A length of at most 16, in scalars; out may be in.
template <class T> void RunSmall(int length, const T *in, T *out, bool inverse, T scale) {
  switch (length) {
  case 1:
    return Small<T, 1>(in, out, inverse, scale);
  case 2:
    return Small<T, 2>(in, out, inverse, scale);
  case 3:
    return Small<T, 3>(in, out, inverse, scale);
  case 4:
    return Small<T, 4>(in, out, inverse, scale);
  case 5:
    return Small<T, 5>(in, out, inverse, scale);
  case 6:
    return Small<T, 6>(in, out, inverse, scale);
  case 7:
    return Small<T, 7>(in, out, inverse, scale);
  case 8:
    return Small<T, 8>(in, out, inverse, scale);
  case 9:
    return Small<T, 9>(in, out, inverse, scale);
  case 10:
    return Small<T, 10>(in, out, inverse, scale);
  case 11:
    return Small<T, 11>(in, out, inverse, scale);
  case 12:
    return Small<T, 12>(in, out, inverse, scale);
  case 13:
    return Small<T, 13>(in, out, inverse, scale);
  case 14:
    return Small<T, 14>(in, out, inverse, scale);
  case 15:
    return Small<T, 15>(in, out, inverse, scale);
  case 16:
    return Small<T, 16>(in, out, inverse, scale);
  }
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
