#include "qorn/dsp/IntegralFilters.h"

#include "FilterDesign.h"
#include "qorn/dsp/WaveformGenerator.h"

namespace QORN {

namespace {

// Adds to out, for each sample that is not zero, the pulse at the exact times of the outputs. pulse(dst, t)
// computes in place.
template <class Pulse>
void AddPulses(VecReal32 &out, const VecReal32 &in, float period, float shift, Pulse pulse) {
  if (&out == &in) {
    const VecReal32 samples(in);
    AddPulses(out, samples, period, shift, pulse);
    return;
  }
  const int n = in.GetSize();
  out.Resize(n);
  out.SetZero();
  VecReal32 times, response;
  times.Ramp(n, 0.0F, period);
  for (int i = 0; i < n; ++i) {
    if (in[i] == 0.0F) continue;
    response = times;
    response.Sub(times[i]);
    response.Add(shift);
    pulse(response, response);
    response.Mul(in[i]);
    out += response;
  }
}

} // namespace

int IntegralRectFilter::GetRecommendedTapSize(float samplingRate, float rate, float) {
  return OddCount(samplingRate * 10.0F / rate);
}
void IntegralRectFilter::SetParameters(float samplingRate, float rate, float, int n) {
  StoreDesign(samplingRate, rate, n);
  IntegralRectFilterTap(m_taps, 0.0F, 1.0F / rate, 1.0F / samplingRate, n);
}
void IntegralRectFilter::Apply(VecReal32 &out, VecReal32 const &in, bool) {
  const float T = 1.0F / m_rate;
  AddPulses(out, in, 1.0F / m_samplingRate, m_timeShift,
            [=](VecReal32 &dst, const VecReal32 &t) { WaveformGenerator::IntegralConvRect(dst, T, t); });
}
void IntegralRectFilter::IntegralRectFilterTap(VecReal32 &taps, float, float T, float Ts, int n) {
  SamplePulse(taps, Ts, n, Ts,
              [=](VecReal32 &dst, const VecReal32 &t) { WaveformGenerator::IntegralConvRect(dst, T, t); });
}

int IntegralGaussianFilter::GetRecommendedTapSize(float samplingRate, float rate, float BT) {
  return PulseTapCount(samplingRate, 10.0F, rate, BT);
}
void IntegralGaussianFilter::SetParameters(float samplingRate, float rate, float BT, int n) {
  StoreDesign(samplingRate, rate, BT, n);
  IntegralGaussianFilterTap(m_taps, BT, 1.0F / rate, 1.0F / samplingRate, n);
}
void IntegralGaussianFilter::Apply(VecReal32 &out, VecReal32 const &in, bool) {
  const float T = 1.0F / m_rate, deviation = GaussianDeviation(m_shape);
  AddPulses(out, in, 1.0F / m_samplingRate, m_timeShift, [=](VecReal32 &dst, const VecReal32 &t) {
    WaveformGenerator::IntegralConvGauss(dst, T, deviation, t);
  });
}
void IntegralGaussianFilter::IntegralGaussianFilterTap(VecReal32 &taps, float BT, float T, float Ts, int n) {
  const float deviation = GaussianDeviation(BT);
  SamplePulse(taps, Ts, n, Ts, [=](VecReal32 &dst, const VecReal32 &t) {
    WaveformGenerator::IntegralConvGauss(dst, T, deviation, t);
  });
}

} // namespace QORN
