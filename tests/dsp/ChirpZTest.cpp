#include "qorn/dsp/ChirpZ.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdlib>
#include <limits>
#include <memory>
#include <numbers>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/dsp/FFT.h"
#include "qorn/infra/QORNException.h"
#include "qorn/infra/TargetLib.h"
#include "support/Allocations.h"
#include "support/Csv.h"
#include "support/FourierVectors.h"
#include "support/Wide.h"

namespace {

using namespace QORN;
using test::AllocationCount;
using test::AllocationLimit;
using test::LongComplex;
using test::NoiseVector;
using test::SameBits;
using test::ToLongComplex;

constexpr long double kPi = std::numbers::pi_v<long double>;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

template <class V> using Scalar = decltype(test::ElementOf<V>::re);
template <class V> constexpr bool kIsDouble = std::is_same_v<V, VecCplx64>;

struct Grid {
  int n;
  double fs;
  int m;
  double f0, df;
};

template <class V> ChirpZ Make(const Grid &grid) {
  return {grid.n, grid.fs, grid.m, grid.f0, grid.df, kIsDouble<V>};
}

template <class V> class ChirpZOf : public testing::Test {};
using Vectors = testing::Types<VecCplx32, VecCplx64>;
TYPED_TEST_SUITE(ChirpZOf, Vectors);

// The definition, in long double: blocks of samples by Horner's scheme, each turned by its phase, which is
// reduced to a turn first.
template <class V> LongComplex Point(const V &x, const Grid &grid, int k) {
  const long double frequency = (static_cast<long double>(grid.f0) + k * static_cast<long double>(grid.df)) /
                                static_cast<long double>(grid.fs);
  const auto phasor = [frequency](int i) {
    const long double turns = frequency * i;
    return std::polar(1.0L, -2.0L * kPi * (turns - std::round(turns)));
  };
  const LongComplex step = phasor(1);
  LongComplex sum;
  for (int first = 0; first < grid.n; first += 64) {
    long double re = 0.0L;
    long double im = 0.0L;
    for (int i = std::min(first + 64, grid.n) - 1; i >= first; --i) {
      const long double next = re * step.real() - im * step.imag() + static_cast<long double>(x[i].re);
      im = re * step.imag() + im * step.real() + static_cast<long double>(x[i].im);
      re = next;
    }
    sum += LongComplex(re, im) * phasor(first);
  }
  return sum;
}

// The documented bound of the error of a point.
template <class V> double Bound(const V &x, const Grid &grid, int length) {
  const double longest = std::max(grid.n, grid.m);
  const double theta = static_cast<double>(kPi) / grid.fs *
                       (2.0 * std::fabs(grid.f0) * grid.n + std::fabs(grid.df) * longest * longest);
  const double eps = static_cast<double>(std::numeric_limits<Scalar<V>>::epsilon());
  double sum = 0.0;
  for (int i = 0; i < grid.n; ++i) sum += static_cast<double>(std::abs(ToLongComplex(x[i])));
  return (1.5 * eps * std::sqrt(std::max(1.0, std::log2(length))) + 0x1p-51 * theta) * sum;
}

// Some 32 of the points, evenly chosen.
template <class V> void ExpectDefinition(const V &got, const V &x, const Grid &grid, int length) {
  ASSERT_EQ(got.GetSize(), grid.m);
  const double bound = Bound(x, grid, length);
  for (int k = 0; k < grid.m; k += 1 + grid.m / 32) {
    ASSERT_LE(static_cast<double>(std::abs(ToLongComplex(got[k]) - Point(x, grid, k))), bound)
        << "N " << grid.n << ", M " << grid.m << ", f0 " << grid.f0 << ", df " << grid.df << ", k " << k;
  }
}

TYPED_TEST(ChirpZOf, Apply_GridsAndLengths_IsTheDefinitionWithinTheBound) {
  for (const int n : {1, 2, 3, 16, 100, 1000, 4096}) {
    const auto x = NoiseVector<TypeParam>(n);
    for (const int m : {1, 2, 3, 16, 97, 2000}) {
      for (const double f0 : {0.0, 0.1, -0.5, 3.7}) {
        for (const double span : {0.0, 1.0, 1.0 / 64.0, 1e-4, 5.0}) {
          const Grid grid = {n, 1.0, m, f0, span / m};
          auto chirp = Make<TypeParam>(grid);
          TypeParam out;
          chirp.Apply(out, x);
          ExpectDefinition(out, x, grid, chirp.ActualFFTLength());
        }
      }
    }
  }
}

TYPED_TEST(ChirpZOf, Apply_LongBlocks_IsTheDefinitionWithinTheBound) {
  for (const Grid &grid : {Grid{65536, 1.0, 100, 0.1, 1.0 / 65536.0}, Grid{20000, 1.0, 1000, -0.5, 1e-3},
                           Grid{10, 1.0, 30000, 0.0, 1.0 / 30000.0}}) {
    const auto x = NoiseVector<TypeParam>(grid.n);
    for (const kernels::Level &level : kernels::AvailableLevels()) {
      const kernels::ScopedLevel scoped(level);
      auto chirp = Make<TypeParam>(grid);
      TypeParam out;
      chirp.Apply(out, x);
      ExpectDefinition(out, x, grid, chirp.ActualFFTLength());
    }
  }
}

TYPED_TEST(ChirpZOf, Apply_ToneBetweenTheBins_ReadsItsAmplitudeAtItsFrequency) {
  // A span of 1/64 of the rate; the tone stands on point 300 of it, and on no bin of a transform of N points.
  const Grid grid = {4096, 10e6, 1024, 1e6, 10e6 / 65536.0};
  TypeParam x(grid.n);
  for (int i = 0; i < grid.n; ++i) {
    const double phase = 2.0 * static_cast<double>(kPi) * (grid.f0 + 300 * grid.df) / grid.fs * i;
    x[i] = {static_cast<Scalar<TypeParam>>(std::cos(phase) / grid.n),
            static_cast<Scalar<TypeParam>>(std::sin(phase) / grid.n)};
  }
  TypeParam out;
  Make<TypeParam>(grid).Apply(out, x);
  const auto magnitude = [&out](int k) { return static_cast<double>(std::abs(ToLongComplex(out[k]))); };
  EXPECT_NEAR(magnitude(300), 1.0, 1e-6);
  for (int k = 0; k < grid.m; ++k) {
    if (k != 300) {
      EXPECT_LT(magnitude(k), magnitude(300)) << k;
    }
  }
}

TYPED_TEST(ChirpZOf, Apply_TabulatedGrids_IsThatOfScipy) {
  int rows = 0;
  for (const auto &row : test::ReadCsv("chirpz.csv")) {
    ASSERT_EQ(row.size(), 6U);
    const Grid grid = {std::atoi(row[0].c_str()), std::strtod(row[1].c_str(), nullptr),
                       std::atoi(row[2].c_str()), std::strtod(row[3].c_str(), nullptr),
                       std::strtod(row[4].c_str(), nullptr)};
    TypeParam x(grid.n);
    for (long i = 0; i < grid.n; ++i) {
      x[static_cast<int>(i)] = {static_cast<Scalar<TypeParam>>((7919 * i + 13) % 257 - 128) / 128,
                                static_cast<Scalar<TypeParam>>((104729 * i + 7) % 251 - 125) / 128};
    }
    auto chirp = Make<TypeParam>(grid);
    TypeParam out;
    chirp.Apply(out, x);
    ASSERT_EQ(out.GetSize(), grid.m);
    std::istringstream parts(row[5]);
    const auto next = [&parts] {
      std::string part;
      parts >> part;
      return std::strtod(part.c_str(), nullptr);
    };
    for (int k = 0; k < grid.m; ++k) {
      const double re = next();
      const double im = next();
      // SciPy goes the same way and errs as much as the double form.
      const double bound =
          Bound(x, grid, chirp.ActualFFTLength()) + Bound(VecCplx64(x), grid, chirp.ActualFFTLength());
      EXPECT_NEAR(static_cast<double>(out[k].re), re, bound) << row[0] << ' ' << k;
      EXPECT_NEAR(static_cast<double>(out[k].im), im, bound) << row[0] << ' ' << k;
    }
    ++rows;
  }
  EXPECT_EQ(rows, 6);
}

TYPED_TEST(ChirpZOf, Apply_BinsOfTheTransform_IsTheForwardTransform) {
  for (const int n : {1, 2, 3, 12, 100, 1000}) {
    const double fs = 48e3;
    const auto x = NoiseVector<TypeParam>(n);
    const Grid grid = {n, fs, n, 0.0, fs / n};
    auto chirp = Make<TypeParam>(grid);
    TypeParam out;
    chirp.Apply(out, x);
    ASSERT_EQ(out.GetSize(), n);
    const auto expected = test::ReferenceTransform(test::ToLongComplexVector(x), -1);
    for (int k = 0; k < n; ++k) {
      EXPECT_LE(static_cast<double>(std::abs(ToLongComplex(out[k]) - expected[static_cast<std::size_t>(k)])),
                Bound(x, grid, chirp.ActualFFTLength()))
          << n << ' ' << k;
    }
  }
}

// The steps one by one, each phase in the way of its precision.
VecCplx64 Tone(const VecCplx64 &, int n, double a) {
  VecCplx64 dst(n);
  for (int i = 0; i < n; ++i) {
    const double phase = i * -a;
    TargetLib::Expj_64f(&phase, &dst[i], 1);
  }
  return dst;
}
VecCplx64 Chirp(const VecCplx64 &, int n, double b) {
  VecCplx64 dst(n);
  const double slope = std::sqrt(b / 2.0);
  for (int i = 0; i < n; ++i) {
    const double root = i * slope;
    const double phase = -(root * root);
    TargetLib::Expj_64f(&phase, &dst[i], 1);
  }
  return dst;
}
Cplx32 NarrowPhasor(double phase) {
  Cplx64 value;
  TargetLib::Expj_64f(&phase, &value, 1);
  return {static_cast<float>(value.re), static_cast<float>(value.im)};
}
VecCplx32 Tone(const VecCplx32 &, int n, double a) {
  VecCplx32 dst(n);
  for (int i = 0; i < n; ++i) dst[i] = NarrowPhasor(-(i * a));
  return dst;
}
VecCplx32 Chirp(const VecCplx32 &, int n, double b) {
  VecCplx32 dst(n);
  for (int i = 0; i < n; ++i) dst[i] = NarrowPhasor((i * (b * -0.5)) * i);
  return dst;
}

template <class V> V PerStep(const V &x, const Grid &grid) {
  int order = 0;
  while ((1 << order) < grid.n + grid.m - 1) ++order;
  const int length = 1 << order;
  const double a = 6.283185307179586 * grid.f0 / grid.fs;
  const double b = 6.283185307179586 * grid.df / grid.fs;
  FFT fft(order, kIsDouble<V>);
  const V q = Chirp(V(), std::max(grid.n, grid.m), b);
  V first = Tone(V(), grid.n, a);
  V last(grid.m), filter(length), work(length);
  for (int i = 0; i < grid.m; ++i) {
    last[i] = q[i];
    filter[i] = {q[i].re, -q[i].im};
  }
  for (int i = 1; i < grid.n; ++i) filter[length - i] = {q[i].re, -q[i].im};
  fft.Forward(filter);
  for (int i = 0; i < grid.n; ++i) {
    first[i] = test::CplxTimes(first[i], q[i]);
    work[i] = test::CplxTimes(x[i], first[i]);
  }
  fft.Forward(work);
  for (int i = 0; i < length; ++i) work[i] = test::CplxTimes(work[i], filter[i]);
  fft.Inverse(work);
  for (int i = 0; i < grid.m; ++i) last[i] = test::CplxTimes(work[i], last[i]);
  return last;
}

TYPED_TEST(ChirpZOf, Apply_AnyGrid_HasTheBitsOfTheSteps) {
  for (const Grid &grid : {Grid{1, 1.0, 1, 0.2, 0.1}, Grid{7, 8e3, 12, -3e3, 250.0},
                           Grid{1500, 10e6, 700, 1e6, 1234.5}, Grid{3000, 1.0, 40, 0.49, 3e-6}}) {
    const auto x = NoiseVector<TypeParam>(grid.n);
    TypeParam out;
    Make<TypeParam>(grid).Apply(out, x);
    EXPECT_TRUE(SameBits(out, PerStep(x, grid))) << grid.n;
  }
}

TEST(ChirpZ, ActualFFTLength_AnyParameters_IsTheNextPowerOfTwo) {
  EXPECT_EQ(ChirpZ().ActualFFTLength(), -1);
  const struct {
    int n, m, length;
  } rows[] = {{1000, 24, 1024}, {1000, 25, 1024}, {1000, 26, 2048}, {1, 1, 1},    {1, 2, 2},
              {2, 2, 4},        {3, 2, 4},        {4, 2, 8},        {0, 0, 1},    {0, 1, 1},
              {-5, 3, 1},       {0, 6, 8},        {-5, 100, 128},   {100, 0, 128}};
  for (const auto &row : rows) {
    for (const bool useDouble : {false, true}) {
      const ChirpZ chirp(row.n, 1.0, row.m, 0.0, 0.01, useDouble);
      EXPECT_EQ(chirp.ActualFFTLength(), row.length) << row.n << ' ' << row.m;
    }
  }
}

TYPED_TEST(ChirpZOf, Apply_WithoutParameters_GivesAnEmptyVector) {
  ChirpZ chirp;
  const auto x = NoiseVector<TypeParam>(10);
  auto out = NoiseVector<TypeParam>(5);
  chirp.Apply(out, x);
  EXPECT_EQ(out.GetSize(), 0);
}

TYPED_TEST(ChirpZOf, Apply_NothingToCompute_GivesAnEmptyVector) {
  const auto x = NoiseVector<TypeParam>(10);
  for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
    for (const auto &[samples, points] : {std::pair(n, 8), std::pair(8, n), std::pair(n, n)}) {
      ChirpZ chirp(samples, 1.0, points, 0.1, 0.01, kIsDouble<TypeParam>);
      auto out = NoiseVector<TypeParam>(5);
      chirp.Apply(out, x);
      EXPECT_EQ(out.GetSize(), 0) << samples << ' ' << points;
    }
  }
}

