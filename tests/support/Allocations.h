// Counts and, on request, refuses the allocations of the process. The test programs replace the global
// allocation functions, through which every allocation of the library goes.
#ifndef QORN_TESTS_SUPPORT_ALLOCATIONS_H
#define QORN_TESTS_SUPPORT_ALLOCATIONS_H

#include <cstddef>

namespace QORN::test {

/// The number of allocations since the program started, refused ones included.
long AllocationCount();

/// Bytes of the latest allocation request.
std::size_t LatestRequest();

/// Bytes of the blocks that are allocated and not yet freed. A block may count for a few more than were
/// requested, as many as the allocator gave it.
std::size_t LiveBytes();

/// While it lives, every request of more than `limit` bytes is counted and refused.
class AllocationLimit {
public:
  explicit AllocationLimit(std::size_t limit);
  ~AllocationLimit();
  AllocationLimit(const AllocationLimit &) = delete;
  AllocationLimit &operator=(const AllocationLimit &) = delete;
};

/// While it lives, the next `served` requests are served and all after them counted and refused.
class AllocationBudget {
public:
  explicit AllocationBudget(long served);
  ~AllocationBudget();
  AllocationBudget(const AllocationBudget &) = delete;
  AllocationBudget &operator=(const AllocationBudget &) = delete;
};

} // namespace QORN::test

#endif
