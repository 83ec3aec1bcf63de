#ifndef QORN_DSP_SFIRFILTER_H
#define QORN_DSP_SFIRFILTER_H

#include <memory>

#include "qorn/Export.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

template <class Tap> class StreamingFir;

/// An FIR filter for signals that come in pieces.
///
///   y[n] = sum over k of h[k] x[n - k],   0 <= k < T
///
/// x goes on from call to call: the filter keeps its last T - 1 samples, zeros at first, so a signal may be
/// cut into pieces of any lengths, down to a sample, and gives the outputs that it would give in one piece.
///
/// The error of each output, or of each part of a complex one, is at most 4 eps times its own sum of |h[k]|
/// |x[n - k]| (of real taps: of that part's samples), eps = 2^-23, as that of TargetLib::Conv_32f, and
/// however the signal is cut. There are two methods, and T and the length of a piece alone choose between
/// them:
/// - direct sums for fewer than 64 taps, for short pieces, and for what is left of a long piece. The bits of
///   an output depend on its own operands alone, so they do not depend on the cut either.
/// - transforms in double (overlap-save), where these are estimated to take less time: from 64 taps on, of
///   pieces of some hundred samples, a thousand at most. Outputs that the rounding errors of loud samples
///   nearby could have spoiled are told by bounds and computed again. The last bits of an output may depend
///   on the cut.
/// Either way outputs without a nonzero product are exactly 0, what is not finite shows in the outputs that
/// it belongs to and nowhere else, and the state is the same samples, so the methods may take turns.
///
/// Real taps on a complex signal are two real filters: each part of each output by direct sums has the bits
/// that it would have alone. The two parts have a delay line each, and a real signal uses that of the real
/// part; so an object that has to change from real signals to complex ones or back is flushed in between.
///
/// An object is for one signal and one thread at a time. A copy goes on by itself from the state that it was
/// copied with.
class QORN_API SFIRFilter {
public:
  /// Without taps: all outputs are zero.
  SFIRFilter();

  /// As SFIRFilter() followed by SetTaps.
  ///@{
  explicit SFIRFilter(VecReal32 const &taps);
  explicit SFIRFilter(VecCplx32 const &taps);
  ///@}

  SFIRFilter(const SFIRFilter &other);
  SFIRFilter &operator=(const SFIRFilter &other);

  /// What other was; other is left without taps.
  ///@{
  SFIRFilter(SFIRFilter &&other) noexcept;
  SFIRFilter &operator=(SFIRFilter &&other) noexcept;
  ///@}

  ~SFIRFilter();

  /// Replaces the taps, h[k] = taps[k], and clears the state. All memory that the filter needs is taken here
  /// and depends on T alone. Throws QORNException 11001 if there is none; the object then is without taps.
  ///@{
  void SetTaps(VecReal32 const &taps);
  void SetTaps(VecCplx32 const &taps);
  ///@}

  /// Filters the next L samples: out gets the length of in and the outputs of these samples.
  ///
  /// If trim is true, those of the first T - 1 are then dropped, which are the ones that samples of earlier
  /// calls have a part in (after a Flush, the ones in which the filter was not yet full): out is narrowed, as
  /// by BaseVector::Trim, to the other L - T + 1, or to none if L is below T. That is so in every call that
  /// asks for it, and the state does not depend on it.
  ///
  /// out may be in; the forms with one vector filter in place. Nothing is allocated but what out has to grow
  /// by; then QORNException 11001 is thrown if there is no memory. A real signal and complex taps do not go
  /// together: QORNException 10002 "invalid input parameter".
  ///@{
  void Apply(VecReal32 &out, VecReal32 const &in, bool trim);
  void Apply(VecReal32 &data, bool trim);
  void Apply(VecCplx32 &out, VecCplx32 const &in, bool trim);
  void Apply(VecCplx32 &data, bool trim);
  ///@}

  /// Forgets the samples of earlier calls; the taps stay.
  void Flush();

private:
  // The form of signal whose latest samples are in the filter's engine and not in the delay lines.
  enum class Held { kNothing, kReal, kCplx };

  void Hold(Held form);
  template <class V> static void Trim(V &out, int tapCount, bool trim);
  void ApplyReal(VecReal32 &out, VecReal32 const &in, bool trim);
  void ApplyCplx(VecCplx32 &out, VecCplx32 const &in, bool trim);
  void ReleaseResources();

  int m_tapCount = 0;
  bool m_isComplex = false;
  Held m_held = Held::kNothing;
  VecReal32 m_taps;
  VecCplx32 m_cplxTaps;
  VecReal32 m_delayLine,
      m_imagDelayLine; // T - 1 samples each: of real signals or real parts, of imaginary parts
  VecCplx32 m_cplxDelayLine;
  std::unique_ptr<StreamingFir<float>> m_engine; // of real taps
  std::unique_ptr<StreamingFir<Cplx32>> m_cplxEngine;
};

} // namespace QORN

#endif
