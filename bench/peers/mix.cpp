#include "peers/mix.h"

#include <cmath>

#if defined(QORN_PEER_VOLK)
#include <volk/volk.h>
#endif
#if defined(QORN_PEER_LIQUID)
#include <complex>

#include <liquid/liquid.h>
#endif

namespace peers {

namespace {
[[maybe_unused]] constexpr double kTwoPi = 6.283185307179586;
}

#if defined(QORN_PEER_VOLK)
Rotator::Rotator(double frequency)
    : m_step{static_cast<float>(std::cos(kTwoPi * frequency)),
             static_cast<float>(std::sin(kTwoPi * frequency))} {}

void Rotator::Mix(const QORN::Cplx32 *src, QORN::Cplx32 *dst, int len) {
  volk_32fc_s32fc_x2_rotator_32fc(reinterpret_cast<lv_32fc_t *>(dst),
                                  reinterpret_cast<const lv_32fc_t *>(src), lv_32fc_t(m_step.re, m_step.im),
                                  reinterpret_cast<lv_32fc_t *>(&m_phasor), static_cast<unsigned>(len));
}
#endif

#if defined(QORN_PEER_LIQUID)
struct Nco::State {
  nco_crcf nco;
};

Nco::Nco(double frequency, bool exact)
    : m_state(new State{nco_crcf_create(exact ? LIQUID_VCO : LIQUID_NCO)}) {
  nco_crcf_set_frequency(m_state->nco, static_cast<float>(kTwoPi * frequency));
}

Nco::~Nco() { nco_crcf_destroy(m_state->nco); }

// Its interface takes the source without const and leaves it as it is.
void Nco::Mix(const QORN::Cplx32 *src, QORN::Cplx32 *dst, int len) {
  auto *in = reinterpret_cast<liquid_float_complex *>(const_cast<QORN::Cplx32 *>(src));
  nco_crcf_mix_block_up(m_state->nco, in, reinterpret_cast<liquid_float_complex *>(dst),
                        static_cast<unsigned>(len));
}
#endif

} // namespace peers
