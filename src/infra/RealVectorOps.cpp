#include "qorn/infra/RealVectorOps.h"

#include <cmath>

#include "Checks.h"
#include "Equality.h"
#include "KernelTraits.h"
#include "TextFile.h"
#include "VectorTraits.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"

namespace QORN {

namespace {

// A count of -1 is the rest.
int CountFrom(int first, int count, int length) {
  if (count == -1) count = length - first;
  checks::Range(first, count, length);
  return count;
}

// The kernels leave the result of an empty range unwritten; here and below it is then 0.
template <class T> T MaxOf(const T *src, int count) {
  T value = 0;
  Kernels<T>::Max(src, count, &value);
  return value;
}
template <class T> T MinOf(const T *src, int count) {
  T value = 0;
  Kernels<T>::Min(src, count, &value);
  return value;
}

} // namespace

template <class V, class T> void RealVectorOps<V, T>::Ramp(int n, T offset, T slope) {
  this->Resize(n);
  Kernels<T>::VectorSlope(this->m_pData, n, offset, slope);
}

template <class V, class T> void RealVectorOps<V, T>::Add(const V &arg) {
  checks::Operand("length of arg", arg.GetSize(), this->m_length);
  Kernels<T>::Add(arg.GetPtr(), this->m_pData, this->m_length);
}
template <class V, class T> void RealVectorOps<V, T>::Sub(const V &arg) {
  checks::Operand("length of arg", arg.GetSize(), this->m_length);
  Kernels<T>::Sub(arg.GetPtr(), this->m_pData, this->m_length);
}
template <class V, class T> void RealVectorOps<V, T>::Mul(const V &arg) {
  checks::Operand("length of arg", arg.GetSize(), this->m_length);
  Kernels<T>::Mul(arg.GetPtr(), this->m_pData, this->m_length);
}
template <class V, class T> void RealVectorOps<V, T>::Div(const V &arg) {
  checks::Operand("length of arg", arg.GetSize(), this->m_length);
  Kernels<T>::Div(arg.GetPtr(), this->m_pData, this->m_length);
}

template <class V, class T> void RealVectorOps<V, T>::Add(T val) {
  Kernels<T>::AddC(val, this->m_pData, this->m_length);
}
template <class V, class T> void RealVectorOps<V, T>::Sub(T val) {
  Kernels<T>::SubC(val, this->m_pData, this->m_length);
}
template <class V, class T> void RealVectorOps<V, T>::Mul(T val) {
  Kernels<T>::MulC(val, this->m_pData, this->m_length);
}
template <class V, class T> void RealVectorOps<V, T>::Div(T val) {
  Kernels<T>::DivC(val, this->m_pData, this->m_length);
}

template <class V, class T> V &RealVectorOps<V, T>::operator+=(const V &arg) {
  Add(arg);
  return static_cast<V &>(*this);
}
template <class V, class T> V &RealVectorOps<V, T>::operator-=(const V &arg) {
  Sub(arg);
  return static_cast<V &>(*this);
}
template <class V, class T> V &RealVectorOps<V, T>::operator*=(const V &arg) {
  Mul(arg);
  return static_cast<V &>(*this);
}
template <class V, class T> V &RealVectorOps<V, T>::operator/=(const V &arg) {
  Div(arg);
  return static_cast<V &>(*this);
}
template <class V, class T> V &RealVectorOps<V, T>::operator+=(T val) {
  Add(val);
  return static_cast<V &>(*this);
}
template <class V, class T> V &RealVectorOps<V, T>::operator-=(T val) {
  Sub(val);
  return static_cast<V &>(*this);
}
template <class V, class T> V &RealVectorOps<V, T>::operator*=(T val) {
  Mul(val);
  return static_cast<V &>(*this);
}
template <class V, class T> V &RealVectorOps<V, T>::operator/=(T val) {
  Div(val);
  return static_cast<V &>(*this);
}

template <class V, class T> T RealVectorOps<V, T>::Max() const {
  return MaxOf(this->m_pData, this->m_length);
}
template <class V, class T> T RealVectorOps<V, T>::Min() const {
  return MinOf(this->m_pData, this->m_length);
}

template <class V, class T> T RealVectorOps<V, T>::Max(int first, int count) const {
  count = CountFrom(first, count, this->m_length);
  return MaxOf(this->m_pData + first, count);
}
template <class V, class T> T RealVectorOps<V, T>::Min(int first, int count) const {
  count = CountFrom(first, count, this->m_length);
  return MinOf(this->m_pData + first, count);
}

template <class V, class T> void RealVectorOps<V, T>::Max(T &value, int &index) const {
  value = 0;
  index = 0;
  Kernels<T>::MaxIndx(this->m_pData, this->m_length, &value, &index);
}
template <class V, class T> void RealVectorOps<V, T>::Min(T &value, int &index) const {
  value = 0;
  index = 0;
  Kernels<T>::MinIndx(this->m_pData, this->m_length, &value, &index);
}

template <class V, class T> void RealVectorOps<V, T>::Max(T &value, int &index, int first, int count) const {
  count = CountFrom(first, count, this->m_length);
  value = 0;
  index = 0;
  Kernels<T>::MaxIndx(this->m_pData + first, count, &value, &index);
  index += first;
}
template <class V, class T> void RealVectorOps<V, T>::Min(T &value, int &index, int first, int count) const {
  count = CountFrom(first, count, this->m_length);
  value = 0;
  index = 0;
  Kernels<T>::MinIndx(this->m_pData + first, count, &value, &index);
  index += first;
}

template <class V, class T> T RealVectorOps<V, T>::Sum() const {
  T sum = 0;
  Kernels<T>::Sum(this->m_pData, this->m_length, &sum);
  return sum;
}

template <class V, class T> T RealVectorOps<V, T>::Mean() const {
  T mean = 0;
  Kernels<T>::Mean(this->m_pData, this->m_length, &mean);
  return mean;
}

template <class V, class T> T RealVectorOps<V, T>::StdDev() const {
  T deviation = 0;
  Kernels<T>::StdDev(this->m_pData, this->m_length, &deviation);
  return deviation;
}

template <class V, class T> T RealVectorOps<V, T>::Var() const {
  const T deviation = StdDev();
  return deviation * deviation;
}

template <class V, class T> void RealVectorOps<V, T>::Import(const T *src, int n) { this->CopyFrom(src, n); }

template <class V, class T> void RealVectorOps<V, T>::Import(const char *path, bool twoColumn) {
  Import(path, twoColumn ? 2 : 1, 1);
}

template <class V, class T> void RealVectorOps<V, T>::Import(const char *path, int columns, int column) {
  using Traits = VectorTraits<V>;
  if (columns < 1 || columns > 3) columns = 1;
  if (column < 0 || column >= columns) column = 0;
  ImportRecords<T>(
      *this, path, Traits::kFileModule,
      [columns](std::FILE *file, T(&fields)[3]) {
        return ScanRecord(file, Traits::kScan[columns - 1], columns, fields);
      },
      [column](const T(&fields)[3]) { return fields[column]; });
}

template <class V, class T> void RealVectorOps<V, T>::Export(T *dst, int n) const { this->CopyTo(dst, n); }

template <class V, class T> void RealVectorOps<V, T>::Dump(const char *path, bool announce) const {
  using Traits = VectorTraits<V>;
  DumpLines(path, announce, Traits::kFileModule, this->m_length,
            [this](std::FILE *file, int i) { Traits::PrintLine(file, i, this->m_pData[i]); });
}

template <class V, class T> bool RealVectorOps<V, T>::operator==(const RealVectorOps &arg) const {
  return this->m_length == arg.m_length && AllEqual(this->m_pData, arg.m_pData, this->m_length);
}

template <class V, class T> bool RealVectorOps<V, T>::IsWithin(const V &arg, T tol) const {
  for (int i = 0; i < this->m_length; ++i) {
    const T x = this->m_pData[i];
    const T y = arg.GetPtr()[i];
    if (tol >= std::abs(x - y)) continue;
    VectorTraits<V>::PrintMismatch(i, x, y, tol);
    return false;
  }
  return true;
}

template class RealVectorOps<VecReal32, float>;
template class RealVectorOps<VecReal64, double>;

} // namespace QORN
