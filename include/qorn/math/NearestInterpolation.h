#ifndef QORN_MATH_NEARESTINTERPOLATION_H
#define QORN_MATH_NEARESTINTERPOLATION_H

#include "qorn/math/Interpolation.h"

namespace QORN {

/// Takes the y of the nearest point of a table. Tables, search, scratch and copies: Interpolation.
class QORN_API NearestInterpolation : public Interpolation {
public:
  NearestInterpolation() = default;
  NearestInterpolation(const NearestInterpolation &src) = default;
  NearestInterpolation &operator=(const NearestInterpolation &src) = default;
  ~NearestInterpolation() override;

  /// yOut = the y of the point nearest to xIn: what the vector form gives for this one value. Returns what
  /// the vector form returns.
  ///@{
  int Interpolate(double &yOut, const VecReal64 &x, const VecReal64 &y, const double &xIn) override;
  int Interpolate(float &yOut, const VecReal32 &x, const VecReal32 &y, float xIn) override;
  ///@}

  /// yOut[j] = the y of the point nearest to xIn[j], yOut resized to the length of xIn. yOut may be xIn, but
  /// neither x nor y. With the n - 1 borders b[i] = (x[i] + x[i+1]) * 0.5 between the points, for a value v
  ///   v < b[0]:    y[0],
  ///   v > b[n-2]:  the last element of y,
  ///   v == b[n-2]: y[n-2],
  ///   else:        y[i+1], i the last border for which b[i] > v is false.
  /// So a value on the last border takes the lower neighbour, one on any other border the upper one.
  /// Not-a-number takes y[n-1]; a table of one point gives its y for every value.
  ///
  /// Returns 0, or 10002 if there is a value but no point, or y is shorter than x; all results are then
  /// not-a-number. Throws QORNException 11001 if there is no memory.
  ///@{
  int Interpolate(VecReal64 &yOut, const VecReal64 &x, const VecReal64 &y, const VecReal64 &xIn) override;
  int Interpolate(VecReal32 &yOut, const VecReal32 &x, const VecReal32 &y, const VecReal32 &xIn) override;
  ///@}

private:
  int ComputeBorder(VecReal32 &borders, const VecReal32 &x, const VecReal32 &y);
  int ComputeBorder(VecReal64 &borders, const VecReal64 &x, const VecReal64 &y);

  VecReal64 m_borders64;
  VecReal32 m_borders32;
};

} // namespace QORN

#endif
