// A receiver for bursts in the frame of IEEE Std 802.11a-1999, in double and with its own tables. It takes
// any sample rate: the carriers of a symbol are fitted to the samples by least squares, which for a whole
// number of samples per symbol is the discrete Fourier transform.
#ifndef QORN_TESTS_SUPPORT_OFDMRECEIVER_H
#define QORN_TESTS_SUPPORT_OFDMRECEIVER_H

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <complex>
#include <cstddef>
#include <limits>
#include <numbers>
#include <stdexcept>
#include <vector>

#include "qorn/infra/VecCplx32.h"

namespace QORN::test {

/// The values of carriers -26 to 26, carrier k at place k + 26.
using OfdmSymbol = std::array<std::complex<double>, 53>;

/// Clause 17.3.3, equation (8).
inline constexpr int kLongSequence[53] = {1,  1,  -1, -1, 1,  1, -1, 1,  -1, 1, 1,  1,  1,  1, 1,  -1, -1, 1,
                                          1,  -1, 1,  -1, 1,  1, 1,  1,  0,  1, -1, -1, 1,  1, -1, 1,  -1, 1,
                                          -1, -1, -1, -1, -1, 1, 1,  -1, -1, 1, -1, 1,  -1, 1, 1,  1,  1};

/// Clause 17.3.5.9, equation (25).
inline constexpr int kPilotPolarity[127] = {
    1,  1,  1,  1,  -1, -1, -1, 1,  -1, -1, -1, -1, 1,  1,  -1, 1,  -1, -1, 1,  1,  -1, 1,  1,  -1, 1,  1,
    1,  1,  1,  1,  -1, 1,  1,  1,  -1, 1,  1,  -1, -1, 1,  1,  1,  -1, 1,  -1, -1, -1, 1,  -1, 1,  -1, -1,
    1,  -1, -1, 1,  1,  1,  1,  1,  -1, -1, 1,  1,  -1, -1, 1,  -1, 1,  -1, 1,  1,  -1, -1, -1, 1,  1,  -1,
    -1, -1, -1, 1,  -1, -1, 1,  -1, 1,  1,  1,  1,  -1, 1,  -1, 1,  -1, 1,  -1, -1, -1, -1, -1, 1,  -1, 1,
    1,  -1, 1,  -1, 1,  1,  1,  -1, -1, 1,  -1, -1, -1, 1,  1,  1,  -1, -1, -1, -1, -1, -1, -1};

inline bool IsPilot(int carrier) { return std::abs(carrier) == 7 || std::abs(carrier) == 21; }

/// The points of BPSK, QPSK, 16-QAM and 64-QAM with unit mean power, in the generator's order: the first
/// quadrant, and then its turns by 90 degrees.
inline std::complex<double> ConstellationPoint(int order, int index) {
  if (order == 2) return index == 0 ? 1.0 : -1.0;
  std::complex<double> point = 0.0;
  double scale = 0.0;
  for (int size = 4, offset = 1; size <= order; size *= 4, offset *= 2) {
    point += std::complex<double>(offset, offset);
    for (int turns = index * 4 / size % 4; turns > 0; --turns) point *= std::complex<double>(0.0, 1.0);
    scale += 2.0 * offset * offset;
  }
  return point / std::sqrt(scale);
}

/// The SIGNAL field, decoded.
struct SignalField {
  int rate; // R1 as the top bit
  int reserved;
  int length;
  bool evenParity; // over all bits
  bool zeroTail;
  int errors; // coded bits that differ from those of the decoded field
};

/// Decodes 48 bits in the order of the carriers: deinterleaves, and finds the nearest path of the code of
/// generators 133 and 171 through its 64 states, from state 0 (A. J. Viterbi, 1967). The tail is decoded like
/// any other bits.
inline SignalField DecodeSignal(const std::array<int, 48> &received) {
  std::array<int, 48> coded{};
  for (std::size_t row = 0; row < 3; ++row) {
    for (std::size_t column = 0; column < 16; ++column) coded[row * 16 + column] = received[column * 3 + row];
  }
  // A state holds the last six bits, the newest on top, so that the generators read as they are written.
  constexpr int kFar = 1000;
  struct Path {
    int distance = kFar;
    std::array<int, 24> bits{};
  };
  std::vector<Path> paths(64);
  paths[0].distance = 0;
  for (std::size_t step = 0; step < 24; ++step) {
    std::vector<Path> next(64);
    for (unsigned state = 0; state < 64; ++state) {
      for (unsigned bit = 0; bit < 2; ++bit) {
        const unsigned window = bit << 6 | state;
        Path path = paths[state];
        path.distance += (std::popcount(window & 0133U) % 2 != coded[2 * step]) +
                         (std::popcount(window & 0171U) % 2 != coded[2 * step + 1]);
        path.bits[step] = static_cast<int>(bit);
        if (path.distance < next[window >> 1].distance) next[window >> 1] = path;
      }
    }
    paths = next;
  }
  const Path &best = *std::min_element(paths.begin(), paths.end(),
                                       [](const Path &a, const Path &b) { return a.distance < b.distance; });
  SignalField field{};
  int sum = 0;
  for (std::size_t i = 0; i < 24; ++i) {
    const int bit = best.bits[i];
    if (i < 4) field.rate = 2 * field.rate + bit;
    if (i >= 5 && i < 17) field.length += bit << (i - 5);
    sum += bit;
  }
  field.reserved = best.bits[4];
  field.evenParity = sum % 2 == 0;
  field.zeroTail = std::all_of(best.bits.begin() + 18, best.bits.end(), [](int bit) { return bit == 0; });
  field.errors = best.distance;
  return field;
}

/// Finds the burst in a record and reads its symbols.
class OfdmReceiver {
public:
  /// The carriers' spacing in Hz, and the guard interval as a fraction of a symbol.
  OfdmReceiver(const VecCplx32 &record, double sampleRate, double spacing = 312500.0, double guard = 0.25)
      : m_record(record), m_period(sampleRate / spacing), m_guard(guard) {
    FitCarriers();
    FindLongTraining();
    const OfdmSymbol first = Read(m_long), second = Read(m_long + m_period);
    for (std::size_t i = 0; i < 53; ++i) m_gains[i] = 0.5 * (first[i] + second[i]) * (1.0 * kLongSequence[i]);
  }

