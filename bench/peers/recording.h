// The conversions of recorded samples as a user would write them.
#ifndef QORN_BENCH_PEERS_RECORDING_H
#define QORN_BENCH_PEERS_RECORDING_H

#include "qorn/infra/Cplx.h"

namespace peers {

/// 16-bit pairs of (q, i) to volts, in double and rounded once.
void FrameToVolts(const char *payload, QORN::Cplx32 *dst, int len, double iOffset, double qOffset,
                  double scale);

/// 32-bit pairs of (i, q) to volts.
void PairsToVolts(const int *pairs, QORN::Cplx32 *dst, int len, float scale);
void PairsToVolts(const int *pairs, QORN::Cplx64 *dst, int len, double scale);

} // namespace peers

#endif
