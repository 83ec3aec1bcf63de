// Signals of every type in steady state, in samples per second. Rows are Generator_<type>/best/samples, at 4
// samples per symbol where there are symbols; those named 2.7 have that many, resampled from 3. The peers
// shape as many symbols with as many taps (201) and do no more: their symbols are drawn beforehand, and they
// neither resample nor set a level and a phase.
//
// OfdmBurst is the 802.11a burst at 54 Mbit/s, at the rate of its transform, and those with a number at so
// many samples for one of these.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <string>
#include <vector>

#include "peers/generator.h"
#include "qorn/dsp/BasebandSigGen.h"
#include "qorn/dsp/OFDMSigGen.h"

namespace {

using Gen = QORN::BasebandSigGen;

struct Row {
  const char *name;
  Gen::SignalType type;
  bool qam;
  int bits; // of the peer's symbols; 0 if it has none
};

constexpr Row kRows[] = {
    {"CW", Gen::CW, false, 0},       {"AM", Gen::AM, false, 0},        {"FM", Gen::FM, false, 0},
    {"PM", Gen::PM, false, 0},       {"BPSK", Gen::BPSK, false, 1},    {"QPSK", Gen::QPSK, false, 2},
    {"PSK8", Gen::PSK8, false, 3},   {"PSK16", Gen::PSK16, false, 4},  {"QAM16", Gen::QAM16, true, 4},
    {"QAM64", Gen::QAM64, true, 6},  {"QAM256", Gen::QAM256, true, 8}, {"FSK2", Gen::FSK2, false, 0},
    {"FSK4", Gen::FSK4, false, 0},   {"FSK8", Gen::FSK8, false, 0},    {"FSK16", Gen::FSK16, false, 0},
    {"Pulse", Gen::Pulse, false, 0}, {"Chirp", Gen::Chirp, false, 0},
};

void Run(benchmark::State &state, Gen &generator, int n, bool addNoise) {
  QORN::VecCplx32 signal;
  generator.GenerateSignal(signal, n, addNoise);
  for (auto _ : state) {
    generator.GenerateSignal(signal, n, addNoise);
    benchmark::DoNotOptimize(signal.GetPtr());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void Ours(benchmark::State &state, Gen::SignalType type, double samplesPerSymbol, int n, bool addNoise) {
  Gen generator(type);
  generator.SetSampleRate(1e6);
  generator.SetParameters_CW(12345.0);
  generator.SetParameters_AM_FM_PM(1000.0, 50.0);
  generator.SetParameters_PSK_QAM(1e6 / samplesPerSymbol, 0.25);
  generator.SetParameters_FSK(1e6 / samplesPerSymbol, 50e3, false);
  generator.SetParameters_Pulse(100e-6, 500e-6, 200e3);
  Run(state, generator, n, addNoise);
}

void Burst(benchmark::State &state, double ratio, int n) {
  QORN::OFDMSigGen generator;
  generator.SetSampleRate(40e6 * ratio);
  Run(state, generator, n, false);
}

#if defined(QORN_PEER_LIQUID)
void Peer(benchmark::State &state, const Row &row, int n) {
  constexpr int kPerSymbol = 4;
  peers::ShapedSymbols peer(row.qam, row.bits, kPerSymbol, 25, 0.25F);
  std::vector<unsigned int> symbols(static_cast<std::size_t>(n / kPerSymbol));
  unsigned int random = 1;
  for (unsigned int &symbol : symbols) {
    random = random * 1664525U + 1013904223U;
    symbol = random >> (32 - row.bits);
  }
  std::vector<QORN::Cplx32> signal(static_cast<std::size_t>(n));
  for (auto _ : state) {
    peer.Generate(symbols.data(), n / kPerSymbol, signal.data());
    benchmark::DoNotOptimize(signal.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * n);
}
#endif

[[maybe_unused]] const bool registered = [] {
  for (const int n : {4096, 65536}) {
    const std::string size = std::to_string(n);
    benchmark::RegisterBenchmark(("OfdmBurst/best/" + size).c_str(), Burst, 1.0, n);
    benchmark::RegisterBenchmark(("OfdmBurst_0.5/best/" + size).c_str(), Burst, 0.5, n);
    benchmark::RegisterBenchmark(("OfdmBurst_1.536/best/" + size).c_str(), Burst, 1.536, n);
  }
  for (const int n : {4096, 262144}) {
    const std::string size = std::to_string(n);
    for (const Row &row : kRows) {
      const std::string workload = std::string("Generator_") + row.name;
      const auto add = [&](const std::string &name, double samplesPerSymbol, bool addNoise) {
        benchmark::RegisterBenchmark((name + "/best/" + size).c_str(), Ours, row.type, samplesPerSymbol, n,
                                     addNoise);
      };
      add(workload, 4.0, false);
      if (row.type == Gen::CW) add(workload + "_noise", 4.0, true);
      if (row.type == Gen::QPSK || row.type == Gen::FSK2) add(workload + "_2.7", 2.7, false);
#if defined(QORN_PEER_LIQUID)
      if (row.bits > 0) {
        benchmark::RegisterBenchmark((workload + "/peer:liquid/" + size).c_str(), Peer, row, n);
      }
#endif
    }
  }
  return true;
}();

} // namespace
