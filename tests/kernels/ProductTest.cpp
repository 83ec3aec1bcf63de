// Dot products, correlation and convolution against direct sums in long double.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "qorn/infra/TargetLib.h"
#include "support/KernelCheck.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::TargetLib;
using QORN::test::Guarded;
using QORN::test::kIsCplx;
using QORN::test::Lengths;
using QORN::test::Part;

namespace kernels = QORN::kernels;

// A sum of products, with the sum of the magnitudes that its rounding errors are measured by.
struct Exact {
  long double re = 0, im = 0, size = 0;

  template <class A, class B> void Add(const A &a, const B &b, bool conjugate = false) {
    const long double ar = Re(a), ai = conjugate ? -Im(a) : Im(a), br = Re(b), bi = Im(b);
    re += ar * br - ai * bi;
    im += ar * bi + ai * br;
    size += (std::fabs(ar) + std::fabs(ai)) * (std::fabs(br) + std::fabs(bi));
  }

  template <class T> static long double Re(const T &x) {
    if constexpr (kIsCplx<T>)
      return static_cast<long double>(x.re);
    else
      return static_cast<long double>(x);
  }
  template <class T> static long double Im(const T &x) {
    if constexpr (kIsCplx<T>)
      return static_cast<long double>(x.im);
    else
      return 0;
  }
};

// steps roundings to the result's precision, each of at most half a unit of the magnitudes' sum.
template <class R> void ExpectNear(const R &got, const Exact &exact, int steps, const std::string &where) {
  const long double u = static_cast<long double>(std::numeric_limits<Part<R>>::epsilon()) / 2;
  const long double bound = static_cast<long double>(steps) * u * exact.size;
  EXPECT_LE(std::fabs(Exact::Re(got) - exact.re), bound) << where;
  EXPECT_LE(std::fabs(Exact::Im(got) - exact.im), bound) << where;
}

template <class T> T RandomValue(std::mt19937 &random) {
  std::uniform_real_distribution<double> uniform(-1, 1);
  if constexpr (kIsCplx<T>) {
    return {static_cast<Part<T>>(uniform(random)), static_cast<Part<T>>(uniform(random))};
  } else {
    return static_cast<T>(uniform(random));
  }
}

template <class T> void FillRandom(Guarded<T> &data, int len, std::mt19937 &random) {
  for (int i = 0; i < len; ++i) data.data()[i] = RandomValue<T>(random);
}

// An element is rounded as a product, as one of the terms of its lane, and in a fold of at most 6 levels; the
// parts of a complex result once more.
int DotSteps(int len, int lanes) { return len / lanes + 9; }

