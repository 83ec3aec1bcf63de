// Extremes, sums and norms.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>

#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"
#include "support/Wide.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::TargetLib;
using QORN::test::CheckReduction;
using QORN::test::Part;
using QORN::test::Quad;
using QORN::test::Root;
using QORN::test::Same;
using QORN::test::Samples;

namespace kernels = QORN::kernels;

// Extremes. The place of the first element that no number beats; without a number the first place.
template <class T, class Beats> int Place(const T *src, int len, Beats beats) {
  int place = -1;
  for (int i = 0; i < len; ++i) {
    if (src[i] != src[i]) continue;
    if (place < 0 || beats(src[i], src[place])) place = i;
  }
  return std::max(place, 0);
}

template <class T> struct ExtremeRow {
  const char *type;
  void (*max)(const T *, int, T *);
  void (*min)(const T *, int, T *);
  void (*maxIndx)(const T *, int, T *, int *);
  void (*minIndx)(const T *, int, T *, int *);
};

template <class T> void CheckExtremes(const ExtremeRow<T> &row, const std::vector<T> &samples) {
  const std::string type = row.type;
  const auto check = [&](const std::string &name, auto extreme, auto extremeIndex, auto beats) {
    CheckReduction<T>(
        name + "_" + type, extreme, [=](const T *x, int n) { return x[Place(x, n, beats)]; }, Same(), {},
        samples);
    CheckReduction<int>(
        name + "Indx_" + type,
        [=](const T *x, int n, int *place) {
          T value = T(93);
          extremeIndex(x, n, &value, place);
          EXPECT_TRUE(Same()(value, n < 1 ? T(93) : x[*place]));
        },
        [=](const T *x, int n) { return Place(x, n, beats); }, Same(), {}, samples);
  };
  check("Max", row.max, row.maxIndx, std::greater<T>());
  check("Min", row.min, row.minIndx, std::less<T>());
}

const ExtremeRow<short> k16s{"16s", &TargetLib::Max_16s, &TargetLib::Min_16s, &TargetLib::MaxIndx_16s,
                             &TargetLib::MinIndx_16s};
const ExtremeRow<int> k32s{"32s", &TargetLib::Max_32s, &TargetLib::Min_32s, &TargetLib::MaxIndx_32s,
                           &TargetLib::MinIndx_32s};
const ExtremeRow<float> k32f{"32f", &TargetLib::Max_32f, &TargetLib::Min_32f, &TargetLib::MaxIndx_32f,
                             &TargetLib::MinIndx_32f};
const ExtremeRow<double> k64f{"64f", &TargetLib::Max_64f, &TargetLib::Min_64f, &TargetLib::MaxIndx_64f,
                              &TargetLib::MinIndx_64f};

TEST(TargetLib, MaxMin_AllSamples_GiveTheExtremeAndItsFirstPlace) {
  CheckExtremes<short>(k16s, Samples<short>());
  CheckExtremes<int>(k32s, Samples<int>());
  CheckExtremes<float>(k32f, Samples<float>());
  CheckExtremes<double>(k64f, Samples<double>());
}

TEST(TargetLib, MaxMin_NumbersBelowAndAboveZero_GiveTheExtremeAndItsFirstPlace) {
  CheckExtremes<short>(k16s, {-5, -7, -3, -3, -9, -7});
  CheckExtremes<int>(k32s, {5, 7, 3, 3, 9, 9, 7});
  CheckExtremes<float>(k32f, {-5.5F, -7, -3, -3, -9, -9, -7});
  CheckExtremes<double>(k64f, {1.5, 7, 3, 3, 1.5});
}

TEST(TargetLib, MaxMin_ZerosOfBothSigns_TakeTheFirst) {
  CheckExtremes<float>(k32f, {-0.0F, 0.0F, 0.0F, -0.0F});
  CheckExtremes<double>(k64f, {0.0, -0.0, -0.0});
  CheckExtremes<float>(k32f, {-1.0F, -0.0F, -2.0F, 0.0F, -3.0F});
  CheckExtremes<double>(k64f, {1.0, 0.0, 2.0, -0.0, 3.0});
}

