#include "qorn/utils/MLAccess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "qorn/infra/VecCplx32.h"
#include "qorn/infra/VecCplx64.h"
#include "qorn/infra/VecInt32.h"
#include "qorn/infra/VecReal32.h"
#include "qorn/infra/VecReal64.h"
#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/Vectors.h"

namespace {

using namespace QORN;
using test::List;
using test::Of;

using Lines = std::vector<std::string>;

static_assert(!std::is_polymorphic_v<MLAccess>);
static_assert(std::has_virtual_destructor_v<CMatlabEngine>);

struct Matrix {
  int rows, columns;
  std::vector<double> re, im;
};

// What an engine was told, and what it is to tell; it outlives the engine.
struct Record {
  Lines lines;
  std::map<std::string, Matrix> variables;
  std::map<std::string, std::string> texts;
  std::set<std::string> failing; // commands and names
  bool visible = false;
  int alive = 0;
};

// An engine that does nothing but write down what it is told.
class RecordingEngine : public CMatlabEngine {
public:
  explicit RecordingEngine(Record &record, bool usable = true) : m_record(record) {
    ++m_record.alive;
    initialized = usable;
  }
  ~RecordingEngine() override { --m_record.alive; }

private:
  int Result(const std::string &what) {
    if (m_record.failing.count(what) == 0) return MatlabOk;
    SetMessage(what + " failed");
    return MatlabError;
  }

  int OnExecute(const char *text) override {
    m_record.lines.emplace_back(text);
    return Result(text);
  }
  int OnPutFullMatrix(const char *name, const double *re, const double *im, int rows, int columns) override {
    std::ostringstream line;
    line << "put " << name << ' ' << rows << 'x' << columns << ':';
    for (int i = 0; i < rows * columns; ++i) {
      line << ' ' << re[i];
      if (im != nullptr) line << '/' << im[i];
    }
    m_record.lines.push_back(line.str());
    return Result(name);
  }
  int OnGetFullMatrix(const char *name, double *re, double *im, int rows, int columns) override {
    m_record.lines.push_back("get " + std::string(name) + ' ' + std::to_string(rows) + 'x' +
                             std::to_string(columns) + (im != nullptr ? " complex" : ""));
    const auto found = m_record.variables.find(name);
    if (found == m_record.variables.end() || found->second.rows != rows || found->second.columns != columns)
      return MatlabError;
    const Matrix &matrix = found->second;
    std::copy(matrix.re.begin(), matrix.re.end(), re);
    if (im != nullptr) {
      std::fill_n(im, matrix.re.size(), 0.0);
      std::copy(matrix.im.begin(), matrix.im.end(), im);
    }
    return Result(name);
  }
  int OnPutCharArray(const char *name, const char *text) override {
    m_record.lines.push_back("put " + std::string(name) + " '" + text + "'");
    return Result(name);
  }
  int OnGetCharArray(const char *name, std::string &text) override {
    m_record.lines.push_back("get text " + std::string(name));
    const auto found = m_record.texts.find(name);
    if (found == m_record.texts.end()) return MatlabError;
    text = found->second;
    return MatlabOk;
  }
  int OnGetVisible(bool &visible) override {
    m_record.lines.emplace_back("get visible");
    visible = m_record.visible;
    return Result("get visible");
  }
  int OnSetVisible(bool visible) override {
    m_record.lines.emplace_back(visible ? "set visible" : "set hidden");
    m_record.visible = visible;
    return MatlabOk;
  }

  Record &m_record;
};

class MLAccessTest : public testing::Test {
protected:
  std::unique_ptr<CMatlabEngine> Engine() { return std::make_unique<RecordingEngine>(record); }

  /// The lines that call(access) makes an object with this caption say.
  template <class Call> Lines SaidBy(Call call, const char *caption = nullptr) {
    MLAccess access(caption, Engine());
    record.lines.clear();
    call(access);
    result = access.GetEngine()->GetLastResult();
    return record.lines;
  }

  /// A variable and the one of its size.
  void Define(const std::string &name, int rows, int columns, std::vector<double> re,
              std::vector<double> im = {}) {
    record.variables[name] = {rows, columns, std::move(re), std::move(im)};
    record.variables[name + "Size"] = {1, 2, {static_cast<double>(rows), static_cast<double>(columns)}, {}};
  }

