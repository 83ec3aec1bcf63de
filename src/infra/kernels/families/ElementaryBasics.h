// What the elementary functions share: access to a double's bits, polynomials, exact products, and the loop
// that runs a function over arrays.
#ifndef QORN_SRC_INFRA_KERNELS_ELEMENTARYBASICS_H
#define QORN_SRC_INFRA_KERNELS_ELEMENTARYBASICS_H

#include "Registers.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

#define QORN_INLINE [[gnu::always_inline]] inline

#if defined(__FMA__) || defined(__ARM_FEATURE_FMA)
constexpr bool kFused = true;
#else
constexpr bool kFused = false;
#endif

constexpr double kInfinity = __builtin_inf();
constexpr double kNaN = __builtin_nan("");
constexpr double kSmallestNormal = 0x1p-1022;

/// Added to and subtracted from a number below 2^51 in magnitude, it rounds to the nearest integer, which
/// also stands in the low bits of the sum.
constexpr double kShifter = 0x1.8p52;

QORN_INLINE std::uint64_t Bits(double x) { return __builtin_bit_cast(std::uint64_t, x); }
QORN_INLINE std::uint32_t Bits(float x) { return __builtin_bit_cast(std::uint32_t, x); }
QORN_INLINE double FromBits(std::uint64_t bits) { return __builtin_bit_cast(double, bits); }

constexpr std::uint64_t kSignBit = std::uint64_t(1) << 63;
QORN_INLINE double Magnitude(double x) { return FromBits(Bits(x) & ~kSignBit); }
QORN_INLINE float Magnitude(float x) { return __builtin_bit_cast(float, Bits(x) & 0x7fffffffU); }
QORN_INLINE double WithSignOf(double size, double sign) {
  return FromBits(Bits(size) | (Bits(sign) & kSignBit));
}

// Without the short circuit of && and ||, whose branches would keep a loop from becoming vector code.
QORN_INLINE bool Both(bool a, bool b) { return (static_cast<int>(a) & static_cast<int>(b)) != 0; }
QORN_INLINE bool Either(bool a, bool b) { return (static_cast<int>(a) | static_cast<int>(b)) != 0; }

/// A number as an unevaluated sum, the second part being about a rounding error of the first.
struct Pair {
  double high, low;
};

/// a * b - product, exactly, product being the rounded a * b. Without the fused instruction by Dekker's
/// splitting (Numerische Mathematik 18, 1971), the halves being cut by bits, which cannot overflow.
QORN_INLINE double ProductError(double a, double b, double product) {
  if constexpr (kFused) {
    return MulAdd(a, b, -product);
  } else {
    constexpr std::uint64_t upper = ~std::uint64_t(0) << 27;
    const double a1 = FromBits(Bits(a) & upper), a2 = a - a1;
    const double b1 = FromBits(Bits(b) & upper), b2 = b - b1;
    return ((a1 * b1 - product) + a1 * b2 + a2 * b1) + a2 * b2;
  }
}

// Horner's scheme, c[First] + c[First + Step] x + c[First + 2 Step] x^2 and so on below c[N], of a double or
// of a register of them.
template <int First, int Step, class X, int N> QORN_INLINE X Horner(X x, const double (&c)[N]) {
  if constexpr (First + Step < N) {
    return MulAdd(x, Horner<First + Step, Step>(x, c), Broadcast<X>(c[First]));
  } else {
    return Broadcast<X>(c[First]);
  }
}

/// The sum of c[i] x^i. Long ones as two interleaved chains in x^2: more steps in flight for one more
/// product.
template <class X, int N> QORN_INLINE X Polynomial(X x, const double (&c)[N]) {
  if constexpr (N <= 6) {
    return Horner<0, 1>(x, c);
  } else {
    const X square = x * x;
    return MulAdd(x, Horner<1, 2>(square, c), Horner<0, 2>(square, c));
  }
}

template <class R> struct PartOf { using Type = R; };
template <> struct PartOf<Cplx32> { using Type = float; };
template <> struct PartOf<Cplx64> { using Type = double; };

/// Elements of a block: one register of scalars at the widest level.
template <class R> constexpr Index kBlock = 64 / Index(sizeof(typename PartOf<R>::Type));
/// At most so many elements are looked at before results are final.
template <class R> constexpr Index kChunk = 16 * kBlock<R>;

// Registers of floats, with tables of eight that are looked up in registers.

#if defined(__AVX2__)
#define QORN_FLOAT_REGISTERS 1
constexpr int kFloats = kRegisterBytes / 4;
using Floats = Vec<float, kFloats>;
using Ints = Vec<std::int32_t, kFloats>;
using Words = Vec<std::uint32_t, kFloats>;

QORN_INLINE Words Bits(Floats x) { return __builtin_bit_cast(Words, x); }
QORN_INLINE Floats FromBits(Words bits) { return __builtin_bit_cast(Floats, bits); }
QORN_INLINE Floats Every(float x) { return Broadcast<Floats>(x); }

