#include "CyclicPlan.h"

#include <cstddef>
#include <cstdint>
#include <new>

#include "Factorise.h"
#include "Roots.h"

namespace QORN::fourier {

std::unique_ptr<const CyclicPlan> CyclicPlan::Make(int length) {
  try {
    return std::unique_ptr<const CyclicPlan>(new CyclicPlan(length));
  } catch (const std::bad_alloc &) {
    return nullptr;
  }
}

CyclicPlan::CyclicPlan(int length) {
  constexpr std::int64_t kWidth = CyclicSteps::kWidth;
  const CyclicShape shape = CyclicFor(length);
  const std::int64_t first = shape.first, columns = length / first;
  m_steps.length = length;
  m_steps.first = shape.first;
  m_steps.columns = columns;
  const Roots<double> roots(length);

  m_columnTurns = Block<double>(static_cast<std::size_t>(2 * columns * (first - 1)));
  double *to = m_columnTurns.Data();
  for (std::int64_t column = 0; column < columns; column += kWidth) {
    for (std::int64_t k = 1; k < first; ++k) {
      for (std::int64_t b = column; b < column + kWidth; ++b) Write<double>(to, roots(k * b));
    }
  }
  m_steps.columnTurns = m_columnTurns.Data();

  std::int64_t count = 0, rest = columns;
  for (const int radix : shape.strip) {
    rest /= radix;
    m_steps.steps[m_steps.stepCount++] = {radix, static_cast<std::ptrdiff_t>(rest), nullptr};
    if (rest > 1) count += rest * (radix - 1);
  }
  m_turns = Block<double>(static_cast<std::size_t>(4 * count));
  to = m_turns.Data();
  for (CyclicStep *step = m_steps.steps; step->rest > 1; ++step) {
    step->turns = to;
    for (std::int64_t p = 0; p < step->rest; ++p) {
      for (std::int64_t k = 1; k < step->radix; ++k)
        to = WriteTurns(roots, p * k * (length / (step->radix * step->rest)), 0, 1, to);
    }
  }
}

} // namespace QORN::fourier
