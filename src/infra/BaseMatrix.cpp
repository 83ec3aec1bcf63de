#include "qorn/infra/BaseMatrix.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "Checks.h"
#include "Errors.h"
#include "qorn/infra/QORNMalloc.h"

namespace QORN {

namespace {

constexpr const char *kModule = "infra/Matrix";

// Rows times columns. What an int cannot hold is the largest int, and what two negative counts would make is
// negative: the allocation refuses both.
int SizeOf(int rows, int cols) {
  const std::int64_t size = std::int64_t{rows} * cols;
  if (rows < 0 && cols < 0) return -1;
  constexpr std::int64_t kLeast = std::numeric_limits<int>::min(), kMost = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(size, kLeast, kMost));
}

} // namespace

// The classes with storage of their own free it in their destructors: a bare base copy shares its source's
// block.
template <class T> BaseMatrix<T>::~BaseMatrix() = default;

template <class T> void BaseMatrix<T>::Del() {
  ::operator delete(m_ppRows);
  QORNMalloc::Delete(m_pStorage);
  m_pStorage = nullptr;
  m_capacity = 0;
  m_pData = nullptr;
  m_size = 0;
  m_ppRows = nullptr;
  m_rows = 0;
  m_cols = 0;
}

template <class T> void BaseMatrix<T>::Create(int rows, int cols) {
  Del();
  m_rows = rows;
  m_cols = cols;
  m_size = SizeOf(rows, cols);
  Alloc(m_size);
  m_pData = m_pStorage;
  m_capacity = m_size;
  SetupPoints();
}

template <class T> void BaseMatrix<T>::AllocRows() {
  const std::size_t bytes = sizeof(T *) * static_cast<std::size_t>(m_rows);
  m_ppRows = static_cast<T **>(::operator new(bytes, std::nothrow));
}

template <class T> void BaseMatrix<T>::SetupPoints() {
  if (m_size < 1) return;
  T *row = m_pData;
  for (int r = 0; r < m_rows; ++r, row += m_cols) m_ppRows[r] = row;
}

template <class T> void BaseMatrix<T>::TakeOver(BaseMatrix &src) {
  Del();
  m_pStorage = std::exchange(src.m_pStorage, nullptr);
  m_capacity = std::exchange(src.m_capacity, 0);
  m_pData = std::exchange(src.m_pData, nullptr);
  m_size = std::exchange(src.m_size, 0);
  m_ppRows = std::exchange(src.m_ppRows, nullptr);
  m_rows = std::exchange(src.m_rows, 0);
  m_cols = std::exchange(src.m_cols, 0);
}

// The row table has as many entries as there were rows when it was made, or more: so rows that grow beyond
// the present number need another one, though the elements may fit.
template <class T> void BaseMatrix<T>::Resize(int rows, int cols) {
  const int size = SizeOf(rows, cols);
  if (size > m_capacity || rows > m_rows) return Create(rows, cols);
  m_size = size;
  m_rows = rows;
  m_cols = cols;
  m_pData = m_pStorage;
  SetupPoints();
}

template <class T> void BaseMatrix<T>::SetZero() {
  if (m_size > 0 && m_pData != nullptr) {
    std::memset(m_pData, 0, sizeof(T) * static_cast<std::size_t>(m_size));
  }
}

template <class T> void BaseMatrix<T>::Alloc(int) { Throw(errors::kUnexpectedSoftware, kModule); }

#if defined(QORN_CHECKED)
template <class T> void BaseMatrix<T>::CheckRow(int row) const {
  checks::Require(row >= 0 && row < m_rows, "row", row, "rows", m_rows);
}
#endif

template class BaseMatrix<unsigned char>;
template class BaseMatrix<float>;
template class BaseMatrix<double>;

} // namespace QORN
