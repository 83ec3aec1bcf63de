#ifndef QORN_MATH_VECUTILS_H
#define QORN_MATH_VECUTILS_H

#include "qorn/Export.h"
#include "qorn/infra/VectorConversion.h"

namespace QORN {

class VecInt32;
class VecReal32;
class VecReal64;
class VecCplx32;
class VecCplx64;

/// Shape and order of vectors: joining, parts, gathering by index, sampling up and down, repetition,
/// deletion, reversing and sorting. Static functions only. Convert, between element types, is inherited.
///
/// The destination comes first and is given its length by Resize, so a kept destination allocates nothing. It
/// must be another vector than the sources, unless told otherwise. A count of -1 means all from the start
/// index to the end of the source; any other count below 0 acts as 0. Indices and ranges are not checked.
/// Nothing is thrown except 11001 by a vector that cannot grow. All functions are reentrant.
class QORN_API VecUtils : public VectorConversion {
public:
  /// The order of a sort. Any value other than SortAscending sorts descending.
  enum SortDir : int { SortDescending = 0, SortAscending = 1 };

  /// dst = a followed by b.
  ///@{
  static void Concat(VecReal32 &dst, const VecReal32 &a, const VecReal32 &b);
  static void Concat(VecReal64 &dst, const VecReal64 &a, const VecReal64 &b);
  static void Concat(VecCplx32 &dst, const VecCplx32 &a, const VecCplx32 &b);
  static void Concat(VecCplx64 &dst, const VecCplx64 &a, const VecCplx64 &b);
  static void Concat(VecInt32 &dst, const VecInt32 &a, const VecInt32 &b);
  ///@}

  /// dst = aCount elements of a from aStart on, followed by bCount elements of b from bStart on.
  ///@{
  static void Concat(VecReal32 &dst, const VecReal32 &a, int aStart, int aCount, const VecReal32 &b,
                     int bStart, int bCount);
  static void Concat(VecReal64 &dst, const VecReal64 &a, int aStart, int aCount, const VecReal64 &b,
                     int bStart, int bCount);
  static void Concat(VecCplx32 &dst, const VecCplx32 &a, int aStart, int aCount, const VecCplx32 &b,
                     int bStart, int bCount);
  static void Concat(VecCplx64 &dst, const VecCplx64 &a, int aStart, int aCount, const VecCplx64 &b,
                     int bStart, int bCount);
  static void Concat(VecInt32 &dst, const VecInt32 &a, int aStart, int aCount, const VecInt32 &b, int bStart,
                     int bCount);
  ///@}

  /// vec = src followed by the former vec; src may be vec. Costs a temporary copy of vec: to build a long
  /// vector, give it its length once and Insert.
  ///@{
  static void Prepend(VecReal32 &vec, const VecReal32 &src);
  static void Prepend(VecReal64 &vec, const VecReal64 &src);
  static void Prepend(VecCplx32 &vec, const VecCplx32 &src);
  static void Prepend(VecCplx64 &vec, const VecCplx64 &src);
  static void Prepend(VecInt32 &vec, const VecInt32 &src);
  ///@}

  /// vec = the former vec followed by src; src may be vec. Costs a temporary copy of vec, as Prepend.
  ///@{
  static void Append(VecReal32 &vec, const VecReal32 &src);
  static void Append(VecReal64 &vec, const VecReal64 &src);
  static void Append(VecCplx32 &vec, const VecCplx32 &src);
  static void Append(VecCplx64 &vec, const VecCplx64 &src);
  static void Append(VecInt32 &vec, const VecInt32 &src);
  ///@}

  /// dst = count elements of src from start on.
  ///@{
  static void Copy(VecReal32 &dst, const VecReal32 &src, int start, int count);
  static void Copy(VecReal64 &dst, const VecReal64 &src, int start, int count);
  static void Copy(VecCplx32 &dst, const VecCplx32 &src, int start, int count);
  static void Copy(VecCplx64 &dst, const VecCplx64 &src, int start, int count);
  static void Copy(VecInt32 &dst, const VecInt32 &src, int start, int count);
  ///@}

  /// Overwrites dst from dstStart on with count elements of src from srcStart on. In spite of its name it
  /// moves nothing aside and never resizes dst: the range must fit. dst may be src, the ranges may overlap.
  ///@{
  static void Insert(VecReal32 &dst, int dstStart, const VecReal32 &src, int srcStart, int count);
  static void Insert(VecReal64 &dst, int dstStart, const VecReal64 &src, int srcStart, int count);
  static void Insert(VecCplx32 &dst, int dstStart, const VecCplx32 &src, int srcStart, int count);
  static void Insert(VecCplx64 &dst, int dstStart, const VecCplx64 &src, int srcStart, int count);
  static void Insert(VecInt32 &dst, int dstStart, const VecInt32 &src, int srcStart, int count);
  ///@}