template <class A, class B, class R>
void CheckDot(const char *name, int lanes, void (*kernel)(const A *, const B *, int, R *)) {
  std::vector<R> base;
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    std::mt19937 random(5);
    std::size_t run = 0;
    for (const int len : Lengths()) {
      for (int place = 0; place < (len < 100 ? 16 : 3); ++place, ++run) {
        Guarded<A> a(len, place);
        Guarded<B> b(len, (7 * place + len) % 16);
        FillRandom(a, len, random);
        FillRandom(b, len, random);
        R result, untouched;
        std::memset(static_cast<void *>(&result), 0x5A, sizeof result);
        untouched = result;
        kernel(a.data(), b.data(), len, &result);
        const std::string where = std::string(name) + " at " + level.name + ", length " +
                                  std::to_string(len) + ", place " + std::to_string(place);
        ASSERT_TRUE(a.Intact() && b.Intact()) << where;
        if (len == 0) {
          ASSERT_EQ(std::memcmp(&result, &untouched, sizeof result), 0) << where;
        } else {
          Exact exact;
          for (int i = 0; i < len; ++i) exact.Add(a.data()[i], b.data()[i]);
          ExpectNear(result, exact, DotSteps(len, lanes), where);
        }
        if (base.size() <= run) base.push_back(result);
        ASSERT_EQ(std::memcmp(&result, &base[run], sizeof result), 0)
            << where << ": not the base level's bytes";
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

TEST(TargetLib, DotProd_RandomOperands_IsWithinItsBoundAndTheSameAtEveryLevel) {
  CheckDot("DotProd_32f", 64, &TargetLib::DotProd_32f);
  CheckDot("DotProd_64f", 32, &TargetLib::DotProd_64f);
  CheckDot("DotProd_32fc", 16, &TargetLib::DotProd_32fc);
  CheckDot("DotProd_64fc", 8, &TargetLib::DotProd_64fc);
  CheckDot("DotProd_32f32fc", 32, &TargetLib::DotProd_32f32fc);
}

// The sums one by one: product i goes to lane i mod `lanes`, and the upper half of the lanes to the lower one
// until `left` are left.
template <class T, class Product>
std::vector<T> LaneSums(std::size_t lanes, std::size_t left, std::size_t count, Product product) {
  std::vector<T> sums(lanes);
  for (std::size_t i = 0; i < count; ++i) sums[i % lanes] += product(i);
  for (; lanes > left; lanes /= 2) {
    for (std::size_t i = 0; i < lanes / 2; ++i) sums[i] += sums[i + lanes / 2];
  }
  return sums;
}

template <class T, class C>
void CheckLanes(const std::string &where, std::size_t len, void (*real)(const T *, const T *, int, T *),
                void (*cplx)(const C *, const C *, int, C *)) {
  constexpr std::size_t kLanes = 256 / sizeof(T);
  std::mt19937 random(7);
  std::vector<C> x(len), y(len);
  for (std::size_t i = 0; i < len; ++i) {
    x[i] = RandomValue<C>(random);
    y[i] = i % 5 == 0 ? C{T(-0.0), T(0)} : RandomValue<C>(random);
  }
  const T *a = &x[0].re, *b = &y[0].re;
  const auto sum = LaneSums<T>(kLanes, 1, len, [=](std::size_t i) { return static_cast<T>(a[i] * b[i]); });
  T result{};
  real(a, b, static_cast<int>(len), &result);
  EXPECT_EQ(std::memcmp(&result, &sum[0], sizeof result), 0) << where << ", real";
  const auto straight =
      LaneSums<T>(kLanes / 2, 2, 2 * len, [=](std::size_t i) { return static_cast<T>(a[i] * b[i]); });
  const auto crossed =
      LaneSums<T>(kLanes / 2, 2, 2 * len, [=](std::size_t i) { return static_cast<T>(a[i] * b[i ^ 1]); });
  const C expected{straight[0] - straight[1], crossed[0] + crossed[1]};
  C both{};
  cplx(x.data(), y.data(), static_cast<int>(len), &both);
  EXPECT_EQ(std::memcmp(&both, &expected, sizeof both), 0) << where << ", complex";
  if constexpr (sizeof(T) == sizeof(float)) {
    const auto mixed =
        LaneSums<T>(kLanes, 2, 2 * len, [=](std::size_t i) { return static_cast<T>(a[i / 2] * b[i]); });
    const C parts{mixed[0], mixed[1]};
    TargetLib::DotProd_32f32fc(a, y.data(), static_cast<int>(len), &both);
    EXPECT_EQ(std::memcmp(&both, &parts, sizeof both), 0) << where << ", real with complex";
  }
}

TEST(TargetLib, DotProd_EveryLength_AddsInItsLanes) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (std::size_t len = 1; len <= 300; ++len) {
      const std::string where = std::string(level.name) + ", length " + std::to_string(len);
      CheckLanes(where + ", float", len, &TargetLib::DotProd_32f, &TargetLib::DotProd_32fc);
      CheckLanes(where + ", double", len, &TargetLib::DotProd_64f, &TargetLib::DotProd_64fc);
      if (HasFailure()) return;
    }
  }
}

TEST(TargetLib, DotProd_Complex_DoesNotConjugate) {
  const Cplx64 a[] = {{1, 2}, {0, 1}}, b[] = {{3, 4}, {0, 1}};
  Cplx64 result{};
  TargetLib::DotProd_64fc(a, b, 2, &result);
  EXPECT_EQ(result.re, 3 - 8 - 1);
  EXPECT_EQ(result.im, 4 + 6);
}

TEST(TargetLib, DotProd_SmallIntegers_IsExact) {
  std::vector<float> a, b;
  double sum = 0;
  for (int i = 0; i < 1000; ++i) {
    a.push_back(static_cast<float>(i % 13 - 6));
    b.push_back(static_cast<float>(i % 7 - 3));
    sum += (i % 13 - 6) * (i % 7 - 3);
  }
  float result = 0;
  TargetLib::DotProd_32f(a.data(), b.data(), 1000, &result);
  EXPECT_EQ(static_cast<double>(result), sum);
}

TEST(TargetLib, DotProd_NotANumberOrInfinity_Shows) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (int at = 0; at < 70; at += 3) {
      std::vector<double> a(70, 1.0), b(70, 2.0);
      double result = 0;
      a[static_cast<std::size_t>(at)] = std::numeric_limits<double>::infinity();
      TargetLib::DotProd_64f(a.data(), b.data(), 70, &result);
      EXPECT_EQ(result, std::numeric_limits<double>::infinity()) << at << level.name;
      b[static_cast<std::size_t>(at)] = 0;
      TargetLib::DotProd_64f(a.data(), b.data(), 70, &result);
      EXPECT_TRUE(std::isnan(result)) << at << level.name;
    }
  }
}

