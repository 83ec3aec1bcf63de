#ifndef QORN_INFRA_BASEVECTOR_H
#define QORN_INFRA_BASEVECTOR_H

#include "qorn/Export.h"
#include "qorn/infra/Cplx.h"

namespace QORN {

/// The storage of all vectors: an owned, 64-byte-aligned block with a capacity, and a view of it, a data
/// pointer and a length, that can be narrowed without copying.
///
/// T is one of unsigned char, short, int, unsigned int, float, double, Cplx32 and Cplx64. Objects of
/// BaseVector are never used by themselves: the eight vector classes derive from it and supply Alloc. A
/// vector is empty (no block), whole (the view is the block) or narrowed (after Trim or Truncate).
///
/// Output vectors are given their length by Resize, which never gives memory back and never keeps contents
/// across growth: repeated calls on a kept output vector of the same or a smaller length allocate nothing.
///
/// Indices and ranges are not checked; a build with QORN_CHECKED asserts them. One thread at a time may
/// change a vector.
template <class T> class QORN_API BaseVector {
public:
  /// An empty vector.
  BaseVector() = default;

  /// Copies the four fields and not the block: a bare base copy shares the block of its source and does not
  /// own it. The vector classes define deep copies.
  BaseVector(const BaseVector &) = default;
  BaseVector &operator=(const BaseVector &) = default;

  virtual ~BaseVector();

  /// The number of visible elements.
  int GetSize() const { return m_length; }

  /// The number of elements that the owned block holds.
  int GetCapacity() const { return m_capacity; }

  /// The address of element i of the view; null plus nothing for an empty vector and i = 0.
  T *GetPtr(int i = 0) const {
    CheckPosition(i);
    return m_pData + i;
  }
  T *DataPtr(int i = 0) const { return GetPtr(i); }

  /// Element i of the view.
  T &operator[](int i) {
    CheckIndex(i);
    return m_pData[i];
  }
  T operator[](int i) const {
    CheckIndex(i);
    return m_pData[i];
  }

  /// Element GetSize() - 1 of the view.
  T GetLastValue() const {
    CheckIndex(m_length - 1);
    return m_pData[m_length - 1];
  }

  /// Frees the block; the vector is then empty. Del and Release are one operation.
  void Del() { Release(); }
  void Release();

  /// Gives the vector n elements. Up to the capacity only the length changes and the view becomes the whole
  /// block again: elements keep what they held. Above it the block is replaced by one of exactly n zeroed
  /// elements, the old contents are gone. A negative n becomes the length as it stands, which kernels take
  /// for empty. Throws QORNException 11001 if there is no memory; the vector is then empty.
  void Resize(int n);

  /// As Resize, but a capacity other than n is first freed, and any capacity if force is true; so afterwards
  /// the capacity is n.
  void ResizeExactly(int n, bool force = false);

  /// Clears the elements of the view; the length stays.
  void SetZero();

  /// Narrows the view to its elements first to last, or to the end if last is -1. Constant time; the block
  /// and the capacity stay. Always true.
  bool Trim(int first, int last = -1);

  /// Narrows the view to count elements from first on, or to the end if count is -1. Truncate(0, 0) leaves
  /// the length as it is. Constant time; the block and the capacity stay. Always true.
  bool Truncate(int first, int count = -1);

protected:
  /// Replaces the block by one of n zeroed elements, all visible. Throws 11001 if there is no memory.
  void Create(int n);

  /// As Create, but the elements hold what the memory held.
  void CreateUncleared(int n);

  /// Frees this vector's block and takes over the block and the view of src, which is then empty.
  void TakeOver(BaseVector &src);

  /// Bytes of an element.
  int GetElementSize() const { return static_cast<int>(sizeof(T)); }

  /// Sets m_pStorage to a block of n elements, or throws. A bare BaseVector cannot create storage and throws
  /// 10001.
  virtual void Alloc(int n);

  T *m_pStorage = nullptr; ///< the owned block, or null; the only pointer that is ever freed
  int m_capacity = 0;      ///< elements in the owned block
  T *m_pData = nullptr;    ///< the first visible element
  int m_length = 0;        ///< visible elements

private:
#if defined(QORN_CHECKED)
  void CheckIndex(int i) const;    // within the view
  void CheckPosition(int i) const; // within it or one past its end
#else
  void CheckIndex(int) const {}
  void CheckPosition(int) const {}
#endif
};

extern template class BaseVector<unsigned char>;
extern template class BaseVector<short>;
extern template class BaseVector<int>;
extern template class BaseVector<unsigned int>;
extern template class BaseVector<float>;
extern template class BaseVector<double>;
extern template class BaseVector<Cplx32>;
extern template class BaseVector<Cplx64>;

} // namespace QORN

#endif
