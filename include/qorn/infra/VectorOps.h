#ifndef QORN_INFRA_VECTOROPS_H
#define QORN_INFRA_VECTOROPS_H

#include "qorn/Export.h"
#include "qorn/infra/BaseVector.h"

namespace QORN {

/// What all eight vector classes share: value semantics, filling and the dump to the standard output.
///
/// V is the vector class, T its element type. It adds neither a field nor a virtual operation to BaseVector.
///
/// - A vector of n elements, V(n), starts with all of them zero. A count below 0 is refused like a lack of
///   memory.
/// - A copy is an independent value: it holds the visible elements of its source and has their number for its
///   capacity.
/// - Assignment resizes to the source's length and copies the visible elements; a capacity that is large
///   enough stays, so nothing is then allocated. Assigning a vector to itself changes nothing.
/// - A vector that is constructed by move takes over the block and the view of its source and leaves it
///   empty. Move assignment does so only where a copy would have to allocate; else it copies.
///
/// Where memory is short, two lines on the standard output name the request and QORNException 11001 is
/// thrown; a vector that was to grow is then empty.
template <class V, class T> class QORN_API VectorOps : public BaseVector<T> {
public:
  ~VectorOps() override;

  /// Element i = val for 0 <= i < n, of a vector resized to n. Without a length, or with one below 1, the
  /// length stays and all elements of the view become val.
  void Set(T val, int n = -1);

  /// Prints the elements on the standard output, each on a line of its own with its index; of more than 2 n
  /// elements only the first n and the last n, with a line of dots between them. The text starts with a
  /// newline and does not end with one.
  void Dump(int n = 10) const;

protected:
  VectorOps() = default;
  explicit VectorOps(int n);
  VectorOps(const VectorOps &src);
  VectorOps(VectorOps &&src) noexcept;
  VectorOps &operator=(const VectorOps &src);
  VectorOps &operator=(VectorOps &&src) noexcept;

  /// Resizes to n and copies src[0] to src[n - 1]. src may lie inside this vector's own block.
  void CopyFrom(const T *src, int n);

  /// dst[i] = element i for 0 <= i < n, whatever the length.
  void CopyTo(T *dst, int n) const;

private:
  void Alloc(int n) override;
};

} // namespace QORN

#endif
