#include "Kernel.h"
#include "Unroll.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// What the language converts as wanted: widened without loss, or rounded to nearest, ties to even.
template <class S, class D> void Convert(const S *src, D *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = static_cast<D>(src[i]);
}

// Between its limits a conversion to integer is defined, and it truncates. The compiler must not know the
// limits: of constant ones, GCC converts the branches of the clamp instead of its result, and loses the
// minimum and maximum instructions.
template <class T> class Clamp {
public:
  Clamp(T low, T high) : m_low(low), m_high(high) { __asm__("" : "+m"(m_low), "+m"(m_high)); }

  // Not-a-number comes out as the lower limit.
  T operator()(T x) const {
    const T raised = Raised(x);
    return raised < m_high ? raised : m_high;
  }
  T Raised(T x) const { return x > m_low ? x : m_low; }

private:
  T m_low;
  T m_high;
};

void Truncate(const float *src, short *dst, int len) {
  const Clamp<float> clamp(-32768.0F, 32767.0F);
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) {
    const int inside = static_cast<int>(clamp(src[i]));
    dst[i] = static_cast<short>(src[i] == src[i] ? inside : 0);
  }
}
void Truncate(const double *src, int *dst, int len) {
  const Clamp<double> clamp(-2147483648.0, 2147483647.0);
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) {
    const int inside = static_cast<int>(clamp(src[i]));
    dst[i] = src[i] == src[i] ? inside : 0;
  }
}
// No float lies between the largest int and 2^31, from which on the upper limit is a case of its own.
void Truncate(const float *src, int *dst, int len) {
  const Clamp<float> clamp(-2147483648.0F, __builtin_inff());
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) {
    const float x = src[i], raised = clamp.Raised(x);
    const int number = x >= 2147483648.0F ? 2147483647 : static_cast<int>(raised);
    dst[i] = x == x ? number : 0;
  }
}

// 2^exponent from -149, the smallest denormal, to 127.
inline float PowerOfTwo(int exponent) {
  const std::uint32_t bits =
      exponent < -126 ? 1U << (exponent + 149) : static_cast<std::uint32_t>(exponent + 127) << 23;
  float power;
  __builtin_memcpy(&power, &bits, sizeof power);
  return power;
}

constexpr float Lowest(short) { return -32768.0F; }
constexpr float Highest(short) { return 32767.0F; }
constexpr float Lowest(unsigned short) { return 0.0F; }
constexpr float Highest(unsigned short) { return 65535.0F; }

// The largest scale that leaves anything of a float is 149, the smallest that does not lift every float but 0
// beyond the limits is above -254, which takes two factors. Products by powers of two are exact here, unless
// they overflow, which saturates anyway, or underflow, which rounds to 0 anyway.
template <class D> void ConvertScaled(const float *src, D *dst, int len, int mode, int scale) {
  const int exponent = scale > 149 ? -149 : scale < -254 ? 254 : -scale;
  const float factor = PowerOfTwo(exponent > 127 ? 127 : exponent);
  const float rest = PowerOfTwo(exponent > 127 ? exponent - 127 : 0);
  // Adding and subtracting 1.5 * 2^23 rounds to nearest, ties to even, what is below 2^22.
  const float rounder = mode == 0 ? 0.0F : 12582912.0F;
  const Clamp<float> clamp(Lowest(D()), Highest(D()));
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) {
    const float scaled = src[i] * factor * rest;
    const int inside = static_cast<int>((clamp(scaled) + rounder) - rounder);
    dst[i] = static_cast<D>(scaled == scaled ? inside : 0);
  }
}

inline float WithSign(float x, float sign) { return __builtin_copysignf(x, sign); }
inline double WithSign(double x, double sign) { return __builtin_copysign(x, sign); }

// Rounding toward zero keeps the sign, of zeros too.
#if defined(__SSE4_1__) || defined(__aarch64__)
inline float Integral(float x) { return __builtin_truncf(x); }
inline double Integral(double x) { return __builtin_trunc(x); }
inline float NotAbove(float x) { return __builtin_floorf(x); }
inline double NotAbove(double x) { return __builtin_floor(x); }
inline float NotBelow(float x) { return __builtin_ceilf(x); }
inline double NotBelow(double x) { return __builtin_ceil(x); }
#else
// From this value on all numbers are integral. Adding and subtracting it leaves a neighbour of what is below
// it, which a comparison mends.
constexpr float FirstIntegral(float) { return 8388608.0F; }
constexpr double FirstIntegral(double) { return 4503599627370496.0; }
inline float Magnitude(float x) { return __builtin_fabsf(x); }
inline double Magnitude(double x) { return __builtin_fabs(x); }
template <class T> inline T Integral(T x) {
  const T magnitude = Magnitude(x);
  const T near = (magnitude + FirstIntegral(T())) - FirstIntegral(T());
  const T part = near > magnitude ? near - T(1) : near;
  return magnitude < FirstIntegral(T()) ? WithSign(part, x) : x;
}
template <class T> inline T NotAbove(T x) {
  const T part = Integral(x);
  return part > x ? part - T(1) : part;
}
// A negative fraction gives a negative zero: what is cut off keeps its sign.
template <class T> inline T NotBelow(T x) {
  const T part = Integral(x);
  return part < x ? part + T(1) : part;
}
#endif

// The largest number below a half carries every fraction from a half on over the next integral value, and
// none below: a sum that is not exact is rounded to one on the right side.
constexpr float AlmostHalf(float) { return 0x1.fffffep-2F; }
constexpr double AlmostHalf(double) { return 0x1.fffffffffffffp-2; }

template <class T> void Round(const T *src, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = Integral(src[i] + WithSign(AlmostHalf(T()), src[i]));
}
template <class T> void Trunc(const T *src, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = Integral(src[i]);
}
template <class T> void Floor(const T *src, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = NotAbove(src[i]);
}
template <class T> void Ceil(const T *src, T *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = NotBelow(src[i]);
}

} // namespace

#define QORN_FAMILY "Convert.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
