// VecCplx32 and VecCplx64: what they share from one text, what differs one by one.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/TempFile.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::VecCplx32;
using QORN::VecCplx64;
using QORN::VecReal32;
using QORN::VecReal64;
using QORN::test::AllocationCount;
using QORN::test::ExpectThrown;
using QORN::test::kNoSuchFile;
using QORN::test::PrintedBy;
using QORN::test::TempFile;

struct OfCplx32 {
  using V = VecCplx32;
  using C = Cplx32;
  using S = float;
  using R = VecReal32;
  using Twin = VecCplx64;
  static constexpr const char *kName = "VecCplx32";
};
struct OfCplx64 {
  using V = VecCplx64;
  using C = Cplx64;
  using S = double;
  using R = VecReal64;
  using Twin = VecCplx32;
  static constexpr const char *kName = "VecCplx64";
};
using Kinds = testing::Types<OfCplx32, OfCplx64>;
struct KindName {
  template <class K> static std::string GetName(int) { return K::kName; }
};

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInf = std::numeric_limits<float>::infinity();

// Interleaved parts, to be listed and compared.
using Parts = std::vector<double>;
template <class V> Parts Values(const V &vector) {
  Parts parts;
  for (int i = 0; i < vector.GetSize(); ++i) {
    parts.push_back(static_cast<double>(vector[i].re));
    parts.push_back(static_cast<double>(vector[i].im));
  }
  return parts;
}

template <class V> V Of(const Parts &parts) {
  V vector(static_cast<int>(parts.size() / 2));
  using S = decltype(vector[0].re);
  for (int i = 0; i < vector.GetSize(); ++i) {
    const std::size_t k = 2 * static_cast<std::size_t>(i);
    vector[i] = {static_cast<S>(parts[k]), static_cast<S>(parts[k + 1])};
  }
  return vector;
}
template <class R> R Reals(const std::vector<double> &values) {
  R vector(static_cast<int>(values.size()));
  for (int i = 0; i < vector.GetSize(); ++i) {
    vector[i] = static_cast<std::decay_t<decltype(vector[0])>>(values[static_cast<std::size_t>(i)]);
  }
  return vector;
}

// Numbers of both signs and many magnitudes that no formula under test produces.
template <class S> S Sample(int i) {
  const unsigned bits = static_cast<unsigned>(i) * 2654435761U + 12345U;
  const S sign = (bits & 1U) != 0 ? S{1} : S{-1};
  return sign * static_cast<S>((bits >> 8) + 1U) / static_cast<S>(1U << ((bits >> 3) & 15U));
}
template <class V> V Samples(int n, int from) {
  V vector(n);
  using S = decltype(vector[0].re);
  for (int i = 0; i < n; ++i) vector[i] = {Sample<S>(from + 2 * i), Sample<S>(from + 2 * i + 1)};
  return vector;
}

template <class K> class VecCplx : public testing::Test {};
TYPED_TEST_SUITE(VecCplx, Kinds, KindName);

// Construction and conversion.

TYPED_TEST(VecCplx, Constructor_FromReals_HasZeroImaginaryParts) {
  using V = typename TypeParam::V;
  auto re = Reals<typename TypeParam::R>({9, 1, -2, 3});
  re.Trim(1);
  const V vector(re);
  EXPECT_EQ(Values(vector), (Parts{1, 0, -2, 0, 3, 0}));
  EXPECT_EQ(vector.GetCapacity(), 3);
  EXPECT_FALSE(std::signbit(vector[1].im));
  EXPECT_EQ(V(typename TypeParam::R()).GetSize(), 0);
}

TYPED_TEST(VecCplx, Constructor_FromPairOfReals_HasTheLengthOfTheFirst) {
  using V = typename TypeParam::V;
  using R = typename TypeParam::R;
  const auto re = Reals<R>({1, 2, 3}), im = Reals<R>({4, 5, 6, 7});
  EXPECT_EQ(Values(V(re, im)), (Parts{1, 4, 2, 5, 3, 6}));
  EXPECT_EQ(V(R(), im).GetSize(), 0);
  EXPECT_EQ(V(R(), im).GetCapacity(), 0);
}

