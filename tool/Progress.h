// A progress bar for long work, on a terminal only.
#ifndef QORN_TOOL_PROGRESS_H
#define QORN_TOOL_PROGRESS_H

#include <chrono>
#include <cstdint>

namespace tool {

/// Shows on the error stream how much of `total` is done, from the second after its making on, ten times a
/// second. Erases itself at the end. If the error stream is not a terminal it stays silent.
class Progress {
public:
  explicit Progress(std::int64_t total);
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  void Update(std::int64_t done);

private:
  using Clock = std::chrono::steady_clock;

  std::int64_t m_total;
  bool m_terminal;
  bool m_shown = false;
  Clock::time_point m_start;
  Clock::time_point m_next;
};

} // namespace tool

#endif
