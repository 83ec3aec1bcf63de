// Cyclic convolutions by transforms in double; see infra/fourier/Cyclic.h for the layout. Floats are widened
// by the first step and rounded by the last one; doubles are cut in two by the first one and joined by the
// last one. The product with the taps' spectrum is made between two butterflies, in registers.
#ifndef QORN_SRC_INFRA_FOURIER_PASSES_CYCLIC_H
#define QORN_SRC_INFRA_FOURIER_PASSES_CYCLIC_H

#include "Lines.h"
#include "infra/fourier/Cyclic.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

inline constexpr int kCyclicLine = fourier::CyclicSteps::kWidth;
inline constexpr Index kLineScalars = 2 * kCyclicLine;
inline constexpr int kCyclicLanes = kComplexLanes<double>;

/// Complex values in a register; the same as floats; and the real parts of as many.
using CyclicValues = Complex<double, kCyclicLanes>;
using NarrowValues = Complex<float, kCyclicLanes>;
template <class T> using ValueParts = Vec<T, kCyclicLanes>;

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

template <class E, int... I> [[gnu::always_inline]] inline auto InterleavedAs(E re, E im, Seq<I...>) {
  return __builtin_shufflevector(re, im, (I / 2 + I % 2 * kCyclicLanes)...);
}
template <class T>
[[gnu::always_inline]] inline Complex<T, kCyclicLanes> InterleavedParts(ValueParts<T> re, ValueParts<T> im) {
  if constexpr (kCyclicLanes == 1) {
    return Complex<T, 1>{re, im};
  } else {
    return InterleavedAs(re, im, MakeSeq<2 * kCyclicLanes>{});
  }
}

// The parts from two arrays.
struct PairSource {
  const float *re, *im;

  [[gnu::always_inline]] inline CyclicValues Get(Index at) const {
    return Widened(
        InterleavedParts<float>(Load<ValueParts<float>>(re + at), Load<ValueParts<float>>(im + at)));
  }
};

// Whole steps of doubles: adding and subtracting `magic`, 1.5 * 2^52 steps, rounds to them.
[[gnu::always_inline]] inline CyclicValues WholeSteps(CyclicValues x, double magic) {
  const auto rounder = Broadcast<CyclicValues>(magic);
  return (x + rounder) - rounder;
}

