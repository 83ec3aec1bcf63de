// Recordings and vector files of 256 MB in the page cache: bytes of the file per second, beside plain reading
// and writing of the same bytes, with a plain loop where samples are converted.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "peers/recording.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/utils/IQFReader.h"
#include "qorn/utils/XIQReader.h"

namespace {

constexpr int kFrameBytes = 4120;
constexpr int kFrames = 65536;
constexpr int kSamples = 1 << 25; // of 8 bytes, as recorded and in the vector files
constexpr int kChunk = 1 << 16;   // samples in one read

// A file of the temporary folder, made once and removed at the end.
class BenchFile {
public:
  BenchFile(const char *name, const std::function<void(std::ofstream &)> &write)
      : m_path(std::filesystem::temp_directory_path() / (name + std::to_string(getpid()))) {
    std::ofstream file(m_path, std::ios::binary);
    write(file);
  }
  ~BenchFile() {
    std::error_code ignored;
    std::filesystem::remove(m_path, ignored);
  }
  BenchFile(const BenchFile &) = delete;
  BenchFile &operator=(const BenchFile &) = delete;
  std::string Path() const { return m_path.string(); }
  std::int64_t Size() const { return static_cast<std::int64_t>(std::filesystem::file_size(m_path)); }

private:
  std::filesystem::path m_path;
};

// A megabyte of noise, as samples are.
const std::string &Noise() {
  static const std::string noise = [] {
    std::mt19937 random(1);
    std::string bytes(1 << 20, '\0');
    for (char &c : bytes) c = static_cast<char>(random());
    return bytes;
  }();
  return noise;
}

const BenchFile &IqfFile() {
  static const BenchFile file("qorn-bench-iqf-", [](std::ofstream &out) {
    const std::string header = "FFTPoints=1024 BlockSize=64 FrameLength=100u ValidFrames=65536";
    out << "2" << header.size() << header;
    std::string frame(24, '\0');
    frame += Noise().substr(0, 4096);
    for (int f = 0; f < kFrames; ++f) out << frame;
  });
  return file;
}

const BenchFile &XiqFile() {
  static const BenchFile file("qorn-bench-xiq-", [](std::ofstream &out) {
    std::string header =
        "<DataFile offset=\"01024\">\n<Setup>\n</Setup>\n<Scaling>0.5</Scaling>\n<NumberSamples>";
    header += std::to_string(kSamples) + "</NumberSamples>\n<DataSet>\n</DataSetsCollection>\n";
    header.resize(1024, ' ');
    out << header;
    for (int i = 0; i < kSamples / (1 << 17); ++i) out << Noise();
  });
  return file;
}

const BenchFile &EmptyFile() {
  static const BenchFile file("qorn-bench-vec-", [](std::ofstream &) {});
  return file;
}

struct Closer {
  void operator()(std::FILE *file) const { std::fclose(file); }
};
std::unique_ptr<std::FILE, Closer> OpenPlain(const std::string &path, const char *mode) {
  return std::unique_ptr<std::FILE, Closer>(std::fopen(path.c_str(), mode));
}

void SetRate(benchmark::State &state, std::int64_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * bytes);
}

void ReadIqf(benchmark::State &state) {
  const QORN::IQFReader reader(IqfFile().Path().c_str());
  QORN::VecCplx32 samples;
  for (auto _ : state) {
    for (int f = 0; f < kFrames; f += kChunk / 1024) {
      reader.ReadIQData(f * 1024, kChunk, samples);
      benchmark::DoNotOptimize(samples.GetPtr());
    }
  }
  SetRate(state, IqfFile().Size());
}

void PlainIqf(benchmark::State &state) {
  std::vector<char> bytes(static_cast<std::size_t>(kChunk) / 1024 * kFrameBytes);
  QORN::VecCplx32 samples(kChunk);
  for (auto _ : state) {
    const auto file = OpenPlain(IqfFile().Path(), "rb");
    std::fseek(file.get(), 65, SEEK_SET);
    for (int f = 0; f < kFrames; f += kChunk / 1024) {
      benchmark::DoNotOptimize(std::fread(bytes.data(), 1, bytes.size(), file.get()));
      for (int k = 0; k < kChunk / 1024; ++k) {
        peers::FrameToVolts(bytes.data() + k * kFrameBytes + 24, samples.GetPtr(k * 1024), 1024, 0.5, 0.25,
                            3e-5);
      }
      benchmark::DoNotOptimize(samples.GetPtr());
    }
  }
  SetRate(state, IqfFile().Size());
}

