// Work memory of convolutions and filters.
#ifndef QORN_SRC_INFRA_FOURIER_WORKARRAY_H
#define QORN_SRC_INFRA_FOURIER_WORKARRAY_H

#include <cstddef>
#include <utility>

#include "qorn/infra/VecUInt8.h"

namespace QORN::fourier {

/// So many bytes, not cleared, of a vector, whose reports they make when there is no memory.
struct WorkBytes : VecUInt8 {
  WorkBytes() = default;
  explicit WorkBytes(int count) { CreateUncleared(count); }
};

/// Of memory for a single call, up to 33 MiB are not given back to the system but wait for the next such call
/// of any thread: to get them anew would take as long as the transforms. They are never freed, so that calls
/// at the end of the process find them too.
enum class Life { kLasting, kCall };

/// Work memory of `count` values, not cleared; copies as a value, of which the first `kept` values are copied
/// and the others are as in a new one. Throws QORNException 11001 if there is no memory.
template <class T> class WorkArray {
public:
  WorkArray() = default;
  explicit WorkArray(std::ptrdiff_t count, Life life = Life::kLasting) : WorkArray(count, count, life) {}
  WorkArray(std::ptrdiff_t count, std::ptrdiff_t kept, Life life = Life::kLasting);
  WorkArray(const WorkArray &other);
  WorkArray(WorkArray &&) noexcept = default;
  WorkArray &operator=(WorkArray other) noexcept {
    std::swap(m_bytes, other.m_bytes);
    std::swap(m_kept, other.m_kept);
    std::swap(m_life, other.m_life);
    return *this;
  }
  ~WorkArray();

  T *Data() const { return reinterpret_cast<T *>(m_bytes.GetPtr()); }

private:
  WorkBytes m_bytes;
  int m_kept = 0; // bytes
  Life m_life = Life::kLasting;
};

extern template class WorkArray<float>;
extern template class WorkArray<double>;
extern template class WorkArray<std::ptrdiff_t>;

} // namespace QORN::fourier

#endif
