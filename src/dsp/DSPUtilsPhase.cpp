// Polar form, phase, rotation and frequency shift.
#include <algorithm>
#include <cmath>

#include "infra/Constants.h"
#include "infra/kernels/Levels.h"
#include "math/Elementwise.h"
#include "qorn/dsp/DSPUtils.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

// pi and 2 pi as the type has them: the float nearest to each is not the value itself.
using constants::kPi;
using constants::kTwoPi;

// The whole turns of a positive phase, in radians; counted in double for both types.
template <class T> T WholeTurns(T x) {
  return static_cast<T>(std::floor(static_cast<double>(x) / kTwoPi<double>) * kTwoPi<double>);
}

template <class V> void Fold(V &vec) {
  using T = ElementOf<V>;
  for (int i = 0; i < vec.GetSize(); ++i) {
    T x = vec[i];
    if (x > 0) {
      x -= WholeTurns(x);
    } else if (x < 0) {
      x += WholeTurns(-x);
    }
    if (x > kPi<T>) {
      x -= kTwoPi<T>;
    } else if (x < -kPi<T>) {
      x += kTwoPi<T>;
    }
    vec[i] = x;
  }
}

template <class V, class T> void UnwrapSteps(V &dst, const V &src, T period) {
  const int n = src.GetSize();
  ResizeLike(dst, src);
  if (n < 1) return;
  const T half = period * static_cast<T>(0.5);
  T offset = 0;
  T previous = dst[0] = src[0];
  for (int i = 1; i < n; ++i) {
    const T raw = src[i];
    const T difference = raw - previous;
    if (std::fabs(difference) > half) offset = difference > 0 ? offset - period : offset + period;
    previous = raw;
    dst[i] = raw + offset;
  }
}

// Corrects one element after the other against the raw one before it.
template <class T> class Unwrapper {
public:
  Unwrapper(T previous, T period) : m_previous(previous), m_period(period) {}

  void Correct(T &element) {
    const T half = m_period * static_cast<T>(0.5);
    const T raw = element;
    T difference = raw - m_previous;
    while (difference > half && Moves(difference, -m_period)) m_offset -= m_period;
    while (difference < -half && Moves(difference, m_period)) m_offset += m_period;
    m_previous = raw;
    element = raw + m_offset;
  }

private:
  // False where the step vanishes in the rounding: there is no end to such steps.
  static bool Moves(T &difference, T step) {
    const T before = difference;
    difference += step;
    return difference != before;
  }

  T m_previous;
  T m_period;
  T m_offset = 0;
};

template <class V, class T> void UnwrapOutward(V &vec, int start, T initial, T period) {
  Unwrapper<T> forward(initial, period);
  for (int i = start; i < vec.GetSize(); ++i) forward.Correct(vec[i]);
  if (start < 1) return;
  Unwrapper<T> backward(vec[start], period);
  for (int i = start - 1; i >= 0; --i) backward.Correct(vec[i]);
}

// cos angle + j sin angle
Cplx64 Phasor(double angle) { return MapScalar<Cplx64>(angle, TargetLib::Expj_64f); }

// After how many samples the phasor of a shift is made anew: once per hundred cycles, but not within a
// hundred samples and not later than at the end.
int SeedPeriod(int n, double frequency) {
  const double size = std::fabs(frequency);
  if (!(size > 0.0)) return std::max(n, 1);
  const double hundredCycles = 100.0 / size;
  return std::max(n > hundredCycles ? static_cast<int>(hundredCycles) : n, 100);
}

// dst, which may be src, gets the length of src.
void ShiftFrequency(VecCplx32 &dst, const VecCplx32 &src, double freq, double *phase) {
  const int n = std::max(src.GetSize(), 0);
  ResizeLike(dst, src);
  if (freq == 0.0) {
    if (&dst != &src) dst = src;
    if (std::fabs(*phase) > 0.0) {
      dst.Mul(MapScalar<Cplx32>(static_cast<float>(*phase), TargetLib::Expj_32f));
    }
    return;
  }
  const double frequency = std::fmod(freq, 1.0);
  Cplx64 next;
  kernels::active->Mix(src.GetPtr(), dst.GetPtr(), n, frequency, std::fmod(*phase, kTwoPi<double>),
                       SeedPeriod(n, frequency), &next);
  TargetLib::Atan2_64f(&next.im, &next.re, phase, 1);
}

} // namespace

