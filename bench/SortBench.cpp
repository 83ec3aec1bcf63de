// Sorting of random floats with and without places, beside std::sort and vqsort. Every call finds fresh data:
// an order that repeats is learnt by the branch predictor.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "peers/sort.h"
#include "qorn/infra/TargetLib.h"

namespace {

using QORN::TargetLib;

namespace kernels = QORN::kernels;

template <class Function> void Measure(benchmark::State &state, int n, Function sort) {
  const int arrays = n < 100000 ? 300000 / n : 4;
  const auto length = static_cast<std::size_t>(n);
  std::vector<float> fresh(length * static_cast<std::size_t>(arrays)), values;
  std::mt19937 random(1);
  for (float &x : fresh) x = static_cast<float>(random()) * 0x1p-32F - 0.5F;
  std::vector<int> places(length);
  int next = arrays;
  for (auto _ : state) {
    if (next == arrays) {
      state.PauseTiming();
      values = fresh;
      next = 0;
      state.ResumeTiming();
    }
    sort(values.data() + length * static_cast<std::size_t>(next++), places.data(), n);
  }
  state.SetItemsProcessed(state.iterations() * n);
}

template <class Function>
void Add(const char *name, const std::string &who, int n, const kernels::Level &level, Function sort) {
  const std::string title = std::string(name) + "/" + who + "/" + std::to_string(n);
  benchmark::RegisterBenchmark(title.c_str(), [=](benchmark::State &state) {
    const kernels::ScopedLevel scope(level);
    Measure(state, n, sort);
  });
}

const bool registered = [] {
  const std::vector<kernels::Level> levels = kernels::AvailableLevels();
  for (const int n : {1000, 100000, 1000000}) {
    const char *values = "SortAscend_32f", *index = "SortIndexAscend_32f";
    for (const kernels::Level &level : levels) {
      Add(values, level.name, n, level, [](float *x, int *, int len) { TargetLib::SortAscend_32f(x, len); });
      Add(index, level.name, n, level,
          [](float *x, int *places, int len) { TargetLib::SortIndexAscend_32f(x, places, len); });
    }
    Add(values, "peer:std", n, levels.back(), [](float *x, int *, int len) { peers::Sort::Std(x, len); });
    Add(index, "peer:std", n, levels.back(),
        [](float *x, int *places, int len) { peers::Sort::StdIndex(x, places, len); });
#if defined(QORN_PEER_HWY)
    Add(values, "peer:vqsort", n, levels.back(),
        [](float *x, int *, int len) { peers::Sort::Vqsort(x, len); });
    Add(index, "peer:vqsort", n, levels.back(),
        [](float *x, int *places, int len) { peers::Sort::VqsortIndex(x, places, len); });
#endif
  }
  return true;
}();

} // namespace
