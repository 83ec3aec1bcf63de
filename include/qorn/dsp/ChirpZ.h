#ifndef QORN_DSP_CHIRPZ_H
#define QORN_DSP_CHIRPZ_H

#include <memory>

#include "qorn/Export.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"

namespace QORN {

class FFT;

/// The spectrum of a block on a frequency grid of one's own: a look into a narrow span without the full
/// transform that would resolve it.
///
///   X[k] = sum over n of x[n] exp(-j 2 pi (f0 + k df) n / fs),   0 <= n < N, 0 <= k < M
///
/// for N samples at the rate fs and M points from f0 on, df apart, all three in one unit. It is computed by
/// Bluestein's identity n k = (n^2 + k^2 - (k - n)^2) / 2 as a convolution with a chirp, by transforms of L
/// points, L the smallest power of two that is at least N + M - 1 (L. I. Bluestein, A linear filtering
/// approach to the computation of the discrete Fourier transform, IEEE Trans. AU-18, 1970).
///
/// The error of each point is at most (1.5 eps sqrt(log2 L) + 2^-51 theta) times the sum of all |x[n]|, with
/// eps = 2^-23 in float and 2^-52 in double, and at least 1 for the logarithm. theta = pi (2 |f0| N + |df|
/// max(N, M)^2) / fs is about the largest phase of the factors. It grows with the square of the length, so
/// phases are formed in double in both precisions; in the double form their rounding is the larger part of
/// the error.
///
/// All factors and the spectrum of the chirp are computed by SetParameters; Apply is left with two transforms
/// and three products, and allocates nothing but what out has to grow by. That is the shorter way where the
/// full transform of the same resolution, of fs / df points, is longer than about three of L. An object is
/// for one precision and one thread at a time. Copies are independent: each owns its plan and its working
/// set.
class QORN_API ChirpZ {
public:
  /// An object without parameters: ActualFFTLength() is -1, and Apply gives an empty vector.
  ChirpZ();

  /// As ChirpZ() followed by SetParameters.
  ChirpZ(int n, double fs, int m, double f0, double df, bool useDouble);

  ChirpZ(const ChirpZ &other);
  ChirpZ &operator=(const ChirpZ &other);

  /// What other was; other is left without a working set, so that its Apply gives an empty vector.
  ///@{
  ChirpZ(ChirpZ &&other) noexcept;
  ChirpZ &operator=(ChirpZ &&other) noexcept;
  ///@}

  ~ChirpZ();

  /// N = n samples at the rate fs, M = m points from f0 on, df apart; for Cplx64 if useDouble is true, else
  /// for Cplx32. Always true. If all six are what they were, exactly, it returns at once; else everything is
  /// computed anew, and the memory of the other precision is given back.
  ///
  /// In float df may be negative, and the grid then runs downwards; in double a negative df gives results
  /// that are not-a-number. So do, in both, an fs of 0 and arguments that are not finite; with not-a-number
  /// among them no call is a repetition. With n or m below 1 there is nothing to compute, and Apply gives an
  /// empty vector.
  ///
  /// Throws QORNException 11001 "memory allocation error" if there is no memory, or if L would be above 2^30.
  /// The object then is without parameters.
  bool SetParameters(int n, double fs, int m, double f0, double df, bool useDouble);

  /// out = the M points X[k] of the first N samples of in, in the precision that was chosen; out may be in. A
  /// block of less than N samples counts as followed by zeros. out is empty if the object has no parameters,
  /// or is for the other precision.
  ///
  /// Throws QORNException 11001 if out has to grow and there is no memory.
  ///@{
  void Apply(VecCplx32 &out, const VecCplx32 &in);
  void Apply(VecCplx64 &out, const VecCplx64 &in);
  ///@}

  /// L, the length of the transforms inside; -1 without parameters.
  int ActualFFTLength() const { return m_fftLength; }

private:
  template <class V> struct WorkingSet {
    V preMultiplier;  // N entries: exp(-j 2 pi f0 i / fs) q[i], q the chirp
    V filterSpectrum; // L: the transform of the conjugate chirp, wrapped around
    V postMultiplier; // M: q[k]
    V work;           // L
  };

  void InitParamsToInvalid();
  static void RequireMemory(const FFT &fft);
  template <class V> static WorkingSet<V> Prepare(FFT &fft, int n, int m, double a, double b);
  template <class V> void Run(WorkingSet<V> &set, V &out, const V &in);

  int m_inputLength;
  int m_outputPoints;
  int m_fftLength;
  double m_startFrequency;
  double m_frequencyStep;
  double m_samplingRate;
  bool m_useDouble;
  std::unique_ptr<FFT> m_fft;
  WorkingSet<VecCplx64> m_double;
  WorkingSet<VecCplx32> m_float;
};

} // namespace QORN

#endif
