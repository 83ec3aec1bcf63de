#include "limit.h"

namespace peers {
namespace {

// Twelve registers of 64 bytes cover the latency of four cycles on two or three units, and leave room for the
// operands. Products and sums are fused by this file's compile options. Names of their own keep the sums in
// registers, which an array does not.
template <class T> T Chains(T factor, T addend) {
  using Register __attribute__((vector_size(64))) = T;
  const Register f = Register{} + factor;
  const Register a = Register{} + addend;
  // Different starts, or equal chains would be computed once.
  Register s0 = a, s1 = s0 + a, s2 = s1 + a, s3 = s2 + a, s4 = s3 + a, s5 = s4 + a;
  Register s6 = s5 + a, s7 = s6 + a, s8 = s7 + a, s9 = s8 + a, s10 = s9 + a, s11 = s10 + a;
  for (int i = 0; i < 256; ++i) {
    s0 = s0 * f + a, s1 = s1 * f + a, s2 = s2 * f + a, s3 = s3 * f + a;
    s4 = s4 * f + a, s5 = s5 * f + a, s6 = s6 * f + a, s7 = s7 * f + a;
    s8 = s8 * f + a, s9 = s9 * f + a, s10 = s10 * f + a, s11 = s11 * f + a;
  }
  const Register sum = s0 + s1 + s2 + s3 + s4 + s5 + s6 + s7 + s8 + s9 + s10 + s11;
  return sum[0];
}

} // namespace

float Limit::MulAdd(float factor, float addend) { return Chains(factor, addend); }
double Limit::MulAdd(double factor, double addend) { return Chains(factor, addend); }

} // namespace peers