TEST(TargetLib, DotProd_Shorts_IsSummedExactlyAndRoundedOnce) {
  std::mt19937 random(6);
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const int len : Lengths()) {
      Guarded<short> a(len, len % 16), b(len, 5 * len % 16);
      long long sum = 0;
      for (int i = 0; i < len; ++i) {
        a.data()[i] = len % 3 == 0 ? short{-32768} : static_cast<short>(random());
        b.data()[i] = len % 3 == 0 ? short{-32768} : static_cast<short>(random());
        sum += static_cast<long long>(a.data()[i]) * b.data()[i];
      }
      float result = -1;
      TargetLib::DotProd_16s(a.data(), b.data(), len, &result);
      ASSERT_EQ(result, len == 0 ? -1.0F : static_cast<float>(sum)) << level.name << ' ' << len;
    }
  }
}

// 4 eps.
constexpr int kConvolutionSteps = 8;

template <class T, class Kernel>
void CheckCorrelation(const char *name, const Kernel &kernel, int len1, int len2, int dstLen, int lowLag) {
  std::mt19937 random(static_cast<unsigned>(len1 + 100 * len2));
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    Guarded<T> a(len1, len1 % 16), b(len2, (len2 + 3) % 16), dst(dstLen, (len1 + len2) % 16);
    FillRandom(a, len1, random);
    FillRandom(b, len2, random);
    kernel(a.data(), len1, b.data(), len2, dst.data(), dstLen, lowLag);
    const std::string where = std::string(name) + " at " + level.name + ", lengths " + std::to_string(len1) +
                              ' ' + std::to_string(len2) + ' ' + std::to_string(dstLen) + ", lag " +
                              std::to_string(lowLag);
    ASSERT_TRUE(a.Intact() && b.Intact() && dst.Intact()) << where;
    for (int n = 0; n < dstLen; ++n) {
      Exact exact;
      for (int i = 0; i < len1; ++i) {
        const long long at = static_cast<long long>(i) + n + lowLag;
        if (at >= 0 && at < len2) exact.Add(a.data()[i], b.data()[at], true);
      }
      ExpectNear(dst.data()[n], exact, kConvolutionSteps, where + ", element " + std::to_string(n));
      if (testing::Test::HasFailure()) return;
    }
  }
}

TEST(TargetLib, CrossCorr_LengthsAndLags_IsTheDirectSum) {
  for (const int len1 : {1, 2, 3, 8, 17, 64, 150}) {
    for (const int len2 : {1, 2, 5, 16, 33, 128, 300}) {
      for (const int dstLen : {1, 7, 16, 70, 500}) {
        for (const int lowLag : {1 - len1, -len1 - 40, -1, 0, 1, len2 - 1, len2 + 3}) {
          CheckCorrelation<float>("CrossCorr_32f", &TargetLib::CrossCorr_32f, len1, len2, dstLen, lowLag);
          CheckCorrelation<Cplx32>("CrossCorr_32fc", &TargetLib::CrossCorr_32fc, len1, len2, dstLen, lowLag);
          if (testing::Test::HasFailure()) return;
        }
      }
    }
  }
}

