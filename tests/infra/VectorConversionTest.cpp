#include "qorn/infra/VectorConversion.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Capture.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::VecCplx32;
using QORN::VecCplx64;
using QORN::VecInt32;
using QORN::VecReal32;
using QORN::VecReal64;
using QORN::VectorConversion;
using QORN::test::AllocationCount;
using QORN::test::ExpectThrown;
using QORN::test::PrintedBy;

template <class V, class T> V Of(const std::vector<T> &values) {
  V vector;
  vector.Import(values.data(), static_cast<int>(values.size()));
  return vector;
}
template <class V> auto Values(const V &vector) {
  return std::vector<std::decay_t<decltype(*vector.GetPtr())>>(vector.GetPtr(),
                                                               vector.GetPtr() + vector.GetSize());
}

template <class D, class S> struct Pair {
  using Dst = D;
  using Src = S;
};
template <class P> struct VectorConversionOf : testing::Test {};
using Pairs =
    testing::Types<Pair<VecReal32, VecReal64>, Pair<VecReal32, VecInt32>, Pair<VecReal64, VecReal32>,
                   Pair<VecReal64, VecInt32>, Pair<VecInt32, VecReal32>, Pair<VecInt32, VecReal64>,
                   Pair<VecCplx32, VecCplx64>, Pair<VecCplx64, VecCplx32>>;
constexpr const char *kPairNames[] = {"Real64ToReal32", "Int32ToReal32", "Real32ToReal64", "Int32ToReal64",
                                      "Real32ToInt32",  "Real64ToInt32", "Cplx64ToCplx32", "Cplx32ToCplx64"};
struct PairName {
  template <class P> static std::string GetName(int i) { return kPairNames[i]; }
};
TYPED_TEST_SUITE(VectorConversionOf, Pairs, PairName);

template <class T> double RealPart(T x) {
  if constexpr (std::is_arithmetic_v<T>) {
    return static_cast<double>(x);
  } else {
    return x.re == x.im ? static_cast<double>(x.re) : -1;
  }
}
template <class T> void SetBoth(T &x, int value) {
  if constexpr (std::is_arithmetic_v<T>) {
    x = static_cast<T>(value);
  } else {
    x.re = x.im = static_cast<decltype(x.re)>(value);
  }
}

TYPED_TEST(VectorConversionOf, Convert_AnyLength_ResizesAndConvertsTheView) {
  using Dst = typename TypeParam::Dst;
  using Src = typename TypeParam::Src;
  Dst dst;
  for (const int n : {1, 2, 15, 64, 1003}) {
    Src src(n + 2);
    for (int i = 0; i < n + 2; ++i) SetBoth(src[i], i);
    src.Truncate(1, n);
    VectorConversion::Convert(dst, src);
    ASSERT_EQ(dst.GetSize(), n);
    EXPECT_EQ(dst.GetCapacity(), n);
    for (int i = 0; i < n; ++i) ASSERT_EQ(RealPart(std::as_const(dst)[i]), i + 1) << n;
  }
  const long before = AllocationCount();
  VectorConversion::Convert(dst, Src(0));
  EXPECT_EQ(dst.GetSize(), 0);
  EXPECT_EQ(dst.GetCapacity(), 1003);
  EXPECT_EQ(AllocationCount(), before);
}

TYPED_TEST(VectorConversionOf, Convert_EmptySource_GivesEmptyDestination) {
  typename TypeParam::Dst dst(5);
  dst.Trim(2);
  VectorConversion::Convert(dst, typename TypeParam::Src());
  EXPECT_EQ(dst.GetSize(), 0);
  EXPECT_EQ(dst.GetCapacity(), 5);
  typename TypeParam::Dst fresh;
  VectorConversion::Convert(fresh, typename TypeParam::Src());
  EXPECT_EQ(fresh.GetPtr(), nullptr);
}

