// Reading a recording from the page cache: bytes of the file per second, beside reading them raw.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/utils/IQFReader.h"

namespace {

constexpr int kFrames = 4096;
constexpr int kFrameBytes = 4120;
constexpr int kChunk = 64; // frames in one read

class Recording {
public:
  Recording()
      : m_path(std::filesystem::temp_directory_path() / ("qorn-bench-" + std::to_string(getpid()) + ".iqf")) {
    const std::string header =
        "FFTPoints=1024 BlockSize=64 FrameLength=100u ValidFrames=" + std::to_string(kFrames);
    const std::string length = std::to_string(header.size());
    std::ofstream file(m_path, std::ios::binary);
    file << length.size() << length << header;
    std::string frame(kFrameBytes, '\0');
    for (std::size_t i = 24; i < frame.size(); ++i) frame[i] = static_cast<char>(i * 37);
    for (int f = 0; f < kFrames; ++f) file << frame;
  }
  ~Recording() { std::filesystem::remove(m_path); }
  Recording(const Recording &) = delete;
  Recording &operator=(const Recording &) = delete;
  std::string Path() const { return m_path.string(); }

private:
  std::filesystem::path m_path;
};

const Recording &TheRecording() {
  static const Recording recording;
  return recording;
}

void SetRate(benchmark::State &state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * kFrames * kFrameBytes);
}

void ReadIQData(benchmark::State &state) {
  const QORN::IQFReader reader(TheRecording().Path().c_str());
  QORN::VecCplx32 samples;
  for (auto _ : state) {
    for (int f = 0; f < kFrames; f += kChunk) {
      reader.ReadIQData(f * 1024, kChunk * 1024, samples);
      benchmark::DoNotOptimize(samples.GetPtr());
    }
  }
  SetRate(state);
}

void RawRead(benchmark::State &state) {
  const int file = open(TheRecording().Path().c_str(), O_RDONLY);
  std::vector<char> bytes(static_cast<std::size_t>(kChunk) * kFrameBytes);
  for (auto _ : state) {
    for (int f = 0; f < kFrames; f += kChunk) {
      const off_t position = static_cast<off_t>(f) * kFrameBytes;
      benchmark::DoNotOptimize(pread(file, bytes.data(), bytes.size(), position));
    }
  }
  close(file);
  SetRate(state);
}

BENCHMARK(ReadIQData)->Name("ReadIQData/best/17MB");
BENCHMARK(RawRead)->Name("ReadIQData/peer:pread/17MB");

} // namespace
