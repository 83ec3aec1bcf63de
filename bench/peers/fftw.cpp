#include "peers/fftw.h"

#if defined(QORN_PEER_FFTW)

#include <fftw3.h>

#include <type_traits>

namespace peers {

namespace {

// The two precisions of the library under one name.
template <class T> struct Api;
template <> struct Api<float> {
  using Plan = fftwf_plan;
  using Complex = fftwf_complex;
  static constexpr auto Malloc = fftwf_malloc;
  static constexpr auto Free = fftwf_free;
  static constexpr auto PlanComplex = fftwf_plan_dft_1d;
  static constexpr auto PlanReal = fftwf_plan_dft_r2c_1d;
  static constexpr auto Execute = fftwf_execute;
  static constexpr auto Destroy = fftwf_destroy_plan;
};
template <> struct Api<double> {
  using Plan = fftw_plan;
  using Complex = fftw_complex;
  static constexpr auto Malloc = fftw_malloc;
  static constexpr auto Free = fftw_free;
  static constexpr auto PlanComplex = fftw_plan_dft_1d;
  static constexpr auto PlanReal = fftw_plan_dft_r2c_1d;
  static constexpr auto Execute = fftw_execute;
  static constexpr auto Destroy = fftw_destroy_plan;
};

} // namespace

template <class T> struct Fftw<T>::Data {
  int length;
  bool real;
  typename Api<T>::Complex *in, *out;
  typename Api<T>::Plan plan;
};

template <class T> Fftw<T>::Fftw(int length, bool real) : m_data(new Data) {
  using Complex = typename Api<T>::Complex;
  Data &d = *m_data;
  const std::size_t bytes = sizeof(Complex) * static_cast<std::size_t>(length);
  d.length = length;
  d.real = real;
  d.in = static_cast<Complex *>(Api<T>::Malloc(bytes));
  d.out = static_cast<Complex *>(Api<T>::Malloc(bytes));
  d.plan = real ? Api<T>::PlanReal(length, In(), d.out, FFTW_MEASURE)
                : Api<T>::PlanComplex(length, d.in, d.out, FFTW_FORWARD, FFTW_MEASURE);
}

template <class T> Fftw<T>::~Fftw() {
  Api<T>::Destroy(m_data->plan);
  Api<T>::Free(m_data->in);
  Api<T>::Free(m_data->out);
}

template <class T> T *Fftw<T>::In() { return &m_data->in[0][0]; }

template <class T> void Fftw<T>::Run() {
  Data &d = *m_data;
  Api<T>::Execute(d.plan);
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
