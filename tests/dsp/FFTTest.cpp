#include "qorn/dsp/FFT.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>

#include "support/Allocations.h"
#include "support/FourierVectors.h"

namespace {

using namespace QORN;
using test::AllocationCount;
using test::AllocationLimit;
using test::NoiseVector;
using test::SameBits;
using test::TransformError;

// What a single random block may err by: the documented rms bound, and for short blocks the spread about it.
template <class V> double Bound(int n) {
  using T = decltype(test::ElementOf<V>::re);
  const double spread = 1 + 2 / std::sqrt(static_cast<double>(n));
  return 0.4 * static_cast<double>(std::numeric_limits<T>::epsilon()) *
         std::sqrt(std::max(1.0, std::log2(n))) * spread;
}

template <class V> class FFTOf : public testing::Test {
protected:
  static constexpr bool kDouble = std::is_same_v<V, VecCplx64>;
};
using Vectors = testing::Types<VecCplx32, VecCplx64>;
TYPED_TEST_SUITE(FFTOf, Vectors);

TEST(FFT, GetFFTLen_AnyOrder_IsTwoToTheOrder) {
  EXPECT_EQ(FFT(10, false).GetFFTLen(), 1024);
  for (int order = 0; order <= 16; ++order) {
    EXPECT_EQ(FFT(order, false).GetFFTLen(), 1 << order);
    EXPECT_EQ(FFT(order, true).GetFFTLen(), 1 << order);
  }
}

TEST(FftScaleFlag, Values_AreTheContracts) {
  EXPECT_EQ(FftScaleForwardByN, 1);
  EXPECT_EQ(FftScaleInverseByN, 2);
  EXPECT_EQ(FftScaleBySqrtN, 4);
  EXPECT_EQ(FftScaleNone, 8);
  EXPECT_EQ(QORNAlgorithmDefault, 0);
  EXPECT_EQ(QORNAlgorithmFast, 1);
  EXPECT_EQ(QORNAlgorithmAccurate, 2);
}

TYPED_TEST(FFTOf, Transform_AnyOrder_IsTheDefinition) {
  for (int order = 0; order <= 14; ++order) {
    const int n = 1 << order;
    FFT fft(order, this->kDouble);
    const auto x = NoiseVector<TypeParam>(n);
    TypeParam y, data = x;
    fft.Forward(y, x);
    EXPECT_LE(TransformError(y, x, -1, 1), Bound<TypeParam>(n)) << n;
    fft.Forward(data);
    EXPECT_TRUE(SameBits(data, y)) << n;
    fft.Inverse(y, x);
    EXPECT_LE(TransformError(y, x, 1, 1.0L / n), Bound<TypeParam>(n)) << n;
    data = x;
    fft.Inverse(data);
    EXPECT_TRUE(SameBits(data, y)) << n;
    data = x;
    fft.Inverse(data, data);
    EXPECT_TRUE(SameBits(data, y)) << n;
  }
}

TYPED_TEST(FFTOf, Transform_EachScaleFlagAndHint_ScalesAsTheTableSays) {
  const int n = 2048;
  const long double root = std::sqrt(2048.0L);
  const struct {
    FftScaleFlag flag;
    long double forward, inverse;
  } rows[] = {{FftScaleForwardByN, 1.0L / n, 1},
              {FftScaleInverseByN, 1, 1.0L / n},
              {FftScaleBySqrtN, 1 / root, 1 / root},
              {FftScaleNone, 1, 1},
              {static_cast<FftScaleFlag>(3), 1, 1.0L / n}};
  for (const auto &row : rows) {
    for (const int hint : {0, 1, 2}) {
      FFT fft(11, row.flag, static_cast<QORNAlgorithm>(hint), this->kDouble);
      const auto x = NoiseVector<TypeParam>(n);
      TypeParam y;
      fft.Forward(y, x);
      EXPECT_LE(TransformError(y, x, -1, row.forward), Bound<TypeParam>(n)) << row.flag;
      fft.Inverse(y, x);
      EXPECT_LE(TransformError(y, x, 1, row.inverse), Bound<TypeParam>(n)) << row.flag;
    }
  }
}

TYPED_TEST(FFTOf, Transform_NarrowedView_StaysInsideTheView) {
  FFT fft(6, this->kDouble);
  const auto x = NoiseVector<TypeParam>(100);
  TypeParam data = x, part(64), expected;
  data.Trim(3, 66);
  for (int i = 0; i < 64; ++i) part[i] = x[3 + i];
  fft.Forward(expected, part);
  fft.Forward(data);
  EXPECT_TRUE(SameBits(data, expected));
  data = x;
  data.Trim(3, 66);
  fft.Forward(data, data);
  EXPECT_TRUE(SameBits(data, expected));
}

TYPED_TEST(FFTOf, Transform_OtherLengthThanThePlans_OnlyResizes) {
  FFT fft(6, this->kDouble);
  for (const int n : {1, 63, 65, 128}) {
    const auto x = NoiseVector<TypeParam>(n);
    auto y = NoiseVector<TypeParam>(200, 2);
    const auto before = y;
    fft.Forward(y, x);
    ASSERT_EQ(y.GetSize(), n);
    EXPECT_EQ(std::memcmp(y.GetPtr(), before.GetPtr(), sizeof(y[0]) * static_cast<std::size_t>(n)), 0) << n;
    fft.Inverse(y, x);
    EXPECT_EQ(std::memcmp(y.GetPtr(), before.GetPtr(), sizeof(y[0]) * static_cast<std::size_t>(n)), 0) << n;
    auto data = x;
    fft.Forward(data);
    fft.Inverse(data);
    EXPECT_TRUE(SameBits(data, x)) << n;
  }
  TypeParam none, out = NoiseVector<TypeParam>(5);
  fft.Forward(none);
  fft.Forward(out, none);
  EXPECT_EQ(out.GetSize(), 0);
}

TYPED_TEST(FFTOf, Transform_OtherPrecisionThanThePlans_OnlyResizes) {
  FFT fft(6, !this->kDouble);
  const auto x = NoiseVector<TypeParam>(64);
  auto data = x;
  fft.Forward(data);
  fft.Inverse(data);
  EXPECT_TRUE(SameBits(data, x));
  TypeParam out;
  fft.Forward(out, x);
  EXPECT_EQ(out.GetSize(), 64);
}

TYPED_TEST(FFTOf, Transform_BadOrder_OnlyResizes) {
  for (const int order :
       {-1, -5, 31, 32, 100, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
    FFT fft(order, this->kDouble);
    EXPECT_EQ(fft.GetFFTLen(), 0) << order;
    const auto x = NoiseVector<TypeParam>(8);
    auto data = x;
    fft.Forward(data);
    fft.Inverse(data);
    EXPECT_TRUE(SameBits(data, x)) << order;
    TypeParam out, none;
    fft.Forward(out, x);
    EXPECT_EQ(out.GetSize(), 8) << order;
    fft.Forward(none);
    EXPECT_EQ(none.GetSize(), 0) << order;
  }
}

TYPED_TEST(FFTOf, Construction_NoMemory_GivesAnObjectThatOnlyResizes) {
  const auto x = NoiseVector<TypeParam>(1024);
  auto data = x;
  std::unique_ptr<FFT> fft;
  {
    const AllocationLimit limit(1000);
    fft = std::make_unique<FFT>(10, this->kDouble);
  }
  fft->Forward(data);
  EXPECT_TRUE(SameBits(data, x));
  const FFT copy(*fft);
  EXPECT_EQ(copy.GetFFTLen(), 1024);
}

TYPED_TEST(FFTOf, Transform_KeptOutput_AllocatesNothing) {
  FFT fft(10, this->kDouble);
  const auto x = NoiseVector<TypeParam>(1024);
  TypeParam y(1024);
  const long before = AllocationCount();
  fft.Forward(y, x);
  fft.Inverse(y, x);
  fft.Forward(y);
  fft.Inverse(y);
  EXPECT_EQ(AllocationCount(), before);
}

TYPED_TEST(FFTOf, Copy_EitherGoesFirst_TheOtherStillTransforms) {
  const auto x = NoiseVector<TypeParam>(512);
  TypeParam expected, got;
  FFT(9, this->kDouble).Forward(expected, x);
  auto source = std::make_unique<FFT>(9, this->kDouble);
  auto copy = std::make_unique<FFT>(*source);
  source.reset();
  copy->Forward(got, x);
  EXPECT_TRUE(SameBits(got, expected));

  FFT assigned(3, !this->kDouble);
  assigned = *copy;
  copy.reset();
  got.SetZero();
  assigned.Forward(got, x);
  EXPECT_TRUE(SameBits(got, expected));
  EXPECT_EQ(assigned.GetFFTLen(), 512);
  FFT &self = assigned;
  assigned = self;
  got.SetZero();
  assigned.Forward(got, x);
  EXPECT_TRUE(SameBits(got, expected));
  { const FFT short_lived(assigned); }
  got.SetZero();
  assigned.Forward(got, x);
  EXPECT_TRUE(SameBits(got, expected));
}

} // namespace
