#include "qorn/infra/Complex.h"

#include <cmath>

#include "qorn/infra/TargetLib.h"

namespace QORN {

// Sine, cosine and arctangent are those of the kernels and not the C library's, whose last bits differ
// between machines: a phasor made here equals one made by an array call.

Cplx64 Complex::Cplx(double angle) {
  Cplx64 phasor;
  TargetLib::Expj_64f(&angle, &phasor, 1);
  return phasor;
}

Cplx32 Complex::Cplx(float angle) { return ToCplx32(Cplx(static_cast<double>(angle))); }

namespace {

template <class C> C MulConjOf(const C &a, const C &b) {
  const auto c = -b.im;
  return {a.re * b.re - a.im * c, a.im * b.re + a.re * c};
}

template <class C> C RecipOf(const C &x) {
  const auto d = x.im * x.im + x.re * x.re;
  return {x.re / d, -x.im / d};
}

} // namespace

Cplx32 Complex::MulConj(const Cplx32 &a, const Cplx32 &b) { return MulConjOf(a, b); }
Cplx64 Complex::MulConj(const Cplx64 &a, const Cplx64 &b) { return MulConjOf(a, b); }

float Complex::MagSqr(const Cplx32 &x) { return x.re * x.re + x.im * x.im; }
double Complex::MagSqr(const Cplx64 &x) { return x.re * x.re + x.im * x.im; }

float Complex::Mag(const Cplx32 &x) { return static_cast<float>(std::sqrt(static_cast<double>(MagSqr(x)))); }
double Complex::Mag(const Cplx64 &x) { return std::sqrt(MagSqr(x)); }

double Complex::Phase(const Cplx64 &x) {
  double phase;
  TargetLib::Atan2_64f(&x.im, &x.re, &phase, 1);
  return phase;
}

float Complex::Phase(const Cplx32 &x) { return static_cast<float>(Phase(ToCplx64(x))); }

Cplx32 Complex::Recip(const Cplx32 &x) { return RecipOf(x); }
Cplx64 Complex::Recip(const Cplx64 &x) { return RecipOf(x); }

} // namespace QORN
