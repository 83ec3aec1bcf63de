#ifndef QORN_MATH_UNITCONVERSION_H
#define QORN_MATH_UNITCONVERSION_H

#include "qorn/Export.h"

namespace QORN {

class VecReal32;
class VecReal64;

/// Conversions between the units of radio-frequency measurement, in a 50 ohm system: static functions only.
///
/// Each is a fixed formula with fixed constants. The constants stand below as the double forms use them; a
/// float form uses each rounded to float. A float scalar form takes logarithms and powers in double and
/// rounds the result.
///
/// A vector form gives dst the length of src by Resize, so a kept dst allocates nothing, and applies its
/// formula to each element in the element's precision, every step rounded; dst may be src. A division by a
/// constant is a multiplication by its rounded reciprocal there, so the last bit may differ from the scalar
/// form's. Nothing is checked and nothing thrown, except 11001 by a dst that cannot grow. All functions are
/// reentrant.
///
/// Logarithms never meet a zero. A scalar form takes MathUtils::Log10: its result for a zero is about -40,
/// and for a negative argument it is -999, still scaled and offset by the formula: Volt2dBV(-1.0) is -19980.
/// A vector form adds MathUtils::kLogZeroOffset to every element, which gives about -40 for a zero, scaled
/// and offset, and normally vanishes in rounding for all others; a negative element gives not-a-number.
class QORN_API UnitConversion {
public:
  // Linear to logarithmic.

