#ifndef QORN_INFRA_MATRIXOPS_H
#define QORN_INFRA_MATRIXOPS_H

#include "qorn/Export.h"
#include "qorn/infra/BaseMatrix.h"

namespace QORN {

/// What all three matrix classes share: value semantics, copies from and to arrays, and the dump to the
/// standard output.
///
/// M is the matrix class, T its element type. It adds neither a field nor a virtual operation to BaseMatrix.
///
/// - A copy is an independent value of the source's shape.
/// - Assignment frees what there is, allocates anew and copies, whatever the shapes. Assigning a matrix to
///   itself changes nothing.
/// - A move takes over the storage of its source and leaves it empty.
///
/// Where memory is short, or a count is negative, QORNException 11001 is thrown and nothing is printed.
template <class M, class T> class QORN_API MatrixOps : public BaseMatrix<T> {
public:
  ~MatrixOps() override;

  /// Resizes to rows times cols and copies that many elements, which lie row by row. src may lie inside this
  /// matrix's own block if that is large enough.
  void Import(const T *src, int rows, int cols);

  /// Prints the rows on the standard output, each after a newline; of more than 2 n rows only the first n, a
  /// line of dots and the last n. A matrix of numbers of more than one column shows no rows after the dots:
  /// its tail is counted in elements.
  void Dump(int n = 10) const;

protected:
  MatrixOps() = default;
  MatrixOps(int rows, int cols);
  MatrixOps(const MatrixOps &src);
  MatrixOps(MatrixOps &&src) noexcept;
  MatrixOps &operator=(const MatrixOps &src);
  MatrixOps &operator=(MatrixOps &&src) noexcept;

  /// True if the shapes agree and each element equals its counterpart.
  bool IsSame(const MatrixOps &arg) const;

  /// True if arg has as many rows and as many columns.
  bool HasShapeOf(const MatrixOps &arg) const {
    return this->m_rows == arg.m_rows && this->m_cols == arg.m_cols;
  }

private:
  void CopyFrom(const MatrixOps &src);
  void Alloc(int n) override;
};

} // namespace QORN

#endif