TYPED_TEST(VecCplx, Vectors_OfTheTwin_ConvertOnConstructionAssignmentAndImport) {
  using V = typename TypeParam::V;
  using S = typename TypeParam::S;
  using Twin = typename TypeParam::Twin;
  auto twin = Of<Twin>({9, 9, 0.1, -0.5, 3, 4, 9, 9});
  twin.Truncate(1, 2);
  const Parts expected{static_cast<double>(static_cast<S>(twin[0].re)), -0.5, 3, 4};
  const V constructed(twin);
  EXPECT_EQ(Values(constructed), expected);
  EXPECT_EQ(constructed.GetCapacity(), 2);
  V vector(5);
  EXPECT_EQ(&(vector = twin), &vector);
  EXPECT_EQ(Values(vector), expected);
  EXPECT_EQ(vector.GetCapacity(), 5);
  vector.Set({0, 0});
  vector.Import(twin);
  EXPECT_EQ(Values(vector), expected);
  vector.Import(Twin());
  EXPECT_EQ(vector.GetSize(), 0);
}

// Arithmetic.

TYPED_TEST(VecCplx, Arithmetic_ByVector_IsElementWise) {
  using V = typename TypeParam::V;
  using C = typename TypeParam::C;
  using S = typename TypeParam::S;
  for (const int n : {0, 1, 7, 64, 1003}) {
    const V a = Samples<V>(n, 0), b = Samples<V>(n, 7001);
    V sum = a, difference = a, product = a, quotient = a;
    EXPECT_EQ(&(sum += b), &sum);
    EXPECT_EQ(&(difference -= b), &difference);
    EXPECT_EQ(&(product *= b), &product);
    EXPECT_EQ(&(quotient /= b), &quotient);
    for (int i = 0; i < n; ++i) {
      const C x = a[i], y = b[i];
      ASSERT_EQ(sum[i].re, x.re + y.re) << i;
      ASSERT_EQ(sum[i].im, x.im + y.im) << i;
      ASSERT_EQ(difference[i].re, x.re - y.re) << i;
      ASSERT_EQ(difference[i].im, x.im - y.im) << i;
      const S rr = x.re * y.re, ii = x.im * y.im, ri = x.re * y.im, ir = x.im * y.re;
      ASSERT_EQ(product[i].re, rr - ii) << i;
      ASSERT_EQ(product[i].im, ri + ir) << i;
      // A quotient times its divisor is the dividend, up to a few roundings of its magnitude.
      const long double re = static_cast<long double>(quotient[i].re),
                        im = static_cast<long double>(quotient[i].im);
      const long double bound = 8 * static_cast<long double>(std::numeric_limits<S>::epsilon()) *
                                std::hypot(static_cast<long double>(x.re), static_cast<long double>(x.im));
      ASSERT_NEAR(static_cast<double>(re * static_cast<long double>(y.re) -
                                      im * static_cast<long double>(y.im) - static_cast<long double>(x.re)),
                  0, static_cast<double>(bound))
          << i;
      ASSERT_NEAR(static_cast<double>(re * static_cast<long double>(y.im) +
                                      im * static_cast<long double>(y.re) - static_cast<long double>(x.im)),
                  0, static_cast<double>(bound))
          << i;
    }
    V named = a;
    named.Add(b);
    EXPECT_EQ(named, sum);
    named = a;
    named.Sub(b);
    EXPECT_EQ(named, difference);
    named = a;
    named.Mul(b);
    EXPECT_EQ(named, product);
    named = a;
    named.Div(b);
    EXPECT_EQ(named, quotient);
  }
}

