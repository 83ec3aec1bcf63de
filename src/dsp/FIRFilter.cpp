#include "qorn/dsp/FIRFilter.h"

#include <algorithm>

#include "math/Elementwise.h"
#include "qorn/dsp/DSPUtils.h"

namespace QORN {

namespace {

// True if there is something to convolve; otherwise out is the sum without terms.
template <class V> bool HasTerms(V &out, int taps, int samples) {
  if (taps > 0 && samples > 0) return true;
  out.Resize(std::max(samples, 0));
  out.SetZero();
  return false;
}

// Narrows the full convolution to one output per sample.
template <class V> void Select(V &out, int taps, int samples, bool centre) {
  const int first = centre ? taps / 2 : 0;
  out.Trim(first, first + samples - 1);
}

// The parts of each block are taken while it is in the nearest cache.
template <class V, class R> void Split(const V &src, R &re, R &im) {
  const int n = src.GetSize();
  re.Resize(n);
  im.Resize(n);
  for (int i = 0; i < n; i += kBlock) {
    const int count = std::min(kBlock, n - i);
    Kernels<ElementOf<V>>::Real(src.GetPtr(i), re.GetPtr(i), count);
    Kernels<ElementOf<V>>::Imag(src.GetPtr(i), im.GetPtr(i), count);
  }
}

template <class V, class R> void Join(V &dst, const R &re, const R &im) {
  const int n = re.GetSize();
  dst.Resize(n);
  Kernels<ElementOf<V>>::RealToCplx(re.GetPtr(), im.GetPtr(), dst.GetPtr(), n);
}

template <class V, class R, class Scratch>
void ApplyRealTaps(V &out, const R &taps, const V &in, bool centre, Scratch &scratch) {
  const int count = taps.GetSize(), samples = in.GetSize();
  if (!HasTerms(out, count, samples)) return;
  Split(in, scratch.inRe, scratch.inIm);
  DSPUtils::Conv(scratch.outRe, taps, scratch.inRe);
  DSPUtils::Conv(scratch.outIm, taps, scratch.inIm);
  Join(out, scratch.outRe, scratch.outIm);
  Select(out, count, samples, centre);
}

} // namespace

void FIRFilter::Apply(VecReal32 &out, VecReal32 const &taps, VecReal32 const &in, bool centre) {
  // A convolution cannot be written over its sources.
  if (&out == &in) {
    m_scratch32.inRe = in;
    Apply(out, &taps == &in ? m_scratch32.inRe : taps, m_scratch32.inRe, centre);
    return;
  }
  if (&out == &taps) {
    m_scratch32.inIm = taps;
    Apply(out, m_scratch32.inIm, in, centre);
    return;
  }
  const int count = taps.GetSize(), samples = in.GetSize();
  if (!HasTerms(out, count, samples)) return;
  DSPUtils::Conv(out, taps, in);
  Select(out, count, samples, centre);
}

void FIRFilter::Apply(VecCplx32 &out, VecReal32 const &taps, VecCplx32 const &in, bool centre) {
  ApplyRealTaps(out, taps, in, centre, m_scratch32);
}

void FIRFilter::Apply(VecCplx64 &out, VecReal64 const &taps, VecCplx64 const &in, bool centre) {
  ApplyRealTaps(out, taps, in, centre, m_scratch64);
}

void FIRFilter::Apply(VecCplx32 &out, VecCplx32 const &taps, VecCplx32 const &in, bool centre) {
  if (&out == &in || &out == &taps) {
    const VecCplx32 copy(out);
    Apply(out, &out == &taps ? copy : taps, &out == &in ? copy : in, centre);
    return;
  }
  const int count = taps.GetSize(), samples = in.GetSize();
  if (!HasTerms(out, count, samples)) return;
  // Correlation with the conjugate reversed is convolution. The kernel sums the products with real and with
  // imaginary parts apart and adds the two sums in the end, as four real convolutions would, but reads the
  // samples once. As in a real convolution, the shorter operand slides over the longer one.
  const VecCplx32 &slider = count > samples ? in : taps, &still = count > samples ? taps : in;
  const int n = slider.GetSize(), first = centre ? count / 2 : 0;
  VecCplx32 reversed(n);
  TargetLib::ConjFlip_32fc(slider.GetPtr(), reversed.GetPtr(), n);
  out.Resize(samples);
  TargetLib::CrossCorr_32fc(reversed.GetPtr(), n, still.GetPtr(), still.GetSize(), out.GetPtr(), samples,
                            first - (n - 1));
}

void FIRFilter::Apply(VecCplx32 &out, VecCplx32 const &taps, VecReal32 const &in, bool centre) {
  const int count = taps.GetSize(), samples = in.GetSize();
  if (!HasTerms(out, count, samples)) return;
  VecReal32 tapsRe, tapsIm;
  Split(taps, tapsRe, tapsIm);
  DSPUtils::Conv(m_scratch32.outRe, tapsRe, in);
  DSPUtils::Conv(m_scratch32.outIm, tapsIm, in);
  Join(out, m_scratch32.outRe, m_scratch32.outIm);
  Select(out, count, samples, centre);
}

} // namespace QORN
