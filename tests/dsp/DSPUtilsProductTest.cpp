#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "qorn/dsp/DSPUtils.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/KernelCheck.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::ElementOf;
using test::List;
using test::Of;

// Small integers, whose products and sums are exact in every type, so that results must be equal.
template <class V> V Integers(int n, int seed) {
  using T = ElementOf<V>;
  V vec(n);
  for (int i = 0; i < n; ++i) {
    const int a = (i * 7 + seed * 5 + i * i) % 19 - 9, b = (i * 3 + seed + i * i * 2) % 17 - 8;
    if constexpr (test::kIsCplx<T>) {
      vec[i] = {static_cast<test::Part<T>>(a), static_cast<test::Part<T>>(b)};
    } else {
      vec[i] = static_cast<T>(a);
    }
  }
  return vec;
}

// Element i, 0 outside, as a pair of integers.
struct Whole {
  long re = 0, im = 0;
};
template <class V> Whole At(const V &vec, int i) {
  if (i < 0 || i >= vec.GetSize()) return {};
  if constexpr (test::kIsCplx<ElementOf<V>>) {
    return {static_cast<long>(vec[i].re), static_cast<long>(vec[i].im)};
  } else {
    return {static_cast<long>(vec[i]), 0};
  }
}
void AddProduct(Whole &sum, Whole a, Whole b) {
  sum.re += a.re * b.re - a.im * b.im;
  sum.im += a.re * b.im + a.im * b.re;
}
Whole Conj(Whole x) { return {x.re, -x.im}; }

template <class V> void ExpectWhole(const V &vec, const std::vector<Whole> &expected, const char *what) {
  ASSERT_EQ(vec.GetSize(), static_cast<int>(expected.size())) << what;
  for (int i = 0; i < vec.GetSize(); ++i) {
    const Whole got = At(vec, i), want = expected[static_cast<std::size_t>(i)];
    ASSERT_TRUE(got.re == want.re && got.im == want.im)
        << what << " at " << i << " of " << vec.GetSize() << ": (" << got.re << ", " << got.im
        << ") instead of (" << want.re << ", " << want.im << ")";
  }
}

// sum over 0 <= i < n of conj(b[i]) a[i + lag] for `count` lags from `low` on.
template <class V> std::vector<Whole> Correlation(const V &a, const V &b, int n, int low, int count) {
  std::vector<Whole> result(static_cast<std::size_t>(count));
  for (int k = 0; k < count; ++k) {
    for (int i = 0; i < n; ++i)
      AddProduct(result[static_cast<std::size_t>(k)], Conj(At(b, i)), At(a, i + k + low));
  }
  return result;
}

template <class V> class Correlations : public testing::Test {};
using CorrelatedVectors = testing::Types<VecReal32, VecCplx32>;
TYPED_TEST_SUITE(Correlations, CorrelatedVectors);

template <class V> class Products : public testing::Test {};
using AllVectors = testing::Types<VecReal32, VecReal64, VecCplx32, VecCplx64>;
TYPED_TEST_SUITE(Products, AllVectors);

template <class V> class Designs : public testing::Test {};
using RealVectors = testing::Types<VecReal32, VecReal64>;
TYPED_TEST_SUITE(Designs, RealVectors);

TYPED_TEST(Correlations, CrossCorr_AnyLengths_HasTheLagsOfTheLonger) {
  TypeParam dst;
  for (int la = 1; la <= 9; ++la) {
    for (int lb = 1; lb <= 9; ++lb) {
      const auto a = Integers<TypeParam>(la, 1), b = Integers<TypeParam>(lb, 2);
      const int longer = std::max(la, lb);
      DSPUtils::CrossCorr(dst, a, b);
      ExpectWhole(dst, Correlation(a, b, lb, 1 - longer, 2 * longer - 1), "CrossCorr");
    }
  }
  DSPUtils::CrossCorr(dst, TypeParam(3), TypeParam(5));
  EXPECT_EQ(dst.GetSize(), 9);
  DSPUtils::CrossCorr(dst, TypeParam(5), TypeParam(3));
  EXPECT_EQ(dst.GetSize(), 9);
}

TYPED_TEST(Correlations, CrossCorr_WithItself_IsLargestAtLagZero) {
  TypeParam dst;
  const auto a = Integers<TypeParam>(60, 3);
  DSPUtils::CrossCorr(dst, a, a);
  ExpectWhole(dst, Correlation(a, a, 60, -59, 119), "CrossCorr");
  long energy = 0;
  for (int i = 0; i < 60; ++i) energy += At(a, i).re * At(a, i).re + At(a, i).im * At(a, i).im;
  EXPECT_EQ(At(dst, 59).re, energy);
}

TYPED_TEST(Correlations, CrossCorr_EmptyOperand_IsZero) {
  auto dst = Integers<TypeParam>(20, 1);
  DSPUtils::CrossCorr(dst, TypeParam(), Integers<TypeParam>(3, 1));
  ExpectWhole(dst, std::vector<Whole>(5), "empty a");
  dst = Integers<TypeParam>(20, 1);
  DSPUtils::CrossCorr(dst, Integers<TypeParam>(3, 1), TypeParam());
  ExpectWhole(dst, std::vector<Whole>(5), "empty b");
  DSPUtils::CrossCorr(dst, TypeParam(), TypeParam());
  EXPECT_EQ(dst.GetSize(), 0);
}

