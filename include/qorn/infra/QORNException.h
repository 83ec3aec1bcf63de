#ifndef QORN_INFRA_QORNEXCEPTION_H
#define QORN_INFRA_QORNEXCEPTION_H

#include <cstdint>

#include "qorn/Export.h"

namespace QORN {

/// The one type that the library throws, by value: a plain record of code, message, source path and line.
///
/// Message and path are static strings that the record does not own, so copying it is cheap and a throw
/// cannot itself run out of memory. It does not derive from std::exception: catch it by its own name.
///
/// | Code  | Message                          | Raised when |
/// |-------|----------------------------------|-------------|
/// | 3     | MATLAB access error              | the MATLAB engine exists but is not connected |
/// | 10001 | unexpected software error        | a base container was asked to create storage |
/// | 10002 | invalid input parameter          | an argument is refused |
/// | 11001 | memory allocation error          | there is no memory, or a count was refused |
/// | 12001 | divide-by-zero error             | a division by an array met a zero divisor |
/// | 12004 | singular matrix                  | a matrix could not be inverted |
/// | 12005 | CubicHermiteInterpolation error  | a fatal condition of the Hermite interpolation |
/// | 13001 | error opening file               | a file could not be opened |
/// | 13002 | error reading file               | a vector file is shorter than it says |
/// | 13003 | error writing file               | a vector file could not be written in full |
/// | 13004 | file version error               | a vector file is not of version 1 |
/// | 13005 | file type error                  | a vector file holds another type of vector |
class QORN_API QORNException {
public:
  QORNException(int errorCode, const char *message, const char *fileName, long lineNumber);

  int GetErrorCode() const { return errorCode; }
  const char *GetMessage() const { return message; }
  const char *GetFileName() const { return fileName; }
  long GetLineNumber() const { return lineNumber; }

  /// Writes to the standard error stream: an empty line, then "EXCEPTION: ", the message, ", QORNErrorCode: "
  /// and the code, then "File: ", the path, ",  Line: " and the line number, each line flushed.
  void displayErrorMessage() const;

private:
  int errorCode;
  const char *message;
  const char *fileName;
  long lineNumber;
  std::uint32_t reserved;
};

} // namespace QORN

#endif
