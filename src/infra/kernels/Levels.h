// The instruction-set levels, and which of them serves the process.
#ifndef QORN_SRC_INFRA_KERNELS_LEVELS_H
#define QORN_SRC_INFRA_KERNELS_LEVELS_H

#include <vector>

#include "Table.h"

namespace QORN::kernels {

struct Level {
  const char *name;
  const Table *table;
};

/// The table that the public kernels go through. Constant-initialised to the base level, so that a kernel
/// works at once from any static constructor, and raised to the best level that the processor has when the
/// library's own statics are initialised. Never written afterwards, except by ScopedLevel.
extern const Table *active;

/// The levels that were built and that this processor and operating system can run, lowest first.
std::vector<Level> AvailableLevels();

/// Runs the process on one level for the life of the object. For tests and benchmarks, on one thread.
class ScopedLevel {
public:
  explicit ScopedLevel(const Level &level) : m_former(active) { active = level.table; }
  ~ScopedLevel() { active = m_former; }
  ScopedLevel(const ScopedLevel &) = delete;
  ScopedLevel &operator=(const ScopedLevel &) = delete;

private:
  const Table *m_former;
};

} // namespace QORN::kernels

#endif
