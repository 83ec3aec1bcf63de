#include "peers/random.h"

#include <cmath>
#include <random>

namespace peers {

void Random::Uniform(float *dst, int len, unsigned seed) {
  std::mt19937 random(seed);
  for (int i = 0; i < len; ++i) dst[i] = static_cast<float>(random()) * 0x1p-32F;
}

void Random::Gauss(float *dst, int len, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<float> normal;
  for (int i = 0; i < len; ++i) dst[i] = normal(random);
}

void Random::Tone(QORN::Cplx32 *dst, int len, float relFreq) {
  const float step = 6.2831855F * relFreq;
  for (int i = 0; i < len; ++i) {
    const float phase = static_cast<float>(i) * step;
    dst[i] = {std::cos(phase), std::sin(phase)};
  }
}

} // namespace peers
