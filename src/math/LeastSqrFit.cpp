#include "qorn/math/LeastSqrFit.h"

#include <algorithm>
#include <cstdint>

#include "Elementwise.h"
#include "Singular.h"
#include "qorn/infra/MatReal64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/math/MathUtils.h"

namespace QORN {

namespace {

// Rounding may hide that a normal matrix is singular, so what makes it so is looked for in x itself.
bool HasDistinctValues(const VecReal64 &x, std::int64_t count) {
  if (x.GetSize() < count) return false;
  VecReal64 found(static_cast<int>(count));
  int distinct = 0;
  for (int i = 0; i < x.GetSize() && distinct < count; ++i) {
    double *end = found.GetPtr(distinct);
    if (std::find(found.GetPtr(), end, x[i]) == end) found[distinct++] = x[i];
  }
  return distinct >= count;
}

// (At A)^-1 At for the transpose At of A.
void PseudoInverse(MatReal64 &result, const MatReal64 &transposed, const MatReal64 &matrix) {
  MatReal64 normal, inverse;
  MathUtils::Mul(normal, transposed, matrix);
  MathUtils::Inv(inverse, normal);
  MathUtils::Mul(result, inverse, transposed);
}

void FitPolynomial(VecReal64 &p, const VecReal64 &x, const VecReal64 &y, int degree) {
  checks::Operand("length of y", y.GetSize(), x.GetSize());
  const std::int64_t count = std::int64_t{degree} + 1;
  if (count < 1 || !HasDistinctValues(x, count)) ThrowSingular();
  const int terms = static_cast<int>(count);
  MatReal64 matrix, transposed(terms, x.GetSize()), solution;
  VecReal64 power;
  for (int c = 0; c < terms; ++c) {
    MathUtils::Pow(power, x, c);
    transposed.Import(c, power);
  }
  MathUtils::Trns(matrix, transposed);
  PseudoInverse(solution, transposed, matrix);
  MathUtils::Mul(p, solution, y);
  Kernels<double>::Flip(p.GetPtr(), p.GetSize());
}

template <class T, class V> T FirstOf(const V &p) { return p.GetSize() > 0 ? p[0] : T{0}; }

template <class V, class T> void Evaluate(T &out, T x, const V &p) {
  T result = FirstOf<T>(p);
  for (int k = 1; k < p.GetSize(); ++k) result = result * x + p[k];
  out = result;
}

// The same for each element, block by block: a step is a pass over a block that stays in the nearest cache.
template <class V> void EvaluateAll(V &out, const V &x, const V &p) {
  using T = ElementOf<V>;
  MapThroughScratch(out, x, [&p](const T *values, T *result, int n) {
    Kernels<T>::Set(FirstOf<T>(p), result, n);
    for (int k = 1; k < p.GetSize(); ++k) {
      Kernels<T>::Mul(values, result, n);
      Kernels<T>::AddC(p[k], result, n);
    }
  });
}

// x(i) is the abscissa of y[i].
template <class T, class V, class X> void FitLine(T &slope, T &intercept, int n, X x, const V &y) {
  double sx = 0.0, sxx = 0.0, sy = 0.0, sxy = 0.0;
  for (int i = 0; i < n; ++i) {
    const T xi = x(i), yi = y[i], square = xi * xi, product = xi * yi;
    sx += static_cast<double>(xi);
    sxx += static_cast<double>(square);
    sy += static_cast<double>(yi);
    sxy += static_cast<double>(product);
  }
  const double den = n * sxx - sx * sx;
  if (den == 0.0) {
    slope = static_cast<T>(1e10);
    intercept = 0;
    return;
  }
  slope = static_cast<T>((n * sxy - sy * sx) / den);
  intercept = static_cast<T>((sy * sxx - sxy * sx) / den);
}

template <class T, class V> void FitLine(T &slope, T &intercept, const V &x, const V &y) {
  checks::Operand("length of y", y.GetSize(), x.GetSize());
  FitLine(
      slope, intercept, x.GetSize(), [&x](int i) { return x[i]; }, y);
}

template <class T, class V> void FitLine(T &slope, T &intercept, const V &y) {
  FitLine(
      slope, intercept, y.GetSize(), [](int i) { return static_cast<T>(i); }, y);
}

} // namespace

void LeastSqrFit::Polyfit(VecReal64 &p, const VecReal64 &x, const VecReal64 &y, int degree) {
  FitPolynomial(p, x, y, degree);
}

void LeastSqrFit::Polyfit(VecReal64 &p, const VecReal64 &y, int degree) {
  VecReal64 x;
  x.Ramp(y.GetSize());
  FitPolynomial(p, x, y, degree);
}

void LeastSqrFit::Polyfit(VecReal32 &p, const VecReal32 &x, const VecReal32 &y, int degree) {
  VecReal64 wide;
  FitPolynomial(wide, VecReal64(x), VecReal64(y), degree);
  p = wide;
}

void LeastSqrFit::Polyfit(VecReal32 &p, const VecReal32 &y, int degree) {
  VecReal64 wide;
  Polyfit(wide, VecReal64(y), degree);
  p = wide;
}

void LeastSqrFit::Polyval(VecReal64 &out, const VecReal64 &x, const VecReal64 &p) { EvaluateAll(out, x, p); }
void LeastSqrFit::Polyval(VecReal32 &out, const VecReal32 &x, const VecReal32 &p) { EvaluateAll(out, x, p); }
void LeastSqrFit::Polyval(double &out, double x, const VecReal64 &p) { Evaluate(out, x, p); }
void LeastSqrFit::Polyval(float &out, float x, const VecReal32 &p) { Evaluate(out, x, p); }

void LeastSqrFit::LinearLeastSquareFit(float &slope, float &intercept, const VecReal32 &x,
                                       const VecReal32 &y) {
  FitLine(slope, intercept, x, y);
}
void LeastSqrFit::LinearLeastSquareFit(double &slope, double &intercept, const VecReal64 &x,
                                       const VecReal64 &y) {
  FitLine(slope, intercept, x, y);
}
void LeastSqrFit::LinearLeastSquareFit(float &slope, float &intercept, const VecReal32 &y) {
  FitLine(slope, intercept, y);
}
void LeastSqrFit::LinearLeastSquareFit(double &slope, double &intercept, const VecReal64 &y) {
  FitLine(slope, intercept, y);
}

void LeastSqrFit::LinearLeastSquareFit(double &slope, double &intercept, VecReal64 &residual,
                                       const VecReal64 &x, const VecReal64 &y) {
  FitLine(slope, intercept, x, y);
  Map2(residual, y, x, [=](const double *ys, const double *xs, double *result, int n) {
    for (int i = 0; i < n; ++i) result[i] = (ys[i] - intercept) - xs[i] * slope;
  });
}

void LeastSqrFit::LinearLeastSquareFit(MatReal64 &beta, const MatReal64 &y, const MatReal64 &X) {
  if (X.GetRows() < X.GetCols()) ThrowSingular();
  MatReal64 transposed, solution;
  MathUtils::Trns(transposed, X);
  PseudoInverse(solution, transposed, X);
  MathUtils::Mul(beta, solution, y);
}

} // namespace QORN