// Of the parts from two arrays the whole steps, or what they leave. A part may be missing.
template <bool kRest> struct StepSource {
  const double *re, *im;
  double magic;

  [[gnu::always_inline]] inline CyclicValues Get(Index at) const {
    using P = ValueParts<double>;
    const CyclicValues x = InterleavedParts<double>(Load<P>(re + at), im == nullptr ? P{} : Load<P>(im + at));
    const CyclicValues steps = WholeSteps(x, magic);
    return kRest ? x - steps : steps;
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
template <class T>
[[gnu::noinline]] void StorePart(const double *x, T *dst, Index stride, Index at, Index count,
                                 double &smallest) {
  for (Index i = at < 0 ? -at : 0; i < kCyclicLanes && at + i < count; ++i) {
    dst[(at + i) * stride] = static_cast<T>(x[2 * i]);
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

template <class T> struct PairSink {
  T *re, *im;
  Index first, reCount, imCount;
  std::size_t reWhole = WholePlaces(reCount), imWhole = WholePlaces(imCount);

  [[gnu::always_inline]] inline void Put(Index at, CyclicValues x, CyclicValues &least,
                                         double &smallest) const {
    const auto place = static_cast<std::size_t>(at);
    if (place < reWhole && place < imWhole) [[likely]] {
      const auto values = Rounded(x);
      StoreEveryOther<0>(values, re + at);
      StoreEveryOther<1>(values, im + at);
      least = LesserMagnitude(x, least);
    } else if (at > -kCyclicLanes && (at < reCount || at < imCount)) {
      least = PutParts(at, x, least, smallest);
    }
  }

private:
  [[gnu::always_inline]] static inline Complex<T, kCyclicLanes> Rounded(CyclicValues x) {
    if constexpr (sizeof(T) == sizeof(double)) {
      return x;
    } else {
      return Narrowed(x);
    }
  }

  // Where one of the signals ends before the other, or both do. Returns the new `least`.
  [[gnu::noinline]] CyclicValues PutParts(Index at, CyclicValues x, CyclicValues least,
                                          double &smallest) const {
    const auto place = static_cast<std::size_t>(at);
    const auto values = Rounded(x);
    double part[2 * kCyclicLanes];
    Store(part, x);
    if (place < reWhole) {
      StoreEveryOther<0>(values, re + at);
      least = LesserMagnitude(ReTwice(x), least);
    } else {
      StorePart(part, re, 1, at, reCount, smallest);
    }
    if (place < imWhole) {
      StoreEveryOther<1>(values, im + at);
      least = LesserMagnitude(ImTwice(x), least);
    } else {
      StorePart(part + 1, im, 1, at, imCount, smallest);
    }
    return least;
  }

  template <int Odd, class E> [[gnu::always_inline]] static inline void StoreEveryOther(E x, T *to) {
    if constexpr (kCyclicLanes == 1) {
      *to = x[Odd];
    } else {
      Store(to, PartsAs<Odd>(x, MakeSeq<kCyclicLanes>{}));
    }
  }
  template <int Odd, class E, int... I>
  [[gnu::always_inline]] static inline ValueParts<T> PartsAs(E x, Seq<I...>) {
    return __builtin_shufflevector(x, x, (2 * I + Odd)...);
  }
};

// Butterflies of the W columns from `at` on to strips from `strips` on, `apart` scalars from each other.
template <int R, class Source>
[[gnu::always_inline]] inline void ColumnDown(const Source &source, Index at, Index rowsApart,
                                              const double *w, double *strips, Index apart) {
  using E = CyclicValues;
  E z[R];
  Points<double, R, false, E>([&](auto a) { return source.Get(at + a * rowsApart); },
                              [&](auto k, E x) {
                                if constexpr (k == 0) {
                                  z[k] = x;
                                } else {
                                  z[k] = Multiplied<false>(x, Load<E>(w + (k - 1) * kLineScalars));
                                }
                              });
  GiveColumns<double, kCyclicLanes, R>(z, [&](auto, auto row, auto i, E x) {
    Store(strips + row / kCyclicLine * apart + i * kLineScalars + 2 * (row % kCyclicLine), x);
  });
}

// From the samples to the strips, the sources being those of their parts.
template <int R, class... Sources>
[[gnu::flatten]] void ColumnsDown(const fourier::CyclicSteps &plan, double *strips,
                                  const Sources &...sources) {
  constexpr int kParts = sizeof...(Sources);
  const Index columns = plan.columns, strip = columns * kLineScalars;
  const double *w = plan.columnTurns;
  for (Index at = 0; at < columns; at += kCyclicLine, w += (R - 1) * kLineScalars) {
    for (int v = 0; v < kCyclicLine; v += kCyclicLanes) {
      double *to = strips + (at + v) * kLineScalars;
      ((ColumnDown<R>(sources, at + v, columns, w + 2 * v, to, kParts * strip), to += strip), ...);
    }
  }
}

// Butterflies of W columns of strips from `strips` on, `apart` scalars from each other: put(a, x) takes rows
// a.
template <int R, class Put>
[[gnu::always_inline]] inline void ColumnUp(const double *strips, Index apart, const double *w,
                                            const Put &put) {
  using E = CyclicValues;
  E z[R];
  Unroll<R / kCyclicLanes>([&](auto group) {
    constexpr int kRow = group * kCyclicLanes;
    const double *const x = strips + kRow / kCyclicLine * apart + 2 * (kRow % kCyclicLine);
    Unroll<kCyclicLanes>([&](auto i) { z[kRow + i] = Load<E>(x + i * kLineScalars); });
    TransposeComplex<double, kCyclicLanes>(z + kRow);
  });
  Points<double, R, true, E>(
      [&](auto k) {
        if constexpr (k == 0) {
          return z[k];
        } else {
          return Multiplied<true>(z[k], Load<E>(w + (k - 1) * kLineScalars));
        }
      },
      put);
}

// What the results are made of: themselves, or whole steps and the rest, whose strips lie behind those.
struct Plain {
  static constexpr int kParts = 1;
};
struct Steps {
  static constexpr int kParts = 2;
  double magic;
};

// From the strips to the results.
template <int R, class Made, class Sink>
[[gnu::flatten]] double ColumnsUp(const fourier::CyclicSteps &plan, const double *strips, const Made &made,
                                  const Sink &sink) {
  using E = CyclicValues;
  const Index columns = plan.columns, strip = columns * kLineScalars;
  const double *w = plan.columnTurns;
  double smallest = __builtin_huge_val();
  E least = Broadcast<E>(smallest);
  for (Index at = 0; at < columns; at += kCyclicLine, w += (R - 1) * kLineScalars) {
    for (int v = 0; v < kCyclicLine; v += kCyclicLanes) {
      const double *const from = strips + (at + v) * kLineScalars;
      Index rowsApart = columns;
      Hide(rowsApart); // as in Step
      E rest[R];
      if constexpr (Made::kParts == 2)
        ColumnUp<R>(from + strip, 2 * strip, w + 2 * v, [&](auto a, E x) { rest[a] = x; });
      ColumnUp<R>(from, Made::kParts * strip, w + 2 * v, [&](auto a, E x) {
        if constexpr (Made::kParts == 2) x = WholeSteps(x, made.magic) + rest[a];
        sink.Put(at + v - sink.first + a * rowsApart, x, least, smallest);
      });
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

// The squares of bins, summed up.
struct PartSums {
  CyclicValues low{}, coarse{}, rest{};
};

// The same for doubles, whole steps and the rest: of the former the product with the whole steps of the taps,
// and of the latter that with all of the taps, and of the former with the rest of the taps. In h, lines of
// those and of these taps take turns.
template <int R>
[[gnu::flatten]] void FilterParts(double *steps, double *rest, Index count, const double *h,
                                  PartSums &energy) {
  using E = CyclicValues;
  PartSums sums = energy;
  for (Index part = 0; part < count;
       ++part, steps += R * kLineScalars, rest += R * kLineScalars, h += 2 * R * kLineScalars) {
    for (int v = 0; v < kLineScalars; v += 2 * kCyclicLanes) {
      E z[R], y[R];
      Points<double, R, false, E>([&](auto i) { return Load<E>(steps + i * kLineScalars + v); },
                                  [&](auto k, E x) { z[k] = x; });
      Points<double, R, false, E>([&](auto i) { return Load<E>(rest + i * kLineScalars + v); },
                                  [&](auto k, E x) {
                                    const E taps = Load<E>(h + 2 * k * kLineScalars + v),
                                            fine = Load<E>(h + (2 * k + 1) * kLineScalars + v);
                                    sums.low = MulAdd(x, x, sums.low);
                                    y[k] = MultipliedAdd(x, taps + fine, Multiplied<false>(z[k], fine));
                                    z[k] = Multiplied<false>(z[k], taps);
                                    sums.coarse = MulAdd(z[k], z[k], sums.coarse);
                                    sums.rest = MulAdd(y[k], y[k], sums.rest);
                                  });
      Points<double, R, true, E>([&](auto k) { return z[k]; },
                                 [&](auto i, E x) { Store(steps + i * kLineScalars + v, x); });
      Points<double, R, true, E>([&](auto k) { return y[k]; },
                                 [&](auto i, E x) { Store(rest + i * kLineScalars + v, x); });
    }
  }
  energy = sums;
}

// The last step of `count` parts to the spectrum h, scaled, whose lines are `apart` scalars from each other.
// `most` is the largest squared magnitude of the bins so far, before that.
template <int R>
[[gnu::flatten]] void Finish(const double *lines, Index count, double scale, double *h, Index apart,
                             CyclicValues &most) {
  using E = CyclicValues;
  E largest = most;
  for (Index part = 0; part < count; ++part, lines += R * kLineScalars, h += R * apart) {
    for (int v = 0; v < kLineScalars; v += 2 * kCyclicLanes) {
      Points<double, R, false, E>([&](auto i) { return Load<E>(lines + i * kLineScalars + v); },
                                  [&](auto k, E x) {
                                    const E squares = x * x, size = squares + Swapped(squares);
                                    largest = size > largest ? size : largest;
                                    Store(h + k * apart + v, x * scale);
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

// All steps of strips but the last one, from `step` on, there and, with Back, back. In between last(strips,
// count) gets all parts of the last step, `count` of each strip, always in the same order.
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
      last(strips, radix);
    }
    if constexpr (Back) {
      WithStripRadix(radix, [&]<int R>(Int<R>) { Step<R, true>(*step, strips); });
    }
  } else {
    last(strips, 1);
  }
}

// Few short strips at once, so that the processor need not wait for the end of a step; others one by one, so
// that each stays in a near cache. Those of kParts parts of the same values go together.
template <bool Back, int kParts, class Last>
void RunStrips(const fourier::CyclicSteps &plan, double *strips, const Last &last) {
  constexpr Index kShort = kParts == 1 ? 1024 : 256;
  const Index apart = plan.columns * kLineScalars, count = kParts * (plan.first / kCyclicLine);
  const Index together = plan.length <= kShort ? count : kParts;
  for (Index strip = 0; strip < count; strip += together)
    RunSteps<Back>(plan.steps, {strips + strip * apart, together, apart}, last);
}

template <class... Sources>
void RunDown(const fourier::CyclicSteps &plan, double *strips, const Sources &...sources) {
  return plan.first == 8 ? ColumnsDown<8>(plan, strips, sources...)
                         : ColumnsDown<16>(plan, strips, sources...);
}
template <class Made, class Sink>
double RunUp(const fourier::CyclicSteps &plan, const double *strips, const Made &made, const Sink &sink) {
  return plan.first == 8 ? ColumnsUp<8>(plan, strips, made, sink) : ColumnsUp<16>(plan, strips, made, sink);
}

inline int LastRadix(const fourier::CyclicSteps &plan) { return plan.steps[plan.stepCount - 1].radix; }

inline double Total(CyclicValues x) {
  double sum = 0;
  for (int i = 0; i < 2 * kCyclicLanes; ++i) sum += x[i];
  return sum;
}

template <class Source, class Sink>
fourier::CyclicFigures RunCyclic(const fourier::Cyclic &job, const Source &source, const Sink &sink) {
  const fourier::CyclicSteps &plan = *job.plan;
  const int radix = LastRadix(plan);
  RunDown(plan, job.scratch, source);
  const double *h = job.spectrum;
  CyclicValues energy[kSums] = {};
  RunStrips<true, 1>(plan, job.scratch, [&](const StripGroup &strips, Index count) {
    WithStripRadix(radix, [&]<int R>(Int<R>) {
      for (Index strip = 0; strip < strips.count; ++strip, h += count * R * kLineScalars)
        Filter<R>(strips.part + strip * strips.apart, count, h, energy);
    });
  });
  // The values' energy is that of the bins over N (Parseval).
  return {Total((energy[0] + energy[1]) + (energy[2] + energy[3])) / static_cast<double>(plan.length),
          RunUp(plan, job.scratch, Plain{}, sink)};
}

// The strips, of kParts parts, to the spectrum. Returns the largest squared magnitude of the first part's
// bins, before they are scaled.
template <int kParts> double FinishSpectrum(const fourier::Cyclic &job, double *spectrum) {
  const fourier::CyclicSteps &plan = *job.plan;
  const int radix = LastRadix(plan);
  const double scale = 1 / static_cast<double>(plan.length);
  CyclicValues most[kParts] = {};
  RunStrips<false, kParts>(plan, job.scratch, [&](const StripGroup &strips, Index count) {
    WithStripRadix(radix, [&]<int R>(Int<R>) {
      for (Index strip = 0; strip < strips.count; ++strip) {
        const Index part = strip % kParts;
        Finish<R>(strips.part + strip * strips.apart, count, scale, spectrum + part * kLineScalars,
                  kParts * kLineScalars, most[part]);
        if (part == kParts - 1) spectrum += kParts * count * R * kLineScalars;
      }
    });
  });
  double largest = 0;
  for (int i = 0; i < 2 * kCyclicLanes; ++i) largest = most[0][i] > largest ? most[0][i] : largest;
  return largest;
}

/// The spectrum of a job from its taps, complex values filled up with zeros. They may stand where it goes.
/// Returns the largest squared magnitude of the taps' transform.
double RunSpectrum(const fourier::Cyclic &job, const float *taps, double *spectrum) {
  RunDown(*job.plan, job.scratch, CplxSource{taps});
  return FinishSpectrum<1>(job, spectrum);
}

/// The same for doubles, real taps, those of their whole steps and of the rest. The figure is that of the
/// former.
double RunPartSpectra(const fourier::Cyclic &job, const double *taps, double magic, double *spectrum) {
  RunDown(*job.plan, job.scratch, StepSource<false>{taps, nullptr, magic},
          StepSource<true>{taps, nullptr, magic});
  return FinishSpectrum<2>(job, spectrum);
}

/// Results first to first + count - 1 of complex values.
fourier::CyclicFigures RunCyclicCplx(const fourier::Cyclic &job, const float *x, float *dst, Index first,
                                     Index count) {
  return RunCyclic(job, CplxSource{x}, CplxSink{dst, first, count});
}

/// Of two real signals with real taps results first to first + count0 - 1 and first + count1 - 1.
fourier::CyclicFigures RunCyclicPair(const fourier::Cyclic &job, const float *x0, const float *x1,
                                     float *dst0, float *dst1, Index first, Index count0, Index count1) {
  return RunCyclic(job, PairSource{x0, x1}, PairSink<float>{dst0, dst1, first, count0, count1});
}

/// The same for doubles. `magic` rounds the signals to whole steps, `product` the results.
fourier::CyclicParts RunCyclicParts(const fourier::Cyclic &job, const fourier::CyclicPair &pair, double magic,
                                    double product) {
  const fourier::CyclicSteps &plan = *job.plan;
  const int radix = LastRadix(plan);
  RunDown(plan, job.scratch, StepSource<false>{pair.x0, pair.x1, magic},
          StepSource<true>{pair.x0, pair.x1, magic});
  const double *h = job.spectrum;
  PartSums energy;
  RunStrips<true, 2>(plan, job.scratch, [&](const StripGroup &strips, Index count) {
    WithStripRadix(radix, [&]<int R>(Int<R>) {
      double *part = strips.part;
      for (Index strip = 0; strip < strips.count; strip += 2, part += 2 * strips.apart) {
        FilterParts<R>(part, part + strips.apart, count, h, energy);
        h += 2 * count * R * kLineScalars;
      }
    });
  });
  const auto n = static_cast<double>(plan.length);
  const double smallest = RunUp(plan, job.scratch, Steps{product},
                                PairSink<double>{pair.dst0, pair.dst1, pair.first, pair.count0, pair.count1});
  return {Total(energy.low) / n, Total(energy.coarse) * n, Total(energy.rest) * n, smallest};
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
