#include "qorn/math/Detector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/infra/TargetLib.h"
#include "qorn/infra/VecReal32.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/KernelCheck.h"
#include "support/Vectors.h"
#include "support/Wide.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;
using test::Quad;

constexpr float kInf = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

static_assert(DetectorAverage == 0 && DetectorPeak == 1 && DetectorMin == 2 && DetectorPeakAndMin == 3);
static_assert(DetectorRms == 4 && DetectorPointSample == 5 && DetectorNone == 6);
static_assert(DetectorAverageAlt == 7 && DetectorPeakAlt == 8 && DetectorLogAverage == 9);
static_assert(std::is_convertible_v<DetectorType, int> && sizeof(DetectorType) == sizeof(int));

constexpr DetectorType kAll[] = {DetectorAverage, DetectorPeak,        DetectorMin,      DetectorPeakAndMin,
                                 DetectorRms,     DetectorPointSample, DetectorNone,     DetectorAverageAlt,
                                 DetectorPeakAlt, DetectorLogAverage,  DetectorType(10), DetectorType(-1)};

std::vector<float> Detected(const std::vector<float> &src, int ratio, DetectorType type) {
  VecReal32 dst;
  Detector::DetectAndDecimate(dst, Of<VecReal32>(src), ratio, type);
  return List(dst);
}

const std::vector<float> kTen = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

TEST(Detector, Average_TenByThree_GivesThreeMeans) {
  EXPECT_EQ(Detected(kTen, 3, DetectorAverage), (std::vector<float>{1, 4, 7}));
  EXPECT_EQ(Detected(kTen, 3, DetectorAverageAlt), (std::vector<float>{1, 4, 7}));
  EXPECT_EQ(Detected(kTen, 5, DetectorAverage), (std::vector<float>{2, 7}));
  EXPECT_EQ(Detected(kTen, 10, DetectorAverage), (std::vector<float>{4.5}));
}

TEST(Detector, Peak_TenByThree_GivesThreeMaxima) {
  EXPECT_EQ(Detected(kTen, 3, DetectorPeak), (std::vector<float>{2, 5, 8}));
  EXPECT_EQ(Detected(kTen, 3, DetectorPeakAlt), (std::vector<float>{2, 5, 8}));
  EXPECT_EQ(Detected({-3, -1, -2, 5}, 2, DetectorPeak), (std::vector<float>{-1, 5}));
}

TEST(Detector, Min_TenByThree_GivesThreeMinima) {
  EXPECT_EQ(Detected(kTen, 3, DetectorMin), (std::vector<float>{0, 3, 6}));
}

TEST(Detector, PeakAndMin_TenByThree_GivesSixInTurn) {
  EXPECT_EQ(Detected(kTen, 3, DetectorPeakAndMin), (std::vector<float>{2, 0, 5, 3, 8, 6}));
}

TEST(Detector, PointSample_TenByThree_GivesNoFourth) {
  EXPECT_EQ(Detected(kTen, 3, DetectorPointSample), (std::vector<float>{0, 3, 6}));
  EXPECT_EQ(Detected(kTen, 5, DetectorPointSample), (std::vector<float>{0, 5}));
  EXPECT_EQ(Detected(kTen, 10, DetectorPointSample), (std::vector<float>{0}));
  EXPECT_EQ(Detected(kTen, 9, DetectorPointSample), (std::vector<float>{0}));
}

TEST(Detector, Rms_ThreeAndFour_GivesFiveByTheRootOfTwo) {
  EXPECT_EQ(Detected({3, 4}, 2, DetectorRms), (std::vector<float>{5.0F / 1.41421356F}));
  EXPECT_EQ(Detected({1, -1, 1, -1, 2, 2, -2, 2}, 4, DetectorRms), (std::vector<float>{1, 2}));
}

TEST(Detector, LogAverage_OneAndAHundred_GivesTen) {
  const auto got = Detected({1, 100, 1e-3F, 1e3F}, 2, DetectorLogAverage);
  ASSERT_EQ(got.size(), 2U);
  EXPECT_NEAR(got[0], 10.0, 1e-5);
  EXPECT_NEAR(got[1], 1.0, 1e-6);
}