TYPED_TEST(VecCplx, Arithmetic_ByConstant_IsElementWise) {
  using V = typename TypeParam::V;
  using C = typename TypeParam::C;
  using S = typename TypeParam::S;
  const C val{static_cast<S>(-2.7), static_cast<S>(0.3)};
  const C half{0, S{2}}; // its reciprocal (0, -0.5) is exact
  for (const int n : {0, 1, 7, 64, 1003}) {
    const V a = Samples<V>(n, 100);
    V sum = a, difference = a, product = a, quotient = a, scaled = a;
    EXPECT_EQ(&(sum += val), &sum);
    EXPECT_EQ(&(difference -= val), &difference);
    EXPECT_EQ(&(product *= val), &product);
    EXPECT_EQ(&(quotient /= half), &quotient);
    EXPECT_EQ(&(scaled *= static_cast<S>(1.7)), &scaled);
    for (int i = 0; i < n; ++i) {
      const C x = a[i];
      ASSERT_EQ(sum[i].re, x.re + val.re) << i;
      ASSERT_EQ(sum[i].im, x.im + val.im) << i;
      ASSERT_EQ(difference[i].re, x.re - val.re) << i;
      ASSERT_EQ(difference[i].im, x.im - val.im) << i;
      const S rr = x.re * val.re, ii = x.im * val.im, ri = x.re * val.im, ir = x.im * val.re;
      ASSERT_EQ(product[i].re, rr - ii) << i;
      ASSERT_EQ(product[i].im, ri + ir) << i;
      ASSERT_EQ(quotient[i].re, x.im / 2) << i;
      ASSERT_EQ(quotient[i].im, -x.re / 2) << i;
      ASSERT_EQ(scaled[i].re, x.re * static_cast<S>(1.7)) << i;
      ASSERT_EQ(scaled[i].im, x.im * static_cast<S>(1.7)) << i;
    }
    V named = a;
    named.Add(val);
    EXPECT_EQ(named, sum);
    named = a;
    named.Sub(val);
    EXPECT_EQ(named, difference);
    named = a;
    named.Mul(val);
    EXPECT_EQ(named, product);
    named = a;
    named.Div(half);
    EXPECT_EQ(named, quotient);
    named = a;
    named.Mul(static_cast<S>(1.7));
    EXPECT_EQ(named, scaled);
  }
}

TYPED_TEST(VecCplx, Arithmetic_ByIntOrDoubleOrBraces_FindsItsForm) {
  auto vector = Of<typename TypeParam::V>({1, 2});
  vector *= 2;
  vector *= 0.5;
  vector += {1, 1};
  EXPECT_EQ(Values(vector), (Parts{2, 3}));
}

TYPED_TEST(VecCplx, Arithmetic_WithItself_UsesTheOldElements) {
  auto vector = Of<typename TypeParam::V>({1, 2, -3, 4});
  const auto &self = vector;
  vector += self;
  EXPECT_EQ(Values(vector), (Parts{2, 4, -6, 8}));
  vector *= self;
  EXPECT_EQ(Values(vector), (Parts{-12, 16, -28, -96}));
  vector -= self;
  EXPECT_EQ(Values(vector), (Parts{0, 0, 0, 0}));
}

TYPED_TEST(VecCplx, Arithmetic_OnNarrowedVectors_StaysWithinTheViews) {
  auto a = Of<typename TypeParam::V>({1, 1, 2, 2, 3, 3});
  a.Truncate(1, 1);
  a += Of<typename TypeParam::V>({10, 20, 30, 40});
  a *= 2;
  a.Resize(3);
  EXPECT_EQ(Values(a), (Parts{1, 1, 24, 44, 3, 3}));
}

TYPED_TEST(VecCplx, Division_ByConstantZero_LeavesTheVector) {
  auto vector = Of<typename TypeParam::V>({1, 2, 0, 0, -3, 4});
  vector /= {0, 0};
  EXPECT_EQ(Values(vector), (Parts{1, 2, 0, 0, -3, 4}));
  vector.Div({0, static_cast<typename TypeParam::S>(-0.0)});
  EXPECT_EQ(Values(vector), (Parts{1, 2, 0, 0, -3, 4}));
}

TYPED_TEST(VecCplx, Division_ByVectorWithZero_WritesAllElementsThenThrows12001) {
  using V = typename TypeParam::V;
  auto a = Of<V>({1, 2, 6, 8});
  const auto b = Of<V>({0, 0, 0, 2});
  ExpectThrown([&] { a /= b; }, 12001, "divide-by-zero error", "infra\\TargetLib_ipp");
  EXPECT_FALSE(std::isfinite(a[0].re) || std::isfinite(a[0].im));
  EXPECT_EQ(a[1].re, 4);
  EXPECT_EQ(a[1].im, -3);
  ExpectThrown([&] { a.Div(b); }, 12001, "divide-by-zero error", "infra\\TargetLib_ipp");
}

TEST(VecCplx32, Sub_OfRanges_ChangesThatRangeOnly) {
  auto a = Of<VecCplx32>({1, 1, 2, 2, 3, 3, 4, 4});
  const auto b = Of<VecCplx32>({10, 0, 20, 0, 30, 0});
  a.Sub(b, 1, 1, 2);
  EXPECT_EQ(Values(a), (Parts{1, 1, -18, 2, -27, 3, 4, 4}));
  a.Sub(b, 0, 2, -1);
  EXPECT_EQ(Values(a), (Parts{-29, 1, -18, 2, -27, 3, 4, 4}));
  a.Sub(b, 0, 0, 0);
  a.Sub(a, 0, 3, 1);
  EXPECT_EQ(Values(a), (Parts{-33, -3, -18, 2, -27, 3, 4, 4}));
}

