#include "qorn/dsp/DFT.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

#include "support/Allocations.h"
#include "support/FourierVectors.h"

namespace {

using namespace QORN;
using test::AllocationCount;
using test::AllocationLimit;
using test::NoiseVector;
using test::SameBits;
using test::TransformError;

// As in the tests of FFT; the documented bound of lengths with a large prime factor.
double Bound(int n) {
  return static_cast<double>(std::numeric_limits<float>::epsilon()) * std::sqrt(std::max(1.0, std::log2(n)));
}

TEST(DFT, Transform_AnyLength_IsTheDefinition) {
  for (const int n : {1, 2, 3, 5, 12, 17, 31, 64, 97, 100, 360, 1000, 1009, 1023, 1024, 4095, 10007}) {
    DFT dft(n);
    const auto x = NoiseVector<VecCplx32>(n);
    VecCplx32 y, data = x;
    dft.Forward(y, x);
    EXPECT_LE(TransformError(y, x, -1, 1), Bound(n)) << n;
    dft.Forward(data);
    EXPECT_TRUE(SameBits(data, y)) << n;
    dft.Inverse(y, x);
    EXPECT_LE(TransformError(y, x, 1, 1.0L / n), Bound(n)) << n;
    data = x;
    dft.Inverse(data);
    EXPECT_TRUE(SameBits(data, y)) << n;
    data = x;
    dft.Inverse(data, data);
    EXPECT_TRUE(SameBits(data, y)) << n;
  }
}

TEST(DFT, Inverse_OfForward_IsTheInput) {
  for (const int n : {1, 7, 30, 509, 2000}) {
    DFT dft(n);
    const auto x = NoiseVector<VecCplx32>(n);
    VecCplx32 y;
    dft.Forward(y, x);
    dft.Inverse(y);
    for (int i = 0; i < n; ++i) {
      ASSERT_NEAR(y[i].re, x[i].re, 4e-6) << n << ' ' << i;
      ASSERT_NEAR(y[i].im, x[i].im, 4e-6) << n << ' ' << i;
    }
  }
}

TEST(DFT, Transform_OtherLengthThanThePlans_OnlyResizes) {
  DFT dft(100);
  for (const int n : {1, 99, 101, 200}) {
    const auto x = NoiseVector<VecCplx32>(n);
    auto data = x, y = NoiseVector<VecCplx32>(300, 2);
    const auto before = y;
    dft.Forward(data);
    dft.Inverse(data);
    EXPECT_TRUE(SameBits(data, x)) << n;
    dft.Forward(y, x);
    dft.Inverse(y, x);
    ASSERT_EQ(y.GetSize(), n);
    EXPECT_EQ(std::memcmp(y.GetPtr(), before.GetPtr(), sizeof(Cplx32) * static_cast<std::size_t>(n)), 0) << n;
  }
}

TEST(DFT, Transform_BadLength_OnlyResizes) {
  for (const int length : {0, -1, -1000, std::numeric_limits<int>::min()}) {
    DFT dft(length);
    const auto x = NoiseVector<VecCplx32>(8);
    auto data = x;
    dft.Forward(data);
    dft.Inverse(data);
    EXPECT_TRUE(SameBits(data, x)) << length;
    VecCplx32 out, none;
    dft.Forward(out, x);
    EXPECT_EQ(out.GetSize(), 8) << length;
    dft.Forward(none);
    dft.Inverse(out, none);
    EXPECT_EQ(out.GetSize(), 0) << length;
  }
}

TEST(DFT, Construction_NoMemory_GivesAnObjectThatOnlyResizes) {
  const auto x = NoiseVector<VecCplx32>(1000);
  auto data = x;
  std::unique_ptr<DFT> dft, huge;
  {
    const AllocationLimit limit(1000);
    dft = std::make_unique<DFT>(1000);
    huge = std::make_unique<DFT>(std::numeric_limits<int>::max());
  }
  dft->Forward(data);
  huge->Forward(data);
  EXPECT_TRUE(SameBits(data, x));
}

TEST(DFT, Transform_KeptOutput_AllocatesNothing) {
  for (const int n : {1000, 1009}) {
    DFT dft(n);
    const auto x = NoiseVector<VecCplx32>(n);
    VecCplx32 y(n);
    const long before = AllocationCount();
    dft.Forward(y, x);
    dft.Inverse(y, x);
    dft.Forward(y);
    dft.Inverse(y);
    EXPECT_EQ(AllocationCount(), before) << n;
  }
}

TEST(DFT, Copy_EitherGoesFirst_TheOtherStillTransforms) {
  for (const int n : {10, 1000, 1009}) {
    const auto x = NoiseVector<VecCplx32>(n);
    VecCplx32 expected, got;
    DFT(n).Forward(expected, x);
    auto source = std::make_unique<DFT>(n);
    auto copy = std::make_unique<DFT>(*source);
    source.reset();
    copy->Forward(got, x);
    EXPECT_TRUE(SameBits(got, expected)) << n;
    DFT assigned(3);
    assigned = *copy;
    copy.reset();
    got.SetZero();
    assigned.Forward(got, x);
    EXPECT_TRUE(SameBits(got, expected)) << n;
  }
}

} // namespace