/// The lowest three bits of each index choose from the table.
QORN_INLINE Floats Choose(const float (&table)[8], Words index) {
#if defined(__AVX512F__)
  const Vec<float, 8> half = Load<Vec<float, 8>>(table);
  const Floats twice = __builtin_shufflevector(half, half, 0, 1, 2, 3, 4, 5, 6, 7, 0, 1, 2, 3, 4, 5, 6, 7);
  // With a mask: GCC 12 takes the don't-care operand of the plain form for an uninitialised variable.
  return _mm512_maskz_permutexvar_ps(0xffff, __builtin_bit_cast(__m512i, index), twice);
#else
  return _mm256_permutevar8x32_ps(Load<Floats>(table), __builtin_bit_cast(__m256i, index));
#endif
}

#if defined(__AVX512F__)
/// The lowest five bits of each index choose from the table.
QORN_INLINE Floats Choose(const float (&table)[32], Words index) {
  return _mm512_permutex2var_ps(Load<Floats>(table), __builtin_bit_cast(__m512i, index),
                                Load<Floats>(table + 16));
}
#endif

template <int N, int First = 0> QORN_INLINE Floats Polynomial(Floats x, const float (&c)[N]) {
  if constexpr (First + 1 < N) {
    return MulAdd(x, Polynomial<N, First + 1>(x, c), Every(c[First]));
  } else {
    return Every(c[First]);
  }
}

/// The real and the imaginary parts of as many complex values.
struct ComplexFloats {
  Floats re, im;
};

QORN_INLINE void StoreResults(float *dst, Floats y) { Store(dst, y); }
QORN_INLINE void StoreResults(Cplx32 *dst, ComplexFloats y) {
  StoreComplex<float, kFloats>(&dst->re, y.re, y.im);
}

// The same values in double, half of them each.
using Doubles = Vec<double, kFloats / 2>;
struct Halves {
  Doubles lower, upper;
};

QORN_INLINE Halves Widened(Floats x) {
  return {Widened(HalfOf<0, kFloats>(x)), Widened(HalfOf<1, kFloats>(x))};
}

// By intrinsics: GCC 12 takes apart what has vectors of two sizes.
template <int... I> QORN_INLINE Floats Narrowed(Doubles lower, Doubles upper, Seq<I...>) {
#if defined(__AVX512F__)
  const __m256 first = _mm512_maskz_cvtpd_ps(0xff, lower), second = _mm512_maskz_cvtpd_ps(0xff, upper);
#else
  const __m128 first = _mm256_cvtpd_ps(lower), second = _mm256_cvtpd_ps(upper);
#endif
  return __builtin_shufflevector(first, second, I...);
}
QORN_INLINE Floats Narrowed(Doubles lower, Doubles upper) {
  return Narrowed(lower, upper, MakeSeq<kFloats>{});
}

/// Whether the operation serves all n arguments in this way, n being a chunk at most; else some of the
/// results are wrong.
template <class Op, class R> QORN_INLINE bool RunRegisters(Op op, R *dst, Index n, const float *src) {
  Words highest = {};
  const auto load = [&](Index i) {
    const Floats x = Load<Floats>(src + i);
    const Words rank = op.Rank(x);
    highest = highest < rank ? rank : highest;
    return x;
  };
  if constexpr (requires { op.BeginFloats(Floats()); }) {
    decltype(op.BeginFloats(Floats())) begun[kChunk<R> / kFloats];
    for (Index i = 0; i < n; i += kFloats) begun[i / kFloats] = op.BeginFloats(load(i));
    for (Index i = 0; i < n; i += kFloats) StoreResults(dst + i, op.EndFloats(begun[i / kFloats]));
  } else {
    for (Index i = 0; i < n; i += kFloats) StoreResults(dst + i, op.InFloats(load(i)));
  }
  std::uint32_t all = 0;
  for (int lane = 0; lane < kFloats; ++lane) all = all < highest[lane] ? highest[lane] : all;
  return all < Op::Ranks();
}
#endif

// The loop. An operation offers
//   Fast(arguments...)            branch-free, which the compiler turns into vector code
//   Fast(arguments..., &served)   the same where it cannot serve every argument, and then also
//   Full(arguments...)            for those that it does not, in scalar code
// or, in place of the last Fast,
//   Begin(arguments..., other, &served)  and then
//   End(begun, other)             which are two loops: what waits for the end of a long chain of instructions
//                                 fills the processor's queues, so that two short chains take less time
// and may, beside either, at the levels with QORN_FLOAT_REGISTERS, offer
//   InFloats(register)            cheaper, for the arguments whose
//   Rank(argument or register)    is below
//   Ranks()
// or, in place of the first,
//   BeginFloats(register)  and then
//   EndFloats(begun)
// The cheapest always runs on whole blocks in one piece of code, a tail being padded to a block, and another
// is chosen by the element alone. So a result cannot depend on its place or on its neighbours. Where a source
// is the destination and may be needed again, results wait in a buffer.

/// 0 if served, in an integer of the element's width. By way of a floating-point choice: the base level has
/// that in vectors, but no comparison of doubles that chooses integers.
QORN_INLINE std::uint32_t Missed(bool served, float) {
  return __builtin_bit_cast(std::uint32_t, served ? 0.0F : 1.0F);
}
QORN_INLINE std::uint64_t Missed(bool served, double) { return Bits(served ? 0.0 : 1.0); }

