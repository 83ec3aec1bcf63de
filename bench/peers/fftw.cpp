#include "peers/fftw.h"

#if defined(QORN_PEER_FFTW)

#include <cstddef>
#include <cstdlib>
#include <map>
#include <tuple>

#include "peers/fftwapi.h"

namespace peers {

template <class T> struct Fftw<T>::Data {
  using Api = FftwApi<T>;
  using Complex = typename Api::Complex;
  static constexpr const char *kWisdom =
      sizeof(T) == sizeof(float) ? QORN_PEER_FFTW_WISDOM "32" : QORN_PEER_FFTW_WISDOM "64";

  int length;
  bool real;
  Way way;
  Complex *in, *out;
  typename Api::Plan plan;

  T *Reals(Complex *array) const { return &array[0][0]; }

  typename Api::Plan Make(unsigned rigour) const {
    const unsigned flags = rigour | FFTW_PRESERVE_INPUT;
    if (!real) {
      return Api::PlanComplex(length, in, out, way == Way::Inverse ? FFTW_BACKWARD : FFTW_FORWARD, flags);
    }
    return way == Way::Inverse ? Api::PlanInverse(length, in, Reals(out), flags)
                               : Api::PlanForward(length, Reals(in), out, flags);
  }

  typename Api::Plan Planned() const {
    static std::map<std::tuple<int, bool, Way>, typename Api::Plan> plans;
    if (plans.empty()) Api::ReadWisdom(kWisdom);
    auto &known = plans[{length, real, way}];
    if (known == nullptr) {
      const bool isPatient = length <= 1 << 17 || std::getenv("QORN_BENCH_PATIENT") != nullptr;
      known = Make(isPatient ? FFTW_PATIENT : FFTW_PATIENT | FFTW_WISDOM_ONLY);
      if (known == nullptr) known = Make(FFTW_MEASURE);
      Api::WriteWisdom(kWisdom);
    }
    return known;
  }
};

template <class T> Fftw<T>::Fftw(int length, bool real, Way way) : m_data(new Data) {
  Data &d = *m_data;
  const auto array = [length] {
    return static_cast<typename Data::Complex *>(
        Data::Api::Malloc(sizeof(typename Data::Complex) * static_cast<std::size_t>(length)));
  };
  d.length = length;
  d.real = real;
  d.way = way;
  d.in = array();
  d.out = way == Way::InPlace ? d.in : array();
  d.plan = d.Planned();
}

template <class T> Fftw<T>::~Fftw() {
  Data &d = *m_data;
  if (d.out != d.in) Data::Api::Free(d.out);
  Data::Api::Free(d.in);
}

template <class T> T *Fftw<T>::In() { return m_data->Reals(m_data->in); }

template <class T> void Fftw<T>::Run() {
  Data &d = *m_data;
  if (!d.real) {
    Data::Api::ExecuteComplex(d.plan, d.in, d.out);
  } else if (d.way == Way::Inverse) {
    Data::Api::ExecuteInverse(d.plan, d.in, d.Reals(d.out));
  } else {
    Data::Api::ExecuteForward(d.plan, d.Reals(d.in), d.out);
    for (int k = 1; k < d.length - k; ++k) {
      d.out[d.length - k][0] = d.out[k][0];
      d.out[d.length - k][1] = -d.out[k][1];
    }
  }
}

template class Fftw<float>;
template class Fftw<double>;

} // namespace peers

#endif
