// Arithmetic on a type so wide that rounding its result to the narrow type gives what one rounding of the
// exact result would give: at least twice the digits and two more. The independent half of many expected
// values.
#ifndef QORN_TESTS_SUPPORT_WIDE_H
#define QORN_TESTS_SUPPORT_WIDE_H

#include <cmath>
#include <limits>

#include "support/KernelCheck.h"

namespace QORN::test {

#if defined(__SIZEOF_FLOAT128__)
__extension__ using Quad = __float128;
#else
using Quad = long double;
static_assert(std::numeric_limits<Quad>::digits == 113);
#endif

template <class T> struct WideOf { using Type = Quad; };
template <> struct WideOf<float> { using Type = double; };
template <class T> using Wide = typename WideOf<T>::Type;

template <class T> Wide<T> W(T x) { return static_cast<Wide<T>>(x); }

// One correctly rounded step.
template <class T> T Plus(T a, T b) { return static_cast<T>(W(a) + W(b)); }
template <class T> T Minus(T a, T b) { return static_cast<T>(W(a) - W(b)); }
template <class T> T Times(T a, T b) { return static_cast<T>(W(a) * W(b)); }
template <class T> T Over(T a, T b) { return static_cast<T>(W(a) / W(b)); }

/// The complex product with each of its six steps rounded.
template <class C> C CplxTimes(C a, C b) {
  return {Minus(Times(a.re, b.re), Times(a.im, b.im)), Plus(Times(a.re, b.im), Times(a.im, b.re))};
}

/// The square root to the precision of Quad, by two steps of Newton's method from that of long double.
inline Quad Root(Quad x) {
  const auto start = static_cast<long double>(x);
  if (!(start > 0) || !std::isfinite(start)) return static_cast<Quad>(std::sqrt(start));
  Quad root = static_cast<Quad>(std::sqrt(start));
  for (int step = 0; step < 2; ++step) root = (root + x / root) / 2;
  return root;
}

} // namespace QORN::test

#endif
