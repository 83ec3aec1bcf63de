// The table of an arbitrary-rate resampler, as the class lays it out and its kernels read it.
#ifndef QORN_SRC_INFRA_KERNELS_RESAMPLE_H
#define QORN_SRC_INFRA_KERNELS_RESAMPLE_H

#include <cstddef>
#include <cstdint>

namespace QORN::kernels {

/// One wing h of a symmetric filter, point j standing j / nStep input samples from the centre, and the same
/// points in rows.
///
/// A place on the filter is v = p + nStep * y + a in table points from the centre, negative on the far side,
/// with 0 <= p < nStep the phase and a the part of a point. All samples that meet the filter at one phase
/// take the interpolated values of one row, value(y) + a * slope(y) for -wing <= y < wing, and these stand
/// side by side. There are two rows to a phase: row 2 p for places on a point (a not above kOnPoint, either
/// way), where either wing blends the point with its outer neighbour, and row 2 p + 1 for places between two
/// points. Where a wing has ended value and slope are zero.
struct ResampleTable {
  const float *h;        // points 0 to length, one past the wing
  std::ptrdiff_t length; // points of the wing
  int nStep;
  float gain;
  const float *rows;     // rows[2 * row * pitch + wing + y] is a value, pitch floats on is its slope
  std::ptrdiff_t wing;   // length / nStep, rounded up
  std::ptrdiff_t stride; // 2 * wing, rounded up to a multiple of kResampleLanes
  std::ptrdiff_t pitch;  // stride; for a ratio below 1, 2 * wing + kResampleZeros
};

/// Places closer than this to a table point count as on it, so that the rounding of a time does not decide
/// between two points.
inline constexpr double kOnPoint = 1e-5;

/// Taps, and in the narrowing kernel outputs, that are treated side by side.
inline constexpr int kResampleLanes = 16;

/// Zeros before and behind the 2 * wing elements of each row for the narrowing kernel.
inline constexpr std::ptrdiff_t kResampleZeros = 34;

/// Rows that the narrowing kernel has scratch memory for, with zeros before, between and behind them.
inline constexpr std::ptrdiff_t kResampleRows = 16;

/// The instants start + j * step, each rounded once, or nearly so: a sum of steps would drift away over a
/// long record. The step is split so that its product with an int is exact.
struct Instants {
  [[gnu::always_inline]] Instants(double first, double distance) : start(first) {
    std::uint64_t bits;
    __builtin_memcpy(&bits, &distance, sizeof bits);
    bits &= ~((std::uint64_t{1} << 31) - 1);
    __builtin_memcpy(&high, &bits, sizeof bits);
    low = distance - high;
  }

  [[gnu::always_inline]] double operator[](std::ptrdiff_t j) const {
    const auto n = static_cast<double>(j);
    const double product = n * high;
    const double sum = start + product;
    const double added = sum - start;
    const double lost = (start - (sum - added)) + (product - added);
    return sum + (lost + n * low);
  }

  double start, high, low;
};

} // namespace QORN::kernels

#endif
