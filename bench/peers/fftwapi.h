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
  static constexpr auto ReadWisdom = fftwf_import_wisdom_from_filename;
  static constexpr auto WriteWisdom = fftwf_export_wisdom_to_filename;
  static constexpr auto PlanComplex = fftwf_plan_dft_1d;
  static constexpr auto PlanForward = fftwf_plan_dft_r2c_1d;
  static constexpr auto PlanInverse = fftwf_plan_dft_c2r_1d;
  static constexpr auto Execute = fftwf_execute;
  static constexpr auto ExecuteComplex = fftwf_execute_dft;
  static constexpr auto ExecuteForward = fftwf_execute_dft_r2c;
  static constexpr auto ExecuteInverse = fftwf_execute_dft_c2r;
  static constexpr auto Destroy = fftwf_destroy_plan;
};
template <> struct FftwApi<double> {
  using Plan = fftw_plan;
  using Complex = fftw_complex;
  static constexpr auto Malloc = fftw_malloc;
  static constexpr auto Free = fftw_free;
  static constexpr auto ReadWisdom = fftw_import_wisdom_from_filename;
  static constexpr auto WriteWisdom = fftw_export_wisdom_to_filename;
  static constexpr auto PlanComplex = fftw_plan_dft_1d;
  static constexpr auto PlanForward = fftw_plan_dft_r2c_1d;
  static constexpr auto PlanInverse = fftw_plan_dft_c2r_1d;
  static constexpr auto Execute = fftw_execute;
  static constexpr auto ExecuteComplex = fftw_execute_dft;
  static constexpr auto ExecuteForward = fftw_execute_dft_r2c;
  static constexpr auto ExecuteInverse = fftw_execute_dft_c2r;
  static constexpr auto Destroy = fftw_destroy_plan;
};

} // namespace peers

#endif