  Record record;
  int result = -1;
};

// Construction

TEST_F(MLAccessTest, Construction_WithAnEngineThatIsNotUsable_Throws) {
  test::ExpectThrown([] { MLAccess("caption", nullptr); }, 3, "MATLAB access error", "utils\\MatlabAccess");
  test::ExpectThrown([&] { MLAccess("caption", std::make_unique<RecordingEngine>(record, false)); }, 3,
                     "MATLAB access error", "utils\\MatlabAccess");
  EXPECT_EQ(record.alive, 0);
}

TEST_F(MLAccessTest, Construction_WithoutAnInterpreter_Throws) {
  const std::string before = std::getenv("PATH");
  setenv("PATH", "/no-such-folder", 1);
  test::ExpectThrown([] { MLAccess(); }, 3, "MATLAB access error", "utils\\MatlabAccess");
  test::ExpectThrown([] { MLAccess("caption"); }, 3, "MATLAB access error", "utils\\MatlabAccess");
  setenv("PATH", before.c_str(), 1);
}

TEST_F(MLAccessTest, Construction_WithoutMemory_Throws) {
  test::ExpectThrown(
      [] {
        const test::AllocationLimit none(0);
        MLAccess();
      },
      11001, "memory allocation error", "utils\\MatlabAccess");
}

TEST_F(MLAccessTest, Construction_SaysNothing) {
  const MLAccess access("caption", Engine());
  EXPECT_EQ(record.lines, Lines());
}

TEST_F(MLAccessTest, Copies_ShareTheEngineInAnyOrderOfDestruction) {
  for (int order = 0; order < 6; ++order) {
    auto first = std::make_unique<MLAccess>("a", Engine());
    auto second = std::make_unique<MLAccess>(*first);
    auto third = std::make_unique<MLAccess>("b", Engine());
    EXPECT_EQ(record.alive, 2);
    *third = *second;
    EXPECT_EQ(record.alive, 1);
    EXPECT_EQ(first->GetEngine(), third->GetEngine());
    std::unique_ptr<MLAccess> *const orders[][3] = {{&first, &second, &third}, {&first, &third, &second},
                                                    {&second, &first, &third}, {&second, &third, &first},
                                                    {&third, &first, &second}, {&third, &second, &first}};
    for (std::unique_ptr<MLAccess> *next : orders[order]) {
      EXPECT_EQ(record.alive, 1);
      (*next)->Say("x");
      EXPECT_EQ(record.lines.back(), "x");
      next->reset();
    }
    EXPECT_EQ(record.alive, 0);
  }
}

TEST_F(MLAccessTest, Copies_AssignedToThemselvesOrEachOther_KeepTheEngine) {
  MLAccess first("a", Engine());
  MLAccess second(first);
  first = *&first;
  first = second;
  second = first;
  EXPECT_EQ(record.alive, 1);
  MLAccess other("b", Engine());
  first = other;
  EXPECT_EQ(record.alive, 2);
  second = other;
  EXPECT_EQ(record.alive, 1);
  second.Say("x");
}

TEST_F(MLAccessTest, Copies_HaveTheCaption) {
  const MLAccess source("the_caption", Engine());
  MLAccess copy(source), assigned("other", Engine());
  assigned = copy;
  assigned.PlotTimeDate(1);
  EXPECT_EQ(record.lines[8], "title('the\\_caption','HorizontalAlignment','left','Color','blue');");
}

// Commands

TEST_F(MLAccessTest, Say_FormatsTheText) {
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.Say("x=%d; y='%s'; z=%.3f%%", 5, "a\nb", 0.25); }),
            (Lines{"x=5; y='a\nb'; z=0.250%"}));
  const std::string text(100000, 'x');
  EXPECT_EQ(SaidBy([&](MLAccess &m) { m.Say("%s", text.c_str()); }), (Lines{text}));
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.Say(nullptr); }), Lines());
  EXPECT_EQ(result, MatlabError);
}

TEST_F(MLAccessTest, Say_OfATextThatCannotBeFormatted_RunsNothing) {
  const wchar_t wide[] = {0x4FE1, 0}; // the C locale, in which the tests run, has no such character
  EXPECT_EQ(SaidBy([&](MLAccess &m) { m.Say("x = '%ls';", wide); }), Lines());
  EXPECT_EQ(result, MatlabError);
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.Say("x = '%ls';", L"abc"); }), (Lines{"x = 'abc';"}));
  EXPECT_EQ(result, MatlabOk);
}

TEST_F(MLAccessTest, Commands_AreThoseOfTheContract) {
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.ClearVar("x"); }), (Lines{"clear x"}));
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.ClearVar(nullptr); }), Lines());
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.Figure(3); }), (Lines{"figure(3);"}));
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.Figure(0); }), Lines());
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.Figure(-1); }), Lines());
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.FigureSay(3, "text('100 %d')"); }),
            (Lines{"figure(3);", "text('100 %d')"}));
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.FigureSay(0, "x"); }), (Lines{"x"}));
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.FigureClf(2); }), (Lines{"figure(2);", "clf"}));
  const Lines axis{"put ax___Vals 1x4: 1 2.5 -3 4", "figure(7);", "axis(ax___Vals);clear ax___Vals"};
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.FigureAxis(7, 1, 2.5, -3, 4); }), axis);
  const double limits[] = {1, 2.5, -3, 4};
  EXPECT_EQ(SaidBy([&](MLAccess &m) { m.FigureAxis(7, limits); }), axis);
}

