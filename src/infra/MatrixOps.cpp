#include "qorn/infra/MatrixOps.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

#include "Checks.h"
#include "Equality.h"
#include "Errors.h"
#include "KernelTraits.h"
#include "MatrixTraits.h"
#include "qorn/infra/MatReal32.h"
#include "qorn/infra/MatReal64.h"

namespace QORN {

template <class M, class T> MatrixOps<M, T>::MatrixOps(int rows, int cols) {
  try {
    this->Create(rows, cols);
  } catch (...) {
    this->Del(); // a block whose row table found no memory: no destructor will run
    throw;
  }
}

template <class M, class T>
MatrixOps<M, T>::MatrixOps(const MatrixOps &src) : MatrixOps(src.m_rows, src.m_cols) {
  Kernels<T>::Copy(src.m_pData, this->m_pData, this->m_size);
}

template <class M, class T> MatrixOps<M, T>::MatrixOps(MatrixOps &&src) noexcept : BaseMatrix<T>() {
  this->TakeOver(src);
}

template <class M, class T> MatrixOps<M, T>::~MatrixOps() { this->Del(); }

template <class M, class T> MatrixOps<M, T> &MatrixOps<M, T>::operator=(const MatrixOps &src) {
  if (this == &src) return *this;
  this->Create(src.m_rows, src.m_cols);
  Kernels<T>::Copy(src.m_pData, this->m_pData, this->m_size);
  return *this;
}

template <class M, class T> MatrixOps<M, T> &MatrixOps<M, T>::operator=(MatrixOps &&src) noexcept {
  if (this != &src) this->TakeOver(src);
  return *this;
}

template <class M, class T> void MatrixOps<M, T>::Alloc(int n) {
  if (n == 0) return;
  using Traits = MatrixTraits<M>;
  this->m_pStorage = Traits::Malloc(n);
  if (this->m_pStorage == nullptr) Throw(errors::kMemoryAllocation, Traits::kAllocModule);
  this->AllocRows();
  if (this->m_ppRows == nullptr) Throw(errors::kMemoryAllocation, Traits::kAllocModule);
}

template <class M, class T> void MatrixOps<M, T>::Import(const T *src, int rows, int cols) {
  this->Resize(rows, cols);
  Kernels<T>::Copy(src, this->m_pData, this->m_size);
}

template <class M, class T> void MatrixOps<M, T>::Dump(int n) const {
  using Traits = MatrixTraits<M>;
  const std::int64_t rows = this->m_rows;
  const auto print = [this](std::int64_t first, std::int64_t last) {
    for (std::int64_t r = first; r < last; ++r) {
      std::printf("\n");
      if (this->m_ppRows == nullptr) continue;
      const T *row = this->m_ppRows[r];
      for (int c = 0; c < this->m_cols; ++c) Traits::Print(stdout, row[c]);
    }
  };
  if (rows <= 2 * std::int64_t{n}) return print(0, rows);
  print(0, n);
  std::printf("%s", Traits::kSeparator);
  const std::int64_t tail = Traits::Tail(this->m_rows, this->m_size, n);
  print(std::max<std::int64_t>(tail, n), std::min(tail + n, rows));
}

template <class M, class T> bool MatrixOps<M, T>::IsSame(const MatrixOps &arg) const {
  return HasShapeOf(arg) && AllEqual(this->m_pData, arg.m_pData, this->m_size);
}

template class MatrixOps<MatReal32, float>;
template class MatrixOps<MatReal64, double>;
template class MatrixOps<BitVector, unsigned char>;

} // namespace QORN
