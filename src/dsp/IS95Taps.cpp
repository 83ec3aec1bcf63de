#include "IS95Taps.h"

namespace QORN {

namespace {

#include "IS95TapTables.inc"

using Taps = std::span<const float>;

Taps OfRatio(int ratio, Taps two, Taps four, Taps eight, Taps sixteen) {
  switch (ratio) {
  case 2:
    return two;
  case 4:
    return four;
  case 8:
    return eight;
  case 16:
    return sixteen;
  default:
    return {};
  }
}

} // namespace

Taps IS95TxTaps(int ratio) { return OfRatio(ratio, kTx2, kTx4, kTx8, kTx16); }
Taps IS95TxEqTaps(int ratio) { return OfRatio(ratio, kTxEq2, kTxEq4, kTxEq8, kTxEq16); }
Taps IS95ReferenceTaps(int ratio) {
  return OfRatio(ratio, kReference2, kReference4, kReference8, kReference16);
}

} // namespace QORN