  /// The first sample of the burst: the short training field takes two and a half symbols, and the guard of
  /// the long one half a symbol.
  double Start() const { return m_long - 3.0 * m_period; }

  /// The place of symbol `index` behind its guard: SIGNAL is 0.
  double Place(int index) const { return m_long + (2.0 + m_guard + index * (1.0 + m_guard)) * m_period; }

  /// The last whole symbol in the record.
  int LastSymbol() const {
    int index = -1;
    while (Place(index + 1) + m_period <= m_record.GetSize()) ++index;
    return index;
  }

  /// What the way from generator to record does to each carrier, as the long training field shows it.
  const OfdmSymbol &Gains() const { return m_gains; }

  /// The carriers of symbol `index`, gains taken out.
  OfdmSymbol Symbol(int index) const { return Equalised(Place(index)); }

  /// The carriers of the short training field, gains taken out. They recur four times in a symbol.
  OfdmSymbol ShortTraining() const { return Equalised(m_long - 1.5 * m_period); }

  SignalField Signal() const {
    const OfdmSymbol symbol = Symbol(0);
    std::array<int, 48> bits{};
    std::size_t count = 0;
    for (int k = -26; k <= 26; ++k) {
      if (k != 0 && !IsPilot(k)) bits[count++] = symbol[static_cast<std::size_t>(k + 26)].real() > 0.0;
    }
    return DecodeSignal(bits);
  }

private:
  static double Turn(int carrier, double periods) {
    return 2.0 * std::numbers::pi * std::remainder(carrier * periods, 1.0);
  }

  std::complex<double> Sample(int i) const {
    const Cplx32 x = m_record[i];
    return {static_cast<double>(x.re), static_cast<double>(x.im)};
  }

