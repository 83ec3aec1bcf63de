// VOLK's dot products, with the argument order of ours.
#ifndef QORN_BENCH_PEERS_PRODUCT_H
#define QORN_BENCH_PEERS_PRODUCT_H

#if defined(QORN_PEER_VOLK)

#include "qorn/infra/Cplx.h"

namespace peers {

struct VolkProduct {
  static void DotProd_32f(const float *src1, const float *src2, int len, float *result);
  static void DotProd_32fc(const QORN::Cplx32 *src1, const QORN::Cplx32 *src2, int len, QORN::Cplx32 *result);
  static void DotProd_32f32fc(const float *src1, const QORN::Cplx32 *src2, int len, QORN::Cplx32 *result);
};

} // namespace peers

#endif

#endif
