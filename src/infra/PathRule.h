// The rule by which relative paths are resolved, without any system underneath.
#ifndef QORN_SRC_INFRA_PATHRULE_H
#define QORN_SRC_INFRA_PATHRULE_H

#include <string>
#include <string_view>

namespace QORN {

/// Whether path begins with a backslash or with the separator, or has a colon for its second character.
bool IsAbsolute(std::string_view path, char separator);

/// path as seen from the folder above the one that holds program, a full file name: see
/// Utilities::GetAbsolutePath. separator is the system's; slashes of both kinds are understood.
/// An absolute path comes back as it is.
std::string ResolvePath(std::string_view program, std::string_view path, char separator);

} // namespace QORN

#endif
