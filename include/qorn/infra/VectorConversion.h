#ifndef QORN_INFRA_VECTORCONVERSION_H
#define QORN_INFRA_VECTORCONVERSION_H

#include "qorn/Export.h"

namespace QORN {

class VecCplx32;
class VecCplx64;
class VecInt32;
class VecReal32;
class VecReal64;

/// Moves a whole vector from one element type to another: static functions only, which VecUtils offers as its
/// own. The vectors' converting constructors, assignments and Import forms call them.
class QORN_API VectorConversion {
public:
  /// dst[i] = src[i] in the element type of dst, which is resized to the length of src; a longer type is
  /// exact, float takes the nearest value, and int truncates toward zero, sticks at its limits and has 0 for
  /// not-a-number. Throws QORNException 11001 if there is no memory.
  ///@{
  static void Convert(VecReal32 &dst, const VecReal64 &src);
  static void Convert(VecReal32 &dst, const VecInt32 &src);
  static void Convert(VecReal64 &dst, const VecReal32 &src);
  static void Convert(VecReal64 &dst, const VecInt32 &src);
  static void Convert(VecInt32 &dst, const VecReal32 &src);
  static void Convert(VecInt32 &dst, const VecReal64 &src);
  static void Convert(VecCplx32 &dst, const VecCplx64 &src);
  static void Convert(VecCplx64 &dst, const VecCplx32 &src);
  ///@}
};

} // namespace QORN

#endif
