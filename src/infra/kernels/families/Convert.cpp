#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// What the language converts as wanted: widened without loss, or rounded to nearest, ties to even.
template <class S, class D> void Convert(const S *src, D *dst, int len) {
  for (Index i = 0; i < len; ++i) dst[i] = static_cast<D>(src[i]);
}

// Between the limits a conversion to integer is defined, and it truncates. Not-a-number counts as 0.
template <class T> inline T Clamped(T x, T low, T high) {
  const T number = x == x ? x : T(0);
  return number < low ? low : number > high ? high : number;
}

inline int Truncated(double x, int /*target*/) {
  return static_cast<int>(Clamped(x, -2147483648.0, 2147483647.0));
}
inline short Truncated(float x, short /*target*/) {
  return static_cast<short>(static_cast<int>(Clamped(x, -32768.0F, 32767.0F)));
}
// No float lies between the largest int and 2^31, so the upper limit is a case of its own.
inline int Truncated(float x, int /*target*/) {
  const int inside = static_cast<int>(Clamped(x, -2147483648.0F, 2147483520.0F));
  return x >= 2147483648.0F ? 2147483647 : inside;
}

template <class S, class D> void Truncate(const S *src, D *dst, int len) {
  for (Index i = 0; i < len; ++i) dst[i] = Truncated(src[i], D());
}

// 2^exponent from -149, the smallest denormal, to 127.
inline float PowerOfTwo(int exponent) {
  const std::uint32_t bits =
      exponent < -126 ? 1U << (exponent + 149) : static_cast<std::uint32_t>(exponent + 127) << 23;
  float power;
  __builtin_memcpy(&power, &bits, sizeof power);
  return power;
}

constexpr float kLowest(short) { return -32768.0F; }
constexpr float kHighest(short) { return 32767.0F; }
constexpr float kLowest(unsigned short) { return 0.0F; }
constexpr float kHighest(unsigned short) { return 65535.0F; }

// The largest scale that leaves anything of a float is 149, the smallest that does not lift every float but 0
// beyond the limits is above -254, which takes two factors. Products by powers of two are exact here, unless
// they overflow, which saturates anyway, or underflow, which rounds to 0 anyway.
template <class D> void ConvertScaled(const float *src, D *dst, int len, int mode, int scale) {
  const int exponent = scale > 149 ? -149 : scale < -254 ? 254 : -scale;
  const float factor = PowerOfTwo(exponent > 127 ? 127 : exponent);
  const float rest = PowerOfTwo(exponent > 127 ? exponent - 127 : 0);
  // Adding and subtracting 1.5 * 2^23 rounds to nearest, ties to even, what is below 2^22.
  const float rounder = mode == 0 ? 0.0F : 12582912.0F;
  for (Index i = 0; i < len; ++i) {
    const float clamped = Clamped(src[i] * factor * rest, kLowest(D()), kHighest(D()));
    dst[i] = static_cast<D>(static_cast<int>((clamped + rounder) - rounder));
  }
}

// Rounding to integral values in one text for all levels: the lowest has no instruction for it. Adding and
// subtracting the value from which on all numbers are integral leaves a neighbour, which a comparison mends.
constexpr float kIntegral(float) { return 8388608.0F; }
constexpr double kIntegral(double) { return 4503599627370496.0; }
inline float Magnitude(float x) { return __builtin_fabsf(x); }
inline double Magnitude(double x) { return __builtin_fabs(x); }
inline float WithSign(float x, float sign) { return __builtin_copysignf(x, sign); }
inline double WithSign(double x, double sign) { return __builtin_copysign(x, sign); }

// The integral part of x >= 0 below kIntegral.
template <class T> inline T IntegralPart(T x) {
  const T near = (x + kIntegral(T())) - kIntegral(T());
  return near > x ? near - T(1) : near;
}

template <class T> inline T Truncated(T x) {
  const T magnitude = Magnitude(x);
  return magnitude < kIntegral(T()) ? WithSign(IntegralPart(magnitude), x) : x;
}

// The fraction that is cut off is exact, so the comparison with a half is, too.
template <class T> inline T Rounding(T x) {
  const T magnitude = Magnitude(x);
  const T part = IntegralPart(magnitude);
  const T nearest = magnitude - part >= T(0.5) ? part + T(1) : part;
  return magnitude < kIntegral(T()) ? WithSign(nearest, x) : x;
}

template <class T> void Round(const T *src, T *dst, int len) {
  for (Index i = 0; i < len; ++i) dst[i] = Rounding(src[i]);
}
template <class T> void Trunc(const T *src, T *dst, int len) {
  for (Index i = 0; i < len; ++i) dst[i] = Truncated(src[i]);
}
template <class T> void Floor(const T *src, T *dst, int len) {
  for (Index i = 0; i < len; ++i) {
    const T part = Truncated(src[i]);
    dst[i] = part > src[i] ? part - T(1) : part;
  }
}
template <class T> void Ceil(const T *src, T *dst, int len) {
  for (Index i = 0; i < len; ++i) {
    const T x = src[i];
    const T part = Truncated(x);
    // With the sign of x, since ceil of -0.5 is -0.
    dst[i] = part < x ? part + T(1) : part;
  }
}

} // namespace

#define QORN_FAMILY "Convert.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
