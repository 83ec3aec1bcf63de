#ifndef QORN_INFRA_VECREAL32_H
#define QORN_INFRA_VECREAL32_H

#include "qorn/Export.h"
#include "qorn/infra/RealVectorOps.h"

namespace QORN {

class VecInt32;
class VecReal64;

/// A vector of float samples. Storage and view: BaseVector; copies and filling: VectorOps; files:
/// VectorStorage; arithmetic and statistics: RealVectorOps. This class adds what has no counterpart in
/// VecReal64 or differs from it.
class QORN_API VecReal32 : public RealVectorOps<VecReal32, float> {
public:
  /// An empty vector.
  VecReal32() = default;

  /// n elements, all zero. Throws QORNException 11001 if n is negative or there is no memory.
  explicit VecReal32(int n) : RealVectorOps(n) {}

  /// A vector of the source's length, each value rounded to float.
  VecReal32(const VecReal64 &src);

  /// Resizes to the source's length and rounds each value to float.
  ///@{
  VecReal32 &operator=(const VecReal64 &src);
  VecReal32 &operator=(const VecInt32 &src);
  void Import(const VecReal64 &src);
  void Import(const VecInt32 &src);
  ///@}

  using RealVectorOps::Import;

  /// Resizes to n and converts src[0] to src[n - 1], rounding where float cannot hold the value.
  ///@{
  void Import(const double *src, int n);
  void Import(const short *src, int n);
  void Import(const unsigned short *src, int n);
  ///@}

  using RealVectorOps::Export;

  /// dst[i] = this[i], widened, for 0 <= i < n, whatever the length.
  void Export(double *dst, int n) const;

  /// True if the lengths agree and |this[i] - arg[i]| <= tol for all elements, the difference formed in
  /// float; not-a-number fails, and so does a negative tol. Prints a message about the first element that
  /// fails, and none if the lengths differ.
  bool IsEqual(const VecReal32 &arg, float tol) const;
};

extern template class VectorOps<VecReal32, float>;
extern template class VectorStorage<VecReal32, float>;
extern template class RealVectorOps<VecReal32, float>;

} // namespace QORN

#endif
