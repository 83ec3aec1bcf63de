#include "ElementaryBasics.h"

namespace QORN::kernels::QORN_LEVEL {

void Expj_64f(const double *phase, Cplx64 *dst, int len);

namespace {

// Frequency shift: dst[i] = src[i] exp(j (phase + 2 pi frequency i)).
//
// The phasor is made anew every `period` samples, and turned on by products in between. One product for each
// sample would have to wait for the one before; so the phasors of a block are the one at its start times
// those of a table, exp(j 2 pi frequency k), and only the starts form a chain. That also rounds less often.

constexpr int kTurn = 16; // samples of a block
constexpr double kTwoPi = 6.283185307179586;

QORN_INLINE Cplx64 Times(Cplx64 a, Cplx64 b) {
  return {MulAdd(a.re, b.re, -(a.im * b.im)), MulAdd(a.re, b.im, a.im * b.re)};
}

// x less its whole part, with the sign of x. Beyond what can occur only not-a-number is met.
QORN_INLINE double Fraction(double x) {
  return Magnitude(x) < 0x1p31 ? x - static_cast<double>(static_cast<int>(x)) : x;
}

struct Turns {
  explicit Turns(double frequency) {
    double angles[kTurn + 1];
    for (int k = 0; k <= kTurn; ++k) angles[k] = kTwoPi * Fraction(k * frequency);
    Expj_64f(angles, by, kTurn + 1);
    by[0] = {1, 0}; // whatever the frequency, not-a-number included
    for (int k = 0; k < kTurn; ++k) re[k] = by[k].re, im[k] = by[k].im;
  }

  Cplx64 by[kTurn + 1]; // by[k] turns by k samples
  double re[kTurn], im[kTurn];
};

// Whole blocks. Returns the phasor of the sample behind them.
QORN_ONE_COPY Cplx64 MixBlocks(const Cplx32 *src, Cplx32 *dst, Index blocks, Cplx64 phasor,
                               const Turns &turns) {
  for (; blocks > 0; --blocks, src += kTurn, dst += kTurn) {
    // Clang must be told that a destination which is the source is no obstacle; and not to mind where nothing
    // is made vector code, as in a build with sanitizers.
#if defined(__clang__)
#pragma clang diagnostic ignored "-Wpass-failed"
#pragma clang loop vectorize(assume_safety)
#endif
    for (int k = 0; k < kTurn; ++k) {
      const Cplx64 turned = Times(phasor, {turns.re[k], turns.im[k]});
      const Cplx64 product = Times({static_cast<double>(src[k].re), static_cast<double>(src[k].im)}, turned);
      dst[k].re = static_cast<float>(product.re);
      dst[k].im = static_cast<float>(product.im);
    }
    phasor = Times(phasor, turns.by[kTurn]);
  }
  return phasor;
}

// len samples, the first ones of `readable`. What a last block does beyond len goes nowhere.
Cplx64 MixSamples(const Cplx32 *src, Cplx32 *dst, Index len, Index readable, Cplx64 phasor,
                  const Turns &turns) {
  const Index rest = len % kTurn, whole = len - rest;
  phasor = MixBlocks(src, dst, whole / kTurn, phasor, turns);
  if (rest == 0) return phasor;
  const std::size_t bytes = static_cast<std::size_t>(rest) * sizeof(Cplx32);
  Cplx32 last[kTurn];
  const Cplx32 *block = src + whole;
  if (readable - whole < kTurn) {
    Cplx32 padded[kTurn] = {};
    __builtin_memcpy(padded, block, bytes);
    MixBlocks(padded, last, 1, phasor, turns);
  } else {
    MixBlocks(block, last, 1, phasor, turns);
  }
  __builtin_memcpy(dst + whole, last, bytes);
  return Times(phasor, turns.by[rest]);
}

// *next = the phasor of the sample that would follow. |frequency| < 1, |phase| < 2 pi, period >= 1 and period
// * |frequency| <= 100.
//
// The phasor is made anew from the phase in cycles at samples period - 1, 2 period - 1 and so on, for the
// sample that follows. Several at a time: an Expj of one element costs nearly as much as one of eight.
void ShiftFrequency(const Cplx32 *src, Cplx32 *dst, int len, double frequency, double phase, int period,
                    Cplx64 *next) {
  constexpr Index kAhead = 8;
  const Turns turns(frequency);
  const Index pieces = len / period + 1; // the last one is shorter, perhaps empty
  double cycles = phase / kTwoPi;
  Cplx64 phasor;
  for (Index first = 0; first < pieces; first += kAhead) {
    const Index count = pieces - first < kAhead ? pieces - first : kAhead;
    double angles[kAhead];
    Cplx64 phasors[kAhead];
    for (Index k = 0; k < count; ++k) {
      if (first + k == 0) {
        angles[k] = phase;
      } else {
        const double samples = first + k == 1 ? period - 1 : period;
        cycles = Fraction(Rounded(samples * frequency) + cycles);
        angles[k] = kTwoPi * cycles;
      }
    }
    Expj_64f(angles, phasors, static_cast<int>(count));
    for (Index k = 0; k < count; ++k) {
      const Index start = (first + k) * period;
      const Index samples = len - start < period ? len - start : period;
      phasor = first + k == 0 ? phasors[k] : Times(phasors[k], turns.by[1]);
      phasor = MixSamples(src + start, dst + start, samples, len - start, phasor, turns);
    }
  }
  *next = phasor;
}

} // namespace

#define QORN_FAMILY "Mix.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