/// Copies whole blocks, four pieces at a time: a plain loop would become a call or a string instruction,
/// which takes as long as the copying.
template <class R> QORN_INLINE void CopyBlocks(R *dst, const R *src, Index n) {
  using Piece = Vec<double, kRegisterBytes / 8>;
  constexpr Index kStep = kRegisterBytes / Index(sizeof(R));
  for (Index i = 0; i < n; i += kBlock<R>) {
    Unroll<int(kBlock<R> / kStep)>(
        [&](auto piece) { Store(dst + i + piece * kStep, Load<Piece>(src + i + piece * kStep)); });
  }
}

// Not cloned: the one code for bodies and tails is what the promise above rests on.
#if defined(__clang__)
#define QORN_ONE_COPY [[gnu::noinline]]
#else
#define QORN_ONE_COPY [[gnu::noinline, gnu::noclone]]
#endif

// Before a loop whose destination is one of its sources or apart from it. Some operations stay scalar code
// all the same, which Clang reports.
#if defined(__clang__)
#define QORN_SAME_OR_APART _Pragma("clang loop vectorize(assume_safety)")
#pragma clang diagnostic ignored "-Wpass-failed"
#else
#define QORN_SAME_OR_APART _Pragma("GCC ivdep")
#endif

/// n elements, a chunk at most, without registers of floats. Where the operation does not serve all arguments
/// in one way, `to` must be none of the sources.
template <class Op, class R, class... A> QORN_INLINE void RunLoops(Op op, R *to, Index n, const A *...src) {
  using T = typename PartOf<R>::Type;
  if constexpr (requires { op.Fast(src[0]...); }) {
    QORN_SAME_OR_APART
    for (Index i = 0; i < n; ++i) to[i] = op.Fast(src[i]...);
  } else {
    auto missed = Missed(true, T());
    if constexpr (requires { op.End(0.0, 0.0); }) {
      alignas(64) double begun[kChunk<R>], other[kChunk<R>];
      for (Index i = 0; i < n; ++i) {
        bool served = true;
        begun[i] = op.Begin(src[i]..., other[i], served);
        missed |= Missed(served, T());
      }
      for (Index i = 0; i < n; ++i) to[i] = op.End(begun[i], other[i]);
    } else {
      QORN_SAME_OR_APART
      for (Index i = 0; i < n; ++i) {
        bool served = true;
        to[i] = op.Fast(src[i]..., served);
        missed |= Missed(served, T());
      }
    }
    if (missed != 0) {
      for (Index i = 0; i < n; ++i) {
        bool served = true;
        if constexpr (requires { op.End(0.0, 0.0); }) {
          double other;
          op.Begin(src[i]..., other, served);
        } else {
          op.Fast(src[i]..., served);
        }
        if (!served) to[i] = op.Full(src[i]...);
      }
    }
  }
}

template <class Op, class R, class... A>
QORN_ONE_COPY void RunBlocks(Op op, R *dst, Index count, const A *...src) {
  alignas(64) R out[kChunk<R>];
  const bool inPlace = ((static_cast<const void *>(src) == dst) || ...);
  for (Index start = 0; start < count; start += kChunk<R>) {
    const Index n = (count - start < kChunk<R> ? count - start : kChunk<R>) / kBlock<R> * kBlock<R>;
#if defined(QORN_FLOAT_REGISTERS)
    if constexpr (requires { Op::Ranks(); }) {
      R *to = inPlace ? out : dst + start;
      if (!RunRegisters(op, to, n, src + start...)) {
        alignas(64) R other[kChunk<R>];
        RunLoops(op, other, n, src + start...);
        for (Index i = 0; i < n; ++i) to[i] = op.Rank(src[start + i]...) < Op::Ranks() ? to[i] : other[i];
      }
      if (inPlace) CopyBlocks(dst + start, out, n);
      continue;
    }
#endif
    if constexpr (requires { op.Fast(src[0]...); }) {
      RunLoops(op, dst + start, n, src + start...);
    } else {
      RunLoops(op, inPlace ? out : dst + start, n, src + start...);
      if (inPlace) CopyBlocks(dst + start, out, n);
    }
  }
}

/// The last elements of an array, filled up with copies of the very last.
template <class A, Index N> struct Padded {
  Padded(const A *src, Index count) {
    for (Index i = 0; i < N; ++i) values[i] = src[i < count ? i : count - 1];
  }
  alignas(64) A values[N];
};

template <class Op, class R, class... A> void Map(Op op, R *dst, int len, const A *...src) {
  constexpr Index n = kBlock<R>;
  const Index whole = len / n * n, rest = len - whole;
  if (whole > 0) RunBlocks(op, dst, whole, src...);
  if (rest > 0) {
    alignas(64) R out[n];
    RunBlocks(op, out, n, Padded<A, n>(src + whole, rest).values...);
    for (Index i = 0; i < rest; ++i) dst[whole + i] = out[i];
  }
}

} // namespace
} // namespace QORN::kernels::QORN_LEVEL

#endif
