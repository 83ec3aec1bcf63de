// Sums, differences and products: one rounding per step for real and complex elements, saturation for
// integers.
#include <gtest/gtest.h>

#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"
#include "support/Wide.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::TargetLib;
using QORN::test::CheckElementwise;
using QORN::test::CheckInPlace;
using QORN::test::CplxTimes;
using QORN::test::Minus;
using QORN::test::Plus;
using QORN::test::Samples;
using QORN::test::Times;

template <class T> T Saturated(long long x) {
  const long long low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
  return static_cast<T>(x > high ? high : x < low ? low : x);
}

short Sum(short a, short b) { return Saturated<short>(static_cast<long long>(a) + b); }
int Sum(int a, int b) { return Saturated<int>(static_cast<long long>(a) + b); }
short Difference(short a, short b) { return Saturated<short>(static_cast<long long>(a) - b); }
int Difference(int a, int b) { return Saturated<int>(static_cast<long long>(a) - b); }
short Product(short a, short b) { return Saturated<short>(static_cast<long long>(a) * b); }
int Product(int a, int b) { return Saturated<int>(static_cast<long long>(a) * b); }

float Sum(float a, float b) { return Plus(a, b); }
double Sum(double a, double b) { return Plus(a, b); }
float Difference(float a, float b) { return Minus(a, b); }
double Difference(double a, double b) { return Minus(a, b); }
float Product(float a, float b) { return Times(a, b); }
double Product(double a, double b) { return Times(a, b); }

template <class C> C CplxSum(C a, C b) { return {Plus(a.re, b.re), Plus(a.im, b.im)}; }
template <class C> C CplxDifference(C a, C b) { return {Minus(a.re, b.re), Minus(a.im, b.im)}; }
Cplx32 Sum(Cplx32 a, Cplx32 b) { return CplxSum(a, b); }
Cplx64 Sum(Cplx64 a, Cplx64 b) { return CplxSum(a, b); }
Cplx32 Difference(Cplx32 a, Cplx32 b) { return CplxDifference(a, b); }
Cplx64 Difference(Cplx64 a, Cplx64 b) { return CplxDifference(a, b); }
Cplx32 Product(Cplx32 a, Cplx32 b) { return CplxTimes(a, b); }
Cplx64 Product(Cplx64 a, Cplx64 b) { return CplxTimes(a, b); }

// The kernels of one element type.
template <class T> struct Row {
  const char *type;
  void (*add)(const T *, T *, int);
  void (*sub)(const T *, T *, int);
  void (*mul)(const T *, T *, int);
  void (*addC)(T, T *, int);
  void (*subC)(T, T *, int);
  void (*mulC)(T, T *, int);
};

const Row<short> k16s{"16s",
                      &TargetLib::Add_16s_I,
                      &TargetLib::Sub_16s_I,
                      &TargetLib::Mul_16s_I,
                      &TargetLib::AddC_16s_I,
                      &TargetLib::SubC_16s_I,
                      &TargetLib::MulC_16s_I};
const Row<int> k32s{"32s",
                    &TargetLib::Add_32s_I,
                    &TargetLib::Sub_32s_I,
                    &TargetLib::Mul_32s_I,
                    &TargetLib::AddC_32s_I,
                    &TargetLib::SubC_32s_I,
                    &TargetLib::MulC_32s_I};
const Row<float> k32f{"32f",
                      &TargetLib::Add_32f_I,
                      &TargetLib::Sub_32f_I,
                      &TargetLib::Mul_32f_I,
                      &TargetLib::AddC_32f_I,
                      &TargetLib::SubC_32f_I,
                      &TargetLib::MulC_32f_I};
const Row<double> k64f{"64f",
                       &TargetLib::Add_64f_I,
                       &TargetLib::Sub_64f_I,
                       &TargetLib::Mul_64f_I,
                       &TargetLib::AddC_64f_I,
                       &TargetLib::SubC_64f_I,
                       &TargetLib::MulC_64f_I};
const Row<Cplx32> k32fc{"32fc",
                        &TargetLib::Add_32fc_I,
                        &TargetLib::Sub_32fc_I,
                        &TargetLib::Mul_32fc_I,
                        &TargetLib::AddC_32fc_I,
                        &TargetLib::SubC_32fc_I,
                        &TargetLib::MulC_32fc_I};
const Row<Cplx64> k64fc{"64fc",
                        &TargetLib::Add_64fc_I,
                        &TargetLib::Sub_64fc_I,
                        &TargetLib::Mul_64fc_I,
                        &TargetLib::AddC_64fc_I,
                        &TargetLib::SubC_64fc_I,
                        &TargetLib::MulC_64fc_I};

std::string Name(const char *operation, const char *type) {
  return std::string(operation).append("_").append(type).append("_I");
}

