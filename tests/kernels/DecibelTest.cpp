// The passes of the unit conversions have the bits of their steps one by one, at every level, length and
// place. How exact the logarithm and the power of ten in them are is tested with the elementary functions.
#include <gtest/gtest.h>

#include <string>

#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"

namespace QORN {
namespace {

using kernels::active;
using test::CheckElementwise;

template <class T> T Log10(T x) {
  if constexpr (sizeof(T) == sizeof(float)) {
    TargetLib::Log10_32f(&x, &x, 1);
  } else {
    TargetLib::Log10_64f(&x, &x, 1);
  }
  return x;
}

template <class T> T TenTo(T x) {
  T result;
  if constexpr (sizeof(T) == sizeof(float)) {
    TargetLib::Pow10_32f(&x, &result, 1);
  } else {
    TargetLib::Pow10_64f(&x, &result, 1);
  }
  return result;
}

template <class T> struct Constants { T first, second, third; };

// A factor of 1 and an addition of -0 must change nothing, not even the sign of a zero: the reference leaves
// them out.

template <class T, class Kernel> void CheckToDecibel(const std::string &name, Kernel kernel) {
  const T offset = T(9.99994610111476e-41);
  for (const Constants<T> &c :
       {Constants<T>{1, 20, T(-0.0)}, {50, 10, T(-0.0)}, {T(0.7), T(-3), T(13.01029995663981)}}) {
    CheckElementwise<T, T>(
        name,
        [&](const T *src, T *dst, int len) {
          (active->*kernel)(src, dst, len, c.first, offset, c.second, c.third);
        },
        [&](T x) {
          const T scaled = c.first == 1 ? x : x * c.first;
          const T level = Log10(scaled + offset) * c.second;
          return c.third == 0 ? level : level + c.third;
        },
        test::Same(), {.sameAtEveryLevel = false});
  }
}

template <class T, class Kernel> void CheckFromDecibel(const std::string &name, Kernel kernel) {
  for (const Constants<T> &c :
       {Constants<T>{T(-0.0), T(0.05), 1}, {T(-0.0), T(0.1), T(0.02)}, {T(3.5), T(-0.3), T(-7)}}) {
    CheckElementwise<T, T>(
        name,
        [&](const T *src, T *dst, int len) { (active->*kernel)(src, dst, len, c.first, c.second, c.third); },
        [&](T x) {
          const T shifted = c.first == 0 ? x : x + c.first;
          const T power = TenTo(shifted * c.second);
          return c.third == 1 ? power : power * c.third;
        },
        test::Same(), {.sameAtEveryLevel = false});
  }
}

TEST(Decibel, ToDecibel_AnyElement_HasTheBitsOfTheStepsOneByOne) {
  CheckToDecibel<float>("ToDecibel_32f", &kernels::Table::ToDecibel_32f);
  CheckToDecibel<double>("ToDecibel_64f", &kernels::Table::ToDecibel_64f);
}

TEST(Decibel, MagToDecibel_AnyElement_HasTheBitsOfTheStepsOneByOne) {
  constexpr float kOffset = 9.99994610111476e-41F;
  for (const float scale : {20.0F, -3.0F}) {
    CheckElementwise<float, Cplx32>(
        "MagToDecibel_32fc",
        [&](const Cplx32 *src, float *dst, int len) {
          active->MagToDecibel_32fc(src, dst, len, kOffset, scale);
        },
        [&](Cplx32 x) {
          float magnitude;
          TargetLib::Mag_32fc(&x, &magnitude, 1);
          return Log10(magnitude + kOffset) * scale;
        },
        test::Same(), {.sameAtEveryLevel = false});
  }
}

TEST(Decibel, FromDecibel_AnyElement_HasTheBitsOfTheStepsOneByOne) {
  CheckFromDecibel<float>("FromDecibel_32f", &kernels::Table::FromDecibel_32f);
  CheckFromDecibel<double>("FromDecibel_64f", &kernels::Table::FromDecibel_64f);
}

} // namespace
} // namespace QORN