// ln of the offset is -92.1034.
TEST(Detector, LogAverage_Zeros_CountAsTheOffset) {
  const auto got = Detected({0, 0, 0, 1, 0, -0.0F, 1, -1}, 2, DetectorLogAverage);
  ASSERT_EQ(got.size(), 4U);
  EXPECT_NEAR(got[0] / 9.99994610111476e-41, 1.0, 1e-4);
  EXPECT_NEAR(got[1] / 9.99997305e-21, 1.0, 1e-5);
  EXPECT_NEAR(got[2] / 9.99994610111476e-41, 1.0, 1e-4);
  EXPECT_TRUE(std::isnan(got[3]));
}

TEST(Detector, AnyType_SourceShorterThanTheRatio_GivesAnEmptyDestination) {
  for (const DetectorType type : kAll) {
    for (const int ratio : {11, 100, INT_MAX}) EXPECT_TRUE(Detected(kTen, ratio, type).empty()) << type;
    for (const int ratio : {1, 2}) EXPECT_TRUE(Detected({}, ratio, type).empty()) << type;
    auto dst = Of<VecReal32>({1, 2, 3});
    dst.Trim(1);
    Detector::DetectAndDecimate(dst, VecReal32(2), 3, type);
    EXPECT_EQ(dst.GetSize(), 0);
    EXPECT_EQ(dst.GetCapacity(), 3);
  }
}

TEST(Detector, AnyType_RatioBelowOne_GivesAnEmptyDestination) {
  for (const DetectorType type : kAll) {
    for (const int ratio : {0, -1, -10, INT_MIN}) EXPECT_TRUE(Detected(kTen, ratio, type).empty()) << type;
  }
}

TEST(Detector, AnyType_NegativeLength_GivesAnEmptyDestination) {
  VecReal32 src(3), dst;
  src.Resize(-1);
  for (const DetectorType type : kAll) {
    for (const int ratio : {-1, 0, 1, 2}) {
      Detector::DetectAndDecimate(dst, src, ratio, type);
      EXPECT_EQ(dst.GetSize(), 0);
    }
  }
}

TEST(Detector, AnyType_RatioOne_Copies) {
  const std::vector<float> src = {3, -1, 0, 5};
  for (const DetectorType type : kAll) {
    const std::vector<float> doubled = {3, 3, -1, -1, 0, 0, 5, 5};
    EXPECT_EQ(Detected(src, 1, type), type == DetectorPeakAndMin ? doubled : src) << type;
  }
}

TEST(Detector, None_KeptDestination_HoldsWhatItHeld) {
  for (const DetectorType type : {DetectorNone, DetectorType(10), DetectorType(-1), DetectorType(INT_MAX)}) {
    auto dst = Of<VecReal32>({5, 6, 7, 8, 9});
    dst.Trim(3);
    Detector::DetectAndDecimate(dst, Of<VecReal32>(kTen), 3, type);
    EXPECT_EQ(List(dst), (std::vector<float>{5, 6, 7}));
    EXPECT_EQ(dst.GetCapacity(), 5);
    EXPECT_EQ(Detected(kTen, 3, type), (std::vector<float>{0, 0, 0})) << "a new block is zeroed";
  }
}

TEST(Detector, AnyType_ViewOfASource_ReadsTheView) {
  for (const DetectorType type : kAll) {
    auto src = Of<VecReal32>(kTen);
    src.Trim(2, 8);
    VecReal32 dst;
    Detector::DetectAndDecimate(dst, src, 2, type);
    EXPECT_EQ(List(dst), Detected({2, 3, 4, 5, 6, 7, 8}, 2, type)) << type;
  }
}

TEST(Detector, AnyType_DestinationIsTheSource_GivesTheSame) {
  for (const DetectorType type : kAll) {
    if (type == DetectorNone || type > DetectorLogAverage || type < 0) continue;
    for (const int ratio : {0, 1, 2, 3, 10, 11}) {
      auto vec = Of<VecReal32>(kTen);
      Detector::DetectAndDecimate(vec, vec, ratio, type);
      EXPECT_EQ(List(vec), Detected(kTen, ratio, type)) << type << ' ' << ratio;
      vec = Of<VecReal32>({-1, -1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, -1});
      vec.Trim(2, 11);
      Detector::DetectAndDecimate(vec, vec, ratio, type);
      EXPECT_EQ(List(vec), Detected(kTen, ratio, type)) << type << ' ' << ratio;
    }
  }
}

