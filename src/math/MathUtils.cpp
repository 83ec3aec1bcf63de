#include "qorn/math/MathUtils.h"

#include <cmath>

#include "Elementwise.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/math/VecUtils.h"

namespace QORN {

namespace {

template <class T> T SignOf(T x) { return static_cast<T>((x > T{0}) - (x < T{0})); }

template <class V> auto PowerOf(ElementOf<V> exponent) {
  using T = ElementOf<V>;
  return [exponent](const T *src, T *dst, int n) { Kernels<T>::Powx(src, exponent, dst, n); };
}

// The kernel takes its exponents from another place than it writes to.
template <class V> void VectorPow10(V &dst, const V &src) {
  using T = ElementOf<V>;
  if (&dst == &src) {
    MapThroughScratch(dst, src, Kernels<T>::Pow10);
  } else {
    Map(dst, src, Kernels<T>::Pow10);
  }
}

template <class V, class Kernel>
void VectorLog(V &dst, const V &src, MathUtils::Log0CheckType check, Kernel log) {
  if (check != MathUtils::Log0Check) return Map(dst, src, log);
  using T = ElementOf<V>;
  MapThroughScratch(dst, src, [log](T *x, T *result, int n) {
    Kernels<T>::AddC(static_cast<T>(MathUtils::kLogZeroOffset), x, n);
    log(x, result, n);
  });
}

template <class Kernel> double GuardedLog(double x, Kernel log) {
  if (x < 0.0) return MathUtils::kLogNegativeResult;
  if (x == 0.0) x += MathUtils::kLogZeroOffset;
  return MapScalar<double>(x, log);
}

// kernel over the real and imaginary parts alike.
template <class V, class Kernel> void MapParts(V &vec, Kernel kernel) {
  ForScalars(vec.GetSize(), [&](int first, int scalars) {
    auto *x = &vec.GetPtr(first)->re;
    kernel(x, x, scalars);
  });
}

template <class V, class Kernel> void MapRamp(V &dst, int n, double step, double start, Kernel kernel) {
  using T = ElementOf<V>;
  dst.Ramp(n, static_cast<T>(start), static_cast<T>(step));
  kernel(dst.GetPtr(), dst.GetPtr(), n);
}

template <class V, class T> void Tone(V &dst, int n, T freq, T phase) {
  dst.Resize(n);
  Kernels<ElementOf<V>>::Tone(dst.GetPtr(), n, T{1}, freq, &phase);
}

} // namespace

double MathUtils::Sign(double x) { return SignOf(x); }
float MathUtils::Sign(float x) { return SignOf(x); }
int MathUtils::Sign(int x) { return SignOf(x); }

double MathUtils::Fmod(double a, double b) { return std::fmod(a, b); }
float MathUtils::Fmod(float a, float b) {
  return static_cast<float>(std::fmod(static_cast<double>(a), static_cast<double>(b)));
}

double MathUtils::LogB(double base, double x) { return Ln(x) / Ln(base); }
double MathUtils::Log2(double x) { return LogB(2.0, x); }

double MathUtils::Atan2(double y, double x) {
  double angle = 0.0;
  Kernels<double>::Atan2(&y, &x, &angle, 1);
  return angle;
}

double MathUtils::Pow(double x, double y) { return MapScalar<double>(x, PowerOf<VecReal64>(y)); }

void MathUtils::Expj_EP(VecCplx32 &dst, int n, double freq, double phase) {
  VecCplx64 tone;
  Expj(tone, n, freq, phase);
  VecUtils::Convert(dst, tone);
}

// The members that bind a kernel of their own name, form by form.
// clang-format off
#define OUT_OF_PLACE(name, V) void MathUtils::name(V &dst, const V &src) { Map(dst, src, Kernels<ElementOf<V>>::name); }
#define IN_PLACE(name, V) void MathUtils::name(V &vec) { Map(vec, vec, Kernels<ElementOf<V>>::name); }
#define SCALAR(name, T) T MathUtils::name(T x) { return MapScalar<T>(x, Kernels<T>::name); }

OUT_OF_PLACE(Abs, VecInt32) QORN_REALS(OUT_OF_PLACE, Abs)
QORN_REALS(IN_PLACE, Abs) SCALAR(Abs, float) SCALAR(Abs, double)
QORN_REALS(OUT_OF_PLACE, Sqr) QORN_CPLXS(OUT_OF_PLACE, Sqr)
QORN_REALS(IN_PLACE, Sqr) QORN_CPLXS(IN_PLACE, Sqr) SCALAR(Sqr, double)
QORN_REALS(OUT_OF_PLACE, Sqrt) QORN_CPLXS(OUT_OF_PLACE, Sqrt)
QORN_REALS(IN_PLACE, Sqrt) QORN_CPLXS(IN_PLACE, Sqrt) SCALAR(Sqrt, double)
QORN_REALS(OUT_OF_PLACE, Exp) QORN_REALS(IN_PLACE, Exp) SCALAR(Exp, float) SCALAR(Exp, double)
QORN_REALS(OUT_OF_PLACE, Cos) SCALAR(Cos, double)
QORN_REALS(OUT_OF_PLACE, Sin) SCALAR(Sin, double)
QORN_REALS(OUT_OF_PLACE, Atan) SCALAR(Atan, double)
QORN_CPLXS(IN_PLACE, Conj)
QORN_CPLXS(IN_PLACE, ConjFlip)
SCALAR(Pow10, double)

#define MAGNITUDE(V, C) \
  void MathUtils::Abs(V &dst, const C &src) { Map(dst, src, Kernels<ElementOf<C>>::Mag); } \
  ElementOf<V> MathUtils::Abs(ElementOf<C> x) { return MapScalar<ElementOf<V>>(x, Kernels<ElementOf<C>>::Mag); }
MAGNITUDE(VecReal32, VecCplx32)
MAGNITUDE(VecReal64, VecCplx64)

#define RAW(name, T) void MathUtils::name(T *x, int n) { Kernels<T>::name(x, x, n); }
#define PARTS(name, V, T) void MathUtils::name(V &vec) { MapParts(vec, Kernels<T>::name); }
#define ROUNDING(name) \
  QORN_REALS(IN_PLACE, name) PARTS(name, VecCplx32, float) PARTS(name, VecCplx64, double) \
  RAW(name, float) RAW(name, double) SCALAR(name, float) SCALAR(name, double)
ROUNDING(Round)
ROUNDING(Trunc)
ROUNDING(Floor)
ROUNDING(Ceil)

#define RAMP(name, V) \
  void MathUtils::name(V &dst, int n, double step, double start) { \
    MapRamp(dst, n, step, start, Kernels<ElementOf<V>>::name); \
  }
QORN_REALS(RAMP, Cos)
QORN_REALS(RAMP, Sin)

#define TWO_SOURCES(name, V) \
  void MathUtils::name(V &dst, const V &y, const V &x) { Map2(dst, y, x, Kernels<ElementOf<V>>::name); }
QORN_REALS(TWO_SOURCES, Atan2)

#define POWER(name, V) \
  void MathUtils::name(V &dst, const V &src, ElementOf<V> exponent) { Map(dst, src, PowerOf<V>(exponent)); } \
  void MathUtils::name(V &vec, ElementOf<V> exponent) { Map(vec, vec, PowerOf<V>(exponent)); }
QORN_REALS(POWER, Pow)

#define TEN(name, V) \
  void MathUtils::name(V &dst, const V &src) { VectorPow10(dst, src); } \
  void MathUtils::name(V &vec) { VectorPow10(vec, vec); }
QORN_REALS(TEN, Pow10)

#define LOG(name, V) \
  void MathUtils::name(V &dst, const V &src, Log0CheckType check) { \
    VectorLog(dst, src, check, Kernels<ElementOf<V>>::name); \
  } \
  void MathUtils::name(V &vec, Log0CheckType check) { VectorLog(vec, vec, check, Kernels<ElementOf<V>>::name); }
#define LOGARITHM(name) \
  QORN_REALS(LOG, name) double MathUtils::name(double x) { return GuardedLog(x, Kernels<double>::name); }
LOGARITHM(Log10)
LOGARITHM(Ln)

#define PHASORS(C, V) \
  void MathUtils::Expj(C &dst, const V &phase) { Map(dst, phase, Kernels<ElementOf<V>>::Expj); } \
  void MathUtils::Expj(C &dst, int n, ElementOf<V> freq, ElementOf<V> phase) { Tone(dst, n, freq, phase); } \
  ElementOf<C> MathUtils::Expj(ElementOf<V> phase) { \
    return MapScalar<ElementOf<C>>(phase, Kernels<ElementOf<V>>::Expj); \
  }
PHASORS(VecCplx32, VecReal32)
PHASORS(VecCplx64, VecReal64)

#define COPY(name, V) \
  void MathUtils::name(V &dst, const V &src, int srcStart) { VecUtils::Copy(dst, src, srcStart, -1); } \
  void MathUtils::name(V &dst, int count, const V &src, int srcStart) { VecUtils::Copy(dst, src, srcStart, count); } \
  void MathUtils::name(V &dst, int dstStart, int count, const V &src, int srcStart) { \
    VecUtils::Insert(dst, dstStart, src, srcStart, count); \
  }
QORN_REALS(COPY, Copy)
QORN_CPLXS(COPY, Copy)
COPY(Copy, VecInt32)
// clang-format on

} // namespace QORN
