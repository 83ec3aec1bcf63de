// Cyclic convolutions of floats by transforms in double; see infra/fourier/Cyclic.h for the layout. The
// values are widened by the first step and rounded by the last one, and the product with the taps' spectrum
// is made between two butterflies, in registers.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_CYCLIC_H
#define QORN_SRC_INFRA_FOURIER_PASSES_CYCLIC_H

#include "Lines.h"
#include "infra/fourier/Cyclic.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

inline constexpr int kCyclicLine = fourier::CyclicSteps::kWidth;
inline constexpr Index kLineScalars = 2 * kCyclicLine;
inline constexpr int kCyclicLanes = kComplexLanes<double>;

/// Complex values in a register, as doubles and as floats.
using CyclicValues = Complex<double, kCyclicLanes>;
using NarrowValues = Complex<float, kCyclicLanes>;
using NarrowParts = Vec<float, kCyclicLanes>;

// As instructions: GCC 12 converts the widest vectors in halves. With masks: it warns of those without.
[[gnu::always_inline]] inline CyclicValues Widened(NarrowValues x) {
#if defined(__AVX512F__)
  return _mm512_maskz_cvtps_pd(0xff, x);
#else
  return __builtin_convertvector(x, CyclicValues);
#endif
}
[[gnu::always_inline]] inline NarrowValues Narrowed(CyclicValues x) {
#if defined(__AVX512F__)
  return _mm512_maskz_cvtpd_ps(0xff, x);
#else
  return __builtin_convertvector(x, NarrowValues);
#endif
}

// Complex values as they lie in memory.
struct CplxSource {
  const float *x;

  [[gnu::always_inline]] inline CyclicValues Get(Index at) const {
    return Widened(Load<NarrowValues>(x + 2 * at));
  }
};

// The parts from two arrays.
struct PairSource {
  const float *re, *im;

  [[gnu::always_inline]] inline CyclicValues Get(Index at) const {
    NarrowValues x;
    if constexpr (kCyclicLanes == 1) {
      x = NarrowValues{re[at], im[at]};
    } else {
      x = Interleaved(Load<NarrowParts>(re + at), Load<NarrowParts>(im + at), MakeSeq<2 * kCyclicLanes>{});
    }
    return Widened(x);
  }

private:
  template <int... I>
  [[gnu::always_inline]] static inline NarrowValues Interleaved(NarrowParts a, NarrowParts b, Seq<I...>) {
    return __builtin_shufflevector(a, b, (I / 2 + I % 2 * kCyclicLanes)...);
  }
};

// The lesser one of `least` and the magnitude of x, for each scalar; `least` where x is not a number.
[[gnu::always_inline]] inline CyclicValues LesserMagnitude(CyclicValues x, CyclicValues least) {
#if defined(__AVX512DQ__)
  return _mm512_maskz_range_pd(0xff, x, least, 0b1010); // the lesser magnitude, its sign cleared
#else
  using Bits = Vec<std::int64_t, 2 * kCyclicLanes>;
  const CyclicValues size = reinterpret_cast<CyclicValues>(reinterpret_cast<Bits>(x) & INT64_MAX);
  return size < least ? size : least;
#endif
}

// Every other one of the first 2 V scalars, for results `at` to at + V - 1, as far as they are among the
// `count` wanted ones. Apart from the step, which calls it for the first few and the last few results only.
[[gnu::noinline]] void StorePart(const double *x, float *dst, Index stride, Index at, Index count,
                                 double &smallest) {
  for (Index i = at < 0 ? -at : 0; i < kCyclicLanes && at + i < count; ++i) {
    dst[(at + i) * stride] = static_cast<float>(x[2 * i]);
    const double size = __builtin_fabs(x[2 * i]);
    if (size < smallest) smallest = size;
  }
}

// The places of whole vectors among `count` results.
constexpr std::size_t WholePlaces(Index count) {
  return count < kCyclicLanes ? 0 : static_cast<std::size_t>(count - kCyclicLanes + 1);
}

// Where the results from number `first` on go, `count` of them; all others are dropped. Put takes those from
// number first + at on.
struct CplxSink {
  float *dst;
  Index first, count;
  std::size_t whole = WholePlaces(count);

  [[gnu::always_inline]] inline void Put(Index at, CyclicValues x, CyclicValues &least,
                                         double &smallest) const {
    if (static_cast<std::size_t>(at) < whole) [[likely]] {
      Store(dst + 2 * at, Narrowed(x));
      least = LesserMagnitude(x, least);
    } else if (at > -kCyclicLanes && at < count) {
      double part[2 * kCyclicLanes];
      Store(part, x);
      StorePart(part, dst, 2, at, count, smallest);
      StorePart(part + 1, dst + 1, 2, at, count, smallest);
    }
  }
};

