#include "Registers.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

using Doubles = Register<double>;

// Lanes first, first + 1, ... of a followed by b.
template <int kFirst, class E, int... I> [[gnu::always_inline]] inline auto Lanes(E a, E b, Seq<I...>) {
  return __builtin_shufflevector(a, b, (kFirst + I)...);
}
// The lower or the upper half of a register in double, and back.
template <int kUpper> [[gnu::always_inline]] inline Doubles Widened(Register<float> x) {
  return Widened(HalfOf<kUpper, kPerRegister<float>>(x));
}
[[gnu::always_inline]] inline Register<float> Narrowed(Doubles low, Doubles high) {
  using Half = Vec<float, kPerRegister<double>>;
  return Lanes<0>(__builtin_convertvector(low, Half), __builtin_convertvector(high, Half),
                  MakeSeq<kPerRegister<float>>{});
}

// x in a register, where the compiler would rather load it for each use. A load that crosses a cache line
// takes the time of two multiplications.
template <class E> [[gnu::always_inline]] inline E Held(E x) {
#if defined(__AVX__)
  asm("" : "+v"(x));
#endif
  return x;
}

// Direct sums: dst[n] = sum over k of tap(k) * x[n + lag + k], x taken as zero outside 0 to len - 1.
//
// Eight products are summed in the elements' own precision, as two sums of four, or sixteen floats as four
// such sums, and these sums in a wider one; so the error of a result, 7 units at most where one is half the
// elements' eps times the sum of magnitudes, does not grow with the number of its terms. Which products make
// a short sum depends on the number of taps alone, not on the place of the result. A block of results stays
// in registers while all taps run over it. In full groups of taps the four lie so far apart that what is
// loaded for one serves its neighbours; the taps that are left make smaller groups, in which the four lie
// closer.
//
// Complex signals are taken as the scalars that they are. With real taps, their parts are two real signals
// whose values lie kStride = 2 scalars apart, and every part has the bits that it would have alone. Complex
// taps have kParts = 2 scalars: the products with their real parts and those with their imaginary parts are
// summed apart and meet in the end.

constexpr int kChain = 4;

// The taps between the products of a short sum, in full groups.
#if defined(__AVX512F__)
template <class T> constexpr int kApart = kPerRegister<T>;
#else
template <class T> constexpr int kApart = kPerRegister<T> / 2;
#endif

// Where the scalars of tap k are: those of neighbouring taps kStride apart, or each where a list has it.
template <class T, int kStride> struct Line {
  const T *x;
  [[gnu::always_inline]] const T *operator()(Index k) const { return x + k * kStride; }
};
template <class T> struct Listed {
  const T *x;
  const Index *offsets;
  [[gnu::always_inline]] const T *operator()(Index k) const { return x + offsets[k]; }
};

// Sums of more than T's digits: of floats in double, of doubles with the errors of the additions beside them
// (Knuth's two-sum).
template <class T> struct Wide;
template <> struct Wide<float> {
  Doubles low{}, high{};
  [[gnu::always_inline]] void Add(Register<float> x) {
    low += Widened<0>(x);
    high += Widened<1>(x);
  }
  [[gnu::always_inline]] Register<float> Value() const { return Narrowed(low, high); }
};
template <> struct Wide<double> {
  Doubles sum{}, error{};
  [[gnu::always_inline]] void Add(Doubles x) {
    const Doubles both = sum + x, added = both - sum;
    error += (sum - (both - added)) + (x - added);
    sum = both;
  }
  // Beside an infinite sum the error is not a number.
  [[gnu::always_inline]] Doubles Value() const { return error == error ? sum + error : sum; }
};

template <class T, int kParts, int kRegisters> struct Sums {
  Wide<T> byRe[kRegisters], byIm[kParts == 2 ? kRegisters : 1];
};

// re and im += the products of tap k with R registers of scalars; the first products of a sum make it.
template <bool kFirst, class W, class E>
[[gnu::always_inline]] inline void AddProduct(W weight, E x, E &re, E &im) {
  if constexpr (requires { weight.re; }) {
    re = kFirst ? weight.re * x : MulAdd(weight.re, x, re);
    im = kFirst ? weight.im * x : MulAdd(weight.im, x, im);
  } else {
    re = kFirst ? weight * x : MulAdd(weight, x, re);
  }
}

template <class E> struct CplxWeight { E re, im; };
template <class E, class W> [[gnu::always_inline]] inline auto Weight(W weight) {
  if constexpr (requires { weight.re; })
    return CplxWeight<E>{Broadcast<E>(weight.re), Broadcast<E>(weight.im)};
  else
    return Broadcast<E>(weight);
}

