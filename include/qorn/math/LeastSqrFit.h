#ifndef QORN_MATH_LEASTSQRFIT_H
#define QORN_MATH_LEASTSQRFIT_H

#include "qorn/Export.h"

namespace QORN {

class MatReal64;
class VecReal32;
class VecReal64;

/// Least-squares fits of polynomials, straight lines and linear models: static functions only, reentrant.
///
/// Polynomials and models are fitted by the normal equations and an explicit inverse, which squares the
/// condition of the problem: for high degrees keep x near -1 to 1. Polynomials have their coefficients in the
/// order of falling powers, so that Polyval takes what Polyfit gives. Lengths that must agree are asserted by
/// a build with QORN_CHECKED only.
class QORN_API LeastSqrFit {
public:
  /// p = the degree + 1 coefficients of the polynomial with the least sum of squares of y[i] - p(x[i]) over
  /// the length of x, computed in double. y has as many elements; p must be neither x nor y in double. The
  /// forms without x take x[i] = i. Allocates matrices of (degree + 1) times the length of x. Throws
  /// QORNException 12004 "singular matrix" if x has fewer than degree + 1 distinct values, the degree is
  /// negative, or the normal matrix is as good as singular or not finite; p then stays as it was. An x that
  /// is not finite makes it so, unless the degree is 0, for which p is the mean of y whatever x holds. A y
  /// that is not finite throws nothing: no coefficient is then finite.
  ///@{
  static void Polyfit(VecReal64 &p, const VecReal64 &x, const VecReal64 &y, int degree);
  static void Polyfit(VecReal64 &p, const VecReal64 &y, int degree);
  static void Polyfit(VecReal32 &p, const VecReal32 &x, const VecReal32 &y, int degree);
  static void Polyfit(VecReal32 &p, const VecReal32 &y, int degree);
  ///@}

  /// out[i] = p[0] x[i]^n + ... + p[n] by Horner's rule, a rounding for each product and each sum, out
  /// resized to the length of x. out may be x but not p. p has at least one element; an empty one is 0.
  ///@{
  static void Polyval(VecReal64 &out, const VecReal64 &x, const VecReal64 &p);
  static void Polyval(VecReal32 &out, const VecReal32 &x, const VecReal32 &p);
  ///@}

  /// out = the same of one x.
  ///@{
  static void Polyval(double &out, double x, const VecReal64 &p);
  static void Polyval(float &out, float x, const VecReal32 &p);
  ///@}

  /// The straight line slope * x + intercept with the least sum of squares of its distances from y, over the
  /// length of x: with n points, den = n sum(x^2) - sum(x)^2,
  ///   slope = (n sum(x y) - sum(x) sum(y)) / den, intercept = (sum(y) sum(x^2) - sum(x) sum(x y)) / den,
  /// the sums in double and in order; of float elements the products are formed in float. The forms without x
  /// take x[i] = i, over the length of y. Where den is 0, since all x are equal or there are no points, the
  /// line is vertical: the slope is 1e10 and the intercept 0. Nothing is thrown or allocated.
  ///@{
  static void LinearLeastSquareFit(float &slope, float &intercept, const VecReal32 &x, const VecReal32 &y);
  static void LinearLeastSquareFit(double &slope, double &intercept, const VecReal64 &x, const VecReal64 &y);
  static void LinearLeastSquareFit(float &slope, float &intercept, const VecReal32 &y);
  static void LinearLeastSquareFit(double &slope, double &intercept, const VecReal64 &y);
  ///@}

  /// The same line, and residual[i] = (y[i] - intercept) - x[i] * slope, residual resized to the length of y.
  /// residual may be x or y if they are of one length.
  static void LinearLeastSquareFit(double &slope, double &intercept, VecReal64 &residual, const VecReal64 &x,
                                   const VecReal64 &y);

  /// The general linear model: beta = inverse(X' X) X' y, a row for each column of X, with y as a matrix of
  /// one column and as many rows as X. beta must be neither y nor X. Throws QORNException 12004 "singular
  /// matrix" if X has fewer rows than columns or its columns depend on each other; beta then stays as it was.
  static void LinearLeastSquareFit(MatReal64 &beta, const MatReal64 &y, const MatReal64 &X);
};

} // namespace QORN

#endif
