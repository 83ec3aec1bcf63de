// Random numbers of the standard library, and a tone of its sine and cosine.
#ifndef QORN_BENCH_PEERS_RANDOM_H
#define QORN_BENCH_PEERS_RANDOM_H

#include "qorn/infra/Cplx.h"

namespace peers {

struct Random {
  static void Uniform(float *dst, int len, unsigned seed); ///< mt19937 scaled by hand
  static void Gauss(float *dst, int len, unsigned seed);   ///< mt19937 and normal_distribution
  static void Tone(QORN::Cplx32 *dst, int len, float relFreq);
};

} // namespace peers

#endif
