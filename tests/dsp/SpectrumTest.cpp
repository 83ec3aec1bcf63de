#include "qorn/dsp/Spectrum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <functional>
#include <memory>
#include <numbers>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/dsp/DSPUtils.h"
#include "qorn/dsp/FT.h"
#include "qorn/dsp/FixedWindows.h"
#include "qorn/infra/QORNException.h"
#include "qorn/math/MathUtils.h"
#include "qorn/math/UnitConversion.h"
#include "support/Allocations.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;

const WindowType kTypes[] = {WindowRectangle, WindowBlackmanHarris, WindowFlatTop,
                             WindowHann,      WindowGauss,          WindowHamming};
constexpr float kParameter = 3.0F; // alpha of Gauss; the others drop it

VecCplx32 Tone(int n, double bin, double amplitude) {
  VecCplx32 tone(n);
  for (int i = 0; i < n; ++i) {
    const double phase = 2.0 * std::numbers::pi * std::fmod(bin * i, n) / n;
    tone[i] = {static_cast<float>(amplitude * std::cos(phase)),
               static_cast<float>(amplitude * std::sin(phase))};
  }
  return tone;
}

VecReal32 Cosine(int n, double bin, double amplitude) {
  VecReal32 cosine(n);
  for (int i = 0; i < n; ++i) {
    cosine[i] = static_cast<float>(amplitude * std::cos(2.0 * std::numbers::pi * std::fmod(bin * i, n) / n));
  }
  return cosine;
}

VecCplx32 Noise(int n) {
  VecCplx32 noise(n);
  std::uint32_t state = 12345;
  const auto next = [&state] {
    state = state * 1664525U + 1013904223U;
    return static_cast<float>(static_cast<std::int32_t>(state)) * 0x1p-31F;
  };
  for (int i = 0; i < n; ++i) {
    const float re = next();
    noise[i] = {re, next()};
  }
  return noise;
}

// The centred magnitudes by the definition, in double.
std::vector<double> Reference(const VecCplx32 &in, const std::vector<float> &weights) {
  const int n = in.GetSize();
  std::vector<double> out(static_cast<std::size_t>(n));
  for (int i = 0; i < n; ++i) {
    const int bin = i - n / 2;
    std::complex<double> sum = 0.0;
    for (int k = 0; k < n; ++k) {
      const Cplx32 x = *in.GetPtr(k);
      const double w = k < static_cast<int>(weights.size())
                           ? static_cast<double>(weights[static_cast<std::size_t>(k)])
                           : 1.0;
      const double turns = std::fmod(static_cast<double>(bin) * k, n) / n;
      sum += w * std::complex<double>(static_cast<double>(x.re), static_cast<double>(x.im)) *
             std::polar(1.0, -2.0 * std::numbers::pi * turns);
    }
    out[static_cast<std::size_t>(i)] = std::abs(sum);
  }
  return out;
}

std::vector<float> Weights(WindowType type, int n) {
  const std::unique_ptr<Window> window(WindowFactory::MakeWindow(type, n, kParameter));
  VecReal32 w;
  window->GetCoefficients(w);
  return List(w);
}

// Largest deviation, relative to the energy of the weighted block: the measure in which the transform errs.
double Deviation(const VecReal32 &got, const std::vector<double> &expected) {
  double worst = 0.0;
  double energy = 0.0;
  for (int i = 0; i < got.GetSize(); ++i) {
    const double e = expected[static_cast<std::size_t>(i)];
    worst = std::max(worst, std::abs(static_cast<double>(got[i]) - e));
    energy += e * e;
  }
  return worst / std::sqrt(energy / got.GetSize());
}

TEST(Spectrum, PowerUnit_DBV_IsZero) { EXPECT_EQ(PowerUnitDBV, 0); }

