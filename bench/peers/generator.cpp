#include "peers/generator.h"

#if defined(QORN_PEER_LIQUID)
#include <complex>
#include <vector>

#include <liquid/liquid.h>

namespace peers {

struct ShapedSymbols::State {
  modemcf modem;
  firinterp_crcf shaper;
  std::vector<liquid_float_complex> points;
};

ShapedSymbols::ShapedSymbols(bool qam, int bits, int samplesPerSymbol, int delay, float rolloff)
    : m_state(std::make_unique<State>()) {
  const int scheme =
      (qam ? static_cast<int>(LIQUID_MODEM_QAM4) - 2 : static_cast<int>(LIQUID_MODEM_PSK2) - 1) + bits;
  m_state->modem = modemcf_create(static_cast<modulation_scheme>(scheme));
  m_state->shaper =
      firinterp_crcf_create_prototype(LIQUID_FIRFILT_RRC, static_cast<unsigned>(samplesPerSymbol),
                                      static_cast<unsigned>(delay), rolloff, 0.0F);
}

ShapedSymbols::~ShapedSymbols() {
  modemcf_destroy(m_state->modem);
  firinterp_crcf_destroy(m_state->shaper);
}

// Its interface takes sources without const and leaves them as they are.
void ShapedSymbols::Generate(const unsigned int *symbols, int count, QORN::Cplx32 *dst) {
  m_state->points.resize(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    modemcf_modulate(m_state->modem, symbols[i], &m_state->points[static_cast<std::size_t>(i)]);
  }
  firinterp_crcf_execute_block(m_state->shaper, m_state->points.data(), static_cast<unsigned>(count),
                               reinterpret_cast<liquid_float_complex *>(dst));
}

} // namespace peers
#endif
