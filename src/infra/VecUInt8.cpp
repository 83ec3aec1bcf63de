#include "qorn/infra/VecUInt8.h"

namespace QORN {

void VecUInt8::Import(const unsigned char *src, int n) { CopyFrom(src, n); }

void VecUInt8::Export(unsigned char *dst, int n) const { CopyTo(dst, n); }

} // namespace QORN