  /// Voltage ratio to dB: 20 log10(ratio).
  ///@{
  static float VoltageRatio2dB(float ratio);
  static double VoltageRatio2dB(double ratio);
  static void VoltageRatio2dB(VecReal32 &dst, const VecReal32 &src);
  static void VoltageRatio2dB(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// V to dBV: 20 log10(volt).
  ///@{
  static float Volt2dBV(float volt);
  static double Volt2dBV(double volt);
  static void Volt2dBV(VecReal32 &dst, const VecReal32 &src);
  static void Volt2dBV(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// Power ratio to dB: 10 log10(ratio).
  ///@{
  static float PowerRatio2dB(float ratio);
  static double PowerRatio2dB(double ratio);
  static void PowerRatio2dB(VecReal32 &dst, const VecReal32 &src);
  static void PowerRatio2dB(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// W to dBm: 10 log10(1000 watt). The vector forms add 30 to 10 log10(watt).
  ///@{
  static float Watt2dBm(float watt);
  static double Watt2dBm(double watt);
  static void Watt2dBm(VecReal32 &dst, const VecReal32 &src);
  static void Watt2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// V to dBm: 20 log10(volt / sqrt(0.05)). The vector forms add 13.01029995663981 to 20 log10(volt).
  ///@{
  static float Volt2dBm(float volt);
  static double Volt2dBm(double volt);
  static void Volt2dBm(VecReal32 &dst, const VecReal32 &src);
  static void Volt2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// Peak V to dBm: 20 log10(volt) + 10.
  ///@{
  static float PeakVolt2dBm(float volt);
  static double PeakVolt2dBm(double volt);
  static void PeakVolt2dBm(VecReal32 &dst, const VecReal32 &src);
  static void PeakVolt2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// uA to dBm: 20 log10(microamp) - 73.0102999566398.
  ///@{
  static float uA2dBm(float microamp);
  static double uA2dBm(double microamp);
  static void uA2dBm(VecReal32 &dst, const VecReal32 &src);
  static void uA2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// W to dBV: 10 log10(1000 watt) - 13.01029995663981. The vector forms take 10 log10(50 watt).
  ///@{
  static float Watt2dBV(float watt);
  static double Watt2dBV(double watt);
  static void Watt2dBV(VecReal32 &dst, const VecReal32 &src);
  static void Watt2dBV(VecReal64 &dst, const VecReal64 &src);
  ///@}

  // Logarithmic to linear.

  /// dB to voltage ratio: 10^(dB / 20).
  ///@{
  static float dB2VoltageRatio(float dB);
  static double dB2VoltageRatio(double dB);
  static void dB2VoltageRatio(VecReal32 &dst, const VecReal32 &src);
  static void dB2VoltageRatio(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBV to V: 10^(dBV / 20).
  ///@{
  static float dBV2Volt(float dBV);
  static double dBV2Volt(double dBV);
  static void dBV2Volt(VecReal32 &dst, const VecReal32 &src);
  static void dBV2Volt(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dB to power ratio: 10^(dB / 10).
  ///@{
  static float dB2PowerRatio(float dB);
  static double dB2PowerRatio(double dB);
  static void dB2PowerRatio(VecReal32 &dst, const VecReal32 &src);
  static void dB2PowerRatio(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to W: 10^(dBm / 10) * 0.001. The vector forms take 10^((dBm - 30) / 10).
  ///@{
  static float dBm2Watt(float dBm);
  static double dBm2Watt(double dBm);
  static void dBm2Watt(VecReal32 &dst, const VecReal32 &src);
  static void dBm2Watt(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to V: 10^(dBm / 20) * sqrt(0.05). The vector forms take 10^((dBm - 13.01029995663981) / 20).
  ///@{
  static float dBm2Volt(float dBm);
  static double dBm2Volt(double dBm);
  static void dBm2Volt(VecReal32 &dst, const VecReal32 &src);
  static void dBm2Volt(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to peak V: 10^((dBm - 10) / 20).
  ///@{
  static float dBm2PeakVolt(float dBm);
  static double dBm2PeakVolt(double dBm);
  static void dBm2PeakVolt(VecReal32 &dst, const VecReal32 &src);
  static void dBm2PeakVolt(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to uA: 10^((dBm + 73.0102999566398) / 20).
  ///@{
  static float dBm2uA(float dBm);
  static double dBm2uA(double dBm);
  static void dBm2uA(VecReal32 &dst, const VecReal32 &src);
  static void dBm2uA(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBV to W: 10^((dBV + 13.01029995663981) / 10) * 0.001. The vector forms take 10^(dBV / 10) / 50.
  ///@{
  static float dBV2Watt(float dBV);
  static double dBV2Watt(double dBV);
  static void dBV2Watt(VecReal32 &dst, const VecReal32 &src);
  static void dBV2Watt(VecReal64 &dst, const VecReal64 &src);
  ///@}

  // Logarithmic to logarithmic.

  /// dBm to dBuW: dBm + 30.
  ///@{
  static float dBm2dBuW(float dBm);
  static double dBm2dBuW(double dBm);
  static void dBm2dBuW(VecReal32 &dst, const VecReal32 &src);
  static void dBm2dBuW(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBuW to dBm: dBuW - 30.
  ///@{
  static float dBuW2dBm(float dBuW);
  static double dBuW2dBm(double dBuW);
  static void dBuW2dBm(VecReal32 &dst, const VecReal32 &src);
  static void dBuW2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBW to dBm: dBW + 30.
  ///@{
  static float dBW2dBm(float dBW);
  static double dBW2dBm(double dBW);
  static void dBW2dBm(VecReal32 &dst, const VecReal32 &src);
  static void dBW2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to dBW: dBm - 30.
  ///@{
  static float dBm2dBW(float dBm);
  static double dBm2dBW(double dBm);
  static void dBm2dBW(VecReal32 &dst, const VecReal32 &src);
  static void dBm2dBW(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to dBV: dBm - 13.01029995663981.
  ///@{
  static float dBm2dBV(float dBm);
  static double dBm2dBV(double dBm);
  static void dBm2dBV(VecReal32 &dst, const VecReal32 &src);
  static void dBm2dBV(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBV to dBm: dBV + 13.01029995663981.
  ///@{
  static float dBV2dBm(float dBV);
  static double dBV2dBm(double dBV);
  static void dBV2dBm(VecReal32 &dst, const VecReal32 &src);
  static void dBV2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to dBmA: dBm + 13.0102999566398, in its last digits another constant than that of dBV2dBm.
  ///@{
  static float dBm2dBmA(float dBm);
  static double dBm2dBmA(double dBm);
  static void dBm2dBmA(VecReal32 &dst, const VecReal32 &src);
  static void dBm2dBmA(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBmA to dBm: dBmA - 13.0102999566398.
  ///@{
  static float dBmA2dBm(float dBmA);
  static double dBmA2dBm(double dBmA);
  static void dBmA2dBm(VecReal32 &dst, const VecReal32 &src);
  static void dBmA2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to dBmV: dBm + 46.9897000433602.
  ///@{
  static float dBm2dBmV(float dBm);
  static double dBm2dBmV(double dBm);
  static void dBm2dBmV(VecReal32 &dst, const VecReal32 &src);
  static void dBm2dBmV(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBmV to dBm: dBmV - 46.9897000433602.
  ///@{
  static float dBmV2dBm(float dBmV);
  static double dBmV2dBm(double dBmV);
  static void dBmV2dBm(VecReal32 &dst, const VecReal32 &src);
  static void dBmV2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to dBuV: dBm + 106.9897000433602.
  ///@{
  static float dBm2dBuV(float dBm);
  static double dBm2dBuV(double dBm);
  static void dBm2dBuV(VecReal32 &dst, const VecReal32 &src);
  static void dBm2dBuV(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBuV to dBm: dBuV - 106.9897000433602.
  ///@{
  static float dBuV2dBm(float dBuV);
  static double dBuV2dBm(double dBuV);
  static void dBuV2dBm(VecReal32 &dst, const VecReal32 &src);
  static void dBuV2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to dBuV/m: as dBm2dBuV.
  ///@{
  static float dBm2dBuVm(float dBm);
  static double dBm2dBuVm(double dBm);
  static void dBm2dBuVm(VecReal32 &dst, const VecReal32 &src);
  static void dBm2dBuVm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBuV/m to dBm: as dBuV2dBm.
  ///@{
  static float dBuVm2dBm(float dBuVm);
  static double dBuVm2dBm(double dBuVm);
  static void dBuVm2dBm(VecReal32 &dst, const VecReal32 &src);
  static void dBuVm2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to dBuA: dBm + 73.0102999566398.
  ///@{
  static float dBm2dBuA(float dBm);
  static double dBm2dBuA(double dBm);
  static void dBm2dBuA(VecReal32 &dst, const VecReal32 &src);
  static void dBm2dBuA(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBuA to dBm: dBuA - 73.0102999566398.
  ///@{
  static float dBuA2dBm(float dBuA);
  static double dBuA2dBm(double dBuA);
  static void dBuA2dBm(VecReal32 &dst, const VecReal32 &src);
  static void dBuA2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBpT to dBuV/m: dBpT + 49.5. In double only.
  ///@{
  static double dBpT2dBuVm(double dBpT);
  static void dBpT2dBuVm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBuV/m to dBpT: dBuVm - 49.5. In double only.
  ///@{
  static double dBuVm2dBpT(double dBuVm);
  static void dBuVm2dBpT(VecReal64 &dst, const VecReal64 &src);
  ///@}

  // Through the field impedance of 120 pi ohm, whose 20 log10 is 51.5266223748352.

  /// dBuA/m to dBm: (dBuAm + 51.5266223748352) - 106.9897000433602.
  ///@{
  static float dBuAm2dBm(float dBuAm);
  static double dBuAm2dBm(double dBuAm);
  static void dBuAm2dBm(VecReal32 &dst, const VecReal32 &src);
  static void dBuAm2dBm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// dBm to dBuA/m: (dBm + 106.9897000433602) - 51.5266223748352.
  ///@{
  static float dBm2dBuAm(float dBm);
  static double dBm2dBuAm(double dBm);
  static void dBm2dBuAm(VecReal32 &dst, const VecReal32 &src);
  static void dBm2dBuAm(VecReal64 &dst, const VecReal64 &src);
  ///@}

  // Linear.

  /// V to W: volt^2 / 50. The vector forms multiply by the rounded reciprocal of 50.
  ///@{
  static float Volt2Watt(float volt);
  static double Volt2Watt(double volt);
  static void Volt2Watt(VecReal32 &dst, const VecReal32 &src);
  static void Volt2Watt(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// W to V: sqrt(50 watt); not-a-number for a negative power.
  ///@{
  static float Watt2Volt(float watt);
  static double Watt2Volt(double watt);
  static void Watt2Volt(VecReal32 &dst, const VecReal32 &src);
  static void Watt2Volt(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// V to A: volt / 50. The vector forms multiply by the rounded 0.02, so the last bit may differ.
  ///@{
  static float Volts2Amps(float volt);
  static double Volts2Amps(double volt);
  static void Volts2Amps(VecReal32 &dst, const VecReal32 &src);
  static void Volts2Amps(VecReal64 &dst, const VecReal64 &src);
  ///@}

  /// A to V: 50 amp.
  ///@{
  static float Amps2Volts(float amp);
  static double Amps2Volts(double amp);
  static void Amps2Volts(VecReal32 &dst, const VecReal32 &src);
  static void Amps2Volts(VecReal64 &dst, const VecReal64 &src);
  ///@}

  // Angles.

  /// Degrees to radians: degree * 0.017453292519943, 14 digits of pi / 180.
  ///@{
  static float Deg2Rad(float degree);
  static double Deg2Rad(double degree);
  static void Deg2Rad(VecReal32 &dst, const VecReal32 &src);
  static void Deg2Rad(VecReal64 &dst, const VecReal64 &src);
  static void Deg2Rad(VecReal32 &vec);
  static void Deg2Rad(VecReal64 &vec);
  ///@}

  /// Radians to degrees: radian * 57.29577951308232.
  ///@{
  static float Rad2Deg(float radian);
  static double Rad2Deg(double radian);
  static void Rad2Deg(VecReal32 &dst, const VecReal32 &src);
  static void Rad2Deg(VecReal64 &dst, const VecReal64 &src);
  static void Rad2Deg(VecReal32 &vec);
  static void Rad2Deg(VecReal64 &vec);
  ///@}
};

} // namespace QORN

#endif