TEST(TargetLib, CrossCorr_Complex_ConjugatesTheFirst) {
  const Cplx32 a[] = {{1, 2}}, b[] = {{3, 4}};
  Cplx32 dst[3];
  TargetLib::CrossCorr_32fc(a, 1, b, 1, dst, 3, -1);
  EXPECT_EQ(dst[0].re, 0);
  EXPECT_EQ(dst[1].re, 3 + 8);
  EXPECT_EQ(dst[1].im, 4 - 6);
  EXPECT_EQ(dst[2].im, 0);
}

TEST(TargetLib, CrossCorr_LagsFarOutside_AreZero) {
  const float a[] = {1, 2, 3};
  for (const int lag : {INT_MIN, INT_MIN + 2, INT_MAX - 5, INT_MAX}) {
    float dst[40];
    for (float &x : dst) x = 9;
    TargetLib::CrossCorr_32f(a, 3, a, 3, dst, 40, lag);
    for (const float x : dst) EXPECT_EQ(x, 0) << lag;
  }
}

// A term that does not belong to a result is left out, not multiplied by zero.
TEST(TargetLib, CrossCorr_InfiniteElement_ReachesOnlyItsResults) {
  const float inf = std::numeric_limits<float>::infinity();
  const float a[] = {1, inf}, b[] = {1, 1};
  float dst[3];
  TargetLib::CrossCorr_32f(a, 2, b, 2, dst, 3, -1);
  EXPECT_EQ(dst[0], inf);
  EXPECT_EQ(dst[1], inf);
  EXPECT_EQ(dst[2], 1);
}

// correlate(a, b, dst) gives all results, of which a[i] and b[i + n + 1 - the length of a] meet in number n.
// An infinite element anywhere shows in every part of those that it belongs to, and in no other.
template <class T, class Kernel> void CheckInfiniteElement(const Kernel &correlate) {
  std::mt19937 random(11);
  for (const int len1 : {1, 2, 7, 16, 31}) {
    for (const int len2 : {1, 3, 16, 40, 150}) {
      std::vector<T> a(static_cast<std::size_t>(len1)), b(static_cast<std::size_t>(len2));
      for (auto *values : {&a, &b}) {
        for (T &value : *values) value = RandomValue<T>(random);
      }
      const int count = len1 + len2 - 1;
      std::vector<T> plain(static_cast<std::size_t>(count)), dst(plain);
      for (const kernels::Level &level : kernels::AvailableLevels()) {
        const kernels::ScopedLevel scope(level);
        correlate(a, b, plain);
        for (int spoiled = 0; spoiled < len1 + len2; ++spoiled) {
          const bool isTap = spoiled < len1;
          const int at = isTap ? spoiled : spoiled - len1;
          T &element = isTap ? a[static_cast<std::size_t>(at)] : b[static_cast<std::size_t>(at)];
          const T before = element;
          *reinterpret_cast<Part<T> *>(&element) = std::numeric_limits<Part<T>>::infinity();
          correlate(a, b, dst);
          element = before;
          for (int n = 0; n < count; ++n) {
            const int lag = n + 1 - len1, other = isTap ? at + lag : at - lag;
            const bool meets = other >= 0 && other < (isTap ? len2 : len1);
            const auto *result = reinterpret_cast<const Part<T> *>(&dst[static_cast<std::size_t>(n)]);
            const auto *usual = reinterpret_cast<const Part<T> *>(&plain[static_cast<std::size_t>(n)]);
            for (std::size_t part = 0; part < sizeof(T) / sizeof(Part<T>); ++part) {
              ASSERT_EQ(std::isfinite(result[part]), !meets)
                  << level.name << ' ' << len1 << ' ' << len2 << ' ' << spoiled << ' ' << n;
              // What an infinite element of the longer array does not reach keeps its bits.
              if (!meets && !isTap && len1 <= len2) {
                ASSERT_EQ(result[part], usual[part])
                    << level.name << ' ' << len1 << ' ' << len2 << ' ' << spoiled << ' ' << n;
              }
            }
          }
        }
      }
    }
  }
}

