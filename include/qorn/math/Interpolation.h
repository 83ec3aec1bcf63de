#ifndef QORN_MATH_INTERPOLATION_H
#define QORN_MATH_INTERPOLATION_H

#include "qorn/Export.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

/// Interpolates linearly between the points of a table, and is the base of all interpolators.
///
/// A table is given at each call as two vectors: point i is (x[i], y[i]) for 0 <= i < n, n the length of x,
/// which y shares, with x strictly ascending. Nothing of it is kept. Values outside the table are
/// extrapolated, never clamped. One vector call costs a pass over the table and a search for each value; it
/// serves many values better than as many scalar calls, each of which makes that pass again.
///
/// The order of x is not checked: CheckAscendingOrder tells it where a table is in doubt. Where x ascends
/// strictly, a search takes O(log n) steps, and fewer for values in ascending order. Any other x, one that
/// holds not-a-number included, takes the point that a scan from the last point down stops at.
///
/// An object keeps scratch vectors, so that repeated calls on tables of the same or a smaller length allocate
/// nothing. Copies are independent. An object is for one thread at a time.
class QORN_API Interpolation {
public:
  Interpolation() = default;
  Interpolation(const Interpolation &src) = default;
  Interpolation &operator=(const Interpolation &src) = default;
  virtual ~Interpolation();

  /// yOut = the interpolated value at xIn: what the vector form gives for this one value. Returns what the
  /// vector form returns.
  ///@{
  virtual int Interpolate(double &yOut, const VecReal64 &x, const VecReal64 &y, const double &xIn);
  virtual int Interpolate(float &yOut, const VecReal32 &x, const VecReal32 &y, float xIn);
  ///@}

  /// yOut[j] = the interpolated value at xIn[j], yOut resized to the length of xIn. yOut may be xIn, but
  /// neither x nor y. With s[i] = (y[i+1] - y[i]) / (x[i+1] - x[i]), for a value v
  ///   v <= x[0]:   (v - x[0]) s[0] + y[0],
  ///   v >= x[n-1]: (v - x[n-1]) s[n-2] + the last element of y,
  ///   else:        (v - x[i]) s[i] + y[i], i the last point for which x[i] > v is false,
  /// each step rounded to the element type. Points of equal x divide by zero, without an error; the table of
  /// one point has the slope 0; for not-a-number the result is not-a-number.
  ///
  /// Returns 0, or 10002 if there is a value but no point, or y is shorter than x; all results are then
  /// not-a-number. Throws QORNException 11001 if there is no memory.
  ///@{
  virtual int Interpolate(VecReal64 &yOut, const VecReal64 &x, const VecReal64 &y, const VecReal64 &xIn);
  virtual int Interpolate(VecReal32 &yOut, const VecReal32 &x, const VecReal32 &y, const VecReal32 &xIn);
  ///@}

  /// True if each element is less than its successor, or there are fewer than two elements.
  ///@{
  static bool CheckAscendingOrder(const VecReal32 &x);
  static bool CheckAscendingOrder(const VecReal64 &x);
  ///@}

private:
  int ComputeSlope(VecReal32 &slopes, const VecReal32 &x, const VecReal32 &y);
  int ComputeSlope(VecReal64 &slopes, const VecReal64 &x, const VecReal64 &y);

  VecReal64 m_scalarIn64;
  VecReal64 m_scalarOut64;
  VecReal64 m_spare1; // unused, like the next: they keep the places of the members below
  VecReal64 m_spare2;
  VecReal32 m_scalarIn32;
  VecReal32 m_scalarOut32;
  VecReal64 m_slopes64;
  VecReal32 m_slopes32;
};

} // namespace QORN

#endif
