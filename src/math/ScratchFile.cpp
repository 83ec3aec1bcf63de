#include "ScratchFile.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "infra/Errors.h"

namespace QORN {

namespace {

namespace fs = std::filesystem;

// What the symbolic links that end in path lead to, whether that exists or not. Links that go round are left
// to the opening of the file, which fails.
fs::path Resolved(fs::path path) {
  constexpr int kMostLinks = 40;
  std::error_code error;
  for (int i = 0; i < kMostLinks && fs::is_symlink(fs::symlink_status(path, error)); ++i)
    path = path.parent_path() / fs::read_symlink(path, error);
  return path;
}

// The name holds when the current folder changes, and it is the file's own: a link stays when the file goes.
// Beside path, an empty file takes it at once.
std::string NameOf(const std::string &path, bool beside, const char *module) {
  std::error_code error;
  std::string name = path.empty() ? path : Resolved(fs::absolute(path, error)).string();
  if (!beside) return name;
  name.append(".XXXXXX");
  const int descriptor = path.empty() ? -1 : mkstemp(name.data());
  if (descriptor < 0) Throw(errors::kFileOpen, module);
  close(descriptor);
  return name;
}

std::size_t BytesOf(int count) { return sizeof(float) * static_cast<std::size_t>(count); }

} // namespace

ScratchFile::ScratchFile(const std::string &path, bool beside, const char *module)
    : m_path(NameOf(path, beside, module)), m_file(m_path.c_str(), BinaryFile::Mode::kScratch, module) {}

ScratchFile::~ScratchFile() {
  if (m_file.IsAt(m_path.c_str())) unlink(m_path.c_str());
}

bool ScratchFile::Write(std::int64_t position, const float *src, int count) const {
  return m_file.WriteAt(position, src, BytesOf(count));
}

bool ScratchFile::Read(std::int64_t position, float *dst, int count) const {
  const auto whole = static_cast<int>(m_file.ReadAt(position, dst, BytesOf(count)) / sizeof(float));
  std::fill(dst + whole, dst + count, 0.0F);
  return whole == count;
}

} // namespace QORN
