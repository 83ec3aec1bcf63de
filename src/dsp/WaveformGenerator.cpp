// The order and the precision of the steps are part of what the pulses are: a rearrangement that is equal in
// exact arithmetic gives other last bits.
#include "qorn/dsp/WaveformGenerator.h"

#include <cmath>

#include "infra/Constants.h"
#include "math/Elementwise.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

using constants::kPi;
using constants::kTwoPi;
constexpr unsigned int kSeed = 0x12345678;

// Below this |x| the series stands for sin(x) / x: its next term is x^4 / 120, which reaches eps there.
template <class T> T SincThreshold(T eps) { return std::sqrt(std::sqrt(T{120} * eps)); }

void Widen(const float *x, double *dst, int n) { TargetLib::Convert_32f64f(x, dst, n); }
void Widen(const double *x, double *dst, int n) { TargetLib::Copy_64f(x, dst, n); }

// x[i] = sin(x[i]) / x[i], guarded, for at most kBlock elements.
template <class T> void SincInPlace(T *x, int n, T threshold) {
  double wide[kBlock];
  double sine[kBlock];
  Widen(x, wide, n);
  TargetLib::Sin_64f(wide, sine, n);
  for (int i = 0; i < n; ++i) {
    const bool guarded = x[i] > -threshold && x[i] < threshold;
    x[i] = static_cast<T>(guarded ? 1.0 - wide[i] * wide[i] / 6.0 : sine[i] / wide[i]);
  }
}

template <class V> void VectorSinc(V &dst, const V &x, ElementOf<V> eps) {
  const auto threshold = SincThreshold(eps);
  MapInSteps(dst, x, [threshold](auto *values, int n) { SincInPlace(values, n, threshold); });
}

// The sinc of the pulses.
void PulseSinc(float *x, int n) { SincInPlace(x, n, SincThreshold(9e-6F)); }

// dst[i] = (x[i] + offset) * factor.
void OffsetAndScale(const float *x, float offset, float factor, float *dst, int n) {
  TargetLib::Copy_32f(x, dst, n);
  TargetLib::AddC_32f_I(offset, dst, n);
  TargetLib::MulC_32f_I(factor, dst, n);
}

// The pulses with a beginning and an end: `below` up to -limit, `above` from limit on, and in between the
// in-place steps(times, count). Where no time is greater than -limit, `below` is all there is.
template <class Steps>
void BetweenLimits(VecReal32 &dst, const VecReal32 &t, float limit, float below, float above, Steps steps) {
  const int n = t.GetSize();
  int first = 0;
  while (first < n && !(t[first] > -limit)) ++first;
  int end = n;
  while (end > first && !(t[end - 1] < limit)) --end;
  ResizeLike(dst, t);
  if (&dst != &t) TargetLib::Copy_32f(t.GetPtr(first), dst.GetPtr(first), end - first);
  TargetLib::Set_32f(below, dst.GetPtr(), first);
  TargetLib::Set_32f(above, dst.GetPtr(end), n - end);
  for (int i = first; i < end; i += kBlock) steps(dst.GetPtr(i), std::min(kBlock, end - i));
}

} // namespace

void WaveformGenerator::RandUniform(VecReal32 &dst, int n, float low, float high) {
  unsigned int seed = kSeed;
  RandUniform(dst, n, low, high, seed);
}

void WaveformGenerator::RandUniform(VecReal32 &dst, int n, float low, float high, unsigned int &seed) {
  dst.Resize(n);
  TargetLib::RandUniform_Direct_32f(dst.GetPtr(), n, low, high, &seed);
}

void WaveformGenerator::RandGauss(VecReal32 &dst, int n, float mean, float stdDev) {
  unsigned int seed = kSeed;
  RandGauss(dst, n, mean, stdDev, seed);
}

void WaveformGenerator::RandGauss(VecReal32 &dst, int n, float mean, float stdDev, unsigned int &seed) {
  dst.Resize(n);
  TargetLib::RandGauss_Direct_32f(dst.GetPtr(), n, mean, stdDev, &seed);
}

void WaveformGenerator::Sinc(VecReal32 &dst, const VecReal32 &x, float eps) { VectorSinc(dst, x, eps); }
void WaveformGenerator::Sinc(VecReal64 &dst, const VecReal64 &x, double eps) { VectorSinc(dst, x, eps); }

