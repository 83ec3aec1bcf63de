#include "PathRule.h"

#include "qorn/infra/Utilities.h"

namespace QORN {

namespace {

bool IsSlash(char c) { return c == '/' || c == '\\'; }

// What has no separator is cut no further.
void CutLast(std::string_view &base, char separator) {
  const std::size_t last = base.rfind(separator);
  if (last != std::string_view::npos) base = base.substr(0, last);
}

// The step up ends at the first separator, and at a slash of the other kind only where there is none.
std::string_view AfterStepUp(std::string_view path, char separator) {
  std::size_t end = path.find(separator);
  if (end == std::string_view::npos) end = path.find_first_of("/\\");
  return path.substr(end + 1);
}

} // namespace

bool IsAbsolute(std::string_view path, char separator) {
  if (path.empty()) return false;
  return path[0] == '\\' || path[0] == separator || (path.size() > 1 && path[1] == ':');
}

std::string ResolvePath(std::string_view program, std::string_view path, char separator) {
  if (IsAbsolute(path, separator)) return std::string(path);
  std::string_view base = program;
  CutLast(base, separator);
  CutLast(base, separator);
  while (path.size() > 2 && path.substr(0, 2) == ".." && IsSlash(path[2])) {
    CutLast(base, separator);
    path = AfterStepUp(path, separator);
  }
  std::string result(base);
  result.append(1, separator).append(path);
  if (result.size() >= Utilities::kPathLength) result.resize(Utilities::kPathLength - 1);
  for (char &c : result) {
    if (IsSlash(c)) c = separator;
  }
  return result;
}

} // namespace QORN
