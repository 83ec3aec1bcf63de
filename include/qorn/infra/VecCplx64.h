#ifndef QORN_INFRA_VECCPLX64_H
#define QORN_INFRA_VECCPLX64_H

#include "qorn/Export.h"
#include "qorn/infra/CplxVectorOps.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

class VecCplx32;

/// A vector of IQ samples in double. Storage and view: BaseVector; copies and filling: VectorOps; files:
/// VectorStorage; arithmetic, statistics, import and export: CplxVectorOps. This class adds what has no
/// counterpart in VecCplx32 or differs from it.
class QORN_API VecCplx64 : public CplxVectorOps<VecCplx64, Cplx64, double, VecReal64> {
public:
  /// An empty vector.
  VecCplx64() = default;

  /// n elements, all (0, 0). Throws QORNException 11001 if n is negative or there is no memory.
  explicit VecCplx64(int n) : CplxVectorOps(n) {}

  /// A vector of the source's length with its values, widened.
  VecCplx64(const VecCplx32 &src);

  /// Element i = (re[i], 0).
  VecCplx64(const VecReal64 &re);

  /// Element i = (re[i], im[i]), of the length of re; that of im is not looked at.
  VecCplx64(const VecReal64 &re, const VecReal64 &im);

  /// Resizes to the source's length and widens both parts of each value.
  ///@{
  VecCplx64 &operator=(const VecCplx32 &src);
  void Import(const VecCplx32 &src);
  ///@}

  using CplxVectorOps::Import;

  /// this[i] = (re[i], im[i]), widened, for 0 <= i < n, resized to n.
  void Import(const float *re, const float *im, int n);
};

extern template class VectorOps<VecCplx64, Cplx64>;
extern template class VectorStorage<VecCplx64, Cplx64>;
extern template class CplxVectorOps<VecCplx64, Cplx64, double, VecReal64>;

} // namespace QORN

#endif
