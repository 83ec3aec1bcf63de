// Mixers of other libraries, which carry their phase on.
#ifndef QORN_BENCH_PEERS_MIX_H
#define QORN_BENCH_PEERS_MIX_H

#include <memory>

#include "qorn/infra/Cplx.h"

namespace peers {

#if defined(QORN_PEER_VOLK)
/// VOLK's rotator: a float phasor multiplied on.
class Rotator {
public:
  explicit Rotator(double frequency); ///< in cycles per sample
  void Mix(const QORN::Cplx32 *src, QORN::Cplx32 *dst, int len);

private:
  QORN::Cplx32 m_step, m_phasor{1, 0};
};
#endif

#if defined(QORN_PEER_LIQUID)
/// liquid-dsp's oscillator: a phase counted in 32 bits, its sine taken from a table or exactly.
class Nco {
public:
  Nco(double frequency, bool exact);
  ~Nco();
  void Mix(const QORN::Cplx32 *src, QORN::Cplx32 *dst, int len);

private:
  struct State;
  std::unique_ptr<State> m_state;
};
#endif

} // namespace peers

#endif
