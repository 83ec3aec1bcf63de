#ifndef QORN_MATH_CUBICHERMITEINTERPOLATION_H
#define QORN_MATH_CUBICHERMITEINTERPOLATION_H

#include "qorn/math/Interpolation.h"

namespace QORN {

/// Interpolates a table with a piecewise cubic that keeps the shape of the data: it rises where they rise,
/// falls where they fall, and does not overshoot.
///
/// The derivative at an inner point is a weighted harmonic mean of the slopes of its two intervals, 0 where
/// they differ in sign or one of them is 0; at an end it comes from a three-point formula held to the shape
/// (Fritsch and Butland, A method for constructing local monotone piecewise cubic interpolants, SIAM J. Sci.
/// Stat. Comput. 5, 1984; the routines PCHIM and PCHFE of SLATEC). Outside the table the first or the last
/// cubic goes on, without clamping; it need not be monotone there.
///
/// All work is in double; of a float table only the differences of neighbours are formed in float. The
/// derivatives are computed afresh at each call, in a buffer that is kept, so that repeated calls on tables
/// of the same or a smaller length allocate nothing. Values in any order give the same results, those in
/// ascending order sooner: n points and m values then take O(n + m), else O(n + m log n).
///
/// Copies are independent. An object is for one thread at a time.
class QORN_API CubicHermiteInterpolation : public Interpolation {
public:
  CubicHermiteInterpolation() = default;
  CubicHermiteInterpolation(const CubicHermiteInterpolation &src) = default;
  CubicHermiteInterpolation &operator=(const CubicHermiteInterpolation &src) = default;
  ~CubicHermiteInterpolation() override;

  /// The scalar forms: what the vector form gives for one value.
  using Interpolation::Interpolate;

  /// yOut[j] = the curve at xIn[j], yOut resized to the length of xIn. yOut may be xIn, but neither x nor y.
  /// On the interval that begins at x[i], with t = v - x[i], h its width, s its slope and d the derivatives,
  ///   y[i] + t (d[i] + t (c2 + t c3)),
  ///   c2 = -(2 (d[i] - s) + (d[i+1] - s)) / h, c3 = (d[i] - 2 s + d[i+1]) / h^2.
  /// Returns 0. Throws QORNException 10002 "invalid input parameter" if an element of x is not less than its
  /// successor, or y is shorter than x; then 12005 "CubicHermiteInterpolation error", yOut already resized,
  /// if there are fewer than two points. Where x holds not-a-number, results are not-a-number from there on.
  ///@{
  int Interpolate(VecReal64 &yOut, const VecReal64 &x, const VecReal64 &y, const VecReal64 &xIn) override;
  int Interpolate(VecReal32 &yOut, const VecReal32 &x, const VecReal32 &y, const VecReal32 &xIn) override;
  ///@}

private:
  struct Curve; // what the two precisions share

  double *GetWorkingBuffer(int n);
  static void spline_pchip_set(int n, const VecReal32 &x, const VecReal32 &y, double *d);
  static void spline_pchip_set(int n, const VecReal64 &x, const VecReal64 &y, double *d);
  static void spline_pchip_val(int n, const VecReal32 &x, const VecReal32 &y, const double *d, int ne,
                               const VecReal32 &xe, VecReal32 &ye);
  static void spline_pchip_val(int n, const VecReal64 &x, const VecReal64 &y, const double *d, int ne,
                               const VecReal64 &xe, VecReal64 &ye);
  static int chfev(double x1, double x2, double f1, double f2, double d1, double d2, int ne,
                   const VecReal32 &xe, int xeStart, VecReal32 &fe, int feStart, int *next);
  static int chfev(double x1, double x2, double f1, double f2, double d1, double d2, int ne,
                   const VecReal64 &xe, int xeStart, VecReal64 &fe, int feStart, int *next);
  static double pchst(double a, double b);
  static double d_max(double a, double b) { return a > b ? a : b; }
  static double d_min(double a, double b) { return a > b ? b : a; }
  static int i_max(int a, int b) { return a > b ? a : b; }
  [[noreturn]] static void exit(int status);

  VecReal64 m_buffer;
};

} // namespace QORN

#endif
