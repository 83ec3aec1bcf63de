#include "qorn/infra/BaseVector.h"

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Errors.h"
#include "qorn/infra/QORNMalloc.h"

namespace QORN {

namespace {
constexpr const char *kModule = "infra/Vector";
}

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

template <class T> void BaseVector<T>::Create(int n) {
  Release();
  Alloc(n);
  m_pData = m_pStorage;
  m_capacity = n;
  m_length = n;
  if (n > 0) SetZero();
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
  m_pData += first;
  m_length = last - first + 1;
  return true;
}

template <class T> bool BaseVector<T>::Truncate(int first, int count) {
  if (count == -1) count = m_length - first;
  return Trim(first, first - 1 + count);
}

template <class T> void BaseVector<T>::Alloc(int) { Throw(errors::kUnexpectedSoftware, kModule); }

#if defined(QORN_CHECKED)
template <class T> void BaseVector<T>::CheckIndex(int i) const {
  if (i >= 0 && i < m_length) return;
  std::fprintf(stderr, "QORN: index %i is outside a vector of length %i\n", i, m_length);
  std::abort();
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
