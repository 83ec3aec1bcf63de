// Conversions of units on plain arrays, for what works block by block.
#ifndef QORN_SRC_MATH_DECIBELS_H
#define QORN_SRC_MATH_DECIBELS_H

namespace QORN {

/// What UnitConversion::Volt2dBV makes of each element, bit for bit. dst may be src.
void Volt2dBV(const float *src, float *dst, int len);

} // namespace QORN

#endif
