#include <gtest/gtest.h>

#include "support/KernelCheck.h"

namespace {

using namespace QORN;

// A pair of shorts is seen as one element (re, im) = (q, i).
TEST(KernelTable, ScaleQI_PairsAndOffsets_ScalesInDoubleAndRoundsOnce) {
  const double iOffset = 0.3, qOffset = -1.7, scale = static_cast<double>(2.5e-5F);
  const auto kernel = [&](const Cplx16 *pairs, Cplx32 *dst, int len) {
    kernels::active->ScaleQI(&pairs->re, dst, len, iOffset, qOffset, scale);
  };
  const auto reference = [&](Cplx16 pair) {
    volatile double i = static_cast<double>(pair.im) - iOffset, q = static_cast<double>(pair.re) - qOffset;
    return Cplx32{static_cast<float>(i * scale), static_cast<float>(q * scale)};
  };
  test::CheckElementwise<Cplx32, Cplx16>("ScaleQI", kernel, reference);
}

} // namespace
