#ifndef QORN_INFRA_VECUINT8_H
#define QORN_INFRA_VECUINT8_H

#include "qorn/Export.h"
#include "qorn/infra/VectorOps.h"

namespace QORN {

/// A vector of bytes: raw data and work memory. Storage and view: BaseVector; copies and filling: VectorOps.
/// It has no arithmetic.
class QORN_API VecUInt8 : public VectorOps<VecUInt8, unsigned char> {
public:
  /// An empty vector.
  VecUInt8() = default;

  /// n elements, all zero. Throws QORNException 11001 if n is negative or there is no memory.
  explicit VecUInt8(int n) : VectorOps(n) {}

  /// Resizes to n and copies src[0] to src[n - 1].
  void Import(const unsigned char *src, int n);

  /// dst[i] = this[i] for 0 <= i < n, whatever the length.
  void Export(unsigned char *dst, int n) const;
};

extern template class VectorOps<VecUInt8, unsigned char>;

} // namespace QORN

#endif
