#include "qorn/math/NearestInterpolation.h"

#include "TableSearch.h"

namespace QORN {

namespace {

template <class V> int Borders(V &borders, const V &x) {
  using T = ElementOf<V>;
  const int n = std::max(x.GetSize() - 1, 0);
  borders.Resize(n);
  const T *xs = x.GetPtr();
  T *result = borders.GetPtr();
  for (int i = 0; i < n; ++i) result[i] = (xs[i] + xs[i + 1]) * static_cast<T>(0.5);
  return 0;
}

template <class V> void Nearest(V &yOut, const V &y, const V &xIn, const V &borders) {
  using T = ElementOf<V>;
  const T *ys = y.GetPtr(), *values = xIn.GetPtr(), *bs = borders.GetPtr();
  const int count = borders.GetSize(), last = count - 1;
  if (count < 1) return Kernels<T>::Set(ys[0], yOut.GetPtr(), yOut.GetSize());
  const T first = bs[0], end = bs[last], yLast = y.GetLastValue();
  const auto at = [=](T v, int i) {
    if (v < first) return ys[0];
    if (v > end) return yLast;
    return v == end ? ys[last] : ys[i + 1];
  };
  const auto find = [=](const T *block, int n, int *index) { table::Find(bs, count, block, n, index); };
  // It ends at 0 at the latest, where it only arrives with a border that is not above v.
  const auto scan = [=](T v) {
    int i = last;
    if (!(v < first)) {
      while (bs[i] > v) --i;
    }
    return i;
  };
  if (table::AllNeighbours(bs, count, [](T a, T b) { return a <= b; })) {
    table::ForEach(values, yOut.GetPtr(), yOut.GetSize(), find, at);
  } else {
    table::ForEach(values, yOut.GetPtr(), yOut.GetSize(), table::Scanning(scan), at);
  }
}

} // namespace

NearestInterpolation::~NearestInterpolation() = default;

int NearestInterpolation::ComputeBorder(VecReal32 &borders, const VecReal32 &x, const VecReal32 &) {
  return Borders(borders, x);
}
int NearestInterpolation::ComputeBorder(VecReal64 &borders, const VecReal64 &x, const VecReal64 &) {
  return Borders(borders, x);
}

int NearestInterpolation::Interpolate(double &yOut, const VecReal64 &x, const VecReal64 &y,
                                      const double &xIn) {
  return Interpolation::Interpolate(yOut, x, y, xIn);
}
int NearestInterpolation::Interpolate(float &yOut, const VecReal32 &x, const VecReal32 &y, float xIn) {
  return Interpolation::Interpolate(yOut, x, y, xIn);
}

int NearestInterpolation::Interpolate(VecReal64 &yOut, const VecReal64 &x, const VecReal64 &y,
                                      const VecReal64 &xIn) {
  ResizeLike(yOut, xIn);
  if (!table::HasPoints(x, y)) return table::Refuse(yOut);
  ComputeBorder(m_borders64, x, y);
  Nearest(yOut, y, xIn, m_borders64);
  return 0;
}
int NearestInterpolation::Interpolate(VecReal32 &yOut, const VecReal32 &x, const VecReal32 &y,
                                      const VecReal32 &xIn) {
  ResizeLike(yOut, xIn);
  if (!table::HasPoints(x, y)) return table::Refuse(yOut);
  ComputeBorder(m_borders32, x, y);
  Nearest(yOut, y, xIn, m_borders32);
  return 0;
}

} // namespace QORN
