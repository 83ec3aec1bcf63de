#ifndef QORN_DSP_ARBRATERESAMPLER_H
#define QORN_DSP_ARBRATERESAMPLER_H

#include <memory>

#include "qorn/Export.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

class VecCplx32;

/// Changes the sample rate of a record by any real ratio, output rate over input rate.
///
/// Each output is the input, weighted by a low-pass filter that is centred on the output's instant. The
/// filter lies in a table of nStep points per input sample, and the values between two points are
/// interpolated linearly (J. O. Smith and P. Gossett: A flexible sampling-rate conversion method, ICASSP
/// 1984; R. E. Crochiere and L. R. Rabiner: Multirate Digital Signal Processing, 1983). Positions are times
/// in units of input samples, counted from the first element of the source; a caller may carry them from one
/// call to the next, see SequentialResampler.
///
/// The filter. With L = window * nStep / 2, rounded down, point j of either wing, j / nStep samples from the
/// centre, is
///   h[j] = c * sinc(rollf * j / nStep) * I0(alpha * sqrt(1 - (j / L)^2)) / I0(alpha), 0 <= j < L,
/// with sinc(x) = sin(pi x) / (pi x), and zero from L on: an ideal low-pass, cut off at rollf times half the
/// sampling rate, in a Kaiser window of shape alpha. It passes half the amplitude at the cut-off, and by
/// Kaiser's rule an alpha of 0.1102 (A - 8.7) rejects by A decibels beyond a transition band whose full width
/// is (A - 8) / (14.36 window) of the sampling rate. The factor c belongs to the phase j mod nStep and makes
/// the points of that phase in both wings sum to one, so a constant comes out as the same constant at every
/// instant; below a ratio of 1, where the primary kernel stretches the filter, it does so within the level of
/// the aliases. (Where the sums differ by more than a tenth, which takes a rollf above one or a window of a
/// sample or two, they have one factor in common.) The gain of the filter is 1.
///
/// The two kernels. The primary one takes the filter as it is for a ratio of 1 or more. Below 1 it stretches
/// it by 1 / ratio, and scales by ratio, so that the cut-off is rollf times half the output rate and nothing
/// aliases. It works in float: for noise of full scale a result differs from exact arithmetic on the same
/// table by 1e-7 of full scale in the root mean square, and by less than 2e-6 at most. The alternate kernel,
/// for ratios below 1 only, takes the filter as it is at any ratio: it keeps the whole band of the input,
/// which must be limited to that of the output already, and aliases otherwise. It works in double and rounds
/// once, at several times the cost. At a given instant of a given run both give the same bits on every
/// processor, and either part of a complex record those of a real one. An infinity or not-a-number in the
/// input reaches the outputs whose filter covers it and no other.
///
/// Quality. Of the primary kernel, measured with tones at ratios from 0.01 to 100, frequencies as parts of
/// half the lower of the two rates: the gain in a pass band, in decibels, the images of tones in that band,
/// and what is left of tones that would alias into it, in decibels of the tone.
///
/// | window, nStep, rollf, alpha | band | gain            | images | aliases        |
/// |-----------------------------|------|-----------------|--------|----------------|
/// | 90, 16, 0.9, 6.1422         | 0.8  | -0.021 to 0.005 | -57    | -59, from 1.2  |
/// | 10, 200, 0.95, 6.865        | 0.5  | -0.001 to 0.015 | -62    | -62, from 1.5  |
/// | 16, 50, 0.625, 6.1422       | 0.4  | -0.038 to 0.007 | -72    | -72, from 1.6  |
/// | 90, 512, 0.9, 10            | 0.8  | within 0.0002   | -104   | -105, from 1.2 |
///
/// The first row is the default. Images there come from the interpolation between only 16 points: nStep sets
/// their level, and alpha that of the aliases. The last row shows what the two can do.
///
/// Instants. A run starts at its time t0 and writes outputs at t0, t0 + 1 / ratio and so on while they lie
/// before trunc(t0) + len. In the primary kernel instant j is t0 + j / ratio, rounded once, so that a long
/// record does not drift; in the alternate one the rounded steps 1 / ratio are added one after the other.
/// Instants within 1e-5 table points of a point count as on it. Samples before the first and behind the last
/// element of the source count as zero, so any time and count will do; a negative time is split by its floor.
/// A time beyond the range of int or not-a-number gives no outputs, and so does a ratio that is not above
/// zero and finite.
///
/// A window or nStep of zero or less gives a filter without points: all outputs are zero. The constructors
/// throw QORNException 11001 if there is no memory for the table, of about 4 * (window + 34) * nStep floats.
/// A not-a-number for rollf or alpha makes the outputs not-a-number.
///
/// A copy is an object of its own. One object serves one thread at a time.
class QORN_API ArbRateResampler {
public:
  /// A window of 90 input samples, 16 table points per sample, cut-off 0.9, alpha 6.1422.
  explicit ArbRateResampler(double ratio);

