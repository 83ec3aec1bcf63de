#ifndef QORN_INFRA_MATREAL64_H
#define QORN_INFRA_MATREAL64_H

#include "qorn/Export.h"
#include "qorn/infra/RealMatrixOps.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

/// A matrix of double elements. Storage: BaseMatrix; copies and the dump: MatrixOps; arithmetic, comparison
/// and text files: RealMatrixOps. Products, transposes and inverses are in MathUtils.
class QORN_API MatReal64 : public RealMatrixOps<MatReal64, VecReal64, double> {
public:
  /// An empty matrix.
  MatReal64() = default;

  /// rows times cols elements, which hold what the memory held: see SetZero. Throws QORNException 11001 if a
  /// count is negative or there is no memory.
  MatReal64(int rows, int cols) : RealMatrixOps(rows, cols) {}
};

extern template class MatrixOps<MatReal64, double>;
extern template class RealMatrixOps<MatReal64, VecReal64, double>;

} // namespace QORN

#endif
