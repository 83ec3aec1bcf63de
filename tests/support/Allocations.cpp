#include "support/Allocations.h"

#include <cstdlib>
#include <limits>
#include <new>

namespace {

long count = 0;
std::size_t latest = 0;
std::size_t limit = std::numeric_limits<std::size_t>::max();
long lastServed = std::numeric_limits<long>::max();

void *Allocate(std::size_t bytes, std::size_t alignment) {
  ++count;
  latest = bytes;
  if (bytes > limit || count > lastServed) return nullptr;
  void *block = nullptr;
  const std::size_t least = alignment < sizeof(void *) ? sizeof(void *) : alignment;
  return posix_memalign(&block, least, bytes == 0 ? 1 : bytes) == 0 ? block : nullptr;
}

void *AllocateOrThrow(std::size_t bytes, std::size_t alignment) {
  void *block = Allocate(bytes, alignment);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

constexpr std::size_t kPlain = __STDCPP_DEFAULT_NEW_ALIGNMENT__;

} // namespace

void *operator new(std::size_t n) { return AllocateOrThrow(n, kPlain); }
void *operator new[](std::size_t n) { return AllocateOrThrow(n, kPlain); }
void *operator new(std::size_t n, const std::nothrow_t &) noexcept { return Allocate(n, kPlain); }
void *operator new[](std::size_t n, const std::nothrow_t &) noexcept { return Allocate(n, kPlain); }
void *operator new(std::size_t n, std::align_val_t a) {
  return AllocateOrThrow(n, static_cast<std::size_t>(a));
}
void *operator new[](std::size_t n, std::align_val_t a) {
  return AllocateOrThrow(n, static_cast<std::size_t>(a));
}
void *operator new(std::size_t n, std::align_val_t a, const std::nothrow_t &) noexcept {
  return Allocate(n, static_cast<std::size_t>(a));
}
void *operator new[](std::size_t n, std::align_val_t a, const std::nothrow_t &) noexcept {
  return Allocate(n, static_cast<std::size_t>(a));
}
void operator delete(void *p) noexcept { std::free(p); }
void operator delete[](void *p) noexcept { std::free(p); }
void operator delete(void *p, std::size_t) noexcept { std::free(p); }
void operator delete[](void *p, std::size_t) noexcept { std::free(p); }
void operator delete(void *p, const std::nothrow_t &) noexcept { std::free(p); }
void operator delete[](void *p, const std::nothrow_t &) noexcept { std::free(p); }
void operator delete(void *p, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void *p, std::align_val_t) noexcept { std::free(p); }
void operator delete(void *p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete[](void *p, std::size_t, std::align_val_t) noexcept { std::free(p); }
void operator delete(void *p, std::align_val_t, const std::nothrow_t &) noexcept { std::free(p); }
void operator delete[](void *p, std::align_val_t, const std::nothrow_t &) noexcept { std::free(p); }

namespace QORN::test {

long AllocationCount() { return count; }
std::size_t LatestRequest() { return latest; }
AllocationLimit::AllocationLimit(std::size_t bytes) { limit = bytes; }
AllocationLimit::~AllocationLimit() { limit = std::numeric_limits<std::size_t>::max(); }
AllocationBudget::AllocationBudget(long served) { lastServed = count + served; }
AllocationBudget::~AllocationBudget() { lastServed = std::numeric_limits<long>::max(); }

} // namespace QORN::test
