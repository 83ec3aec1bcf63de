// Changes of element type and rounding to integral values.
#include <gtest/gtest.h>

#include <cfenv>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"

namespace {

using QORN::TargetLib;
using QORN::test::CheckElementwise;
using QORN::test::Options;
using QORN::test::Same;
using QORN::test::Samples;

namespace kernels = QORN::kernels;

TEST(TargetLib, Convert_ToAWiderType_LosesNothing) {
  // Converted back, each element is what it was, and the wide value is an integer or a float as such.
  const auto exact = [](auto narrow, auto wide) {
    return static_cast<long double>(wide) == static_cast<long double>(narrow);
  };
  CheckElementwise<double, float>("Convert_32f64f", &TargetLib::Convert_32f64f, [&](float x) {
    const double wide = static_cast<double>(static_cast<long double>(x));
    EXPECT_TRUE(exact(x, wide) || std::isnan(x));
    return wide;
  });
  CheckElementwise<float, short>("Convert_16s32f", &TargetLib::Convert_16s32f,
                                 [](short x) { return std::strtof(std::to_string(x).c_str(), nullptr); });
  CheckElementwise<float, unsigned short>("Convert_16u32f", &TargetLib::Convert_16u32f, [](unsigned short x) {
    return std::strtof(std::to_string(x).c_str(), nullptr);
  });
  CheckElementwise<int, short>("Convert_16s32s", &TargetLib::Convert_16s32s, [](short x) { return int{x}; });
  CheckElementwise<double, int>("Convert_32s64f", &TargetLib::Convert_32s64f,
                                [](int x) { return std::strtod(std::to_string(x).c_str(), nullptr); });
}

// The C library rounds decimal and hexadecimal digits correctly.
float FromDigits(double x) {
  char digits[64];
  std::snprintf(digits, sizeof digits, "%a", x);
  return std::strtof(digits, nullptr);
}

TEST(TargetLib, Convert_ToFloat_RoundsToNearestTiesToEven) {
  std::vector<double> doubles = Samples<double>();
  for (const float x : Samples<float>()) {
    const float next = std::nextafter(x, INFINITY);
    const double middle = (static_cast<double>(x) + static_cast<double>(next)) / 2;
    doubles.insert(doubles.end(),
                   {middle, std::nextafter(middle, -INFINITY), std::nextafter(middle, INFINITY)});
  }
  // The last double that does not overflow, the first that does, and around the smallest denormal.
  doubles.insert(doubles.end(), {0x1.fffffefffffffp127, 0x1.ffffffp127, -0x1.ffffffp127, 0x1p-150,
                                 0x1.0000000000001p-150, -0x1p-150, 0x1.8p-149});
  CheckElementwise<float, double>("Convert_64f32f", &TargetLib::Convert_64f32f, FromDigits, Same(), {},
                                  {doubles});

  std::vector<int> ints = Samples<int>();
  for (const int x : {16777217, 16777219, 33554434, 33554438, 2147483583, 2147483584, 2147483585}) {
    ints.insert(ints.end(), {x, -x});
  }
  CheckElementwise<float, int>("Convert_32s32f", &TargetLib::Convert_32s32f,
                               [](int x) { return FromDigits(x); }, Same(), {}, {ints});
}

// Truncation of a value that needs no rounding any more, in the widest type.
template <class T> T Saturated(long double x) {
  if (std::isnan(x)) return 0;
  const long double low = std::numeric_limits<T>::min(), high = std::numeric_limits<T>::max();
  return static_cast<T>(static_cast<long long>(std::fmin(std::fmax(x, low), high)));
}

template <class D, class S> D Truncated(S x) { return Saturated<D>(std::trunc(static_cast<long double>(x))); }

TEST(TargetLib, Convert_ToInteger_TruncatesAndSaturates) {
  CheckElementwise<int, float>("Convert_32f32s", &TargetLib::Convert_32f32s, Truncated<int, float>);
  CheckElementwise<int, double>("Convert_64f32s", &TargetLib::Convert_64f32s, Truncated<int, double>);
  CheckElementwise<short, float>(
      "Convert_32f16s",
      [](const float *src, short *dst, int len) { TargetLib::Convert_32f16s(src, dst, len); },
      Truncated<short, float>);
}

TEST(TargetLib, Convert_ToIntegerNearItsLimits_TruncatesAndSaturates) {
  const float floats[] = {2.9F,          -2.9F,          1e10F,          -1e10F, 2147483520.0F,
                          2147483648.0F, -2147483648.0F, -2147483904.0F, NAN};
  const int fromFloats[] = {2, -2, INT_MAX, INT_MIN, 2147483520, INT_MAX, INT_MIN, INT_MIN, 0};
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double doubles[] = {2147483647.0,  2147483647.9, 2147483648.0, -2147483648.9,
                            -2147483649.0, -0.9,         nan};
  const int fromDoubles[] = {INT_MAX, INT_MAX, INT_MAX, INT_MIN, INT_MIN, 0, 0};
  const float shorts[] = {40000.0F, -40000.0F, 32767.9F, -32768.9F, 0.9F, INFINITY, -INFINITY, NAN};
  const short fromShorts[] = {32767, -32768, 32767, -32768, 0, 32767, -32768, 0};
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    int ints[9];
    TargetLib::Convert_32f32s(floats, ints, 9);
    for (int i = 0; i < 9; ++i) EXPECT_EQ(ints[i], fromFloats[i]) << level.name << ' ' << i;
    TargetLib::Convert_64f32s(doubles, ints, 7);
    for (int i = 0; i < 7; ++i) EXPECT_EQ(ints[i], fromDoubles[i]) << level.name << ' ' << i;
    short small[8];
    TargetLib::Convert_32f16s(shorts, small, 8);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(small[i], fromShorts[i]) << level.name << ' ' << i;
  }
}

