#include "Direct.h"

namespace QORN::fourier {

using kernels::Table;

template <> DirectKernel<float> DirectComplex(int length) {
  switch (length) {
  case 8:
    return &Table::Fourier8_32f;
  case 12:
    return &Table::Fourier12_32f;
  case 16:
    return &Table::Fourier16_32f;
  case 32:
    return &Table::Fourier32_32f;
  case 60:
    return &Table::Fourier60_32f;
  case 64:
    return &Table::Fourier64_32f;
  case 128:
    return &Table::Fourier128_32f;
  default:
    return nullptr;
  }
}

template <> DirectKernel<double> DirectComplex(int length) {
  switch (length) {
  case 8:
    return &Table::Fourier8_64f;
  case 12:
    return &Table::Fourier12_64f;
  case 16:
    return &Table::Fourier16_64f;
  case 32:
    return &Table::Fourier32_64f;
  case 60:
    return &Table::Fourier60_64f;
  case 64:
    return &Table::Fourier64_64f;
  case 128:
    return &Table::Fourier128_64f;
  default:
    return nullptr;
  }
}

template <> DirectKernel<float> DirectReal(int length) {
  switch (length) {
  case 8:
    return &Table::FourierReal8_32f;
  case 12:
    return &Table::FourierReal12_32f;
  case 16:
    return &Table::FourierReal16_32f;
  case 32:
    return &Table::FourierReal32_32f;
  case 60:
    return &Table::FourierReal60_32f;
  default:
    return nullptr;
  }
}

template <> DirectKernel<double> DirectReal(int length) {
  switch (length) {
  case 8:
    return &Table::FourierReal8_64f;
  case 12:
    return &Table::FourierReal12_64f;
  case 16:
    return &Table::FourierReal16_64f;
  case 32:
    return &Table::FourierReal32_64f;
  case 60:
    return &Table::FourierReal60_64f;
  case 100:
    return &Table::FourierReal100_64f;
  default:
    return nullptr;
  }
}

} // namespace QORN::fourier
