// What the fuzzers share.
#ifndef QORN_FUZZ_INPUT_H
#define QORN_FUZZ_INPUT_H

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "qorn/infra/QORNException.h"

namespace QORN::fuzz {

/// Nothing but QORNException may come out of read().
template <class Read> void Try(const Read &read) {
  try {
    read();
  } catch (const QORNException &) {
  }
}

/// A file in memory with the bytes that the fuzzer made.
class Input {
public:
  Input(const std::uint8_t *data, std::size_t size)
      : m_file(memfd_create("input", 0)), m_path("/proc/self/fd/" + std::to_string(m_file)) {
    m_whole = m_file >= 0 && write(m_file, data, size) == static_cast<ssize_t>(size);
  }
  ~Input() {
    if (m_file >= 0) close(m_file);
  }
  Input(const Input &) = delete;
  Input &operator=(const Input &) = delete;

  explicit operator bool() const { return m_whole; }
  const char *Path() const { return m_path.c_str(); }

private:
  int m_file;
  std::string m_path;
  bool m_whole;
};

} // namespace QORN::fuzz

#endif
