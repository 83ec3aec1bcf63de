#include "Kernel.h"
#include "Unroll.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

using Byte = unsigned char;

void And(const Byte *src1, const Byte *src2, Byte *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = static_cast<Byte>(src1[i] & src2[i]);
}
void Or(const Byte *src1, const Byte *src2, Byte *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = static_cast<Byte>(src1[i] | src2[i]);
}
void Xor(const Byte *src1, const Byte *src2, Byte *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = static_cast<Byte>(src1[i] ^ src2[i]);
}
void Not(const Byte *src, Byte *dst, int len) {
  QORN_UNROLLED
  for (Index i = 0; i < len; ++i) dst[i] = static_cast<Byte>(~src[i]);
}

void And(const Byte *src, Byte *srcDst, int len) { And(src, srcDst, srcDst, len); }
void Or(const Byte *src, Byte *srcDst, int len) { Or(src, srcDst, srcDst, len); }
void Xor(const Byte *src, Byte *srcDst, int len) { Xor(src, srcDst, srcDst, len); }
void Not(Byte *srcDst, int len) { Not(srcDst, srcDst, len); }

} // namespace

#define QORN_FAMILY "Bitwise.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
