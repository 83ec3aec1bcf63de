#include "peers/resample.h"

#include <algorithm>

#if defined(QORN_PEER_SOXR)
#include <soxr.h>
#endif
#if defined(QORN_PEER_SAMPLERATE)
#include <samplerate.h>
#endif
#if defined(QORN_PEER_LIQUID)
#include <complex>

#include <liquid/liquid.h>
#endif

namespace peers {

namespace {

#if defined(QORN_PEER_SOXR)
// Interleaved parts are its channels.
class Soxr : public Resampler {
public:
  Soxr(double ratio, unsigned long recipe) {
    const soxr_quality_spec_t quality = soxr_quality_spec(recipe, 0);
    const soxr_io_spec_t io = soxr_io_spec(SOXR_FLOAT32_I, SOXR_FLOAT32_I);
    const soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
    m_soxr = soxr_create(1.0, ratio, 2, nullptr, &io, &quality, &runtime);
  }
  ~Soxr() override { soxr_delete(m_soxr); }

  int Run(const QORN::Cplx32 *src, int len, QORN::Cplx32 *dst, int room) override {
    soxr_clear(m_soxr);
    std::size_t used = 0, done = 0, more = 0;
    soxr_process(m_soxr, src, static_cast<std::size_t>(len), &used, dst, static_cast<std::size_t>(room),
                 &done);
    soxr_process(m_soxr, nullptr, 0, nullptr, dst + done, static_cast<std::size_t>(room) - done, &more);
    return static_cast<int>(done + more);
  }

private:
  soxr_t m_soxr;
};

template <unsigned long kRecipe> std::unique_ptr<Resampler> MakeSoxr(double ratio) {
  return std::make_unique<Soxr>(ratio, kRecipe);
}
#endif

#if defined(QORN_PEER_SAMPLERATE)
class SampleRate : public Resampler {
public:
  explicit SampleRate(double ratio) : m_ratio(ratio) {
    int error = 0;
    m_state = src_new(SRC_SINC_MEDIUM_QUALITY, 2, &error);
  }
  ~SampleRate() override { src_delete(m_state); }

  int Run(const QORN::Cplx32 *src, int len, QORN::Cplx32 *dst, int room) override {
    src_reset(m_state);
    SRC_DATA data = {};
    data.data_in = &src->re;
    data.data_out = &dst->re;
    data.input_frames = len;
    data.output_frames = room;
    data.end_of_input = 1;
    data.src_ratio = m_ratio;
    src_process(m_state, &data);
    return static_cast<int>(data.output_frames_gen);
  }

private:
  double m_ratio;
  SRC_STATE *m_state;
};
#endif

#if defined(QORN_PEER_LIQUID)
// Its filter does not grow below a ratio of 1, so its length and cut-off are set by the ratio.
class Liquid : public Resampler {
public:
  explicit Liquid(double ratio) {
    const double narrowing = std::min(ratio, 1.0);
    m_resampler = resamp_crcf_create(static_cast<float>(ratio), static_cast<unsigned>(45.0 / narrowing),
                                     static_cast<float>(0.45 * narrowing), 65.0F, 256);
  }
  ~Liquid() override { resamp_crcf_destroy(m_resampler); }

  int Run(const QORN::Cplx32 *src, int len, QORN::Cplx32 *dst, int) override {
    resamp_crcf_reset(m_resampler);
    unsigned written = 0;
    auto *in = reinterpret_cast<liquid_float_complex *>(const_cast<QORN::Cplx32 *>(src));
    resamp_crcf_execute_block(m_resampler, in, static_cast<unsigned>(len),
                              reinterpret_cast<liquid_float_complex *>(dst), &written);
    return static_cast<int>(written);
  }

private:
  resamp_crcf m_resampler;
};
#endif

template <class Peer> [[maybe_unused]] std::unique_ptr<Resampler> Make(double ratio) {
  return std::make_unique<Peer>(ratio);
}

} // namespace

std::vector<NamedResampler> Resamplers() {
  std::vector<NamedResampler> resamplers;
#if defined(QORN_PEER_SOXR)
  resamplers.push_back({"soxrLQ", MakeSoxr<SOXR_LQ>});
  resamplers.push_back({"soxrHQ", MakeSoxr<SOXR_HQ>});
  resamplers.push_back({"soxrVHQ", MakeSoxr<SOXR_VHQ>});
#endif
#if defined(QORN_PEER_SAMPLERATE)
  resamplers.push_back({"samplerate", Make<SampleRate>});
#endif
#if defined(QORN_PEER_LIQUID)
  resamplers.push_back({"liquid", Make<Liquid>});
#endif
  return resamplers;
}

} // namespace peers