TEST(Detector, AnyType_KeptDestination_AllocatesNothing) {
  const VecReal32 src(100000);
  for (const DetectorType type : kAll) {
    for (const int ratio : {1, 2, 3, 10, 64, 1000, 5000, 99999}) {
      VecReal32 dst;
      Detector::DetectAndDecimate(dst, src, ratio, type);
      const long before = test::AllocationCount();
      Detector::DetectAndDecimate(dst, src, ratio, type);
      EXPECT_EQ(test::AllocationCount(), before) << type << ' ' << ratio;
    }
  }
}

TEST(Detector, AnyType_NoMemory_Throws11001) {
  const VecReal32 src(10000);
  for (const DetectorType type : kAll) {
    for (const int ratio : {1, 2}) {
      VecReal32 dst(3);
      test::PrintedBy([&] {
        const test::AllocationLimit limit(1000);
        test::ExpectThrown([&] { Detector::DetectAndDecimate(dst, src, ratio, type); }, 11001,
                           "memory allocation error", "infra/Vector");
      });
      EXPECT_EQ(dst.GetSize(), 0);
    }
  }
}

// Every ratio at every level against sums in __float128 and plain comparisons, with guard values behind the
// result.

struct Point {
  float first, average, peak, min, rms, logAverage;
};

Point PointOf(const float *x, int n) {
  Quad sum = 0, squares = 0, logarithms = 0;
  float peak = x[0], min = x[0];
  for (int i = 0; i < n; ++i) {
    sum += static_cast<Quad>(x[i]);
    squares += static_cast<Quad>(x[i]) * static_cast<Quad>(x[i]);
    logarithms += static_cast<Quad>(std::log(static_cast<long double>(x[i])));
    peak = std::max(peak, x[i]);
    min = std::min(min, x[i]);
  }
  const auto mean = [n](Quad total) { return static_cast<long double>(total / n); };
  return {x[0],
          static_cast<float>(mean(sum)),
          peak,
          min,
          static_cast<float>(std::sqrt(mean(squares))),
          static_cast<float>(std::exp(mean(logarithms)))};
}

std::vector<float> Levels(std::size_t n) {
  std::mt19937 random(5);
  std::uniform_real_distribution<float> exponent(-3, 2);
  std::vector<float> x(n);
  for (float &value : x) value = std::pow(10.0F, exponent(random));
  return x;
}

std::vector<int> Ratios() {
  std::vector<int> ratios;
  for (int ratio = 2; ratio <= 300; ++ratio) ratios.push_back(ratio);
  for (const int ratio : {1000, 4095, 4096, 4097, 9000, 12345}) ratios.push_back(ratio);
  return ratios;
}

TEST(Detector, AnyType_EveryRatioAndLevel_IsRight) {
  const std::vector<float> samples = Levels(12345 + 11);
  const VecReal32 src = Of<VecReal32>(samples);
  for (const int ratio : Ratios()) {
    const int blocks = src.GetSize() / ratio;
    std::vector<Point> points;
    for (int b = 0; b < blocks; ++b) points.push_back(PointOf(src.GetPtr(b * ratio), ratio));
    for (const kernels::Level &level : kernels::AvailableLevels()) {
      const kernels::ScopedLevel scope(level);
      // right(block, results) for all blocks, with a guard behind the results.
      const auto check = [&](DetectorType type, int perBlock, auto right) {
        VecReal32 dst(blocks * perBlock + 1);
        dst[blocks * perBlock] = -7;
        Detector::DetectAndDecimate(dst, src, ratio, type);
        ASSERT_EQ(dst.GetSize(), blocks * perBlock);
        dst.Resize(blocks * perBlock + 1);
        ASSERT_EQ(dst[blocks * perBlock], -7) << level.name << ' ' << type << ' ' << ratio;
        for (int b = 0; b < blocks; ++b) {
          ASSERT_TRUE(right(points[static_cast<std::size_t>(b)], dst.GetPtr(b * perBlock)))
              << level.name << ", type " << type << ", ratio " << ratio << ", block " << b;
        }
      };
      // Sums of positive doubles round once to float; the root's quotient and the mean of logarithms
      // (magnitudes up to 7, to half a unit each) add roundings of their own.
      const auto average = [](const Point &p, const float *x) { return test::WithinUlps{1}(*x, p.average); };
      const auto peak = [](const Point &p, const float *x) { return *x == p.peak; };
      check(DetectorAverage, 1, average);
      check(DetectorAverageAlt, 1, average);
      check(DetectorPeak, 1, peak);
      check(DetectorPeakAlt, 1, peak);
      check(DetectorMin, 1, [](const Point &p, const float *x) { return *x == p.min; });
      check(DetectorPeakAndMin, 2,
            [](const Point &p, const float *x) { return x[0] == p.peak && x[1] == p.min; });
      check(DetectorRms, 1, [](const Point &p, const float *x) { return test::WithinUlps{2}(*x, p.rms); });
      check(DetectorPointSample, 1, [](const Point &p, const float *x) { return *x == p.first; });
      check(DetectorLogAverage, 1,
            [](const Point &p, const float *x) { return test::WithinUlps{8}(*x, p.logAverage); });
      if (HasFatalFailure()) return;
    }
  }
}