TYPED_TEST(ChirpZOf, Apply_OtherPrecision_GivesAnEmptyVector) {
  using Other = std::conditional_t<kIsDouble<TypeParam>, VecCplx32, VecCplx64>;
  auto chirp = Make<TypeParam>({10, 1.0, 6, 0.0, 0.1});
  auto out = NoiseVector<Other>(5);
  chirp.Apply(out, NoiseVector<Other>(10));
  EXPECT_EQ(out.GetSize(), 0);
}

TEST(ChirpZ, Apply_NegativeStepInFloat_GivesTheMirroredGrid) {
  const Grid up = {200, 1.0, 33, 0.1, 0.003};
  const Grid down = {200, 1.0, 33, 0.1 + 32 * 0.003, -0.003};
  const auto x = NoiseVector<VecCplx32>(200);
  VecCplx32 rising, falling;
  Make<VecCplx32>(up).Apply(rising, x);
  Make<VecCplx32>(down).Apply(falling, x);
  ExpectDefinition(falling, x, down, 256);
  const double bound = Bound(x, up, 256) + Bound(x, down, 256);
  for (int k = 0; k < 33; ++k) {
    EXPECT_LE(static_cast<double>(std::abs(ToLongComplex(rising[k]) - ToLongComplex(falling[32 - k]))),
              bound);
  }
}