// re and im = kTaps products: of taps k, k + kApart, ..., where signal(k) are the scalars that belong to
// tap k, from the one of the block's first result on.
template <class T, int kRegisters, int kTaps, int kTapsApart, class Tap>
[[gnu::always_inline]] inline void SumChain(Tap tap, Index k, Listed<T> signal, Register<T> *re,
                                            Register<T> *im) {
  Unroll<kTaps>([&](auto p) {
    const auto weight = Weight<Register<T>>(tap(k + p * kTapsApart));
    const T *const x = signal(k + p * kTapsApart);
    Unroll<kRegisters>([&](auto r) {
      AddProduct<p == 0>(weight, Load<Register<T>>(x + r * kPerRegister<T>), re[r], im[r]);
    });
  });
}

// Whether one of the taps has a register of scalars at place u.
constexpr bool Needed(int u, int taps, int perTap, int registers, int perResult) {
  for (int p = 0; p < taps; ++p) {
    const int rest = u - p * perTap;
    if (rest >= 0 && rest % perResult == 0 && rest / perResult < registers) return true;
  }
  return false;
}

// What several taps need of a line is loaded once.
template <class T, int kRegisters, int kTaps, int kTapsApart, class Tap, int kStride>
[[gnu::always_inline]] inline void SumChain(Tap tap, Index k, Line<T, kStride> signal, Register<T> *re,
                                            Register<T> *im) {
  constexpr int kScalars = kTapsApart * kStride, kWidth = kPerRegister<T>;
  constexpr int kUnit = kScalars < kWidth ? kScalars : kWidth;
  constexpr int kPerTap = kScalars / kUnit, kPerResult = kWidth / kUnit;
  static_assert(kScalars % kUnit == 0 && kWidth % kUnit == 0);
  decltype(Weight<Register<T>>(tap(k))) weights[kTaps];
  Unroll<kTaps>([&](auto p) { weights[p] = Weight<Register<T>>(tap(k + p * kTapsApart)); });
  const T *const x = signal(k);
  Unroll<(kTaps - 1) * kPerTap + (kRegisters - 1) * kPerResult + 1>([&](auto u) {
    if constexpr (Needed(u, kTaps, kPerTap, kRegisters, kPerResult)) {
      const auto values = Held(Load<Register<T>>(x + u * kUnit));
      Unroll<kTaps>([&](auto p) {
        Unroll<kRegisters>([&](auto r) {
          if constexpr (p * kPerTap + r * kPerResult == u)
            AddProduct<p == 0>(weights[p], values, re[r], im[r]);
        });
      });
    }
  });
}

// Adds the sum of the kChains short sums from tap k, k + 1, ... on: 1, 2 or 4.
template <class T, int kParts, int kRegisters, int kTaps, int kTapsApart, int kChains, class Tap,
          class Signal>
[[gnu::always_inline]] inline void AddChains(Tap tap, Index k, Signal signal,
                                             Sums<T, kParts, kRegisters> &sums) {
  Register<T> re[kRegisters], im[kRegisters];
  SumChain<T, kRegisters, kTaps, kTapsApart>(tap, k, signal, re, im);
  if constexpr (kChains > 1) {
    Register<T> re2[kRegisters], im2[kRegisters];
    SumChain<T, kRegisters, kTaps, kTapsApart>(tap, k + 1, signal, re2, im2);
    Unroll<kRegisters>([&](auto r) { re[r] += re2[r], im[r] += im2[r]; });
    if constexpr (kChains > 2) {
      Register<T> re3[kRegisters], im3[kRegisters];
      SumChain<T, kRegisters, kTaps, kTapsApart>(tap, k + 2, signal, re2, im2);
      SumChain<T, kRegisters, kTaps, kTapsApart>(tap, k + 3, signal, re3, im3);
      Unroll<kRegisters>([&](auto r) { re[r] += re2[r] + re3[r], im[r] += im2[r] + im3[r]; });
    }
  }
  Unroll<kRegisters>([&](auto r) {
    sums.byRe[r].Add(re[r]);
    if constexpr (kParts == 2) sums.byIm[r].Add(im[r]);
  });
}

// In full groups of taps.
template <class T, int kParts> constexpr int kFullApart = kApart<T> / kParts > 2 ? kApart<T> / kParts : 2;