// Statistics.

// The search as a plain loop, the standard of comparison.
template <class V> int PlainMax(const V &vector) {
  decltype(vector.GetPtr()->re) best = 0;
  int winner = 0;
  for (int i = 0; i < vector.GetSize(); ++i) {
    const auto *x = vector.GetPtr(i);
    const auto re2 = x->re * x->re, im2 = x->im * x->im, m = re2 + im2;
    if (m > best) {
      best = m;
      winner = i;
    }
  }
  return winner;
}
template <class V> int PlainMin(const V &vector) {
  const auto *x = vector.GetPtr();
  auto best = x->re * x->re + x->im * x->im;
  int winner = 0;
  for (int i = 1; i < vector.GetSize(); ++i) {
    x = vector.GetPtr(i);
    const auto re2 = x->re * x->re, im2 = x->im * x->im, m = re2 + im2;
    if (best > m) {
      best = m;
      winner = i;
    }
  }
  return winner;
}

template <class V> void ExpectExtremes(const V &vector, int largest, int smallest) {
  auto value = vector.Max();
  int index = -1;
  vector.Max(value, index);
  EXPECT_EQ(index, largest);
  EXPECT_EQ(std::memcmp(&value, vector.GetPtr(largest), sizeof(value)), 0);
  value = vector.Max();
  EXPECT_EQ(std::memcmp(&value, vector.GetPtr(largest), sizeof(value)), 0);
  vector.Min(value, index);
  EXPECT_EQ(index, smallest);
  EXPECT_EQ(std::memcmp(&value, vector.GetPtr(smallest), sizeof(value)), 0);
  value = vector.Min();
  EXPECT_EQ(std::memcmp(&value, vector.GetPtr(smallest), sizeof(value)), 0);
}

TYPED_TEST(VecCplx, Extremes_WithTies_AreAtTheFirstOccurrence) {
  using V = typename TypeParam::V;
  ExpectExtremes(Of<V>({3, 4, 0, 5, -5, 0}), 0, 0);
  ExpectExtremes(Of<V>({1, 0, 3, 4, 0, 0.5, -5, 0, 0.5, 0}), 1, 2);
}

TYPED_TEST(VecCplx, Extremes_OfOneElementOrZeros_AreAtTheStart) {
  using V = typename TypeParam::V;
  ExpectExtremes(Of<V>({-7, 2}), 0, 0);
  ExpectExtremes(Of<V>({0, 0, -0.0, 0, 0, -0.0}), 0, 0);
}

TYPED_TEST(VecCplx, Extremes_WithNotANumber_PassItOver) {
  using V = typename TypeParam::V;
  const double nan = static_cast<double>(kNaN), inf = static_cast<double>(kInf);
  ExpectExtremes(Of<V>({1, 0, nan, 0, 5, 0, 0, nan, 0.5, 0}), 2, 4);
  ExpectExtremes(Of<V>({nan, 0, 5, 0, 1, 0}), 1, 0);
  ExpectExtremes(Of<V>({nan, 0, nan, 1}), 0, 0);
  ExpectExtremes(Of<V>({1, 0, 0, -inf, inf, 0}), 1, 0);
  ExpectExtremes(Of<V>({inf, 0, inf, 1}), 0, 0);
}

TYPED_TEST(VecCplx, Extremes_OfAnyLength_AgreeWithAPlainLoop) {
  using V = typename TypeParam::V;
  for (const int n : {1, 2, 3, 511, 512, 513, 1024, 1025, 3000}) {
    for (int seed = 0; seed < 20; ++seed) {
      V vector = Samples<V>(n, 1000 * seed);
      ExpectExtremes(vector, PlainMax(vector), PlainMin(vector));
      // The same extremes again, later: the first still counts.
      vector[n - 1] = vector.Max();
      vector[n / 2] = vector.Min();
      ExpectExtremes(vector, PlainMax(vector), PlainMin(vector));
      vector[(seed * 37) % n].re = static_cast<typename TypeParam::S>(kNaN);
      ExpectExtremes(vector, PlainMax(vector), PlainMin(vector));
    }
  }
}

