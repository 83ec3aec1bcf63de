#ifndef QORN_DSP_FIRSTORDERFILTERS_H
#define QORN_DSP_FIRSTORDERFILTERS_H

#include <limits>

#include "qorn/Export.h"

namespace QORN {

class VecReal32;

/// A recursive filter with one pole and one zero, in direct form II: H(z) = (b0 + b1 / z) / (1 + a1 / z).
///
/// The state is carried from call to call, so a signal may come in pieces of any length; a copy carries on
/// from the state it was copied with. Everything runs in float. A pole outside the unit circle, |a1| >= 1, is
/// not refused: the output then grows or keeps oscillating as the formula has it. One thread at a time.
class QORN_API FirstOrderIIRFilter {
public:
  /// All taps and the state 0: the output is 0.
  FirstOrderIIRFilter() = default;

  /// The taps as SetTaps takes them, the state 0.
  FirstOrderIIRFilter(float b0, float b1, float a1) : m_b0(b0), m_b1(b1), m_a1(a1) {}

  FirstOrderIIRFilter(const FirstOrderIIRFilter &) = default;
  FirstOrderIIRFilter &operator=(const FirstOrderIIRFilter &) = default;
  virtual ~FirstOrderIIRFilter();

  /// Stores the taps; the state stays.
  void SetTaps(float b0, float b1, float a1);

  /// For each sample x = in[i] in order: v = x - a1 * w; out[i] = b0 * v + b1 * w; w = v, with w the state,
  /// each step rounded to float. out gets the length of in and may be in itself.
  void Apply(VecReal32 &out, const VecReal32 &in);

  /// Sets the state to 0.
  void Flush();

private:
  float m_b0 = 0.0F;
  float m_b1 = 0.0F;
  float m_a1 = 0.0F;
  float m_state = 0.0F;
};

/// An RC low-pass in discrete form, y[i] = g * x[i] - c * y[i - 1] with g = 1 / (time constant in samples)
/// and c = -exp(-g): the impulse response of the circuit, sampled.
///
/// For a constant input x the output tends to g * x / (1 - exp(-g)). That is x * (1 + g / 2 + ...): near x
/// for a time constant of many samples, and never x itself. The last output is the state; it is carried from
/// call to call, also over a change of the coefficients. Until ComputeFilterCoefficients is called the output
/// is 0. One thread at a time.
class QORN_API FirstOrderRCLowPass {
public:
  FirstOrderRCLowPass() = default;
  FirstOrderRCLowPass(const FirstOrderRCLowPass &) = default;
  FirstOrderRCLowPass &operator=(const FirstOrderRCLowPass &) = default;
  virtual ~FirstOrderRCLowPass();

  /// a is the time constant in seconds and b the sampling rate in hertz, or the other way round: only their
  /// product counts. g = 1 / (a * b) in float, c = -exp(-g) by a double exponential, rounded to float. The
  /// arguments of the latest call change nothing. A product of zero gives an infinite g.
  void ComputeFilterCoefficients(float a, float b);

  /// The next output for the next sample: g * x - c * y formed in double and rounded once to float.
  float Apply(float x);

  /// out[i] = g * in[i] - c * y for each sample in order, each step rounded to float: the last bit may
  /// differ from that of the scalar form. out gets the length of in and may be in itself.
  void Apply(VecReal32 &out, const VecReal32 &in);

  /// Sets the state y to 0.
  void Flush();

private:
  float m_a = std::numeric_limits<float>::quiet_NaN(); // equal to no argument
  float m_b = std::numeric_limits<float>::quiet_NaN();
  float m_state = 0.0F;
  float m_gain = 0.0F;
  float m_feedback = 0.0F;
};

} // namespace QORN

#endif
