#include "Temporary.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>
#include <utility>

namespace tool {

namespace {

// For the handler of signals: as many as a subcommand may have.
std::atomic<const char *> temporaries[8];

// Files before the folders that they are in. A program that draws a picture may write it while it is removed.
void RemoveAll() {
  constexpr int kMostRounds = 1000;
  bool again = true;
  for (int round = 0; again && round < kMostRounds; ++round) {
    again = false;
    for (const std::atomic<const char *> &temporary : temporaries)
      if (const char *path = temporary.load()) unlink(path);
    for (const std::atomic<const char *> &temporary : temporaries)
      if (const char *path = temporary.load())
        again = (rmdir(path) != 0 && (errno == ENOTEMPTY || errno == EEXIST)) || again;
  }
}

extern "C" void RemoveTemporaries(int signal) {
  RemoveAll();
  raise(signal); // which has its default action again
}

// Signals that end the program remove the files first, and then end it as ever.
void HandleSignals() {
  static_assert(std::atomic<const char *>::is_always_lock_free);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU}) {
    struct sigaction action {};
    if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
    action.sa_handler = RemoveTemporaries;
    action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_NODEFER;
    sigaction(signal, &action, nullptr);
  }
}

} // namespace

Temporary::Temporary(std::string path) : m_path(std::move(path)) {
  HandleSignals();
  for (std::atomic<const char *> &temporary : temporaries) {
    const char *none = nullptr;
    if (temporary.compare_exchange_strong(none, m_path.c_str())) return;
  }
}

Temporary::~Temporary() {
  std::error_code ignored;
  if (!m_kept) std::filesystem::remove_all(m_path, ignored);
  Keep();
}

void Temporary::Keep() {
  m_kept = true;
  for (std::atomic<const char *> &temporary : temporaries) {
    const char *same = m_path.c_str();
    if (temporary.compare_exchange_strong(same, nullptr)) return;
  }
}

} // namespace tool