TYPED_TEST(VecCplx, SumAndMean_OfManyElements_AgreeWithLongDouble) {
  using S = typename TypeParam::S;
  const int n = 1003;
  const auto vector = Samples<typename TypeParam::V>(n, 9);
  long double re = 0, im = 0, magnitudes = 0;
  for (int i = 0; i < n; ++i) {
    re += static_cast<long double>(vector[i].re);
    im += static_cast<long double>(vector[i].im);
    magnitudes +=
        std::abs(static_cast<long double>(vector[i].re)) + std::abs(static_cast<long double>(vector[i].im));
  }
  // As for the real vectors: n rounding errors in double, then one in S.
  const long double bound =
      static_cast<long double>(std::numeric_limits<double>::epsilon()) * n * magnitudes +
      static_cast<long double>(std::numeric_limits<S>::epsilon()) * (std::abs(re) + std::abs(im));
  const auto sum = vector.Sum(), mean = vector.Mean();
  EXPECT_LE(std::abs(static_cast<long double>(sum.re) - re), bound);
  EXPECT_LE(std::abs(static_cast<long double>(sum.im) - im), bound);
  EXPECT_LE(std::abs(static_cast<long double>(mean.re) - re / n), bound / n);
  EXPECT_LE(std::abs(static_cast<long double>(mean.im) - im / n), bound / n);
}

TYPED_TEST(VecCplx, Statistics_OfEmptyVector_AreZero) {
  using C = typename TypeParam::C;
  typename TypeParam::V empty;
  C value{5, 5};
  int index = 5;
  empty.Max(value, index);
  EXPECT_TRUE(value.re == 0 && value.im == 0 && index == 0);
  value = {5, 5};
  index = 5;
  empty.Min(value, index);
  EXPECT_TRUE(value.re == 0 && value.im == 0 && index == 0);
  for (const C figure : {empty.Max(), empty.Min(), empty.Sum(), empty.Mean()}) {
    EXPECT_TRUE(figure.re == 0 && figure.im == 0);
  }
  empty.Resize(-1);
  empty.Max(value, index);
  EXPECT_TRUE(value.re == 0 && value.im == 0 && index == 0);
}

// Parts, import and export.

TYPED_TEST(VecCplx, GetRealAndGetImag_ResizeTheirTarget) {
  using R = typename TypeParam::R;
  auto vector = Of<typename TypeParam::V>({1, 2, 3, 4, 5, 6});
  R re(10), im;
  vector.GetReal(re);
  vector.GetImag(im);
  EXPECT_EQ(re, Reals<R>({1, 3, 5}));
  EXPECT_EQ(im, Reals<R>({2, 4, 6}));
  EXPECT_EQ(re.GetCapacity(), 10);
  vector.Truncate(1, 1);
  vector.GetReal(re);
  vector.GetImag(im);
  EXPECT_EQ(re, Reals<R>({3}));
  EXPECT_EQ(im, Reals<R>({4}));
  vector.Resize(0);
  vector.GetReal(re);
  EXPECT_EQ(re.GetSize(), 0);
}

TYPED_TEST(VecCplx, Import_OfReals_TakesTheLengthOfTheFirst) {
  using R = typename TypeParam::R;
  typename TypeParam::V vector(9);
  vector.Import(Reals<R>({1, 2}));
  EXPECT_EQ(Values(vector), (Parts{1, 0, 2, 0}));
  vector.Import(Reals<R>({1, 2, 3}), Reals<R>({4, 5, 6, 7}));
  EXPECT_EQ(Values(vector), (Parts{1, 4, 2, 5, 3, 6}));
  EXPECT_EQ(vector.GetCapacity(), 9);
  vector.Import(R(), Reals<R>({1}));
  EXPECT_EQ(vector.GetSize(), 0);
}

