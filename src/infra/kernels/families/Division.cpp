#include "CplxProduct.h"
#include "Unroll.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

template <class T> void DivC(T val, T *srcDst, int len) {
  if (val == T(0)) return;
  const T factor = T(1) / val;
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) srcDst[i] = srcDst[i] * factor;
}

template <class C, class T> inline void DivCplxC(C val, C *srcDst, int len, T one) {
  const T square = SquareSum(val.re, val.im);
  if (square == T(0)) return;
  const T r = one / square;
  const C factor = {val.re * r, -(val.im * r)};
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) srcDst[i] = CplxProduct(srcDst[i], factor);
}
void DivC(Cplx32 val, Cplx32 *srcDst, int len) { DivCplxC(val, srcDst, len, 1.0F); }
void DivC(Cplx64 val, Cplx64 *srcDst, int len) { DivCplxC(val, srcDst, len, 1.0); }

// The array forms tell whether a divisor was zero.
template <class T> bool Div(const T *src, T *srcDst, int len) {
  int zero = 0;
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) {
    const T divisor = src[i];
    zero |= divisor == T(0);
    srcDst[i] = srcDst[i] / divisor;
  }
  return zero != 0;
}

// (a * conj(b)) / |b|^2 in double: the squares of floats neither overflow nor vanish there, and their
// products are exact. Without a divisor the parts themselves are divided by zero.
bool Div(const Cplx32 *src, Cplx32 *srcDst, int len) {
  int zero = 0;
  for (Index i = 0; i < len; ++i) {
    const double re = static_cast<double>(src[i].re), im = static_cast<double>(src[i].im);
    const double a = static_cast<double>(srcDst[i].re), b = static_cast<double>(srcDst[i].im);
    const double square = SquareSum(re, im);
    const bool none = square == 0.0;
    zero |= none;
    const double r = 1.0 / square;
    srcDst[i].re = static_cast<float>((none ? a : Rounded(a * re) + Rounded(b * im)) * r);
    srcDst[i].im = static_cast<float>((none ? b : Rounded(b * re) - Rounded(a * im)) * r);
  }
  return zero != 0;
}

// A power of two that brings the larger part of a number into the middle of double's range, if it is not
// there: squares and products of numbers so scaled neither overflow nor vanish. The root is what goes with
// it.
struct Scaling {
  double factor;
  double root;
};
inline Scaling ToMiddle(double re, double im) {
  const double x = __builtin_fabs(re), y = __builtin_fabs(im);
  const double larger = x > y ? x : y;
  return larger > 0x1p500    ? Scaling{0x1p-768, 0x1p-384}
         : larger < 0x1p-500 ? Scaling{0x1p768, 0x1p384}
                             : Scaling{1.0, 1.0};
}

// (a * conj(b)) / |b|^2, with both scaled first. The factors are powers of two and change no digit.
bool DivScaled(const Cplx64 *src, Cplx64 *srcDst, Index len) {
  int zero = 0;
  for (Index i = 0; i < len; ++i) {
    const Scaling divisor = ToMiddle(src[i].re, src[i].im);
    const Scaling dividend = ToMiddle(srcDst[i].re, srcDst[i].im);
    const double re = src[i].re * divisor.factor, im = src[i].im * divisor.factor;
    const double a = srcDst[i].re * dividend.factor, b = srcDst[i].im * dividend.factor;
    const double square = SquareSum(re, im);
    const bool none = square == 0.0;
    zero |= none;
    // What undoes the scaling may overflow or vanish as a whole only where the result does, so in two halves.
    const double half = divisor.root / dividend.root;
    srcDst[i].re = (none ? a : Rounded(a * re) + Rounded(b * im)) / square * half * half;
    srcDst[i].im = (none ? b : Rounded(b * re) - Rounded(a * im)) / square * half * half;
  }
  return zero != 0;
}

#if defined(__AVX2__)
constexpr Index kChunk = 16;

