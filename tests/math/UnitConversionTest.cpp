#include "qorn/math/UnitConversion.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Csv.h"
#include "support/KernelCheck.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;

struct Forms {
  float (*scalar32)(float);
  double (*scalar64)(double);
  void (*vector32)(VecReal32 &, const VecReal32 &);
  void (*vector64)(VecReal64 &, const VecReal64 &);
};

// Overload resolution by the members' types.
#define FORMS(name)                                                                                          \
  {                                                                                                          \
#name, { &UnitConversion::name, &UnitConversion::name, &UnitConversion::name, &UnitConversion::name }    \
  }
#define DOUBLE_FORMS(name)                                                                                   \
  {                                                                                                          \
#name, { nullptr, &UnitConversion::name, nullptr, &UnitConversion::name }                                \
  }

const std::map<std::string, Forms> kConversions = {
    FORMS(VoltageRatio2dB),   FORMS(Volt2dBV),         FORMS(PowerRatio2dB), FORMS(Watt2dBm),
    FORMS(Volt2dBm),          FORMS(PeakVolt2dBm),     FORMS(uA2dBm),        FORMS(Watt2dBV),
    FORMS(dB2VoltageRatio),   FORMS(dBV2Volt),         FORMS(dB2PowerRatio), FORMS(dBm2Watt),
    FORMS(dBm2Volt),          FORMS(dBm2PeakVolt),     FORMS(dBm2uA),        FORMS(dBV2Watt),
    FORMS(dBm2dBuW),          FORMS(dBuW2dBm),         FORMS(dBW2dBm),       FORMS(dBm2dBW),
    FORMS(dBm2dBV),           FORMS(dBV2dBm),          FORMS(dBm2dBmA),      FORMS(dBmA2dBm),
    FORMS(dBm2dBmV),          FORMS(dBmV2dBm),         FORMS(dBm2dBuV),      FORMS(dBuV2dBm),
    FORMS(dBm2dBuVm),         FORMS(dBuVm2dBm),        FORMS(dBm2dBuA),      FORMS(dBuA2dBm),
    FORMS(dBuAm2dBm),         FORMS(dBm2dBuAm),        FORMS(Volt2Watt),     FORMS(Watt2Volt),
    FORMS(Volts2Amps),        FORMS(Amps2Volts),       FORMS(Deg2Rad),       FORMS(Rad2Deg),
    DOUBLE_FORMS(dBpT2dBuVm), DOUBLE_FORMS(dBuVm2dBpT)};

template <class V> auto OfOne(void (*vector)(V &, const V &), test::ElementOf<V> x) {
  V dst;
  vector(dst, Of<V>({x}));
  return dst[0];
}

double Result(const Forms &forms, char form, double x) {
  const auto narrow = static_cast<float>(x);
  switch (form) {
  case 'f':
    return static_cast<double>(forms.scalar32(narrow));
  case 'd':
    return forms.scalar64(x);
  case 'F':
    return static_cast<double>(OfOne(forms.vector32, narrow));
  default:
    return OfOne(forms.vector64, x);
  }
}

// Each row of the table, which is computed step by step outside the library.
TEST(UnitConversion, AnyConversion_AnyForm_GivesTheTabulatedResult) {
  std::map<std::string, int> rows;
  for (const auto &row : test::ReadCsv("unit_conversion.csv")) {
    ASSERT_EQ(row.size(), 5U);
    const auto found = kConversions.find(row[0]);
    ASSERT_NE(found, kConversions.end()) << row[0];
    ++rows[row[0]];
    const double x = std::strtod(row[2].c_str(), nullptr);
    const double expected = std::strtod(row[3].c_str(), nullptr);
    const double bound = std::strtod(row[4].c_str(), nullptr);
    const double got = Result(found->second, row[1][0], x);
    if (std::isnan(expected)) {
      EXPECT_TRUE(std::isnan(got)) << row[0] << ' ' << row[1] << ' ' << x;
    } else {
      EXPECT_LE(std::abs(got - expected), bound)
          << row[0] << ' ' << row[1] << " of " << x << ": " << got << " instead of " << expected;
    }
  }
  EXPECT_EQ(rows.size(), kConversions.size());
}

