#include "qorn/dsp/PhaseResampler.h"

#include <algorithm>
#include <cmath>

#include "qorn/dsp/DSPUtils.h"
#include "qorn/infra/VecCplx32.h"

namespace QORN {

void PhaseResampler::Apply(VecReal32 &dst, int &delay, const VecReal32 &src, float frac) {
  ComputeCoef(m_coef, delay, frac);
  if (m_filterLength > 0) DSPUtils::Conv(dst, m_coef, src);
  dst.Resize(src.GetSize());
  if (m_filterLength < 1) dst.SetZero();
  delay += GetPreCharge();
}

void PhaseResampler::Apply(VecCplx32 &dst, int &delay, const VecCplx32 &src, float frac) {
  ComputeCoef(m_coef, delay, frac);
  m_filter.Apply(dst, m_coef, src, false); // as long as src already
  delay += GetPreCharge();
}

void PhaseResampler::ComputeCoef(VecReal32 &coef, int &delay, float frac) {
  const int mid = GetPreCharge();
  coef.Resize(std::max(m_filterLength, 0));
  coef.SetZero();
  if (m_filterLength > 0) coef[mid] = 1.0F;

  int k = frac >= 0.0F ? 1 : 0;
  float d = static_cast<float>(k) - frac;
  while (std::fabs(static_cast<float>(mid) - d) > 0.5F) {
    ++k;
    d = static_cast<float>(static_cast<double>(d) + 1.0);
    if (k > 2 * mid) return;
  }
  delay = k;

  for (int n = 0; n < m_filterLength; ++n) {
    float product = 1.0F;
    for (int m = 0; m < m_filterLength; ++m) {
      if (m == n) continue;
      product *= d - static_cast<float>(m);
      product /= static_cast<float>(n - m);
    }
    coef[n] = product;
  }
}

} // namespace QORN
