#include "BinaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "Errors.h"

namespace QORN {

static_assert(sizeof(off_t) == 8, "files are larger than 2 GiB");

namespace {

int FlagsOf(BinaryFile::Mode mode) {
  switch (mode) {
  case BinaryFile::Mode::kReplace:
    return O_WRONLY | O_CREAT | O_TRUNC;
  case BinaryFile::Mode::kScratch:
    return O_RDWR | O_CREAT | O_TRUNC;
  case BinaryFile::Mode::kReadRegular:
    return O_RDONLY | O_NONBLOCK;
  default:
    return O_RDONLY;
  }
}

// Moves `bytes` bytes by as many calls of transfer(done, rest) as it takes, and returns how far it came.
template <class Transfer> std::size_t Repeat(std::size_t bytes, Transfer transfer) {
  std::size_t done = 0;
  while (done < bytes) {
    const ssize_t now = transfer(done, bytes - done);
    if (now < 0 && errno == EINTR) continue;
    if (now <= 0) break;
    done += static_cast<std::size_t>(now);
  }
  return done;
}

} // namespace

BinaryFile::BinaryFile(const char *path, Mode mode, const char *module, long line) : m_descriptor(-1) {
  if (path != nullptr) {
    do m_descriptor = open(path, FlagsOf(mode) | O_CLOEXEC, 0666);
    while (m_descriptor < 0 && errno == EINTR);
  }
  struct stat status;
  if (m_descriptor < 0 || fstat(m_descriptor, &status) != 0 || S_ISDIR(status.st_mode) ||
      (mode == Mode::kReadRegular && !S_ISREG(status.st_mode))) {
    Close();
    Throw(errors::kFileOpen, module, line);
  }
}

BinaryFile::BinaryFile(const BinaryFile &other, const char *module, long line)
    : m_descriptor(fcntl(other.m_descriptor, F_DUPFD_CLOEXEC, 0)) {
  if (m_descriptor < 0) Throw(errors::kFileOpen, module, line);
}

BinaryFile::BinaryFile(int descriptor) : m_descriptor(descriptor) {}

BinaryFile::~BinaryFile() { Close(); }

void BinaryFile::Swap(BinaryFile &other) { std::swap(m_descriptor, other.m_descriptor); }

std::int64_t BinaryFile::Size() const {
  struct stat status;
  return fstat(m_descriptor, &status) == 0 ? status.st_size : 0;
}

bool BinaryFile::Resize(std::int64_t bytes) const {
  int result;
  do result = ftruncate(m_descriptor, bytes);
  while (result != 0 && errno == EINTR);
  return result == 0;
}

bool BinaryFile::IsAt(const char *path) const {
  struct stat here, there;
  return fstat(m_descriptor, &here) == 0 && S_ISREG(here.st_mode) && stat(path, &there) == 0 &&
         here.st_dev == there.st_dev && here.st_ino == there.st_ino;
}

std::size_t BinaryFile::Read(void *dst, std::size_t bytes) const {
  return Repeat(bytes, [&](std::size_t done, std::size_t rest) {
    return read(m_descriptor, static_cast<char *>(dst) + done, rest);
  });
}

std::size_t BinaryFile::ReadAt(std::int64_t position, void *dst, std::size_t bytes) const {
  return Repeat(bytes, [&](std::size_t done, std::size_t rest) {
    return pread(m_descriptor, static_cast<char *>(dst) + done, rest, position + static_cast<off_t>(done));
  });
}

bool BinaryFile::Skip(std::int64_t bytes) const { return lseek(m_descriptor, bytes, SEEK_CUR) >= 0; }

bool BinaryFile::Write(const void *src, std::size_t bytes) const {
  return bytes == Repeat(bytes, [&](std::size_t done, std::size_t rest) {
           return write(m_descriptor, static_cast<const char *>(src) + done, rest);
         });
}

bool BinaryFile::WriteAt(std::int64_t position, const void *src, std::size_t bytes) const {
  return bytes == Repeat(bytes, [&](std::size_t done, std::size_t rest) {
           return pwrite(m_descriptor, static_cast<const char *>(src) + done, rest,
                         position + static_cast<off_t>(done));
         });
}

bool BinaryFile::Close() {
  if (m_descriptor < 0) return true;
  const int result = close(m_descriptor);
  m_descriptor = -1;
  // An interrupted close has closed the file.
  return result == 0 || errno == EINTR;
}

} // namespace QORN
