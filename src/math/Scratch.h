// Aligned scratch memory that frees itself.
#ifndef QORN_SRC_MATH_SCRATCH_H
#define QORN_SRC_MATH_SCRATCH_H

#include <cstdint>
#include <memory>

#include "qorn/infra/QORNMalloc.h"

namespace QORN {

struct BlockDeleter {
  template <class T> void operator()(T *block) const { QORNMalloc::Delete(block); }
};
template <class T> using Scratch = std::unique_ptr<T, BlockDeleter>;

/// Null beyond what a block may have, and where there is no memory.
template <class T> Scratch<T> MakeScratch(std::int64_t count) {
  if (count < 1 || count > QORNMalloc::kMaxCount) return nullptr;
  if constexpr (sizeof(T) == sizeof(float)) {
    return Scratch<T>(QORNMalloc::MallocReal32(static_cast<int>(count)));
  } else {
    return Scratch<T>(QORNMalloc::MallocReal64(static_cast<int>(count)));
  }
}

} // namespace QORN

#endif
