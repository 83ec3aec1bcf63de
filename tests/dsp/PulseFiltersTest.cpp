#include "qorn/dsp/PulseFilters.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "qorn/dsp/WaveformGenerator.h"
#include "support/Filters.h"

namespace {

using namespace QORN;
using test::Decibels;
using test::kPiLong;
using test::List;
using test::LongSinc;
using test::Of;
using test::Response;
using test::Taps;

// A class of pulse filters: its tap function, the pulse and the scale that its taps are told to have, and the
// pulse as the textbooks write it, at x = t / T, times Ts.
struct Shape {
  std::string name;
  FIRFilterTypeTag type;
  std::function<void(VecReal32 &, float shape, float T, float Ts, int n)> taps;
  std::function<void(VecReal32 &, float shape, float T, const VecReal32 &t)> pulse;
  std::function<float(float T, float Ts)> scale;
  std::function<long double(long double x, long double shape, long double T)> textbook;
};

long double RaisedCosine(long double x, long double r, long double T) {
  const long double y = 2 * r * x;
  if (std::fabs(std::fabs(y) - 1) < 1e-9L) return kPiLong / 4 * LongSinc(x) / T;
  return LongSinc(x) * std::cos(kPiLong * r * x) / (1 - y * y) / T;
}

// With the energy 1 / T, so that a pair of them is the raised cosine.
long double RootRaisedCosine(long double x, long double r, long double T) {
  const long double y = 4 * r * x;
  if (x == 0) return (1 - r + 4 * r / kPiLong) / T;
  if (std::fabs(std::fabs(y) - 1) < 1e-9L) {
    const long double a = kPiLong / 4 / r;
    return r / std::sqrt(2.0L) * ((1 + 2 / kPiLong) * std::sin(a) + (1 - 2 / kPiLong) * std::cos(a)) / T;
  }
  return (std::sin(kPiLong * x * (1 - r)) + y * std::cos(kPiLong * x * (1 + r))) /
         (kPiLong * x * (1 - y * y)) / T;
}

// The standard deviation in symbols of the Gaussian of which BT is the 3 dB bandwidth times T.
long double Deviation(long double bt) { return std::sqrt(std::log(2.0L)) / (2 * kPiLong * bt); }

long double Gaussian(long double x, long double bt, long double T) {
  const long double d = Deviation(bt);
  return std::exp(-x * x / (2 * d * d)) / (d * std::sqrt(2 * kPiLong)) / T;
}

long double GaussRect(long double x, long double bt, long double T) {
  const long double d = Deviation(bt) * std::sqrt(2.0L);
  return (std::erf((x + 0.5L) / d) - std::erf((x - 0.5L) / d)) / 2 / T;
}

long double Rectangular(long double x, long double, long double T) { return LongSinc(x) / T; }

const std::vector<Shape> &Shapes() {
  static const std::vector<Shape> shapes = {
      {"RaisedCosine", FIRFilterRaisedCosine, &RaisedCosineFilter::RaisedCosineFilterTap,
       &WaveformGenerator::RaisedCosinePulse, [](float T, float Ts) { return Ts / T; }, RaisedCosine},
      {"RootRaisedCosine", FIRFilterRootRaisedCosine, &RootRaisedCosineFilter::RootRaisedCosineFilterTap,
       &WaveformGenerator::RootRaisedCosinePulse,
       [](float T, float Ts) { return Ts / static_cast<float>(std::sqrt(static_cast<double>(T))); },
       RootRaisedCosine},
      {"Gaussian", FIRFilterGaussian, &GaussianFilter::GaussianFilterTap,
       [](VecReal32 &dst, float bt, float T, const VecReal32 &t) {
         WaveformGenerator::GaussianPulse(dst, bt / T, t);
       },
       [](float, float Ts) { return Ts; }, Gaussian},
      {"GaussRect", FIRFilterGaussRect, &GaussRectFilter::GaussRectFilterTap,
       [](VecReal32 &dst, float bt, float T, const VecReal32 &t) {
         WaveformGenerator::ConvGauss(dst, T, 0.83255464F / (3.1415927F * 2.0F * bt), t);
       },
       [](float, float Ts) { return Ts; }, GaussRect},
      {"Rectangular", FIRFilterRectangular,
       [](VecReal32 &taps, float, float T, float Ts, int n) {
         RectangularFilter::RectangularFilterTap(taps, 1.0F / T, Ts, n);
       },
       [](VecReal32 &dst, float, float T, const VecReal32 &t) {
         WaveformGenerator::SincPulse(dst, 1.0F / T * 0.5F, t);
       },
       [](float, float Ts) { return Ts; }, Rectangular},
  };
  return shapes;
}

struct Design {
  float fs, rate, shape;
  int n;
};
const Design kDesigns[] = {{4, 1, 0.35F, 101}, {4, 1, 0.35F, 100},      {8, 1, 0.22F, 321},
                           {16, 2, 1, 65},     {48000, 7200, 0.5F, 91}, {1e6F, 270833, 0.3F, 64},
                           {8, 1, 0.25F, 1},   {3, 1, 0.7F, 2}};

std::vector<float> Designed(const Shape &shape, const Design &d) {
  const std::unique_ptr<FIRBaseFilter> filter(FIRFilterFactory::MakeFilter(shape.type));
  filter->SetParameters(d.fs, d.rate, d.shape, d.n);
  return Taps(*filter);
}

// Every step of the recipe, with the pulse by itself.
TEST(PulseFilters, Taps_AnyDesign_AreTheScaledPulseAtTheTimesOfTheSamples) {
  for (const Shape &shape : Shapes()) {
    for (const Design &d : kDesigns) {
      const float T = 1.0F / d.rate, Ts = 1.0F / d.fs;
      const float start = static_cast<float>(d.n - 1) * Ts * -0.5F;
      VecReal32 t(d.n), expected, taps;
      for (int i = 0; i < d.n; ++i) t[i] = static_cast<float>(i) * Ts + start;
      shape.pulse(expected, d.shape, T, t);
      for (int i = 0; i < d.n; ++i) expected[i] *= shape.scale(T, Ts);
      shape.taps(taps, d.shape, T, Ts, d.n);
      EXPECT_EQ(List(taps), List(expected)) << shape.name << ' ' << d.n;
      if (shape.name != "Rectangular" || 1.0F / T == d.rate) {
        EXPECT_EQ(Designed(shape, d), List(expected)) << shape.name << ' ' << d.n;
      }
    }
  }
}

// Times are exact to float, so the argument of a sine errs by its size times half an epsilon; the textbook
// forms vary by less than 4 / T in a symbol.
TEST(PulseFilters, Taps_AnyDesign_AreTheTextbookPulse) {
  for (const Shape &shape : Shapes()) {
    for (const Design &d : kDesigns) {
      const auto taps = Designed(shape, d);
      ASSERT_EQ(taps.size(), static_cast<std::size_t>(d.n));
      const auto samples = static_cast<long double>(d.fs) / static_cast<long double>(d.rate);
      for (int i = 0; i < d.n; ++i) {
        const long double x = (i - (d.n - 1) / 2.0L) / samples;
        const long double expected = shape.textbook(x, static_cast<long double>(d.shape), 1) / samples;
        const long double bound = (4 * std::fabs(x) + 4) * 4 * 0x1p-24L / samples + 2e-6L / samples;
        EXPECT_LE(std::fabs(static_cast<long double>(taps[static_cast<std::size_t>(i)]) - expected), bound)
            << shape.name << ' ' << d.fs << ' ' << d.n << ", tap " << i;
      }
    }
  }
}

TEST(PulseFilters, Taps_AnyDesign_AreSymmetric) {
  for (const Shape &shape : Shapes()) {
    for (const Design &d : kDesigns) {
      const auto taps = Designed(shape, d);
      const float largest = taps[taps.size() / 2];
      for (std::size_t i = 0; i < taps.size(); ++i) {
        EXPECT_NEAR(taps[i], taps[taps.size() - 1 - i], largest * static_cast<float>(d.n) * 0x1p-22F)
            << shape.name << ' ' << d.n << ", tap " << i;
      }
    }
  }
}

TEST(PulseFilters, Taps_OneTap_IsThePulseAtItsMiddle) {
  VecReal32 tap;
  RaisedCosineFilter::RaisedCosineFilterTap(tap, 0.35F, 1.0F, 0.25F, 1);
  EXPECT_EQ(List(tap), std::vector<float>{0.25F});
  RootRaisedCosineFilter::RootRaisedCosineFilterTap(tap, 0.35F, 1.0F, 0.25F, 1);
  EXPECT_NEAR(tap[0], 0.25 * (1 - 0.35 + 4 * 0.35 / 3.14159265), 1e-7);
  RectangularFilter::RectangularFilterTap(tap, 1.0F, 0.25F, 1);
  EXPECT_EQ(List(tap), std::vector<float>{0.25F});
  GaussianFilter::GaussianFilterTap(tap, 0.5F, 1.0F, 0.25F, 1);
  EXPECT_NEAR(tap[0], 0.25 * 0.5 * std::sqrt(2 * 3.14159265 / std::log(2.0)), 1e-7);
}

TEST(PulseFilters, GetDelay_EvenLength_EndsInAHalf) {
  for (const Shape &shape : Shapes()) {
    const std::unique_ptr<FIRBaseFilter> filter(FIRFilterFactory::MakeFilter(shape.type));
    filter->SetParameters(4.0F, 1.0F, 0.5F, 16);
    EXPECT_EQ(filter->GetDelay(), 7.5F) << shape.name;
    filter->SetParameters(4.0F, 1.0F, 0.5F, 17);
    EXPECT_EQ(filter->GetDelay(), 8.0F) << shape.name;
  }
}

TEST(PulseFilters, RaisedCosine_RolloffOfZero_IsASampledSinc) {
  RaisedCosineFilter filter;
  filter.SetParameters(4.0F, 1.0F, 0.0F, 81);
  const auto taps = Taps(filter);
  for (int i = 0; i < 81; ++i) {
    const long double expected = LongSinc((i - 40) / 4.0L) / 4;
    EXPECT_NEAR(static_cast<double>(taps[static_cast<std::size_t>(i)]), static_cast<double>(expected), 1e-6)
        << i;
  }
  EXPECT_EQ(filter.GetRecommendedTapSize(4.0F, 1.0F, 0.0F), filter.GetRecommendedTapSize(4.0F, 1.0F, 0.001F));
}

TEST(PulseFilters, RaisedCosine_RecommendedLength_HasNoInterferenceAndUnitGain) {
  for (const float rolloff : {0.15F, 0.22F, 0.35F, 0.5F, 1.0F}) {
    for (const int samples : {2, 4, 8}) {
      RaisedCosineFilter filter;
      const auto fs = static_cast<float>(samples);
      const int n = filter.GetRecommendedTapSize(fs, 1.0F, rolloff);
      filter.SetParameters(fs, 1.0F, rolloff, n);
      const auto taps = Taps(filter);
      const int middle = n / 2;
      for (int i = middle % samples; i < n; i += samples) {
        if (i == middle) continue;
        EXPECT_LT(std::fabs(taps[static_cast<std::size_t>(i)]), 1e-6F) << rolloff;
      }
      // What is cut off, beyond 2.19 / rolloff symbols, is 0.3 % of the area at most.
      EXPECT_NEAR(static_cast<double>(Response(taps, 0).real()), 1, 0.0035) << rolloff << ' ' << samples;
    }
  }
}

template <class T> std::vector<long double> Convolved(const std::vector<T> &a, const std::vector<T> &b) {
  std::vector<long double> c(a.size() + b.size() - 1);
  for (std::size_t i = 0; i < a.size(); ++i) {
    for (std::size_t k = 0; k < b.size(); ++k) {
      c[i + k] += static_cast<long double>(a[i]) * static_cast<long double>(b[k]);
    }
  }
  return c;
}

// What the other symbols find of one symbol, relative to what it finds itself, in a pair of the taps.
template <class T> std::vector<long double> Interference(const std::vector<T> &taps, int samples) {
  const auto pair = Convolved(taps, taps);
  const int length = static_cast<int>(pair.size()), middle = length / 2;
  std::vector<long double> parts;
  for (int i = middle % samples; i < length; i += samples) {
    if (i == middle) continue;
    parts.push_back(pair[static_cast<std::size_t>(i)] / pair[static_cast<std::size_t>(middle)]);
  }
  return parts;
}

// The length, 8.75 / rolloff symbols, cuts the pulse: so much, and no more, is left of the interference. The
// pulse's guarded sincs err by up to 9e-6 in some places, its taps on the whole by some 1e-6.
TEST(PulseFilters, RootRaisedCosine_PairAtTheRecommendedLength_IsANyquistPulse) {
  const struct {
    float rolloff;
    long double limit; // in dB, of any other symbol
  } cases[] = {{0.15F, -64}, {0.22F, -62}, {0.35F, -60}, {0.5F, -57}, {0.8333F, -54}, {1.0F, -53}};
  for (const auto &c : cases) {
    for (const int samples : {2, 4, 8, 16}) {
      RootRaisedCosineFilter filter;
      const auto fs = static_cast<float>(samples) * 1000.0F;
      const int n = filter.GetRecommendedTapSize(fs, 1000.0F, c.rolloff);
      filter.SetParameters(fs, 1000.0F, c.rolloff, n);
      std::vector<long double> ideal;
      for (int i = 0; i < n; ++i) {
        const long double x = (i - n / 2) / static_cast<long double>(samples);
        ideal.push_back(RootRaisedCosine(x, static_cast<long double>(c.rolloff), samples));
      }
      const auto found = Interference(Taps(filter), samples), expected = Interference(ideal, samples);
      ASSERT_EQ(found.size(), expected.size());
      for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_LT(Decibels(found[i]), c.limit) << c.rolloff << ' ' << samples;
        EXPECT_NEAR(static_cast<double>(found[i]), static_cast<double>(expected[i]), 5e-6)
            << c.rolloff << ' ' << samples;
      }
    }
  }
}

