// Correlations of which both operands go through one transform each.
#ifndef QORN_SRC_INFRA_FOURIER_WHOLECORRELATION_H
#define QORN_SRC_INFRA_FOURIER_WHOLECORRELATION_H

#include <cstddef>

#include "LongConvolution.h"

namespace QORN::fourier {

/// The length of the transforms that hold the whole of a correlation of so many taps and values at the least
/// estimated work; 0 if even that is estimated at `limit` nanoseconds or more. Lowers `limit` to the estimate
/// otherwise. T is float, double or Cplx32. Depends on its arguments alone.
template <class T> int WholeLength(std::ptrdiff_t taps, std::ptrdiff_t len, double &limit);

/// Computes the outputs, T being float or Cplx32, by transforms in double, both operands being filled up with
/// zeros to `length`, one of WholeLength or longer. Taps may be more than values. False if not every output
/// has been shown to be as exact as it must be, as when an operand is zero in long stretches, or not finite:
/// then the outputs are undefined. Throws QORNException 11001 if there is no memory.
template <class T> bool CorrelateWhole(const Correlation<T> &job, int length);

/// The same of the convolution y[n] = sum over k of taps[k] x[n - k], whose outputs are all wanted. T is
/// float or double.
template <class T> bool ConvolveWhole(const T *taps, int tapCount, const T *x, int len, T *dst, int length);

/// The first `early` and the last `late` outputs of that convolution, by their own operands alone.
void ConvolveEnds(const double *taps, int tapCount, const double *x, int len, double *dst,
                  std::ptrdiff_t early, std::ptrdiff_t late);

} // namespace QORN::fourier

#endif
