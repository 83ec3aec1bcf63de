// Elementary functions at each level beside SLEEF's functions of at most 1 unit in the last place, in the
// widest registers (sleef, the measure of v4) and in those of AVX2 (sleef-avx2, that of v3). Rows are named
// kernel/level/length, and kernel:range where a function is measured over more than one range.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "peers/sleef.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::kernels::Level;
using QORN::kernels::Table;

constexpr int kLength = 4096;

template <class T> std::vector<T> Draw(double low, double high, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> uniform(low, high);
  std::vector<T> values;
  for (int i = 0; i < kLength; ++i) values.push_back(static_cast<T>(uniform(random)));
  return values;
}

template <class T> struct Tag;
template <> struct Tag<float> {
  static constexpr const char *kText = "_32f";
  using Complex = Cplx32;
};
template <> struct Tag<double> {
  static constexpr const char *kText = "_64f";
  using Complex = Cplx64;
};

// The destination holds two values an element, for the complex exponential.
template <class T, class Run>
void Register(const std::string &name, std::vector<T> a, std::vector<T> b, Run run) {
  benchmark::RegisterBenchmark((name + "/" + std::to_string(kLength)).c_str(), [=](benchmark::State &state) {
    std::vector<T> dst(2 * kLength);
    for (auto _ : state) {
      run(a.data(), b.data(), dst.data());
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kLength);
  });
}

struct Peer {
  const char *name;
  qorn_bench::SleefSet set;
};
constexpr Peer kPeers[] = {{"/peer:sleef", qorn_bench::SleefSet::kWidest},
                           {"/peer:sleef-avx2", qorn_bench::SleefSet::kAvx2}};

// What SLEEF makes of the function of that name, where it has one.
template <class T>
void RegisterPeers(const std::string &name, const char *function, const std::vector<T> &x,
                   const std::vector<T> &y = {}) {
  for (const Peer &peer : kPeers) {
    if (const auto run = qorn_bench::FindSleef<T>(function, peer.set)) {
      Register<T>(name + peer.name, x, y, [run](const T *a, const T *, T *dst) { run(a, dst, kLength); });
    }
    if (const auto run = qorn_bench::FindSleef2<T>(function, peer.set)) {
      Register<T>(name + peer.name, x, y, [run](const T *a, const T *b, T *dst) { run(a, b, dst, kLength); });
    }
  }
}

template <class T> struct Row {
  const char *name, *range;
  double low, high;
  void (*Table::*kernel)(const T *, T *, int);
};

template <class T> void RegisterOne(const Row<T> &row) {
  const std::vector<T> x = Draw<T>(row.low, row.high, 1);
  const std::string name = std::string(row.name) + Tag<T>::kText + row.range;
  for (const Level &level : QORN::kernels::AvailableLevels()) {
    const auto kernel = level.table->*row.kernel;
    Register<T>(name + "/" + level.name, x, {},
                [kernel](const T *a, const T *, T *dst) { kernel(a, dst, kLength); });
  }
  RegisterPeers<T>(name, row.name, x);
}

template <class T>
void RegisterTwo(const std::string &name, std::vector<T> x, std::vector<T> y,
                 void (*Table::*kernel)(const T *, const T *, T *, int)) {
  for (const Level &level : QORN::kernels::AvailableLevels()) {
    const auto run = level.table->*kernel;
    Register<T>(name + Tag<T>::kText + "/" + level.name, x, y,
                [run](const T *a, const T *b, T *dst) { run(a, b, dst, kLength); });
  }
  RegisterPeers<T>(name + Tag<T>::kText, name.c_str(), x, y);
}

template <class T> void RegisterExpj(void (*Table::*kernel)(const T *, typename Tag<T>::Complex *, int)) {
  const std::vector<T> x = Draw<T>(-3.14, 3.14, 1);
  const std::string name = std::string("Expj") + Tag<T>::kText;
  for (const Level &level : QORN::kernels::AvailableLevels()) {
    const auto run = level.table->*kernel;
    Register<T>(name + "/" + level.name, x, {}, [run](const T *a, const T *, T *dst) {
      run(a, reinterpret_cast<typename Tag<T>::Complex *>(dst), kLength);
    });
  }
  RegisterPeers<T>(name, "Expj", x);
}

// One exponent for all elements; the peer has it in an array.
template <class T> void RegisterPowx(void (*Table::*kernel)(const T *, T, T *, int)) {
  constexpr T kExponent = T(2.4);
  const std::vector<T> x = Draw<T>(0.01, 10, 1), y(kLength, kExponent);
  const std::string name = std::string("Powx") + Tag<T>::kText;
  for (const Level &level : QORN::kernels::AvailableLevels()) {
    const auto run = level.table->*kernel;
    Register<T>(name + "/" + level.name, x, {},
                [run](const T *a, const T *, T *dst) { run(a, kExponent, dst, kLength); });
  }
  RegisterPeers<T>(name, "Pow", x, y);
}

const bool registered = [] {
  for (const Row<float> &row : {Row<float>{"Sin", "", -3.14, 3.14, &Table::Sin_32f},
                                {"Sin", ":1e5", -1e5, 1e5, &Table::Sin_32f},
                                {"Cos", "", -3.14, 3.14, &Table::Cos_32f},
                                {"Exp", "", -80, 80, &Table::Exp_32f},
                                {"Ln", "", 1e-3, 1e3, &Table::Ln_32f},
                                {"Log10", "", 1e-3, 1e3, &Table::Log10_32f},
                                {"Atan", "", -4, 4, &Table::Atan_32f},
                                {"Erf", "", -4, 4, &Table::Erf_32f},
                                {"Pow10", "", -30, 30, &Table::Pow10_32f}}) {
    RegisterOne(row);
  }
  for (const Row<double> &row : {Row<double>{"Sin", "", -3.14, 3.14, &Table::Sin_64f},
                                 {"Sin", ":1e5", -1e5, 1e5, &Table::Sin_64f},
                                 {"Cos", "", -3.14, 3.14, &Table::Cos_64f},
                                 {"Exp", "", -700, 700, &Table::Exp_64f},
                                 {"Ln", "", 1e-3, 1e3, &Table::Ln_64f},
                                 {"Log10", "", 1e-3, 1e3, &Table::Log10_64f},
                                 {"Atan", "", -4, 4, &Table::Atan_64f},
                                 {"Erf", "", -4, 4, &Table::Erf_64f},
                                 {"Pow10", "", -300, 300, &Table::Pow10_64f}}) {
    RegisterOne(row);
  }
  RegisterTwo<float>("Atan2", Draw<float>(-1, 1, 1), Draw<float>(-1, 1, 2), &Table::Atan2_32f);
  RegisterTwo<double>("Atan2", Draw<double>(-1, 1, 1), Draw<double>(-1, 1, 2), &Table::Atan2_64f);
  RegisterTwo<float>("Pow", Draw<float>(0.01, 10, 1), Draw<float>(-10, 10, 2), &Table::Pow_32f);
  RegisterTwo<double>("Pow", Draw<double>(0.01, 10, 1), Draw<double>(-10, 10, 2), &Table::Pow_64f);
  RegisterPowx<float>(&Table::Powx_32f);
  RegisterPowx<double>(&Table::Powx_64f);
  RegisterExpj<float>(&Table::Expj_32f);
  RegisterExpj<double>(&Table::Expj_64f);
  return true;
}();

} // namespace
