#include "qorn/math/InterpolationFactory.h"

#include <gtest/gtest.h>

#include <memory>
#include <typeinfo>

#include "qorn/math/CubicHermiteInterpolation.h"
#include "qorn/math/NearestInterpolation.h"
#include "qorn/math/Spline.h"

namespace {

using namespace QORN;

TEST(InterpolationFactory, MakeInterpolation_OfEachKind_MakesItsClass) {
  const struct {
    InterpolationType type;
    int value;
    const std::type_info &made;
  } kinds[] = {{InterpLinear, 0, typeid(Interpolation)},
               {InterpSpline, 1, typeid(Spline)},
               {InterpNearest, 2, typeid(NearestInterpolation)},
               {InterpCubicHermite, 3, typeid(CubicHermiteInterpolation)}};
  InterpolationFactory factory;
  for (const auto &kind : kinds) {
    EXPECT_EQ(static_cast<int>(kind.type), kind.value);
    const std::unique_ptr<Interpolation> made(factory.MakeInterpolation(kind.type));
    ASSERT_NE(made, nullptr);
    const Interpolation &object = *made;
    EXPECT_TRUE(typeid(object) == kind.made) << kind.value;
    EXPECT_EQ(factory.GetType(), kind.type);
  }
}

TEST(InterpolationFactory, MakeInterpolation_OfAnotherValue_GivesNullAndKeepsTheValue) {
  InterpolationFactory factory;
  for (const int value : {4, -1, 1000}) {
    EXPECT_EQ(factory.MakeInterpolation(static_cast<InterpolationType>(value)), nullptr);
    EXPECT_EQ(static_cast<int>(factory.GetType()), value);
  }
}

TEST(InterpolationFactory, GetType_BeforeTheFirstRequest_IsLinear) {
  EXPECT_EQ(InterpolationFactory().GetType(), InterpLinear);
}

TEST(InterpolationFactory, Copy_KeepsTheLastKindOfItsOwn) {
  InterpolationFactory factory;
  const std::unique_ptr<Interpolation> first(factory.MakeInterpolation(InterpSpline));
  InterpolationFactory copy(factory), assigned;
  assigned = factory;
  const std::unique_ptr<Interpolation> second(copy.MakeInterpolation(InterpNearest));
  EXPECT_EQ(factory.GetType(), InterpSpline);
  EXPECT_EQ(assigned.GetType(), InterpSpline);
  EXPECT_EQ(copy.GetType(), InterpNearest);
}

} // namespace