template <class V> void ExpectNotANumber(const V &vec, int n) {
  ASSERT_EQ(vec.GetSize(), n);
  for (int i = 0; i < n; ++i) {
    EXPECT_TRUE(std::isnan(vec[i].re)) << i;
    EXPECT_TRUE(std::isnan(vec[i].im)) << i;
  }
}

TEST(ChirpZ, Apply_NegativeStepInDouble_GivesNotANumber) {
  VecCplx64 out;
  Make<VecCplx64>({20, 1.0, 9, 0.1, -0.003}).Apply(out, NoiseVector<VecCplx64>(20));
  ExpectNotANumber(out, 9);
}

TYPED_TEST(ChirpZOf, Apply_ParametersWithoutMeaning_GivesNotANumber) {
  const auto x = NoiseVector<TypeParam>(20);
  for (const Grid &grid :
       {Grid{20, 0.0, 9, 0.1, 0.01}, Grid{20, 0.0, 9, 0.0, 0.0}, Grid{20, kNan, 9, 0.1, 0.01},
        Grid{20, 1.0, 9, kNan, 0.01}, Grid{20, 1.0, 9, 0.1, kNan}, Grid{20, 1.0, 9, kInfinity, 0.01},
        Grid{20, 1.0, 9, 0.1, kInfinity}}) {
    TypeParam out;
    Make<TypeParam>(grid).Apply(out, x);
    ExpectNotANumber(out, 9);
  }
}

