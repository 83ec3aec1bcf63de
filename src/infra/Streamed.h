// Copies that no cache can hold. An ordinary store fetches the line that it changes; a copy far larger than
// the caches is rather written past them, which spares a third of what is moved. What is computed on the way
// gains less, and nothing on a busy memory.
#ifndef QORN_SRC_INFRA_STREAMED_H
#define QORN_SRC_INFRA_STREAMED_H

#include <cstddef>
#include <functional>

namespace QORN::kernels {

/// Copies of this many bytes or more are written past the caches: twice the largest cache, so that nothing
/// is lost to a caller who reads them next. More than any copy has where that size is not known, and until
/// the library's statics are initialised. Never written afterwards, except by tests.
extern std::size_t streamedBytes;

/// Copies bytes past the caches, but for the parts of lines at the ends.
void WritePastCaches(const void *src, void *dst, std::size_t bytes);
/// Puts all that was written past the caches before what this thread stores from here on.
void FinishWritingPastCaches();

/// Copies by the kernel what is shorter, or overlaps its source.
template <class T> void Stream(void (*kernel)(const T *, T *, int), const T *src, T *dst, int len) {
  const std::size_t bytes = sizeof(T) * static_cast<std::size_t>(len);
  const std::less_equal<const void *> notAfter;
  if (bytes < streamedBytes || !(notAfter(dst + len, src) || notAfter(src + len, dst))) {
    return kernel(src, dst, len);
  }
  WritePastCaches(src, dst, bytes);
  FinishWritingPastCaches();
}

} // namespace QORN::kernels

#endif
