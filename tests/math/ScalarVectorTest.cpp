// A scalar form gives the bits that the vector form gives to the same element, wherever that stands, and the
// in-place form those of the other, at every instruction-set level.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/math/MathUtils.h"
#include "support/KernelCheck.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::ElementOf;
using test::Of;
using test::Same;
using test::Samples;
using test::Show;

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

struct Row {
  std::string name;
  std::function<void()> check;
};

void CheckAtEveryLevel(const std::vector<Row> &rows) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const Row &row : rows) {
      SCOPED_TRACE(row.name + " at " + level.name);
      row.check();
    }
  }
}

template <class T> void ExpectSame(const T &got, const T &expected, int i) {
  EXPECT_TRUE(Same()(got, expected)) << "element " << i << ": " << Show(got) << " and " << Show(expected);
}

/// The samples that the condition lets pass.
template <class T, class Condition> std::vector<T> Where(Condition condition) {
  std::vector<T> values;
  std::ranges::copy_if(Samples<T>(), std::back_inserter(values), condition);
  return values;
}

// Vectors and their scalar functions.

/// vector(dst, src) against scalar(x): as one vector of all arguments, and with each argument alone.
template <class D, class S, class Scalar, class Vector>
Row Agree(const std::string &name, Scalar scalar, Vector vector,
          const std::vector<ElementOf<S>> &arguments = Samples<ElementOf<S>>()) {
  return {name, [=] {
            ASSERT_FALSE(arguments.empty());
            D all, one;
            vector(all, Of<S>(arguments));
            for (int i = 0; i < all.GetSize(); ++i) {
              const ElementOf<S> x = arguments[static_cast<std::size_t>(i)];
              ExpectSame<ElementOf<D>>(scalar(x), all[i], i);
              vector(one, Of<S>({x}));
              ExpectSame<ElementOf<D>>(scalar(x), one[0], i);
            }
          }};
}

/// The same for members of the form void F(V &dst, const V &src) and T F(T).
template <class D, class S = D>
Row Agree(const std::string &name, ElementOf<D> (*scalar)(ElementOf<S>), void (*vector)(D &, const S &)) {
  return Agree<D, S>(name, scalar, [vector](D &dst, const S &src) { vector(dst, src); });
}

/// The rounding functions: in place on vectors, on complex vectors and on raw arrays, and the scalar form.
template <class V, class C>
Row Rounding(const std::string &name, ElementOf<V> (*scalar)(ElementOf<V>), void (*vector)(V &),
             void (*complex)(C &), void (*raw)(ElementOf<V> *, int)) {
  return {name, [=] {
            using T = ElementOf<V>;
            const std::vector<T> arguments = Samples<T>();
            V vec = Of<V>(arguments), array = Of<V>(arguments);
            vector(vec);
            raw(array.GetPtr(), array.GetSize());
            C pairs(vec.GetSize());
            for (int i = 0; i < vec.GetSize(); ++i) {
              const T x = arguments[static_cast<std::size_t>(i)];
              pairs[i] = {x, -x};
            }
            complex(pairs);
            for (int i = 0; i < vec.GetSize(); ++i) {
              const T x = arguments[static_cast<std::size_t>(i)];
              ExpectSame(scalar(x), vec[i], i);
              ExpectSame(scalar(x), array[i], i);
              ExpectSame({scalar(x), scalar(-x)}, pairs[i], i);
            }
          }};
}

#define FORMS(name) #name, &MathUtils::name, &MathUtils::name
#define ROUNDING_FORMS(name) #name, &MathUtils::name, &MathUtils::name, &MathUtils::name, &MathUtils::name

// A logarithm that the check guards, and one that it does not.
using Log = void (*)(VecReal64 &, const VecReal64 &, MathUtils::Log0CheckType);
Row LogAgrees(const std::string &name, double (*scalar)(double), Log vector, MathUtils::Log0CheckType check) {
  // A scalar below 0 has a result of its own; a vector's element that is tiny shows the offset.
  const auto alike = [check](double x) {
    if (check == MathUtils::Log0Check) return x == 0.0 || x > 1e-20 || std::isnan(x);
    return x > 0.0 || std::isnan(x);
  };
  return Agree<VecReal64, VecReal64>(
      name, scalar, [=](VecReal64 &dst, const VecReal64 &src) { vector(dst, src, check); },
      Where<double>(alike));
}

