#include "CplxProduct.h"
#include "Registers.h"
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

// Complex numbers by the register: as many as it holds doubles, their real and imaginary parts apart. The
// order in which they stand in the lanes is undone when they are stored.
constexpr int kNumbers = kLanes<double, 8>;
using Doubles = Vec<double, kNumbers>;

struct Parts {
  Doubles re;
  Doubles im;
};

inline Doubles LoadWide(const double *x) { return Load<Doubles>(x); }
inline Doubles LoadWide(const float *x) { return Widened(Load<Vec<float, kNumbers>>(x)); }
inline void StoreNarrow(double *x, Doubles value) { Store(x, value); }
inline void StoreNarrow(float *x, Doubles value) {
  Store(x, __builtin_convertvector(value, Vec<float, kNumbers>));
}

template <int kUpper> inline Doubles Zip(Doubles a, Doubles b) {
  return Shuffle<GroupZipped<kNumbers, 2, kUpper>, kNumbers>(a, b);
}
template <class C> inline Parts LoadParts(const C *x) {
  const Doubles low = LoadWide(&x->re), high = LoadWide(&x->re + kNumbers);
  return {Zip<0>(low, high), Zip<1>(low, high)};
}
template <class C> inline void StoreParts(C *x, Parts value) {
  StoreNarrow(&x->re, Zip<0>(value.re, value.im));
  StoreNarrow(&x->re + kNumbers, Zip<1>(value.re, value.im));
}

using Words = Vec<std::int64_t, kNumbers>;

inline bool AnySign(Words x) {
#if defined(__AVX512F__)
  return _mm512_movepi64_mask(__builtin_bit_cast(__m512i, x)) != 0;
#elif defined(__AVX2__)
  return _mm256_movemask_pd(__builtin_bit_cast(__m256d, x)) != 0;
#else
  std::int64_t any = 0;
  for (int i = 0; i < kNumbers; ++i) any |= x[i];
  return any < 0;
#endif
}

// (a * conj(b)) / |b|^2 in double: the squares of floats neither overflow nor vanish there. Their products
// are exact, so that sums of them have the same bits, fused or not. Without a divisor the parts themselves
// are divided by zero. The result tells where.
inline Words DivBlock(const Cplx32 *src, Cplx32 *srcDst) {
  const Parts a = LoadParts(srcDst), b = LoadParts(src);
  const Doubles square = MulAdd(b.re, b.re, b.im * b.im), r = 1.0 / square;
  const Words none = square == 0.0;
  const Doubles re = MulAdd(a.re, b.re, a.im * b.im), im = MulSub(a.im, b.re, a.re * b.im);
  StoreParts(srcDst, {(none ? a.re : re) * r, (none ? a.im : im) * r});
  return none;
}
bool Div(const Cplx32 *src, Cplx32 *srcDst, int len) {
  const Index whole = len - len % kNumbers, rest = len - whole;
  Words none = {};
  for (Index i = 0; i < whole; i += kNumbers) none |= DivBlock(src + i, srcDst + i);
  if (rest > 0) {
    Cplx32 divisors[kNumbers], quotients[kNumbers] = {};
    for (Cplx32 &divisor : divisors) divisor = {1, 0};
    const std::size_t bytes = sizeof(Cplx32) * static_cast<std::size_t>(rest);
    __builtin_memcpy(divisors, src + whole, bytes);
    __builtin_memcpy(quotients, srcDst + whole, bytes);
    none |= DivBlock(divisors, quotients);
    __builtin_memcpy(srcDst + whole, quotients, bytes);
  }
  return AnySign(none);
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

// Whether a square is not that of a divisor in the middle of the range, or a dividend neither lies there nor
// is zero, in any lane. Not-a-number is outside too, or its scaling makes no difference. The less there is to
// do here the better: whatever does not divide waits for the divider's register.
inline std::int64_t BitsOfPower(int exponent) { return std::int64_t{exponent + 1023} << 52; }
#if defined(__AVX512F__)
inline unsigned Outside(__m512i bits, int low, int high, unsigned lanes) {
  const __m512i above = _mm512_sub_epi64(bits, _mm512_set1_epi64(BitsOfPower(low)));
  const __m512i most = _mm512_set1_epi64(BitsOfPower(high) - BitsOfPower(low));
  return _mm512_mask_cmpgt_epu64_mask(static_cast<__mmask8>(lanes), above, most);
}
inline bool AnyOutside(Doubles square, Parts a) {
  constexpr int kLargerMagnitude = 0xB;
  const __m512i larger = __builtin_bit_cast(__m512i, _mm512_range_pd(a.re, a.im, kLargerMagnitude));
  return (Outside(__builtin_bit_cast(__m512i, square), -999, 1000, 0xFF) |
          Outside(larger, -500, 500, _mm512_test_epi64_mask(larger, larger))) != 0;
}
#else
inline Words Outside(Words bits, int low, int high) {
  return (bits - BitsOfPower(low)) | (BitsOfPower(high) - bits);
}
inline bool AnyOutside(Doubles square, Parts a) {
  constexpr std::int64_t kMagnitude = 0x7FFFFFFFFFFFFFFF;
  const Words re = __builtin_bit_cast(Words, a.re) & kMagnitude;
  const Words im = __builtin_bit_cast(Words, a.im) & kMagnitude;
  const Words larger = re > im ? re : im;
  return AnySign(Outside(__builtin_bit_cast(Words, square), -999, 1000) |
                 (Outside(larger, -500, 500) & -larger));
}
#endif

// The same without the factors where all are 1.
inline bool DivBlock(const Cplx64 *src, Cplx64 *srcDst) {
  const Parts a = LoadParts(srcDst), b = LoadParts(src);
  const Doubles square = SquareSum(b.re, b.im);
  if (AnyOutside(square, a)) return false;
  const Doubles re = Rounded(a.re * b.re) + Rounded(a.im * b.im);
  const Doubles im = Rounded(a.im * b.re) - Rounded(a.re * b.im);
  StoreParts(srcDst, {re / square, im / square});
  return true;
}
bool Div(const Cplx64 *src, Cplx64 *srcDst, int len) {
  bool zero = false;
  Index done = 0;
  for (; done + kNumbers <= len; done += kNumbers) {
    if (!DivBlock(src + done, srcDst + done)) zero |= DivScaled(src + done, srcDst + done, kNumbers);
  }
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