TEST(TargetLib, MaxMin_NotANumberAmongNumbers_IsPassedOver) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  CheckExtremes<float>(k32f, {NAN, -INFINITY, NAN});
  CheckExtremes<float>(k32f, {NAN, NAN, INFINITY});
  CheckExtremes<double>(k64f, {nan, 3.0, nan, nan, 2.0, 3.0});
  CheckExtremes<double>(k64f, {nan});
}

// The extreme at every place of arrays that span several blocks of any size the kernel might use.
TEST(TargetLib, MaxIndxMinIndx_ExtremeAtAnyPlace_IsFound) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const int len : {97, 2500}) {
      std::vector<float> x(static_cast<std::size_t>(len), 1.0F);
      for (int place = 0; place < len; ++place) {
        for (const float extreme : {2.0F, -2.0F}) {
          x[static_cast<std::size_t>(place)] = extreme;
          float value = 0;
          int index = -1;
          if (extreme > 0)
            TargetLib::MaxIndx_32f(x.data(), len, &value, &index);
          else
            TargetLib::MinIndx_32f(x.data(), len, &value, &index);
          ASSERT_EQ(index, place) << level.name;
          ASSERT_EQ(value, extreme) << level.name;
        }
        x[static_cast<std::size_t>(place)] = 1.0F;
      }
    }
  }
}

// Longer than what 16 bits can number in any chunks.
TEST(TargetLib, MaxIndxMinIndx_VeryLongArraysOfShorts_FindTheFirstPlace) {
  constexpr int kLen = 9000000;
  std::vector<short> x(kLen, 5);
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const std::size_t place :
         {17UL, 2097087UL, 2097088UL, 2097153UL, 8388352UL, 8388608UL, kLen - 2UL}) {
      x[place] = 9;
      x[place + 1] = 9;
      short value = 0;
      int index = -1;
      TargetLib::MaxIndx_16s(x.data(), kLen, &value, &index);
      EXPECT_EQ(value, 9) << level.name;
      EXPECT_EQ(index, static_cast<int>(place)) << level.name;
      x[place] = -9;
      x[place + 1] = -9;
      TargetLib::MinIndx_16s(x.data(), kLen, &value, &index);
      EXPECT_EQ(value, -9) << level.name;
      EXPECT_EQ(index, static_cast<int>(place)) << level.name;
      x[place] = 5;
      x[place + 1] = 5;
    }
  }
}

// Sums. The exact value, and a bound on what double accumulation on lanes loses of it.

/// Exact sum of a function of the elements.
template <class T, class F> Quad Total(const T *x, int n, F term) {
  Quad sum = 0;
  for (int i = 0; i < n; ++i) sum += term(static_cast<Quad>(x[i]));
  return sum;
}
Quad Itself(Quad x) { return x; }
Quad Magnitude(Quad x) { return x < 0 ? -x : x; }

// A lane adds at most every eighth element and the lanes fold in at most seven steps, each step rounding the
// sum of the magnitudes so far by at most u = 2^-53: n / 8 + 7 roundings relative to the sum of the
// magnitudes (Higham, Accuracy and Stability of Numerical Algorithms, section 4.2). One more for the terms,
// one for a division. The rounding to the element type comes on top.
double Loss(int n, Quad magnitudes) { return static_cast<double>(magnitudes) * 0x1p-53 * (n / 8.0 + 9); }

template <class T> double HalfUnit(T x) {
  const T size = std::fabs(x);
  return static_cast<double>(std::nextafter(size, std::numeric_limits<T>::infinity()) - size) / 2;
}

template <class T> bool Near(T got, T expected, double loss) {
  return std::fabs(static_cast<double>(got) - static_cast<double>(expected)) <= loss + 2 * HalfUnit(expected);
}