TEST(UnitConversion, ScalarLogarithms_OfZero_AreThoseOfTheOffset) {
  EXPECT_DOUBLE_EQ(UnitConversion::VoltageRatio2dB(0.0), -800.0000468161031);
  EXPECT_DOUBLE_EQ(UnitConversion::Volt2dBV(0.0), -800.0000468161031);
  EXPECT_DOUBLE_EQ(UnitConversion::PowerRatio2dB(0.0), -400.00002340805156);
  EXPECT_DOUBLE_EQ(UnitConversion::Watt2dBm(0.0), -400.00002340805156);
  EXPECT_FLOAT_EQ(UnitConversion::Volt2dBV(0.0F), -800.0000468161031F);
}

TEST(UnitConversion, ScalarLogarithms_OfANegative_ScaleTheStandIn) {
  EXPECT_EQ(UnitConversion::VoltageRatio2dB(-1.0), -19980.0);
  EXPECT_EQ(UnitConversion::Volt2dBV(-1.0), -19980.0);
  EXPECT_EQ(UnitConversion::PowerRatio2dB(-1.0), -9990.0);
  EXPECT_EQ(UnitConversion::Watt2dBm(-1.0), -9990.0);
  EXPECT_EQ(UnitConversion::Volt2dBm(-1.0), -19980.0);
  EXPECT_EQ(UnitConversion::PeakVolt2dBm(-1.0), -19970.0);
  EXPECT_EQ(UnitConversion::uA2dBm(-1.0), -20053.01029995664);
  EXPECT_EQ(UnitConversion::Watt2dBV(-1.0), -10003.01029995664);
  EXPECT_EQ(UnitConversion::Volt2dBV(-1.0F), -19980.0F);
}

TEST(UnitConversion, Watt2dBm_OneWatt_IsThirtyAndBack) {
  EXPECT_DOUBLE_EQ(UnitConversion::Watt2dBm(1.0), 30.0);
  EXPECT_DOUBLE_EQ(UnitConversion::dBm2Watt(30.0), 1.0);
}

TEST(UnitConversion, Offsets_OfOneMeaning_DifferInTheLastDigitsInDoubleOnly) {
  EXPECT_NE(UnitConversion::dBm2dBV(0.0), UnitConversion::dBmA2dBm(0.0));
  EXPECT_EQ(UnitConversion::dBm2dBV(0.0), -13.01029995663981);
  EXPECT_EQ(UnitConversion::dBmA2dBm(0.0), -13.0102999566398);
  EXPECT_EQ(UnitConversion::dBm2dBV(0.0F), UnitConversion::dBmA2dBm(0.0F));
}

TEST(UnitConversion, Deg2Rad_HalfTurn_IsNotQuitePi) {
  EXPECT_EQ(UnitConversion::Deg2Rad(180.0), 180.0 * 0.017453292519943);
  EXPECT_NE(UnitConversion::Deg2Rad(180.0), 3.141592653589793);
}

TEST(UnitConversion, Angles_InPlace_GiveWhatTheOtherFormGives) {
  auto f = Of<VecReal32>({180.0F, -45.0F});
  UnitConversion::Deg2Rad(f);
  EXPECT_EQ(List(f), (std::vector<float>{UnitConversion::Deg2Rad(180.0F), UnitConversion::Deg2Rad(-45.0F)}));
  UnitConversion::Rad2Deg(f);
  EXPECT_FLOAT_EQ(f[1], -45.0F);
  auto d = Of<VecReal64>({1.0});
  UnitConversion::Rad2Deg(d);
  EXPECT_EQ(d[0], 57.29577951308232);
  UnitConversion::Deg2Rad(d);
  EXPECT_EQ(d[0], 57.29577951308232 * 0.017453292519943);
}

TEST(UnitConversion, Volts2Amps_ScalarAndVector_DivideAndMultiply) {
  // 3 / 50 and 3 * 0.02 are neighbours in double.
  EXPECT_EQ(UnitConversion::Volts2Amps(3.0), 3.0 / 50.0);
  EXPECT_EQ(OfOne<VecReal64>(&UnitConversion::Volts2Amps, 3.0), 3.0 * 0.02);
}

// The constants, seen through conversions of arguments that let them pass unrounded. A vector's constant is
// seen through the vector form.

struct Constant {
  const char *conversion;
  char form; // s: scalar, v: vector
  float argument32;
  double argument64;
  std::uint32_t bits32;
  std::uint64_t bits64;
};

