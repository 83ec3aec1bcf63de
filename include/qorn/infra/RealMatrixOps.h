#ifndef QORN_INFRA_REALMATRIXOPS_H
#define QORN_INFRA_REALMATRIXOPS_H

#include "qorn/Export.h"
#include "qorn/infra/MatrixOps.h"

namespace QORN {

/// What MatReal32 and MatReal64 share word for word: M is the matrix class, V the vector class of the same
/// element type T.
///
/// Arithmetic changes this matrix in place, element by element over the whole block in one kernel call, and
/// allocates nothing. Of the operand GetSize() elements are read as they lie in its block, whatever its
/// shape; that it has so many is asserted by a build with QORN_CHECKED. The operand may be this matrix
/// itself. For the product of matrices see MathUtils::Mul.
template <class M, class V, class T> class QORN_API RealMatrixOps : public MatrixOps<M, T> {
public:
  /// this[i] = this[i] + arg[i]. The operators return this matrix, the named forms nothing.
  ///@{
  M &operator+=(const M &arg);
  void Add(const M &arg);
  ///@}

  /// this[i] = this[i] - arg[i].
  ///@{
  M &operator-=(const M &arg);
  void Sub(const M &arg);
  ///@}

  /// this[i] = this[i] * arg[i], element by element.
  ///@{
  M &operator*=(const M &arg);
  void DotMul(const M &arg);
  ///@}

  /// this[i] = this[i] / arg[i]. If a divisor is 0, its element holds the IEEE result and QORNException 12001
  /// is thrown after all elements are written.
  ///@{
  M &operator/=(const M &arg);
  void Div(const M &arg);
  ///@}

  /// this[i] = this[i] + val.
  ///@{
  M &operator+=(T val);
  void Add(T val);
  ///@}

  /// this[i] = this[i] - val.
  ///@{
  M &operator-=(T val);
  void Sub(T val);
  ///@}

  /// this[i] = this[i] * val.
  ///@{
  M &operator*=(T val);
  void Mul(T val);
  ///@}

  /// this[i] = this[i] * (1 / val), the reciprocal formed once. A val of 0 leaves the matrix as it is,
  /// without any report.
  ///@{
  M &operator/=(T val);
  void Div(T val);
  ///@}

  using MatrixOps<M, T>::Import;

  /// Copies all of v to the start of a row, or of row 0. The shape stays, and v must end within the block: a
  /// v longer than the row runs on into the rows behind it. An empty matrix stays as it is.
  ///@{
  void Import(int row, const V &v);
  void Import(const V &v);
  ///@}

  /// dst[i] = element i of the block for 0 <= i < n, whatever the size.
  void Export(T *dst, int n) const;

  /// True if the shapes agree and each element equals its counterpart exactly: not-a-number equals nothing,
  /// 0 equals -0. Two empty matrices of one shape are equal.
  bool operator==(const RealMatrixOps &arg) const { return this->IsSame(arg); }
  bool operator!=(const RealMatrixOps &arg) const { return !this->IsSame(arg); }

  /// True if the shapes agree and |this[i] - arg[i]| <= tol for all elements; not-a-number fails, and so does
  /// a negative tol. Prints nothing.
  bool IsEqual(const M &arg, T tol) const;

  using MatrixOps<M, T>::Dump;

  /// Writes a text file with a line for each row, a blank after each element; "====", the path and " saved"
  /// follow on the standard output. Throws QORNException 13001 if the file cannot be opened.
  void Dump(const char *path) const;

  /// Writes a text file with a line for each row, or for each column if transpose is true, a comma and a
  /// blank after each element; the rest as Dump(path).
  void DumpCSV(const char *path, bool transpose = false) const;

protected:
  RealMatrixOps() = default;
  using MatrixOps<M, T>::MatrixOps;
};

} // namespace QORN

#endif
