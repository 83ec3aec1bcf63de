// Averages the power of the spectra of a recording and prints a table: frequency in hertz, level in dBm.
#include <cmath>
#include <cstdio>
#include <qorn/qorn.h>

using namespace QORN;

int main(int, char **argv) {
  const IQFReader iq(argv[1]);
  Spectrum spectrum(1024);
  spectrum.SetUnit(PowerUnitVolt);
  VecCplx32 samples;
  VecReal32 volts, power(1024);
  const int blocks = iq.GetNoflSamplesInFile() / 1024;
  for (int i = 0; i < blocks && iq.ReadIQData(1024 * i, 1024, samples); ++i)
    spectrum.Apply(volts, samples), power += volts *= volts;
  for (int k = 0; k < 1024; ++k)
    std::printf("%.0f %.2f\n", iq.GetCenterFrequency() + (k - 512) * iq.GetSamplingFrequency() / 1024,
                UnitConversion::PeakVolt2dBm(std::sqrt(1.0 * power[k] / blocks)));
}
