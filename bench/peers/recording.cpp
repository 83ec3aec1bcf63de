#include "peers/recording.h"

namespace peers {

void FrameToVolts(const char *payload, QORN::Cplx32 *dst, int len, double iOffset, double qOffset,
                  double scale) {
  const auto *pairs = reinterpret_cast<const short *>(payload);
  for (int k = 0; k < len; ++k) {
    dst[k].re = static_cast<float>((pairs[2 * k + 1] - iOffset) * scale);
    dst[k].im = static_cast<float>((pairs[2 * k] - qOffset) * scale);
  }
}

void PairsToVolts(const int *pairs, QORN::Cplx32 *dst, int len, float scale) {
  for (int k = 0; k < len; ++k) {
    dst[k] = {static_cast<float>(pairs[2 * k]) * scale, static_cast<float>(pairs[2 * k + 1]) * scale};
  }
}

void PairsToVolts(const int *pairs, QORN::Cplx64 *dst, int len, double scale) {
  for (int k = 0; k < len; ++k) {
    dst[k].re = static_cast<double>(pairs[2 * k]) * scale;
    dst[k].im = static_cast<double>(static_cast<float>(pairs[2 * k + 1])) * scale;
  }
}

} // namespace peers
