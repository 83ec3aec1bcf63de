#include "WorkArray.h"

#include <algorithm>
#include <atomic>
#include <climits>
#include <new>
#include <utility>

#include "infra/Errors.h"

namespace QORN::fourier {

namespace {

// Of less the allocators keep enough themselves.
constexpr int kLeast = 1 << 10, kLarge = 64 << 10, kMost = 8 << 20;

// Memory that waits. Whoever finds a place in use goes on to the next one: nobody waits for another thread.
class Place {
public:
  // Of at least `size` bytes, or none.
  WorkBytes Take(int size) {
    WorkBytes taken;
    IfFree([&] {
      if (m_bytes.GetSize() >= size) taken = std::move(m_bytes);
    });
    return taken;
  }
  void Put(WorkBytes &bytes) {
    IfFree([&] {
      if (m_bytes.GetSize() < bytes.GetSize()) std::swap(m_bytes, bytes);
    });
  }

private:
  template <class F> void IfFree(const F &use) {
    if (m_inUse.exchange(true, std::memory_order_acquire)) return;
    use();
    m_inUse.store(false, std::memory_order_release);
  }

  std::atomic<bool> m_inUse{false};
  WorkBytes m_bytes;
};

struct Places {
  Place all[4];
};

// Those for so many bytes, or null.
Places *PlacesFor(int size) {
  static Places *const small = new (std::nothrow) Places, *const large = new (std::nothrow) Places;
  return size < kLeast || size > kMost ? nullptr : size < kLarge ? small : large;
}

WorkBytes Taken(int size) {
  if (Places *const places = PlacesFor(size); places != nullptr) {
    for (Place &place : places->all) {
      WorkBytes bytes = place.Take(size);
      if (bytes.GetSize() != 0) return bytes;
    }
  }
  return WorkBytes(size);
}

// Smaller memory makes room for larger one.
void GiveBack(WorkBytes bytes) {
  Places *const places = PlacesFor(bytes.GetSize());
  if (places == nullptr) return;
  for (Place &place : places->all) {
    place.Put(bytes);
    if (bytes.GetSize() == 0) return;
  }
}

} // namespace

template <class T> WorkArray<T>::WorkArray(std::ptrdiff_t count, std::ptrdiff_t kept, Life life) {
  constexpr int kSize = sizeof(T);
  if (count > INT_MAX / kSize) Throw(errors::kMemoryAllocation, modules::kTargetLib);
  const int size = static_cast<int>(count) * kSize;
  m_bytes = life == Life::kCall ? Taken(size) : WorkBytes(size);
  m_kept = static_cast<int>(kept) * kSize;
  m_life = life;
}

template <class T> WorkArray<T>::WorkArray(const WorkArray &other) {
  const int size = other.m_bytes.GetSize(); // a moved one has none
  if (size == 0) return;
  m_bytes = other.m_life == Life::kCall ? Taken(size) : WorkBytes(size);
  m_kept = other.m_kept;
  m_life = other.m_life;
  std::copy_n(other.m_bytes.GetPtr(), m_kept, m_bytes.GetPtr());
}

template <class T> WorkArray<T>::~WorkArray() {
  if (m_life == Life::kCall) GiveBack(std::move(m_bytes));
}

template class WorkArray<float>;
template class WorkArray<double>;
template class WorkArray<std::ptrdiff_t>;

} // namespace QORN::fourier
