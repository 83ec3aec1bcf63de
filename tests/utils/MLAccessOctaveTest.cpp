// MLAccess with a real interpreter at the other end.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "qorn/utils/MLAccess.h"
#include "qorn/utils/MatlabProcess.h"
#include "support/Octave.h"
#include "support/TempFile.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;

std::unique_ptr<MLAccess> MakeAccess(const char *caption = nullptr) {
  return std::make_unique<MLAccess>(caption, std::make_unique<MatlabProcess>(test::kOctave));
}

class MLAccessOctave : public testing::Test {
protected:
  static void TearDownTestSuite() { access.reset(); }

  void SetUp() override {
    QORN_SKIP_WITHOUT_OCTAVE();
    if (!access) access = MakeAccess("Setup_1 C:\\data µV");
  }

  static int Result() { return access->GetEngine()->GetLastResult(); }
  static const char *Message() { return access->GetEngine()->GetLastMessage(); }

  /// Whether a condition holds in the session.
  static bool Holds(const std::string &condition) {
    double value = 0;
    access->Say("answer__ = double(%s);", condition.c_str());
    EXPECT_EQ(Result(), MatlabOk) << condition << ": " << Message();
    EXPECT_EQ(access->Get("answer__", value), 1) << condition;
    return value == 1;
  }

  static std::unique_ptr<MLAccess> access;
};
std::unique_ptr<MLAccess> MLAccessOctave::access;

constexpr float kInf32 = std::numeric_limits<float>::infinity();
constexpr double kInf64 = std::numeric_limits<double>::infinity();

template <class T> bool SameBits(const T *a, const T *b, int n) {
  return std::memcmp(a, b, sizeof(T) * static_cast<std::size_t>(n)) == 0;
}

template <class V> void ExpectRoundTrip(MLAccess &access, const V &vec) {
  V got;
  const int n = vec.GetSize();
  EXPECT_EQ(access.Send("x", vec), n);
  EXPECT_EQ(access.Get("x", got), n) << access.GetEngine()->GetLastMessage();
  ASSERT_EQ(got.GetSize(), n);
  EXPECT_TRUE(SameBits(got.GetPtr(), vec.GetPtr(), n));
  EXPECT_EQ(access.Send("y", vec.GetPtr(), n), n);
  EXPECT_EQ(access.Get("y", got), n);
  ASSERT_EQ(got.GetSize(), n);
  EXPECT_TRUE(SameBits(got.GetPtr(), vec.GetPtr(), n));
}

TEST_F(MLAccessOctave, Vectors_ComeBackBitForBit) {
  ExpectRoundTrip(*access, Of<VecReal32>({0.0F, -0.0F, kInf32, -kInf32, 0.1F, 1e-45F, 3.4e38F}));
  ExpectRoundTrip(*access, Of<VecReal64>({0.0, -0.0, kInf64, -kInf64, 0.1, 5e-324, 1.7e308}));
  ExpectRoundTrip(*access, Of<VecInt32>({0, -1, 2147483647, -2147483647 - 1}));
  ExpectRoundTrip(*access, Of<VecCplx32>({{0.0F, -0.0F}, {kInf32, 1}, {-2, kInf32}, {0.1F, 1e-45F}}));
  ExpectRoundTrip(*access, Of<VecCplx64>({{0.0, -0.0}, {kInf64, 1}, {-2, kInf64}, {0.1, 5e-324}}));
  ExpectRoundTrip(*access, Of<VecCplx64>({{1, 0}, {2, 0}})); // complex as long as nobody computes with it
  EXPECT_TRUE(Holds("iscomplex(x)"));
  EXPECT_TRUE(Holds("isequal(size(x), [1 2])"));
}

TEST_F(MLAccessOctave, NotANumber_ComesBack) {
  const double nan = std::nan("");
  VecReal64 vec;
  EXPECT_EQ(access->Send("x", nan), 1);
  EXPECT_TRUE(Holds("isnan(x)"));
  EXPECT_EQ(access->Get("x", vec), 1);
  EXPECT_TRUE(std::isnan(vec[0]));
  VecCplx32 cplx;
  EXPECT_EQ(access->Send("x", Cplx32{1, static_cast<float>(nan)}), 1);
  EXPECT_EQ(access->Get("x", cplx), 1);
  EXPECT_EQ(cplx[0].re, 1);
  EXPECT_TRUE(std::isnan(cplx[0].im));
  int integer = 9;
  EXPECT_EQ(access->Get("x", integer), 1);
  EXPECT_EQ(integer, 1);
}