using Mode = TargetLib::ConvertRoundMode;

template <class D> D Scaled(float x, Mode mode, int scale) {
  const int exponent = scale > 1000 ? -1000 : scale < -1000 ? 1000 : -scale;
  const long double exact = std::ldexp(static_cast<long double>(x), exponent);
  return Saturated<D>(mode == TargetLib::ConvertRoundZero ? std::trunc(exact) : std::nearbyint(exact));
}

template <class D> void CheckScaled(const char *name, void (*convert)(const float *, D *, int, Mode, int)) {
  ASSERT_EQ(std::fegetround(), FE_TONEAREST);
  std::vector<float> samples = Samples<float>();
  for (int e = -149; e <= 127; e += 4)
    samples.insert(samples.end(), {std::ldexp(1.5F, e), -std::ldexp(1.25F, e)});
  for (const int odd : {1, 3, 5, 65533, 65535, 65537, 131069, 131071, -65533, -65535, -65537}) {
    samples.push_back(static_cast<float>(odd) * 0.5F);
  }
  for (const int scale : {0,    1,    -1,   5,   -9,  15,  16,  -16, 31,  -126, -127, -128,    -129,   -150,
                          -253, -254, -255, 126, 127, 128, 148, 149, 150, 300,  -300, INT_MAX, INT_MIN}) {
    for (const int mode : {0, 1, 2, -1}) {
      if ((mode < 0 || mode > 1) && scale != 1) continue;
      const Mode as = static_cast<Mode>(mode);
      CheckElementwise<D, float>(
          std::string(name) + " with mode " + std::to_string(mode) + " and scale " + std::to_string(scale),
          [=](const float *src, D *dst, int len) { convert(src, dst, len, as, scale); },
          [=](float x) { return Scaled<D>(x, as, scale); }, Same(), {}, {samples});
    }
  }
}

TEST(TargetLib, Convert_FloatToShortWithScale_RoundsByModeAndSaturates) {
  CheckScaled<short>("Convert_32f16s", &TargetLib::Convert_32f16s);
}
TEST(TargetLib, Convert_FloatToUnsignedShortWithScale_RoundsByModeAndSaturates) {
  CheckScaled<unsigned short>("Convert_32f16u", &TargetLib::Convert_32f16u);
}

TEST(TargetLib, Convert_WithScale_ScalesDownByPowersOfTwo) {
  const float x[] = {5.0F, 6.0F, 7.0F, -5.0F, 300000.0F};
  short dst[5];
  TargetLib::Convert_32f16s(x, dst, 5, TargetLib::ConvertRoundNear, 1);
  const short nearest[] = {2, 3, 4, -2, 32767};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(dst[i], nearest[i]) << i;
  TargetLib::Convert_32f16s(x, dst, 5, TargetLib::ConvertRoundZero, 1);
  const short toZero[] = {2, 3, 3, -2, 32767};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(dst[i], toZero[i]) << i;
  unsigned short unsignedDst[5];
  TargetLib::Convert_32f16u(x, unsignedDst, 5, TargetLib::ConvertRoundNear, -1);
  const unsigned short doubled[] = {10, 12, 14, 0, 65535};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(unsignedDst[i], doubled[i]) << i;
}

TEST(TargetLib, ConvertWithScale_NullPointerOrLengthBelowOne_DoesNothing) {
  const float x[] = {5.0F};
  short dst = 77;
  unsigned short unsignedDst = 77;
  for (const int len : {0, -1, INT_MIN}) {
    TargetLib::Convert_32f16s(x, &dst, len, TargetLib::ConvertRoundNear, 4);
    TargetLib::Convert_32f16u(x, &unsignedDst, len, TargetLib::ConvertRoundNear, 4);
  }
  TargetLib::Convert_32f16s(nullptr, &dst, 1, TargetLib::ConvertRoundNear, 4);
  TargetLib::Convert_32f16s(x, nullptr, 1, TargetLib::ConvertRoundNear, 4);
  TargetLib::Convert_32f16u(nullptr, &unsignedDst, 1, TargetLib::ConvertRoundNear, 4);
  TargetLib::Convert_32f16u(x, nullptr, 1, TargetLib::ConvertRoundNear, 4);
  EXPECT_EQ(dst, 77);
  EXPECT_EQ(unsignedDst, 77);
}

