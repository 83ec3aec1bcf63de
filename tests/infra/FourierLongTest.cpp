// Transforms too long to be compared with the whole definition: some bins by direct sums in long double, the
// energy of all, and lines where they must be.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "infra/fourier/Factorise.h"
#include "infra/fourier/Plan.h"
#include "infra/kernels/Levels.h"
#include "support/FourierReference.h"

namespace {

using QORN::fourier::Block;
using QORN::fourier::ComplexPlan;
using QORN::fourier::IsSmooth;
using QORN::fourier::RealPlan;
using QORN::kernels::AvailableLevels;
using QORN::kernels::Level;
using QORN::kernels::ScopedLevel;
using QORN::test::LongComplex;

// Powers of two, mixed small factors, large prime factors, primes p with smooth p - 1 and without.
constexpr int kLengths[] = {1 << 15, 1 << 17, 1 << 20, 1 << 21, 1023,    10000,   65535,   65537,
                            99990,   99991,   100000,  131071,  1048575, 1594323, 1953125, 2125764};

// exp(-j 2 pi k / n).
std::vector<LongComplex> Circle(int n) {
  std::vector<LongComplex> circle;
  for (int k = 0; k < n; ++k) {
    const long double angle = -2 * 3.14159265358979323846264338327950288L * k / n;
    circle.emplace_back(std::cos(angle), std::sin(angle));
  }
  return circle;
}

// Bins k, spread over all residues and both ends.
std::vector<int> Places(int n) {
  std::mt19937 random(static_cast<unsigned>(n));
  std::vector<int> places = {0, 1, n / 2, n - 1};
  for (int i = 0; i < 12; ++i) places.push_back(static_cast<int>(random() % static_cast<unsigned>(n)));
  return places;
}

std::vector<LongComplex> Sums(const std::vector<LongComplex> &x, const std::vector<int> &places,
                              bool inverse) {
  const int n = static_cast<int>(x.size());
  const std::vector<LongComplex> circle = Circle(n);
  std::vector<LongComplex> sums;
  for (const int k : places) {
    long double re = 0, im = 0;
    std::int64_t at = 0; // k times the index, modulo n
    for (const LongComplex &value : x) {
      const LongComplex w = circle[static_cast<std::size_t>(at)];
      const long double wim = inverse ? -w.imag() : w.imag();
      re += value.real() * w.real() - value.imag() * wim;
      im += value.real() * wim + value.imag() * w.real();
      at = (at + k) % n;
    }
    sums.emplace_back(re, im);
  }
  return sums;
}

template <class T> std::vector<T> Noise(int size, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  std::vector<T> noise(static_cast<std::size_t>(size));
  for (T &x : noise) x = static_cast<T>(normal(random));
  return noise;
}

// Largest error allowed of a bin: the root of its mean square is sqrt(n) times the bound of the accuracy
// page, and of some hundred normally distributed errors none is five times as large.
template <class T> long double Tolerance(int n) {
  const long double bound = IsSmooth(n) ? 0.4L : 1.0L, size = n;
  return 5 * bound * static_cast<long double>(std::numeric_limits<T>::epsilon()) *
         std::sqrt(std::log2(size) * 2 * size);
}

template <class T> class FourierLong : public testing::Test {};
using Scalars = testing::Types<float, double>;
TYPED_TEST_SUITE(FourierLong, Scalars);

TYPED_TEST(FourierLong, ComplexTransform_SampledBins_AreTheDefinition) {
  using T = TypeParam;
  for (const int n : kLengths) {
    const auto plan = ComplexPlan<T>::Make(n);
    ASSERT_NE(plan, nullptr) << n;
    Block<T> scratch(plan->ScratchBytes() / sizeof(T));
    const std::vector<T> x = Noise<T>(2 * n, 1);
    std::vector<LongComplex> wide;
    for (std::size_t i = 0; i < x.size(); i += 2)
      wide.emplace_back(static_cast<long double>(x[i]), static_cast<long double>(x[i + 1]));
    long double energy = 0;
    for (const LongComplex &value : wide) energy += std::norm(value);
    const std::vector<int> places = Places(n);
    for (const bool inverse : {false, true}) {
      const std::vector<LongComplex> expected = Sums(wide, places, inverse);
      for (const Level &level : AvailableLevels()) {
        const ScopedLevel scoped(level);
        std::vector<T> y(x.size()), inPlace = x;
        std::fill_n(scratch.Data(), scratch.Size(), std::numeric_limits<T>::quiet_NaN());
        if (inverse) {
          plan->Inverse(x.data(), y.data(), scratch.Data(), T{1});
          plan->Inverse(inPlace.data(), inPlace.data(), scratch.Data(), T{1});
        } else {
          plan->Forward(x.data(), y.data(), scratch.Data(), T{1});
          plan->Forward(inPlace.data(), inPlace.data(), scratch.Data(), T{1});
        }
        EXPECT_EQ(inPlace, y) << level.name << ' ' << n;
        for (std::size_t i = 0; i < places.size(); ++i) {
          const auto at = 2 * static_cast<std::size_t>(places[i]);
          const LongComplex got(static_cast<long double>(y[at]), static_cast<long double>(y[at + 1]));
          EXPECT_LE(std::abs(got - expected[i]), Tolerance<T>(n))
              << level.name << ' ' << n << ' ' << places[i];
        }
        long double sum = 0;
        for (const T value : y) sum += static_cast<long double>(value) * static_cast<long double>(value);
        EXPECT_NEAR(static_cast<double>(sum / n / energy), 1,
                    16 * static_cast<double>(std::numeric_limits<T>::epsilon()))
            << level.name << ' ' << n;
      }
    }
  }
}

// A line at bin k and nothing else; the samples' own rounding errors are noise of the size of the
// transform's.
TYPED_TEST(FourierLong, ComplexTransform_OneTurningPhasor_IsOneLine) {
  using T = TypeParam;
  for (const int n : kLengths) {
    const auto plan = ComplexPlan<T>::Make(n);
    Block<T> scratch(plan->ScratchBytes() / sizeof(T));
    const std::vector<LongComplex> circle = Circle(n);
    for (const int k : {1, n / 3 + 1, n - 2}) {
      std::vector<T> x;
      for (std::int64_t i = 0; i < n; ++i) {
        const LongComplex w = std::conj(circle[static_cast<std::size_t>(i * k % n)]);
        x.push_back(static_cast<T>(w.real()));
        x.push_back(static_cast<T>(w.imag()));
      }
      for (const Level &level : AvailableLevels()) {
        const ScopedLevel scoped(level);
        std::vector<T> y(x.size());
        plan->Forward(x.data(), y.data(), scratch.Data(), T{1});
        const auto line = 2 * static_cast<std::size_t>(k);
        y[line] -= static_cast<T>(n);
        long double error = 0;
        for (const T value : y) error += static_cast<long double>(value) * static_cast<long double>(value);
        const long double eps = static_cast<long double>(std::numeric_limits<T>::epsilon());
        EXPECT_LE(std::sqrt(error) / n,
                  (IsSmooth(n) ? 0.4L : 1.0L) * eps * std::sqrt(std::log2(static_cast<long double>(n))) + eps)
            << level.name << ' ' << n << ' ' << k;
      }
    }
  }
}

// No value on the way may outgrow the results by much.
TYPED_TEST(FourierLong, ComplexTransform_OfALargeImpulse_IsFinite) {
  using T = TypeParam;
  constexpr T kLarge = std::numeric_limits<T>::max() / 64;
  for (const int n : {67, 1009, 10007, 16384, 65537, 99991}) {
    const auto plan = ComplexPlan<T>::Make(n);
    ASSERT_NE(plan, nullptr) << n;
    Block<T> scratch(plan->ScratchBytes() / sizeof(T));
    for (const int place : {0, 1, n / 2}) {
      std::vector<T> x(2 * static_cast<std::size_t>(n)), y(x.size());
      x[2 * static_cast<std::size_t>(place)] = kLarge;
      for (const Level &level : AvailableLevels()) {
        const ScopedLevel scoped(level);
        plan->Forward(x.data(), y.data(), scratch.Data(), T{1});
        long double worst = 0;
        for (std::size_t i = 0; i < y.size(); i += 2) {
          const long double magnitude = std::hypot(static_cast<long double>(y[i] / kLarge),
                                                   static_cast<long double>(y[i + 1] / kLarge));
          if (!(std::abs(magnitude - 1) <= worst)) worst = std::abs(magnitude - 1);
        }
        EXPECT_LE(worst, 64 * static_cast<long double>(std::numeric_limits<T>::epsilon()))
            << level.name << ' ' << n << ' ' << place;
      }
    }
  }
}

TYPED_TEST(FourierLong, RealTransform_SampledBinsAndBack_AreTheDefinition) {
  using T = TypeParam;
  for (const int n : kLengths) {
    const auto plan = RealPlan<T>::Make(n);
    ASSERT_NE(plan, nullptr) << n;
    Block<T> scratch(plan->ScratchBytes() / sizeof(T));
    const std::vector<T> x = Noise<T>(n, 2);
    const std::vector<int> places = Places(n);
    const std::vector<LongComplex> expected =
        Sums(std::vector<LongComplex>(x.begin(), x.end()), places, false);
    for (const Level &level : AvailableLevels()) {
      const ScopedLevel scoped(level);
      std::vector<T> y(2 * x.size()), back(x.size());
      plan->Forward(x.data(), y.data(), scratch.Data(), T{1});
      for (std::size_t i = 0; i < places.size(); ++i) {
        const auto at = 2 * static_cast<std::size_t>(places[i]);
        const LongComplex got(static_cast<long double>(y[at]), static_cast<long double>(y[at + 1]));
        EXPECT_LE(std::abs(got - expected[i]), Tolerance<T>(n)) << level.name << ' ' << n << ' ' << places[i];
      }
      plan->Inverse(y.data(), back.data(), scratch.Data(), T{1} / static_cast<T>(n));
      long double error = 0;
      for (std::size_t i = 0; i < x.size(); ++i) error += std::norm(static_cast<long double>(back[i] - x[i]));
      // There and back: two transforms' errors.
      EXPECT_LE(std::sqrt(error / n), 2 * Tolerance<T>(n) / 5 / std::sqrt(static_cast<long double>(n)))
          << level.name << ' ' << n;
    }
  }
}

} // namespace