TEST_F(MLAccessOctave, Scalars_ComeBack) {
  EXPECT_EQ(access->Send("a", 0.1F), 1);
  EXPECT_EQ(access->Send("b", -0.1), 1);
  EXPECT_EQ(access->Send("c", -7), 1);
  EXPECT_EQ(access->Send("d", Cplx32{1, -2}), 1);
  EXPECT_EQ(access->Send("e", Cplx64{0.3, 0.4}), 1);
  float a = 0;
  double b = 0;
  int c = 0;
  Cplx32 d{};
  Cplx64 e{};
  EXPECT_EQ(access->Get("a", a), 1);
  EXPECT_EQ(access->Get("b", b), 1);
  EXPECT_EQ(access->Get("c", c), 1);
  EXPECT_EQ(access->Get("d", d), 1);
  EXPECT_EQ(access->Get("e", e), 1);
  EXPECT_EQ(a, 0.1F);
  EXPECT_EQ(b, -0.1);
  EXPECT_EQ(c, -7);
  EXPECT_EQ(d, (Cplx32{1, -2}));
  EXPECT_EQ(e, (Cplx64{0.3, 0.4}));
  access->Say("x = -2.75;");
  EXPECT_EQ(access->Get("x", c), 1);
  EXPECT_EQ(c, -2);
}

TEST_F(MLAccessOctave, TwoRows_AreAMatrix) {
  const auto x = Of<VecReal64>({1, 2, 3}), y = Of<VecReal64>({4, 5, 6});
  const auto x32 = Of<VecReal32>({1, 2, 3}), y32 = Of<VecReal32>({4, 5, 6});
  const auto check = [&](int sent) {
    EXPECT_EQ(sent, 3);
    EXPECT_EQ(Result(), MatlabOk) << Message();
    EXPECT_TRUE(Holds("isequal(m, [1 2 3; 4 5 6])"));
    EXPECT_TRUE(Holds("exist('x99temp', 'var') == 0"));
    VecReal64 rows;
    EXPECT_EQ(access->Get("m", rows), 6);
    EXPECT_EQ(List(rows), (std::vector<double>{1, 2, 3, 4, 5, 6}));
    access->ClearVar("m");
    EXPECT_TRUE(Holds("exist('m', 'var') == 0"));
  };
  check(access->Send("m", x, y));
  check(access->Send("m", x32, y32));
  check(access->Send("m", x.GetPtr(), y.GetPtr(), 3));
  check(access->Send("m", x32.GetPtr(), y32.GetPtr(), 3));
  access->Send("m", x, Of<VecReal64>({1}));
  EXPECT_EQ(Result(), MatlabError); // rows of two lengths
}

TEST_F(MLAccessOctave, RealAndImaginaryParts_ComeApart) {
  VecReal32 re32, im32;
  VecReal64 re64, im64;
  access->Say("z = [1+2i, 3-4i];");
  EXPECT_EQ(access->Get("z", re32, im32), 2);
  EXPECT_EQ(access->Get("z", re64, im64), 2);
  EXPECT_EQ(List(re32), (std::vector<float>{1, 3}));
  EXPECT_EQ(List(im32), (std::vector<float>{2, -4}));
  EXPECT_EQ(List(re64), (std::vector<double>{1, 3}));
  EXPECT_EQ(List(im64), (std::vector<double>{2, -4}));
  access->Say("z = [5, 6];");
  EXPECT_EQ(access->Get("z", re64, im64), 2);
  EXPECT_EQ(List(im64), (std::vector<double>{0, 0}));
}

TEST_F(MLAccessOctave, MissingAndEmptyVariables_GiveNothing) {
  access->Say("clear nothing; empty = zeros(3, 0); deep = zeros(2, 2, 2); c = {1};");
  auto vec = Of<VecReal64>({1, 2});
  EXPECT_EQ(access->Get("nothing", vec), 0);
  EXPECT_EQ(vec.GetSize(), 0);
  EXPECT_EQ(Result(), MatlabError);
  EXPECT_EQ(std::string(Message()).substr(0, 19), "'nothing' undefined");
  EXPECT_EQ(access->Get("empty", vec), 0);
  EXPECT_EQ(Result(), MatlabOk);
  EXPECT_EQ(access->Get("deep", vec), 0);
  EXPECT_EQ(Result(), MatlabError);
  EXPECT_EQ(access->Get("c", vec), 0);
  EXPECT_EQ(Result(), MatlabError);
  EXPECT_TRUE(Holds("exist('deepSize', 'var') == 0 && exist('cSize', 'var') == 0"));
  EXPECT_EQ(access->Send("x", VecReal64()), 0);
  EXPECT_TRUE(Holds("isequal(size(x), [1 0])"));
}

