// A zoom of 1024 points into a narrow span by ChirpZ, beside the full zero-padded transform that has points
// at the same distance: FFTW's as the peer, and the library's own as Zoom_full rows. Sizes are N/S: N
// samples, a span of 1/S of the sampling rate, so that the full transform has max(N, 1024 S) points.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <type_traits>

#include "infra/kernels/Levels.h"
#include "peers/fftw.h"
#include "qorn/dsp/ChirpZ.h"
#include "qorn/dsp/FT.h"

namespace {

using QORN::kernels::Level;
using QORN::kernels::ScopedLevel;

constexpr int kPoints = 1024;

struct Zoom {
  int samples, part;

  int FullLength() const { return std::max(samples, kPoints * part); }
};
constexpr Zoom kZooms[] = {{4096, 64}, {65536, 64}, {4096, 1024}, {65536, 1024}};

template <class V> using ScalarOf = std::conditional_t<std::is_same_v<V, QORN::VecCplx64>, double, float>;

template <class V> void Fill(V &samples, int n) {
  using T = ScalarOf<V>;
  std::uint32_t random = 1;
  const auto next = [&random] {
    random = random * 1664525U + 1013904223U;
    return static_cast<T>(static_cast<std::int32_t>(random)) * static_cast<T>(0x1p-31);
  };
  for (int i = 0; i < n; ++i) samples[i] = {next(), next()};
}

template <class V> void ByChirp(benchmark::State &state, const Level &level, const Zoom &zoom) {
  const ScopedLevel scoped(level);
  const double span = 1.0 / zoom.part;
  QORN::ChirpZ chirp(zoom.samples, 1.0, kPoints, 0.1, span / kPoints, std::is_same_v<V, QORN::VecCplx64>);
  V in(zoom.samples), out(kPoints);
  Fill(in, zoom.samples);
  for (auto _ : state) {
    chirp.Apply(out, in);
    benchmark::DoNotOptimize(out.GetPtr());
    benchmark::ClobberMemory();
  }
}

template <class V> void ByFullTransform(benchmark::State &state, const Level &level, const Zoom &zoom) {
  const ScopedLevel scoped(level);
  QORN::FT transform;
  V in(zoom.FullLength()), out(zoom.FullLength());
  Fill(in, zoom.samples);
  transform.Forward(out, in); // makes the plan
  for (auto _ : state) {
    transform.Forward(out, in);
    benchmark::DoNotOptimize(out.GetPtr());
    benchmark::ClobberMemory();
  }
}

#if defined(QORN_PEER_FFTW)
template <class T> void ByFftw(benchmark::State &state, const Zoom &zoom) {
  peers::Fftw<T> fftw(zoom.FullLength(), false);
  std::fill_n(fftw.In(), 2 * zoom.FullLength(), T{});
  for (int i = 0; i < 2 * zoom.samples; ++i) fftw.In()[i] = static_cast<T>(i % 17 - 8);
  for (auto _ : state) {
    fftw.Run();
    benchmark::ClobberMemory();
  }
}
#endif

template <class V> void Register(const std::string &kind) {
  for (const Zoom &zoom : kZooms) {
    const std::string size =
        std::string("/") + std::to_string(zoom.samples) + "/" + std::to_string(zoom.part);
    for (const Level &level : QORN::kernels::AvailableLevels()) {
      const auto name = [&](const char *workload) {
        return std::string(workload) + kind + "/" + level.name + size;
      };
      benchmark::RegisterBenchmark(
          name("Zoom_").c_str(), [level, zoom](benchmark::State &state) { ByChirp<V>(state, level, zoom); });
      benchmark::RegisterBenchmark(name("Zoom_full_").c_str(), [level, zoom](benchmark::State &state) {
        ByFullTransform<V>(state, level, zoom);
      });
    }
#if defined(QORN_PEER_FFTW)
    for (const char *workload : {"Zoom_", "Zoom_full_"}) {
      benchmark::RegisterBenchmark((std::string(workload) + kind + "/peer:fftw" + size).c_str(),
                                   [zoom](benchmark::State &state) { ByFftw<ScalarOf<V>>(state, zoom); });
    }
#endif
  }
}

const bool registered = [] {
  Register<QORN::VecCplx32>("c32");
  Register<QORN::VecCplx64>("c64");
  return true;
}();

} // namespace
