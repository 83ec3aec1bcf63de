// Levels from linear values and back: the logarithm and the power of ten of the elementary functions, with
// the arithmetic around them in the same pass. Every step is rounded, so the bits are those of the steps one
// by one. A step that a conversion does not need is a factor of 1 or an addition of -0, which change nothing.
#include "CplxProduct.h"
#include "Logarithm.h"
#include "Power.h"
#include "Unroll.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

/// log10(x * gain + offset) * scale + shift.
template <class T> struct ToSteps {
  T gain, offset, scale, shift;
  template <class X> QORN_INLINE X Before(X x) const { return Product(x, gain) + offset; }
  template <class X> QORN_INLINE X After(X y) const { return Product(y, scale) + shift; }

private:
  // Registers without Rounded(): GCC 12 leaves them unfused, but takes them apart at the barrier.
  template <class X> QORN_INLINE static X Product(X x, T factor) {
    if constexpr (sizeof(X) == sizeof(T)) {
      return Rounded(x * factor);
    } else {
      return x * factor;
    }
  }
};

/// log10(x + offset) * scale.
struct MagSteps {
  float offset, scale;
  template <class X> QORN_INLINE X Before(X x) const { return x + offset; }
  template <class X> QORN_INLINE X After(X y) const { return y * scale; }
};

/// 10 ^ ((x + shift) * scale) * gain.
template <class T> struct FromSteps {
  T shift, scale, gain;
  template <class X> QORN_INLINE X Before(X x) const { return (x + shift) * scale; }
  template <class X> QORN_INLINE X After(X y) const { return y * gain; }
};

/// The function Op with the steps around it.
template <class Op, class Steps> struct Around {
  Steps steps;

  template <class T> QORN_INLINE T Fast(T x) const requires requires { Op::Fast(x); }
  { return steps.After(Op::Fast(steps.Before(x))); }
  template <class T> QORN_INLINE double Begin(T x, double &other, bool &served) const {
    return Op::Begin(steps.Before(x), other, served);
  }
  QORN_INLINE auto End(double begun, double other) const requires requires { Op::End(begun, other); }
  { return steps.After(Op::End(begun, other)); }
  template <class T> QORN_INLINE T Fast(T x, bool &served) const {
    return steps.After(Op::Fast(steps.Before(x), served));
  }
  template <class T> T Full(T x) const { return steps.After(Op::Full(steps.Before(x))); }

#if defined(QORN_FLOAT_REGISTERS)
  QORN_INLINE Floats InFloats(Floats x) const requires requires { Op::InFloats(x); }
  { return steps.After(Op::InFloats(steps.Before(x))); }
  QORN_INLINE auto BeginFloats(Floats x) const requires requires { Op::BeginFloats(x); }
  { return Op::BeginFloats(steps.Before(x)); }
  template <class B> QORN_INLINE Floats EndFloats(const B &begun) const {
    return steps.After(Op::EndFloats(begun));
  }
  template <class T> QORN_INLINE auto Rank(T x) const { return Op::Rank(steps.Before(x)); }
  static constexpr std::uint32_t Ranks() requires requires { Op::Ranks(); }
  { return Op::Ranks(); }
#endif
};

template <class Log, class T>
void ToDecibel(const T *src, T *dst, int len, T gain, T offset, T scale, T shift) {
  Map(Around<Log, ToSteps<T>>{{gain, offset, scale, shift}}, dst, len, src);
}

// The magnitudes wait in the nearest cache. In one loop with the logarithm, the roots would lengthen a chain
// of instructions that fills the processor's queues as it is, and the whole take half as long again. A chunk
// at a time, the roots of one overlap with the last logarithms of the one before.
template <class Log> void MagToDecibel(const Cplx32 *src, float *dst, int len, float offset, float scale) {
  constexpr Index kPiece = kChunk<float>;
  alignas(64) float mag[kPiece];
  for (Index start = 0; start < len; start += kPiece) {
    const Index n = len - start < kPiece ? len - start : kPiece;
    const Cplx32 *const z = src + start;
    QORN_UNROLLED
    for (Index i = 0; i < n; ++i) mag[i] = __builtin_sqrtf(SquareSum(z[i].re, z[i].im));
    Map(Around<Log, MagSteps>{{offset, scale}}, dst + start, static_cast<int>(n), mag);
  }
}

template <class TenTo, class T> void FromDecibel(const T *src, T *dst, int len, T shift, T scale, T gain) {
  Map(Around<TenTo, FromSteps<T>>{{shift, scale, gain}}, dst, len, src);
}

using Log10_64 = Log64<Log10Base>;

} // namespace

#define QORN_FAMILY "Decibel.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
