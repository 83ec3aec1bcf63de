#include "qorn/math/VecUtils.h"

#include "Elementwise.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/math/MathUtils.h"

namespace QORN {

namespace {

template <class V> int Resolve(const V &src, int start, int count) {
  return std::max(count == -1 ? src.GetSize() - start : count, 0);
}

template <class V>
void ConcatRanges(V &dst, const V &a, int aStart, int aCount, const V &b, int bStart, int bCount) {
  aCount = Resolve(a, aStart, aCount);
  bCount = Resolve(b, bStart, bCount);
  dst.Resize(Length(std::int64_t{aCount} + bCount));
  Kernels<ElementOf<V>>::Copy(a.GetPtr(aStart), dst.GetPtr(), aCount);
  Kernels<ElementOf<V>>::Copy(b.GetPtr(bStart), dst.GetPtr(aCount), bCount);
}

template <class V> void ConcatWhole(V &dst, const V &a, const V &b) { ConcatRanges(dst, a, 0, -1, b, 0, -1); }

// The copy is the source too where src is vec: the resize of vec would destroy it.
template <class V> void PrependTo(V &vec, const V &src) {
  const V copy(vec);
  ConcatWhole(vec, &src == &vec ? copy : src, copy);
}

template <class V> void AppendTo(V &vec, const V &src) {
  const V copy(vec);
  ConcatWhole(vec, copy, &src == &vec ? copy : src);
}

template <class V> void CopyRange(V &dst, const V &src, int start, int count) {
  count = Resolve(src, start, count);
  dst.Resize(count);
  Kernels<ElementOf<V>>::Copy(src.GetPtr(start), dst.GetPtr(), count);
}

template <class V> void InsertRange(V &dst, int dstStart, const V &src, int srcStart, int count) {
  Kernels<ElementOf<V>>::Copy(src.GetPtr(srcStart), dst.GetPtr(dstStart), Resolve(src, srcStart, count));
}

template <class V> void Gather(V &dst, const V &src, const VecInt32 &index) {
  const int n = index.GetSize();
  dst.Resize(n);
  for (int i = 0; i < n; ++i) dst[i] = src[index[i]];
}

template <class V> void SampleDown(V &dst, const V &src, int factor, int phase) {
  if (factor < 1) return;
  const int n = src.GetSize();
  dst.Resize(Length((std::int64_t{n} - 1 + factor - phase) / factor));
  int written = 0;
  Kernels<ElementOf<V>>::SampleDown(src.GetPtr(), n, dst.GetPtr(), &written, factor, &phase);
}

template <class V> void SampleUp(V &dst, const V &src, int factor, int phase) {
  const int n = src.GetSize();
  dst.Resize(Length(std::int64_t{n} * factor));
  int written = 0;
  Kernels<ElementOf<V>>::SampleUp(src.GetPtr(), n, dst.GetPtr(), &written, factor, &phase);
}

template <class V> void Repeat(V &dst, const V &src, int times) {
  const int n = src.GetSize();
  dst.Resize(Length(std::int64_t{n} * times));
  auto *out = dst.GetPtr();
  for (int i = 0; i < n; ++i) {
    const auto element = *src.GetPtr(i);
    for (int k = 0; k < times; ++k) *out++ = element;
  }
}

template <class V> void Delete(V &vec, const int *indices, int count) {
  auto *data = vec.GetPtr();
  int pending = 0;
  int kept = 0;
  for (int i = 0; i < vec.GetSize(); ++i) {
    if (pending < count && i == indices[pending]) {
      ++pending;
    } else {
      data[kept++] = data[i];
    }
  }
  // An empty result would be a length of 0, which Truncate(0, 0) does not give: the vector stays.
  if (kept > 0) vec.Truncate(0, kept);
}

template <class V> void SortWithOrder(V &vec, VecInt32 &order, VecUtils::SortDir dir) {
  const int n = vec.GetSize();
  order.Resize(n);
  if (dir == VecUtils::SortAscending) {
    Kernels<ElementOf<V>>::SortIndexAscend(vec.GetPtr(), order.GetPtr(), n);
  } else {
    Kernels<ElementOf<V>>::SortIndexDescend(vec.GetPtr(), order.GetPtr(), n);
  }
}

template <class Magnitudes, class V> void SortByMagnitude(V &vec, VecInt32 &order, VecUtils::SortDir dir) {
  const V copy(vec);
  Magnitudes magnitudes;
  MathUtils::Abs(magnitudes, copy);
  SortWithOrder(magnitudes, order, dir);
  Gather(vec, copy, order);
}

template <class V> void Reverse(V &vec) { Kernels<ElementOf<V>>::Flip(vec.GetPtr(), vec.GetSize()); }

} // namespace

void VecUtils::Concat(VecReal32 &dst, const VecReal32 &a, const VecReal32 &b) { ConcatWhole(dst, a, b); }
void VecUtils::Concat(VecReal64 &dst, const VecReal64 &a, const VecReal64 &b) { ConcatWhole(dst, a, b); }
void VecUtils::Concat(VecCplx32 &dst, const VecCplx32 &a, const VecCplx32 &b) { ConcatWhole(dst, a, b); }
void VecUtils::Concat(VecCplx64 &dst, const VecCplx64 &a, const VecCplx64 &b) { ConcatWhole(dst, a, b); }
void VecUtils::Concat(VecInt32 &dst, const VecInt32 &a, const VecInt32 &b) { ConcatWhole(dst, a, b); }

void VecUtils::Concat(VecReal32 &dst, const VecReal32 &a, int aStart, int aCount, const VecReal32 &b,
                      int bStart, int bCount) {
  ConcatRanges(dst, a, aStart, aCount, b, bStart, bCount);
}
void VecUtils::Concat(VecReal64 &dst, const VecReal64 &a, int aStart, int aCount, const VecReal64 &b,
                      int bStart, int bCount) {
  ConcatRanges(dst, a, aStart, aCount, b, bStart, bCount);
}
void VecUtils::Concat(VecCplx32 &dst, const VecCplx32 &a, int aStart, int aCount, const VecCplx32 &b,
                      int bStart, int bCount) {
  ConcatRanges(dst, a, aStart, aCount, b, bStart, bCount);
}
void VecUtils::Concat(VecCplx64 &dst, const VecCplx64 &a, int aStart, int aCount, const VecCplx64 &b,
                      int bStart, int bCount) {
  ConcatRanges(dst, a, aStart, aCount, b, bStart, bCount);
}
void VecUtils::Concat(VecInt32 &dst, const VecInt32 &a, int aStart, int aCount, const VecInt32 &b, int bStart,
                      int bCount) {
  ConcatRanges(dst, a, aStart, aCount, b, bStart, bCount);
}

void VecUtils::Prepend(VecReal32 &vec, const VecReal32 &src) { PrependTo(vec, src); }
void VecUtils::Prepend(VecReal64 &vec, const VecReal64 &src) { PrependTo(vec, src); }
void VecUtils::Prepend(VecCplx32 &vec, const VecCplx32 &src) { PrependTo(vec, src); }
void VecUtils::Prepend(VecCplx64 &vec, const VecCplx64 &src) { PrependTo(vec, src); }
void VecUtils::Prepend(VecInt32 &vec, const VecInt32 &src) { PrependTo(vec, src); }

void VecUtils::Append(VecReal32 &vec, const VecReal32 &src) { AppendTo(vec, src); }
void VecUtils::Append(VecReal64 &vec, const VecReal64 &src) { AppendTo(vec, src); }
void VecUtils::Append(VecCplx32 &vec, const VecCplx32 &src) { AppendTo(vec, src); }
void VecUtils::Append(VecCplx64 &vec, const VecCplx64 &src) { AppendTo(vec, src); }
void VecUtils::Append(VecInt32 &vec, const VecInt32 &src) { AppendTo(vec, src); }

void VecUtils::Copy(VecReal32 &dst, const VecReal32 &src, int start, int count) {
  CopyRange(dst, src, start, count);
}
void VecUtils::Copy(VecReal64 &dst, const VecReal64 &src, int start, int count) {
  CopyRange(dst, src, start, count);
}
void VecUtils::Copy(VecCplx32 &dst, const VecCplx32 &src, int start, int count) {
  CopyRange(dst, src, start, count);
}
void VecUtils::Copy(VecCplx64 &dst, const VecCplx64 &src, int start, int count) {
  CopyRange(dst, src, start, count);
}
void VecUtils::Copy(VecInt32 &dst, const VecInt32 &src, int start, int count) {
  CopyRange(dst, src, start, count);
}

void VecUtils::Insert(VecReal32 &dst, int dstStart, const VecReal32 &src, int srcStart, int count) {
  InsertRange(dst, dstStart, src, srcStart, count);
}
void VecUtils::Insert(VecReal64 &dst, int dstStart, const VecReal64 &src, int srcStart, int count) {
  InsertRange(dst, dstStart, src, srcStart, count);
}
void VecUtils::Insert(VecCplx32 &dst, int dstStart, const VecCplx32 &src, int srcStart, int count) {
  InsertRange(dst, dstStart, src, srcStart, count);
}
void VecUtils::Insert(VecCplx64 &dst, int dstStart, const VecCplx64 &src, int srcStart, int count) {
  InsertRange(dst, dstStart, src, srcStart, count);
}
void VecUtils::Insert(VecInt32 &dst, int dstStart, const VecInt32 &src, int srcStart, int count) {
  InsertRange(dst, dstStart, src, srcStart, count);
}

void VecUtils::CopyByIndex(VecReal32 &dst, const VecReal32 &src, const VecInt32 &index) {
  Gather(dst, src, index);
}
void VecUtils::CopyByIndex(VecReal64 &dst, const VecReal64 &src, const VecInt32 &index) {
  Gather(dst, src, index);
}
void VecUtils::CopyByIndex(VecCplx32 &dst, const VecCplx32 &src, const VecInt32 &index) {
  Gather(dst, src, index);
}
void VecUtils::CopyByIndex(VecCplx64 &dst, const VecCplx64 &src, const VecInt32 &index) {
  Gather(dst, src, index);
}
void VecUtils::CopyByIndex(VecInt32 &dst, const VecInt32 &src, const VecInt32 &index) {
  Gather(dst, src, index);
}

void VecUtils::Downsample(VecReal32 &dst, const VecReal32 &src, int factor, int phase) {
  SampleDown(dst, src, factor, phase);
}
void VecUtils::Downsample(VecReal64 &dst, const VecReal64 &src, int factor, int phase) {
  SampleDown(dst, src, factor, phase);
}
void VecUtils::Downsample(VecCplx32 &dst, const VecCplx32 &src, int factor, int phase) {
  SampleDown(dst, src, factor, phase);
}
void VecUtils::Downsample(VecCplx64 &dst, const VecCplx64 &src, int factor, int phase) {
  SampleDown(dst, src, factor, phase);
}

void VecUtils::Upsample(VecReal32 &dst, const VecReal32 &src, int factor, int phase) {
  SampleUp(dst, src, factor, phase);
}
void VecUtils::Upsample(VecReal64 &dst, const VecReal64 &src, int factor, int phase) {
  SampleUp(dst, src, factor, phase);
}
void VecUtils::Upsample(VecCplx32 &dst, const VecCplx32 &src, int factor, int phase) {
  SampleUp(dst, src, factor, phase);
}
void VecUtils::Upsample(VecCplx64 &dst, const VecCplx64 &src, int factor, int phase) {
  SampleUp(dst, src, factor, phase);
}

void VecUtils::Duplicate(VecReal32 &dst, const VecReal32 &src, int times) { Repeat(dst, src, times); }
void VecUtils::Duplicate(VecReal64 &dst, const VecReal64 &src, int times) { Repeat(dst, src, times); }
void VecUtils::Duplicate(VecCplx32 &dst, const VecCplx32 &src, int times) { Repeat(dst, src, times); }
void VecUtils::Duplicate(VecCplx64 &dst, const VecCplx64 &src, int times) { Repeat(dst, src, times); }

void VecUtils::DeleteElement(VecReal32 &vec, const VecInt32 &indices) {
  Delete(vec, indices.GetPtr(), indices.GetSize());
}
void VecUtils::DeleteElement(VecReal64 &vec, const VecInt32 &indices) {
  Delete(vec, indices.GetPtr(), indices.GetSize());
}
void VecUtils::DeleteElement(VecCplx32 &vec, const VecInt32 &indices) {
  Delete(vec, indices.GetPtr(), indices.GetSize());
}
void VecUtils::DeleteElement(VecCplx64 &vec, const VecInt32 &indices) {
  Delete(vec, indices.GetPtr(), indices.GetSize());
}

void VecUtils::DeleteElement(VecReal32 &vec, int index) { Delete(vec, &index, 1); }
void VecUtils::DeleteElement(VecReal64 &vec, int index) { Delete(vec, &index, 1); }
void VecUtils::DeleteElement(VecCplx32 &vec, int index) { Delete(vec, &index, 1); }
void VecUtils::DeleteElement(VecCplx64 &vec, int index) { Delete(vec, &index, 1); }

void VecUtils::Flip(VecReal32 &vec) { Reverse(vec); }
void VecUtils::Flip(VecReal64 &vec) { Reverse(vec); }
void VecUtils::Flip(VecCplx32 &vec) { Reverse(vec); }
void VecUtils::Flip(VecCplx64 &vec) { Reverse(vec); }

void VecUtils::Sort(VecReal32 &vec, VecInt32 &order, SortDir dir) { SortWithOrder(vec, order, dir); }
void VecUtils::Sort(VecReal64 &vec, VecInt32 &order, SortDir dir) { SortWithOrder(vec, order, dir); }
void VecUtils::Sort(VecInt32 &vec, VecInt32 &order, SortDir dir) { SortWithOrder(vec, order, dir); }
void VecUtils::Sort(VecCplx32 &vec, VecInt32 &order, SortDir dir) {
  SortByMagnitude<VecReal32>(vec, order, dir);
}
void VecUtils::Sort(VecCplx64 &vec, VecInt32 &order, SortDir dir) {
  SortByMagnitude<VecReal64>(vec, order, dir);
}

void VecUtils::Sort(VecReal32 &vec, SortDir dir) {
  VecInt32 order;
  Sort(vec, order, dir);
}
void VecUtils::Sort(VecReal64 &vec, SortDir dir) {
  VecInt32 order;
  Sort(vec, order, dir);
}
void VecUtils::Sort(VecInt32 &vec, SortDir dir) {
  VecInt32 order;
  Sort(vec, order, dir);
}
void VecUtils::Sort(VecCplx32 &vec, SortDir dir) {
  VecInt32 order;
  Sort(vec, order, dir);
}
void VecUtils::Sort(VecCplx64 &vec, SortDir dir) {
  VecInt32 order;
  Sort(vec, order, dir);
}

} // namespace QORN