// Whether no number of a chunk needs scaling; a dividend of zero needs none either.
inline bool InMiddle(const Cplx64 *src, const Cplx64 *srcDst) {
  int outside = 0;
  for (Index i = 0; i < kChunk; ++i) {
    const double re = __builtin_fabs(src[i].re), im = __builtin_fabs(src[i].im);
    const double a = __builtin_fabs(srcDst[i].re), b = __builtin_fabs(srcDst[i].im);
    const double divisor = re > im ? re : im, dividend = a > b ? a : b;
    outside |= !(divisor >= 0x1p-500) | !(divisor <= 0x1p500);
    outside |= (!(dividend >= 0x1p-500) & (dividend != 0.0)) | !(dividend <= 0x1p500);
  }
  return outside == 0;
}
#endif

// Factors of 1 are left out, which does not change a bit. Registers of two numbers gain less than the look at
// the operands takes.
bool Div(const Cplx64 *src, Cplx64 *srcDst, int len) {
  bool zero = false;
  Index done = 0;
#if defined(__AVX2__)
  for (; done + kChunk <= len; done += kChunk) {
    const Cplx64 *const divisors = src + done;
    Cplx64 *const quotients = srcDst + done;
    if (!InMiddle(divisors, quotients)) {
      zero |= DivScaled(divisors, quotients, kChunk);
      continue;
    }
    Cplx64 q[kChunk];
    for (Index i = 0; i < kChunk; ++i) {
      const Cplx64 a = quotients[i], b = divisors[i];
      const double square = SquareSum(b.re, b.im);
      q[i] = {(Rounded(a.re * b.re) + Rounded(a.im * b.im)) / square,
              (Rounded(a.im * b.re) - Rounded(a.re * b.im)) / square};
    }
    __builtin_memcpy(quotients, q, sizeof q);
  }
#endif
  return DivScaled(src + done, srcDst + done, len - done) || zero;
}

// difference * 2^-scale in integers: from a scale of 1 on, adding a half less one, and one more if the digit
// that stays last is odd, rounds to nearest, ties to even. A scale of 17 leaves nothing of 16 bits, and one
// of -16 lifts all but 0 beyond the limit.
void SubCScaled(const unsigned short *src, unsigned short val, unsigned short *dst, int len, int scale) {
  if (scale > 0) {
    const int right = scale > 17 ? 17 : scale;
    const std::uint32_t almostHalf = (1U << (right - 1)) - 1U;
    QORN_UNROLLED
    for (Index i = 0; i < len; ++i) {
      const std::uint32_t difference = src[i] > val ? static_cast<std::uint32_t>(src[i] - val) : 0U;
      dst[i] = static_cast<unsigned short>((difference + almostHalf + ((difference >> right) & 1U)) >> right);
    }
  } else {
    const int left = scale < -16 ? 16 : -scale;
    QORN_UNROLLED
    for (Index i = 0; i < len; ++i) {
      const std::uint32_t difference = src[i] > val ? static_cast<std::uint32_t>(src[i] - val) : 0U;
      const std::uint32_t shifted = difference << left;
      dst[i] = static_cast<unsigned short>(shifted > 65535U ? 65535U : shifted);
    }
  }
}

// The divisor val * 2^scale is exact in double. A quotient that is no tie lies at least 2^-18 away from one,
// so its rounding to double cannot make it a tie. Adding and subtracting 1.5 * 2^52 rounds to nearest, ties
// to even.
void DivCScaled(unsigned short val, unsigned short *srcDst, int len, int scale) {
  if (val == 0) return;
  if (scale > 16 || scale < -31) {
    const unsigned short all = scale > 0 ? 0 : 65535;
    QORN_UNROLLED
    for (Index i = 0; i < len; ++i) srcDst[i] = all;
    return;
  }
  const double power = static_cast<double>(std::uint64_t{1} << (scale < 0 ? -scale : scale));
  const double divisor = scale < 0 ? val / power : val * power;
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) {
    const double quotient = static_cast<double>(srcDst[i]) / divisor;
    const double limited = quotient > 65535.0 ? 65535.0 : quotient;
    const double rounded = (limited + 6755399441055744.0) - 6755399441055744.0;
    srcDst[i] = static_cast<unsigned short>(static_cast<int>(rounded));
  }
}

} // namespace

#define QORN_FAMILY "Division.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
