#ifndef QORN_INFRA_VECREAL64_H
#define QORN_INFRA_VECREAL64_H

#include "qorn/Export.h"
#include "qorn/infra/RealVectorOps.h"

namespace QORN {

class VecInt32;
class VecReal32;

/// A vector of double samples. Storage and view: BaseVector; copies and filling: VectorOps; files:
/// VectorStorage; arithmetic and statistics: RealVectorOps. This class adds what has no counterpart in
/// VecReal32 or differs from it.
class QORN_API VecReal64 : public RealVectorOps<VecReal64, double> {
public:
  /// An empty vector.
  VecReal64() = default;

  /// n elements, all zero. Throws QORNException 11001 if n is negative or there is no memory.
  explicit VecReal64(int n) : RealVectorOps(n) {}

  /// A vector of the source's length with its values, widened.
  VecReal64(const VecReal32 &src);

  /// Resizes to the source's length and widens each value.
  ///@{
  VecReal64 &operator=(const VecReal32 &src);
  VecReal64 &operator=(const VecInt32 &src);
  void Import(const VecReal32 &src);
  void Import(const VecInt32 &src);
  ///@}

  using RealVectorOps::Import;

  /// Resizes to n and widens src[0] to src[n - 1].
  void Import(const float *src, int n);

  /// True if |this[i] - arg[i]| <= tol for 0 <= i < GetSize(); not-a-number fails, and so does a negative
  /// tol. Prints a message about the first element that fails. The lengths are not compared, unlike in
  /// VecReal32: of a longer argument only the first GetSize() elements count, and a shorter one is read
  /// beyond its end.
  bool IsEqual(const VecReal64 &arg, double tol) const;
};

extern template class VectorOps<VecReal64, double>;
extern template class VectorStorage<VecReal64, double>;
extern template class RealVectorOps<VecReal64, double>;

} // namespace QORN

#endif
