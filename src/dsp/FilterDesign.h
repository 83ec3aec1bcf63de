// What the designs of several filters share: tap counts out of floats, and taps out of pulses.
#ifndef QORN_SRC_DSP_FILTERDESIGN_H
#define QORN_SRC_DSP_FILTERDESIGN_H

#include <algorithm>

#include "infra/Constants.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

/// True if the integer part of x is an int.
inline bool FitsInt(double x) { return x > -2147483649.0 && x < 2147483648.0; }

/// The integer part of x; 0 if that is not an int.
inline int IntegerPart(double x) { return FitsInt(x) ? static_cast<int>(x) : 0; }

/// The integer part of x with its lowest bit set; 0 if that is not an int.
inline int OddCount(float x) {
  const auto wide = static_cast<double>(x);
  return FitsInt(wide) ? static_cast<int>(wide) | 1 : 0;
}

/// odd(samplingRate * factor / (rate * shape)): a pulse that decays the more slowly, the smaller the shape.
inline int PulseTapCount(float samplingRate, float factor, float rate, float shape) {
  return OddCount(samplingRate * factor / (rate * (shape < 0.001F ? 0.001F : shape)));
}

/// The recipe of all taps that are samples of a pulse: taps[i] = pulse(t[i]) * scale at the times t[i] =
/// (i - (n - 1) / 2) * period, 0 <= i < n. pulse(dst, t) computes in place.
template <class Pulse> void SamplePulse(VecReal32 &taps, float period, int n, float scale, Pulse pulse) {
  const int count = std::max(n, 0);
  taps.Resize(count);
  TargetLib::VectorSlope_32f(taps.GetPtr(), count, static_cast<float>(count - 1) * period * -0.5F, period);
  pulse(taps, taps);
  TargetLib::MulC_32f_I(scale, taps.GetPtr(), count);
}

/// The standard deviation, in symbol periods, of the Gaussian of bandwidth-time product bt: sqrt(ln 2) / (2
/// pi bt).
inline float GaussianDeviation(float bt) { return 0.83255464F / (constants::kPi<float> * 2.0F * bt); }

} // namespace QORN

#endif
