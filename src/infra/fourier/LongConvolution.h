// Convolutions and correlations too long for direct sums.
#ifndef QORN_SRC_INFRA_FOURIER_LONGCONVOLUTION_H
#define QORN_SRC_INFRA_FOURIER_LONGCONVOLUTION_H

#include <cstddef>
#include <memory>

#include "WorkArray.h"
#include "qorn/infra/Cplx.h"

namespace QORN::fourier {

/// Outputs y[first] to y[first + count - 1] of
///   y[n] = sum over k of conj(taps[k]) x[n - (tapCount - 1) + k], 0 <= k < tapCount,
/// x being zero outside 0 to len - 1: the whole convolution has 0 <= n < tapCount + len - 1, and the outputs
/// wanted lie in it. T is float, double or Cplx32.
template <class T> struct Correlation {
  const T *taps;
  int tapCount;
  const T *x;
  int len;
  std::ptrdiff_t first, count;
  T *dst; ///< output n goes to dst[n - first]
};

/// Correlations with one set of taps, by transforms of one length. Copies are clones. Throws QORNException
/// 11001 if there is no memory.
template <class T> class Correlator {
public:
  /// `length` is 2^k times 1, 3, 5 or 9, k >= 6, and at least tapCount. For kLasting, all memory is taken at
  /// once; else what few signals need is left until then, and RunParts is not to be called.
  Correlator(const T *taps, int tapCount, int length, Life life);
  Correlator(const Correlator &other);
  Correlator &operator=(const Correlator &) = delete;
  ~Correlator();

  int Length() const;

  /// The outputs that one run of the transforms gives; of RunParts half of them.
  std::ptrdiff_t Step() const;

  /// The job's taps are the constructor's.
  void Run(const Correlation<T> &job);

  /// For T = float: a complex signal's parts, each as a real one, with the constructor's taps. `window` has
  /// Length() values: from the first one under the taps of the first output on, and zeros behind the last.
  void RunParts(const float *taps, const Cplx32 *window, std::ptrdiff_t count, Cplx32 *dst);

private:
  class Job;
  std::unique_ptr<Job> m_job;
};

/// Fewer taps are always for direct sums.
inline constexpr int kLeastTaps = 32;

/// The estimated time of direct sums, in nanoseconds, as all estimates here: of M taps with L outputs,
/// `terms` products of which lie within the signal.
template <class T> double DirectCost(std::ptrdiff_t taps, std::ptrdiff_t outputs, double terms);

/// The length of the transforms, as of a Correlator, that serve the correlation of M taps with L outputs at
/// the least estimated work; 0 if even that is estimated at `limit` or more. Depends on its arguments alone.
template <class T> int BlockLength(std::ptrdiff_t taps, std::ptrdiff_t outputs, double limit);

/// The length of the transforms for an endless complex signal, 2^k times 1, 3, 5 or 9, k >= 6, that comes in
/// blocks of 4096 values or, if that is more, of as many as there are taps; 0 if it is only for direct sums,
/// since even a full run is estimated to take more than they (LeastTerms).
template <class T> int StreamLength(std::ptrdiff_t taps);

/// The number of products from which on a run of transforms is estimated to take less than direct sums.
template <class T> double LeastTerms(int length);

} // namespace QORN::fourier

#endif
