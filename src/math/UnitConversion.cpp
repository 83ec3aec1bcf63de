#include "qorn/math/UnitConversion.h"

#include "Elementwise.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/math/MathUtils.h"

namespace QORN {

namespace {

// The constants in the width of the form that uses them. Some have fewer digits than they could, and two that
// mean the same differ in their last ones: results that were recorded with them stay comparable.
template <class T> constexpr T kOhm = T{50};
template <class T> constexpr T kPerOhm = static_cast<T>(0.02);
template <class T> constexpr T kVoltAt0dBm = static_cast<T>(0.22360679774998);
template <class T> constexpr T kdBmTodBV = static_cast<T>(13.01029995663981);
template <class T> constexpr T kdBmTodBmA = static_cast<T>(13.0102999566398);
template <class T> constexpr T kdBmTodBmV = static_cast<T>(46.9897000433602);
template <class T> constexpr T kdBmTodBuV = static_cast<T>(106.9897000433602);
template <class T> constexpr T kdBmTodBuA = static_cast<T>(73.0102999566398);
template <class T> constexpr T kField = static_cast<T>(51.5266223748352);
template <class T> constexpr T kRadPerDeg = static_cast<T>(0.017453292519943);
template <class T> constexpr T kDegPerRad = static_cast<T>(57.29577951308232);
constexpr double kdBpTTodBuVm = 49.5;

// Scalar forms: the guarded logarithm and the power of ten, both in double.
template <class T> double Wide(T x) { return static_cast<double>(x); }
template <class T> T Narrow(double x) { return static_cast<T>(x); }
template <class T> double G(T x) { return MathUtils::Log10(Wide(x)); }
template <class T> double P(T x) { return MathUtils::Pow10(Wide(x)); }

// Vector forms: one step over n elements in place.
template <class T> struct Block {
  T *x;
  int n;

  Block Add(T c) const { return Kernels<T>::AddC(c, x, n), *this; }
  Block Sub(T c) const { return Kernels<T>::SubC(c, x, n), *this; }
  Block Mul(T c) const { return Kernels<T>::MulC(c, x, n), *this; }
  Block Div(T c) const { return Kernels<T>::DivC(c, x, n), *this; }
  Block Sqr() const { return Kernels<T>::Sqr(x, x, n), *this; }
  Block Sqrt() const { return Kernels<T>::Sqrt(x, x, n), *this; }
  Block Log10() const {
    Kernels<T>::AddC(static_cast<T>(MathUtils::kLogZeroOffset), x, n);
    return Kernels<T>::Log10(x, x, n), *this;
  }
  Block Pow10() const { return Pow10InPlace(x, n), *this; }
};

template <class T> Block(T *, int) -> Block<T>;

// A scalar form that is its vector form on one element.
template <class Form, class T> T InPlace(T x) {
  Form::Steps(Block{&x, 1});
  return x;
}

template <class Form, class V> void Vector(V &dst, const V &src) {
  MapInSteps(dst, src, [](auto *x, int n) { Form::Steps(Block{x, n}); });
}

// What each conversion does to a scalar x, and in which steps to a vector.
namespace form {

// Linear to logarithmic.

struct VoltageRatio2dB {
  template <class T> static T Scalar(T x) { return Narrow<T>(20.0 * G(x)); }
  template <class T> static void Steps(Block<T> b) { b.Log10().Mul(20); }
};

struct PowerRatio2dB {
  template <class T> static T Scalar(T x) { return Narrow<T>(10.0 * G(x)); }
  template <class T> static void Steps(Block<T> b) { b.Log10().Mul(10); }
};

struct Watt2dBm {
  template <class T> static T Scalar(T x) { return Narrow<T>(10.0 * G(1000.0 * Wide(x))); }
  template <class T> static void Steps(Block<T> b) { b.Log10().Mul(10).Add(30); }
};

struct Volt2dBm {
  template <class T> static T Scalar(T x) { return Narrow<T>(20.0 * G(x / kVoltAt0dBm<T>)); }
  template <class T> static void Steps(Block<T> b) { b.Log10().Mul(20).Add(kdBmTodBV<T>); }
};

struct PeakVolt2dBm {
  template <class T> static T Scalar(T x) { return Narrow<T>(20.0 * G(x) + 10.0); }
  template <class T> static void Steps(Block<T> b) { b.Log10().Mul(20).Add(10); }
};

struct uA2dBm {
  template <class T> static T Scalar(T x) { return Narrow<T>(20.0 * G(x) - kdBmTodBuA<double>); }
  template <class T> static void Steps(Block<T> b) { b.Log10().Mul(20).Sub(kdBmTodBuA<T>); }
};

struct Watt2dBV {
  template <class T> static T Scalar(T x) { return Narrow<T>(10.0 * G(1000.0 * Wide(x))) - kdBmTodBV<T>; }
  template <class T> static void Steps(Block<T> b) { b.Mul(kOhm<T>).Log10().Mul(10); }
};

// Logarithmic to linear.

struct dB2VoltageRatio {
  template <class T> static T Scalar(T x) { return Narrow<T>(P(x / T{20})); }
  template <class T> static void Steps(Block<T> b) { b.Div(20).Pow10(); }
};

struct dB2PowerRatio {
  template <class T> static T Scalar(T x) { return Narrow<T>(P(x / T{10})); }
  template <class T> static void Steps(Block<T> b) { b.Div(10).Pow10(); }
};

struct dBm2Watt {
  template <class T> static T Scalar(T x) { return Narrow<T>(P(x / T{10}) * 0.001); }
  template <class T> static void Steps(Block<T> b) { b.Sub(30).Div(10).Pow10(); }
};

struct dBm2Volt {
  template <class T> static T Scalar(T x) { return Narrow<T>(P(x / T{20}) * Wide(kVoltAt0dBm<T>)); }
  template <class T> static void Steps(Block<T> b) { b.Sub(kdBmTodBV<T>).Div(20).Pow10(); }
};

struct dBm2PeakVolt {
  template <class T> static T Scalar(T x) { return Narrow<T>(P((x - T{10}) / T{20})); }
  template <class T> static void Steps(Block<T> b) { b.Sub(10).Div(20).Pow10(); }
};

struct dBm2uA {
  template <class T> static T Scalar(T x) { return Narrow<T>(P((Wide(x) + kdBmTodBuA<double>) / 20.0)); }
  template <class T> static void Steps(Block<T> b) { b.Add(kdBmTodBuA<T>).Div(20).Pow10(); }
};

struct dBV2Watt {
  template <class T> static T Scalar(T x) { return Narrow<T>(P((x + kdBmTodBV<T>) / T{10}) * 0.001); }
  template <class T> static void Steps(Block<T> b) { b.Div(10).Pow10().Div(kOhm<T>); }
};

// Logarithmic to logarithmic.

struct dBm2dBuW {
  template <class T> static T Scalar(T x) { return InPlace<dBm2dBuW>(x); }
  template <class T> static void Steps(Block<T> b) { b.Add(30); }
};

struct dBuW2dBm {
  template <class T> static T Scalar(T x) { return InPlace<dBuW2dBm>(x); }
  template <class T> static void Steps(Block<T> b) { b.Sub(30); }
};

struct dBm2dBV {
  template <class T> static T Scalar(T x) { return InPlace<dBm2dBV>(x); }
  template <class T> static void Steps(Block<T> b) { b.Sub(kdBmTodBV<T>); }
};

struct dBV2dBm {
  template <class T> static T Scalar(T x) { return InPlace<dBV2dBm>(x); }
  template <class T> static void Steps(Block<T> b) { b.Add(kdBmTodBV<T>); }
};

struct dBm2dBmA {
  template <class T> static T Scalar(T x) { return InPlace<dBm2dBmA>(x); }
  template <class T> static void Steps(Block<T> b) { b.Add(kdBmTodBmA<T>); }
};

struct dBmA2dBm {
  template <class T> static T Scalar(T x) { return InPlace<dBmA2dBm>(x); }
  template <class T> static void Steps(Block<T> b) { b.Sub(kdBmTodBmA<T>); }
};

struct dBm2dBmV {
  template <class T> static T Scalar(T x) { return InPlace<dBm2dBmV>(x); }
  template <class T> static void Steps(Block<T> b) { b.Add(kdBmTodBmV<T>); }
};

struct dBmV2dBm {
  template <class T> static T Scalar(T x) { return InPlace<dBmV2dBm>(x); }
  template <class T> static void Steps(Block<T> b) { b.Sub(kdBmTodBmV<T>); }
};

struct dBm2dBuV {
  template <class T> static T Scalar(T x) { return InPlace<dBm2dBuV>(x); }
  template <class T> static void Steps(Block<T> b) { b.Add(kdBmTodBuV<T>); }
};

struct dBuV2dBm {
  template <class T> static T Scalar(T x) { return InPlace<dBuV2dBm>(x); }
  template <class T> static void Steps(Block<T> b) { b.Sub(kdBmTodBuV<T>); }
};

struct dBm2dBuA {
  template <class T> static T Scalar(T x) { return InPlace<dBm2dBuA>(x); }
  template <class T> static void Steps(Block<T> b) { b.Add(kdBmTodBuA<T>); }
};

struct dBuA2dBm {
  template <class T> static T Scalar(T x) { return InPlace<dBuA2dBm>(x); }
  template <class T> static void Steps(Block<T> b) { b.Sub(kdBmTodBuA<T>); }
};

struct dBpT2dBuVm {
  template <class T> static T Scalar(T x) { return InPlace<dBpT2dBuVm>(x); }
  template <class T> static void Steps(Block<T> b) { b.Add(kdBpTTodBuVm); }
};

struct dBuVm2dBpT {
  template <class T> static T Scalar(T x) { return InPlace<dBuVm2dBpT>(x); }
  template <class T> static void Steps(Block<T> b) { b.Sub(kdBpTTodBuVm); }
};

struct dBuAm2dBm {
  template <class T> static T Scalar(T x) { return InPlace<dBuAm2dBm>(x); }
  template <class T> static void Steps(Block<T> b) { b.Add(kField<T>).Sub(kdBmTodBuV<T>); }
};

struct dBm2dBuAm {
  template <class T> static T Scalar(T x) { return InPlace<dBm2dBuAm>(x); }
  template <class T> static void Steps(Block<T> b) { b.Add(kdBmTodBuV<T>).Sub(kField<T>); }
};

// Linear, and angles.

struct Volt2Watt {
  template <class T> static T Scalar(T x) { return x * x / kOhm<T>; }
  template <class T> static void Steps(Block<T> b) { b.Sqr().Div(kOhm<T>); }
};

struct Watt2Volt {
  template <class T> static T Scalar(T x) { return Narrow<T>(MathUtils::Sqrt(Wide(x * kOhm<T>))); }
  template <class T> static void Steps(Block<T> b) { b.Mul(kOhm<T>).Sqrt(); }
};

struct Volts2Amps {
  template <class T> static T Scalar(T x) { return x / kOhm<T>; }
  template <class T> static void Steps(Block<T> b) { b.Mul(kPerOhm<T>); }
};

struct Amps2Volts {
  template <class T> static T Scalar(T x) { return InPlace<Amps2Volts>(x); }
  template <class T> static void Steps(Block<T> b) { b.Mul(kOhm<T>); }
};

struct Deg2Rad {
  template <class T> static T Scalar(T x) { return InPlace<Deg2Rad>(x); }
  template <class T> static void Steps(Block<T> b) { b.Mul(kRadPerDeg<T>); }
};

struct Rad2Deg {
  template <class T> static T Scalar(T x) { return InPlace<Rad2Deg>(x); }
  template <class T> static void Steps(Block<T> b) { b.Mul(kDegPerRad<T>); }
};

} // namespace form

} // namespace

// Linear to logarithmic.

float UnitConversion::VoltageRatio2dB(float ratio) { return form::VoltageRatio2dB::Scalar(ratio); }
double UnitConversion::VoltageRatio2dB(double ratio) { return form::VoltageRatio2dB::Scalar(ratio); }
void UnitConversion::VoltageRatio2dB(VecReal32 &dst, const VecReal32 &src) {
  Vector<form::VoltageRatio2dB>(dst, src);
}
void UnitConversion::VoltageRatio2dB(VecReal64 &dst, const VecReal64 &src) {
  Vector<form::VoltageRatio2dB>(dst, src);
}

float UnitConversion::Volt2dBV(float volt) { return form::VoltageRatio2dB::Scalar(volt); }
double UnitConversion::Volt2dBV(double volt) { return form::VoltageRatio2dB::Scalar(volt); }
void UnitConversion::Volt2dBV(VecReal32 &dst, const VecReal32 &src) {
  Vector<form::VoltageRatio2dB>(dst, src);
}
void UnitConversion::Volt2dBV(VecReal64 &dst, const VecReal64 &src) {
  Vector<form::VoltageRatio2dB>(dst, src);
}

float UnitConversion::PowerRatio2dB(float ratio) { return form::PowerRatio2dB::Scalar(ratio); }
double UnitConversion::PowerRatio2dB(double ratio) { return form::PowerRatio2dB::Scalar(ratio); }
void UnitConversion::PowerRatio2dB(VecReal32 &dst, const VecReal32 &src) {
  Vector<form::PowerRatio2dB>(dst, src);
}
void UnitConversion::PowerRatio2dB(VecReal64 &dst, const VecReal64 &src) {
  Vector<form::PowerRatio2dB>(dst, src);
}

float UnitConversion::Watt2dBm(float watt) { return form::Watt2dBm::Scalar(watt); }
double UnitConversion::Watt2dBm(double watt) { return form::Watt2dBm::Scalar(watt); }
void UnitConversion::Watt2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::Watt2dBm>(dst, src); }
void UnitConversion::Watt2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::Watt2dBm>(dst, src); }

