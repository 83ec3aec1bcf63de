// Cyclic convolutions of floats by transforms in double; see Passes.h for the layout. The values are widened
// by the first pass and rounded by the last one, and between the two transforms the bins stay in registers:
// the joining of the lanes, the product with the taps' spectrum and the parting of the lanes are one sweep.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_CYCLIC_H
#define QORN_SRC_INFRA_FOURIER_PASSES_CYCLIC_H

#include "Columns.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

inline constexpr int kCyclicLanes = fourier::Cyclic::kLanes;

template <int V> [[gnu::always_inline]] inline Vec<double, V> Widen(const float *x) {
  return __builtin_convertvector((Load<Vec<float, V>>(x)), Vec<double, V>);
}

template <int V> [[gnu::always_inline]] inline Vec<double, V> Magnitude(Vec<double, V> x) {
  const Vec<double, V> negative = -x;
  return x > negative ? x : negative;
}

// Complex values as they lie in memory.
struct CplxSource {
  const float *x;

  template <int V>
  [[gnu::always_inline]] inline void Load(Index at, Vec<double, V> &re, Vec<double, V> &im) const {
    Vec<float, V> narrowRe, narrowIm;
    LoadComplex<float, V>(x + 2 * at, narrowRe, narrowIm);
    re = __builtin_convertvector(narrowRe, Vec<double, V>);
    im = __builtin_convertvector(narrowIm, Vec<double, V>);
  }
};

// The parts from two arrays.
struct PairSource {
  const float *re, *im;

  template <int V>
  [[gnu::always_inline]] inline void Load(Index at, Vec<double, V> &toRe, Vec<double, V> &toIm) const {
    toRe = Widen<V>(re + at);
    toIm = Widen<V>(im + at);
  }
};

// V values from place `at` on, to dst[0] on from place `first` on and up to `end`, and the smallest magnitude
// of those stored so far. Apart from the pass, which calls it for the first few and the last few places only.
template <int V>
[[gnu::noinline]] void StorePart(const double *x, float *dst, Index stride, Index at, Index first, Index end,
                                 double &smallest) {
  for (Index i = at < first ? first - at : 0; i < V && at + i < end; ++i) {
    dst[(at + i - first) * stride] = static_cast<float>(x[i]);
    const double size = __builtin_fabs(x[i]);
    if (size < smallest) smallest = size;
  }
}

template <int V> [[gnu::always_inline]] inline void Lower(Vec<double, V> &least, Vec<double, V> x) {
  const Vec<double, V> size = Magnitude<V>(x);
  least = size < least ? size : least;
}

// Where results `first` to `end` - 1 go, all others being dropped.
struct CplxSink {
  float *dst;
  Index first, end;

  template <int V>
  [[gnu::always_inline]] inline void Store(Index at, Vec<double, V> re, Vec<double, V> im,
                                           Vec<double, V> &least, double &smallest) const {
    if (at >= first && at + V <= end) [[likely]] {
      StoreComplex<float, V>(dst + 2 * (at - first), __builtin_convertvector(re, Vec<float, V>),
                             __builtin_convertvector(im, Vec<float, V>));
      Lower<V>(least, re);
      Lower<V>(least, im);
    } else if (at + V > first && at < end) {
      double part[V];
      __builtin_memcpy(part, &re, sizeof part);
      StorePart<V>(part, dst, 2, at, first, end, smallest);
      __builtin_memcpy(part, &im, sizeof part);
      StorePart<V>(part, dst + 1, 2, at, first, end, smallest);
    }
  }
};

struct RealSink {
  float *dst;
  Index first, end;

  template <int V>
  [[gnu::always_inline]] inline void Store(Index at, Vec<double, V> x, Vec<double, V> &least,
                                           double &smallest) const {
    if (at >= first && at + V <= end) [[likely]] {
      kernels::QORN_LEVEL::Store(dst + (at - first), __builtin_convertvector(x, Vec<float, V>));
      Lower<V>(least, x);
    } else if (at + V > first && at < end) {
      double part[V];
      __builtin_memcpy(part, &x, sizeof part);
      StorePart<V>(part, dst, 1, at, first, end, smallest);
    }
  }
};
struct PairSink {
  RealSink re, im;

  template <int V>
  [[gnu::always_inline]] inline void Store(Index at, Vec<double, V> fromRe, Vec<double, V> fromIm,
                                           Vec<double, V> &least, double &smallest) const {
    re.Store<V>(at, fromRe, least, smallest);
    im.Store<V>(at, fromIm, least, smallest);
  }
};

// Bins, times the taps' spectrum, back to lanes, V blocks at a time, in place. From here on real and
// imaginary parts have changed places, which makes the forward passes the inverse ones. Returns the values'
// energy: that of the bins over N (Parseval).
[[gnu::flatten]] double Filter(const fourier::Cyclic &job, double *blocks) {
  constexpr int L = kCyclicLanes, W = L, V = kLanes<double, W>;
  using E = Vec<double, V>;
  const fourier::Columns<double> &plan = *job.plan;
  E energy{};
  for (Index k = 0; k < plan.blocks; k += V) {
    E re[L], im[L];
    LoadRows<double, W, L, V>(blocks, k, plan.blocks, re, im);
    TurnRows<double, W, L, V>(plan, k, re, im);
    Butterfly<double, L>(re, im);
    Unroll<L>([&](auto l) { energy = MulAdd(re[l], re[l], MulAdd(im[l], im[l], energy)); });
    const double *const h = job.spectrum + k / W * (L * 2 * W) + k % W;
    Unroll<L>([&](auto l) { Turn(re[l], im[l], Load<E>(h + l * 2 * W), Load<E>(h + l * 2 * W + W)); });
    Butterfly<double, L>(im, re);
    TurnRows<double, W, L, V>(plan, k, im, re);
    double *const to = blocks + k * 2 * W;
    Unroll<L / V>([&](auto part) {
      constexpr int kFirst = part * V;
      Transpose<double, V>(im + kFirst);
      Transpose<double, V>(re + kFirst);
      Unroll<V>([&](auto i) {
        Store(to + i * 2 * W + kFirst, im[kFirst + i]);
        Store(to + i * 2 * W + W + kFirst, re[kFirst + i]);
      });
    });
  }
  double sum = 0;
  for (int i = 0; i < V; ++i) sum += energy[i];
  return sum / static_cast<double>(plan.length);
}