TEST(UnitConversion, Constants_InEitherWidth_HaveTheirBits) {
  constexpr float dBuV32 = 106.98970031738281F;
  constexpr double dBuV64 = 106.9897000433602;
  for (const Constant &c : {Constant{"Amps2Volts", 's', 1.0F, 1.0, 0x42480000U, 0x4049000000000000U},
                            {"Amps2Volts", 'v', 1.0F, 1.0, 0x42480000U, 0x4049000000000000U},
                            {"Volts2Amps", 'v', 1.0F, 1.0, 0x3CA3D70AU, 0x3F947AE147AE147BU},
                            {"dBm2Volt", 's', 0.0F, 0.0, 0x3E64F92EU, 0x3FCC9F25C5BFEDFEU},
                            {"dBm2Watt", 's', 0.0F, 0.0, 0x3A83126FU, 0x3F50624DD2F1A9FCU},
                            {"dBV2dBm", 's', 0.0F, 0.0, 0x41502A30U, 0x402A05460931D61FU},
                            {"dBV2dBm", 'v', 0.0F, 0.0, 0x41502A30U, 0x402A05460931D61FU},
                            {"dBm2dBV", 's', 0.0F, 0.0, 0xC1502A30U, 0xC02A05460931D61FU},
                            {"dBm2dBV", 'v', 0.0F, 0.0, 0xC1502A30U, 0xC02A05460931D61FU},
                            {"dBm2dBmA", 's', 0.0F, 0.0, 0x41502A30U, 0x402A05460931D619U},
                            {"dBm2dBmA", 'v', 0.0F, 0.0, 0x41502A30U, 0x402A05460931D619U},
                            {"dBmA2dBm", 's', 0.0F, 0.0, 0xC1502A30U, 0xC02A05460931D619U},
                            {"dBmA2dBm", 'v', 0.0F, 0.0, 0xC1502A30U, 0xC02A05460931D619U},
                            {"dBm2dBmV", 's', 0.0F, 0.0, 0x423BF574U, 0x40477EAE7DB38A7AU},
                            {"dBm2dBmV", 'v', 0.0F, 0.0, 0x423BF574U, 0x40477EAE7DB38A7AU},
                            {"dBmV2dBm", 's', 0.0F, 0.0, 0xC23BF574U, 0xC0477EAE7DB38A7AU},
                            {"dBmV2dBm", 'v', 0.0F, 0.0, 0xC23BF574U, 0xC0477EAE7DB38A7AU},
                            {"dBm2dBuV", 's', 0.0F, 0.0, 0x42D5FABAU, 0x405ABF573ED9C53DU},
                            {"dBm2dBuV", 'v', 0.0F, 0.0, 0x42D5FABAU, 0x405ABF573ED9C53DU},
                            {"dBuV2dBm", 's', 0.0F, 0.0, 0xC2D5FABAU, 0xC05ABF573ED9C53DU},
                            {"dBuV2dBm", 'v', 0.0F, 0.0, 0xC2D5FABAU, 0xC05ABF573ED9C53DU},
                            {"dBm2dBuA", 's', 0.0F, 0.0, 0x42920546U, 0x405240A8C1263AC3U},
                            {"dBm2dBuA", 'v', 0.0F, 0.0, 0x42920546U, 0x405240A8C1263AC3U},
                            {"dBuA2dBm", 's', 0.0F, 0.0, 0xC2920546U, 0xC05240A8C1263AC3U},
                            {"dBuA2dBm", 'v', 0.0F, 0.0, 0xC2920546U, 0xC05240A8C1263AC3U},
                            {"dBm2dBuAm", 's', -dBuV32, -dBuV64, 0xC24E1B43U, 0xC049C3685CAAA128U},
                            {"dBm2dBuAm", 'v', -dBuV32, -dBuV64, 0xC24E1B43U, 0xC049C3685CAAA128U},
                            {"dBm2dBuW", 's', 0.0F, 0.0, 0x41F00000U, 0x403E000000000000U},
                            {"dBm2dBuW", 'v', 0.0F, 0.0, 0x41F00000U, 0x403E000000000000U},
                            {"dBW2dBm", 's', 0.0F, 0.0, 0x41F00000U, 0x403E000000000000U},
                            {"dBW2dBm", 'v', 0.0F, 0.0, 0x41F00000U, 0x403E000000000000U},
                            {"Deg2Rad", 's', 1.0F, 1.0, 0x3C8EFA35U, 0x3F91DF46A2529CE4U},
                            {"Deg2Rad", 'v', 1.0F, 1.0, 0x3C8EFA35U, 0x3F91DF46A2529CE4U},
                            {"Rad2Deg", 's', 1.0F, 1.0, 0x42652EE1U, 0x404CA5DC1A63C1F8U},
                            {"Rad2Deg", 'v', 1.0F, 1.0, 0x42652EE1U, 0x404CA5DC1A63C1F8U}}) {
    SCOPED_TRACE(c.conversion + std::string(" ") + c.form);
    const Forms &f = kConversions.at(c.conversion);
    const bool scalar = c.form == 's';
    const float got32 = scalar ? f.scalar32(c.argument32) : OfOne(f.vector32, c.argument32);
    const double got64 = scalar ? f.scalar64(c.argument64) : OfOne(f.vector64, c.argument64);
    EXPECT_EQ(std::bit_cast<std::uint32_t>(got32), c.bits32) << test::Show(got32);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(got64), c.bits64) << test::Show(got64);
  }
  EXPECT_EQ(UnitConversion::dBpT2dBuVm(0.0), 49.5);
  EXPECT_EQ(UnitConversion::dBuVm2dBpT(0.0), -49.5);
}

