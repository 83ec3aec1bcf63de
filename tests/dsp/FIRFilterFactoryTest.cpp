#include "qorn/dsp/FIRFilterFactory.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <typeinfo>

#include "dsp/FIRFilterTable.h"
#include "qorn/infra/QORNException.h"
#include "support/Allocations.h"
#include "support/Filters.h"

namespace {

using namespace QORN;
using test::FilterKind;
using test::kFilterKinds;
using test::List;
using test::Taps;
using Probe = test::FilterProbe;

TEST(FIRFilterTypeTag, Values_AreThoseOfTheInterface) {
  EXPECT_EQ(FIRFilterRootRaisedCosine, 1);
  EXPECT_EQ(FIRFilterRaisedCosine, 2);
  EXPECT_EQ(FIRFilterGaussian, 3);
  EXPECT_EQ(FIRFilterGaussRect, 4);
  EXPECT_EQ(FIRFilterRectangular, 6);
  EXPECT_EQ(FIRFilterIS95TXMeasurement, 12);
  EXPECT_EQ(FIRFilterIS95TXEQMeasurement, 13);
  EXPECT_EQ(FIRFilterIS95Reference, 14);
  EXPECT_EQ(FIRFilterC4FMReverseShaping, 15);
  EXPECT_EQ(FIRFilterHDQPSKP25Measurement, 16);
  EXPECT_EQ(FIRFilterLowPass, 17);
  EXPECT_EQ(FIRFilterHighPass, 18);
  EXPECT_EQ(FIRFilterBandPass, 19);
  EXPECT_EQ(FIRFilterIntegralGaussian, 20);
  EXPECT_EQ(FIRFilterIntegralRect, 21);
  EXPECT_EQ(FIRFilterUserDefined, 23);
  EXPECT_EQ(FIRFilterIntegralUserDefined, 24);
}

TEST(FIRFilterFactory, MakeFilter_EachKind_MakesItsClassWithoutTaps) {
  for (const FilterKind &kind : kFilterKinds) {
    const auto filter = kind.Make();
    ASSERT_NE(filter, nullptr) << kind.type;
    const FIRBaseFilter &made = *filter;
    EXPECT_TRUE(typeid(made) == kind.filter) << kind.type;
    EXPECT_EQ(filter->GetType(), kind.reported) << kind.type;
    EXPECT_EQ(filter->IsIntegralFilter(), kind.integral) << kind.type;
    EXPECT_FALSE(filter->IsComplexFilter()) << kind.type;
    EXPECT_TRUE(Taps(*filter).empty()) << kind.type;
    EXPECT_EQ(filter->GetDelay(), 0.0F) << kind.type;
  }
}

TEST(FIRFilterFactory, MakeFilter_OtherKind_IsNull) {
  for (const int value : {0, 5, 7, 8, 9, 10, 11, 22, 25, -1, 1000}) {
    EXPECT_EQ(FIRFilterFactory::MakeFilter(static_cast<FIRFilterTypeTag>(value)), nullptr) << value;
  }
}

TEST(FIRFilterFactory, MakeFilter_GaussRect_ReportsTheOtherKind) {
  const std::unique_ptr<FIRBaseFilter> filter(FIRFilterFactory::MakeFilter(FIRFilterGaussRect));
  EXPECT_EQ(filter->GetType(), 20);
}

TEST(FIRFilterFactory, CloneFilter_OfAnUnknownClass_IsNull) {
  struct Foreign : LowPassFilter {};
  EXPECT_EQ(CloneFilter(Foreign()), nullptr);
  EXPECT_EQ(CloneFilter(FIRBaseFilter()), nullptr);
}

TEST(FIRFilterFactory, GetRecommendedTapSize_EachKind_IsThatOfTheTable) {
  struct Case {
    int type;
    float fs, rate, shape;
    int expected;
  };
  const Case cases[] = {
      {17, 48000, 5000, 0, 0},
      {18, 48000, 5000, 0, 0},
      {19, 48000, 5000, 9000, 0},
      {2, 4, 1, 0.35F, 51},      // 50
      {2, 4, 1, 0, 17501},       // 17500, the roll-off raised to 0.001
      {2, 4, 1, -3, 17501},      // the same
      {2, 8, 1, 0.22F, 159},     // 159.09
      {1, 4, 1, 0.35F, 101},     // 100
      {1, 4, 1, 0.0005F, 35001}, // 35000
      {1, 4, 1, 0.22F, 159},     // 159.09
      {3, 8, 1, 0.5F, 161},      // 160
      {4, 8, 1, 0.3F, 267},      // 266.67
      {20, 8, 1, 0.3F, 267},     //
      {3, 10, 1, 0, 99999},      // 99999.992: the float 0.001 is above 0.001
      {6, 10, 1, 0.35F, 101},    // 100; the shape does not count
      {6, 10, 1, 7, 101},        //
      {21, 10, 1, 7, 101},       //
      {12, 2, 1, 0, 81},
      {12, 4, 1, 0, 161},
      {12, 8, 1, 0, 321},
      {12, 16, 1, 0, 643},
      {12, 3, 1, 0, 0},
      {12, 1, 1, 0, 0},
      {12, 32, 1, 0, 0},
      {13, 2, 1, 0, 81},
      {13, 4, 1, 0, 161},
      {13, 8, 1, 0, 321},
      {13, 16, 1, 0, 643},
      {13, 5, 1, 0, 0},
      {14, 2, 1, 0, 103},
      {14, 4, 1, 0, 207},
      {14, 8, 1, 0, 415},
      {14, 16, 1, 0, 829},
      {14, 6, 1, 0, 0},
      {12, 4.4F, 1, 0, 161},
      {12, 4.5F, 1, 0, 0},
      {12, 3.5F, 1, 0, 161},
      {15, 10, 1, 0, 255},         // p = 200
      {15, 48000, 4800, 0, 255},   //
      {15, 12.8F, 1, 0, 255},      // p = 256
      {15, 12.9F, 1, 0, 511},      // p = 258
      {15, 0.15F, 1, 0, 3},        // p = 3
      {15, 0.1F, 1, 0, 1},         // p = 2
      {15, 0, 1, 0, 1},            //
      {15, -10, 1, 0, 1},          //
      {16, 48000, 0, 0, 71},       // 48000 * 8.75 / (7200 * 0.8333) = 70.003, whatever rate and shape are
      {16, 48000, 9600, 0.2F, 71}, //
      {23, 4, 1, 0, 1023},
      {24, 4, 1, 0, 1023},
  };
  for (const Case &c : cases) {
    const std::unique_ptr<FIRBaseFilter> filter(
        FIRFilterFactory::MakeFilter(static_cast<FIRFilterTypeTag>(c.type)));
    EXPECT_EQ(filter->GetRecommendedTapSize(c.fs, c.rate, c.shape), c.expected)
        << c.type << ' ' << c.fs << ' ' << c.rate << ' ' << c.shape;
  }
}

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNan = std::numeric_limits<float>::quiet_NaN();
constexpr float kHuge = std::numeric_limits<float>::max();
constexpr float kTiny = std::numeric_limits<float>::denorm_min();
const float kOdd[] = {0.0F,  -0.0F, 1.0F,   -1.0F,     0.3F,       1e-30F,
                      kTiny, kHuge, -kHuge, kInfinity, -kInfinity, kNan};

TEST(FIRFilterFactory, GetRecommendedTapSize_NoCountThatFits_IsZero) {
  for (const int type : {1, 2, 3, 4, 6, 15, 20, 21}) {
    const std::unique_ptr<FIRBaseFilter> filter(
        FIRFilterFactory::MakeFilter(static_cast<FIRFilterTypeTag>(type)));
    EXPECT_EQ(filter->GetRecommendedTapSize(1.0F, 0.0F, 0.5F), 0) << type;
    EXPECT_EQ(filter->GetRecommendedTapSize(0.0F, 0.0F, 0.5F), 0) << type;
    EXPECT_EQ(filter->GetRecommendedTapSize(kNan, 1.0F, 0.5F), 0) << type;
    EXPECT_EQ(filter->GetRecommendedTapSize(1e30F, 1.0F, 0.5F), 0) << type;
  }
}

TEST(FIRFilterFactory, AnyFilter_AnyParameters_StaysHarmless) {
  const VecReal32 in(5);
  const VecCplx32 complexIn(5);
  VecReal32 out;
  VecCplx32 complexOut;
  testing::internal::CaptureStdout();
  const test::AllocationLimit limit(1 << 28);
  for (const FilterKind &kind : kFilterKinds) {
    const auto filter = kind.Make();
    for (const float fs : kOdd) {
      for (const float rate : kOdd) {
        for (const float shape : kOdd) {
          const int recommended = filter->GetRecommendedTapSize(fs, rate, shape);
          EXPECT_LE(recommended, std::numeric_limits<int>::max());
          for (const int n : {9, 0, -5, std::numeric_limits<int>::min()}) {
            filter->SetParameters(fs, rate, shape, n);
            if (kind.type < 12 || (kind.type > 16 && kind.type < 23)) {
              ASSERT_EQ(Taps(*filter).size(), n > 0 ? 9U : 0U) << kind.type << ' ' << n;
            }
          }
          filter->SetTimeShift(shape);
          filter->Apply(out, in, true);
          EXPECT_EQ(out.GetSize(), 5);
          filter->Apply(complexOut, complexIn, false);
          EXPECT_EQ(complexOut.GetSize(), 5);
          filter->Apply(complexOut, in, true);
          EXPECT_EQ(complexOut.GetSize(), 5);
        }
      }
    }
  }
  testing::internal::GetCapturedStdout();
}

TEST(FIRFilterFactory, SetParameters_MoreTapsThanMemoryHolds_Throws) {
  testing::internal::CaptureStdout();
  for (const FilterKind &kind : kFilterKinds) {
    if (kind.type >= 12 && kind.type <= 14) continue; // fixed numbers of taps
    if (kind.type == 16 || kind.type >= 23) continue;
    const auto filter = kind.Make();
    const test::AllocationLimit limit(1 << 20);
    for (const int n : {std::numeric_limits<int>::max(), 1 << 30, 1 << 24}) {
      try {
        filter->SetParameters(4.0F, 1.0F, 0.35F, n);
        ADD_FAILURE() << kind.type << ' ' << n;
      } catch (const QORNException &e) {
        EXPECT_EQ(e.GetErrorCode(), 11001) << kind.type;
      }
    }
    filter->SetParameters(4.0F, 1.0F, 1.35F, 21);
    EXPECT_EQ(Taps(*filter).size(), 21U) << kind.type;
  }
  testing::internal::GetCapturedStdout();
}

TEST(FIRFilterFactory, SetParameters_Again_ReplacesTheTaps) {
  for (const FilterKind &kind : kFilterKinds) {
    if (kind.type >= 23) continue;
    const auto filter = kind.Make(), fresh = kind.Make();
    filter->SetParameters(8.0F, 1.0F, 0.7F, 77);
    filter->SetParameters(4.0F, 1.0F, 0.35F, 21);
    fresh->SetParameters(4.0F, 1.0F, 0.35F, 21);
    EXPECT_EQ(Taps(*filter), Taps(*fresh)) << kind.type;
    EXPECT_EQ(filter->GetDelay(), fresh->GetDelay()) << kind.type;
  }
}

TEST(FIRFilterFactory, GetDelay_AfterAnyDesign_IsHalfOfTheTapsLessOne) {
  for (const FilterKind &kind : kFilterKinds) {
    if (kind.type >= 12 && kind.type <= 14) continue;
    if (kind.type >= 23) continue;
    const auto filter = kind.Make();
    for (const int n : {1, 2, 20, 21, 32, 255}) {
      filter->SetParameters(4.0F, 1.0F, 1.5F, n);
      EXPECT_EQ(filter->GetDelay(), static_cast<float>(n - 1) / 2.0F) << kind.type << ' ' << n;
    }
  }
}

} // namespace
