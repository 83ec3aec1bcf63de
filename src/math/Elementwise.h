// The shape of every out-of-place function on elements, and lengths that cannot overflow.
#ifndef QORN_SRC_MATH_ELEMENTWISE_H
#define QORN_SRC_MATH_ELEMENTWISE_H

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>
#include <utility>

#include "infra/Checks.h"
#include "infra/KernelTraits.h"

namespace QORN {

template <class V> using ElementOf = std::remove_reference_t<decltype(std::declval<V &>()[0])>;

/// A length computed in 64 bits as an int: 0 for a negative one, the largest int for one that is too large,
/// which Resize then refuses like any other shortage of memory.
inline int Length(std::int64_t n) {
  return static_cast<int>(std::clamp<std::int64_t>(n, 0, std::numeric_limits<int>::max()));
}

/// Gives dst the length of src. A dst that is src keeps its view, narrowed or not.
template <class D, class S> void ResizeLike(D &dst, const S &src) {
  if (static_cast<const void *>(&dst) != &src) dst.Resize(src.GetSize());
}

/// dst = kernel(src), element by element.
template <class D, class S, class Kernel> void Map(D &dst, const S &src, Kernel kernel) {
  const int n = src.GetSize();
  ResizeLike(dst, src);
  kernel(src.GetPtr(), dst.GetPtr(), n);
}

/// dst = kernel(a, b), element by element, over the length of a. dst may be either source.
template <class V, class Kernel> void Map2(V &dst, const V &a, const V &b, Kernel kernel) {
  const int n = a.GetSize();
  checks::Operand("length of the second source", b.GetSize(), n);
  if (&dst == &b && n > 0) {
    dst.Truncate(0, n); // Resize would move a narrowed view
  } else {
    ResizeLike(dst, a);
  }
  kernel(a.GetPtr(), b.GetPtr(), dst.GetPtr(), n);
}

/// kernel on one value: a scalar function gives what the vector function gives.
template <class D, class S, class Kernel> D MapScalar(S x, Kernel kernel) {
  D result{};
  kernel(&x, &result, 1);
  return result;
}

constexpr int kBlock = 512;

/// dst = src, then the in-place steps(pointer, count) over dst. The steps run over blocks that stay in the
/// nearest cache, so that several of them cost about one pass over memory; an element's result depends on
/// that element alone, so blocks do not show.
template <class V, class Steps> void MapInSteps(V &dst, const V &src, Steps steps) {
  const int n = src.GetSize();
  ResizeLike(dst, src);
  for (int i = 0; i < n; i += kBlock) {
    const int count = std::min(kBlock, n - i);
    if (&dst != &src) Kernels<ElementOf<V>>::Copy(src.GetPtr(i), dst.GetPtr(i), count);
    steps(dst.GetPtr(i), count);
  }
}

/// The same where one of the steps is long: steps(scratch, pointer, count) begins with the elements of src in
/// scratch, which it may overwrite, and leaves its results at pointer. Memory is then written under the long
/// step, which hides it.
template <class V, class Steps> void MapThroughScratch(V &dst, const V &src, Steps steps) {
  ElementOf<V> scratch[kBlock];
  const int n = src.GetSize();
  ResizeLike(dst, src);
  for (int i = 0; i < n; i += kBlock) {
    const int count = std::min(kBlock, n - i);
    Kernels<ElementOf<V>>::Copy(src.GetPtr(i), scratch, count);
    steps(scratch, dst.GetPtr(i), count);
  }
}

} // namespace QORN

// A member's form for each type of vector, where form(name, V) defines it for one.
#define QORN_REALS(form, name) form(name, VecReal32) form(name, VecReal64)
#define QORN_CPLXS(form, name) form(name, VecCplx32) form(name, VecCplx64)

#endif
