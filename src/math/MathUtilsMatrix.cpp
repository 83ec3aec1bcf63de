// MathUtils: arithmetic of small dense matrices.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <type_traits>

#include "Scratch.h"
#include "Singular.h"
#include "infra/Checks.h"
#include "infra/KernelTraits.h"
#include "infra/TextFile.h"
#include "infra/kernels/Levels.h"
#include "qorn/infra/MatReal32.h"
#include "qorn/infra/MatReal64.h"
#include "qorn/infra/QORNTimer.h"
#include "qorn/math/MathUtils.h"

namespace QORN {

namespace {

template <class M> using MatrixElement = std::remove_pointer_t<decltype(std::declval<const M &>()[0])>;

template <class M> void Invert(M &dst, const M &src) {
  using T = MatrixElement<M>;
  const int n = src.GetRows();
  dst.Resize(n, src.GetCols());
  if (n > src.GetCols()) ThrowSingular();
  // A small inverse would take a tenth of its time to find work memory.
  constexpr int kSmall = 16 * 17;
  T small[kSmall];
  const std::int64_t count = std::int64_t{n} * (n + std::int64_t{1});
  const Scratch<T> large = count > kSmall ? MakeScratch<T>(count) : nullptr;
  T *const buffer = count > kSmall ? large.get() : small;
  constexpr int kStep = sizeof(T);
  const int rowStep = buffer != nullptr ? n * kStep : 0;
  if (!Kernels<T>::Invert(src.GetPtr(), rowStep, kStep, buffer, dst.GetPtr(), rowStep, kStep, n)) {
    ThrowSingular();
  }
}

template <class V, class M> void MulVector(V &dst, const M &a, const V &x) {
  using T = MatrixElement<M>;
  const int rows = a.GetRows(), n = x.GetSize();
  checks::Require(n == a.GetCols(), "length of x", n, "columns", a.GetCols());
  dst.Resize(rows);
  for (int r = 0; r < rows; ++r) {
    T sum = 0;
    Kernels<T>::DotProd(x.GetPtr(), a.GetPtr() + std::ptrdiff_t{r} * n, n, &sum);
    dst[r] = sum;
  }
}

template <class M, class Kernel> void MulMatrix(M &dst, const M &a, const M &b, Kernel kernel) {
  checks::Require(a.GetCols() == b.GetRows(), "columns of a", a.GetCols(), "rows of b", b.GetRows());
  dst.Resize(a.GetRows(), b.GetCols());
  if (dst.GetSize() > 0) {
    kernel(a.GetPtr(), b.GetPtr(), dst.GetPtr(), a.GetRows(), a.GetCols(), b.GetCols());
  }
}

template <class M> void Transpose(M &dst, const M &src) {
  const std::ptrdiff_t rows = src.GetRows(), cols = src.GetCols();
  dst.Resize(src.GetCols(), src.GetRows());
  if (dst.GetSize() < 1) return;
  const MatrixElement<M> *from = src.GetPtr();
  MatrixElement<M> *to = dst.GetPtr();
  for (std::ptrdiff_t r = 0; r < rows; ++r) {
    for (std::ptrdiff_t c = 0; c < cols; ++c) to[c * rows + r] = from[r * cols + c];
  }
}

template <class M> void Identity(M &dst, int n) {
  dst.Resize(n, n);
  dst.SetZero();
  for (int i = 0; i < n; ++i) dst[i][i] = 1;
}

void PrintMatrix(std::FILE *file, const char *title, const MatReal64 &matrix) {
  std::fprintf(file, "%s:\n", title);
  for (int r = 0; r < matrix.GetRows(); ++r) {
    for (int c = 0; c < matrix.GetCols(); ++c) std::fprintf(file, "%10.6f ", matrix[r][c]);
    std::fprintf(file, "\n");
  }
}

double DistanceFromIdentity(const MatReal64 &matrix) {
  double sum = 0.0;
  for (int r = 0; r < matrix.GetRows(); ++r) {
    for (int c = 0; c < matrix.GetCols(); ++c) sum += std::abs(matrix[r][c] - (r == c ? 1.0 : 0.0));
  }
  return sum;
}

void TimeInversions(std::FILE *file, MatReal64 &inverse, const MatReal64 &matrix) {
  constexpr int kLoops = 10000;
  MathUtils::Inv(inverse, matrix); // to warm up
  QORNTimer timer;
  timer.StartTimer();
  for (int i = 0; i < kLoops; ++i) MathUtils::Inv(inverse, matrix);
  const double microseconds = static_cast<double>(timer.GetElapsedTimeInCycle()) / timer.GetClockFreqMHz();
  const int n = matrix.GetRows();
  std::fprintf(file, "TIMING:\nMatDim:%ix%i  Loops:%i  ElapsedTime:%.3f msec  PerLoop:%.3f usec\n\n", n, n,
               kLoops, microseconds / 1000.0, microseconds / 10000.0);
}

void TestInverse(std::FILE *file, int n) {
  MatReal64 matrix(n, n), inverse, product;
  for (int r = 0; r < n; ++r) {
    for (int c = 0; c < n; ++c) matrix[r][c] = n - std::abs(r - c);
  }
  PrintMatrix(file, "INPUT", matrix);
  try {
    MathUtils::Inv(inverse, matrix);
  } catch (const QORNException &) {
    std::fprintf(file, "Inverse failed\n");
    return;
  }
  PrintMatrix(file, "INVERSE", inverse);
  MathUtils::Mul(product, matrix, inverse);
  PrintMatrix(file, "PRODUCT", product);
  const double distance = DistanceFromIdentity(product);
  std::fprintf(file, "Sum(abs(PROD-EYE)): %.5e  %s\n", distance, distance > 1e-05 ? "(UH-OH!!!)" : "");
  TimeInversions(file, inverse, matrix);
}

} // namespace

float MathUtils::SumRow(const MatReal32 &m, int row) {
  checks::Require(row >= 0 && row < m.GetRows(), "row", row, "rows", m.GetRows());
  const float *elements = m.GetPtr() + std::ptrdiff_t{row} * m.GetCols();
  float sum = 0.0F;
  for (int c = 0; c < m.GetCols(); ++c) sum += elements[c];
  return sum;
}

float MathUtils::SumCol(const MatReal32 &m, int col) {
  checks::Require(col >= 0 && col < m.GetCols(), "column", col, "columns", m.GetCols());
  float sum = 0.0F;
  for (int r = 0; r < m.GetRows(); ++r) sum += m.GetPtr()[std::ptrdiff_t{r} * m.GetCols() + col];
  return sum;
}

void MathUtils::Inv(MatReal32 &dst, const MatReal32 &src) { Invert(dst, src); }
void MathUtils::Inv(MatReal64 &dst, const MatReal64 &src) { Invert(dst, src); }

void MathUtils::Mul(VecReal32 &dst, const MatReal32 &a, const VecReal32 &x) { MulVector(dst, a, x); }
void MathUtils::Mul(VecReal64 &dst, const MatReal64 &a, const VecReal64 &x) { MulVector(dst, a, x); }

void MathUtils::Mul(MatReal32 &dst, const MatReal32 &a, const MatReal32 &b) {
  MulMatrix(dst, a, b, kernels::active->MatrixProduct_32f);
}
void MathUtils::Mul(MatReal64 &dst, const MatReal64 &a, const MatReal64 &b) {
  MulMatrix(dst, a, b, kernels::active->MatrixProduct_64f);
}

void MathUtils::Trns(MatReal32 &dst, const MatReal32 &src) { Transpose(dst, src); }
void MathUtils::Trns(MatReal64 &dst, const MatReal64 &src) { Transpose(dst, src); }

void MathUtils::Eye(MatReal32 &dst, int n) { Identity(dst, n); }
void MathUtils::Eye(MatReal64 &dst, int n) { Identity(dst, n); }

void MathUtils::MatrixInverseTimingTest(const char *path) {
  const TextFile file(path != nullptr ? std::fopen(path, "w") : nullptr);
  if (path != nullptr && !file) return;
  for (int n = 2; n <= 6; ++n) TestInverse(path != nullptr ? file.get() : stdout, n);
}

} // namespace QORN
