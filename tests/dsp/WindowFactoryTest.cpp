#include "qorn/dsp/WindowFactory.h"

#include <gtest/gtest.h>

#include <memory>
#include <typeinfo>
#include <vector>

#include "dsp/WindowTable.h"
#include "qorn/infra/QORNException.h"
#include "support/Windows.h"

namespace {

using namespace QORN;
using test::Coefficients;

struct Offer {
  WindowType type;
  const std::type_info &window;
};

const Offer kOffers[] = {
    {WindowRectangle, typeid(Window)},        {WindowBlackmanHarris, typeid(BlackmanHarrisWindow)},
    {WindowFlatTop, typeid(FlatTopWindow)},   {WindowHann, typeid(HannWindow)},
    {WindowGauss, typeid(GaussWindow)},       {WindowHamming, typeid(HammingWindow)},
    {WindowCISPR6dB, typeid(CISPR6dBWindow)}, {WindowMil6dB, typeid(CISPR6dBWindow)},
    {WindowKaiser, typeid(KaiserWindow)},     {WindowCISPR3dB, typeid(CISPR3dBWindow)},
};

TEST(WindowType, Values_AreThoseOfTheInterface) {
  const WindowType inOrder[] = {WindowRectangle, WindowBlackmanHarris, WindowFlatTop,     WindowHann,
                                WindowGauss,     WindowCISPR6dB,       WindowMil6dB,      WindowKaiser,
                                WindowHamming,   WindowBlackman,       WindowBarlett,     WindowTriangular,
                                WindowTukey,     WindowChebyshev,      WindowUserDefined, WindowCISPR3dB,
                                WindowNone};
  for (int i = 0; i <= 16; ++i) EXPECT_EQ(inOrder[i], i);
}

TEST(WindowFactory, MakeWindow_OfferedType_MakesItsClassWithoutCoefficients) {
  for (const Offer &offer : kOffers) {
    const std::unique_ptr<Window> window(WindowFactory::MakeWindow(offer.type));
    ASSERT_NE(window, nullptr) << offer.type;
    const Window &made = *window;
    EXPECT_TRUE(typeid(made) == offer.window) << offer.type;
    EXPECT_EQ(window->GetSize(), 0);
    EXPECT_TRUE(Coefficients(*window).empty());
  }
}

TEST(WindowFactory, MakeWindow_OtherType_IsNull) {
  for (const int value : {9, 10, 11, 12, 13, 14, 16, 17, -1, 1000}) {
    EXPECT_EQ(WindowFactory::MakeWindow(static_cast<WindowType>(value)), nullptr) << value;
    EXPECT_EQ(WindowFactory::MakeWindow(static_cast<WindowType>(value), 256, 1.0F), nullptr) << value;
  }
}

TEST(WindowFactory, MakeWindow_HannWithParameter_IsTheOrdinaryHann) {
  const std::unique_ptr<Window> window(WindowFactory::MakeWindow(WindowHann, 256, 7.5F));
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(window->GetSize(), 256);
  EXPECT_EQ(Coefficients(*window), Coefficients(HannWindow(256)));
  EXPECT_EQ(test::WindowProbe::Parameter(*window), 0.0F);
}

TEST(WindowFactory, MakeWindow_GaussWithZero_IsFlat) {
  const std::unique_ptr<Window> flat(WindowFactory::MakeWindow(WindowGauss, 256, 0.0F));
  ASSERT_NE(flat, nullptr);
  EXPECT_EQ(Coefficients(*flat), std::vector<float>(256, 1.0F / 256.0F));
  const std::unique_ptr<Window> usual(WindowFactory::MakeWindow(WindowGauss));
  usual->SetParameters(256);
  EXPECT_EQ(Coefficients(*usual), Coefficients(GaussWindow(256)));
}

TEST(WindowFactory, MakeWindow_KaiserFamilyWithParameter_TakesItForBeta) {
  for (const WindowType type : {WindowCISPR6dB, WindowMil6dB, WindowKaiser, WindowCISPR3dB}) {
    const std::unique_ptr<Window> flat(WindowFactory::MakeWindow(type, 256, 0.0F));
    EXPECT_EQ(Coefficients(*flat), std::vector<float>(256, 1.0F / 256.0F)) << type;
    const std::unique_ptr<Window> shaped(WindowFactory::MakeWindow(type, 256, 9.5F));
    EXPECT_EQ(Coefficients(*shaped), Coefficients(KaiserWindow(256, 9.5F))) << type;
  }
}

TEST(WindowFactory, MakeWindow_KaiserFamilySizedLater_HasItsStandardShape) {
  const struct {
    WindowType type;
    float beta, rbwScaling;
  } rows[] = {{WindowCISPR6dB, 14.6F, 2.9405F},
              {WindowMil6dB, 14.6F, 2.9405F},
              {WindowKaiser, 16.71F, 2.2292F},
              {WindowCISPR3dB, 14.6F, 2.2292F}};
  for (const auto &row : rows) {
    const std::unique_ptr<Window> window(WindowFactory::MakeWindow(row.type));
    EXPECT_EQ(window->GetEffectiveRBWScaling(), row.rbwScaling) << row.type;
    window->SetParameters(100);
    EXPECT_EQ(window->GetEffectiveRBWScaling(), row.rbwScaling) << row.type;
    EXPECT_EQ(Coefficients(*window), Coefficients(KaiserWindow(100, row.beta))) << row.type;
  }
}

TEST(WindowFactory, MakeWindow_LengthThatIsRefused_ThrowsAndLeavesNothingBehind) {
  testing::internal::CaptureStdout();
  EXPECT_THROW((void)WindowFactory::MakeWindow(WindowHann, -1, 0.0F), QORNException);
  testing::internal::GetCapturedStdout();
}

TEST(WindowFactory, ReleaseWindow_Window_RunsItsOwnDestructor) {
  struct Noted : HannWindow {
    explicit Noted(bool *flag) : gone(flag) {}
    ~Noted() override { *gone = true; }
    bool *gone;
  };
  bool gone = false;
  WindowFactory::ReleaseWindow(std::make_unique<Noted>(&gone).release());
  EXPECT_TRUE(gone);
  WindowFactory::ReleaseWindow(nullptr);
}

TEST(WindowFactory, CloneWindow_MadeByTheFactory_IsOfItsClassAndIndependent) {
  for (const Offer &offer : kOffers) {
    std::unique_ptr<Window> window(WindowFactory::MakeWindow(offer.type, 31, 2.0F));
    const std::unique_ptr<Window> clone = CloneWindow(*window);
    ASSERT_NE(clone, nullptr) << offer.type;
    const Window &made = *clone;
    EXPECT_TRUE(typeid(made) == offer.window) << offer.type;
    const auto before = Coefficients(*window);
    window.reset();
    EXPECT_EQ(Coefficients(*clone), before) << offer.type;
    EXPECT_EQ(clone->GetSize(), 31);
  }
}

TEST(WindowFactory, CloneWindow_ChosenScaling_ComesAlong) {
  const std::unique_ptr<Window> window(WindowFactory::MakeWindow(WindowCISPR6dB, 31, 14.6F));
  window->Set6dBBWParam(1e6);
  EXPECT_EQ(CloneWindow(*window)->GetEffectiveRBWScaling(), 2.8405F);
}

TEST(WindowFactory, CloneWindow_OfAnUnknownClass_IsNull) {
  struct Foreign : HannWindow {};
  EXPECT_EQ(CloneWindow(Foreign()), nullptr);
  EXPECT_EQ(CloneWindow(TaylorWindow(31)), nullptr);
}

} // namespace
