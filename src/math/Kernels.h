// The kernels of TargetLib under one name for all element types, so that what is the same for the vector
// classes is written once. A function that is missing for a type has no kernel.
#ifndef QORN_SRC_MATH_KERNELS_H
#define QORN_SRC_MATH_KERNELS_H

#include "qorn/infra/TargetLib.h"

namespace QORN::kernel {

inline void Copy(const float *src, float *dst, int n) { TargetLib::Copy_32f(src, dst, n); }
inline void Copy(const double *src, double *dst, int n) { TargetLib::Copy_64f(src, dst, n); }
inline void Copy(const Cplx32 *src, Cplx32 *dst, int n) { TargetLib::Copy_32fc(src, dst, n); }
inline void Copy(const Cplx64 *src, Cplx64 *dst, int n) { TargetLib::Copy_64fc(src, dst, n); }
inline void Copy(const int *src, int *dst, int n) { TargetLib::Copy_32s(src, dst, n); }

inline void FlipI(float *srcDst, int n) { TargetLib::Flip_32f_I(srcDst, n); }
inline void FlipI(double *srcDst, int n) { TargetLib::Flip_64f_I(srcDst, n); }
inline void FlipI(Cplx32 *srcDst, int n) { TargetLib::Flip_32fc_I(srcDst, n); }
inline void FlipI(Cplx64 *srcDst, int n) { TargetLib::Flip_64fc_I(srcDst, n); }

inline void SampleDown(const float *src, int srcLen, float *dst, int *dstLen, int factor, int *phase) {
  TargetLib::SampleDown_32f(src, srcLen, dst, dstLen, factor, phase);
}
inline void SampleDown(const double *src, int srcLen, double *dst, int *dstLen, int factor, int *phase) {
  TargetLib::SampleDown_64f(src, srcLen, dst, dstLen, factor, phase);
}
inline void SampleDown(const Cplx32 *src, int srcLen, Cplx32 *dst, int *dstLen, int factor, int *phase) {
  TargetLib::SampleDown_32fc(src, srcLen, dst, dstLen, factor, phase);
}
inline void SampleDown(const Cplx64 *src, int srcLen, Cplx64 *dst, int *dstLen, int factor, int *phase) {
  TargetLib::SampleDown_64fc(src, srcLen, dst, dstLen, factor, phase);
}

inline void SampleUp(const float *src, int srcLen, float *dst, int *dstLen, int factor, int *phase) {
  TargetLib::SampleUp_32f(src, srcLen, dst, dstLen, factor, phase);
}
inline void SampleUp(const double *src, int srcLen, double *dst, int *dstLen, int factor, int *phase) {
  TargetLib::SampleUp_64f(src, srcLen, dst, dstLen, factor, phase);
}
inline void SampleUp(const Cplx32 *src, int srcLen, Cplx32 *dst, int *dstLen, int factor, int *phase) {
  TargetLib::SampleUp_32fc(src, srcLen, dst, dstLen, factor, phase);
}
inline void SampleUp(const Cplx64 *src, int srcLen, Cplx64 *dst, int *dstLen, int factor, int *phase) {
  TargetLib::SampleUp_64fc(src, srcLen, dst, dstLen, factor, phase);
}

inline void SortIndexAscend(float *srcDst, int *indices, int n) {
  TargetLib::SortIndexAscend_32f(srcDst, indices, n);
}
inline void SortIndexAscend(double *srcDst, int *indices, int n) {
  TargetLib::SortIndexAscend_64f(srcDst, indices, n);
}
inline void SortIndexAscend(int *srcDst, int *indices, int n) {
  TargetLib::SortIndexAscend_32s(srcDst, indices, n);
}
inline void SortIndexDescend(float *srcDst, int *indices, int n) {
  TargetLib::SortIndexDescend_32f(srcDst, indices, n);
}
inline void SortIndexDescend(double *srcDst, int *indices, int n) {
  TargetLib::SortIndexDescend_64f(srcDst, indices, n);
}
inline void SortIndexDescend(int *srcDst, int *indices, int n) {
  TargetLib::SortIndexDescend_32s(srcDst, indices, n);
}

inline void Abs(const int *src, int *dst, int n) { TargetLib::Abs_32s(src, dst, n); }
inline void Abs(const float *src, float *dst, int n) { TargetLib::Abs_32f(src, dst, n); }
inline void Abs(const double *src, double *dst, int n) { TargetLib::Abs_64f(src, dst, n); }
inline void Abs(const Cplx32 *src, float *dst, int n) { TargetLib::Mag_32fc(src, dst, n); }
inline void Abs(const Cplx64 *src, double *dst, int n) { TargetLib::Mag_64fc(src, dst, n); }

inline void Log10(const float *src, float *dst, int n) { TargetLib::Log10_32f(src, dst, n); }
inline void Log10(const double *src, double *dst, int n) { TargetLib::Log10_64f(src, dst, n); }

inline void SqrI(float *srcDst, int n) { TargetLib::Sqr_32f_I(srcDst, n); }
inline void SqrI(double *srcDst, int n) { TargetLib::Sqr_64f_I(srcDst, n); }
inline void SqrtI(float *srcDst, int n) { TargetLib::Sqrt_32f_I(srcDst, n); }
inline void SqrtI(double *srcDst, int n) { TargetLib::Sqrt_64f_I(srcDst, n); }
inline void Pow10(const float *src, float *dst, int n) { TargetLib::Pow10_32f(src, dst, n); }
inline void Pow10(const double *src, double *dst, int n) { TargetLib::Pow10_64f(src, dst, n); }

inline void AddCI(float val, float *srcDst, int n) { TargetLib::AddC_32f_I(val, srcDst, n); }
inline void AddCI(double val, double *srcDst, int n) { TargetLib::AddC_64f_I(val, srcDst, n); }
inline void SubCI(float val, float *srcDst, int n) { TargetLib::SubC_32f_I(val, srcDst, n); }
inline void SubCI(double val, double *srcDst, int n) { TargetLib::SubC_64f_I(val, srcDst, n); }
inline void MulCI(float val, float *srcDst, int n) { TargetLib::MulC_32f_I(val, srcDst, n); }
inline void MulCI(double val, double *srcDst, int n) { TargetLib::MulC_64f_I(val, srcDst, n); }
inline void DivCI(float val, float *srcDst, int n) { TargetLib::DivC_32f_I(val, srcDst, n); }
inline void DivCI(double val, double *srcDst, int n) { TargetLib::DivC_64f_I(val, srcDst, n); }

} // namespace QORN::kernel

#endif
