// Eigen's products and inverses of matrices that lie row by row.
#ifndef QORN_BENCH_PEERS_MATRIX_H
#define QORN_BENCH_PEERS_MATRIX_H

#if defined(QORN_PEER_EIGEN)

namespace peers {

struct EigenMatrix {
  static void Mul(const float *a, const float *b, float *dst, int n);
  static void Mul(const double *a, const double *b, double *dst, int n);
  static void Inv(const float *src, float *dst, int n);
  static void Inv(const double *src, double *dst, int n);
};

} // namespace peers

#endif

#endif
