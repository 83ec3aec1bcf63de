#include "Direct.h"

namespace QORN::fourier {

namespace {

template <class T> struct Row {
  int length;
  DirectKernel<T> kernel;
};

template <class T, int N> DirectKernel<T> Find(const Row<T> (&rows)[N], int length) {
  for (const Row<T> &row : rows) {
    if (row.length == length) return row.kernel;
  }
  return nullptr;
}

// The rows of a type, whose kernels end in its suffix.
#define QORN_COMPLEX_ROWS(suffix)                                                                            \
  {8, &kernels::Table::Fourier8_##suffix}, {12, &kernels::Table::Fourier12_##suffix},                        \
      {16, &kernels::Table::Fourier16_##suffix}, {32, &kernels::Table::Fourier32_##suffix},                  \
      {60, &kernels::Table::Fourier60_##suffix}, {64, &kernels::Table::Fourier64_##suffix}, {                \
    128, &kernels::Table::Fourier128_##suffix                                                                \
  }
#define QORN_REAL_ROWS(suffix)                                                                               \
  {8, &kernels::Table::FourierReal8_##suffix}, {12, &kernels::Table::FourierReal12_##suffix},                \
      {16, &kernels::Table::FourierReal16_##suffix}, {32, &kernels::Table::FourierReal32_##suffix}, {        \
    60, &kernels::Table::FourierReal60_##suffix                                                              \
  }
constexpr Row<float> kComplex32[] = {QORN_COMPLEX_ROWS(32f)};
constexpr Row<double> kComplex64[] = {QORN_COMPLEX_ROWS(64f)};
constexpr Row<float> kReal32[] = {QORN_REAL_ROWS(32f)};
constexpr Row<double> kReal64[] = {QORN_REAL_ROWS(64f), {100, &kernels::Table::FourierReal100_64f}};
#undef QORN_COMPLEX_ROWS
#undef QORN_REAL_ROWS

} // namespace

template <> DirectKernel<float> DirectComplex(int length) { return Find(kComplex32, length); }
template <> DirectKernel<double> DirectComplex(int length) { return Find(kComplex64, length); }
template <> DirectKernel<float> DirectReal(int length) { return Find(kReal32, length); }
template <> DirectKernel<double> DirectReal(int length) { return Find(kReal64, length); }

} // namespace QORN::fourier
