#include "peers/matrix.h"

#if defined(QORN_PEER_EIGEN)

#include <Eigen/Dense>

namespace peers {

namespace {

template <class T> using Matrix = Eigen::Matrix<T, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

template <class T> void Multiply(const T *a, const T *b, T *dst, int n) {
  using In = Eigen::Map<const Matrix<T>>;
  Eigen::Map<Matrix<T>>(dst, n, n).noalias() = In(a, n, n) * In(b, n, n);
}

// By LU factors with partial pivoting.
template <class T> void Invert(const T *src, T *dst, int n) {
  Eigen::Map<Matrix<T>>(dst, n, n) = Eigen::Map<const Matrix<T>>(src, n, n).inverse();
}

} // namespace

void EigenMatrix::Mul(const float *a, const float *b, float *dst, int n) { Multiply(a, b, dst, n); }
void EigenMatrix::Mul(const double *a, const double *b, double *dst, int n) { Multiply(a, b, dst, n); }
void EigenMatrix::Inv(const float *src, float *dst, int n) { Invert(src, dst, n); }
void EigenMatrix::Inv(const double *src, double *dst, int n) { Invert(src, dst, n); }

} // namespace peers

#endif