TEST_F(MLAccessTest, Console_IsChangedOnlyIfNeedBe) {
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.ShowConsole(); }), (Lines{"get visible", "set visible"}));
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.ShowConsole(); }), (Lines{"get visible"}));
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.HideConsole(); }), (Lines{"get visible", "set hidden"}));
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.HideConsole(); }), (Lines{"get visible"}));
  record.failing = {"get visible"};
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.ShowConsole(); }), (Lines{"get visible"}));
  EXPECT_EQ(result, MatlabError);
}

// Sending

TEST_F(MLAccessTest, Send_Scalars_AreRowsOfOne) {
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              EXPECT_EQ(m.Send("a", 1.5F), 1);
              EXPECT_EQ(m.Send("b", -2.5), 1);
              EXPECT_EQ(m.Send("c", INT_MIN), 1);
              EXPECT_EQ(m.Send("d", Cplx32{1, -2}), 1);
              EXPECT_EQ(m.Send("e", Cplx64{3, 4}), 1);
            }),
            (Lines{"put a 1x1: 1.5", "put b 1x1: -2.5", "put c 1x1: -2.14748e+09", "put d 1x1: 1/-2",
                   "put e 1x1: 3/4"}));
}

TEST_F(MLAccessTest, Send_VectorsAndArrays_AreRows) {
  const Lines real{"put x 1x3: 1 -2 3"}, complex{"put x 1x2: 1/-1 2/-2"};
  const auto same = [&](const auto &vec, const Lines &expected) {
    EXPECT_EQ(SaidBy([&](MLAccess &m) { EXPECT_EQ(m.Send("x", vec), vec.GetSize()); }), expected);
    EXPECT_EQ(SaidBy([&](MLAccess &m) {
                const auto *data = vec.GetPtr();
                EXPECT_EQ(m.Send("x", data, vec.GetSize()), vec.GetSize());
              }),
              expected);
  };
  same(Of<VecReal32>({1, -2, 3}), real);
  same(Of<VecReal64>({1, -2, 3}), real);
  same(Of<VecInt32>({1, -2, 3}), real);
  same(Of<VecCplx32>({{1, -1}, {2, -2}}), complex);
  same(Of<VecCplx64>({{1, -1}, {2, -2}}), complex);
}

TEST_F(MLAccessTest, Send_NothingAtAll_IsAnEmptyRow) {
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              EXPECT_EQ(m.Send("x", VecReal32()), 0);
              EXPECT_EQ(m.Send("x", VecCplx64()), 0);
              EXPECT_EQ(m.Send("x", static_cast<const double *>(nullptr), 5), 0);
              const float y = 1;
              EXPECT_EQ(m.Send("x", &y, -1), 0);
            }),
            Lines(4, "put x 1x0:"));
  EXPECT_EQ(SaidBy([](MLAccess &m) { EXPECT_EQ(m.Send(nullptr, 1.0), 1); }), Lines());
  EXPECT_EQ(result, MatlabError);
}

TEST_F(MLAccessTest, Send_TwoRows_JoinsThem) {
  const Lines expected{"put m 1x2: 1 2", "put x99temp 1x2: 3 4", "m=[m;x99temp]; clear x99temp;"};
  const auto x32 = Of<VecReal32>({1, 2}), y32 = Of<VecReal32>({3, 4});
  const auto x64 = Of<VecReal64>({1, 2}), y64 = Of<VecReal64>({3, 4});
  EXPECT_EQ(SaidBy([&](MLAccess &m) { EXPECT_EQ(m.Send("m", x32, y32), 2); }), expected);
  EXPECT_EQ(SaidBy([&](MLAccess &m) { EXPECT_EQ(m.Send("m", x64, y64), 2); }), expected);
  EXPECT_EQ(SaidBy([&](MLAccess &m) { EXPECT_EQ(m.Send("m", x32.GetPtr(), y32.GetPtr(), 2), 2); }), expected);
  EXPECT_EQ(SaidBy([&](MLAccess &m) { EXPECT_EQ(m.Send("m", x64.GetPtr(), y64.GetPtr(), 2), 2); }), expected);
  record.failing = {"m"};
  EXPECT_EQ(SaidBy([&](MLAccess &m) { EXPECT_EQ(m.Send("m", x64, y64), 2); }), expected);
  EXPECT_EQ(result, MatlabError);
}