// As many registers of results as leave some for the taps and the signal; where four short sums are added up
// at once, two less.
#if defined(__AVX512F__) || defined(__aarch64__)
template <int kParts> constexpr int kResultRegisters = kParts == 1 ? 6 : 2;
template <int kParts> constexpr int kFewerRegisters = kParts == 1 ? 4 : 2;
#else
template <int kParts> constexpr int kResultRegisters = kParts == 1 ? 3 : 1;
template <int kParts> constexpr int kFewerRegisters = kResultRegisters<kParts>;
#endif
// What is left over of blocks goes into smaller ones.
constexpr int Smaller(int registers) { return registers == 6 ? 4 : registers / 2; }

// Four short sums of floats are added up at once in groups of taps that lie eight apart.
template <class T, int kParts, int kTapsApart>
constexpr bool kFourSums = sizeof(T) == sizeof(float) && kTapsApart == 8 && kFewerRegisters<kParts> == 4;
// How many registers of results: fewer also where there is no full group of taps, so that what is around the
// sums counts.
template <class T, int kParts> bool TakesFewer(Index taps) {
  constexpr Index kFull = kChain * kFullApart<T, kParts>;
  return kFewerRegisters<kParts> != kResultRegisters<kParts> &&
         (taps < kFull || (kFourSums<T, kParts, 8> && taps % kFull >= kChain * 8));
}

// The taps k to end - 1: groups of kChain times kTapsApart as far as they go, then smaller ones.
template <int kTapsApart, class T, int kParts, int kRegisters, class Tap, class Signal>
[[gnu::always_inline]] inline void AddTaps(Tap tap, Index k, Index end, Signal signal,
                                           Sums<T, kParts, kRegisters> &sums) {
  for (; k + kChain * kTapsApart <= end; k += kChain * kTapsApart) {
    constexpr int kChains = kFourSums<T, kParts, kTapsApart> ? 4 : 2;
    for (Index j = 0; j < kTapsApart; j += kChains)
      AddChains<T, kParts, kRegisters, kChain, kTapsApart, kChains>(tap, k + j, signal, sums);
  }
  if constexpr (kTapsApart > 2) {
    AddTaps<kTapsApart / 2>(tap, k, end, signal, sums);
  } else {
    if (k + 4 <= end) {
      AddChains<T, kParts, kRegisters, 2, 2, 2>(tap, k, signal, sums);
      k += 4;
    }
    for (; k < end; ++k) AddChains<T, kParts, kRegisters, 1, 1, 1>(tap, k, signal, sums);
  }
}

// Where a group of taps reaches beyond an end of x, and a tap is not finite: a term from outside x must be
// left out rather than multiplied by zero, since an infinite tap must not reach results to which it does not
// belong.
template <class T, int kParts, int kStride, int kRegisters, class Tap>
[[gnu::noinline]] void AddSparingly(Tap tap, Index k, Index end, const T *x, Index len, Index at,
                                    Sums<T, kParts, kRegisters> &sums) {
  for (; k < end; ++k, at += kStride) {
    const auto weight = tap(k);
    for (int r = 0; r < kRegisters; ++r) {
      Register<T> re{};
      [[maybe_unused]] Register<T> im{};
      for (int lane = 0; lane < kPerRegister<T>; ++lane) {
        const Index place = at + r * kPerRegister<T> + lane;
        if (place < 0 || place >= len) continue;
        if constexpr (kParts == 1) {
          re[lane] = weight * x[place];
        } else {
          re[lane] = weight.re * x[place];
          im[lane] = weight.im * x[place];
        }
      }
      sums.byRe[r].Add(re);
      if constexpr (kParts == 2) sums.byIm[r].Add(im);
    }
  }
}

template <class T> inline bool Finite(T x) { return x - x == 0; }
template <class Tap> inline bool AllFinite(Tap tap, Index k, Index end) {
  for (; k < end; ++k) {
    const auto weight = tap(k);
    if constexpr (requires { weight.re; }) {
      if (!Finite(weight.re) || !Finite(weight.im)) return false;
    } else if (!Finite(weight)) {
      return false;
    }
  }
  return true;
}

// Even lanes of a, odd lanes of b.
template <int V> struct Alternating {
  static constexpr int At(int i) { return i % 2 == 0 ? i : V + i; }
};