// Scalar and vector forms: the same bits, or on purpose two formulas or two precisions.

const std::set<std::string> kAlikeInFloat = {
    "dBm2dBuW",  "dBuW2dBm",  "dBW2dBm",   "dBm2dBW",    "dBm2dBV",   "dBV2dBm",   "dBm2dBmA", "dBmA2dBm",
    "dBm2dBmV",  "dBmV2dBm",  "dBm2dBuV",  "dBuV2dBm",   "dBm2dBuVm", "dBuVm2dBm", "dBm2dBuA", "dBuA2dBm",
    "dBuAm2dBm", "dBm2dBuAm", "Watt2Volt", "Amps2Volts", "Deg2Rad",   "Rad2Deg"};

// In double the logarithms need no widening, and the guard's offset is lost in arguments that are not tiny.
std::set<std::string> AlikeInDouble() {
  std::set<std::string> names = kAlikeInFloat;
  names.insert(
      {"VoltageRatio2dB", "Volt2dBV", "PowerRatio2dB", "PeakVolt2dBm", "uA2dBm", "dBpT2dBuVm", "dBuVm2dBpT"});
  return names;
}

/// How many of the arguments the two forms give different bits for.
template <class V>
int Differences(test::ElementOf<V> (*scalar)(test::ElementOf<V>), void (*vector)(V &, const V &),
                const std::vector<test::ElementOf<V>> &arguments) {
  V dst;
  vector(dst, Of<V>(arguments));
  int differences = 0;
  for (int i = 0; i < dst.GetSize(); ++i) {
    if (!test::Same()(dst[i], scalar(arguments[static_cast<std::size_t>(i)]))) ++differences;
  }
  return differences;
}

/// The ordinary arguments of a logarithm or of a power of ten, and with `all` whatever else there is.
template <class T> std::vector<T> Arguments(bool all) {
  std::vector<T> arguments;
  for (int i = 1; i <= 1000; ++i) arguments.push_back(T(0.037) * static_cast<T>(i));
  if (all) {
    for (const T x : test::Samples<T>()) arguments.push_back(x);
  }
  return arguments;
}

TEST(UnitConversion, ScalarAndVector_AtEveryLevel_AgreeOrDifferAsDocumented) {
  const std::set<std::string> alikeInDouble = AlikeInDouble();
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const auto &[name, f] : kConversions) {
      SCOPED_TRACE(name + " at " + level.name);
      const bool linear = kAlikeInFloat.count(name) != 0;
      if (f.scalar32 != nullptr) {
        const int differences = Differences<VecReal32>(f.scalar32, f.vector32, Arguments<float>(linear));
        EXPECT_EQ(differences == 0, linear) << "float: " << differences;
      }
      const bool onlyOffsets = linear || f.scalar32 == nullptr;
      const int differences = Differences<VecReal64>(f.scalar64, f.vector64, Arguments<double>(onlyOffsets));
      EXPECT_EQ(differences == 0, alikeInDouble.count(name) != 0) << "double: " << differences;
    }
  }
}

// The float scalar forms: which steps are taken in float and which constants stay double. The expected
// values are those of long double functions; beside them stands what the form would give with the other
// precision, and only arguments for which that differs count.