TEST(TargetLib, CrossCorr_InfiniteElementAnywhere_ReachesOnlyItsResults) {
  const auto correlation = [](auto kernel) {
    return [kernel](const auto &a, const auto &b, auto &dst) {
      const int len1 = static_cast<int>(a.size());
      kernel(a.data(), len1, b.data(), static_cast<int>(b.size()), dst.data(), static_cast<int>(dst.size()),
             1 - len1);
    };
  };
  CheckInfiniteElement<float>(correlation(&TargetLib::CrossCorr_32f));
  CheckInfiniteElement<Cplx32>(correlation(&TargetLib::CrossCorr_32fc));
}

TEST(TargetLib, Conv_InfiniteElementAnywhere_ReachesOnlyItsResults) {
  CheckInfiniteElement<double>(
      [](std::vector<double> a, const std::vector<double> &b, std::vector<double> &dst) {
        std::reverse(a.begin(), a.end());
        TargetLib::Conv_64f(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                            dst.data());
      });
}

template <class T, class Kernel> void CheckAnyPart(const Kernel &kernel) {
  std::mt19937 random(12);
  for (const int len1 : {1, 2, 5, 8, 16, 21, 31}) {
    for (const int len2 : {1, 6, 16, 64, 90, 200}) {
      Guarded<T> a(len1, 3), b(len2, 5);
      FillRandom(a, len1, random);
      FillRandom(b, len2, random);
      const int count = len1 + len2 - 1;
      for (const kernels::Level &level : kernels::AvailableLevels()) {
        const kernels::ScopedLevel scope(level);
        std::vector<T> whole(static_cast<std::size_t>(count)), part(whole);
        kernel(a.data(), len1, b.data(), len2, whole.data(), count, 1 - len1);
        for (int first = 0; first < count; first += 3) {
          for (int n = 1; n <= count - first; n += n < 20 ? 1 : 17) {
            kernel(a.data(), len1, b.data(), len2, part.data(), n, 1 - len1 + first);
            ASSERT_EQ(std::memcmp(part.data(), whole.data() + first, sizeof(T) * static_cast<std::size_t>(n)),
                      0)
                << level.name << ' ' << len1 << ' ' << len2 << ' ' << first << ' ' << n;
          }
        }
      }
    }
  }
}

// However many results are asked for, from whichever lag on, each has the same bytes.
TEST(TargetLib, CrossCorr_AnyPartOfTheLags_HasTheSameBytes) {
  CheckAnyPart<float>(&TargetLib::CrossCorr_32f);
  CheckAnyPart<Cplx32>(&TargetLib::CrossCorr_32fc);
}

TEST(TargetLib, CrossCorr_EmptyOrNull_DoesNothing) {
  float a[2] = {1, 1}, dst[2] = {9, 9};
  TargetLib::CrossCorr_32f(a, 0, a, 2, dst, 2, 0);
  TargetLib::CrossCorr_32f(a, 2, a, -1, dst, 2, 0);
  TargetLib::CrossCorr_32f(a, 2, a, 2, dst, 0, 0);
  TargetLib::CrossCorr_32f(nullptr, 2, a, 2, dst, 2, 0);
  TargetLib::CrossCorr_32f(a, 2, nullptr, 2, dst, 2, 0);
  TargetLib::CrossCorr_32f(a, 2, a, 2, nullptr, 2, 0);
  EXPECT_EQ(dst[0], 9);
  EXPECT_EQ(dst[1], 9);
  Cplx32 c[1] = {{1, 1}}, d[1] = {{9, 9}};
  TargetLib::CrossCorr_32fc(c, 0, c, 1, d, 1, 0);
  TargetLib::CrossCorr_32fc(c, 1, c, 0, d, 1, 0);
  TargetLib::CrossCorr_32fc(c, 1, c, 1, d, -5, 0);
  TargetLib::CrossCorr_32fc(nullptr, 1, c, 1, d, 1, 0);
  TargetLib::CrossCorr_32fc(c, 1, nullptr, 1, d, 1, 0);
  TargetLib::CrossCorr_32fc(c, 1, c, 1, nullptr, 1, 0);
  EXPECT_EQ(d[0].re, 9);
}