#if defined(__AVX512F__)
// As instructions: GCC 12 makes a vector of each mask.
[[gnu::always_inline]] inline bool AllZero(Register<float> x) {
  return _mm512_cmp_ps_mask(x, Register<float>{}, _CMP_NEQ_UQ) == 0;
}
[[gnu::always_inline]] inline bool AllZero(Register<double> x) {
  return _mm512_cmp_pd_mask(x, Register<double>{}, _CMP_NEQ_UQ) == 0;
}
#else
template <class E> [[gnu::always_inline]] inline bool AllZero(E x) {
  return Folded<1, sizeof(E) / sizeof(x[0])>(x, [](auto a, auto b) { return a + b; })[0] == 0;
}
#endif

template <class T, int kRegisters> struct Results {
  Register<T> in[kRegisters];

  [[gnu::always_inline]] void Store(T *dst) const {
    Unroll<kRegisters>([&](auto r) { QORN_LEVEL::Store(dst + r * kPerRegister<T>, in[r]); });
  }
  [[gnu::always_inline]] bool AllFinite() const {
    Register<T> zero{};
    Unroll<kRegisters>([&](auto r) { zero += in[r] - in[r]; });
    return AllZero(zero);
  }
};

// Adds up the parts of the sums.
template <class T, int kParts, int kRegisters>
[[gnu::always_inline]] inline Results<T, kRegisters> ResultsOf(const Sums<T, kParts, kRegisters> &sums) {
  Results<T, kRegisters> results;
  Unroll<kRegisters>([&](auto r) {
    Register<T> result = sums.byRe[r].Value();
    if constexpr (kParts == 2) { // conj(tap) x = (re x.re + im x.im, re x.im - im x.re)
      const Register<T> im = sums.byIm[r].Value();
      const Register<T> swapped = Shuffle<Swapped, kPerRegister<T>>(im, im);
      result = Shuffle<Alternating<kPerRegister<T>>, kPerRegister<T>>(result + swapped, result - swapped);
    }
    results.in[r] = result;
  });
  return results;
}

// Copies fewer than 2 kAtOnce values, in two copies of as many that may overlap.
template <int kAtOnce, class T>
[[gnu::always_inline]] inline void CopyLess(const T *src, T *dst, Index count) {
  if constexpr (kAtOnce == 1) {
    if (count > 0) *dst = *src;
  } else if (count >= kAtOnce) {
    using E = Vec<T, kAtOnce>;
    const E low = Load<E>(src), high = Load<E>(src + count - kAtOnce);
    Store(dst, low);
    Store(dst + count - kAtOnce, high);
  } else {
    CopyLess<kAtOnce / 2>(src, dst, count);
  }
}

// Copies what does not overlap, and is too short for a function of the C library.
template <class T> [[gnu::noinline]] void CopyFew(const T *src, T *dst, Index count) {
  constexpr int kAtOnce = kPerRegister<T>;
  for (; count >= 2 * kAtOnce; src += kAtOnce, dst += kAtOnce, count -= kAtOnce)
    Store(dst, Load<Register<T>>(src));
  CopyLess<kAtOnce>(src, dst, count);
}

// A block of results that needs what is before or behind x. Zeros stand there; a tap that is not finite would
// show in every result that it meets, and only then the terms are left out one by one.
template <class T, int kParts, int kStride, int kRegisters, class Tap>
[[gnu::noinline, gnu::flatten]] void CorrelateEdge(Tap tap, Index taps, const T *x, Index len, Index start,
                                                   T *dst) {
  constexpr int kWidth = kRegisters * kPerRegister<T>;
  constexpr int kFull = kFullApart<T, kParts>;
  for (bool sparing = false;; sparing = true) {
    Sums<T, kParts, kRegisters> sums;
    for (Index k = 0, end = 0; k < taps; k = end) {
      end = taps - k >= kChain * kFull ? k + kChain * kFull : taps;
      // What these taps need: `size` scalars from `at` on.
      const Index at = start + k * kStride, size = (end - k - 1) * kStride + kWidth;
      const T *values = x + at;
      T padded[kChain * kFull * kStride + kWidth];
      if (at < 0 || at + size > len) {
        const Index first = at < 0 ? -at : 0, last = at + size > len ? len - at : size;
        if (first >= last) continue;
        if (sparing && !AllFinite(tap, k, end)) {
          AddSparingly<T, kParts, kStride, kRegisters>(tap, k, end, x, len, at, sums);
          continue;
        }
        for (Index i = 0; i < size; i += kPerRegister<T>) Store(padded + i, Register<T>{});
        CopyFew(x + at + first, padded + first, last - first);
        values = padded;
      }
      AddTaps<kFull>(tap, k, end, Line<T, kStride>{values - k * kStride}, sums);
    }
    const auto results = ResultsOf(sums);
    if (!sparing && !results.AllFinite() && !AllFinite(tap, 0, taps)) continue;
    return results.Store(dst);
  }
}

