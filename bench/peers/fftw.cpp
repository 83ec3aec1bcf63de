#include "peers/fftw.h"

#if defined(QORN_PEER_FFTW)

#include <cstddef>

#include "peers/fftwapi.h"

namespace peers {

template <class T> struct Fftw<T>::Data {
  int length;
  bool real;
  typename FftwApi<T>::Complex *in, *out;
  typename FftwApi<T>::Plan plan;
};

template <class T> Fftw<T>::Fftw(int length, bool real) : m_data(new Data) {
  using Complex = typename FftwApi<T>::Complex;
  Data &d = *m_data;
  const std::size_t bytes = sizeof(Complex) * static_cast<std::size_t>(length);
  d.length = length;
  d.real = real;
  d.in = static_cast<Complex *>(FftwApi<T>::Malloc(bytes));
  d.out = static_cast<Complex *>(FftwApi<T>::Malloc(bytes));
  d.plan = real ? FftwApi<T>::PlanForward(length, In(), d.out, FFTW_MEASURE)
                : FftwApi<T>::PlanComplex(length, d.in, d.out, FFTW_FORWARD, FFTW_MEASURE);
}

template <class T> Fftw<T>::~Fftw() {
  FftwApi<T>::Destroy(m_data->plan);
  FftwApi<T>::Free(m_data->in);
  FftwApi<T>::Free(m_data->out);
}

template <class T> T *Fftw<T>::In() { return &m_data->in[0][0]; }

template <class T> void Fftw<T>::Run() {
  Data &d = *m_data;
  FftwApi<T>::Execute(d.plan);
  if (!d.real) return;
  for (int k = 1; k < d.length - k; ++k) {
    d.out[d.length - k][0] = d.out[k][0];
    d.out[d.length - k][1] = -d.out[k][1];
  }
}

template class Fftw<float>;
template class Fftw<double>;

} // namespace peers

#endif
