#include "Registers.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Each lane twice.
template <int... I> [[gnu::always_inline]] inline auto Twice(Vec<float, sizeof...(I) / 2> x, Seq<I...>) {
  return __builtin_shufflevector(x, x, (I / 2)...);
}

// Dot products. Product i goes to lane i mod L, with the same L at every level, each product and each sum is
// rounded, and the lanes fold in halves: the bits do not depend on the registers' width. Fused forms would
// not be faster: each product waits for two loads anyway.

constexpr int kLaneBytes = 256;

// kLanes lanes in registers.
template <class T, int kLanes> struct Lanes {
  static constexpr int kV = kPerRegister<T>, kSums = kLanes / kV;
  Register<T> sum[kSums];

  // Single products are added to them in memory.
  template <class Add> [[gnu::always_inline]] void AddSingly(Add add) {
    T each[kLanes];
    Unroll<kSums>([&](auto r) { Store(each + r * kV, sum[r]); });
    add(each);
    Unroll<kSums>([&](auto r) { sum[r] = Load<Register<T>>(each + r * kV); });
  }

  // Adds the upper half of the lanes to the lower one until two are left.
  template <int kRegisters = kSums> [[gnu::always_inline]] Vec<T, 2> Pair() {
    if constexpr (kRegisters > 1) {
      Unroll<kRegisters / 2>([&](auto k) { sum[k] += sum[k + kRegisters / 2]; });
      return Pair<kRegisters / 2>();
    } else {
      return Folded<2, kV>(sum[0], [](auto x, auto y) { return x + y; });
    }
  }
};

// Of each of the lanes, the sums of the registers of products that add(i, sums) adds to sums[0], sums[1],
// ..., from product i on, for all whole registers below len; returns how many products these are. No more
// sums at once than the registers hold.
template <class T, int kLanes, int kOf, class Add>
[[gnu::always_inline]] inline Index SumRegisters(Lanes<T, kLanes> (&lanes)[kOf], Index len, Add add) {
  constexpr int kV = kPerRegister<T>, kSums = kLanes / kV, kAtOnce = kSums < 8 / kOf ? kSums : 8 / kOf;
  const Index whole = len - len % kLanes, rest = len - whole;
  Unroll<kSums / kAtOnce>([&](auto part) {
    constexpr int kFirst = part * kAtOnce;
    Register<T> sums[kAtOnce][kOf] = {};
    for (Index i = kFirst * kV; i < whole; i += kLanes)
      Unroll<kAtOnce>([&](auto r) { add(i + r * kV, sums[r]); });
    Unroll<kAtOnce>([&](auto r) {
      constexpr int kStart = (kFirst + r) * kV;
      if (kStart + kV <= rest) add(whole + kStart, sums[r]);
      Unroll<kOf>([&](auto k) { lanes[k].sum[kFirst + r] = sums[r][k]; });
    });
  });
  return len - len % kV;
}

template <class T> inline T RealDotProd(const T *src1, const T *src2, Index len) {
  using R = Register<T>;
  constexpr int kLanes = kLaneBytes / sizeof(T);
  Lanes<T, kLanes> lanes[1];
  const Index whole =
      SumRegisters(lanes, len, [=](Index i, R *sums) { sums[0] += Load<R>(src1 + i) * Load<R>(src2 + i); });
  if (whole < len) {
    lanes[0].AddSingly([=](T *lane) {
      for (Index i = whole; i < len; ++i) lane[i % kLanes] += Rounded(src1[i] * src2[i]);
    });
  }
  const Vec<T, 2> pair = lanes[0].Pair();
  return pair[0] + pair[1];
}

// On the parts as scalars: the real part is the sum of the straight products of even places less that of odd
// ones, the imaginary part the sum of the crossed products.
template <class C, class T> inline C CplxDotProd(const C *src1, const C *src2, Index len) {
  using R = Register<T>;
  constexpr int kLanes = kLaneBytes / 2 / sizeof(T);
  const T *a = &src1->re, *b = &src2->re;
  const Index end = 2 * len;
  Lanes<T, kLanes> lanes[2];
  auto &[straight, crossed] = lanes;
  const Index whole = SumRegisters(lanes, end, [=](Index i, R *sums) {
    const R x = Load<R>(a + i), y = Load<R>(b + i);
    sums[0] += x * y;
    sums[1] += x * Shuffle<Swapped, kPerRegister<T>>(y, y);
  });
  if (whole < end) {
    straight.AddSingly([=](T *lane) {
      for (Index i = whole; i < end; ++i) lane[i % kLanes] += Rounded(a[i] * b[i]);
    });
    crossed.AddSingly([=](T *lane) {
      for (Index i = whole; i < end; ++i) lane[i % kLanes] += Rounded(a[i] * b[i ^ 1]);
    });
  }
  const Vec<T, 2> straights = straight.Pair(), crosses = crossed.Pair();
  return {straights[0] - straights[1], crosses[0] + crosses[1]};
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
  constexpr int kV = kPerRegister<float>, kLanes = kLaneBytes / sizeof(float);
  const float *parts = &src2->re;
  const Index end = 2 * static_cast<Index>(len);
  Lanes<float, kLanes> lanes[1];
  const Index whole = SumRegisters(lanes, end, [=](Index i, Register<float> *sums) {
    sums[0] +=
        Twice(Load<Vec<float, kV / 2>>(src1 + i / 2), MakeSeq<kV>{}) * Load<Register<float>>(parts + i);
  });
  if (whole < end) {
    lanes[0].AddSingly([=](float *lane) {
      for (Index i = whole; i < end; ++i) lane[i % kLanes] += Rounded(src1[i / 2] * parts[i]);
    });
  }
  const Vec<float, 2> pair = lanes[0].Pair();
  *result = {pair[0], pair[1]};
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
  long long sum = 0;
  for (const long long lane : lanes) sum += lane;
  *result = static_cast<float>(sum);
}

} // namespace

#define QORN_FAMILY "Product.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
