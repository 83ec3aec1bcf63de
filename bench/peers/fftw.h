// Fourier transforms by FFTW, for comparison: planned with FFTW_MEASURE for one thread, out of place.
#ifndef QORN_BENCH_PEERS_FFTW_H
#define QORN_BENCH_PEERS_FFTW_H

#if defined(QORN_PEER_FFTW)

#include <memory>

namespace peers {

/// A forward transform of `length` values, complex, or real into all bins. Arrays hold interleaved complex
/// values, the input of a real transform plain ones.
template <class T> class Fftw {
public:
  Fftw(int length, bool real);
  ~Fftw();
  Fftw(const Fftw &) = delete;
  Fftw &operator=(const Fftw &) = delete;

  T *In();

  /// Transforms In(); a real transform also mirrors its lower half, as the library's does.
  void Run();

private:
  struct Data;
  std::unique_ptr<Data> m_data;
};

extern template class Fftw<float>;
extern template class Fftw<double>;

} // namespace peers

#endif
#endif
