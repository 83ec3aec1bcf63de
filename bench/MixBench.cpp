// Frequency shift with a phase that is carried, beside VOLK and liquid-dsp. The counter rad is the phase
// error of the last of a million samples.
#include <benchmark/benchmark.h>

#include <cmath>
#include <memory>
#include <string>

#include "infra/kernels/Levels.h"
#include "peers/mix.h"
#include "qorn/dsp/DSPUtils.h"
#include "qorn/infra/VecCplx32.h"

namespace {

namespace kernels = QORN::kernels;

// Shifts with the level's kernels.
class Ours {
public:
  Ours(double frequency, kernels::Level level) : m_frequency(frequency), m_level(level) {}
  void Mix(const QORN::VecCplx32 &src, QORN::VecCplx32 &dst) {
    const kernels::ScopedLevel scope(m_level);
    QORN::DSPUtils::FreqShift(dst, src, m_frequency, &m_phase);
  }

private:
  double m_frequency, m_phase = 0;
  kernels::Level m_level;
};

template <class Peer> class Theirs {
public:
  template <class... A> explicit Theirs(A... arguments) : m_peer(std::make_shared<Peer>(arguments...)) {}
  void Mix(const QORN::VecCplx32 &src, QORN::VecCplx32 &dst) {
    m_peer->Mix(src.GetPtr(), dst.GetPtr(), src.GetSize());
  }

private:
  std::shared_ptr<Peer> m_peer;
};

template <class Mixer> double PhaseError(Mixer mixer, double frequency) {
  constexpr int kSize = 1'000'000;
  QORN::VecCplx32 ones(kSize), shifted(kSize);
  ones.Set({1, 0});
  mixer.Mix(ones, shifted);
  const double phase = 2 * M_PI * std::fmod(frequency * (kSize - 1), 1.0);
  const QORN::Cplx32 last = shifted[kSize - 1];
  const double got = std::atan2(static_cast<double>(last.im), static_cast<double>(last.re));
  return std::fabs(std::remainder(got - phase, 2 * M_PI));
}

// make() gives a mixer at phase 0.
template <class Make> void Add(const std::string &who, int n, double frequency, Make make) {
  std::string title = "FreqShift/" + who + "/" + std::to_string(n);
  if (frequency > 0.9) title += "/fast";
  benchmark::RegisterBenchmark(title.c_str(), [=](benchmark::State &state) {
    QORN::VecCplx32 src(n), dst(n);
    for (int i = 0; i < n; ++i) {
      src[i] = {static_cast<float>(std::sin(0.1 * i)), static_cast<float>(std::cos(0.3 * i))};
    }
    auto mixer = make();
    for (auto _ : state) {
      mixer.Mix(src, dst);
      benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
    state.SetBytesProcessed(state.iterations() * n * 2 * static_cast<int>(sizeof(QORN::Cplx32)));
    state.counters["rad"] = PhaseError(make(), frequency);
  });
}

// The fast shift, of nearly a cycle per sample, is the one with the shortest distance between two seeds.
const bool registered = [] {
  for (const int n : {4096, 1 << 20}) {
    for (const double frequency : {0.1237, 0.987}) {
      for (const kernels::Level &level : kernels::AvailableLevels()) {
        Add(level.name, n, frequency, [=] { return Ours(frequency, level); });
      }
#if defined(QORN_PEER_VOLK)
      Add("peer:volk", n, frequency, [=] { return Theirs<peers::Rotator>(frequency); });
#endif
#if defined(QORN_PEER_LIQUID)
      Add("peer:liquid-nco", n, frequency, [=] { return Theirs<peers::Nco>(frequency, false); });
      Add("peer:liquid-vco", n, frequency, [=] { return Theirs<peers::Nco>(frequency, true); });
#endif
    }
  }
  return true;
}();

} // namespace
