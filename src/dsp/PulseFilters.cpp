#include "qorn/dsp/PulseFilters.h"

#include <cmath>

#include "FilterDesign.h"
#include "qorn/dsp/WaveformGenerator.h"

namespace QORN {

int RaisedCosineFilter::GetRecommendedTapSize(float samplingRate, float rate, float rolloff) {
  return PulseTapCount(samplingRate, 4.375F, rate, rolloff);
}
void RaisedCosineFilter::SetParameters(float samplingRate, float rate, float rolloff, int n) {
  StoreDesign(samplingRate, rate, rolloff, n);
  RaisedCosineFilterTap(m_taps, rolloff, 1.0F / rate, 1.0F / samplingRate, n);
}
void RaisedCosineFilter::RaisedCosineFilterTap(VecReal32 &taps, float rolloff, float T, float Ts, int n) {
  SamplePulse(taps, Ts, n, Ts / T, [=](VecReal32 &dst, const VecReal32 &t) {
    WaveformGenerator::RaisedCosinePulse(dst, rolloff, T, t);
  });
}

int RootRaisedCosineFilter::GetRecommendedTapSize(float samplingRate, float rate, float rolloff) {
  return PulseTapCount(samplingRate, 8.75F, rate, rolloff);
}
void RootRaisedCosineFilter::SetParameters(float samplingRate, float rate, float rolloff, int n) {
  StoreDesign(samplingRate, rate, rolloff, n);
  RootRaisedCosineFilterTap(m_taps, rolloff, 1.0F / rate, 1.0F / samplingRate, n);
}
void RootRaisedCosineFilter::RootRaisedCosineFilterTap(VecReal32 &taps, float rolloff, float T, float Ts,
                                                       int n) {
  const auto root = static_cast<float>(std::sqrt(static_cast<double>(T)));
  SamplePulse(taps, Ts, n, Ts / root, [=](VecReal32 &dst, const VecReal32 &t) {
    WaveformGenerator::RootRaisedCosinePulse(dst, rolloff, T, t);
  });
}

int GaussianFilter::GetRecommendedTapSize(float samplingRate, float rate, float BT) {
  return PulseTapCount(samplingRate, 10.0F, rate, BT);
}
void GaussianFilter::SetParameters(float samplingRate, float rate, float BT, int n) {
  StoreDesign(samplingRate, rate, BT, n);
  GaussianFilterTap(m_taps, BT, 1.0F / rate, 1.0F / samplingRate, n);
}
void GaussianFilter::GaussianFilterTap(VecReal32 &taps, float BT, float T, float Ts, int n) {
  SamplePulse(taps, Ts, n, Ts,
              [=](VecReal32 &dst, const VecReal32 &t) { WaveformGenerator::GaussianPulse(dst, BT / T, t); });
}

int GaussRectFilter::GetRecommendedTapSize(float samplingRate, float rate, float BT) {
  return PulseTapCount(samplingRate, 10.0F, rate, BT);
}
void GaussRectFilter::SetParameters(float samplingRate, float rate, float BT, int n) {
  StoreDesign(samplingRate, rate, BT, n);
  GaussRectFilterTap(m_taps, BT, 1.0F / rate, 1.0F / samplingRate, n);
}
void GaussRectFilter::GaussRectFilterTap(VecReal32 &taps, float BT, float T, float Ts, int n) {
  SamplePulse(taps, Ts, n, Ts, [=](VecReal32 &dst, const VecReal32 &t) {
    WaveformGenerator::ConvGauss(dst, T, GaussianDeviation(BT), t);
  });
}

int RectangularFilter::GetRecommendedTapSize(float samplingRate, float rate, float) {
  return OddCount(samplingRate * 10.0F / rate);
}
void RectangularFilter::SetParameters(float samplingRate, float rate, float, int n) {
  StoreDesign(samplingRate, rate, n);
  RectangularFilterTap(m_taps, rate, 1.0F / samplingRate, n);
}
void RectangularFilter::SetParameters(float samplingRate, float rate, int n) {
  SetParameters(samplingRate, rate, 0.0F, n);
}
void RectangularFilter::RectangularFilterTap(VecReal32 &taps, float rate, float Ts, int n) {
  SamplePulse(taps, Ts, n, Ts,
              [=](VecReal32 &dst, const VecReal32 &t) { WaveformGenerator::SincPulse(dst, rate * 0.5F, t); });
}

} // namespace QORN
