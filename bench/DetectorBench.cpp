// Every detector over 16M samples, for blocks from a few samples to many thousands, at every level, beside
// plain loops per block; and a vector's way through the running average of a scratch file.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <random>
#include <string>

#include "infra/kernels/Levels.h"
#include "peers/plain.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/math/Detector.h"
#include "qorn/math/VectorAverage.h"

namespace {

using namespace QORN;

constexpr int kSamples = 1 << 24;

const VecReal32 &Source() {
  static const VecReal32 source = [] {
    VecReal32 samples(kSamples);
    std::mt19937 random(1);
    std::uniform_real_distribution<float> uniform(1e-3F, 1);
    for (int i = 0; i < kSamples; ++i) samples[i] = uniform(random);
    return samples;
  }();
  return source;
}

template <class Detect> void Measure(benchmark::State &state, int ratio, int points, Detect detect) {
  VecReal32 dst(kSamples / ratio * points);
  for (auto _ : state) {
    detect(dst, Source());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kSamples);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sizeof(float)) *
                          (kSamples + dst.GetSize()));
}

using Reduction = void (*)(const float *src, int len, float *result);

struct Row {
  const char *name;
  DetectorType type;
  Reduction peer; // of one block
};

void MeasureAverage(benchmark::State &state, int length) {
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("qorn-bench-" + std::to_string(length));
  VectorAverage average(8, path.c_str());
  const VecReal32 trace(length);
  for (auto _ : state) average.Add(trace);
  state.SetItemsProcessed(state.iterations() * length);
  // The trace is read twice and the sum read and written; the file's bytes are written and read.
  state.SetBytesProcessed(state.iterations() * length * 32);
}

const bool registered = [] {
  for (const Row &row :
       {Row{"DetectorAverage", DetectorAverage, &peers::Fast::Sum_32f},
        Row{"DetectorPeak", DetectorPeak, &peers::Fast::Max_32f}, Row{"DetectorMin", DetectorMin, nullptr},
        Row{"DetectorPeakAndMin", DetectorPeakAndMin, nullptr},
        Row{"DetectorRms", DetectorRms, &peers::Fast::Norm_L2_32f},
        Row{"DetectorPointSample", DetectorPointSample, nullptr},
        Row{"DetectorLogAverage", DetectorLogAverage, nullptr}}) {
    const int points = row.type == DetectorPeakAndMin ? 2 : 1;
    for (const int ratio : {4, 16, 100, 16384}) {
      const std::string size = std::string("/").append(std::to_string(ratio));
      for (const kernels::Level &level : kernels::AvailableLevels()) {
        benchmark::RegisterBenchmark(
            (std::string(row.name) + "/" + level.name + size).c_str(), [=](benchmark::State &state) {
              const kernels::ScopedLevel scope(level);
              Measure(state, ratio, points, [=](VecReal32 &dst, const VecReal32 &src) {
                Detector::DetectAndDecimate(dst, src, ratio, row.type);
              });
            });
      }
      if (row.peer == nullptr) continue;
      benchmark::RegisterBenchmark((row.name + std::string("/peer:fast") + size).c_str(),
                                   [=](benchmark::State &state) {
                                     Measure(state, ratio, points, [=](VecReal32 &dst, const VecReal32 &src) {
                                       for (int b = 0; b < dst.GetSize(); ++b)
                                         row.peer(src.GetPtr(b * ratio), ratio, dst.GetPtr(b));
                                     });
                                   });
    }
  }
  for (const int length : {1 << 10, 1 << 16, 1 << 20}) {
    benchmark::RegisterBenchmark(("VectorAverage/best/" + std::to_string(length)).c_str(),
                                 [length](benchmark::State &state) { MeasureAverage(state, length); });
  }
  return true;
}();

} // namespace