TEST(PulseFilters, RootRaisedCosine_Pair_IsTheRaisedCosine) {
  RootRaisedCosineFilter root;
  root.SetParameters(4.0F, 1.0F, 0.35F, 401);
  RaisedCosineFilter whole;
  whole.SetParameters(4.0F, 1.0F, 0.35F, 201);
  const auto pair = Convolved(Taps(root), Taps(root));
  const auto taps = Taps(whole);
  for (std::size_t i = 0; i < 201; ++i) {
    EXPECT_NEAR(static_cast<double>(pair[i + 300]), static_cast<double>(taps[i]), 2e-5) << i;
  }
}

// The frequency, relative to the sampling rate, where the gain has fallen by 3 dB: half in power.
long double HalfPowerFrequency(const std::vector<float> &taps) {
  const long double target = std::abs(Response(taps, 0)) / std::sqrt(2.0L);
  long double low = 0, high = 0.5L;
  for (int i = 0; i < 60; ++i) {
    const long double middle = (low + high) / 2;
    (std::abs(Response(taps, middle)) > target ? low : high) = middle;
  }
  return low;
}

TEST(PulseFilters, Gaussian_RecommendedLength_HasItsBandwidth) {
  for (const float bt : {0.2F, 0.3F, 0.5F, 1.0F}) {
    for (const float samples : {8.0F, 10.0F, 16.0F}) { // enough for the response not to fold over
      GaussianFilter filter;
      filter.SetParameters(samples, 1.0F, bt, filter.GetRecommendedTapSize(samples, 1.0F, bt));
      const auto taps = Taps(filter);
      EXPECT_NEAR(static_cast<double>(HalfPowerFrequency(taps)), static_cast<double>(bt / samples), 1e-6)
          << bt << ' ' << samples;
      EXPECT_NEAR(static_cast<double>(Response(taps, 0).real()), 1, 1e-6) << bt << ' ' << samples;
    }
  }
}

