// Conversions of units on plain arrays, for what works block by block.
#ifndef QORN_SRC_MATH_DECIBELS_H
#define QORN_SRC_MATH_DECIBELS_H

#include "qorn/infra/Cplx.h"

namespace QORN {

/// What UnitConversion::Volt2dBV makes of the magnitude of each element, bit for bit. src and dst must not
/// overlap.
void MagTodBV(const Cplx32 *src, float *dst, int len);

} // namespace QORN

#endif
