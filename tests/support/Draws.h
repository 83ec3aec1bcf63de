// The generator behind every random kernel, written out from its definition one step at a time.
#ifndef QORN_TESTS_SUPPORT_DRAWS_H
#define QORN_TESTS_SUPPORT_DRAWS_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace QORN::test {

/// n numbers uniform from low to high; the seed moves on as the kernels move it.
inline std::vector<float> Uniform(int n, float low, float high, unsigned int &seed) {
  constexpr std::uint32_t kFactor = 69069, kIncrement = 1013904243;
  std::uint32_t congruential = 1131199209;
  std::uint32_t x0 = seed, x1 = x0 * kFactor + kIncrement, x2 = x1 * kFactor + kIncrement;
  std::uint32_t carry = 0xFFFFFFFFU; // -1
  const double middle = static_cast<double>(low + high) * 0.5;
  const double scale = static_cast<double>(high - low) / 4294967296.0;
  std::vector<float> numbers;
  for (int i = 0; i < n; ++i) {
    const std::uint32_t t = carry + x1 - x2;
    const bool negative = static_cast<std::int32_t>(t) < 0;
    x2 = x1;
    x1 = x0;
    x0 = negative ? t - 18U : t;
    carry = negative ? 0xFFFFFFFFU : 0U;
    congruential = congruential * kFactor + kIncrement;
    const auto word = static_cast<std::int32_t>(x0 + congruential);
    numbers.push_back(static_cast<float>(middle + word * scale));
  }
  if (n > 0) seed += 6003;
  return numbers;
}

/// A random phase in radians.
inline double DrawPhase(unsigned int &seed) {
  return static_cast<double>(Uniform(1, 0.0F, 6.2831855F, seed)[0]);
}

/// n random symbols below alphabet.
inline std::vector<int> DrawSymbols(int n, int alphabet, unsigned int &seed) {
  std::vector<int> symbols;
  for (const float x : Uniform(n, 0.0F, static_cast<float>(alphabet) - 1e-5F, seed)) {
    symbols.push_back(static_cast<int>(x));
  }
  return symbols;
}

} // namespace QORN::test

#endif
