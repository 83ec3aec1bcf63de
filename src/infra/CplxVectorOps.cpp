#include "qorn/infra/CplxVectorOps.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "Checks.h"
#include "Equality.h"
#include "KernelTraits.h"
#include "TextFile.h"
#include "VectorTraits.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"

namespace QORN {

namespace {

// Calls visit(first, squares, count) for the squared magnitudes of src, a stack buffer at a time, in order.
template <class S, class T, class Visit> void ForSquares(const T *src, int length, Visit visit) {
  constexpr int kBlock = 512;
  S squares[kBlock];
  for (int first = 0, count; length - first > 0; first += count) {
    count = std::min(kBlock, length - first);
    Kernels<T>::MagSqr(src + first, squares, count);
    visit(first, squares, count);
  }
}

// Where the largest square is. Nothing that is not above 0 wins against element 0.
template <class S, class T> int LargestOf(const T *src, int length) {
  S best = 0;
  int winner = 0;
  ForSquares<S>(src, length, [&](int first, const S *squares, int count) {
    S largest;
    int index;
    Kernels<S>::MaxIndx(squares, count, &largest, &index);
    if (largest > best) {
      best = largest;
      winner = first + index;
    }
  });
  return winner;
}

// Where the smallest square is. An element 0 that is not a number stays, since nothing compares below it.
template <class S, class T> int SmallestOf(const T *src, int length) {
  S best = 0;
  int winner = 0;
  ForSquares<S>(src, length, [&](int first, const S *squares, int count) {
    if (first == 0) best = squares[0];
    S smallest;
    int index;
    Kernels<S>::MinIndx(squares, count, &smallest, &index);
    if (best > smallest) {
      best = smallest;
      winner = first + index;
    }
  });
  return winner;
}

} // namespace

template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Add(const V &arg) {
  checks::Operand("length of arg", arg.GetSize(), this->m_length);
  Kernels<T>::Add(arg.GetPtr(), this->m_pData, this->m_length);
}
template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Sub(const V &arg) {
  checks::Operand("length of arg", arg.GetSize(), this->m_length);
  Kernels<T>::Sub(arg.GetPtr(), this->m_pData, this->m_length);
}
template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Mul(const V &arg) {
  checks::Operand("length of arg", arg.GetSize(), this->m_length);
  Kernels<T>::Mul(arg.GetPtr(), this->m_pData, this->m_length);
}
template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Div(const V &arg) {
  checks::Operand("length of arg", arg.GetSize(), this->m_length);
  Kernels<T>::Div(arg.GetPtr(), this->m_pData, this->m_length);
}

template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Add(T val) {
  Kernels<T>::AddC(val, this->m_pData, this->m_length);
}
template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Sub(T val) {
  Kernels<T>::SubC(val, this->m_pData, this->m_length);
}
template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Mul(T val) {
  Kernels<T>::MulC(val, this->m_pData, this->m_length);
}
template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Div(T val) {
  Kernels<T>::DivC(val, this->m_pData, this->m_length);
}
template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Mul(S val) {
  ForScalars(this->m_length, [&](int first, int scalars) {
    Kernels<S>::MulC(val, reinterpret_cast<S *>(this->m_pData + first), scalars);
  });
}

template <class V, class T, class S, class R> V &CplxVectorOps<V, T, S, R>::operator+=(const V &arg) {
  Add(arg);
  return static_cast<V &>(*this);
}
template <class V, class T, class S, class R> V &CplxVectorOps<V, T, S, R>::operator-=(const V &arg) {
  Sub(arg);
  return static_cast<V &>(*this);
}
template <class V, class T, class S, class R> V &CplxVectorOps<V, T, S, R>::operator*=(const V &arg) {
  Mul(arg);
  return static_cast<V &>(*this);
}
template <class V, class T, class S, class R> V &CplxVectorOps<V, T, S, R>::operator/=(const V &arg) {
  Div(arg);
  return static_cast<V &>(*this);
}
template <class V, class T, class S, class R> V &CplxVectorOps<V, T, S, R>::operator+=(T val) {
  Add(val);
  return static_cast<V &>(*this);
}
template <class V, class T, class S, class R> V &CplxVectorOps<V, T, S, R>::operator-=(T val) {
  Sub(val);
  return static_cast<V &>(*this);
}
template <class V, class T, class S, class R> V &CplxVectorOps<V, T, S, R>::operator*=(T val) {
  Mul(val);
  return static_cast<V &>(*this);
}
template <class V, class T, class S, class R> V &CplxVectorOps<V, T, S, R>::operator/=(T val) {
  Div(val);
  return static_cast<V &>(*this);
}
template <class V, class T, class S, class R> V &CplxVectorOps<V, T, S, R>::operator*=(S val) {
  Mul(val);
  return static_cast<V &>(*this);
}

template <class V, class T, class S, class R>
void CplxVectorOps<V, T, S, R>::Max(T &value, int &index) const {
  index = LargestOf<S>(this->m_pData, this->m_length);
  value = this->m_length > 0 ? this->m_pData[index] : T{};
}
template <class V, class T, class S, class R>
void CplxVectorOps<V, T, S, R>::Min(T &value, int &index) const {
  index = SmallestOf<S>(this->m_pData, this->m_length);
  value = this->m_length > 0 ? this->m_pData[index] : T{};
}

template <class V, class T, class S, class R> T CplxVectorOps<V, T, S, R>::Max() const {
  T value;
  int index;
  Max(value, index);
  return value;
}
template <class V, class T, class S, class R> T CplxVectorOps<V, T, S, R>::Min() const {
  T value;
  int index;
  Min(value, index);
  return value;
}

template <class V, class T, class S, class R> T CplxVectorOps<V, T, S, R>::Sum() const {
  T sum{};
  Kernels<T>::Sum(this->m_pData, this->m_length, &sum);
  return sum;
}

template <class V, class T, class S, class R> T CplxVectorOps<V, T, S, R>::Mean() const {
  T mean{};
  Kernels<T>::Mean(this->m_pData, this->m_length, &mean);
  return mean;
}

template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::GetReal(R &out) const {
  out.Resize(this->m_length);
  Kernels<T>::Real(this->m_pData, out.GetPtr(), this->m_length);
}

template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::GetImag(R &out) const {
  out.Resize(this->m_length);
  Kernels<T>::Imag(this->m_pData, out.GetPtr(), this->m_length);
}

template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Import(const R &re) {
  this->Resize(re.GetSize());
  const S *src = re.GetPtr();
  for (int i = 0; i < this->m_length; ++i) this->m_pData[i] = {src[i], 0};
}

template <class V, class T, class S, class R>
void CplxVectorOps<V, T, S, R>::Import(const R &re, const R &im) {
  checks::Operand("length of im", im.GetSize(), re.GetSize());
  Import(re.GetPtr(), im.GetPtr(), re.GetSize());
}

template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Import(const T *src, int n) {
  this->CopyFrom(src, n);
}

template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Import(const S *src, int n) {
  this->CopyFrom(reinterpret_cast<const T *>(src), n);
}

template <class V, class T, class S, class R>
void CplxVectorOps<V, T, S, R>::Import(const S *re, const S *im, int n) {
  this->Resize(n);
  Kernels<T>::RealToCplx(re, im, this->m_pData, n);
}

template <class V, class T, class S, class R>
void CplxVectorOps<V, T, S, R>::Import(const char *path, bool threeColumn) {
  using Traits = VectorTraits<V>;
  const int columns = threeColumn ? 3 : 2;
  ImportRecords<S>(
      *this, path, Traits::kFileModule,
      [columns](std::FILE *file, S(&fields)[3]) {
        return ScanRecord(file, Traits::kScan[columns - 1], columns, fields);
      },
      [columns](const S(&fields)[3]) {
        return T{fields[columns - 2], fields[columns - 1]};
      });
}

template <class V, class T, class S, class R> void CplxVectorOps<V, T, S, R>::Export(T *dst, int n) const {
  this->CopyTo(dst, n);
}

template <class V, class T, class S, class R>
void CplxVectorOps<V, T, S, R>::Export(S *re, S *im, int n) const {
  Kernels<T>::Real(this->m_pData, re, n);
  Kernels<T>::Imag(this->m_pData, im, n);
}

template <class V, class T, class S, class R>
void CplxVectorOps<V, T, S, R>::Dump(const char *path, bool announce) const {
  using Traits = VectorTraits<V>;
  DumpLines(path, announce, Traits::kFileModule, this->m_length,
            [this](std::FILE *file, int i) { Traits::PrintLine(file, i, this->m_pData[i]); });
}

template <class V, class T, class S, class R>
bool CplxVectorOps<V, T, S, R>::operator==(const CplxVectorOps &arg) const {
  return this->m_length == arg.m_length &&
         AllEqual(reinterpret_cast<const S *>(this->m_pData), reinterpret_cast<const S *>(arg.m_pData),
                  std::ptrdiff_t{2} * this->m_length);
}

template <class V, class T, class S, class R>
bool CplxVectorOps<V, T, S, R>::IsEqual(const V &arg, S tol) const {
  if (this->m_length != arg.GetSize()) return false;
  for (int i = 0; i < this->m_length; ++i) {
    const T x = this->m_pData[i];
    const T y = arg.GetPtr()[i];
    if (tol >= std::abs(x.im - y.im) && tol >= std::abs(x.re - y.re)) continue;
    VectorTraits<V>::PrintMismatch(i, x, y, tol);
    return false;
  }
  return true;
}

template class CplxVectorOps<VecCplx32, Cplx32, float, VecReal32>;
template class CplxVectorOps<VecCplx64, Cplx64, double, VecReal64>;

} // namespace QORN