template <class Documented, class Other>
void ExpectPrecision(const char *name, double low, double high, Documented documented, Other other) {
  const auto form = kConversions.at(name).scalar32;
  int telling = 0;
  for (int i = 0; i < 2000; ++i) {
    const auto x = static_cast<float>(low + (high - low) * i / 2000);
    const float expected = documented(x);
    if (expected == other(x)) continue;
    ++telling;
    EXPECT_EQ(form(x), expected) << name << " of " << test::Show(x);
  }
  EXPECT_GT(telling, 20) << name;
}

using Wide = long double;
Wide Log(Wide x) { return std::log10(x); }
Wide Ten(Wide x) { return std::pow(Wide{10}, x); }
float Narrow(Wide x) { return static_cast<float>(x); }

TEST(UnitConversion, FloatScalars_EachStep_HasTheDocumentedPrecision) {
  constexpr float dBV = 13.010299682617188F, volt = 0.22360679507255554F;
  constexpr double dBV64 = 13.01029995663981, volt64 = 0.22360679774998;
  constexpr double uA = 73.0102999566398, uA32 = 73.01029968261719;
  ExpectPrecision(
      "Watt2dBm", 0.01, 3.0, [](float x) { return Narrow(10 * Log(1000 * Wide{x})); },
      [](float x) { return Narrow(10 * Log(1000.0F * x)); });
  ExpectPrecision(
      "Volt2dBm", 0.01, 1.0, [](float x) { return Narrow(20 * Log(x / volt)); },
      [](float x) { return Narrow(20 * Log(x / volt64)); });
  ExpectPrecision(
      "Watt2dBV", 0.01, 3.0, [](float x) { return Narrow(10 * Log(1000 * Wide{x})) - dBV; },
      [](float x) { return Narrow(10 * Log(1000 * Wide{x}) - dBV64); });
  ExpectPrecision(
      "uA2dBm", 1.0, 3000.0, [](float x) { return Narrow(20 * Log(x) - uA); },
      [](float x) { return Narrow(20 * Log(x) - uA32); });
  ExpectPrecision(
      "dBm2uA", -90.0, 30.0, [](float x) { return Narrow(Ten((Wide{x} + uA) / 20)); },
      [](float x) { return Narrow(Ten((Wide{x} + uA32) / 20)); });
  for (const char *name : {"dB2VoltageRatio", "dBV2Volt"}) {
    ExpectPrecision(
        name, -90.0, 30.0, [](float x) { return Narrow(Ten(x / 20.0F)); },
        [](float x) { return Narrow(Ten(Wide{x} / 20)); });
  }
  ExpectPrecision(
      "dB2PowerRatio", -90.0, 30.0, [](float x) { return Narrow(Ten(x / 10.0F)); },
      [](float x) { return Narrow(Ten(Wide{x} / 10)); });
  ExpectPrecision(
      "dBm2Watt", -90.0, 30.0, [](float x) { return Narrow(Ten(x / 10.0F) * 0.001); },
      [](float x) { return Narrow(Ten(Wide{x} / 10) * 0.001); });
  ExpectPrecision(
      "dBm2Volt", -90.0, 30.0, [](float x) { return Narrow(Ten(x / 20.0F) * Wide{volt}); },
      [](float x) { return Narrow(Ten(x / 20.0F) * Wide{volt64}); });
  ExpectPrecision(
      "dBm2PeakVolt", -90.0, 30.0, [](float x) { return Narrow(Ten((x - 10.0F) / 20.0F)); },
      [](float x) { return Narrow(Ten((Wide{x} - 10) / 20)); });
  ExpectPrecision(
      "dBV2Watt", -90.0, 30.0, [](float x) { return Narrow(Ten((x + dBV) / 10.0F) * 0.001); },
      [](float x) { return Narrow(Ten((x + dBV64) / 10) * 0.001); });
  ExpectPrecision(
      "Watt2Volt", 0.0, 3.0, [](float x) { return Narrow(std::sqrt(Wide{x * 50.0F})); },
      [](float x) { return Narrow(std::sqrt(Wide{x} * 50)); });
}

TEST(UnitConversion, FieldStrength_InDBuV_IsTheVoltageConversion) {
  for (const double x : {-13.3, 0.0, 0.1, 77.7}) {
    const auto narrow = static_cast<float>(x);
    EXPECT_EQ(UnitConversion::dBm2dBuVm(x), UnitConversion::dBm2dBuV(x));
    EXPECT_EQ(UnitConversion::dBuVm2dBm(x), UnitConversion::dBuV2dBm(x));
    EXPECT_EQ(UnitConversion::dBm2dBuVm(narrow), UnitConversion::dBm2dBuV(narrow));
    EXPECT_EQ(UnitConversion::dBuVm2dBm(narrow), UnitConversion::dBuV2dBm(narrow));
    // One operation in float, two in double.
    EXPECT_EQ(UnitConversion::dBm2dBV(narrow), UnitConversion::dBmA2dBm(narrow));
    EXPECT_EQ(UnitConversion::dBV2dBm(narrow), UnitConversion::dBm2dBmA(narrow));
  }
  EXPECT_NE(UnitConversion::dBV2dBm(0.0), UnitConversion::dBm2dBmA(0.0));
}