float UnitConversion::Volt2dBm(float volt) { return form::Volt2dBm::Scalar(volt); }
double UnitConversion::Volt2dBm(double volt) { return form::Volt2dBm::Scalar(volt); }
void UnitConversion::Volt2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::Volt2dBm>(dst, src); }
void UnitConversion::Volt2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::Volt2dBm>(dst, src); }

float UnitConversion::PeakVolt2dBm(float volt) { return form::PeakVolt2dBm::Scalar(volt); }
double UnitConversion::PeakVolt2dBm(double volt) { return form::PeakVolt2dBm::Scalar(volt); }
void UnitConversion::PeakVolt2dBm(VecReal32 &dst, const VecReal32 &src) {
  Vector<form::PeakVolt2dBm>(dst, src);
}
void UnitConversion::PeakVolt2dBm(VecReal64 &dst, const VecReal64 &src) {
  Vector<form::PeakVolt2dBm>(dst, src);
}

float UnitConversion::uA2dBm(float microamp) { return form::uA2dBm::Scalar(microamp); }
double UnitConversion::uA2dBm(double microamp) { return form::uA2dBm::Scalar(microamp); }
void UnitConversion::uA2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::uA2dBm>(dst, src); }
void UnitConversion::uA2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::uA2dBm>(dst, src); }

