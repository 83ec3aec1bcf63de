// Results that no cache can hold. An ordinary store fetches the line that it changes; where a result is far
// larger than the caches, its lines are rather written past them, which spares a third of what a copy moves.
#ifndef QORN_SRC_INFRA_STREAMED_H
#define QORN_SRC_INFRA_STREAMED_H

#include <cstddef>
#include <functional>

namespace QORN::kernels {

/// Results of this many bytes or more are written past the caches: twice the largest cache, so that nothing
/// is lost to a caller who reads them next. More than any result has where that size is not known, and until
/// the library's statics are initialised. Never written afterwards, except by tests.
extern std::size_t streamedBytes;

/// Copies bytes past the caches, but for the parts of lines at the ends.
void WritePastCaches(const void *src, void *dst, std::size_t bytes);
/// Puts all that was written past the caches before what this thread stores from here on.
void FinishWritingPastCaches();

/// Asks for memory that is read soon.
inline void Fetch(const void *start, std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; i += 64) __builtin_prefetch(static_cast<const char *>(start) + i);
}

/// Where the lines of a result come from: from a source as they are, or from a piece that a kernel fills.
enum class Way { Copied, Computed };

/// Runs an element-wise kernel on pieces that stay in the nearest cache, and writes them past the caches; or
/// on the whole, if the result shares memory with a source. The processor alone does not read far enough
/// ahead while it writes.
template <Way kWay, class Kernel, class D, class... S>
[[gnu::noinline]] void RunStreamed(Kernel kernel, int len, D *dst, const S *...src) {
  const auto apart = [&](const auto *from) {
    const std::less_equal<const void *> notAfter;
    return notAfter(dst + len, from) || notAfter(from + len, dst);
  };
  if (!(apart(src) && ...)) return kernel(src..., dst, len);
  if constexpr (kWay == Way::Copied) {
    WritePastCaches(src..., dst, sizeof(D) * static_cast<std::size_t>(len));
  } else {
    constexpr int kPiece = 1024 / static_cast<int>(sizeof(D)), kAhead = 2 * kPiece;
    alignas(64) D piece[kPiece];
    for (int done = 0, count = 0; done < len; done += count) {
      count = len - done < kPiece ? len - done : kPiece;
      if (len - done >= kAhead + kPiece) (Fetch(src + done + kAhead, sizeof(S) * kPiece), ...);
      kernel((src + done)..., piece, count);
      WritePastCaches(piece, dst + done, sizeof(D) * static_cast<std::size_t>(count));
    }
  }
  FinishWritingPastCaches();
}

template <class D> bool IsStreamed(int len) {
  return sizeof(D) * static_cast<std::size_t>(len) >= streamedBytes;
}

/// A kernel of one or of two sources, by the length of its result.
template <Way kWay, class S, class D>
void Stream(void (*kernel)(const S *, D *, int), const S *src, D *dst, int len) {
  if (IsStreamed<D>(len)) return RunStreamed<kWay>(kernel, len, dst, src);
  kernel(src, dst, len);
}
template <Way kWay, class S, class D>
void Stream(void (*kernel)(const S *, const S *, D *, int), const S *src1, const S *src2, D *dst, int len) {
  if (IsStreamed<D>(len)) return RunStreamed<kWay>(kernel, len, dst, src1, src2);
  kernel(src1, src2, dst, len);
}

} // namespace QORN::kernels

#endif
