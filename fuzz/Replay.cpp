// Runs a fuzzer on each file of a folder, and on every truncation of the shorter ones.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int main(int argc, char **argv) {
  if (argc != 2) return 2;
  int files = 0;
  for (const auto &entry : std::filesystem::directory_iterator(argv[1])) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    const auto run = [&](std::size_t size) {
      // An array of its own length, so that a sanitizer sees a read beyond it.
      const std::string part = bytes.substr(0, size);
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(part.data()), part.size());
    };
    run(bytes.size());
    for (std::size_t size = 0; size < bytes.size() && size < 512; ++size) run(size);
    ++files;
  }
  std::printf("%d files\n", files);
  return files > 0 ? 0 : 1;
}