template <class T>
void CheckSumAndMean(const char *type, void (*sum)(const T *, int, T *), void (*mean)(const T *, int, T *)) {
  CheckReduction<T, T>(
      std::string("Sum_") + type, sum, [](const T *x, int n) { return static_cast<T>(Total(x, n, Itself)); },
      [](T got, T expected, const T *x, int n) {
        return Near(got, expected, Loss(n, Total(x, n, Magnitude)));
      });
  CheckReduction<T, T>(
      std::string("Mean_") + type, mean,
      [](const T *x, int n) { return static_cast<T>(Total(x, n, Itself) / n); },
      [](T got, T expected, const T *x, int n) {
        return Near(got, expected, Loss(n, Total(x, n, Magnitude)) / n);
      });
}

template <class C>
void CheckCplxSumAndMean(const char *type, void (*sum)(const C *, int, C *),
                         void (*mean)(const C *, int, C *)) {
  using T = Part<C>;
  const auto part = [](const C *x, int n, T C::*member) {
    std::vector<T> parts;
    for (int i = 0; i < n; ++i) parts.push_back(x[i].*member);
    return parts;
  };
  const auto exact = [=](const C *x, int n, int divisor) {
    const std::vector<T> re = part(x, n, &C::re), im = part(x, n, &C::im);
    return C{static_cast<T>(Total(re.data(), n, Itself) / divisor),
             static_cast<T>(Total(im.data(), n, Itself) / divisor)};
  };
  const auto near = [=](C got, C expected, const C *x, int n, int divisor) {
    const std::vector<T> re = part(x, n, &C::re), im = part(x, n, &C::im);
    return Near(got.re, expected.re, Loss(n, Total(re.data(), n, Magnitude)) / divisor) &&
           Near(got.im, expected.im, Loss(n, Total(im.data(), n, Magnitude)) / divisor);
  };
  CheckReduction<C, C>(
      std::string("Sum_") + type, sum, [=](const C *x, int n) { return exact(x, n, 1); },
      [=](C got, C expected, const C *x, int n) { return near(got, expected, x, n, 1); });
  CheckReduction<C, C>(
      std::string("Mean_") + type, mean, [=](const C *x, int n) { return exact(x, n, n); },
      [=](C got, C expected, const C *x, int n) { return near(got, expected, x, n, n); });
}

TEST(TargetLib, SumMean_Reals_StayNearTheExactValue) {
  CheckSumAndMean<float>("32f", &TargetLib::Sum_32f, &TargetLib::Mean_32f);
  CheckSumAndMean<double>("64f", &TargetLib::Sum_64f, &TargetLib::Mean_64f);
}
TEST(TargetLib, SumMean_Complex_StayNearTheExactValue) {
  CheckCplxSumAndMean<Cplx32>("32fc", &TargetLib::Sum_32fc, &TargetLib::Mean_32fc);
  CheckCplxSumAndMean<Cplx64>("64fc", &TargetLib::Sum_64fc, &TargetLib::Mean_64fc);
}

// The documented order of additions, bit for bit: scalar i in lane i mod 32, lanes added in halves.
double SumInLanes(const std::vector<double> &x) {
  double lane[32] = {};
  for (std::size_t i = 0; i < x.size(); ++i) lane[i % 32] += x[i];
  for (std::size_t half = 16; half >= 1; half /= 2) {
    for (std::size_t j = 0; j < half; ++j) lane[j] += lane[j + half];
  }
  return lane[0];
}

TEST(TargetLib, Sum_DoublesThatRoundAtEveryStep_AreAddedInTheDocumentedOrder) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> value(-1, 1);
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const std::size_t n : {1U, 31U, 32U, 33U, 63U, 64U, 100U, 1000U, 12345U}) {
      std::vector<double> x(n);
      for (double &v : x) v = value(random);
      double sum = 0;
      TargetLib::Sum_64f(x.data(), static_cast<int>(n), &sum);
      EXPECT_TRUE(Same()(sum, SumInLanes(x))) << level.name << ", length " << n;
    }
  }
}