// The last pass: from blocks whose parts have changed places to results.
template <int R, class Sink>
[[gnu::flatten]] double LastPass(const fourier::Columns<double> &plan, const double *in, const Sink &sink) {
  constexpr int W = kCyclicLanes, V = kLanes<double, W>;
  using E = Vec<double, V>;
  const Index done = plan.blocks / R;
  double smallest = __builtin_huge_val();
  E least = Broadcast<E>(smallest);
  for (Index q = 0; q < done; ++q) {
    for (Index c = 0; c < W; c += V) {
      E im[R], re[R];
      const double *x = in + q * 2 * W + c;
      Unroll<R>([&](auto j) {
        im[j] = Load<E>(x + j * done * 2 * W);
        re[j] = Load<E>(x + j * done * 2 * W + W);
      });
      Butterfly<double, R>(im, re);
      Unroll<R>(
          [&](auto k) { sink.template Store<V>((q + k * done) * W + c, re[k], im[k], least, smallest); });
    }
  }
  for (int i = 0; i < V; ++i) smallest = least[i] < smallest ? least[i] : smallest;
  return smallest;
}

template <class Sink>
double RunLast(const fourier::Columns<double> &plan, const double *in, const Sink &sink) {
  switch (plan.passes[plan.passCount - 1].radix) {
  case 2:
    return LastPass<2>(plan, in, sink);
  case 3:
    return LastPass<3>(plan, in, sink);
  case 4:
    return LastPass<4>(plan, in, sink);
  case 5:
    return LastPass<5>(plan, in, sink);
  case 8:
    return LastPass<8>(plan, in, sink);
  default:
    return LastPass<9>(plan, in, sink);
  }
}

// The halves of the scratch: blocks, and where the next pass puts them.
struct Blocks {
  double *now, *next;

  void Swap() {
    double *const t = now;
    now = next;
    next = t;
  }
};

// The forward transform of each lane.
template <class Source> Blocks Forward(const fourier::Cyclic &job, const Source &source) {
  constexpr int W = kCyclicLanes;
  const fourier::Columns<double> &plan = *job.plan;
  const int count = plan.passCount;
  Blocks blocks{job.scratch, job.scratch + plan.blocks * 2 * W};
  if (count > 1) {
    RunFirst<double, W, true>(plan, source, blocks.now);
  } else {
    RunFirst<double, W, false>(plan, source, blocks.now);
  }
  for (int i = 1; i < count; ++i, blocks.Swap()) {
    if (i < count - 1) {
      RunInner<double, W, true>(plan, plan.passes[i], blocks.now, blocks.next);
    } else {
      RunInner<double, W, false>(plan, plan.passes[i], blocks.now, blocks.next);
    }
  }
  return blocks;
}

template <class Source, class Sink>
fourier::CyclicFigures RunCyclic(const fourier::Cyclic &job, const Source &source, const Sink &sink) {
  const fourier::Columns<double> &plan = *job.plan;
  Blocks blocks = Forward(job, source);
  const double energy = Filter(job, blocks.now);
  for (int i = 0; i < plan.passCount - 1; ++i, blocks.Swap())
    RunInner<double, kCyclicLanes, true>(plan, plan.passes[i], blocks.now, blocks.next);
  return {energy, RunLast(plan, blocks.now, sink)};
}

/// The spectrum of a job from its taps, complex values filled up with zeros. They may stand where it goes.
[[gnu::flatten]] void RunSpectrum(const fourier::Cyclic &job, const float *taps, double *spectrum) {
  constexpr int L = kCyclicLanes, W = L, V = kLanes<double, W>;
  using E = Vec<double, V>;
  const fourier::Columns<double> &plan = *job.plan;
  const double *const blocks = Forward(job, CplxSource{taps}).now;
  const double scale = 1 / static_cast<double>(plan.length);
  for (Index k = 0; k < plan.blocks; k += V) {
    E re[L], im[L];
    LoadRows<double, W, L, V>(blocks, k, plan.blocks, re, im);
    TurnRows<double, W, L, V>(plan, k, re, im);
    Butterfly<double, L>(re, im);
    double *const h = spectrum + k / W * (L * 2 * W) + k % W;
    Unroll<L>([&](auto l) {
      Store(h + l * 2 * W, re[l] * scale);
      Store(h + l * 2 * W + W, im[l] * scale);
    });
  }
}

/// Results first to first + count - 1 of complex values.
fourier::CyclicFigures RunCyclicCplx(const fourier::Cyclic &job, const float *x, float *dst, Index first,
                                     Index count) {
  return RunCyclic(job, CplxSource{x}, CplxSink{dst, first, first + count});
}

/// Of two real signals with real taps results first to first + count0 - 1 and first + count1 - 1.
fourier::CyclicFigures RunCyclicPair(const fourier::Cyclic &job, const float *x0, const float *x1,
                                     float *dst0, float *dst1, Index first, Index count0, Index count1) {
  return RunCyclic(job, PairSource{x0, x1},
                   PairSink{{dst0, first, first + count0}, {dst1, first, first + count1}});
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
