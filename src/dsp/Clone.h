// Copies of what an object may own.
#ifndef QORN_SRC_DSP_CLONE_H
#define QORN_SRC_DSP_CLONE_H

#include <memory>

namespace QORN {

/// A copy of what source owns, or null if that is nothing.
template <class T> std::unique_ptr<T> Clone(const std::unique_ptr<T> &source) {
  return source ? std::make_unique<T>(*source) : nullptr;
}

} // namespace QORN

#endif