TEST(UnitConversion, VectorLogarithms_OfZero_AreThoseOfTheOffset) {
  constexpr double log = -40.00000234080515;
  const std::map<std::string, double> expected = {{"VoltageRatio2dB", 20 * log},
                                                  {"Volt2dBV", 20 * log},
                                                  {"PowerRatio2dB", 10 * log},
                                                  {"Watt2dBm", 10 * log + 30},
                                                  {"PeakVolt2dBm", 20 * log + 10},
                                                  {"Volt2dBm", 20 * log + 13.01029995663981},
                                                  {"uA2dBm", 20 * log - 73.0102999566398},
                                                  {"Watt2dBV", 10 * log}};
  for (const auto &[name, result] : expected) {
    const Forms &f = kConversions.at(name);
    for (const float zero : {0.0F, -0.0F}) {
      EXPECT_DOUBLE_EQ(OfOne(f.vector64, static_cast<double>(zero)), result) << name;
      EXPECT_FLOAT_EQ(OfOne(f.vector32, zero), static_cast<float>(result)) << name;
    }
  }
}

TEST(UnitConversion, VectorLogarithms_OfANegative_AreNotANumber) {
  for (const char *name : {"VoltageRatio2dB", "Volt2dBV", "PowerRatio2dB", "Watt2dBm", "Volt2dBm",
                           "PeakVolt2dBm", "uA2dBm", "Watt2dBV"}) {
    const Forms &f = kConversions.at(name);
    EXPECT_TRUE(std::isnan(OfOne(f.vector64, -1.0))) << name;
    EXPECT_TRUE(std::isnan(OfOne(f.vector32, -1.0F))) << name;
  }
}

TEST(UnitConversion, VectorLogarithm_NotZero_IsOffsetToo) {
  const double tiny = 0x1.16c2p-133;
  EXPECT_DOUBLE_EQ(OfOne<VecReal64>(&UnitConversion::Volt2dBV, tiny), 20.0 * std::log10(2.0 * tiny));
  EXPECT_DOUBLE_EQ(UnitConversion::Volt2dBV(tiny), 20.0 * std::log10(tiny));
}

TEST(UnitConversion, AnyVectorForm_AnyLength_TreatsElementsAlike) {
  for (const auto &[name, forms] : kConversions) {
    for (const int n : {0, 1, 2, 1023, 1024, 1025, 2500}) {
      VecReal64 src(n);
      for (int i = 0; i < n; ++i) src[i] = 0.01 * (i + 1);
      VecReal64 dst(5);
      forms.vector64(dst, src);
      ASSERT_EQ(dst.GetSize(), n) << name;
      if (n > 0) {
        ASSERT_EQ(dst[n - 1], OfOne(forms.vector64, src[n - 1])) << name << ' ' << n;
      }
      forms.vector64(src, src);
      ASSERT_EQ(List(src), List(dst)) << name << ' ' << n;
      if (forms.vector32 == nullptr) continue;
      VecReal32 src32(n);
      for (int i = 0; i < n; ++i) src32[i] = 0.01F * static_cast<float>(i + 1);
      VecReal32 dst32(5);
      forms.vector32(dst32, src32);
      ASSERT_EQ(dst32.GetSize(), n) << name;
      forms.vector32(src32, src32);
      ASSERT_EQ(List(src32), List(dst32)) << name << ' ' << n;
    }
  }
}

TEST(UnitConversion, AnyVectorForm_OnAKeptDestination_AllocatesNothing) {
  const VecReal64 src(3000);
  VecReal64 dst(3000);
  const VecReal32 src32(3000);
  VecReal32 dst32(3000);
  const long before = test::AllocationCount();
  for (const auto &[name, forms] : kConversions) {
    forms.vector64(dst, src);
    if (forms.vector32 != nullptr) forms.vector32(dst32, src32);
    EXPECT_EQ(test::AllocationCount(), before) << name;
  }
}

} // namespace
