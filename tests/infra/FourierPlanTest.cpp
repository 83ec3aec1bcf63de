#include "infra/fourier/Plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <set>
#include <tuple>
#include <vector>

#include "infra/fourier/Factorise.h"
#include "infra/fourier/Roots.h"
#include "infra/kernels/Levels.h"
#include "support/Allocations.h"
#include "support/FourierReference.h"

namespace {

using QORN::fourier::Block;
using QORN::fourier::ComplexPlan;
using QORN::fourier::FourStepFor;
using QORN::fourier::FourStepShape;
using QORN::fourier::GridFor;
using QORN::fourier::IsSmooth;
using QORN::fourier::LinesFor;
using QORN::fourier::RealPlan;
using QORN::kernels::AvailableLevels;
using QORN::kernels::Level;
using QORN::kernels::ScopedLevel;
using QORN::test::AllocationCount;
using QORN::test::AllocationLimit;
using QORN::test::LongComplex;
using QORN::test::ReferenceTransform;
using QORN::test::RelativeError;

template <class T> std::vector<T> Noise(int size, unsigned seed) {
  std::mt19937 generator(seed);
  std::normal_distribution<double> normal;
  std::vector<T> noise(static_cast<std::size_t>(size));
  for (T &x : noise) x = static_cast<T>(normal(generator));
  return noise;
}

template <class T> std::vector<LongComplex> Complex(const std::vector<T> &interleaved) {
  std::vector<LongComplex> result(interleaved.size() / 2);
  for (std::size_t i = 0; i < result.size(); ++i) {
    result[i] = {static_cast<long double>(interleaved[2 * i]),
                 static_cast<long double>(interleaved[2 * i + 1])};
  }
  return result;
}

template <class T> Block<T> Scratch(const QORN::fourier::Plan &plan) {
  Block<T> scratch(plan.ScratchBytes() / sizeof(T) + 1);
  // What stood there before must not matter.
  for (std::size_t i = 0; i < scratch.Size(); ++i) scratch.Data()[i] = std::numeric_limits<T>::quiet_NaN();
  return scratch;
}

// The largest rms error allowed, by the length's class: both are what docs/fourier-accuracy.md promises.
template <class T> long double Bound(int length) {
  const long double eps = std::numeric_limits<T>::epsilon();
  const long double bits = std::log2(static_cast<long double>(length < 2 ? 2 : length));
  return (IsSmooth(length) ? 0.4L : 1.0L) * eps * std::sqrt(bits);
}

// The root of the mean of the squared relative errors over enough random inputs that a short length's few
// values tell, at every level, is within the bound. make(seed) makes an input, expect(input) its transform,
// run(input) what the plan makes of it.
template <class T, class Make, class Expect, class Run>
void CheckRmsError(int length, const Make &make, const Expect &expect, const Run &run) {
  const std::vector<Level> levels = AvailableLevels();
  std::vector<long double> sums(levels.size(), 0);
  const int repetitions = 1 + 1000 / length;
  for (int i = 0; i < repetitions; ++i) {
    const std::vector<T> x = make(static_cast<unsigned>(1000 * length + i));
    const std::vector<LongComplex> expected = expect(x);
    for (std::size_t l = 0; l < levels.size(); ++l) {
      const ScopedLevel scoped(levels[l]);
      const long double error = RelativeError(run(x), expected);
      sums[l] += error * error;
    }
  }
  for (std::size_t l = 0; l < levels.size(); ++l) {
    EXPECT_LE(std::sqrt(sums[l] / repetitions), Bound<T>(length)) << levels[l].name << ' ' << length;
  }
}

template <class T> class FourierPlan : public testing::Test {};
using Scalars = testing::Types<float, double>;
TYPED_TEST_SUITE(FourierPlan, Scalars);

// What makes two transforms in two sweeps take different ways through their code.
auto WaysOf(const FourStepShape &shape, int scalar) {
  int columns = 1;
  for (const int radix : shape.across) columns *= radix;
  return std::make_tuple(shape.first, shape.down.size(), shape.across.size(), columns % (32 / scalar) == 0,
                         shape.across.empty() || shape.across.back() > 8);
}

// All lengths to 300; then primes, their multiples, powers and mixed lengths, all that go through a grid, and
// the least of each way through two sweeps.
std::vector<int> MakeLengths() {
  std::vector<int> lengths;
  for (int n = 1; n <= 300; ++n) lengths.push_back(n);
  for (const int n : {343,  360,   512,   625,   729,   1000,  1001,  1009,  1016,  1023, 1024, 1200,
                      1331, 1536,  2011,  2032,  2048,  2187,  2197,  3125,  4095,  4096, 6859, 8192,
                      9900, 10000, 10007, 16384, 16807, 24576, 25600, 28561, 32768, 65536}) {
    lengths.push_back(n);
  }
  const auto add = [&lengths](int n) {
    if (std::find(lengths.begin(), lengths.end(), n) == lengths.end()) lengths.push_back(n);
  };
  for (int n = 301; n <= 2048; ++n) {
    if (GridFor(n, sizeof(float)).rows != 0) add(n);
  }
  for (const int scalar : {4, 8}) {
    std::set<decltype(WaysOf({}, 4))> ways;
    for (int n = 304; n <= 40000; n += 8) {
      const FourStepShape shape = FourStepFor(n, scalar);
      if (shape.first != 0 && LinesFor(n, scalar).rows == 0 && GridFor(n, scalar).rows == 0 &&
          ways.insert(WaysOf(shape, scalar)).second)
        add(n);
    }
  }
  return lengths;
}
const std::vector<int> &Lengths() {
  static const std::vector<int> lengths = MakeLengths();
  return lengths;
}

// What the passes have code for: radices 4 to 10, 12 and 14 to 16, and at least as many rows as columns or as
// the widest vector has values.
TYPED_TEST(FourierPlan, GridFor_AnyLength_IsItsProductOfRadices) {
  constexpr int kScalar = sizeof(TypeParam);
  const auto isSide = [](int n) { return n >= 4 && n <= 16 && n != 11 && n != 13; };
  for (int n = 1; n <= 5000; ++n) {
    const QORN::fourier::GridShape shape = GridFor(n, kScalar);
    if (shape.rows == 0) continue;
    EXPECT_EQ(shape.rows * shape.middle * shape.columns, n);
    EXPECT_TRUE(isSide(shape.rows) && isSide(shape.columns)) << n;
    EXPECT_TRUE(shape.middle == 1 ? shape.rows >= shape.columns : isSide(shape.middle) && shape.rows >= 8)
        << n;
  }
  for (const int n : {16, 32, 64, 128, 256, 60, 100, 120}) EXPECT_EQ(GridFor(n, kScalar).middle, 1) << n;
  for (const int n : {360, 512, 1000, 1024, 1200, 1536}) EXPECT_GE(GridFor(n, kScalar).middle, 4) << n;
  for (const int n : {1, 7, 8, 11, 12, 17, 121, 4096}) EXPECT_EQ(GridFor(n, kScalar).rows, 0) << n;
}

// A line is 8 values of float and 4 of double; a plan that had a shape without code would give nothing.
TYPED_TEST(FourierPlan, LinesFor_AnyLength_IsItsProductOfRadices) {
  std::vector<int> found;
  for (int n = 1; n <= 100000; ++n) {
    const QORN::fourier::GridShape shape = LinesFor(n, sizeof(TypeParam));
    if (shape.rows == 0) continue;
    found.push_back(n);
    EXPECT_EQ(shape.rows * shape.middle * shape.columns, n);
    EXPECT_EQ(shape.rows % 8, 0) << n;
    EXPECT_EQ(shape.middle * shape.columns % 8, 0) << n;
    EXPECT_NE(std::find(Lengths().begin(), Lengths().end(), n), Lengths().end()) << n;
  }
  std::vector<int> expected = {512, 1024, 1536, 2048};
  if (sizeof(TypeParam) == sizeof(float)) expected.push_back(4096);
  EXPECT_EQ(found, expected);
}

// The steps have code for a first radix of 8 or 16, and for the radices that grids have. Columns must fill a
// line, and take two steps.
TYPED_TEST(FourierPlan, FourStepFor_AnyLength_IsItsProductOfRadices) {
  constexpr int kScalar = sizeof(TypeParam), kWidth = 32 / kScalar, kLongest = (4 << 20) / (2 * kScalar);
  int count = 0;
  const auto check = [&](int n) {
    const FourStepShape shape = FourStepFor(n, kScalar);
    if (shape.first == 0) {
      EXPECT_TRUE(shape.down.empty() && shape.across.empty());
      return;
    }
    ++count;
    EXPECT_TRUE(shape.first == 8 || shape.first == 16) << n;
    int product = shape.first, columns = 1;
    for (const std::vector<int> *radices : {&shape.down, &shape.across}) {
      EXPECT_LE(radices->size(), 4U) << n;
      for (const int radix : *radices) {
        EXPECT_TRUE(radix >= 4 && radix <= 16 && radix != 11 && radix != 13) << n;
        product *= radix;
        if (radices == &shape.across) columns *= radix;
      }
    }
    EXPECT_EQ(product, n);
    EXPECT_GE(columns, kWidth) << n;
    EXPECT_GE(shape.across.size(), 2U) << n;
    EXPECT_LE(n, kLongest);
  };
  for (int n = 1; n <= 20000; ++n) check(n);
  for (int n = 24000; n <= 2 * kLongest; n += 2000) check(n);
  for (int n = 8192; n <= kLongest; n *= 2) {
    EXPECT_NE(FourStepFor(n, kScalar).first, 0) << n;
    check(n);
  }
  EXPECT_GT(count, 200);
}

// Long ones that go through two sweeps both with and without a copy at the end, and with three steps down.
TYPED_TEST(FourierPlan, ComplexTransform_LongTwoSweeps_IsTheDefinitionWithinTheBound) {
  using T = TypeParam;
  for (const int n : {48000, 49152, 50000, 81920, 98304, 100000, 131072, 196608, 250000, 262144}) {
    ASSERT_NE(FourStepFor(n, sizeof(T)).first, 0) << n;
    const auto plan = ComplexPlan<T>::Make(n);
    ASSERT_NE(plan, nullptr) << n;
    const auto scratch = Scratch<T>(*plan);
    std::vector<T> y(static_cast<std::size_t>(2 * n));
    CheckRmsError<T>(
        n, [&](unsigned seed) { return Noise<T>(2 * n, seed); },
        [&](const std::vector<T> &x) { return ReferenceTransform(Complex(x), -1); },
        [&](const std::vector<T> &x) {
          plan->Forward(x.data(), y.data(), scratch.Data(), T{1});
          return Complex(y);
        });
  }
}

TYPED_TEST(FourierPlan, ComplexTransform_AnyLength_IsTheDefinitionWithinTheBound) {
  using T = TypeParam;
  for (const int n : Lengths()) {
    const auto plan = ComplexPlan<T>::Make(n);
    ASSERT_NE(plan, nullptr) << n;
    EXPECT_EQ(plan->Length(), n);
    const auto scratch = Scratch<T>(*plan);
    std::vector<T> y(static_cast<std::size_t>(2 * n));
    const auto make = [&](unsigned seed) { return Noise<T>(2 * n, seed); };
    CheckRmsError<T>(
        n, make, [&](const std::vector<T> &x) { return ReferenceTransform(Complex(x), -1); },
        [&](const std::vector<T> &x) {
          plan->Forward(x.data(), y.data(), scratch.Data(), T{1});
          return Complex(y);
        });
    CheckRmsError<T>(
        n, make, [&](const std::vector<T> &x) { return ReferenceTransform(Complex(x), 1); },
        [&](const std::vector<T> &x) {
          plan->Inverse(x.data(), y.data(), scratch.Data(), T{1});
          return Complex(y);
        });
  }
}

TYPED_TEST(FourierPlan, ComplexTransform_InPlace_GivesTheSameBits) {
  using T = TypeParam;
  for (const int n : Lengths()) {
    const auto plan = ComplexPlan<T>::Make(n);
    const std::vector<T> x = Noise<T>(2 * n, 1);
    for (const Level &level : AvailableLevels()) {
      const ScopedLevel scoped(level);
      const auto scratch = Scratch<T>(*plan);
      std::vector<T> apart(x.size()), inPlace = x;
      plan->Forward(x.data(), apart.data(), scratch.Data(), T{3});
      plan->Forward(inPlace.data(), inPlace.data(), scratch.Data(), T{3});
      EXPECT_EQ(inPlace, apart) << level.name << ' ' << n;
      inPlace = x;
      plan->Inverse(x.data(), apart.data(), scratch.Data(), T{3});
      plan->Inverse(inPlace.data(), inPlace.data(), scratch.Data(), T{3});
      EXPECT_EQ(inPlace, apart) << level.name << ' ' << n;
    }
  }
}

// Exact where the sums are: small integers, a single one, a scale that is a power of two.
TYPED_TEST(FourierPlan, ComplexTransform_Impulse_GivesConstantTimesScale) {
  using T = TypeParam;
  for (const int n : Lengths()) {
    const auto plan = ComplexPlan<T>::Make(n);
    const auto scratch = Scratch<T>(*plan);
    std::vector<T> x(static_cast<std::size_t>(2 * n), T{0});
    x[0] = 1;
    x[1] = -2;
    plan->Forward(x.data(), x.data(), scratch.Data(), T{0.5});
    const T tolerance = IsSmooth(n) ? 0 : 16 * std::numeric_limits<T>::epsilon();
    for (int k = 0; k < n; ++k) {
      ASSERT_NEAR(x[static_cast<std::size_t>(2 * k)], T{0.5}, tolerance) << n << ' ' << k;
      ASSERT_NEAR(x[static_cast<std::size_t>(2 * k + 1)], T{-1}, tolerance) << n << ' ' << k;
    }
  }
}

TYPED_TEST(FourierPlan, ComplexTransform_AnyAlignment_ReadsAndWritesItsArraysOnly) {
  using T = TypeParam;
  for (const int n : Lengths()) {
    if (n > 4096) continue;
    const auto plan = ComplexPlan<T>::Make(n);
    const std::vector<T> x = Noise<T>(2 * n, 2);
    for (const Level &level : AvailableLevels()) {
      const ScopedLevel scoped(level);
      const auto scratch = Scratch<T>(*plan);
      std::vector<T> expected(x.size());
      plan->Forward(x.data(), expected.data(), scratch.Data(), T{1});
      for (const int offset : {1, 2, 7}) {
        const auto at = static_cast<std::size_t>(offset);
        const T guard = std::numeric_limits<T>::quiet_NaN();
        std::vector<T> in(x.size() + 2 * at, guard), out(x.size() + 2 * at, T{77});
        std::copy(x.begin(), x.end(), in.begin() + offset);
        plan->Forward(in.data() + at, out.data() + at, scratch.Data(), T{1});
        const std::vector<T> y(out.begin() + offset, out.end() - offset);
        EXPECT_EQ(y, expected) << level.name << ' ' << n;
        for (std::size_t i = 0; i < at; ++i) {
          EXPECT_EQ(out[i], T{77}) << level.name << ' ' << n;
          EXPECT_EQ(out[out.size() - 1 - i], T{77}) << level.name << ' ' << n;
        }
      }
    }
  }
}

TYPED_TEST(FourierPlan, RealForward_AnyLength_IsTheDefinitionWithinTheBound) {
  using T = TypeParam;
  for (const int n : Lengths()) {
    const auto plan = RealPlan<T>::Make(n);
    ASSERT_NE(plan, nullptr) << n;
    EXPECT_EQ(plan->Length(), n);
    const auto scratch = Scratch<T>(*plan);
    std::vector<T> y(static_cast<std::size_t>(2 * n));
    CheckRmsError<T>(
        n, [&](unsigned seed) { return Noise<T>(n, seed); },
        [&](const std::vector<T> &x) {
          return ReferenceTransform(std::vector<LongComplex>(x.begin(), x.end()), -1);
        },
        [&](const std::vector<T> &x) {
          plan->Forward(x.data(), y.data(), scratch.Data(), T{1});
          return Complex(y);
        });
  }
}

TYPED_TEST(FourierPlan, RealForward_AnyLength_IsExactlySymmetric) {
  using T = TypeParam;
  for (const int n : Lengths()) {
    const auto plan = RealPlan<T>::Make(n);
    const auto scratch = Scratch<T>(*plan);
    const std::vector<T> x = Noise<T>(n, 3);
    for (const Level &level : AvailableLevels()) {
      const ScopedLevel scoped(level);
      std::vector<T> y(2 * x.size());
      plan->Forward(x.data(), y.data(), scratch.Data(), T{1});
      EXPECT_EQ(y[1], T{0}) << level.name << ' ' << n;
      for (int k = 1; k < n; ++k) {
        const auto low = static_cast<std::size_t>(2 * k), high = static_cast<std::size_t>(2 * (n - k));
        ASSERT_EQ(y[low], y[high]) << level.name << ' ' << n << ' ' << k;
        ASSERT_EQ(y[low + 1], -y[high + 1]) << level.name << ' ' << n << ' ' << k;
      }
    }
  }
}

// Bins 0 and N / 2 of an even length are real even where no bin is finite.
TYPED_TEST(FourierPlan, RealForward_InfiniteSample_KeepsOuterBinsReal) {
  using T = TypeParam;
  for (int n = 2; n <= 300; n += 2) {
    const auto plan = RealPlan<T>::Make(n);
    const auto scratch = Scratch<T>(*plan);
    const auto half = static_cast<std::size_t>(n);
    std::vector<T> x = Noise<T>(n, 7);
    x[half / 3] = std::numeric_limits<T>::infinity();
    for (const Level &level : AvailableLevels()) {
      const ScopedLevel scoped(level);
      std::vector<T> y(2 * x.size(), T{77});
      plan->Forward(x.data(), y.data(), scratch.Data(), T{1});
      EXPECT_EQ(y[1], T{0}) << level.name << ' ' << n;
      EXPECT_EQ(y[half + 1], T{0}) << level.name << ' ' << n;
    }
  }
}

// A conjugate-symmetric spectrum.
template <class T> std::vector<T> Symmetric(int n, unsigned seed) {
  std::vector<T> x = Noise<T>(2 * n, seed);
  x[1] = 0;
  if (n % 2 == 0) x[static_cast<std::size_t>(n) + 1] = 0;
  for (int k = 1; 2 * k < n; ++k) {
    const auto low = static_cast<std::size_t>(2 * k), high = static_cast<std::size_t>(2 * (n - k));
    x[high] = x[low];
    x[high + 1] = -x[low + 1];
  }
  return x;
}

TYPED_TEST(FourierPlan, RealInverse_AnyLength_IsTheDefinitionWithinTheBound) {
  using T = TypeParam;
  for (const int n : Lengths()) {
    const auto plan = RealPlan<T>::Make(n);
    const auto scratch = Scratch<T>(*plan);
    std::vector<T> y(static_cast<std::size_t>(n));
    CheckRmsError<T>(
        n, [&](unsigned seed) { return Symmetric<T>(n, seed); },
        [&](const std::vector<T> &x) { return ReferenceTransform(Complex(x), 1); },
        [&](const std::vector<T> &x) {
          plan->Inverse(x.data(), y.data(), scratch.Data(), T{1});
          return std::vector<LongComplex>(y.begin(), y.end());
        });
  }
}

// Whatever stands in the upper half, and where a real signal's spectrum has no imaginary part, takes no part.
TYPED_TEST(FourierPlan, RealInverse_UpperHalfOverwritten_GivesTheSameBits) {
  using T = TypeParam;
  for (const int n : Lengths()) {
    const auto plan = RealPlan<T>::Make(n);
    const auto scratch = Scratch<T>(*plan);
    const std::vector<T> x = Symmetric<T>(n, 4);
    std::vector<T> spoilt = x;
    spoilt[1] = std::numeric_limits<T>::quiet_NaN();
    for (std::size_t i = 2 * static_cast<std::size_t>(n / 2) + (n % 2 == 0 ? 1 : 2); i < spoilt.size(); ++i) {
      spoilt[i] = std::numeric_limits<T>::quiet_NaN();
    }
    for (const Level &level : AvailableLevels()) {
      const ScopedLevel scoped(level);
      std::vector<T> y(static_cast<std::size_t>(n)), again(y.size());
      plan->Inverse(x.data(), y.data(), scratch.Data(), T{1});
      plan->Inverse(spoilt.data(), again.data(), scratch.Data(), T{1});
      EXPECT_EQ(again, y) << level.name << ' ' << n;
    }
  }
}

TYPED_TEST(FourierPlan, Make_BadLength_IsNull) {
  for (const int n : {0, -1, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(ComplexPlan<TypeParam>::Make(n), nullptr);
    EXPECT_EQ(RealPlan<TypeParam>::Make(n), nullptr);
  }
}

TYPED_TEST(FourierPlan, Make_NoMemory_IsNull) {
  for (const int n : {1024, 1023, 1 << 20, 2147483647}) {
    const AllocationLimit limit(1000);
    EXPECT_EQ(ComplexPlan<TypeParam>::Make(n), nullptr) << n;
    EXPECT_EQ(RealPlan<TypeParam>::Make(n), nullptr) << n;
  }
}

TYPED_TEST(FourierPlan, Clone_SourceGone_StillTransforms) {
  using T = TypeParam;
  for (const int n : {16, 1000, 1024, 1009, 1023, 1031, 3000, 40000}) {
    auto source = ComplexPlan<T>::Make(n);
    auto real = RealPlan<T>::Make(n);
    const std::vector<T> x = Noise<T>(2 * n, 5);
    const auto scratch = Scratch<T>(*source), realScratch = Scratch<T>(*real);
    std::vector<T> expected(x.size()), got(x.size());
    source->Forward(x.data(), expected.data(), scratch.Data(), T{1});
    const auto copy = source->Clone();
    source.reset();
    static_cast<const ComplexPlan<T> &>(*copy).Forward(x.data(), got.data(), scratch.Data(), T{1});
    EXPECT_EQ(got, expected) << n;
    real->Forward(x.data(), expected.data(), realScratch.Data(), T{1});
    const auto realCopy = real->Clone();
    real.reset();
    static_cast<const RealPlan<T> &>(*realCopy).Forward(x.data(), got.data(), realScratch.Data(), T{1});
    EXPECT_EQ(got, expected) << n;
  }
}

TYPED_TEST(FourierPlan, Transform_AnyLength_AllocatesNothing) {
  using T = TypeParam;
  for (const int n : {7, 1000, 1024, 1009, 1023, 1031, 3000, 40000}) {
    const auto plan = ComplexPlan<T>::Make(n);
    const auto real = RealPlan<T>::Make(n);
    const auto scratch = Scratch<T>(*plan), realScratch = Scratch<T>(*real);
    std::vector<T> x = Noise<T>(2 * n, 6), y(x.size());
    const long before = AllocationCount();
    plan->Forward(x.data(), y.data(), scratch.Data(), T{1});
    plan->Inverse(x.data(), y.data(), scratch.Data(), T{1});
    real->Forward(x.data(), y.data(), realScratch.Data(), T{1});
    real->Inverse(y.data(), x.data(), realScratch.Data(), T{1});
    EXPECT_EQ(AllocationCount(), before) << n;
  }
}

TYPED_TEST(FourierPlan, Roots_AnyPlace_AreRoundedOnce) {
  using T = TypeParam;
  for (const std::int64_t n : {1, 2, 3, 7, 8, 12, 1000, 1024, 65537, 1000003, 1 << 28}) {
    const QORN::fourier::Roots<T> roots(n);
    for (std::int64_t i = 0; i < 200; ++i) {
      const std::int64_t k = i < 100 ? i : i * 7919 % n;
      const long double angle = 2 * 3.14159265358979323846264338327950288L * static_cast<long double>(k % n) /
                                static_cast<long double>(n);
      const auto root = roots(k);
      // Half a unit of 1 and what the product of two wider roots may add.
      const double bound = 0.51 * static_cast<double>(std::numeric_limits<T>::epsilon()) / 2;
      EXPECT_NEAR(static_cast<double>(static_cast<long double>(root.re) - std::cos(angle)), 0, bound)
          << n << ' ' << k;
      EXPECT_NEAR(static_cast<double>(static_cast<long double>(root.im) + std::sin(angle)), 0, bound)
          << n << ' ' << k;
    }
  }
}

} // namespace