void OpenXiq(benchmark::State &state) {
  const std::string path = XiqFile().Path();
  for (auto _ : state) {
    const QORN::XIQReader reader(path.c_str());
    benchmark::DoNotOptimize(reader.QueryNumDataSets());
  }
  SetRate(state, XiqFile().Size());
}

// What opening cannot do without: the bytes of the file, once.
void PlainPass(benchmark::State &state) {
  std::vector<char> bytes(1 << 18);
  for (auto _ : state) {
    const auto file = OpenPlain(XiqFile().Path(), "rb");
    while (std::fread(bytes.data(), 1, bytes.size(), file.get()) == bytes.size()) benchmark::ClobberMemory();
  }
  SetRate(state, XiqFile().Size());
}

template <class Vector> void ReadXiq(benchmark::State &state) {
  const QORN::XIQReader reader(XiqFile().Path().c_str());
  Vector samples;
  for (auto _ : state) {
    for (int i = 0; i < kSamples; i += kChunk) {
      reader.ReadIQSamples(samples, 0, i, kChunk);
      benchmark::DoNotOptimize(samples.GetPtr());
    }
  }
  SetRate(state, XiqFile().Size());
}

template <class Vector, class Scale> void PlainXiq(benchmark::State &state) {
  std::vector<int> pairs(2 * kChunk);
  Vector samples(kChunk);
  for (auto _ : state) {
    const auto file = OpenPlain(XiqFile().Path(), "rb");
    std::fseek(file.get(), 1024, SEEK_SET);
    for (int i = 0; i < kSamples; i += kChunk) {
      benchmark::DoNotOptimize(std::fread(pairs.data(), sizeof(int), pairs.size(), file.get()));
      peers::PairsToVolts(pairs.data(), samples.GetPtr(), kChunk, Scale{0.5});
      benchmark::DoNotOptimize(samples.GetPtr());
    }
  }
  SetRate(state, XiqFile().Size());
}

void Store(benchmark::State &state) {
  const QORN::VecCplx32 vector(kSamples);
  const std::string path = EmptyFile().Path();
  for (auto _ : state) vector.Store(path.c_str());
  SetRate(state, EmptyFile().Size());
}

void PlainStore(benchmark::State &state) {
  const QORN::VecCplx32 vector(kSamples);
  const std::string header(108, '\0');
  for (auto _ : state) {
    const auto file = OpenPlain(EmptyFile().Path(), "wb");
    std::fwrite(header.data(), header.size(), 1, file.get());
    std::fwrite(vector.GetPtr(), sizeof(QORN::Cplx32), kSamples, file.get());
  }
  SetRate(state, EmptyFile().Size());
}

void Load(benchmark::State &state) {
  QORN::VecCplx32 vector(kSamples);
  const std::string path = EmptyFile().Path();
  vector.Store(path.c_str());
  for (auto _ : state) vector.Load(path.c_str());
  SetRate(state, EmptyFile().Size());
}

void PlainLoad(benchmark::State &state) {
  QORN::VecCplx32 vector(kSamples);
  std::string header(108, '\0');
  vector.Store(EmptyFile().Path().c_str());
  for (auto _ : state) {
    const auto file = OpenPlain(EmptyFile().Path(), "rb");
    benchmark::DoNotOptimize(std::fread(header.data(), header.size(), 1, file.get()));
    benchmark::DoNotOptimize(std::fread(vector.GetPtr(), sizeof(QORN::Cplx32), kSamples, file.get()));
  }
  SetRate(state, EmptyFile().Size());
}

BENCHMARK(ReadIqf)->Name("ReadIQData/best/256MB");
BENCHMARK(PlainIqf)->Name("ReadIQData/peer:fread/256MB");
BENCHMARK(OpenXiq)->Name("OpenXIQ/best/256MB");
BENCHMARK(PlainPass)->Name("OpenXIQ/peer:fread/256MB");
BENCHMARK(ReadXiq<QORN::VecCplx32>)->Name("ReadIQSamples32/best/256MB");
BENCHMARK(PlainXiq<QORN::VecCplx32, float>)->Name("ReadIQSamples32/peer:fread/256MB");
BENCHMARK(ReadXiq<QORN::VecCplx64>)->Name("ReadIQSamples64/best/256MB");
BENCHMARK(PlainXiq<QORN::VecCplx64, double>)->Name("ReadIQSamples64/peer:fread/256MB");
BENCHMARK(Store)->Name("Store/best/256MB");
BENCHMARK(PlainStore)->Name("Store/peer:fwrite/256MB");
BENCHMARK(Load)->Name("Load/best/256MB");
BENCHMARK(PlainLoad)->Name("Load/peer:fread/256MB");

} // namespace