struct PairSink {
  float *re, *im;
  Index first, reCount, imCount;
  std::size_t reWhole = WholePlaces(reCount), imWhole = WholePlaces(imCount);

  [[gnu::always_inline]] inline void Put(Index at, CyclicValues x, CyclicValues &least,
                                         double &smallest) const {
    const auto place = static_cast<std::size_t>(at);
    if (place < reWhole && place < imWhole) [[likely]] {
      const NarrowValues narrow = Narrowed(x);
      StoreEveryOther<0>(narrow, re + at);
      StoreEveryOther<1>(narrow, im + at);
      least = LesserMagnitude(x, least);
    } else if (at > -kCyclicLanes && (at < reCount || at < imCount)) {
      least = PutParts(at, x, least, smallest);
    }
  }

private:
  // Where one of the signals ends before the other, or both do. Returns the new `least`.
  [[gnu::noinline]] CyclicValues PutParts(Index at, CyclicValues x, CyclicValues least,
                                          double &smallest) const {
    const auto place = static_cast<std::size_t>(at);
    const NarrowValues narrow = Narrowed(x);
    double part[2 * kCyclicLanes];
    Store(part, x);
    if (place < reWhole) {
      StoreEveryOther<0>(narrow, re + at);
      least = LesserMagnitude(Shuffle<NeighbourTwice<0>, 2 * kCyclicLanes>(x, x), least);
    } else {
      StorePart(part, re, 1, at, reCount, smallest);
    }
    if (place < imWhole) {
      StoreEveryOther<1>(narrow, im + at);
      least = LesserMagnitude(Shuffle<NeighbourTwice<1>, 2 * kCyclicLanes>(x, x), least);
    } else {
      StorePart(part + 1, im, 1, at, imCount, smallest);
    }
    return least;
  }

  template <int Odd> [[gnu::always_inline]] static inline void StoreEveryOther(NarrowValues x, float *to) {
    if constexpr (kCyclicLanes == 1) {
      *to = x[Odd];
    } else {
      Store(to, PartsAs<Odd>(x, MakeSeq<kCyclicLanes>{}));
    }
  }
  template <int Odd, int... I>
  [[gnu::always_inline]] static inline NarrowParts PartsAs(NarrowValues x, Seq<I...>) {
    return __builtin_shufflevector(x, x, (2 * I + Odd)...);
  }
};

// From the samples to the strips.
template <int R, class Source>
[[gnu::flatten]] void ColumnsDown(const fourier::CyclicSteps &plan, const Source &source, double *strips) {
  using E = CyclicValues;
  const Index columns = plan.columns;
  const double *w = plan.columnTurns;
  for (Index at = 0; at < columns; at += kCyclicLine, w += (R - 1) * kLineScalars) {
    for (int v = 0; v < kCyclicLine; v += kCyclicLanes) {
      E z[R];
      Points<double, R, false, E>([&](auto a) { return source.Get(a * columns + at + v); },
                                  [&](auto k, E x) {
                                    if constexpr (k == 0) {
                                      z[k] = x;
                                    } else {
                                      z[k] =
                                          Multiplied<false>(x, Load<E>(w + (k - 1) * kLineScalars + 2 * v));
                                    }
                                  });
      GiveColumns<double, kCyclicLanes, R>(z, [&](auto, auto row, auto i, E x) {
        Store(strips + (row / kCyclicLine * columns + at + v + i) * kLineScalars + 2 * (row % kCyclicLine),
              x);
      });
    }
  }
}

// From the strips to the results.
template <int R, class Sink>
[[gnu::flatten]] double ColumnsUp(const fourier::CyclicSteps &plan, const double *strips, const Sink &sink) {
  using E = CyclicValues;
  const Index columns = plan.columns;
  const double *w = plan.columnTurns;
  double smallest = __builtin_huge_val();
  E least = Broadcast<E>(smallest);
  for (Index at = 0; at < columns; at += kCyclicLine, w += (R - 1) * kLineScalars) {
    for (int v = 0; v < kCyclicLine; v += kCyclicLanes) {
      E z[R];
      Unroll<R / kCyclicLanes>([&](auto group) {
        constexpr int kRow = group * kCyclicLanes;
        const double *const x =
            strips + (kRow / kCyclicLine * columns + at + v) * kLineScalars + 2 * (kRow % kCyclicLine);
        Unroll<kCyclicLanes>([&](auto i) { z[kRow + i] = Load<E>(x + i * kLineScalars); });
        TransposeComplex<double, kCyclicLanes>(z + kRow);
      });
      Index apart = columns;
      Hide(apart); // as in Step
      Points<double, R, true, E>(
          [&](auto k) {
            if constexpr (k == 0) {
              return z[k];
            } else {
              return Multiplied<true>(z[k], Load<E>(w + (k - 1) * kLineScalars + 2 * v));
            }
          },
          [&](auto a, E x) { sink.Put(at + v - sink.first + a * apart, x, least, smallest); });
    }
  }
  for (int i = 0; i < 2 * kCyclicLanes; ++i) smallest = least[i] < smallest ? least[i] : smallest;
  return smallest;
}

