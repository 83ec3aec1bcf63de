// Generators that are made of other kernels, and window and filter designs, which are not hot.
#include <cmath>
#include <cstddef>
#include <memory>

#include "Constants.h"
#include "kernels/Levels.h"
#include "qorn/infra/QORNMalloc.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

using Index = std::ptrdiff_t;

using constants::kPi;
using constants::kTwoPi;

// x reduced to 0 <= x < period. A negative x so small that the sum rounds to the period is taken as 0.
double Reduced(double x, double period) {
  double reduced = std::fmod(x, period);
  if (reduced < 0.0) {
    reduced += period;
    if (reduced >= period) reduced = 0.0;
  }
  return reduced;
}

} // namespace

void TargetLib::Tone_Direct_64fc(Cplx64 *dst, int len, double magnitude, double relFreq, double *phase) {
  if (dst == nullptr || phase == nullptr || len < 1) return;
  const double slope = kTwoPi<double> * Reduced(relFreq, 1.0);
  const double start = *phase = Reduced(*phase, kTwoPi<double>);
  VecReal64 ramp(len);
  VectorSlope_64f(ramp.GetPtr(), len, start, slope);
  Expj_64f(ramp.GetPtr(), dst, len);
  // As scalars, of which there may be more than an int counts.
  MulC_64f_I(magnitude, &dst->re, len);
  MulC_64f_I(magnitude, &dst->re + len, len);
  *phase = std::fmod(len * slope + start, kTwoPi<double>);
}

void TargetLib::Tone_Direct_32fc(Cplx32 *dst, int len, float magnitude, float relFreq, float *phase) {
  if (dst == nullptr || phase == nullptr || len < 1) return;
  const float frequency = static_cast<float>(Reduced(static_cast<double>(relFreq), 1.0));
  const float start =
      static_cast<float>(Reduced(static_cast<double>(*phase), static_cast<double>(kTwoPi<float>)));
  *phase = start;
  VecReal32 ramp(len);
  VectorSlope_32f(ramp.GetPtr(), len, start, kTwoPi<float> * frequency);
  Expj_32f(ramp.GetPtr(), dst, len);
  MulC_32f_I(magnitude, &dst->re, len);
  MulC_32f_I(magnitude, &dst->re + len, len);
  // The phase that is carried on is as exact as can be, though the ramp ran in float.
  *phase = static_cast<float>(std::fmod(
      len * (kTwoPi<double> * static_cast<double>(frequency)) + static_cast<double>(start), kTwoPi<double>));
}

namespace {

// Kaiser window. I0(x) is written as G(x) for x < kSeries and as exp(x) G(x) above, so that the quotient of
// two values neither overflows nor loses digits in large exponentials.
constexpr double kSeries = 8;

// I0(x) = sum of (x^2 / 4)^k / (k!)^2; for x < 8 the terms left out are below 1e-18 of the sum.
double BesselSeries(double x) {
  constexpr int kTerms = 25;
  const double q = x * x / 4;
  double sum = 1;
  for (int k = kTerms; k > 0; --k) sum = 1 + sum * q / (k * k);
  return sum;
}

// exp(-x) sqrt(x) I0(x) as a Chebyshev series in 16 / x - 1, summed by Clenshaw's recurrence. The
// coefficients are made by scripts/coefficients/bessel_i0.py.
double BesselScaled(double x) {
  static constexpr double kCoefficients[] = {
      0.4022452055070544158,      0.0033691164782556940899,   0.000068897583469168239843,
      2.891370520834756483e-6,    2.0489185894690637418e-7,   2.2666689904981780646e-8,
      3.3962320257083863452e-9,   4.9406023882249695891e-10,  1.1889147107846438342e-11,
      -3.1499165279632413645e-11, -1.3215811840447713119e-11, -1.7941785315068061178e-12,
      7.1801244513836662337e-13,  3.8527783827421427011e-13,  1.5400862175214098269e-14,
      -4.1505693472872220866e-14, -9.5548466988283076487e-15, 3.8116806693526224207e-15,
      1.7725601330565263836e-15,  -3.4254856196772191346e-16, -2.8276239805165834849e-16,
      3.4612228676974610931e-17,  4.465621420296759999e-17,   -4.8305044859441820713e-18,
      -7.2331804878747539546e-18, 9.9214754121736985989e-19,  1.1936508908459820855e-18,
  };
  constexpr int kCount = static_cast<int>(sizeof kCoefficients / sizeof *kCoefficients);
  const double twice = 2 * (16 / x - 1);
  double next = 0, afterNext = 0;
  for (int k = kCount - 1; k > 0; --k) {
    const double sum = kCoefficients[k] + twice * next - afterNext;
    afterNext = next;
    next = sum;
  }
  return (kCoefficients[0] + twice / 2 * next - afterNext) / std::sqrt(x);
}

double BesselPart(double x) { return x < kSeries ? BesselSeries(x) : BesselScaled(x); }

// The first `half` of the window's len values, in blocks, as put(n, value). With h = (len - 1) / 2 and the
// shape b = alpha / h per half-length, value n is I0(b s) / I0(b h), s = sqrt(h^2 - (n - h)^2), and b s - b h
// = -b (n - h)^2 / (h + s) without cancellation.
template <class Put> void KaiserHalf(int len, float alpha, Put put) {
  const double h = (len - 1) * 0.5;
  const double shape = std::fabs(static_cast<double>(alpha / (static_cast<float>(len - 1) * 0.5F)));
  const double top = shape * h;
  const double topPart = BesselPart(top);
  constexpr int kBlock = 256;
  double parts[kBlock], exponents[kBlock];
  const Index half = (static_cast<Index>(len) + 1) / 2;
  for (Index first = 0; first < half; first += kBlock) {
    const int count = static_cast<int>(half - first < kBlock ? half - first : kBlock);
    for (int i = 0; i < count; ++i) {
      const auto n = static_cast<double>(first + i);
      const double s = std::sqrt(n * (2 * h - n));
      const double x = shape * s;
      parts[i] = BesselPart(x) / topPart;
      if (x >= kSeries) {
        exponents[i] = -shape * ((h - n) * (h - n)) / (h + s);
      } else {
        exponents[i] = top >= kSeries ? -top : 0;
      }
    }
    // Never a length of 1, of which Exp_64f has its own idea: the whole block, unused places included.
    for (int i = count; i < kBlock; ++i) exponents[i] = 0;
    TargetLib::Exp_64f(exponents, exponents, kBlock);
    for (int i = 0; i < count; ++i) put(first + i, parts[i] * exponents[i]);
  }
}

template <class T> void Kaiser(T *dst, int len, float alpha) {
  if (len == 1) {
    dst[0] = 1;
    return;
  }
  KaiserHalf(len, alpha, [=](Index n, double value) { dst[n] = dst[len - 1 - n] = static_cast<T>(value); });
}

struct FreeBlock {
  void operator()(double *block) const { QORNMalloc::Delete(block); }
};

} // namespace

