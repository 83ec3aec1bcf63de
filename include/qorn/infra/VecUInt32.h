#ifndef QORN_INFRA_VECUINT32_H
#define QORN_INFRA_VECUINT32_H

#include "qorn/Export.h"
#include "qorn/infra/IntVectorOps.h"

namespace QORN {

/// A vector of unsigned 32-bit integers. Storage and view: BaseVector; copies and filling: VectorOps; text
/// files and comparison: IntVectorText. It has no arithmetic.
class QORN_API VecUInt32 : public IntVectorText<VecUInt32, unsigned int> {
public:
  /// An empty vector.
  VecUInt32() = default;

  /// n elements, all zero. Throws QORNException 11001 if n is negative or there is no memory.
  explicit VecUInt32(int n) : IntVectorText(n) {}
};

extern template class VectorOps<VecUInt32, unsigned int>;
extern template class IntVectorText<VecUInt32, unsigned int>;

} // namespace QORN

#endif
