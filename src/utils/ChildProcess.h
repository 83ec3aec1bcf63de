// A child process that answers on its output to what it gets on its input.
#ifndef QORN_SRC_UTILS_CHILDPROCESS_H
#define QORN_SRC_UTILS_CHILDPROCESS_H

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string_view>
#include <vector>

#include "infra/BinaryFile.h"

namespace QORN {

using Deadline = std::chrono::steady_clock::time_point;

/// The time in so many seconds; one that is not a positive number is now.
Deadline InSeconds(double seconds);

class ChildProcess {
public:
  enum class Outcome { kDone, kTimedOut, kEnded };

  /// The descriptor by which the child knows the shared file.
  static constexpr int kShared = 3;

  /// Starts arguments[0], which is looked up on the PATH unless it holds a slash, with standard output and
  /// error stream in one. The child has the shared file and no other of this process's. Started() tells of
  /// success.
  ChildProcess(std::vector<const char *> arguments, const BinaryFile &shared);

  /// Ends the child: closes its input, and kills it and its process group if it has not ended in two seconds.
  ~ChildProcess();

  ChildProcess(const ChildProcess &) = delete;
  ChildProcess &operator=(const ChildProcess &) = delete;

  bool Started() const { return m_pid > 0; }

  /// Sends input, and hands over output as it comes until take() returns true.
  Outcome Exchange(std::string_view input, Deadline deadline,
                   const std::function<bool(std::string_view)> &take);

  /// Ends the child at once.
  void Kill();

private:
  bool Reaped();
  bool WaitUntil(Deadline deadline);

  pid_t m_pid = -1; ///< -1 if there is no child that has not been waited for
  BinaryFile m_input, m_output;
};

} // namespace QORN

#endif
