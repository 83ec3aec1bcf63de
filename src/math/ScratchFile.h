// A file that lives no longer than the object which made it.
#ifndef QORN_SRC_MATH_SCRATCHFILE_H
#define QORN_SRC_MATH_SCRATCHFILE_H

#include <cstdint>
#include <string>

#include "infra/BinaryFile.h"

namespace QORN {

/// A file of floats, read and written at any place, and removed with the object. What stands at its path by
/// then and is not this file stays, and so does a symbolic link that leads to it.
class ScratchFile {
public:
  /// Makes the file at path, or where a symbolic link there leads, or, if that belongs to another object, at
  /// a name of its own beside it. Throws 13001 of the module whose path literal is given.
  ScratchFile(const std::string &path, bool beside, const char *module);
  ~ScratchFile();
  ScratchFile(const ScratchFile &) = delete;
  ScratchFile &operator=(const ScratchFile &) = delete;

  /// Makes the file so many zero bytes; false if it cannot have that size.
  bool Clear(std::int64_t bytes) const { return m_file.Resize(0) && m_file.Resize(bytes); }

  /// True if all floats were taken.
  bool Write(std::int64_t position, const float *src, int count) const;

  /// Reads floats, zeros for what cannot be read; true if there are none of those.
  bool Read(std::int64_t position, float *dst, int count) const;

private:
  std::string m_path;
  BinaryFile m_file;
};

} // namespace QORN

#endif
