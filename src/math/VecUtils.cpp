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

template <class V> void DownsampleOf(V &dst, const V &src, int factor, int phase) {
  if (factor < 1) return;
  const int n = src.GetSize();
  dst.Resize(Length((std::int64_t{n} - 1 + factor - phase) / factor));
  int written = 0;
  Kernels<ElementOf<V>>::SampleDown(src.GetPtr(), n, dst.GetPtr(), &written, factor, &phase);
}

template <class V> void UpsampleOf(V &dst, const V &src, int factor, int phase) {
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

// Complex elements by their magnitudes, which are compared in the element's precision.
template <class Magnitudes, class V> void SortByMagnitude(V &vec, VecInt32 &order, VecUtils::SortDir dir) {
  const V copy(vec);
  Magnitudes magnitudes;
  MathUtils::Abs(magnitudes, copy);
  SortWithOrder(magnitudes, order, dir);
  Gather(vec, copy, order);
}

void SortWithOrder(VecCplx32 &vec, VecInt32 &order, VecUtils::SortDir dir) {
  SortByMagnitude<VecReal32>(vec, order, dir);
}
void SortWithOrder(VecCplx64 &vec, VecInt32 &order, VecUtils::SortDir dir) {
  SortByMagnitude<VecReal64>(vec, order, dir);
}

} // namespace

// The members, a row a family: each form for every type that has it.
// clang-format off
#define SAMPLES(form, name) QORN_REALS(form, name) QORN_CPLXS(form, name)
#define ALL(form, name) SAMPLES(form, name) form(name, VecInt32)

#define CONCAT(name, V) \
  void VecUtils::name(V &dst, const V &a, const V &b) { ConcatWhole(dst, a, b); } \
  void VecUtils::name(V &dst, const V &a, int aStart, int aCount, const V &b, int bStart, int bCount) { \
    ConcatRanges(dst, a, aStart, aCount, b, bStart, bCount); \
  }
ALL(CONCAT, Concat)

#define EXTEND(name, V) void VecUtils::name(V &vec, const V &src) { name##To(vec, src); }
ALL(EXTEND, Prepend)
ALL(EXTEND, Append)

#define COPY(name, V) \
  void VecUtils::name(V &dst, const V &src, int start, int count) { CopyRange(dst, src, start, count); }
ALL(COPY, Copy)

#define INSERT(name, V) \
  void VecUtils::name(V &dst, int dstStart, const V &src, int srcStart, int count) { \
    InsertRange(dst, dstStart, src, srcStart, count); \
  }
ALL(INSERT, Insert)

#define GATHER(name, V) \
  void VecUtils::name(V &dst, const V &src, const VecInt32 &index) { Gather(dst, src, index); }
ALL(GATHER, CopyByIndex)

#define RESAMPLE(name, V) \
  void VecUtils::name(V &dst, const V &src, int factor, int phase) { name##Of(dst, src, factor, phase); }
SAMPLES(RESAMPLE, Downsample)
SAMPLES(RESAMPLE, Upsample)

#define REPEAT(name, V) void VecUtils::name(V &dst, const V &src, int times) { Repeat(dst, src, times); }
SAMPLES(REPEAT, Duplicate)

#define DELETE(name, V) \
  void VecUtils::name(V &vec, const VecInt32 &indices) { Delete(vec, indices.GetPtr(), indices.GetSize()); } \
  void VecUtils::name(V &vec, int index) { Delete(vec, &index, 1); }
SAMPLES(DELETE, DeleteElement)

#define FLIP(name, V) void VecUtils::name(V &vec) { Kernels<ElementOf<V>>::Flip(vec.GetPtr(), vec.GetSize()); }
SAMPLES(FLIP, Flip)

#define SORT(name, V) \
  void VecUtils::name(V &vec, VecInt32 &order, SortDir dir) { SortWithOrder(vec, order, dir); } \
  void VecUtils::name(V &vec, SortDir dir) { \
    VecInt32 order; \
    SortWithOrder(vec, order, dir); \
  }
ALL(SORT, Sort)
// clang-format on

} // namespace QORN
