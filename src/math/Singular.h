// The refusal of a matrix that has no inverse.
#ifndef QORN_SRC_MATH_SINGULAR_H
#define QORN_SRC_MATH_SINGULAR_H

#include "infra/Errors.h"

namespace QORN {

[[noreturn]] inline void ThrowSingular(long line = __builtin_LINE()) {
  Throw(errors::kSingularMatrix, "math\\MathUtils", line);
}

} // namespace QORN

#endif
