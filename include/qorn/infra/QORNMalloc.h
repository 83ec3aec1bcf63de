#ifndef QORN_INFRA_QORNMALLOC_H
#define QORN_INFRA_QORNMALLOC_H

#include "qorn/Export.h"
#include "qorn/infra/Cplx.h"

namespace QORN {

/// Aligned memory for samples: static functions only.
///
/// Each Malloc function returns a block of `count` elements, aligned to 64 bytes and not cleared, or null if
/// there is no memory. A negative count, or one above 2147482647 elements, gives null without asking the
/// allocator. They neither throw nor print. A block goes back through Delete and nothing else. Any thread may
/// call any of them.
class QORN_API QORNMalloc {
public:
  /// The largest count that is passed on to the allocator: the largest int less 1000.
  static constexpr int kMaxCount = 2147482647;

  /// The alignment of every block, in bytes: full-width vector loads on every element type.
  static constexpr int kAlignment = 64;

  static unsigned char *MallocBit(int count); ///< one byte per bit
  static unsigned char *MallocUInt8(int count);
  static char *MallocByte(int count);
  static short *MallocInt16(int count);
  static int *MallocInt32(int count);
  static float *MallocReal32(int count);
  static double *MallocReal64(int count);
  static Cplx32 *MallocCplx32(int count);
  static Cplx64 *MallocCplx64(int count);

  /// Frees a block of any of the functions above; null is ignored.
  static void Delete(void *block);

  /// Reports a failed request on the standard output: the count, the bytes of an element and their product,
  /// and, if text is not null, a second line with the text.
  static void MallocErrorDump(int items, int bytesEach, const char *text);
};

} // namespace QORN

#endif
