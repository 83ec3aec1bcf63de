// The relative rms error of the transforms over classes of lengths, in units of eps sqrt(log2 N), against
// long double. The table of docs/fourier-accuracy.md is printed by the disabled test, with a column for FFTW
// where that is installed.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "infra/fourier/Factorise.h"
#include "infra/fourier/Plan.h"
#include "infra/kernels/Levels.h"
#include "support/FourierReference.h"

#if defined(QORN_TEST_FFTW)
#include "peers/fftwapi.h"
#endif

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

// Transforms of one length, of interleaved values and scale 1. RealForward gives all bins, RealInverse takes
// them.
template <class T> class Ours {
public:
  explicit Ours(int n)
      : m_cplx(ComplexPlan<T>::Make(n)), m_real(RealPlan<T>::Make(n)),
        m_scratch(std::max(m_cplx->ScratchBytes(), m_real->ScratchBytes()) / sizeof(T) + 1) {}

  void Forward(const T *x, T *y) { m_cplx->Forward(x, y, m_scratch.Data(), T{1}); }
  void Inverse(const T *x, T *y) { m_cplx->Inverse(x, y, m_scratch.Data(), T{1}); }
  void RealForward(const T *x, T *y) { m_real->Forward(x, y, m_scratch.Data(), T{1}); }
  void RealInverse(const T *x, T *y) { m_real->Inverse(x, y, m_scratch.Data(), T{1}); }

private:
  std::unique_ptr<ComplexPlan<T>> m_cplx;
  std::unique_ptr<RealPlan<T>> m_real;
  Block<T> m_scratch;
};

#if defined(QORN_TEST_FFTW)
template <class T> class Fftw {
  using Api = peers::FftwApi<T>;

public:
  explicit Fftw(int n) : m_n(n), m_x(2 * Size()), m_y(2 * Size()) {
    const auto complex = [](std::vector<T> &values) {
      return reinterpret_cast<typename Api::Complex *>(values.data());
    };
    m_plans[0] = Api::PlanComplex(n, complex(m_x), complex(m_y), FFTW_FORWARD, FFTW_ESTIMATE);
    m_plans[1] = Api::PlanComplex(n, complex(m_x), complex(m_y), FFTW_BACKWARD, FFTW_ESTIMATE);
    m_plans[2] = Api::PlanForward(n, m_x.data(), complex(m_y), FFTW_ESTIMATE);
    m_plans[3] = Api::PlanInverse(n, complex(m_x), m_y.data(), FFTW_ESTIMATE);
  }
  Fftw(const Fftw &) = delete;
  Fftw &operator=(const Fftw &) = delete;
  ~Fftw() {
    for (const auto plan : m_plans) Api::Destroy(plan);
  }

  void Forward(const T *x, T *y) { Run(0, x, 2 * Size(), y, 2 * Size()); }
  void Inverse(const T *x, T *y) { Run(1, x, 2 * Size(), y, 2 * Size()); }
  void RealForward(const T *x, T *y) {
    const std::size_t half = Size() / 2;
    Run(2, x, Size(), y, 2 * half + 2);
    for (std::size_t k = 1; 2 * k < Size(); ++k) {
      y[2 * (Size() - k)] = y[2 * k];
      y[2 * (Size() - k) + 1] = -y[2 * k + 1];
    }
  }
  void RealInverse(const T *x, T *y) { Run(3, x, 2 * (Size() / 2) + 2, y, Size()); }

private:
  std::size_t Size() const { return static_cast<std::size_t>(m_n); }
  void Run(int plan, const T *x, std::size_t in, T *y, std::size_t out) {
    std::copy_n(x, in, m_x.data());
    Api::Execute(m_plans[plan]);
    std::copy_n(m_y.data(), out, y);
  }

  int m_n;
  std::vector<T> m_x, m_y;
  typename Api::Plan m_plans[4];
};
#endif