TEST(Spectrum, Apply_ComplexTone_ReadsItsAmplitudeAtItsBin) {
  for (const WindowType type : kTypes) {
    for (const int n : {16, 101, 1000, 1024}) {
      Spectrum spectrum(n, type, kParameter);
      spectrum.SetUnit(PowerUnitVolt);
      for (const int bin : {-n / 2, -7, -1, 0, 1, 5, (n - 1) / 2}) {
        VecReal32 out;
        spectrum.Apply(out, Tone(n, bin, 0.7));
        ASSERT_EQ(out.GetSize(), n);
        EXPECT_NEAR(static_cast<double>(out[n / 2 + bin]) / 0.7, 1.0, 1e-6) << type << ' ' << n << ' ' << bin;
      }
    }
  }
}

TEST(Spectrum, Apply_RealCosine_ReadsHalfItsAmplitudeAtBothSides) {
  for (const WindowType type : kTypes) {
    for (const int n : {101, 1000, 1024}) {
      Spectrum spectrum(n, type, kParameter);
      spectrum.SetUnit(PowerUnitVolt);
      // Far enough from its image that no window lets the two meet.
      const int bin = 20;
      VecReal32 out;
      spectrum.Apply(out, Cosine(n, bin, 1.4));
      ASSERT_EQ(out.GetSize(), n);
      const double gauss = type == WindowGauss ? 2e-3 : 0.0; // its sidelobes begin at -55 dB
      EXPECT_NEAR(static_cast<double>(out[n / 2 + bin]) / 0.7, 1.0, 1e-6 + gauss) << type << ' ' << n;
      EXPECT_NEAR(static_cast<double>(out[n / 2 - bin]) / 0.7, 1.0, 1e-6 + gauss) << type << ' ' << n;
      for (int i = 1; i < (n + 1) / 2; ++i) EXPECT_EQ(out[n / 2 + i], out[n / 2 - i]) << type << ' ' << n;
      spectrum.Apply(out, Cosine(n, 0, 0.3));
      EXPECT_NEAR(static_cast<double>(out[n / 2]) / static_cast<double>(0.3F), 1.0, 1e-6) << type << ' ' << n;
    }
  }
}

TEST(Spectrum, Apply_RectangularTone_IsOneLineOfZeroDBV) {
  const int n = 64;
  Spectrum spectrum(n, WindowRectangle, 0.0F);
  for (const int bin : {-32, -3, 0, 9, 31}) {
    VecReal32 out;
    spectrum.Apply(out, Tone(n, bin, 1.0));
    for (int i = 0; i < n; ++i) {
      if (i == n / 2 + bin) {
        EXPECT_NEAR(out[i], 0.0F, 1e-5F) << bin;
      } else {
        EXPECT_LT(out[i], -120.0F) << bin << ' ' << i;
      }
    }
  }
}

void ExpectTheDefinition() {
  for (const WindowType type : kTypes) {
    for (const int n : {1, 2, 3, 15, 16, 60, 127, 250}) {
      if (type == WindowHann && n == 1) continue;
      Spectrum spectrum(n, type, kParameter);
      spectrum.SetUnit(PowerUnitVolt);
      const VecCplx32 in = Noise(n);
      VecReal32 out;
      spectrum.Apply(out, in);
      ASSERT_EQ(out.GetSize(), n);
      EXPECT_LT(Deviation(out, Reference(in, Weights(type, n))), 2e-6) << type << ' ' << n;

      VecReal32 real;
      in.GetReal(real);
      spectrum.Apply(out, real);
      ASSERT_EQ(out.GetSize(), n);
      EXPECT_LT(Deviation(out, Reference(VecCplx32(real), Weights(type, n))), 2e-6) << type << ' ' << n;
    }
  }
}

TEST(Spectrum, Apply_AnyWindowLengthAndLevel_IsTheDefinition) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scoped(level);
    SCOPED_TRACE(level.name);
    ExpectTheDefinition();
  }
}

