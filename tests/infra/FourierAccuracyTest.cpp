// The relative rms error of the transforms over classes of lengths, in units of eps sqrt(log2 N), against
// long double. The table of docs/fourier-accuracy.md is printed by the disabled test.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "infra/fourier/Factorise.h"
#include "infra/fourier/Plan.h"
#include "infra/kernels/Levels.h"
#include "support/FourierReference.h"

namespace {

using QORN::fourier::Block;
using QORN::fourier::ComplexPlan;
using QORN::fourier::RealPlan;
using QORN::kernels::AvailableLevels;
using QORN::kernels::Level;
using QORN::kernels::ScopedLevel;
using QORN::test::LongComplex;
using QORN::test::ReferenceTransform;

// Some bins of a transform, exactly: all by splitting where every factor is small, else a sample by the
// definition.
struct Bins {
  std::vector<int> places;
  std::vector<LongComplex> values;
};

Bins Exact(const std::vector<LongComplex> &x, int sign) {
  const int n = static_cast<int>(x.size());
  Bins bins;
  int rest = n, largest = 1;
  for (int p = 2; rest > 1; ++p) {
    for (; rest % p == 0; rest /= p) largest = p;
  }
  if (largest <= 2000) {
    bins.values = ReferenceTransform(x, sign);
    for (int k = 0; k < n; ++k) bins.places.push_back(k);
    return bins;
  }
  std::vector<LongComplex> roots;
  for (int k = 0; k < n; ++k) {
    const long double angle = sign * 2 * 3.14159265358979323846264338327950288L * k / n;
    roots.emplace_back(std::cos(angle), std::sin(angle));
  }
  std::mt19937 random(1);
  for (int i = 0; i < 100; ++i) {
    const int k = static_cast<int>(random() % static_cast<unsigned>(n));
    long double re = 0, im = 0;
    int at = 0; // k times the index, modulo n
    for (int j = 0; j < n; ++j) {
      const LongComplex a = x[static_cast<std::size_t>(j)], w = roots[static_cast<std::size_t>(at)];
      re += a.real() * w.real() - a.imag() * w.imag();
      im += a.real() * w.imag() + a.imag() * w.real();
      at = at < n - k ? at + k : at + k - n;
    }
    bins.places.push_back(k);
    bins.values.emplace_back(re, im);
  }
  return bins;
}

// Adds the squared error and the squared size of some bins.
struct Sums {
  long double error = 0, size = 0;
  template <class F> void Add(const Bins &bins, const F &got) {
    for (std::size_t i = 0; i < bins.places.size(); ++i) {
      error += std::norm(LongComplex(got(static_cast<std::size_t>(bins.places[i]))) - bins.values[i]);
      size += std::norm(bins.values[i]);
    }
  }
  double InUnits(int n, double eps) const {
    return std::sqrt(static_cast<double>(error / size)) / eps / std::sqrt(std::log2(static_cast<double>(n)));
  }
};

struct Errors {
  double cplx = 0, real = 0; // the larger of both directions
};

// One error per level, over enough inputs that the few values of a short length tell.
template <class T> std::vector<Errors> Measure(int n) {
  const double eps = static_cast<double>(std::numeric_limits<T>::epsilon());
  const auto cplx = ComplexPlan<T>::Make(n);
  const auto real = RealPlan<T>::Make(n);
  Block<T> scratch(std::max(cplx->ScratchBytes(), real->ScratchBytes()) / sizeof(T) + 1);
  const std::vector<Level> levels = AvailableLevels();
  std::vector<Sums> sums(4 * levels.size());
  const auto size = static_cast<std::size_t>(n);
  std::vector<T> x(2 * size), r(size), y(2 * size);
  const auto cplxAt = [&](std::size_t k) {
    return LongComplex(static_cast<long double>(y[2 * k]), static_cast<long double>(y[2 * k + 1]));
  };
  const auto realAt = [&](std::size_t k) { return LongComplex(static_cast<long double>(y[k])); };
  std::mt19937 random(static_cast<unsigned>(n));
  std::normal_distribution<double> normal;
  for (int repetition = 0; repetition <= 4000 / n; ++repetition) {
    for (T &value : x) value = static_cast<T>(normal(random));
    for (T &value : r) value = static_cast<T>(normal(random));
    std::vector<LongComplex> wide(size), wideReal(r.begin(), r.end());
    for (std::size_t k = 0; k < size; ++k) {
      wide[k] = {static_cast<long double>(x[2 * k]), static_cast<long double>(x[2 * k + 1])};
    }
    const Bins forward = Exact(wide, -1), inverse = Exact(wide, 1), realForward = Exact(wideReal, -1);
    std::vector<LongComplex> symmetric = wide;
    symmetric[0] = wide[0].real();
    for (std::size_t k = 1; k < size; ++k) symmetric[k] = 2 * k > size ? std::conj(wide[size - k]) : wide[k];
    if (size % 2 == 0) symmetric[size / 2] = wide[size / 2].real();
    const Bins realInverse = Exact(symmetric, 1);
    for (std::size_t l = 0; l < levels.size(); ++l) {
      const ScopedLevel scoped(levels[l]);
      cplx->Forward(x.data(), y.data(), scratch.Data(), T{1});
      sums[4 * l].Add(forward, cplxAt);
      cplx->Inverse(x.data(), y.data(), scratch.Data(), T{1});
      sums[4 * l + 1].Add(inverse, cplxAt);
      real->Forward(r.data(), y.data(), scratch.Data(), T{1});
      sums[4 * l + 2].Add(realForward, cplxAt);
      real->Inverse(x.data(), y.data(), scratch.Data(), T{1});
      sums[4 * l + 3].Add(realInverse, realAt);
    }
  }
  std::vector<Errors> errors;
  for (std::size_t l = 0; l < levels.size(); ++l) {
    errors.push_back({std::max(sums[4 * l].InUnits(n, eps), sums[4 * l + 1].InUnits(n, eps)),
                      std::max(sums[4 * l + 2].InUnits(n, eps), sums[4 * l + 3].InUnits(n, eps))});
  }
  return errors;
}

// The lengths of a class that go to `longest`.
struct Class {
  const char *name;
  std::vector<int> lengths;
};

std::vector<Class> Classes(int longest) {
  std::vector<Class> classes = {{"2^k", {}},          {"3^k", {}},    {"5^k, 7^k", {}}, {"11^k, 13^k", {}},
                                {"other smooth", {}}, {"primes", {}}, {"other", {}}};
  const auto add = [&](std::size_t c, long long n) {
    if (n <= longest) classes[c].lengths.push_back(static_cast<int>(n));
  };
  for (long long n = 2; n <= longest; n *= 2) add(0, n);
  for (long long n = 3; n <= longest; n *= 3) add(1, n);
  for (const int p : {5, 7}) {
    for (long long n = p; n <= longest; n *= p) add(2, n);
  }
  for (const int p : {11, 13}) {
    for (long long n = p; n <= longest; n *= p) add(3, n);
  }
  const auto isPrime = [](int n) {
    for (int p = 2; p * p <= n; ++p) {
      if (n % p == 0) return false;
    }
    return n > 1;
  };
  for (int n = 2; n <= std::min(longest, 512); ++n) {
    const bool smooth = QORN::fourier::IsSmooth(n), prime = isPrime(n);
    if (smooth && !prime) add(4, n);
    if (!smooth && prime) add(5, n);
    if (!smooth && !prime) add(6, n);
  }
  for (const int n : {1000, 1200, 1536, 4095, 5040, 10000, 30030, 44100, 100000, 360360, 1000000}) add(4, n);
  for (const int n : {1009, 2011, 4099, 10007, 32749, 65537, 99991, 131071, 1048573}) add(5, n);
  for (const int n : {1022, 1023, 2046, 4097, 10001, 65535, 99990, 131070, 1048575}) add(6, n);
  return classes;
}

template <class T> void CheckClasses(int longest, bool print) {
  const std::vector<Level> levels = AvailableLevels();
  for (const Class &c : Classes(longest)) {
    std::vector<Errors> worst(levels.size());
    for (const int n : c.lengths) {
      const std::vector<Errors> errors = Measure<T>(n);
      const double bound = QORN::fourier::IsSmooth(n) ? 0.4 : 1.0;
      for (std::size_t l = 0; l < levels.size(); ++l) {
        EXPECT_LE(errors[l].cplx, bound) << levels[l].name << ' ' << n;
        EXPECT_LE(errors[l].real, bound) << levels[l].name << ' ' << n;
        worst[l].cplx = std::max(worst[l].cplx, errors[l].cplx);
        worst[l].real = std::max(worst[l].real, errors[l].real);
      }
    }
    if (!print) continue;
    std::printf("| %-6s | %-12s |", sizeof(T) == sizeof(float) ? "float" : "double", c.name);
    for (const Errors &error : worst) std::printf(" %.2f, %.2f |", error.cplx, error.real);
    std::printf("\n");
  }
}

TEST(FourierAccuracy, EachClassOfLengths_KeepsItsBound) {
  CheckClasses<float>(300, false);
  CheckClasses<double>(300, false);
}

// Minutes; for the nightly run.
TEST(FourierAccuracy, DISABLED_EachClassOfLengthsToAMillion_KeepsItsBound) {
  std::printf("| type | lengths |");
  for (const Level &level : AvailableLevels()) std::printf(" %s |", level.name);
  std::printf("\n");
  CheckClasses<float>(1 << 20, true);
  CheckClasses<double>(1 << 20, true);
}

} // namespace