TEST(VectorConversion, Convert_EmptySource_CallsNoKernel) {
  namespace kernels = QORN::kernels;
  static int calls = 0;
  kernels::Table counting = *kernels::active;
  counting.Convert_64f32f = [](const double *, float *, int) { ++calls; };
  counting.Convert_32f64f = [](const float *, double *, int) { ++calls; };
  const kernels::ScopedLevel scope({"counting", &counting});
  VecReal32 real(5);
  VecCplx64 complex(5);
  VectorConversion::Convert(real, VecReal64());
  VectorConversion::Convert(complex, VecCplx32());
  EXPECT_EQ(calls, 0);
  VectorConversion::Convert(real, VecReal64(1));
  VectorConversion::Convert(complex, VecCplx32(1));
  EXPECT_EQ(calls, 2);
}

TYPED_TEST(VectorConversionOf, Convert_NoMemory_Throws11001) {
  const typename TypeParam::Src src(100);
  typename TypeParam::Dst dst(3);
  const std::string printed = PrintedBy([&] {
    const QORN::test::AllocationLimit limit(99);
    ExpectThrown([&] { VectorConversion::Convert(dst, src); }, 11001, "memory allocation error",
                 std::is_same_v<typename TypeParam::Dst, VecInt32> ? "infra/IntVector" : "infra/Vector");
  });
  EXPECT_NE(printed, "");
  EXPECT_EQ(dst.GetCapacity(), 0);
}

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(VectorConversion, Convert_ToFloat_RoundsToNearestEven) {
  VecReal32 dst;
  VectorConversion::Convert(dst, Of<VecReal64, double>({0.1, 16777217, 16777219, 1e300, -kInf}));
  EXPECT_EQ(Values(dst), (std::vector<float>{0.1f, 16777216, 16777220, std::numeric_limits<float>::infinity(),
                                             -std::numeric_limits<float>::infinity()}));
  VectorConversion::Convert(dst, Of<VecInt32, int>({16777217, 16777219, 2147483647, -2147483647 - 1}));
  EXPECT_EQ(Values(dst), (std::vector<float>{16777216, 16777220, 2147483648.0f, -2147483648.0f}));
}

TEST(VectorConversion, Convert_ToDouble_IsExact) {
  VecReal64 dst;
  VectorConversion::Convert(dst, Of<VecReal32, float>({0.1f, 1e-45f}));
  EXPECT_EQ(Values(dst), (std::vector<double>{0.100000001490116119384765625, 0x1p-149}));
  VectorConversion::Convert(dst, Of<VecInt32, int>({2147483647, -2147483647 - 1}));
  EXPECT_EQ(Values(dst), (std::vector<double>{2147483647, -2147483648.0}));
}

TEST(VectorConversion, Convert_ToInt_TruncatesTowardZeroAndSticksAtTheLimits) {
  VecInt32 dst;
  VectorConversion::Convert(dst, Of<VecReal32, float>({2.9f, -2.9f, 0.5f, -0.5f, 3e9f, -3e9f}));
  EXPECT_EQ(Values(dst), (std::vector<int>{2, -2, 0, 0, 2147483647, -2147483647 - 1}));
  VectorConversion::Convert(dst, Of<VecReal64, double>({2147483646.9, -2147483647.9, 1e300, -kInf, kNaN}));
  EXPECT_EQ(Values(dst), (std::vector<int>{2147483646, -2147483647, 2147483647, -2147483647 - 1, 0}));
}

TEST(VectorConversion, Convert_OfComplexVectors_ConvertsBothParts) {
  VecCplx32 narrow;
  VectorConversion::Convert(narrow, Of<VecCplx64, Cplx64>({{0.1, -0.2}, {16777217, 3}}));
  ASSERT_EQ(narrow.GetSize(), 2);
  EXPECT_EQ(narrow[0].re, 0.1f);
  EXPECT_EQ(narrow[0].im, -0.2f);
  EXPECT_EQ(narrow[1].re, 16777216.0f);
  EXPECT_EQ(narrow[1].im, 3.0f);
  VecCplx64 wide;
  VectorConversion::Convert(wide, narrow);
  ASSERT_EQ(wide.GetSize(), 2);
  EXPECT_EQ(wide[0].re, static_cast<double>(0.1f));
  EXPECT_EQ(wide[0].im, static_cast<double>(-0.2f));
  EXPECT_EQ(wide[1].re, 16777216.0);
  EXPECT_EQ(wide[1].im, 3.0);
}

} // namespace
