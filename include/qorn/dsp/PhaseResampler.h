#ifndef QORN_DSP_PHASERESAMPLER_H
#define QORN_DSP_PHASERESAMPLER_H

#include "qorn/Export.h"
#include "qorn/dsp/FIRFilter.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

class VecCplx32;

/// Shifts a record by a fraction of a sample, without a change of rate, through the polynomial that runs
/// through N neighbouring samples (Lagrange interpolation; T. I. Laakso, V. Valimaki, M. Karjalainen and U.
/// K. Laine: Splitting the unit delay, IEEE Signal Processing Magazine, 1996).
///
/// The filter's delay lies within half a sample of the middle of its N taps, where the interpolation is best;
/// the whole samples of the shift are returned as a count. Nothing is carried from call to call. A copy is an
/// object of its own; one object serves one thread at a time.
class QORN_API PhaseResampler {
public:
  /// N = 15 taps.
  PhaseResampler() = default;

  /// Sets the number of taps N, which should be odd. With N below 1 there is no filter and all outputs are
  /// zero.
  void SetFilterLength(int n) { m_filterLength = n; }

  /// (N - 1) / 2, truncated: the taps before the middle one.
  int GetPreCharge() const { return static_cast<int>((static_cast<long long>(m_filterLength) - 1) / 2); }

  /// dst[n] = sum over 0 <= i < N of coef[i] * src[n - i], 0 <= n < src.length, with src zero before its
  /// first element. coef[i] is the product over all 0 <= m < N but i of (d - m) / (i - m), in float, so that
  /// dst[n] is src at n - d; and d = k - frac lies within half a sample of GetPreCharge().
  ///
  /// delay becomes k + GetPreCharge(): dst[n + delay] is src at n + GetPreCharge() + frac. From dst[N - 1] on
  /// no tap reaches in front of the record. frac may be any number between about -N / 2 and N / 2. Beyond
  /// these the taps are a unit impulse at GetPreCharge(), and GetPreCharge() is added to the delay that the
  /// caller passed in.
  ///
  /// dst must not be src. A kept dst allocates nothing; for complex data, what FIRFilter::Apply needs. Throws
  /// QORNException 11001 if there is no memory.
  ///@{
  void Apply(VecReal32 &dst, int &delay, const VecReal32 &src, float frac);
  void Apply(VecCplx32 &dst, int &delay, const VecCplx32 &src, float frac);
  ///@}

private:
  void ComputeCoef(VecReal32 &coef, int &delay, float frac);

  int m_filterLength = 15;
  VecReal32 m_coef;
  FIRFilter m_filter;
};

} // namespace QORN

#endif
