#include "OutputFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "Failure.h"
#include "Text.h"

namespace tool {

namespace fs = std::filesystem;

namespace {

// One spelling for each file, whether it is there or not.
fs::path Canonical(const fs::path &path) {
  std::error_code error;
  const fs::path whole = fs::absolute(path, error);
  const fs::path canonical = fs::weakly_canonical(whole, error);
  return error ? whole.lexically_normal() : canonical;
}

// Two devices of one kind are not told apart: what goes to a terminal is all seen, and to another all lost.
bool IsWhatOutputGoesTo(const std::string &path) {
  struct stat there {
  }, output{};
  return stat(path.c_str(), &there) == 0 && fstat(STDOUT_FILENO, &output) == 0 &&
         there.st_dev == output.st_dev && there.st_ino == output.st_ino && !S_ISCHR(there.st_mode);
}

// Long work is not to go on when its result has no place. The standard output outlives it, and is quiet
// again.
class Throwing {
public:
  explicit Throwing(std::ostream &stream) : m_stream(stream) {
    stream.exceptions(std::ios::badbit | std::ios::failbit);
  }
  ~Throwing() { m_stream.exceptions(std::ios::goodbit); }
  Throwing(const Throwing &) = delete;
  Throwing &operator=(const Throwing &) = delete;

private:
  std::ostream &m_stream;
};

} // namespace

OutputFile::OutputFile(std::string option, const std::string &path, const std::string &recording)
    : m_option(std::move(option)), m_path(path) {
  const auto refuse = [&](const std::string &reason) {
    throw UsageError(m_option + ": " + Quoted(path) + " " + reason);
  };
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (fs::is_directory(status)) refuse("is a folder");
  if (!recording.empty() && fs::exists(status) && fs::equivalent(path, recording, error))
    refuse("is the recording itself");
  // What a link of the system to a pipe reads as is no path.
  m_standard = IsWhatOutputGoesTo(path);
  m_direct = m_standard || (fs::exists(status) && !fs::is_regular_file(status));
  error.clear();
  m_place = !m_direct && fs::is_symlink(path) ? fs::weakly_canonical(path, error) : fs::path(path);
  if (error) refuse("cannot be written: " + error.message());
  if (m_direct) return;
  const fs::path folder = m_place.has_parent_path() ? m_place.parent_path() : fs::path(".");
  if (!m_place.has_filename()) refuse("is not the name of a file");
  if (!fs::is_directory(folder, error))
    refuse("cannot be written: there is no folder " + Quoted(folder.string()));
  if (access(folder.c_str(), W_OK | X_OK) != 0)
    refuse("cannot be written: " + std::string(std::strerror(errno)));
  if (fs::exists(status) && access(m_place.c_str(), W_OK) != 0)
    refuse("cannot be written: " + std::string(std::strerror(errno)));
}

void OutputFile::Fail(const std::string &reason) const {
  throw DataError(m_option + ": " + Quoted(m_path) + " could not be written: " + reason);
}

std::ostream &OutputFile::Open() {
  if (m_standard) return std::cout;
  if (m_direct) {
    m_stream.open(m_place, std::ios::binary);
  } else {
    // Its own name may be as long as a name can be.
    std::string name = (m_place.parent_path() / ".qorn-XXXXXX").string();
    const int descriptor = mkstemp(name.data());
    if (descriptor < 0) Fail(std::strerror(errno));
    m_temporary.emplace(name);
    // A new file gets the permissions that any program would give it; an old one keeps its own.
    struct stat old {};
    const mode_t mask = umask(0);
    umask(mask);
    const mode_t mode = stat(m_place.c_str(), &old) == 0 ? old.st_mode & 0777U : 0666U & ~mask;
    fchmod(descriptor, mode);
    close(descriptor);
    m_stream.open(m_temporary->Path(), std::ios::binary);
  }
  if (!m_stream) Fail(std::strerror(errno));
  return m_stream;
}

void OutputFile::Write(const Writer &writer) {
  std::ostream &stream = Open();
  errno = 0;
  try {
    const Throwing throwing(stream);
    writer(stream);
    stream.flush();
    if (m_stream.is_open()) m_stream.close();
  } catch (const std::ios_base::failure &) {
    Fail(errno != 0 ? std::strerror(errno) : "the device is full or gone");
  }
}

void OutputFile::Commit() {
  if (m_direct) return;
  std::error_code error;
  fs::rename(m_temporary->Path(), m_place, error);
  if (error) Fail(error.message());
  m_temporary->Keep();
  m_temporary.reset();
}

OutputFiles::OutputFiles(std::initializer_list<Request> requests, const std::string &recording,
                         std::initializer_list<Request> inputs) {
  for (const Request &request : requests) {
    m_files.push_back(nullptr);
    if (request.path.empty()) continue;
    auto file = std::make_unique<OutputFile>(request.option, request.path, recording);
    const auto refuse = [&](const std::string &other) {
      throw UsageError(file->Option() + ": " + Quoted(request.path) + " is the file of " + other);
    };
    for (const std::unique_ptr<OutputFile> &other : m_files)
      if (other && ((other->IsStandardOutput() && file->IsStandardOutput()) ||
                    Canonical(other->Place()) == Canonical(file->Place())))
        refuse(other->Option());
    std::error_code error;
    for (const Request &input : inputs)
      if (fs::is_regular_file(file->Place(), error) && fs::equivalent(file->Place(), input.path, error))
        refuse(input.option);
    m_files.back() = std::move(file);
  }
}

std::ostream &OutputFiles::Report() const {
  const bool isTaken = std::any_of(m_files.begin(), m_files.end(),
                                   [](const auto &file) { return file && file->IsStandardOutput(); });
  return isTaken ? std::cerr : std::cout;
}

void OutputFiles::Write(std::initializer_list<Writer> writers) {
  auto writer = writers.begin();
  for (const std::unique_ptr<OutputFile> &file : m_files) {
    if (file) file->Write(*writer);
    ++writer;
  }
  for (const std::unique_ptr<OutputFile> &file : m_files)
    if (file) file->Commit();
}

} // namespace tool
