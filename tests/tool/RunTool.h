// Runs the built tool and keeps what it said.
#ifndef QORN_TESTS_TOOL_RUNTOOL_H
#define QORN_TESTS_TOOL_RUNTOOL_H

#include <functional>
#include <string>
#include <vector>

namespace QORN::test {

/// Whether memory is the address sanitizer's, which holds much more than is asked for.
#if defined(__has_feature)
inline constexpr bool kSanitizesAddresses = __has_feature(address_sanitizer);
#elif defined(__SANITIZE_ADDRESS__)
inline constexpr bool kSanitizesAddresses = true;
#else
inline constexpr bool kSanitizesAddresses = false;
#endif

struct Outcome {
  int status;             ///< the exit status, or minus the signal that ended it
  std::string out;        ///< what it wrote to the output
  std::string error;      ///< what it wrote to the error stream
  long residentKilobytes; ///< the most memory that it held at a time
};

/// Whether the system gives pseudo-terminals; a bare root folder without /dev/pts does not.
bool HasTerminals();

/// Runs the program at `program`, by default qorn, with the arguments. prepare runs in the new process before
/// the tool does. With a terminal, the error stream is one.
Outcome RunTool(const std::vector<std::string> &arguments, const std::function<void()> &prepare = {},
                bool terminal = false, const char *program = QORN_TOOL);

/// A folder that is removed with all that is in it.
class TemporaryFolder {
public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;

  std::string operator/(const std::string &name) const { return path + "/" + name; }

  /// The names of what is in it, in order.
  std::vector<std::string> Names() const;

private:
  std::string path;
};

std::string Contents(const std::string &path);

} // namespace QORN::test

#endif