template <class T, class Kernel> void CheckConv(const char *name, const Kernel &kernel, int len1, int len2) {
  std::mt19937 random(static_cast<unsigned>(len1 + 1000 * len2));
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    const int dstLen = len1 + len2 - 1;
    Guarded<T> a(len1, len2 % 16), b(len2, (len1 + 3) % 16), dst(dstLen, (len1 + len2) % 16);
    FillRandom(a, len1, random);
    FillRandom(b, len2, random);
    kernel(a.data(), len1, b.data(), len2, dst.data());
    const std::string where = std::string(name) + " at " + level.name + ", lengths " + std::to_string(len1) +
                              ' ' + std::to_string(len2);
    ASSERT_TRUE(a.Intact() && b.Intact() && dst.Intact()) << where;
    for (int n = 0; n < dstLen; ++n) {
      Exact exact;
      for (int i = std::max(0, n - len2 + 1); i <= std::min(n, len1 - 1); ++i)
        exact.Add(a.data()[i], b.data()[n - i]);
      ExpectNear(dst.data()[n], exact, kConvolutionSteps, where + ", element " + std::to_string(n));
      if (testing::Test::HasFailure()) return;
    }
  }
}

TEST(TargetLib, Conv_AnyLengths_IsTheDirectSum) {
  std::vector<int> lengths;
  for (int n = 1; n <= 20; ++n) lengths.push_back(n);
  for (const int n : {31, 32, 33, 63, 64, 65, 127, 128, 129, 200, 700}) lengths.push_back(n);
  for (const int len1 : lengths) {
    for (const int len2 : lengths) {
      CheckConv<float>("Conv_32f", &TargetLib::Conv_32f, len1, len2);
      CheckConv<double>("Conv_64f", &TargetLib::Conv_64f, len1, len2);
      if (testing::Test::HasFailure()) return;
    }
  }
}

TEST(TargetLib, Conv_WithAnImpulse_IsTheOther) {
  const float impulse[] = {0, 1};
  std::vector<float> x;
  for (int i = 0; i < 300; ++i) x.push_back(std::sin(static_cast<float>(i)));
  std::vector<float> dst(301);
  TargetLib::Conv_32f(x.data(), 300, impulse, 2, dst.data());
  EXPECT_EQ(dst[0], 0);
  for (std::size_t i = 0; i < 300; ++i) EXPECT_EQ(dst[i + 1], x[i]);
}

// A result depends on its own terms alone: not on where it lies in the output.
TEST(TargetLib, Conv_DelayedSignal_GivesTheSameBytesDelayed) {
  std::mt19937 random(9);
  std::vector<double> taps, x;
  for (int i = 0; i < 21; ++i) taps.push_back(RandomValue<double>(random));
  for (int i = 0; i < 400; ++i) x.push_back(RandomValue<double>(random));
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    std::vector<double> whole(420), part(420);
    TargetLib::Conv_64f(x.data(), 400, taps.data(), 21, whole.data());
    for (int delay = 1; delay < 70; delay += 6) {
      TargetLib::Conv_64f(x.data() + delay, 400 - delay, taps.data(), 21, part.data());
      EXPECT_EQ(std::memcmp(part.data() + 20, whole.data() + delay + 20,
                            sizeof(double) * static_cast<std::size_t>(400 - delay)),
                0)
          << level.name << ' ' << delay;
    }
  }
}

TEST(TargetLib, Conv_EmptyOrNull_DoesNothing) {
  double a[1] = {1}, dst[1] = {9};
  TargetLib::Conv_64f(a, 0, a, 1, dst);
  TargetLib::Conv_64f(a, 1, a, 0, dst);
  TargetLib::Conv_64f(a, -7, a, 1, dst);
  TargetLib::Conv_64f(nullptr, 1, a, 1, dst);
  TargetLib::Conv_64f(a, 1, nullptr, 1, dst);
  TargetLib::Conv_64f(a, 1, a, 1, nullptr);
  EXPECT_EQ(dst[0], 9);
}

} // namespace
