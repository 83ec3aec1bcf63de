// Full convolutions and correlations, of every pair of lengths, beside those by FFTW and direct loops.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "infra/kernels/Levels.h"
#include "peers/convolution.h"
#include "peers/plain.h"
#include "qorn/infra/TargetLib.h"

namespace {

using QORN::Cplx32;
using QORN::TargetLib;

namespace kernels = QORN::kernels;

constexpr int kLengths[] = {16, 64, 256, 1024, 4096, 16384, 65536};

template <class T> struct Data {
  std::vector<T> taps, x, dst;

  Data(int tapCount, int len)
      : taps(static_cast<std::size_t>(tapCount)), x(static_cast<std::size_t>(len)),
        dst(static_cast<std::size_t>(tapCount + len - 1)) {
    std::mt19937 random(1);
    std::normal_distribution<double> normal;
    for (auto *values : {&taps, &x}) {
      for (T &value : *values) {
        if constexpr (std::is_same_v<T, Cplx32>) {
          value = {static_cast<float>(normal(random)), static_cast<float>(normal(random))};
        } else {
          value = static_cast<T>(normal(random));
        }
      }
    }
  }
};

template <class T> int Length(const std::vector<T> &x) { return static_cast<int>(x.size()); }

template <class Run> void Repeat(benchmark::State &state, const Run &run) {
  for (auto _ : state) {
    run();
    benchmark::ClobberMemory();
  }
}

// A row for every pair of lengths, taps <= len, with what make(taps, len) returns: it takes the state and the
// data.
template <class T, class Make> void AddPairs(const char *name, const std::string &who, const Make &make) {
  for (const int taps : kLengths) {
    for (const int len : kLengths) {
      if (taps > len) continue;
      const std::string title =
          std::string(name) + "/" + who + "/" + std::to_string(taps) + "x" + std::to_string(len);
      benchmark::RegisterBenchmark(title.c_str(),
                                   [taps, len, measure = make(taps, len)](benchmark::State &state) {
                                     Data<T> data(taps, len);
                                     measure(state, data);
                                   });
    }
  }
}

// Part is the type of a real or imaginary part.
template <class T, class Part, class Kernel, class Loop>
void Add(const char *name, const Kernel &kernel, const Loop &loop) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    AddPairs<T>(name, level.name, [=](int, int) {
      return [=](benchmark::State &state, Data<T> &data) {
        const kernels::ScopedLevel scope(level);
        Repeat(state, [&] { kernel(data); });
      };
    });
  }
  AddPairs<T>(name, "peer:plain", [=](int, int) {
    return [=](benchmark::State &state, Data<T> &data) {
      Repeat(state, [&] {
        loop(data.taps.data(), Length(data.taps), data.x.data(), Length(data.x), data.dst.data());
      });
    };
  });
#if defined(QORN_PEER_FFTW)
  AddPairs<T>(name, "peer:fftw", [](int taps, int len) {
    // The plans are made once for all repetitions.
    const auto peer = std::make_shared<std::unique_ptr<peers::FftwConvolution<Part>>>();
    return [=](benchmark::State &state, Data<T> &data) {
      if (*peer == nullptr) {
        *peer = std::make_unique<peers::FftwConvolution<Part>>(taps, len, std::is_same_v<T, Cplx32>);
      }
      const auto parts = [](auto &values) { return reinterpret_cast<Part *>(values.data()); };
      Repeat(state, [&] { (*peer)->Run(parts(data.taps), parts(data.x), parts(data.dst)); });
    };
  });
#endif
}

// Of correlations, all lags.
template <class T, class Kernel> auto Correlation(const Kernel &kernel) {
  return [kernel](Data<T> &d) {
    kernel(d.taps.data(), Length(d.taps), d.x.data(), Length(d.x), d.dst.data(), Length(d.dst),
           1 - Length(d.taps));
  };
}

template <class T, class Kernel> auto Convolution(const Kernel &kernel) {
  return
      [kernel](Data<T> &d) { kernel(d.taps.data(), Length(d.taps), d.x.data(), Length(d.x), d.dst.data()); };
}

const bool registered = [] {
  using peers::Plain;
  Add<float, float>("Conv_32f", Convolution<float>(TargetLib::Conv_32f), Plain::Conv_32f);
  Add<double, double>("Conv_64f", Convolution<double>(TargetLib::Conv_64f), Plain::Conv_64f);
  Add<float, float>("CrossCorr_32f", Correlation<float>(TargetLib::CrossCorr_32f), Plain::CrossCorr_32f);
  Add<Cplx32, float>("CrossCorr_32fc", Correlation<Cplx32>(TargetLib::CrossCorr_32fc), Plain::CrossCorr_32fc);
  return true;
}();

} // namespace
