#include "qorn/infra/Utilities.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>

#include "PathRule.h"

namespace QORN {

namespace {

char g_path[Utilities::kPathLength];
char g_time[Utilities::kTimeLength];

// Empty where the system does not tell it.
std::string RunningProgram() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

char *HeapCopy(std::string_view text) {
  auto *copy = static_cast<char *>(std::malloc(text.size() + 1));
  if (copy != nullptr) *std::copy(text.begin(), text.end(), copy) = '\0';
  return copy;
}

} // namespace

char *Utilities::GetAbsolutePath(const char *path) {
  if (path == nullptr) return nullptr;
  try {
    constexpr char kSeparator = std::filesystem::path::preferred_separator;
    if (IsAbsolute(path, kSeparator)) return HeapCopy(path);
    const std::string program = RunningProgram();
    if (program.empty()) return nullptr;
    return HeapCopy(ResolvePath(program, path, kSeparator));
  } catch (const std::exception &) { // no memory for a text
    return nullptr;
  }
}

char *Utilities::GetAbsolutePathExt(const char *path, char *dst) {
  if (dst == nullptr) dst = g_path;
  char *resolved = GetAbsolutePath(path);
  std::snprintf(dst, kPathLength, "%s", resolved != nullptr ? resolved : "");
  std::free(resolved);
  return dst;
}

char *Utilities::TimeStamp(char *dst) {
  if (dst == nullptr) dst = g_time;
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  dst[0] = '\0';
  if (localtime_r(&now, &local) != nullptr) asctime_r(&local, dst);
  return dst;
}

char *Utilities::TimeStamp(std::nullptr_t) { return TimeStamp(static_cast<char *>(nullptr)); }

void Utilities::TimeStamp(std::FILE *file) {
  if (file == nullptr) return;
  char text[kTimeLength];
  std::fprintf(file, "%s\n", TimeStamp(text));
}

void Utilities::PrintToOutputDebugWindow(const char * /*format*/, ...) {}

} // namespace QORN
