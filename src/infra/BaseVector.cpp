#include "qorn/infra/BaseVector.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include "Checks.h"
#include "Errors.h"
#include "qorn/infra/QORNMalloc.h"

namespace QORN {

// The classes with storage of their own free it in their destructors: a bare base copy shares its source's
// block.
template <class T> BaseVector<T>::~BaseVector() = default;

template <class T> void BaseVector<T>::Release() {
  QORNMalloc::Delete(m_pStorage);
  m_pStorage = nullptr;
  m_capacity = 0;
  m_pData = nullptr;
  m_length = 0;
}

template <class T> void BaseVector<T>::CreateUncleared(int n) {
  Release();
  Alloc(n);
  m_pData = m_pStorage;
  m_capacity = n;
  m_length = n;
}

template <class T> void BaseVector<T>::Create(int n) {
  CreateUncleared(n);
  SetZero();
}

template <class T> void BaseVector<T>::TakeOver(BaseVector &src) {
  Release();
  m_pStorage = std::exchange(src.m_pStorage, nullptr);
  m_capacity = std::exchange(src.m_capacity, 0);
  m_pData = std::exchange(src.m_pData, nullptr);
  m_length = std::exchange(src.m_length, 0);
}

template <class T> void BaseVector<T>::Resize(int n) {
  if (n <= m_capacity) {
    m_length = n;
    m_pData = m_pStorage;
  } else {
    Create(n);
  }
}

template <class T> void BaseVector<T>::ResizeExactly(int n, bool force) {
  if (n != m_capacity || force) Release();
  Resize(n);
}

template <class T> void BaseVector<T>::SetZero() {
  if (m_length > 0) {
    std::memset(static_cast<void *>(m_pData), 0, sizeof(T) * static_cast<std::size_t>(m_length));
  }
}

template <class T> bool BaseVector<T>::Trim(int first, int last) {
  if (last == -1) last = m_length - 1;
  checks::Require(first >= 0 && first <= m_length, "first", first, "length", m_length);
  checks::Require(last >= first - 1 && last < m_length, "last", last, "length", m_length);
  m_pData += first;
  m_length = last - first + 1;
  return true;
}

template <class T> bool BaseVector<T>::Truncate(int first, int count) {
  if (count == -1) count = m_length - first;
  checks::Range(first, count, m_length);
  return Trim(first, first - 1 + count);
}

template <class T> void BaseVector<T>::Alloc(int) { Throw(errors::kUnexpectedSoftware, modules::kVector); }

#if defined(QORN_CHECKED)
template <class T> void BaseVector<T>::CheckIndex(int i) const {
  checks::Require(i >= 0 && i < m_length, "index", i, "length", m_length);
}

template <class T> void BaseVector<T>::CheckPosition(int i) const {
  checks::Require(i == 0 || (i > 0 && i <= m_length), "index", i, "length", m_length);
}
#endif

template class BaseVector<unsigned char>;
template class BaseVector<short>;
template class BaseVector<int>;
template class BaseVector<unsigned int>;
template class BaseVector<float>;
template class BaseVector<double>;
template class BaseVector<Cplx32>;
template class BaseVector<Cplx64>;

} // namespace QORN
