#include "qorn/infra/VecReal64.h"

#include "Checks.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VectorConversion.h"

namespace QORN {

VecReal64::VecReal64(const VecReal32 &src) {
  CreateUncleared(src.GetSize());
  Import(src);
}

VecReal64 &VecReal64::operator=(const VecReal32 &src) {
  Import(src);
  return *this;
}

VecReal64 &VecReal64::operator=(const VecInt32 &src) {
  Import(src);
  return *this;
}

void VecReal64::Import(const VecReal32 &src) { VectorConversion::Convert(*this, src); }

void VecReal64::Import(const VecInt32 &src) { VectorConversion::Convert(*this, src); }

void VecReal64::Import(const float *src, int n) {
  Resize(n);
  TargetLib::Convert_32f64f(src, m_pData, n);
}

bool VecReal64::IsEqual(const VecReal64 &arg, double tol) const {
  checks::Operand("length of arg", arg.m_length, m_length);
  return IsWithin(arg, tol);
}

static_assert(sizeof(VecReal64) == sizeof(BaseVector<double>));

} // namespace QORN
