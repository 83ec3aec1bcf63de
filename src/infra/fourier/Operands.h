// The operands of convolutions, by type: parts, sizes, direct sums; and the bound of what transforms add.
#ifndef QORN_SRC_INFRA_FOURIER_OPERANDS_H
#define QORN_SRC_INFRA_FOURIER_OPERANDS_H

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "infra/kernels/Levels.h"
#include "qorn/infra/Cplx.h"

namespace QORN::fourier {

template <class T> struct Element {
  using Part = T;
  static constexpr int kParts = 1;
};
template <> struct Element<Cplx32> {
  using Part = float;
  static constexpr int kParts = 2;
};

inline float Conjugate(float x) { return x; }
inline double Conjugate(double x) { return x; }
inline Cplx32 Conjugate(Cplx32 x) { return {x.re, -x.im}; }
inline double Re(float x) { return static_cast<double>(x); }
inline double Re(double x) { return x; }
inline double Re(Cplx32 x) { return static_cast<double>(x.re); }
inline double Im(float) { return 0; }
inline double Im(double) { return 0; }
inline double Im(Cplx32 x) { return static_cast<double>(x.im); }

/// A lower bound of the magnitude.
template <class T> double Size(T x) { return std::max(std::fabs(Re(x)), std::fabs(Im(x))); }
template <class T> bool Finite(T x) { return std::isfinite(Re(x)) && std::isfinite(Im(x)); }
template <class T> bool IsNaN(T x) { return std::isnan(Re(x)) || std::isnan(Im(x)); }

inline void Direct(const float *taps, int count, const float *x, int len, float *dst, int dstLen, int lag) {
  kernels::active->CrossCorr_32f(taps, count, x, len, dst, dstLen, lag);
}
inline void Direct(const double *taps, int count, const double *x, int len, double *dst, int dstLen,
                   int lag) {
  kernels::active->CrossCorr_64f(taps, count, x, len, dst, dstLen, lag);
}
inline void Direct(const Cplx32 *taps, int count, const Cplx32 *x, int len, Cplx32 *dst, int dstLen,
                   int lag) {
  kernels::active->CrossCorr_32fc(taps, count, x, len, dst, dstLen, lag);
}

inline double Energy(const float *x, std::ptrdiff_t len) { return kernels::active->ConvEnergy_32f(x, len); }
inline double Energy(const double *x, std::ptrdiff_t len) { return kernels::active->ConvEnergy_64f(x, len); }

/// The unit of the roundings of transforms in double.
inline constexpr double kUnit = 0x1p-53;

/// ceil(log2 n), n >= 1.
constexpr int CeilLog2(int n) { return static_cast<int>(std::bit_width(static_cast<unsigned>(n - 1))); }

/// log2 of 2^k times 1, 3, 5 or 9.
inline double Log2(std::ptrdiff_t n) {
  constexpr double kOdd[] = {0, 0, 0, 1.584962500721156, 0, 2.321928094887362, 0, 0, 0, 3.169925001442312};
  const int power = std::countr_zero(static_cast<std::size_t>(n));
  return power + kOdd[n >> power];
}

/// The relative error of a complex transform in double; see LongConvolution.cpp.
constexpr double TransformError(int length) {
  const bool isPower = (length & (length - 1)) == 0;
  return (isPower ? 4 : 8) * CeilLog2(length) * kUnit;
}

/// Whether operands of this sum of squares can be trusted to transforms, or results of the product of two
/// such sums: the squares of doubles must neither overflow nor vanish.
template <class T> bool InRange(double energy) {
  return std::is_same_v<T, double> ? energy > 1e-200 && energy < 1e200 : std::isfinite(energy);
}

/// The number of values before the first one whose size is not at least `least`.
template <class T> std::ptrdiff_t CountLarge(const T *x, std::ptrdiff_t count, double least) {
  if constexpr (std::is_same_v<T, double>) {
    return kernels::active->ConvLarge_64f(x, count, least);
  } else {
    auto limit = static_cast<float>(least);
    if (static_cast<double>(limit) < least) limit = std::nextafter(limit, std::numeric_limits<float>::max());
    const auto *const parts = reinterpret_cast<const float *>(x);
    return Element<T>::kParts == 1 ? kernels::active->ConvLarge_32f(parts, count, limit)
                                   : kernels::active->ConvLarge_32fc(parts, count, limit);
  }
}

/// The share of 8 units of an operand's sum of magnitudes that transforms may err by: 7 units, and a little
/// less for what is not written out. The eighth is that of the result's own rounding.
template <class T>
constexpr double kShare = 6.9 / 2 *
                          static_cast<double>(std::numeric_limits<typename Element<T>::Part>::epsilon());

/// The bound of the error of each output of a cyclic convolution by transforms of the relative error
/// `transform`, given the 2-norms of the values and of the taps, and that of the outputs as `gained`.
inline double CyclicBound(double transform, double norm, double tapNorm, double gained) {
  return norm * (2 * transform + 8 * kUnit) * tapNorm + transform * gained;
}

} // namespace QORN::fourier

#endif
