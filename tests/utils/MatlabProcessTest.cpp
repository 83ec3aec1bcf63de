#include "qorn/utils/MatlabProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/Allocations.h"
#include "support/Capture.h"
#include "support/Octave.h"
#include "support/TempFile.h"

namespace {

using namespace QORN;
using test::kOctave;
using test::OpenFiles;
using test::PrintedBy;
using test::TempFile;

double SecondsOf(const std::function<void()> &call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

bool HasChildren() { return waitpid(-1, nullptr, WNOHANG) >= 0 || errno != ECHILD; }

// The same bits, also of values that do not compare.
void ExpectSame(const std::vector<double> &got, const std::vector<double> &expected) {
  ASSERT_EQ(got.size(), expected.size());
  EXPECT_EQ(std::memcmp(got.data(), expected.data(), got.size() * sizeof(double)), 0);
}

// One interpreter for all tests of a process; a test that spoils it takes one of its own.
class Octave : public testing::Test {
protected:
  static void TearDownTestSuite() { shared.reset(); }

  void SetUp() override {
    QORN_SKIP_WITHOUT_OCTAVE();
    if (!shared) shared = std::make_unique<MatlabProcess>(kOctave);
    ASSERT_TRUE(shared->IsInitialized()) << shared->GetLastMessage();
    shared->SetTimeLimit(MatlabProcess::kDefaultTimeLimit);
  }

  /// What the console shows of code.
  static std::string Shown(const std::string &code) {
    return PrintedBy([&] {
      EXPECT_TRUE(shared->SetVisible(true));
      EXPECT_TRUE(shared->Execute(code.c_str())) << shared->GetLastMessage();
      EXPECT_TRUE(shared->SetVisible(false));
    });
  }

  static double Value(const char *name) {
    double value = 0;
    EXPECT_TRUE(shared->GetFullMatrix(name, &value, nullptr, 1, 1)) << shared->GetLastMessage();
    return value;
  }

  static std::unique_ptr<MatlabProcess> shared;
};
std::unique_ptr<MatlabProcess> Octave::shared;

TEST_F(Octave, Execute_Code_RunsInTheBaseWorkspace) {
  EXPECT_TRUE(shared->Execute("x = 6 * 7;"));
  EXPECT_EQ(shared->GetLastResult(), MatlabOk);
  EXPECT_STREQ(shared->GetLastMessage(), "");
  EXPECT_EQ(Value("x"), 42);
  EXPECT_TRUE(shared->Execute("y = x + 1; function z = twice(z), z = 2 * z; end"));
  EXPECT_TRUE(shared->Execute("y = twice(y);"));
  EXPECT_EQ(Value("y"), 86);
  EXPECT_TRUE(shared->Execute(""));
}

TEST_F(Octave, Execute_Error_LeavesItsMessage) {
  EXPECT_FALSE(shared->Execute("error('too %s by %d dB', 'hot', 3)"));
  EXPECT_EQ(shared->GetLastResult(), MatlabError);
  EXPECT_STREQ(shared->GetLastMessage(), "too hot by 3 dB");
  EXPECT_TRUE(shared->Execute("x = 1;"));
  EXPECT_STREQ(shared->GetLastMessage(), "");
}

TEST_F(Octave, Execute_CodeThatIsNotWhole_IsAnErrorOfItsOwn) {
  for (const char *code : {"set(gcf,'DoubleBuffer','on'",
                           "x = [1 2",
                           "x = {1",
                           "if 1",
                           "for i = 1:3, x = i",
                           "while true",
                           "'",
                           "\"abc",
                           "x = 'abc",
                           "x(",
                           "end",
                           "endfunction",
                           "catch",
                           "break",
                           "continue",
                           "unwind_protect",
                           "function f(",
                           ")",
                           "try, x = 1",
                           "x = 1; end; y = [",
                           "\x01\xff"}) {
    EXPECT_FALSE(shared->Execute(code)) << code;
    EXPECT_EQ(shared->GetLastResult(), MatlabError) << code;
    EXPECT_STRNE(shared->GetLastMessage(), "") << code;
    EXPECT_TRUE(shared->Execute("seven = 3 + 4;")) << code << shared->GetLastMessage();
    EXPECT_EQ(Value("seven"), 7) << code;
    EXPECT_TRUE(shared->Execute("clear seven")) << code;
  }
  // These are whole to the interpreter, though they look as if something followed.
  for (const char *code : {"return", "x = 1 % and more", "x = 1 ...", "%{\nabc", "# no code", "\\"}) {
    EXPECT_TRUE(shared->Execute(code)) << code << shared->GetLastMessage();
    EXPECT_TRUE(shared->Execute("x = 1;")) << code;
  }
}

TEST_F(Octave, Execute_SeveralLines_RunsThemAll) {
  EXPECT_TRUE(shared->Execute("x = 0;\nfor i = 1:10\n  x = x + i; % sum\nend\n"));
  EXPECT_EQ(Value("x"), 55);
}

TEST_F(Octave, Execute_LongCode_IsNotCut) {
  std::string code = "x = 0;";
  for (int i = 0; i < 20000; ++i) code += "x = x + 1;";
  EXPECT_TRUE(shared->Execute(code.c_str())) << shared->GetLastMessage();
  EXPECT_EQ(Value("x"), 20000);
}

TEST_F(Octave, Execute_LongError_IsNotCut) {
  EXPECT_FALSE(shared->Execute("error('%s', repmat('x', 1, 100000))"));
  EXPECT_EQ(shared->GetLastMessage(), std::string(100000, 'x'));
}

TEST_F(Octave, Execute_ClearingAll_LeavesTheSessionUsable) {
  for (const char *code :
       {"clear all", "clear -all", "fclose all;", "clc", "more on", "more off", "close all"})
    EXPECT_TRUE(shared->Execute(code)) << code << shared->GetLastMessage();
  const double x = 1;
  EXPECT_TRUE(shared->PutFullMatrix("x", &x, nullptr, 1, 1));
  EXPECT_EQ(Value("x"), 1);
}

TEST_F(Octave, Execute_VariablesThatHideFunctions_DoNotDisturb) {
  for (const char *name :
       {"eval", "fopen", "fread", "fwrite", "fclose", "fprintf", "char", "sscanf", "double", "size", "exist",
        "assignin", "lasterr", "error", "reshape", "real", "complex"}) {
    const double x = 5;
    EXPECT_TRUE(shared->PutFullMatrix(name, &x, &x, 1, 1)) << name << shared->GetLastMessage();
    EXPECT_EQ(Value(name), 5) << name;
    EXPECT_FALSE(shared->Execute("x = [")) << name;
    EXPECT_TRUE(shared->PutCharArray("text", "abc")) << name;
    std::string text;
    EXPECT_TRUE(shared->GetCharArray("text", text)) << name;
    EXPECT_TRUE(shared->Execute((std::string("clear ") + name).c_str())) << name;
  }
}

TEST_F(Octave, AllOperations_LeaveNoVariableOfTheirOwnAndKeepTheLastAnswer) {
  EXPECT_TRUE(shared->Execute("clear all; 40 + 2;"));
  const double x = 1;
  double y[2];
  std::string text;
  EXPECT_TRUE(shared->PutFullMatrix("x", &x, &x, 1, 1));
  EXPECT_TRUE(shared->GetFullMatrix("x", y, y + 1, 1, 1));
  EXPECT_FALSE(shared->GetFullMatrix("x", y, nullptr, 1, 2));
  EXPECT_FALSE(shared->PutFullMatrix("1x", &x, nullptr, 1, 1));
  EXPECT_TRUE(shared->PutCharArray("text", "abc"));
  EXPECT_TRUE(shared->GetCharArray("text", text));
  EXPECT_FALSE(shared->GetCharArray("x", text));
  EXPECT_FALSE(shared->Execute("error('x')"));
  EXPECT_TRUE(shared->Execute("names = strjoin(who', ' ');"));
  EXPECT_TRUE(shared->GetCharArray("names", text));
  EXPECT_EQ(text, "ans text x");
  EXPECT_EQ(Value("ans"), 42);
}

// Values that a way through text would change.
std::vector<double> Awkward(std::size_t count) {
  using Limits = std::numeric_limits<double>;
  std::vector<double> values = {
      0.0,           -0.0,          Limits::infinity(), -Limits::infinity(),  Limits::quiet_NaN(),
      Limits::min(), Limits::max(), Limits::lowest(),   Limits::denorm_min(), -Limits::denorm_min(),
      0.1,           1.0 / 3.0,     std::nan("0x123")};
  std::mt19937_64 random(7);
  while (values.size() < count) {
    const std::uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isnan(value)) values.push_back(value);
  }
  values.resize(count);
  return values;
}

TEST_F(Octave, Matrices_OfAnySize_KeepAllBits) {
  struct Size {
    int rows, columns;
  };
  for (const Size size : {Size{1, 1}, {1, 13}, {13, 1}, {3, 5}, {1, 100003}, {250, 400}}) {
    const auto count = static_cast<std::size_t>(size.rows) * static_cast<std::size_t>(size.columns);
    const std::vector<double> re = Awkward(count), im(re.rbegin(), re.rend());
    std::vector<double> gotRe(count, 1), gotIm(count, 1);
    EXPECT_TRUE(shared->PutFullMatrix("real_", re.data(), nullptr, size.rows, size.columns));
    EXPECT_TRUE(shared->GetFullMatrix("real_", gotRe.data(), gotIm.data(), size.rows, size.columns));
    ExpectSame(gotRe, re);
    ExpectSame(gotIm, std::vector<double>(count, 0.0));
    EXPECT_TRUE(shared->PutFullMatrix("complex_", re.data(), im.data(), size.rows, size.columns));
    EXPECT_TRUE(shared->GetFullMatrix("complex_", gotRe.data(), gotIm.data(), size.rows, size.columns));
    ExpectSame(gotRe, re);
    ExpectSame(gotIm, im);
    EXPECT_TRUE(shared->GetFullMatrix("complex_", gotRe.data(), nullptr, size.rows, size.columns));
    ExpectSame(gotRe, re);
  }
}

TEST_F(Octave, Matrices_GoRowByRow) {
  const double x[] = {1, 2, 3, 4, 5, 6};
  EXPECT_TRUE(shared->PutFullMatrix("x", x, nullptr, 2, 3));
  EXPECT_TRUE(shared->Execute("y = isequal(x, [1 2 3; 4 5 6]); z = x + 10;"));
  EXPECT_EQ(Value("y"), 1);
  std::vector<double> z(6);
  EXPECT_TRUE(shared->GetFullMatrix("z", z.data(), nullptr, 2, 3));
  EXPECT_EQ(z, (std::vector<double>{11, 12, 13, 14, 15, 16}));
}

TEST_F(Octave, Matrices_Empty_KeepTheirSize) {
  struct Size {
    int rows, columns;
  };
  for (const Size size : {Size{1, 0}, {0, 1}, {0, 0}, {0, 7}}) {
    EXPECT_TRUE(shared->PutFullMatrix("x", nullptr, nullptr, size.rows, size.columns));
    EXPECT_TRUE(shared->Execute("s = size(x);"));
    double s[2];
    EXPECT_TRUE(shared->GetFullMatrix("s", s, nullptr, 1, 2));
    EXPECT_EQ(s[0], size.rows);
    EXPECT_EQ(s[1], size.columns);
    EXPECT_TRUE(shared->GetFullMatrix("x", nullptr, nullptr, size.rows, size.columns));
  }
}

TEST_F(Octave, GetFullMatrix_OfOtherTypes_GivesDoubles) {
  const std::vector<double> expected = {1, 0, 255};
  for (const char *code : {"x = uint8([1 0 255]);", "x = single([1 0 255]);", "x = int64([1 0 255]);",
                           "x = sparse([1 0 255]);", "x = char([1 0 255]);"}) {
    std::vector<double> x(3);
    EXPECT_TRUE(shared->Execute(code)) << code;
    EXPECT_TRUE(shared->GetFullMatrix("x", x.data(), nullptr, 1, 3)) << code << shared->GetLastMessage();
    EXPECT_EQ(x, expected) << code;
  }
  EXPECT_TRUE(shared->Execute("x = true; y = 1:3;"));
  EXPECT_EQ(Value("x"), 1);
  std::vector<double> y(3);
  EXPECT_TRUE(shared->GetFullMatrix("y", y.data(), nullptr, 1, 3));
  EXPECT_EQ(y, (std::vector<double>{1, 2, 3}));
}

TEST_F(Octave, GetFullMatrix_OfWhatIsNoSuchMatrix_IsRefused) {
  EXPECT_TRUE(shared->Execute("clear all; x = [1 2 3]; c = {1 2 3}; s.a = 1; n = zeros(1, 3, 2);"));
  double x[6];
  for (const char *name : {"none", "c", "s", "n", "s.a", "x + 1", "x(1)", "1", "sin", "", "error('x')", "x;y",
                           "x\n", "'", "[", "ü"}) {
    EXPECT_FALSE(shared->GetFullMatrix(name, x, nullptr, 1, 3)) << name;
    EXPECT_EQ(shared->GetLastResult(), MatlabError) << name;
    EXPECT_STRNE(shared->GetLastMessage(), "") << name;
  }
  EXPECT_FALSE(shared->GetFullMatrix("none", x, nullptr, 1, 3));
  EXPECT_STREQ(shared->GetLastMessage(), "there is no such variable");
  EXPECT_FALSE(shared->GetFullMatrix("x", x, nullptr, 3, 1));
  EXPECT_STREQ(shared->GetLastMessage(), "the variable has another size");
  EXPECT_FALSE(shared->GetFullMatrix("x", x, nullptr, 1, 2));
  EXPECT_FALSE(shared->GetFullMatrix("x", x, nullptr, 2147483647, 2147483647));
  EXPECT_EQ(shared->GetLastResult(), MatlabNoMemory);
  EXPECT_TRUE(shared->GetFullMatrix("x", x, nullptr, 1, 3));
}

TEST_F(Octave, PutFullMatrix_ToWhatIsNoName_IsRefused) {
  const double x = 1;
  for (const char *name : {"f-1", "1x", "", "x y", "x;y", "x(1)", "x\n", "if", "'", "ü"}) {
    EXPECT_FALSE(shared->PutFullMatrix(name, &x, nullptr, 1, 1)) << name;
    EXPECT_EQ(shared->GetLastResult(), MatlabError) << name;
    EXPECT_FALSE(shared->PutCharArray(name, "abc")) << name;
  }
}

TEST_F(Octave, Texts_OfAnyCharacters_ArriveUnharmed) {
  std::string all;
  for (int c = 1; c < 256; ++c) all += static_cast<char>(c);
  for (const std::string &sent :
       {std::string(), std::string("it's \"so\"; % \\n 100 %d"), std::string("two\nlines\r\n\ttab"),
        std::string("5 µV, 10 kΩ, 信号"), all, std::string(3000000, 'x') + "y"}) {
    std::string got = "other";
    EXPECT_TRUE(shared->PutCharArray("text", sent.c_str())) << shared->GetLastMessage();
    EXPECT_TRUE(shared->GetCharArray("text", got)) << shared->GetLastMessage();
    EXPECT_TRUE(got == sent) << sent.substr(0, 100);
  }
  EXPECT_TRUE(shared->PutCharArray("text", "a'b"));
  EXPECT_TRUE(shared->Execute("x = isequal(text, 'a''b') && ischar(text);"));
  EXPECT_EQ(Value("x"), 1);
}

TEST_F(Octave, GetCharArray_OfRows_JoinsThem) {
  EXPECT_TRUE(shared->Execute("x = ['abc'; 'def']; y = 5; z = ['a' 0 'b'];"));
  std::string text;
  EXPECT_TRUE(shared->GetCharArray("x", text));
  EXPECT_EQ(text, "abcdef");
  EXPECT_TRUE(shared->GetCharArray("z", text));
  EXPECT_EQ(text, std::string("a\0b", 3));
  text = "old";
  EXPECT_FALSE(shared->GetCharArray("y", text));
  EXPECT_STREQ(shared->GetLastMessage(), "the variable is no text");
  EXPECT_EQ(text, "");
  EXPECT_FALSE(shared->GetCharArray("none", text));
}

TEST_F(Octave, Visible_True_ShowsTheConsole) {
  bool visible = true;
  EXPECT_TRUE(shared->GetVisible(visible));
  EXPECT_FALSE(visible);
  EXPECT_EQ(PrintedBy([] { shared->Execute("disp('hidden')"); }), "");
  EXPECT_EQ(Shown("x = 5"), "x = 5\n");
  EXPECT_EQ(Shown("fprintf('no end of line')"), "no end of line");
  EXPECT_EQ(Shown("fprintf(stderr, 'of stderr\\n')"), "of stderr\n");
  EXPECT_EQ(Shown("fprintf('%s', repmat('y', 1, 300000))"), std::string(300000, 'y'));
  EXPECT_TRUE(shared->SetVisible(true));
  EXPECT_TRUE(shared->GetVisible(visible));
  EXPECT_TRUE(visible);
  EXPECT_TRUE(shared->SetVisible(false));
}

TEST_F(Octave, NullArguments_AreRefused) {
  double x = 0;
  std::string text = "old";
  EXPECT_FALSE(shared->Execute(nullptr));
  EXPECT_EQ(shared->GetLastResult(), MatlabError);
  EXPECT_FALSE(shared->PutFullMatrix(nullptr, &x, nullptr, 1, 1));
  EXPECT_FALSE(shared->PutFullMatrix("x", nullptr, nullptr, 1, 1));
  EXPECT_FALSE(shared->PutFullMatrix("x", &x, nullptr, -1, 1));
  EXPECT_FALSE(shared->GetFullMatrix(nullptr, &x, nullptr, 1, 1));
  EXPECT_FALSE(shared->GetFullMatrix("x", nullptr, nullptr, 1, 1));
  EXPECT_FALSE(shared->GetFullMatrix("x", &x, nullptr, 1, -1));
  EXPECT_FALSE(shared->PutCharArray(nullptr, ""));
  EXPECT_FALSE(shared->PutCharArray("x", nullptr));
  EXPECT_FALSE(shared->GetCharArray(nullptr, text));
  EXPECT_EQ(text, "");
}

TEST_F(Octave, Operations_WithoutMemory_ReportIt) {
  MatlabProcess engine(kOctave);
  ASSERT_TRUE(engine.IsInitialized());
  {
    const test::AllocationLimit none(0);
    EXPECT_FALSE(engine.Execute("a longer text than a string holds by itself"));
  }
  EXPECT_EQ(engine.GetLastResult(), MatlabNoMemory);
}

TEST_F(Octave, Operations_BeyondTheFileLimit_ReportItWithoutASignal) {
  rlimit before;
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit few{4096, before.rlim_max};
  setrlimit(RLIMIT_FSIZE, &few);
  std::vector<double> x(1000);
  EXPECT_FALSE(shared->PutFullMatrix("x", x.data(), nullptr, 1, 1000));
  EXPECT_EQ(shared->GetLastResult(), MatlabNoMemory);
  setrlimit(RLIMIT_FSIZE, &before);
  EXPECT_TRUE(shared->PutFullMatrix("x", x.data(), nullptr, 1, 1000));
}

// What is small is written when the file is closed, and what is large before.
TEST_F(Octave, Reading_WhatTheInterpreterCouldNotWrite_Fails) {
  const TempFile script(std::string("#!/bin/sh\nexec ").append(kOctave).append(" \"$@\" 3<>/dev/full\n"));
  chmod(script.Path(), 0700);
  MatlabProcess engine(script.Path());
  ASSERT_TRUE(engine.IsInitialized()) << engine.GetLastMessage();
  const auto expectRefused = [&](bool done, const std::string &what) {
    EXPECT_FALSE(done) << what;
    EXPECT_EQ(engine.GetLastResult(), MatlabError) << what;
    EXPECT_STREQ(engine.GetLastMessage(), "there is no memory to share") << what;
  };
  for (const int n : {1, 3, 100000}) {
    const std::string size = std::to_string(n);
    ASSERT_TRUE(
        engine.Execute(("x = (1+2i) * ones(1, " + size + "); t = repmat('t', 1, " + size + ");").c_str()));
    std::vector<double> re(static_cast<std::size_t>(n)), im(re);
    std::string text = "old";
    expectRefused(engine.GetFullMatrix("x", re.data(), nullptr, 1, n), "real parts " + size);
    expectRefused(engine.GetFullMatrix("x", re.data(), im.data(), 1, n), "both parts " + size);
    expectRefused(engine.GetCharArray("t", text), "text " + size);
    EXPECT_EQ(text, "");
  }
  EXPECT_TRUE(engine.Execute("if ! isempty(fopen('all')), error('a file is left open'), end"))
      << engine.GetLastMessage();
}

TEST_F(Octave, TwoEngines_HaveWorkspacesOfTheirOwn) {
  MatlabProcess other(kOctave);
  ASSERT_TRUE(other.IsInitialized());
  const double one = 1, two = 2;
  EXPECT_TRUE(shared->PutFullMatrix("x", &one, nullptr, 1, 1));
  EXPECT_TRUE(other.PutFullMatrix("x", &two, nullptr, 1, 1));
  EXPECT_EQ(Value("x"), 1);
  double x;
  EXPECT_TRUE(other.GetFullMatrix("x", &x, nullptr, 1, 1));
  EXPECT_EQ(x, 2);
  EXPECT_FALSE(other.Execute("quit"));
  EXPECT_TRUE(shared->Execute("x = x + 1;"));
}

// What happens to an engine whose interpreter is gone.
void ExpectUnusable(CMatlabEngine &engine) {
  EXPECT_FALSE(engine.IsInitialized());
  double x = 0;
  bool visible = true;
  std::string text = "old";
  EXPECT_FALSE(engine.Execute("x = 1;"));
  EXPECT_EQ(engine.GetLastResult(), MatlabNotUsable);
  EXPECT_FALSE(engine.PutFullMatrix("x", &x, nullptr, 1, 1));
  EXPECT_FALSE(engine.GetFullMatrix("x", &x, nullptr, 1, 1));
  EXPECT_FALSE(engine.PutCharArray("x", ""));
  EXPECT_FALSE(engine.GetCharArray("x", text));
  EXPECT_FALSE(engine.GetVisible(visible));
  EXPECT_FALSE(engine.SetVisible(true));
  EXPECT_EQ(engine.GetLastResult(), MatlabNotUsable);
  EXPECT_EQ(text, "");
  EXPECT_FALSE(visible);
}

TEST_F(Octave, Interpreter_ThatQuits_IsMissed) {
  for (const char *code : {"quit", "exit(3)", "kill(getpid(), 9)"}) {
    MatlabProcess engine(kOctave);
    ASSERT_TRUE(engine.IsInitialized());
    EXPECT_FALSE(engine.Execute(code)) << code;
    EXPECT_EQ(engine.GetLastResult(), MatlabEnded) << code;
    EXPECT_STREQ(engine.GetLastMessage(), "the interpreter has ended");
    ExpectUnusable(engine);
  }
  EXPECT_FALSE(std::filesystem::exists("octave-workspace"));
}

// The interpreter acts on this signal when it comes to it, and may answer before.
TEST_F(Octave, Interpreter_AskedToEnd_IsMissed) {
  MatlabProcess engine(kOctave);
  ASSERT_TRUE(engine.IsInitialized());
  engine.Execute("kill(getpid(), 15)");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (engine.Execute("pause(0.01)") && std::chrono::steady_clock::now() < end) {
  }
  EXPECT_FALSE(engine.IsInitialized());
  ExpectUnusable(engine);
  EXPECT_FALSE(std::filesystem::exists("octave-workspace"));
}

TEST_F(Octave, Interpreter_KilledBetweenCalls_IsMissed) {
  const int files = OpenFiles();
  {
    MatlabProcess engine(kOctave);
    double pid = 0;
    ASSERT_TRUE(engine.Execute("p = getpid();"));
    ASSERT_TRUE(engine.GetFullMatrix("p", &pid, nullptr, 1, 1));
    kill(static_cast<pid_t>(pid), SIGKILL);
    std::vector<double> x(1000000);
    EXPECT_FALSE(engine.PutFullMatrix("x", x.data(), nullptr, 1, 1000000)); // no SIGPIPE
    EXPECT_EQ(engine.GetLastResult(), MatlabEnded);
    EXPECT_NE(kill(static_cast<pid_t>(pid), 0), 0) << "a zombie is left";
    ExpectUnusable(engine);
  }
  EXPECT_EQ(OpenFiles(), files);
}

TEST_F(Octave, Interpreter_ThatDiesAndLeavesItsOutputToAnother_IsMissed) {
  MatlabProcess engine(kOctave, 20);
  ASSERT_TRUE(engine.IsInitialized());
  EXPECT_LT(SecondsOf([&] { engine.Execute("system('sleep 30 </dev/null &'); quit"); }), 10);
  EXPECT_EQ(engine.GetLastResult(), MatlabEnded);
}

TEST_F(Octave, Interpreter_ThatIsStuck_IsEndedAfterTheTimeLimit) {
  for (const char *code : {"while true; end", "while true; disp(1); end", "input('')", "pause(1000)",
                           "system('cat');", "system('sleep 1000');"}) {
    MatlabProcess engine(kOctave);
    double pid = 0;
    ASSERT_TRUE(engine.Execute("p = getpid();"));
    ASSERT_TRUE(engine.GetFullMatrix("p", &pid, nullptr, 1, 1));
    engine.SetTimeLimit(0.3);
    EXPECT_EQ(engine.GetTimeLimit(), 0.3);
    const double seconds = SecondsOf([&] { EXPECT_FALSE(engine.Execute(code)) << code; });
    EXPECT_EQ(engine.GetLastResult(), MatlabTimedOut) << code;
    EXPECT_STREQ(engine.GetLastMessage(), "no answer within the time limit");
    EXPECT_GE(seconds, 0.3) << code;
    EXPECT_LT(seconds, 10) << code;
    EXPECT_NE(kill(static_cast<pid_t>(pid), 0), 0) << "a zombie is left";
    ExpectUnusable(engine);
  }
}

TEST_F(Octave, TimeLimit_ThatIsNone_EndsAtOnce) {
  for (const double limit : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
    MatlabProcess engine(kOctave);
    engine.SetTimeLimit(limit);
    EXPECT_FALSE(engine.Execute("x = 1;"));
    EXPECT_EQ(engine.GetLastResult(), MatlabTimedOut);
  }
  MatlabProcess engine(kOctave, std::numeric_limits<double>::infinity());
  EXPECT_TRUE(engine.Execute("x = 1;"));
}

TEST_F(Octave, Host_KeepsItsSignalsAndFiles) {
  const int files = OpenFiles();
  constexpr int kFew = 100;
  std::vector<int> flags;
  for (int descriptor = 0; descriptor < kFew; ++descriptor) flags.push_back(fcntl(descriptor, F_GETFD));
  std::vector<struct sigaction> before(65), after(65);
  for (int signal = 1; signal < 65; ++signal)
    sigaction(signal, nullptr, &before[static_cast<std::size_t>(signal)]);
  sigset_t maskBefore, maskAfter;
  pthread_sigmask(SIG_BLOCK, nullptr, &maskBefore);
  const auto expectUnchanged = [&] {
    for (std::size_t signal = 1; signal < 65; ++signal) {
      sigaction(static_cast<int>(signal), nullptr, &after[signal]);
      EXPECT_EQ(before[signal].sa_handler, after[signal].sa_handler) << signal;
      EXPECT_EQ(before[signal].sa_flags, after[signal].sa_flags) << signal;
    }
    pthread_sigmask(SIG_BLOCK, nullptr, &maskAfter);
    for (int signal = 1; signal < 65; ++signal)
      EXPECT_EQ(sigismember(&maskBefore, signal), sigismember(&maskAfter, signal)) << signal;
  };
  {
    MatlabProcess engine(kOctave);
    EXPECT_TRUE(engine.Execute("x = 1;"));
    expectUnchanged();
    EXPECT_EQ(OpenFiles(), files + 3);
    for (int descriptor = 0; descriptor < kFew; ++descriptor)
      EXPECT_TRUE(flags[static_cast<std::size_t>(descriptor)] >= 0 ||
                  (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0) // -1 if there is none
          << descriptor;
  }
  expectUnchanged();
  EXPECT_EQ(OpenFiles(), files);
}

TEST_F(Octave, Host_ThatIgnoresItsChildren_IsServed) {
  const auto old = std::signal(SIGCHLD, SIG_IGN);
  {
    MatlabProcess engine(kOctave);
    EXPECT_TRUE(engine.Execute("x = 1;"));
    EXPECT_FALSE(engine.Execute("quit"));
    EXPECT_EQ(engine.GetLastResult(), MatlabEnded);
  }
  std::signal(SIGCHLD, old);
}

TEST_F(Octave, Host_WithoutStandardStreams_IsServed) {
  const pid_t child = fork();
  if (child == 0) {
    for (int descriptor = 0; descriptor < 3; ++descriptor) close(descriptor);
    MatlabProcess engine(kOctave);
    const double x[] = {1, 2};
    double y[2] = {};
    const bool done = engine.PutFullMatrix("x", x, nullptr, 1, 2) && engine.Execute("y = [x(2) x(1)];") &&
                      engine.GetFullMatrix("y", y, nullptr, 1, 2) && y[0] == 2 && y[1] == 1;
    _exit(done ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

TEST_F(Octave, Child_HasNoneOfTheHostsFiles) {
  const TempFile file;
  const int open1 = open(file.Path(), O_RDONLY); // inherited by an ordinary child
  ASSERT_GE(open1, 0);
  MatlabProcess engine(kOctave);
  std::string links;
  EXPECT_TRUE(engine.Execute("[~, t] = system('ls -l /proc/$PPID/fd');"));
  EXPECT_TRUE(engine.GetCharArray("t", links));
  EXPECT_EQ(links.find(file.Path()), std::string::npos) << links;
  EXPECT_NE(links.find("3 -> "), std::string::npos) << links;
  close(open1);
}

// Interpreters that cannot be trusted. A script for the shell, with the name that answers bear in $name.
class Impostor {
public:
  explicit Impostor(const std::string &onLine)
      : m_file(
            "#!/bin/sh\n"
            "answer() { printf '%s %s %s %s\\n' \"$name\" \"$1\" \"$2\" \"$3\"; }\n"
            "number=0\n"
            "while read -r line; do\n"
            "  number=$((number + 1))\n"
            "  name=$(printf '%s' \"$line\" | sed \"s/^.*'\\([0-9a-f]*\\)','\\([0-9a-f]*\\)',.*$/\\1\\2/\")\n"
            "  if [ $number = 1 ]; then answer 1 6; continue; fi\n" +
            onLine + "\ndone\n") {
    chmod(m_file.Path(), 0700);
  }
  const char *Path() const { return m_file.Path(); }

private:
  TempFile m_file;
};

TEST(MatlabProcess, Construction_OfWhatIsNoInterpreter_IsNotInitialized) {
  const int files = OpenFiles();
  for (const char *name : {test::kNoSuchFile, "/", "", "no-such-program-anywhere"}) {
    MatlabProcess engine(name);
    EXPECT_EQ(engine.GetLastResult(), MatlabEnded) << name;
    EXPECT_STREQ(engine.GetLastMessage(), "no interpreter could be started");
    ExpectUnusable(engine);
  }
  for (const char *name : {"true", "false", "/bin/true"}) {
    MatlabProcess engine(name);
    EXPECT_EQ(engine.GetLastResult(), MatlabEnded) << name;
    EXPECT_STREQ(engine.GetLastMessage(), "the interpreter has ended");
    ExpectUnusable(engine);
  }
  EXPECT_EQ(OpenFiles(), files);
  EXPECT_FALSE(HasChildren());
}

TEST(MatlabProcess, Construction_OfOneThatDoesNotAnswer_EndsAfterTheTimeLimit) {
  for (const char *script :
       {"#!/bin/sh\nsleep 1000\n", "#!/bin/sh\nwhile :; do echo noise; done\n", "#!/bin/sh\nexec cat\n",
        "#!/bin/sh\ntrap '' TERM HUP INT\nwhile :; do :; done\n"}) {
    const TempFile file(script);
    chmod(file.Path(), 0700);
    std::unique_ptr<MatlabProcess> engine;
    EXPECT_LT(SecondsOf([&] { engine = std::make_unique<MatlabProcess>(file.Path(), 0.2); }), 10);
    EXPECT_EQ(engine->GetLastResult(), MatlabTimedOut) << script;
    ExpectUnusable(*engine);
  }
  EXPECT_FALSE(HasChildren());
}

TEST(MatlabProcess, Construction_WithoutMemory_Throws) {
  test::ExpectThrown(
      [] {
        const test::AllocationLimit none(0);
        MatlabProcess engine;
      },
      11001, "memory allocation error", "utils\\MatlabAccess");
}

TEST(MatlabProcess, Answers_ThatAreNone_AreNotTaken) {
  // Of another line, with another status, without numbers; then the right one.
  const Impostor impostor("answer 1 0; answer 99999999999999999999 0; answer $number 7; answer; echo $name;"
                          "printf '%s' $name; answer $number 2 68e4c4; answer $number 0");
  MatlabProcess engine(impostor.Path(), 20);
  ASSERT_TRUE(engine.IsInitialized()) << engine.GetLastMessage();
  EXPECT_FALSE(engine.Execute("x"));
  EXPECT_EQ(engine.GetLastResult(), MatlabError);
  EXPECT_STREQ(engine.GetLastMessage(), "h\xe4\xc4");
}

TEST(MatlabProcess, Answers_WithoutAnEnd_AreBounded) {
  const Impostor impostor("printf '%s %s 2 ' $name $number; while :; do printf '%065536d' 0; done");
  MatlabProcess engine(impostor.Path(), 20);
  ASSERT_TRUE(engine.IsInitialized());
  EXPECT_FALSE(engine.Execute("x"));
  EXPECT_EQ(engine.GetLastResult(), MatlabError);
  EXPECT_LT(std::strlen(engine.GetLastMessage()), 2000000U);
}

TEST(MatlabProcess, Matrices_ThatAreCutOff_AreErrors) {
  const Impostor impostor("printf abc >/proc/self/fd/3; answer $number 0");
  MatlabProcess engine(impostor.Path(), 20);
  ASSERT_TRUE(engine.IsInitialized());
  std::vector<double> x(1000);
  EXPECT_FALSE(engine.GetFullMatrix("x", x.data(), nullptr, 10, 100));
  EXPECT_EQ(engine.GetLastResult(), MatlabError);
  EXPECT_STREQ(engine.GetLastMessage(), "there is no memory to share");
}

// The bytes of a text stand behind their number, a double.
TEST(MatlabProcess, Texts_ThatAreNotAsLongAsTheyShould_AreErrors) {
  const std::string three = "\\0\\0\\0\\0\\0\\0\\010@", none = "\\0\\0\\0\\0\\0\\0\\0\\0",
                    notANumber = "\\0\\0\\0\\0\\0\\0\\370\\177", negative = "\\0\\0\\0\\0\\0\\0\\360\\277";
  const auto get = [](const std::string &file, std::string &text) {
    const Impostor impostor("printf '" + file + "' >/proc/self/fd/3; answer $number 0");
    MatlabProcess engine(impostor.Path(), 20);
    const bool done = engine.GetCharArray("x", text);
    EXPECT_EQ(engine.GetLastResult(), done ? MatlabOk : MatlabError) << file;
    EXPECT_STREQ(engine.GetLastMessage(), done ? "" : "there is no memory to share") << file;
    return done;
  };
  std::string text;
  EXPECT_TRUE(get(three + "abc", text));
  EXPECT_EQ(text, "abc");
  EXPECT_TRUE(get(none, text));
  EXPECT_EQ(text, "");
  for (const std::string &file : {std::string(), std::string("abc"), three, three + "ab", three + "abcd",
                                  none + "a", notANumber, notANumber + "abc", negative}) {
    text = "old";
    EXPECT_FALSE(get(file, text)) << file;
    EXPECT_EQ(text, "") << file;
  }
}

TEST(MatlabProcess, Destruction_OfOneThatDoesNotEnd_IsBounded) {
  const Impostor impostor("answer $number 0; trap '' TERM HUP; while :; do echo noise; done");
  const double seconds = SecondsOf([&] {
    MatlabProcess engine(impostor.Path(), 20);
    EXPECT_TRUE(engine.Execute("x"));
  });
  EXPECT_LT(seconds, 10);
  EXPECT_FALSE(HasChildren());
}

TEST(MatlabProcess, Child_OfAHostThatIgnoresAndBlocksSignals_DoesNot) {
  const TempFile told;
  const TempFile script(std::string("#!/bin/sh\ngrep '^Sig[BI]' /proc/self/status >").append(told.Path()));
  chmod(script.Path(), 0700);
  const auto oldPipe = std::signal(SIGPIPE, SIG_IGN), oldTerm = std::signal(SIGTERM, SIG_IGN);
  sigset_t all, old;
  sigfillset(&all);
  pthread_sigmask(SIG_BLOCK, &all, &old);
  const MatlabProcess engine(script.Path());
  pthread_sigmask(SIG_SETMASK, &old, nullptr);
  std::signal(SIGPIPE, oldPipe);
  std::signal(SIGTERM, oldTerm);
  const std::string text = told.Content();
  EXPECT_NE(text.find("SigBlk:\t0000000000000000\n"), std::string::npos) << text;
  const std::size_t ignored = text.find("SigIgn:\t");
  ASSERT_NE(ignored, std::string::npos);
  const std::uint64_t mask = std::stoull(text.substr(ignored + 8, 16), nullptr, 16);
  EXPECT_EQ(mask & (1U << (SIGPIPE - 1) | 1U << (SIGTERM - 1)), 0U) << text;
}

TEST(MatlabProcess, Options_FollowTheName) {
  const TempFile folder;
  std::filesystem::remove(folder.Path());
  std::filesystem::create_directory(folder.Path());
  const auto path = std::filesystem::path(folder.Path());
  struct Case {
    const char *name, *options;
  };
  for (const Case &c :
       {Case{"matlab", "-nodesktop -nosplash\n"}, Case{"matlab-2030", "-nodesktop -nosplash\n"},
        Case{"octave-cli", "--quiet --no-gui\n"}, Case{"other", "--quiet --no-gui\n"}}) {
    const std::string program = path / c.name;
    std::ofstream(program) << "#!/bin/sh\necho \"$@\" >'" << (path / "options").string() << "'\n";
    std::filesystem::permissions(program, std::filesystem::perms::owner_all);
    const MatlabProcess engine(program.c_str());
    std::ifstream file(path / "options");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), c.options) << c.name;
  }
  // Without a name: MATLAB if there is one on the PATH, else Octave.
  const std::string before = std::getenv("PATH");
  const auto started = [&] {
    std::filesystem::remove(path / "options");
    const MatlabProcess engine;
    std::ifstream file(path / "options");
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  setenv("PATH", path.c_str(), 1);
  EXPECT_EQ(started(), "-nodesktop -nosplash\n");
  std::filesystem::remove(path / "matlab");
  EXPECT_EQ(started(), "--quiet --no-gui\n");
  std::filesystem::remove(path / "octave-cli");
  EXPECT_EQ(started(), "");
  setenv("PATH", before.c_str(), 1);
  std::filesystem::remove_all(path);
}

} // namespace