// The bits of the kernel that is named at the type, for values at which implementations go wrong.
TEST(Detector, AnyType_SpecialValues_HasTheBitsOfTheKernel) {
  std::vector<float> samples = test::Samples<float>();
  std::mt19937 random(6);
  const float rare[] = {0.0F, -0.0F, kNaN, -kNaN, kInf, -kInf, 1.0F, -1.0F};
  for (int k = 0; k < 4000; ++k) samples.push_back(rare[random() % (k < 2000 ? 4 : 8)]);
  for (int k = 0; k < 600; ++k) samples.push_back(k % 2 == 0 ? -kInf : kNaN);
  for (int k = 0; k < 600; ++k) samples.push_back(kInf);
  for (int k = 0; k < 600; ++k) samples.push_back(-0.0F);
  const VecReal32 src = Of<VecReal32>(samples);
  const auto expectBits = [](float got, float want, const std::string &where) {
    ASSERT_TRUE(test::Same()(got, want)) << where << ": " << got << " not " << want;
  };
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (const int ratio : Ratios()) {
      if (ratio > src.GetSize()) continue;
      const int blocks = src.GetSize() / ratio;
      VecReal32 average, peak, min, both, rms, sample, logAverage;
      Detector::DetectAndDecimate(average, src, ratio, DetectorAverage);
      Detector::DetectAndDecimate(peak, src, ratio, DetectorPeak);
      Detector::DetectAndDecimate(min, src, ratio, DetectorMin);
      Detector::DetectAndDecimate(both, src, ratio, DetectorPeakAndMin);
      Detector::DetectAndDecimate(rms, src, ratio, DetectorRms);
      Detector::DetectAndDecimate(sample, src, ratio, DetectorPointSample);
      Detector::DetectAndDecimate(logAverage, src, ratio, DetectorLogAverage);
      VecReal32 logarithms(src);
      TargetLib::AddC_32f_I(9.99994610111476e-41F, logarithms.GetPtr(), logarithms.GetSize());
      TargetLib::Ln_32f(logarithms.GetPtr(), logarithms.GetPtr(), logarithms.GetSize());
      const float root = static_cast<float>(std::sqrt(static_cast<double>(ratio)));
      for (int b = 0; b < blocks; ++b) {
        const std::string where =
            std::string(level.name) + ", ratio " + std::to_string(ratio) + ", block " + std::to_string(b);
        const float *block = src.GetPtr(b * ratio);
        float want = 0;
        TargetLib::Mean_32f(block, ratio, &want);
        expectBits(average[b], want, where + ", average");
        TargetLib::Max_32f(block, ratio, &want);
        expectBits(peak[b], want, where + ", peak");
        expectBits(both[2 * b], want, where + ", peak of both");
        TargetLib::Min_32f(block, ratio, &want);
        expectBits(min[b], want, where + ", min");
        expectBits(both[2 * b + 1], want, where + ", min of both");
        TargetLib::Norm_L2_32f(block, ratio, &want);
        expectBits(rms[b], want / root, where + ", rms");
        expectBits(sample[b], *block, where + ", sample");
        TargetLib::Mean_32f(logarithms.GetPtr(b * ratio), ratio, &want);
        TargetLib::Exp_32f(&want, &want, 1);
        expectBits(logAverage[b], want, where + ", logarithmic average");
        if (HasFatalFailure()) return;
      }
    }
  }
}

} // namespace