void WaveformGenerator::KaiserWindow(VecReal32 &dst, int n, float beta) {
  dst.Resize(n);
  TargetLib::GenKaiserWin_32f(dst.GetPtr(), n, beta);
}

void WaveformGenerator::KaiserWindow(VecReal64 &dst, int n, float beta) {
  dst.Resize(n);
  TargetLib::GenKaiserWin_64f(dst.GetPtr(), n, beta);
}

void WaveformGenerator::RaisedCosinePulse(VecReal32 &dst, float rolloff, float T, const VecReal32 &t) {
  const float invT = 1.0F / T;
  MapInSteps(dst, t, [=](float *x, int n) {
    float y[kBlock];
    float p[kBlock];
    float q[kBlock];
    TargetLib::MulC_32f_I(invT, x, n);
    TargetLib::Copy_32f(x, y, n);
    TargetLib::MulC_32f_I(rolloff * 2.0F, y, n);
    OffsetAndScale(y, 1.0F, kPi<float> * 0.5F, p, n);
    OffsetAndScale(y, -1.0F, kPi<float> * 0.5F, q, n);
    PulseSinc(p, n);
    PulseSinc(q, n);
    TargetLib::Add_32f_I(q, p, n);
    TargetLib::MulC_32f_I(kPi<float>, x, n);
    PulseSinc(x, n);
    TargetLib::Mul_32f_I(p, x, n);
    TargetLib::MulC_32f_I(kPi<float> * 0.25F, x, n);
  });
}

namespace {

// cos((x[i] + offset) pi) S((u[i] + offset) pi): one of the two mirrored terms of the root raised cosine.
void RootTerm(const float *x, const float *u, float offset, float *dst, int n) {
  float cosine[kBlock];
  OffsetAndScale(x, offset, kPi<float>, cosine, n);
  TargetLib::Cos_32f(cosine, cosine, n);
  OffsetAndScale(u, offset, kPi<float>, dst, n);
  PulseSinc(dst, n);
  TargetLib::Mul_32f_I(cosine, dst, n);
}

} // namespace

void WaveformGenerator::RootRaisedCosinePulse(VecReal32 &dst, float rolloff, float T, const VecReal32 &t) {
  const float invT = 1.0F / T;
  const float scale = std::sqrt(invT);
  MapInSteps(dst, t, [=](float *time, int n) {
    float x[kBlock];
    float u[kBlock];
    float early[kBlock];
    float late[kBlock];
    TargetLib::Copy_32f(time, x, n);
    TargetLib::MulC_32f_I(invT, x, n);
    TargetLib::Copy_32f(time, u, n);
    TargetLib::MulC_32f_I(rolloff, u, n);
    TargetLib::MulC_32f_I(invT, u, n);
    RootTerm(x, u, 0.25F, early, n);
    RootTerm(x, u, -0.25F, late, n);
    TargetLib::Add_32f_I(late, early, n);
    TargetLib::MulC_32f_I(rolloff, early, n);
    TargetLib::MulC_32f_I((1.0F - rolloff) * invT * kPi<float>, time, n);
    PulseSinc(time, n);
    TargetLib::MulC_32f_I(1.0F - rolloff, time, n);
    TargetLib::Add_32f_I(early, time, n);
    TargetLib::MulC_32f_I(scale, time, n);
  });
}

void WaveformGenerator::GaussianPulse(VecReal32 &dst, float B, const VecReal32 &t) {
  constexpr double kTwoPiByLn2 = 9.064720283654392;
  constexpr double kPiSquared = 9.869604401089358;
  constexpr double kLn2 = 0.693147180559945; // fifteen digits
  const auto wideB = static_cast<double>(B);
  const double scale = wideB * std::sqrt(kTwoPiByLn2);
  const double k = wideB * kPiSquared * wideB * -2.0 / kLn2;
  MapInSteps(dst, t, [=](float *x, int n) {
    double e[kBlock];
    Widen(x, e, n);
    for (int i = 0; i < n; ++i) e[i] = e[i] * k * e[i];
    // What the kernel does about underflow, which depends on the count, does not show: times any scale that
    // comes from a float, the smallest normal double is 0 as a float.
    TargetLib::Exp_64f(e, e, n);
    for (int i = 0; i < n; ++i) x[i] = static_cast<float>(e[i] * scale);
  });
}

