#include "qorn/math/Interpolation.h"

#include "TableSearch.h"

namespace QORN {

namespace {

template <class V> int Slopes(V &slopes, const V &x, const V &y) {
  using T = ElementOf<V>;
  const int n = std::max(x.GetSize() - 1, 0);
  slopes.Resize(n);
  const T *xs = x.GetPtr(), *ys = y.GetPtr();
  T *result = slopes.GetPtr();
  for (int i = 0; i < n; ++i) result[i] = (ys[i + 1] - ys[i]) / (xs[i + 1] - xs[i]);
  return 0;
}

template <class V> void Lines(V &yOut, const V &x, const V &y, const V &xIn, const V &slopes) {
  using T = ElementOf<V>;
  const T *xs = x.GetPtr(), *ys = y.GetPtr(), *values = xIn.GetPtr();
  const int last = x.GetSize() - 1;
  const T none = 0, yLast = y.GetLastValue();
  const T *slope = last > 0 ? slopes.GetPtr() : &none;
  const int lastSlope = std::max(last - 1, 0);
  const auto at = [=](T v, int i) {
    return (v - xs[i]) * slope[std::min(i, lastSlope)] + (i == last ? yLast : ys[i]);
  };
  const auto find = [=](const T *block, int count, int *index) {
    table::Find(xs, last + 1, block, count, index);
  };
  // It ends: at 0 at the latest for a number, at once for not-a-number.
  const auto scan = [=](T v) {
    if (v <= xs[0]) return 0;
    int i = last;
    if (!(v >= xs[last])) {
      while (xs[i] > v) --i;
    }
    return i;
  };
  if (table::IsStrictlyAscending(xs, last + 1)) {
    table::ForEach(values, yOut.GetPtr(), yOut.GetSize(), find, at);
  } else {
    table::ForEach(values, yOut.GetPtr(), yOut.GetSize(), table::Scanning(scan), at);
  }
}

} // namespace

Interpolation::~Interpolation() = default;

int Interpolation::ComputeSlope(VecReal32 &slopes, const VecReal32 &x, const VecReal32 &y) {
  return Slopes(slopes, x, y);
}
int Interpolation::ComputeSlope(VecReal64 &slopes, const VecReal64 &x, const VecReal64 &y) {
  return Slopes(slopes, x, y);
}

int Interpolation::Interpolate(double &yOut, const VecReal64 &x, const VecReal64 &y, const double &xIn) {
  return table::InterpolateOne(*this, m_scalarIn64, m_scalarOut64, yOut, x, y, xIn);
}
int Interpolation::Interpolate(float &yOut, const VecReal32 &x, const VecReal32 &y, float xIn) {
  return table::InterpolateOne(*this, m_scalarIn32, m_scalarOut32, yOut, x, y, xIn);
}

int Interpolation::Interpolate(VecReal64 &yOut, const VecReal64 &x, const VecReal64 &y,
                               const VecReal64 &xIn) {
  ResizeLike(yOut, xIn);
  if (!table::HasPoints(x, y)) return table::Refuse(yOut);
  ComputeSlope(m_slopes64, x, y);
  Lines(yOut, x, y, xIn, m_slopes64);
  return 0;
}
int Interpolation::Interpolate(VecReal32 &yOut, const VecReal32 &x, const VecReal32 &y,
                               const VecReal32 &xIn) {
  ResizeLike(yOut, xIn);
  if (!table::HasPoints(x, y)) return table::Refuse(yOut);
  ComputeSlope(m_slopes32, x, y);
  Lines(yOut, x, y, xIn, m_slopes32);
  return 0;
}

bool Interpolation::CheckAscendingOrder(const VecReal32 &x) {
  return table::IsStrictlyAscending(x.GetPtr(), x.GetSize());
}
bool Interpolation::CheckAscendingOrder(const VecReal64 &x) {
  return table::IsStrictlyAscending(x.GetPtr(), x.GetSize());
}

} // namespace QORN