TEST(Spectrum, Constructor_SizeAlone_IsBlackmanHarrisInDBV) {
  Spectrum usual(256);
  Spectrum named(256, WindowBlackmanHarris, 0.0F);
  EXPECT_EQ(usual.GetSize(), 256);
  const VecCplx32 in = Noise(256);
  VecReal32 out;
  VecReal32 expected;
  usual.Apply(out, in);
  named.Apply(expected, in);
  EXPECT_EQ(List(out), List(expected));

  // Midway between two bins a tone loses 0.83 dB in both (Harris, 1978) and spreads over the main lobe of 8.
  usual.Apply(out, Tone(256, 10.5, 1.0));
  EXPECT_NEAR(out[128 + 10], -0.83F, 0.01F);
  EXPECT_NEAR(out[128 + 11], -0.83F, 0.01F);
  EXPECT_GT(out[128 + 8], -30.0F);
  EXPECT_LT(out[128 + 20], -90.0F);
}

TEST(Spectrum, Constructor_Parameter_ReachesTheWindow) {
  Spectrum flat(64, WindowGauss, 0.0F);
  Spectrum rectangle(64, WindowRectangle, 0.0F);
  VecReal32 out;
  VecReal32 expected;
  flat.Apply(out, Noise(64));
  rectangle.Apply(expected, Noise(64));
  EXPECT_EQ(List(out), List(expected));
  Spectrum narrow(64, WindowGauss, 3.0F);
  narrow.Apply(out, Noise(64));
  EXPECT_NE(List(out), List(expected));
}

TEST(Spectrum, Constructor_NegativeSize_FailsAsAVector) {
  testing::internal::CaptureStdout();
  for (const WindowType type : {WindowRectangle, WindowHann, WindowNone}) {
    try {
      const Spectrum spectrum(-1, type);
      ADD_FAILURE() << type;
    } catch (const QORNException &e) {
      EXPECT_EQ(e.GetErrorCode(), 11001);
    }
  }
  testing::internal::GetCapturedStdout();
}

TEST(Spectrum, SetUnit_AnyNonzero_IsLinearAndZeroIsDBVAgain) {
  Spectrum spectrum(100, WindowHamming);
  const VecCplx32 in = Noise(100);
  VecReal32 dBV;
  spectrum.Apply(dBV, in);
  for (const int unit : {1, 2, -1}) {
    spectrum.SetUnit(static_cast<PowerUnit>(unit));
    VecReal32 linear;
    spectrum.Apply(linear, in);
    VecReal32 converted;
    UnitConversion::Volt2dBV(converted, linear);
    EXPECT_EQ(List(converted), List(dBV)) << unit;
    EXPECT_GT(linear.Min(), 0.0F);
  }
  spectrum.SetUnit(static_cast<PowerUnit>(0));
  VecReal32 again;
  spectrum.Apply(again, in);
  EXPECT_EQ(List(again), List(dBV));
}

TEST(Spectrum, Apply_Zeros_ReadsTheGuardedLogarithm) {
  Spectrum spectrum(32);
  VecReal32 out;
  spectrum.Apply(out, VecCplx32(32));
  for (const float x : List(out)) EXPECT_FLOAT_EQ(x, -800.00005F);
  spectrum.Apply(out, VecReal32(32));
  for (const float x : List(out)) EXPECT_FLOAT_EQ(x, -800.00005F);
}

TEST(Spectrum, Apply_TwoArrays_GivesWhatTheComplexBlockGives) {
  for (const int n : {1, 50, 64}) {
    Spectrum spectrum(n, WindowFlatTop);
    const VecCplx32 in = Noise(n);
    VecReal32 re;
    VecReal32 im;
    in.GetReal(re);
    in.GetImag(im);
    VecReal32 expected;
    spectrum.Apply(expected, in);
    VecReal32 out;
    spectrum.Apply(out, re.GetPtr(), im.GetPtr());
    EXPECT_EQ(List(out), List(expected)) << n;
  }
}