TEST_F(MLAccessTest, Send_Text_GivesItsLength) {
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              EXPECT_EQ(m.Send("t", "it's"), 4);
              EXPECT_EQ(m.Send("t", ""), 0);
            }),
            (Lines{"put t 'it's'", "put t ''"}));
  EXPECT_EQ(SaidBy([](MLAccess &m) { EXPECT_EQ(m.Send("t", static_cast<const char *>(nullptr)), 0); }),
            Lines());
}

// Receiving

TEST_F(MLAccessTest, Get_Vectors_AsksForTheSizeFirst) {
  const double inf = std::numeric_limits<double>::infinity();
  Define("x", 1, 6, {1.75, -2.75, 1e300, -inf, std::nan(""), 0.1}, {1, 2, 3, 4, 5, 6});
  const Lines real{"xSize=size(x);", "get xSize 1x2", "get x 1x6", "clear xSize"};
  const Lines complex{"xSize=size(x);", "get xSize 1x2", "get x 1x6 complex", "clear xSize"};
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              VecReal64 vec;
              EXPECT_EQ(m.Get("x", vec), 6);
              EXPECT_EQ(vec[0], 1.75);
              EXPECT_EQ(vec[2], 1e300);
              EXPECT_TRUE(std::isnan(vec[4]));
            }),
            real);
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              VecReal32 vec;
              EXPECT_EQ(m.Get("x", vec), 6);
              EXPECT_EQ(vec[1], -2.75F);
              EXPECT_TRUE(std::isinf(vec[2]));
              EXPECT_EQ(vec[5], 0.1F);
            }),
            real);
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              VecInt32 vec;
              EXPECT_EQ(m.Get("x", vec), 6);
              EXPECT_EQ(List(vec), (std::vector<int>{1, -2, INT_MAX, INT_MIN, 0, 0}));
            }),
            real);
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              VecCplx32 vec;
              EXPECT_EQ(m.Get("x", vec), 6);
              EXPECT_EQ(vec[1], (Cplx32{-2.75F, 2}));
            }),
            complex);
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              VecCplx64 vec;
              EXPECT_EQ(m.Get("x", vec), 6);
              EXPECT_EQ(vec[5], (Cplx64{0.1, 6}));
            }),
            complex);
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              VecReal32 re, im;
              EXPECT_EQ(m.Get("x", re, im), 6);
              EXPECT_EQ(re[5], 0.1F);
              EXPECT_EQ(List(im), (std::vector<float>{1, 2, 3, 4, 5, 6}));
            }),
            complex);
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              VecReal64 re, im;
              EXPECT_EQ(m.Get("x", re, im), 6);
              EXPECT_EQ(re[5], 0.1);
              EXPECT_EQ(List(im), (std::vector<double>{1, 2, 3, 4, 5, 6}));
            }),
            complex);
}

TEST_F(MLAccessTest, Get_OfAMatrix_ComesRowByRow) {
  Define("x", 2, 3, {1, 2, 3, 4, 5, 6});
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              VecInt32 vec;
              EXPECT_EQ(m.Get("x", vec), 6);
              EXPECT_EQ(List(vec), (std::vector<int>{1, 2, 3, 4, 5, 6}));
            })[2],
            "get x 2x3");
}

TEST_F(MLAccessTest, Get_Scalars_TakesTheFirstElement) {
  Define("x", 1, 2, {-1.75, 3}, {0.1, 4});
  SaidBy([](MLAccess &m) {
    double d = 9;
    float f = 9;
    int i = 9;
    Cplx32 c{9, 9};
    Cplx64 z{9, 9};
    EXPECT_EQ(m.Get("x", d), 1);
    EXPECT_EQ(m.Get("x", f), 1);
    EXPECT_EQ(m.Get("x", i), 1);
    EXPECT_EQ(m.Get("x", c), 1);
    EXPECT_EQ(m.Get("x", z), 1);
    EXPECT_EQ(d, -1.75);
    EXPECT_EQ(f, -1.75F);
    EXPECT_EQ(i, -1);
    EXPECT_EQ(c, (Cplx32{-1.75F, 0.1F}));
    EXPECT_EQ(z, (Cplx64{-1.75, 0.1}));
  });
}

