#include "qorn/infra/VecCplx64.h"

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VectorConversion.h"

namespace QORN {

VecCplx64::VecCplx64(const VecCplx32 &src) {
  CreateUncleared(src.GetSize());
  Import(src);
}

VecCplx64::VecCplx64(const VecReal64 &re) {
  CreateUncleared(re.GetSize());
  Import(re);
}

VecCplx64::VecCplx64(const VecReal64 &re, const VecReal64 &im) {
  CreateUncleared(re.GetSize());
  Import(re, im);
}

VecCplx64 &VecCplx64::operator=(const VecCplx32 &src) {
  Import(src);
  return *this;
}

void VecCplx64::Import(const VecCplx32 &src) { VectorConversion::Convert(*this, src); }

void VecCplx64::Import(const float *re, const float *im, int n) {
  Resize(n);
  for (int i = 0; i < n; ++i) {
    m_pData[i] = {static_cast<double>(re[i]), static_cast<double>(im[i])};
  }
}

static_assert(sizeof(VecCplx64) == sizeof(BaseVector<Cplx64>));

} // namespace QORN
