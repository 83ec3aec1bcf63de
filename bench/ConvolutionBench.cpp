// Full convolutions and correlations beside those by FFTW.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "infra/kernels/Levels.h"
#include "peers/convolution.h"
#include "qorn/infra/TargetLib.h"

namespace {

using QORN::Cplx32;
using QORN::TargetLib;

namespace kernels = QORN::kernels;

constexpr struct {
  int taps, len;
} kSizes[] = {{16, 16},     {64, 64},     {256, 256},    {64, 4096},     {256, 4096},   {1024, 1024},
              {4096, 4096}, {256, 65536}, {1024, 65536}, {16384, 65536}, {65536, 65536}};

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

std::string Title(const char *name, const std::string &who, int taps, int len) {
  return std::string(name) + "/" + who + "/" + std::to_string(taps) + "x" + std::to_string(len);
}

template <class T, class Kernel>
void Add(const char *name, const kernels::Level &level, const Kernel &kernel) {
  for (const auto &size : kSizes) {
    benchmark::RegisterBenchmark(Title(name, level.name, size.taps, size.len).c_str(),
                                 [=](benchmark::State &state) {
                                   const kernels::ScopedLevel scope(level);
                                   Data<T> data(size.taps, size.len);
                                   for (auto _ : state) {
                                     kernel(data);
                                     benchmark::ClobberMemory();
                                   }
                                 });
  }
}

#if defined(QORN_PEER_FFTW)
template <class T, class Part> void AddPeer(const char *name) {
  for (const auto &size : kSizes) {
    // The plans are made once for all repetitions.
    const auto peer = std::make_shared<std::unique_ptr<peers::FftwConvolution<Part>>>();
    benchmark::RegisterBenchmark(Title(name, "peer:fftw", size.taps, size.len).c_str(),
                                 [=](benchmark::State &state) {
                                   if (*peer == nullptr) {
                                     *peer = std::make_unique<peers::FftwConvolution<Part>>(
                                         size.taps, size.len, std::is_same_v<T, Cplx32>);
                                   }
                                   Data<T> data(size.taps, size.len);
                                   for (auto _ : state) {
                                     (*peer)->Run(reinterpret_cast<const Part *>(data.taps.data()),
                                                  reinterpret_cast<const Part *>(data.x.data()),
                                                  reinterpret_cast<Part *>(data.dst.data()));
                                     benchmark::ClobberMemory();
                                   }
                                 });
  }
}
#endif

template <class T> int Length(const std::vector<T> &x) { return static_cast<int>(x.size()); }

const bool registered = [] {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    Add<float>("Conv_32f", level, [](Data<float> &d) {
      TargetLib::Conv_32f(d.taps.data(), Length(d.taps), d.x.data(), Length(d.x), d.dst.data());
    });
    Add<double>("Conv_64f", level, [](Data<double> &d) {
      TargetLib::Conv_64f(d.taps.data(), Length(d.taps), d.x.data(), Length(d.x), d.dst.data());
    });
    Add<float>("CrossCorr_32f", level, [](Data<float> &d) {
      TargetLib::CrossCorr_32f(d.taps.data(), Length(d.taps), d.x.data(), Length(d.x), d.dst.data(),
                               Length(d.dst), 1 - Length(d.taps));
    });
    Add<Cplx32>("CrossCorr_32fc", level, [](Data<Cplx32> &d) {
      TargetLib::CrossCorr_32fc(d.taps.data(), Length(d.taps), d.x.data(), Length(d.x), d.dst.data(),
                                Length(d.dst), 1 - Length(d.taps));
    });
  }
#if defined(QORN_PEER_FFTW)
  AddPeer<float, float>("Conv_32f");
  AddPeer<double, double>("Conv_64f");
  AddPeer<float, float>("CrossCorr_32f");
  AddPeer<Cplx32, float>("CrossCorr_32fc");
#endif
  return true;
}();

} // namespace