// The errors of something that transforms, added up over inputs.
template <class T> class Tally {
public:
  explicit Tally(int n) : m_y(2 * static_cast<std::size_t>(n) + 2) {}

  template <class Transform>
  void Add(Transform &transform, const T *x, const T *real, const Bins (&exact)[4]) {
    const auto bin = [this](std::size_t k) {
      return LongComplex(static_cast<long double>(m_y[2 * k]), static_cast<long double>(m_y[2 * k + 1]));
    };
    transform.Forward(x, m_y.data());
    m_sums[0].Add(exact[0], bin);
    transform.Inverse(x, m_y.data());
    m_sums[1].Add(exact[1], bin);
    transform.RealForward(real, m_y.data());
    m_sums[2].Add(exact[2], bin);
    transform.RealInverse(x, m_y.data());
    m_sums[3].Add(exact[3], [this](std::size_t k) { return LongComplex(static_cast<long double>(m_y[k])); });
  }

  Errors InUnits(int n) const {
    const auto units = [&](int i) {
      return m_sums[i].InUnits(n, static_cast<double>(std::numeric_limits<T>::epsilon()));
    };
    return {std::max(units(0), units(1)), std::max(units(2), units(3))};
  }

private:
  std::vector<T> m_y;
  Sums m_sums[4];
};

// One error per level, and then FFTW's if it is here and wanted, over enough inputs that the few values of a
// short length tell.
template <class T> std::vector<Errors> Measure(int n, [[maybe_unused]] bool withPeer) {
  Ours<T> ours(n);
  const std::vector<Level> levels = AvailableLevels();
  std::vector<Tally<T>> tallies(levels.size(), Tally<T>(n));
#if defined(QORN_TEST_FFTW)
  Fftw<T> fftw(n);
  if (withPeer) tallies.emplace_back(n);
#endif
  const auto size = static_cast<std::size_t>(n);
  std::vector<T> x(2 * size), r(size);
  std::mt19937 random(static_cast<unsigned>(n));
  std::normal_distribution<double> normal;
  for (int repetition = 0; repetition <= 4000 / n; ++repetition) {
    for (T &value : x) value = static_cast<T>(normal(random));
    for (T &value : r) value = static_cast<T>(normal(random));
    // As the spectrum of a real signal, x has no imaginary part here.
    x[1] = 0;
    if (size % 2 == 0) x[size + 1] = 0;
    std::vector<LongComplex> wide(size), wideReal(r.begin(), r.end());
    for (std::size_t k = 0; k < size; ++k) {
      wide[k] = {static_cast<long double>(x[2 * k]), static_cast<long double>(x[2 * k + 1])};
    }
    std::vector<LongComplex> symmetric = wide;
    for (std::size_t k = 1; k < size; ++k) symmetric[k] = 2 * k > size ? std::conj(wide[size - k]) : wide[k];
    const Bins exact[4] = {Exact(wide, -1), Exact(wide, 1), Exact(wideReal, -1), Exact(symmetric, 1)};
    for (std::size_t l = 0; l < levels.size(); ++l) {
      const ScopedLevel scoped(levels[l]);
      tallies[l].Add(ours, x.data(), r.data(), exact);
    }
#if defined(QORN_TEST_FFTW)
    if (withPeer) tallies.back().Add(fftw, x.data(), r.data(), exact);
#endif
  }
  std::vector<Errors> errors;
  for (const Tally<T> &tally : tallies) errors.push_back(tally.InUnits(n));
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
    std::vector<Errors> worst;
    for (const int n : c.lengths) {
      const std::vector<Errors> errors = Measure<T>(n, print);
      worst.resize(errors.size());
      const double bound = QORN::fourier::IsSmooth(n) ? 0.4 : 1.0;
      for (std::size_t l = 0; l < levels.size(); ++l) {
        EXPECT_LE(errors[l].cplx, bound) << levels[l].name << ' ' << n;
        EXPECT_LE(errors[l].real, bound) << levels[l].name << ' ' << n;
      }
      for (std::size_t l = 0; l < errors.size(); ++l) {
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
#if defined(QORN_TEST_FFTW)
  std::printf(" FFTW |");
#endif
  std::printf("\n");
  CheckClasses<float>(1 << 20, true);
  CheckClasses<double>(1 << 20, true);
}

} // namespace