  /// dst[i] = src[index[i]], for all elements of index.
  ///@{
  static void CopyByIndex(VecReal32 &dst, const VecReal32 &src, const VecInt32 &index);
  static void CopyByIndex(VecReal64 &dst, const VecReal64 &src, const VecInt32 &index);
  static void CopyByIndex(VecCplx32 &dst, const VecCplx32 &src, const VecInt32 &index);
  static void CopyByIndex(VecCplx64 &dst, const VecCplx64 &src, const VecInt32 &index);
  static void CopyByIndex(VecInt32 &dst, const VecInt32 &src, const VecInt32 &index);
  ///@}

  /// dst[k] = src[phase + k * factor]; the length is (length of src - 1 + factor - phase) / factor, rounded
  /// toward zero and at least 0. A phase outside 0 to factor - 1 gives dst that length and leaves its
  /// elements as they are; a factor below 1 leaves dst untouched. The phase of a following block is the
  /// caller's to work out.
  ///@{
  static void Downsample(VecReal32 &dst, const VecReal32 &src, int factor, int phase);
  static void Downsample(VecReal64 &dst, const VecReal64 &src, int factor, int phase);
  static void Downsample(VecCplx32 &dst, const VecCplx32 &src, int factor, int phase);
  static void Downsample(VecCplx64 &dst, const VecCplx64 &src, int factor, int phase);
  ///@}

  /// dst[k * factor + phase] = src[k], all other of the (length of src) * factor elements 0. A phase outside
  /// 0 to factor - 1 gives dst that length and leaves its elements as they are; a factor below 1 leaves dst
  /// empty.
  ///@{
  static void Upsample(VecReal32 &dst, const VecReal32 &src, int factor, int phase);
  static void Upsample(VecReal64 &dst, const VecReal64 &src, int factor, int phase);
  static void Upsample(VecCplx32 &dst, const VecCplx32 &src, int factor, int phase);
  static void Upsample(VecCplx64 &dst, const VecCplx64 &src, int factor, int phase);
  ///@}

  /// dst[k] = src[k / times], 0 <= k < (length of src) * times: each element is repeated in place, {a, b} by
  /// 2 gives {a, a, b, b}. With times below 1 dst is empty.
  ///@{
  static void Duplicate(VecReal32 &dst, const VecReal32 &src, int times);
  static void Duplicate(VecReal64 &dst, const VecReal64 &src, int times);
  static void Duplicate(VecCplx32 &dst, const VecCplx32 &src, int times);
  static void Duplicate(VecCplx64 &dst, const VecCplx64 &src, int times);
  ///@}

  /// Removes the elements at indices, which must ascend without duplicates: from the first index that does
  /// not, nothing more is removed. Only the length shrinks, the storage stays. If no element would be left,
  /// the vector stays as it is, length and contents: check for that case before.
  ///@{
  static void DeleteElement(VecReal32 &vec, const VecInt32 &indices);
  static void DeleteElement(VecReal64 &vec, const VecInt32 &indices);
  static void DeleteElement(VecCplx32 &vec, const VecInt32 &indices);
  static void DeleteElement(VecCplx64 &vec, const VecInt32 &indices);
  ///@}

  /// Removes the element at index. A vector of this element alone stays as it is.
  ///@{
  static void DeleteElement(VecReal32 &vec, int index);
  static void DeleteElement(VecReal64 &vec, int index);
  static void DeleteElement(VecCplx32 &vec, int index);
  static void DeleteElement(VecCplx64 &vec, int index);
  ///@}

  /// Reverses the order of the elements in place.
  ///@{
  static void Flip(VecReal32 &vec);
  static void Flip(VecReal64 &vec);
  static void Flip(VecCplx32 &vec);
  static void Flip(VecCplx64 &vec);
  ///@}

  /// Sorts vec, complex elements by their magnitude in the element's precision. Equal elements keep their
  /// order; not-a-number stands last when ascending and first when descending. Allocates temporaries.
  ///@{
  static void Sort(VecReal32 &vec, SortDir dir = SortAscending);
  static void Sort(VecReal64 &vec, SortDir dir = SortAscending);
  static void Sort(VecCplx32 &vec, SortDir dir = SortAscending);
  static void Sort(VecCplx64 &vec, SortDir dir = SortAscending);
  static void Sort(VecInt32 &vec, SortDir dir = SortAscending);
  ///@}

  /// As Sort(vec, dir), and order[i] = the former place of the element that is now at i.
  ///@{
  static void Sort(VecReal32 &vec, VecInt32 &order, SortDir dir = SortAscending);
  static void Sort(VecReal64 &vec, VecInt32 &order, SortDir dir = SortAscending);
  static void Sort(VecCplx32 &vec, VecInt32 &order, SortDir dir = SortAscending);
  static void Sort(VecCplx64 &vec, VecInt32 &order, SortDir dir = SortAscending);
  static void Sort(VecInt32 &vec, VecInt32 &order, SortDir dir = SortAscending);
  ///@}
};

} // namespace QORN

#endif
