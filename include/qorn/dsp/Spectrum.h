#ifndef QORN_DSP_SPECTRUM_H
#define QORN_DSP_SPECTRUM_H

#include <memory>

#include "qorn/Export.h"
#include "qorn/dsp/WindowFactory.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal32.h"

namespace QORN {

class FT;

/// The unit of a spectrum. Any value other than PowerUnitDBV selects volts.
enum PowerUnit : int {
  PowerUnitDBV = 0, ///< 20 log10 of the magnitude in volts
  PowerUnitVolt = 1 ///< the magnitude in volts
};

/// The centred magnitude spectrum of a block of N samples: window, forward transform, magnitude, shift of the
/// zero frequency to the middle, unit.
///
/// A tone of amplitude A at bin k, A exp(j 2 pi k n / N), reads A at index k + N / 2 (N / 2 rounded down)
/// with no further correction, since the window has unit sum and the transform is not scaled. The window, the
/// plan of the transform and all intermediate vectors stay in the object: from the second block on, nothing
/// is allocated.
///
/// A copy is an independent object with its own window and transform. One object serves one thread at a time.
class QORN_API Spectrum {
public:
  /// Blocks of size samples, the Blackman-Harris window, dBV. Throws QORNException 11001 if there is no
  /// memory or size is negative.
  explicit Spectrum(int size);

  /// The same with a window by its kind; the parameter reaches Window::SetParameters(int, float), so it is
  /// alpha for Gauss and beta for the Kaiser family. With a kind that WindowFactory does not offer the object
  /// has no window, and Apply refuses to work.
  Spectrum(int size, WindowType type, float parameter = 0.0F);

  Spectrum(const Spectrum &other);
  Spectrum &operator=(const Spectrum &other);

  virtual ~Spectrum();

  /// PowerUnitDBV, which is in force at first, or volts.
  void SetUnit(PowerUnit unit) { m_unit = unit; }

  /// The number of points N.
  int GetSize() const { return m_size; }

  /// The spectrum of a block of N samples, N points from the most negative frequency up, the zero frequency
  /// at index N / 2 rounded down. In dBV a magnitude of 0 reads -800, see UnitConversion::Volt2dBV. The real
  /// form gives the full two-sided spectrum, in which a cosine of amplitude A reads A / 2 at either side.
  ///
  /// out gets the length of in and may be in. A block of another length is not refused, but the
  /// window fits N samples alone, see Window::Apply. Throws QORNException 10002 "invalid input parameter" if
  /// the object has no window.
  ///@{
  void Apply(VecReal32 &out, const VecCplx32 &in);
  void Apply(VecReal32 &out, const VecReal32 &in);
  ///@}

  /// The same for N complex samples whose real and imaginary parts stand in two arrays of N floats.
  void Apply(VecReal32 &out, const float *re, const float *im);

private:
  const Window &GetWindow() const;
  void Transform(const VecCplx32 &in);
  void Finish(VecReal32 &out) const;

  int m_size;
  std::unique_ptr<Window> m_window;
  float m_parameter;
  std::unique_ptr<FT> m_transform;
  PowerUnit m_unit;
  VecCplx32 m_windowedCplx;
  VecReal32 m_windowedReal;
  VecCplx32 m_transformed;
};

} // namespace QORN

#endif
