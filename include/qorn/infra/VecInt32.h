#ifndef QORN_INFRA_VECINT32_H
#define QORN_INFRA_VECINT32_H

#include "qorn/Export.h"
#include "qorn/infra/IntVectorOps.h"

namespace QORN {

class VecReal32;
class VecReal64;

/// A vector of 32-bit integers, the library's type of index lists. Storage and view: BaseVector; copies and
/// filling: VectorOps; text files and comparison: IntVectorText; arithmetic and statistics: IntVectorOps.
class QORN_API VecInt32 : public IntVectorOps<VecInt32, int> {
public:
  /// An empty vector.
  VecInt32() = default;

  /// n elements, all zero. Throws QORNException 11001 if n is negative or there is no memory.
  explicit VecInt32(int n) : IntVectorOps(n) {}

  /// Resizes to the source's length and truncates each value toward zero; values beyond the limits of int
  /// stick there, and not-a-number gives 0.
  ///@{
  VecInt32 &operator=(const VecReal32 &src);
  VecInt32 &operator=(const VecReal64 &src);
  void Import(const VecReal32 &src);
  void Import(const VecReal64 &src);
  ///@}

  using IntVectorOps::Import;

  /// Element i = offset + i * slope for 0 <= i < n, in wrapping arithmetic, of a vector resized to n.
  void Ramp(int n, int offset = 0, int slope = 1);
};

extern template class VectorOps<VecInt32, int>;
extern template class IntVectorText<VecInt32, int>;
extern template class IntVectorOps<VecInt32, int>;

} // namespace QORN

#endif
