// An aligned array of scalars that copies as a value: the tables of plans and the scratch of their owners.
#ifndef QORN_SRC_INFRA_FOURIER_BLOCK_H
#define QORN_SRC_INFRA_FOURIER_BLOCK_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>

#include "qorn/infra/QORNMalloc.h"

namespace QORN::fourier {

template <class T> class Block {
public:
  Block() = default;

  /// size scalars, not cleared. Throws std::bad_alloc if there is no memory for them.
  explicit Block(std::size_t size) : m_size(size) {
    // In units of 16 bytes, so that the limit on the count of an allocation is as far away as can be.
    const std::size_t units = (size * sizeof(T) + sizeof(Cplx64) - 1) / sizeof(Cplx64);
    if (units > static_cast<std::size_t>(QORNMalloc::kMaxCount)) throw std::bad_alloc();
    m_data.reset(reinterpret_cast<T *>(QORNMalloc::MallocCplx64(static_cast<int>(units))));
    if (m_data == nullptr) throw std::bad_alloc();
  }

  Block(const Block &other) : Block(other.m_size == 0 ? Block() : Block(other.m_size)) {
    std::copy_n(other.m_data.get(), m_size, m_data.get());
  }
  Block(Block &&) noexcept = default;
  Block &operator=(Block other) noexcept {
    m_data = std::move(other.m_data);
    m_size = other.m_size;
    return *this;
  }

  T *Data() const { return m_data.get(); }
  std::size_t Size() const { return m_size; }

private:
  struct Free {
    void operator()(T *block) const { QORNMalloc::Delete(block); }
  };
  std::unique_ptr<T[], Free> m_data;
  std::size_t m_size = 0;
};

} // namespace QORN::fourier

#endif