TEST(MathUtils, AnyScalarForm_AtEveryLevel_HasTheBitsOfTheVectorForm) {
  using M = MathUtils;
  std::vector<Row> rows = {Agree<VecReal32>(FORMS(Abs)),
                           Agree<VecReal64>(FORMS(Abs)),
                           Agree<VecReal32, VecCplx32>(FORMS(Abs)),
                           Agree<VecReal64, VecCplx64>(FORMS(Abs)),
                           Agree<VecReal64>(FORMS(Sqr)),
                           Agree<VecReal64>(FORMS(Sqrt)),
                           Agree<VecReal64>(FORMS(Cos)),
                           Agree<VecReal64>(FORMS(Sin)),
                           Agree<VecReal64>(FORMS(Atan)),
                           Agree<VecReal64>(FORMS(Pow10)),
                           Agree<VecReal32>(FORMS(Exp)),
                           Agree<VecCplx32, VecReal32>(FORMS(Expj)),
                           Agree<VecCplx64, VecReal64>(FORMS(Expj)),
                           Rounding<VecReal32, VecCplx32>(ROUNDING_FORMS(Round)),
                           Rounding<VecReal64, VecCplx64>(ROUNDING_FORMS(Round)),
                           Rounding<VecReal32, VecCplx32>(ROUNDING_FORMS(Trunc)),
                           Rounding<VecReal64, VecCplx64>(ROUNDING_FORMS(Trunc)),
                           Rounding<VecReal32, VecCplx32>(ROUNDING_FORMS(Floor)),
                           Rounding<VecReal64, VecCplx64>(ROUNDING_FORMS(Floor)),
                           Rounding<VecReal32, VecCplx32>(ROUNDING_FORMS(Ceil)),
                           Rounding<VecReal64, VecCplx64>(ROUNDING_FORMS(Ceil)),
                           LogAgrees("Log10", &M::Log10, &M::Log10, M::Log0NoCheck),
                           LogAgrees("Log10 with check", &M::Log10, &M::Log10, M::Log0Check),
                           LogAgrees("Ln", &M::Ln, &M::Ln, M::Log0NoCheck),
                           LogAgrees("Ln with check", &M::Ln, &M::Ln, M::Log0Check)};
  for (const double y : {0.0, -0.0, 1.0, -1.0, 2.0, 0.5, -2.5, 3.0, 1e-3, 700.0, -kInf, kInf, kNaN}) {
    rows.push_back(Agree<VecReal64, VecReal64>(
        "Pow to " + Show(y), [y](double x) { return M::Pow(x, y); },
        [y](VecReal64 &dst, const VecReal64 &src) { M::Pow(dst, src, y); }));
    rows.push_back(Agree<VecReal64, VecReal64>(
        "Atan2 over " + Show(y), [y](double x) { return M::Atan2(x, y); },
        [y](VecReal64 &dst, const VecReal64 &src) {
          VecReal64 x(src.GetSize());
          x.Set(y);
          M::Atan2(dst, src, x);
        }));
  }
  CheckAtEveryLevel(rows);
}

// A single double never underflows, so only the arguments above the smallest normal result agree with a
// longer vector; with a vector of one element all do.
TEST(MathUtils, Exp_ScalarAtEveryLevel_HasTheBitsOfTheVectorForm) {
  const auto vector = [](VecReal64 &dst, const VecReal64 &src) { MathUtils::Exp(dst, src); };
  const auto scalar = [](double x) { return MathUtils::Exp(x); };
  std::vector<Row> rows = {Agree<VecReal64, VecReal64>(
      "Exp", scalar, vector, Where<double>([](double x) { return !(x < -708.0) || std::isinf(x); }))};
  for (const double x : {-708.5, -720.0, -745.0, -1000.0, -1e300}) {
    rows.push_back(Agree<VecReal64, VecReal64>("Exp of " + Show(x), scalar, vector, {x}));
  }
  CheckAtEveryLevel(rows);
}

// In place and out of place.

template <class V, class OutOfPlace, class InPlace>
Row SameInPlace(const std::string &name, OutOfPlace outOfPlace, InPlace inPlace) {
  return {name, [=] {
            const std::vector<ElementOf<V>> arguments = Samples<ElementOf<V>>();
            V dst, vec = Of<V>(arguments);
            outOfPlace(dst, Of<V>(arguments));
            inPlace(vec);
            ASSERT_EQ(dst.GetSize(), vec.GetSize());
            for (int i = 0; i < vec.GetSize(); ++i) ExpectSame(vec[i], dst[i], i);
          }};
}

template <class V>
Row SameInPlace(const std::string &name, void (*outOfPlace)(V &, const V &), void (*inPlace)(V &)) {
  return SameInPlace<V>(
      name, [=](V &dst, const V &src) { outOfPlace(dst, src); }, [=](V &vec) { inPlace(vec); });
}

template <class V>
Row SameInPlace(const std::string &name, void (*outOfPlace)(V &, const V &, MathUtils::Log0CheckType),
                void (*inPlace)(V &, MathUtils::Log0CheckType), MathUtils::Log0CheckType check) {
  return SameInPlace<V>(
      name, [=](V &dst, const V &src) { outOfPlace(dst, src, check); }, [=](V &vec) { inPlace(vec, check); });
}

template <class V> std::vector<Row> RealRows() {
  using T = ElementOf<V>;
  constexpr auto kNoCheck = MathUtils::Log0NoCheck, kCheck = MathUtils::Log0Check;
  return {
      SameInPlace<V>(FORMS(Abs)),
      SameInPlace<V>(FORMS(Sqr)),
      SameInPlace<V>(FORMS(Sqrt)),
      SameInPlace<V>(FORMS(Exp)),
      SameInPlace<V>(FORMS(Pow10)),
      SameInPlace<V>(FORMS(Log10), kNoCheck),
      SameInPlace<V>(FORMS(Log10), kCheck),
      SameInPlace<V>(FORMS(Ln), kNoCheck),
      SameInPlace<V>(FORMS(Ln), kCheck),
      SameInPlace<V>(
          "Pow", [](V &dst, const V &src) { MathUtils::Pow(dst, src, T(-2.5)); },
          [](V &vec) { MathUtils::Pow(vec, T(-2.5)); }),
  };
}

TEST(MathUtils, AnyInPlaceForm_AtEveryLevel_HasTheBitsOfTheOther) {
  CheckAtEveryLevel(RealRows<VecReal32>());
  CheckAtEveryLevel(RealRows<VecReal64>());
  CheckAtEveryLevel({SameInPlace<VecCplx32>(FORMS(Sqr)), SameInPlace<VecCplx64>(FORMS(Sqr)),
                     SameInPlace<VecCplx32>(FORMS(Sqrt)), SameInPlace<VecCplx64>(FORMS(Sqrt))});
}

} // namespace
