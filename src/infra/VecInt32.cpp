#include "qorn/infra/VecInt32.h"

#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/infra/VectorConversion.h"

namespace QORN {

VecInt32 &VecInt32::operator=(const VecReal32 &src) {
  Import(src);
  return *this;
}

VecInt32 &VecInt32::operator=(const VecReal64 &src) {
  Import(src);
  return *this;
}

void VecInt32::Import(const VecReal32 &src) { VectorConversion::Convert(*this, src); }

void VecInt32::Import(const VecReal64 &src) { VectorConversion::Convert(*this, src); }

void VecInt32::Ramp(int n, int offset, int slope) {
  Resize(n);
  // Unsigned, so that an overflow wraps.
  for (int i = 0; i < n; ++i) {
    m_pData[i] = static_cast<int>(static_cast<unsigned>(offset) +
                                  static_cast<unsigned>(i) * static_cast<unsigned>(slope));
  }
}

} // namespace QORN
