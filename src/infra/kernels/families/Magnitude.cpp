#include "CplxProduct.h"
#include "Unroll.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

inline float Absolute(float x) { return __builtin_fabsf(x); }
inline double Absolute(double x) { return __builtin_fabs(x); }
// The lowest int has no negative, and its neighbour's is the highest int.
inline int Absolute(int x) {
  const int above = x > -2147483647 ? x : -2147483647;
  return above < 0 ? -above : above;
}
template <class T> void Abs(const T *src, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = Absolute(src[i]);
}
template <class T> void Abs(T *srcDst, int len) { Abs(srcDst, srcDst, len); }

inline float Root(float x) { return __builtin_sqrtf(x); }
inline double Root(double x) { return __builtin_sqrt(x); }

template <class T> void MagOfParts(const T *re, const T *im, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = Root(SquareSum(re[i], im[i]));
}
template <class C, class T> void Mag(const C *src, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = Root(SquareSum(src[i].re, src[i].im));
}
template <class C, class T> void MagSqr(const C *src, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = SquareSum(src[i].re, src[i].im);
}

inline float Square(float x) { return x * x; }
inline double Square(double x) { return x * x; }
inline Cplx32 Square(Cplx32 x) { return CplxProduct(x, x); }
inline Cplx64 Square(Cplx64 x) { return CplxProduct(x, x); }
template <class T> void Sqr(const T *src, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = Square(src[i]);
}
template <class T> void Sqr(T *srcDst, int len) { Sqr(srcDst, srcDst, len); }

template <class T> void Sqrt(const T *src, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = Root(src[i]);
}

// The principal root (p, q) of (x, y) from its larger part, large = sqrt((|z| + |x|) / 2), which suffers no
// cancellation, and the other one, y / (2 large) in magnitude. The special values are those of csqrt in C99,
// Annex G: an infinite y makes p infinite whatever x is, and an infinite x decides over a y that is no
// number.
struct Root64 {
  double re;
  double im;
};
inline Root64 PrincipalRoot(double x, double y, double scale, double unscale) {
  const double infinity = __builtin_inf();
  const double width = __builtin_fabs(x * scale), height = __builtin_fabs(y * scale);
  const double magnitude = __builtin_sqrt(SquareSum(width, height));
  const double modulus = width == infinity || height == infinity ? infinity : magnitude;
  const double large = __builtin_sqrt((modulus + width) * 0.5) * unscale;
  const double small = large == 0.0 ? y : y / (large + large);
  const double re = x < 0.0 ? __builtin_fabs(small) : large;
  const double im = x < 0.0 ? __builtin_copysign(large, y) : small;
  return {height == infinity ? infinity : re, height == infinity ? y : im};
}

// In double nothing of a float overflows or vanishes when squared.
void Sqrt(const Cplx32 *src, Cplx32 *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) {
    const Root64 root =
        PrincipalRoot(static_cast<double>(src[i].re), static_cast<double>(src[i].im), 1.0, 1.0);
    dst[i] = {static_cast<float>(root.re), static_cast<float>(root.im)};
  }
}

// Scaled by a power of four where the squares would overflow or vanish.
void Sqrt(const Cplx64 *src, Cplx64 *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) {
    const double x = __builtin_fabs(src[i].re), y = __builtin_fabs(src[i].im);
    const double larger = x > y ? x : y;
    const bool high = larger > 0x1p500, low = larger < 0x1p-500;
    const Root64 root = PrincipalRoot(src[i].re, src[i].im,
                                      high  ? 0x1p-600
                                      : low ? 0x1p600
                                            : 1.0,
                                      high  ? 0x1p300
                                      : low ? 0x1p-300
                                            : 1.0);
    dst[i] = {root.re, root.im};
  }
}

template <class T> void Sqrt(T *srcDst, int len) { Sqrt(srcDst, srcDst, len); }

} // namespace

#define QORN_FAMILY "Magnitude.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