// Every destination comes back empty or zero, and the result is 0.
void ExpectNothing(MLAccess &m, const char *name) {
  auto r32 = Of<VecReal32>({1, 2}), i32 = r32;
  auto r64 = Of<VecReal64>({1, 2}), i64 = r64;
  auto ints = Of<VecInt32>({1, 2});
  auto c32 = Of<VecCplx32>({{1, 2}});
  auto c64 = Of<VecCplx64>({{1, 2}});
  EXPECT_EQ(m.Get(name, r32), 0);
  EXPECT_EQ(r32.GetSize(), 0);
  EXPECT_EQ(m.Get(name, r64), 0);
  EXPECT_EQ(r64.GetSize(), 0);
  EXPECT_EQ(m.Get(name, ints), 0);
  EXPECT_EQ(ints.GetSize(), 0);
  EXPECT_EQ(m.Get(name, c32), 0);
  EXPECT_EQ(c32.GetSize(), 0);
  EXPECT_EQ(m.Get(name, c64), 0);
  EXPECT_EQ(c64.GetSize(), 0);
  r32 = Of<VecReal32>({1, 2});
  r64 = Of<VecReal64>({1, 2});
  EXPECT_EQ(m.Get(name, r32, i32), 0);
  EXPECT_EQ(r32.GetSize() + i32.GetSize(), 0);
  EXPECT_EQ(m.Get(name, r64, i64), 0);
  EXPECT_EQ(r64.GetSize() + i64.GetSize(), 0);
  double d = 9;
  float f = 9;
  int i = 9;
  Cplx32 c{9, 9};
  Cplx64 z{9, 9};
  EXPECT_EQ(m.Get(name, d), 0);
  EXPECT_EQ(m.Get(name, f), 0);
  EXPECT_EQ(m.Get(name, i), 0);
  EXPECT_EQ(m.Get(name, c), 0);
  EXPECT_EQ(m.Get(name, z), 0);
  EXPECT_EQ(d + static_cast<double>(f) + i, 0);
  EXPECT_EQ(c, (Cplx32{0, 0}));
  EXPECT_EQ(z, (Cplx64{0, 0}));
}

TEST_F(MLAccessTest, Get_OfAMissingVariable_IsEmptyAndKeepsTheError) {
  record.failing = {"xSize=size(x);"};
  SaidBy([](MLAccess &m) { ExpectNothing(m, "x"); });
  EXPECT_EQ(result, MatlabError);
  VecReal64 vec;
  EXPECT_EQ(SaidBy([&](MLAccess &m) { m.Get("x", vec); }), (Lines{"xSize=size(x);"}));
  EXPECT_EQ(SaidBy([&](MLAccess &m) { m.Get(nullptr, vec); }), Lines());
  EXPECT_EQ(result, MatlabError);
}

TEST_F(MLAccessTest, Get_OfAnEmptyVariable_IsEmptyWithoutAnError) {
  for (const auto &[rows, columns] : {std::pair{0, 0}, {1, 0}, {0, 3}}) {
    Define("x", rows, columns, {});
    SaidBy([](MLAccess &m) { ExpectNothing(m, "x"); });
    EXPECT_EQ(result, MatlabOk);
  }
  VecReal64 vec;
  EXPECT_EQ(SaidBy([&](MLAccess &m) { m.Get("x", vec); }),
            (Lines{"xSize=size(x);", "get xSize 1x2", "clear xSize"}));
}

TEST_F(MLAccessTest, Get_OfWhatIsNoMatrix_IsEmptyAndKeepsTheError) {
  record.variables["xSize"] = {1, 3, {1, 2, 3}, {}}; // three dimensions
  SaidBy([](MLAccess &m) { ExpectNothing(m, "x"); });
  EXPECT_EQ(result, MatlabError);
  Define("x", 1, 2, {1, 2});
  record.failing = {"x"};
  SaidBy([](MLAccess &m) { ExpectNothing(m, "x"); });
  EXPECT_EQ(result, MatlabError);
}

TEST_F(MLAccessTest, Get_OfImpossibleSizes_IsEmptyAndAnError) {
  const double nan = std::nan(""), inf = std::numeric_limits<double>::infinity();
  for (const auto &[rows, columns] : {std::pair{-1.0, -5.0},
                                      {-1.0, 5.0},
                                      {nan, 1.0},
                                      {inf, 1.0},
                                      {inf, 0.0},
                                      {65536.0, 65536.0},
                                      {1e300, 1e300}}) {
    record.variables["xSize"] = {1, 2, {rows, columns}, {}};
    SaidBy([](MLAccess &m) { ExpectNothing(m, "x"); });
    EXPECT_EQ(result, MatlabNoMemory) << rows << ' ' << columns;
  }
}

