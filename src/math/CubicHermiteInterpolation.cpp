#include "qorn/math/CubicHermiteInterpolation.h"

#include <cmath>

#include "TableSearch.h"

namespace QORN {

namespace {
constexpr char kModule[] = "math\\CubicHermiteInterpolation";
}

struct CubicHermiteInterpolation::Curve {
  // The three-point formula for the derivative at an end: del1 is the slope of the interval at the end, of
  // width h1, del2 that of its neighbour.
  static double AtEnd(double h1, double hsum, double del1, double del2) {
    const double d = ((h1 + hsum) / hsum) * del1 - (h1 / hsum) * del2;
    if (pchst(d, del1) <= 0.0) return 0.0;
    const double dmax = 3.0 * del1;
    return pchst(del1, del2) < 0.0 && std::fabs(d) > std::fabs(dmax) ? dmax : d;
  }

  static double Inside(double h1, double h2, double del1, double del2) {
    if (!(pchst(del1, del2) > 0.0)) return 0.0;
    const double hsum = h1 + h2, t = 3.0 * hsum;
    const double w1 = (hsum + h1) / t, w2 = (hsum + h2) / t;
    const double size1 = std::fabs(del1), size2 = std::fabs(del2);
    const double dmax = d_max(size1, size2), dmin = d_min(size1, size2);
    return dmin / (w1 * (del1 / dmax) + w2 * (del2 / dmax));
  }

  template <class T> static void Derivatives(int n, const T *x, const T *y, double *d) {
    const auto width = [x](int i) { return static_cast<double>(x[i + 1] - x[i]); };
    const auto slope = [y](int i, double h) { return static_cast<double>(y[i + 1] - y[i]) / h; };
    double h1 = width(0), del1 = slope(0, h1);
    if (n == 2) {
      d[0] = d[1] = del1;
      return;
    }
    double h2 = width(1), del2 = slope(1, h2);
    d[0] = AtEnd(h1, h1 + h2, del1, del2);
    for (int i = 1; i < n - 1; ++i) {
      if (i > 1) {
        h1 = h2;
        del1 = del2;
        h2 = width(i);
        del2 = slope(i, h2);
      }
      d[i] = Inside(h1, h2, del1, del2);
    }
    d[n - 1] = AtEnd(h2, h1 + h2, del2, del1);
  }

  // Neighbouring values of one interval are evaluated together. To the left of the first interval and to the
  // right of the last one their cubics go on. An interval that ends at not-a-number is the last.
  template <class V>
  static void Values(int n, const V &x, const V &y, const double *d, int ne, const V &xe, V &ye) {
    using T = ElementOf<V>;
    const T *xs = x.GetPtr(), *ys = y.GetPtr();
    int intervals = 1;
    while (intervals < n - 1 && xs[intervals] == xs[intervals]) ++intervals;
    int index[table::kBlock], next[2] = {0, 0};
    for (int first = 0; first < ne; first += table::kBlock) {
      const int count = std::min(table::kBlock, ne - first);
      table::Find(xs, intervals, xe.GetPtr(first), count, index);
      table::ForRuns(index, count, [&, first](int j, int length, int i) {
        const int result =
            chfev(static_cast<double>(xs[i]), static_cast<double>(xs[i + 1]), static_cast<double>(ys[i]),
                  static_cast<double>(ys[i + 1]), d[i], d[i + 1], length, xe, first + j, ye, first + j, next);
        const bool strays = (i > 0 && next[0] > 0) || (i < intervals - 1 && next[1] > 0);
        if (result < 0 || strays) exit(1);
      });
    }
  }

  template <class V>
  static int Cubic(double x1, double x2, double f1, double f2, double d1, double d2, int ne, const V &xe,
                   int xeStart, V &fe, int feStart, int *next) {
    using T = ElementOf<V>;
    if (ne < 1) return -1;
    const double h = x2 - x1;
    if (h == 0.0) return -2;
    const double xmi = d_min(0.0, h), xma = d_max(0.0, h);
    const double delta = (f2 - f1) / h, del1 = (d1 - delta) / h, del2 = (d2 - delta) / h;
    const double c2 = -(del1 + del1 + del2), c3 = (del1 + del2) / h;
    const T *values = xe.GetPtr(xeStart);
    T *results = fe.GetPtr(feStart);
    int left = 0, right = 0;
    for (int j = 0; j < ne; ++j) {
      const double t = static_cast<double>(values[j]) - x1;
      results[j] = static_cast<T>(f1 + t * (d1 + t * (c2 + t * c3)));
      left += t < xmi ? 1 : 0;
      right += t > xma ? 1 : 0;
    }
    next[0] = left;
    next[1] = right;
    return 0;
  }

