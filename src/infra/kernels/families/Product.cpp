#include "Kernel.h"

#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace QORN::kernels::QORN_LEVEL {
namespace {

// The level's registers.
#if defined(__AVX512F__)
constexpr int kRegister = 64;
#elif defined(__AVX2__)
constexpr int kRegister = 32;
#else
constexpr int kRegister = 16;
#endif

typedef float Floats [[gnu::vector_size(kRegister)]];
typedef double Doubles [[gnu::vector_size(kRegister)]];

template <class T> struct RegisterOf;
template <> struct RegisterOf<float> { using Type = Floats; };
template <> struct RegisterOf<double> { using Type = Doubles; };
template <class T> using Register = typename RegisterOf<T>::Type;

template <class T> constexpr int kPerRegister = kRegister / static_cast<int>(sizeof(T));

template <class T> inline Register<T> Load(const T *p) {
  Register<T> x;
  __builtin_memcpy(&x, p, sizeof x);
  return x;
}

template <class T> inline void Store(T *p, Register<T> x) { __builtin_memcpy(p, &x, sizeof x); }

template <class T> inline Register<T> Broadcast(T x) { return x - Register<T>{}; }

inline Floats MulAdd(Floats a, Floats b, Floats c) {
#if defined(__AVX512F__)
  return _mm512_fmadd_ps(a, b, c);
#elif defined(__FMA__)
  return _mm256_fmadd_ps(a, b, c);
#else
  for (int i = 0; i < kPerRegister<float>; ++i) c[i] = MulAdd<float>(a[i], b[i], c[i]);
  return c;
#endif
}

inline Doubles MulAdd(Doubles a, Doubles b, Doubles c) {
#if defined(__AVX512F__)
  return _mm512_fmadd_pd(a, b, c);
#elif defined(__FMA__)
  return _mm256_fmadd_pd(a, b, c);
#else
  for (int i = 0; i < kPerRegister<double>; ++i) c[i] = MulAdd<double>(a[i], b[i], c[i]);
  return c;
#endif
}

// Each pair of parts exchanged.
inline Floats Swapped(Floats x) {
#if defined(__AVX512F__)
  return __builtin_shufflevector(x, x, 1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14);
#elif defined(__AVX2__)
  return __builtin_shufflevector(x, x, 1, 0, 3, 2, 5, 4, 7, 6);
#else
  return __builtin_shufflevector(x, x, 1, 0, 3, 2);
#endif
}

inline Doubles Swapped(Doubles x) {
#if defined(__AVX512F__)
  return __builtin_shufflevector(x, x, 1, 0, 3, 2, 5, 4, 7, 6);
#elif defined(__AVX2__)
  return __builtin_shufflevector(x, x, 1, 0, 3, 2);
#else
  return __builtin_shufflevector(x, x, 1, 0);
#endif
}

// kPerRegister / 2 scalars, each twice.
inline Floats LoadTwice(const float *p) {
  typedef float Half [[gnu::vector_size(kRegister / 2)]];
  Half x;
  __builtin_memcpy(&x, p, sizeof x);
#if defined(__AVX512F__)
  return __builtin_shufflevector(x, x, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7);
#elif defined(__AVX2__)
  return __builtin_shufflevector(x, x, 0, 0, 1, 1, 2, 2, 3, 3);
#else
  return __builtin_shufflevector(x, x, 0, 0, 1, 1);
#endif
}

// Dot products. Product i goes to lane i mod L, with the same L at every level, each product and each sum is
// rounded, and the lanes fold in halves: the bits do not depend on the registers' width. Fused forms would
// not be faster: each product waits for two loads anyway.

constexpr int kLaneBytes = 256;

// Adds the upper half of the lanes to the lower one until kLeft lanes are left. The halves are constants, so
// that each is a few instructions.
template <int kLeft, class T, int kLanes> [[gnu::always_inline]] inline void Fold(T (&lanes)[kLanes]) {
  if constexpr (kLanes > kLeft) {
    constexpr int kHalf = kLanes / 2;
    T folded[kHalf];
    for (int i = 0; i < kHalf; ++i) folded[i] = lanes[i] + lanes[i + kHalf];
    Fold<kLeft>(folded);
    for (int i = 0; i < kLeft; ++i) lanes[i] = folded[i];
  }
}

// lanes[j] = sum of product(i) over the whole multiples of kLanes below len, i mod kLanes = j, where product
// yields one register of products. No more sums at once than the registers hold.
template <class T, int kLanes, class Product>
inline Index SumBlocks(T (&lanes)[kLanes], Index len, Product product) {
  constexpr int kSums = kLanes / kPerRegister<T>;
  constexpr int kAtOnce = kSums < 8 ? kSums : 8;
  const Index whole = len - len % kLanes;
  for (int first = 0; first < kLanes; first += kAtOnce * kPerRegister<T>) {
    Register<T> sums[kAtOnce] = {};
    for (Index i = first; i < whole; i += kLanes) {
      for (int r = 0; r < kAtOnce; ++r) sums[r] += product(i + r * kPerRegister<T>);
    }
    for (int r = 0; r < kAtOnce; ++r) Store(&lanes[first + r * kPerRegister<T>], sums[r]);
  }
  return whole;
}

template <class T> inline T RealDotProd(const T *src1, const T *src2, Index len) {
  T lanes[kLaneBytes / sizeof(T)];
  const Index whole = SumBlocks(lanes, len, [=](Index i) { return Load(src1 + i) * Load(src2 + i); });
  for (Index i = whole; i < len; ++i) lanes[i - whole] += Rounded(src1[i] * src2[i]);
  Fold<1>(lanes);
  return lanes[0];
}

// On the parts as scalars: the real part is the sum of the straight products of even places less that of odd
// ones, the imaginary part the sum of the crossed products.
template <class C, class T> inline C CplxDotProd(const C *src1, const C *src2, Index len) {
  constexpr int kLanes = kLaneBytes / 2 / static_cast<int>(sizeof(T));
  constexpr int kSums = kLanes / kPerRegister<T>;
  constexpr int kAtOnce = kSums < 4 ? kSums : 4;
  const T *a = &src1->re, *b = &src2->re;
  const Index end = 2 * len, whole = end - end % kLanes;
  T straight[kLanes], crossed[kLanes];
  for (int first = 0; first < kLanes; first += kAtOnce * kPerRegister<T>) {
    Register<T> straights[kAtOnce] = {}, crosses[kAtOnce] = {};
    for (Index i = first; i < whole; i += kLanes) {
      for (int r = 0; r < kAtOnce; ++r) {
        const Register<T> x = Load(a + i + r * kPerRegister<T>), y = Load(b + i + r * kPerRegister<T>);
        straights[r] += x * y;
        crosses[r] += x * Swapped(y);
      }
    }
    for (int r = 0; r < kAtOnce; ++r) {
      Store(&straight[first + r * kPerRegister<T>], straights[r]);
      Store(&crossed[first + r * kPerRegister<T>], crosses[r]);
    }
  }
  for (Index i = whole; i < end; i += 2) {
    straight[i - whole] += Rounded(a[i] * b[i]);
    straight[i - whole + 1] += Rounded(a[i + 1] * b[i + 1]);
    crossed[i - whole] += Rounded(a[i] * b[i + 1]);
    crossed[i - whole + 1] += Rounded(a[i + 1] * b[i]);
  }
  Fold<2>(straight);
  Fold<2>(crossed);
  return {straight[0] - straight[1], crossed[0] + crossed[1]};
}

void DotProd(const float *src1, const float *src2, int len, float *result) {
  *result = RealDotProd(src1, src2, len);
}
void DotProd(const double *src1, const double *src2, int len, double *result) {
  *result = RealDotProd(src1, src2, len);
}
void DotProd(const Cplx32 *src1, const Cplx32 *src2, int len, Cplx32 *result) {
  *result = CplxDotProd<Cplx32, float>(src1, src2, len);
}
void DotProd(const Cplx64 *src1, const Cplx64 *src2, int len, Cplx64 *result) {
  *result = CplxDotProd<Cplx64, double>(src1, src2, len);
}

void DotProd(const float *src1, const Cplx32 *src2, int len, Cplx32 *result) {
  const float *parts = &src2->re;
  float lanes[kLaneBytes / sizeof(float)];
  const Index end = 2 * static_cast<Index>(len);
  const Index whole =
      SumBlocks(lanes, end, [=](Index i) { return LoadTwice(src1 + i / 2) * Load(parts + i); });
  const float *scalars = src1 + whole / 2;
  for (Index i = 0; whole + 2 * i < end; ++i) {
    lanes[2 * i] += Rounded(scalars[i] * parts[whole + 2 * i]);
    lanes[2 * i + 1] += Rounded(scalars[i] * parts[whole + 2 * i + 1]);
  }
  Fold<2>(lanes);
  *result = {lanes[0], lanes[1]};
}

// Exact: a sum of 2^31 products of 2^30 is below 2^63.
void DotProd(const short *src1, const short *src2, int len, float *result) {
  constexpr int kLanes = 16;
  long long lanes[kLanes] = {};
  const Index whole = len - len % kLanes;
  for (Index i = 0; i < whole; i += kLanes) {
    for (int j = 0; j < kLanes; ++j) lanes[j] += src1[i + j] * src2[i + j];
  }
  for (Index i = whole; i < len; ++i) lanes[i - whole] += src1[i] * src2[i];
  Fold<1>(lanes);
  *result = static_cast<float>(lanes[0]);
}

// Correlation and convolution: dst[n] = sum over k of tap(k) * x[n + lag + k], x taken as zero outside 0 to
// len - 1. A block of results stays in registers while the taps run in ascending order; so a result does not
// depend on the block that it falls in. Terms from outside x are left out rather than multiplied by zero: a
// tap that is infinite must not reach results to which it does not belong.

//
// Complex signals are taken as the scalars that they are, kParts to an element; for them, the products with
// the taps' real parts and those with their imaginary parts are summed apart and meet in the end.

// The taps for which the whole block lies in x. The sums are copied, so that they are free to live in
// registers.
template <class T, int kParts, int kRegisters, class Tap>
inline void AddWhole(Tap tap, Index first, Index end, const T *x, Register<T> (&byRe)[kRegisters],
                     Register<T> (&byIm)[kRegisters]) {
  Register<T> re[kRegisters], im[kRegisters];
  for (int r = 0; r < kRegisters; ++r) re[r] = byRe[r], im[r] = byIm[r];
  for (Index k = first; k < end; ++k) {
    const auto weight = tap(k);
    for (int r = 0; r < kRegisters; ++r) {
      const Register<T> values = Load(x + k * kParts + r * kPerRegister<T>);
      if constexpr (kParts == 1) {
        re[r] = MulAdd(Broadcast(weight), values, re[r]);
      } else {
        re[r] = MulAdd(Broadcast(weight.re), values, re[r]);
        im[r] = MulAdd(Broadcast(weight.im), values, im[r]);
      }
    }
  }
  for (int r = 0; r < kRegisters; ++r) byRe[r] = re[r], byIm[r] = im[r];
}

template <class T, int kParts, int kRegisters, class Tap>
void CorrelateBlock(Tap tap, Index taps, const T *x, Index len, Index start, T *dst) {
  constexpr int kWidth = kRegisters * kPerRegister<T>;
  Register<T> byRe[kRegisters] = {};
  [[maybe_unused]] Register<T> byIm[kRegisters] = {};

  // Adds what tap k finds in x where the block reaches beyond an end of x.
  const auto addPartly = [&](Index k) {
    const auto weight = tap(k);
    for (int i = 0; i < kWidth; ++i) {
      const Index at = start + k * kParts + i;
      if (at < 0 || at >= len) continue;
      const int r = i / kPerRegister<T>, lane = i % kPerRegister<T>;
      if constexpr (kParts == 1) {
        byRe[r][lane] = MulAdd<T>(weight, x[at], byRe[r][lane]);
      } else {
        byRe[r][lane] = MulAdd<T>(weight.re, x[at], byRe[r][lane]);
        byIm[r][lane] = MulAdd<T>(weight.im, x[at], byIm[r][lane]);
      }
    }
  };

  // From `begin` to `end` some of the block lies in x, from `firstWhole` to `endWhole` all of it.
  const auto clamped = [taps](Index k) { return k < 0 ? 0 : k < taps ? k : taps; };
  const Index begin = start + kWidth > 0 ? 0 : clamped((-start - kWidth) / kParts + 1);
  const Index end = start >= len ? 0 : clamped((len - 1 - start) / kParts + 1);
  Index firstWhole = start >= 0 ? 0 : clamped((kParts - 1 - start) / kParts);
  Index endWhole = len - kWidth < start ? 0 : clamped((len - kWidth - start) / kParts + 1);
  if (endWhole <= firstWhole) firstWhole = endWhole = end;
  for (Index k = begin; k < firstWhole; ++k) addPartly(k);
  AddWhole<T, kParts>(tap, firstWhole, endWhole, x + start, byRe, byIm);
  for (Index k = endWhole; k < end; ++k) addPartly(k);

  for (int r = 0; r < kRegisters; ++r) {
    if constexpr (kParts == 2) { // conj(tap) x = (re x.re + im x.im, re x.im - im x.re)
      for (int lane = 0; lane < kPerRegister<T>; lane += 2) {
        const T im = byIm[r][lane];
        byRe[r][lane] += byIm[r][lane + 1];
        byRe[r][lane + 1] -= im;
      }
    }
    Store(dst + r * kPerRegister<T>, byRe[r]);
  }
}

// As many registers of results as leave some for the taps and the signal.
#if defined(__AVX512F__) || defined(__aarch64__)
template <int kParts> constexpr int kResultRegisters = 8;
#else
template <int kParts> constexpr int kResultRegisters = 8 / kParts;
#endif

// Blocks of kRegisters as far as they go, then smaller ones.
template <class T, int kParts, int kRegisters = kResultRegisters<kParts>, class Tap>
void Correlate(Tap tap, Index taps, const T *x, Index len, Index start, T *dst, Index count) {
  constexpr int kWidth = kRegisters * kPerRegister<T>;
  Index done = 0;
  for (; done + kWidth <= count; done += kWidth) {
    CorrelateBlock<T, kParts, kRegisters>(tap, taps, x, len, start + done, dst + done);
  }
  if constexpr (kRegisters > 1) {
    Correlate<T, kParts, kRegisters / 2>(tap, taps, x, len, start + done, dst + done, count - done);
  } else if (done < count) {
    T last[kWidth];
    CorrelateBlock<T, kParts, 1>(tap, taps, x, len, start + done, last);
    __builtin_memcpy(dst + done, last, sizeof(T) * static_cast<std::size_t>(count - done));
  }
}

void CrossCorr(const float *src1, int len1, const float *src2, int len2, float *dst, int dstLen, int lowLag) {
  const auto tap = [src1](Index k) { return src1[k]; };
  Correlate<float, 1>(tap, len1, src2, len2, lowLag, dst, dstLen);
}

void CrossCorr(const Cplx32 *src1, int len1, const Cplx32 *src2, int len2, Cplx32 *dst, int dstLen,
               int lowLag) {
  const auto tap = [src1](Index k) { return src1[k]; };
  Correlate<float, 2>(tap, len1, &src2->re, 2 * static_cast<Index>(len2), 2 * static_cast<Index>(lowLag),
                      &dst->re, 2 * static_cast<Index>(dstLen));
}

// The shorter array, reversed, slides over the longer one.
template <class T> void Conv(const T *src1, int len1, const T *src2, int len2, T *dst) {
  if (len1 > len2) return Conv(src2, len2, src1, len1, dst);
  if (len1 < 1) return;
  const Index last = len1 - 1;
  const auto tap = [=](Index k) { return src1[last - k]; };
  Correlate<T, 1>(tap, len1, src2, len2, -last, dst, last + len2);
}

} // namespace

#define QORN_FAMILY "Product.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
