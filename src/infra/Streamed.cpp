#include "Streamed.h"

#include <cstdint>
#include <cstring>

#include "Processor.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace QORN::kernels {

constinit std::size_t streamedBytes = SIZE_MAX;

#if defined(__SSE2__)

namespace {

[[maybe_unused]] const bool known = [] {
  const auto largest = static_cast<std::size_t>(LargestCacheBytes());
  if (largest != 0) streamedBytes = 2 * largest;
  return true;
}();

constexpr std::size_t kLine = 64;

} // namespace

void WritePastCaches(const void *src, void *dst, std::size_t bytes) {
  const auto *from = static_cast<const unsigned char *>(src);
  auto *to = static_cast<unsigned char *>(dst);
  const std::size_t gap = (kLine - reinterpret_cast<std::uintptr_t>(to) % kLine) % kLine;
  const std::size_t head = gap < bytes ? gap : bytes, whole = (bytes - head) / kLine * kLine;
  std::memcpy(to, from, head);
  for (std::size_t i = head; i < head + whole; i += kLine) {
    for (std::size_t k = i; k < i + kLine; k += sizeof(__m128i)) {
      const __m128i part = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from + k));
      _mm_stream_si128(reinterpret_cast<__m128i *>(to + k), part);
    }
  }
  std::memcpy(to + head + whole, from + head + whole, bytes - head - whole);
}

void FinishWritingPastCaches() { _mm_sfence(); }

#else

void WritePastCaches(const void *src, void *dst, std::size_t bytes) { std::memcpy(dst, src, bytes); }
void FinishWritingPastCaches() {}

#endif

} // namespace QORN::kernels
