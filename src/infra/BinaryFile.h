// Files of bytes, without the buffer that a stream would allocate and copy through.
#ifndef QORN_SRC_INFRA_BINARYFILE_H
#define QORN_SRC_INFRA_BINARYFILE_H

#include <cstddef>
#include <cstdint>

namespace QORN {

/// A file that is open for reading or writing, closed with the object. Interrupted and partial transfers are
/// carried on.
class BinaryFile {
public:
  enum class Mode {
    kRead,        ///< anything but a folder; waits for the writer of a pipe
    kReadRegular, ///< a file of the disk, which has a size and can be read at any place; waits for nothing
    kReplace,     ///< for writing, empty at first
    kScratch      ///< for reading and writing, empty at first
  };

  /// Opens the file; throws 13001 of the module whose path literal is given if that fails, path is null or
  /// the file is not what the mode asks for.
  BinaryFile(const char *path, Mode mode, const char *module, long line = __builtin_LINE());

  /// Another handle on the file that other has open; throws 13001 of the module if there is none left.
  BinaryFile(const BinaryFile &other, const char *module, long line = __builtin_LINE());

  /// Takes over an open file; a negative descriptor is none.
  explicit BinaryFile(int descriptor);

  ~BinaryFile();
  BinaryFile(const BinaryFile &) = delete;
  BinaryFile &operator=(const BinaryFile &) = delete;

  void Swap(BinaryFile &other);

  /// The system's number of the open file, or a negative one; still owned by the object.
  int Descriptor() const { return m_descriptor; }

  /// Bytes of a regular file, now.
  std::int64_t Size() const;

  /// Cuts the file or extends it by zeros, which take no room on the disk; false if it cannot have that size.
  bool Resize(std::int64_t bytes) const;

  /// True if path names the file that is open, and that file is one of the disk.
  bool IsAt(const char *path) const;

  /// Reads up to `bytes` bytes from where the last call ended and returns how many there were. The system's
  /// error stands in errno if that is why they are fewer.
  std::size_t Read(void *dst, std::size_t bytes) const;

  /// The same from `position` on. Any number of threads may do so at once.
  std::size_t ReadAt(std::int64_t position, void *dst, std::size_t bytes) const;

  /// Moves the place of the next Read; false if the file allows no such place.
  bool Skip(std::int64_t bytes) const;

  /// True if all bytes were taken.
  bool Write(const void *src, std::size_t bytes) const;

  /// The same at `position`, past the end as well.
  bool WriteAt(std::int64_t position, const void *src, std::size_t bytes) const;

  /// Closes the file; false if something that was written is lost.
  bool Close();

private:
  int m_descriptor;
};

} // namespace QORN

#endif
