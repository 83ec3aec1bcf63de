// The complex product and sum of squares that the families share, each step rounded to the element's type.
#ifndef QORN_SRC_INFRA_KERNELS_CPLXPRODUCT_H
#define QORN_SRC_INFRA_KERNELS_CPLXPRODUCT_H

#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

template <class C> inline C CplxProduct(C a, C b) {
  return {Rounded(a.re * b.re) - Rounded(a.im * b.im), Rounded(a.re * b.im) + Rounded(a.im * b.re)};
}

template <class T> inline T SquareSum(T re, T im) { return Rounded(re * re) + Rounded(im * im); }

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
