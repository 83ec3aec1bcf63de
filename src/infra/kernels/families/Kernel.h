// What every kernel family and every Fourier pass starts with.
//
// These files are compiled once per instruction-set level, with that level's flags, into the namespace
// QORN_LEVEL. They are hermetic: no standard header that defines inline functions, no static data that needs
// construction, and helpers only in unnamed namespaces. Otherwise the linker could pick one level's copy of a
// shared inline function for the whole program, and hand AVX-512 code to an older processor. A test looks at
// the objects' symbols. Mathematical functions of the C library are not called either: their last bits differ
// from machine to machine.
#ifndef QORN_SRC_INFRA_KERNELS_KERNEL_H
#define QORN_SRC_INFRA_KERNELS_KERNEL_H

#include <cstddef>
#include <cstdint>

#include "qorn/infra/Cplx.h"

#ifndef QORN_LEVEL
#error "compile this file once per level, with QORN_LEVEL set to the level's name"
#endif

namespace QORN::kernels::QORN_LEVEL {
namespace {

/// Indices are wider than the int lengths of the interface, so that 2 * len and i * factor cannot overflow.
using Index = std::ptrdiff_t;

/// The value of x, rounded to its own type before anything else is done with it. Needed around each product
/// of a sum of products: GCC's vectoriser fuses interleaved complex products even with -ffp-contract=off.
template <class T> [[gnu::always_inline]] inline T Rounded(T x) {
#if defined(__has_builtin)
#if __has_builtin(__builtin_assoc_barrier)
  return __builtin_assoc_barrier(x);
#else
  return x;
#endif
#else
  return x;
#endif
}

/// a * b + c with one rounding where the level has the instruction, with two otherwise. Only for what is
/// allowed to differ between levels within a stated bound: transforms, filters, products and elementary
/// functions.
template <class T> [[gnu::always_inline]] inline T MulAdd(T a, T b, T c) {
#if defined(__FMA__) || defined(__ARM_FEATURE_FMA)
  if constexpr (sizeof(T) == sizeof(float)) {
    return __builtin_fmaf(a, b, c);
  } else {
    return __builtin_fma(a, b, c);
  }
#else
  return a * b + c;
#endif
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