// Float sums lose nothing that float could hold: 2^24 + 1 a thousand times over, then back.
TEST(TargetLib, SumMean_FloatsThatFloatSumsWouldLose_AreExact) {
  std::vector<float> x(1001, 1.0F);
  x[0] = 16777216.0F;
  x[1000] = -16777216.0F;
  std::vector<Cplx32> z(1001, Cplx32{1.0F, 2.0F});
  z[500] = {-16777216.0F, 16777216.0F};
  z[501] = {16777216.0F, -16777216.0F};
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    float sum = 0, mean = 0;
    TargetLib::Sum_32f(x.data(), 1001, &sum);
    TargetLib::Mean_32f(x.data(), 999, &mean);
    EXPECT_EQ(sum, 999.0F) << level.name;
    EXPECT_EQ(mean, static_cast<float>(16778214.0 / 999)) << level.name;
    Cplx32 total{}, average{};
    TargetLib::Sum_32fc(z.data(), 1001, &total);
    TargetLib::Mean_32fc(z.data(), 1001, &average);
    EXPECT_EQ(total.re, 999.0F) << level.name;
    EXPECT_EQ(total.im, 1998.0F) << level.name;
    EXPECT_EQ(average.re, static_cast<float>(999.0 / 1001)) << level.name;
    EXPECT_EQ(average.im, static_cast<float>(1998.0 / 1001)) << level.name;
  }
}

TEST(TargetLib, Sum_Integers_IsExactThenSaturates) {
  const auto exact = [](auto limits, const auto *x, int n) {
    using T = decltype(limits);
    const Quad sum = Total(x, n, Itself);
    const Quad low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
    return static_cast<T>(sum > high ? high : sum < low ? low : sum);
  };
  const auto shorts = [=](const short *x, int n) { return exact(short(), x, n); };
  const auto ints = [=](const int *x, int n) { return exact(int(), x, n); };
  for (const std::vector<short> &samples : {Samples<short>(), std::vector<short>{100, -99, 7},
                                            std::vector<short>{32767}, std::vector<short>{-32768}}) {
    CheckReduction<short, short>("Sum_16s", &TargetLib::Sum_16s, shorts, Same(), {}, samples);
  }
  for (const std::vector<int> &samples :
       {Samples<int>(), std::vector<int>{100, -99, 7}, std::vector<int>{INT_MAX, -INT_MAX, 5},
        std::vector<int>{INT_MAX}, std::vector<int>{INT_MIN}}) {
    CheckReduction<int, int>("Sum_32s", &TargetLib::Sum_32s, ints, Same(), {}, samples);
  }
}

// So many of the largest and then of the smallest that sums of them in 32 bits would overflow, though the
// whole does not; and every length, of sums that do not saturate.
template <class T> void CheckLongSum(void (*sum)(const T *, int, T *), int half) {
  constexpr T kLeast = std::numeric_limits<T>::min(), kMost = std::numeric_limits<T>::max();
  std::vector<T> x(static_cast<std::size_t>(half), kMost);
  x.insert(x.end(), static_cast<std::size_t>(half), kLeast);
  for (int above = half - 77; above > 0; above -= std::min<int>(above, kMost)) // each pair made -1
    x.push_back(static_cast<T>(std::min<int>(above, kMost)));
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    T result{};
    sum(x.data(), static_cast<int>(x.size()), &result);
    EXPECT_EQ(result, -77) << level.name;
    for (int len = 1; len <= 300; ++len) {
      int expected = 0;
      std::vector<T> some;
      for (int i = 0; i < len; ++i) {
        some.push_back(static_cast<T>((i * 37 % 201 - 100) * (i % 2 == 0 ? 1 : -1)));
        expected += some.back();
      }
      sum(some.data(), len, &result);
      ASSERT_EQ(result, expected) << level.name << ", length " << len;
    }
  }
}

TEST(TargetLib, Sum_ManyLargeIntegers_IsExact) {
  CheckLongSum<short>(&TargetLib::Sum_16s, 2200000);
  CheckLongSum<int>(&TargetLib::Sum_32s, 1100000);
}