  template <class V>
  static int Interpolate(CubicHermiteInterpolation &interpolation, V &yOut, const V &x, const V &y,
                         const V &xIn) {
    using T = ElementOf<V>;
    const int n = x.GetSize();
    if (!table::AllNeighbours(x.GetPtr(), n, [](T a, T b) { return !(a >= b); }) || y.GetSize() < n) {
      Throw(errors::kInvalidParameter, kModule);
    }
    ResizeLike(yOut, xIn);
    double *d = interpolation.GetWorkingBuffer(n);
    spline_pchip_set(n, x, y, d);
    spline_pchip_val(n, x, y, d, yOut.GetSize(), xIn, yOut);
    return 0;
  }
};

CubicHermiteInterpolation::~CubicHermiteInterpolation() = default;

double *CubicHermiteInterpolation::GetWorkingBuffer(int n) {
  m_buffer.Resize(i_max(n, m_buffer.GetSize()));
  return m_buffer.GetPtr();
}

void CubicHermiteInterpolation::exit(int) { Throw(errors::kHermite, kModule); }

double CubicHermiteInterpolation::pchst(double a, double b) {
  const auto sign = [](double x) { return x > 0.0 ? 1.0 : x < 0.0 ? -1.0 : 0.0; };
  return sign(a) * sign(b);
}

void CubicHermiteInterpolation::spline_pchip_set(int n, const VecReal32 &x, const VecReal32 &y, double *d) {
  if (n < 2) exit(1);
  Curve::Derivatives(n, x.GetPtr(), y.GetPtr(), d);
}
void CubicHermiteInterpolation::spline_pchip_set(int n, const VecReal64 &x, const VecReal64 &y, double *d) {
  if (n < 2) exit(1);
  Curve::Derivatives(n, x.GetPtr(), y.GetPtr(), d);
}

void CubicHermiteInterpolation::spline_pchip_val(int n, const VecReal32 &x, const VecReal32 &y,
                                                 const double *d, int ne, const VecReal32 &xe,
                                                 VecReal32 &ye) {
  if (n < 2) exit(1);
  Curve::Values(n, x, y, d, ne, xe, ye);
}
void CubicHermiteInterpolation::spline_pchip_val(int n, const VecReal64 &x, const VecReal64 &y,
                                                 const double *d, int ne, const VecReal64 &xe,
                                                 VecReal64 &ye) {
  if (n < 2) exit(1);
  Curve::Values(n, x, y, d, ne, xe, ye);
}

int CubicHermiteInterpolation::chfev(double x1, double x2, double f1, double f2, double d1, double d2, int ne,
                                     const VecReal32 &xe, int xeStart, VecReal32 &fe, int feStart,
                                     int *next) {
  return Curve::Cubic(x1, x2, f1, f2, d1, d2, ne, xe, xeStart, fe, feStart, next);
}
int CubicHermiteInterpolation::chfev(double x1, double x2, double f1, double f2, double d1, double d2, int ne,
                                     const VecReal64 &xe, int xeStart, VecReal64 &fe, int feStart,
                                     int *next) {
  return Curve::Cubic(x1, x2, f1, f2, d1, d2, ne, xe, xeStart, fe, feStart, next);
}

int CubicHermiteInterpolation::Interpolate(VecReal64 &yOut, const VecReal64 &x, const VecReal64 &y,
                                           const VecReal64 &xIn) {
  return Curve::Interpolate(*this, yOut, x, y, xIn);
}
int CubicHermiteInterpolation::Interpolate(VecReal32 &yOut, const VecReal32 &x, const VecReal32 &y,
                                           const VecReal32 &xIn) {
  return Curve::Interpolate(*this, yOut, x, y, xIn);
}

} // namespace QORN
