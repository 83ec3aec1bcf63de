// What every row of the kernel tables owes, whatever it computes.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/infra/TargetLib.h"

namespace {

using QORN::Cplx16;
using QORN::Cplx32;
using QORN::Cplx64;
using QORN::TargetLib;

namespace kernels = QORN::kernels;

// Calls a kernel with memory of its own behind every pointer, and tells whether any of it was written.
template <class... A> class Probe {
public:
  Probe(const char *name, void (*kernel)(A...)) : m_name(name), m_kernel(kernel) {}

  void Run() {
    for (const int len : {0, -1, INT_MIN}) {
      EXPECT_FALSE(Writes(len, -1)) << m_name << " wrote for the length " << len;
    }
    for (int k = 0; k < kPointers; ++k) {
      EXPECT_FALSE(Writes(16, k)) << m_name << " wrote although pointer " << k << " is null";
    }
    EXPECT_TRUE(Writes(16, -1)) << m_name << " wrote nothing where it should have: the probe is blind";
  }

private:
  static constexpr int kPointers = (0 + ... + (std::is_pointer_v<A> ? 1 : 0));
  static constexpr std::size_t kBytes = 1024;

  // The last int of a kernel is its length; other scalars are 3.
  bool Writes(int len, int null) {
    std::vector<std::vector<unsigned char>> memory(kPointers, std::vector<unsigned char>(kBytes));
    std::size_t next = 0;
    for (auto &block : memory) {
      for (unsigned char &byte : block) byte = static_cast<unsigned char>(0x41 + 37 * next++ % 191);
    }
    const auto before = memory;
    int pointer = 0;
    std::tuple<A...> arguments{Make<A>(memory, pointer, null)...};
    SetLength(arguments, len, std::make_index_sequence<sizeof...(A)>());
    std::apply(m_kernel, arguments);
    return memory != before;
  }

  template <class T> static T Make(std::vector<std::vector<unsigned char>> &memory, int &pointer, int null) {
    if constexpr (std::is_pointer_v<T>) {
      const int k = pointer++;
      return k == null ? nullptr : reinterpret_cast<T>(memory[static_cast<std::size_t>(k)].data());
    } else if constexpr (std::is_class_v<T>) {
      return {3, 3};
    } else {
      return T(3);
    }
  }

  template <std::size_t... K>
  static void SetLength(std::tuple<A...> &arguments, int len, std::index_sequence<K...>) {
    int *last = nullptr;
    (Remember(std::get<K>(arguments), last), ...);
    *last = len;
  }
  static void Remember(int &argument, int *&last) { last = &argument; }
  template <class T> static void Remember(T &, int *&) {}

  const char *m_name;
  void (*m_kernel)(A...);
};

template <class... A> void ProbeGuard(const char *name, void (*kernel)(A...)) {
  Probe<A...>(name, kernel).Run();
}

TEST(TargetLib, AnyKernel_NullPointerOrLengthBelowOne_DoesNothing) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
#define QORN_KERNEL(cls, name, params, args, ...)                                                            \
  ProbeGuard(#name, static_cast<void(*) params>(&TargetLib::name));
#define QORN_KERNEL_OWN_FORWARDER(cls, result, name, params, args, ...)
#include "infra/kernels/families/All.inc"
#undef QORN_KERNEL
#undef QORN_KERNEL_OWN_FORWARDER
  }
}

TEST(KernelTable, EveryLevel_HasItsOwnFunctionInEverySlot) {
  const std::vector<kernels::Level> levels = kernels::AvailableLevels();
  const kernels::Table &lowest = *levels[0].table;
  for (const kernels::Level &level : levels) {
    const kernels::Table &table = *level.table;
#define QORN_KERNEL(cls, slot, params, args, ...)                                                            \
  EXPECT_NE(table.slot, nullptr) << #slot << " at " << level.name;                                           \
  EXPECT_TRUE(&table == &lowest || table.slot != lowest.slot) << #slot << " at " << level.name;
#define QORN_KERNEL_OWN_FORWARDER(cls, result, slot, params, args, ...) QORN_KERNEL(cls, slot, params, args, )
#include "infra/kernels/families/All.inc"
#undef QORN_KERNEL
#undef QORN_KERNEL_OWN_FORWARDER
  }
}

TEST(KernelTable, Active_IsThatOfTheHighestLevelOfTheProcessor) {
  const std::vector<kernels::Level> levels = kernels::AvailableLevels();
  ASSERT_FALSE(levels.empty());
  EXPECT_EQ(kernels::Chosen(), levels.back().table) << levels.back().name;
#define QORN_KERNEL(cls, slot, params, args, ...)                                                            \
  EXPECT_EQ(kernels::active->slot, levels.back().table->slot) << #slot;
#define QORN_KERNEL_OWN_FORWARDER(cls, result, slot, params, args, ...) QORN_KERNEL(cls, slot, params, args, )
#include "infra/kernels/families/All.inc"
#undef QORN_KERNEL
#undef QORN_KERNEL_OWN_FORWARDER
  EXPECT_STREQ(levels[0].name, "base");
#if defined(QORN_HAVE_v4)
  if (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
      __builtin_cpu_supports("avx512dq")) {
    EXPECT_STREQ(levels.back().name, "v4");
  }
#endif
}

// A static object of the program may use a kernel before the library has looked at the processor.
float SquareAtStart() {
  const float x = 3;
  float square = 0;
  TargetLib::Sqr_32f(&x, &square, 1);
  return square;
}
const float squareAtStart = SquareAtStart();

TEST(KernelTable, Kernel_CalledFromAStaticInitialiser_Works) { EXPECT_EQ(squareAtStart, 9.0F); }

} // namespace
