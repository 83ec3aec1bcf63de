#include "qorn/infra/IntVectorOps.h"

#include "Checks.h"
#include "KernelTraits.h"
#include "TextFile.h"
#include "VectorTraits.h"
#include "qorn/infra/VecInt16.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecUInt32.h"

namespace QORN {

template <class V, class T> void IntVectorText<V, T>::Import(const char *path, bool twoColumn) {
  const int columns = twoColumn ? 2 : 1;
  ImportRecords<int>(
      *this, path, VectorTraits<V>::kFileModule,
      [columns](std::FILE *file, int(&fields)[3]) { return ScanRecord(file, columns, fields); },
      [columns](const int(&fields)[3]) { return static_cast<T>(fields[columns - 1]); });
}

template <class V, class T> void IntVectorText<V, T>::Dump(const char *path, bool announce) const {
  using Traits = VectorTraits<V>;
  DumpLines(path, announce, Traits::kFileModule, this->m_length,
            [this](std::FILE *file, int i) { Traits::PrintLine(file, i, this->m_pData[i]); });
}

template <class V, class T> bool IntVectorText<V, T>::IsEqual(const V &arg, int tol) const {
  if (this->m_length != arg.GetSize()) return false;
  for (int i = 0; i < this->m_length; ++i) {
    const unsigned wrapped = static_cast<unsigned>(this->m_pData[i]) - static_cast<unsigned>(arg.GetPtr()[i]);
    const long long difference = static_cast<int>(wrapped);
    if (difference > tol || -difference > tol) return false;
  }
  return true;
}

template <class V, class T> void IntVectorOps<V, T>::Add(const V &arg) {
  checks::Operand("length of arg", arg.GetSize(), this->m_length);
  Kernels<T>::Add(arg.GetPtr(), this->m_pData, this->m_length);
}
template <class V, class T> void IntVectorOps<V, T>::Sub(const V &arg) {
  checks::Operand("length of arg", arg.GetSize(), this->m_length);
  Kernels<T>::Sub(arg.GetPtr(), this->m_pData, this->m_length);
}
template <class V, class T> void IntVectorOps<V, T>::Mul(const V &arg) {
  checks::Operand("length of arg", arg.GetSize(), this->m_length);
  Kernels<T>::Mul(arg.GetPtr(), this->m_pData, this->m_length);
}

template <class V, class T> void IntVectorOps<V, T>::Add(T val) {
  Kernels<T>::AddC(val, this->m_pData, this->m_length);
}
template <class V, class T> void IntVectorOps<V, T>::Sub(T val) {
  Kernels<T>::SubC(val, this->m_pData, this->m_length);
}
template <class V, class T> void IntVectorOps<V, T>::Mul(T val) {
  Kernels<T>::MulC(val, this->m_pData, this->m_length);
}

template <class V, class T> V &IntVectorOps<V, T>::operator+=(const V &arg) {
  Add(arg);
  return static_cast<V &>(*this);
}
template <class V, class T> V &IntVectorOps<V, T>::operator-=(const V &arg) {
  Sub(arg);
  return static_cast<V &>(*this);
}
template <class V, class T> V &IntVectorOps<V, T>::operator*=(const V &arg) {
  Mul(arg);
  return static_cast<V &>(*this);
}
template <class V, class T> V &IntVectorOps<V, T>::operator+=(T val) {
  Add(val);
  return static_cast<V &>(*this);
}
template <class V, class T> V &IntVectorOps<V, T>::operator-=(T val) {
  Sub(val);
  return static_cast<V &>(*this);
}
template <class V, class T> V &IntVectorOps<V, T>::operator*=(T val) {
  Mul(val);
  return static_cast<V &>(*this);
}

// The kernels leave the result of an empty vector unwritten; it is then 0.

template <class V, class T> T IntVectorOps<V, T>::Max() const {
  T value = 0;
  Kernels<T>::Max(this->m_pData, this->m_length, &value);
  return value;
}
template <class V, class T> T IntVectorOps<V, T>::Min() const {
  T value = 0;
  Kernels<T>::Min(this->m_pData, this->m_length, &value);
  return value;
}

template <class V, class T> void IntVectorOps<V, T>::Max(T &value, int &index) const {
  value = 0;
  index = 0;
  Kernels<T>::MaxIndx(this->m_pData, this->m_length, &value, &index);
}
template <class V, class T> void IntVectorOps<V, T>::Min(T &value, int &index) const {
  value = 0;
  index = 0;
  Kernels<T>::MinIndx(this->m_pData, this->m_length, &value, &index);
}

template <class V, class T> T IntVectorOps<V, T>::Sum() const {
  T sum = 0;
  Kernels<T>::Sum(this->m_pData, this->m_length, &sum);
  return sum;
}

template <class V, class T> void IntVectorOps<V, T>::Import(const T *src, int n) { this->CopyFrom(src, n); }

template <class V, class T> void IntVectorOps<V, T>::Export(T *dst, int n) const { this->CopyTo(dst, n); }

template class IntVectorText<VecInt16, short>;
template class IntVectorText<VecInt32, int>;
template class IntVectorText<VecUInt32, unsigned int>;
template class IntVectorOps<VecInt16, short>;
template class IntVectorOps<VecInt32, int>;

} // namespace QORN