TEST_F(MLAccessOctave, Texts_ComeBack) {
  const std::string sent = "it's \"so\": 100 %d \\n\n\tµΩ 信号";
  EXPECT_EQ(access->Send("t", sent.c_str()), static_cast<int>(sent.size()));
  std::string got(static_cast<std::size_t>(access->Get("t", static_cast<char *>(nullptr))) + 1, 'x');
  EXPECT_EQ(access->Get("t", got.data()), static_cast<int>(sent.size()));
  EXPECT_STREQ(got.c_str(), sent.c_str());
  EXPECT_EQ(access->Send("t", ""), 0);
  EXPECT_EQ(access->Get("t", got.data()), 0);
  EXPECT_STREQ(got.c_str(), "");
}

TEST_F(MLAccessOctave, TenMillionValues_ComeBack) {
  const int n = 10000000;
  VecReal64 sent(n), got;
  for (int i = 0; i < n; ++i) sent[i] = std::sqrt(static_cast<double>(i));
  EXPECT_EQ(access->Send("big", sent), n);
  EXPECT_EQ(access->Get("big", got), n);
  ASSERT_EQ(got.GetSize(), n);
  EXPECT_TRUE(SameBits(got.GetPtr(), sent.GetPtr(), n));
  access->ClearVar("big");
}

TEST_F(MLAccessOctave, TwoObjects_DoNotMeet) {
  const auto other = MakeAccess();
  access->Send("x", 1.0);
  other->Send("x", 2.0);
  other->Say("clear all");
  EXPECT_TRUE(Holds("x == 1"));
  double x = 9;
  EXPECT_EQ(other->Get("x", x), 0);
  MLAccess copy(*other);
  copy.Send("x", 3.0);
  EXPECT_EQ(other->Get("x", x), 1);
  EXPECT_EQ(x, 3);
}

TEST_F(MLAccessOctave, InterpreterThatDies_LeavesTheObjectHarmless) {
  const auto other = MakeAccess();
  CMatlabEngine &engine = *other->GetEngine();
  other->Say("kill(getpid(), 9)");
  EXPECT_EQ(engine.GetLastResult(), MatlabEnded);
  other->Say("x = 1;");
  EXPECT_EQ(engine.GetLastResult(), 1);
  auto vec = Of<VecReal64>({1, 2});
  EXPECT_EQ(other->Send("x", vec), 2); // which tells nothing of failures
  EXPECT_EQ(engine.GetLastResult(), 1);
  other->Plot(vec, 1);
  other->ShowConsole();
  other->FigureAxis(1, 0, 1, 0, 1);
  EXPECT_EQ(engine.GetLastResult(), 1);
  EXPECT_EQ(other->Get("x", vec), 0);
  EXPECT_EQ(vec.GetSize(), 0);
  EXPECT_EQ(engine.GetLastResult(), 1);
}

// Pictures

class MLAccessPictures : public MLAccessOctave {
protected:
  static void TearDownTestSuite() { access.reset(); }

  void SetUp() override {
    MLAccessOctave::SetUp();
    if (IsSkipped()) return;
    access->Say("close all; clear all");
    for (int i = 0; i < kCount; ++i) {
      const double t = 0.05 * i;
      y32[i] = static_cast<float>(y64[i] = std::sin(t));
      x32[i] = static_cast<float>(x64[i] = t);
      yInt[i] = i * i % 97;
      xInt[i] = 2 * i;
      z64[i] = {std::cos(2 * t), std::sin(3 * t)};
      z32[i] = {static_cast<float>(z64[i].re), static_cast<float>(z64[i].im)};
    }
  }

