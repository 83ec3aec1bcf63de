#include "qorn/math/UnitConversion.h"

#include "Elementwise.h"
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

// Vector forms: one step over n elements at x. Logarithms and powers leave their results in dst, which is x
// or does not overlap it; a power needs the second.
template <class T> struct Block {
  T *x, *dst;
  int n;

  Block Add(T c) const { return Kernels<T>::AddC(c, x, n), *this; }
  Block Sub(T c) const { return Kernels<T>::SubC(c, x, n), *this; }
  Block Mul(T c) const { return Kernels<T>::MulC(c, x, n), *this; }
  Block Div(T c) const { return Kernels<T>::DivC(c, x, n), *this; }
  Block Sqr() const { return Kernels<T>::Sqr(x, x, n), *this; }
  Block Sqrt() const { return Kernels<T>::Sqrt(x, x, n), *this; }
  Block Log10() const {
    Kernels<T>::AddC(static_cast<T>(MathUtils::kLogZeroOffset), x, n);
    return Kernels<T>::Log10(x, dst, n), Block{dst, dst, n};
  }
  Block Pow10() const { return Kernels<T>::Pow10(x, dst, n), Block{dst, dst, n}; }
};

template <class T> Block(T *, T *, int) -> Block<T>;

// A scalar form that is its vector form on one element.
template <class Form, class T> T InPlace(T x) {
  Form::Steps(Block{&x, &x, 1});
  return x;
}

template <class Form, class V> void Vector(V &dst, const V &src) {
  if constexpr (Form::kElementary) {
    MapThroughScratch(dst, src, [](auto *x, auto *result, int n) { Form::Steps(Block{x, result, n}); });
  } else {
    MapInSteps(dst, src, [](auto *x, int n) { Form::Steps(Block{x, x, n}); });
  }
}

} // namespace

// What a row of the dictionary becomes: a struct that holds its two formulas, and the members.
#define QORN_FORM(name, elementary, scalar, steps)                                                           \
  namespace {                                                                                                \
  namespace form {                                                                                           \
  struct name {                                                                                              \
    static constexpr bool kElementary = elementary;                                                          \
    template <class T> static T Scalar(T x) { return scalar; }                                               \
    template <class T> static void Steps(Block<T> block) { block.steps; }                                    \
  };                                                                                                         \
  }                                                                                                          \
  }
#define QORN_FORMS_OF(name, other, V)                                                                        \
  ElementOf<V> UnitConversion::name(ElementOf<V> x) { return form::other::Scalar(x); }                       \
  void UnitConversion::name(V &dst, const V &src) { Vector<form::other>(dst, src); }

#define QORN_SAME(name, other) QORN_FORMS_OF(name, other, VecReal32) QORN_FORMS_OF(name, other, VecReal64)
#define QORN_ELEMENTARY(name, scalar, steps) QORN_FORM(name, true, scalar, steps) QORN_SAME(name, name)
#define QORN_LINEAR(name, scalar, steps) QORN_FORM(name, false, scalar, steps) QORN_SAME(name, name)
#define QORN_STEPS(name, steps) QORN_LINEAR(name, InPlace<name>(x), steps)
#define QORN_STEPS_64(name, steps)                                                                           \
  QORN_FORM(name, false, InPlace<name>(x), steps) QORN_FORMS_OF(name, name, VecReal64)
#define QORN_IN_PLACE(name)                                                                                  \
  void UnitConversion::name(VecReal32 &vec) { Vector<form::name>(vec, vec); }                                \
  void UnitConversion::name(VecReal64 &vec) { Vector<form::name>(vec, vec); }

#include "UnitConversion.inc"

} // namespace QORN
