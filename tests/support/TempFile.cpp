#include "support/TempFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace QORN::test {

TempFile::TempFile(const std::string &content) : path_(testing::TempDir().append("qorn-XXXXXX")) {
  const int descriptor = mkstemp(path_.data());
  if (descriptor < 0) std::abort();
  close(descriptor);
  std::ofstream(path_, std::ios::binary) << content;
}

TempFile::~TempFile() { std::remove(path_.c_str()); }

void TempFile::BecomePipe() const {
  if (std::remove(path_.c_str()) != 0 || mkfifo(path_.c_str(), 0600) != 0) std::abort();
}

std::string TempFile::Content() const {
  std::ifstream file(path_, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

int OpenFiles() {
  int count = 0;
  for ([[maybe_unused]] const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) ++count;
  return count;
}

} // namespace QORN::test
