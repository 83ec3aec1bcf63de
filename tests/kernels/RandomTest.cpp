// The random kernels against a generator in plain integers of another language.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "qorn/infra/TargetLib.h"
#include "support/Allocations.h"
#include "support/ExpectedValues.h"
#include "support/KernelCheck.h"

namespace {

using QORN::TargetLib;
using QORN::test::Expected;
using QORN::test::ExpectedValues;
using QORN::test::Guarded;

namespace kernels = QORN::kernels;

template <class T> using Generator = void (*)(T *, int, T, T, unsigned *);

template <class T> std::vector<T> Generate(Generator<T> generator, const Expected &set, int len) {
  auto seed = static_cast<unsigned>(set.parameters[0]);
  const unsigned before = seed;
  Guarded<T> data(len, static_cast<int>(before % 16));
  generator(data.data(), len, static_cast<T>(set.parameters[1]), static_cast<T>(set.parameters[2]), &seed);
  EXPECT_TRUE(data.Intact()) << set.name << ", length " << len;
  EXPECT_EQ(seed, before + 6003U) << set.name;
  return std::vector<T>(data.data(), data.data() + len);
}

template <class T, class Match>
void CheckKind(const std::string &kind, Generator<T> generator, const Match &match) {
  const std::vector<Expected> sets = ExpectedValues(kind);
  ASSERT_FALSE(sets.empty()) << kind;
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const Expected &set : sets) {
      const std::vector<T> values = Generate(generator, set, 1000);
      for (std::size_t k = 0; k < set.values.size(); ++k) {
        const T got = values[static_cast<std::size_t>(set.indices[k])];
        ASSERT_TRUE(match(static_cast<double>(got), set.values[k], set))
            << kind << ' ' << set.name << " at " << level.name << ", index " << set.indices[k] << ": " << got
            << " not " << set.values[k];
      }
    }
  }
}

TEST(TargetLib, RandUniform_AnySeedAndRange_IsBitExact) {
  const auto same = [](double got, double expected, const Expected &) { return got == expected; };
  CheckKind<float>("uniform32", &TargetLib::RandUniform_Direct_32f, same);
  CheckKind<double>("uniform64", &TargetLib::RandUniform_Direct_64f, same);
}

// The logarithm errs by less than a unit, which the root halves; the quotient, the root, two products and the
// sum add half a unit each. The mean may cancel, so the bound is relative to the two terms of the sum.
TEST(TargetLib, RandGauss_AnySeed_IsThePolarMethod) {
  const auto within = [](double epsilon) {
    return [epsilon](double got, double expected, const Expected &set) {
      const double size = std::fabs(expected - set.parameters[1]) + std::fabs(set.parameters[1]);
      return std::fabs(got - expected) <= 4 * epsilon * size;
    };
  };
  CheckKind<double>("gauss", &TargetLib::RandGauss_Direct_64f,
                    within(std::numeric_limits<double>::epsilon()));
  const auto rounded = [](double got, double expected, const Expected &) {
    const double unit = static_cast<double>(
        std::nextafter(std::fabs(static_cast<float>(expected)), std::numeric_limits<float>::infinity()) -
        std::fabs(static_cast<float>(expected)));
    return std::fabs(got - expected) <= 0.5001 * unit;
  };
  CheckKind<float>("gauss", &TargetLib::RandGauss_Direct_32f, rounded);
}

// The first len numbers of a seed are the same whatever len is.
template <class T> void CheckLengths(Generator<T> generator) {
  const Expected set{{4711, -1, 2}, {}, {}, "4711"};
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    const std::vector<T> all = Generate(generator, set, 2000);
    for (int len = 0; len <= 1030; len = len < 70 ? len + 1 : len + 61) {
      if (len == 0) continue;
      const std::vector<T> some = Generate(generator, set, len);
      ASSERT_TRUE(std::equal(some.begin(), some.end(), all.begin())) << level.name << ", length " << len;
    }
  }
}

TEST(TargetLib, Random_AnyLength_StartsWithTheSameNumbers) {
  CheckLengths<float>(&TargetLib::RandUniform_Direct_32f);
  CheckLengths<double>(&TargetLib::RandUniform_Direct_64f);
  CheckLengths<float>(&TargetLib::RandGauss_Direct_32f);
  CheckLengths<double>(&TargetLib::RandGauss_Direct_64f);
}

template <class T> void CheckSeeds(Generator<T> generator) {
  T first[50], second[50], again[50];
  unsigned seed = 1;
  generator(first, 50, T(0), T(1), &seed);
  generator(second, 50, T(0), T(1), &seed);
  EXPECT_EQ(seed, 12007U);
  EXPECT_FALSE(std::equal(first, first + 50, second));
  seed = 1;
  generator(again, 50, T(0), T(1), &seed);
  EXPECT_TRUE(std::equal(first, first + 50, again));
  seed = 4294967295U;
  generator(again, 1, T(0), T(1), &seed);
  EXPECT_EQ(seed, 6002U);
}

TEST(TargetLib, Random_KeptSeed_GivesNewNumbersAndWraps) {
  CheckSeeds<float>(&TargetLib::RandUniform_Direct_32f);
  CheckSeeds<double>(&TargetLib::RandUniform_Direct_64f);
  CheckSeeds<float>(&TargetLib::RandGauss_Direct_32f);
  CheckSeeds<double>(&TargetLib::RandGauss_Direct_64f);
}

TEST(TargetLib, Random_EmptyOrNull_LeavesTheSeed) {
  unsigned seed = 5;
  double x[1] = {9};
  TargetLib::RandUniform_Direct_64f(x, 0, 0, 1, &seed);
  TargetLib::RandGauss_Direct_64f(x, -1, 0, 1, &seed);
  TargetLib::RandUniform_Direct_64f(nullptr, 1, 0, 1, &seed);
  TargetLib::RandGauss_Direct_64f(x, 1, 0, 1, nullptr);
  EXPECT_EQ(seed, 5U);
  EXPECT_EQ(x[0], 9);
}

TEST(TargetLib, Random_ManyNumbers_HaveTheirMomentsAndNeedNoMemory) {
  constexpr int kCount = 200000;
  std::vector<double> x(kCount);
  unsigned seed = 3;
  const long before = QORN::test::AllocationCount();
  TargetLib::RandUniform_Direct_64f(x.data(), kCount, -1, 3, &seed);
  double low = x[0], high = x[0], sum = 0, squares = 0;
  for (const double v : x) {
    low = std::min(low, v);
    high = std::max(high, v);
    sum += v;
    squares += (v - 1) * (v - 1);
  }
  EXPECT_GE(low, -1);
  EXPECT_LE(high, 3);
  EXPECT_NEAR(sum / kCount, 1, 5 * std::sqrt(16.0 / 12 / kCount)); // five standard deviations of the estimate
  EXPECT_NEAR(squares / kCount, 16.0 / 12, 0.02);

  TargetLib::RandGauss_Direct_64f(x.data(), kCount, 2, 0.5, &seed);
  EXPECT_EQ(QORN::test::AllocationCount(), before);
  sum = squares = 0;
  double fourth = 0;
  for (const double v : x) {
    const double z = (v - 2) / 0.5;
    sum += z;
    squares += z * z;
    fourth += z * z * z * z;
  }
  EXPECT_NEAR(sum / kCount, 0, 5 / std::sqrt(double{kCount}));
  EXPECT_NEAR(squares / kCount, 1, 5 * std::sqrt(2.0 / kCount));
  EXPECT_NEAR(fourth / kCount, 3, 5 * std::sqrt(96.0 / kCount));
}

} // namespace
