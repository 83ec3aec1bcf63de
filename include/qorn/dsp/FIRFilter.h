#ifndef QORN_DSP_FIRFILTER_H
#define QORN_DSP_FIRFILTER_H

#include "qorn/Export.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

/// Filters whole blocks by linear convolution, with taps that come with each call.
///
/// Of T taps h and L samples x the full convolution is c[k] = sum over 0 <= i < T of h[i] * x[k - i], 0 <= k
/// < T + L - 1, with x zero outside of the block: nothing is carried from one call to the next. A complex one
/// is made of real ones: re = hr * xr - hi * xi, im = hr * xi + hi * xr. Method and error are those of
/// TargetLib::Conv_32f and Conv_64f, for complex taps on complex samples those of CrossCorr_32fc.
///
/// The object holds nothing but scratch vectors, which keep their capacity. It is for one thread at a time; a
/// copy begins with scratch vectors of its own.
class QORN_API FIRFilter {
public:
  FIRFilter() = default;
  FIRFilter(const FIRFilter &) {}
  FIRFilter &operator=(const FIRFilter &) { return *this; }
  ~FIRFilter() = default;

  /// out[n] = c[n + T / 2] if centre is true, with T / 2 rounded down, so that a symmetric filter of odd
  /// length does not delay; out[n] = c[n] if it is false, the causal output. 0 <= n < L: out has the length
  /// of in and lacks what c has before and behind. Without taps all of out is zero. With real taps, or real
  /// samples, it is a view into T + L - 1 elements, see BaseVector::Truncate.
  ///
  /// out may be in or taps. Blocks of like size allocate nothing with real taps, but what the convolution
  /// kernel itself may ask for. Complex taps cost temporary vectors: two of T floats on real samples; one of
  /// the shorter operand's length on complex ones, and one more where out is an operand. Throws
  /// QORNException 11001 if there is no memory, also where T + L - 1 is beyond the lengths that a vector can
  /// have.
  ///@{
  void Apply(VecReal32 &out, VecReal32 const &taps, VecReal32 const &in, bool centre);
  void Apply(VecCplx32 &out, VecReal32 const &taps, VecCplx32 const &in, bool centre);
  void Apply(VecCplx64 &out, VecReal64 const &taps, VecCplx64 const &in, bool centre);
  void Apply(VecCplx32 &out, VecCplx32 const &taps, VecCplx32 const &in, bool centre);
  void Apply(VecCplx32 &out, VecCplx32 const &taps, VecReal32 const &in, bool centre);
  ///@}

private:
  template <class R> struct Scratch { R inRe, inIm, outRe, outIm; };

  Scratch<VecReal32> m_scratch32;
  Scratch<VecReal64> m_scratch64;
};

} // namespace QORN

#endif
