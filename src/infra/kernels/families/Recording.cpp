#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {
namespace {

// Pairs of (q, i) to samples ((i - iOffset) * scale, (q - qOffset) * scale), in double and rounded once.
void ScalePairs(const short *pairs, Cplx32 *dst, int len, double iOffset, double qOffset, double scale) {
  for (Index k = 0; k < len; ++k) {
    dst[k].re = static_cast<float>((static_cast<double>(pairs[2 * k + 1]) - iOffset) * scale);
    dst[k].im = static_cast<float>((static_cast<double>(pairs[2 * k]) - qOffset) * scale);
  }
}

// Pairs of (i, q), one rounding to float each and one of the product.
void ScaleWidePairs(const int *pairs, Cplx32 *dst, int len, float scale) {
  for (Index k = 0; k < len; ++k) {
    dst[k].re = static_cast<float>(pairs[2 * k]) * scale;
    dst[k].im = static_cast<float>(pairs[2 * k + 1]) * scale;
  }
}

// The same in double, except that q is rounded to float on its way.
void ScaleWidePairs(const int *pairs, Cplx64 *dst, int len, double scale) {
  for (Index k = 0; k < len; ++k) {
    dst[k].re = static_cast<double>(pairs[2 * k]) * scale;
    dst[k].im = static_cast<double>(static_cast<float>(pairs[2 * k + 1])) * scale;
  }
}

bool IsAt(const char *text, const char *sought, Index soughtLen) {
  for (Index i = 0; i < soughtLen; ++i)
    if (text[i] != sought[i]) return false;
  return true;
}

// The place of the first occurrence of a text of at least one character, or len. Its first and its last
// character together are rare in binary data, so whole blocks are passed over by them.
Index FirstOccurrence(const char *text, Index len, const char *sought, Index soughtLen) {
  constexpr Index kBlock = 256;
  const auto first = static_cast<unsigned char>(sought[0]);
  const auto last = static_cast<unsigned char>(sought[soughtLen - 1]);
  const Index places = len - soughtLen + 1;
  Index i = 0;
  for (; i + kBlock <= places; i += kBlock) {
    const char *at = text + i;
    // 0 where both are met. The least of bytes takes fewer steps than a mask of comparisons.
    unsigned char least = 255;
    for (Index k = 0; k < kBlock; ++k) {
      const auto differs =
          static_cast<unsigned char>((static_cast<unsigned char>(at[k]) ^ first) |
                                     (static_cast<unsigned char>(at[k + soughtLen - 1]) ^ last));
      least = differs < least ? differs : least;
    }
    if (least != 0) continue;
    for (Index k = 0; k < kBlock; ++k)
      if (IsAt(at + k, sought, soughtLen)) return i + k;
  }
  for (; i < places; ++i)
    if (IsAt(text + i, sought, soughtLen)) return i;
  return len;
}

} // namespace

#define QORN_FAMILY "Recording.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
