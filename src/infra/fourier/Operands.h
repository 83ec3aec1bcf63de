// The operands of convolutions, by type: parts, sizes, direct sums; and the bound of what transforms add.
#ifndef QORN_SRC_INFRA_FOURIER_OPERANDS_H
#define QORN_SRC_INFRA_FOURIER_OPERANDS_H

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>

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