TYPED_TEST(Correlations, CrossCorr_Parts_CorrelatesFromTheirStarts) {
  const auto a = Integers<TypeParam>(12, 4), b = Integers<TypeParam>(15, 5);
  TypeParam dst(2);
  for (const int dstLen : {1, 4, 20}) {
    for (const int n : {1, 3, 7}) {
      DSPUtils::CrossCorr(dst, dstLen, a, 2, b, 6, n);
      TypeParam partOfA(n), partOfB(9);
      for (int i = 0; i < n; ++i) partOfA[i] = a[2 + i];
      for (int i = 0; i < 9; ++i) partOfB[i] = b[6 + i];
      ExpectWhole(dst, Correlation(partOfB, partOfA, n, 0, dstLen), "part");
    }
  }
}

TYPED_TEST(Correlations, CrossCorr_EmptyPart_IsZero) {
  const auto a = Integers<TypeParam>(12, 4);
  auto dst = Integers<TypeParam>(9, 1);
  DSPUtils::CrossCorr(dst, 4, a, 0, a, 0, 0);
  ExpectWhole(dst, std::vector<Whole>(4), "no elements of a");
  dst = Integers<TypeParam>(9, 1);
  DSPUtils::CrossCorr(dst, 4, a, 0, a, 12, 3);
  ExpectWhole(dst, std::vector<Whole>(4), "no elements of b");
  DSPUtils::CrossCorr(dst, 0, a, 0, a, 0, 3);
  EXPECT_EQ(dst.GetSize(), 0);
}

TEST(DSPUtils, CrossCorr2_LengthOfTheDestination_ChoosesTheLags) {
  const auto a = Integers<VecCplx32>(11, 1), b = Integers<VecCplx32>(4, 2);
  for (const int lags : {1, 5, 11, 15}) {
    VecCplx32 dst(lags);
    DSPUtils::CrossCorr2(dst, a, b);
    ExpectWhole(dst, Correlation(a, b, 4, 0, lags), "CrossCorr2");
    DSPUtils::CrossCorr2(dst, b, a);
    ExpectWhole(dst, Correlation(b, a, 11, 0, lags), "CrossCorr2, exchanged");
  }
  auto dst = Integers<VecCplx32>(3, 1);
  DSPUtils::CrossCorr2(dst, a, VecCplx32());
  ExpectWhole(dst, std::vector<Whole>(3), "empty b");
}

TYPED_TEST(Products, Conv_AnyLengths_IsTheProductOfThePolynomials) {
  TypeParam dst;
  for (int la = 1; la <= 9; ++la) {
    for (int lb = 1; lb <= 9; ++lb) {
      const auto a = Integers<TypeParam>(la, 1), b = Integers<TypeParam>(lb, 2);
      std::vector<Whole> expected(static_cast<std::size_t>(la + lb - 1));
      for (int i = 0; i < la; ++i) {
        for (int k = 0; k < lb; ++k)
          AddProduct(expected[static_cast<std::size_t>(i + k)], At(a, i), At(b, k));
      }
      DSPUtils::Conv(dst, a, b);
      ExpectWhole(dst, expected, "Conv");
    }
  }
}

TYPED_TEST(Products, Conv_EmptyOperand_IsZero) {
  auto dst = Integers<TypeParam>(9, 1);
  DSPUtils::Conv(dst, TypeParam(), Integers<TypeParam>(4, 1));
  ExpectWhole(dst, std::vector<Whole>(3), "empty a");
  dst = Integers<TypeParam>(9, 1);
  DSPUtils::Conv(dst, Integers<TypeParam>(4, 1), TypeParam());
  ExpectWhole(dst, std::vector<Whole>(3), "empty b");
  DSPUtils::Conv(dst, TypeParam(), TypeParam());
  EXPECT_EQ(dst.GetSize(), 0);
}

// Four convolutions of the parts in the same width, which then meet: with values that round, bit for bit.
template <class C, class R> void CheckFourConvolutions() {
  using T = ElementOf<R>;
  C a(13), b(6), dst;
  for (int i = 0; i < 13; ++i) a[i] = {static_cast<T>(std::sin(i + 1)), static_cast<T>(std::cos(3 * i))};
  for (int i = 0; i < 6; ++i) b[i] = {static_cast<T>(std::sin(5 * i)), static_cast<T>(std::exp(-i))};
  R reA, imA, reB, imB, reRe, imIm, reIm, imRe;
  a.GetReal(reA), a.GetImag(imA), b.GetReal(reB), b.GetImag(imB);
  DSPUtils::Conv(reRe, reA, reB);
  DSPUtils::Conv(imIm, imA, imB);
  DSPUtils::Conv(reIm, reA, imB);
  DSPUtils::Conv(imRe, imA, reB);
  DSPUtils::Conv(dst, a, b);
  ASSERT_EQ(dst.GetSize(), 18);
  for (int i = 0; i < 18; ++i) {
    EXPECT_EQ(dst[i].re, reRe[i] - imIm[i]) << i;
    EXPECT_EQ(dst[i].im, reIm[i] + imRe[i]) << i;
  }
}

