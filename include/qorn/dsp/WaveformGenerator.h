#ifndef QORN_DSP_WAVEFORMGENERATOR_H
#define QORN_DSP_WAVEFORMGENERATOR_H

#include "qorn/Export.h"

namespace QORN {

class VecReal32;
class VecReal64;

/// Pulses in closed form, noise and Kaiser windows: static functions only.
///
/// The pulses are evaluated at each element of a time vector t, dst[i] = pulse(t[i]), with time, symbol
/// period T and bandwidth B in units that agree. They are written as sums of guarded sincs, so that they are
/// finite and smooth where the textbook quotients are 0 / 0. The destination comes first; it is given the
/// length of t, or the count n, by Resize, and may be t itself. Scratch lies on the stack: a kept destination
/// allocates nothing, except in KaiserWindow from beta = 30 on. An element's value depends on its time alone.
///
/// Arguments are not checked. Nothing is thrown except 11001 by a vector that cannot grow; n below 1 fills
/// nothing. A T or b of zero gives infinities and not-a-number, a zero width a step, as the formulas have it.
/// All functions are reentrant.
class QORN_API WaveformGenerator {
public:
  /// n values by TargetLib::RandUniform_Direct_32f, uniform from low to high. seed is advanced by 6003, so a
  /// caller who keeps it gets new values at each call; without one the seed is 0x12345678 and the values are
  /// the same at each call.
  ///@{
  static void RandUniform(VecReal32 &dst, int n, float low, float high);
  static void RandUniform(VecReal32 &dst, int n, float low, float high, unsigned int &seed);
  ///@}

  /// n values by TargetLib::RandGauss_Direct_32f, of normal distribution. The seed is as in RandUniform.
  ///@{
  static void RandGauss(VecReal32 &dst, int n, float mean, float stdDev);
  static void RandGauss(VecReal32 &dst, int n, float mean, float stdDev, unsigned int &seed);
  ///@}

  /// dst[i] = sin(x[i]) / x[i], x in radians; where |x[i]| < (120 eps)^(1/4), 1 - x[i]^2 / 6 instead, which
  /// errs there by less than eps. So the value at 0 is 1; with eps = 0 nothing is guarded and 0 gives
  /// not-a-number. Both forms compute in double; the float form rounds the result, and the threshold.
  ///@{
  static void Sinc(VecReal32 &dst, const VecReal32 &x, float eps);
  static void Sinc(VecReal64 &dst, const VecReal64 &x, double eps);
  ///@}

  /// The Kaiser window of n values and shape beta: dst[i] = I0(beta sqrt(1 - (2 i / (n - 1) - 1)^2)) /
  /// I0(beta), by TargetLib::GenKaiserWin_32f and GenKaiserWin_64f.
  ///@{
  static void KaiserWindow(VecReal32 &dst, int n, float beta);
  static void KaiserWindow(VecReal64 &dst, int n, float beta);
  ///@}

  /// The raised cosine of period T, 1 at t = 0 and 0 at its other multiples: sinc(t / T) cos(pi r t / T) / (1
  /// - (2 r t / T)^2), with r the roll-off and sinc(x) = sin(pi x) / (pi x). Evaluated in float as (pi / 4)
  /// S(pi t / T) (S((2 r t / T + 1) pi / 2) + S((2 r t / T - 1) pi / 2)), S being Sinc with eps = 9e-6.
  static void RaisedCosinePulse(VecReal32 &dst, float rolloff, float T, const VecReal32 &t);

  /// The root raised cosine of period T and unit energy: with x = t / T, (sin(pi x (1 - r)) + 4 r x cos(pi x
  /// (1 + r))) / (pi x (1 - (4 r x)^2) sqrt(T)). Evaluated in float as ((1 - r) S(pi (1 - r) x) + r (cos(pi
  /// (x
  /// + 1/4)) S(pi (r x + 1/4)) + cos(pi (x - 1/4)) S(pi (r x - 1/4)))) / sqrt(T), S being Sinc with eps =
  /// 9e-6.
  static void RootRaisedCosinePulse(VecReal32 &dst, float rolloff, float T, const VecReal32 &t);

  /// The Gaussian pulse of unit area whose spectrum falls by 3 dB at the frequency B: sqrt(2 pi / ln 2) B
  /// exp(-2 pi^2 B^2 t^2 / ln 2), in double, rounded to float.
  static void GaussianPulse(VecReal32 &dst, float B, const VecReal32 &t);

  /// The impulse response of an ideal low-pass of cut-off frequency B: 2 B sin(2 pi B t) / (2 pi B t), by
  /// Sinc with eps = 9e-6, in float.
  static void SincPulse(VecReal32 &dst, float B, const VecReal32 &t);

  /// A rectangle of width T and area 1 convolved with a Gaussian of unit area and standard deviation b T:
  /// (erf((t + T / 2) m) - erf((t - T / 2) m)) / (2 T), m = 1 / (sqrt(2) b T), in double, rounded to float.
  /// It is 0 for |t| >= 20 b T: for a b below 0.025 this cuts off the rectangle itself. t must ascend.
  static void ConvGauss(VecReal32 &dst, float T, float b, const VecReal32 &t);

  /// The running integral of a rectangle of width T and area 1: t / T + 1/2, in float, between 0 for t <= -T
  /// / 2 and 1 for t >= T / 2. t must ascend.
  static void IntegralConvRect(VecReal32 &dst, float T, const VecReal32 &t);

  /// The running integral of the ConvGauss pulse, in double, rounded to float; 0 for t <= -10 b T and 1 for t
  /// >= 10 b T, whatever the width of the rectangle. t must ascend.
  static void IntegralConvGauss(VecReal32 &dst, float T, float b, const VecReal32 &t);
};

} // namespace QORN

#endif
