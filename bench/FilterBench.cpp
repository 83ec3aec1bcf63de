// Whole blocks through FIRFilter, centred, beside overlap-save by FFTW. Rows are FirBlock_<kind>/level/taps x
// samples: complex samples with real taps in float (c32) and in double (c64), with complex taps (cc32), and
// real samples (r32). The peer takes complex taps as well as real ones in one complex transform; it gives the
// full convolution, of which the library's rows select the middle.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

#include "infra/kernels/Levels.h"
#include "peers/convolution.h"
#include "qorn/dsp/FIRFilter.h"

namespace {

using QORN::kernels::Level;
using QORN::kernels::ScopedLevel;

struct Size {
  int taps, samples;
};
constexpr Size kSizes[] = {{64, 4096}, {1024, 65536}, {16384, 65536}};

// Numbers between -1 and 1, the same at each run.
template <class T, class V> V Noise(int n, std::uint32_t random) {
  V noise(n);
  T *x = reinterpret_cast<T *>(noise.GetPtr());
  for (std::size_t i = 0; i < static_cast<std::size_t>(n) * sizeof(noise[0]) / sizeof(T); ++i) {
    random = random * 1664525U + 1013904223U;
    x[i] = static_cast<T>(static_cast<std::int32_t>(random)) * static_cast<T>(0x1p-31);
  }
  return noise;
}

std::string Title(const std::string &workload, const std::string &who, const Size &size) {
  return workload + "/" + who + "/" + std::to_string(size.taps) + "x" + std::to_string(size.samples);
}

template <class T, class Samples, class Taps>
void Ours(benchmark::State &state, const Level &level, const Size &size) {
  const ScopedLevel scoped(level);
  QORN::FIRFilter filter;
  const auto taps = Noise<T, Taps>(size.taps, 1);
  const auto in = Noise<T, Samples>(size.samples, 2);
  Samples out;
  filter.Apply(out, taps, in, true);
  for (auto _ : state) {
    filter.Apply(out, taps, in, true);
    benchmark::DoNotOptimize(out.GetPtr());
    benchmark::ClobberMemory();
  }
}

#if defined(QORN_PEER_FFTW)
// The plan is made once for all repetitions, by measuring.
template <class T, class Samples>
void Peer(benchmark::State &state, std::unique_ptr<peers::FftwConvolution<T>> &peer, const Size &size) {
  constexpr bool kComplex = !std::is_same_v<Samples, QORN::VecReal32>;
  if (!peer) peer = std::make_unique<peers::FftwConvolution<T>>(size.taps, size.samples, kComplex);
  const auto taps = Noise<T, Samples>(size.taps, 1);
  const auto in = Noise<T, Samples>(size.samples, 2);
  Samples out(size.taps + size.samples - 1);
  for (auto _ : state) {
    peer->Run(reinterpret_cast<const T *>(taps.GetPtr()), reinterpret_cast<const T *>(in.GetPtr()),
              reinterpret_cast<T *>(out.GetPtr()));
    benchmark::ClobberMemory();
  }
}
#endif

template <class T, class Samples, class Taps> void Register(const std::string &workload) {
  for (const Size &size : kSizes) {
    for (const Level &level : QORN::kernels::AvailableLevels()) {
      benchmark::RegisterBenchmark(
          Title(workload, level.name, size).c_str(),
          [level, size](benchmark::State &state) { Ours<T, Samples, Taps>(state, level, size); });
    }
#if defined(QORN_PEER_FFTW)
    const auto peer = std::make_shared<std::unique_ptr<peers::FftwConvolution<T>>>();
    benchmark::RegisterBenchmark(
        Title(workload, "peer:fftw", size).c_str(),
        [peer, size](benchmark::State &state) { Peer<T, Samples>(state, *peer, size); });
#endif
  }
}

const bool registered = [] {
  using namespace QORN;
  Register<float, VecCplx32, VecReal32>("FirBlock_c32");
  Register<double, VecCplx64, VecReal64>("FirBlock_c64");
  Register<float, VecCplx32, VecCplx32>("FirBlock_cc32");
  Register<float, VecReal32, VecReal32>("FirBlock_r32");
  return true;
}();

} // namespace