void DSPUtils::CartToPolar(VecReal32 &mag, VecReal32 &phase, const VecCplx32 &src) {
  const int n = src.GetSize();
  mag.Resize(n);
  phase.Resize(n);
  TargetLib::CartToPolar_32fc(src.GetPtr(), mag.GetPtr(), phase.GetPtr(), n);
}

void DSPUtils::PolarToCart(VecCplx32 &dst, const VecReal32 &mag, const VecReal32 &phase) {
  const int n = mag.GetSize();
  dst.Resize(n);
  TargetLib::PolarToCart_32fc(mag.GetPtr(), phase.GetPtr(), dst.GetPtr(), n);
}

void DSPUtils::Phase(VecReal32 &dst, const VecCplx32 &src) { Map(dst, src, TargetLib::Phase_32fc); }
void DSPUtils::Phase(VecReal64 &dst, const VecCplx64 &src) { Map(dst, src, TargetLib::Phase_64fc); }

void DSPUtils::MapPhase(VecReal32 &vec) { Fold(vec); }
void DSPUtils::MapPhase(VecReal64 &vec) { Fold(vec); }

void DSPUtils::Unwrap(VecReal32 &dst, const VecReal32 &src, float period) { UnwrapSteps(dst, src, period); }
void DSPUtils::Unwrap(VecReal64 &dst, const VecReal64 &src, double period) { UnwrapSteps(dst, src, period); }
void DSPUtils::Unwrap(VecReal32 &vec, int start, float initial, float period) {
  UnwrapOutward(vec, start, initial, period);
}
void DSPUtils::Unwrap(VecReal64 &vec, int start, double initial, double period) {
  UnwrapOutward(vec, start, initial, period);
}

void DSPUtils::PhaseAndUnwrap(VecReal32 &dst, const VecCplx32 &src) {
  Phase(dst, src);
  Unwrap(dst, dst, kTwoPi<float>);
}
void DSPUtils::PhaseAndUnwrap(VecReal64 &dst, const VecCplx64 &src) {
  Phase(dst, src);
  Unwrap(dst, dst, kTwoPi<double>);
}

void DSPUtils::RotatePhase(VecCplx32 &vec, float angle) {
  const Cplx64 phasor = Phasor(static_cast<double>(angle));
  vec.Mul(Cplx32{static_cast<float>(phasor.re), static_cast<float>(phasor.im)});
}
void DSPUtils::RotatePhase(VecCplx64 &vec, double angle) { vec.Mul(Phasor(angle)); }

void DSPUtils::FreqShift(VecCplx32 &vec, double freq, double *phase) {
  ShiftFrequency(vec, vec, freq, phase);
}
void DSPUtils::FreqShift(VecCplx32 &dst, const VecCplx32 &src, double freq, double *phase) {
  ShiftFrequency(dst, src, freq, phase);
}
void DSPUtils::FreqShift(VecCplx32 &dst, const VecReal32 &src, double freq, double *phase) {
  dst.Import(src);
  FreqShift(dst, freq, phase);
}
void DSPUtils::FreqShift(VecCplx32 &vec, double freq, double phase) { FreqShift(vec, freq, &phase); }
void DSPUtils::FreqShift(VecCplx32 &dst, const VecCplx32 &src, double freq, double phase) {
  FreqShift(dst, src, freq, &phase);
}
void DSPUtils::FreqShift(VecCplx32 &dst, const VecReal32 &src, double freq, double phase) {
  FreqShift(dst, src, freq, &phase);
}

} // namespace QORN
