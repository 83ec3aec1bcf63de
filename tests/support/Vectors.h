// Vectors from lists and back, so that a test reads as what goes in and what comes out.
#ifndef QORN_TESTS_SUPPORT_VECTORS_H
#define QORN_TESTS_SUPPORT_VECTORS_H

#include <cstddef>
#include <ostream>
#include <type_traits>
#include <utility>
#include <vector>

#include "qorn/infra/Cplx.h"

namespace QORN {

inline bool operator==(const Cplx32 &a, const Cplx32 &b) { return a.re == b.re && a.im == b.im; }
inline bool operator==(const Cplx64 &a, const Cplx64 &b) { return a.re == b.re && a.im == b.im; }
inline void PrintTo(const Cplx32 &x, std::ostream *out) { *out << '(' << x.re << ", " << x.im << ')'; }
inline void PrintTo(const Cplx64 &x, std::ostream *out) { *out << '(' << x.re << ", " << x.im << ')'; }

namespace test {

template <class V> using ElementOf = std::remove_reference_t<decltype(std::declval<V &>()[0])>;

/// A vector of the given elements.
template <class V> V Of(const std::vector<ElementOf<V>> &elements) {
  V vec(static_cast<int>(elements.size()));
  for (std::size_t i = 0; i < elements.size(); ++i) vec[static_cast<int>(i)] = elements[i];
  return vec;
}

/// The elements of a vector.
template <class V> std::vector<ElementOf<V>> List(const V &vec) {
  std::vector<ElementOf<V>> elements;
  for (int i = 0; i < vec.GetSize(); ++i) elements.push_back(*vec.GetPtr(i));
  return elements;
}

/// A small integer as an element; as a complex one with its negative as the imaginary part.
template <class T> T Element(int x) {
  if constexpr (std::is_class_v<T>) {
    using Part = decltype(T::re);
    return {static_cast<Part>(x), static_cast<Part>(-x)};
  } else {
    return static_cast<T>(x);
  }
}

/// A vector whose elements are told apart by small integers.
template <class V> V Numbers(const std::vector<int> &numbers) {
  std::vector<ElementOf<V>> elements;
  for (const int x : numbers) elements.push_back(Element<ElementOf<V>>(x));
  return Of<V>(elements);
}

} // namespace test
} // namespace QORN

#endif
