#include "qorn/infra/VectorOps.h"

#include "Errors.h"
#include "KernelTraits.h"
#include "VectorTraits.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt16.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/infra/VecUInt32.h"
#include "qorn/infra/VecUInt8.h"

namespace QORN {

template <class V, class T> VectorOps<V, T>::VectorOps(int n) { this->Create(n); }

template <class V, class T> VectorOps<V, T>::VectorOps(const VectorOps &src) : BaseVector<T>() {
  this->CreateUncleared(src.m_length);
  Kernels<T>::Copy(src.m_pData, this->m_pData, this->m_length);
}

template <class V, class T> VectorOps<V, T>::VectorOps(VectorOps &&src) noexcept : BaseVector<T>() {
  this->TakeOver(src);
}

template <class V, class T> VectorOps<V, T>::~VectorOps() { this->Release(); }

template <class V, class T> VectorOps<V, T> &VectorOps<V, T>::operator=(const VectorOps &src) {
  if (this != &src) CopyFrom(src.m_pData, src.m_length);
  return *this;
}

template <class V, class T> VectorOps<V, T> &VectorOps<V, T>::operator=(VectorOps &&src) noexcept {
  if (src.m_length > this->m_capacity) {
    this->TakeOver(src);
    return *this;
  }
  return *this = static_cast<const VectorOps &>(src);
}

template <class V, class T> void VectorOps<V, T>::Alloc(int n) {
  if (n == 0) return;
  using Traits = VectorTraits<V>;
  this->m_pStorage = Traits::Malloc(n);
  if (this->m_pStorage != nullptr) return;
  QORNMalloc::MallocErrorDump(n, this->GetElementSize(), Traits::kMallocFailed);
  Throw(errors::kMemoryAllocation, Traits::kAllocModule);
}

template <class V, class T> void VectorOps<V, T>::Set(T val, int n) {
  if (n > 0) this->Resize(n);
  Kernels<T>::Set(val, this->m_pData, this->m_length);
}

template <class V, class T> void VectorOps<V, T>::Dump(int n) const {
  using Traits = VectorTraits<V>;
  const long long length = this->m_length;
  if (length <= 2LL * n) {
    for (int i = 0; i < length; ++i) Traits::PrintElement(i, this->m_pData[i]);
    return;
  }
  for (int i = 0; i < n; ++i) {
    if constexpr (requires { Traits::PrintHeadElement(i, this->m_pData[i]); }) {
      Traits::PrintHeadElement(i, this->m_pData[i]);
    } else {
      Traits::PrintElement(i, this->m_pData[i]);
    }
  }
  std::printf("%s", Traits::kSeparator);
  for (long long i = length - n; i < length; ++i) Traits::PrintElement(static_cast<int>(i), this->m_pData[i]);
}

template <class V, class T> void VectorOps<V, T>::CopyFrom(const T *src, int n) {
  this->Resize(n);
  Kernels<T>::Copy(src, this->m_pData, n);
}

template <class V, class T> void VectorOps<V, T>::CopyTo(T *dst, int n) const {
  Kernels<T>::Copy(this->m_pData, dst, n);
}

template class VectorOps<VecReal32, float>;
template class VectorOps<VecReal64, double>;
template class VectorOps<VecCplx32, Cplx32>;
template class VectorOps<VecCplx64, Cplx64>;
template class VectorOps<VecUInt8, unsigned char>;
template class VectorOps<VecInt16, short>;
template class VectorOps<VecInt32, int>;
template class VectorOps<VecUInt32, unsigned int>;

} // namespace QORN
