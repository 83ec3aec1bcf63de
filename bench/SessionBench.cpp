// Doubles to the interpreter of a session and back, beside writing a file of the temporary folder and reading
// it. Time passes on both sides of a session, so it is the clock's.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "qorn/infra/VecReal64.h"
#include "qorn/utils/MLAccess.h"
#include "qorn/utils/MatlabProcess.h"

namespace {

using namespace QORN;

void SetBytes(benchmark::State &state, int n) {
  state.SetBytesProcessed(state.iterations() * std::int64_t{2} * n *
                          static_cast<std::int64_t>(sizeof(double)));
}

void Session(benchmark::State &state) {
  auto engine = std::make_unique<MatlabProcess>();
  if (!engine->IsInitialized()) {
    state.SkipWithError("neither MATLAB nor GNU Octave could be started");
    return;
  }
  MLAccess access(nullptr, std::move(engine));
  const int n = static_cast<int>(state.range(0));
  VecReal64 sent(n), got;
  for (int i = 0; i < n; ++i) sent[i] = i;
  for (auto _ : state) {
    access.Send("x", sent);
    if (access.Get("x", got) != n) {
      state.SkipWithError(access.GetEngine()->GetLastMessage());
      return;
    }
    benchmark::ClobberMemory();
  }
  SetBytes(state, n);
}

void RawFile(benchmark::State &state) {
  const int n = static_cast<int>(state.range(0));
  const std::size_t bytes = static_cast<std::size_t>(n) * sizeof(double);
  VecReal64 sent(n), got(n);
  for (int i = 0; i < n; ++i) sent[i] = i;
  std::string path = (std::filesystem::temp_directory_path() / "qorn-bench-XXXXXX").string();
  const int file = mkstemp(path.data());
  bool good = file >= 0;
  for (auto _ : state) {
    // As with a session, every value sent replaces the file.
    good = good && ftruncate(file, 0) == 0 &&
           pwrite(file, sent.GetPtr(), bytes, 0) == static_cast<ssize_t>(bytes) &&
           pread(file, got.GetPtr(), bytes, 0) == static_cast<ssize_t>(bytes);
    benchmark::ClobberMemory();
  }
  if (!good) state.SkipWithError("the file could not be written");
  close(file);
  unlink(path.c_str());
  SetBytes(state, n);
}

void Sizes(benchmark::internal::Benchmark *bench) {
  for (const int n : {1, 1000, 1000000, 10000000}) bench->Arg(n);
  bench->UseRealTime();
}

BENCHMARK(Session)->Name("SessionRoundTrip/best")->Apply(Sizes);
BENCHMARK(RawFile)->Name("SessionRoundTrip/peer:file")->Apply(Sizes);

} // namespace
