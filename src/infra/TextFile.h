// Text files of the containers: opening, closing on every path, and reading records of numbers.
#ifndef QORN_SRC_INFRA_TEXTFILE_H
#define QORN_SRC_INFRA_TEXTFILE_H

#include <cstdio>
#include <limits>
#include <memory>

#include "Errors.h"

namespace QORN {

struct FileCloser {
  void operator()(std::FILE *file) const { std::fclose(file); }
};
using TextFile = std::unique_ptr<std::FILE, FileCloser>;

/// Opens a file as std::fopen does; throws 13001 of the module whose path literal is given.
inline TextFile OpenText(const char *path, const char *mode, const char *module,
                         long line = __builtin_LINE()) {
  TextFile file(path != nullptr ? std::fopen(path, mode) : nullptr);
  if (!file) Throw(errors::kFileOpen, module, line);
  return file;
}

/// Scans one record of up to three numbers; true if it has as many as the format.
template <class N> bool ScanRecord(std::FILE *file, const char *format, int columns, N (&fields)[3]) {
  return std::fscanf(file, format, &fields[0], &fields[1], &fields[2]) == columns;
}

/// Reads a text file of records of `columns` numbers of type N, which the scanning format describes, into a
/// vector: counts the records up to the first that is not complete, resizes, and reads them again, element =
/// store(fields). Should the file give fewer at the second reading, the vector has that many elements.
template <class N, class Vector, class Store>
void ImportRecords(Vector &vector, const char *path, const char *module, const char *format, int columns,
                   Store store) {
  const TextFile file = OpenText(path, "r", module);
  N fields[3] = {};
  constexpr int kMost = std::numeric_limits<int>::max();
  int count = 0;
  while (count < kMost && ScanRecord(file.get(), format, columns, fields)) ++count;
  vector.Resize(count);
  std::rewind(file.get());
  int stored = 0;
  while (stored < count && ScanRecord(file.get(), format, columns, fields)) vector[stored++] = store(fields);
  vector.Resize(stored);
}

/// Writes a text file, writeLine(file, i) for 0 <= i < length, and tells the path on the standard output if
/// announce is true.
template <class WriteLine>
void DumpLines(const char *path, bool announce, const char *module, int length, WriteLine writeLine) {
  {
    const TextFile file = OpenText(path, "w", module);
    for (int i = 0; i < length; ++i) writeLine(file.get(), i);
  }
  if (announce) std::printf("\n====%s saved", path);
}

} // namespace QORN

#endif
