#ifndef QORN_INFRA_UTILITIES_H
#define QORN_INFRA_UTILITIES_H

#include <cstddef>
#include <cstdio>

#include "qorn/Export.h"

namespace QORN {

/// The few calls that touch the operating system: static functions only. Nothing is thrown. The forms with a
/// null buffer share static ones: call them from one thread only.
class QORN_API Utilities {
public:
  /// The largest length of a resolved path, in characters with the terminating zero.
  static constexpr int kPathLength = 260;

  /// The size of a buffer that holds a time stamp.
  static constexpr int kTimeLength = 26;

  /// Resolves a path against the folder above the one that holds the running program: for the program
  /// /p/bin/x the path a/b gives /p/a/b, and ../a gives /a. Each leading ".." goes one folder up. Slashes of
  /// both kinds come out as the system's separator, and the result is cut to 259 characters. A path that
  /// begins with a backslash or with the separator, or has a colon for its second character, is absolute and
  /// comes back as it is.
  ///
  /// The result comes from malloc and goes back through free. Null if there is no memory, for a null path,
  /// and for a relative path where the system does not tell the running program.
  static char *GetAbsolutePath(const char *path);

  /// GetAbsolutePath into dst, a buffer of kPathLength characters, or into the static one if dst is null. A
  /// longer path is cut. Returns the buffer, which is an empty text where GetAbsolutePath gives null.
  static char *GetAbsolutePathExt(const char *path, char *dst = nullptr);

  /// Writes the local time as 24 characters, "Thu Jan  1 00:00:00 1970", with a newline behind them to dst, a
  /// buffer of kTimeLength characters, or to the static one if dst is null. Returns the buffer.
  ///@{
  static char *TimeStamp(char *dst);
  static char *TimeStamp(std::nullptr_t = nullptr);
  ///@}

  /// Writes the same text and one more newline to the stream; nothing if it is null.
  static void TimeStamp(std::FILE *file);

  /// A hook without effect: nothing is printed and no argument is read.
  static void PrintToOutputDebugWindow(const char *format, ...);
};

} // namespace QORN

#endif
