#include "qorn/math/Spline.h"

#include "Scratch.h"
#include "TableSearch.h"

namespace QORN {

// The float form works on floats; what meets a constant or a boundary is double. Its results are a contract,
// and so each widening and narrowing stands where it belongs.
struct Spline::Evaluation {
  template <class T> static double Wide(T x) { return static_cast<double>(x); }

  // The tridiagonal system, by a forward sweep that leaves its factors in y2 and u, and a backward one.
  template <class T> static void Solve(const Spline &spline, int n, const T *x, const T *y, T *y2, T *u) {
    const int last = n - 1;
    T slope = (y[1] - y[0]) / (x[1] - x[0]); // of the interval before point i
    if (spline.m_firstBoundary > spline.m_naturalThreshold) {
      y2[0] = u[0] = 0;
    } else {
      y2[0] = static_cast<T>(-0.5);
      u[0] = static_cast<T>((3.0 / Wide(x[1] - x[0])) * (Wide(slope) - spline.m_firstBoundary));
    }
    for (int i = 1; i < last; ++i) {
      const T next = (y[i + 1] - y[i]) / (x[i + 1] - x[i]), span = x[i + 1] - x[i - 1];
      const T s = (x[i] - x[i - 1]) / span;
      const T p = static_cast<T>(Wide(s * y2[i - 1]) + 2.0);
      const T w = next - slope;
      y2[i] = static_cast<T>((Wide(s) - 1.0) / Wide(p));
      u[i] = static_cast<T>((6.0 * Wide(w) / Wide(span) - Wide(s * u[i - 1])) / Wide(p));
      slope = next;
    }
    T q = 0, e = 0;
    if (!(spline.m_lastBoundary > spline.m_naturalThreshold)) {
      q = static_cast<T>(0.5);
      e = static_cast<T>((3.0 / Wide(x[last] - x[last - 1])) * (spline.m_lastBoundary - Wide(slope)));
    }
    y2[last] = static_cast<T>(Wide(e - q * u[last - 1]) / (Wide(q * y2[last - 1]) + 1.0));
    for (int k = last - 1; k >= 0; --k) y2[k] = y2[k] * y2[k + 1] + u[k];
  }

  template <class T> static bool Init(Spline &spline, int n, const T *x, const T *y, T *y2) {
    if (n > 1) {
      const Scratch<T> u = MakeScratch<T>(n);
      if (!u) return false;
      Solve(spline, n, x, y, y2, u.get());
    } else if (n == 1) {
      y2[0] = 0;
    }
    spline.m_low = spline.m_high = 0;
    return true;
  }

  template <class T> static T Cubic(const T *x, const T *y, const T *y2, int low, int high, T v) {
    const T h = x[high] - x[low];
    const T a = (x[high] - v) / h, b = (v - x[low]) / h;
    const T bend = ((b * b * b - b) * y2[high] + (a * a * a - a) * y2[low]) * (h * h);
    return static_cast<T>(Wide(bend) / 6.0 + Wide(y[high] * b + y[low] * a));
  }

  template <class T> static T EvaluateNext(Spline &spline, int n, const T *x, const T *y, const T *y2, T v) {
    int low = spline.m_low, high = spline.m_high;
    if (high < n - 2 && high > 0) {
      high += 2;
    } else {
      low = low > 2 && high > 0 ? low - 2 : 0;
      high = n - 1;
    }
    // The interval may also be one of a longer table.
    if (low >= high || (x[low] > v && x[high] > v) || (v > x[low] && v > x[high])) {
      low = 0;
      high = n - 1;
    }
    while (high - low > 1) {
      const int middle = low + (high - low) / 2;
      if (x[middle] > v) {
        high = middle;
      } else {
        low = middle;
      }
    }
    spline.m_low = low;
    spline.m_high = high;
    return x[high] - x[low] == 0 ? y[high] : Cubic(x, y, y2, low, high, v);
  }

  // In a table that ascends, the bracket does not matter and every value is looked up by itself.
  template <class T>
  static void EvaluateAll(Spline &spline, int n, const T *x, const T *y, const T *y2, const T *values,
                          T *results, int count) {
    if (n < 2 || !table::IsStrictlyAscending(x, n)) {
      for (int j = 0; j < count; ++j) results[j] = EvaluateNext(spline, n, x, y, y2, values[j]);
      return;
    }
    const auto find = [=](const T *block, int length, int *index) {
      table::Find(x, n - 1, block, length, index);
    };
    const auto at = [=](T v, int i) { return Cubic(x, y, y2, i, i + 1, v); };
    table::ForEach(values, results, count, find, at);
  }

