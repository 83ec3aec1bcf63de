// What the containers leave to their callers, asserted in a build with QORN_CHECKED: indices, ranges and the
// lengths of operands. In any other build nothing is left of these functions.
#ifndef QORN_SRC_INFRA_CHECKS_H
#define QORN_SRC_INFRA_CHECKS_H

#if defined(QORN_CHECKED)
#include <cstdio>
#include <cstdlib>
#endif

namespace QORN::checks {

/// Unless holds, prints both names with their values on the standard error stream and aborts.
inline void Require([[maybe_unused]] bool holds, [[maybe_unused]] const char *argument,
                    [[maybe_unused]] long long value, [[maybe_unused]] const char *limit,
                    [[maybe_unused]] long long bound) {
#if defined(QORN_CHECKED)
  if (holds) return;
  std::fprintf(stderr, "QORN: %s = %lld, %s = %lld\n", argument, value, limit, bound);
  std::abort();
#endif
}

/// The count elements from first on lie within length.
inline void Range(int first, int count, int length) {
  Require(first >= 0 && first <= length, "first", first, "length", length);
  Require(count >= 0 && count <= length - first, "count", count, "length - first",
          static_cast<long long>(length) - first);
}

/// An operand is at least as long as the vector that reads it.
inline void Operand(const char *argument, int operandLength, int length) {
  Require(operandLength >= length, argument, operandLength, "length", length);
}

} // namespace QORN::checks

#endif
