#ifndef QORN_INFRA_VECINT16_H
#define QORN_INFRA_VECINT16_H

#include "qorn/Export.h"
#include "qorn/infra/IntVectorOps.h"

namespace QORN {

/// A vector of 16-bit integers: codes and samples. Storage and view: BaseVector; copies and filling:
/// VectorOps; text files and comparison: IntVectorText; arithmetic and statistics: IntVectorOps.
class QORN_API VecInt16 : public IntVectorOps<VecInt16, short> {
public:
  /// An empty vector.
  VecInt16() = default;

  /// n elements, all zero. Throws QORNException 11001 if n is negative or there is no memory.
  explicit VecInt16(int n) : IntVectorOps(n) {}
};

extern template class VectorOps<VecInt16, short>;
extern template class IntVectorText<VecInt16, short>;
extern template class IntVectorOps<VecInt16, short>;

} // namespace QORN

#endif
