// The public kernels: each forwards to the active level's table. Rows with the common guard are made from the
// families' tables; those with another rule stand here.
#include "qorn/infra/TargetLib.h"

#include <type_traits>

#include "Errors.h"
#include "Streamed.h"
#include "kernels/Levels.h"

namespace QORN {

namespace {

// The common guard: every pointer is there, and the last int, the length, is at least 1.
template <class A> void Look(A argument, bool &pointers, int &length) {
  if constexpr (std::is_pointer_v<A>) pointers = pointers && argument != nullptr;
  if constexpr (std::is_same_v<A, int>) length = argument;
}

template <class... A> bool Runs(A... arguments) {
  bool pointers = true;
  int length = 0;
  (Look(arguments, pointers, length), ...);
  return pointers && length >= 1;
}

} // namespace

#define QORN_KERNEL(cls, name, params, args, ...)                                                            \
  void TargetLib::name params {                                                                              \
    if (Runs args) [[likely]]                                                                                \
      kernels::active->name args;                                                                            \
  }
#define QORN_KERNEL_STREAMED(cls, name, params, args, ...)                                                   \
  void TargetLib::name params {                                                                              \
    if (Runs args) [[likely]]                                                                                \
      kernels::Stream(kernels::active->name, QORN_ARGUMENTS args);                                           \
  }
#define QORN_ARGUMENTS(...) __VA_ARGS__
#define QORN_KERNEL_OWN_FORWARDER(cls, result, name, params, args, ...)
#include "kernels/families/All.inc"
#undef QORN_KERNEL
#undef QORN_KERNEL_OWN_FORWARDER
#undef QORN_ARGUMENTS

// Conversion and arithmetic with a scale: the length is not the last int.

void TargetLib::Convert_32f16s(const float *src, short *dst, int len, ConvertRoundMode mode, int scale) {
  if (Runs(src, dst, len)) kernels::active->Convert_32f16s_Scaled(src, dst, len, mode, scale);
}
void TargetLib::Convert_32f16u(const float *src, unsigned short *dst, int len, ConvertRoundMode mode,
                               int scale) {
  if (Runs(src, dst, len)) kernels::active->Convert_32f16u_Scaled(src, dst, len, mode, scale);
}
void TargetLib::SubC_16u(const unsigned short *src, unsigned short val, unsigned short *dst, int len,
                         int scale) {
  if (Runs(src, dst, len)) kernels::active->SubC_16u(src, val, dst, len, scale);
}
void TargetLib::DivC_16u_I(unsigned short val, unsigned short *srcDst, int len, int scale) {
  if (Runs(srcDst, len)) kernels::active->DivC_16u_I(val, srcDst, len, scale);
}

// Division of arrays: the kernel writes all elements and tells whether it met a divisor of zero.

namespace {

template <class T> void Divide(bool (*kernel)(const T *, T *, int), const T *src, T *srcDst, int len) {
  if (Runs(src, srcDst, len) && kernel(src, srcDst, len)) Throw(errors::kDivideByZero, modules::kTargetLib);
}

} // namespace

void TargetLib::Div_32f_I(const float *src, float *srcDst, int len) {
  Divide(kernels::active->Div_32f_I, src, srcDst, len);
}
void TargetLib::Div_64f_I(const double *src, double *srcDst, int len) {
  Divide(kernels::active->Div_64f_I, src, srcDst, len);
}
void TargetLib::Div_32fc_I(const Cplx32 *src, Cplx32 *srcDst, int len) {
  Divide(kernels::active->Div_32fc_I, src, srcDst, len);
}
void TargetLib::Div_64fc_I(const Cplx64 *src, Cplx64 *srcDst, int len) {
  Divide(kernels::active->Div_64fc_I, src, srcDst, len);
}

} // namespace QORN
