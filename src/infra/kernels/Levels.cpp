#include "Levels.h"

namespace QORN::kernels {

namespace base {
#define QORN_KERNEL(cls, name, params, args, ...) void name params;
#define QORN_KERNEL_OWN_FORWARDER(cls, result, name, params, args, ...) result name params;
#include "families/All.inc"
#undef QORN_KERNEL
#undef QORN_KERNEL_OWN_FORWARDER
} // namespace base

constinit Table current = {
#define QORN_KERNEL(cls, name, params, args, ...) &base::name,
#define QORN_KERNEL_OWN_FORWARDER(cls, result, name, params, args, ...) &base::name,
#include "families/All.inc"
#undef QORN_KERNEL
#undef QORN_KERNEL_OWN_FORWARDER
};

namespace {

constinit const Table *chosen = &base::table;

struct Candidate {
  Level level;
  bool (*runs)();
};

// Feature by feature, as the kernels use them; the builtin also asks whether the operating system saves the
// wide registers.
constexpr Candidate kCandidates[] = {
    {{"base", &base::table}, [] { return true; }},
#if defined(QORN_HAVE_v3)
    {{"v3", &v3::table},
     [] {
       return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
              __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2");
     }},
#endif
#if defined(QORN_HAVE_v4)
    {{"v4", &v4::table},
     [] {
       return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") &&
              __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
              __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
              __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq") &&
              __builtin_cpu_supports("avx512vl");
     }},
#endif
};

const Table *Best() {
#if defined(__x86_64__)
  __builtin_cpu_init();
#endif
  const Table *best = &base::table;
  for (const Candidate &candidate : kCandidates) {
    if (candidate.runs()) best = candidate.level.table;
  }
  return best;
}

} // namespace

const Table *Chosen() { return chosen; }
void Choose(const Table *table) {
  chosen = table;
  current = *table;
}

namespace {
[[maybe_unused]] const bool raised = (Choose(Best()), true);
}

std::vector<Level> AvailableLevels() {
  std::vector<Level> levels;
  for (const Candidate &candidate : kCandidates) {
    if (candidate.runs()) levels.push_back(candidate.level);
  }
  return levels;
}

} // namespace QORN::kernels