TYPED_TEST(ChirpZOf, SetParameters_SameValues_CostsNothing) {
  const Grid grid = {300, 2.0, 50, 0.1, 0.001};
  const auto x = NoiseVector<TypeParam>(300);
  auto chirp = Make<TypeParam>(grid);
  TypeParam before, after;
  chirp.Apply(before, x);
  const long count = AllocationCount();
  EXPECT_TRUE(chirp.SetParameters(300, 2.0, 50, 0.1, 0.001, kIsDouble<TypeParam>));
  EXPECT_EQ(AllocationCount(), count);
  chirp.Apply(after, x);
  EXPECT_TRUE(SameBits(before, after));
}

TYPED_TEST(ChirpZOf, SetParameters_AnyOtherValue_ComputesAnew) {
  const Grid grid = {300, 2.0, 50, 0.1, 0.001};
  const auto x = NoiseVector<TypeParam>(301);
  for (const Grid &other :
       {Grid{301, 2.0, 50, 0.1, 0.001}, Grid{300, 2.5, 50, 0.1, 0.001}, Grid{300, 2.0, 51, 0.1, 0.001},
        Grid{300, 2.0, 50, 0.2, 0.001}, Grid{300, 2.0, 50, 0.1, 0.002}}) {
    auto chirp = Make<TypeParam>(grid);
    EXPECT_TRUE(chirp.SetParameters(other.n, other.fs, other.m, other.f0, other.df, kIsDouble<TypeParam>));
    TypeParam out, expected;
    chirp.Apply(out, x);
    Make<TypeParam>(other).Apply(expected, x);
    EXPECT_TRUE(SameBits(out, expected));
  }
}