template <class T, int kParts, int kStride, int kRegisters, class Tap>
[[gnu::flatten]] void CorrelateBlock(Tap tap, Index taps, const T *x, Index len, Index start, T *dst) {
  constexpr int kWidth = kRegisters * kPerRegister<T>;
  if (start < 0 || start + (taps - 1) * kStride + kWidth > len) {
    return CorrelateEdge<T, kParts, kStride, kRegisters>(tap, taps, x, len, start, dst);
  }
  Sums<T, kParts, kRegisters> sums;
  AddTaps<kFullApart<T, kParts>>(tap, 0, taps, Line<T, kStride>{x + start}, sums);
  ResultsOf(sums).Store(dst);
}

// Blocks of kRegisters as far as they go, from result `done` on; then smaller ones, or one that covers what
// is left and repeats what is before that. dst is clear of x.
template <class T, int kParts, int kRegisters, class Tap>
void Correlate(Tap tap, Index taps, const T *x, Index len, Index start, T *dst, Index done, Index count) {
  constexpr int kWidth = kRegisters * kPerRegister<T>;
  constexpr int kSmaller = Smaller(kRegisters), kSmallerWidth = kSmaller * kPerRegister<T>;
  const auto block = [&](Index first, T *results) {
    CorrelateBlock<T, kParts, kParts, kRegisters>(tap, taps, x, len, start + first, results);
  };
  for (; done + kWidth <= count; done += kWidth) block(done, dst + done);
  if (count - done > kSmallerWidth) {
    if (count >= kWidth) return block(count - kWidth, dst + count - kWidth);
    T few[kWidth];
    block(done, few);
    CopyFew(few, dst + done, count - done);
  } else if constexpr (kSmaller > 0) {
    Correlate<T, kParts, kSmaller>(tap, taps, x, len, start, dst, done, count);
  }
}

template <class T, int kParts, class Tap>
void Correlate(Tap tap, Index taps, const T *x, Index len, Index start, T *dst, Index count) {
  if (TakesFewer<T, kParts>(taps))
    Correlate<T, kParts, kFewerRegisters<kParts>>(tap, taps, x, len, start, dst, 0, count);
  else
    Correlate<T, kParts, kResultRegisters<kParts>>(tap, taps, x, len, start, dst, 0, count);
}

template <class T>
void CrossCorr(const T *src1, int len1, const T *src2, int len2, T *dst, int dstLen, int lowLag) {
  const auto tap = [src1](Index k) { return src1[k]; };
  Correlate<T, 1>(tap, len1, src2, len2, lowLag, dst, dstLen);
}

void CrossCorrCplx(const Cplx32 *src1, int len1, const Cplx32 *src2, int len2, Cplx32 *dst, int dstLen,
                   int lowLag) {
  const auto tap = [src1](Index k) { return src1[k]; };
  Correlate<float, 2>(tap, len1, &src2->re, 2 * static_cast<Index>(len2), 2 * static_cast<Index>(lowLag),
                      &dst->re, 2 * static_cast<Index>(dstLen));
}

// The shorter array, reversed, slides over the longer one.
template <class T> void Conv(const T *src1, int len1, const T *src2, int len2, T *dst) {
  if (len1 > len2) return Conv(src2, len2, src1, len1, dst);
  const Index last = len1 - 1;
  const auto tap = [=](Index k) { return src1[last - k]; };
  Correlate<T, 1>(tap, len1, src2, len2, -last, dst, last + len2);
}

// Filters: dst[n] = sum over k of tap(k) * x[n + k * kStride], all in scalars. The last results come first,
// so that dst may lie over x, before the end of what its own result needs.
template <class T, int kParts, int kStride, int kRegisters, class Tap>
void CorrelateBackwards(Tap tap, Index taps, const T *x, Index len, T *dst, Index count) {
  constexpr int kWidth = kRegisters * kPerRegister<T>;
  for (; count >= kWidth; count -= kWidth) {
    const Index first = count - kWidth;
    CorrelateBlock<T, kParts, kStride, kRegisters>(tap, taps, x, len, first, dst + first);
  }
  if constexpr (kRegisters > 1) {
    CorrelateBackwards<T, kParts, kStride, Smaller(kRegisters)>(tap, taps, x, len, dst, count);
  } else if (count > 0) {
    T last[kWidth];
    CorrelateBlock<T, kParts, kStride, 1>(tap, taps, x, len, 0, last);
    CopyFew(last, dst, count);
  }
}

