// Plans of the cyclic convolutions of floats: immutable, made once per length.
#ifndef QORN_SRC_INFRA_FOURIER_CYCLICPLAN_H
#define QORN_SRC_INFRA_FOURIER_CYCLICPLAN_H

#include <memory>

#include "Block.h"
#include "Cyclic.h"

namespace QORN::fourier {

class CyclicPlan {
public:
  /// Of a length that is 2^k times 1, 3, 5 or 9, k >= 6. Null if there is no memory.
  static std::unique_ptr<const CyclicPlan> Make(int length);

  int Length() const { return static_cast<int>(m_steps.length); }
  const CyclicSteps &Steps() const { return m_steps; }

private:
  explicit CyclicPlan(int length);

  CyclicSteps m_steps{};
  Block<double> m_columnTurns, m_turns;
};

} // namespace QORN::fourier

#endif