// The pulse is the convolution of the Gaussian and the rectangle: its response is their product.
TEST(PulseFilters, GaussRect_RecommendedLength_HasTheResponseOfBothParts) {
  for (const float bt : {0.2F, 0.3F, 0.5F}) {
    GaussRectFilter filter;
    const int n = filter.GetRecommendedTapSize(32.0F, 1.0F, bt);
    filter.SetParameters(32.0F, 1.0F, bt, n);
    const auto taps = Taps(filter);
    for (int i = 0; i <= 30; ++i) {
      const long double f = i / 10.0L; // in symbol rates
      const long double ratio = f / static_cast<long double>(bt);
      const long double expected = LongSinc(f) * std::exp(-ratio * ratio * std::log(2.0L) / 2);
      EXPECT_NEAR(static_cast<double>(Response(taps, f / 32).real()), static_cast<double>(expected), 2e-5)
          << bt << ' ' << f;
    }
  }
}

TEST(PulseFilters, Rectangular_ManyTaps_PassesItsBandOnly) {
  RectangularFilter filter;
  filter.SetParameters(10.0F, 2.0F, 2001);
  const auto taps = Taps(filter);
  EXPECT_NEAR(static_cast<double>(std::abs(Response(taps, 0.05L))), 1, 0.01);
  EXPECT_NEAR(static_cast<double>(std::abs(Response(taps, 0.1L))), 0.5, 0.01);
  EXPECT_LT(std::abs(Response(taps, 0.15L)), 0.01L);
  RectangularFilter other;
  other.SetParameters(10.0F, 2.0F, 0.7F, 2001);
  EXPECT_EQ(Taps(other), taps);
}

