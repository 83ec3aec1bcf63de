// Sorting of floats with and without places, beside std::sort and vqsort: random ones, and orders that
// trouble quicksorts. Every call finds fresh data: an order that repeats is learnt by the branch predictor.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "peers/sort.h"
#include "qorn/infra/TargetLib.h"

namespace {

using QORN::TargetLib;

namespace kernels = QORN::kernels;

struct Input {
  const char *suffix;
  float (*element)(int i, int len, std::mt19937 &random);
};

float Random(int, int, std::mt19937 &random) { return static_cast<float>(random()) * 0x1p-32F - 0.5F; }

const Input kRandom{"", Random};
const Input kSorted{"_sorted", [](int i, int, std::mt19937 &) { return static_cast<float>(i); }};
const Input kReversed{"_reversed", [](int i, int, std::mt19937 &) { return static_cast<float>(-i); }};
const Input kEqual{"_equal", [](int, int, std::mt19937 &) { return 1.0F; }};
const Input kOrganPipes{"_organ_pipes", [](int i, int len, std::mt19937 &) {
                          return static_cast<float>(std::min(i, len - 1 - i));
                        }};
const Input kFewKeys{"_few_keys",
                     [](int, int, std::mt19937 &random) { return static_cast<float>(random() % 10); }};
const Input kWithNan{"_with_nan", [](int i, int len, std::mt19937 &random) {
                       return random() % 10 == 0 ? std::numeric_limits<float>::quiet_NaN()
                                                 : Random(i, len, random);
                     }};

template <class Function> void Measure(benchmark::State &state, int n, const Input &input, Function sort) {
  const int arrays = n < 100000 ? 300000 / n : 4;
  const auto length = static_cast<std::size_t>(n);
  std::vector<float> fresh, values;
  std::mt19937 random(1);
  for (int k = 0; k < arrays; ++k) {
    for (int i = 0; i < n; ++i) fresh.push_back(input.element(i, n, random));
  }
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
void Add(const char *name, const Input &input, const std::string &who, int n, const kernels::Level &level,
         Function sort) {
  const std::string title = std::string(name) + input.suffix + "/" + who + "/" + std::to_string(n);
  benchmark::RegisterBenchmark(title.c_str(), [=](benchmark::State &state) {
    const kernels::ScopedLevel scope(level);
    Measure(state, n, input, sort);
  });
}

// Peers that compare floats need numbers; their packed words have an order in any case.
void AddRows(const Input &input, int n) {
  const std::vector<kernels::Level> levels = kernels::AvailableLevels();
  const char *values = "SortAscend_32f", *index = "SortIndexAscend_32f";
  const bool numbers = &input != &kWithNan;
  for (const kernels::Level &level : levels) {
    Add(values, input, level.name, n, level,
        [](float *x, int *, int len) { TargetLib::SortAscend_32f(x, len); });
    Add(index, input, level.name, n, level,
        [](float *x, int *places, int len) { TargetLib::SortIndexAscend_32f(x, places, len); });
  }
  Add(
      values, input, "peer:std", n, levels.back(),
      numbers ? [](float *x, int *, int len) { peers::Sort::Std(x, len); }
              : [](float *x, int *, int len) { peers::Sort::StdNumbersFirst(x, len); });
  Add(index, input, "peer:std", n, levels.back(),
      [](float *x, int *places, int len) { peers::Sort::StdIndex(x, places, len); });
#if defined(QORN_PEER_HWY)
  if (numbers) {
    Add(values, input, "peer:vqsort", n, levels.back(),
        [](float *x, int *, int len) { peers::Sort::Vqsort(x, len); });
  }
  Add(index, input, "peer:vqsort", n, levels.back(),
      [](float *x, int *places, int len) { peers::Sort::VqsortIndex(x, places, len); });
#endif
}

const bool registered = [] {
  for (const int n : {1000, 100000, 1000000}) AddRows(kRandom, n);
  for (const Input *input : {&kSorted, &kReversed, &kEqual, &kOrganPipes, &kFewKeys, &kWithNan}) {
    AddRows(*input, 100000);
  }
  return true;
}();

} // namespace
