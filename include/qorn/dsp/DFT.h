#ifndef QORN_DSP_DFT_H
#define QORN_DSP_DFT_H

#include <memory>

#include "qorn/Export.h"
#include "qorn/infra/VecCplx32.h"

namespace QORN {

namespace fourier {
class Plan;
class Workspace;
} // namespace fourier

/// The Fourier transform of N complex floats for any N >= 1, planned once. The inverse is divided by N.
///
///   forward: X[k] = sum over n of x[n] exp(-j 2 pi n k / N),   inverse: x[n] = 1/N sum over k of X[k] exp(+j
///   2 pi n k / N)
///
/// Every N takes O(N log N) steps. The relative rms error is at most 0.4 eps sqrt(log2 N) where no prime
/// factor of N is above 13, else 1.0 eps sqrt(log2 N); eps = 2^-23.
///
/// An object never changes after construction but for its work memory, so it is for one thread at a time; the
/// transforms allocate nothing. Copies are independent: each owns its plan and work memory.
///
/// A length below 1, or one whose plan finds no memory, gives an object whose transforms do nothing: out then
/// has the length of in and holds what Resize left in it. The same holds of a vector whose length is not N.
class QORN_API DFT {
public:
  /// Plans length points.
  explicit DFT(int length);

  DFT(const DFT &other);
  DFT &operator=(const DFT &other);
  ~DFT();

  /// out = transform of in, which holds exactly N points; out gets its length. out may be in. Throws
  /// QORNException 11001 if out has to grow and there is no memory.
  ///@{
  void Forward(VecCplx32 &out, VecCplx32 const &in);
  void Inverse(VecCplx32 &out, VecCplx32 const &in);
  ///@}

  /// data = transform of data, exactly N points.
  ///@{
  void Forward(VecCplx32 &data);
  void Inverse(VecCplx32 &data);
  ///@}

private:
  void Transform(VecCplx32 &out, VecCplx32 const &in, bool forward);

  std::unique_ptr<fourier::Plan> m_plan;
  std::unique_ptr<fourier::Workspace> m_work;
  int m_length;
};

} // namespace QORN

#endif