  // Fit[k][m] gives carrier k from sample m of a window: the inverse of the carriers' products with each
  // other, times the conjugate carriers.
  void FitCarriers() {
    const auto count = static_cast<std::size_t>(m_period);
    std::vector<std::complex<double>> products; // of carriers that differ by -52 to 52
    for (int difference = -52; difference <= 52; ++difference) {
      std::complex<double> sum = 0.0;
      for (std::size_t m = 0; m < count; ++m) {
        sum += std::polar(1.0, Turn(difference, static_cast<double>(m) / m_period));
      }
      products.push_back(sum);
    }
    std::vector<std::vector<std::complex<double>>> rows(53, std::vector<std::complex<double>>(53 + count));
    for (std::size_t k = 0; k < 53; ++k) {
      for (std::size_t l = 0; l < 53; ++l) rows[k][l] = products[52 + l - k];
      for (std::size_t m = 0; m < count; ++m) {
        rows[k][53 + m] = std::polar(1.0, -Turn(static_cast<int>(k) - 26, static_cast<double>(m) / m_period));
      }
    }
    // Gauss and Jordan; the diagonal dominates.
    for (std::size_t pivot = 0; pivot < 53; ++pivot) {
      const auto scale = 1.0 / rows[pivot][pivot];
      for (auto &x : rows[pivot]) x *= scale;
      for (std::size_t other = 0; other < 53; ++other) {
        const auto factor = rows[other][pivot];
        if (other == pivot || std::abs(factor) < 1e-17) continue;
        for (std::size_t i = pivot; i < rows[other].size(); ++i) rows[other][i] -= factor * rows[pivot][i];
      }
    }
    for (auto &row : rows) m_fit.emplace_back(row.begin() + 53, row.end());
  }

  // Where two long training symbols fit best, from the first sample of half the record's rms on.
  void FindLongTraining() {
    double power = 0.0;
    for (int i = 0; i < m_record.GetSize(); ++i) power += std::norm(Sample(i));
    int begin = 0;
    while (begin < m_record.GetSize() && std::norm(Sample(begin)) * m_record.GetSize() < 0.25 * power)
      ++begin;

    const int length = static_cast<int>(2.0 * m_period);
    std::vector<std::complex<double>> training(static_cast<std::size_t>(length));
    for (int m = 0; m < length; ++m) {
      for (int k = -26; k <= 26; ++k) {
        training[static_cast<std::size_t>(m)] +=
            std::polar(1.0 * kLongSequence[k + 26], -Turn(k, m / m_period));
      }
    }
    const int end = std::min(begin + static_cast<int>(5.0 * m_period), m_record.GetSize() - length);
    double best = 0.0;
    for (int i = begin; i < end; ++i) {
      std::complex<double> product = 0.0;
      for (int m = 0; m < length; ++m) product += Sample(i + m) * training[static_cast<std::size_t>(m)];
      if (std::norm(product) <= best) continue;
      best = std::norm(product);
      m_long = i;
    }
    if (best == 0.0) throw std::runtime_error("no burst in the record");
  }

  // The carriers of the symbol that starts at `place`, from samples that start half a guard earlier, so that
  // a filter may reach to either side; in the long training field the guard is half a symbol.
  OfdmSymbol Read(double place) const {
    const int first = static_cast<int>(std::ceil(place - 0.5 * std::min(m_guard, 0.5) * m_period));
    OfdmSymbol symbol{};
    for (int k = -26; k <= 26; ++k) {
      const auto &fit = m_fit[static_cast<std::size_t>(k + 26)];
      std::complex<double> value = 0.0;
      for (std::size_t m = 0; m < fit.size(); ++m) value += fit[m] * Sample(first + static_cast<int>(m));
      symbol[static_cast<std::size_t>(k + 26)] = value * std::polar(1.0, Turn(k, (place - first) / m_period));
    }
    return symbol;
  }

  OfdmSymbol Equalised(double place) const {
    OfdmSymbol symbol = Read(place);
    for (std::size_t i = 0; i < 53; ++i) {
      if (i != 26) symbol[i] /= m_gains[i];
    }
    return symbol;
  }

  const VecCplx32 &m_record;
  double m_period; // samples per symbol without guard
  double m_guard;
  double m_long = 0.0; // place of the first long training symbol
  std::vector<std::vector<std::complex<double>>> m_fit;
  OfdmSymbol m_gains{};
};

} // namespace QORN::test

#endif
