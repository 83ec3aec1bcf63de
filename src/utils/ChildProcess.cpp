#include "ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>

extern char **environ;

namespace QORN {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double kGrace = 2.0; // seconds to end in
constexpr int kFirstOwn = 10;  // descriptors from here on are in nobody's way

// Milliseconds for poll, rounded up.
int Remaining(Deadline deadline) {
  const auto rest = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return static_cast<int>(std::clamp<decltype(rest)>(rest, 0, INT_MAX));
}

// The same file away from the first descriptors, which the host may have closed: there the child's own go.
BinaryFile MovedUp(const BinaryFile &file) {
  return BinaryFile(fcntl(file.Descriptor(), F_DUPFD_CLOEXEC, kFirstOwn));
}

// What the child starts with: its files, no signal blocked, and the default action for signals that a host
// may ignore, since these would stay ignored.
class Preparation {
public:
  Preparation() {
    posix_spawn_file_actions_init(&m_files);
    posix_spawnattr_init(&m_attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&m_attributes, &signals);
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM, SIGCHLD, SIGXFSZ})
      sigaddset(&signals, signal);
    posix_spawnattr_setsigdefault(&m_attributes, &signals);
    posix_spawnattr_setpgroup(&m_attributes, 0);
    posix_spawnattr_setflags(&m_attributes,
                             POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  }
  ~Preparation() {
    posix_spawn_file_actions_destroy(&m_files);
    posix_spawnattr_destroy(&m_attributes);
  }
  Preparation(const Preparation &) = delete;
  Preparation &operator=(const Preparation &) = delete;

  bool Give(int descriptor, int childs) {
    return posix_spawn_file_actions_adddup2(&m_files, descriptor, childs) == 0;
  }

  pid_t Start(const std::vector<const char *> &arguments) {
#if defined(__GLIBC__) && __GLIBC_PREREQ(2, 34)
    posix_spawn_file_actions_addclosefrom_np(&m_files, ChildProcess::kShared + 1);
#endif
    pid_t pid = -1;
    auto *const argv = const_cast<char *const *>(arguments.data()); // which the call does not write to
    return posix_spawnp(&pid, arguments[0], &m_files, &m_attributes, argv, environ) == 0 ? pid : -1;
  }

private:
  posix_spawn_file_actions_t m_files;
  posix_spawnattr_t m_attributes;
};

} // namespace

Deadline InSeconds(double seconds) {
  const double bounded = seconds > 0 ? std::min(seconds, 1e9) : 0.0;
  return Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(bounded));
}

// Input goes through a socket, since a write to it can be told not to raise SIGPIPE.
ChildProcess::ChildProcess(std::vector<const char *> arguments, const BinaryFile &shared)
    : m_input(-1), m_output(-1) {
  std::array<int, 2> input, output;
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, input.data()) != 0) return;
  BinaryFile ours(input[0]), theirs(input[1]);
  if (pipe2(output.data(), O_CLOEXEC) != 0) return;
  BinaryFile answers(output[0]), writing(output[1]);
  const BinaryFile childs = MovedUp(theirs), written = MovedUp(writing), given = MovedUp(shared);
  for (const BinaryFile *file : {&childs, &written, &given})
    if (file->Descriptor() < 0) return;

  arguments.push_back(nullptr);
  Preparation preparation;
  if (!preparation.Give(childs.Descriptor(), STDIN_FILENO) ||
      !preparation.Give(written.Descriptor(), STDOUT_FILENO) ||
      !preparation.Give(written.Descriptor(), STDERR_FILENO) ||
      !preparation.Give(given.Descriptor(), kShared))
    return;
  m_pid = preparation.Start(arguments);
  if (!Started()) return;
  m_input.Swap(ours);
  m_output.Swap(answers);
}

ChildProcess::~ChildProcess() {
  m_input.Close();
  if (!WaitUntil(InSeconds(kGrace))) Kill();
}

// True if there is nothing left to wait for, be it that the host has already done so.
bool ChildProcess::Reaped() {
  if (m_pid > 0) {
    const pid_t result = waitpid(m_pid, nullptr, WNOHANG);
    if (result == m_pid || (result < 0 && errno == ECHILD)) m_pid = -1;
  }
  return m_pid <= 0;
}

// Waits for the child's end; its output is dropped, so that it cannot get stuck in writing.
bool ChildProcess::WaitUntil(Deadline deadline) {
  constexpr int kPause = 5; // milliseconds
  while (!Reaped()) {
    if (Remaining(deadline) == 0) return false;
    pollfd output{m_output.Descriptor(), POLLIN, 0}; // without one, a mere pause
    if (poll(&output, 1, kPause) <= 0) continue;
    char dropped[4096];
    if (read(output.fd, dropped, sizeof dropped) == 0) m_output.Close();
  }
  return true;
}

void ChildProcess::Kill() {
  if (Reaped()) return;
  kill(-m_pid, SIGKILL);
  WaitUntil(InSeconds(kGrace)); // bounded, for one that hangs in the system
}

ChildProcess::Outcome ChildProcess::Exchange(std::string_view input, Deadline deadline,
                                             const std::function<bool(std::string_view)> &take) {
  char buffer[1 << 16];
  while (true) {
    const int wait = Remaining(deadline);
    if (wait == 0) return Outcome::kTimedOut;
    pollfd ends[] = {{m_output.Descriptor(), POLLIN, 0},
                     {m_input.Descriptor(), static_cast<short>(input.empty() ? 0 : POLLOUT), 0}};
    if (poll(ends, 2, wait) < 0 && errno != EINTR) return Outcome::kEnded;
    if ((ends[1].revents & POLLOUT) != 0) {
      const ssize_t sent = send(ends[1].fd, input.data(), input.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
      if (sent > 0) input.remove_prefix(static_cast<std::size_t>(sent));
    }
    if (ends[0].revents != 0) {
      const ssize_t got = read(ends[0].fd, buffer, sizeof buffer);
      if (got == 0 || (got < 0 && errno != EINTR)) return Outcome::kEnded;
      if (got > 0 && take({buffer, static_cast<std::size_t>(got)})) return Outcome::kDone;
    } else if ((ends[1].revents & (POLLHUP | POLLERR)) != 0) {
      return Outcome::kEnded; // though others may still have its output
    }
  }
}

} // namespace QORN
