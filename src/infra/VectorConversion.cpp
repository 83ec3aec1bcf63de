#include "qorn/infra/VectorConversion.h"

#include "KernelTraits.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

template <class Dst, class Src, class Kernel> void ConvertReal(Dst &dst, const Src &src, Kernel kernel) {
  dst.Resize(src.GetSize());
  kernel(src.GetPtr(), dst.GetPtr(), src.GetSize());
}

// D and S are the scalars of the two sides.
template <class D, class S, class Dst, class Src>
void ConvertCplx(Dst &dst, const Src &src, void (*kernel)(const S *, D *, int)) {
  dst.Resize(src.GetSize());
  ForScalars(src.GetSize(), [&](int first, int scalars) {
    kernel(reinterpret_cast<const S *>(src.GetPtr(first)), reinterpret_cast<D *>(dst.GetPtr(first)), scalars);
  });
}

} // namespace

void VectorConversion::Convert(VecReal32 &dst, const VecReal64 &src) {
  ConvertReal(dst, src, TargetLib::Convert_64f32f);
}

void VectorConversion::Convert(VecReal32 &dst, const VecInt32 &src) {
  ConvertReal(dst, src, TargetLib::Convert_32s32f);
}

void VectorConversion::Convert(VecReal64 &dst, const VecReal32 &src) {
  ConvertReal(dst, src, TargetLib::Convert_32f64f);
}

void VectorConversion::Convert(VecReal64 &dst, const VecInt32 &src) {
  ConvertReal(dst, src, TargetLib::Convert_32s64f);
}

void VectorConversion::Convert(VecInt32 &dst, const VecReal32 &src) {
  ConvertReal(dst, src, TargetLib::Convert_32f32s);
}

void VectorConversion::Convert(VecInt32 &dst, const VecReal64 &src) {
  ConvertReal(dst, src, TargetLib::Convert_64f32s);
}

void VectorConversion::Convert(VecCplx32 &dst, const VecCplx64 &src) {
  ConvertCplx<float, double>(dst, src, TargetLib::Convert_64f32f);
}

void VectorConversion::Convert(VecCplx64 &dst, const VecCplx32 &src) {
  ConvertCplx<double, float>(dst, src, TargetLib::Convert_32f64f);
}

} // namespace QORN
