#include "Kernel.h"

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

// lanes[j] = sum of product(i) over the whole registers below len, i mod kLanes = j, where product yields one
// register of products; returns how many products these are. No more sums at once than the registers hold.
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
  Index done = whole;
  for (; done + kPerRegister<T> <= len; done += kPerRegister<T>) {
    T *const sum = &lanes[done - whole];
    Store(sum, Load(sum) + product(done));
  }
  return done;
}

template <class T> inline T RealDotProd(const T *src1, const T *src2, Index len) {
  T lanes[kLaneBytes / sizeof(T)];
  constexpr Index kLanes = kLaneBytes / sizeof(T);
  const Index whole = SumBlocks(lanes, len, [=](Index i) { return Load(src1 + i) * Load(src2 + i); });
  for (Index i = whole; i < len; ++i) lanes[i % kLanes] += Rounded(src1[i] * src2[i]);
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
  constexpr Index kLanes = kLaneBytes / sizeof(float);
  for (Index i = whole; i < end; i += 2) {
    lanes[i % kLanes] += Rounded(src1[i / 2] * parts[i]);
    lanes[i % kLanes + 1] += Rounded(src1[i / 2] * parts[i + 1]);
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

} // namespace

#define QORN_FAMILY "Product.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