float UnitConversion::Watt2dBV(float watt) { return form::Watt2dBV::Scalar(watt); }
double UnitConversion::Watt2dBV(double watt) { return form::Watt2dBV::Scalar(watt); }
void UnitConversion::Watt2dBV(VecReal32 &dst, const VecReal32 &src) { Vector<form::Watt2dBV>(dst, src); }
void UnitConversion::Watt2dBV(VecReal64 &dst, const VecReal64 &src) { Vector<form::Watt2dBV>(dst, src); }

// Logarithmic to linear.

float UnitConversion::dB2VoltageRatio(float dB) { return form::dB2VoltageRatio::Scalar(dB); }
double UnitConversion::dB2VoltageRatio(double dB) { return form::dB2VoltageRatio::Scalar(dB); }
void UnitConversion::dB2VoltageRatio(VecReal32 &dst, const VecReal32 &src) {
  Vector<form::dB2VoltageRatio>(dst, src);
}
void UnitConversion::dB2VoltageRatio(VecReal64 &dst, const VecReal64 &src) {
  Vector<form::dB2VoltageRatio>(dst, src);
}

float UnitConversion::dBV2Volt(float dBV) { return form::dB2VoltageRatio::Scalar(dBV); }
double UnitConversion::dBV2Volt(double dBV) { return form::dB2VoltageRatio::Scalar(dBV); }
void UnitConversion::dBV2Volt(VecReal32 &dst, const VecReal32 &src) {
  Vector<form::dB2VoltageRatio>(dst, src);
}
void UnitConversion::dBV2Volt(VecReal64 &dst, const VecReal64 &src) {
  Vector<form::dB2VoltageRatio>(dst, src);
}

