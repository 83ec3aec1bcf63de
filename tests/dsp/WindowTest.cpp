#include "qorn/dsp/Window.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "infra/kernels/Levels.h"
#include "qorn/dsp/FixedWindows.h"
#include "qorn/infra/QORNException.h"
#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Csv.h"
#include "support/Vectors.h"
#include "support/Windows.h"

namespace {

using namespace QORN;
using test::Coefficients;
using test::List;
using test::Of;
using test::WindowShapeNamed;
using test::WindowShapes;
using Probe = test::WindowProbe;
using Shape = test::WindowShape;

const char *const kCosineSums[] = {"Hann", "Hamming", "BlackmanHarris", "FlatTop"};

#if defined(__x86_64__) && defined(__GNUC__)
// The slot of a virtual function, in pointers, as the platform's ABI encodes it: 1 + the offset in bytes.
template <class F> std::ptrdiff_t Slot(F function) {
  static_assert(sizeof function == 2 * sizeof(std::ptrdiff_t));
  std::ptrdiff_t words[2];
  std::memcpy(words, &function, sizeof words);
  return (words[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void *));
}

TEST(Window, VirtualSlots_StandInTheOrderOfTheInterface) {
  // Slots 0 and 1 are the two entries of the destructor.
  EXPECT_EQ(Slot(static_cast<void (Window::*)(int)>(&Window::SetParameters)), 2);
  EXPECT_EQ(Slot(static_cast<void (Window::*)(int, float)>(&Window::SetParameters)), 3);
  EXPECT_EQ(Slot(&Window::Set6dBBWParam), 4);
}
#endif

TEST(Window, Fields_StandInTheOrderOfTheInterface) {
  struct Layout : Window {
    static bool Ascend() {
      const Layout w;
      const auto at = [&w](const void *field) {
        return static_cast<const char *>(field) - reinterpret_cast<const char *>(&w);
      };
      return at(&w.m_coefficients) < at(&w.m_size) && at(&w.m_size) < at(&w.m_parameter) &&
             at(&w.m_parameter) < at(&w.m_rbwScaling);
    }
  };
  EXPECT_TRUE(Layout::Ascend());
  EXPECT_EQ(sizeof(HannWindow), sizeof(Window));
  EXPECT_EQ(sizeof(GaussWindow), sizeof(Window));
}

TEST(Window, DefaultConstructor_AnyShape_HasNoCoefficients) {
  for (const Shape &shape : WindowShapes()) {
    const auto window = shape.empty();
    EXPECT_EQ(window->GetSize(), 0) << shape.name;
    EXPECT_TRUE(Coefficients(*window).empty()) << shape.name;
    EXPECT_EQ(window->GetEffectiveRBWScaling(), shape.emptyRbwScaling) << shape.name;
  }
  EXPECT_EQ(Probe::Parameter(GaussWindow()), 3.5F);
}

TEST(Window, SizedConstructor_AnyShape_ComputesAtOnce) {
  for (const Shape &shape : WindowShapes()) {
    const auto window = shape.sized(40);
    EXPECT_EQ(window->GetSize(), 40) << shape.name;
    EXPECT_EQ(Coefficients(*window).size(), 40U) << shape.name;
    EXPECT_EQ(window->GetEffectiveRBWScaling(), shape.sizedRbwScaling) << shape.name;
    EXPECT_EQ(Probe::Parameter(*window), shape.parameter) << shape.name;
    const auto late = shape.empty();
    late->SetParameters(40);
    EXPECT_EQ(Coefficients(*late), Coefficients(*window)) << shape.name;
  }
}

TEST(Window, Rectangle_1024_StoresOneOverN) {
  const Window window(1024);
  EXPECT_EQ(List(Probe::Stored(window)), std::vector<float>(2048, 1.0F / 1024.0F));
  EXPECT_EQ(window.GetENBW(), 1.0F);
  EXPECT_EQ(window.GetPowerAdjustIndB(), 0.0F);
}

TEST(Window, Rectangle_WithParameter_KeepsItOnConstructionOnly) {
  Window window(8, 2.5F);
  EXPECT_EQ(Probe::Parameter(window), 2.5F);
  EXPECT_EQ(Coefficients(window), std::vector<float>(8, 0.125F));
  window.SetParameters(4, 7.0F);
  EXPECT_EQ(Probe::Parameter(window), 2.5F);
  EXPECT_EQ(Coefficients(window), std::vector<float>(4, 0.25F));
}

TEST(Window, AnyShape_TabulatedLengths_HasTheTabulatedBitsAtEveryLevel) {
  int rows = 0;
  for (const auto &row : test::ReadCsv("window_coefficients.csv")) {
    ASSERT_EQ(row.size(), 4U);
    const Shape &shape = WindowShapeNamed(row[0]);
    const float parameter = std::strtof(row[1].c_str(), nullptr);
    const int n = std::atoi(row[2].c_str());
    std::vector<float> expected;
    std::istringstream bits(row[3]);
    for (std::string word; bits >> word;) {
      expected.push_back(
          std::bit_cast<float>(static_cast<std::uint32_t>(std::strtoul(word.c_str(), nullptr, 16))));
    }
    for (const kernels::Level &level : kernels::AvailableLevels()) {
      const kernels::ScopedLevel scoped(level);
      const auto window = shape.empty();
      window->SetParameters(n, parameter);
      ASSERT_EQ(Coefficients(*window), expected)
          << row[0] << ' ' << parameter << ' ' << n << ' ' << level.name;
    }
    ++rows;
  }
  EXPECT_GT(rows, 100);
}

TEST(Window, AnyShape_AnyLength_StoresEachCoefficientTwice) {
  for (const Shape &shape : WindowShapes()) {
    for (const int n : {2, 5, 64}) {
      const auto window = shape.sized(n);
      std::vector<float> doubled;
      for (const float w : Coefficients(*window)) doubled.insert(doubled.end(), 2, w);
      EXPECT_EQ(List(Probe::Stored(*window)), doubled) << shape.name << ' ' << n;
    }
  }
}

TEST(Window, AnyShape_AnyLength_SumsToOne) {
  for (const Shape &shape : WindowShapes()) {
    for (const int n : {2, 3, 10, 101, 1024, 10000}) {
      const auto window = shape.sized(n);
      double sum = 0.0;
      double magnitudes = 0.0;
      for (const float w : Coefficients(*window)) {
        sum += static_cast<double>(w);
        magnitudes += std::abs(static_cast<double>(w));
      }
      // The scale and each product are rounded once, and so is the sum that the scale comes from.
      const double half = 0.5 * static_cast<double>(std::numeric_limits<float>::epsilon());
      EXPECT_NEAR(sum, 1.0, 3.0 * half * magnitudes) << shape.name << ' ' << n;
      EXPECT_NEAR(static_cast<double>(Probe::Sum(*window)), 1.0, 4.0 * half * magnitudes)
          << shape.name << ' ' << n;
    }
  }
}

TEST(Window, CosineSum_OddAndEvenLengths_IsPeriodicallySymmetric) {
  for (const char *name : kCosineSums) {
    for (const int n : {2, 3, 4, 9, 10, 101}) {
      const auto w = Coefficients(*WindowShapeNamed(name).sized(n));
      for (std::size_t k = 1; k < w.size(); ++k) {
        EXPECT_EQ(w[k], w[w.size() - k]) << name << ' ' << n;
        EXPECT_NE(w[k], 0.0F) << name << ' ' << n;
      }
    }
  }
}

TEST(Window, Hann_OnePoint_IsNotANumberWithoutAnyError) {
  const HannWindow window(1);
  ASSERT_EQ(Coefficients(window).size(), 1U);
  EXPECT_TRUE(std::isnan(Coefficients(window)[0]));
  EXPECT_TRUE(std::isnan(window.GetENBW()));
}

TEST(Window, GaussAndHann_Ends_AreEqualAndPartnerless) {
  for (const int n : {2, 5, 64, 255}) {
    const auto gauss = Coefficients(GaussWindow(n));
    for (std::size_t k = 0; k < gauss.size(); ++k) EXPECT_EQ(gauss[k], gauss[gauss.size() - 1 - k]);
    const auto hann = Coefficients(HannWindow(n));
    EXPECT_EQ(hann.front(), 0.0F);
    EXPECT_GT(hann.back(), 0.0F);
  }
}

TEST(Window, Gauss_LargeAlpha_UnderflowsAtTheEdges) {
  GaussWindow window;
  for (const float alpha : {100.0F, 1e10F, 1e19F}) {
    window.SetParameters(65, alpha);
    const auto w = Coefficients(window);
    EXPECT_EQ(w.front(), 0.0F) << alpha;
    EXPECT_EQ(w.back(), 0.0F) << alpha;
    EXPECT_GT(w[32], 0.0F) << alpha;
    EXPECT_EQ(Probe::Parameter(window), alpha);
  }
}

TEST(Window, Gauss_AlphaZero_IsTheRectangularWindow) {
  GaussWindow window;
  window.SetParameters(77, 0.0F);
  EXPECT_EQ(Coefficients(window), Coefficients(Window(77)));
}

TEST(Window, SetParameters_OneArgument_IsBackAtTheDefault) {
  GaussWindow gauss;
  gauss.SetParameters(50, 1.0F);
  gauss.SetParameters(50);
  EXPECT_EQ(Probe::Parameter(gauss), 3.5F);
  EXPECT_EQ(Coefficients(gauss), Coefficients(GaussWindow(50)));
}

TEST(Window, SetParameters_TwoArgumentsOnACosineSum_DropsTheParameter) {
  for (const char *name : kCosineSums) {
    const auto window = WindowShapeNamed(name).empty();
    window->SetParameters(50, 7.5F);
    EXPECT_EQ(Probe::Parameter(*window), 0.0F) << name;
    EXPECT_EQ(Coefficients(*window), Coefficients(*WindowShapeNamed(name).sized(50))) << name;
  }
}

template <class W> struct Derived : W {
  int one = 0;
  int two = 0;
  void SetParameters(int n) override {
    ++one;
    W::SetParameters(n);
  }
  void SetParameters(int n, float p) override {
    ++two;
    W::SetParameters(n, p);
  }
};

TEST(Window, SetParameters_OfASubclass_IsReachedThroughTheOtherForm) {
  Derived<HannWindow> hann;
  hann.SetParameters(8, 1.0F);
  EXPECT_EQ(hann.one, 1);
  Derived<GaussWindow> gauss;
  gauss.SetParameters(8);
  EXPECT_EQ(gauss.two, 1);
}

TEST(Window, Set6dBBWParam_AllButOneShape_DoesNothing) {
  for (const Shape &shape : WindowShapes()) {
    if (shape.name == "CISPR6dB") continue;
    const auto window = shape.sized(16);
    const auto before = Coefficients(*window);
    window->Set6dBBWParam(120000.0);
    EXPECT_EQ(window->GetEffectiveRBWScaling(), shape.sizedRbwScaling);
    EXPECT_EQ(Coefficients(*window), before);
  }
}

TEST(Window, SetParameters_NoPoints_KeepsTheRectangleAndEmptiesTheOthers) {
  Window rectangle(4);
  rectangle.SetParameters(0);
  EXPECT_EQ(rectangle.GetSize(), 0);
  EXPECT_EQ(Coefficients(rectangle), std::vector<float>(4, 0.25F));
  rectangle.SetParameters(-3, 1.0F);
  EXPECT_EQ(rectangle.GetSize(), -3);
  EXPECT_EQ(Coefficients(rectangle), std::vector<float>(4, 0.25F));
  for (const Shape &shape : WindowShapes()) {
    if (shape.name == "Rectangle") continue;
    const auto window = shape.sized(4);
    window->SetParameters(0);
    EXPECT_EQ(window->GetSize(), 0) << shape.name;
    EXPECT_TRUE(Coefficients(*window).empty()) << shape.name;
  }
}

TEST(Window, SetParameters_LengthThatMemoryCannotHold_FailsAsAVector) {
  testing::internal::CaptureStdout();
  for (const Shape &shape : WindowShapes()) {
    for (const int n : {std::numeric_limits<int>::max(), 1 << 30, -1}) {
      if (n < 0 && shape.name == "Rectangle") continue;
      const auto window = shape.sized(4);
      const test::AllocationLimit limit(1 << 20);
      try {
        window->SetParameters(n);
        ADD_FAILURE() << shape.name << ' ' << n;
      } catch (const QORNException &e) {
        EXPECT_EQ(e.GetErrorCode(), 11001) << shape.name;
        EXPECT_STREQ(e.GetMessage(), "memory allocation error");
        EXPECT_STREQ(e.GetFileName(), "infra/Vector");
      }
    }
  }
  testing::internal::GetCapturedStdout();
}

TEST(Window, SetParameters_SmallerSize_ReusesTheStorage) {
  for (const Shape &shape : WindowShapes()) {
    const auto window = shape.sized(100);
    const float *storage = Probe::Stored(*window).GetPtr();
    window->SetParameters(60);
    window->SetParameters(100, shape.parameter);
    EXPECT_EQ(Probe::Stored(*window).GetPtr(), storage) << shape.name;
  }
}

VecReal32 Ramp(int n) {
  VecReal32 samples(n);
  for (int i = 0; i < n; ++i) samples[i] = 0.1F * static_cast<float>(i) - 0.7F;
  return samples;
}

// What the window makes of sample i, with one rounding; beyond the coefficients it stays.
float Weighted(const std::vector<float> &w, int i, float sample) {
  return i < static_cast<int>(w.size()) ? sample * w[static_cast<std::size_t>(i)] : sample;
}

void ExpectWeighted(const Window &window, int n, const std::string &name) {
  const auto w = Coefficients(window);
  const VecReal32 in = Ramp(n);
  const VecReal64 wide(in);
  VecCplx32 complex(n);
  for (int i = 0; i < n; ++i) complex[i] = {in[i], 2.0F - in[i]};

  VecReal32 out(3);
  window.Apply(out, in);
  EXPECT_EQ(List(in), List(Ramp(n)));
  VecReal32 same(in);
  window.Apply(same, same);
  VecReal64 wideOut;
  window.Apply(wideOut, wide);
  VecReal64 wideSame(wide);
  window.Apply(wideSame, wideSame);
  VecCplx32 complexOut;
  window.Apply(complexOut, complex);
  VecCplx32 complexInPlace(complex);
  window.Apply(complexInPlace);
  VecCplx32 complexSame(complex);
  window.Apply(complexSame, complexSame);

  ASSERT_EQ(out.GetSize(), n);
  ASSERT_EQ(wideOut.GetSize(), n);
  ASSERT_EQ(complexOut.GetSize(), n);
  for (int i = 0; i < n; ++i) {
    const float expected = Weighted(w, i, in[i]);
    ASSERT_EQ(out[i], expected) << name << ' ' << n << ' ' << i;
    const double weight =
        i < static_cast<int>(w.size()) ? static_cast<double>(w[static_cast<std::size_t>(i)]) : 1.0;
    ASSERT_EQ(wideOut[i], wide[i] * weight) << name << ' ' << n << ' ' << i;
    ASSERT_EQ(complexOut[i], (Cplx32{expected, Weighted(w, i, 2.0F - in[i])}))
        << name << ' ' << n << ' ' << i;
  }
  EXPECT_EQ(List(same), List(out));
  EXPECT_EQ(List(wideSame), List(wideOut));
  EXPECT_EQ(List(complexInPlace), List(complexOut));
  EXPECT_EQ(List(complexSame), List(complexOut));
}

TEST(Window, Apply_AnyForm_MultipliesEachSample) {
  for (const Shape &shape : WindowShapes()) {
    for (const int n : {1, 2, 9, 64, 131}) {
      if (shape.name == "Hann" && n == 1) continue;
      ExpectWeighted(*shape.sized(n), n, shape.name);
    }
  }
}

TEST(Window, Apply_OtherLength_WeighsTheSmallerNumberOfSamples) {
  for (const int n : {0, 1, 15, 17, 100}) ExpectWeighted(HammingWindow(16), n, "Hamming");
}

TEST(Window, Apply_WithoutCoefficients_Copies) { ExpectWeighted(Window(), 5, "empty"); }

TEST(Window, Apply_OnAKeptDestination_AllocatesNothing) {
  const FlatTopWindow window(512);
  const VecCplx32 complex(512);
  const VecReal32 real(512);
  VecCplx32 complexOut(512);
  VecReal32 realOut(512);
  const long before = test::AllocationCount();
  window.Apply(complexOut, complex);
  window.Apply(complexOut);
  window.Apply(realOut, real);
  EXPECT_EQ(test::AllocationCount(), before);
}

// For a sum of cosines N sum(w^2) / (sum w)^2 = (a0^2 + (a1^2 + a2^2 + ...) / 2) / a0^2.
double NoiseBandwidth(const std::vector<double> &a) {
  double sum = a[0] * a[0];
  for (std::size_t m = 1; m < a.size(); ++m) sum += 0.5 * a[m] * a[m];
  return sum / (a[0] * a[0]);
}

TEST(Window, GetENBW_CosineSums_IsTheClosedForm) {
  const double expected[] = {NoiseBandwidth({0.5, 0.5}), NoiseBandwidth({0.54, 0.46}),
                             NoiseBandwidth({0.35875, 0.48829, 0.14128, 0.01168}),
                             NoiseBandwidth({0.21557895, 0.41663158, 0.277263158, 0.083578947, 0.006947368})};
  const double published[] = {1.5, 1.36283, 2.0044, 3.7702};
  for (int i = 0; i < 4; ++i) {
    EXPECT_NEAR(expected[i], published[i], 5e-5);
    for (const int n : {64, 1001, 65536}) {
      const auto window = WindowShapeNamed(kCosineSums[i]).sized(n);
      EXPECT_NEAR(static_cast<double>(window->GetENBW()) / expected[i], 1.0, 1e-6) << kCosineSums[i] << n;
      EXPECT_NEAR(static_cast<double>(window->GetPowerAdjustIndB()), 10.0 * std::log10(expected[i]), 5e-6)
          << kCosineSums[i] << n;
    }
  }
}

TEST(Window, GetENBW_Gauss_IsThatOfTheFormula) {
  // N sum(w^2) / (sum w)^2 of exp(-2 (alpha x)^2) over x = (k - 511.5) / 1024, summed in double.
  double sum = 0.0;
  double squares = 0.0;
  for (int k = 0; k < 1024; ++k) {
    const double x = (k - 511.5) / 1024.0;
    const double w = std::exp(-24.5 * x * x);
    sum += w;
    squares += w * w;
  }
  EXPECT_NEAR(static_cast<double>(GaussWindow(1024).GetENBW()), 1024.0 * squares / (sum * sum), 3e-6);
}

TEST(Window, GetENBW_CoefficientsOfAnyScale_DividesByTheirSum) {
  // w = {1, 3}: 2 * (1 + 9) / 16, exact in float.
  EXPECT_EQ(Probe({1.0F, 1.0F, 3.0F, 3.0F}, 2).GetENBW(), 1.25F);
}

void ExpectDivideByZero(const Window &window) {
  for (int which = 0; which < 2; ++which) {
    try {
      if (which == 0) (void)window.GetENBW();
      if (which == 1) (void)window.GetPowerAdjustIndB();
      ADD_FAILURE() << "no exception";
    } catch (const QORNException &e) {
      EXPECT_EQ(e.GetErrorCode(), 12001);
      EXPECT_STREQ(e.GetMessage(), "divide-by-zero error");
      EXPECT_STREQ(e.GetFileName(), "infra\\TargetLib_ipp");
    }
  }
}

TEST(Window, GetENBW_SumOfZero_Throws) {
  ExpectDivideByZero(Probe({1.0F, 1.0F, -1.0F, -1.0F}, 2));
  ExpectDivideByZero(Window());
  HannWindow released(16);
  released.ReleaseCoefficients();
  ExpectDivideByZero(released);
}

TEST(Window, GetENBW_Window_StaysUnchanged) {
  const HannWindow window(33);
  const auto before = Coefficients(window);
  (void)window.GetENBW();
  EXPECT_EQ(Coefficients(window), before);
}

TEST(Window, GetPowerAdjustIndB_NegativeOrZeroBandwidth_IsGuarded) {
  EXPECT_EQ(Probe({1.0F, 1.0F, 3.0F, 3.0F}, -2).GetPowerAdjustIndB(), -9990.0F);
  EXPECT_EQ(Probe({1.0F, 1.0F, 3.0F, 3.0F}, 0).GetPowerAdjustIndB(), -400.00002340805156F);
}

TEST(Window, GetNBScaleFactor_AnyCoefficients_IsTheirSum) {
  EXPECT_EQ(Probe::Sum(Probe({1.0F, 1.0F, 3.5F, 3.5F}, 2)), 4.5F);
  EXPECT_EQ(Probe::Sum(Window()), 0.0F);
}

TEST(Window, ReleaseCoefficients_Storage_IsFreedAndTheSizeStays) {
  GaussWindow window(32);
  window.ReleaseCoefficients();
  EXPECT_EQ(window.GetSize(), 32);
  EXPECT_EQ(Probe::Parameter(window), 3.5F);
  EXPECT_EQ(Probe::Stored(window).GetCapacity(), 0);
  auto out = Of<VecReal32>({1.0F});
  window.GetCoefficients(out);
  EXPECT_EQ(out.GetSize(), 0);
  window.SetParameters(32);
  EXPECT_EQ(Coefficients(window), Coefficients(GaussWindow(32)));
}

TEST(Window, Copy_AnyShape_IsIndependent) {
  auto source = std::make_unique<GaussWindow>(20);
  const GaussWindow copy(*source);
  GaussWindow assigned;
  assigned = *source;
  const auto before = Coefficients(*source);
  EXPECT_NE(Probe::Stored(copy).GetPtr(), Probe::Stored(*source).GetPtr());
  source->SetParameters(20, 0.0F);
  source.reset();
  for (const GaussWindow *window : {&copy, const_cast<const GaussWindow *>(&assigned)}) {
    EXPECT_EQ(Coefficients(*window), before);
    EXPECT_EQ(window->GetSize(), 20);
    EXPECT_EQ(Probe::Parameter(*window), 3.5F);
    EXPECT_EQ(window->GetEffectiveRBWScaling(), 1.86F);
  }
}

} // namespace