TYPED_TEST(ChirpZOf, SetParameters_OtherPrecisionOnly_ReleasesTheFirst) {
  using Other = std::conditional_t<kIsDouble<TypeParam>, VecCplx32, VecCplx64>;
  const Grid grid = {300, 2.0, 50, 0.1, 0.001};
  auto chirp = Make<TypeParam>(grid);
  EXPECT_TRUE(chirp.SetParameters(300, 2.0, 50, 0.1, 0.001, kIsDouble<Other>));
  TypeParam none;
  chirp.Apply(none, NoiseVector<TypeParam>(300));
  EXPECT_EQ(none.GetSize(), 0);
  Other out, expected;
  chirp.Apply(out, NoiseVector<Other>(300));
  Make<Other>(grid).Apply(expected, NoiseVector<Other>(300));
  EXPECT_TRUE(SameBits(out, expected));
}

TYPED_TEST(ChirpZOf, SetParameters_NotANumberAgain_IsNoRepetition) {
  auto chirp = Make<TypeParam>({30, 1.0, 5, kNan, 0.001});
  const long count = AllocationCount();
  EXPECT_TRUE(chirp.SetParameters(30, 1.0, 5, kNan, 0.001, kIsDouble<TypeParam>));
  EXPECT_GT(AllocationCount(), count);
}

