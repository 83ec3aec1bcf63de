// Ramps, noise and tones, beside what the standard library offers.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "peers/random.h"
#include "qorn/infra/TargetLib.h"

namespace {

using QORN::Cplx32;
using QORN::TargetLib;

namespace kernels = QORN::kernels;

template <class T, class Function>
void Add(const char *name, const std::string &who, int n, const kernels::Level &level, Function generate) {
  const std::string title = std::string(name) + "/" + who + "/" + std::to_string(n);
  benchmark::RegisterBenchmark(title.c_str(), [=](benchmark::State &state) mutable {
    const kernels::ScopedLevel scope(level);
    std::vector<T> dst(static_cast<std::size_t>(n));
    for (auto _ : state) {
      generate(dst.data(), n);
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
    state.SetBytesProcessed(state.iterations() * n * static_cast<int>(sizeof(T)));
  });
}

const bool registered = [] {
  const std::vector<kernels::Level> levels = kernels::AvailableLevels();
  for (const int n : {256, 4096, 1 << 20}) {
    for (const kernels::Level &level : levels) {
      Add<float>("VectorSlope_32f", level.name, n, level,
                 [](float *dst, int len) { TargetLib::VectorSlope_32f(dst, len, 0.1F, 0.3F); });
      Add<float>("RandUniform_Direct_32f", level.name, n, level, [seed = 1U](float *dst, int len) mutable {
        TargetLib::RandUniform_Direct_32f(dst, len, 0, 1, &seed);
      });
      Add<float>("RandGauss_Direct_32f", level.name, n, level, [seed = 1U](float *dst, int len) mutable {
        TargetLib::RandGauss_Direct_32f(dst, len, 0, 1, &seed);
      });
      Add<Cplx32>("Tone_Direct_32fc", level.name, n, level, [phase = 0.0F](Cplx32 *dst, int len) mutable {
        TargetLib::Tone_Direct_32fc(dst, len, 1, 0.01F, &phase);
      });
    }
    const kernels::Level &best = levels.back();
    Add<float>("RandUniform_Direct_32f", "peer:std", n, best,
               [](float *dst, int len) { peers::Random::Uniform(dst, len, 1); });
    Add<float>("RandGauss_Direct_32f", "peer:std", n, best,
               [](float *dst, int len) { peers::Random::Gauss(dst, len, 1); });
    Add<Cplx32>("Tone_Direct_32fc", "peer:libm", n, best,
                [](Cplx32 *dst, int len) { peers::Random::Tone(dst, len, 0.01F); });
  }
  return true;
}();

} // namespace
