// A program outside the tree: everything that it uses must be exported and installed.
#include <qorn/qorn.h>

#include <cstdio>

int main() {
  QORN::VecCplx32 samples(64);
  float phase = 0;
  QORN::TargetLib::Tone_Direct_32fc(samples.GetPtr(), 64, 1.0F, 0.25F, &phase);
  QORN::Spectrum spectrum(64);
  QORN::VecReal32 levels;
  spectrum.Apply(levels, samples);
  float level = 0;
  int bin = 0;
  levels.Max(level, bin);
  std::printf("%.3f dBV at bin %d, version %s\n", static_cast<double>(level), bin, QORN_VERSION_STRING);
  return bin == 48 && level > -0.001F && level < 0.001F ? 0 : 1;
}