TYPED_TEST(ChirpZOf, Apply_OnAKeptDestination_AllocatesNothing) {
  auto chirp = Make<TypeParam>({3000, 2.0, 500, 0.1, 0.001});
  const auto x = NoiseVector<TypeParam>(3000);
  TypeParam out(500);
  const long count = AllocationCount();
  chirp.Apply(out, x);
  chirp.Apply(out, x);
  EXPECT_EQ(AllocationCount(), count);
}

TYPED_TEST(ChirpZOf, Apply_InPlaceOrOnAView_GivesTheSame) {
  for (const int m : {20, 300, 400}) {
    auto chirp = Make<TypeParam>({300, 2.0, m, 0.1, 0.001});
    const auto x = NoiseVector<TypeParam>(320);
    TypeParam expected, data = x;
    chirp.Apply(expected, x);
    chirp.Apply(data, data);
    EXPECT_TRUE(SameBits(data, expected)) << m;
    TypeParam view(330);
    for (int i = 0; i < 320; ++i) view[i + 7] = x[i];
    view.Truncate(7, 310);
    chirp.Apply(view, view);
    EXPECT_TRUE(SameBits(view, expected)) << m;
  }
}

TYPED_TEST(ChirpZOf, Apply_OtherLengthThanN_ReadsNSamplesOrAddsZeros) {
  auto chirp = Make<TypeParam>({300, 2.0, 50, 0.1, 0.001});
  for (const int given : {0, 1, 299, 301, 1000}) {
    const auto x = NoiseVector<TypeParam>(given);
    TypeParam exact(300), out, expected;
    for (int i = 0; i < std::min(300, given); ++i) exact[i] = x[i];
    chirp.Apply(expected, exact);
    chirp.Apply(out, x);
    EXPECT_TRUE(SameBits(out, expected)) << given;
  }
}

TYPED_TEST(ChirpZOf, Copy_AnyState_IsIndependent) {
  const Grid grid = {300, 2.0, 50, 0.1, 0.001};
  const auto x = NoiseVector<TypeParam>(300);
  auto source = std::make_unique<ChirpZ>(Make<TypeParam>(grid));
  TypeParam expected, out;
  source->Apply(expected, x);
  ChirpZ copy(*source);
  ChirpZ assigned(8, 1.0, 8, 0.0, 0.1, !kIsDouble<TypeParam>);
  assigned = *source;
  const ChirpZ &self = assigned;
  assigned = self;
  source->SetParameters(10, 1.0, 5, 0.0, 0.1, kIsDouble<TypeParam>);
  source.reset();
  for (ChirpZ *chirp : {&copy, &assigned}) {
    EXPECT_EQ(chirp->ActualFFTLength(), 512);
    const long count = AllocationCount();
    EXPECT_TRUE(chirp->SetParameters(300, 2.0, 50, 0.1, 0.001, kIsDouble<TypeParam>));
    EXPECT_EQ(AllocationCount(), count);
    chirp->Apply(out, x);
    EXPECT_TRUE(SameBits(out, expected));
  }
  assigned = ChirpZ();
  EXPECT_EQ(assigned.ActualFFTLength(), -1);
  assigned.Apply(out, x);
  EXPECT_EQ(out.GetSize(), 0);
}

TYPED_TEST(ChirpZOf, Move_AnyState_LeavesNothingBehind) {
  const auto x = NoiseVector<TypeParam>(300);
  auto source = Make<TypeParam>({300, 2.0, 50, 0.1, 0.001});
  TypeParam expected, out;
  source.Apply(expected, x);
  ChirpZ taken(std::move(source));
  taken.Apply(out, x);
  EXPECT_TRUE(SameBits(out, expected));
  ChirpZ assigned;
  assigned = std::move(taken);
  assigned.Apply(out, x);
  EXPECT_TRUE(SameBits(out, expected));
  for (ChirpZ *left : {&source, &taken}) {
    left->Apply(out, x);
    EXPECT_EQ(out.GetSize(), 0);
    EXPECT_TRUE(left->SetParameters(300, 2.0, 50, 0.1, 0.001, kIsDouble<TypeParam>));
    left->Apply(out, x);
    EXPECT_TRUE(SameBits(out, expected));
  }
}