TEST(PulseFilters, Accessors_AfterADesign_GiveWhatItWasMadeFrom) {
  const auto expectDesign = [](auto filter) {
    EXPECT_EQ(filter.GetSamplingRate(), 0.0F);
    EXPECT_EQ(filter.GetSymbolRate(), 0.0F);
    EXPECT_EQ(filter.GetRoleoff(), 0.0F);
    filter.SetParameters(48000.0F, 4800.0F, 0.2F, 21);
    EXPECT_EQ(filter.GetSamplingRate(), 48000.0F);
    EXPECT_EQ(filter.GetSymbolRate(), 4800.0F);
    EXPECT_EQ(filter.GetRoleoff(), 0.2F);
    EXPECT_EQ(test::FilterProbe::TapSize(filter), 21);
  };
  expectDesign(RaisedCosineFilter());
  expectDesign(RootRaisedCosineFilter());
  expectDesign(GaussianFilter());
  expectDesign(GaussRectFilter());
  RectangularFilter rectangular;
  rectangular.SetParameters(48000.0F, 4800.0F, 21);
  EXPECT_EQ(rectangular.GetSamplingRate(), 48000.0F);
}

TEST(PulseFilters, GaussRect_IsCalledIntegral_AndYetConvolves) {
  GaussRectFilter filter;
  filter.SetParameters(4.0F, 1.0F, 0.5F, 9);
  EXPECT_EQ(filter.GetType(), 20);
  EXPECT_TRUE(filter.IsIntegralFilter());
  VecReal32 in(9), out;
  in[0] = 1.0F;
  filter.Apply(out, in, false);
  EXPECT_EQ(List(out), Taps(filter));
}

TEST(PulseFilters, SetParameters_RateOfZero_GivesWhatFollows) {
  RaisedCosineFilter filter;
  filter.SetParameters(4.0F, 0.0F, 0.35F, 5);
  // The period is infinite, so every time is at the middle of the pulse and the scale is 0.
  EXPECT_EQ(Taps(filter), std::vector<float>(5, 0.0F));
}

} // namespace