TEST(TargetLib, ConvertRoundMode_Values_AreZeroForTruncationAndOneForNearest) {
  EXPECT_EQ(static_cast<int>(TargetLib::ConvertRoundZero), 0);
  EXPECT_EQ(static_cast<int>(TargetLib::ConvertRoundNear), 1);
}

// Rounding to integral values. The samples gain the neighbours of halves and of the values from which on all
// numbers are integral.
template <class T> std::vector<T> HalvesAndNeighbours() {
  std::vector<T> samples = Samples<T>();
  const T integral = T(1) / std::numeric_limits<T>::epsilon();
  for (const T x : {T(0.5), T(1), T(1.5), T(2.5), T(3.5), integral / 4 + T(0.5), integral / 4 - T(0.5),
                    integral / 2 - T(0.5), integral / 2, integral - T(1), integral, integral + T(1),
                    2 * integral, T(2147483648.0), T(2147483647.5)}) {
    for (const T y : {x, std::nextafter(x, T(0)), std::nextafter(x, std::numeric_limits<T>::max())}) {
      samples.insert(samples.end(), {y, -y});
    }
  }
  return samples;
}

template <class T>
void CheckRounding(const char *name, void (*kernel)(const T *, T *, int), T (*reference)(T)) {
  CheckElementwise<T, T>(name, kernel, reference, Same(), {}, {HalvesAndNeighbours<T>()});
}

TEST(TargetLib, Round_AnyValue_RoundsHalvesAwayFromZero) {
  CheckRounding<float>("Round_32f", &TargetLib::Round_32f, std::round);
  CheckRounding<double>("Round_64f", &TargetLib::Round_64f, std::round);
}
TEST(TargetLib, Trunc_AnyValue_RoundsTowardZeroAndKeepsTheSign) {
  CheckRounding<float>("Trunc_32f", &TargetLib::Trunc_32f, std::trunc);
  CheckRounding<double>("Trunc_64f", &TargetLib::Trunc_64f, std::trunc);
}
TEST(TargetLib, Floor_AnyValue_RoundsDown) {
  CheckRounding<float>("Floor_32f", &TargetLib::Floor_32f, std::floor);
  CheckRounding<double>("Floor_64f", &TargetLib::Floor_64f, std::floor);
}
TEST(TargetLib, Ceil_AnyValue_RoundsUp) {
  CheckRounding<float>("Ceil_32f", &TargetLib::Ceil_32f, std::ceil);
  CheckRounding<double>("Ceil_64f", &TargetLib::Ceil_64f, std::ceil);
}

TEST(TargetLib, Round_KnownValues_MatchByHand) {
  const float x[] = {0.5F, -0.5F, 1.5F, 2.5F, -2.5F, 0.49999997F, -0.49999997F, 8388607.5F, 16777215.0F};
  const float expected[] = {1.0F, -1.0F, 2.0F, 3.0F, -3.0F, 0.0F, -0.0F, 8388608.0F, 16777215.0F};
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    float rounded[9];
    TargetLib::Round_32f(x, rounded, 9);
    for (int i = 0; i < 9; ++i) EXPECT_TRUE(Same()(rounded[i], expected[i])) << level.name << ' ' << x[i];
  }
}

// Every 4093rd of all floats; the stride is prime, so that all exponents and both signs are met.
TEST(TargetLib, RoundTruncFloorCeil_FloatsOfAllMagnitudes_MatchTheCLibrary) {
  std::vector<float> x;
  for (std::uint64_t bits = 0; bits < (1ULL << 32); bits += 4093) {
    const auto word = static_cast<std::uint32_t>(bits);
    float value;
    std::memcpy(&value, &word, sizeof value);
    x.push_back(value);
  }
  std::vector<float> y(x.size());
  const struct {
    const char *name;
    void (*kernel)(const float *, float *, int);
    float (*reference)(float);
  } rows[] = {{"Round_32f", &TargetLib::Round_32f, std::round},
              {"Trunc_32f", &TargetLib::Trunc_32f, std::trunc},
              {"Floor_32f", &TargetLib::Floor_32f, std::floor},
              {"Ceil_32f", &TargetLib::Ceil_32f, std::ceil}};
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const auto &row : rows) {
      row.kernel(x.data(), y.data(), static_cast<int>(x.size()));
      for (std::size_t i = 0; i < x.size(); ++i) {
        ASSERT_TRUE(Same()(y[i], row.reference(x[i])))
            << row.name << " at " << level.name << ": " << QORN::test::Show(x[i]);
      }
    }
  }
}

} // namespace
