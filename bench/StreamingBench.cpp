// Streaming filters with real taps on blocks of 4096 complex samples, beside VOLK, liquid-dsp and FFTW. Sizes
// are taps, and decimation and taps. Operations are counted as 4 for each tap and output, two products and
// two sums, also where transforms need fewer: so a share of the peak above 100 % is theirs.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "peers/stream.h"
#include "qorn/dsp/SFIRFilter.h"
#include "qorn/dsp/SFIRFilterDec.h"

namespace {

namespace kernels = QORN::kernels;
using QORN::Cplx32;
using QORN::VecCplx32;

constexpr int kBlock = 4096;

// Filters with the level's kernels.
template <class Filter> class Ours {
public:
  template <class... A>
  explicit Ours(kernels::Level level, const std::vector<float> &taps, A... arguments)
      : m_level(level), m_filter(Vector(taps), arguments...) {}
  void Run(const VecCplx32 &src, VecCplx32 &dst) {
    const kernels::ScopedLevel scope(m_level);
    if constexpr (requires { m_filter.Apply(dst, src, false); })
      m_filter.Apply(dst, src, false);
    else
      m_filter.Apply(dst, src);
  }

private:
  static QORN::VecReal32 Vector(const std::vector<float> &taps) {
    QORN::VecReal32 vec;
    vec.Import(taps.data(), static_cast<int>(taps.size()));
    return vec;
  }
  kernels::Level m_level;
  Filter m_filter;
};

template <class Peer> class Theirs {
public:
  template <class... A>
  explicit Theirs(const std::vector<float> &taps, A... arguments) : m_peer(taps, kBlock, arguments...) {}
  void Run(const VecCplx32 &src, VecCplx32 &dst) { m_peer.Run(src.GetPtr(), dst.GetPtr()); }

private:
  Peer m_peer;
};

// A low-pass, half as wide as the band that the decimation leaves.
std::vector<float> Taps(int count, int decimation) {
  std::vector<float> taps;
  for (int i = 0; i < count; ++i) {
    const double t = (i - (count - 1) / 2.0) / (2.0 * decimation);
    const double window = 0.5 - 0.5 * std::cos(6.283185307179586 * (i + 0.5) / count);
    taps.push_back(static_cast<float>(window * (t == 0 ? 1 : std::sin(3.141592653589793 * t) / t)));
  }
  return taps;
}

template <class Make> void Add(const std::string &title, int taps, int decimation, Make make) {
  benchmark::RegisterBenchmark(title.c_str(), [=](benchmark::State &state) {
    VecCplx32 src(kBlock), dst(kBlock);
    std::uint32_t random = 1;
    const auto noise = [&random] {
      random = random * 1664525U + 1013904223U;
      return static_cast<float>(static_cast<std::int32_t>(random)) * 0x1p-31F;
    };
    for (int i = 0; i < kBlock; ++i) src[i] = {noise(), noise()};
    auto filter = make();
    filter->Run(src, dst); // makes what the first block needs
    for (auto _ : state) {
      filter->Run(src, dst);
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * kBlock);
    state.counters["flops"] =
        benchmark::Counter(4.0 * taps * (kBlock / decimation), benchmark::Counter::kIsIterationInvariantRate);
  });
}

template <class Filter, class... A>
void AddOne(const std::string &workload, const std::string &variant, const std::string &size, int count,
            int decimation, A... arguments) {
  Add(workload + "/" + variant + "/" + size, count, decimation,
      [=] { return std::make_unique<Filter>(arguments...); });
}

const bool registered = [] {
  for (const int count : {16, 32, 64, 128, 256, 1024}) {
    const auto taps = Taps(count, 1);
    const std::string size = std::to_string(count);
    for (const kernels::Level &level : kernels::AvailableLevels())
      AddOne<Ours<QORN::SFIRFilter>>("Stream", level.name, size, count, 1, level, taps);
#if defined(QORN_PEER_VOLK)
    AddOne<Theirs<peers::DotProducts>>("Stream", "peer:volk", size, count, 1, taps);
#endif
#if defined(QORN_PEER_LIQUID)
    AddOne<Theirs<peers::LiquidFir>>("Stream", "peer:liquid", size, count, 1, taps);
    AddOne<Theirs<peers::LiquidFft>>("Stream", "peer:liquid-fft", size, count, 1, taps);
#endif
#if defined(QORN_PEER_FFTW)
    AddOne<Theirs<peers::FftwStream>>("Stream", "peer:fftw", size, count, 1, taps);
#endif
  }
  for (const int decimation : {2, 4, 8}) {
    for (const int count : {32, 64, 128}) {
      const auto taps = Taps(count, decimation);
      const std::string size = std::to_string(decimation) + "/" + std::to_string(count);
      for (const kernels::Level &level : kernels::AvailableLevels())
        AddOne<Ours<QORN::SFIRFilterDec>>("Decimate", level.name, size, count, decimation, level, taps,
                                          decimation, 0);
#if defined(QORN_PEER_VOLK)
      AddOne<Theirs<peers::DotProducts>>("Decimate", "peer:volk", size, count, decimation, taps, decimation);
#endif
#if defined(QORN_PEER_LIQUID)
      AddOne<Theirs<peers::LiquidDecimator>>("Decimate", "peer:liquid", size, count, decimation, taps,
                                             decimation);
#endif
    }
  }
  return true;
}();

} // namespace