TYPED_TEST(VecCplx, Import_ThroughPointers_ReadsExactlyThatMany) {
  using C = typename TypeParam::C;
  using S = typename TypeParam::S;
  const C pairs[] = {{1, 2}, {3, 4}, {5, 6}};
  const S interleaved[] = {1, -2, 3, -4, 5, -6};
  const float re32[] = {0.5f, 1.5f, 9}, im32[] = {-1, -2, 9};
  const double re64[] = {0.1, 2, 9}, im64[] = {-0.1, 1e300, 9};
  typename TypeParam::V vector(5);
  vector.Import(pairs, 2);
  EXPECT_EQ(Values(vector), (Parts{1, 2, 3, 4}));
  vector.Import(interleaved, 3);
  EXPECT_EQ(Values(vector), (Parts{1, -2, 3, -4, 5, -6}));
  vector.Import(re32, im32, 2);
  EXPECT_EQ(Values(vector), (Parts{0.5, -1, 1.5, -2}));
  vector.Import(re64, im64, 2);
  const auto rounded = [](double x) { return static_cast<double>(static_cast<S>(x)); };
  EXPECT_EQ(Values(vector), (Parts{rounded(0.1), rounded(-0.1), 2, rounded(1e300)}));
  EXPECT_EQ(vector.GetCapacity(), 5);
  vector.Import(pairs, 0);
  EXPECT_EQ(vector.GetSize(), 0);
}

TYPED_TEST(VecCplx, Export_ThroughPointers_WritesExactlyThatMany) {
  using C = typename TypeParam::C;
  using S = typename TypeParam::S;
  auto vector = Of<typename TypeParam::V>({0.1, 2, 3, 4, 5, 6});
  vector.Resize(1);
  C pairs[] = {{9, 9}, {9, 9}, {9, 9}};
  vector.Export(pairs, 2);
  EXPECT_EQ(pairs[0].re, static_cast<S>(0.1));
  EXPECT_EQ(pairs[1].im, 4);
  EXPECT_EQ(pairs[2].re, 9);
  S re[] = {9, 9, 9}, im[] = {9, 9, 9};
  vector.Export(re, im, 2);
  EXPECT_EQ((std::vector<S>(re, re + 3)), (std::vector<S>{static_cast<S>(0.1), 3, 9}));
  EXPECT_EQ((std::vector<S>(im, im + 3)), (std::vector<S>{2, 4, 9}));
}

TEST(VecCplx32, Export_ToDoubles_Widens) {
  const auto vector = Of<VecCplx32>({0.1, 2, 3, -0.2});
  double re[] = {9, 9, 9}, im[] = {9, 9, 9};
  vector.Export(re, im, 2);
  EXPECT_EQ((std::vector<double>(re, re + 3)), (std::vector<double>{static_cast<double>(0.1f), 3, 9}));
  EXPECT_EQ((std::vector<double>(im, im + 3)), (std::vector<double>{2, static_cast<double>(-0.2f), 9}));
}

// Text files.

TYPED_TEST(VecCplx, Import_OfTextFile_StopsAtTheFirstShortRecord) {
  const TempFile two("1 2\n-3e1 .5\n5"), three("0 1 2\n1 3 4\n2 5 x"), empty("");
  typename TypeParam::V vector;
  vector.Import(two.Path());
  EXPECT_EQ(Values(vector), (Parts{1, 2, -30, 0.5}));
  vector.Import(two.Path(), false);
  EXPECT_EQ(Values(vector), (Parts{1, 2, -30, 0.5}));
  vector.Import(three.Path(), true);
  EXPECT_EQ(Values(vector), (Parts{1, 2, 3, 4}));
  vector.Import(empty.Path(), true);
  EXPECT_EQ(vector.GetSize(), 0);
}

TYPED_TEST(VecCplx, Files_ThatCannotBeOpened_Throw13001) {
  typename TypeParam::V vector(2);
  const char *message = "error opening file";
  ExpectThrown([&] { vector.Import(kNoSuchFile, false); }, 13001, message, "infra\\Vector");
  ExpectThrown([&] { vector.Import(kNoSuchFile, true); }, 13001, message, "infra\\Vector");
  ExpectThrown([&] { vector.Dump(kNoSuchFile, false); }, 13001, message, "infra\\Vector");
  EXPECT_EQ(vector.GetSize(), 2);
}

TEST(VecCplx32, DumpToFile_WritesIndexAndTwentyPlaces) {
  const TempFile file;
  const auto vector = Of<VecCplx32>({1, -0.5, 0.1, 0});
  EXPECT_EQ(PrintedBy([&] { vector.Dump(file.Path(), true); }),
            std::string("\n====").append(file.Path()).append(" saved"));
  EXPECT_EQ(file.Content(), "         0    1.00000000000000000000  -0.50000000000000000000\n"
                            "         1    0.10000000149011611938  0.00000000000000000000\n");
}

