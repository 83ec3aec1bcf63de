#ifndef QORN_MATH_SPLINE_H
#define QORN_MATH_SPLINE_H

#include "qorn/math/Interpolation.h"

namespace QORN {

/// Interpolates a table with a cubic spline, whose first and second derivatives are continuous.
///
/// The second derivatives at the points solve a tridiagonal system (de Boor, A Practical Guide to Splines,
/// ch. IV); between two points the curve is the cubic that they determine. Each end has either a first
/// derivative of its own or none, which makes it natural: its second derivative is then 0. A new object is
/// natural at both ends. Outside the table the first or the last cubic goes on, without clamping.
///
/// For one table and many calls, MakeSplineTable solves the system once. Every other call solves it again, in
/// O(n) with two blocks of n elements that it allocates and frees. A value costs a search of O(log n) at
/// most; the object keeps the last interval as a start for the next value, which never changes the result
/// where x ascends. The order of x is not checked: a table in another order gives some curve, and two points
/// of equal x divide by zero, without an error.
///
/// Copies are independent. An object is for one thread at a time.
class QORN_API Spline : public Interpolation {
public:
  Spline() = default;
  Spline(const Spline &src) = default;
  Spline &operator=(const Spline &src) = default;
  ~Spline() override;

  /// The first derivative at the first point, or at the last one, in force until it is set again. Above 1e30
  /// the end is natural.
  ///@{
  void SetBoundaryCondition1(double derivative) { m_firstBoundary = derivative; }
  void SetBoundaryCondition2(double derivative) { m_lastBoundary = derivative; }
  ///@}

  /// Makes both ends natural.
  void SetNaturalSpline();

  /// yOut = the spline at xIn: what the vector form gives for this one value. Returns what the vector form
  /// returns; unless that is 0, yOut is of no use.
  ///@{
  int Interpolate(double &yOut, const VecReal64 &x, const VecReal64 &y, const double &xIn) override;
  int Interpolate(float &yOut, const VecReal32 &x, const VecReal32 &y, float xIn) override;
  ///@}

  /// yOut[j] = the spline at xIn[j], yOut resized to the length of xIn. yOut may be xIn, but neither x nor y.
  /// On the interval from x[i] to x[i+1] of width h, with a = (x[i+1] - v) / h and b = (v - x[i]) / h,
  ///   ((b^3 - b) y2[i+1] + (a^3 - a) y2[i]) h^2 / 6 + (y[i+1] b + y[i] a),
  /// y2 being the second derivatives. An interval of no width gives the y of its upper end, and so a table of
  /// one point its y.
  ///
  /// Returns 0; 10003 if x and y differ in length or there is no memory for the second derivatives; 11001 if
  /// there is none to solve for them; 10002 if there is a value but no point, all results then being
  /// not-a-number. Throws QORNException 11001 if there is no memory for yOut.
  ///@{
  int Interpolate(VecReal64 &yOut, const VecReal64 &x, const VecReal64 &y, const VecReal64 &xIn) override;
  int Interpolate(VecReal32 &yOut, const VecReal32 &x, const VecReal32 &y, const VecReal32 &xIn) override;
  ///@}

  /// table = the second derivatives at the points, with the boundaries in force; mind that y comes before x.
  /// Exchanged arguments give a useless table and no error. False if there is no memory to solve for them, or
  /// y is shorter than x; table then stays as it was. Throws QORNException 11001 if there is none for table.
  bool MakeSplineTable(VecReal32 &table, const VecReal32 &y, const VecReal32 &x);

  /// yOut[j] = the spline at xIn[j] with a table of MakeSplineTable for the same x and y; yOut is resized to
  /// the length of xIn and may be xIn, but none of the others. Always true; without a point, or if y or the
  /// table is shorter than x, all results are not-a-number. Allocates nothing beyond yOut.
  bool Interpolate(VecReal32 &yOut, const VecReal32 &xIn, const VecReal32 &y, const VecReal32 &x,
                   const VecReal32 &table);

  /// The same of one value v.
  float Interpolate(float v, const VecReal32 &y, const VecReal32 &x, const VecReal32 &table);

protected:
  /// y2[i] = the second derivative at point i for 0 <= i < n, with the boundaries in force. In the float form
  /// elements are float, while constants, and what is divided or multiplied by them, are double. A table of
  /// one point has 0. False if there is no memory for n elements of scratch.
  ///@{
  bool SplineInit(int n, const VecReal32 &x, const VecReal32 &y, float *y2);
  bool SplineInit(int n, const VecReal64 &x, const VecReal64 &y, double *y2);
  ///@}

  /// The value at v of the spline through n >= 1 points with the second derivatives y2. The search starts
  /// from the interval of the last value.
  ///@{
  float Splint(int n, const VecReal32 &x, const VecReal32 &y, const float *y2, float v);
  double Splint(int n, const VecReal64 &x, const VecReal64 &y, const double *y2, double v);
  ///@}

private:
  struct Evaluation; // what the two precisions share

  double m_naturalThreshold = 1e30;
  double m_firstBoundary = 1e31;
  double m_lastBoundary = 1e31;
  VecReal64 m_scalarIn64;
  VecReal64 m_scalarOut64;
  VecReal32 m_scalarIn32;
  VecReal32 m_scalarOut32;
  int m_low = 0; // the bracket: the interval of the last value, or both 0
  int m_high = 0;
};

} // namespace QORN

#endif
