#include "BlockTransform.h"

#include <memory>

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

BlockTransform ZoomedSpectrum(const WindowKind &window, int samples, double rate, int points, double first,
                              double spacing) {
  // In double, so that a strong signal beside the span leaves nothing in it but the window's own leakage.
  struct State {
    std::unique_ptr<QORN::Window> window;
    QORN::ChirpZ chirp;
    QORN::VecCplx32 weighted;
    QORN::VecCplx64 wide;
    QORN::VecCplx64 zoomed;
  };
  const auto state = std::make_shared<State>();
  state->window = MakeWindow(window, samples);
  state->chirp.SetParameters(samples, rate, points, first, spacing, true);
  return [state](QORN::VecReal64 &powers, const QORN::VecCplx32 &block) {
    state->window->Apply(state->weighted, block);
    QORN::VecUtils::Convert(state->wide, state->weighted);
    state->chirp.Apply(state->zoomed, state->wide);
    powers.Resize(state->zoomed.GetSize());
    QORN::TargetLib::MagSqr_64fc(state->zoomed.GetPtr(), powers.GetPtr(), powers.GetSize());
  };
}

} // namespace tool
