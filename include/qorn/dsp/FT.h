#ifndef QORN_DSP_FT_H
#define QORN_DSP_FT_H

#include <cstddef>
#include <memory>

#include "qorn/Export.h"
#include "qorn/dsp/FftScaleFlag.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace fourier {
class Plan;
class Workspace;
} // namespace fourier

/// Fourier transforms of any length, real or complex, float or double: keeps a plan for each kind and length
/// that it has met.
///
///   forward: X[k] = sum over n of x[n] exp(-j 2 pi n k / N),   inverse: x[n] = sum over k of X[k] exp(+j 2
///   pi n k / N)
///
/// for 0 <= k, n < N, N being the length of in, each times the factor of the FftScaleFlag; with the default
/// one Inverse(Forward(x)) = x. Bin k stands at index k: frequency 0 first, negative frequencies in the upper
/// half; DSPUtils::FFTShift centres them. Every N takes O(N log N) steps. The relative rms error is at most
/// 0.4 eps sqrt(log2 N) where no prime factor of N is above 13, else 1.0 eps sqrt(log2 N), eps = 2^-23 in
/// float and 2^-52 in double.
///
/// The first transform of a kind and length makes its plan; each later one costs a walk over a short list and
/// allocates nothing but growth of out. Plans and work memory live as long as the object, so one that is fed
/// ever new lengths grows with each. An object is for one thread at a time. Copies are independent and own
/// plans of their own.
///
/// In all transforms out gets the length of in. If that is below 1, or its plan finds no memory, out holds
/// what Resize left in it and nothing else happens. Each throws QORNException 11001 if out has to grow and
/// there is no memory.
class QORN_API FT {
public:
  /// FftScaleInverseByN and QORNAlgorithmAccurate.
  FT();

  FT(FftScaleFlag scaleFlag, QORNAlgorithm algorithm);

  FT(const FT &other);
  FT &operator=(const FT &other);
  ~FT();

  /// The complex transforms. out may be in.
  ///@{
  void Forward(VecCplx32 &out, VecCplx32 const &in);
  void Inverse(VecCplx32 &out, VecCplx32 const &in);
  void Forward(VecCplx64 &out, VecCplx64 const &in);
  void Inverse(VecCplx64 &out, VecCplx64 const &in);
  ///@}

  /// All N bins of N real samples; X[N-k] is exactly the conjugate of X[k], and bins 0 and, for even N, N / 2
  /// are real. For even N about half the work of a complex transform.
  ///@{
  void Forward(VecCplx32 &out, VecReal32 const &in);
  void Forward(VecCplx64 &out, VecReal64 const &in);
  ///@}

  /// N real samples from N bins, of which only 0 to N / 2 are read: the others are taken as their conjugates,
  /// and the imaginary parts of bin 0 and, for even N, of bin N / 2 as zero.
  ///@{
  void Inverse(VecReal32 &out, VecCplx32 const &in);
  void Inverse(VecReal64 &out, VecCplx64 const &in);
  ///@}

  /// The number of plans kept of a kind: 0 real float, 1 complex float, 2 real double, 3 complex double.
  int GetPlanCount(int kind) const;

  /// Bytes of the work memory that all plans share: what the most demanding plan so far needs.
  std::size_t GetWorkSize() const { return m_workSize; }

private:
  friend class Spectrum;
  struct PlanRecord;
  template <class T, class P, class Out, class In>
  void Transform(int kind, Out &out, const In &in, bool forward);

  /// Forward of the products of in and weights, scalar by scalar, without a pass of its own for them; false,
  /// with nothing done but the Resize, if the plan of that length cannot do that.
  bool ForwardWeighted(VecCplx32 &out, VecCplx32 const &in, const float *weights);

  void FT_C32C32(VecCplx32 const &in, VecCplx32 &out, bool forward);
  void FT_C64C64(VecCplx64 const &in, VecCplx64 &out, bool forward);
  void FT_R32C32(VecReal32 &real, VecCplx32 &cplx, bool forward);
  void FT_R64C64(VecReal64 &real, VecCplx64 &cplx, bool forward);
  void *SetupFT(int kind, int length);

  FftScaleFlag m_scaleFlag;
  QORNAlgorithm m_algorithm;
  std::unique_ptr<PlanRecord> m_plans;
  std::unique_ptr<fourier::Workspace> m_work;
  std::size_t m_workSize = 0;
};

} // namespace QORN

#endif
