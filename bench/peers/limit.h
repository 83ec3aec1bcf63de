// The limits of the machine, measured beside everything else: what no kernel can pass.
#ifndef QORN_BENCH_PEERS_LIMIT_H
#define QORN_BENCH_PEERS_LIMIT_H

#include <cstddef>

namespace peers {

struct Limit {
  static constexpr std::size_t kFloatFlops = 12 * 16 * 2 * 256;
  static constexpr std::size_t kDoubleFlops = kFloatFlops / 2;

  // Independent chains of fused multiply-adds in registers, kFloatFlops or kDoubleFlops operations in all.
  static float MulAdd(float factor, float addend);
  static double MulAdd(double factor, double addend);
};

} // namespace peers

#endif
