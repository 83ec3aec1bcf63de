// Streaming filters of complex samples with real taps, as others write them. Each keeps its state from block
// to block; a block is of a length told beforehand.
#ifndef QORN_BENCH_PEERS_STREAM_H
#define QORN_BENCH_PEERS_STREAM_H

#include <memory>
#include <vector>

#include "qorn/infra/Cplx.h"

namespace peers {

#if defined(QORN_PEER_VOLK)
/// VOLK's dot product, for every decimation-th output.
class DotProducts {
public:
  DotProducts(const std::vector<float> &taps, int block, int decimation = 1);
  void Run(const QORN::Cplx32 *src, QORN::Cplx32 *dst);

private:
  std::unique_ptr<float[], void (*)(void *)> m_taps; // reversed and aligned
  int m_tapCount, m_block, m_decimation;
  std::vector<QORN::Cplx32> m_line;
};
#endif

#if defined(QORN_PEER_LIQUID)
/// liquid-dsp's direct filter, its filter by transforms, and its decimator.
class LiquidFir {
public:
  LiquidFir(const std::vector<float> &taps, int block);
  ~LiquidFir();
  void Run(const QORN::Cplx32 *src, QORN::Cplx32 *dst);

private:
  struct State;
  std::unique_ptr<State> m_state;
};
class LiquidFft {
public:
  LiquidFft(const std::vector<float> &taps, int block);
  ~LiquidFft();
  void Run(const QORN::Cplx32 *src, QORN::Cplx32 *dst);

private:
  struct State;
  std::unique_ptr<State> m_state;
};
class LiquidDecimator {
public:
  LiquidDecimator(const std::vector<float> &taps, int block, int decimation);
  ~LiquidDecimator();
  void Run(const QORN::Cplx32 *src, QORN::Cplx32 *dst);

private:
  struct State;
  std::unique_ptr<State> m_state;
};
#endif

#if defined(QORN_PEER_FFTW)
/// Overlap-save by FFTW in float, planned with FFTW_MEASURE, of the transform length that measures fastest.
/// The errors of quiet outputs beside loud ones are not looked at.
class FftwStream {
public:
  FftwStream(const std::vector<float> &taps, int block);
  ~FftwStream();
  void Run(const QORN::Cplx32 *src, QORN::Cplx32 *dst);

private:
  struct State;
  std::unique_ptr<State> m_state;
};
#endif

} // namespace peers

#endif