// With a computed mean that is off by d, the squared deviations sum to S + n d^2, and each square may lose
// half of the least denormal. Of such an addition the root leaves at most the smaller of its own root and its
// half over the root of S. Forming the terms costs 3 u and adding them on lanes n / 8 + 9, which the root
// halves.
double OfRoot(double root, double added) { return std::min(std::sqrt(added), added / (2 * root)); }

template <class T> void CheckStdDev(const char *name, void (*stdDev)(const T *, int, T *)) {
  const auto squares = [](const T *x, int n) {
    const Quad mean = Total(x, n, Itself) / n;
    return Total(x, n, [mean](Quad y) { return (y - mean) * (y - mean); });
  };
  CheckReduction<T, T>(
      name, stdDev, [=](const T *x, int n) { return static_cast<T>(Root(squares(x, n) / (n - 1))); },
      [=](T got, T expected, const T *x, int n) {
        const double mean = static_cast<double>(Magnitude(Total(x, n, Itself))) / n;
        const double shift = Loss(n, Total(x, n, Magnitude)) / n + mean * 0x1p-53;
        const double root = std::sqrt(static_cast<double>(squares(x, n)));
        const double added = OfRoot(root, n * (shift * shift + 0x1p-1074));
        const double loss = (added + (root + added) * 0x1p-53 * (n / 8.0 + 14)) / std::sqrt(n - 1.0);
        return Near(got, expected, loss);
      },
      {}, QORN::test::FiniteSamples<T>(1e6), 2);
}

TEST(TargetLib, StdDev_Reals_StayNearTheExactValueAndNeedTwoElements) {
  CheckStdDev<float>("StdDev_32f", &TargetLib::StdDev_32f);
  CheckStdDev<double>("StdDev_64f", &TargetLib::StdDev_64f);
}

TEST(TargetLib, StdDev_KnownArrays_MatchByHand) {
  const float x[] = {2, 4, 4, 4, 5, 5, 7, 9};
  const double y[] = {1e9 + 4, 1e9 + 7, 1e9 + 13, 1e9 + 16};
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    float deviation = 0;
    TargetLib::StdDev_32f(x, 8, &deviation);
    EXPECT_EQ(deviation, static_cast<float>(std::sqrt(32.0 / 7))) << level.name;
    double deviation64 = 0;
    TargetLib::StdDev_64f(y, 4, &deviation64);
    EXPECT_EQ(deviation64, std::sqrt(30.0)) << level.name;
  }
}

// Long arrays are read once, about a mean that moves: what lies far from zero, begins elsewhere than it goes
// on, or climbs all the way must keep its digits.
TEST(TargetLib, StdDev_MeansThatMove_KeepsTheDigitsOfTwoPasses) {
  std::mt19937 random(7);
  std::normal_distribution<double> normal;
  for (const int n : {1024, 1025, 2048, 2049, 5000, 70001}) {
    for (const int kind : {0, 1, 2, 3}) {
      std::vector<double> x(static_cast<std::size_t>(n));
      for (int i = 0; i < n; ++i) {
        const double base = kind == 0   ? 1e9
                            : kind == 1 ? (i < 1024 ? 0.0 : 1e6)
                            : kind == 2 ? (i < n - 1 ? 1e6 : -1e9)
                                        : 1e7 + i;
        x[static_cast<std::size_t>(i)] = base + normal(random);
      }
      Quad sum = 0, squares = 0;
      for (const double value : x) sum += value;
      const Quad mean = sum / n;
      for (const double value : x) squares += (value - mean) * (value - mean);
      const double exact = static_cast<double>(Root(squares / (n - 1)));
      for (const kernels::Level &level : kernels::AvailableLevels()) {
        const kernels::ScopedLevel scope(level);
        double deviation = 0;
        TargetLib::StdDev_64f(x.data(), n, &deviation);
        EXPECT_NEAR(deviation, exact, exact * 0x1p-53 * (n / 32.0 + 64))
            << level.name << ", length " << n << ", kind " << kind;
      }
    }
  }
}