void TargetLib::GenKaiserWin_64f(double *dst, int len, float alpha) {
  if (dst == nullptr || len < 1) return;
  Kaiser(dst, len, alpha);
}

void TargetLib::GenKaiserWin_32f(float *dst, int len, float alpha) {
  if (dst == nullptr || len < 1) return;
  if (alpha < 30.0F) return Kaiser(dst, len, alpha);
  const std::unique_ptr<double, FreeBlock> wide(QORNMalloc::MallocReal64(len));
  GenKaiserWin_64f(wide.get(), len, alpha);
  Convert_64f32f(wide.get(), dst, len);
}

namespace {

bool IsInBand(double relFreq) { return relFreq > 0.0 && relFreq < 0.5; }

constexpr int kShortestFilter = 5;

// sin(x) and cos(x), the library's own: the C library's last bits differ from machine to machine.
double Sine(double x) {
  TargetLib::Sin_64f(&x, &x, 1);
  return x;
}
double Cosine(double x) {
  TargetLib::Cos_64f(&x, &x, 1);
  return x;
}

// The ideal response m samples from the centre of what passes the frequencies from 0 to relFreq.
double LowPass(double relFreq, double m) {
  return m == 0.0 ? 2.0 * relFreq : Sine(kTwoPi<double> * relFreq * m) / (kPi<double> * m);
}

// Likewise for lowFreq to highFreq: a low-pass of half the width, moved to the middle. As the difference of
// two low-passes it would cancel in narrow bands.
double BandPass(double lowFreq, double highFreq, double m) {
  return 2.0 * Cosine(kPi<double> * (lowFreq + highFreq) * m) * LowPass((highFreq - lowFreq) / 2.0, m);
}

// Windows response(m), m = n - (len - 1) / 2, and scales it to a gain of 1 at relFreq. Tap n and its mirror
// image are one value.
template <class Response> void Design(double *taps, int len, double relFreq, Response response) {
  const double centre = (len - 1) / 2.0;
  double gain = 0;
  for (int n = 0; n < (len + 1) / 2; ++n) {
    const double m = n - centre;
    const double window = 0.54 - 0.46 * Cosine(kTwoPi<double> * n / (len - 1));
    taps[n] = response(m) * window;
    gain += (m == 0.0 ? 1.0 : 2.0) * taps[n] * Cosine(kTwoPi<double> * relFreq * m);
  }
  for (int n = 0; n < (len + 1) / 2; ++n) taps[n] = taps[len - 1 - n] = taps[n] / std::fabs(gain);
}

} // namespace

void TargetLib::FIRGenLowpassWinHamming_64f(double relFreq, double *taps, int len) {
  if (taps == nullptr || len < kShortestFilter || !IsInBand(relFreq)) return;
  Design(taps, len, 0.0, [=](double m) { return LowPass(relFreq, m); });
}

void TargetLib::FIRGenHighpassWinHamming_64f(double relFreq, double *taps, int len) {
  if (taps == nullptr || len < kShortestFilter || !IsInBand(relFreq)) return;
  // All frequencies less the low ones. Symmetric taps of an even length have no gain at half the rate,
  // whatever they are: for those the middle of the pass band counts.
  const double reference = len % 2 != 0 ? 0.5 : (relFreq + 0.5) / 2.0;
  Design(taps, len, reference, [=](double m) { return BandPass(relFreq, 0.5, m); });
}

void TargetLib::FIRGenBandpassWinHamming_64f(double lowFreq, double highFreq, double *taps, int len) {
  if (taps == nullptr || len < kShortestFilter || !IsInBand(lowFreq) || !IsInBand(highFreq)) return;
  if (!(lowFreq < highFreq)) return;
  Design(taps, len, (lowFreq + highFreq) / 2.0, [=](double m) { return BandPass(lowFreq, highFreq, m); });
}

} // namespace QORN
