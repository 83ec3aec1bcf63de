// The place of a virtual operation in its class's table.
#ifndef QORN_TESTS_SUPPORT_SLOTS_H
#define QORN_TESTS_SUPPORT_SLOTS_H

#if defined(__x86_64__) && defined(__GNUC__)
#define QORN_TEST_SLOTS 1

#include <cstdint>
#include <cstring>

namespace QORN::test {

/// A pointer to a virtual member function begins with its offset in the virtual table, plus 1.
template <class Function> std::uintptr_t SlotOf(Function function) {
  std::uintptr_t word;
  std::memcpy(&word, &function, sizeof(word));
  return (word - 1) / sizeof(void *);
}

} // namespace QORN::test

#endif

#endif