template <class T, int kParts, int kStride, class Tap>
void CorrelateBackwards(Tap tap, Index taps, const T *x, Index len, T *dst, Index count) {
  if (TakesFewer<T, kParts>(taps))
    CorrelateBackwards<T, kParts, kStride, kFewerRegisters<kParts>>(tap, taps, x, len, dst, count);
  else
    CorrelateBackwards<T, kParts, kStride, kResultRegisters<kParts>>(tap, taps, x, len, dst, count);
}

template <int kStride> void Fir(const float *taps, Index tapCount, const float *x, float *dst, Index count) {
  const auto tap = [taps](Index k) { return taps[k]; };
  CorrelateBackwards<float, 1, kStride>(tap, tapCount, x, kStride * (count + tapCount - 1), dst,
                                        kStride * count);
}

void FirCplx(const Cplx32 *taps, Index tapCount, const float *x, float *dst, Index count) {
  const auto tap = [taps](Index k) { return taps[k]; };
  CorrelateBackwards<float, 2, 2>(tap, tapCount, x, 2 * (count + tapCount - 1), dst, 2 * count);
}

// The same with the scalars of tap k at x[offsets[k] + n]: what a filter needs of which not every result is
// wanted, the signal being laid out so that those wanted are neighbours. From each place on a block of
// results is read.
template <class T, int kRegisters = kResultRegisters<1>>
[[gnu::flatten]] void CorrelateDown(const T *taps, Index tapCount, const T *x, const Index *offsets, T *dst,
                                    Index count) {
  constexpr int kWidth = kRegisters * kPerRegister<T>;
  const auto block = [&](T *results) {
    Sums<T, 1, kRegisters> sums;
    const auto tap = [taps](Index k) { return taps[k]; };
    AddTaps<kFullApart<T, 1>>(tap, 0, tapCount, Listed<T>{x, offsets}, sums);
    ResultsOf(sums).Store(results);
  };
  for (; count >= kWidth; count -= kWidth, x += kWidth, dst += kWidth) block(dst);
  if constexpr (kRegisters > 1) {
    CorrelateDown<T, Smaller(kRegisters)>(taps, tapCount, x, offsets, dst, count);
  } else if (count > 0) {
    T last[kWidth];
    block(last);
    CopyFew(last, dst, count);
  }
}

// Around the transforms: blocks of complex doubles, in which a pair of real blocks are the real and the
// imaginary parts.

// The sum of squares, infinite or not a number if an element is, or if a square is beyond the double range.
template <class T> double ConvEnergy(const T *x, Index len) {
  constexpr int V = kPerRegister<double>;
  Doubles sums[4] = {};
  Index i = 0;
  for (; i + 4 * V <= len; i += 4 * V) {
    for (int r = 0; r < 4; ++r) {
      const auto values = __builtin_convertvector((Load<Vec<T, V>>(x + i + r * V)), Doubles);
      sums[r] = MulAdd(values, values, sums[r]);
    }
  }
  for (; i < len; ++i) sums[0][0] += static_cast<double>(x[i]) * static_cast<double>(x[i]);
  const Doubles sum = (sums[0] + sums[1]) + (sums[2] + sums[3]);
  double total = 0;
  for (int lane = 0; lane < V; ++lane) total += sum[lane];
  return total;
}

// How many of the counts in the lanes.
template <class M> [[gnu::always_inline]] inline Index Total(M counts) {
  Index total = 0;
  for (int lane = 0; lane < kPerRegister<double>; ++lane) total -= static_cast<Index>(counts[lane]);
  return total;
}

template <class E> [[gnu::always_inline]] inline E Magnitude(E x) { return x < 0 ? -x : x; }

// The number of values before the first one of whose kParts parts none has at least the magnitude `least`.
template <class T, int kParts> Index ConvLarge(const T *x, Index len, T least) {
  constexpr int V = kPerRegister<T>, kGroup = 4 * V, kWords = kRegisterBytes / 8;
  const auto limit = Broadcast<Register<T>>(least);
  const Index scalars = kParts * len;
  Index i = 0;
  for (; i + kGroup <= scalars; i += kGroup) {
    auto large = limit == limit;
    for (int r = 0; r < 4; ++r) {
      const auto values = Load<Register<T>>(x + i + r * V);
      const auto own = (values >= limit) | (-values >= limit);
      large &= kParts == 1 ? own : own | Shuffle<Swapped, V>(own, own);
    }
    std::int64_t words[kWords], all = -1;
    __builtin_memcpy(words, &large, sizeof words);
    for (const std::int64_t word : words) all &= word;
    if (all != -1) break;
  }
  for (; i < scalars; i += kParts) {
    bool large = false;
    for (Index part = i; part < i + kParts; ++part) large |= x[part] >= least || -x[part] >= least;
    if (!large) break;
  }
  return i / kParts;
}