float UnitConversion::dB2PowerRatio(float dB) { return form::dB2PowerRatio::Scalar(dB); }
double UnitConversion::dB2PowerRatio(double dB) { return form::dB2PowerRatio::Scalar(dB); }
void UnitConversion::dB2PowerRatio(VecReal32 &dst, const VecReal32 &src) {
  Vector<form::dB2PowerRatio>(dst, src);
}
void UnitConversion::dB2PowerRatio(VecReal64 &dst, const VecReal64 &src) {
  Vector<form::dB2PowerRatio>(dst, src);
}

float UnitConversion::dBm2Watt(float dBm) { return form::dBm2Watt::Scalar(dBm); }
double UnitConversion::dBm2Watt(double dBm) { return form::dBm2Watt::Scalar(dBm); }
void UnitConversion::dBm2Watt(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2Watt>(dst, src); }
void UnitConversion::dBm2Watt(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2Watt>(dst, src); }

float UnitConversion::dBm2Volt(float dBm) { return form::dBm2Volt::Scalar(dBm); }
double UnitConversion::dBm2Volt(double dBm) { return form::dBm2Volt::Scalar(dBm); }
void UnitConversion::dBm2Volt(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2Volt>(dst, src); }
void UnitConversion::dBm2Volt(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2Volt>(dst, src); }

