#include "qorn/dsp/IntegralFilters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <vector>

#include "qorn/dsp/WaveformGenerator.h"
#include "support/Filters.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;
using test::Taps;

using Samples = std::vector<float>;

struct Shape {
  FIRFilterTypeTag type;
  std::function<float(float t, float T, float bt)> pulse; // at one time
  std::function<void(VecReal32 &, float bt, float T, float Ts, int n)> taps;
};

// A pulse depends on the time alone, so it may be taken one time at a time.
float At(float t, const std::function<void(VecReal32 &, const VecReal32 &)> &pulse) {
  VecReal32 value;
  pulse(value, Of<VecReal32>({t}));
  return value[0];
}

const Shape kShapes[] = {
    {FIRFilterIntegralRect,
     [](float t, float T, float) {
       return At(t,
                 [T](VecReal32 &dst, const VecReal32 &x) { WaveformGenerator::IntegralConvRect(dst, T, x); });
     },
     &IntegralRectFilter::IntegralRectFilterTap},
    {FIRFilterIntegralGaussian,
     [](float t, float T, float bt) {
       const float s = 0.83255464F / (3.1415927F * 2.0F * bt);
       return At(t, [T, s](VecReal32 &dst, const VecReal32 &x) {
         WaveformGenerator::IntegralConvGauss(dst, T, s, x);
       });
     },
     &IntegralGaussianFilter::IntegralGaussianFilterTap},
};

std::unique_ptr<FIRBaseFilter> Designed(const Shape &shape, float fs, float rate, float bt, int n) {
  std::unique_ptr<FIRBaseFilter> filter(FIRFilterFactory::MakeFilter(shape.type));
  filter->SetParameters(fs, rate, bt, n);
  return filter;
}

// Step by step, one output and one input at a time.
Samples Expected(const Shape &shape, const Samples &in, float fs, float rate, float bt, float shift) {
  const float T = 1.0F / rate, Ts = 1.0F / fs;
  Samples out(in.size(), 0.0F);
  for (std::size_t i = 0; i < in.size(); ++i) {
    if (in[i] == 0.0F) continue;
    for (std::size_t j = 0; j < in.size(); ++j) {
      const float u = static_cast<float>(j) * Ts, ui = static_cast<float>(i) * Ts;
      const float w = (u - ui) + shift;
      const float part = shape.pulse(w, T, bt) * in[i];
      out[j] += part;
    }
  }
  return out;
}

Samples Filtered(FIRBaseFilter &filter, const Samples &in, bool centre = true) {
  VecReal32 out(2);
  filter.Apply(out, Of<VecReal32>(in), centre);
  return List(out);
}

TEST(IntegralFilters, Apply_RealSamples_IsTheSumOfThePulsesAtTheirTimes) {
  Samples in(60, 0.0F);
  in[3] = 1.0F;
  in[11] = -1.0F;
  in[19] = 3.0F;
  in[20] = 0.5F;
  in[59] = 2.0F;
  for (const Shape &shape : kShapes) {
    for (const float fs : {8.0F, 10.0F, 7.3F}) {
      for (const float shift : {0.0F, 0.5F, -0.31F, 100.0F}) {
        const auto filter = Designed(shape, fs, 1.0F, 0.3F, 33);
        filter->SetTimeShift(shift);
        const Samples expected = Expected(shape, in, fs, 1.0F, 0.3F, shift);
        EXPECT_EQ(Filtered(*filter, in, true), expected) << shape.type << ' ' << fs << ' ' << shift;
        EXPECT_EQ(Filtered(*filter, in, false), expected) << shape.type << ' ' << fs << ' ' << shift;
      }
    }
  }
}

TEST(IntegralFilters, Apply_ImpulseIntoTheRectangle_RampsOverOneSymbolAndStays) {
  IntegralRectFilter filter;
  filter.SetParameters(8.0F, 1.0F, 0.0F, 9);
  Samples in(20, 0.0F);
  in[6] = 3.0F;
  const Samples out = Filtered(filter, in);
  for (int j = 0; j < 20; ++j) {
    const double ramp = std::min(std::max((j - 6) / 8.0 + 0.5, 0.0), 1.0);
    EXPECT_EQ(out[static_cast<std::size_t>(j)], static_cast<float>(3 * ramp)) << j;
  }
  // At sample 0 the first half of the ramp lies before the block.
  Samples first(20, 0.0F);
  first[0] = 2.0F;
  EXPECT_EQ(Filtered(filter, first), (Samples{1.0F, 1.25F, 1.5F, 1.75F, 2.0F, 2.0F, 2.0F, 2.0F, 2.0F, 2.0F,
                                              2.0F, 2.0F,  2.0F, 2.0F,  2.0F, 2.0F, 2.0F, 2.0F, 2.0F, 2.0F}));
}

