#ifndef QORN_DSP_SFIRFILTERDEC_H
#define QORN_DSP_SFIRFILTERDEC_H

#include <memory>

#include "qorn/Export.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

class DecimatingFir;

/// An FIR filter for signals that come in pieces, of whose outputs every D-th is kept.
///
///   y[i] = sum over k of h[k] x[i D + p - k],   0 <= k < T,   with the phase 0 <= p < D
///
/// Only these outputs are computed, by direct sums, and each has the bits that it has where SFIRFilter takes
/// direct sums, with their error bound. x goes on from call to call, T samples of it being kept, as long as
/// the pieces have lengths divisible by D: the last L modulo D samples of a piece are dropped, as if they had
/// never been.
///
/// The parts of a complex signal are filtered as two real ones, with a delay line each. A real signal uses
/// that of the real part; so an object that has to change from real signals to complex ones or back is
/// flushed in between. An object is for one signal and one thread at a time. A copy goes on by itself from
/// the state that it was copied with.
class QORN_API SFIRFilterDec {
public:
  /// Not set up: the decimation is 0.
  SFIRFilterDec();

  /// As SFIRFilterDec() followed by SetParams.
  SFIRFilterDec(VecReal32 const &taps, int decimation, int phase);

  SFIRFilterDec(const SFIRFilterDec &other);
  SFIRFilterDec &operator=(const SFIRFilterDec &other);

  /// What other was; other is left as if not set up.
  ///@{
  SFIRFilterDec(SFIRFilterDec &&other) noexcept;
  SFIRFilterDec &operator=(SFIRFilterDec &&other) noexcept;
  ///@}

  ~SFIRFilterDec();

  /// h[k] = taps[k], D = decimation, p = phase, or D - 1 if phase is negative; clears the state. Without taps
  /// all outputs are zero. All memory that the filter needs is taken here and depends on the arguments alone.
  ///
  /// Throws QORNException 10002 "invalid input parameter" if decimation is negative, or if it is positive and
  /// not above phase; 11001 "memory allocation error" if there is no memory. The object then is not set up.
  void SetParams(VecReal32 const &taps, int decimation, int phase);

  /// Filters the next L samples into L / D outputs, rounded down. out gets that length, and may be in.
  /// Nothing is allocated but what out has to grow by; then QORNException 11001 is thrown if there is no
  /// memory. With a decimation of 0 it throws QORNException 12001 "divide-by-zero error".
  ///@{
  void Apply(VecReal32 &out, VecReal32 const &in);
  void Apply(VecCplx32 &out, VecCplx32 const &in);
  ///@}

  /// Forgets the samples of earlier calls; the parameters stay.
  void Flush();

private:
  // The form of signal whose latest samples are in the filter's engine and not in the delay lines.
  enum class Held { kNothing, kReal, kCplx };

  template <class V> int BeginOutput(V &out, V const &in) const;
  template <class V> static void EndOutput(V &out, int count);
  template <class V> void ApplyAny(V &out, V const &in, Held form);
  void ReleaseResources();

  int m_tapCount = 0;
  VecReal32 m_taps;
  int m_decimation = 0;
  int m_phase = 0;
  Held m_held = Held::kNothing;
  VecReal32 m_delayLine, m_imagDelayLine; // T samples each
  std::unique_ptr<DecimatingFir> m_engine;
};

} // namespace QORN

#endif
