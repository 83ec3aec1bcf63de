// What the machine itself can do, for the table's share of the limit: Limit/copy/bytes reads and writes that
// many bytes in all, Limit/muladd32 and Limit/muladd64 count two operations for each fused multiply-add.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <string>

#include "peers/limit.h"

namespace {

void Copy(benchmark::State &state, std::size_t bytes) {
  const std::size_t half = bytes / 2;
  const auto space = std::make_unique<char[]>(bytes + 64);
  void *start = space.get();
  std::size_t room = bytes + 64;
  char *data = static_cast<char *>(std::align(64, bytes, start, room));
  std::memset(data, 1, bytes);
  for (auto _ : state) {
    std::memcpy(data + half, data, half);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

template <class T> void MulAdd(benchmark::State &state, std::size_t flops) {
  T factor = T(0.5);
  for (auto _ : state) {
    benchmark::DoNotOptimize(factor);
    T result = peers::Limit::MulAdd(factor, T(1));
    benchmark::DoNotOptimize(result);
  }
  state.counters["flops"] =
      benchmark::Counter(static_cast<double>(flops), benchmark::Counter::kIsIterationInvariantRate);
}

const bool registered = [] {
  for (std::size_t bytes = 1024; bytes <= std::size_t{1} << 28; bytes *= 2) {
    benchmark::RegisterBenchmark((std::string("Limit/copy/") + std::to_string(bytes)).c_str(),
                                 [bytes](benchmark::State &state) { Copy(state, bytes); });
  }
  benchmark::RegisterBenchmark(
      "Limit/muladd32", [](benchmark::State &state) { MulAdd<float>(state, peers::Limit::kFloatFlops); });
  benchmark::RegisterBenchmark(
      "Limit/muladd64", [](benchmark::State &state) { MulAdd<double>(state, peers::Limit::kDoubleFlops); });
  return true;
}();

} // namespace
