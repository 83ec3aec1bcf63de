#ifndef QORN_DSP_WINDOW_H
#define QORN_DSP_WINDOW_H

#include "qorn/Export.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

class VecReal64;
class VecCplx32;

/// The rectangular window, and the base of all others: the taper that is multiplied onto a block of N samples
/// before a Fourier transform, and the figures that a spectrum analyser needs about it.
///
/// The N coefficients w[k] sum to 1 (to float accuracy) and not to a peak of 1: a tone then reads its true
/// amplitude in an unscaled forward transform. Each is stored twice in a row, so that N complex samples, seen
/// as 2N floats, are windowed by one multiplication of arrays. A shape is a subclass that replaces the
/// computation of the coefficients and the resolution-bandwidth scaling.
///
/// Copies are deep. Apply and the getters only read the object; SetParameters must not run beside anything
/// else on the same object. On windows and their figures: F. J. Harris, On the use of windows for harmonic
/// analysis with the discrete Fourier transform, Proc. IEEE 66 (1978).
class QORN_API Window {
public:
  /// A window without coefficients: GetSize() is 0 until SetParameters.
  Window();

  /// The window of n points, as SetParameters(n).
  explicit Window(int n);

  /// As Window(n); the parameter is kept and has no effect.
  Window(int n, float parameter);

  Window(const Window &) = default;
  Window &operator=(const Window &) = default;

  virtual ~Window();

  /// Computes the coefficients for n points with the class's default parameter. The storage is reused where
  /// it suffices. The rectangular window is w[k] = 1 / n; an n below 1 becomes its size and leaves the
  /// coefficients as they are. Throws QORNException 11001 if there is no memory, in the other shapes also for
  /// a negative n.
  virtual void SetParameters(int n);

  /// As SetParameters(n) with a shape parameter, which only the parametric shapes use.
  virtual void SetParameters(int n, float parameter);

  /// Chooses the resolution-bandwidth scaling by the 6 dB bandwidth in hertz, where a shape offers that. Here
  /// it does nothing.
  virtual void Set6dBBWParam(double bandwidth);

  /// out[i] = in[i] * w[i], for blocks of exactly GetSize() samples; out may be in. out gets the length of
  /// in, and of two unequal lengths the smaller counts: samples beyond the coefficients are copied
  /// unweighted. The real forms go without a temporary where out is another vector than in, and VecReal64
  /// needs one of GetSize() doubles in any case; the complex forms never do.
  ///@{
  void Apply(VecCplx32 &out, const VecCplx32 &in) const;
  void Apply(VecCplx32 &data) const;
  void Apply(VecReal32 &out, const VecReal32 &in) const;
  void Apply(VecReal64 &out, const VecReal64 &in) const;
  ///@}

  /// out = the N normalised coefficients; empty after ReleaseCoefficients.
  void GetCoefficients(VecReal32 &out) const;

  /// The number of points N.
  int GetSize() const { return m_size; }

  /// The resolution bandwidth in bins: the bin spacing in hertz times this figure is the resolution bandwidth
  /// in hertz.
  float GetEffectiveRBWScaling() const { return m_rbwScaling; }

  /// The equivalent noise bandwidth in bins, N * sum(w^2) / (sum w)^2: 1 for the rectangular window, 1.5 for
  /// Hann. Throws QORNException 12001 if the coefficients sum to zero, as they do when there are none. Works
  /// on a temporary copy.
  float GetENBW() const;

  /// 10 log10(GetENBW()) in dB: what a noise power reads too high in the windowed spectrum. The logarithm is
  /// that of MathUtils::Log10. Throws as GetENBW.
  float GetPowerAdjustIndB() const;

  /// Frees the coefficients; size and parameter stay.
  void ReleaseCoefficients();

protected:
  /// The sum of the coefficients, so 1 for every normalised window.
  float GetNBScaleFactor() const;

  /// Stores each of the shape's elements twice and scales them to unit sum: the sum s of all stored floats is
  /// rounded to float, and each is multiplied by the float 1 / (s * 0.5). A shape of zero sum becomes
  /// not-a-number.
  void StoreNormalised(const VecReal32 &shape);

  VecReal32 m_coefficients;   ///< 2N floats, each coefficient twice in a row
  int m_size = 0;             ///< N
  float m_parameter = 0.0F;   ///< the shape parameter; 0 where a shape has none
  float m_rbwScaling = 0.89F; ///< see GetEffectiveRBWScaling

private:
  friend class Spectrum;

  /// How many of that many samples there are coefficients for.
  int CountFor(int samples) const;
};

} // namespace QORN

#endif
