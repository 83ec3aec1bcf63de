// Full convolutions as FFTW's users write them: overlap-save by plans made beforehand (FFTW_MEASURE), of the
// power of two that measures fastest. The taps' transform is part of each run, as it is of ours. The errors
// of quiet outputs beside loud ones are not looked at.
#ifndef QORN_BENCH_PEERS_CONVOLUTION_H
#define QORN_BENCH_PEERS_CONVOLUTION_H

#if defined(QORN_PEER_FFTW)

#include <memory>

namespace peers {

/// taps by len values, taps <= len, giving taps + len - 1; T is float or double. Complex arrays are
/// interleaved.
template <class T> class FftwConvolution {
public:
  FftwConvolution(int taps, int len, bool isComplex);
  ~FftwConvolution();
  FftwConvolution(const FftwConvolution &) = delete;
  FftwConvolution &operator=(const FftwConvolution &) = delete;

  void Run(const T *taps, const T *x, T *dst);

private:
  struct Data;
  std::unique_ptr<Data> m_data;
};

extern template class FftwConvolution<float>;
extern template class FftwConvolution<double>;

} // namespace peers

#endif
#endif
