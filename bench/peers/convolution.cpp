#include "peers/convolution.h"

#if defined(QORN_PEER_FFTW)

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

#include "peers/fftwapi.h"

namespace peers {

namespace {

// One length of blocks.
template <class T> struct Blocks {
  using Complex = typename FftwApi<T>::Complex;
  int taps, len, length, parts, bins;
  T *block;
  Complex *spectrum, *factor;
  typename FftwApi<T>::Plan forward, taken, inverse;

  Blocks(int tapCount, int signalLength, bool isComplex, int blockLength)
      : taps(tapCount), len(signalLength), length(blockLength), parts(isComplex ? 2 : 1),
        bins(isComplex ? blockLength : blockLength / 2 + 1) {
    const std::size_t bytes = sizeof(Complex) * static_cast<std::size_t>(length);
    block = static_cast<T *>(FftwApi<T>::Malloc(bytes));
    spectrum = static_cast<Complex *>(FftwApi<T>::Malloc(bytes));
    factor = static_cast<Complex *>(FftwApi<T>::Malloc(bytes));
    if (isComplex) {
      auto *const values = reinterpret_cast<Complex *>(block);
      forward = FftwApi<T>::PlanComplex(length, values, spectrum, FFTW_FORWARD, FFTW_MEASURE);
      taken = FftwApi<T>::PlanComplex(length, values, factor, FFTW_FORWARD, FFTW_MEASURE);
      inverse = FftwApi<T>::PlanComplex(length, spectrum, values, FFTW_BACKWARD, FFTW_MEASURE);
    } else {
      forward = FftwApi<T>::PlanForward(length, block, spectrum, FFTW_MEASURE);
      taken = FftwApi<T>::PlanForward(length, block, factor, FFTW_MEASURE);
      inverse = FftwApi<T>::PlanInverse(length, spectrum, block, FFTW_MEASURE);
    }
  }
  ~Blocks() {
    FftwApi<T>::Destroy(forward);
    FftwApi<T>::Destroy(taken);
    FftwApi<T>::Destroy(inverse);
    FftwApi<T>::Free(block);
    FftwApi<T>::Free(spectrum);
    FftwApi<T>::Free(factor);
  }
  Blocks(const Blocks &) = delete;
  Blocks &operator=(const Blocks &) = delete;

  void Run(const T *h, const T *x, T *dst) {
    std::fill(std::copy_n(h, parts * taps, block), block + parts * length, T{0});
    FftwApi<T>::Execute(taken);
    const T scale = T{1} / static_cast<T>(length);
    for (int k = 0; k < bins; ++k) factor[k][0] *= scale, factor[k][1] *= scale;
    const int step = length - taps + 1, outputs = taps + len - 1;
    for (int first = 0; first < outputs; first += step) {
      const int from = first - (taps - 1), begin = std::max(from, 0), end = std::min(from + length, len);
      T *const filled = block + parts * (begin - from);
      std::fill(block, filled, T{0});
      T *const rest = begin < end ? std::copy(x + parts * begin, x + parts * end, filled) : filled;
      std::fill(rest, block + parts * length, T{0});
      FftwApi<T>::Execute(forward);
      for (int k = 0; k < bins; ++k) {
        const T re = spectrum[k][0], im = spectrum[k][1];
        spectrum[k][0] = re * factor[k][0] - im * factor[k][1];
        spectrum[k][1] = re * factor[k][1] + im * factor[k][0];
      }
      FftwApi<T>::Execute(inverse);
      std::copy_n(block + parts * (taps - 1), parts * std::min(step, outputs - first), dst + parts * first);
    }
  }
};

} // namespace

template <class T> struct FftwConvolution<T>::Data { std::unique_ptr<Blocks<T>> best; };

template <class T> FftwConvolution<T>::FftwConvolution(int taps, int len, bool isComplex) : m_data(new Data) {
  const auto count = static_cast<std::size_t>(isComplex ? 2 : 1);
  const std::vector<T> h(count * static_cast<std::size_t>(taps), T{1}),
      x(count * static_cast<std::size_t>(len), T{1});
  std::vector<T> dst(h.size() + x.size());
  int length = 16;
  while (length < taps + taps / 4) length *= 2;
  double least = 1e9;
  for (int tries = 0; tries < 5; ++tries, length *= 2) {
    auto blocks = std::make_unique<Blocks<T>>(taps, len, isComplex, length);
    double fastest = 1e9;
    for (int run = 0; run < 5; ++run) {
      const auto start = std::chrono::steady_clock::now();
      blocks->Run(h.data(), x.data(), dst.data());
      fastest =
          std::min(fastest, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    if (fastest < least) {
      least = fastest;
      m_data->best = std::move(blocks);
    }
    if (length >= taps + len) break;
  }
}

template <class T> FftwConvolution<T>::~FftwConvolution() = default;

template <class T> void FftwConvolution<T>::Run(const T *taps, const T *x, T *dst) {
  m_data->best->Run(taps, x, dst);
}

template class FftwConvolution<float>;
template class FftwConvolution<double>;

} // namespace peers

#endif