float UnitConversion::dBm2PeakVolt(float dBm) { return form::dBm2PeakVolt::Scalar(dBm); }
double UnitConversion::dBm2PeakVolt(double dBm) { return form::dBm2PeakVolt::Scalar(dBm); }
void UnitConversion::dBm2PeakVolt(VecReal32 &dst, const VecReal32 &src) {
  Vector<form::dBm2PeakVolt>(dst, src);
}
void UnitConversion::dBm2PeakVolt(VecReal64 &dst, const VecReal64 &src) {
  Vector<form::dBm2PeakVolt>(dst, src);
}

float UnitConversion::dBm2uA(float dBm) { return form::dBm2uA::Scalar(dBm); }
double UnitConversion::dBm2uA(double dBm) { return form::dBm2uA::Scalar(dBm); }
void UnitConversion::dBm2uA(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2uA>(dst, src); }
void UnitConversion::dBm2uA(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2uA>(dst, src); }

float UnitConversion::dBV2Watt(float dBV) { return form::dBV2Watt::Scalar(dBV); }
double UnitConversion::dBV2Watt(double dBV) { return form::dBV2Watt::Scalar(dBV); }
void UnitConversion::dBV2Watt(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBV2Watt>(dst, src); }
void UnitConversion::dBV2Watt(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBV2Watt>(dst, src); }

