// Forward Fourier transforms at each level beside FFTW. Rows are Fourier_<kind>/level/length; kinds are c32,
// c64 (complex) and r32, r64 (real into all bins). The library's rows include the call of FT::Forward: list
// walk and Resize; operations are counted as 5 N log2 N, half of that for real ones. FourierPlan rows are the
// first transform of a length: plan and all.
#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdint>
#include <string>
#include <type_traits>

#include "infra/kernels/Levels.h"
#include "peers/fftw.h"
#include "qorn/dsp/FT.h"

namespace {

using QORN::kernels::Level;
using QORN::kernels::ScopedLevel;

constexpr int kLengths[] = {16,    32,    64,     128,    256,    512,     1024, 2048, 4096,  8192, 16384,
                            32768, 65536, 131072, 262144, 524288, 1048576, 1000, 1023, 10000, 65537};

template <class T> void Fill(T *x, int n) {
  std::uint32_t random = 1;
  for (int i = 0; i < n; ++i) {
    random = random * 1664525U + 1013904223U;
    x[i] = static_cast<T>(static_cast<std::int32_t>(random)) * static_cast<T>(0x1p-31);
  }
}

template <class In, class Out, class T> void Ours(benchmark::State &state, const Level &level, int n) {
  const ScopedLevel scoped(level);
  QORN::FT ft;
  In in(n);
  Out out(n);
  Fill(reinterpret_cast<T *>(in.GetPtr()), n * static_cast<int>(sizeof(in[0]) / sizeof(T)));
  ft.Forward(out, in);
  for (auto _ : state) {
    ft.Forward(out, in);
    benchmark::ClobberMemory();
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
template <class T> void Peer(benchmark::State &state, int n, bool real) {
  peers::Fftw<T> fftw(n, real);
  Fill(fftw.In(), real ? n : 2 * n);
  for (auto _ : state) {
    fftw.Run();
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * n);
}
#endif

template <class In, class Out, class T> void Register(const std::string &workload) {
  for (const int n : kLengths) {
    const std::string size = std::string("/") + std::to_string(n);
    for (const Level &level : QORN::kernels::AvailableLevels()) {
      benchmark::RegisterBenchmark(
          (workload + "/" + level.name + size).c_str(),
          [level, n](benchmark::State &state) { Ours<In, Out, T>(state, level, n); });
    }
#if defined(QORN_PEER_FFTW)
    benchmark::RegisterBenchmark((workload + "/peer:fftw" + size).c_str(), [n](benchmark::State &state) {
      Peer<T>(state, n, !std::is_same_v<In, Out>);
    });
#endif
  }
}

const bool registered = [] {
  using namespace QORN;
  Register<VecCplx32, VecCplx32, float>("Fourier_c32");
  Register<VecCplx64, VecCplx64, double>("Fourier_c64");
  Register<VecReal32, VecCplx32, float>("Fourier_r32");
  Register<VecReal64, VecCplx64, double>("Fourier_r64");
  const Level best = kernels::AvailableLevels().back();
  for (const int n : {64, 1000, 1024, 16384, 65537, 1048576}) {
    benchmark::RegisterBenchmark(
        ("FourierPlan_c32/" + std::string(best.name) + "/" + std::to_string(n)).c_str(),
        [best, n](benchmark::State &state) { First(state, best, n); });
  }
  return true;
}();

} // namespace