template <class T> void CheckArrays(const Row<T> &row) {
  CheckInPlace<T, T>(Name("Add", row.type), row.add, [](T a, T b) { return Sum(a, b); });
  CheckInPlace<T, T>(Name("Sub", row.type), row.sub, [](T a, T b) { return Difference(a, b); });
  CheckInPlace<T, T>(Name("Mul", row.type), row.mul, [](T a, T b) { return Product(a, b); });
}

template <class T> void CheckConstants(const Row<T> &row) {
  const std::vector<T> all = Samples<T>();
  for (std::size_t i = 0; i < all.size(); i += 31) {
    const T c = all[i];
    const auto with = [c](void (*kernel)(T, T *, int)) {
      return [c, kernel](T *srcDst, int len) { kernel(c, srcDst, len); };
    };
    CheckInPlace<T>(Name("AddC", row.type), with(row.addC), [c](T a) { return Sum(a, c); });
    CheckInPlace<T>(Name("SubC", row.type), with(row.subC), [c](T a) { return Difference(a, c); });
    CheckInPlace<T>(Name("MulC", row.type), with(row.mulC), [c](T a) { return Product(a, c); });
  }
}

TEST(TargetLib, AddSubMul_Shorts_Saturate) { CheckArrays(k16s); }
TEST(TargetLib, AddSubMul_Ints_Saturate) { CheckArrays(k32s); }
TEST(TargetLib, AddSubMul_Floats_RoundOnce) { CheckArrays(k32f); }
TEST(TargetLib, AddSubMul_Doubles_RoundOnce) { CheckArrays(k64f); }
TEST(TargetLib, AddSubMul_ComplexFloats_RoundEveryStep) { CheckArrays(k32fc); }
TEST(TargetLib, AddSubMul_ComplexDoubles_RoundEveryStep) { CheckArrays(k64fc); }

TEST(TargetLib, AddCSubCMulC_Shorts_Saturate) { CheckConstants(k16s); }
TEST(TargetLib, AddCSubCMulC_Ints_Saturate) { CheckConstants(k32s); }
TEST(TargetLib, AddCSubCMulC_Floats_RoundOnce) { CheckConstants(k32f); }
TEST(TargetLib, AddCSubCMulC_Doubles_RoundOnce) { CheckConstants(k64f); }
TEST(TargetLib, AddCSubCMulC_ComplexFloats_RoundEveryStep) { CheckConstants(k32fc); }
TEST(TargetLib, AddCSubCMulC_ComplexDoubles_RoundEveryStep) { CheckConstants(k64fc); }

TEST(TargetLib, Mul_ComplexIntoADestination_RoundsEveryStep) {
  CheckElementwise<Cplx32, Cplx32, Cplx32>("Mul_32fc", &TargetLib::Mul_32fc, CplxTimes<Cplx32>);
  CheckElementwise<Cplx64, Cplx64, Cplx64>("Mul_64fc", &TargetLib::Mul_64fc, CplxTimes<Cplx64>);
}

TEST(TargetLib, Mul_FloatsIntoADestination_RoundsEveryStep) {
  CheckElementwise<float, float, float>(
      "Mul_32f",
      [](const float *a, const float *b, float *dst, int len) {
        QORN::kernels::active->Mul_32f(a, b, dst, len);
      },
      [](float a, float b) { return a * b; });
}

// An array with itself.
template <class T> void CheckOntoItself(const Row<T> &row) {
  for (const QORN::kernels::Level &level : QORN::kernels::AvailableLevels()) {
    const QORN::kernels::ScopedLevel scope(level);
    const std::vector<T> x = Samples<T>();
    const auto check = [&](void (*kernel)(const T *, T *, int), T (*expected)(T, T), const char *operation) {
      std::vector<T> y = x;
      kernel(y.data(), y.data(), static_cast<int>(y.size()));
      for (std::size_t i = 0; i < x.size(); ++i) {
        ASSERT_TRUE(QORN::test::Same()(y[i], expected(x[i], x[i])))
            << operation << '_' << row.type << " at " << level.name << ", element " << i;
      }
    };
    check(
        row.add, [](T a, T b) { return Sum(a, b); }, "Add");
    check(
        row.sub, [](T a, T b) { return Difference(a, b); }, "Sub");
    check(
        row.mul, [](T a, T b) { return Product(a, b); }, "Mul");
  }
}

TEST(TargetLib, AddSubMul_AnArrayWithItself_ReadsBeforeItWrites) {
  CheckOntoItself(k16s);
  CheckOntoItself(k32s);
  CheckOntoItself(k32f);
  CheckOntoItself(k64f);
  CheckOntoItself(k32fc);
  CheckOntoItself(k64fc);
}

} // namespace
