#include <gtest/gtest.h>

#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"

namespace {

using QORN::TargetLib;
using QORN::test::CheckElementwise;
using QORN::test::CheckInPlace;

using Byte = unsigned char;

// Bit by bit, from the truth tables: entry 2a + b of a table is the bit that comes of a and b.
Byte ByTable(unsigned table, Byte a, Byte b) {
  unsigned result = 0;
  for (unsigned bit = 0; bit < 8; ++bit) {
    const unsigned entry = 2 * (a >> bit & 1U) + (b >> bit & 1U);
    result += (table >> entry & 1U) << bit;
  }
  return static_cast<Byte>(result);
}
Byte And(Byte a, Byte b) { return ByTable(0b1000, a, b); }
Byte Or(Byte a, Byte b) { return ByTable(0b1110, a, b); }
Byte Xor(Byte a, Byte b) { return ByTable(0b0110, a, b); }
Byte Not(Byte a) { return static_cast<Byte>(255 - a); }

TEST(TargetLib, AndOrXor_IntoADestination_FollowTheTruthTables) {
  CheckElementwise<Byte, Byte, Byte>("And_8u", &TargetLib::And_8u, And);
  CheckElementwise<Byte, Byte, Byte>("Or_8u", &TargetLib::Or_8u, Or);
  CheckElementwise<Byte, Byte, Byte>("Xor_8u", &TargetLib::Xor_8u, Xor);
}

TEST(TargetLib, AndOrXor_InPlace_FollowTheTruthTables) {
  CheckInPlace<Byte, Byte>("And_8u_I", &TargetLib::And_8u_I, And);
  CheckInPlace<Byte, Byte>("Or_8u_I", &TargetLib::Or_8u_I, Or);
  CheckInPlace<Byte, Byte>("Xor_8u_I", &TargetLib::Xor_8u_I, Xor);
}

TEST(TargetLib, Not_Bytes_InvertsEveryBit) {
  CheckElementwise<Byte, Byte>("Not_8u", &TargetLib::Not_8u, Not);
  CheckInPlace<Byte>("Not_8u_I", &TargetLib::Not_8u_I, Not);
}

} // namespace
