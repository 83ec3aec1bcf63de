#include "CplxProduct.h"
#include "Unroll.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// One element's operation per type; the loops below are shared.
inline short Saturated16(int x) { return static_cast<short>(x > 32767 ? 32767 : x < -32768 ? -32768 : x); }

inline short Sum(short a, short b) { return Saturated16(a + b); }
inline short Difference(short a, short b) { return Saturated16(a - b); }
inline short Product(short a, short b) { return Saturated16(a * b); }

// In 32 bits, without widening: an overflow shows in the signs, and the limit it sticks at is the first
// operand's.
inline int Limit(int sign) { return static_cast<int>(2147483647U + (static_cast<unsigned>(sign) >> 31)); }
inline int Sum(int a, int b) {
  const int sum = static_cast<int>(static_cast<unsigned>(a) + static_cast<unsigned>(b));
  return ((a ^ sum) & (b ^ sum)) < 0 ? Limit(a) : sum;
}
inline int Difference(int a, int b) {
  const int difference = static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
  return ((a ^ b) & (a ^ difference)) < 0 ? Limit(a) : difference;
}
inline int Product(int a, int b) {
  const long long product = static_cast<long long>(a) * b;
  return static_cast<int>(product > 2147483647LL    ? 2147483647LL
                          : product < -2147483648LL ? -2147483648LL
                                                    : product);
}

inline float Sum(float a, float b) { return a + b; }
inline float Difference(float a, float b) { return a - b; }
inline float Product(float a, float b) { return a * b; }
inline double Sum(double a, double b) { return a + b; }
inline double Difference(double a, double b) { return a - b; }
inline double Product(double a, double b) { return a * b; }

template <class C> inline C CplxSum(C a, C b) { return {a.re + b.re, a.im + b.im}; }
template <class C> inline C CplxDifference(C a, C b) { return {a.re - b.re, a.im - b.im}; }
inline Cplx32 Sum(Cplx32 a, Cplx32 b) { return CplxSum(a, b); }
inline Cplx64 Sum(Cplx64 a, Cplx64 b) { return CplxSum(a, b); }
inline Cplx32 Difference(Cplx32 a, Cplx32 b) { return CplxDifference(a, b); }
inline Cplx64 Difference(Cplx64 a, Cplx64 b) { return CplxDifference(a, b); }
inline Cplx32 Product(Cplx32 a, Cplx32 b) { return CplxProduct(a, b); }
inline Cplx64 Product(Cplx64 a, Cplx64 b) { return CplxProduct(a, b); }

template <class T> void AddC(T val, T *srcDst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) srcDst[i] = Sum(srcDst[i], val);
}
template <class T> void SubC(T val, T *srcDst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) srcDst[i] = Difference(srcDst[i], val);
}
template <class T> void MulC(T val, T *srcDst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) srcDst[i] = Product(srcDst[i], val);
}

// By one number, whose negated imaginary part turns the difference of products into a sum: both parts of a
// result are then one pattern, which no instruction has to choose between.
template <class C> inline void MulCplxC(C val, C *srcDst, int len) {
  const auto re = val.re, im = val.im, minusIm = -val.im;
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) {
    const C x = srcDst[i];
    srcDst[i] = {Rounded(x.re * re) + Rounded(x.im * minusIm), Rounded(x.im * re) + Rounded(x.re * im)};
  }
}

template <class T> void Add(const T *src, T *srcDst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) srcDst[i] = Sum(srcDst[i], src[i]);
}
template <class T> void Sub(const T *src, T *srcDst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) srcDst[i] = Difference(srcDst[i], src[i]);
}
template <class T> void Mul(const T *src, T *srcDst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) srcDst[i] = Product(srcDst[i], src[i]);
}
template <class T> void MulTo(const T *src1, const T *src2, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = Product(src1[i], src2[i]);
}

} // namespace

#define QORN_FAMILY "Arithmetic.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
