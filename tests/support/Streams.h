// What tests of the streaming filters share: signals, pieces of them, and the filters' sums in a wider type.
#ifndef QORN_TESTS_SUPPORT_STREAMS_H
#define QORN_TESTS_SUPPORT_STREAMS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"

namespace QORN::test {

template <class E> using VectorOf = std::conditional_t<std::is_same_v<E, float>, VecReal32, VecCplx32>;

struct LongPair {
  long double re, im;
};
inline LongPair Lengthen(float x) { return {static_cast<long double>(x), 0}; }
inline LongPair Lengthen(Cplx32 x) {
  return {static_cast<long double>(x.re), static_cast<long double>(x.im)};
}
inline bool IsFinite(float x) { return std::isfinite(x); }
inline bool IsFinite(Cplx32 x) { return std::isfinite(x.re) && std::isfinite(x.im); }

/// The filter as it is defined, a sample at a time, with a delay line of its own.
template <class Tap, class E> class ReferenceFir {
public:
  explicit ReferenceFir(const std::vector<Tap> &taps) : m_taps(taps), m_line(taps.size(), E{}) {}

  void Step(E x) {
    if (m_line.empty()) return;
    m_line.pop_back();
    m_line.insert(m_line.begin(), x);
  }

  /// The output, and the sums of its products' magnitudes: with real taps, for each part.
  LongPair Output(LongPair &sizes) const {
    LongPair sum{0, 0};
    sizes = {0, 0};
    for (std::size_t k = 0; k < m_taps.size(); ++k) {
      const LongPair h = Lengthen(m_taps[k]), x = Lengthen(m_line[k]);
      sum.re += h.re * x.re - h.im * x.im;
      sum.im += h.re * x.im + h.im * x.re;
      if constexpr (std::is_same_v<Tap, float>) {
        sizes.re += std::fabs(h.re * x.re);
        sizes.im += std::fabs(h.re * x.im);
      } else {
        sizes.re += std::hypot(h.re, h.im) * std::hypot(x.re, x.im);
        sizes.im = sizes.re;
      }
    }
    return sum;
  }

  testing::AssertionResult Gives(E got) const {
    LongPair sizes;
    const LongPair sum = Output(sizes), y = Lengthen(got);
    const long double bound = 4 * static_cast<long double>(std::numeric_limits<float>::epsilon());
    const long double re = std::fabs(y.re - sum.re), im = std::fabs(y.im - sum.im);
    if (re <= bound * sizes.re && im <= bound * sizes.im) return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "errors " << re << " of " << sizes.re << ", " << im << " of " << sizes.im;
  }

private:
  std::vector<Tap> m_taps;
  std::vector<E> m_line;
};

/// Lengths of pieces that add up to `length`: mostly short ones, now and then one of up to `longest`.
inline std::vector<int> Pieces(int length, int longest, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<int> pieces;
  while (length > 0) {
    const unsigned most = static_cast<unsigned>(random() % 3 == 0 ? longest : std::min(longest, 9));
    const int piece = std::min(length, static_cast<int>(random() % most) + 1);
    pieces.push_back(piece);
    length -= piece;
  }
  return pieces;
}

/// What lies from `first` on.
template <class V> V Part(const V &vec, int first, int count) {
  V part(count);
  for (int i = 0; i < count; ++i) part[i] = vec[first + i];
  return part;
}

} // namespace QORN::test

#endif
