#include "qorn/math/InterpolationFactory.h"

#include <memory>

#include "qorn/math/CubicHermiteInterpolation.h"
#include "qorn/math/NearestInterpolation.h"
#include "qorn/math/Spline.h"

namespace QORN {

namespace {

std::unique_ptr<Interpolation> Make(InterpolationType type) {
  switch (type) {
  case InterpLinear:
    return std::make_unique<Interpolation>();
  case InterpSpline:
    return std::make_unique<Spline>();
  case InterpNearest:
    return std::make_unique<NearestInterpolation>();
  case InterpCubicHermite:
    return std::make_unique<CubicHermiteInterpolation>();
  }
  return nullptr;
}

} // namespace

InterpolationFactory::~InterpolationFactory() = default;

Interpolation *InterpolationFactory::MakeInterpolation(InterpolationType type) {
  m_type = type;
  return Make(type).release();
}

} // namespace QORN
