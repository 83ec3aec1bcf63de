// Roots of unity, rounded once from a wider type.
#ifndef QORN_SRC_INFRA_FOURIER_ROOTS_H
#define QORN_SRC_INFRA_FOURIER_ROOTS_H

#include <cmath>
#include <cstdint>
#include <type_traits>
#include <vector>

namespace QORN::fourier {

/// exp(-j 2 pi k / n) for any k. Two tables of about sqrt(n) exact roots in the wider type, one of steps and
/// one of strides; a root is their product. So a plan of any length needs few evaluations of sine and cosine.
template <class T> class Roots {
  using Wide = std::conditional_t<std::is_same_v<T, float>, double, long double>;

public:
  struct Root {
    T re, im;
  };

  explicit Roots(std::int64_t n) : m_n(n) {
    while ((std::int64_t{1} << (2 * m_bits)) < n / 2 + 1) ++m_bits;
    const std::int64_t steps = std::int64_t{1} << m_bits;
    for (std::int64_t k = 0; k < steps; ++k) m_steps.push_back(Exact(k % n));
    for (std::int64_t k = 0; k <= n / 2; k += steps) m_strides.push_back(Exact(k));
  }

  Root operator()(std::int64_t k) const {
    k %= m_n;
    if (k < 0) k += m_n;
    const bool mirrored = k > m_n / 2;
    if (mirrored) k = m_n - k;
    const Pair &a = m_strides[static_cast<std::size_t>(k >> m_bits)];
    const Pair &b = m_steps[static_cast<std::size_t>(k & ((std::int64_t{1} << m_bits) - 1))];
    const Wide re = a.re * b.re - a.im * b.im, im = a.re * b.im + a.im * b.re;
    return {static_cast<T>(re), static_cast<T>(mirrored ? -im : im)};
  }

private:
  struct Pair {
    Wide re, im;
  };

  // Reduced to the first octant in integers, so that the angle is as exact as the wider type.
  Pair Exact(std::int64_t k) const {
    using Long = long double;
    constexpr Long kPi = 3.14159265358979323846264338327950288L;
    const Long n = static_cast<Long>(m_n);
    const std::int64_t octant = 8 * k / m_n;
    // The distance to the nearest multiple of a quarter turn, in units of 1 / (4 n) turns.
    const std::int64_t quarter = (octant + 1) / 2;
    const Long angle = 2 * kPi * static_cast<Long>(4 * k - quarter * m_n) / (4 * n);
    const Wide c = static_cast<Wide>(std::cos(angle)), s = static_cast<Wide>(std::sin(angle));
    switch (quarter % 4) {
    case 0:
      return {c, -s};
    case 1:
      return {-s, -c};
    case 2:
      return {-c, s};
    default:
      return {s, c};
    }
  }

  std::int64_t m_n;
  int m_bits = 0;
  std::vector<Pair> m_steps, m_strides;
};

/// Writes an interleaved factor and moves on.
template <class T> void Write(T *&to, typename Roots<T>::Root root) {
  *to++ = root.re;
  *to++ = root.im;
}

/// `count` factors number first, first + step, ... as a multiplication of interleaved values takes them: the
/// real parts twice each, then the imaginary ones, negated and as they are.
template <class T>
T *WriteTurns(const Roots<T> &roots, std::int64_t first, std::int64_t step, std::int64_t count, T *to) {
  for (std::int64_t i = 0; i < count; ++i, to += 2) {
    const auto root = roots(first + step * i);
    to[0] = to[1] = root.re;
    to[2 * count] = -root.im;
    to[2 * count + 1] = root.im;
  }
  return to + 2 * count;
}

} // namespace QORN::fourier

#endif
