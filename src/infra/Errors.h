// The library's whole error vocabulary, and the one way of throwing from it.
#ifndef QORN_SRC_INFRA_ERRORS_H
#define QORN_SRC_INFRA_ERRORS_H

#include "qorn/infra/QORNException.h"

namespace QORN {

struct Error {
  int code;
  const char *message;
};

namespace errors {
inline constexpr Error kMatlabAccess{3, "MATLAB access error"};
inline constexpr Error kUnexpectedSoftware{10001, "unexpected software error"};
inline constexpr Error kInvalidParameter{10002, "invalid input parameter"};
inline constexpr Error kMemoryAllocation{11001, "memory allocation error"};
inline constexpr Error kDivideByZero{12001, "divide-by-zero error"};
inline constexpr Error kSingularMatrix{12004, "singular matrix"};
inline constexpr Error kHermite{12005, "CubicHermiteInterpolation error"};
inline constexpr Error kFileOpen{13001, "error opening file"};
inline constexpr Error kFileRead{13002, "error reading file"};
inline constexpr Error kFileWrite{13003, "error writing file"};
inline constexpr Error kFileVersion{13004, "file version error"};
inline constexpr Error kFileType{13005, "file type error"};
} // namespace errors

/// Modules whose paths stand in the exceptions of several files.
namespace modules {
inline constexpr char kVector[] = "infra/Vector";
inline constexpr char kTargetLib[] = "infra\\TargetLib_ipp";
} // namespace modules

/// Throws error as a QORNException of the module whose path literal is given; the line is that of the call.
[[noreturn]] inline void Throw(const Error &error, const char *module, long line = __builtin_LINE()) {
  throw QORNException(error.code, error.message, module, line);
}

} // namespace QORN

#endif