// Logarithmic to logarithmic.

float UnitConversion::dBm2dBuW(float dBm) { return form::dBm2dBuW::Scalar(dBm); }
double UnitConversion::dBm2dBuW(double dBm) { return form::dBm2dBuW::Scalar(dBm); }
void UnitConversion::dBm2dBuW(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2dBuW>(dst, src); }
void UnitConversion::dBm2dBuW(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2dBuW>(dst, src); }

float UnitConversion::dBuW2dBm(float dBuW) { return form::dBuW2dBm::Scalar(dBuW); }
double UnitConversion::dBuW2dBm(double dBuW) { return form::dBuW2dBm::Scalar(dBuW); }
void UnitConversion::dBuW2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBuW2dBm>(dst, src); }
void UnitConversion::dBuW2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBuW2dBm>(dst, src); }

float UnitConversion::dBW2dBm(float dBW) { return form::dBm2dBuW::Scalar(dBW); }
double UnitConversion::dBW2dBm(double dBW) { return form::dBm2dBuW::Scalar(dBW); }
void UnitConversion::dBW2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2dBuW>(dst, src); }
void UnitConversion::dBW2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2dBuW>(dst, src); }

float UnitConversion::dBm2dBW(float dBm) { return form::dBuW2dBm::Scalar(dBm); }
double UnitConversion::dBm2dBW(double dBm) { return form::dBuW2dBm::Scalar(dBm); }
void UnitConversion::dBm2dBW(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBuW2dBm>(dst, src); }
void UnitConversion::dBm2dBW(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBuW2dBm>(dst, src); }

float UnitConversion::dBm2dBV(float dBm) { return form::dBm2dBV::Scalar(dBm); }
double UnitConversion::dBm2dBV(double dBm) { return form::dBm2dBV::Scalar(dBm); }
void UnitConversion::dBm2dBV(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2dBV>(dst, src); }
void UnitConversion::dBm2dBV(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2dBV>(dst, src); }

float UnitConversion::dBV2dBm(float dBV) { return form::dBV2dBm::Scalar(dBV); }
double UnitConversion::dBV2dBm(double dBV) { return form::dBV2dBm::Scalar(dBV); }
void UnitConversion::dBV2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBV2dBm>(dst, src); }
void UnitConversion::dBV2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBV2dBm>(dst, src); }

float UnitConversion::dBm2dBmA(float dBm) { return form::dBm2dBmA::Scalar(dBm); }
double UnitConversion::dBm2dBmA(double dBm) { return form::dBm2dBmA::Scalar(dBm); }
void UnitConversion::dBm2dBmA(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2dBmA>(dst, src); }
void UnitConversion::dBm2dBmA(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2dBmA>(dst, src); }

float UnitConversion::dBmA2dBm(float dBmA) { return form::dBmA2dBm::Scalar(dBmA); }
double UnitConversion::dBmA2dBm(double dBmA) { return form::dBmA2dBm::Scalar(dBmA); }
void UnitConversion::dBmA2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBmA2dBm>(dst, src); }
void UnitConversion::dBmA2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBmA2dBm>(dst, src); }

float UnitConversion::dBm2dBmV(float dBm) { return form::dBm2dBmV::Scalar(dBm); }
double UnitConversion::dBm2dBmV(double dBm) { return form::dBm2dBmV::Scalar(dBm); }
void UnitConversion::dBm2dBmV(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2dBmV>(dst, src); }
void UnitConversion::dBm2dBmV(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2dBmV>(dst, src); }

