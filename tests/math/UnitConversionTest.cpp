#include "qorn/math/UnitConversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <string>

#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Csv.h"
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
