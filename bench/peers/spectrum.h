// The spectrum pipeline as one would write it with FFTW and VOLK: window, transform, magnitude, shift,
// decibels.
#ifndef QORN_BENCH_PEERS_SPECTRUM_H
#define QORN_BENCH_PEERS_SPECTRUM_H

#if defined(QORN_PEER_FFTW) && defined(QORN_PEER_VOLK)

#include <memory>

#include "qorn/infra/Cplx.h"

namespace peers {

enum class Logarithm {
  Volk, ///< a polynomial that errs by about 1e-5 of the decibels
  Sleef ///< within one unit in the last place
};

/// Whether the build has that logarithm.
bool HasLogarithm(Logarithm logarithm);

/// A plan made by measuring, a Blackman-Harris window of unit sum, and scratch.
class Spectrum {
public:
  Spectrum(int n, Logarithm logarithm);
  ~Spectrum();
  void Apply(float *out, const QORN::Cplx32 *in);

private:
  struct State;
  std::unique_ptr<State> m_state;
};

} // namespace peers

#endif
#endif
