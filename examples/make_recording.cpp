// Writes a recording as a receiver would make it: five tones of known level in noise.
//
//   make_recording FILE
//
// 0 dBm are a tone of 32768 steps: the volts of a step follow from the three levels of the header.
#include <cmath>
#include <complex>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <random>
#include <string>

#include "../tool/IqfWriter.h"

struct Tone {
  double hertz, dBm; // from the centre
};

int main(int argc, char **argv) {
  constexpr Tone tones[] = {{1e6, -10}, {1.015e6, -50}, {-2.2e6, -25}, {3.1e6, -40}, {-3.7e6, -60}};
  constexpr double noise = -70; // dBm in the whole band
  constexpr double rate = 10.24e6;
  constexpr int points = 1024;
  constexpr int frames = 1000;

  if (argc != 2) {
    std::cerr << "usage: make_recording FILE\n";
    return 2;
  }
  std::ofstream file(argv[1], std::ios::binary);
  const std::string header =
      "FFTPoints=1024\r\nBins=800\r\nCenterFrequency=2440M\r\nSpan=8M\r\nFrameLength=100u\r\n"
      "UnitPeriod=97.65625n\r\nValidFrames=1000\r\nBlockSize=100\r\nMultiFrames=1\r\n"
      "MaxInputLevel=0\r\nGainOffset=-90.308998699\r\nLevelOffset=0\r\nIOffset=0\r\nQOffset=0\r\n";
  tool::IqfWriter writer(file, header, points);

  std::mt19937 engine(1);
  std::normal_distribution<double> normal(0, 32768 * std::pow(10, noise / 20) / std::sqrt(2));
  const auto step = [](double value) { return static_cast<int>(std::lround(value)); };
  for (int i = 0; i < frames * points; ++i) {
    std::complex<double> sample(normal(engine), normal(engine));
    for (const Tone &tone : tones)
      sample +=
          std::polar(32768 * std::pow(10, tone.dBm / 20), 2 * M_PI * std::fmod(tone.hertz / rate * i, 1.0));
    writer.Put(step(sample.real()), step(sample.imag()));
  }
  writer.End(); // no correction of the flatness
  return file.flush() ? 0 : 1;
}
