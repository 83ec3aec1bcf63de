#include "BlockTransform.h"

namespace tool {

BlockTransform WholeSpectrum(const WindowKind &window, int samples) {
  QORN::Spectrum spectrum(samples, window.type, window.parameter);
  spectrum.SetUnit(QORN::PowerUnitVolt);
  return
      [spectrum, volts = QORN::VecReal32()](QORN::VecReal64 &powers, const QORN::VecCplx32 &block) mutable {
        spectrum.Apply(volts, block);
        QORN::VecUtils::Convert(powers, volts);
        powers *= powers;
      };
}

} // namespace tool