float UnitConversion::dBmV2dBm(float dBmV) { return form::dBmV2dBm::Scalar(dBmV); }
double UnitConversion::dBmV2dBm(double dBmV) { return form::dBmV2dBm::Scalar(dBmV); }
void UnitConversion::dBmV2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBmV2dBm>(dst, src); }
void UnitConversion::dBmV2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBmV2dBm>(dst, src); }

float UnitConversion::dBm2dBuV(float dBm) { return form::dBm2dBuV::Scalar(dBm); }
double UnitConversion::dBm2dBuV(double dBm) { return form::dBm2dBuV::Scalar(dBm); }
void UnitConversion::dBm2dBuV(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2dBuV>(dst, src); }
void UnitConversion::dBm2dBuV(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2dBuV>(dst, src); }

float UnitConversion::dBuV2dBm(float dBuV) { return form::dBuV2dBm::Scalar(dBuV); }
double UnitConversion::dBuV2dBm(double dBuV) { return form::dBuV2dBm::Scalar(dBuV); }
void UnitConversion::dBuV2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBuV2dBm>(dst, src); }
void UnitConversion::dBuV2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBuV2dBm>(dst, src); }

float UnitConversion::dBm2dBuVm(float dBm) { return form::dBm2dBuV::Scalar(dBm); }
double UnitConversion::dBm2dBuVm(double dBm) { return form::dBm2dBuV::Scalar(dBm); }
void UnitConversion::dBm2dBuVm(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2dBuV>(dst, src); }
void UnitConversion::dBm2dBuVm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2dBuV>(dst, src); }

float UnitConversion::dBuVm2dBm(float dBuVm) { return form::dBuV2dBm::Scalar(dBuVm); }
double UnitConversion::dBuVm2dBm(double dBuVm) { return form::dBuV2dBm::Scalar(dBuVm); }
void UnitConversion::dBuVm2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBuV2dBm>(dst, src); }
void UnitConversion::dBuVm2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBuV2dBm>(dst, src); }

float UnitConversion::dBm2dBuA(float dBm) { return form::dBm2dBuA::Scalar(dBm); }
double UnitConversion::dBm2dBuA(double dBm) { return form::dBm2dBuA::Scalar(dBm); }
void UnitConversion::dBm2dBuA(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2dBuA>(dst, src); }
void UnitConversion::dBm2dBuA(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2dBuA>(dst, src); }

float UnitConversion::dBuA2dBm(float dBuA) { return form::dBuA2dBm::Scalar(dBuA); }
double UnitConversion::dBuA2dBm(double dBuA) { return form::dBuA2dBm::Scalar(dBuA); }
void UnitConversion::dBuA2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBuA2dBm>(dst, src); }
void UnitConversion::dBuA2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBuA2dBm>(dst, src); }

double UnitConversion::dBpT2dBuVm(double dBpT) { return form::dBpT2dBuVm::Scalar(dBpT); }
void UnitConversion::dBpT2dBuVm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBpT2dBuVm>(dst, src); }

double UnitConversion::dBuVm2dBpT(double dBuVm) { return form::dBuVm2dBpT::Scalar(dBuVm); }
void UnitConversion::dBuVm2dBpT(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBuVm2dBpT>(dst, src); }

float UnitConversion::dBuAm2dBm(float dBuAm) { return form::dBuAm2dBm::Scalar(dBuAm); }
double UnitConversion::dBuAm2dBm(double dBuAm) { return form::dBuAm2dBm::Scalar(dBuAm); }
void UnitConversion::dBuAm2dBm(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBuAm2dBm>(dst, src); }
void UnitConversion::dBuAm2dBm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBuAm2dBm>(dst, src); }

float UnitConversion::dBm2dBuAm(float dBm) { return form::dBm2dBuAm::Scalar(dBm); }
double UnitConversion::dBm2dBuAm(double dBm) { return form::dBm2dBuAm::Scalar(dBm); }
void UnitConversion::dBm2dBuAm(VecReal32 &dst, const VecReal32 &src) { Vector<form::dBm2dBuAm>(dst, src); }
void UnitConversion::dBm2dBuAm(VecReal64 &dst, const VecReal64 &src) { Vector<form::dBm2dBuAm>(dst, src); }

