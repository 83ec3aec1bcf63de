// The error function.
#ifndef QORN_SRC_INFRA_KERNELS_ERRORFUNCTION_H
#define QORN_SRC_INFRA_KERNELS_ERRORFUNCTION_H

#include "Exponential.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Near 0 an odd polynomial, further out 1 - e^(ln erfc(x)): the logarithm of erfc is as smooth as a parabola,
// and what it errs by counts erfc-fold only.

struct Erf64 {
  QORN_INLINE static double Fast(double x, bool &served) {
    const double size = Magnitude(x);
    const double u = size * size;
    const double small = size + MulAdd(size, Polynomial(u, kErfSmall64), 0.125 * size);

    const double end = size > 6 ? 6 : size; // 1 to the last place from 5.93 on
    const double v = end - 0.5;
    const double linear = v * kErfSlopeHigh;
    const double bent = v * v * Polynomial(v, kErfLarge64);
    const double sum = kErfLogHigh + linear, log = sum + bent;
    const double lost = ((kErfLogHigh - sum) + linear) + ((sum - log) + bent);
    const double low = ProductError(v, kErfSlopeHigh, linear) + MulAdd(v, kErfSlopeLow, kErfLogLow);
    const ExpParts parts = SplitExp(log, lost + low);
    const double scale = PowerOfTwo(parts.shifted);
    const double large = (1 - scale) - scale * parts.fraction;
    served = Either(size > 0x1p-960, size == 0); // below, x / 8 could round
    return WithSignOf(size > 0.5 ? large : small, x);
  }
  static double Full(double x) {
    bool served;
    return x != x ? x : Fast(x * 0x1p200, served) * 0x1p-200;
  }
};

struct Erf32 {
  QORN_INLINE static float Fast(float argument) {
    const double x = static_cast<double>(argument);
    const double size = Magnitude(x);
    const double small = size * Polynomial(size * size, kErfSmall32);
    const double end = size > 4 ? 4 : size; // 1 to the last place from 3.92 on
    const double large = 1 - Exp2ForFloat(Polynomial(end - 1, kErfLarge32));
    return static_cast<float>(WithSignOf(size > 1 ? large : small, x));
  }
};

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
