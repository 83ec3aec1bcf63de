// Resampling of a million complex samples beside soxr, libsamplerate and liquid-dsp. Rows are
// Resample_<design>/level/ratio, with InDouble for the alternate kernel; 0.3333 stands for 1/3. Counters, all
// in decibels and measured with tones: ripple over 0 to 0.8 of the lower half rate, images of such tones, and
// alias, what is left of tones from 1.1 times the lower half rate on.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "peers/resample.h"
#include "qorn/dsp/ArbRateResampler.h"
#include "qorn/infra/VecCplx32.h"

namespace {

using QORN::VecCplx32;

constexpr int kSamples = 1000000;

struct DesignRow {
  const char *name;
  float window;
  int nStep;
  float rollf, alpha;
};

const DesignRow kDesigns[] = {{"default", 90.0F, 16, 0.9F, 6.1422F},
                              {"sequential", 10.0F, 200, 0.95F, 6.865F},
                              {"fine", 90.0F, 512, 0.9F, 10.0F}};

using Run = std::function<int(const VecCplx32 &, VecCplx32 &)>;

double Decibels(double x) { return 20.0 * std::log10(std::max(x, 1e-12)); }

// The middle of the outputs for a tone of the given frequency in cycles per input sample.
std::vector<std::complex<double>> Response(const Run &run, double ratio, double frequency) {
  constexpr int kTone = 6000;
  VecCplx32 src(kTone), dst(static_cast<int>(kTone * ratio) + 4000);
  for (int i = 0; i < kTone; ++i) {
    const auto x = std::polar(1.0, 2.0 * M_PI * std::fmod(frequency * i, 1.0));
    src[i] = {static_cast<float>(x.real()), static_cast<float>(x.imag())};
  }
  const int count = run(src, dst);
  std::vector<std::complex<double>> middle;
  for (int i = count / 4; i < count - count / 4; ++i) {
    middle.emplace_back(static_cast<double>(dst[i].re), static_cast<double>(dst[i].im));
  }
  return middle;
}

void Measure(benchmark::State &state, const Run &run, double ratio) {
  const double half = 0.5 * std::min(ratio, 1.0);
  double highest = -400.0, lowest = 400.0, image = -400.0, alias = -400.0;
  for (double f = 0.0; f <= 0.8; f += 0.04) {
    const double frequency = f * half, turn = frequency / ratio;
    const auto outputs = Response(run, ratio, frequency);
    std::complex<double> gain = 0.0;
    double power = 0.0;
    for (std::size_t i = 0; i < outputs.size(); ++i) {
      gain += outputs[i] * std::polar(1.0, -2.0 * M_PI * std::fmod(turn * static_cast<double>(i), 1.0));
      power += std::norm(outputs[i]);
    }
    const auto n = static_cast<double>(outputs.size());
    gain /= n;
    highest = std::max(highest, Decibels(std::abs(gain)));
    lowest = std::min(lowest, Decibels(std::abs(gain)));
    image = std::max(image, Decibels(std::sqrt(std::max(power / n - std::norm(gain), 0.0))));
  }
  for (double f = 1.1; f * half < 0.5 && f < 3.0; f += 0.05) {
    const auto outputs = Response(run, ratio, f * half);
    double power = 0.0;
    for (const auto &x : outputs) power += std::norm(x);
    alias = std::max(alias, Decibels(std::sqrt(power / static_cast<double>(outputs.size()))));
  }
  state.counters["ripple"] = highest - lowest;
  state.counters["images"] = image;
  if (alias > -400.0) state.counters["alias"] = alias;
}

void Time(benchmark::State &state, const Run &run, double ratio, double flops) {
  VecCplx32 src(kSamples), dst(static_cast<int>(kSamples * ratio) + 10000);
  for (int i = 0; i < kSamples; ++i) {
    src[i] = {static_cast<float>(std::sin(0.1 * i)), static_cast<float>(std::cos(0.3 * i))};
  }
  run(src, dst);
  for (auto _ : state) {
    run(src, dst);
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kSamples);
  if (flops > 0.0)
    state.counters["flops"] = benchmark::Counter(flops, benchmark::Counter::kIsIterationInvariantRate);
  Measure(state, run, ratio);
}

const bool registered = [] {
  const std::pair<const char *, double> ratios[] = {
      {"0.7123", 0.7123}, {"0.3333", 1.0 / 3.0}, {"1.2345", 1.2345}};
  for (const auto &[text, ratio] : ratios) {
    const std::string size = std::string("/").append(text);
    for (const DesignRow &design : kDesigns) {
      // Two products and two sums for each tap, and one each to interpolate it; taps repeat for 1/3.
      const double taps = static_cast<double>(design.window) / std::min(ratio, 1.0);
      const double flops = (ratio == 1.0 / 3.0 ? 4.0 : 6.0) * taps * kSamples * ratio;
      const std::string name = std::string("Resample_").append(design.name);
      const auto add = [&](const std::string &variant, const QORN::kernels::Level &level, bool alternate) {
        benchmark::RegisterBenchmark((name + variant + "/" + level.name + size).c_str(),
                                     [=, ratio = ratio](benchmark::State &state) {
                                       const QORN::kernels::ScopedLevel scoped(level);
                                       QORN::ArbRateResampler resampler(ratio, design.window, design.nStep,
                                                                        design.rollf, design.alpha);
                                       resampler.UseAlternateResampler(alternate);
                                       const Run run = [&](const VecCplx32 &src, VecCplx32 &dst) {
                                         resampler.Apply(dst, src, 0.0, src.GetSize());
                                         return dst.GetSize();
                                       };
                                       Time(state, run, ratio, alternate ? 0.0 : flops);
                                     });
      };
      for (const auto &level : QORN::kernels::AvailableLevels()) {
        add("", level, false);
        if (ratio < 1.0) add("InDouble", level, true);
      }
      for (const auto &peer : peers::Resamplers()) {
        benchmark::RegisterBenchmark(
            (name + "/peer:" + peer.name + size).c_str(), [=, ratio = ratio](benchmark::State &state) {
              const auto resampler = peer.make(ratio);
              const Run run = [&](const VecCplx32 &src, VecCplx32 &dst) {
                return resampler->Run(src.GetPtr(), src.GetSize(), dst.GetPtr(), dst.GetSize());
              };
              Time(state, run, ratio, 0.0);
            });
      }
    }
  }
  return true;
}();

} // namespace