// Linear, and angles.

float UnitConversion::Volt2Watt(float volt) { return form::Volt2Watt::Scalar(volt); }
double UnitConversion::Volt2Watt(double volt) { return form::Volt2Watt::Scalar(volt); }
void UnitConversion::Volt2Watt(VecReal32 &dst, const VecReal32 &src) { Vector<form::Volt2Watt>(dst, src); }
void UnitConversion::Volt2Watt(VecReal64 &dst, const VecReal64 &src) { Vector<form::Volt2Watt>(dst, src); }

float UnitConversion::Watt2Volt(float watt) { return form::Watt2Volt::Scalar(watt); }
double UnitConversion::Watt2Volt(double watt) { return form::Watt2Volt::Scalar(watt); }
void UnitConversion::Watt2Volt(VecReal32 &dst, const VecReal32 &src) { Vector<form::Watt2Volt>(dst, src); }
void UnitConversion::Watt2Volt(VecReal64 &dst, const VecReal64 &src) { Vector<form::Watt2Volt>(dst, src); }

float UnitConversion::Volts2Amps(float volt) { return form::Volts2Amps::Scalar(volt); }
double UnitConversion::Volts2Amps(double volt) { return form::Volts2Amps::Scalar(volt); }
void UnitConversion::Volts2Amps(VecReal32 &dst, const VecReal32 &src) { Vector<form::Volts2Amps>(dst, src); }
void UnitConversion::Volts2Amps(VecReal64 &dst, const VecReal64 &src) { Vector<form::Volts2Amps>(dst, src); }

float UnitConversion::Amps2Volts(float amp) { return form::Amps2Volts::Scalar(amp); }
double UnitConversion::Amps2Volts(double amp) { return form::Amps2Volts::Scalar(amp); }
void UnitConversion::Amps2Volts(VecReal32 &dst, const VecReal32 &src) { Vector<form::Amps2Volts>(dst, src); }
void UnitConversion::Amps2Volts(VecReal64 &dst, const VecReal64 &src) { Vector<form::Amps2Volts>(dst, src); }

float UnitConversion::Deg2Rad(float degree) { return form::Deg2Rad::Scalar(degree); }
double UnitConversion::Deg2Rad(double degree) { return form::Deg2Rad::Scalar(degree); }
void UnitConversion::Deg2Rad(VecReal32 &dst, const VecReal32 &src) { Vector<form::Deg2Rad>(dst, src); }
void UnitConversion::Deg2Rad(VecReal64 &dst, const VecReal64 &src) { Vector<form::Deg2Rad>(dst, src); }
void UnitConversion::Deg2Rad(VecReal32 &vec) { Vector<form::Deg2Rad>(vec, vec); }
void UnitConversion::Deg2Rad(VecReal64 &vec) { Vector<form::Deg2Rad>(vec, vec); }

float UnitConversion::Rad2Deg(float radian) { return form::Rad2Deg::Scalar(radian); }
double UnitConversion::Rad2Deg(double radian) { return form::Rad2Deg::Scalar(radian); }
void UnitConversion::Rad2Deg(VecReal32 &dst, const VecReal32 &src) { Vector<form::Rad2Deg>(dst, src); }
void UnitConversion::Rad2Deg(VecReal64 &dst, const VecReal64 &src) { Vector<form::Rad2Deg>(dst, src); }
void UnitConversion::Rad2Deg(VecReal32 &vec) { Vector<form::Rad2Deg>(vec, vec); }
void UnitConversion::Rad2Deg(VecReal64 &vec) { Vector<form::Rad2Deg>(vec, vec); }

} // namespace QORN