void WaveformGenerator::SincPulse(VecReal32 &dst, float B, const VecReal32 &t) {
  const float w = B * 2.0F;
  MapInSteps(dst, t, [=](float *x, int n) {
    TargetLib::MulC_32f_I(kPi<float> * w, x, n);
    PulseSinc(x, n);
    TargetLib::MulC_32f_I(w, x, n);
  });
}

void WaveformGenerator::ConvGauss(VecReal32 &dst, float T, float b, const VecReal32 &t) {
  const float half = T * 0.5F;
  const auto wideHalf = static_cast<double>(half);
  const double m = 1.0 / (static_cast<double>(T) * 1.414213562373095 * static_cast<double>(b));
  const auto g = static_cast<double>(1.0F / (T * 2.0F));
  BetweenLimits(dst, t, T * b * 20.0F, 0.0F, 0.0F, [=](float *x, int n) {
    double p[kBlock];
    double q[kBlock];
    Widen(x, p, n);
    TargetLib::Copy_64f(p, q, n);
    // Outside the rectangle both arguments are taken positive, and the difference of the error functions the
    // other way round.
    for (int i = 0; i < n; ++i) {
      p[i] = (p[i] - wideHalf) * m;
      q[i] = (q[i] + wideHalf) * m;
      if (!(x[i] > half)) p[i] = -p[i];
      if (!(x[i] > -half)) q[i] = -q[i];
    }
    TargetLib::Erf_64f(p, p, n);
    TargetLib::Erf_64f(q, q, n);
    for (int i = 0; i < n; ++i) {
      const double sum = !(x[i] > -half) ? p[i] - q[i] : x[i] > half ? q[i] - p[i] : p[i] + q[i];
      x[i] = static_cast<float>(sum * g);
    }
  });
}

void WaveformGenerator::IntegralConvRect(VecReal32 &dst, float T, const VecReal32 &t) {
  BetweenLimits(dst, t, T * 0.5F, 0.0F, 1.0F, [=](float *x, int n) {
    TargetLib::MulC_32f_I(1.0F / T, x, n);
    TargetLib::AddC_32f_I(0.5F, x, n);
  });
}

void WaveformGenerator::IntegralConvGauss(VecReal32 &dst, float T, float b, const VecReal32 &t) {
  const auto wideT = static_cast<double>(T);
  const auto half = static_cast<double>(T * 0.5F);
  const auto q = static_cast<double>(-(b * 2.0F * b * T * T));
  const auto w = static_cast<double>(1.4142135F * b * T);
  const auto edge =
      static_cast<double>(static_cast<float>(-static_cast<double>(b) / std::sqrt(kTwoPi<double>)));
  BetweenLimits(dst, t, T * b * 10.0F, 0.0F, 1.0F, [=](float *x, int n) {
    double e1[kBlock];
    double e2[kBlock];
    double early[kBlock];
    double late[kBlock];
    Widen(x, e1, n);
    TargetLib::Copy_64f(e1, e2, n);
    TargetLib::Copy_64f(e1, early, n);
    TargetLib::Copy_64f(e1, late, n);
    for (int i = 0; i < n; ++i) {
      const double A = early[i] + half;
      const double B = late[i] - half;
      e1[i] = A * A / q;
      e2[i] = B * B / q;
      early[i] = A / w;
      late[i] = B / w;
    }
    // An underflow, which the kernel treats by the count, is lost beside H and K: one of them is of order 1.
    TargetLib::Exp_64f(e1, e1, n);
    TargetLib::Exp_64f(e2, e2, n);
    TargetLib::Erf_64f(early, early, n);
    TargetLib::Erf_64f(late, late, n);
    for (int i = 0; i < n; ++i) {
      const double E = (e1[i] - e2[i]) * edge;
      const double H = 1.0 + late[i];
      const double J = 1.0 + early[i];
      const double K = (J - H) * (static_cast<double>(x[i]) / wideT + 0.5) / 2.0;
      x[i] = static_cast<float>(H / 2.0 + K - E);
    }
  });
}

} // namespace QORN
