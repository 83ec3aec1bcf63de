// Shaped symbols by other libraries.
#ifndef QORN_BENCH_PEERS_GENERATOR_H
#define QORN_BENCH_PEERS_GENERATOR_H

#include <memory>

#include "qorn/infra/Cplx.h"

namespace peers {

#if defined(QORN_PEER_LIQUID)
/// liquid-dsp's linear modulator and its interpolating root-raised-cosine filter.
class ShapedSymbols {
public:
  /// PSK, or QAM, of 2^bits points; taps = 2 * samplesPerSymbol * delay + 1.
  ShapedSymbols(bool qam, int bits, int samplesPerSymbol, int delay, float rolloff);
  ~ShapedSymbols();

  /// dst = count * samplesPerSymbol samples.
  void Generate(const unsigned int *symbols, int count, QORN::Cplx32 *dst);

private:
  struct State;
  std::unique_ptr<State> m_state;
};
#endif

} // namespace peers

#endif
