#include "support/Allocations.h"

#include <malloc.h>

#include <cstdlib>
#include <limits>
#include <new>

namespace {

long count = 0;
std::size_t latest = 0, live = 0;
std::size_t limit = std::numeric_limits<std::size_t>::max();
long lastServed = std::numeric_limits<long>::max();

void *Allocate(std::size_t bytes, std::size_t alignment) {
  ++count;
  latest = bytes;
  if (bytes > limit || count > lastServed) return nullptr;
  void *block = nullptr;
  const std::size_t least = alignment < sizeof(void *) ? sizeof(void *) : alignment;
  if (posix_memalign(&block, least, bytes == 0 ? 1 : bytes) != 0) return nullptr;
  live += malloc_usable_size(block);
  return block;
}

void Free(void *block) {
  live -= malloc_usable_size(block); // 0 of null
  std::free(block);
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
void operator delete(void *p) noexcept { Free(p); }
void operator delete[](void *p) noexcept { Free(p); }
void operator delete(void *p, std::size_t) noexcept { Free(p); }
void operator delete[](void *p, std::size_t) noexcept { Free(p); }
void operator delete(void *p, const std::nothrow_t &) noexcept { Free(p); }
void operator delete[](void *p, const std::nothrow_t &) noexcept { Free(p); }
void operator delete(void *p, std::align_val_t) noexcept { Free(p); }
void operator delete[](void *p, std::align_val_t) noexcept { Free(p); }
void operator delete(void *p, std::size_t, std::align_val_t) noexcept { Free(p); }
void operator delete[](void *p, std::size_t, std::align_val_t) noexcept { Free(p); }
void operator delete(void *p, std::align_val_t, const std::nothrow_t &) noexcept { Free(p); }
void operator delete[](void *p, std::align_val_t, const std::nothrow_t &) noexcept { Free(p); }

namespace QORN::test {

long AllocationCount() { return count; }
std::size_t LatestRequest() { return latest; }
std::size_t LiveBytes() { return live; }
AllocationLimit::AllocationLimit(std::size_t bytes) { limit = bytes; }
AllocationLimit::~AllocationLimit() { limit = std::numeric_limits<std::size_t>::max(); }
AllocationBudget::AllocationBudget(long served) { lastServed = count + served; }
AllocationBudget::~AllocationBudget() { lastServed = std::numeric_limits<long>::max(); }

} // namespace QORN::test
