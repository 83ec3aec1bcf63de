// The kernels of each element type under one name, so that what the vector classes share is written once.
#ifndef QORN_SRC_INFRA_KERNELTRAITS_H
#define QORN_SRC_INFRA_KERNELTRAITS_H

#include "qorn/infra/TargetLib.h"

namespace QORN {

template <class T> struct Kernels;

template <> struct Kernels<unsigned char> {
  static constexpr auto Set = &TargetLib::Set_8u;
  static constexpr auto Copy = &TargetLib::Copy_8u;
};

template <> struct Kernels<short> {
  static constexpr auto Set = &TargetLib::Set_16s;
  static constexpr auto Copy = &TargetLib::Copy_16s;
  static constexpr auto Add = &TargetLib::Add_16s_I;
  static constexpr auto Sub = &TargetLib::Sub_16s_I;
  static constexpr auto Mul = &TargetLib::Mul_16s_I;
  static constexpr auto AddC = &TargetLib::AddC_16s_I;
  static constexpr auto SubC = &TargetLib::SubC_16s_I;
  static constexpr auto MulC = &TargetLib::MulC_16s_I;
  static constexpr auto Max = &TargetLib::Max_16s;
  static constexpr auto Min = &TargetLib::Min_16s;
  static constexpr auto MaxIndx = &TargetLib::MaxIndx_16s;
  static constexpr auto MinIndx = &TargetLib::MinIndx_16s;
  static constexpr auto Sum = &TargetLib::Sum_16s;
};

template <> struct Kernels<int> {
  static constexpr auto Set = &TargetLib::Set_32s;
  static constexpr auto Copy = &TargetLib::Copy_32s;
  static constexpr auto Add = &TargetLib::Add_32s_I;
  static constexpr auto Sub = &TargetLib::Sub_32s_I;
  static constexpr auto Mul = &TargetLib::Mul_32s_I;
  static constexpr auto AddC = &TargetLib::AddC_32s_I;
  static constexpr auto SubC = &TargetLib::SubC_32s_I;
  static constexpr auto MulC = &TargetLib::MulC_32s_I;
  static constexpr auto Max = &TargetLib::Max_32s;
  static constexpr auto Min = &TargetLib::Min_32s;
  static constexpr auto MaxIndx = &TargetLib::MaxIndx_32s;
  static constexpr auto MinIndx = &TargetLib::MinIndx_32s;
  static constexpr auto Sum = &TargetLib::Sum_32s;
  static constexpr auto Abs = &TargetLib::Abs_32s;
  static constexpr auto SortIndexAscend = &TargetLib::SortIndexAscend_32s;
  static constexpr auto SortIndexDescend = &TargetLib::SortIndexDescend_32s;
};

/// Filling and copying move bits, so the signed kernels serve.
template <> struct Kernels<unsigned int> {
  static void Set(unsigned int val, unsigned int *dst, int len) {
    TargetLib::Set_32s(static_cast<int>(val), reinterpret_cast<int *>(dst), len);
  }
  static void Copy(const unsigned int *src, unsigned int *dst, int len) {
    TargetLib::Copy_32s(reinterpret_cast<const int *>(src), reinterpret_cast<int *>(dst), len);
  }
};

template <> struct Kernels<float> {
  static constexpr auto Set = &TargetLib::Set_32f;
  static constexpr auto Copy = &TargetLib::Copy_32f;
  static constexpr auto VectorSlope = &TargetLib::VectorSlope_32f;
  static constexpr auto Add = &TargetLib::Add_32f_I;
  static constexpr auto Sub = &TargetLib::Sub_32f_I;
  static constexpr auto Mul = &TargetLib::Mul_32f_I;
  static constexpr auto Div = &TargetLib::Div_32f_I;
  static constexpr auto AddC = &TargetLib::AddC_32f_I;
  static constexpr auto SubC = &TargetLib::SubC_32f_I;
  static constexpr auto MulC = &TargetLib::MulC_32f_I;
  static constexpr auto DivC = &TargetLib::DivC_32f_I;
  static constexpr auto Max = &TargetLib::Max_32f;
  static constexpr auto Min = &TargetLib::Min_32f;
  static constexpr auto MaxIndx = &TargetLib::MaxIndx_32f;
  static constexpr auto MinIndx = &TargetLib::MinIndx_32f;
  static constexpr auto Sum = &TargetLib::Sum_32f;
  static constexpr auto Mean = &TargetLib::Mean_32f;
  static constexpr auto StdDev = &TargetLib::StdDev_32f;
  static constexpr auto Abs = &TargetLib::Abs_32f;
  static constexpr auto Sqr = &TargetLib::Sqr_32f;
  static constexpr auto Sqrt = &TargetLib::Sqrt_32f;
  static constexpr auto Round = &TargetLib::Round_32f;
  static constexpr auto Trunc = &TargetLib::Trunc_32f;
  static constexpr auto Floor = &TargetLib::Floor_32f;
  static constexpr auto Ceil = &TargetLib::Ceil_32f;
  static constexpr auto Cos = &TargetLib::Cos_32f;
  static constexpr auto Sin = &TargetLib::Sin_32f;
  static constexpr auto Atan = &TargetLib::Atan_32f;
  static constexpr auto Atan2 = &TargetLib::Atan2_32f;
  static constexpr auto Log10 = &TargetLib::Log10_32f;
  static constexpr auto Ln = &TargetLib::Ln_32f;
  static constexpr auto Exp = &TargetLib::Exp_32f;
  static constexpr auto Erf = &TargetLib::Erf_32f;
  static constexpr auto Expj = &TargetLib::Expj_32f;
  static constexpr auto Powx = &TargetLib::Powx_32f;
  static constexpr auto Pow10 = &TargetLib::Pow10_32f;
  static constexpr auto Flip = &TargetLib::Flip_32f_I;
  static constexpr auto SampleDown = &TargetLib::SampleDown_32f;
  static constexpr auto SampleUp = &TargetLib::SampleUp_32f;
  static constexpr auto DotProd = &TargetLib::DotProd_32f;
  static constexpr auto Invert = &TargetLib::Invert_m_32f;
  static constexpr auto SortIndexAscend = &TargetLib::SortIndexAscend_32f;
  static constexpr auto SortIndexDescend = &TargetLib::SortIndexDescend_32f;
};

template <> struct Kernels<double> {
  static constexpr auto Set = &TargetLib::Set_64f;
  static constexpr auto Copy = &TargetLib::Copy_64f;
  static constexpr auto VectorSlope = &TargetLib::VectorSlope_64f;
  static constexpr auto Add = &TargetLib::Add_64f_I;
  static constexpr auto Sub = &TargetLib::Sub_64f_I;
  static constexpr auto Mul = &TargetLib::Mul_64f_I;
  static constexpr auto Div = &TargetLib::Div_64f_I;
  static constexpr auto AddC = &TargetLib::AddC_64f_I;
  static constexpr auto SubC = &TargetLib::SubC_64f_I;
  static constexpr auto MulC = &TargetLib::MulC_64f_I;
  static constexpr auto DivC = &TargetLib::DivC_64f_I;
  static constexpr auto Max = &TargetLib::Max_64f;
  static constexpr auto Min = &TargetLib::Min_64f;
  static constexpr auto MaxIndx = &TargetLib::MaxIndx_64f;
  static constexpr auto MinIndx = &TargetLib::MinIndx_64f;
  static constexpr auto Sum = &TargetLib::Sum_64f;
  static constexpr auto Mean = &TargetLib::Mean_64f;
  static constexpr auto StdDev = &TargetLib::StdDev_64f;
  static constexpr auto Abs = &TargetLib::Abs_64f;
  static constexpr auto Sqr = &TargetLib::Sqr_64f;
  static constexpr auto Sqrt = &TargetLib::Sqrt_64f;
  static constexpr auto Round = &TargetLib::Round_64f;
  static constexpr auto Trunc = &TargetLib::Trunc_64f;
  static constexpr auto Floor = &TargetLib::Floor_64f;
  static constexpr auto Ceil = &TargetLib::Ceil_64f;
  static constexpr auto Cos = &TargetLib::Cos_64f;
  static constexpr auto Sin = &TargetLib::Sin_64f;
  static constexpr auto Atan = &TargetLib::Atan_64f;
  static constexpr auto Atan2 = &TargetLib::Atan2_64f;
  static constexpr auto Log10 = &TargetLib::Log10_64f;
  static constexpr auto Ln = &TargetLib::Ln_64f;
  static constexpr auto Exp = &TargetLib::Exp_64f;
  static constexpr auto Erf = &TargetLib::Erf_64f;
  static constexpr auto Expj = &TargetLib::Expj_64f;
  static constexpr auto Powx = &TargetLib::Powx_64f;
  static constexpr auto Pow10 = &TargetLib::Pow10_64f;
  static constexpr auto Flip = &TargetLib::Flip_64f_I;
  static constexpr auto SampleDown = &TargetLib::SampleDown_64f;
  static constexpr auto SampleUp = &TargetLib::SampleUp_64f;
  static constexpr auto DotProd = &TargetLib::DotProd_64f;
  static constexpr auto Invert = &TargetLib::Invert_m_64f;
  static constexpr auto SortIndexAscend = &TargetLib::SortIndexAscend_64f;
  static constexpr auto SortIndexDescend = &TargetLib::SortIndexDescend_64f;
};

template <> struct Kernels<Cplx32> {
  static constexpr auto Set = &TargetLib::Set_32fc;
  static constexpr auto Copy = &TargetLib::Copy_32fc;
  static constexpr auto Add = &TargetLib::Add_32fc_I;
  static constexpr auto Sub = &TargetLib::Sub_32fc_I;
  static constexpr auto Mul = &TargetLib::Mul_32fc_I;
  static constexpr auto Div = &TargetLib::Div_32fc_I;
  static constexpr auto AddC = &TargetLib::AddC_32fc_I;
  static constexpr auto SubC = &TargetLib::SubC_32fc_I;
  static constexpr auto MulC = &TargetLib::MulC_32fc_I;
  static constexpr auto DivC = &TargetLib::DivC_32fc_I;
  static constexpr auto MagSqr = &TargetLib::MagSqr_32fc;
  static constexpr auto Sum = &TargetLib::Sum_32fc;
  static constexpr auto Mean = &TargetLib::Mean_32fc;
  static constexpr auto Real = &TargetLib::Real_32fc;
  static constexpr auto Imag = &TargetLib::Imag_32fc;
  static constexpr auto RealToCplx = &TargetLib::RealToCplx_32f;
  static constexpr auto Mag = &TargetLib::Mag_32fc;
  static constexpr auto Sqr = &TargetLib::Sqr_32fc;
  static constexpr auto Sqrt = &TargetLib::Sqrt_32fc;
  static constexpr auto Conj = &TargetLib::Conj_32fc;
  static constexpr auto ConjFlip = &TargetLib::ConjFlip_32fc;
  static constexpr auto Tone = &TargetLib::Tone_Direct_32fc;
  static constexpr auto Flip = &TargetLib::Flip_32fc_I;
  static constexpr auto SampleDown = &TargetLib::SampleDown_32fc;
  static constexpr auto SampleUp = &TargetLib::SampleUp_32fc;
};

template <> struct Kernels<Cplx64> {
  static constexpr auto Set = &TargetLib::Set_64fc;
  static constexpr auto Copy = &TargetLib::Copy_64fc;
  static constexpr auto Add = &TargetLib::Add_64fc_I;
  static constexpr auto Sub = &TargetLib::Sub_64fc_I;
  static constexpr auto Mul = &TargetLib::Mul_64fc_I;
  static constexpr auto Div = &TargetLib::Div_64fc_I;
  static constexpr auto AddC = &TargetLib::AddC_64fc_I;
  static constexpr auto SubC = &TargetLib::SubC_64fc_I;
  static constexpr auto MulC = &TargetLib::MulC_64fc_I;
  static constexpr auto DivC = &TargetLib::DivC_64fc_I;
  static constexpr auto MagSqr = &TargetLib::MagSqr_64fc;
  static constexpr auto Sum = &TargetLib::Sum_64fc;
  static constexpr auto Mean = &TargetLib::Mean_64fc;
  static constexpr auto Real = &TargetLib::Real_64fc;
  static constexpr auto Imag = &TargetLib::Imag_64fc;
  static constexpr auto RealToCplx = &TargetLib::RealToCplx_64f;
  static constexpr auto Mag = &TargetLib::Mag_64fc;
  static constexpr auto Sqr = &TargetLib::Sqr_64fc;
  static constexpr auto Sqrt = &TargetLib::Sqrt_64fc;
  static constexpr auto Conj = &TargetLib::Conj_64fc;
  static constexpr auto ConjFlip = &TargetLib::ConjFlip_64fc;
  static constexpr auto Tone = &TargetLib::Tone_Direct_64fc;
  static constexpr auto Flip = &TargetLib::Flip_64fc_I;
  static constexpr auto SampleDown = &TargetLib::SampleDown_64fc;
  static constexpr auto SampleUp = &TargetLib::SampleUp_64fc;
};

/// Runs an element-wise scalar kernel over n complex values seen as 2 n scalars: call(first, scalars), first
/// in complex values. More than one call where 2 n is beyond an int.
template <class Call> void ForScalars(int n, Call call) {
  constexpr int kMost = 0x3fffffff;
  int first = 0;
  for (; n - first > kMost; first += kMost) call(first, 2 * kMost);
  if (n > first) call(first, 2 * (n - first));
}

} // namespace QORN

#endif
