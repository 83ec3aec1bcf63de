#include "Progress.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace tool {

Progress::Progress(std::int64_t total)
    : m_total(total), m_terminal(isatty(STDERR_FILENO) == 1), m_start(Clock::now()),
      m_next(m_start + std::chrono::seconds(1)) {}

Progress::~Progress() {
  if (m_shown) std::fputs("\r\x1B[K", stderr);
}

void Progress::Update(std::int64_t done) {
  if (!m_terminal || m_total <= 0) return;
  const Clock::time_point now = Clock::now();
  if (now < m_next) return;
  m_next = now + std::chrono::milliseconds(100);
  m_shown = true;
  constexpr int kWidth = 40;
  const double share = static_cast<double>(done) / static_cast<double>(m_total);
  const auto filled = static_cast<std::size_t>(share * kWidth);
  const double seconds = std::chrono::duration<double>(now - m_start).count();
  std::fprintf(stderr, "\r[%s%s] %3.0f %%  %.0f s left \x1B[K", std::string(filled, '#').c_str(),
               std::string(kWidth - filled, ' ').c_str(), 100.0 * share, seconds * (1.0 - share) / share);
  std::fflush(stderr);
}

} // namespace tool