TEST_F(MLAccessTest, Transfers_WithoutMemory_ReportItAndDoNotThrow) {
  Define("x", 1, 5000, std::vector<double>(5000, 1.0));
  const VecCplx32 big(5000);
  const VecReal32 single(5000);
  test::PrintedBy([&] {
    record.failing = {"trouble"};
    SaidBy([&](MLAccess &m) {
      // The message of what failed before does not stand beside a failure of another kind.
      const auto expectNoMemory = [&](auto call) {
        m.Say("trouble");
        EXPECT_STREQ(m.GetEngine()->GetLastMessage(), "trouble failed");
        const test::AllocationLimit few(4000);
        call();
        EXPECT_EQ(m.GetEngine()->GetLastResult(), MatlabNoMemory);
        EXPECT_STREQ(m.GetEngine()->GetLastMessage(), "");
      };
      expectNoMemory([&] { ExpectNothing(m, "x"); });
      expectNoMemory([&] { EXPECT_EQ(m.Send("y", big), 5000); });
      expectNoMemory([&] { m.PlotReal(big, 1); });
      expectNoMemory([&] { m.Plot(single, 1); });
      expectNoMemory([&] { m.Say("%5000d", 1); });
    });
  });
}

TEST_F(MLAccessTest, Get_Text_CopiesIt) {
  record.texts["t"] = "it's \"µ\"\n";
  record.texts["zero"] = std::string("ab\0cd", 5);
  EXPECT_EQ(SaidBy([](MLAccess &m) {
              char text[20];
              std::memset(text, 'x', sizeof text);
              EXPECT_EQ(m.Get("t", static_cast<char *>(nullptr)), 10);
              EXPECT_EQ(m.Get("t", text), 10);
              EXPECT_STREQ(text, "it's \"µ\"\n");
              EXPECT_EQ(text[11], 'x');
              EXPECT_EQ(m.Get("zero", text), 2);
              EXPECT_STREQ(text, "ab");
              EXPECT_EQ(m.Get("none", text), 0);
              EXPECT_STREQ(text, "");
            }),
            (Lines{"get text t", "get text t", "get text zero", "get text none"}));
}

// Plotting

std::string TimeText() {
  const std::time_t now = std::time(nullptr);
  const std::tm local = *std::localtime(&now);
  char date[40], time[40];
  std::strftime(date, sizeof date, "%d-%b-%y", &local);
  std::strftime(time, sizeof time, "%I:%M:%S", &local);
  return std::string("[") + (date[0] == '0' ? date + 1 : date) + " @ " + (time[0] == '0' ? time + 1 : time) +
         (local.tm_hour < 12 ? "am]" : "pm]");
}

Lines TimeDate(const std::string &n, const std::string &caption) {
  return {"oldunits = get( gcf, 'Units' ); oldaxes = (gca);",
          "set(get(ax" + n + ",'Title'),'Visible','off')",
          "ax" + n + "=axes('Units','Normal','Position',[ 0.99 -0.02 .01 .01] ,'Visible','off');",
          "set(get(ax" + n + ",'Title'),'Visible','on')",
          "title('" + TimeText() + "','HorizontalAlignment','right','Color','blue');",
          "set(get(fax" + n + ",'Title'),'Visible','off')",
          "fax" + n + "=axes('Units','Normal','Position',[ 0 -0.02 .01 .01] ,'Visible','off');",
          "set(get(fax" + n + ",'Title'),'Visible','on')",
          "title('" + caption + "','HorizontalAlignment','left','Color','blue');",
          "set( gcf, 'Units', oldunits ); axes(oldaxes);",
          "clear oldunits; clear oldaxes; clear ax" + n + "; clear fax" + n + ";"};
}