  template <class V> static int Interpolate(Spline &spline, V &yOut, const V &x, const V &y, const V &xIn) {
    using T = ElementOf<V>;
    constexpr int kNoTable = 10003;
    ResizeLike(yOut, xIn);
    const int n = x.GetSize();
    if (n != y.GetSize()) return kNoTable;
    if (n < 1) return table::Refuse(yOut);
    const Scratch<T> y2 = MakeScratch<T>(n);
    if (!y2) return kNoTable;
    if (!spline.SplineInit(n, x, y, y2.get())) return errors::kMemoryAllocation.code;
    EvaluateAll(spline, n, x.GetPtr(), y.GetPtr(), y2.get(), xIn.GetPtr(), yOut.GetPtr(), yOut.GetSize());
    return 0;
  }
};

Spline::~Spline() = default;

void Spline::SetNaturalSpline() { m_firstBoundary = m_lastBoundary = m_naturalThreshold * 10.0; }

bool Spline::SplineInit(int n, const VecReal32 &x, const VecReal32 &y, float *y2) {
  return Evaluation::Init(*this, n, x.GetPtr(), y.GetPtr(), y2);
}
bool Spline::SplineInit(int n, const VecReal64 &x, const VecReal64 &y, double *y2) {
  return Evaluation::Init(*this, n, x.GetPtr(), y.GetPtr(), y2);
}

float Spline::Splint(int n, const VecReal32 &x, const VecReal32 &y, const float *y2, float v) {
  return Evaluation::EvaluateNext(*this, n, x.GetPtr(), y.GetPtr(), y2, v);
}
double Spline::Splint(int n, const VecReal64 &x, const VecReal64 &y, const double *y2, double v) {
  return Evaluation::EvaluateNext(*this, n, x.GetPtr(), y.GetPtr(), y2, v);
}

int Spline::Interpolate(double &yOut, const VecReal64 &x, const VecReal64 &y, const double &xIn) {
  return table::InterpolateOne(*this, m_scalarIn64, m_scalarOut64, yOut, x, y, xIn);
}
int Spline::Interpolate(float &yOut, const VecReal32 &x, const VecReal32 &y, float xIn) {
  return table::InterpolateOne(*this, m_scalarIn32, m_scalarOut32, yOut, x, y, xIn);
}

int Spline::Interpolate(VecReal64 &yOut, const VecReal64 &x, const VecReal64 &y, const VecReal64 &xIn) {
  return Evaluation::Interpolate(*this, yOut, x, y, xIn);
}
int Spline::Interpolate(VecReal32 &yOut, const VecReal32 &x, const VecReal32 &y, const VecReal32 &xIn) {
  return Evaluation::Interpolate(*this, yOut, x, y, xIn);
}

bool Spline::MakeSplineTable(VecReal32 &table, const VecReal32 &y, const VecReal32 &x) {
  const int n = x.GetSize();
  if (y.GetSize() < n) return false;
  const Scratch<float> y2 = MakeScratch<float>(n);
  if ((n > 0 && !y2) || !SplineInit(n, x, y, y2.get())) return false;
  table.Import(y2.get(), n);
  return true;
}

bool Spline::Interpolate(VecReal32 &yOut, const VecReal32 &xIn, const VecReal32 &y, const VecReal32 &x,
                         const VecReal32 &table) {
  ResizeLike(yOut, xIn);
  if (!table::HasPoints(x, y) || !table::HasPoints(x, table)) {
    table::SetNaN(yOut);
  } else {
    Evaluation::EvaluateAll(*this, x.GetSize(), x.GetPtr(), y.GetPtr(), table.GetPtr(), xIn.GetPtr(),
                            yOut.GetPtr(), yOut.GetSize());
  }
  return true;
}

float Spline::Interpolate(float v, const VecReal32 &y, const VecReal32 &x, const VecReal32 &table) {
  if (!table::HasPoints(x, y) || !table::HasPoints(x, table)) return std::numeric_limits<float>::quiet_NaN();
  return Splint(x.GetSize(), x, y, table.GetPtr(), v);
}

} // namespace QORN