// Takes 1 off the counts of the lanes in which x is above y.
using LaneCounts = decltype(Doubles{} > Doubles{});
[[gnu::always_inline]] inline void CountAbove(Doubles x, Doubles y, LaneCounts &counts) {
#if defined(__AVX512F__)
  // As instructions: GCC 12 makes a vector of each mask.
  const auto values = reinterpret_cast<__m512i>(counts);
  counts = reinterpret_cast<LaneCounts>(
      _mm512_mask_add_epi64(values, _mm512_cmp_pd_mask(x, y, _CMP_GT_OQ), values, _mm512_set1_epi64(-1)));
#else
  counts += x > y;
#endif
}

// counts[3 b + j] := the number of values before block b, of 64 each, whose magnitude is above steps[j], for
// 0 <= b <= blocks.
void ConvCountAbove(const double *x, Index blocks, const double *steps, Index *counts) {
  constexpr int V = kPerRegister<double>, kBlock = 64, kSteps = 3;
  Doubles at[kSteps];
  for (int j = 0; j < kSteps; ++j) {
    at[j] = Broadcast<Doubles>(steps[j]);
    counts[j] = 0;
  }
  for (Index block = 0; block < blocks; ++block, counts += kSteps) {
    LaneCounts above[kSteps] = {};
    for (int i = 0; i < kBlock; i += V) {
      const Doubles size = Magnitude(Load<Doubles>(x + block * kBlock + i));
      for (int j = 0; j < kSteps; ++j) CountAbove(size, at[j], above[j]);
    }
    for (int j = 0; j < kSteps; ++j) counts[kSteps + j] = counts[j] + Total(above[j]);
  }
}

// Rounds to float and returns the smallest magnitude, infinite without values.
double ConvRound(const double *src, float *dst, Index len) {
  constexpr int V = kPerRegister<double>;
  const auto least = [](auto x, auto y) { return x < y ? x : y; };
  Doubles low = Broadcast<Doubles>(__builtin_inf()), high = low;
  Index i = 0;
  for (; i + 2 * V <= len; i += 2 * V) {
    const auto x0 = Load<Doubles>(src + i), x1 = Load<Doubles>(src + i + V);
    low = least(Magnitude(x0), low);
    high = least(Magnitude(x1), high);
    Store(dst + i, Narrowed(x0, x1));
  }
  low = least(high, low);
  double smallest = __builtin_inf();
  for (int lane = 0; lane < V; ++lane) smallest = least(static_cast<double>(low[lane]), smallest);
  for (; i < len; ++i) {
    dst[i] = static_cast<float>(src[i]);
    smallest = least(__builtin_fabs(src[i]), smallest);
  }
  return smallest;
}

// dst[i] = high + j scale low, high + low being src[i] without an error and high whole multiples of a step:
// adding and subtracting `magic`, 1.5 * 2^52 steps, rounds to it. Returns the sum of the squares of low.
double ConvPack(const double *src, double *dst, Index len, double magic, double scale) {
  constexpr int V = kPerRegister<double>;
  const auto body = [&]<int L>(Index i, Int<L>, auto &sum) {
    using E = Vec<double, L>;
    const E x = Load<E>(src + i), rounder = Broadcast<E>(magic), high = (x + rounder) - rounder,
            low = x - high;
    StoreComplex<double, L>(dst + 2 * i, high, low * scale);
    sum = MulAdd(low, low, sum);
  };
  Doubles sum{};
  double total = 0;
  Index i = 0;
  for (; i + V <= len; i += V) body(i, Int<V>{}, sum);
  for (; i < len; ++i) body(i, Int<1>{}, total);
  for (int lane = 0; lane < V; ++lane) total += sum[lane];
  return total;
}

