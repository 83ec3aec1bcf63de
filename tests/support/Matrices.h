// Matrices from lists and back, so that a test reads as what goes in and what comes out.
#ifndef QORN_TESTS_SUPPORT_MATRICES_H
#define QORN_TESTS_SUPPORT_MATRICES_H

#include <cstddef>
#include <initializer_list>
#include <type_traits>
#include <utility>
#include <vector>

namespace QORN::test {

template <class M> using MatrixElement = std::remove_reference_t<decltype(std::declval<M &>()[0][0])>;

/// A matrix of the given elements, row by row.
template <class M> M MatrixOf(int rows, int cols, const std::vector<double> &elements) {
  M matrix(rows, cols);
  for (std::size_t i = 0; i < elements.size(); ++i) {
    *matrix.GetPtr(static_cast<int>(i)) = static_cast<MatrixElement<M>>(elements[i]);
  }
  return matrix;
}

/// The elements of a matrix as they lie in its block.
template <class M> std::vector<double> Flat(const M &matrix) {
  return std::vector<double>(matrix.GetPtr(), matrix.GetPtr() + matrix.GetSize());
}

/// The elements of a matrix by row and column.
template <class M> std::vector<std::vector<double>> ByRows(const M &matrix) {
  std::vector<std::vector<double>> rows;
  for (int r = 0; r < matrix.GetRows(); ++r) {
    rows.emplace_back(matrix[r], matrix[r] + matrix.GetCols());
  }
  return rows;
}

} // namespace QORN::test

#endif
