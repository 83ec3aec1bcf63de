// Tones: their samples, and the phase that they carry from call to call.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "qorn/infra/QORNException.h"
#include "qorn/infra/TargetLib.h"
#include "support/Allocations.h"
#include "support/ExpectedValues.h"
#include "support/KernelCheck.h"

namespace {

using QORN::Cplx32;
using QORN::Cplx64;
using QORN::QORNException;
using QORN::TargetLib;
using QORN::test::Expected;
using QORN::test::ExpectedValues;
using QORN::test::Guarded;
using QORN::test::WithinUlps;

namespace kernels = QORN::kernels;

// Sine and cosine err by less than a unit and the product with the magnitude by half of one; where the
// product is in the next binade, the former doubles.
template <class C, class T> void CheckTone(const std::string &kind, void (*tone)(C *, int, T, T, T *)) {
  const std::vector<Expected> res = ExpectedValues(kind + "re"), ims = ExpectedValues(kind + "im");
  ASSERT_FALSE(res.empty());
  ASSERT_EQ(res.size(), ims.size());
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scope(level);
    for (std::size_t s = 0; s < res.size(); ++s) {
      const std::vector<double> &p = res[s].parameters;
      const int len = static_cast<int>(p[3]);
      Guarded<C> dst(len, static_cast<int>(s));
      T phase = static_cast<T>(p[2]);
      tone(dst.data(), len, static_cast<T>(p[0]), static_cast<T>(p[1]), &phase);
      const std::string where = kind + ' ' + res[s].name + " at " + level.name;
      ASSERT_TRUE(dst.Intact()) << where;
      for (std::size_t k = 0; k < res[s].values.size(); ++k) {
        const int n = res[s].indices[k];
        if (n < 0) {
          EXPECT_EQ(static_cast<double>(phase), res[s].values[k]) << where;
          continue;
        }
        const C expected{static_cast<T>(res[s].values[k]), static_cast<T>(ims[s].values[k])};
        EXPECT_TRUE(WithinUlps{2.5}(dst.data()[n], expected))
            << where << ", index " << n << ": " << QORN::test::Show(dst.data()[n]) << " not "
            << QORN::test::Show(expected);
      }
    }
  }
}

TEST(TargetLib, Tone_MagnitudeFrequencyPhase_GivesSamplesAndCarriesThePhase) {
  CheckTone<Cplx64, double>("tone64", &TargetLib::Tone_Direct_64fc);
  CheckTone<Cplx32, float>("tone32", &TargetLib::Tone_Direct_32fc);
}

// In one piece or in two: the angles of 5000 samples reach 6.3e3, whose rounding is 4.6e-13.
TEST(TargetLib, Tone_TwoBlocksWithAKeptPhase_GoOnWithoutAJump) {
  std::vector<Cplx64> whole(5000), parts(5000);
  double phase = 0.3, kept = 0.3;
  TargetLib::Tone_Direct_64fc(whole.data(), 5000, 2, 0.2, &phase);
  TargetLib::Tone_Direct_64fc(parts.data(), 1234, 2, 0.2, &kept);
  TargetLib::Tone_Direct_64fc(parts.data() + 1234, 5000 - 1234, 2, 0.2, &kept);
  for (std::size_t i = 0; i < 5000; ++i) {
    ASSERT_NEAR(parts[i].re, whole[i].re, 4e-12) << i;
    ASSERT_NEAR(parts[i].im, whole[i].im, 4e-12) << i;
  }
  EXPECT_NEAR(kept, phase, 4e-12);
}

TEST(TargetLib, Tone_EveryLength_StaysInItsArray) {
  for (int len = 1; len <= 70; ++len) {
    Guarded<Cplx32> dst(len, len % 16);
    float phase = 0;
    TargetLib::Tone_Direct_32fc(dst.data(), len, 1, 0.25F, &phase);
    ASSERT_TRUE(dst.Intact()) << len;
    EXPECT_EQ(dst.data()[0].re, 1);
    EXPECT_EQ(dst.data()[0].im, 0);
  }
}

// The reduced phase is stored even where nothing is added to it.
TEST(TargetLib, Tone_TinyNegativeFrequencyAndPhase_AreZero) {
  Cplx64 dst[4];
  double phase = -1e-300;
  TargetLib::Tone_Direct_64fc(dst, 4, 1, -1e-300, &phase);
  EXPECT_EQ(phase, 0);
  for (const Cplx64 &x : dst) {
    EXPECT_EQ(x.re, 1);
    EXPECT_EQ(x.im, 0);
  }
}

TEST(TargetLib, Tone_EmptyOrNull_DoesNothing) {
  Cplx64 dst[1] = {{9, 9}};
  double phase = -100;
  TargetLib::Tone_Direct_64fc(dst, 0, 1, 0.1, &phase);
  TargetLib::Tone_Direct_64fc(dst, -3, 1, 0.1, &phase);
  TargetLib::Tone_Direct_64fc(nullptr, 1, 1, 0.1, &phase);
  TargetLib::Tone_Direct_64fc(dst, 1, 1, 0.1, nullptr);
  EXPECT_EQ(phase, -100);
  EXPECT_EQ(dst[0].re, 9);
  Cplx32 narrow[1] = {{9, 9}};
  float narrowPhase = -100;
  TargetLib::Tone_Direct_32fc(narrow, 0, 1, 0.1F, &narrowPhase);
  TargetLib::Tone_Direct_32fc(nullptr, 1, 1, 0.1F, &narrowPhase);
  TargetLib::Tone_Direct_32fc(narrow, 1, 1, 0.1F, nullptr);
  EXPECT_EQ(narrowPhase, -100);
  EXPECT_EQ(narrow[0].re, 9);
}

TEST(TargetLib, Tone_WithoutMemoryForTheRamp_Throws11001) {
  Cplx32 dst[8];
  float phase = 7;
  testing::internal::CaptureStdout();
  int code = 0;
  {
    const QORN::test::AllocationLimit none(0);
    try {
      TargetLib::Tone_Direct_32fc(dst, 8, 1, 0.1F, &phase);
    } catch (const QORNException &error) {
      code = error.GetErrorCode();
    }
  }
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(code, 11001);
  // The phase was reduced before the memory was asked for.
  EXPECT_EQ(phase, static_cast<float>(7.0 - static_cast<double>(6.2831855F)));
}

} // namespace