// What the steps give one by one, each over the whole block.
template <class V> VecReal32 InSteps(const V &in, PowerUnit unit) {
  V windowed;
  VecCplx32 transformed;
  VecReal32 magnitude, shifted;
  BlackmanHarrisWindow(in.GetSize()).Apply(windowed, in);
  FT().Forward(transformed, windowed);
  MathUtils::Abs(magnitude, transformed);
  DSPUtils::FFTShift(shifted, magnitude);
  if (unit == PowerUnitDBV) UnitConversion::Volt2dBV(shifted, shifted);
  return shifted;
}

TEST(Spectrum, Apply_AnyLength_HasTheBitsOfTheStepsOneByOne) {
  for (const kernels::Level &level : kernels::AvailableLevels()) {
    const kernels::ScopedLevel scoped(level);
    SCOPED_TRACE(level.name);
    for (const int n :
         {1,    2,    3,    8,    12,   16,   17,   45,   64,   77,   100,  128,  255,  256,  360,
          1000, 1001, 1023, 1024, 1025, 1536, 2047, 2048, 2049, 2050, 3125, 4096, 5001, 6561, 10000, 40000}) {
      const VecCplx32 in = Noise(n);
      VecReal32 real;
      in.GetReal(real);
      Spectrum spectrum(n);
      for (const PowerUnit unit : {PowerUnitDBV, PowerUnitVolt}) {
        spectrum.SetUnit(unit);
        VecReal32 out;
        spectrum.Apply(out, in);
        ASSERT_EQ(List(out), List(InSteps(in, unit))) << n;
        spectrum.Apply(out, real);
        ASSERT_EQ(List(out), List(InSteps(real, unit))) << n;
      }
    }
  }
}

TEST(Spectrum, Apply_OntoItsInput_GivesTheSame) {
  Spectrum spectrum(64);
  VecReal32 data = Cosine(64, 5, 1.0);
  VecReal32 expected;
  spectrum.Apply(expected, data);
  spectrum.Apply(data, data);
  EXPECT_EQ(List(data), List(expected));
}

TEST(Spectrum, Apply_OtherLength_FollowsTheInput) {
  Spectrum spectrum(64, WindowHann);
  spectrum.SetUnit(PowerUnitVolt);
  const auto weights = Weights(WindowHann, 64);
  for (const int n : {1, 7, 63, 65, 200}) {
    const VecCplx32 in = Noise(n);
    VecReal32 out;
    spectrum.Apply(out, in);
    ASSERT_EQ(out.GetSize(), n);
    const auto expected = Reference(in, weights);
    for (int i = 0; i < n; ++i) EXPECT_NEAR(out[i], expected[static_cast<std::size_t>(i)], 1e-5 * n) << n;
    VecReal32 real;
    in.GetReal(real);
    spectrum.Apply(out, real);
    EXPECT_EQ(out.GetSize(), n);
  }
}

TEST(Spectrum, Apply_EmptyBlock_GivesAnEmptySpectrum) {
  for (const int size : {0, 16}) {
    Spectrum spectrum(size);
    for (const int unit : {0, 1}) {
      spectrum.SetUnit(static_cast<PowerUnit>(unit));
      VecReal32 out(5);
      spectrum.Apply(out, VecCplx32());
      EXPECT_EQ(out.GetSize(), 0);
      out.Resize(5);
      spectrum.Apply(out, VecReal32());
      EXPECT_EQ(out.GetSize(), 0);
    }
  }
}

