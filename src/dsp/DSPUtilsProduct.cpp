// Correlation, convolution, dot products and filter taps.
#include <algorithm>
#include <cstdint>

#include "infra/Checks.h"
#include "math/Elementwise.h"
#include "qorn/dsp/DSPUtils.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/infra/VectorConversion.h"

namespace QORN {

namespace {

void Correlate(const float *src1, int len1, const float *src2, int len2, float *dst, int dstLen, int lag) {
  TargetLib::CrossCorr_32f(src1, len1, src2, len2, dst, dstLen, lag);
}
void Correlate(const Cplx32 *src1, int len1, const Cplx32 *src2, int len2, Cplx32 *dst, int dstLen, int lag) {
  TargetLib::CrossCorr_32fc(src1, len1, src2, len2, dst, dstLen, lag);
}

// Exchanging the operands of a correlation reverses it and conjugates it.
void Exchange(VecReal32 &vec) { TargetLib::Flip_32f_I(vec.GetPtr(), vec.GetSize()); }
void Exchange(VecCplx32 &vec) {
  TargetLib::Flip_32fc_I(vec.GetPtr(), vec.GetSize());
  TargetLib::Conj_32fc_I(vec.GetPtr(), vec.GetSize());
}

// The kernels leave a product with an empty operand unwritten; it is a sum without terms. False if so.
template <class V> bool HasTerms(V &dst, int len1, int len2) {
  if (len1 > 0 && len2 > 0) return true;
  dst.SetZero();
  return false;
}

template <class V> void CorrelateAll(V &dst, const V &a, const V &b) {
  const int la = a.GetSize(), lb = b.GetSize();
  dst.Resize(Length(2 * static_cast<std::int64_t>(std::max(la, lb)) - 1));
  if (!HasTerms(dst, la, lb)) return;
  if (la < lb) {
    Correlate(a.GetPtr(), la, b.GetPtr(), lb, dst.GetPtr(), dst.GetSize(), 1 - lb);
    Exchange(dst);
  } else {
    Correlate(b.GetPtr(), lb, a.GetPtr(), la, dst.GetPtr(), dst.GetSize(), 1 - la);
  }
}

template <class V>
void CorrelatePart(V &dst, int dstLen, const V &a, int aStart, const V &b, int bStart, int n) {
  const int rest = b.GetSize() - bStart;
  dst.Resize(dstLen);
  if (!HasTerms(dst, n, rest)) return;
  checks::Range(aStart, n, a.GetSize());
  Correlate(a.GetPtr(aStart), n, b.GetPtr(bStart), rest, dst.GetPtr(), dstLen, 0);
}

void Convolve(const float *src1, int len1, const float *src2, int len2, float *dst) {
  TargetLib::Conv_32f(src1, len1, src2, len2, dst);
}
void Convolve(const double *src1, int len1, const double *src2, int len2, double *dst) {
  TargetLib::Conv_64f(src1, len1, src2, len2, dst);
}

// Gives dst the length of a convolution. False if that is all there is to do.
template <class V> bool BeginConvolution(V &dst, const V &a, const V &b) {
  const int la = a.GetSize(), lb = b.GetSize();
  dst.Resize(Length(static_cast<std::int64_t>(la) - 1 + lb));
  return HasTerms(dst, la, lb);
}

template <class V> void ConvolveReal(V &dst, const V &a, const V &b) {
  if (BeginConvolution(dst, a, b)) Convolve(a.GetPtr(), a.GetSize(), b.GetPtr(), b.GetSize(), dst.GetPtr());
}

// R is the real vector of the same width. Each second product of a pair stands in dst until it is added.
template <class R, class V> void ConvolveComplex(V &dst, const V &a, const V &b) {
  using S = ElementOf<R>;
  if (!BeginConvolution(dst, a, b)) return;
  const int la = a.GetSize(), lb = b.GetSize(), n = dst.GetSize();
  R reA, imA, reB, imB, re(n), im(n);
  a.GetReal(reA);
  a.GetImag(imA);
  b.GetReal(reB);
  b.GetImag(imB);
  S *second = &dst.GetPtr()->re;
  Convolve(reA.GetPtr(), la, reB.GetPtr(), lb, re.GetPtr());
  Convolve(imA.GetPtr(), la, imB.GetPtr(), lb, second);
  Kernels<S>::Sub(second, re.GetPtr(), n);
  Convolve(reA.GetPtr(), la, imB.GetPtr(), lb, im.GetPtr());
  Convolve(imA.GetPtr(), la, reB.GetPtr(), lb, second);
  Kernels<S>::Add(second, im.GetPtr(), n);
  Kernels<ElementOf<V>>::RealToCplx(re.GetPtr(), im.GetPtr(), dst.GetPtr(), n);
}

template <class T, class V, class Kernel>
void Dot(Kernel kernel, T &result, const V &a, int aStart, const V &b, int bStart, int n) {
  kernel(a.GetPtr(aStart), b.GetPtr(bStart), n, &result);
}

// design(taps, n) leaves the taps unwritten where it refuses.
template <class Design> void Taps(VecReal64 &dst, int n, Design design) {
  dst.Resize(n);
  dst.SetZero();
  design(dst.GetPtr(), n);
}
template <class Design> void Taps(VecReal32 &dst, int n, Design design) {
  VecReal64 taps;
  Taps(taps, n, design);
  VectorConversion::Convert(dst, taps);
}

template <class V> void LowPassTaps(V &dst, double cutoff, int n) {
  Taps(dst, n, [=](double *taps, int len) { TargetLib::FIRGenLowpassWinHamming_64f(cutoff, taps, len); });
}
template <class V> void HighPassTaps(V &dst, double cutoff, int n) {
  Taps(dst, n, [=](double *taps, int len) { TargetLib::FIRGenHighpassWinHamming_64f(cutoff, taps, len); });
}
template <class V> void BandPassTaps(V &dst, double low, double high, int n) {
  Taps(dst, n, [=](double *taps, int len) { TargetLib::FIRGenBandpassWinHamming_64f(low, high, taps, len); });
}

} // namespace

void DSPUtils::CrossCorr(VecReal32 &dst, const VecReal32 &a, const VecReal32 &b) { CorrelateAll(dst, a, b); }
void DSPUtils::CrossCorr(VecCplx32 &dst, const VecCplx32 &a, const VecCplx32 &b) { CorrelateAll(dst, a, b); }

void DSPUtils::CrossCorr(VecReal32 &dst, int dstLen, const VecReal32 &a, int aStart, const VecReal32 &b,
                         int bStart, int n) {
  CorrelatePart(dst, dstLen, a, aStart, b, bStart, n);
}
void DSPUtils::CrossCorr(VecCplx32 &dst, int dstLen, const VecCplx32 &a, int aStart, const VecCplx32 &b,
                         int bStart, int n) {
  CorrelatePart(dst, dstLen, a, aStart, b, bStart, n);
}

void DSPUtils::CrossCorr2(VecCplx32 &dst, const VecCplx32 &a, const VecCplx32 &b) {
  const int la = a.GetSize(), lb = b.GetSize();
  if (HasTerms(dst, la, lb)) Correlate(b.GetPtr(), lb, a.GetPtr(), la, dst.GetPtr(), dst.GetSize(), 0);
}

void DSPUtils::Conv(VecReal32 &dst, const VecReal32 &a, const VecReal32 &b) { ConvolveReal(dst, a, b); }
void DSPUtils::Conv(VecReal64 &dst, const VecReal64 &a, const VecReal64 &b) { ConvolveReal(dst, a, b); }
void DSPUtils::Conv(VecCplx32 &dst, const VecCplx32 &a, const VecCplx32 &b) {
  ConvolveComplex<VecReal32>(dst, a, b);
}
void DSPUtils::Conv(VecCplx64 &dst, const VecCplx64 &a, const VecCplx64 &b) {
  ConvolveComplex<VecReal64>(dst, a, b);
}

void DSPUtils::DotProd(float &result, const VecReal32 &a, int aStart, const VecReal32 &b, int bStart, int n) {
  Dot(TargetLib::DotProd_32f, result, a, aStart, b, bStart, n);
}
void DSPUtils::DotProd(double &result, const VecReal64 &a, int aStart, const VecReal64 &b, int bStart,
                       int n) {
  Dot(TargetLib::DotProd_64f, result, a, aStart, b, bStart, n);
}
void DSPUtils::DotProd(Cplx32 &result, const VecCplx32 &a, int aStart, const VecCplx32 &b, int bStart,
                       int n) {
  Dot(TargetLib::DotProd_32fc, result, a, aStart, b, bStart, n);
}
void DSPUtils::DotProd(Cplx64 &result, const VecCplx64 &a, int aStart, const VecCplx64 &b, int bStart,
                       int n) {
  Dot(TargetLib::DotProd_64fc, result, a, aStart, b, bStart, n);
}

void DSPUtils::LowPass(VecReal32 &dst, float cutoff, int n) {
  LowPassTaps(dst, static_cast<double>(cutoff), n);
}
void DSPUtils::LowPass(VecReal64 &dst, double cutoff, int n) { LowPassTaps(dst, cutoff, n); }
void DSPUtils::HighPass(VecReal32 &dst, float cutoff, int n) {
  HighPassTaps(dst, static_cast<double>(cutoff), n);
}
void DSPUtils::HighPass(VecReal64 &dst, double cutoff, int n) { HighPassTaps(dst, cutoff, n); }
void DSPUtils::BandPass(VecReal32 &dst, float lowCutoff, float highCutoff, int n) {
  BandPassTaps(dst, static_cast<double>(lowCutoff), static_cast<double>(highCutoff), n);
}
void DSPUtils::BandPass(VecReal64 &dst, double lowCutoff, double highCutoff, int n) {
  BandPassTaps(dst, lowCutoff, highCutoff, n);
}

} // namespace QORN
