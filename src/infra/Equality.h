// Exact comparison of arrays of numbers.
#ifndef QORN_SRC_INFRA_EQUALITY_H
#define QORN_SRC_INFRA_EQUALITY_H

#include <algorithm>
#include <cstddef>

namespace QORN {

/// True if a[i] == b[i] for 0 <= i < n. Each block is compared without a way out, so that it vectorises.
template <class S> bool AllEqual(const S *a, const S *b, std::ptrdiff_t n) {
  constexpr std::ptrdiff_t kBlock = 256;
  for (std::ptrdiff_t first = 0; first < n; first += kBlock) {
    const std::ptrdiff_t end = std::min(first + kBlock, n);
    int differing = 0;
    for (std::ptrdiff_t i = first; i < end; ++i) differing |= !(a[i] == b[i]);
    if (differing != 0) return false;
  }
  return true;
}

} // namespace QORN

#endif