// `count` strips, or parts of them that have the same place, `apart` scalars from each other.
struct StripGroup {
  double *part;
  Index count, apart;
};

// A step of these parts, there or back.
template <int R, bool Inverse>
[[gnu::flatten]] void Step(const fourier::CyclicStep &step, StripGroup strips) {
  using E = CyclicValues;
  Index apart = step.rest * kLineScalars;
  for (Index strip = 0; strip < strips.count; ++strip, strips.part += strips.apart) {
    double *line = strips.part;
    const double *w = step.turns;
    for (Index p = 0; p < step.rest; ++p, line += kLineScalars, w += 4 * (R - 1)) {
      Hide(apart); // else the places of all lines are computed before the loop, and fill the registers
      const auto turned = [&](auto k, E x) {
        if constexpr (k == 0) {
          return x;
        } else {
          const double *const turn = w + 4 * (k - 1);
          return Turned<Inverse>(x, Pairs<E>(turn), Pairs<E>(turn + 2));
        }
      };
      for (int v = 0; v < kLineScalars; v += 2 * kCyclicLanes) {
        Points<double, R, Inverse, E>(
            [&](auto i) {
              const E x = Load<E>(line + i * apart + v);
              if constexpr (Inverse) return turned(i, x);
              return x;
            },
            [&](auto k, E x) {
              if constexpr (Inverse) {
                Store(line + k * apart + v, x);
              } else {
                Store(line + k * apart + v, turned(k, x));
              }
            });
      }
    }
  }
}

// The last step of `count` parts, the product with the spectrum and the way back. `energy` sums up the bins'
// squares.
inline constexpr int kSums = 4;
template <int R>
[[gnu::flatten]] void Filter(double *lines, Index count, const double *h, CyclicValues (&energy)[kSums]) {
  using E = CyclicValues;
  E sums[kSums];
  Unroll<kSums>([&](auto i) { sums[i] = energy[i]; });
  for (Index part = 0; part < count; ++part, lines += R * kLineScalars, h += R * kLineScalars) {
    for (int v = 0; v < kLineScalars; v += 2 * kCyclicLanes) {
      E z[R];
      Points<double, R, false, E>([&](auto i) { return Load<E>(lines + i * kLineScalars + v); },
                                  [&](auto k, E x) {
                                    sums[k % kSums] = MulAdd(x, x, sums[k % kSums]);
                                    z[k] = Multiplied<false>(x, Load<E>(h + k * kLineScalars + v));
                                  });
      Points<double, R, true, E>([&](auto k) { return z[k]; },
                                 [&](auto i, E x) { Store(lines + i * kLineScalars + v, x); });
    }
  }
  Unroll<kSums>([&](auto i) { energy[i] = sums[i]; });
}

// The last step of `count` parts to the spectrum h, scaled. `most` is the largest squared magnitude of the
// bins so far, before that.
template <int R>
[[gnu::flatten]] void Finish(const double *lines, Index count, double scale, double *h, CyclicValues &most) {
  using E = CyclicValues;
  E largest = most;
  for (Index part = 0; part < count; ++part, lines += R * kLineScalars, h += R * kLineScalars) {
    for (int v = 0; v < kLineScalars; v += 2 * kCyclicLanes) {
      Points<double, R, false, E>([&](auto i) { return Load<E>(lines + i * kLineScalars + v); },
                                  [&](auto k, E x) {
                                    const E squares = x * x, size = squares + Swapped(squares);
                                    largest = size > largest ? size : largest;
                                    Store(h + k * kLineScalars + v, x * scale);
                                  });
    }
  }
  most = largest;
}

// Calls body(Int<radix>) for the radices that the strips have.
template <class F> [[gnu::always_inline]] inline void WithStripRadix(int radix, const F &body) {
  WithRadix(radix, [&]<int R>(Int<R> known) {
    if constexpr (R % 7 != 0 && R != 15) body(known);
  });
}

