// What the interpolators share: where values lie in a table, and what becomes of a table that has no points.
#ifndef QORN_SRC_MATH_TABLESEARCH_H
#define QORN_SRC_MATH_TABLESEARCH_H

#include <algorithm>
#include <limits>

#include "Elementwise.h"
#include "infra/Errors.h"

namespace QORN::table {

/// Values are looked up in blocks, whose indices then stay in the nearest cache.
inline constexpr int kBlock = 256;

/// Whether ordered(x[i], x[i+1]) holds for all neighbours.
template <class T, class Ordered> bool AllNeighbours(const T *x, int n, Ordered ordered) {
  constexpr int kStride = 64; // so that the compiler may compare many at once
  int i = 0;
  for (; i + kStride < n; i += kStride) {
    int failures = 0;
    for (int k = i; k < i + kStride; ++k) failures += ordered(x[k], x[k + 1]) ? 0 : 1;
    if (failures != 0) return false;
  }
  for (; i + 1 < n; ++i) {
    if (!ordered(x[i], x[i + 1])) return false;
  }
  return true;
}

template <class T> bool IsStrictlyAscending(const T *x, int n) {
  return AllNeighbours(x, n, [](T a, T b) { return a < b; });
}

/// Whether there is a point to interpolate from and each point has its y.
template <class V> bool HasPoints(const V &x, const V &y) {
  return x.GetSize() > 0 && y.GetSize() >= x.GetSize();
}

/// All of yOut is not-a-number.
template <class V> void SetNaN(V &yOut) {
  using T = ElementOf<V>;
  Kernels<T>::Set(std::numeric_limits<T>::quiet_NaN(), yOut.GetPtr(), yOut.GetSize());
}

/// The result of a table without points: an error as soon as there is a value to interpolate.
template <class V> int Refuse(V &yOut) {
  SetNaN(yOut);
  return yOut.GetSize() > 0 ? errors::kInvalidParameter.code : 0;
}

/// Bisects for several values in step: the loads of one do not wait for those of another, and no branch
/// depends on a value. The step is looked up, since compilers turn a choice into a branch.
template <int lanes, class T> void Bisect(const T *x, int n, const T *values, int first, int *index) {
  int low[lanes] = {};
  for (int length = n; length > 1;) {
    const int half = length / 2, step[2] = {half, 0};
    for (int k = 0; k < lanes; ++k) low[k] += step[x[low[k] + half] > values[k] ? 1 : 0];
    length -= half;
  }
  for (int k = 0; k < lanes; ++k) index[k] = first + low[k];
}

/// The same for values in ascending order, of which the first has the index first and the last one last.
/// Where a value takes a few steps, several are taken together: their number cannot be predicted.
template <int stride, class T>
void Walk(const T *x, int first, int last, const T *values, int count, int *index) {
  for (int j = 0, i = first; j < count; ++j) {
    const T v = values[j];
    for (int passed = stride; stride > 1 && passed == stride && i + stride <= last;) {
      passed = 0;
      for (int k = 1; k <= stride; ++k) passed += x[i + k] > v ? 0 : 1;
      i += passed;
    }
    while (i < last && !(x[i + 1] > v)) ++i;
    index[j] = i;
  }
}

/// index[j] = the largest i for which x[i] > values[j] is false, or 0 if there is none, for 0 <= j < count.
/// x has n >= 1 elements; x[0] is not read, and from x[1] on they do not descend and are numbers.
template <class T> void Find(const T *x, int n, const T *values, int count, int *index) {
  constexpr int kLanes = 16;
  int first = 0;
  if (count >= kLanes && AllNeighbours(values, count, [](T a, T b) { return a <= b; })) {
    int last = 0;
    Bisect<1>(x, n, values, 0, &first);
    Bisect<1>(x, n, values + count - 1, 0, &last);
    if (last - first <= count / 4) return Walk<1>(x, first, last, values, count, index);
    if (last - first <= count * 4) return Walk<4>(x, first, last, values, count, index);
    n = last - first + 1;
  }
  int j = 0;
  for (; j + kLanes <= count; j += kLanes) Bisect<kLanes>(x + first, n, values + j, first, index + j);
  for (; j < count; ++j) Bisect<1>(x + first, n, values + j, first, index + j);
}

/// run(j, length, i) for each stretch of indices that are all i.
template <class Run> void ForRuns(const int *index, int count, Run run) {
  for (int j = 0, end = 0; j < count; j = end) {
    while (end < count && index[end] == index[j]) ++end;
    run(j, end - j, index[j]);
  }
}

/// results[j] = at(values[j], i) with the i that find(values, count, indices) tells. results may be values.
template <class T, class FindBlock, class At>
void ForEach(const T *values, T *results, int n, FindBlock find, At at) {
  int index[kBlock];
  for (int first = 0; first < n; first += kBlock, values += kBlock, results += kBlock) {
    const int count = std::min(kBlock, n - first);
    find(values, count, index);
    int changes = 0;
    for (int j = 1; j < count; ++j) changes += index[j] != index[j - 1] ? 1 : 0;
    if (changes > count / 8) {
      for (int j = 0; j < count; ++j) results[j] = at(values[j], index[j]);
    } else { // long stretches on one interval, several values at a time
      ForRuns(index, count, [=](int begin, int length, int i) {
        for (int j = begin; j < begin + length; ++j) results[j] = at(values[j], i);
      });
    }
  }
}

/// index[j] = scan(values[j]): for tables whose order allows no other search.
template <class Scan> auto Scanning(Scan scan) {
  return [scan](const auto *values, int count, int *index) {
    for (int j = 0; j < count; ++j) index[j] = scan(values[j]);
  };
}

/// Runs the vector form for one value, with the two vectors of one element that the object keeps for it.
template <class I, class V, class T>
int InterpolateOne(I &interpolation, V &in, V &out, T &yOut, const V &x, const V &y, T xIn) {
  in.Resize(1);
  in[0] = xIn;
  const int result = interpolation.Interpolate(out, x, y, in);
  if (out.GetSize() > 0) yOut = out[0];
  return result;
}

} // namespace QORN::table

#endif