  /// The window in input samples and the table points per sample; cut-off 0.9, alpha 6.1422.
  ArbRateResampler(double ratio, float window, int nStep);

  /// Everything: the cut-off as a fraction of half the sampling rate, and the shape of the Kaiser window.
  ArbRateResampler(double ratio, float window, int nStep, float rollf, float alpha);

  ArbRateResampler(const ArbRateResampler &other);
  ArbRateResampler &operator=(const ArbRateResampler &other);
  ~ArbRateResampler();

  /// Resamples a record that carries its own margins: GetHistory() samples in front of the first instant and
  /// GetHistory() + 2 behind the last. The run starts at time GetHistory() and consumes src.length - 2 *
  /// GetHistory() - 2 samples. dst gets the number of outputs as its length; if there are none, it keeps the
  /// upper bound that it was sized to first, (src.length - GetHistory() - 2) * ratio + 2 truncated, which may
  /// be below zero. Returns GetHistory().
  ///
  /// dst must not be src. A kept dst allocates nothing. Throws QORNException 11001 if dst cannot grow.
  ///@{
  int Apply(VecReal32 &dst, const VecReal32 &src);
  int Apply(VecCplx32 &dst, const VecCplx32 &src);
  ///@}

  /// Resamples from the given time on, counted in samples from src's first element, and consumes len samples.
  /// To have margins in front, pass GetHistory() plus a fraction. dst gets the number of outputs as its
  /// length; if there are none, it keeps what it was sized to first: len for a ratio below 1, otherwise
  /// src.length * ratio, rounded up, plus 1. Returns the time of the output that would follow, the given one
  /// if there was no output; less the samples that the caller drops it starts the next run.
  ///
  /// dst must not be src. A kept dst allocates nothing. Throws QORNException 11001 if dst cannot grow.
  ///@{
  double Apply(VecReal32 &dst, const VecReal32 &src, double time, int len);
  double Apply(VecCplx32 &dst, const VecCplx32 &src, double time, int len);
  ///@}

  /// The whole symmetric filter, 2 L - 1 points with the centre in the middle, and the points per input
  /// sample. A filter without points gives taps the length -1 and leaves its elements.
  void GetCoefficients(VecReal32 &taps, double &step);

  double GetRatio() const { return m_ratio; }

  /// The samples that the primary kernel's filter needs on each side of an instant, plus one: window / 2,
  /// below a ratio of 1 divided by it, truncated, plus 1.
  int GetHistory() const { return m_history; }

  /// Chooses the alternate kernel if use is true and the ratio is below 1, otherwise the primary one, which
  /// is in force at first.
  void UseAlternateResampler(bool use) { m_useAlternate = use && m_ratio < 1.0; }

private:
  struct Design;

  template <class V> int RunWhole(V &dst, const V &src);
  template <class V> double RunFrom(V &dst, const V &src, double time, int len);
  template <class V> double Run(V &dst, int size, const V &src, double time, int len);

  double m_ratio;
  int m_history;
  std::unique_ptr<const Design> m_design;
  VecReal32 m_scratch;
  bool m_useAlternate = false;
};

} // namespace QORN

#endif
