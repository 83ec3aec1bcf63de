#ifndef QORN_DSP_FFT_H
#define QORN_DSP_FFT_H

#include <memory>

#include "qorn/Export.h"
#include "qorn/dsp/FftScaleFlag.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"

namespace QORN {

namespace fourier {
class Plan;
class Workspace;
} // namespace fourier

/// The Fourier transform of N = 2^order complex points, planned once, in float or in double.
///
///   forward: X[k] = sum over n of x[n] exp(-j 2 pi n k / N),   inverse: x[n] = sum over k of X[k] exp(+j 2
///   pi n k / N)
///
/// for 0 <= k, n < N, each times the factor of its FftScaleFlag. Bin k stands at index k: frequency 0 first,
/// negative frequencies in the upper half. Relative rms error at most 0.4 eps sqrt(log2 N), eps = 2^-23 in
/// float and 2^-52 in double.
///
/// An object never changes after construction but for its work memory, so it is for one thread at a time; the
/// transforms allocate nothing. Copies are independent: each owns its plan and work memory.
///
/// An order below 0 or above 30, or one whose plan finds no memory, gives an object whose transforms do
/// nothing: out then has the length of in and holds what Resize left in it. The same holds of a vector whose
/// length is not N, and of one of the other precision than the object's.
class QORN_API FFT {
public:
  /// FFT(order, FftScaleInverseByN, QORNAlgorithmAccurate, useDouble).
  FFT(int order, bool useDouble);

  /// Plans 2^order points of Cplx64 if useDouble is true, else of Cplx32.
  FFT(int order, FftScaleFlag scaleFlag, QORNAlgorithm algorithm, bool useDouble);

  FFT(const FFT &other);
  FFT &operator=(const FFT &other);
  ~FFT();

  /// N = 2^order; 0 for an order that is refused.
  int GetFFTLen() const { return m_length; }

  /// out = transform of in, which holds exactly N points; out gets its length. out may be in. Throws
  /// QORNException 11001 if out has to grow and there is no memory.
  ///@{
  void Forward(VecCplx32 &out, VecCplx32 const &in);
  void Inverse(VecCplx32 &out, VecCplx32 const &in);
  void Forward(VecCplx64 &out, VecCplx64 const &in);
  void Inverse(VecCplx64 &out, VecCplx64 const &in);
  ///@}

  /// data = transform of data, exactly N points.
  ///@{
  void Forward(VecCplx32 &data);
  void Inverse(VecCplx32 &data);
  void Forward(VecCplx64 &data);
  void Inverse(VecCplx64 &data);
  ///@}

private:
  friend class ChirpZ; // these ask whether the plan found memory
  friend class OFDMSigGen;

  template <class T, class V> void Transform(V &out, const V &in, bool forward);

  int m_order;
  int m_length;
  bool m_double;
  FftScaleFlag m_scaleFlag;
  QORNAlgorithm m_algorithm;
  std::unique_ptr<fourier::Plan> m_plan;
  std::unique_ptr<fourier::Workspace> m_work;
};

} // namespace QORN

#endif
