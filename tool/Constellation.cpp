#include "Constellation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace tool {

namespace {

using Points = std::vector<std::complex<double>>;

constexpr int kPhases = 256; // instants per symbol that are tried
constexpr int kMostSymbols = 1000;
constexpr int kLeastSymbols = 4;
constexpr double kPi = 3.141592653589793;

std::complex<double> Wide(const QORN::Cplx32 &x) {
  return {static_cast<double>(x.re), static_cast<double>(x.im)};
}

Points IdealOf(QORN::BasebandSigGen::SignalType type) {
  struct Maker : QORN::BasebandSigGen {
    using BasebandSigGen::Construct_PSK_QAM_Constellation;
  };
  QORN::VecCplx32 points;
  Maker::Construct_PSK_QAM_Constellation(points, type, true);
  Points ideal;
  for (int i = 0; i < points.GetSize(); ++i) ideal.push_back(Wide(points[i]));
  return ideal;
}

// The power of a point by which all have one argument, at least in the mean.
int OrderOf(QORN::BasebandSigGen::SignalType type) {
  switch (type) {
  case QORN::BasebandSigGen::BPSK:
    return 2;
  case QORN::BasebandSigGen::PSK8:
    return 8;
  case QORN::BasebandSigGen::PSK16:
    return 16;
  default:
    return 4;
  }
}

// Every kPhases-th sample from a phase on.
template <class Take> void ForSymbols(const QORN::VecCplx32 &fine, int first, const Take &take) {
  for (int i = first; i < fine.GetSize(); i += kPhases) take(Wide(fine[i]));
}

// At the instants of the symbols, what the neighbours add is zero, and the fourth moment is least in relation
// to the second (D. Godard, 1980).
int BestPhase(const QORN::VecCplx32 &fine) {
  int best = 0;
  double least = std::numeric_limits<double>::infinity();
  for (int phase = 0; phase < kPhases; ++phase) {
    double count = 0.0, second = 0.0, fourth = 0.0;
    ForSymbols(fine, phase, [&](const std::complex<double> &z) {
      const double power = std::norm(z);
      count += 1.0;
      second += power;
      fourth += power * power;
    });
    const double ratio = count * fourth / (second * second);
    if (ratio < least) {
      least = ratio;
      best = phase;
    }
  }
  return best;
}

std::complex<double> Nearest(const Points &ideal, const std::complex<double> &z) {
  return *std::min_element(ideal.begin(), ideal.end(),
                           [&](const auto &a, const auto &b) { return std::norm(z - a) < std::norm(z - b); });
}

// The gain by which the points are the ideal ones: by their power and that power of them which takes out
// the symbols, and then by the symbols themselves.
std::complex<double> GainOf(const Points &points, const Points &ideal, int order) {
  std::complex<double> turned, wanted;
  double power = 0.0;
  for (const auto &z : points) {
    turned += std::pow(z, order);
    power += std::norm(z);
  }
  for (const auto &z : ideal) wanted += std::pow(z, order);
  std::complex<double> gain =
      std::polar(std::sqrt(power / static_cast<double>(points.size())), std::arg(turned / wanted) / order);
  for (int round = 0; round < 5; ++round) {
    std::complex<double> product;
    double norm = 0.0;
    for (const auto &z : points) {
      const std::complex<double> symbol = Nearest(ideal, z / gain);
      product += z * std::conj(symbol);
      norm += std::norm(symbol);
    }
    gain = product / norm;
  }
  return gain;
}

struct Reading {
  Points points; // empty if there are none
  double evm = 0.0;
};

// The points, turned and scaled.
Reading Fitted(Points points, const Points &ideal, int order) {
  if (points.empty()) return {};
  const std::complex<double> gain = GainOf(points, ideal, order);
  if (!(std::norm(gain) > 0.0)) return {};
  double error = 0.0;
  for (auto &z : points) {
    z /= gain;
    error += std::norm(z - Nearest(ideal, z));
  }
  const double evm = std::sqrt(error / static_cast<double>(points.size()));
  return {std::move(points), evm};
}

// The signal behind the matched filter at kPhases samples per symbol, without the ends.
QORN::VecCplx32 Filtered(const SignalParameters &p, const QORN::VecCplx32 &signal) {
  const auto rate = static_cast<float>(p.rate), symbolRate = static_cast<float>(p.symbolRate),
             rolloff = static_cast<float>(p.rolloff);
  QORN::RootRaisedCosineFilter filter;
  const int taps = std::max(201, filter.GetRecommendedTapSize(rate, symbolRate, rolloff));
  filter.SetParameters(rate, symbolRate, rolloff, taps);
  const double wanted = taps + (kMostSymbols + 100) * p.rate / p.symbolRate;
  QORN::VecCplx32 samples(signal);
  samples.Resize(static_cast<int>(std::min<double>(samples.GetSize(), wanted)));
  QORN::DSPUtils::FreqShift(samples, -p.offset / p.rate, 0.0);
  QORN::VecCplx32 filtered, fine;
  filter.Apply(filtered, samples, true);
  if (filtered.GetSize() <= taps) return fine;
  filtered.Truncate(taps / 2, filtered.GetSize() - taps + 1);
  QORN::ArbRateResampler resampler(kPhases * p.symbolRate / p.rate, 90.0F, 512, 0.9F, 10.0F);
  if (filtered.GetSize() <= 2 * resampler.GetHistory() + 2) return fine;
  resampler.Apply(fine, filtered);
  fine.Resize(std::min(fine.GetSize(), kMostSymbols * kPhases));
  return fine;
}

// At the instants at which the magnitudes differ least, or close to them: the moments of few symbols are
// only about what those of all would be.
Reading ReceivedSymbols(const SignalParameters &p, const QORN::VecCplx32 &signal, const Points &ideal,
                        int order) {
  constexpr int kReach = 8;
  const QORN::VecCplx32 fine = Filtered(p, signal);
  if (fine.GetSize() < kLeastSymbols * kPhases) return {};
  const int best = BestPhase(fine);
  Reading reading;
  for (int phase = std::max(best - kReach, 0); phase <= best + kReach; ++phase) {
    Points points;
    ForSymbols(fine, phase, [&](const std::complex<double> &z) { points.push_back(z); });
    Reading other = Fitted(std::move(points), ideal, order);
    if (reading.points.empty() || other.evm < reading.evm) reading = std::move(other);
  }
  return reading;
}

// The data carriers of the burst, by transforms of 128 points at twice the rate of the frame, each from the
// middle of its guard interval on. Where the symbols are is what OFDMSigGen tells.
Points ReceivedCarriers(const SignalParameters &p, const QORN::VecCplx32 &signal) {
  constexpr int kPoints = 128;
  constexpr int kTraining = 640;
  const double ratio = p.rate / (2.0 * p.frameRate);
  const int guard = static_cast<int>(std::lround(p.guard * kPoints));
  const int symbol = kPoints + guard;
  const int lead = std::min(p.samples / 10, 100 * symbol);
  const int taken = ratio < 1.0 ? static_cast<int>(8.0 / ratio) + 1 : 9; // by the generator's resampler
  const double fitting = std::floor(p.samples / p.rate / (symbol / (2.0 * p.frameRate)));
  const int symbols = static_cast<int>(std::min(fitting - 1.0, 32760.0 / p.scheme->bits));

  QORN::VecCplx32 samples(signal), even, spectrum;
  QORN::DSPUtils::FreqShift(samples, -p.offset / p.rate, 0.0);
  QORN::ArbRateResampler resampler(1.0 / ratio, 90.0F, 512, 0.9F, 10.0F);
  QORN::FFT transform(7, QORN::FftScaleNone, QORN::QORNAlgorithmAccurate, false);
  Points points;
  for (int index = 1; index <= symbols && points.size() < kMostSymbols; ++index) {
    const double start = (lead + kTraining + index * symbol + guard - guard / 2 - taken) * ratio;
    if (start + kPoints * ratio > samples.GetSize()) break;
    resampler.Apply(even, samples, start, static_cast<int>(std::ceil(kPoints * ratio)) + 1);
    if (even.GetSize() < kPoints) break;
    spectrum.Resize(kPoints);
    QORN::TargetLib::Copy_32fc(even.GetPtr(), spectrum.GetPtr(), kPoints);
    transform.Forward(spectrum);
    for (int k = -26; k <= 26; ++k)
      if (k != 0 && std::abs(k) != 7 && std::abs(k) != 21)
        points.push_back(Wide(spectrum[(k + kPoints) % kPoints]) *
                         std::polar(1.0, 2.0 * kPi * k * (guard / 2) / kPoints));
  }
  return points;
}

} // namespace

Constellation Receive(const SignalParameters &parameters, const QORN::VecCplx32 &signal) {
  const bool burst = parameters.kind->IsBurst();
  const QORN::BasebandSigGen::SignalType type = burst ? parameters.scheme->map : parameters.kind->type;
  Constellation result;
  result.ideal = IdealOf(type);
  Reading reading = burst ? Fitted(ReceivedCarriers(parameters, signal), result.ideal, OrderOf(type))
                          : ReceivedSymbols(parameters, signal, result.ideal, OrderOf(type));
  result.points = std::move(reading.points);
  result.evm = reading.evm;
  return result;
}

} // namespace tool
