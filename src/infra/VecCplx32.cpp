#include "qorn/infra/VecCplx32.h"

#include "Checks.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VectorConversion.h"

namespace QORN {

VecCplx32::VecCplx32(const VecCplx64 &src) {
  CreateUncleared(src.GetSize());
  Import(src);
}

VecCplx32::VecCplx32(const VecReal32 &re) {
  CreateUncleared(re.GetSize());
  Import(re);
}

VecCplx32::VecCplx32(const VecReal32 &re, const VecReal32 &im) {
  CreateUncleared(re.GetSize());
  Import(re, im);
}

VecCplx32 &VecCplx32::operator=(const VecCplx64 &src) {
  Import(src);
  return *this;
}

void VecCplx32::Import(const VecCplx64 &src) { VectorConversion::Convert(*this, src); }

void VecCplx32::Sub(const VecCplx32 &arg, int thisFirst, int argFirst, int count) {
  if (count == -1) count = arg.m_length - argFirst;
  checks::Range(thisFirst, count, m_length);
  checks::Range(argFirst, count, arg.m_length);
  TargetLib::Sub_32fc_I(arg.m_pData + argFirst, m_pData + thisFirst, count);
}

void VecCplx32::Import(const double *re, const double *im, int n) {
  Resize(n);
  for (int i = 0; i < n; ++i) m_pData[i] = {static_cast<float>(re[i]), static_cast<float>(im[i])};
}

void VecCplx32::Export(double *re, double *im, int n) const {
  for (int i = 0; i < n; ++i) {
    re[i] = static_cast<double>(m_pData[i].re);
    im[i] = static_cast<double>(m_pData[i].im);
  }
}

static_assert(sizeof(VecCplx32) == sizeof(BaseVector<Cplx32>));

} // namespace QORN