TEST(IntegralFilters, Apply_LongBlock_EndsAtExactlyTheSumOfTheInputs) {
  for (const Shape &shape : kShapes) {
    for (const float bt : {0.2F, 0.3F, 1.0F}) {
      const auto filter = Designed(shape, 16.0F, 1.0F, bt, 9);
      Samples in(3000, 0.0F);
      in[200] = 1.0F;
      in[216] = -3.0F;
      in[232] = 1.5F;
      const Samples out = Filtered(*filter, in);
      EXPECT_EQ(out[0], 0.0F);
      for (std::size_t j = 400; j < 3000; ++j)
        ASSERT_EQ(out[j], -0.5F) << shape.type << ' ' << bt << ' ' << j;
    }
  }
}

TEST(IntegralFilters, SetTimeShift_AnyShift_MovesTheOutputByThatTime) {
  for (const Shape &shape : kShapes) {
    const auto filter = Designed(shape, 4.0F, 1.0F, 0.5F, 9), fine = Designed(shape, 32.0F, 1.0F, 0.5F, 9);
    Samples in(64, 0.0F), fineIn(512, 0.0F);
    in[32] = 1.0F;
    fineIn[256] = 1.0F;
    const Samples fineOut = Filtered(*fine, fineIn);
    for (int eighth = -20; eighth <= 20; ++eighth) {
      filter->SetTimeShift(static_cast<float>(eighth) / 32.0F); // eighths of a sample
      const Samples out = Filtered(*filter, in);
      for (int j = 8; j < 56; ++j) {
        EXPECT_EQ(out[static_cast<std::size_t>(j)], fineOut[static_cast<std::size_t>(8 * j + eighth)])
            << shape.type << ' ' << eighth << ' ' << j;
      }
    }
  }
}

TEST(IntegralFilters, Apply_TapCount_ChangesNothing) {
  Samples in(50, 0.0F);
  in[10] = 1.0F;
  for (const Shape &shape : kShapes) {
    EXPECT_EQ(Filtered(*Designed(shape, 8.0F, 1.0F, 0.3F, 5), in),
              Filtered(*Designed(shape, 8.0F, 1.0F, 0.3F, 333), in));
    EXPECT_EQ(Filtered(*Designed(shape, 8.0F, 1.0F, 0.3F, 0), in),
              Filtered(*Designed(shape, 8.0F, 1.0F, 0.3F, 333), in));
  }
}

TEST(IntegralFilters, Apply_OutputThatIsTheInput_GivesTheSame) {
  for (const Shape &shape : kShapes) {
    const auto filter = Designed(shape, 8.0F, 1.0F, 0.3F, 5);
    const Samples in = {0.0F, 1.0F, 0.0F, -2.0F, 0.0F, 0.0F};
    VecReal32 same = Of<VecReal32>(in);
    filter->Apply(same, same, true);
    EXPECT_EQ(List(same), Filtered(*filter, in));
    EXPECT_TRUE(Filtered(*filter, {}).empty());
  }
}

TEST(IntegralFilters, Apply_ComplexSamples_ConvolvesWithTheTaps) {
  for (const Shape &shape : kShapes) {
    const auto filter = Designed(shape, 8.0F, 1.0F, 0.3F, 7);
    VecCplx32 in(7), out;
    in[0] = {0.0F, 1.0F};
    filter->Apply(out, in, false);
    VecReal32 im;
    out.GetImag(im);
    EXPECT_EQ(List(im), Taps(*filter));
  }
}

TEST(IntegralFilters, Taps_AnyDesign_AreTheScaledPulse) {
  for (const Shape &shape : kShapes) {
    for (const int n : {1, 2, 33, 64}) {
      const float T = 1.0F / 4800.0F, Ts = 1.0F / 48000.0F, bt = 0.3F;
      const float start = static_cast<float>(n - 1) * Ts * -0.5F;
      Samples expected;
      for (int i = 0; i < n; ++i) {
        expected.push_back(shape.pulse(static_cast<float>(i) * Ts + start, T, bt) * Ts);
      }
      EXPECT_EQ(Taps(*Designed(shape, 48000.0F, 4800.0F, bt, n)), expected) << shape.type << ' ' << n;
      VecReal32 taps;
      shape.taps(taps, bt, T, Ts, n);
      EXPECT_EQ(List(taps), expected) << shape.type << ' ' << n;
    }
  }
}

TEST(IntegralFilters, Accessors_AfterADesign_GiveWhatItWasMadeFrom) {
  IntegralRectFilter rect;
  rect.SetParameters(48000.0F, 4800.0F, 0.7F, 21);
  EXPECT_EQ(rect.GetSamplingRate(), 48000.0F);
  EXPECT_EQ(rect.GetSymbolRate(), 4800.0F);
  EXPECT_EQ(rect.GetDelay(), 10.0F);
  EXPECT_TRUE(rect.IsIntegralFilter());
  IntegralGaussianFilter gauss;
  gauss.SetParameters(48000.0F, 4800.0F, 0.7F, 22);
  EXPECT_EQ(gauss.GetSamplingRate(), 48000.0F);
  EXPECT_EQ(gauss.GetSymbolRate(), 4800.0F);
  EXPECT_EQ(gauss.GetRoleoff(), 0.7F);
  EXPECT_EQ(gauss.GetDelay(), 10.5F);
  EXPECT_TRUE(gauss.IsIntegralFilter());
  EXPECT_EQ(test::FilterProbe::TapSize(gauss), 22);
}

} // namespace
