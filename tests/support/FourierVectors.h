// Random vectors, and the reference transform of a vector; for tests of the transform classes.
#ifndef QORN_TESTS_SUPPORT_FOURIERVECTORS_H
#define QORN_TESTS_SUPPORT_FOURIERVECTORS_H

#include <cstring>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "support/FourierReference.h"
#include "support/Vectors.h"

namespace QORN::test {

template <class C> LongComplex ToLongComplex(const C &x) {
  if constexpr (std::is_class_v<C>) {
    return {static_cast<long double>(x.re), static_cast<long double>(x.im)};
  } else {
    return static_cast<long double>(x);
  }
}

/// n normally distributed values.
template <class V> V NoiseVector(int n, unsigned seed = 1) {
  std::mt19937 generator(seed);
  std::normal_distribution<double> normal;
  V vec(n);
  for (int i = 0; i < n; ++i) {
    if constexpr (std::is_class_v<ElementOf<V>>) {
      using T = decltype(ElementOf<V>::re);
      vec[i] = {static_cast<T>(normal(generator)), static_cast<T>(normal(generator))};
    } else {
      vec[i] = static_cast<ElementOf<V>>(normal(generator));
    }
  }
  return vec;
}

template <class V> std::vector<LongComplex> ToLongComplexVector(const V &vec) {
  std::vector<LongComplex> wide;
  for (int i = 0; i < vec.GetSize(); ++i) wide.push_back(ToLongComplex(ElementOf<V>(vec[i])));
  return wide;
}

/// The relative error of `got` against scale times the reference transform of `x`.
template <class Out, class In>
double TransformError(const Out &got, const In &x, int sign, long double scale) {
  std::vector<LongComplex> expected = ReferenceTransform(ToLongComplexVector(x), sign);
  for (LongComplex &value : expected) value *= scale;
  return static_cast<double>(RelativeError(ToLongComplexVector(got), expected));
}

/// Equal lengths and equal bits.
template <class V> bool SameBits(const V &a, const V &b) {
  return a.GetSize() == b.GetSize() &&
         (a.GetSize() == 0 || std::memcmp(a.GetPtr(), b.GetPtr(),
                                          sizeof(*a.GetPtr()) * static_cast<std::size_t>(a.GetSize())) == 0);
}

} // namespace QORN::test

#endif
