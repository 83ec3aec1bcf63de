#ifndef QORN_INFRA_BASEMATRIX_H
#define QORN_INFRA_BASEMATRIX_H

#include "qorn/Export.h"

namespace QORN {

/// The storage of all matrices: an owned, 64-byte-aligned block with a capacity, row by row without gaps, and
/// a table of row pointers, so that m[r][c] is element c of row r.
///
/// T is one of float, double and unsigned char. Objects of BaseMatrix are never used by themselves: the
/// matrix classes derive from it and supply Alloc. Row r starts r * GetCols() elements after GetPtr(); row
/// pointers are valid while GetSize() is not zero.
///
/// Indices are not checked; a build with QORN_CHECKED asserts them. One thread at a time may change a matrix.
template <class T> class QORN_API BaseMatrix {
public:
  /// An empty matrix.
  BaseMatrix() = default;

  /// Copies the fields and neither the block nor the row table: a bare base copy shares those of its source
  /// and does not own them. The matrix classes define deep copies.
  BaseMatrix(const BaseMatrix &) = default;
  BaseMatrix &operator=(const BaseMatrix &) = default;

  virtual ~BaseMatrix();

  /// The number of rows.
  int GetRows() const { return m_rows; }

  /// The number of columns.
  int GetCols() const { return m_cols; }

  /// The number of elements that the owned block holds.
  int GetCapacity() const { return m_capacity; }

  /// The number of elements, rows times columns.
  int GetSize() const { return m_size; }

  /// rows = the number of rows, cols = the number of columns.
  void GetSize(int &rows, int &cols) const {
    rows = m_rows;
    cols = m_cols;
  }

  /// The first element of a row. The form for a matrix that may be changed gives the entry of the row table
  /// itself: rows change places by an exchange of their entries, until the next Resize. What works on whole
  /// matrices takes the elements as they lie in the block.
  ///@{
  T *operator[](int row) const {
    CheckRow(row);
    return m_ppRows[row];
  }
  T *&operator[](int row) {
    CheckRow(row);
    return m_ppRows[row];
  }
  ///@}

  /// The address of element i of the block, counted through all rows; null for an empty matrix and i = 0.
  T *GetPtr(int i = 0) const { return m_pData + i; }

  /// Gives the matrix its rows and columns. Where the elements fit into the block and the rows are not more
  /// than before, nothing is allocated and the elements stay where they lie in the block: they are not
  /// rearranged to the new width. Else block and row table are replaced, and the elements hold what the
  /// memory held. Throws QORNException 11001 if there is no memory, or a negative count is to get
  /// a block; the matrix then has its new shape but no storage, until it is resized or deleted.
  ///
  /// Negative counts fit as no elements do: unless rows is more than before, they are kept, with a negative
  /// size, nothing is thrown, and operations act as on an empty matrix; but a copy throws 11001.
  void Resize(int rows, int cols);

  /// Clears all elements.
  void SetZero();

  /// Frees the block and the row table; the matrix is then empty.
  void Del();

protected:
  /// Replaces the block and the row table by those of rows times cols elements, which hold what the memory
  /// held. Throws 11001 if there is no memory.
  void Create(int rows, int cols);

  /// Del under another name.
  void Dealloc() { Del(); }

  /// Fills the row table for the present shape; nothing for an empty matrix.
  void SetupPoints();

  /// Frees this matrix's storage and takes over that of src, which is then empty.
  void TakeOver(BaseMatrix &src);

  /// Sets m_ppRows to a table of m_rows pointers, or to null if there is no memory.
  void AllocRows();

  /// Bytes of an element.
  int GetElementSize() const { return static_cast<int>(sizeof(T)); }

  /// Sets m_pStorage to a block of n elements and m_ppRows to a table of m_rows pointers, or throws. A bare
  /// BaseMatrix cannot create storage and throws 10001.
  virtual void Alloc(int n);

  T *m_pStorage = nullptr; ///< the owned block, or null
  int m_capacity = 0;      ///< elements in the owned block
  T *m_pData = nullptr;    ///< the first element: the block
  int m_size = 0;          ///< rows times columns
  T **m_ppRows = nullptr;  ///< the owned table of row pointers, or null
  int m_rows = 0;          ///< rows
  int m_cols = 0;          ///< columns

private:
#if defined(QORN_CHECKED)
  void CheckRow(int row) const;
#else
  void CheckRow(int) const {}
#endif
};

extern template class BaseMatrix<unsigned char>;
extern template class BaseMatrix<float>;
extern template class BaseMatrix<double>;

} // namespace QORN

#endif
