#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Extremes. Highest and lowest are told apart by the comparison alone.
struct Above {
  template <class T> static bool Of(T a, T b) { return a > b; }
};
struct Below {
  template <class T> static bool Of(T a, T b) { return a < b; }
};

// What every number beats or equals.
inline short Worst(short, Above) { return -32768; }
inline short Worst(short, Below) { return 32767; }
inline int Worst(int, Above) { return -2147483647 - 1; }
inline int Worst(int, Below) { return 2147483647; }
inline float Worst(float, Above) { return -__builtin_inff(); }
inline float Worst(float, Below) { return __builtin_inff(); }
inline double Worst(double, Above) { return -__builtin_inf(); }
inline double Worst(double, Below) { return __builtin_inf(); }

// A not-a-number element beats nothing, so it is passed over.
template <class Order, class T> inline T BlockExtreme(const T *src, Index len) {
  constexpr Index kLanes = 64;
  T lane[kLanes];
  for (Index j = 0; j < kLanes; ++j) lane[j] = Worst(T(), Order());
  Index i = 0;
  for (; i + kLanes <= len; i += kLanes) {
    for (Index j = 0; j < kLanes; ++j) lane[j] = Order::Of(src[i + j], lane[j]) ? src[i + j] : lane[j];
  }
  for (Index j = 0; i < len; ++i, ++j) lane[j] = Order::Of(src[i], lane[j]) ? src[i] : lane[j];
  T extreme = lane[0];
  for (Index j = 1; j < kLanes; ++j) extreme = Order::Of(lane[j], extreme) ? lane[j] : extreme;
  return extreme;
}

// The first element that equals the extreme is it, which also settles the sign of a zero. Only a block that
// beats all before it is searched. Without any number the first element stays.
template <class Order, class T> inline Index ExtremeIndex(const T *src, Index len) {
  constexpr Index kBlock = 1024;
  T extreme = Worst(T(), Order());
  Index block = 0;
  for (Index i = 0; i < len; i += kBlock) {
    const T candidate = BlockExtreme<Order>(src + i, len - i < kBlock ? len - i : kBlock);
    if (Order::Of(candidate, extreme)) {
      extreme = candidate;
      block = i;
    }
  }
  for (Index i = block; i < len; ++i) {
    if (src[i] == extreme) return i;
  }
  return 0;
}

template <class Order, class T> inline void Extreme(const T *src, int len, T *result, int *index) {
  const Index place = ExtremeIndex<Order>(src, len);
  *result = src[place];
  *index = static_cast<int>(place);
}

template <class T> void MaxIndx(const T *src, int len, T *result, int *index) {
  Extreme<Above>(src, len, result, index);
}
template <class T> void MinIndx(const T *src, int len, T *result, int *index) {
  Extreme<Below>(src, len, result, index);
}
template <class T> void Max(const T *src, int len, T *result) {
  *result = src[ExtremeIndex<Above>(src, len)];
}
template <class T> void Min(const T *src, int len, T *result) {
  *result = src[ExtremeIndex<Below>(src, len)];
}

// Sums. Scalar i goes to lane i mod kLanes, and the lanes are folded in halves, so that the result does not
// depend on the width of a register. Complex arrays are interleaved scalars; their lanes fold to a pair.
constexpr Index kLanes = 16;

struct Lanes {
  double sum[kLanes];
};

template <class T, class F> inline Lanes LaneSums(const T *src, Index len, F term) {
  double lane[kLanes] = {};
  Index i = 0;
  for (; i + kLanes <= len; i += kLanes) {
    for (Index j = 0; j < kLanes; ++j) lane[j] += term(static_cast<double>(src[i + j]));
  }
  Lanes lanes;
  for (Index j = 0; j < kLanes; ++j) lanes.sum[j] = lane[j];
  for (Index j = 0; i < len; ++i, ++j) lanes.sum[j] += term(static_cast<double>(src[i]));
  return lanes;
}

inline void Fold(Lanes &lanes, Index count) {
  for (Index half = kLanes / 2; half >= count; half /= 2) {
    for (Index j = 0; j < half; ++j) lanes.sum[j] += lanes.sum[j + half];
  }
}

template <class T, class F> inline double Total(const T *src, Index len, F term) {
  Lanes lanes = LaneSums(src, len, term);
  Fold(lanes, 1);
  return lanes.sum[0];
}
template <class T> inline double Total(const T *src, Index len) {
  return Total(src, len, [](double x) { return x; });
}
template <class C> inline Cplx64 CplxTotal(const C *src, Index len) {
  Lanes lanes = LaneSums(&src->re, 2 * len, [](double x) { return x; });
  Fold(lanes, 2);
  return {lanes.sum[0], lanes.sum[1]};
}

template <class T> void Sum(const T *src, int len, T *result) { *result = static_cast<T>(Total(src, len)); }
template <class T> void Mean(const T *src, int len, T *result) {
  *result = static_cast<T>(Total(src, len) / static_cast<double>(len));
}

inline void Narrow(Cplx64 x, Cplx32 *result) {
  *result = {static_cast<float>(x.re), static_cast<float>(x.im)};
}
inline void Narrow(Cplx64 x, Cplx64 *result) { *result = x; }
template <class C> inline void CplxMean(const C *src, int len, C *result) {
  const Cplx64 total = CplxTotal(src, len);
  const double count = static_cast<double>(len);
  Narrow({total.re / count, total.im / count}, result);
}
void Sum(const Cplx32 *src, int len, Cplx32 *result) { Narrow(CplxTotal(src, len), result); }
void Sum(const Cplx64 *src, int len, Cplx64 *result) { Narrow(CplxTotal(src, len), result); }
void Mean(const Cplx32 *src, int len, Cplx32 *result) { CplxMean(src, len, result); }
void Mean(const Cplx64 *src, int len, Cplx64 *result) { CplxMean(src, len, result); }

// Integers sum exactly in 64 bits: there are less than 2^31 of them.
template <class T> inline void SaturatedSum(const T *src, int len, T *result, long long low, long long high) {
  long long sum = 0;
  for (Index i = 0; i < len; ++i) sum += src[i];
  *result = static_cast<T>(sum > high ? high : sum < low ? low : sum);
}
void Sum(const short *src, int len, short *result) { SaturatedSum(src, len, result, -32768, 32767); }
void Sum(const int *src, int len, int *result) {
  SaturatedSum(src, len, result, -2147483648LL, 2147483647LL);
}

template <class T> void StdDev(const T *src, int len, T *result) {
  if (len < 2) return;
  const double mean = Total(src, len) / static_cast<double>(len);
  const double squares = Total(src, len, [mean](double x) { return Rounded((x - mean) * (x - mean)); });
  *result = static_cast<T>(__builtin_sqrt(squares / static_cast<double>(len - 1)));
}

template <class T> inline double Norm(const T *src, Index len) {
  return __builtin_sqrt(Total(src, len, [](double x) { return Rounded(x * x); }));
}
template <class T> void NormL2(const T *src, int len, T *result) { *result = static_cast<T>(Norm(src, len)); }
void NormL2(const Cplx32 *src, int len, double *result) { *result = Norm(&src->re, 2 * Index{len}); }
void NormL2(const Cplx64 *src, int len, double *result) { *result = Norm(&src->re, 2 * Index{len}); }

} // namespace

#define QORN_FAMILY "Reduce.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
