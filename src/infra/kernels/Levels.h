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

/// The table that the public kernels go through: a copy of a level's, since a call that found its table by a
/// pointer would wait for two loads in a row, which is felt below a few hundred elements.
/// Constant-initialised to the base level, so that a kernel works at once from any static constructor, and
/// raised to the best level that the processor has when the library's own statics are initialised. Never
/// written afterwards, except by ScopedLevel.
[[gnu::visibility("hidden")]] extern Table current;
inline constexpr const Table *active = &current;

/// The level's table of which the current one is a copy.
const Table *Chosen();
void Choose(const Table *table);

/// The levels that were built and that this processor and operating system can run, lowest first.
std::vector<Level> AvailableLevels();

/// Runs the process on one level for the life of the object. For tests and benchmarks, on one thread.
class ScopedLevel {
public:
  explicit ScopedLevel(const Level &level) : m_former(Chosen()) { Choose(level.table); }
  ~ScopedLevel() { Choose(m_former); }
  ScopedLevel(const ScopedLevel &) = delete;
  ScopedLevel &operator=(const ScopedLevel &) = delete;

private:
  const Table *m_former;
};

} // namespace QORN::kernels

#endif
