// MathUtils: integer helpers, special functions, differences and pairwise extremes.
#include <math.h> // the Bessel functions, which <cmath> lacks

#include <bit>
#include <cmath>

#include "Elementwise.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/math/MathUtils.h"

namespace QORN {

namespace {

template <class T> T PowerNotBelow(T x) {
  if (x < 2) return 1;
  using Unsigned = std::make_unsigned_t<T>;
  constexpr auto kLargest = static_cast<T>(std::numeric_limits<T>::max() / 2 + 1);
  return x > kLargest ? T{0} : static_cast<T>(std::bit_ceil(static_cast<Unsigned>(x)));
}

template <class V> void Differences(V &dst, const V &src) {
  const int n = src.GetSize();
  dst.Resize(n);
  if (n < 1) return;
  Kernels<ElementOf<V>>::Copy(src.GetPtr(), dst.GetPtr(), n);
  dst.Trim(1);
  Kernels<ElementOf<V>>::Sub(src.GetPtr(), dst.GetPtr(), n - 1);
}

template <class V, class Choose> void ChoosePairs(V &dst, const V &a, const V &b, Choose choose) {
  using T = ElementOf<V>;
  Map2(dst, a, b, [choose](const T *x, const T *y, T *result, int n) {
    for (int i = 0; i < n; ++i) result[i] = choose(x[i], y[i]);
  });
}

template <class V> void LargerOfPairs(V &dst, const V &a, const V &b) {
  ChoosePairs(dst, a, b, [](auto x, auto y) { return y > x ? y : x; });
}
template <class V> void SmallerOfPairs(V &dst, const V &a, const V &b) {
  ChoosePairs(dst, a, b, [](auto x, auto y) { return x > y ? y : x; });
}

template <class Function> void MapBessel(VecReal64 &dst, int order, const VecReal64 &x, Function function) {
  Map(dst, x, [=](const double *src, double *result, int n) {
    for (int i = 0; i < n; ++i) result[i] = function(order, src[i]);
  });
}

double FirstKind(int order, double x) {
  if (order == 0) return ::j0(x);
  return order == 1 ? ::j1(x) : ::jn(order, x);
}
double SecondKind(int order, double x) {
  if (order == 0) return ::y0(x);
  return order == 1 ? ::y1(x) : ::yn(order, x);
}

} // namespace

int MathUtils::SqrtInteger(int x) {
  if (x < 1) return 0;
  const int root = static_cast<int>(std::sqrt(static_cast<double>(x)));
  // A root that came out just below an exact square's.
  const long long next = root + 1LL;
  return next * next == x ? root + 1 : root;
}

int MathUtils::Log2Integer(int x) {
  return x < 2 ? 0 : static_cast<int>(std::bit_width(static_cast<unsigned>(x))) - 1;
}

int MathUtils::Pow2Integer(int k) { return static_cast<int>(1U << (static_cast<unsigned>(k) % 32)); }

long long MathUtils::Pow2Integer(long long k) {
  return k < 0 || k > 63 ? 0 : static_cast<long long>(1ULL << k);
}

int MathUtils::GetPowerOfTwoInteger_GTorEQ(int x) { return PowerNotBelow(x); }
long long MathUtils::GetPowerOfTwoInteger_GTorEQ(long long x) { return PowerNotBelow(x); }
int MathUtils::GetPowerOfTwoInteger_LTorEQ(int x) { return Pow2Integer(Log2Integer(x)); }
bool MathUtils::IsExactPowerOfTwoInteger(int x) { return GetPowerOfTwoInteger_GTorEQ(x) == x; }

void MathUtils::Erf(VecReal32 &dst, const VecReal32 &src) { Map(dst, src, Kernels<float>::Erf); }
void MathUtils::Erf(VecReal64 &dst, const VecReal64 &src) { Map(dst, src, Kernels<double>::Erf); }
float MathUtils::Erf(float x) { return MapScalar<float>(x, Kernels<float>::Erf); }
double MathUtils::Erf(double x) { return MapScalar<double>(x, Kernels<double>::Erf); }

double MathUtils::BesselFirstKind(int order, double x) { return FirstKind(order, x); }
double MathUtils::BesselSecondKind(int order, double x) { return SecondKind(order, x); }
void MathUtils::BesselFirstKind(VecReal64 &dst, int order, const VecReal64 &x) {
  MapBessel(dst, order, x, FirstKind);
}
void MathUtils::BesselSecondKind(VecReal64 &dst, int order, const VecReal64 &x) {
  MapBessel(dst, order, x, SecondKind);
}

void MathUtils::Diff(VecReal32 &dst, const VecReal32 &src) { Differences(dst, src); }
void MathUtils::Diff(VecReal64 &dst, const VecReal64 &src) { Differences(dst, src); }

void MathUtils::MaxVectorPairs(VecReal32 &dst, const VecReal32 &a, const VecReal32 &b) {
  LargerOfPairs(dst, a, b);
}
void MathUtils::MaxVectorPairs(VecReal64 &dst, const VecReal64 &a, const VecReal64 &b) {
  LargerOfPairs(dst, a, b);
}
void MathUtils::MinVectorPairs(VecReal32 &dst, const VecReal32 &a, const VecReal32 &b) {
  SmallerOfPairs(dst, a, b);
}
void MathUtils::MinVectorPairs(VecReal64 &dst, const VecReal64 &a, const VecReal64 &b) {
  SmallerOfPairs(dst, a, b);
}

} // namespace QORN
