// Lower bounds of sums of magnitudes of products, without the products.
#ifndef QORN_SRC_INFRA_FOURIER_MAGNITUDES_H
#define QORN_SRC_INFRA_FOURIER_MAGNITUDES_H

#include <array>
#include <cstddef>

#include "WorkArray.h"

namespace QORN::fourier {

/// How many values of a signal are larger than each of a few steps, a fraction of its root mean square to a
/// little more than that.
///
/// Of m products a b, if p of the |a| are above s and q of the |b| above t, at least p + q - m have both. So
/// the sum of all |a b| is at least the sum over all pairs of steps of (s - s') (t - t') max(p + q - m, 0),
/// s' and t' being the next lower steps, or 0. For Gaussian noise that is a fifth of the sum.
class Magnitudes {
public:
  static constexpr std::ptrdiff_t kBlock = 64;
  static constexpr std::size_t kSteps = 3;

  Magnitudes() = default;

  /// Of `len` values whose 2-norm is about `norm`; of the last len % kBlock ones nothing is known. Throws
  /// QORNException 11001 if there is no memory.
  Magnitudes(const double *x, std::ptrdiff_t len, double norm, Life life);

  /// Some outputs of a convolution y[n] = sum over i of h[i] x[n - i], x being 0 outside 0 to xLen - 1. The
  /// magnitudes of x go as far as these outputs reach.
  struct Outputs {
    std::ptrdiff_t first, count;
    std::ptrdiff_t tapCount;
    bool isReversed; ///< the magnitudes are those of the taps from the last one to h[0]
    std::ptrdiff_t xLen;
    std::ptrdiff_t xFirst; ///< the place of the first value whose magnitude is known
  };

  /// Whether the lower bound of every one of these outputs is at least `least`.
  static bool AllReach(double least, const Outputs &outputs, const Magnitudes &taps, const Magnitudes &x);

private:
  // Values from `first` on to `end`, of which whole blocks are looked at.
  struct Range {
    std::ptrdiff_t first, end;
  };
  std::array<double, kSteps> Above(Range range) const;

  double m_unit = 0;
  WorkArray<std::ptrdiff_t> m_counts; // of the values before block i, those above step j
};

} // namespace QORN::fourier

#endif
