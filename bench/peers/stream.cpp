#include "peers/stream.h"

#include <algorithm>
#include <chrono>
#include <cstddef>

#if defined(QORN_PEER_VOLK)
#include <volk/volk.h>
#endif
#if defined(QORN_PEER_LIQUID)
#include <complex>

#include <liquid/liquid.h>
#endif
#if defined(QORN_PEER_FFTW)
#include <fftw3.h>
#endif

namespace peers {

using QORN::Cplx32;

#if defined(QORN_PEER_VOLK)
DotProducts::DotProducts(const std::vector<float> &taps, int block, int decimation)
    : m_taps(static_cast<float *>(volk_malloc(sizeof(float) * taps.size(), volk_get_alignment())), volk_free),
      m_tapCount(static_cast<int>(taps.size())), m_block(block), m_decimation(decimation),
      m_line(taps.size() - 1 + static_cast<std::size_t>(block)) {
  std::reverse_copy(taps.begin(), taps.end(), m_taps.get());
}

void DotProducts::Run(const Cplx32 *src, Cplx32 *dst) {
  const auto past = std::ptrdiff_t{m_tapCount} - 1;
  std::copy_n(src, m_block, m_line.begin() + past);
  for (int n = 0; n < m_block; n += m_decimation) {
    volk_32fc_32f_dot_prod_32fc(reinterpret_cast<lv_32fc_t *>(dst++),
                                reinterpret_cast<const lv_32fc_t *>(m_line.data() + n), m_taps.get(),
                                static_cast<unsigned>(m_tapCount));
  }
  std::copy_n(m_line.begin() + m_block, past, m_line.begin());
}
#endif

#if defined(QORN_PEER_LIQUID)
namespace {
// Its interfaces take sources without const and leave them as they are.
liquid_float_complex *In(const Cplx32 *x) {
  return reinterpret_cast<liquid_float_complex *>(const_cast<Cplx32 *>(x));
}
liquid_float_complex *Out(Cplx32 *x) { return reinterpret_cast<liquid_float_complex *>(x); }
unsigned Size(const std::vector<float> &taps) { return static_cast<unsigned>(taps.size()); }
float *Taps(const std::vector<float> &taps) { return const_cast<float *>(taps.data()); }
} // namespace

struct LiquidFir::State {
  firfilt_crcf filter;
  unsigned block;
};
LiquidFir::LiquidFir(const std::vector<float> &taps, int block)
    : m_state(new State{firfilt_crcf_create(Taps(taps), Size(taps)), static_cast<unsigned>(block)}) {}
LiquidFir::~LiquidFir() { firfilt_crcf_destroy(m_state->filter); }
void LiquidFir::Run(const Cplx32 *src, Cplx32 *dst) {
  firfilt_crcf_execute_block(m_state->filter, In(src), m_state->block, Out(dst));
}

struct LiquidFft::State {
  fftfilt_crcf filter;
};
LiquidFft::LiquidFft(const std::vector<float> &taps, int block)
    : m_state(new State{fftfilt_crcf_create(Taps(taps), Size(taps), static_cast<unsigned>(block))}) {}
LiquidFft::~LiquidFft() { fftfilt_crcf_destroy(m_state->filter); }
void LiquidFft::Run(const Cplx32 *src, Cplx32 *dst) {
  fftfilt_crcf_execute(m_state->filter, In(src), Out(dst));
}

struct LiquidDecimator::State {
  firdecim_crcf filter;
  unsigned outputs;
};
LiquidDecimator::LiquidDecimator(const std::vector<float> &taps, int block, int decimation)
    : m_state(new State{firdecim_crcf_create(static_cast<unsigned>(decimation), Taps(taps), Size(taps)),
                        static_cast<unsigned>(block / decimation)}) {}
LiquidDecimator::~LiquidDecimator() { firdecim_crcf_destroy(m_state->filter); }
void LiquidDecimator::Run(const Cplx32 *src, Cplx32 *dst) {
  firdecim_crcf_execute_block(m_state->filter, In(src), m_state->outputs, Out(dst));
}
#endif

#if defined(QORN_PEER_FFTW)
namespace {

// One length of transforms.
class Blocks {
public:
  Blocks(const std::vector<float> &taps, int block, int length)
      : m_past(static_cast<int>(taps.size()) - 1), m_block(block), m_length(length), m_values(Values(length)),
        m_spectrum(Values(length)), m_factor(Values(length)),
        m_line(taps.size() - 1 + static_cast<std::size_t>(block)) {
    m_forward = fftwf_plan_dft_1d(length, m_values, m_spectrum, FFTW_FORWARD, FFTW_MEASURE);
    m_inverse = fftwf_plan_dft_1d(length, m_spectrum, m_values, FFTW_BACKWARD, FFTW_MEASURE);
    for (int i = 0; i < length; ++i) {
      m_values[i][0] = i <= m_past ? taps[static_cast<std::size_t>(i)] / static_cast<float>(length) : 0.0F;
      m_values[i][1] = 0;
    }
    fftwf_execute(m_forward);
    std::copy_n(&m_spectrum[0][0], 2 * length, &m_factor[0][0]);
  }
  ~Blocks() {
    fftwf_destroy_plan(m_forward);
    fftwf_destroy_plan(m_inverse);
    fftwf_free(m_values);
    fftwf_free(m_spectrum);
    fftwf_free(m_factor);
  }
  Blocks(const Blocks &) = delete;
  Blocks &operator=(const Blocks &) = delete;