TEST(VecCplx64, DumpToFile_WritesIndexAndSixteenDigits) {
  const TempFile file;
  const auto vector = Of<VecCplx64>({1, -0.5, 0.1, 1e-300});
  EXPECT_EQ(PrintedBy([&] { vector.Dump(file.Path(), true); }),
            std::string("\n====").append(file.Path()).append(" saved"));
  EXPECT_EQ(file.Content(), "         0    1  -0.5\n"
                            "         1    0.1  1e-300\n");
}

TYPED_TEST(VecCplx, DumpToFile_ReadBackWithThreeColumns_GivesTheElements) {
  const TempFile file;
  const auto vector = Of<typename TypeParam::V>({0.5, -3.25, 1e6, 0, -7, 0.125});
  EXPECT_EQ(PrintedBy([&] { vector.Dump(file.Path(), false); }), "");
  typename TypeParam::V back;
  back.Import(file.Path(), true);
  EXPECT_EQ(back, vector);
}

TYPED_TEST(VecCplx, DumpOfElements_UpToTwiceTheCount_PrintsAllWithTwoBlanks) {
  const auto vector = Of<typename TypeParam::V>({1, -2.5, 1e-7, 0});
  EXPECT_EQ(PrintedBy([&] { vector.Dump(1); }), "\n [ 0]= 1  -2.5 \n [ 1]= 1e-07  0 ");
  EXPECT_EQ(PrintedBy([&] { vector.Dump(); }), "\n [ 0]= 1  -2.5 \n [ 1]= 1e-07  0 ");
  EXPECT_EQ(PrintedBy([] { typename TypeParam::V().Dump(0); }), "");
}

TEST(VecCplx32, DumpOfElements_MoreThanTwiceTheCount_PrintsBothEnds) {
  const auto vector = Of<VecCplx32>({1, 2, 3, 4, 5, 6});
  EXPECT_EQ(PrintedBy([&] { vector.Dump(1); }), "\n [ 0]= 1  2 \n.................\n [ 2]= 5  6 ");
  EXPECT_EQ(PrintedBy([&] { vector.Dump(0); }), "\n.................");
}

TEST(VecCplx64, DumpOfElements_MoreThanTwiceTheCount_HasOneBlankInTheHead) {
  const auto vector = Of<VecCplx64>({1, 2, 3, 4, 5, 6});
  EXPECT_EQ(PrintedBy([&] { vector.Dump(1); }), "\n [ 0]= 1 2 \n.................\n [ 2]= 5  6 ");
  EXPECT_EQ(PrintedBy([&] { vector.Dump(0); }), "\n.................");
}

// Comparison.

TYPED_TEST(VecCplx, Equality_IsExactOnBothPartsAndLengths) {
  using V = typename TypeParam::V;
  const V a = Samples<V>(501, 3);
  V b = a;
  EXPECT_TRUE(a == b);
  EXPECT_FALSE(a != b);
  b[500].im = std::nextafter(b[500].im, static_cast<typename TypeParam::S>(kInf));
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(a != b);
  b = a;
  b[0].re = -b[0].re;
  EXPECT_FALSE(a == b);
  b = a;
  b.Resize(500);
  EXPECT_FALSE(a == b);
  EXPECT_TRUE(V() == V());
  EXPECT_FALSE(V() != V());
  EXPECT_TRUE(Of<V>({0, -0.0}) == Of<V>({-0.0, 0}));
  const V nan = Of<V>({0, static_cast<double>(kNaN)});
  EXPECT_FALSE(nan == nan);
  EXPECT_TRUE(nan != nan);
}

TYPED_TEST(VecCplx, IsEqual_WithinTheTolerance_ComparesThePartsSeparately) {
  using V = typename TypeParam::V;
  using S = typename TypeParam::S;
  EXPECT_EQ(PrintedBy([] {
              // The magnitude of the difference is above the tolerance, its parts are not.
              EXPECT_TRUE(Of<V>({1, 2, 3, 4}).IsEqual(Of<V>({1.25, 2.25, 3, 4}), S{0.25}));
              EXPECT_TRUE(Of<V>({1, 2}).IsEqual(Of<V>({1, 2}), 0));
              EXPECT_TRUE(V().IsEqual(V(), -1));
              EXPECT_FALSE(V(2).IsEqual(V(3), 1));
              EXPECT_FALSE(V(3).IsEqual(V(2), 1));
            }),
            "");
}

