// Unit conversions of float vectors at each level beside a loop over SLEEF's logarithm or power of ten, of at
// most 1 unit in the last place, that converts in one pass.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "infra/kernels/Levels.h"
#include "peers/sleef.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/math/UnitConversion.h"

namespace {

using QORN::UnitConversion;
using QORN::VecReal32;

namespace kernels = QORN::kernels;

template <class Convert>
void Measure(benchmark::State &state, int n, float low, float high, Convert convert) {
  VecReal32 src(n), dst(n);
  std::mt19937 random(1);
  std::uniform_real_distribution<float> uniform(low, high);
  for (int i = 0; i < n; ++i) src[i] = uniform(random);
  for (auto _ : state) {
    convert(dst, src);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * n);
}

struct Row {
  const char *name;
  void (*convert)(VecReal32 &, const VecReal32 &);
  float low, high;
};

const bool registered = [] {
  for (const Row &row : {Row{"PowerRatio2dB", &UnitConversion::PowerRatio2dB, 1e-3F, 1e3F},
                         {"Volt2dBm", &UnitConversion::Volt2dBm, 1e-3F, 10.0F},
                         {"dBm2Volt", &UnitConversion::dBm2Volt, -120.0F, 30.0F}}) {
    for (const int n : {4096, 1 << 20}) {
      const std::string size = "/" + std::to_string(n);
      for (const kernels::Level &level : kernels::AvailableLevels()) {
        benchmark::RegisterBenchmark((row.name + std::string("/") + level.name + size).c_str(),
                                     [=](benchmark::State &state) {
                                       const kernels::ScopedLevel scope(level);
                                       Measure(state, n, row.low, row.high, row.convert);
                                     });
      }
      if (const auto peer = qorn_bench::FindSleef<float>(row.name)) {
        const auto convert = [peer](VecReal32 &dst, const VecReal32 &src) {
          peer(src.GetPtr(), dst.GetPtr(), src.GetSize());
        };
        benchmark::RegisterBenchmark(
            (row.name + std::string("/peer:sleef") + size).c_str(),
            [=](benchmark::State &state) { Measure(state, n, row.low, row.high, convert); });
      }
    }
  }
  return true;
}();

} // namespace