// All steps of strips but the last one, from `step` on, there and, with Back, back. In between last(lines,
// count) gets all parts of the last step, always in the same order.
template <bool Back, class Last>
void RunSteps(const fourier::CyclicStep *step, StripGroup strips, const Last &last) {
  const int radix = step->radix;
  if (step->rest > 1) {
    WithStripRadix(radix, [&]<int R>(Int<R>) { Step<R, false>(*step, strips); });
    if (step[1].rest > 1) {
      const Index next = step->rest * kLineScalars;
      for (Index k = 0; k < radix; ++k)
        RunSteps<Back>(step + 1, {strips.part + k * next, strips.count, strips.apart}, last);
    } else {
      for (Index strip = 0; strip < strips.count; ++strip) last(strips.part + strip * strips.apart, radix);
    }
    if constexpr (Back) {
      WithStripRadix(radix, [&]<int R>(Int<R>) { Step<R, true>(*step, strips); });
    }
  } else {
    for (Index strip = 0; strip < strips.count; ++strip) last(strips.part + strip * strips.apart, 1);
  }
}

// Few short strips at once, so that the processor need not wait for the end of a step; others one by one, so
// that each stays in a near cache.
template <bool Back, class Last>
void RunStrips(const fourier::CyclicSteps &plan, double *strips, const Last &last) {
  constexpr Index kShort = 1024;
  const Index apart = plan.columns * kLineScalars, count = plan.first / kCyclicLine;
  const Index together = plan.length <= kShort ? count : 1;
  for (Index strip = 0; strip < count; strip += together)
    RunSteps<Back>(plan.steps, {strips + strip * apart, together, apart}, last);
}

template <class Source> void RunDown(const fourier::CyclicSteps &plan, const Source &source, double *strips) {
  return plan.first == 8 ? ColumnsDown<8>(plan, source, strips) : ColumnsDown<16>(plan, source, strips);
}

template <class Source, class Sink>
fourier::CyclicFigures RunCyclic(const fourier::Cyclic &job, const Source &source, const Sink &sink) {
  const fourier::CyclicSteps &plan = *job.plan;
  const int radix = plan.steps[plan.stepCount - 1].radix;
  RunDown(plan, source, job.scratch);
  const double *h = job.spectrum;
  CyclicValues energy[kSums] = {};
  RunStrips<true>(plan, job.scratch, [&](double *lines, Index count) {
    WithStripRadix(radix, [&]<int R>(Int<R>) { Filter<R>(lines, count, h, energy); });
    h += count * radix * kLineScalars;
  });
  const CyclicValues all = (energy[0] + energy[1]) + (energy[2] + energy[3]);
  double sum = 0;
  for (int i = 0; i < 2 * kCyclicLanes; ++i) sum += all[i];
  // The values' energy is that of the bins over N (Parseval).
  return {sum / static_cast<double>(plan.length),
          plan.first == 8 ? ColumnsUp<8>(plan, job.scratch, sink) : ColumnsUp<16>(plan, job.scratch, sink)};
}

/// The spectrum of a job from its taps, complex values filled up with zeros. They may stand where it goes.
/// Returns the largest squared magnitude of the taps' transform.
double RunSpectrum(const fourier::Cyclic &job, const float *taps, double *spectrum) {
  const fourier::CyclicSteps &plan = *job.plan;
  const int radix = plan.steps[plan.stepCount - 1].radix;
  const double scale = 1 / static_cast<double>(plan.length);
  RunDown(plan, CplxSource{taps}, job.scratch);
  CyclicValues most{};
  RunStrips<false>(plan, job.scratch, [&](const double *lines, Index count) {
    WithStripRadix(radix, [&]<int R>(Int<R>) { Finish<R>(lines, count, scale, spectrum, most); });
    spectrum += count * radix * kLineScalars;
  });
  double largest = 0;
  for (int i = 0; i < 2 * kCyclicLanes; ++i) largest = most[i] > largest ? most[i] : largest;
  return largest;
}

/// Results first to first + count - 1 of complex values.
fourier::CyclicFigures RunCyclicCplx(const fourier::Cyclic &job, const float *x, float *dst, Index first,
                                     Index count) {
  return RunCyclic(job, CplxSource{x}, CplxSink{dst, first, count});
}

/// Of two real signals with real taps results first to first + count0 - 1 and first + count1 - 1.
fourier::CyclicFigures RunCyclicPair(const fourier::Cyclic &job, const float *x0, const float *x1,
                                     float *dst0, float *dst1, Index first, Index count0, Index count1) {
  return RunCyclic(job, PairSource{x0, x1}, PairSink{dst0, dst1, first, count0, count1});
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
