#include <gtest/gtest.h>

#include <numeric>

#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"

namespace {

using QORN::Cplx16;
using QORN::Cplx32;
using QORN::Cplx64;
using QORN::TargetLib;
using QORN::test::CheckElementwise;
using QORN::test::CheckInPlace;
using QORN::test::Samples;

template <class T> void CheckSet(const char *name, void (*set)(T, T *, int)) {
  const std::vector<T> values = Samples<T>();
  for (std::size_t i = 0; i < values.size(); i += 29) {
    const T val = values[i];
    CheckInPlace<T>(
        name, [=](T *dst, int len) { set(val, dst, len); }, [=](T) { return val; });
  }
}

TEST(TargetLib, Zero_Complex_WritesPositiveZeros) {
  CheckInPlace<Cplx32>("Zero_32fc", &TargetLib::Zero_32fc, [](Cplx32) { return Cplx32{0.0F, 0.0F}; });
  CheckInPlace<Cplx64>("Zero_64fc", &TargetLib::Zero_64fc, [](Cplx64) { return Cplx64{0.0, 0.0}; });
}

TEST(TargetLib, Set_AnyType_WritesTheValueEverywhere) {
  CheckSet<unsigned char>("Set_8u", &TargetLib::Set_8u);
  CheckSet<short>("Set_16s", &TargetLib::Set_16s);
  CheckSet<int>("Set_32s", &TargetLib::Set_32s);
  CheckSet<float>("Set_32f", &TargetLib::Set_32f);
  CheckSet<double>("Set_64f", &TargetLib::Set_64f);
  CheckSet<Cplx32>("Set_32fc", &TargetLib::Set_32fc);
  CheckSet<Cplx64>("Set_64fc", &TargetLib::Set_64fc);
}

// Bytes are compared: a copy also keeps the payload of a not-a-number.
struct Identical {
  template <class T> bool operator()(const T &a, const T &b) const {
    return std::memcmp(static_cast<const void *>(&a), static_cast<const void *>(&b), sizeof(T)) == 0;
  }
};

template <class T> void CheckCopy(const char *name, void (*copy)(const T *, T *, int)) {
  CheckElementwise<T, T>(
      name, copy, [](T x) { return x; }, Identical());
}

TEST(TargetLib, Copy_AnyType_GivesTheSameBytes) {
  CheckCopy<unsigned char>("Copy_8u", &TargetLib::Copy_8u);
  CheckCopy<short>("Copy_16s", &TargetLib::Copy_16s);
  CheckCopy<Cplx16>("Copy_16sc", &TargetLib::Copy_16sc);
  CheckCopy<int>("Copy_32s", &TargetLib::Copy_32s);
  CheckCopy<float>("Copy_32f", &TargetLib::Copy_32f);
  CheckCopy<double>("Copy_64f", &TargetLib::Copy_64f);
  CheckCopy<Cplx32>("Copy_32fc", &TargetLib::Copy_32fc);
  CheckCopy<Cplx64>("Copy_64fc", &TargetLib::Copy_64fc);
}

TEST(TargetLib, Copy_OverlappingArrays_MovesTheOldElements) {
  for (const QORN::kernels::Level &level : QORN::kernels::AvailableLevels()) {
    const QORN::kernels::ScopedLevel scope(level);
    for (const int shift : {-40, -1, 1, 3, 40}) {
      std::vector<float> x(1100);
      std::iota(x.begin(), x.end(), 0.0F);
      TargetLib::Copy_32f(x.data() + 50, x.data() + 50 + shift, 1000);
      for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(x[static_cast<std::size_t>(50 + shift + i)], static_cast<float>(50 + i)) << level.name;
      }
    }
  }
}

} // namespace