// The transforms x and taps of len values each are those of high + j low, both parts being real. Of 4 high
// high' + 4 j (high tapUnit low' + low unit (high' + partsRatio low')), the convolutions' transforms, those
// of the taps being primed, x receives the transform. len is even. Returns the sum of the result's squares.
double ConvPackedProduct(double *x, const double *taps, Index len, double tapUnit, double unit,
                         double partsRatio) {
  constexpr int V = kPerRegister<double>;
  // Of bins k and len - k, which hold the two parts' bins k: of their sums 2 high and 2 low.
  const auto body = [&]<int L>(Index k, Int<L>, auto &sum) {
    using E = Vec<double, L>;
    const Index mirror = len - k - (L - 1);
    const auto parts = [&](const double *of, E &highRe, E &highIm, E &lowRe, E &lowIm) {
      E re, im, mirrorRe, mirrorIm;
      LoadComplex<double, L>(of + 2 * k, re, im);
      LoadComplex<double, L>(of + 2 * mirror, mirrorRe, mirrorIm);
      mirrorRe = Reverse<double, L>(mirrorRe);
      mirrorIm = Reverse<double, L>(mirrorIm);
      highRe = re + mirrorRe;
      highIm = im - mirrorIm;
      lowRe = im + mirrorIm;
      lowIm = mirrorRe - re;
    };
    E highRe, highIm, lowRe, lowIm, tapRe, tapIm, fineRe, fineIm;
    parts(x, highRe, highIm, lowRe, lowIm);
    parts(taps, tapRe, tapIm, fineRe, fineIm);
    const E ratio = Broadcast<E>(partsRatio), allRe = MulAdd(fineRe, ratio, tapRe) * unit,
            allIm = MulAdd(fineIm, ratio, tapIm) * unit;
    fineRe *= tapUnit;
    fineIm *= tapUnit;
    const E coarseRe = MulSub(highRe, tapRe, highIm * tapIm),
            coarseIm = MulAdd(highRe, tapIm, highIm * tapRe);
    const E restRe = MulAdd(lowRe, allRe, NegMulAdd(lowIm, allIm, MulSub(highRe, fineRe, highIm * fineIm))),
            restIm = MulAdd(lowRe, allIm, MulAdd(lowIm, allRe, MulAdd(highRe, fineIm, highIm * fineRe)));
    StoreComplex<double, L>(x + 2 * k, coarseRe - restIm, coarseIm + restRe);
    StoreComplex<double, L>(x + 2 * mirror, Reverse<double, L>(coarseRe + restIm),
                            Reverse<double, L>(restRe - coarseIm));
    sum += MulAdd(coarseRe, coarseRe, coarseIm * coarseIm) + MulAdd(restRe, restRe, restIm * restIm);
  };
  const auto alone = [&](Index k) {
    const double high = 2 * x[2 * k], low = 2 * x[2 * k + 1], tap = 2 * taps[2 * k],
                 fine = 2 * taps[2 * k + 1];
    const double coarse = high * tap;
    const double rest = MulAdd(low, MulAdd(fine, partsRatio, tap) * unit, high * (fine * tapUnit));
    x[2 * k] = coarse;
    x[2 * k + 1] = rest;
    return coarse * coarse + rest * rest;
  };
  Doubles sum{};
  double total = 0;
  Index k = 1;
  for (; k + V <= len / 2; k += V) body(k, Int<V>{}, sum);
  for (; k < len / 2; ++k) body(k, Int<1>{}, total);
  for (int lane = 0; lane < V; ++lane) total += sum[lane];
  return 2 * total + alone(0) + alone(len / 2); // each sum is that of two bins
}

// dst[i] = high, rounded to whole multiples of a step as in ConvPack, + unit low, of src[i] = high + j low.
// Returns the smallest magnitude, infinite without values.
double ConvUnpack(const double *src, double *dst, Index len, double magic, double unit) {
  constexpr int V = kPerRegister<double>;
  const auto body = [&]<int L>(Index i, Int<L>, auto &smallest) {
    using E = Vec<double, L>;
    E high, low;
    LoadComplex<double, L>(src + 2 * i, high, low);
    const E rounder = Broadcast<E>(magic),
            result = MulAdd(low, Broadcast<E>(unit), (high + rounder) - rounder), size = Magnitude(result);
    Store(dst + i, result);
    smallest = size < smallest ? size : smallest;
  };
  double smallest = __builtin_inf();
  Doubles least = Broadcast<Doubles>(smallest);
  Index i = 0;
  for (; i + V <= len; i += V) body(i, Int<V>{}, least);
  for (; i < len; ++i) body(i, Int<1>{}, smallest);
  for (int lane = 0; lane < V; ++lane) smallest = least[lane] < smallest ? least[lane] : smallest;
  return smallest;
}

} // namespace

#define QORN_FAMILY "Convolution.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