TEST(DSPUtils, Conv_Complex_IsMadeOfFourRealOnes) {
  CheckFourConvolutions<VecCplx32, VecReal32>();
  CheckFourConvolutions<VecCplx64, VecReal64>();
}

TYPED_TEST(Products, DotProd_FromTwoStarts_SumsTheProducts) {
  using T = ElementOf<TypeParam>;
  const auto a = Integers<TypeParam>(90, 1), b = Integers<TypeParam>(95, 2);
  for (const int n : {1, 2, 17, 80}) {
    Whole expected;
    for (int i = 0; i < n; ++i) AddProduct(expected, At(a, 10 + i), At(b, 15 + i));
    TypeParam result(1);
    DSPUtils::DotProd(result[0], a, 10, b, 15, n);
    ExpectWhole(result, {expected}, "DotProd");
  }
  const auto before = Integers<TypeParam>(1, 4);
  for (const int n : {0, -1}) {
    T result = before[0];
    DSPUtils::DotProd(result, a, 0, b, 0, n);
    EXPECT_TRUE(test::Same()(result, before[0])) << n;
  }
}

TYPED_TEST(Designs, Taps_OfEachKind_AreThoseOfTheGenerators) {
  using T = ElementOf<TypeParam>;
  const T low = static_cast<T>(0.11), high = static_cast<T>(0.23);
  const auto lowWide = static_cast<double>(low), highWide = static_cast<double>(high);
  for (const int n : {5, 8, 63}) {
    const auto count = static_cast<std::size_t>(n);
    std::vector<double> lows(count), highs(count), bands(count);
    TargetLib::FIRGenLowpassWinHamming_64f(lowWide, lows.data(), n);
    TargetLib::FIRGenHighpassWinHamming_64f(lowWide, highs.data(), n);
    TargetLib::FIRGenBandpassWinHamming_64f(lowWide, highWide, bands.data(), n);
    TypeParam lowPass(2), highPass, bandPass;
    DSPUtils::LowPass(lowPass, low, n);
    DSPUtils::HighPass(highPass, low, n);
    DSPUtils::BandPass(bandPass, low, high, n);
    ASSERT_EQ(lowPass.GetSize(), n);
    ASSERT_EQ(highPass.GetSize(), n);
    ASSERT_EQ(bandPass.GetSize(), n);
    double gain = 0;
    for (int i = 0; i < n; ++i) {
      const auto at = static_cast<std::size_t>(i);
      EXPECT_EQ(lowPass[i], static_cast<T>(lows[at])) << n << ", " << i;
      EXPECT_EQ(highPass[i], static_cast<T>(highs[at])) << n << ", " << i;
      EXPECT_EQ(bandPass[i], static_cast<T>(bands[at])) << n << ", " << i;
      gain += static_cast<double>(lowPass[i]);
    }
    EXPECT_NEAR(gain, 1.0, 1e-6) << n;
  }
}

TYPED_TEST(Designs, Taps_ThatTheGeneratorsRefuse_AreZero) {
  using T = ElementOf<TypeParam>;
  const auto expectZeros = [](const TypeParam &taps, int n) {
    EXPECT_EQ(List(taps), std::vector<T>(static_cast<std::size_t>(n)));
  };
  const T bad = static_cast<T>(0.5), good = static_cast<T>(0.1);
  auto taps = Integers<TypeParam>(9, 1);
  DSPUtils::LowPass(taps, bad, 9);
  expectZeros(taps, 9);
  taps = Integers<TypeParam>(9, 1);
  DSPUtils::HighPass(taps, good, 4);
  expectZeros(taps, 4);
  taps = Integers<TypeParam>(9, 1);
  DSPUtils::BandPass(taps, good, good, 9);
  expectZeros(taps, 9);
  DSPUtils::LowPass(taps, good, 0);
  expectZeros(taps, 0);
}

TEST(DSPUtils, Products_OnKeptDestinations_AllocateNothing) {
  const VecCplx32 a(40), b(60);
  const VecReal32 x(40), y(60);
  VecCplx32 dst(200);
  VecReal32 real(200);
  VecReal64 taps(63);
  Cplx32 result;
  const auto run = [&] {
    DSPUtils::CrossCorr(dst, a, b);
    DSPUtils::CrossCorr(dst, b, a);
    DSPUtils::CrossCorr(real, x, y);
    DSPUtils::CrossCorr(dst, 10, a, 3, b, 5, 20);
    DSPUtils::CrossCorr2(dst, a, b);
    DSPUtils::Conv(real, x, y);
    DSPUtils::DotProd(result, a, 0, b, 0, 40);
    DSPUtils::LowPass(taps, 0.1, 63);
  };
  run(); // the convolution keeps its plans and work memory
  const long before = test::AllocationCount();
  run();
  EXPECT_EQ(test::AllocationCount(), before);
}

} // namespace
