#include "qorn/math/UnitConversion.h"

#include "Decibels.h"
#include "Elementwise.h"
#include "infra/kernels/Levels.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/math/MathUtils.h"

namespace QORN {

namespace {

// The constants in the width of the form that uses them. Some have fewer digits than they could, and two that
// mean the same differ in their last ones: results that were recorded with them stay comparable.
template <class T> constexpr T kOhm = T{50};
template <class T> constexpr T kPerOhm = static_cast<T>(0.02);
template <class T> constexpr T kVoltAt0dBm = static_cast<T>(0.22360679774998);
template <class T> constexpr T kdBmTodBV = static_cast<T>(13.01029995663981);
template <class T> constexpr T kdBmTodBmA = static_cast<T>(13.0102999566398);
template <class T> constexpr T kdBmTodBmV = static_cast<T>(46.9897000433602);
template <class T> constexpr T kdBmTodBuV = static_cast<T>(106.9897000433602);
template <class T> constexpr T kdBmTodBuA = static_cast<T>(73.0102999566398);
template <class T> constexpr T kField = static_cast<T>(51.5266223748352);
template <class T> constexpr T kRadPerDeg = static_cast<T>(0.017453292519943);
template <class T> constexpr T kDegPerRad = static_cast<T>(57.29577951308232);
constexpr double kdBpTTodBuVm = 49.5;

// Scalar forms: the guarded logarithm and the power of ten, both in double.
template <class T> double Wide(T x) { return static_cast<double>(x); }
template <class T> T Narrow(double x) { return static_cast<T>(x); }
template <class T> double G(T x) { return MathUtils::Log10(Wide(x)); }
template <class T> double P(T x) { return MathUtils::Pow10(Wide(x)); }

// Vector forms of arithmetic: one step over n elements in place.
template <class T> struct Block {
  T *x;
  int n;

  Block Add(T c) const { return Kernels<T>::AddC(c, x, n), *this; }
  Block Sub(T c) const { return Kernels<T>::SubC(c, x, n), *this; }
  Block Mul(T c) const { return Kernels<T>::MulC(c, x, n), *this; }
  Block Div(T c) const { return Kernels<T>::DivC(c, x, n), *this; }
  Block Sqr() const { return Kernels<T>::Sqr(x, x, n), *this; }
  Block Sqrt() const { return Kernels<T>::Sqrt(x, x, n), *this; }
};

// What a step of a logarithm or of a power of ten becomes where there is none: x + kNone is x, also for -0.
template <class T> constexpr T kNone = static_cast<T>(-0.0);

template <class T> constexpr auto kToDecibel = &kernels::Table::ToDecibel_64f;
template <> constexpr auto kToDecibel<float> = &kernels::Table::ToDecibel_32f;
template <class T> constexpr auto kFromDecibel = &kernels::Table::FromDecibel_64f;
template <> constexpr auto kFromDecibel<float> = &kernels::Table::FromDecibel_32f;

// log10(gain x + offset) scale + shift over an array.
template <class T> auto ToDecibel(T gain, T scale, T shift) {
  return [=](const T *src, T *dst, int n) {
    constexpr T offset = static_cast<T>(MathUtils::kLogZeroOffset);
    (kernels::active->*kToDecibel<T>)(src, dst, n, gain, offset, scale, shift);
  };
}

// 10 ^ ((x + shift) / divisor) gain over an array, the division as a product with the rounded reciprocal.
template <class T> auto FromDecibel(T shift, T divisor, T gain) {
  return [=](const T *src, T *dst, int n) {
    (kernels::active->*kFromDecibel<T>)(src, dst, n, shift, T{1} / divisor, gain);
  };
}

} // namespace

// What a row of the dictionary becomes: a struct that holds its two formulas, and the members.
#define QORN_FORM(name, scalar, ...)                                                                         \
  namespace {                                                                                                \
  namespace form {                                                                                           \
  struct name {                                                                                              \
    template <class T> static T Scalar(T x) { return scalar; }                                               \
    template <class V> static void Vector(V &dst, const V &src) {                                            \
      using T = ElementOf<V>;                                                                                \
      __VA_ARGS__;                                                                                           \
    }                                                                                                        \
  };                                                                                                         \
  }                                                                                                          \
  }
#define QORN_LINEAR_FORM(name, scalar, steps)                                                                \
  QORN_FORM(name, scalar, MapInSteps(dst, src, [](T *x, int n) { Block<T>{x, n}.steps; }))
#define QORN_FORMS_OF(name, other, V)                                                                        \
  ElementOf<V> UnitConversion::name(ElementOf<V> x) { return form::other::Scalar(x); }                       \
  void UnitConversion::name(V &dst, const V &src) { form::other::Vector(dst, src); }

#define QORN_SAME(name, other) QORN_FORMS_OF(name, other, VecReal32) QORN_FORMS_OF(name, other, VecReal64)
#define QORN_TO_LOG(name, scalar, ...)                                                                       \
  QORN_FORM(name, scalar, Map(dst, src, ToDecibel<T>(__VA_ARGS__))) QORN_SAME(name, name)
#define QORN_FROM_LOG(name, scalar, ...)                                                                     \
  QORN_FORM(name, scalar, Map(dst, src, FromDecibel<T>(__VA_ARGS__))) QORN_SAME(name, name)
#define QORN_LINEAR(name, scalar, steps) QORN_LINEAR_FORM(name, scalar, steps) QORN_SAME(name, name)
#define QORN_STEPS(name, steps) QORN_LINEAR(name, (Block<T>{&x, 1}.steps, x), steps)
#define QORN_STEPS_64(name, steps)                                                                           \
  QORN_LINEAR_FORM(name, (Block<T>{&x, 1}.steps, x), steps) QORN_FORMS_OF(name, name, VecReal64)
#define QORN_IN_PLACE(name)                                                                                  \
  void UnitConversion::name(VecReal32 &vec) { form::name::Vector(vec, vec); }                                \
  void UnitConversion::name(VecReal64 &vec) { form::name::Vector(vec, vec); }

#include "UnitConversion.inc"

void MagTodBV(const Cplx32 *src, float *dst, int len) {
  kernels::active->MagToDecibel_32fc(src, dst, len, static_cast<float>(MathUtils::kLogZeroOffset), 20.0F);
}

} // namespace QORN
