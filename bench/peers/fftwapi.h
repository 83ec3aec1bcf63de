// The two precisions of FFTW under one name.
#ifndef QORN_BENCH_PEERS_FFTWAPI_H
#define QORN_BENCH_PEERS_FFTWAPI_H

#include <fftw3.h>

namespace peers {

template <class T> struct FftwApi;
template <> struct FftwApi<float> {
  using Plan = fftwf_plan;
  using Complex = fftwf_complex;
  static constexpr auto Malloc = fftwf_malloc;
  static constexpr auto Free = fftwf_free;
  static constexpr auto PlanComplex = fftwf_plan_dft_1d;
  static constexpr auto PlanForward = fftwf_plan_dft_r2c_1d;
  static constexpr auto PlanInverse = fftwf_plan_dft_c2r_1d;
  static constexpr auto Execute = fftwf_execute;
  static constexpr auto Destroy = fftwf_destroy_plan;
};
template <> struct FftwApi<double> {
  using Plan = fftw_plan;
  using Complex = fftw_complex;
  static constexpr auto Malloc = fftw_malloc;
  static constexpr auto Free = fftw_free;
  static constexpr auto PlanComplex = fftw_plan_dft_1d;
  static constexpr auto PlanForward = fftw_plan_dft_r2c_1d;
  static constexpr auto PlanInverse = fftw_plan_dft_c2r_1d;
  static constexpr auto Execute = fftw_execute;
  static constexpr auto Destroy = fftw_destroy_plan;
};

} // namespace peers

#endif
