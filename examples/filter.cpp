// Shapes random QPSK symbols with a root-raised-cosine filter, filters them again as a receiver does, and
// prints what the pair leaves of interference between symbols: the error vector magnitude.
#include <cmath>
#include <cstdio>
#include <memory>
#include <qorn/qorn.h>

using namespace QORN;

int main() {
  const int symbols = 1000, samplesPerSymbol = 8;
  const float symbolRate = 1e6F, samplingRate = symbolRate * samplesPerSymbol, rolloff = 0.22F;

  const std::unique_ptr<FIRBaseFilter> filter(FIRFilterFactory::MakeFilter(FIRFilterRootRaisedCosine));
  const int taps = filter->GetRecommendedTapSize(samplingRate, symbolRate, rolloff);
  filter->SetParameters(samplingRate, symbolRate, rolloff, taps);

  VecReal32 random;
  WaveformGenerator::RandUniform(random, 2 * symbols, -1.0F, 1.0F);
  VecCplx32 sent(symbols * samplesPerSymbol), shaped, received;
  for (int i = 0; i < symbols; ++i) {
    sent[i * samplesPerSymbol] = {std::copysign(1.0F, random[2 * i]), std::copysign(1.0F, random[2 * i + 1])};
  }
  filter->Apply(shaped, sent, true);
  filter->Apply(received, shaped, true);
  received *= static_cast<float>(samplesPerSymbol);

  // Near the ends the pulses are cut.
  double error = 0.0, power = 0.0;
  for (int i = 100; i < symbols - 100; ++i) {
    const Cplx32 is = received[i * samplesPerSymbol], should = sent[i * samplesPerSymbol];
    error += std::pow(is.re - should.re, 2) + std::pow(is.im - should.im, 2);
    power += 2.0;
  }
  std::printf("%d taps, EVM %.2f %%\n", taps, 100.0 * std::sqrt(error / power));
}