TEST(TargetLib, StdDev_ValuesBeyondTheRange_DoNotDependOnTheirPlace) {
  const double inf = std::numeric_limits<double>::infinity();
  std::vector<double> x(5000);
  for (const std::size_t place : {0U, 1023U, 1024U, 2047U, 3000U, 4999U}) {
    const auto deviation = [&](double value) {
      std::fill(x.begin(), x.end(), 1.0);
      x[place] = value;
      double result = 0;
      TargetLib::StdDev_64f(x.data(), static_cast<int>(x.size()), &result);
      return result;
    };
    EXPECT_TRUE(std::isnan(deviation(inf))) << place;
    EXPECT_TRUE(std::isnan(deviation(-inf))) << place;
    EXPECT_TRUE(std::isnan(deviation(std::nan("")))) << place;
    EXPECT_EQ(deviation(1e200), inf) << place; // its square is
    EXPECT_EQ(deviation(1.0), 0.0) << place;
  }
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = i < 1024 ? 0.0 : 1e-163; // the squares vanish
  double result = 77;
  TargetLib::StdDev_64f(x.data(), static_cast<int>(x.size()), &result);
  EXPECT_EQ(result, 0.0);
}

TEST(TargetLib, StdDev_OneElement_LeavesTheResult) {
  const float x = 5;
  const double y = 5;
  float deviation = 77;
  double deviation64 = 77;
  TargetLib::StdDev_32f(&x, 1, &deviation);
  TargetLib::StdDev_64f(&y, 1, &deviation64);
  EXPECT_EQ(deviation, 77.0F);
  EXPECT_EQ(deviation64, 77.0);
}

template <class D, class S> void CheckNorm(const char *name, void (*norm)(const S *, int, D *)) {
  using T = Part<S>;
  constexpr int kParts = sizeof(S) / sizeof(T);
  const auto squares = [](const S *x, int n) {
    return Total(reinterpret_cast<const T *>(x), kParts * n, [](Quad y) { return y * y; });
  };
  CheckReduction<D, S>(
      name, norm, [=](const S *x, int n) { return static_cast<D>(Root(squares(x, n))); },
      // The relative error of the sum of squares is halved by the root, which adds a rounding of its own.
      [=](D got, D expected, const S *x, int n) {
        const double root = static_cast<double>(Root(squares(x, n)));
        return Near(got, expected,
                    OfRoot(root, kParts * n * 0x1p-1074) + root * 0x1p-53 * (kParts * n / 16.0 + 6));
      });
}

TEST(TargetLib, NormL2_AnyType_IsTheRootOfTheSumOfSquares) {
  CheckNorm<float, float>("Norm_L2_32f", &TargetLib::Norm_L2_32f);
  CheckNorm<double, double>("Norm_L2_64f", &TargetLib::Norm_L2_64f);
  CheckNorm<double, Cplx32>("Norm_L2_32fc64f", &TargetLib::Norm_L2_32fc64f);
  CheckNorm<double, Cplx64>("Norm_L2_64fc64f", &TargetLib::Norm_L2_64fc64f);
}

TEST(TargetLib, NormL2_FloatsWhoseSquaresOverflowFloat_IsFinite) {
  const float x[] = {3e30F, 4e30F};
  const Cplx32 z[] = {{3e30F, 4e30F}};
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    float norm = 0;
    double norm64 = 0;
    TargetLib::Norm_L2_32f(x, 2, &norm);
    TargetLib::Norm_L2_32fc64f(z, 1, &norm64);
    EXPECT_EQ(norm, 5e30F) << level.name;
    EXPECT_NEAR(norm64, 5e30, 1e24) << level.name;
  }
}

TEST(TargetLib, AnyReduction_EmptyArray_LeavesTheResult) {
  const float x = 1;
  float result = 77;
  int index = 77;
  TargetLib::Max_32f(&x, 0, &result);
  TargetLib::MaxIndx_32f(&x, 0, &result, &index);
  TargetLib::Sum_32f(&x, -1, &result);
  TargetLib::Mean_32f(nullptr, 1, &result);
  EXPECT_EQ(result, 77.0F);
  EXPECT_EQ(index, 77);
}

} // namespace
