#include "qorn/infra/VecReal32.h"

#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/infra/VectorConversion.h"

namespace QORN {

VecReal32::VecReal32(const VecReal64 &src) {
  CreateUncleared(src.GetSize());
  Import(src);
}

VecReal32 &VecReal32::operator=(const VecReal64 &src) {
  Import(src);
  return *this;
}

VecReal32 &VecReal32::operator=(const VecInt32 &src) {
  Import(src);
  return *this;
}

void VecReal32::Import(const VecReal64 &src) { VectorConversion::Convert(*this, src); }

void VecReal32::Import(const VecInt32 &src) { VectorConversion::Convert(*this, src); }

void VecReal32::Import(const double *src, int n) {
  Resize(n);
  TargetLib::Convert_64f32f(src, m_pData, n);
}

void VecReal32::Import(const short *src, int n) {
  Resize(n);
  TargetLib::Convert_16s32f(src, m_pData, n);
}

void VecReal32::Import(const unsigned short *src, int n) {
  Resize(n);
  TargetLib::Convert_16u32f(src, m_pData, n);
}

void VecReal32::Export(double *dst, int n) const { TargetLib::Convert_32f64f(m_pData, dst, n); }

bool VecReal32::IsEqual(const VecReal32 &arg, float tol) const {
  return m_length == arg.m_length && IsWithin(arg, tol);
}

static_assert(sizeof(VecReal32) == sizeof(BaseVector<float>));

} // namespace QORN
