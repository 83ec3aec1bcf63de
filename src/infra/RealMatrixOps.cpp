#include "qorn/infra/RealMatrixOps.h"

#include <cmath>

#include "Checks.h"
#include "KernelTraits.h"
#include "MatrixTraits.h"
#include "TextFile.h"
#include "qorn/infra/MatReal32.h"
#include "qorn/infra/MatReal64.h"

namespace QORN {

template <class M, class V, class T> void RealMatrixOps<M, V, T>::Add(const M &arg) {
  checks::Operand("size of arg", arg.GetSize(), this->m_size);
  Kernels<T>::Add(arg.GetPtr(), this->m_pData, this->m_size);
}
template <class M, class V, class T> void RealMatrixOps<M, V, T>::Sub(const M &arg) {
  checks::Operand("size of arg", arg.GetSize(), this->m_size);
  Kernels<T>::Sub(arg.GetPtr(), this->m_pData, this->m_size);
}
template <class M, class V, class T> void RealMatrixOps<M, V, T>::DotMul(const M &arg) {
  checks::Operand("size of arg", arg.GetSize(), this->m_size);
  Kernels<T>::Mul(arg.GetPtr(), this->m_pData, this->m_size);
}
template <class M, class V, class T> void RealMatrixOps<M, V, T>::Div(const M &arg) {
  checks::Operand("size of arg", arg.GetSize(), this->m_size);
  Kernels<T>::Div(arg.GetPtr(), this->m_pData, this->m_size);
}

template <class M, class V, class T> void RealMatrixOps<M, V, T>::Add(T val) {
  Kernels<T>::AddC(val, this->m_pData, this->m_size);
}
template <class M, class V, class T> void RealMatrixOps<M, V, T>::Sub(T val) {
  Kernels<T>::SubC(val, this->m_pData, this->m_size);
}
template <class M, class V, class T> void RealMatrixOps<M, V, T>::Mul(T val) {
  Kernels<T>::MulC(val, this->m_pData, this->m_size);
}
template <class M, class V, class T> void RealMatrixOps<M, V, T>::Div(T val) {
  Kernels<T>::DivC(val, this->m_pData, this->m_size);
}

template <class M, class V, class T> M &RealMatrixOps<M, V, T>::operator+=(const M &arg) {
  Add(arg);
  return static_cast<M &>(*this);
}
template <class M, class V, class T> M &RealMatrixOps<M, V, T>::operator-=(const M &arg) {
  Sub(arg);
  return static_cast<M &>(*this);
}
template <class M, class V, class T> M &RealMatrixOps<M, V, T>::operator*=(const M &arg) {
  DotMul(arg);
  return static_cast<M &>(*this);
}
template <class M, class V, class T> M &RealMatrixOps<M, V, T>::operator/=(const M &arg) {
  Div(arg);
  return static_cast<M &>(*this);
}
template <class M, class V, class T> M &RealMatrixOps<M, V, T>::operator+=(T val) {
  Add(val);
  return static_cast<M &>(*this);
}
template <class M, class V, class T> M &RealMatrixOps<M, V, T>::operator-=(T val) {
  Sub(val);
  return static_cast<M &>(*this);
}
template <class M, class V, class T> M &RealMatrixOps<M, V, T>::operator*=(T val) {
  Mul(val);
  return static_cast<M &>(*this);
}
template <class M, class V, class T> M &RealMatrixOps<M, V, T>::operator/=(T val) {
  Div(val);
  return static_cast<M &>(*this);
}

template <class M, class V, class T> void RealMatrixOps<M, V, T>::Import(int row, const V &v) {
  if (this->m_size < 1 || this->m_ppRows == nullptr) return; // rows of an empty matrix lead anywhere
  T *start = (*this)[row];
  checks::Operand("elements from the row on", static_cast<int>(this->m_pData + this->m_size - start),
                  v.GetSize());
  Kernels<T>::Copy(v.GetPtr(), start, v.GetSize());
}

template <class M, class V, class T> void RealMatrixOps<M, V, T>::Import(const V &v) { Import(0, v); }

template <class M, class V, class T> void RealMatrixOps<M, V, T>::Export(T *dst, int n) const {
  Kernels<T>::Copy(this->m_pData, dst, n);
}

template <class M, class V, class T> bool RealMatrixOps<M, V, T>::IsEqual(const M &arg, T tol) const {
  if (!this->HasShapeOf(arg)) return false;
  for (int i = 0; i < this->m_size; ++i) {
    if (!(tol >= std::abs(this->m_pData[i] - arg.GetPtr()[i]))) return false;
  }
  return true;
}

template <class M, class V, class T> void RealMatrixOps<M, V, T>::Dump(const char *path) const {
  using Traits = MatrixTraits<M>;
  DumpLines(path, true, Traits::kFileModule, this->m_rows, [this](std::FILE *file, int r) {
    for (int c = 0; c < this->m_cols; ++c) Traits::Print(file, (*this)[r][c]);
    std::fprintf(file, "\n");
  });
}

template <class M, class V, class T>
void RealMatrixOps<M, V, T>::DumpCSV(const char *path, bool transpose) const {
  using Traits = MatrixTraits<M>;
  const int lines = transpose ? this->m_cols : this->m_rows;
  const int elements = transpose ? this->m_rows : this->m_cols;
  DumpLines(path, true, Traits::kFileModule, lines, [=, this](std::FILE *file, int i) {
    for (int k = 0; k < elements; ++k) {
      Traits::PrintCsv(file, transpose ? (*this)[k][i] : (*this)[i][k]);
    }
    std::fprintf(file, "\n");
  });
}

template class RealMatrixOps<MatReal32, VecReal32, float>;
template class RealMatrixOps<MatReal64, VecReal64, double>;

static_assert(sizeof(MatReal32) == sizeof(BaseMatrix<float>));
static_assert(sizeof(MatReal64) == sizeof(BaseMatrix<double>));

} // namespace QORN
