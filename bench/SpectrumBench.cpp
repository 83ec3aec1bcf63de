// The whole spectrum of one block, windowed, in dBV, beside FFTW and VOLK; beside the transform inside it,
// in dBV and, without the logarithm, in volts; and what its parts cost.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "infra/kernels/Levels.h"
#include "math/Decibels.h"
#include "peers/spectrum.h"
#include "qorn/dsp/FT.h"
#include "qorn/dsp/FixedWindows.h"
#include "qorn/dsp/Spectrum.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/math/UnitConversion.h"

namespace {

namespace kernels = QORN::kernels;

QORN::VecCplx32 Noise(int n) {
  QORN::VecCplx32 noise(n);
  std::uint32_t random = 1;
  const auto next = [&random] {
    random = random * 1664525U + 1013904223U;
    return static_cast<float>(static_cast<std::int32_t>(random)) * 0x1p-31F;
  };
  for (int i = 0; i < n; ++i) noise[i] = {next(), next()};
  return noise;
}

void SpectrumOf(benchmark::State &state, kernels::Level level, bool real, QORN::PowerUnit unit) {
  const kernels::ScopedLevel scoped(level);
  const int n = static_cast<int>(state.range(0));
  QORN::Spectrum spectrum(n);
  spectrum.SetUnit(unit);
  const QORN::VecCplx32 in = Noise(n);
  QORN::VecReal32 re;
  in.GetReal(re);
  QORN::VecReal32 out(n);
  const auto run = [&] { real ? spectrum.Apply(out, re) : spectrum.Apply(out, in); };
  run(); // makes the plan
  for (auto _ : state) {
    run();
    benchmark::DoNotOptimize(out.GetPtr());
    benchmark::ClobberMemory();
  }
}

// The transform inside a spectrum, by itself.
void TransformOf(benchmark::State &state, kernels::Level level) {
  const kernels::ScopedLevel scoped(level);
  const int n = static_cast<int>(state.range(0));
  QORN::FT transform;
  const QORN::VecCplx32 in = Noise(n);
  QORN::VecCplx32 out(n);
  transform.Forward(out, in); // makes the plan
  for (auto _ : state) {
    transform.Forward(out, in);
    benchmark::DoNotOptimize(out.GetPtr());
    benchmark::ClobberMemory();
  }
}

void WindowOf(benchmark::State &state, kernels::Level level) {
  const kernels::ScopedLevel scoped(level);
  const int n = static_cast<int>(state.range(0));
  const QORN::BlackmanHarrisWindow window(n);
  const QORN::VecCplx32 in = Noise(n);
  QORN::VecCplx32 out(n);
  for (auto _ : state) {
    window.Apply(out, in);
    benchmark::DoNotOptimize(out.GetPtr());
    benchmark::ClobberMemory();
  }
}

void DecibelsOf(benchmark::State &state, kernels::Level level) {
  const kernels::ScopedLevel scoped(level);
  const int n = static_cast<int>(state.range(0));
  QORN::VecReal32 in(n);
  for (int i = 0; i < n; ++i) in[i] = 0.001F * static_cast<float>(i + 1);
  QORN::VecReal32 out(n);
  for (auto _ : state) {
    QORN::UnitConversion::Volt2dBV(out, in);
    benchmark::DoNotOptimize(out.GetPtr());
    benchmark::ClobberMemory();
  }
}

// The pass that follows the transform, by itself.
void FinishOf(benchmark::State &state, kernels::Level level, QORN::PowerUnit unit) {
  const kernels::ScopedLevel scoped(level);
  const int n = static_cast<int>(state.range(0));
  const QORN::VecCplx32 in = Noise(n);
  QORN::VecReal32 out(n);
  const auto finish = unit == QORN::PowerUnitDBV ? &QORN::MagTodBV : &QORN::TargetLib::Mag_32fc;
  for (auto _ : state) {
    finish(in.GetPtr(), out.GetPtr(), n);
    benchmark::DoNotOptimize(out.GetPtr());
    benchmark::ClobberMemory();
  }
}

#if defined(QORN_PEER_FFTW) && defined(QORN_PEER_VOLK)
void PeerOf(benchmark::State &state, peers::Logarithm logarithm) {
  const int n = static_cast<int>(state.range(0));
  peers::Spectrum spectrum(n, logarithm);
  const QORN::VecCplx32 in = Noise(n);
  QORN::VecReal32 out(n);
  for (auto _ : state) {
    spectrum.Apply(out.GetPtr(), in.GetPtr());
    benchmark::DoNotOptimize(out.GetPtr());
    benchmark::ClobberMemory();
  }
}
#endif

[[maybe_unused]] const bool registered = [] {
  const auto sizes = [](benchmark::internal::Benchmark *bench, bool odd) {
    for (const int n : {1024, 16384, 262144}) bench->Arg(n);
    if (odd) bench->Arg(10000);
  };
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const std::string name = level.name;
    const auto whole = [&](const char *workload, bool real, QORN::PowerUnit unit) {
      sizes(benchmark::RegisterBenchmark(std::string(workload).append(name).c_str(), SpectrumOf, level, real,
                                         unit),
            true);
    };
    whole("Spectrum/", false, QORN::PowerUnitDBV);
    whole("SpectrumOverTransform/", false, QORN::PowerUnitDBV);
    whole("SpectrumInVoltOverTransform/", false, QORN::PowerUnitVolt);
    whole("SpectrumReal/", true, QORN::PowerUnitDBV);
    sizes(
        benchmark::RegisterBenchmark(("SpectrumFinish/" + name).c_str(), FinishOf, level, QORN::PowerUnitDBV),
        true);
    sizes(benchmark::RegisterBenchmark(("SpectrumInVoltFinish/" + name).c_str(), FinishOf, level,
                                       QORN::PowerUnitVolt),
          true);
    sizes(benchmark::RegisterBenchmark(("WindowApply/" + name).c_str(), WindowOf, level), false);
    sizes(benchmark::RegisterBenchmark(("Volt2dBV/" + name).c_str(), DecibelsOf, level), false);
  }
  for (const char *workload : {"SpectrumOverTransform", "SpectrumInVoltOverTransform"}) {
    sizes(benchmark::RegisterBenchmark(std::string(workload).append("/peer:transform").c_str(), TransformOf,
                                       kernels::AvailableLevels().back()),
          true);
  }
#if defined(QORN_PEER_FFTW) && defined(QORN_PEER_VOLK)
  sizes(benchmark::RegisterBenchmark("Spectrum/peer:FFTW+VOLK", PeerOf, peers::Logarithm::Volk), true);
  if (peers::HasLogarithm(peers::Logarithm::Sleef)) {
    sizes(benchmark::RegisterBenchmark("Spectrum/peer:FFTW+SLEEF", PeerOf, peers::Logarithm::Sleef), true);
  }
#endif
  return true;
}();

} // namespace
