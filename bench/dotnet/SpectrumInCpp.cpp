// Spectrum::Apply as a C++ program calls it, on vectors that are kept, for the program that measures the
// managed binding: both are then timed by one clock, in turns.
#include <qorn/qorn.h>

#include <ctime>
#include <memory>

namespace {

struct Block {
  QORN::Spectrum spectrum;
  QORN::VecCplx32 iq;
  QORN::VecReal32 real;
  QORN::VecReal32 levels;
};

} // namespace

extern "C" {

QORN_API Block *MakeBlock(int n, const QORN::Cplx32 *iq, const float *real) {
  auto block = std::unique_ptr<Block>(new Block{QORN::Spectrum(n), {}, {}, {}});
  block->iq.Import(iq, n);
  block->real.Import(real, n);
  return block.release();
}

QORN_API void DeleteBlock(Block *block) { const std::unique_ptr<Block> owned(block); }

QORN_API void ApplyToIQ(Block *block) { block->spectrum.Apply(block->levels, block->iq); }

QORN_API void ApplyToReal(Block *block) { block->spectrum.Apply(block->levels, block->real); }

// Time that the thread has had the processor: what else the machine does counts as little as can be.
QORN_API double GetThreadSeconds() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

QORN_API float GetLevel(const Block *block, int k) { return block->levels[k]; }
}