Lines Joined(const std::vector<Lines> &parts) {
  Lines all;
  for (const Lines &part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Lines PrePlot(int figure, const std::string &caption = "") {
  Lines lines;
  if (figure > 0) lines.push_back("figure(" + std::to_string(figure) + ");");
  lines.emplace_back("set(gcf,'DoubleBuffer','on'");
  return Joined({lines, TimeDate(std::to_string(figure), caption)});
}

Lines Labels(const std::string &title, const std::string &x = "x-axis", const std::string &y = "y-axis") {
  return {"title('" + title + "','FontSize',13,'Color','red');",
          "xlabel('" + x + "','FontSize',12,'FontWeight','bold');",
          "ylabel('" + y + "','FontSize',12,'FontWeight','bold');"};
}

class MLAccessPlot : public MLAccessTest {
protected:
  /// Compares within one second of the clock.
  template <class Call, class Expected>
  void Expect(Call call, Expected expected, const char *caption = nullptr) {
    Lines said, wanted;
    std::string before;
    do {
      before = TimeText();
      said = SaidBy(call, caption);
      wanted = expected();
    } while (before != TimeText());
    EXPECT_EQ(said, wanted);
  }

  /// Expects a plot in figure 2 without any texts, and one in figure 0 with all.
  template <class Call>
  void ExpectPlot(Call call, const Lines &sentAs2, const Lines &sentAs0, const std::string &command, int n) {
    const auto drawn = [&](const char *name, const char *style) {
      std::string line = command;
      for (std::size_t at; (at = line.find('@')) != std::string::npos;) line.replace(at, 1, name);
      line.replace(line.find('~'), 1, style);
      return Lines{line};
    };
    Expect([&](MLAccess &m) { call(m, 2, nullptr, nullptr, nullptr, nullptr); },
           [&] {
             return Joined({sentAs2,
                            PrePlot(2),
                            drawn("f2", "-"),
                            Labels("Figure 2: n=" + std::to_string(n)),
                            {"clear f2"}});
           });
    Expect([&](MLAccess &m) { call(m, 0, "A title", "Time", "Level", "r--"); },
           [&] {
             return Joined(
                 {sentAs0, PrePlot(0), drawn("f0", "r--"), Labels("A title", "Time", "Level"), {"clear f0"}});
           });
    EXPECT_EQ(result, MatlabOk);
  }

  template <class V> void ExpectRowPlot(const V &y) {
    const Lines sent2{"put f2 1x3: 1 -2 3"}, sent0{"put f0 1x3: 1 -2 3"};
    const std::string command = "plot((0:length(@)-1),@,'~'); grid on; zoom on;";
    ExpectPlot([&](MLAccess &m, int figure, auto... texts) { m.Plot(y, figure, texts...); }, sent2, sent0,
               command, 3);
    if constexpr (!std::is_same_v<V, VecInt32>)
      ExpectPlot([&](MLAccess &m, int figure, auto... texts) { m.Plot(y.GetPtr(), 3, figure, texts...); },
                 sent2, sent0, command, 3);
  }

  template <class V> void ExpectRowsPlot(const V &x, const V &y) {
    const auto sent = [](const std::string &name) {
      return Lines{"put " + name + " 1x2: 1 2", "put x99temp 1x2: 3 4",
                   name + "=[" + name + ";x99temp]; clear x99temp;"};
    };
    const std::string command = "plot(@(1,:),@(2,:),'~'); grid on; zoom on;";
    ExpectPlot([&](MLAccess &m, int figure, auto... texts) { m.Plot(x, y, figure, texts...); }, sent("f2"),
               sent("f0"), command, 2);
    if constexpr (!std::is_same_v<V, VecInt32>)
      ExpectPlot([&](MLAccess &m, int figure,
                     auto... texts) { m.Plot(x.GetPtr(), y.GetPtr(), 2, figure, texts...); },
                 sent("f2"), sent("f0"), command, 2);
  }
};

TEST_F(MLAccessPlot, Plot_OverIndices) {
  ExpectRowPlot(Of<VecReal32>({1, -2, 3}));
  ExpectRowPlot(Of<VecReal64>({1, -2, 3}));
  ExpectRowPlot(Of<VecInt32>({1, -2, 3}));
}

TEST_F(MLAccessPlot, Plot_OverX) {
  ExpectRowsPlot(Of<VecReal32>({1, 2}), Of<VecReal32>({3, 4}));
  ExpectRowsPlot(Of<VecReal64>({1, 2}), Of<VecReal64>({3, 4}));
  ExpectRowsPlot(Of<VecInt32>({1, 2}), Of<VecInt32>({3, 4}));
}

TEST_F(MLAccessPlot, Plot_Complex) {
  const Lines sent2{"put f2 1x2: 1/-1 2/-2"}, sent0{"put f0 1x2: 1/-1 2/-2"};
  const auto v32 = Of<VecCplx32>({{1, -1}, {2, -2}});
  const auto v64 = Of<VecCplx64>({{1, -1}, {2, -2}});
  ExpectPlot([&](MLAccess &m, int figure, auto... texts) { m.Plot(v32, figure, texts...); }, sent2, sent0,
             "plot(real(@),imag(@),'~'); grid on; zoom on;", 2);
  ExpectPlot([&](MLAccess &m, int figure, auto... texts) { m.Plot(v64, figure, texts...); }, sent2, sent0,
             "plot(real(@), imag(@),'~'); grid on; zoom on;", 2);
}

TEST_F(MLAccessPlot, Plot_RealAndImaginaryParts) {
  const auto v = Of<VecCplx32>({{1, -1}, {2, -2}});
  const std::string command = "plot((0:length(@)-1),@,'~'); grid on; zoom on;";
  ExpectPlot([&](MLAccess &m, int figure, auto... texts) { m.PlotReal(v, figure, texts...); },
             {"put f2 1x2: 1 2"}, {"put f0 1x2: 1 2"}, command, 2);
  ExpectPlot([&](MLAccess &m, int figure, auto... texts) { m.PlotImag(v, figure, texts...); },
             {"put f2 1x2: -1 -2"}, {"put f0 1x2: -1 -2"}, command, 2);
  Expect([&](MLAccess &m) { m.PlotRealImag(v, 2, "t", "x", "y", "b", "r"); },
         [&] {
           const auto drawn = [](const char *sent, const char *style) {
             return Joined({{sent},
                            PrePlot(2),
                            {std::string("plot((0:length(f2)-1),f2,'") + style + "'); grid on; zoom on;"},
                            Labels("t", "x", "y"),
                            {"clear f2"}});
           };
           return Joined(
               {drawn("put f2 1x2: 1 2", "b"), {"hold on"}, drawn("put f2 1x2: -1 -2", "r"), {"hold off"}});
         });
}

TEST_F(MLAccessPlot, Plot_InANegativeFigure_LabelsTheCurrentOneAndKeepsTheError) {
  const auto y = Of<VecReal64>({1, 2});
  record.failing = {"f-3"};
  Expect([&](MLAccess &m) { m.Plot(y, -3); },
         [&] {
           return Joined({{"put f-3 1x2: 1 2"},
                          PrePlot(-3),
                          {"plot((0:length(f-3)-1),f-3,'-'); grid on; zoom on;"},
                          Labels("Figure -3: n=2"),
                          {"clear f-3"}});
         });
  EXPECT_EQ(result, MatlabError);
}

TEST_F(MLAccessPlot, Plot_WhoseCommandFails_KeepsTheError) {
  record.failing = {"plot((0:length(f1)-1),f1,'bad'); grid on; zoom on;"};
  SaidBy([](MLAccess &m) { m.Plot(Of<VecReal64>({1, 2}), 1, nullptr, nullptr, nullptr, "bad"); });
  EXPECT_EQ(result, MatlabError);
}

TEST_F(MLAccessPlot, Caption_IsEscapedAndCut) {
  const auto expected = [](const std::string &caption) { return [=] { return TimeDate("1", caption); }; };
  const auto call = [](MLAccess &m) { m.PlotTimeDate(1); };
  Expect(call, expected("run\\_2 of C:\\\\data\\\\x\\_y"), "run_2 of C:\\data\\x_y");
  Expect(call, expected("it's %d"), "it's %d");
  Expect(call, expected(""), "");
  Expect(call, expected(std::string(100, 'c')), std::string(101, 'c').c_str());
  Expect(call, expected(std::string(99, 'c')), (std::string(99, 'c') + "_d").c_str());
  Expect(call, expected(std::string(98, 'c') + "\\_"), (std::string(98, 'c') + "_d").c_str());
  Expect(call, expected(std::string(98, 'c') + "µ"), (std::string(98, 'c') + "µµ").c_str());
  Expect(call, expected(std::string(99, 'c')), (std::string(99, 'c') + "µ").c_str());
}

TEST_F(MLAccessPlot, Parts_StandForThemselves) {
  Expect([](MLAccess &m) { m.PrePlot(4); }, [] { return PrePlot(4, "caption"); }, "caption");
  Expect([](MLAccess &m) { m.PlotTimeDate(-2); }, [] { return TimeDate("-2", ""); });
  EXPECT_EQ(
      SaidBy([](MLAccess &m) {
        m.PlotXlabel("x");
        m.PlotXlabel(nullptr);
        m.PlotYlabel("y");
        m.PlotYlabel(nullptr);
        m.PlotTitle(5, 7, "t");
        m.PlotTitle(5, 7, nullptr);
        m.PlotTitle(INT_MIN, INT_MIN, nullptr);
      }),
      (Lines{"xlabel('x','FontSize',12,'FontWeight','bold');",
             "xlabel('x-axis','FontSize',12,'FontWeight','bold');",
             "ylabel('y','FontSize',12,'FontWeight','bold');",
             "ylabel('y-axis','FontSize',12,'FontWeight','bold');", "title('t','FontSize',13,'Color','red');",
             "title('Figure 5: n=7','FontSize',13,'Color','red');",
             "title('Figure -2147483648: n=-2147483648','FontSize',13,'Color','red');"}));
  EXPECT_EQ(SaidBy([](MLAccess &m) { m.MLGetCurrentTime(); }), Lines());
}

TEST_F(MLAccessPlot, Time_OfEveryHour_HasTwelveHoursAndNoLeadingZero) {
  const char *const zone = std::getenv("TZ");
  const std::optional<std::string> before = zone != nullptr ? std::optional<std::string>(zone) : std::nullopt;
  for (int hour = 0; hour < 24; ++hour) {
    setenv("TZ", ("X" + std::to_string(hour)).c_str(), 1);
    tzset();
    Expect([](MLAccess &m) { m.PlotTimeDate(1); }, [] { return TimeDate("1", ""); });
  }
  before ? setenv("TZ", before->c_str(), 1) : unsetenv("TZ");
  tzset();
}

} // namespace