template <class Action> void ExpectWantOfMemory(Action action) {
  testing::internal::CaptureStdout();
  try {
    action();
    ADD_FAILURE() << "no exception";
  } catch (const QORNException &e) {
    EXPECT_EQ(e.GetErrorCode(), 11001);
    EXPECT_STREQ(e.GetMessage(), "memory allocation error");
    EXPECT_STREQ(e.GetFileName(), "infra/Vector");
  }
  testing::internal::GetCapturedStdout();
}

TYPED_TEST(ChirpZOf, SetParameters_LengthBeyondThePlans_ThrowsAndLeavesNoParameters) {
  constexpr int kMost = std::numeric_limits<int>::max();
  for (const auto &[n, m] : {std::pair(kMost, kMost), std::pair(1 << 30, 2), std::pair(2, 1 << 30),
                             std::pair(kMost, 1), std::pair(0, kMost)}) {
    auto chirp = Make<TypeParam>({10, 1.0, 5, 0.0, 0.1});
    const AllocationLimit limit(1 << 20);
    ExpectWantOfMemory([&, n = n, m = m] { chirp.SetParameters(n, 1.0, m, 0.0, 0.1, kIsDouble<TypeParam>); });
    EXPECT_EQ(chirp.ActualFFTLength(), -1);
    TypeParam out(3);
    chirp.Apply(out, TypeParam(10));
    EXPECT_EQ(out.GetSize(), 0);
  }
}

// Limits at which first the plan, then one vector after the other finds no memory.
TYPED_TEST(ChirpZOf, SetParameters_WithoutMemory_ThrowsAndLeavesNoParameters) {
  const Grid grid = {3000, 1.0, 1000, 0.0, 1e-4};
  int failures = 0;
  for (std::size_t bytes = 512; bytes < 400000; bytes += bytes / 2) {
    auto chirp = Make<TypeParam>({10, 1.0, 5, 0.0, 0.1});
    bool failed = false;
    testing::internal::CaptureStdout();
    {
      const AllocationLimit limit(bytes);
      try {
        chirp.SetParameters(grid.n, grid.fs, grid.m, grid.f0, grid.df, kIsDouble<TypeParam>);
      } catch (const QORNException &e) {
        EXPECT_EQ(e.GetErrorCode(), 11001);
        failed = true;
      }
    }
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(chirp.ActualFFTLength(), failed ? -1 : 4096) << bytes;
    failures += failed;
    const auto x = NoiseVector<TypeParam>(3000);
    TypeParam out, expected;
    chirp.SetParameters(grid.n, grid.fs, grid.m, grid.f0, grid.df, kIsDouble<TypeParam>);
    chirp.Apply(out, x);
    Make<TypeParam>(grid).Apply(expected, x);
    EXPECT_TRUE(SameBits(out, expected)) << bytes;
  }
  EXPECT_GT(failures, 5);
}

TYPED_TEST(ChirpZOf, Assignment_WithoutMemory_ThrowsAndChangesNothing) {
  const auto source = Make<TypeParam>({3000, 1.0, 1000, 0.0, 1e-4});
  const auto x = NoiseVector<TypeParam>(10);
  auto chirp = Make<TypeParam>({10, 1.0, 5, 0.0, 0.1});
  TypeParam before, after;
  chirp.Apply(before, x);
  ExpectWantOfMemory([&] {
    const AllocationLimit limit(5000);
    chirp = source;
  });
  chirp.Apply(after, x);
  EXPECT_TRUE(SameBits(before, after));
}

} // namespace
