#include "Kernel.h"

namespace QORN::kernels::QORN_LEVEL {

void Ln_64f(const double *src, double *dst, int len);

namespace {

// An int, not a wider index: its conversion to the element type exists in vectors everywhere.
template <class T> void VectorSlope(T *dst, int len, T offset, T slope) {
  for (int i = 0; i < len; ++i) dst[i] = Rounded(static_cast<T>(i) * slope) + offset;
}

// x -> factor x + increment in 32 bits, and how many such steps make one of the same form.
struct Congruence {
  std::uint32_t factor;
  std::uint32_t increment;

  constexpr std::uint32_t operator()(std::uint32_t x) const { return x * factor + increment; }
  constexpr Congruence Repeated(int times) const {
    Congruence all{1, 0};
    for (; times > 0; --times) all = {all.factor * factor, (*this)(all.increment)};
    return all;
  }
};

constexpr Congruence kCongruence{69069, 1013904243};

// The generator behind all random kernels: a subtract-with-borrow sequence with lags 2 and 3, modulo
// 2^32 - 18, to which a linear congruential sequence is added (G. Marsaglia, A. Zaman: A new class of random
// number generators, Annals of Applied Probability 1, 1991).
class Random {
public:
  static constexpr int kBlock = 256;
  static constexpr int kLanes = 16;

  explicit Random(std::uint32_t seed) : m_x0(seed), m_x1(kCongruence(m_x0)), m_x2(kCongruence(m_x1)) {
    std::uint32_t x = 1131199209;
    for (std::uint32_t &lane : m_lanes) lane = x = kCongruence(x);
  }

  // The next Count words, a multiple of kLanes. The sequence with the borrow allows but one step at a time;
  // the other, of which all lanes can step at once, is kept out of that chain.
  template <int Count = kBlock> void Block(std::int32_t *words) {
    std::uint32_t x0 = m_x0, x1 = m_x1, x2 = m_x2, borrow = m_borrow;
    for (int i = 0; i < Count; ++i) {
      const std::uint32_t t = x1 - x2 + borrow;
      borrow = static_cast<std::uint32_t>(static_cast<std::int32_t>(t) >> 31); // -1 if t is negative, else 0
      x2 = x1;
      x1 = x0;
      x0 = t - (borrow & 18U);
      words[i] = static_cast<std::int32_t>(x0);
    }
    m_x0 = x0, m_x1 = x1, m_x2 = x2, m_borrow = borrow;

    constexpr Congruence kAllLanes = kCongruence.Repeated(kLanes);
    for (int i = 0; i < Count; i += kLanes) {
      for (int lane = 0; lane < kLanes; ++lane) {
        words[i + lane] =
            static_cast<std::int32_t>(static_cast<std::uint32_t>(words[i + lane]) + m_lanes[lane]);
        m_lanes[lane] = kAllLanes(m_lanes[lane]);
      }
    }
  }

private:
  std::uint32_t m_x0, m_x1, m_x2;
  std::uint32_t m_borrow = 0xFFFFFFFFU;
  std::uint32_t m_lanes[kLanes]; // the next kLanes words of the congruential sequence
};

// Added to a seed after each call, so that a caller who keeps it gets a new array.
constexpr unsigned kSeedStep = 6003;

template <int Block, class T> void UniformBlocks(T *dst, int len, T low, T high, unsigned seed) {
  const double middle = static_cast<double>(low + high) * 0.5;
  const double scale = static_cast<double>(high - low) * 0x1p-32;
  Random random(seed);
  std::int32_t words[Block];
  for (Index first = 0; first < len; first += Block) {
    random.Block<Block>(words);
    const Index count = len - first < Block ? len - first : Block;
    for (Index i = 0; i < count; ++i) {
      dst[first + i] = static_cast<T>(middle + Rounded(static_cast<double>(words[i]) * scale));
    }
  }
}

template <class T> void RandUniform(T *dst, int len, T low, T high, unsigned *seed) {
  if (len <= Random::kLanes) { // single numbers are drawn often
    UniformBlocks<Random::kLanes>(dst, len, low, high, *seed);
  } else {
    UniformBlocks<Random::kBlock>(dst, len, low, high, *seed);
  }
  *seed += kSeedStep;
}

// The polar method (G. Marsaglia, T. A. Bray: A convenient method for generating normal variables, SIAM
// Review 6, 1964), a block of pairs at a time: the pairs that lie in the unit circle are moved together, so
// that logarithms and roots can be taken of all of them at once.
template <class T> void RandGauss(T *dst, int len, T mean, T stdDev, unsigned *seed) {
  constexpr int kPairs = Random::kBlock / 2;
  const auto wideMean = static_cast<double>(mean), wideDeviation = static_cast<double>(stdDev);
  Random random(*seed);
  std::int32_t words[Random::kBlock];
  double us[kPairs], vs[kPairs], ss[kPairs], gs[kPairs];
  for (Index done = 0; done < len;) {
    random.Block(words);
    int pairs = 0;
    for (int i = 0; i < kPairs; ++i) {
      const double u = words[2 * i] * 0x1p-31, v = words[2 * i + 1] * 0x1p-31;
      const double s = Rounded(u * u) + Rounded(v * v);
      us[pairs] = u, vs[pairs] = v, ss[pairs] = s;
      pairs += (s < 1) & (s > 0);
    }
    Ln_64f(ss, gs, pairs);
    for (int i = 0; i < pairs; ++i) gs[i] = __builtin_sqrt(-2 * gs[i] / ss[i]);
    for (int i = 0; i < pairs; ++i) {
      vs[i] = Rounded(vs[i] * wideDeviation * gs[i]) + wideMean;
      us[i] = Rounded(us[i] * wideDeviation * gs[i]) + wideMean;
    }
    const Index whole = (len - done) / 2 < pairs ? (len - done) / 2 : pairs;
    for (Index i = 0; i < whole; ++i) {
      dst[done + 2 * i] = static_cast<T>(vs[i]);
      dst[done + 2 * i + 1] = static_cast<T>(us[i]);
    }
    done += 2 * whole;
    if (whole < pairs && done < len) dst[done++] = static_cast<T>(vs[whole]);
  }
  *seed += kSeedStep;
}

} // namespace

#define QORN_FAMILY "Generate.inc"
#include "Define.h"

} // namespace QORN::kernels::QORN_LEVEL
