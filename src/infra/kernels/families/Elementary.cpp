// Elementary functions. Each is our own, since the C library's last bits vary from machine to machine: float
// forms through double arithmetic, or in float where that is cheaper and, as in the double forms, with the
// leading terms in two parts.
#include "Arctangent.h"
#include "Circular.h"
#include "ErrorFunction.h"
#include "Exponential.h"
#include "Logarithm.h"
#include "Power.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

template <class Op, class R, class A> void Apply(const A *src, R *dst, int len) { Map(Op(), dst, len, src); }

template <class Op, class R, class A> void Apply2(const A *src1, const A *src2, R *dst, int len) {
  Map(Op(), dst, len, src1, src2);
}

template <class Power, class T> void PowX(const T *src, T val, T *dst, int len) {
  Map(PowerBy<Power, T>{val}, dst, len, src);
}

using Ln64 = Log64<LnBase>;
using Log10_64 = Log64<Log10Base>;

void CartToPolar(const Cplx32 *src, float *mag, float *phase, int len) {
  for (Index i = 0; i < len; ++i) {
    mag[i] = __builtin_sqrtf(Rounded(src[i].re * src[i].re) + Rounded(src[i].im * src[i].im));
  }
  Map(Phase32(), phase, len, src);
}

} // namespace

#define QORN_FAMILY "Elementary.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
