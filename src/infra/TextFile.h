// Text files of the containers: opening, closing on every path, and reading records of numbers.
#ifndef QORN_SRC_INFRA_TEXTFILE_H
#define QORN_SRC_INFRA_TEXTFILE_H

#include <algorithm>
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

/// Scans an integer as the format "%d" does, and keeps the low 32 bits of one beyond int; false if there is
/// none.
inline bool ScanNumber(std::FILE *file, int &value) {
  const auto isDigit = [](int c) { return c >= '0' && c <= '9'; };
  int c = std::getc(file);
  while (c == ' ' || (c >= '\t' && c <= '\r')) c = std::getc(file);
  const bool negative = c == '-';
  if (c == '-' || c == '+') c = std::getc(file);
  const bool found = isDigit(c);
  unsigned bits = 0;
  for (; isDigit(c); c = std::getc(file)) bits = bits * 10 + static_cast<unsigned>(c - '0');
  std::ungetc(c, file);
  if (found) value = static_cast<int>(negative ? 0 - bits : bits);
  return found;
}

/// Scans one record of up to three numbers by a format; true if it has as many as the format.
template <class N> bool ScanRecord(std::FILE *file, const char *format, int columns, N (&fields)[3]) {
  return std::fscanf(file, format, &fields[0], &fields[1], &fields[2]) == columns;
}

/// Scans one record of up to three integers; true if it has as many.
inline bool ScanRecord(std::FILE *file, int columns, int (&fields)[3]) {
  return std::all_of(fields, fields + columns, [file](int &field) { return ScanNumber(file, field); });
}

/// Reads a text file of records of up to three numbers of type N into a vector: counts the records up to the
/// first for which scan(file, fields) is false, resizes, and reads them again, element = store(fields).
/// Should the file give fewer at the second reading, the vector has that many elements.
template <class N, class Vector, class Scan, class Store>
void ImportRecords(Vector &vector, const char *path, const char *module, Scan scan, Store store) {
  const TextFile file = OpenText(path, "r", module);
  N fields[3] = {};
  constexpr int kMost = std::numeric_limits<int>::max();
  int count = 0;
  while (count < kMost && scan(file.get(), fields)) ++count;
  vector.Resize(count);
  std::rewind(file.get());
  int stored = 0;
  while (stored < count && scan(file.get(), fields)) vector[stored++] = store(fields);
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
