// Fourier transforms by FFTW, for comparison, on one thread.
#ifndef QORN_BENCH_PEERS_FFTW_H
#define QORN_BENCH_PEERS_FFTW_H

namespace peers {

enum class Way { Forward, Inverse, InPlace };

} // namespace peers

#if defined(QORN_PEER_FFTW)

#include <memory>

namespace peers {

/// A transform of `length` values, complex, or real with all bins. Arrays hold interleaved complex values,
/// the real side of a real transform plain ones. InPlace is a forward complex transform.
///
/// Planned once per process for a length and way: with FFTW_PATIENT up to 2^17 points; above, where patience
/// takes minutes, if the environment has QORN_BENCH_PATIENT, and else as it was planned before, or with
/// FFTW_MEASURE. What the planner learned stays in the build folder: the next process begins there. Input is
/// preserved, as by the library, and nothing is scaled.
template <class T> class Fftw {
public:
  Fftw(int length, bool real, Way way = Way::Forward);
  ~Fftw();
  Fftw(const Fftw &) = delete;
  Fftw &operator=(const Fftw &) = delete;

  T *In();

  /// Transforms In(); a real forward transform also mirrors its lower half, as the library's does.
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
