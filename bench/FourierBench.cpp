// Fourier transforms at each level beside FFTW. Rows are Fourier_<kind>/level/length, forward and out of
// place; FourierInverse_<kind>, and FourierInPlace_<kind> forward onto the input. Kinds are c32, c64
// (complex) and r32, r64 (real, with all bins). The library's rows include the call of FT: list walk, Resize
// and, in the inverse, the scaling by 1 / N, which FFTW leaves out. Operations are counted as 5 N log2 N,
// half of that for real ones. FourierPlan rows are the first transform of a length: plan and all.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "infra/kernels/Levels.h"
#include "peers/fftw.h"
#include "qorn/dsp/FT.h"

namespace {

using peers::Way;
using QORN::kernels::Level;
using QORN::kernels::ScopedLevel;

std::vector<int> Lengths() {
  std::vector<int> lengths = {12,   60,   100,   120,   360,   1000,   1023,   1200,
                              1536, 4095, 10000, 65537, 99991, 100000, 131071, 1048575};
  for (int bits = 3; bits <= 22; ++bits) lengths.push_back(1 << bits);
  std::sort(lengths.begin(), lengths.end());
  return lengths;
}

template <class T> void Fill(T *x, int n) {
  std::uint32_t random = 1;
  for (int i = 0; i < n; ++i) {
    random = random * 1664525U + 1013904223U;
    x[i] = static_cast<T>(static_cast<std::int32_t>(random)) * static_cast<T>(0x1p-31);
  }
}

// In is the time side of the transform, Out the frequency side. What is transformed again and again in place
// is zero, lest it grow.
template <class In, class Out, class T>
void Ours(benchmark::State &state, const Level &level, int n, Way way) {
  const ScopedLevel scoped(level);
  QORN::FT ft;
  In time(n);
  Out bins(n);
  const auto fill = [n](auto &x) {
    Fill(reinterpret_cast<T *>(x.GetPtr()), n * static_cast<int>(sizeof(x[0]) / sizeof(T)));
  };
  const auto loop = [&state](auto run) {
    run(); // makes the plan
    for (auto _ : state) {
      run();
      benchmark::ClobberMemory();
    }
  };
  if (way == Way::Inverse) {
    fill(bins);
    loop([&] { ft.Inverse(time, bins); });
  } else if (way == Way::Forward) {
    fill(time);
    loop([&] { ft.Forward(bins, time); });
  } else {
    bins.SetZero();
    if constexpr (std::is_same_v<In, Out>) loop([&] { ft.Forward(bins, bins); });
  }
  const double flops = (std::is_same_v<In, Out> ? 5.0 : 2.5) * n * std::log2(n);
  state.counters["flops"] = benchmark::Counter(flops, benchmark::Counter::kIsIterationInvariantRate);
}

void First(benchmark::State &state, const Level &level, int n) {
  const ScopedLevel scoped(level);
  QORN::VecCplx32 in(n), out(n);
  for (auto _ : state) {
    QORN::FT ft;
    ft.Forward(out, in);
    benchmark::ClobberMemory();
  }
}

#if defined(QORN_PEER_FFTW)
template <class T> void Peer(benchmark::State &state, int n, bool real, Way way) {
  peers::Fftw<T> fftw(n, real, way);
  const int scalars = real && way == Way::Forward ? n : 2 * n;
  if (way == Way::InPlace) {
    std::fill_n(fftw.In(), scalars, T{0});
  } else {
    Fill(fftw.In(), scalars);
  }
  for (auto _ : state) {
    fftw.Run();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * n);
}
#endif

template <class In, class Out, class T> void Register(const std::string &workload, Way way) {
  for (const int n : Lengths()) {
    const std::string size = std::string("/").append(std::to_string(n));
    for (const Level &level : QORN::kernels::AvailableLevels()) {
      benchmark::RegisterBenchmark(
          (workload + "/" + level.name + size).c_str(),
          [level, n, way](benchmark::State &state) { Ours<In, Out, T>(state, level, n, way); });
    }
#if defined(QORN_PEER_FFTW)
    benchmark::RegisterBenchmark((workload + "/peer:fftw" + size).c_str(), [n, way](benchmark::State &state) {
      Peer<T>(state, n, !std::is_same_v<In, Out>, way);
    });
#endif
  }
}

template <class In, class Out, class T> void RegisterKind(const std::string &kind) {
  Register<In, Out, T>("Fourier_" + kind, Way::Forward);
  Register<In, Out, T>("FourierInverse_" + kind, Way::Inverse);
  if constexpr (std::is_same_v<In, Out>) Register<In, Out, T>("FourierInPlace_" + kind, Way::InPlace);
}

const bool registered = [] {
  using namespace QORN;
  RegisterKind<VecCplx32, VecCplx32, float>("c32");
  RegisterKind<VecCplx64, VecCplx64, double>("c64");
  RegisterKind<VecReal32, VecCplx32, float>("r32");
  RegisterKind<VecReal64, VecCplx64, double>("r64");
  const Level best = kernels::AvailableLevels().back();
  for (const int n : {64, 1000, 1024, 16384, 65537, 1048576}) {
    benchmark::RegisterBenchmark(
        ("FourierPlan_c32/" + std::string(best.name) + "/" + std::to_string(n)).c_str(),
        [best, n](benchmark::State &state) { First(state, best, n); });
  }
  return true;
}();

} // namespace