TEST(Spectrum, Apply_WithoutAWindow_IsRefused) {
  for (const WindowType type : {WindowNone, WindowUserDefined, WindowTukey}) {
    Spectrum made(16, type);
    Spectrum copy(made);
    Spectrum assigned(16);
    assigned = made;
    for (Spectrum *spectrum : {&made, &copy, &assigned}) {
      auto out = Of<VecReal32>({1.0F, 2.0F});
      const VecReal32 real(16);
      const std::vector<std::function<void()>> forms = {
          [&] { spectrum->Apply(out, VecCplx32(16)); }, [&] { spectrum->Apply(out, real); },
          [&] { spectrum->Apply(out, real.GetPtr(), real.GetPtr()); }};
      for (const auto &form : forms) {
        try {
          form();
          ADD_FAILURE() << "no exception";
        } catch (const QORNException &e) {
          EXPECT_EQ(e.GetErrorCode(), 10002);
          EXPECT_STREQ(e.GetMessage(), "invalid input parameter");
          EXPECT_STREQ(e.GetFileName(), "dsp\\Spectrum");
        }
      }
      EXPECT_EQ(List(out), (std::vector<float>{1.0F, 2.0F}));
      EXPECT_EQ(spectrum->GetSize(), 16);
    }
  }
}

TEST(Spectrum, Apply_SteadyState_AllocatesNothing) {
  for (const int n : {1000, 1024, 1021}) {
    Spectrum spectrum(n);
    const VecCplx32 complex = Noise(n);
    VecReal32 real;
    complex.GetReal(real);
    VecReal32 out;
    spectrum.Apply(out, complex);
    spectrum.Apply(out, real);
    const long before = test::AllocationCount();
    for (const int unit : {0, 1}) {
      spectrum.SetUnit(static_cast<PowerUnit>(unit));
      spectrum.Apply(out, complex);
      spectrum.Apply(out, real);
      spectrum.Apply(out, real.GetPtr(), real.GetPtr());
    }
    EXPECT_EQ(test::AllocationCount(), before) << n;
  }
}

TEST(Spectrum, Copy_InAnyOrderOfDestruction_WorksOn) {
  const VecCplx32 in = Noise(96);
  VecReal32 expected;
  Spectrum(96, WindowGauss, 2.0F).Apply(expected, in);
  for (const bool used : {false, true}) {
    for (const bool sourceFirst : {true, false}) {
      auto source = std::make_unique<Spectrum>(96, WindowGauss, 2.0F);
      VecReal32 out;
      if (used) source->Apply(out, in);
      auto copy = std::make_unique<Spectrum>(*source);
      auto assigned = std::make_unique<Spectrum>(7, WindowNone);
      *assigned = *source;
      std::vector<std::unique_ptr<Spectrum>> left;
      if (sourceFirst) {
        source.reset();
        left.push_back(std::move(copy));
        left.push_back(std::move(assigned));
      } else {
        copy->Apply(out, in);
        copy.reset();
        assigned.reset();
        left.push_back(std::move(source));
      }
      for (const auto &spectrum : left) {
        EXPECT_EQ(spectrum->GetSize(), 96);
        spectrum->Apply(out, in);
        EXPECT_EQ(List(out), List(expected));
      }
    }
  }
}

TEST(Spectrum, Copy_Unit_IsCopiedAndThenItsOwn) {
  Spectrum source(16);
  source.SetUnit(PowerUnitVolt);
  Spectrum copy(source);
  source.SetUnit(PowerUnitDBV);
  VecReal32 volts;
  VecReal32 dBV;
  copy.Apply(volts, Noise(16));
  source.Apply(dBV, Noise(16));
  VecReal32 converted;
  UnitConversion::Volt2dBV(converted, volts);
  EXPECT_EQ(List(converted), List(dBV));
}

TEST(Spectrum, Assignment_ToItself_ChangesNothing) {
  Spectrum spectrum(40, WindowHamming);
  VecReal32 expected;
  spectrum.Apply(expected, Noise(40));
  const Spectrum &self = spectrum;
  spectrum = self;
  VecReal32 out;
  spectrum.Apply(out, Noise(40));
  EXPECT_EQ(List(out), List(expected));
}

} // namespace