  void Run(const Cplx32 *src, Cplx32 *dst) {
    std::copy_n(src, m_block, m_line.begin() + m_past);
    const int step = m_length - m_past, size = m_past + m_block;
    for (int first = 0; first < m_block; first += step) {
      const int count = std::min(m_length, size - first);
      std::copy_n(m_line.data() + first, count, reinterpret_cast<Cplx32 *>(m_values));
      std::fill(&m_values[0][0] + 2 * count, &m_values[0][0] + 2 * m_length, 0.0F);
      fftwf_execute(m_forward);
      for (int k = 0; k < m_length; ++k) {
        const float re = m_spectrum[k][0], im = m_spectrum[k][1];
        m_spectrum[k][0] = re * m_factor[k][0] - im * m_factor[k][1];
        m_spectrum[k][1] = re * m_factor[k][1] + im * m_factor[k][0];
      }
      fftwf_execute(m_inverse);
      std::copy_n(reinterpret_cast<Cplx32 *>(m_values) + m_past, std::min(step, m_block - first),
                  dst + first);
    }
    std::copy_n(m_line.begin() + m_block, m_past, m_line.begin());
  }

private:
  static fftwf_complex *Values(int length) {
    return static_cast<fftwf_complex *>(
        fftwf_malloc(sizeof(fftwf_complex) * static_cast<std::size_t>(length)));
  }

  int m_past, m_block, m_length;
  fftwf_complex *m_values, *m_spectrum, *m_factor;
  std::vector<Cplx32> m_line;
  fftwf_plan m_forward, m_inverse;
};

} // namespace

struct FftwStream::State {
  std::unique_ptr<Blocks> best;
};

FftwStream::FftwStream(const std::vector<float> &taps, int block) : m_state(new State) {
  const std::vector<Cplx32> src(static_cast<std::size_t>(block));
  std::vector<Cplx32> dst(src.size());
  const int past = static_cast<int>(taps.size()) - 1;
  double least = 1e9;
  for (int power = 64; power <= 2 * (block + past); power *= 2) {
    for (const int length : {power, power / 8 * 9, power / 4 * 5, power / 2 * 3}) {
      if (length < 2 * past && length < block + past) continue;
      auto blocks = std::make_unique<Blocks>(taps, block, length);
      double fastest = 1e9;
      for (int run = 0; run < 20; ++run) {
        const auto start = std::chrono::steady_clock::now();
        blocks->Run(src.data(), dst.data());
        fastest = std::min(fastest,
                           std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
      }
      if (fastest < least) {
        least = fastest;
        m_state->best = std::move(blocks);
      }
    }
  }
}

FftwStream::~FftwStream() = default;

void FftwStream::Run(const Cplx32 *src, Cplx32 *dst) { m_state->best->Run(src, dst); }
#endif

} // namespace peers