  /// Has the current figure written as a picture of 800 times 600 points, and reads it in the session: black
  /// axes and grid, a red title, blue corners and the drawing have to be there.
  static void ExpectPicture(const std::string &drawing) {
    EXPECT_EQ(Result(), MatlabOk) << Message();
    const test::TempFile taken; // for a name of its own
    const std::string path = std::string(taken.Path()) + ".png";
    access->Send("file", path.c_str());
    access->Say("set(gcf,'PaperUnits','inches','PaperPosition',[0 0 8 6]); print('-dpng','-r100',file);");
    EXPECT_EQ(Result(), MatlabOk) << Message();
    std::ifstream file(path, std::ios::binary);
    const std::string png{std::istreambuf_iterator<char>(file), {}};
    ASSERT_GT(png.size(), 33U);
    EXPECT_EQ(png.substr(0, 16), std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16));
    EXPECT_EQ(png.substr(16, 8), std::string("\0\0\x03\x20\0\0\x02\x58", 8)); // 800, 600
    access->Say("im = double(imread(file)); count = @(mask) nnz(mask);"
                "r = im(:, :, 1); g = im(:, :, 2); b = im(:, :, 3);");
    ASSERT_EQ(Result(), MatlabOk) << Message();
    std::filesystem::remove(path);
    EXPECT_TRUE(Holds("isequal(size(im), [600 800 3])"));
    EXPECT_TRUE(Holds("count(r > 250 & g > 250 & b > 250) > 300000")) << "the paper";
    EXPECT_TRUE(Holds("count(r < 60 & g < 60 & b < 60) > 2000")) << "the axes";
    EXPECT_TRUE(Holds("count(r(1:60, :) > 200 & g(1:60, :) < 60 & b(1:60, :) < 60) > 30")) << "the title";
    EXPECT_TRUE(Holds("count(r(540:600, 1:200) < 60 & b(540:600, 1:200) > 200) > 30")) << "the caption";
    EXPECT_TRUE(Holds("count(r(540:600, 600:800) < 60 & b(540:600, 600:800) > 200) > 30")) << "the time";
    EXPECT_TRUE(Holds(drawing)) << "the drawing";
  }

  /// Inside the axes the drawing has the standard's first colour.
  static std::string Drawing() { return "count(r < 60 & g > 80 & g < 160 & b > 150) > 100"; }
  static std::string Drawing(const char *condition) { return std::string("count(") + condition + ") > 100"; }

  static constexpr int kCount = 200;
  VecReal32 x32{kCount}, y32{kCount};
  VecReal64 x64{kCount}, y64{kCount};
  VecInt32 xInt{kCount}, yInt{kCount};
  VecCplx32 z32{kCount};
  VecCplx64 z64{kCount};
};

TEST_F(MLAccessPictures, Plot_OverIndices_Draws) {
  access->Plot(y32, 1);
  ExpectPicture(Drawing());
  EXPECT_TRUE(Holds("isequal(get(get(gca, 'Title'), 'String'), 'Figure 1: n=200')"));
  EXPECT_TRUE(Holds("isequal(get(get(gca, 'Children'), 'XData'), 0:199)"));
  EXPECT_TRUE(Holds("isequal(get(gca, 'XGrid'), 'on')"));
  access->Plot(y64, 2, "Title", "Time / s", "Level / dBm", "r--");
  ExpectPicture(Drawing("r(80:500, :) > 200 & g(80:500, :) < 60"));
  EXPECT_TRUE(Holds("isequal(get(get(gca, 'XLabel'), 'String'), 'Time / s')"));
  EXPECT_TRUE(Holds("isequal(get(get(gca, 'YLabel'), 'String'), 'Level / dBm')"));
  EXPECT_TRUE(Holds("isequal(get(get(gca, 'Children'), 'YData'), sin(0.05 * (0:199))) || "
                    "max(abs(get(get(gca, 'Children'), 'YData') - sin(0.05 * (0:199)))) < 1e-12"));
  EXPECT_TRUE(Holds("isequal(sort(get(0, 'Children'))', [1 2])"));
}

TEST_F(MLAccessPictures, Plot_OfIntegersAndArrays_Draws) {
  access->Plot(yInt, 3, nullptr, nullptr, nullptr, "o");
  ExpectPicture(Drawing());
  access->Plot(y32.GetPtr(), 100, 4);
  EXPECT_TRUE(Holds("isequal(get(get(gca, 'Title'), 'String'), 'Figure 4: n=100')"));
  ExpectPicture(Drawing());
  access->Plot(y64.GetPtr(), 100, 4);
  ExpectPicture(Drawing());
}

TEST_F(MLAccessPictures, Plot_OverX_Draws) {
  access->Plot(x32, y32, 1);
  ExpectPicture(Drawing());
  EXPECT_TRUE(Holds("max(abs(get(get(gca, 'Children'), 'XData') - 0.05 * (0:199))) < 1e-5"));
  access->Plot(x64, y64, 1, "over", nullptr, nullptr, "g");
  ExpectPicture(Drawing("g > 200 & r < 60 & b < 60"));
  access->Plot(xInt, yInt, 2);
  ExpectPicture(Drawing());
  EXPECT_TRUE(Holds("isequal(get(get(gca, 'Children'), 'XData'), 2 * (0:199))"));
}

