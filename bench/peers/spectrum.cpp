#include "peers/spectrum.h"

#if defined(QORN_PEER_FFTW) && defined(QORN_PEER_VOLK)

#include <fftw3.h>
#include <volk/volk.h>
#if defined(QORN_PEER_SLEEF) && (defined(__AVX512F__) || defined(__AVX2__))
#define HAVE_SLEEF_LOG 1
#include <immintrin.h>
#include <sleef.h>
#endif

#include <cmath>
#include <cstring>
#include <numbers>

namespace peers {

namespace {

#if defined(HAVE_SLEEF_LOG)
// 20 log10(x + offset) as in the library, so that both logarithms get the same work.
void DecibelsBySleef(float *x, int n) {
  const float offset = 1e-40F;
  int i = 0;
#if defined(__AVX512F__)
  for (; i + 16 <= n; i += 16) {
    const __m512 v = _mm512_add_ps(_mm512_loadu_ps(x + i), _mm512_set1_ps(offset));
    _mm512_storeu_ps(x + i, _mm512_mul_ps(_mm512_set1_ps(20.0F), Sleef_log10f16_u10avx512f(v)));
  }
#else
  for (; i + 8 <= n; i += 8) {
    const __m256 v = _mm256_add_ps(_mm256_loadu_ps(x + i), _mm256_set1_ps(offset));
    _mm256_storeu_ps(x + i, _mm256_mul_ps(_mm256_set1_ps(20.0F), Sleef_log10f8_u10avx2(v)));
  }
#endif
  for (; i < n; ++i) x[i] = 20.0F * Sleef_log10f_u10(x[i] + offset);
}
#endif

} // namespace

struct Spectrum::State {
  int n;
  Logarithm logarithm;
  fftwf_complex *windowed;
  fftwf_complex *transformed;
  float *window;
  float *magnitude;
  fftwf_plan plan;
};

bool HasLogarithm(Logarithm logarithm) {
#if defined(HAVE_SLEEF_LOG)
  return logarithm == Logarithm::Sleef || logarithm == Logarithm::Volk;
#else
  return logarithm == Logarithm::Volk;
#endif
}

Spectrum::Spectrum(int n, Logarithm logarithm) : m_state(std::make_unique<State>()) {
  const auto count = static_cast<std::size_t>(n);
  *m_state = {n,
              logarithm,
              fftwf_alloc_complex(count),
              fftwf_alloc_complex(count),
              fftwf_alloc_real(count),
              fftwf_alloc_real(count),
              nullptr};
  m_state->plan = fftwf_plan_dft_1d(n, m_state->windowed, m_state->transformed, FFTW_FORWARD, FFTW_MEASURE);
  for (int k = 0; k < n; ++k) {
    const double t = 2.0 * std::numbers::pi * k / n;
    const double w =
        0.35875 - 0.48829 * std::cos(t) + 0.14128 * std::cos(2.0 * t) - 0.01168 * std::cos(3.0 * t);
    m_state->window[k] = static_cast<float>(w / (0.35875 * n));
  }
}

Spectrum::~Spectrum() {
  fftwf_destroy_plan(m_state->plan);
  fftwf_free(m_state->windowed);
  fftwf_free(m_state->transformed);
  fftwf_free(m_state->window);
  fftwf_free(m_state->magnitude);
}

void Spectrum::Apply(float *out, const QORN::Cplx32 *in) {
  const State &s = *m_state;
  const auto count = static_cast<unsigned>(s.n);
  volk_32fc_32f_multiply_32fc(reinterpret_cast<lv_32fc_t *>(s.windowed),
                              reinterpret_cast<const lv_32fc_t *>(in), s.window, count);
  fftwf_execute(s.plan);
  volk_32fc_magnitude_32f(s.magnitude, reinterpret_cast<const lv_32fc_t *>(s.transformed), count);
  const auto half = static_cast<std::size_t>(s.n - s.n / 2);
  const auto rest = static_cast<std::size_t>(s.n / 2);
  std::memcpy(out, s.magnitude + half, rest * sizeof(float));
  std::memcpy(out + rest, s.magnitude, half * sizeof(float));
#if defined(HAVE_SLEEF_LOG)
  if (s.logarithm == Logarithm::Sleef) {
    DecibelsBySleef(out, s.n);
    return;
  }
#endif
  volk_32f_log2_32f(out, out, count);
  volk_32f_s32f_multiply_32f(out, out, 6.0205999F, count);
}

} // namespace peers

#endif
