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
  for (int i = 0; i + 1024 <= iq.GetNoflSamplesInFile() && iq.ReadIQData(i, 1024, samples); i += 1024)
    spectrum.Apply(volts, samples), power += volts *= volts;
  for (int k = 0; k < 1024; ++k)
    std::printf("%.0f %.2f\n", iq.GetCenterFrequency() + (k - 512) * iq.GetSamplingFrequency() / 1024,
                UnitConversion::PeakVolt2dBm(std::sqrt(power[k] * 1024.0 / iq.GetNoflSamplesInFile())));
}