TEST_F(MLAccessPictures, Plot_OfArraysOverX_Draws) {
  access->Plot(x32.GetPtr(), y32.GetPtr(), 100, 1);
  ExpectPicture(Drawing());
  access->Plot(x64.GetPtr(), y64.GetPtr(), 100, 2);
  ExpectPicture(Drawing());
  EXPECT_TRUE(Holds("numel(get(get(gca, 'Children'), 'XData')) == 100"));
}

TEST_F(MLAccessPictures, Plot_OfComplexVectors_Draws) {
  access->Plot(z32, 1);
  ExpectPicture(Drawing());
  access->Plot(z64, 2, "trace", "re", "im", "m.");
  ExpectPicture(Drawing("r > 200 & g < 60 & b > 200"));
  EXPECT_TRUE(Holds("max(abs(get(get(gca, 'Children'), 'YData') - sin(0.15 * (0:199)))) < 1e-12"));
}

TEST_F(MLAccessPictures, PlotRealAndImag_Draw) {
  access->PlotReal(z32, 1);
  ExpectPicture(Drawing());
  access->PlotImag(z32, 2);
  ExpectPicture(Drawing());
  access->PlotRealImag(z32, 3, "both", nullptr, nullptr, "g", "m");
  ExpectPicture(Drawing("g > 200 & r < 60 & b < 60"));
  EXPECT_TRUE(Holds(Drawing("r > 200 & g < 60 & b > 200")));
  EXPECT_TRUE(Holds("numel(get(gca, 'Children')) == 2"));
}

TEST_F(MLAccessPictures, Plot_InFigureZero_DrawsInTheCurrentOne) {
  access->Figure(5);
  access->Plot(y64, 0, "zero");
  ExpectPicture(Drawing());
  EXPECT_TRUE(Holds("gcf == 5 && isequal(get(0, 'Children'), 5)"));
  EXPECT_TRUE(Holds("exist('f0', 'var') == 0"));
}

TEST_F(MLAccessPictures, Plot_InANegativeFigure_ReplacesTheTextsOfTheCurrentOneAlone) {
  access->Plot(y64, 5, "five", "Time / s", "Level / dBm");
  access->Plot(x64, -3, "negative");
  EXPECT_EQ(Result(), MatlabError);
  EXPECT_STREQ(Message(), "assignin: invalid variable name 'f-3'");
  EXPECT_TRUE(Holds("gcf == 5 && isequal(get(get(gca, 'Title'), 'String'), 'negative')"));
  EXPECT_TRUE(Holds("isequal(get(get(gca, 'XLabel'), 'String'), 'x-axis')"));
  EXPECT_TRUE(Holds("isequal(get(get(gca, 'YLabel'), 'String'), 'y-axis')"));
  EXPECT_TRUE(Holds("max(abs(get(get(gca, 'Children'), 'YData') - sin(0.05 * (0:199)))) < 1e-12"));
}

TEST_F(MLAccessPictures, Caption_StandsInTheCornerWithItsEscapes) {
  access->Plot(y64, 1);
  const std::string texts = "cellfun(@(h) get(get(h, 'Title'), 'String'), "
                            "num2cell(findall(gcf, 'type', 'axes')), 'UniformOutput', false)";
  EXPECT_TRUE(Holds("any(strcmp(" + texts + ", 'Setup\\_1 C:\\\\data µV'))"));
  EXPECT_TRUE(Holds("sum(strncmp(" + texts + ", '[', 1)) == 1"));
  EXPECT_TRUE(Holds("numel(findall(gcf, 'type', 'axes')) == 3"));
}

TEST_F(MLAccessPictures, FigureOperations_Work) {
  access->Plot(y64, 1);
  access->Plot(y64, 2);
  access->FigureAxis(1, 10, 20, -3, 4);
  EXPECT_EQ(Result(), MatlabOk) << Message();
  EXPECT_TRUE(Holds("gcf == 1 && isequal(axis(), [10 20 -3 4]) && exist('ax___Vals', 'var') == 0"));
  access->FigureSay(2, "title('100 %d')");
  EXPECT_TRUE(Holds("gcf == 2 && isequal(get(get(gca, 'Title'), 'String'), '100 %d')"));
  access->FigureClf(1);
  EXPECT_TRUE(Holds("gcf == 1 && isempty(get(1, 'Children'))"));
}

} // namespace
