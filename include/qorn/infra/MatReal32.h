#ifndef QORN_INFRA_MATREAL32_H
#define QORN_INFRA_MATREAL32_H

#include "qorn/Export.h"
#include "qorn/infra/RealMatrixOps.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

/// A matrix of float elements. Storage: BaseMatrix; copies and the dump: MatrixOps; arithmetic, comparison
/// and text files: RealMatrixOps. Products, transposes and inverses are in MathUtils.
class QORN_API MatReal32 : public RealMatrixOps<MatReal32, VecReal32, float> {
public:
  /// An empty matrix.
  MatReal32() = default;

  /// rows times cols elements, which hold what the memory held: see SetZero. Throws QORNException 11001 if a
  /// count is negative or there is no memory.
  MatReal32(int rows, int cols) : RealMatrixOps(rows, cols) {}
};

extern template class MatrixOps<MatReal32, float>;
extern template class RealMatrixOps<MatReal32, VecReal32, float>;

} // namespace QORN

#endif