TEST(VecCplx32, IsEqual_BeyondTheTolerance_TellsTheFirstElement) {
  const auto a = Of<VecCplx32>({1, 0}), b = Of<VecCplx32>({1, 0.5});
  EXPECT_EQ(PrintedBy([&] { EXPECT_FALSE(a.IsEqual(b, 0.25f)); }),
            "\n ==>> Idx:0, Vec:1.00000000e+00 0.00000000e+00, Arg:1.00000000e+00 5.00000000e-01, "
            "Err:0.00000000e+00 -5.00000000e-01, Tol:2.50000000e-01 <<==");
}

TEST(VecCplx64, IsEqual_BeyondTheTolerance_TellsTheFirstElement) {
  const auto a = Of<VecCplx64>({7, 7, 2, 0, 9, 9}), b = Of<VecCplx64>({7, 7, 1, 0, 8, 8});
  EXPECT_EQ(PrintedBy([&] { EXPECT_FALSE(a.IsEqual(b, 0.25)); }),
            "\n ==>> Idx:1, Vec:2.0000000000000000e+00 0.0000000000000000e+00, "
            "Arg:1.0000000000000000e+00 0.0000000000000000e+00, "
            "Err:1.0000000000000000e+00 0.0000000000000000e+00, Tol:2.5000000000000000e-01 <<==");
}

TYPED_TEST(VecCplx, IsEqual_WithNotANumberOrNegativeTolerance_IsFalseWithAMessage) {
  using V = typename TypeParam::V;
  const V nan = Of<V>({1, 1, static_cast<double>(kNaN), 0});
  EXPECT_EQ(PrintedBy([&] { EXPECT_FALSE(nan.IsEqual(nan, 5)); }).substr(0, 17), "\n ==>> Idx:1, Vec");
  const V one = Of<V>({1, 1});
  EXPECT_EQ(PrintedBy([&] { EXPECT_FALSE(one.IsEqual(one, -1)); }).substr(0, 17), "\n ==>> Idx:0, Vec");
}

// Resources.

TYPED_TEST(VecCplx, RepeatedUse_OfKeptVectors_AllocatesNothing) {
  using V = typename TypeParam::V;
  using C = typename TypeParam::C;
  using S = typename TypeParam::S;
  using R = typename TypeParam::R;
  const V b = Samples<V>(500, 1);
  const typename TypeParam::Twin twin(b);
  const R re(500), im(500);
  V a = b;
  R real(500), imaginary(500);
  C value;
  int index;
  const long before = AllocationCount();
  a += b;
  a -= b;
  a *= b;
  a /= b;
  a += C{1, 1};
  a -= C{1, 1};
  a *= C{1, 1};
  a /= C{1, 1};
  a *= S{2};
  a.Max(value, index);
  a.Min(value, index);
  value = a.Sum();
  value = a.Mean();
  a.GetReal(real);
  a.GetImag(imaginary);
  a.Import(b.GetPtr(), 400);
  a.Import(re);
  a.Import(re, im);
  a.Import(re.GetPtr(), im.GetPtr(), 500);
  a = twin;
  a.Import(twin);
  a.Set({1, 2}, 500);
  const bool same = a == b || a.IsEqual(a, 0);
  EXPECT_EQ(AllocationCount(), before);
  EXPECT_TRUE(same);
}

#if defined(QORN_CHECKED)
TEST(VecCplxDeathTest, Operand_ShorterThanTheVector_StopsWithBothLengths) {
  VecCplx64 a(5);
  const VecCplx64 b(3);
  EXPECT_DEATH(a += b, "QORN: length of arg = 3, length = 5");
  EXPECT_DEATH(a.Sub(b), "QORN: length of arg = 3, length = 5");
  EXPECT_DEATH(a.Mul(b), "QORN: length of arg = 3, length = 5");
  EXPECT_DEATH(a /= b, "QORN: length of arg = 3, length = 5");
  EXPECT_DEATH(a.Import(VecReal64(4), VecReal64(2)), "QORN: length of im = 2, length = 4");
  EXPECT_DEATH(VecCplx64(VecReal64(4), VecReal64(2)), "QORN: length of im = 2, length = 4");
}

TEST(VecCplxDeathTest, Range_OutsideTheVector_StopsWithBothValues) {
  VecCplx32 a(5);
  const VecCplx32 b(3);
  EXPECT_DEATH(a.Sub(b, 4, 0, 2), "QORN: count = 2, length - first = 1");
  EXPECT_DEATH(a.Sub(b, 0, 4, 1), "QORN: first = 4, length = 3");
}
#endif

} // namespace
