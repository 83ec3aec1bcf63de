#ifndef QORN_MATH_INTERPOLATIONFACTORY_H
#define QORN_MATH_INTERPOLATIONFACTORY_H

#include "qorn/Export.h"

namespace QORN {

class Interpolation;

/// The kinds of interpolator.
enum InterpolationType : int {
  InterpLinear = 0,      ///< Interpolation
  InterpSpline = 1,      ///< Spline, natural at both ends
  InterpNearest = 2,     ///< NearestInterpolation
  InterpCubicHermite = 3 ///< CubicHermiteInterpolation
};

/// Makes interpolators by their kind, and remembers the kind that was last asked for.
class QORN_API InterpolationFactory {
public:
  InterpolationFactory() = default;
  InterpolationFactory(const InterpolationFactory &src) = default;
  InterpolationFactory &operator=(const InterpolationFactory &src) = default;
  virtual ~InterpolationFactory();

  /// A new interpolator of the kind, or null for a kind that is not named. It belongs to the caller, who
  /// keeps it in a std::unique_ptr<Interpolation>.
  Interpolation *MakeInterpolation(InterpolationType type);

  /// The kind of the last MakeInterpolation, named or not; InterpLinear before the first.
  InterpolationType GetType() const { return m_type; }

private:
  InterpolationType m_type = InterpLinear;
};

} // namespace QORN

#endif
